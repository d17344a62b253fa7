#ifndef TREE_SRC_SETTINGS_CLONING_H_
#define TREE_SRC_SETTINGS_CLONING_H_

#include <memory>

namespace tree {

/// A clone of `part`.
template <class T>
std::unique_ptr<T> CloneOf(T const& part) {
  return std::unique_ptr<T>(part.Clone());
}

/// A clone of `part`, or a default object for null.
template <class Default, class T>
std::unique_ptr<T> CloneOrDefault(T const* part) {
  if (part == nullptr) return std::make_unique<Default>();
  return CloneOf(*part);
}

}  // namespace tree

#endif  // TREE_SRC_SETTINGS_CLONING_H_
