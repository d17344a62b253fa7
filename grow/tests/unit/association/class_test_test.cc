#include "association/class_test.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

constexpr ClassTestKind kKinds[] = {ClassTestKind::kPearson, ClassTestKind::kLikelihoodRatio,
                                    ClassTestKind::kRowEffects};

struct Table {
  std::vector<std::vector<double>> sizes;
  std::vector<std::vector<double>> weights = {};

  std::vector<ClassRow> Rows() const {
    std::vector<ClassRow> rows;
    for (std::size_t row = 0; row < sizes.size(); ++row) {
      rows.push_back({sizes[row].data(), weights.empty() ? nullptr : weights[row].data()});
    }
    return rows;
  }
};

ClassTestSettings Exactly(ClassTestKind kind, std::vector<double> scores = {}) {
  return {kind, {1e-11, 10000}, std::move(scores)};
}

TestStatistic TestOf(ClassTestKind kind, Table const& table, double sizeUnit = 1.0) {
  return ClassTest(Exactly(kind), table.sizes[0].size(), sizeUnit).Test(table.Rows());
}

TEST(ClassTest, FindsPearsonsChiSquare) {
  // Expected 12 18 / 28 42: 4 (1/12 + 1/18 + 1/28 + 1/42) = 50 / 63.
  TestStatistic const statistic = TestOf(ClassTestKind::kPearson, {{{10.0, 20.0}, {30.0, 40.0}}});

  EXPECT_NEAR(statistic.value, 50.0 / 63.0, 1e-14);
  EXPECT_EQ(statistic.degreesOfFreedom, 1.0);
  EXPECT_EQ(statistic.errorDegreesOfFreedom, 0.0);
}

TEST(ClassTest, FindsTheLikelihoodRatio) {
  TestStatistic const statistic =
      TestOf(ClassTestKind::kLikelihoodRatio, {{{10.0, 20.0}, {30.0, 0.0}}});

  // Expected 20 10 / 20 10.
  EXPECT_NEAR(statistic.value,
              2.0 * (10.0 * std::log(0.5) + 20.0 * std::log(2.0) + 30.0 * std::log(1.5)), 1e-13);
  EXPECT_EQ(statistic.degreesOfFreedom, 1.0);
}

TEST(ClassTest, FindsRowEffectsToBeAllThereIsInTwoClasses) {
  Table const table = {{{10.0, 20.0}, {30.0, 40.0}, {17.0, 4.0}}};

  TestStatistic const statistic = TestOf(ClassTestKind::kRowEffects, table);

  EXPECT_NEAR(statistic.value, TestOf(ClassTestKind::kLikelihoodRatio, table).value, 1e-9);
  EXPECT_EQ(statistic.degreesOfFreedom, 2.0);
}

// The rows of a table as its columns.
Table Transpose(Table const& table) {
  Table turned = {std::vector(table.sizes.front().size(), std::vector<double>(table.sizes.size()))};
  for (std::size_t row = 0; row < table.sizes.size(); ++row) {
    for (std::size_t column = 0; column < table.sizes[row].size(); ++column) {
      turned.sizes[column][row] = table.sizes[row][column];
    }
  }
  return turned;
}

struct RowEffectsExample {
  char const* name;
  Table table;
  double independence;  // likelihood ratios that models leave over
  double ofRows;
  double ofColumns;
};

// * Occupations of men in Britain (columns) by those of their fathers (rows): the data of Goodman's
//   paper of 1979, as the data set occupationalStatus of R has them.
// * Mental health (well, mild, moderate, impaired) of 1,660 people by the socioeconomic status of
//   their parents, highest first. The vignette "Loglinear Models" of the R package vcdExtra 0.8
//   prints 47.418 with 15 degrees of freedom for independence, 6.829 with 10 for effects of the
//   status and 6.281 with 12 for those of the health.
// All digits are those of R's glm.
TEST(ClassTest, FindsTheRowEffectsOfKnownExamples) {
  RowEffectsExample const examples[] = {
      {"occupations",
       {{{50.0, 19.0, 26.0, 8.0, 7.0, 11.0, 6.0, 2.0},
         {16.0, 40.0, 34.0, 18.0, 11.0, 20.0, 8.0, 3.0},
         {12.0, 35.0, 65.0, 66.0, 35.0, 88.0, 23.0, 21.0},
         {11.0, 20.0, 58.0, 110.0, 40.0, 183.0, 64.0, 32.0},
         {2.0, 8.0, 12.0, 23.0, 25.0, 46.0, 28.0, 12.0},
         {12.0, 28.0, 102.0, 162.0, 90.0, 554.0, 230.0, 177.0},
         {0.0, 6.0, 19.0, 40.0, 21.0, 158.0, 143.0, 71.0},
         {0.0, 3.0, 14.0, 32.0, 15.0, 126.0, 91.0, 106.0}}},
       954.489237572,
       130.081252266,
       120.002383180},
      {"mental health",
       {{{64.0, 94.0, 58.0, 46.0},
         {57.0, 94.0, 54.0, 40.0},
         {57.0, 105.0, 65.0, 60.0},
         {72.0, 141.0, 77.0, 94.0},
         {36.0, 97.0, 54.0, 78.0},
         {21.0, 71.0, 54.0, 71.0}}},
       47.417847,
       6.829334,
       6.280761},
  };
  for (RowEffectsExample const& example : examples) {
    SCOPED_TRACE(example.name);
    auto const numRows = static_cast<double>(example.table.sizes.size());
    auto const numColumns = static_cast<double>(example.table.sizes.front().size());
    double const tolerance = 5e-6;

    TestStatistic const independence = TestOf(ClassTestKind::kLikelihoodRatio, example.table);
    TestStatistic const ofRows = TestOf(ClassTestKind::kRowEffects, example.table);
    TestStatistic const ofColumns = TestOf(ClassTestKind::kRowEffects, Transpose(example.table));

    EXPECT_NEAR(independence.value, example.independence, tolerance);
    EXPECT_EQ(independence.degreesOfFreedom, (numRows - 1.0) * (numColumns - 1.0));
    EXPECT_NEAR(ofRows.value, example.independence - example.ofRows, tolerance);
    EXPECT_EQ(ofRows.degreesOfFreedom, numRows - 1.0);
    EXPECT_NEAR(ofColumns.value, example.independence - example.ofColumns, tolerance);
    EXPECT_EQ(ofColumns.degreesOfFreedom, numColumns - 1.0);
  }
}

TEST(ClassTest, CountsOnlyRowsAndColumnsWithCases) {
  Table const table = {{{10.0, 20.0, 5.0}, {30.0, 40.0, 9.0}, {3.0, 2.0, 8.0}}};
  Table const padded = {
      {{10.0, 0.0, 20.0, 5.0}, {0.0, 0.0, 0.0, 0.0}, {30.0, 0.0, 40.0, 9.0}, {3.0, 0.0, 2.0, 8.0}}};
  for (ClassTestKind const kind : kKinds) {
    SCOPED_TRACE(static_cast<int>(kind));
    // Scores 0, 2, 3 of the columns that are left.
    ClassTest test(Exactly(kind, {0.0, 2.0, 3.0}), 3, 1.0);
    TestStatistic const expected = test.Test(table.Rows());

    TestStatistic const statistic = TestOf(kind, padded);

    EXPECT_NEAR(statistic.value, expected.value, 1e-10);
    EXPECT_EQ(statistic.degreesOfFreedom, kind == ClassTestKind::kRowEffects ? 2.0 : 4.0);
  }
}

TEST(ClassTest, HasNothingToTest) {
  struct Row {
    char const* name;
    Table table;
  };
  Row const rows[] = {
      {"one row", {{{10.0, 20.0}}}},
      {"one row with cases", {{{10.0, 20.0}, {0.0, 0.0}}}},
      {"one class left", {{{10.0, 0.0}, {20.0, 0.0}}}},
      {"no cases", {{{0.0, 0.0}, {0.0, 0.0}}}},
  };
  for (Row const& row : rows) {
    for (ClassTestKind const kind : kKinds) {
      SCOPED_TRACE(row.name + std::to_string(static_cast<int>(kind)));

      TestStatistic const statistic = TestOf(kind, row.table);

      EXPECT_EQ(statistic.value, 0.0);
      EXPECT_EQ(statistic.degreesOfFreedom, 0.0);
      EXPECT_EQ(LogP(statistic), 0.0);
    }
  }
}

TEST(ClassTest, FindsNoRowEffectsWhenAllScoresAreTheSame) {
  Table const table = {{{10.0, 20.0, 1.0}, {30.0, 2.0, 1.0}}};
  ClassTest test(Exactly(ClassTestKind::kRowEffects, {4.0, 4.0, 4.0}), 3, 1.0);

  EXPECT_EQ(test.Test(table.Rows()).degreesOfFreedom, 0.0);
}

TEST(ClassTest, FindsEqualSharesToBeEqual) {
  Table const table = {{{1.0, 2.0, 5.0}, {3.0, 6.0, 15.0}}};
  for (ClassTestKind const kind : kKinds) {
    EXPECT_NEAR(TestOf(kind, table).value, 0.0, 1e-12);
  }
  EXPECT_EQ(ClassTest(Exactly(ClassTestKind::kPearson), 3, 1.0)
                .TestPair(table.Rows()[0], table.Rows()[1])
                .value,
            0.0);
}

TEST(ClassTest, GrowsWithTheUnitOfSizes) {
  Table const table = {{{10.0, 20.0, 9.0}, {30.0, 40.0, 2.0}}};
  for (ClassTestKind const kind : kKinds) {
    double const value = TestOf(kind, table).value;

    EXPECT_NEAR(TestOf(kind, table, 0.25).value, 0.25 * value, 1e-9);
  }
}

TEST(ClassTest, TakesEpsilonInCases) {
  // The same table in quarters of cases: the fit ends at the same step.
  Table const whole = {{{10.0, 20.0, 9.0}, {30.0, 40.0, 2.0}},
                       {{5.0, 90.0, 9.0}, {30.0, 40.0, 8.0}}};
  Table quarters = whole;
  for (auto& row : quarters.sizes) {
    for (double& size : row) size *= 4.0;
  }
  ClassTestSettings const settings{ClassTestKind::kRowEffects, {0.5, 100}, {}};

  double const value = ClassTest(settings, 3, 1.0).Test(whole.Rows()).value;

  EXPECT_NEAR(ClassTest(settings, 3, 0.25).Test(quarters.Rows()).value, value, 1e-12);
  ClassTestSettings const fine{ClassTestKind::kRowEffects, {1e-9, 100}, {}};
  EXPECT_GT(std::abs(ClassTest(fine, 3, 1.0).Test(whole.Rows()).value - value), 1e-9);
}

TEST(ClassTest, TakesWeightsThatAreAllTheSameForNone) {
  Table const table = {{{10.0, 20.0, 5.0}, {30.0, 40.0, 9.0}, {3.0, 0.0, 8.0}}};
  Table weighted = table;
  weighted.weights = table.sizes;
  for (auto& row : weighted.weights) {
    for (double& weight : row) weight *= 3.0;
  }
  for (ClassTestKind const kind : kKinds) {
    EXPECT_NEAR(TestOf(kind, weighted).value, TestOf(kind, table).value, 1e-9);
  }
}

TEST(ClassTest, SeesWhatWeightsDo) {
  // Weighted, rows differ as they do not in numbers of cases: 10 * 4 of 10 * 4 + 10 against half.
  // The expected frequencies 20 / 3, 40 / 3 have the odds of the reciprocal weights, 1 / 4.
  Table const table = {{{10.0, 10.0}, {10.0, 10.0}}, {{40.0, 10.0}, {10.0, 10.0}}};

  TestStatistic const statistic = TestOf(ClassTestKind::kPearson, table);

  // m (10 - x, x; x, 10 - x) around: ((10 - d) / (10 + d))^2 = 1 / 4, so d = 10 / 3.
  double const d = 10.0 / 3.0;
  EXPECT_NEAR(statistic.value, d * d * (2.0 / (10.0 - d) + 2.0 / (10.0 + d)), 1e-9);
}

TEST(ClassTest, GivesPairsTheValueOfTwoRows) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const numClasses = 2 + seed % 4;
    Table table;
    table.sizes.resize(2);
    for (auto& row : table.sizes) {
      for (std::size_t j = 0; j < numClasses; ++j) row.push_back(random.Below(seed % 2 ? 4 : 1000));
    }
    if (seed % 3 == 0) {
      table.weights = table.sizes;
      for (auto& row : table.weights) {
        for (double& weight : row) weight *= random.Multiple(0.5, 7);
      }
    }
    for (ClassTestKind const kind : kKinds) {
      ClassTest test(Exactly(kind), numClasses, 0.5);
      TestStatistic const expected = test.Test(table.Rows());

      TestStatistic const pair = test.TestPair(table.Rows()[0], table.Rows()[1]);
      TestStatistic const turned = test.TestPair(table.Rows()[1], table.Rows()[0]);

      EXPECT_NEAR(pair.value, expected.value, 1e-9 * (1.0 + expected.value));
      EXPECT_NEAR(turned.value, pair.value, 1e-7 * (1.0 + expected.value));
      EXPECT_EQ(pair.degreesOfFreedom, expected.degreesOfFreedom);
      if (kind == ClassTestKind::kPearson && table.weights.empty()) {
        EXPECT_EQ(turned.value, pair.value);
      }
    }
  }
}

}  // namespace
}  // namespace tree::grow
