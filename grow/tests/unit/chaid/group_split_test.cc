#include "chaid/group_split.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

using Row = std::vector<std::int64_t>;

ClassGroups GroupsOf(std::vector<Row> const& rows, ClassTestKind kind = ClassTestKind::kPearson) {
  ClassGroups groups({kind, {}, {}}, rows[0].size(), false, 1.0);
  for (Row const& row : rows) groups.Append(row.data());
  groups.MakeGroups();
  return groups;
}

TEST(GroupSplit, DividesNominalCategoriesInAnyWay) {
  ClassGroups groups = GroupsOf({{9, 1}, {1, 1}, {8, 2}, {2, 9}});
  GroupSplit<ClassGroups> split;

  TestStatistic const statistic =
      split.Find(groups, std::vector<std::size_t>{0, 1, 2, 3}, CategoryKind::kNominal, false);

  // {9 1} and {8 2} against {1 1} and {2 9}: shares 17/20 and 3/13 around 20/33.
  EXPECT_THAT(split.GetFirst(), ElementsAre(0, 2));
  EXPECT_THAT(split.GetSecond(), ElementsAre(1, 3));
  double const share = 20.0 / 33.0;
  double const between = 20.0 * (17.0 / 20.0 - share) * (17.0 / 20.0 - share) +
                         13.0 * (3.0 / 13.0 - share) * (3.0 / 13.0 - share);
  EXPECT_NEAR(statistic.value, between / (share * (1.0 - share)), 1e-12);
}

TEST(GroupSplit, CutsOrdinalCategories) {
  ClassGroups groups = GroupsOf({{9, 1}, {1, 1}, {8, 2}, {2, 9}});
  GroupSplit<ClassGroups> split;

  split.Find(groups, std::vector<std::size_t>{0, 1, 2, 3}, CategoryKind::kOrdinal, false);

  EXPECT_THAT(split.GetFirst(), ElementsAre(0, 1, 2));
  EXPECT_THAT(split.GetSecond(), ElementsAre(3));
}

TEST(GroupSplit, DividesOnlyTheCategoriesOfTheGroup) {
  ClassGroups groups = GroupsOf({{9, 1}, {100, 1}, {1, 100}, {8, 2}, {2, 9}});
  GroupSplit<ClassGroups> split;

  split.Find(groups, std::vector<std::size_t>{0, 3, 4}, CategoryKind::kOrdinal, false);

  EXPECT_THAT(split.GetFirst(), ElementsAre(0, 3));
  EXPECT_THAT(split.GetSecond(), ElementsAre(4));
}

TEST(GroupSplit, LetsTheFloatingCategoryBeOnEitherSideOrAlone) {
  struct Case {
    char const* name;
    Row floating;
    std::vector<std::size_t> first;
  };
  Case const cases[] = {
      {"with the lower side", {90, 10}, {0, 3}},
      {"with the upper side", {10, 90}, {0}},
      {"alone", {500, 0}, {0, 1, 2}},
  };
  for (Case const& one : cases) {
    SCOPED_TRACE(one.name);
    ClassGroups groups = GroupsOf({{15, 5}, {5, 15}, {4, 15}, one.floating});
    if (one.first.size() == 3) groups = GroupsOf({{11, 9}, {9, 11}, {9, 11}, one.floating});
    GroupSplit<ClassGroups> split;

    split.Find(groups, std::vector<std::size_t>{0, 1, 2, 3}, CategoryKind::kOrdinal, true);

    EXPECT_EQ(split.GetFirst(), one.first);
  }
}

TEST(GroupSplit, LeavesTheGroupsThemselvesAsTheyAre) {
  ClassGroups groups = GroupsOf({{9, 1}, {1, 1}, {8, 2}});
  groups.AddGroup(0, 1);
  double const before = groups.TestPair(0, 2).value;
  GroupSplit<ClassGroups> split;

  split.Find(groups, std::vector<std::size_t>{0, 1}, CategoryKind::kNominal, false);

  EXPECT_EQ(groups.TestPair(0, 2).value, before);
}

TEST(GroupSplit, PollsBeforeEachDivisionIsTested) {
  struct Case {
    CategoryKind kind;
    bool floating;
    int numDivisions;
  };
  for (Case const& one : {Case{CategoryKind::kNominal, false, 7},
                          {CategoryKind::kOrdinal, false, 3},
                          {CategoryKind::kOrdinal, true, 5}}) {
    ClassGroups groups = GroupsOf({{9, 1, 3}, {1, 1, 2}, {8, 2, 5}, {2, 9, 1}});
    GroupSplit<ClassGroups> split;
    int numPolls = 0;

    split.Find(groups, std::vector<std::size_t>{0, 1, 2, 3}, one.kind, one.floating,
               [&] { ++numPolls; });

    EXPECT_EQ(numPolls, one.numDivisions);
  }
}

/// The greatest statistic of all divisions.
template <class Groups>
double TryAllDivisions(Groups& groups, std::size_t count) {
  double best = 0.0;
  for (std::size_t mask = 1; mask + 1 < std::size_t{1} << count; ++mask) {
    groups.ClearGroup(count);
    groups.ClearGroup(count + 1);
    for (std::size_t category = 0; category < count; ++category) {
      groups.AddCategory(mask >> category & 1 ? count : count + 1, category);
    }
    best = std::max(best, groups.TestPair(count, count + 1).value);
  }
  return best;
}

TEST(GroupSplit, FindsTheBestOfAllDivisionsOfNominalCategories) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 2 + random.Below(7);
    std::vector<Row> rows(count, Row(2 + seed % 3));
    for (Row& row : rows) {
      for (std::int64_t& size : row) size = 1 + random.Below(50);
    }
    std::vector<std::size_t> categories(count);
    for (std::size_t category = 0; category < count; ++category) categories[category] = category;
    auto const kind = seed % 5 == 0   ? ClassTestKind::kRowEffects
                      : seed % 2 == 0 ? ClassTestKind::kLikelihoodRatio
                                      : ClassTestKind::kPearson;
    ClassGroups groups = GroupsOf(rows, kind);
    GroupSplit<ClassGroups> split;

    double const found = split.Find(groups, categories, CategoryKind::kNominal, false).value;

    double const best = TryAllDivisions(groups, count);
    EXPECT_NEAR(found, best, 1e-9 * best);
  }
}

TEST(GroupSplit, FindsTheBestOfAllDivisionsByNumbers) {
  for (std::uint32_t seed = 1; seed <= 30; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 2 + random.Below(7);
    NumberGroups groups(1.0);
    std::vector<std::size_t> categories(count);
    for (std::size_t category = 0; category < count; ++category) {
      categories[category] = category;
      NumberSums sums;
      for (std::uint32_t index = random.Below(5); index < 6; ++index) {
        sums.AddCase(1, 1 + random.Below(4), random.Below(1000));
      }
      groups.Append(&sums);
    }
    groups.MakeGroups();
    GroupSplit<NumberGroups> split;

    double const found = split.Find(groups, categories, CategoryKind::kNominal, false).value;

    double const best = TryAllDivisions(groups, count);
    EXPECT_NEAR(found, best, 1e-9 * best);
  }
}

TEST(GroupSplit, CutsManyCategoriesOfManyClassesInAnOrder) {
  // Two kinds of categories, in turn.
  std::vector<Row> rows;
  std::vector<std::size_t> categories;
  for (std::size_t category = 0; category < 30; ++category) {
    rows.push_back(category % 2 == 0 ? Row{10, 20, 30} : Row{30, 20, 5});
    categories.push_back(category);
  }
  ClassGroups groups = GroupsOf(rows);
  GroupSplit<ClassGroups> split;

  split.Find(groups, categories, CategoryKind::kNominal, false);

  EXPECT_EQ(split.GetFirst().size(), 15U);
  for (std::size_t const category : split.GetFirst()) EXPECT_EQ(category % 2, 0U);
}

}  // namespace
}  // namespace tree::grow
