#ifndef TREE_GROW_SRC_CART_BEST_POSITIONS_H_
#define TREE_GROW_SRC_CART_BEST_POSITIONS_H_

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tree::grow {

/// The positions with a positive key, greatest first; of equal ones, the lowest position. At most
/// `count`.
template <class KeyOf>
std::vector<std::size_t> BestPositions(std::size_t size, std::size_t count, KeyOf const& keyOf) {
  std::vector<std::size_t> positions;
  for (std::size_t position = 0; position < size; ++position) {
    if (keyOf(position) > 0.0) positions.push_back(position);
  }
  std::stable_sort(positions.begin(), positions.end(),
                   [&](std::size_t a, std::size_t b) { return keyOf(a) > keyOf(b); });
  if (positions.size() > count) positions.resize(count);
  return positions;
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_BEST_POSITIONS_H_
