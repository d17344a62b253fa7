#include "chaid/class_groups.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::ElementsAre;

using Row = std::vector<std::int64_t>;

ClassGroups GroupsOf(std::vector<Row> const& rows, ClassTestKind kind = ClassTestKind::kPearson,
                     std::size_t numClasses = 2, bool weighted = false, double sizeUnit = 1.0) {
  ClassGroups groups({kind, {}, {}}, numClasses, weighted, sizeUnit);
  for (Row const& row : rows) groups.Append(row.data());
  groups.MakeGroups();
  return groups;
}

TEST(ClassGroups, IgnoreCategoriesWithoutCases) {
  ClassGroups groups({}, 2, false, 1.0);

  EXPECT_TRUE(groups.Append(Row{1, 0}.data()));
  EXPECT_FALSE(groups.Append(Row{0, 0}.data()));

  EXPECT_EQ(groups.GetNumCategories(), 1U);
}

TEST(ClassGroups, HaveTheSizeOfTheirCases) {
  ClassGroups const groups = GroupsOf({{3, 5}, {1, 1}}, ClassTestKind::kPearson, 2, false, 0.5);

  EXPECT_EQ(groups.SizeOf(0), 4.0);
  EXPECT_EQ(groups.SizeOf(1), 1.0);
}

TEST(ClassGroups, AddAndTakeAwayCategories) {
  ClassGroups groups = GroupsOf({{3, 5}, {1, 1}, {10, 20}});

  groups.AddGroup(0, 2);
  groups.AddCategory(0, 1);
  EXPECT_EQ(groups.SizeOf(0), 40.0);

  groups.RemoveCategory(0, 2);
  EXPECT_EQ(groups.SizeOf(0), 10.0);

  groups.ClearGroup(0);
  EXPECT_EQ(groups.SizeOf(0), 0.0);

  groups.MakeGroups();
  EXPECT_EQ(groups.SizeOf(0), 8.0);
}

TEST(ClassGroups, HaveTwoSpareOnes) {
  ClassGroups groups = GroupsOf({{3, 5}, {1, 1}, {10, 20}});

  groups.AddCategory(3, 0);
  groups.AddCategory(4, 1);
  groups.AddCategory(4, 2);

  groups.AddGroup(1, 2);
  EXPECT_EQ(groups.TestPair(3, 4).value, groups.TestPair(0, 1).value);
}

TEST(ClassGroups, TestWhetherTheyDiffer) {
  ClassGroups groups = GroupsOf({{10, 20}, {30, 40}, {5, 5}});

  TestStatistic const pair = groups.TestPair(0, 1);
  TestStatistic const all = groups.Test(std::array<std::size_t, 2>{0, 1});

  EXPECT_NEAR(pair.value, 50.0 / 63.0, 1e-14);
  EXPECT_NEAR(all.value, 50.0 / 63.0, 1e-14);
}

TEST(ClassGroups, TakeWeightsFromBehindSizes) {
  // The example of ClassTest.SeesWhatWeightsDo.
  ClassGroups groups =
      GroupsOf({{10, 10, 40, 10}, {10, 10, 10, 10}}, ClassTestKind::kPearson, 2, true);

  EXPECT_EQ(groups.SizeOf(0), 20.0);
  EXPECT_NEAR(groups.TestPair(0, 1).value, 5.0, 1e-3);
}

TEST(ClassGroups, SortTwoClassesByTheirShares) {
  ClassGroups const groups = GroupsOf({{1, 1}, {9, 1}, {1, 9}, {30, 60}});
  std::vector<std::size_t> categories = {0, 1, 2, 3};

  groups.SortForCuts(categories);

  EXPECT_THAT(categories, ElementsAre(1, 0, 3, 2));
  EXPECT_TRUE(groups.AreCutsBest());
}

TEST(ClassGroups, SortOrderedClassesByTheirMeanScores) {
  ClassGroups const groups =
      GroupsOf({{0, 0, 5}, {9, 0, 1}, {1, 9, 1}}, ClassTestKind::kRowEffects, 3);
  std::vector<std::size_t> categories = {0, 1, 2};

  groups.SortForCuts(categories);

  EXPECT_THAT(categories, ElementsAre(1, 2, 0));
  EXPECT_FALSE(groups.AreCutsBest());
}

TEST(ClassGroups, SortByScoresWhoseSumsAreNoNumbers) {
  ClassTestSettings settings;
  settings.kind = ClassTestKind::kRowEffects;
  settings.scores = {-1.7e308, 0.0, 1.7e308};
  ClassGroups groups(settings, 3, false, 1.0);
  for (std::vector<std::int64_t> const& row :
       {std::vector<std::int64_t>{5, 0, 9}, {5, 0, 0}, {0, 0, 9}, {9, 0, 5}}) {
    groups.Append(row.data());
  }
  std::vector<std::size_t> categories = {0, 1, 2, 3};

  groups.SortForCuts(categories);

  EXPECT_THAT(categories, ElementsAre(1, 3, 0, 2));
}

TEST(ClassGroups, SortSomeCategoriesOfManyClasses) {
  ClassGroups const groups =
      GroupsOf({{9, 1, 1}, {0, 0, 7}, {1, 1, 9}, {7, 1, 2}, {3, 1, 4}}, ClassTestKind::kPearson, 3);
  std::vector<std::size_t> categories = {0, 2, 3, 4};

  groups.SortForCuts(categories);

  if (categories.front() == 2) std::reverse(categories.begin(), categories.end());
  EXPECT_THAT(categories, ElementsAre(0, 3, 4, 2));
}

}  // namespace
}  // namespace tree::grow
