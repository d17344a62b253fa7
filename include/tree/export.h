#ifndef TREE_EXPORT_H_
#define TREE_EXPORT_H_

/// @file
/// TREE_API marks what the shared library exports: whole public classes, whose virtual tables and
/// type information travel with them, and free functions. Everything else is hidden.

/// Exports a class or a free function from the shared library.
#if defined(__GNUC__)
#define TREE_API __attribute__((visibility("default")))
#else
#define TREE_API
#endif

#endif  // TREE_EXPORT_H_
