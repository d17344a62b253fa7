#include <algorithm>
#include <memory>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/rule_models.h"
#include "property/models/sequences.h"
#include "tree/split_rules.h"

namespace tree::testing {
namespace {

constexpr double kMissing = -99.0;

/// Adds the intervals between ascending cut points from left to right.
OSplitRule RuleWithCuts(std::vector<double> const& cuts) {
  OSplitRule rule(kMissing, 0);
  OValueSet interval;
  for (double const cut : cuts) {
    interval.SetRightEnd(cut);
    interval.SetOpenRight(false);
    rule.AddMappedValues(interval);
    interval = OValueSet();
    interval.SetLeftEnd(cut);
  }
  rule.AddMappedValues(interval);
  return rule;
}

/// Finite, ascending, more than a unit apart: closer ones fall under the tolerance of membership.
std::vector<double> SomeCuts() {
  auto const distinct = *rc::gen::container<std::set<int>>(rc::gen::inRange(-40, 40));
  std::vector<double> cuts;
  for (int const cut : distinct) cuts.push_back(cut * 2.5);
  return cuts;
}

std::vector<int> SomePermutation(int count) {
  std::vector<std::uint8_t> const bytes = *Bytes();
  return Choices(bytes).Permutation(count);
}

RC_GTEST_PROP(OSplitRule, BehavesLikeAListOfIntervals, ()) { RunOnBytes(RunOrdinalRules); }

RC_GTEST_PROP(OSplitRule, SendsAValueToTheChildThatCountsTheCutsBelowIt, ()) {
  std::vector<double> const cuts = SomeCuts();
  OSplitRule const rule = RuleWithCuts(cuts);
  double const value =
      cuts.empty() ? *Values() : *rc::gen::oneOf(Values(), rc::gen::elementOf(cuts));
  RC_PRE(value != kMissing);

  auto const cutsBelow =
      std::count_if(cuts.begin(), cuts.end(), [value](double cut) { return !(cut >= value); });

  RC_ASSERT(rule.Classify(value) == cutsBelow);
}

RC_GTEST_PROP(OSplitRule, CloneSplitsAlikeAndChangesAlone, ()) {
  std::vector<double> const cuts = SomeCuts();
  RC_PRE(!cuts.empty());
  OSplitRule const rule = RuleWithCuts(cuts);
  OSplitRule const untouched = rule;

  std::unique_ptr<SplitRuleImp> const clone(rule.Clone());
  RC_ASSERT(rule.Compare(*clone) == 0);
  RC_ASSERT(rule == *clone);
  dynamic_cast<OSplitRule&>(*clone).SetCutPoint(cuts.front() - 1.0);
  clone->AddMissingValueMapping(true);

  RC_ASSERT(rule.Compare(*clone) == 1);
  RC_ASSERT(rule.Compare(untouched) == 0);
}

RC_GTEST_PROP(OSplitRule, ReorderedSendsEachValueToTheNewPositionOfItsChild, ()) {
  OSplitRule const rule = RuleWithCuts(SomeCuts());
  std::vector<int> const order = SomePermutation(rule.GetNumChildren());
  double const value = *Values();
  RC_PRE(value != kMissing);

  OSplitRule reordered = rule;
  reordered.ReorderMappings(order);

  auto const child = static_cast<std::size_t>(rule.Classify(value));
  RC_ASSERT(reordered.Classify(value) == order[child]);
  RC_ASSERT(reordered.HasProperty(SplitRuleMappingsReordered));
}

RC_GTEST_PROP(NSplitRule, BehavesLikeAMap, ()) { RunOnBytes(RunNominalRules); }

RC_GTEST_PROP(NSplitRule, ReadsBackTheCodesOfEachChild, ()) {
  auto const childOf = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 4));
  NSplitRule rule(0, 0);
  for (std::size_t code = 0; code < childOf.size(); ++code) {
    rule.SetCatMapping(static_cast<int>(code), childOf[code]);
  }

  for (int child = 0; child < 4; ++child) {
    std::unique_ptr<ValueSet> const codes(rule.GetMappedValues(child));
    for (std::size_t code = 0; code < childOf.size(); ++code) {
      bool const isHeld = codes != nullptr && codes->Contains(static_cast<double>(code));
      RC_ASSERT(isHeld == (childOf[code] == child));
    }
  }
}

RC_GTEST_PROP(NSplitRule, SendsToTheMissingValueMappingWhatIsNoMappedCode, ()) {
  int const numCategories = *rc::gen::inRange(0, 8);
  NSplitRule rule(0, numCategories);
  for (int code = 0; code < numCategories; ++code) rule.SetCatMapping(code, 0);
  rule.AddMissingValueMapping(true);
  int const missingChild = numCategories == 0 ? 0 : 1;
  double const value = *Values();

  bool isCode = false;
  for (int code = 0; code < numCategories; ++code) isCode = isCode || value == code;

  RC_ASSERT(rule.Classify(value) == (isCode ? 0 : missingChild));
}

}  // namespace
}  // namespace tree::testing
