#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(CoreSettingsImp, BehavesLikeAListOfVariables, ()) { RunOnBytes(RunCoreSettings); }

RC_GTEST_PROP(StopRuleImp, BehavesLikeSixFields, ()) { RunOnBytes(RunStopRules); }

RC_GTEST_PROP(ValidationSpecImp, BehavesLikeThreeFields, ()) { RunOnBytes(RunValidationSpecs); }

RC_GTEST_PROP(PruningSpecImp, BehavesLikeTwoFields, ()) { RunOnBytes(RunPruningSpecs); }

RC_GTEST_PROP(AlgSettings, OfEachKindBehaveLikeTheirFieldsAndKeepApart, ()) {
  RunOnBytes(RunSettings);
}

}  // namespace
}  // namespace tree::testing
