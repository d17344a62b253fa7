#include "association/f_test.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

NumberSums SumsOf(std::vector<std::int64_t> const& numbers, std::int64_t weight = 1) {
  NumberSums sums;
  for (std::int64_t const number : numbers) sums.AddCase(1, weight, number);
  return sums;
}

NumberGroup GroupOf(std::vector<std::int64_t> const& numbers, std::int64_t centre = 0) {
  return SumUp(SumsOf(numbers), centre);
}

TEST(SumUp, GivesMeanFromTheCentreAndSquaresAroundTheMean) {
  NumberGroup const group = GroupOf({10, 11, 15}, 8);

  EXPECT_EQ(group.size, 3.0);
  EXPECT_EQ(group.weight, 3.0);
  EXPECT_EQ(group.mean, 4.0);
  EXPECT_EQ(group.within, 4.0 + 1.0 + 9.0);
}

TEST(SumUp, LosesNoDigitsFarFromZero) {
  std::int64_t const far = std::int64_t{1} << 57;

  NumberGroup const group = GroupOf({far + 1, far + 2, far + 6}, far);

  EXPECT_EQ(group.mean, 3.0);
  EXPECT_EQ(group.within, 4.0 + 1.0 + 9.0);
}

TEST(SumUp, FindsNothingWithinEqualNumbers) {
  std::int64_t const far = (std::int64_t{1} << 57) + 12345;

  EXPECT_EQ(GroupOf({-far, -far, -far}).within, 0.0);
}

TEST(SumUp, OfNothingIsZero) {
  NumberGroup const group = SumUp({}, 5);

  EXPECT_EQ(group.size, 0.0);
  EXPECT_EQ(group.mean, 0.0);
  EXPECT_EQ(group.within, 0.0);
}

TEST(FTest, ComparesMeanSquares) {
  // Means 2, 4 and 9, of all 5: between 3 (9 + 1 + 16) / 2 = 39, within (2 + 2 + 2) / 6 = 1.
  std::vector<NumberGroup> const groups = {GroupOf({1, 2, 3}), GroupOf({3, 4, 5}),
                                           GroupOf({8, 9, 10})};

  TestStatistic const statistic = FTest(groups, 1.0);

  EXPECT_DOUBLE_EQ(statistic.value, 39.0);
  EXPECT_EQ(statistic.degreesOfFreedom, 2.0);
  EXPECT_EQ(statistic.errorDegreesOfFreedom, 6.0);
}

TEST(FTest, OfAPairIsThatOfTwoGroups) {
  NumberGroup const first = SumUp(SumsOf({1, 2, 9}, 5), 3);
  NumberGroup const second = SumUp(SumsOf({4, 40}, 2), 3);
  std::vector<NumberGroup> const both = {first, second};

  TestStatistic const pair = FTest(first, second, 2.0);
  TestStatistic const turned = FTest(second, first, 2.0);
  TestStatistic const general = FTest(both, 2.0);

  EXPECT_EQ(pair.value, turned.value);
  EXPECT_NEAR(pair.value, general.value, 1e-14 * general.value);
  EXPECT_EQ(pair.degreesOfFreedom, 1.0);
  EXPECT_EQ(pair.errorDegreesOfFreedom, 2.0 * 5.0 - 2.0);
  EXPECT_EQ(general.errorDegreesOfFreedom, pair.errorDegreesOfFreedom);
}

TEST(FTest, TakesWeightsThatAreAllTheSameForNone) {
  std::vector<NumberGroup> const plain = {GroupOf({1, 2, 6}), GroupOf({4, 7})};
  std::vector<NumberGroup> const weighted = {SumUp(SumsOf({1, 2, 6}, 64), 0),
                                             SumUp(SumsOf({4, 7}, 64), 0)};

  EXPECT_DOUBLE_EQ(FTest(weighted, 1.0).value, FTest(plain, 1.0).value);
  EXPECT_EQ(FTest(weighted, 1.0).errorDegreesOfFreedom, 3.0);
}

TEST(FTest, LeavesOutGroupsWithoutCases) {
  std::vector<NumberGroup> const groups = {GroupOf({1, 2}), SumUp({}, 0), GroupOf({4, 7})};
  std::vector<NumberGroup> const without = {groups[0], groups[2]};

  EXPECT_EQ(FTest(groups, 1.0).value, FTest(without, 1.0).value);
  EXPECT_EQ(FTest(groups, 1.0).degreesOfFreedom, 1.0);
}

TEST(FTest, IsInfiniteWhereOnlyGroupsDiffer) {
  std::vector<NumberGroup> const groups = {GroupOf({3, 3}), GroupOf({4, 4})};

  TestStatistic const statistic = FTest(groups, 1.0);

  EXPECT_TRUE(std::isinf(statistic.value));
  EXPECT_EQ(LogP(statistic), -INFINITY);
}

TEST(FTest, HasNothingToTest) {
  struct Row {
    char const* name;
    std::vector<NumberGroup> groups;
  };
  Row const rows[] = {
      {"no group", {}},
      {"one group", {GroupOf({1, 2, 3})}},
      {"one group with cases", {GroupOf({1, 2, 3}), GroupOf({})}},
      {"no two cases in a group", {GroupOf({1}), GroupOf({2}), GroupOf({7})}},
      {"all numbers the same", {GroupOf({7, 7}), GroupOf({7, 7, 7})}},
      {"all means the same", {GroupOf({6, 8}), GroupOf({5, 7, 9})}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);

    TestStatistic const statistic = FTest(row.groups, 1.0);

    EXPECT_EQ(statistic.value, 0.0);
    EXPECT_EQ(LogP(statistic), 0.0);
  }
}

}  // namespace
}  // namespace tree::grow
