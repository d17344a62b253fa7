#ifndef TREE_TESTS_TESTING_RULE_BUILDER_H_
#define TREE_TESTS_TESTING_RULE_BUILDER_H_

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "testing/value_set_builder.h"
#include "tree/split_rules.h"

namespace tree::testing {

/// The missing value of rules that are made here without another one.
inline constexpr double kMissing = -9.0;

/// The binary rule at `cutPoint` on predictor 0: child 0 up to it, child 1 above it.
inline OSplitRule BinaryRule(double cutPoint) {
  OSplitRule rule(kMissing, 0);
  rule.SetCutPoint(cutPoint);
  return rule;
}

/// An ordinal rule on predictor 0, to which the intervals were added in this order.
inline OSplitRule OrdinalRule(std::initializer_list<OValueSet> intervals) {
  OSplitRule rule(kMissing, 0);
  for (OValueSet const& interval : intervals) rule.AddMappedValues(interval);
  return rule;
}

/// (-inf, 2], (2, 7] and (7, inf) for children 0, 1 and 2 of predictor 0.
inline OSplitRule ThreeWayRule() {
  return OrdinalRule({AtMost(2.0), OpenClosed(2.0, 7.0), Above(7.0)});
}

/// A nominal rule on predictor 0, to which the sets were added in this order.
inline NSplitRule NominalRule(std::initializer_list<NValueSet> sets) {
  NSplitRule rule(0, 0);
  for (NValueSet const& set : sets) rule.AddMappedValues(set);
  return rule;
}

/// The values that an ordinal rule, or a handle of one, reads back for a child, as "(2, 7]"; "none"
/// when there are none.
template <class Rule>
std::string IntervalOf(Rule const& rule, int child) {
  std::unique_ptr<ValueSet> const set(rule.GetMappedValues(child));
  if (set == nullptr) return "none";
  auto const* interval = dynamic_cast<OValueSet const*>(set.get());
  return interval == nullptr ? "no interval" : Written(*interval);
}

/// What `IntervalOf` gives for all children.
template <class Rule>
std::vector<std::string> IntervalsOf(Rule const& rule) {
  std::vector<std::string> intervals;
  for (int child = 0; child < rule.GetNumChildren(); ++child) {
    intervals.push_back(IntervalOf(rule, child));
  }
  return intervals;
}

/// The codes that a nominal rule, or a handle of one, reads back for a child; empty when there are
/// none (`GetMappedValues` gives null).
template <class Rule>
std::vector<int> CategoriesOf(Rule const& rule, int child) {
  std::unique_ptr<ValueSet> const set(rule.GetMappedValues(child));
  auto const* codes = dynamic_cast<NValueSet const*>(set.get());
  return codes == nullptr ? std::vector<int>() : CodesOf(*codes);
}

/// Sets every field of the common core to something else than a new rule has.
inline void ChangeCore(SplitRuleImp& rule) {
  rule.SetStatistic(StatisticFlag1, 1.5);
  rule.SetStatistic(StatisticFlag2, 2.5);
  rule.SetStatistic(StatisticFlag3, 3.5);
  rule.SetStatistic(StatisticFlag4, 4.5);
  rule.SetStatistic(StatisticFlag6, 0.0);
  rule.SetDumbRule(1, 0.75);
  rule.SetProperty(SplitRuleCreatedAlternate);
  rule.AddMissingValueMapping(true);
}

/// A value set of neither kind.
class ForeignSet : public ValueSet {
 public:
  explicit ForeignSet(bool isNominal) : isNominal_(isNominal) {}

  bool Contains(double) const override { return true; }
  bool IsNominalValueSet() const override { return isNominal_; }

 private:
  bool isNominal_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_RULE_BUILDER_H_
