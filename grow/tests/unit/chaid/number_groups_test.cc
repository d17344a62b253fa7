#include "chaid/number_groups.h"

#include <array>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::ElementsAre;

NumberGroups GroupsOf(std::vector<std::vector<std::int64_t>> const& categories,
                      double sizeUnit = 1.0) {
  NumberGroups groups(sizeUnit);
  for (auto const& numbers : categories) {
    NumberSums sums;
    for (std::int64_t const number : numbers) sums.AddCase(1, 1, number);
    groups.Append(&sums);
  }
  groups.MakeGroups();
  return groups;
}

TEST(NumberGroups, IgnoreCategoriesWithoutCases) {
  NumberGroups groups(1.0);
  NumberSums sums;

  EXPECT_FALSE(groups.Append(&sums));
  sums.AddCase(1, 1, 5);
  EXPECT_TRUE(groups.Append(&sums));

  EXPECT_EQ(groups.GetNumCategories(), 1U);
}

TEST(NumberGroups, TestWhetherTheyDiffer) {
  // The example of FTest.ComparesMeanSquares.
  NumberGroups groups = GroupsOf({{1, 2, 3}, {3, 4, 5}, {8, 9, 10}});

  EXPECT_DOUBLE_EQ(groups.Test(std::array<std::size_t, 3>{0, 1, 2}).value, 39.0);
  // Means 2 and 4, of both 3: between 6, within 4 / 4.
  EXPECT_DOUBLE_EQ(groups.TestPair(0, 1).value, 6.0);
}

TEST(NumberGroups, AddAndTakeAwayCategories) {
  NumberGroups groups = GroupsOf({{1, 2, 3}, {3, 4, 5}, {8, 9, 10}}, 2.0);

  groups.AddGroup(0, 2);
  groups.AddCategory(0, 1);
  EXPECT_EQ(groups.SizeOf(0), 18.0);

  groups.RemoveCategory(0, 1);
  groups.RemoveCategory(0, 2);
  EXPECT_EQ(groups.SizeOf(0), 6.0);
  EXPECT_DOUBLE_EQ(groups.TestPair(0, 1).value, 6.0 * (12.0 - 2.0) / (6.0 - 2.0));

  groups.ClearGroup(1);
  EXPECT_EQ(groups.SizeOf(1), 0.0);

  groups.MakeGroups();
  EXPECT_EQ(groups.SizeOf(1), 6.0);
}

TEST(NumberGroups, HaveTwoSpareOnes) {
  NumberGroups groups = GroupsOf({{1, 2, 3}, {3, 4, 5}, {8, 9, 10}});

  groups.AddCategory(3, 0);
  groups.AddCategory(4, 2);

  EXPECT_EQ(groups.TestPair(3, 4).value, groups.TestPair(0, 2).value);
}

TEST(NumberGroups, SortByTheirMeans) {
  NumberGroups const groups = GroupsOf({{9, 9}, {1, 2}, {100}, {-5, 8}});
  std::vector<std::size_t> categories = {0, 1, 2, 3};

  groups.SortForCuts(categories);

  EXPECT_THAT(categories, ElementsAre(1, 3, 0, 2));
}

}  // namespace
}  // namespace tree::grow
