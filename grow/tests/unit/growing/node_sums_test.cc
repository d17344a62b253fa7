#include "growing/node_sums.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
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

bool operator==(NodeSums const& left, NodeSums const& right) {
  return left.numCases == right.numCases && left.size == right.size &&
         left.weight == right.weight && left.classWeights == right.classWeights &&
         left.weightedNumbers == right.weightedNumbers && left.least == right.least &&
         left.greatest == right.greatest;
}

TEST(SumChildren, AddsUpTheCasesOfEachChildAsIfAlone) {
  constexpr int kNumChildren = 4;
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 1 + random.Below(30);
    Sample sample{.target = {}, .hasClasses = seed % 2 == 0};
    ChildOfPlace childOf;
    for (std::size_t index = 0; index < count; ++index) {
      sample.target.push_back(random.Below(5));
      if (seed % 3 == 1) sample.weights.push_back(1.0 + random.Below(7));
      if (seed % 5 == 1) sample.frequencies.push_back(1.0 + random.Below(3));
      std::uint32_t const child = random.Below(kNumChildren + 1);
      childOf.push_back(child == kNumChildren ? kNoChild : static_cast<std::uint8_t>(child));
    }
    PreparedSample prepared(sample);
    CaseLists const lists = prepared.MakeLists();

    std::vector<NodeSums> const children =
        SumChildren(prepared.GetData(), lists, lists.GetRoot(), childOf, kNumChildren);

    for (std::uint8_t child = 0; child < kNumChildren; ++child) {
      std::vector<std::uint32_t> cases;
      for (std::uint32_t index = 0; index < count; ++index) {
        if (childOf[index] == child) cases.push_back(index);
      }
      EXPECT_TRUE(children[child] == Sum(prepared, cases)) << "child " << int{child};
    }
  }
}

}  // namespace
}  // namespace tree::grow
