#ifndef TREE_GROW_SRC_CHAID_CHAID_METHOD_H_
#define TREE_GROW_SRC_CHAID_CHAID_METHOD_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "association/class_test.h"
#include "chaid/category_merger.h"
#include "growing/class_model.h"
#include "growing/split_method.h"
#include "tree/settings.h"

namespace tree::grow {

/// CHAID: the categories of each predictor are merged to groups that differ in the target, and the
/// predictor with the least adjusted p-value splits the node, a child for each group. Missing
/// values are a category that may join any group; there are no surrogates. Sources: Kass 1980, An
/// exploratory technique for investigating large quantities of categorical data; Biggs, de Ville
/// and Suen 1991, A method of choosing multiway partitions for classification and decision trees.
class ChaidMethod : public SplitMethod {
 public:
  /// `data`: with coded predictors; `classes`: null for numbers; `minChildSize`: in cases;
  /// `totalWeight`: of the training cases, to whose scale improvements refer. References are
  /// **borrowed**.
  ChaidMethod(TrainingData const& data, ChaidSettings const& settings, ClassModel const* classes,
              double minChildSize, double totalWeight);

  std::vector<RuleList> FindSplits(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                   Workers& workers) override;
  /// None.
  std::vector<RuleList> FindSurrogates(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                       std::vector<SplitRuleImp const*> const& primaries,
                                       ChildOfPlace const& childOf, Workers& workers) override;

 private:
  /// A split that a node could have.
  struct Found {
    MergedCategories merged;
    double improvement = 0.0;
  };
  template <class Cases>
  std::vector<std::uint32_t> EntriesOfCases(CaseLists const& lists,
                                            std::span<GrowingNode const> nodes,
                                            Cases const& counted, Workers& workers) const;
  template <class Groups, class Cases, class Improve>
  std::vector<Found> FindGroups(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                Groups const& groups, Cases const& counted, Improve const& improve,
                                Workers& workers) const;
  std::vector<Found> FindClassGroups(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                     Workers& workers) const;
  std::vector<Found> FindNumberGroups(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                      Workers& workers) const;
  std::unique_ptr<SplitRuleImp> MakeRule(std::size_t predictor, Found const& found) const;

  TrainingData const& data_;
  ChaidSettings const& settings_;
  ClassModel const* classes_;
  double minChildSize_;
  double totalWeight_;
  bool weighted_;                     // whether cases have weights beside their frequencies
  std::vector<std::size_t> numRows_;  // by predictor: a row for each category
  std::size_t rowSize_;               // in entries
  std::vector<char> mayMerge_;        // by predictor: whether its categories may be merged
  ClassTestSettings test_;            // of classes
  FixedNumbers numbers_;              // by case; empty for classes
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_CHAID_METHOD_H_
