#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(TArray, OfDoublesBehavesLikeAVector, ()) { RunOnBytes(RunArraysOfDoubles); }

RC_GTEST_PROP(TArray, OfIntsBehavesLikeAVector, ()) { RunOnBytes(RunArraysOfInts); }

RC_GTEST_PROP(TMatrix, BehavesLikeAMapOfCells, ()) { RunOnBytes(RunMatrices); }

RC_GTEST_PROP(ArrayRW, BehavesLikeAVector, ()) { RunOnBytes(RunPointerLists); }

}  // namespace
}  // namespace tree::testing
