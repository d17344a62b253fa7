#include "chaid/category_merger.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "unit/chaid/naive_chaid.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

constexpr std::uint16_t kNone = MergedCategories::kNoGroup;

using Table = std::vector<std::vector<std::int64_t>>;  // by category, sizes by class

std::vector<std::int64_t> Flat(Table const& table) {
  std::vector<std::int64_t> entries;
  for (auto const& row : table) entries.insert(entries.end(), row.begin(), row.end());
  return entries;
}

MergedCategories MergeOf(Table const& table, CategoryKind kind, MergeSettings const& settings,
                         bool floating = false, ClassTestSettings const& test = {}) {
  CategoryMerger<ClassGroups> merger(ClassGroups(test, table[0].size(), false, 1.0), settings);
  return merger.Merge(Flat(table), kind, floating);
}

/// The rows have the weights of the classes behind the sizes.
MergedCategories MergeWeighted(Table const& table, CategoryKind kind, MergeSettings const& settings,
                               bool floating = false, ClassTestSettings const& test = {}) {
  CategoryMerger<ClassGroups> merger(ClassGroups(test, table[0].size() / 2, true, 1.0), settings);
  return merger.Merge(Flat(table), kind, floating);
}

/// A category of 100 cases, of which so many are of the second class.
std::vector<std::int64_t> Percent(std::int64_t second) { return {100 - second, second}; }

/// Pearson's chi-square of groups of two classes: of shares around their mean.
double ChiSquareOf(Table const& groups) {
  double size = 0.0;
  double second = 0.0;
  for (auto const& row : groups) {
    size += static_cast<double>(row[0] + row[1]);
    second += static_cast<double>(row[1]);
  }
  double const share = second / size;
  double sum = 0.0;
  for (auto const& row : groups) {
    auto const rowSize = static_cast<double>(row[0] + row[1]);
    double const difference = static_cast<double>(row[1]) / rowSize - share;
    sum += rowSize * difference * difference / (share * (1.0 - share));
  }
  return sum;
}

TEST(CategoryMerger, MergesWhatDoesNotDiffer) {
  MergedCategories const merged =
      MergeOf({Percent(50), Percent(90), Percent(52), Percent(10)}, CategoryKind::kNominal, {});

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 0, 2));
  EXPECT_EQ(merged.numGroups, 3U);
  double const chiSquare = ChiSquareOf({{98, 102}, Percent(90), Percent(10)});
  EXPECT_NEAR(merged.statistic.value, chiSquare, 1e-11);
  EXPECT_EQ(merged.statistic.degreesOfFreedom, 2.0);
  EXPECT_NEAR(merged.logP, -chiSquare / 2.0, 1e-11);
  // Four categories can be merged to three groups in six ways.
  EXPECT_NEAR(merged.adjustedLogP, merged.logP + std::log(6.0), 1e-13);
}

TEST(CategoryMerger, MergesOnlyNeighboursOfOrdinalCategories) {
  MergedCategories const merged =
      MergeOf({Percent(50), Percent(90), Percent(52), Percent(10)}, CategoryKind::kOrdinal, {});

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 2, 3));
  EXPECT_EQ(merged.adjustedLogP, merged.logP);
}

TEST(CategoryMerger, MergesTheLeastSignificantPairFirst) {
  // 30 and 40 differ with p = 0.14, 40 and 49 with p = 0.20, which is merged: 30 and 44.5 differ.
  MergedCategories const merged =
      MergeOf({Percent(30), Percent(40), Percent(49), Percent(90)}, CategoryKind::kOrdinal, {});

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 1, 2));
  EXPECT_NEAR(merged.adjustedLogP - merged.logP, std::log(3.0), 1e-13);
}

TEST(CategoryMerger, LetsTheFloatingCategoryJoinAnyGroup) {
  Table const table = {Percent(10), Percent(50), Percent(90), Percent(12)};

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, {}, true);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 2, 0));
  // binomial(2, 1) + 3 binomial(2, 2)
  EXPECT_NEAR(merged.adjustedLogP - merged.logP, std::log(5.0), 1e-13);
}

TEST(CategoryMerger, LeavesTheFloatingCategoryAloneWhereItDiffers) {
  Table const table = {Percent(10), Percent(12), Percent(50), Percent(90)};

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, {}, true);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0, 1, 2));
}

TEST(CategoryMerger, TakesTheLastCategoryForFloatingOnlyIfItHasCases) {
  Table const table = {Percent(10), Percent(50), Percent(10), {0, 0}};

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, {}, true);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 2, kNone));
}

TEST(CategoryMerger, SkipsCategoriesWithoutCases) {
  Table const table = {{0, 0}, Percent(10), {0, 0}, Percent(12), Percent(90), {0, 0}};

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, {});

  EXPECT_THAT(merged.groupOf, ElementsAre(kNone, 0, kNone, 0, 1, kNone));
  EXPECT_NEAR(merged.adjustedLogP - merged.logP, std::log(2.0), 1e-13);  // of three to two
}

TEST(CategoryMerger, KeepsTwoGroupsHoweverLittleTheyDiffer) {
  MergedCategories const merged =
      MergeOf({Percent(50), Percent(50), Percent(51)}, CategoryKind::kNominal, {});

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0, 1));
  EXPECT_GT(merged.logP, std::log(0.8));
  EXPECT_EQ(merged.adjustedLogP, 0.0);  // no probability is above 1
}

TEST(CategoryMerger, HasOneGroupOrNoneWhereThereIsNothingToMerge) {
  for (CategoryKind const kind : {CategoryKind::kNominal, CategoryKind::kOrdinal}) {
    for (bool const floating : {false, true}) {
      MergedCategories const one = MergeOf({{0, 0}, Percent(10)}, kind, {}, floating);
      EXPECT_THAT(one.groupOf, ElementsAre(kNone, 0));
      EXPECT_EQ(one.numGroups, 1U);
      EXPECT_EQ(one.adjustedLogP, 0.0);

      MergedCategories const none = MergeOf({{0, 0}, {0, 0}}, kind, {}, floating);
      EXPECT_EQ(none.numGroups, 0U);
      EXPECT_EQ(none.adjustedLogP, 0.0);
    }
  }
}

TEST(CategoryMerger, FindsNothingInOneClass) {
  MergedCategories const merged = MergeOf({{10, 0}, {20, 0}, {30, 0}}, CategoryKind::kNominal, {});

  EXPECT_EQ(merged.numGroups, 2U);
  EXPECT_EQ(merged.statistic.degreesOfFreedom, 0.0);
  EXPECT_EQ(merged.adjustedLogP, 0.0);
}

TEST(CategoryMerger, MergesAsTheLevelSays) {
  struct Case {
    double alpha;
    std::vector<std::uint16_t> groupOf;
  };
  // p-values of neighbours: 0.14 and 0.20, see above, then 1e-10.
  Case const cases[] = {
      {1.0, {0, 1, 2, 3}},          {0.25, {0, 1, 2, 3}}, {0.19, {0, 1, 1, 2}},
      {0.005, {0, 0, 0, 1}},        {0.0, {0, 0, 0, 1}},  {-1.0, {0, 0, 0, 1}},
      {std::nan(""), {0, 0, 0, 1}},
  };
  for (Case const& one : cases) {
    SCOPED_TRACE(one.alpha);
    MergeSettings settings;
    settings.alphaOfMerge = one.alpha;

    MergedCategories const merged = MergeOf({Percent(30), Percent(40), Percent(49), Percent(90)},
                                            CategoryKind::kOrdinal, settings);

    EXPECT_EQ(merged.groupOf, one.groupOf);
  }
}

TEST(CategoryMerger, AdjustsOnlyIfWanted) {
  MergeSettings settings;
  settings.useBonferroni = false;

  MergedCategories const merged =
      MergeOf({Percent(10), Percent(12), Percent(90)}, CategoryKind::kNominal, settings);

  EXPECT_EQ(merged.adjustedLogP, merged.logP);
}

TEST(CategoryMerger, MergesTheFirstOfEqualPairs) {
  // Each neighbour differs from the next in the same way: 20 40 60 80.
  Table const table = {Percent(20), Percent(40), Percent(60), Percent(80)};
  MergeSettings settings;
  settings.alphaOfMerge = 1e-6;

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, settings);

  // 20 and 40 differ as 60 and 80 do; in the middle, less.
  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 1, 2));
  Table const twins = {Percent(20), Percent(20), Percent(80), Percent(80), Percent(50)};
  settings.alphaOfMerge = 0.999;
  EXPECT_THAT(MergeOf(twins, CategoryKind::kNominal, settings).groupOf, ElementsAre(0, 0, 1, 1, 2));
}

TEST(CategoryMerger, KeepsTheMostSignificantStepOfExhaustiveMerging) {
  MergeSettings settings;
  settings.exhaustive = true;
  Table const table = {Percent(10), Percent(12), Percent(50), Percent(52), Percent(90)};

  MergedCategories const merged = MergeOf(table, CategoryKind::kOrdinal, settings);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0, 1, 1, 2));
  EXPECT_NEAR(merged.statistic.value, ChiSquareOf({{178, 22}, {98, 102}, Percent(90)}), 1e-10);
  EXPECT_NEAR(merged.adjustedLogP - merged.logP, std::log(10.0), 1e-12);  // 4 + 3 + 2 + 1 pairs
  EXPECT_NEAR(MergeOf(table, CategoryKind::kNominal, settings).adjustedLogP - merged.logP,
              std::log(20.0), 1e-12);  // 10 + 6 + 3 + 1 pairs
}

TEST(CategoryMerger, MergesGroupsThatAreTooSmall) {
  MergeSettings settings;
  settings.minChildSize = 30.0;
  // The third one comes closest to the first.
  Table const table = {Percent(10), Percent(90), {20, 0}, {2, 8}};
  for (bool const exhaustive : {false, true}) {
    SCOPED_TRACE(exhaustive);
    settings.exhaustive = exhaustive;
    settings.alphaOfMerge = 0.5;

    MergedCategories const merged = MergeOf(table, CategoryKind::kNominal, settings);

    EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 0, 1));
    EXPECT_NEAR(merged.statistic.value, ChiSquareOf({{110, 10}, {12, 98}}), 1e-11);
  }
}

TEST(CategoryMerger, MergesAllWhenTwoGroupsAreTooSmall) {
  MergeSettings settings;
  settings.minChildSize = 101.0;

  MergedCategories const merged =
      MergeOf({Percent(10), Percent(90)}, CategoryKind::kNominal, settings);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0));
  EXPECT_EQ(merged.numGroups, 1U);
  EXPECT_EQ(merged.adjustedLogP, 0.0);
}

TEST(CategoryMerger, CountsSizesInCases) {
  MergeSettings settings;
  settings.minChildSize = 26.0;
  CategoryMerger<ClassGroups> quarters(ClassGroups({}, 2, false, 0.25), settings);
  Table const table = {{20, 180}, {180, 20}, Percent(50)};

  MergedCategories const merged = quarters.Merge(Flat(table), CategoryKind::kOrdinal, false);

  EXPECT_EQ(merged.numGroups, 2U);
  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 1));
}

TEST(CategoryMerger, SplitsAMergedGroupAgainWhereItDiffers) {
  MergeSettings settings;
  settings.alphaOfMerge = 0.02;
  settings.alphaOfMergeSplit = 0.05;  // above, so that the test bites
  Table const table = {Percent(31), Percent(43), Percent(46), Percent(90)};

  MergedCategories const loose = MergeOf(table, CategoryKind::kOrdinal, settings);
  settings.allowSplitMerge = true;
  MergedCategories const split = MergeOf(table, CategoryKind::kOrdinal, settings);

  EXPECT_THAT(loose.groupOf, ElementsAre(0, 0, 0, 1));
  EXPECT_THAT(split.groupOf, ElementsAre(0, 1, 1, 2));
}

TEST(CategoryMerger, EndsAtAnyLevels) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Table table(3 + random.Below(7));
    for (auto& row : table) row = {1 + random.Below(40), 1 + random.Below(40)};
    MergeSettings settings;
    settings.allowSplitMerge = true;
    settings.alphaOfMerge = random.Multiple(0.01, 50) - 0.01;
    settings.alphaOfMergeSplit = random.Multiple(0.05, 22) - 0.05;

    MergedCategories const merged =
        MergeOf(table, seed % 2 == 0 ? CategoryKind::kNominal : CategoryKind::kOrdinal, settings,
                seed % 3 == 0);

    EXPECT_GE(merged.numGroups, 2U);
  }
}

TEST(CategoryMerger, IsAsGoodAsNewForTheNextPredictor) {
  MergeSettings settings;
  settings.allowSplitMerge = true;
  CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, false, 1.0), settings);
  Table const first = {Percent(50), Percent(90), Percent(52), Percent(10), Percent(30)};
  Table const second = {Percent(10), Percent(12), Percent(90)};
  MergedCategories const before = merger.Merge(Flat(second), CategoryKind::kOrdinal, true);

  merger.Merge(Flat(first), CategoryKind::kNominal, false);
  MergedCategories const after = merger.Merge(Flat(second), CategoryKind::kOrdinal, true);

  EXPECT_EQ(after.groupOf, before.groupOf);
  EXPECT_EQ(after.adjustedLogP, before.adjustedLogP);
}

TEST(CategoryMerger, ComparesPValuesThatAreZeroAsDoubles) {
  // All p-values are below 1e-300, and yet the first two differ least.
  Table const table = {{100000, 1}, {98000, 2001}, {2000, 98001}, {1, 50000}};
  MergeSettings settings;
  settings.alphaOfMerge = 0.0;

  MergedCategories const merged = MergeOf(table, CategoryKind::kNominal, settings);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0, 1, 1));
  EXPECT_LT(merged.logP, -100000.0);
}

// ---- Numbers ----

NumberSums SumsOf(std::vector<std::int64_t> const& numbers) {
  NumberSums sums;
  for (std::int64_t const number : numbers) sums.AddCase(1, 1, number);
  return sums;
}

TEST(CategoryMerger, MergesCategoriesWithTheSameMeans) {
  CategoryMerger<NumberGroups> merger(NumberGroups(1.0), {});
  std::vector<NumberSums> const table = {
      SumsOf({1, 2, 3}), SumsOf({10, 11, 12}), {}, SumsOf({1, 3, 2, 2}), SumsOf({50, 51})};

  MergedCategories const merged = merger.Merge(table, CategoryKind::kNominal, false);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, kNone, 0, 2));
  EXPECT_EQ(merged.statistic.degreesOfFreedom, 2.0);
  EXPECT_EQ(merged.statistic.errorDegreesOfFreedom, 12.0 - 3.0);
  EXPECT_NEAR(merged.logP, LogP(merged.statistic), 0.0);
}

TEST(CategoryMerger, SeparatesConstantsCompletely) {
  CategoryMerger<NumberGroups> merger(NumberGroups(1.0), {});
  std::vector<NumberSums> const table = {SumsOf({7, 7}), SumsOf({9, 9, 9}), SumsOf({7, 7, 7})};

  MergedCategories const merged = merger.Merge(table, CategoryKind::kNominal, false);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 0));
  EXPECT_EQ(merged.adjustedLogP, -std::numeric_limits<double>::infinity());
}

// ---- Against the definition ----

using Rows = std::vector<std::vector<double>>;

/// Groups of cases by class: how many there are, and what they weigh.
struct Groups {
  Rows sizes;
  Rows weights;  // empty where all weigh 1
};

double SumOf(std::vector<double> const& row) {
  return std::accumulate(row.begin(), row.end(), 0.0);
}

std::vector<double> ColumnSums(Rows const& rows) {
  std::vector<double> sums(rows[0].size(), 0.0);
  for (auto const& row : rows) {
    for (std::size_t j = 0; j < row.size(); ++j) sums[j] += row[j];
  }
  return sums;
}

/// Sums up categories. `weighted`: whether their rows have weights behind the sizes.
Groups GroupsOf(Table const& table, NaiveChaid::Groups const& groups, bool weighted) {
  std::size_t const numClasses = weighted ? table[0].size() / 2 : table[0].size();
  Groups sums;
  for (auto const& group : groups) {
    std::vector<double> row(table[0].size(), 0.0);
    for (std::size_t const category : group) {
      for (std::size_t j = 0; j < row.size(); ++j) {
        row[j] += static_cast<double>(table[category][j]);
      }
    }
    auto const end = row.begin() + static_cast<std::ptrdiff_t>(numClasses);
    sums.sizes.emplace_back(row.begin(), end);
    if (weighted) sums.weights.emplace_back(end, row.end());
  }
  return sums;
}

double NumClasses(Rows const& rows) {
  std::vector<double> const columns = ColumnSums(rows);
  return static_cast<double>(
      std::count_if(columns.begin(), columns.end(), [](double sum) { return sum > 0.0; }));
}

/// Multiplies the rows, then the columns, so that they add up to what those of `rows` do.
void Scale(Rows& fitted, Rows const& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    double const factor = SumOf(rows[i]) / SumOf(fitted[i]);
    for (double& cell : fitted[i]) cell *= factor;
  }
  std::vector<double> const columns = ColumnSums(rows);
  std::vector<double> const present = ColumnSums(fitted);
  for (std::size_t j = 0; j < columns.size(); ++j) {
    for (auto& row : fitted) row[j] *= present[j] > 0.0 ? columns[j] / present[j] : 1.0;
  }
}

/// Changes the cells by `step`, again and again, until they stay as they are.
template <class Step>
void Iterate(Rows& fitted, Step const& step) {
  double change = 1.0;
  for (int iteration = 0; iteration < 3000 && change > 1e-11; ++iteration) {
    Rows const before = fitted;
    step();
    change = 0.0;
    for (std::size_t i = 0; i < fitted.size(); ++i) {
      for (std::size_t j = 0; j < fitted[i].size(); ++j) {
        change = std::max(change, std::abs(fitted[i][j] - before[i][j]));
      }
    }
  }
}

/// Expected frequencies under independence of what the cases weigh: cells in inverse proportion to
/// the mean weights of their cases, scaled until they have the sums of the cases. A cell without
/// cases has the mean weight of all.
Rows Independent(Groups const& groups) {
  Rows expected = groups.sizes;
  std::vector<double> const columns = ColumnSums(groups.sizes);
  double const size = SumOf(columns);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      expected[i][j] = SumOf(groups.sizes[i]) * columns[j] / size;
    }
  }
  if (groups.weights.empty()) return expected;
  double const meanWeight = SumOf(ColumnSums(groups.weights)) / size;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      double const cases = groups.sizes[i][j];
      expected[i][j] /= cases > 0.0 ? groups.weights[i][j] / cases : meanWeight;
    }
  }
  Iterate(expected, [&] { Scale(expected, groups.sizes); });
  return expected;
}

double NaivePearson(Groups const& groups) {
  Rows const& rows = groups.sizes;
  Rows const expected = Independent(groups);
  double sum = 0.0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[0].size(); ++j) {
      double const difference = rows[i][j] - expected[i][j];
      if (expected[i][j] > 0.0) sum += difference * difference / expected[i][j];
    }
  }
  return LogChiSquareTail(sum, static_cast<double>(rows.size() - 1) * (NumClasses(rows) - 1.0));
}

double NaiveRatio(Rows const& rows, Rows const& fitted, Rows const& expected) {
  double sum = 0.0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[0].size(); ++j) {
      if (rows[i][j] > 0.0) sum += 2.0 * rows[i][j] * std::log(fitted[i][j] / expected[i][j]);
    }
  }
  return sum;
}

double NaiveLikelihoodRatio(Groups const& groups) {
  Rows const& rows = groups.sizes;
  return LogChiSquareTail(NaiveRatio(rows, rows, Independent(groups)),
                          static_cast<double>(rows.size() - 1) * (NumClasses(rows) - 1.0));
}

/// Row effects for scores 0, 1, 2, ... by scaling one set of parameters at a time, each row by half
/// a step of Newton's method.
double NaiveRowEffects(Groups const& groups) {
  Rows const& rows = groups.sizes;
  Rows const expected = Independent(groups);
  Rows fitted = expected;
  Iterate(fitted, [&] {
    Scale(fitted, rows);
    for (std::size_t i = 0; i < rows.size(); ++i) {
      double moment = 0.0;
      for (std::size_t j = 0; j < rows[i].size(); ++j) {
        moment += static_cast<double>(j) * fitted[i][j];
      }
      double const mean = moment / SumOf(fitted[i]);
      double missed = 0.0;
      double information = 0.0;
      for (std::size_t j = 0; j < rows[i].size(); ++j) {
        double const score = static_cast<double>(j) - mean;
        missed += score * (rows[i][j] - fitted[i][j]);
        information += score * score * fitted[i][j];
      }
      double const step = std::clamp(0.5 * missed / information, -1.0, 1.0);
      for (std::size_t j = 0; j < rows[i].size(); ++j) {
        fitted[i][j] *= std::exp(step * (static_cast<double>(j) - mean));
      }
    }
  });
  return LogChiSquareTail(NaiveRatio(rows, fitted, expected), static_cast<double>(rows.size() - 1));
}

double (*NaiveTestOf(ClassTestKind kind))(Groups const&) {
  switch (kind) {
    case ClassTestKind::kLikelihoodRatio:
      return NaiveLikelihoodRatio;
    case ClassTestKind::kRowEffects:
      return NaiveRowEffects;
    default:
      return NaivePearson;
  }
}

MergeSettings RandomSettings(RandomNumbers& random, double largestSize) {
  MergeSettings settings;
  double const alphas[] = {0.001, 0.05, 0.05, 0.3, 0.7};
  settings.alphaOfMerge = alphas[random.Below(5)];
  settings.allowSplitMerge = random.Below(2) == 1;
  // A level above that of merging is not sensible, but makes many groups be split.
  double const factors[] = {0.5, 2.0, 5.0};
  settings.alphaOfMergeSplit = settings.alphaOfMerge * factors[random.Below(3)];
  settings.exhaustive = random.Below(3) == 0;
  settings.useBonferroni = random.Below(4) != 0;
  settings.minChildSize = random.Below(2) == 0 ? 1.0 : random.Multiple(0.1, 10) * largestSize;
  return settings;
}

/// Compares groups with those that the definition finds.
void ExpectGroups(MergedCategories const& merged, NaiveChaid::Groups const& groups) {
  EXPECT_EQ(merged.numGroups, groups.size());
  std::vector<std::uint16_t> groupOf(merged.groupOf.size(), kNone);
  for (std::size_t number = 0; number < groups.size(); ++number) {
    for (std::size_t const category : groups[number]) {
      groupOf[category] = static_cast<std::uint16_t>(number);
    }
  }
  EXPECT_EQ(merged.groupOf, groupOf);
}

/// `weighted`: whether the cases of each cell have a mean weight of their own.
void CompareClasses(ClassTestKind kind, bool weighted, std::uint32_t numSeeds, int leastSplits) {
  int numSplits = 0;
  for (std::uint32_t seed = 1; seed <= numSeeds; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Table table(2 + random.Below(7), std::vector<std::int64_t>(2 + random.Below(3)));
    // In one half, categories differ little, and merge; in the other, cells may be empty.
    std::uint32_t const largest = 20 + random.Below(200);
    bool const alike = random.Below(2) == 0;
    std::vector<double> sizes;
    for (auto& row : table) {
      std::int64_t const scale = 1 + random.Below(3);
      for (auto& size : row) {
        size = alike ? scale * (50 + random.Below(30)) : random.Below(largest);
      }
      if (std::count(row.begin(), row.end(), 0) > 0) row[0] += 1;
      sizes.push_back(
          static_cast<double>(std::accumulate(row.begin(), row.end(), std::int64_t{0})));
    }
    auto const categoryKind =
        random.Below(2) == 0 ? CategoryKind::kNominal : CategoryKind::kOrdinal;
    bool const floating = random.Below(2) == 0;
    MergeSettings const settings = RandomSettings(random, largest);
    if (weighted) {
      std::int64_t const spread = alike ? 2 : 20;
      for (auto& row : table) {
        for (std::size_t j = 0, numClasses = row.size(); j < numClasses; ++j) {
          row.push_back(10 * row[j] +
                        random.Below(static_cast<std::uint32_t>(spread * row[j] + 1)));
        }
      }
    }
    auto const test = [&](NaiveChaid::Groups const& groups) {
      return NaiveTestOf(kind)(GroupsOf(table, groups, weighted));
    };
    NaiveChaid naive(test, sizes, categoryKind, floating, settings);

    MergedCategories const merged = (weighted ? MergeWeighted : MergeOf)(
        table, categoryKind, settings, floating, {kind, {1e-10, 10000}, {}});

    NaiveChaid::Groups const groups = naive.Merge();
    numSplits += naive.numSplits;
    ExpectGroups(merged, groups);
    double const logP = groups.size() > 1 ? test(groups) : 0.0;
    EXPECT_NEAR(merged.logP, logP, 1e-6 * (1.0 - logP));
    EXPECT_NEAR(merged.adjustedLogP,
                std::min(0.0, merged.logP + naive.LogMultiplier(groups.size())), 1e-12);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GE(numSplits, leastSplits);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByPearson) {
  CompareClasses(ClassTestKind::kPearson, false, 2000, 50);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByPearsonOfWeightedCases) {
  CompareClasses(ClassTestKind::kPearson, true, 1000, 20);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByLikelihoodRatio) {
  CompareClasses(ClassTestKind::kLikelihoodRatio, false, 1000, 20);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByLikelihoodRatioOfWeightedCases) {
  CompareClasses(ClassTestKind::kLikelihoodRatio, true, 1000, 20);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByRowEffects) {
  CompareClasses(ClassTestKind::kRowEffects, false, 400, 10);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByRowEffectsOfWeightedCases) {
  CompareClasses(ClassTestKind::kRowEffects, true, 400, 5);
}

double NaiveF(std::vector<std::vector<double>> const& groups) {
  std::vector<double> all;
  for (auto const& group : groups) all.insert(all.end(), group.begin(), group.end());
  double const mean = SumOf(all) / static_cast<double>(all.size());
  double between = 0.0;
  double within = 0.0;
  for (auto const& group : groups) {
    double const groupMean = SumOf(group) / static_cast<double>(group.size());
    for (double const number : group) {
      between += (groupMean - mean) * (groupMean - mean);
      within += (number - groupMean) * (number - groupMean);
    }
  }
  double const free = static_cast<double>(groups.size()) - 1.0;
  double const errors = static_cast<double>(all.size()) - free - 1.0;
  return LogFTail(between / free / (within / errors), free, errors);
}

TEST(CategoryMerger, FindsTheGroupsOfTheDefinitionByNumbers) {
  int numSplits = 0;
  for (std::uint32_t seed = 1; seed <= 1000; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const numCategories = 2 + random.Below(6);
    std::vector<std::vector<double>> numbers(numCategories);
    std::vector<NumberSums> table(numCategories);
    std::vector<double> sizes;
    for (std::size_t category = 0; category < numCategories; ++category) {
      std::uint32_t const shift = random.Below(seed % 2 == 0 ? 3000 : 700);
      std::uint32_t const count = 3 + random.Below(40);
      for (std::uint32_t index = 0; index < count; ++index) {
        std::int64_t const number = shift + random.Below(3000);
        table[category].AddCase(1, 1, number);
        numbers[category].push_back(static_cast<double>(number));
      }
      sizes.push_back(static_cast<double>(numbers[category].size()));
    }
    auto const kind = random.Below(2) == 0 ? CategoryKind::kNominal : CategoryKind::kOrdinal;
    bool const floating = random.Below(2) == 0;
    MergeSettings const settings = RandomSettings(random, 20.0);
    auto const logPOf = [&](NaiveChaid::Groups const& groups) {
      std::vector<std::vector<double>> merged;
      for (auto const& group : groups) {
        auto& all = merged.emplace_back();
        for (std::size_t const category : group) {
          all.insert(all.end(), numbers[category].begin(), numbers[category].end());
        }
      }
      return NaiveF(merged);
    };
    NaiveChaid naive(logPOf, sizes, kind, floating, settings);
    CategoryMerger<NumberGroups> merger(NumberGroups(1.0), settings);

    MergedCategories const merged = merger.Merge(table, kind, floating);

    NaiveChaid::Groups const groups = naive.Merge();
    numSplits += naive.numSplits;
    ExpectGroups(merged, groups);
    double const logP = groups.size() > 1 ? logPOf(groups) : 0.0;
    EXPECT_NEAR(merged.logP, logP, 1e-8 * (1.0 - logP));
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_GE(numSplits, 40);
}

TEST(CategoryMerger, DoesNotDependOnTheLabelsOfNominalCategories) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Table table(2 + random.Below(8), std::vector<std::int64_t>(2 + random.Below(3)));
    for (auto& row : table) {
      for (auto& size : row) size = 1 + random.Below(5000);
    }
    std::vector<std::size_t> order(table.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    for (std::size_t place = order.size(); place > 1; --place) {
      std::swap(order[place - 1], order[random.Below(static_cast<std::uint32_t>(place))]);
    }
    Table relabelled;
    for (std::size_t const category : order) relabelled.push_back(table[category]);
    MergeSettings settings = RandomSettings(random, 10000.0);
    settings.alphaOfMerge /= 1000.0;
    settings.alphaOfMergeSplit /= 1000.0;

    MergedCategories const merged = MergeOf(table, CategoryKind::kNominal, settings);
    MergedCategories const other = MergeOf(relabelled, CategoryKind::kNominal, settings);

    EXPECT_EQ(other.numGroups, merged.numGroups);
    EXPECT_NEAR(other.adjustedLogP, merged.adjustedLogP, 1e-10 * (1.0 - merged.adjustedLogP));
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        EXPECT_EQ(other.groupOf[i] == other.groupOf[j],
                  merged.groupOf[order[i]] == merged.groupOf[order[j]]);
      }
    }
  }
}

TEST(CategoryMerger, TakesWeightsThatAreAllTheSameForNone) {
  Table const table = {Percent(30), Percent(40), Percent(49), Percent(90)};
  Table weighted = table;
  for (auto& row : weighted) row = {row[0], row[1], 8 * row[0], 8 * row[1]};
  CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, true, 1.0), {});

  MergedCategories const merged = merger.Merge(Flat(weighted), CategoryKind::kOrdinal, false);

  MergedCategories const expected = MergeOf(table, CategoryKind::kOrdinal, {});
  EXPECT_EQ(merged.groupOf, expected.groupOf);
  EXPECT_NEAR(merged.logP, expected.logP, 1e-9);
}

TEST(CategoryMerger, MergesByTheWeightsOfTheCases) {
  // The third category has the shares of the first, but weights of the second class that set it
  // apart; the second one is a little off.
  Table const table = {{50, 50, 50, 50}, {48, 52, 48, 52}, {50, 50, 50, 5000}, {10, 90, 10, 90}};
  CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, true, 1.0), {});

  MergedCategories const merged = merger.Merge(Flat(table), CategoryKind::kOrdinal, false);

  EXPECT_THAT(merged.groupOf, ElementsAre(0, 0, 1, 2));
}

TEST(CategoryMerger, LeavesCategoriesAsTheyAreThatMayNotBeMerged) {
  Table const table = {Percent(30), Percent(30), Percent(31), Percent(90)};
  for (bool const exhaustive : {false, true}) {
    SCOPED_TRACE(exhaustive ? "exhaustive" : "by level");
    CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, false, 1.0), {.exhaustive = exhaustive});

    MergedCategories const merged =
        merger.Merge(Flat(table), CategoryKind::kNominal, false, /*mayMerge=*/false);

    EXPECT_THAT(merged.groupOf, ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(merged.adjustedLogP, merged.logP) << "there was nothing to choose";
  }
}

TEST(CategoryMerger, MergesSmallCategoriesEvenIfTheyMayNotBeMerged) {
  Table const table = {Percent(30), {2, 1}, Percent(31), Percent(90)};
  CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, false, 1.0), {.minChildSize = 10.0});

  MergedCategories const merged =
      merger.Merge(Flat(table), CategoryKind::kOrdinal, false, /*mayMerge=*/false);

  EXPECT_EQ(merged.numGroups, 3U);
  EXPECT_NE(merged.groupOf[2], merged.groupOf[3]);
}

TEST(CategoryMerger, EndsWhenItsUserHasHadEnough) {
  Table table;
  for (std::int64_t category = 0; category < 60; ++category) table.push_back(Percent(category));
  Impatient listener;
  Workers workers(1);
  workers.Begin();
  workers.SetListener(&listener);
  CategoryMerger<ClassGroups> merger(ClassGroups({}, 2, false, 1.0), {}, &workers);

  EXPECT_THROW(merger.Merge(Flat(table), CategoryKind::kNominal, false), Cancelled);
}

}  // namespace
}  // namespace tree::grow
