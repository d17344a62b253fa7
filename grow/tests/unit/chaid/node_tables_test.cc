#include "chaid/node_tables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr std::array<std::size_t, 3> kNumCategories = {2, 3, 1};

TEST(TableLayout, PlacesTablesOneAfterAnother) {
  TableLayout const layout = TableLayout::OfClasses(kNumCategories, 5, false);

  EXPECT_EQ(layout.GetNumPredictors(), 3U);
  EXPECT_EQ(layout.GetRowSize(), 5U);
  EXPECT_EQ(layout.GetBegin(0), 0U);
  EXPECT_EQ(layout.GetBegin(1), 10U);
  EXPECT_EQ(layout.GetBegin(2), 25U);
  EXPECT_EQ(layout.GetSize(1), 15U);
  EXPECT_EQ(layout.GetTotalSize(), 30U);
}

TEST(TableLayout, HasWeightsBehindSizes) {
  EXPECT_EQ(TableLayout::OfClasses(kNumCategories, 5, true).GetRowSize(), 10U);
}

TEST(TableLayout, HasOneEntryOfNumbersForACategory) {
  EXPECT_EQ(TableLayout::OfNumbers(kNumCategories).GetTotalSize(), 6U);
}

TEST(NodeTables, StartWithoutCases) {
  TableLayout const layout = TableLayout::OfClasses(kNumCategories, 2, false);
  ClassTables const tables(layout);

  EXPECT_THAT(tables.Table(1), ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST(NodeTables, KeepRowsOfCategoriesApart) {
  TableLayout const layout = TableLayout::OfClasses(kNumCategories, 2, false);
  ClassTables tables(layout);

  ++tables.Row(1, 2)[1];
  tables.Table(1)[0] += 7;
  tables.Row(2, 0)[1] = 5;

  ClassTables const& filled = tables;
  EXPECT_THAT(filled.Table(0), Each(0));
  EXPECT_THAT(filled.Table(1), ElementsAre(7, 0, 0, 0, 0, 1));
  EXPECT_THAT(filled.Table(2), ElementsAre(0, 5));
}

struct Case {
  std::array<std::size_t, 3> categories;
  std::size_t classIndex;
  std::int64_t weight;
};

std::vector<Case> MakeCases(std::uint32_t seed, std::size_t count) {
  RandomNumbers random(seed);
  std::vector<Case> cases;
  for (std::size_t index = 0; index < count; ++index) {
    cases.push_back({{random.Below(2), random.Below(3), 0}, random.Below(2), 1 + random.Below(99)});
  }
  return cases;
}

TEST(ClassTables, OfPartsAddUpToThoseOfAllCasesInAnyOrder) {
  TableLayout const layout = TableLayout::OfClasses(kNumCategories, 2, true);
  ClassTables whole(layout);
  std::vector<ClassTables> parts(3, ClassTables(layout));
  std::vector<Case> const cases = MakeCases(1, 100);
  auto const add = [](ClassTables& tables, Case const& one) {
    for (std::size_t predictor = 0; predictor < 3; ++predictor) {
      tables.Row(predictor, one.categories[predictor])[one.classIndex] += 1;
      tables.Row(predictor, one.categories[predictor])[2 + one.classIndex] += one.weight;
    }
  };
  for (std::size_t index = 0; index < cases.size(); ++index) {
    add(whole, cases[index]);
    add(parts[index * index % 3], cases[index]);
  }

  ClassTables forward = parts[0];
  forward.Merge(parts[1]);
  forward.Merge(parts[2]);
  ClassTables backward = parts[2];
  backward.Merge(parts[1]);
  backward.Merge(parts[0]);

  EXPECT_TRUE(forward == whole);
  EXPECT_TRUE(backward == whole);
  whole.Remove(parts[1]);
  ClassTables others = parts[0];
  others.Merge(parts[2]);
  EXPECT_TRUE(whole == others);
}

TEST(NumberTables, OfPartsAddUpToThoseOfAllCases) {
  TableLayout const layout = TableLayout::OfNumbers(kNumCategories);
  NumberTables whole(layout);
  std::vector<NumberTables> parts(2, NumberTables(layout));
  std::size_t index = 0;
  for (Case const& one : MakeCases(2, 100)) {
    std::int64_t const number = (one.weight - 50) << 50;
    for (std::size_t predictor = 0; predictor < 3; ++predictor) {
      std::size_t const category = one.categories[predictor];
      whole.Row(predictor, category)->AddCase(1, one.weight, number);
      parts[index % 2].Row(predictor, category)->AddCase(1, one.weight, number);
    }
    ++index;
  }

  parts[0].Merge(parts[1]);

  EXPECT_TRUE(parts[0] == whole);
  parts[0].Remove(whole);
  EXPECT_TRUE(parts[0] == NumberTables(layout));
}

}  // namespace
}  // namespace tree::grow
