#ifndef TREE_SUPPORT_H_
#define TREE_SUPPORT_H_

/// @file
/// The two functions that the library imports from its support library. The library calls them and
/// never defines them; whoever links it brings a support library that does. The project carries a
/// stand-in (target `tree::support`), and the build option TREE_SUPPORT_LIBRARY links another one.

/// The double that marks a missing value: the default missing value of a variable and the answer of
/// reads that find nothing. Compares equal to itself, so it is never a NaN. The same on every call.
double systemMissingValue();

/// Positive infinity.
double GetInfinity();

#endif  // TREE_SUPPORT_H_
