#include <memory>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"
#include "property/models/value_models.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(VariableSettingsImp, BehavesLikeFourFields, ()) { RunOnBytes(RunVariableSettings); }

RC_GTEST_PROP(OValueSet, BehavesLikeSixFields, ()) { RunOnBytes(RunIntervals); }

RC_GTEST_PROP(OValueSet, HoldsWhatItsModelHolds, ()) {
  double const left = *Values();
  double const right = *Values();
  double const value = *rc::gen::oneOf(Values(), rc::gen::element(left, right, left + 1.0));
  OValueSet interval(left, right);
  interval.SetOpenLeft(*rc::gen::arbitrary<bool>());
  interval.SetOpenRight(*rc::gen::arbitrary<bool>());

  IntervalModel const model{left, right, interval.IsOpenLeft(), interval.IsOpenRight(), true, true};

  RC_ASSERT(interval.Contains(value) == model.Contains(value));
  RC_ASSERT(interval.IsEmpty() == model.IsEmpty());
}

RC_GTEST_PROP(OValueSet, CopyIsEqualAndIndependent, ()) {
  double const left = *Numbers();
  double const right = *Numbers();
  OValueSet const interval(left, right);

  OValueSet copy(interval);
  RC_ASSERT(copy == interval);
  copy.SetBoundedLeft(false);
  copy.SetRightEnd(right / 2.0);

  RC_ASSERT(interval.IsBoundedLeft());
  RC_ASSERT(interval.GetLeftEnd() == left);
  RC_ASSERT(interval.GetRightEnd() == right);
}

RC_GTEST_PROP(NValueSet, BehavesLikeASet, ()) { RunOnBytes(RunCodeSets); }

RC_GTEST_PROP(NValueSet, CopyIsEqualAndIndependent, (std::vector<int> const& codes, int added)) {
  NValueSet set;
  for (int const code : codes) set.Add(code);
  int const count = set.GetNumElements();

  NValueSet copy(set);
  bool const isNew = copy.Add(added);

  RC_ASSERT(isNew == !set.Contains(added));
  RC_ASSERT(set.GetNumElements() == count);
  RC_ASSERT(copy.GetNumElements() == count + (isNew ? 1 : 0));
}

}  // namespace
}  // namespace tree::testing
