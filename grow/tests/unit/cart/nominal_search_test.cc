#include "cart/nominal_search.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cart/sides.h"
#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

std::vector<CodedCase> Coded(std::vector<std::uint32_t> const& codes) {
  std::vector<CodedCase> cases;
  for (std::uint32_t index = 0; index < codes.size(); ++index)
    cases.push_back({codes[index], index});
  return cases;
}

template <class Sides>
std::optional<NominalSplit> ByKeys(std::vector<CodedCase> const& cases, Sides&& sides,
                                   ChildLimits const& limits = {}) {
  return NominalSearch(std::span<CodedCase const>(cases), limits, sides).CutInOrderOfKeys();
}

template <class Sides>
std::optional<NominalSplit> ByTryingAll(std::vector<CodedCase> const& cases, Sides&& sides,
                                        ChildLimits const& limits = {}) {
  return NominalSearch(std::span<CodedCase const>(cases), limits, sides).TryAll();
}

TEST(NominalSearch, SeparatesTwoClasses) {
  ClassTarget const target{{0, 1, 0, 1, 1}, {}, {1.0, 1.0}};

  auto const best = ByKeys(Coded({7, 2, 4, 9, 2}), ClassSides(target, GiniImprovement));

  ASSERT_TRUE(best.has_value());
  EXPECT_THAT(best->left, ElementsAre(4, 7));
  EXPECT_THAT(best->right, ElementsAre(2, 9));
  EXPECT_NEAR(best->improvement, 2.4, 1e-12);
}

TEST(NominalSearch, SeparatesNumbers) {
  NumberTarget const target{{1.0, 9.0, 1.0, 9.0}, {}};

  auto const best = ByKeys(Coded({3, 1, 0, 2}), NumberSides(target));

  ASSERT_TRUE(best.has_value());
  EXPECT_THAT(best->left, ElementsAre(0, 3));
  EXPECT_THAT(best->right, ElementsAre(1, 2));
  EXPECT_NEAR(best->improvement, 64.0, 1e-12);
}

TEST(NominalSearch, SeparatesManyClasses) {
  ClassTarget const target{{0, 1, 2, 0, 1, 2}, {}, {1.0, 1.0, 1.0}};

  auto const best = ByTryingAll(Coded({0, 1, 2, 0, 1, 2}), ClassSides(target, GiniImprovement));

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->left.size() + best->right.size(), 3U);
  // One class against two others: 2^2 / 2 + (2^2 + 2^2) / 4 - 3 * 2^2 / 6.
  EXPECT_NEAR(best->improvement, 2.0, 1e-12);
}

TEST(NominalSearch, FindsNothingInFewerThanTwoCategories) {
  ClassTarget const target{{0, 1}, {}, {1.0, 1.0}};

  EXPECT_FALSE(ByKeys(Coded({5, 5}), ClassSides(target, GiniImprovement)).has_value());
  EXPECT_FALSE(ByTryingAll(Coded({5, 5}), ClassSides(target, GiniImprovement)).has_value());
  EXPECT_FALSE(ByKeys({}, ClassSides(target, GiniImprovement)).has_value());
  EXPECT_FALSE(ByTryingAll({}, ClassSides(target, GiniImprovement)).has_value());
}

TEST(NominalSearch, LeavesChildrenTheirLeastSize) {
  ClassTarget const target{{0, 1, 1, 1}, {}, {1.0, 1.0}};
  ChildLimits limits;
  limits.minSize = 2.0;

  auto const best = ByKeys(Coded({0, 1, 2, 3}), ClassSides(target, GiniImprovement), limits);

  ASSERT_TRUE(best.has_value());
  EXPECT_EQ(best->left.size(), 2U);
  limits.minSize = 3.0;
  EXPECT_FALSE(
      ByKeys(Coded({0, 1, 2, 3}), ClassSides(target, GiniImprovement), limits).has_value());
}

TEST(NominalSearch, DoesNotDependOnTheOrderOfCases) {
  ClassTarget const forward{{0, 1, 2, 0, 1}, {}, {1.0, 1.0, 1.0}};
  ClassTarget const backward{{1, 0, 2, 1, 0}, {}, {1.0, 1.0, 1.0}};

  auto const first = ByTryingAll(Coded({4, 3, 2, 1, 0}), ClassSides(forward, GiniImprovement));
  auto const second = ByTryingAll(Coded({0, 1, 2, 3, 4}), ClassSides(backward, GiniImprovement));

  EXPECT_EQ(first->left, second->left);
  EXPECT_EQ(first->right, second->right);
  EXPECT_EQ(first->improvement, second->improvement);
}

TEST(NominalSearch, LeavesTheSidesEmptyForTheNextSearch) {
  ClassTarget const target{{0, 1, 0, 1, 1}, {}, {1.0, 1.0}};
  ClassSides sides(target, GiniImprovement);
  auto const first = ByTryingAll(Coded({7, 2, 4, 9, 2}), sides);

  auto const second = ByTryingAll(Coded({7, 2, 4, 9, 2}), sides);

  EXPECT_EQ(first->improvement, second->improvement);
}

TEST(NominalSearch, CutsInOrderOfKeysAsWellAsItTriesAll) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const count = 2 + random.Below(40);
    ClassTarget classes{{}, {}, {random.Multiple(0.1, 20), random.Multiple(0.1, 20)}};
    NumberTarget numbers;
    std::vector<std::uint32_t> codes;
    for (std::size_t index = 0; index < count; ++index) {
      codes.push_back(random.Below(9));
      classes.classes.push_back(random.Below(2));
      numbers.values.push_back(random.Below(50));
      numbers.weights.push_back(random.Multiple(0.5, 4));
    }
    classes.weights = numbers.weights;

    auto const compare = [&codes](auto sides) {
      auto const fast = ByKeys(Coded(codes), sides);
      auto const slow = ByTryingAll(Coded(codes), sides);
      double const fastest = fast.has_value() ? fast->improvement : 0.0;
      double const slowest = slow.has_value() ? slow->improvement : 0.0;
      EXPECT_NEAR(fastest, slowest, 1e-9 * std::max(1.0, slowest));
    };
    compare(ClassSides(classes, GiniImprovement));
    compare(ClassSides(classes, TwoingImprovement));
    compare(NumberSides(numbers));
  }
}

/// All divisions, each counted from nothing.
double SlowBest(std::vector<std::uint32_t> const& codes, ClassTarget const& target,
                ClassImprovement improvement) {
  double best = 0.0;
  ClassSides sides(target, improvement);
  for (std::uint32_t goesLeft = 1; goesLeft < 63; ++goesLeft) {
    std::size_t numLeft = 0;
    for (std::uint32_t index = 0; index < codes.size(); ++index) {
      sides.AddToRight(index);
      if ((goesLeft >> codes[index] & 1U) == 0) continue;
      sides.MoveToLeft(index);
      ++numLeft;
    }
    if (numLeft > 0 && numLeft < codes.size()) best = std::max(best, sides.Improvement());
    sides.Clear();
  }
  return best;
}

TEST(NominalSearch, IsNotBeatenByAnyDivisionOfRandomCases) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    ClassTarget target{{}, {}, {1.0, 0.5, 2.0, 1.5}};
    std::vector<std::uint32_t> codes;
    std::uint32_t const count = 2 + random.Below(30);
    for (std::size_t index = 0; index < count; ++index) {
      codes.push_back(random.Below(6));
      target.classes.push_back(random.Below(4));
    }
    for (ClassImprovement const improvement :
         {GiniImprovement, TwoingImprovement, OrderedTwoingImprovement}) {
      auto const best = ByTryingAll(Coded(codes), ClassSides(target, improvement));

      EXPECT_NEAR(best.has_value() ? best->improvement : 0.0, SlowBest(codes, target, improvement),
                  1e-9);
    }
  }
}

}  // namespace
}  // namespace tree::grow
