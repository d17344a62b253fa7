#include "growing/fixed_point.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "growing/workers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kTwoTo52 = 4503599627370496.0;

TEST(FixWeights, KeepsWholeWeightsAsTheyAre) {
  FixedWeights const fixed = FixWeights({3.0, 1.0, 250.0});

  EXPECT_THAT(fixed.multiples, ElementsAre(3, 1, 250));
  EXPECT_EQ(fixed.unit, 1.0);
}

TEST(FixWeights, LeavesOutWeightsOfCasesThatAllWeighOne) {
  FixedWeights const fixed = FixWeights({});

  EXPECT_THAT(fixed.multiples, IsEmpty());
  EXPECT_EQ(fixed.unit, 1.0);
  EXPECT_EQ(fixed.Of(7), 1);
}

TEST(FixWeights, TakesTheSmallestPowerOfTwoThatKeepsTheSumWithinBounds) {
  // The sum is 0.75, below 2^0: the unit is 2^-52.
  FixedWeights const fixed = FixWeights({0.5, 0.25});

  EXPECT_EQ(fixed.unit, std::ldexp(1.0, -52));
  EXPECT_THAT(fixed.multiples, ElementsAre(std::int64_t{1} << 51, std::int64_t{1} << 50));
  EXPECT_EQ(fixed.Of(1), std::int64_t{1} << 50);
}

TEST(FixWeights, MakesWholeWeightsSmallerThatAddUpToTooMuch) {
  // The sum is 2^54, below 2^55: the unit is 8.
  FixedWeights const fixed = FixWeights({2.0 * kTwoTo52, 2.0 * kTwoTo52});

  EXPECT_EQ(fixed.unit, 8.0);
  EXPECT_THAT(fixed.multiples, ElementsAre(std::int64_t{1} << 50, std::int64_t{1} << 50));
}

TEST(FixWeights, LetsEveryCaseCountSomething) {
  FixedWeights const fixed = FixWeights({1e30, 1e-30});

  EXPECT_EQ(fixed.multiples[1], 1);
}

TEST(FixWeights, KeepsTheLargestWeightsApartFromInfinity) {
  double const largest = std::numeric_limits<double>::max();

  FixedWeights const fixed = FixWeights({largest, largest / 2.0, largest});

  EXPECT_NEAR(static_cast<double>(fixed.multiples[0]) / static_cast<double>(fixed.multiples[1]),
              2.0, 1e-12);
  EXPECT_LE(static_cast<double>(fixed.multiples[0]), kTwoTo52);
  EXPECT_GT(fixed.multiples[1], 1);
}

TEST(FixWeights, DoesNotDependOnTheOrderOfTheCases) {
  // Added up in this order, doubles give 1, and in the other one a little less.
  FixedWeights const fixed = FixWeights({0.1, 0.2, 0.3, 0.4});

  FixedWeights const reversed = FixWeights({0.4, 0.3, 0.2, 0.1});

  EXPECT_EQ(reversed.unit, fixed.unit);
  EXPECT_THAT(reversed.multiples, ElementsAre(fixed.multiples[3], fixed.multiples[2],
                                              fixed.multiples[1], fixed.multiples[0]));
}

TEST(FixWeights, IsCloseToRandomWeightsAndAddsThemExactly) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::vector<double> weights(1 + random.Below(100));
    double const scale = std::ldexp(1.0, static_cast<int>(random.Below(100)) - 50);
    for (double& weight : weights) weight = scale * random.Multiple(0.1, 1000);

    FixedWeights const fixed = FixWeights(weights);

    double const sum = std::accumulate(weights.begin(), weights.end(), 0.0);
    std::int64_t const fixedSum =
        std::accumulate(fixed.multiples.begin(), fixed.multiples.end(), std::int64_t{0});
    EXPECT_LE(static_cast<double>(fixedSum), kTwoTo52 * (1.0 + 1e-12));
    EXPECT_NEAR(static_cast<double>(fixedSum) * fixed.unit, sum, 1e-13 * sum);
    for (std::size_t index = 0; index < weights.size(); ++index) {
      EXPECT_NEAR(static_cast<double>(fixed.multiples[index]) * fixed.unit, weights[index],
                  std::ldexp(sum, -52));
    }
  }
}

TEST(FixNumbers, CentresTheRange) {
  FixedNumbers const fixed = FixNumbers({10.0, 30.0, 14.0}, FixWeights({}));

  EXPECT_EQ(fixed.centre, 20.0);
  // A reach of 10 is below 2^4, three cases are below 2^2: the unit is 2^(4 + 2 - 61).
  EXPECT_EQ(fixed.unit, std::ldexp(1.0, -55));
  std::int64_t const one = std::int64_t{1} << 55;
  EXPECT_THAT(fixed.multiples, ElementsAre(-10 * one, 10 * one, -6 * one));
}

TEST(FixNumbers, GivesBackTheValues) {
  std::vector<double> const values = {10.0, 30.0, 14.5};

  FixedNumbers const fixed = FixNumbers(values, FixWeights({}));

  for (std::size_t index = 0; index < values.size(); ++index) {
    EXPECT_EQ(fixed.ValueOf(static_cast<double>(fixed.multiples[index])), values[index]);
  }
}

TEST(FixNumbers, CountsRepeatedCases) {
  // 64 cases are below 2^7, a reach of 1 is below 2^1.
  EXPECT_EQ(FixNumbers({-1.0, 1.0}, FixWeights({60.0, 4.0})).unit, std::ldexp(1.0, 1 + 7 - 61));
}

TEST(FixNumbers, CountsCasesWhereWeightsAreNoNumbersOfCases) {
  // Two cases are below 2^2.
  EXPECT_EQ(FixNumbers({-1.0, 1.0}, FixWeights({60.5, 4.0})).unit, std::ldexp(1.0, 1 + 2 - 61));
}

TEST(FixNumbers, NeedsNoUnitForOneValue) {
  FixedNumbers const fixed = FixNumbers({7.25, 7.25}, FixWeights({}));

  EXPECT_EQ(fixed.centre, 7.25);
  EXPECT_THAT(fixed.multiples, ElementsAre(0, 0));
}

TEST(FixNumbers, IsEmptyWithoutCases) {
  EXPECT_THAT(FixNumbers({}, FixWeights({})).multiples, IsEmpty());
}

TEST(FixNumbers, KeepsExtremeValues) {
  double const largest = std::numeric_limits<double>::max();
  double const smallest = std::numeric_limits<double>::denorm_min();
  struct {
    char const* name;
    std::vector<double> values;
    double tolerance;
  } const kRows[] = {
      {"all doubles", {-largest, largest, 0.0}, largest * 1e-16},
      {"large alike", {largest, largest, largest}, 0.0},
      {"smallest ones", {0.0, smallest, smallest * 2.0}, 1e-300},
      {"far from 0", {1e15, 1e15 + 1.0, 1e15 + 2.0}, 0.0},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);

    FixedNumbers const fixed = FixNumbers(row.values, FixWeights({}));

    std::int64_t constexpr kBound = std::int64_t{1} << 61;
    for (std::size_t index = 0; index < row.values.size(); ++index) {
      EXPECT_LT(std::abs(fixed.multiples[index]), kBound / 3);
      EXPECT_NEAR(fixed.ValueOf(static_cast<double>(fixed.multiples[index])), row.values[index],
                  row.tolerance);
    }
  }
}

TEST(FixNumbers, KeepsSumsOfRandomNumbersWithinBounds) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 1 + random.Below(200);
    std::vector<double> values(count);
    std::vector<double> weights(count);
    double const scale = std::ldexp(1.0, static_cast<int>(random.Below(200)) - 100);
    for (double& value : values) value = scale * (random.Below(2000) - 700.0);
    for (double& weight : weights) weight = random.Multiple(1.0, 9);

    FixedNumbers const fixed = FixNumbers(values, FixWeights(weights));

    WideInteger sum = 0;
    for (std::size_t index = 0; index < count; ++index) {
      sum +=
          WideInteger{std::abs(fixed.multiples[index])} * static_cast<std::int64_t>(weights[index]);
      EXPECT_NEAR(fixed.ValueOf(static_cast<double>(fixed.multiples[index])), values[index],
                  scale * 2000 * std::ldexp(1.0, -41));
    }
    EXPECT_LT(static_cast<double>(sum), std::ldexp(1.0, 61));
  }
}

TEST(FixedPoint, IsPolledWhileItIsMade) {
  std::vector<double> values(kWorkPerPoll + 2);  // two slices
  for (std::size_t index = 0; index < values.size(); ++index) {
    values[index] = 0.5 + static_cast<double>(index % 10);
  }
  int numPolls = 0;
  auto const poll = [&numPolls] { ++numPolls; };

  FixedWeights const weights = FixWeights(values, poll);

  EXPECT_EQ(numPolls, 3) << "to look for fractions, to add up and to write";
  EXPECT_EQ(weights.multiples, FixWeights(values).multiples);
  numPolls = 0;
  FixedNumbers const numbers = FixNumbers(values, FixWeights({}), poll);
  EXPECT_EQ(numPolls, 2) << "for the range, and to write";
  EXPECT_EQ(numbers.multiples, FixNumbers(values, FixWeights({})).multiples);
}

}  // namespace
}  // namespace tree::grow
