#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(ClsInfoImp, BehavesLikeItsFields, ()) { RunOnBytes(RunClassDistributions); }

RC_GTEST_PROP(RegInfoImp, KeepsOptionalStatisticsLikeAMap, ()) {
  RunOnBytes(RunRegressionStatistics);
}

RC_GTEST_PROP(PredictorImp, BehavesLikeItsFields, ()) { RunOnBytes(RunPredictorSummaries); }

}  // namespace
}  // namespace tree::testing
