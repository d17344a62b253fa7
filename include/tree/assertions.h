#ifndef TREE_ASSERTIONS_H_
#define TREE_ASSERTIONS_H_

// What the library trusts its callers with, checked in debug builds only (NDEBUG not defined): an
// index out of range stops the program with a line that names the operation and the index. Release
// builds check nothing, print nothing and never stop.

#ifndef NDEBUG
#include <cstdio>
#include <cstdlib>
#endif

namespace tree::internal {

/// Stops a debug build when `index` is not in [0, `count`); release builds do nothing.
/// `operation`: the public operation that was called, as `Class::Operation`.
template <class Count>
inline void RequireIndex([[maybe_unused]] long long index, [[maybe_unused]] Count count,
                         [[maybe_unused]] char const* operation) noexcept {
#ifndef NDEBUG
  if (index < 0 || index >= static_cast<long long>(count)) {
    std::fprintf(stderr, "tree: %s: index %lld is out of range\n", operation, index);
    std::abort();
  }
#endif
}

/// Stops a debug build when `holds` is false; release builds do nothing.
/// `requirement`: what the operation asks of its caller, as a short sentence.
inline void Require([[maybe_unused]] bool holds, [[maybe_unused]] char const* operation,
                    [[maybe_unused]] char const* requirement) noexcept {
#ifndef NDEBUG
  if (!holds) {
    std::fprintf(stderr, "tree: %s: %s\n", operation, requirement);
    std::abort();
  }
#endif
}

}  // namespace tree::internal

#endif  // TREE_ASSERTIONS_H_
