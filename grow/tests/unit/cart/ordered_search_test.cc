#include "cart/ordered_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "cart/sides.h"
#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

RankedPredictor Rank(std::vector<double> const& values) {
  Column const column{{}, values.data()};
  std::vector<std::size_t> rows(values.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return RankCases(column, rows);
}

template <class Sides>
std::optional<OrderedSplit> BestCut(std::vector<double> const& values, Sides&& sides,
                                    ChildLimits const& limits = {}) {
  RankedPredictor const ranked = Rank(values);
  return FindBestCut(std::span<RankedCase const>(ranked.cases), ranked.values, limits, sides);
}

ClassTarget TwoClasses(std::vector<std::uint32_t> classes) {
  return {std::move(classes), {}, {1.0, 1.0}};
}

TEST(FindBestCut, SeparatesTwoClasses) {
  ClassTarget const target = TwoClasses({1, 0, 0, 1, 0});

  auto const best = BestCut({5.0, 1.0, 2.0, 4.0, 3.0}, ClassSides(target, GiniImprovement));

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->cutPoint, 3.5);
  // 5 (1 - 9/25 - 4/25)
  EXPECT_NEAR(best->improvement, 2.4, 1e-12);
}

TEST(FindBestCut, SeparatesNumbers) {
  NumberTarget const target{{10.0, 2.0, 2.0, 10.0}, {}};

  auto const best = BestCut({4.0, 1.0, 2.0, 8.0}, NumberSides(target));

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->cutPoint, 3.0);
  EXPECT_NEAR(best->improvement, 64.0, 1e-12) << "the sum of squares, 4 * 4^2";
}

TEST(FindBestCut, FindsNothingWhereNoCutImproves) {
  ClassTarget const pure = TwoClasses({1, 1, 1});
  ClassTarget const mixed = TwoClasses({0, 1, 0, 1});
  NumberTarget const constant{{5.0, 5.0, 5.0}, {}};

  EXPECT_FALSE(BestCut({1.0, 2.0, 3.0}, ClassSides(pure, GiniImprovement)).has_value());
  EXPECT_FALSE(BestCut({7.0, 7.0, 7.0, 7.0}, ClassSides(mixed, GiniImprovement)).has_value())
      << "there is one value only";
  EXPECT_FALSE(BestCut({1.0, 1.0, 2.0, 2.0}, ClassSides(mixed, GiniImprovement)).has_value());
  EXPECT_FALSE(BestCut({1.0, 2.0, 3.0}, NumberSides(constant)).has_value());
  EXPECT_FALSE(BestCut({}, NumberSides(constant)).has_value());
  EXPECT_FALSE(BestCut({1.0}, NumberSides(constant)).has_value());
}

TEST(FindBestCut, TakesTheLowestOfEqualCuts) {
  ClassTarget const target = TwoClasses({0, 1, 1, 0});

  auto const best = BestCut({1.0, 2.0, 3.0, 4.0}, ClassSides(target, GiniImprovement));

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->cutPoint, 1.5);
}

TEST(FindBestCut, LeavesChildrenTheirLeastSize) {
  ClassTarget const target = TwoClasses({0, 1, 1, 1, 1, 0});
  std::vector<double> const values = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
  ChildLimits limits;
  limits.minSize = 2.0;

  auto const best = BestCut(values, ClassSides(target, GiniImprovement), limits);

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->cutPoint, 2.5);
  limits.minSize = 4.0;
  EXPECT_FALSE(BestCut(values, ClassSides(target, GiniImprovement), limits).has_value());
}

TEST(FindBestCut, CountsRepeatedCasesAgainstTheLeastSize) {
  ClassTarget const target{{0, 1, 1}, {3.0, 1.0, 1.0}, {1.0, 1.0}};
  std::vector<double> const frequencies = {3.0, 1.0, 1.0};
  ChildLimits limits{&frequencies, 2.0};

  auto const best = BestCut({1.0, 2.0, 3.0}, ClassSides(target, GiniImprovement), limits);

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->cutPoint, 1.5);
}

TEST(FindBestCut, WeighsClassesByTheirFactors) {
  // Plainly the cut at 2.5 is best; where the second class hardly counts, that at 1.5.
  std::vector<std::uint32_t> const classes = {2, 0, 1, 1, 1, 1};
  std::vector<double> const values = {1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
  ClassTarget const even{classes, {}, {1.0, 1.0, 1.0}};
  ClassTarget const uneven{classes, {}, {1.0, 1e-6, 1.0}};

  EXPECT_EQ(BestCut(values, ClassSides(even, GiniImprovement))->cutPoint, 2.5);
  EXPECT_EQ(BestCut(values, ClassSides(uneven, GiniImprovement))->cutPoint, 1.5);
}

TEST(FindBestCut, LeavesTheSidesEmptyForTheNextSearch) {
  ClassTarget const target = TwoClasses({1, 0, 0, 1, 0});
  ClassSides sides(target, GiniImprovement);
  auto const first = BestCut({5.0, 1.0, 2.0, 4.0, 3.0}, sides);

  auto const second = BestCut({5.0, 1.0, 2.0, 4.0, 3.0}, sides);

  EXPECT_EQ(first->improvement, second->improvement);
  EXPECT_EQ(first->cutPoint, second->cutPoint);
}

/// Random cases with weights and ties, and both kinds of target.
struct RandomCases {
  explicit RandomCases(std::uint32_t seed) {
    RandomNumbers random(seed);
    std::uint32_t const count = 2 + random.Below(30);
    std::uint32_t const numClasses = 2 + random.Below(4);
    classTarget.factors.resize(numClasses);
    for (double& factor : classTarget.factors) factor = random.Multiple(0.1, 20);
    for (std::size_t index = 0; index < count; ++index) {
      values.push_back(random.Below(12) / 4.0);
      classTarget.classes.push_back(random.Below(numClasses));
      numberTarget.values.push_back(random.Below(100) - 50.0);
      frequencies.push_back(random.Multiple(1.0, 3));
    }
    classTarget.weights = numberTarget.weights = frequencies;
    limits = {&frequencies, random.Multiple(1.0, 6)};
  }

  std::vector<double> values;
  ClassTarget classTarget;
  NumberTarget numberTarget;
  std::vector<double> frequencies;
  ChildLimits limits;
};

/// The improvement of one cut, from its own count of both sides; 0 where it is not allowed.
template <class Sides>
double ImprovementOf(double cutPoint, RandomCases const& cases, Sides& sides) {
  double left = 0.0;
  double right = 0.0;
  for (std::uint32_t index = 0; index < cases.values.size(); ++index) {
    sides.AddToRight(index);
    (cases.values[index] <= cutPoint ? left : right) += cases.frequencies[index];
  }
  for (std::uint32_t index = 0; index < cases.values.size(); ++index) {
    if (cases.values[index] <= cutPoint) sides.MoveToLeft(index);
  }
  bool const allowed = left >= cases.limits.minSize && right >= cases.limits.minSize;
  double const improvement = allowed ? sides.Improvement() : 0.0;
  sides.Clear();
  return improvement;
}

template <class Sides>
void ExpectBestOfAll(RandomCases const& cases, Sides sides) {
  auto const best = BestCut(cases.values, sides, cases.limits);
  double largest = 0.0;
  for (double cutPoint = -0.125; cutPoint < 3.0; cutPoint += 0.25) {
    largest = std::max(largest, ImprovementOf(cutPoint, cases, sides));
  }

  if (best.has_value()) {
    EXPECT_NEAR(best->improvement, largest, 1e-9 * std::max(1.0, largest));
    EXPECT_NEAR(ImprovementOf(best->cutPoint, cases, sides), best->improvement,
                1e-9 * std::max(1.0, largest));
  } else {
    EXPECT_NEAR(largest, 0.0, 1e-9);
  }
}

TEST(FindBestCut, IsNotBeatenByAnyCutOfRandomCases) {
  for (std::uint32_t seed = 1; seed <= 500; ++seed) {
    SCOPED_TRACE(seed);
    RandomCases const cases(seed);
    for (ClassImprovement const improvement :
         {GiniImprovement, TwoingImprovement, OrderedTwoingImprovement}) {
      ExpectBestOfAll(cases, ClassSides(cases.classTarget, improvement));
    }
    ExpectBestOfAll(cases, NumberSides(cases.numberTarget));
  }
}

TEST(FindBestCut, FindsTheSameInCasesThatAreRepeatedAndInOnesThatWeighMore) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomCases const weighted(seed);
    RandomCases repeated = weighted;
    repeated.values.clear();
    repeated.classTarget.classes.clear();
    repeated.classTarget.weights.clear();
    for (std::size_t index = 0; index < weighted.values.size(); ++index) {
      for (double copy = 0.0; copy < weighted.frequencies[index]; ++copy) {
        repeated.values.push_back(weighted.values[index]);
        repeated.classTarget.classes.push_back(weighted.classTarget.classes[index]);
      }
    }
    repeated.limits.frequencies = nullptr;

    auto const byWeight = BestCut(
        weighted.values, ClassSides(weighted.classTarget, GiniImprovement), weighted.limits);
    auto const byCopies = BestCut(
        repeated.values, ClassSides(repeated.classTarget, GiniImprovement), repeated.limits);

    ASSERT_EQ(byWeight.has_value(), byCopies.has_value());
    if (!byWeight.has_value()) continue;
    EXPECT_EQ(byWeight->cutPoint, byCopies->cutPoint);
    EXPECT_EQ(byWeight->improvement, byCopies->improvement) << "whole numbers are added exactly";
  }
}

}  // namespace
}  // namespace tree::grow
