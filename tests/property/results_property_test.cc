#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(TreeStatisticsImp, CountsAndWritesLikeARecursiveWalk, ()) {
  RunOnBytes(RunTreeStatistics);
}

RC_GTEST_PROP(CumulativeNode, HoldsWhatTheCasesOfItsNodesAddUpTo, ()) {
  RunOnBytes(RunCumulativeNodes);
}

RC_GTEST_PROP(GainsSettingsImp, BehavesLikeItsFields, ()) { RunOnBytes(RunGainsSettings); }

RC_GTEST_PROP(GainsSettings, BehavesLikeTheFieldsOfItsObject, ()) {
  RunOnBytes(RunGainsSettingsHandles);
}

}  // namespace
}  // namespace tree::testing
