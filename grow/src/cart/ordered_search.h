#ifndef TREE_GROW_SRC_CART_ORDERED_SEARCH_H_
#define TREE_GROW_SRC_CART_ORDERED_SEARCH_H_

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "growing/ranked_predictor.h"

namespace tree::grow {

/// A split of a node at a cut point of an ordered predictor.
struct OrderedSplit {
  double cutPoint = 0.0;     ///< values up to it go left
  double improvement = 0.0;  ///< on the scale of the sides that it was found with
};

/// How small the children of a split may be.
struct ChildLimits {
  /// How often each case counts, by index; empty when each counts once.
  std::vector<double> const* frequencies = nullptr;
  double minSize = 1.0;  ///< least number of cases of a child

  double FrequencyOf(std::uint32_t index) const {
    return frequencies == nullptr || frequencies->empty() ? 1.0 : (*frequencies)[index];
  }
};

/// The best cut of a node by one ordered predictor; nothing when no cut improves the node. Looks at
/// all of them; of equal ones, the lowest is the best. `cases`: of the node, those with a value, in
/// order of their ranks. `values`: by rank. `sides`: without cases; a `ClassSides` or
/// `NumberSides`. Linear in the cases, and in their distinct values times the classes.
template <class Sides>
std::optional<OrderedSplit> FindBestCut(std::span<RankedCase const> cases,
                                        std::vector<double> const& values,
                                        ChildLimits const& limits, Sides& sides) {
  double sizeOnRight = 0.0;
  for (RankedCase const& item : cases) {
    sides.AddToRight(item.index);
    sizeOnRight += limits.FrequencyOf(item.index);
  }
  std::optional<OrderedSplit> best;
  double sizeOnLeft = 0.0;
  for (std::size_t place = 0; place + 1 < cases.size(); ++place) {
    RankedCase const& item = cases[place];
    sides.MoveToLeft(item.index);
    sizeOnLeft += limits.FrequencyOf(item.index);
    sizeOnRight -= limits.FrequencyOf(item.index);
    if (sizeOnRight < limits.minSize) break;
    RankedCase const& next = cases[place + 1];
    if (next.rank == item.rank || sizeOnLeft < limits.minSize) continue;
    double const improvement = sides.Improvement();
    if (improvement > (best.has_value() ? best->improvement : 0.0)) {
      best = {CutBetween(values[item.rank], values[next.rank]), improvement};
    }
  }
  sides.Clear();
  return best;
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_ORDERED_SEARCH_H_
