#include "growing/node_sums.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

NodeSums Sum(PreparedSample const& sample, std::vector<std::uint32_t> const& cases) {
  return SumCases(sample.GetData(), cases);
}

TEST(SumCases, CountsCasesByClass) {
  PreparedSample const sample({.target = {0.0, 2.0, 0.0, 1.0}});

  NodeSums const sums = Sum(sample, {0, 2, 3});

  EXPECT_EQ(sums.size, 3);
  EXPECT_EQ(sums.weight, 3);
  EXPECT_THAT(sums.classWeights, ElementsAre(2, 1, 0));
}

TEST(SumCases, AddsWeightsAndFrequenciesApart) {
  PreparedSample const sample(
      {.target = {0.0, 1.0, 0.0}, .weights = {2.0, 30.0, 4.0}, .frequencies = {1.0, 10.0, 2.0}});

  NodeSums const sums = Sum(sample, {0, 1, 2});

  EXPECT_EQ(sums.size, 13);
  EXPECT_EQ(sums.weight, 36);
  EXPECT_THAT(sums.classWeights, ElementsAre(6, 30));
}

TEST(SumCases, AddsWeightedNumbers) {
  PreparedSample const sample(
      {.target = {-4.0, 4.0, 1.0}, .hasClasses = false, .weights = {3.0, 2.0, 1.0}});

  NodeSums const sums = Sum(sample, {0, 1, 2});

  EXPECT_EQ(sums.weight, 6);
  EXPECT_THAT(sums.classWeights, IsEmpty());
  // The centre is 0: 3 * -4 + 2 * 4 + 1.
  EXPECT_EQ(static_cast<double>(sums.weightedNumbers) * sample.GetData().GetNumbers().unit, -3.0);
}

TEST(SumCases, FindsTheLeastAndTheGreatestNumber) {
  PreparedSample const sample({.target = {-4.0, 4.0, 1.0, 2.0}, .hasClasses = false});
  double const unit = sample.GetData().GetNumbers().unit;

  NodeSums const sums = Sum(sample, {3, 1, 2});

  EXPECT_EQ(static_cast<double>(sums.least) * unit, 1.0);
  EXPECT_EQ(static_cast<double>(sums.greatest) * unit, 4.0);
}

TEST(SumCases, AddsMoreThanSixtyFourBits) {
  PreparedSample const sample(
      {.target = {1.0, -1.0}, .hasClasses = false, .weights = {0.75, 0.125}});

  NodeSums const sums = Sum(sample, {0});

  double const units = sample.GetData().GetNumbers().unit * sample.GetData().GetWeights().unit;
  EXPECT_EQ(static_cast<double>(sums.weightedNumbers) * units, 0.75);
  EXPECT_GT(static_cast<double>(sums.weightedNumbers), std::ldexp(1.0, 64));
}

TEST(SumCases, IsZeroWithoutCases) {
  PreparedSample const classes({.target = {0.0, 1.0}});
  PreparedSample const numbers({.target = {0.0, 1.0}, .hasClasses = false});

  EXPECT_EQ(Sum(classes, {}).size, 0);
  EXPECT_THAT(Sum(classes, {}).classWeights, ElementsAre(0, 0));
  EXPECT_EQ(Sum(numbers, {}).weight, 0);
}

TEST(ClassWeightsOf, GivesWeightsInTheirOwnUnit) {
  PreparedSample const sample({.target = {0.0, 1.0, 1.0}, .weights = {0.5, 0.25, 1.5}});

  EXPECT_THAT(ClassWeightsOf(sample.GetData(), Sum(sample, {0, 1, 2})), ElementsAre(0.5, 1.75));
}

}  // namespace
}  // namespace tree::grow
