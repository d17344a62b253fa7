#ifndef TREE_GROW_SRC_CART_SURROGATE_SEARCH_H_
#define TREE_GROW_SRC_CART_SURROGATE_SEARCH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/case_lists.h"

namespace tree::grow {

/// The split by another predictor that comes closest to a primary split.
struct FoundSurrogate {
  double association = 0.0;  ///< 0 where none is better than the majority
  double cutPoint = 0.0;     ///< of an ordered predictor
  bool reversed = false;     ///< whether values up to the cut point go right
  /// Of a nominal predictor: the child of each code; `kNoChild` for codes that the node has not.
  std::vector<std::uint8_t> childOfCode;
};

/// Finds surrogates of primary splits with two children. A split agrees with the primary one on the
/// weight of the cases that both send to the same child; the predictive association is
/// (agreement - majority) / (all - majority), where `all` is the weight of the cases that the
/// primary split places, and `majority` that of the child which gets most of it. Source: Breiman,
/// Friedman, Olshen and Stone 1984, section 5.3.1, where probabilities take the place of weights:
/// with priors that are not those of the sample the two differ. Deliberate: a surrogate stands in
/// for cases as they come, whatever their class. A case without a value of the surrogate's
/// predictor counts as a disagreement, so a predictor that is often missing is of little use.
class SurrogateSearch {
 public:
  /// `childOf`: the child by the primary split; `kNoChild` where it does not place the case. All
  /// **borrowed**.
  SurrogateSearch(TrainingData const& data, CaseLists const& lists, ChildOfPlace const& childOf,
                  Workers& workers)
      : data_(data), lists_(lists), childOf_(childOf), workers_(workers) {}

  /// The weights, in units, of the cases that the primary split sends to child 0 and 1.
  using Placed = std::array<std::int64_t, 2>;

  /// The best surrogate by this predictor; of equal ones, that with the lowest cut point. `placed`:
  /// of all cases of the node.
  FoundSurrogate Find(NodeRanges const& node, Placed const& placed, std::size_t predictor);
  /// The predictive association of a surrogate that agrees on so much weight.
  static double AssociationOf(std::int64_t agreement, Placed const& placed);

 private:
  FoundSurrogate FindCut(std::span<SortedCase const> cases, std::size_t numInNode,
                         std::size_t predictor, Placed const& placed);
  void FillTable(Range places, std::size_t predictor);
  FoundSurrogate CutTable(GrowingPredictor const& predictor, Placed const& placed) const;
  FoundSurrogate AssignCategories(Placed const& placed) const;

  TrainingData const& data_;
  CaseLists const& lists_;
  ChildOfPlace const& childOf_;
  Workers& workers_;
  std::vector<Placed> table_;  // by code, of the present node and coded predictor
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_SURROGATE_SEARCH_H_
