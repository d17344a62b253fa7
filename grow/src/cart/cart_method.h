#ifndef TREE_GROW_SRC_CART_CART_METHOD_H_
#define TREE_GROW_SRC_CART_CART_METHOD_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cart/found_split.h"
#include "cart/sides.h"
#include "growing/class_model.h"
#include "growing/split_method.h"
#include "tree/settings.h"

namespace tree::grow {

/// How small the parts of a split may be and what it has to bring, from the stopping rule.
struct SplitLimits {
  double minImprovement = 0.0;  ///< on the scale of the tree
  double minChildSize = 1.0;    ///< in cases
};

/// CART: of each predictor the best binary split, of those the best one, and surrogates for cases
/// that it cannot place. Source: Breiman, Friedman, Olshen and Stone 1984.
class CartMethod : public SplitMethod {
 public:
  /// `data`: with prepared predictors; `classes`: null for numbers; `totalWeight`: of the training
  /// cases, to whose scale improvements refer. References are **borrowed**.
  CartMethod(TrainingData const& data, CartSettings const& settings, ClassModel const* classes,
             SplitLimits const& limits, double totalWeight);

  std::vector<RuleList> FindSplits(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                   Workers& workers) override;
  std::vector<RuleList> FindSurrogates(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                       std::vector<SplitRuleImp const*> const& primaries,
                                       ChildOfPlace const& childOf, Workers& workers) override;

 private:
  template <class Visit>
  void WithSides(CaseLists const& lists, Visit const& visit) const;
  double RoundingOf(GrowingNode const& node) const;
  std::unique_ptr<SplitRuleImp> MakeRule(std::size_t predictor, FoundSplit const& split) const;

  TrainingData const& data_;
  CartSettings const& settings_;
  ClassModel const* classes_;
  SplitLimits limits_;
  double totalWeight_;
  int criterion_ = 0;
  std::vector<double>
      factors_;         // by class: what a unit of weight adds to the probability of a node
  double scale_ = 1.0;  // what a unit of weight is of the weight of the tree
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_CART_METHOD_H_
