// What CHAID makes of data and settings, seen from outside.

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

double const kMissing = systemMissingValue();

std::unique_ptr<Grower> Grown(SampleData const& data, AlgSettings const& settings,
                              GrowOptions const& options = {1}) {
  std::unique_ptr<Grower> grower = data.Make(settings, options);
  EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
  return grower;
}

NodeImp const& RootOf(Grower const& grower) {
  return dynamic_cast<NodeImp const&>(*grower.GetRootNode());
}

SplitRuleImp const& RuleOf(Grower const& grower) { return *RootOf(grower).GetCompetitorImp(0); }

std::vector<double> ChildSizes(Node const& node) {
  std::vector<double> sizes;
  for (int i = 0; i < node.GetNumChildren(); ++i) {
    sizes.push_back(node.GetChild(static_cast<unsigned int>(i))->GetNodeSize(TrainingSample));
  }
  return sizes;
}

/// `count` cases of each value, of which so many are of class 1.
struct Cell {
  double value;
  int count;
  int positive;
};

/// What the targets of a test are: the settings of CHAID are of one class for each.
enum class Target { kClasses, kNumbers };

char const* NameOf(Target target) { return target == Target::kClasses ? "classes" : "numbers"; }

/// Of numbers, class 1 is a 1 and class 0 a 0. Chi-square X of n cases is then as good as F = X (n
/// - 2) / (n - X), so that both kinds of CHAID find about the same p-value.
void SetTarget(SampleData& data, std::vector<double> const& classes, Target target) {
  target == Target::kClasses ? data.Classes(classes) : data.Numbers(classes);
}

SampleData& Fill(SampleData& data, std::vector<Cell> const& cells, global::MeasurementLevel level,
                 Target target) {
  std::vector<double> classes;
  std::vector<double> values;
  for (Cell const& cell : cells) {
    for (int i = 0; i < cell.count; ++i) {
      values.push_back(cell.value);
      classes.push_back(i < cell.positive ? 1.0 : 0.0);
    }
  }
  SetTarget(data, classes, target);
  if (level == global::MeasurementNominal) return data.Nominal(values);
  return level == global::MeasurementOrdinal ? data.Ordinal(values) : data.Ordered(values);
}

std::size_t NumCases(std::vector<Cell> const& cells) {
  return std::accumulate(cells.begin(), cells.end(), std::size_t{0}, [](std::size_t sum, Cell c) {
    return sum + static_cast<std::size_t>(c.count);
  });
}

SampleData MakeCells(std::vector<Cell> const& cells, global::MeasurementLevel level,
                     Target target = Target::kClasses) {
  SampleData data(NumCases(cells));
  Fill(data, cells, level, target);
  return data;
}

/// Grows by CHAID for the target of the data, with settings that `change` may have changed.
template <class Change>
std::unique_ptr<Grower> GrownWith(SampleData const& data, Change const& change,
                                  GrowOptions const& options = {1}) {
  if (data.GetData().GetColumn(data.GetRoles().target).description.level !=
      global::MeasurementContinuous) {
    auto settings = data.LooseSettings<CChaidSettingsImp>();
    change(settings);
    return Grown(data, settings, options);
  }
  auto settings = data.LooseSettings<RChaidSettingsImp>();
  change(settings);
  return Grown(data, settings, options);
}

// ---- Splits ----

TEST(ChaidGrower, MakesAChildOfEachGroupOfNominalCategories) {
  SampleData const data = MakeCells({{0, 100, 10}, {1, 100, 90}, {2, 100, 12}, {3, 100, 50}},
                                    global::MeasurementNominal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(200.0, 100.0, 100.0));
  SplitRuleImp const& rule = RuleOf(*grower);
  EXPECT_EQ(rule.Classify(0.0), 0);
  EXPECT_EQ(rule.Classify(1.0), 1);
  EXPECT_EQ(rule.Classify(2.0), 0);
  EXPECT_EQ(rule.Classify(3.0), 2);
}

TEST(ChaidGrower, MergesOnlyNeighboursOfOrdinalValues) {
  SampleData const data = MakeCells({{0, 100, 10}, {1, 100, 90}, {2, 100, 12}, {3, 100, 50}},
                                    global::MeasurementOrdinal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(100.0, 100.0, 100.0, 100.0));
  SplitRuleImp const& rule = RuleOf(*grower);
  EXPECT_EQ(rule.Classify(2.0), 2) << "a cut belongs to the interval below it";
  EXPECT_EQ(rule.Classify(2.5), 3);
  EXPECT_EQ(rule.Classify(-7.0), 0);
}

TEST(ChaidGrower, KeepsTheStatisticsOfASplit) {
  // Pearson's chi-square of (30, 70; 60, 40) is 200 (30 40 - 70 60)^2 / (100 100 90 110) = 18.18;
  // two categories are two groups in one way.
  SampleData const data = MakeCells({{0, 100, 70}, {1, 100, 40}}, global::MeasurementNominal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitTestStatistic), 18.1818181818, 1e-9);
  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitLogPValue),
              std::log(std::erfc(std::sqrt(18.1818181818 / 2.0))), 1e-6);
  // Gini: 2 (0.55 0.45) - (2 0.7 0.3 + 2 0.4 0.6) / 2
  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitImprovement), 0.045, 1e-12);
}

TEST(ChaidGrower, SplitsNumbersByTheirMeans) {
  std::vector<double> numbers;
  std::vector<double> groups;
  for (int i = 0; i < 90; ++i) {
    groups.push_back(i % 3);
    numbers.push_back((i % 3 == 1 ? 50.0 : 10.0) + i % 5);
  }
  SampleData data(90);
  data.Numbers(numbers).Nominal(groups);

  auto const grower = Grown(data, data.LooseSettings<RChaidSettingsImp>());

  EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(60.0, 30.0));
  EXPECT_NEAR(RootOf(*grower).GetChild(1)->GetAssignment(), 52.0, 1e-9);
  EXPECT_GT(RuleOf(*grower).GetStatistic(SplitTestStatistic), 1000.0);
  EXPECT_LT(RuleOf(*grower).GetStatistic(SplitLogPValue), -100.0);
}

/// Expects that the root is split with this improvement, and is not where more is wanted.
void ExpectImprovement(SampleData const& data, double improvement) {
  auto const numChildren = [&](double minImprovement) {
    return RootOf(*GrownWith(data,
                             [&](ChaidSettings& settings) {
                               settings.GetStopRule()->SetMinImprovement(minImprovement);
                             }))
        .GetNumChildren();
  };

  EXPECT_NEAR(RuleOf(*GrownWith(data, [](ChaidSettings&) {})).GetStatistic(SplitImprovement),
              improvement, 1e-12 * improvement);
  EXPECT_GT(numChildren(improvement * (1.0 - 1e-9)), 0);
  EXPECT_EQ(numChildren(improvement * (1.0 + 1e-9)), 0);
}

TEST(ChaidGrower, KeepsTheStatisticsOfASplitOfNumbers) {
  // The first and the last of four categories have the same mean and are merged, which is one of 6
  // ways to make three groups of four; all others differ with p < 0.04. With 2 degrees of freedom,
  // the tail of F above B / 2 / (W / d) is (1 + B / W)^(-d / 2), where B and W are the sums of
  // squares between and within groups. R agrees on all figures: anova(lm(number ~ group, weights =
  // weight)), pf(F, 2, d, lower.tail = FALSE, log.p = TRUE).
  struct {
    char const* name;
    std::vector<double> weights;      // by case; empty where all weigh 1
    std::vector<double> frequencies;  // by case; empty where all count once
    double between;
    double within;
    double weight;
    double errorDegreesOfFreedom;
  } const kRows[] = {
      // Means 2, 6 and 11 of 6, 3 and 3 cases are 3.25, 0.75 and 5.75 from the mean of all;
      // squares within are 4, 2 and 14. F = 36.95625.
      {"no weights", {}, {}, 6 * 3.25 * 3.25 + 3 * 0.75 * 0.75 + 3 * 5.75 * 5.75, 20.0, 12.0, 9.0},
      {"all weigh 4", std::vector<double>(12, 4.0), {}, 4.0 * 164.25, 80.0, 48.0, 9.0},
      {"all count twice", {}, std::vector<double>(12, 2.0), 2.0 * 164.25, 40.0, 24.0, 21.0},
      // Means 2, 6 and 11, whose weights are 9, 2 and 1.75; squares within are 6, 1 and 6.5. F =
      // 43.16993.
      {"case weights",
       {1, 2, 1, 0.5, 1, 0.5, 0.25, 1, 0.5, 2, 1, 2},
       {},
       9 * 4 + 2 * 36 + 1.75 * 121 - 49.25 * 49.25 / 12.75,
       13.5,
       12.75,
       9.0},
      {"both",
       {1, 2, 1, 0.5, 1, 0.5, 0.25, 1, 0.5, 2, 1, 2},
       std::vector<double>(12, 2.0),
       2.0 * (9 * 4 + 2 * 36 + 1.75 * 121 - 49.25 * 49.25 / 12.75),
       27.0,
       25.5,
       21.0},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    SampleData data(12);
    data.Numbers({1, 2, 3, 5, 6, 7, 9, 10, 14, 1, 2, 3})
        .Nominal({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3});
    if (!row.weights.empty()) data.Weights(row.weights);
    if (!row.frequencies.empty()) data.Frequencies(row.frequencies);

    auto const grower = Grown(data, data.LooseSettings<RChaidSettingsImp>());

    ASSERT_EQ(RootOf(*grower).GetNumChildren(), 3);
    SplitRuleImp const& rule = RuleOf(*grower);
    EXPECT_EQ(rule.Classify(3.0), rule.Classify(0.0));
    double const f = row.between / 2.0 / (row.within / row.errorDegreesOfFreedom);
    EXPECT_NEAR(rule.GetStatistic(SplitTestStatistic), f, 1e-12 * f);
    EXPECT_NEAR(
        rule.GetStatistic(SplitLogPValue),
        std::log(6.0) - row.errorDegreesOfFreedom / 2.0 * std::log(1.0 + row.between / row.within),
        1e-11);
    ExpectImprovement(data, row.between / row.weight);
  }
}

TEST(ChaidGrower, KeepsTheStatisticsOfASplitOfWeightedClasses) {
  // Cases (30, 70; 40, 60), of which the first 30 weigh 4 and all others 1. The expected (20, 80;
  // 50, 50) have the same sums, and times the weights independent rows: (80, 80; 50, 50). All are
  // 10 off. Without the weights, chi-square would be 2.198.
  std::vector<double> weights(200, 1.0);
  std::fill_n(weights.begin(), 30, 4.0);
  std::vector<double> classes;
  std::vector<double> values;
  for (int i = 0; i < 200; ++i) {
    values.push_back(i < 100 ? 0.0 : 1.0);
    classes.push_back(i < 30 || (i >= 100 && i < 140) ? 0.0 : 1.0);
  }
  SampleData data(200);
  data.Classes(classes).Nominal(values).Weights(weights);
  double const chiSquare = 100.0 / 20.0 + 100.0 / 80.0 + 100.0 / 50.0 + 100.0 / 50.0;

  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.SetConvergenceEpsilon(1e-10);
  settings.SetMaxNumIterations(1000);
  auto const grower = Grown(data, settings);

  ASSERT_EQ(RootOf(*grower).GetNumChildren(), 2);
  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitTestStatistic), chiSquare, 1e-8);
  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitLogPValue),
              std::log(std::erfc(std::sqrt(chiSquare / 2.0))), 1e-8);
  // Weights (120, 70; 40, 60) add up to 290. Gini is 1 less the sum of squared shares.
  ExpectImprovement(data,
                    ((120.0 * 120.0 + 70.0 * 70.0) / 190.0 + (40.0 * 40.0 + 60.0 * 60.0) / 100.0 -
                     (160.0 * 160.0 + 130.0 * 130.0) / 290.0) /
                        290.0);
}

TEST(ChaidGrower, KeepsApartValuesThatAreCloseTogether) {
  SampleData const data =
      MakeCells({{0.001, 80, 5}, {0.002, 80, 75}, {0.003, 80, 5}, {0.004, 80, 40}},
                global::MeasurementOrdinal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(80.0, 80.0, 80.0, 80.0));
  std::vector<double> value = {0.003};
  EXPECT_EQ(grower->GetTree()->DropObservationThroughTree(value.data(), nullptr),
            RootOf(*grower).GetChild(2));
}

TEST(ChaidGrower, DividesContinuousPredictorsAtQuantiles) {
  std::vector<double> values;
  std::vector<double> classes;
  for (int i = 0; i < 400; ++i) {
    values.push_back(i);
    classes.push_back(i >= 100 && i < 300 ? 1.0 : 0.0);
  }
  SampleData data(400);
  data.Classes(classes).Ordered(values);
  auto const settings = data.LooseSettings<CChaidSettingsImp>();

  EXPECT_THAT(ChildSizes(RootOf(*Grown(data, settings, {.numThreads = 1, .numIntervals = 4}))),
              ElementsAre(100.0, 200.0, 100.0));
  EXPECT_THAT(ChildSizes(RootOf(*Grown(data, settings))),
              ElementsAre(80.0, 40.0, 160.0, 40.0, 80.0))
      << "the middle of the third and the eighth tenth are where classes change";
}

TEST(ChaidGrower, DividesContinuousPredictorsAtQuantilesOfTheTrainingSample) {
  // The test sample has lower and higher values, and some between those of the training sample.
  std::vector<double> values;
  std::vector<double> classes;
  std::vector<double> samples;
  for (int i = 0; i < 400; ++i) {
    values.push_back(i);
    classes.push_back(i >= 100 && i < 300 ? 1.0 : 0.0);
    samples.push_back(0.0);
  }
  for (int i = 0; i < 600; ++i) {
    values.push_back(i < 300 ? -1000.0 - i : i < 500 ? 1000.0 + i : 100.0 + i / 4.0);
    classes.push_back(i % 2);
    samples.push_back(1.0);
  }
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData data(1000);
    SetTarget(data, classes, target);
    data.Ordered(values).Samples(samples);

    auto const grower =
        GrownWith(data, [](ChaidSettings&) {}, {.numThreads = 1, .numIntervals = 4});

    EXPECT_EQ(grower->GetNumCases(TestSample), 600U);
    EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(100.0, 200.0, 100.0));
    EXPECT_EQ(RuleOf(*grower).Classify(99.0), 0);
    EXPECT_EQ(RuleOf(*grower).Classify(99.01), 1);
    EXPECT_EQ(RuleOf(*grower).Classify(299.0), 1);
    EXPECT_EQ(RuleOf(*grower).Classify(299.01), 2);
  }
}

TEST(ChaidGrower, CutsContinuousPredictorsAtValuesOfCases) {
  SampleData const data = MakeCells({{1.5, 60, 5}, {2.5, 60, 55}}, global::MeasurementContinuous);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_EQ(dynamic_cast<OSplitRule const&>(RuleOf(*grower)).GetCutPoint(), 1.5);
}

// ---- Missing values ----

TEST(ChaidGrower, GivesMissingValuesAChildOfTheirOwn) {
  for (auto const level : {global::MeasurementNominal, global::MeasurementOrdinal}) {
    SampleData const data = MakeCells({{0, 90, 5}, {1, 90, 85}, {kMissing, 90, 45}}, level);

    auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

    EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(90.0, 90.0, 90.0));
    EXPECT_EQ(RuleOf(*grower).GetMissingValueMapping(), 2);
  }
}

TEST(ChaidGrower, LetsMissingValuesJoinAnyGroup) {
  for (auto const level : {global::MeasurementNominal, global::MeasurementOrdinal}) {
    for (int const like : {0, 1, 2}) {
      SCOPED_TRACE("like value " + std::to_string(like));
      std::vector<Cell> cells = {{0, 90, 5}, {1, 90, 85}, {2, 90, 45}};
      cells.push_back(cells[static_cast<std::size_t>(like)]);
      cells.back().value = kMissing;
      SampleData const data = MakeCells(cells, level);

      auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

      ASSERT_EQ(RootOf(*grower).GetNumChildren(), 3);
      EXPECT_EQ(RuleOf(*grower).GetMissingValueMapping(), like);
      for (int child = 0; child < 3; ++child) {
        EXPECT_EQ(RuleOf(*grower).Classify(child), child);
        EXPECT_EQ(ChildSizes(RootOf(*grower))[static_cast<std::size_t>(child)],
                  child == like ? 180.0 : 90.0);
      }
    }
  }
}

TEST(ChaidGrower, SplitsByMissingValuesAlone) {
  SampleData const data =
      MakeCells({{0, 60, 6}, {1, 60, 6}, {kMissing, 60, 54}}, global::MeasurementOrdinal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(120.0, 60.0));
  EXPECT_EQ(RuleOf(*grower).Classify(1e9), 0);
  EXPECT_EQ(RuleOf(*grower).Classify(kMissing), 1);
}

TEST(ChaidGrower, MakesNoSurrogates) {
  SampleData const data = MakeCells({{0, 90, 5}, {1, 90, 85}}, global::MeasurementNominal);

  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());

  EXPECT_EQ(RootOf(*grower).GetNumSurrogates(), 0);
}

// ---- Settings ----

TEST(ChaidGrower, SplitsOnlyAtTheLevelOfTheSplit) {
  // Chi-square 3.84 is p = 0.05; here it is 200 (55 55 - 45 45)^2 / 100^4 = 2, p = 0.157. F is 2 as
  // well, with 198 cases left, p = 0.159.
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData const data =
        MakeCells({{0, 100, 45}, {1, 100, 55}}, global::MeasurementNominal, target);
    auto const numChildrenAt = [&](double alpha) {
      return RootOf(
                 *GrownWith(data,
                            [&](ChaidSettings& settings) { settings.SetAlphaOfSplitNode(alpha); }))
          .GetNumChildren();
    };

    EXPECT_EQ(RootOf(*GrownWith(data, [](ChaidSettings&) {})).GetNumChildren(), 0);
    EXPECT_EQ(numChildrenAt(0.16), 2);
    EXPECT_EQ(numChildrenAt(0.15), 0);
  }
}

TEST(ChaidGrower, MergesAboveTheLevelOfMerging) {
  // Categories 0 and 1 differ with p = 0.157 or 0.159.
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData const data =
        MakeCells({{0, 100, 45}, {1, 100, 55}, {2, 100, 95}}, global::MeasurementNominal, target);
    auto const childSizesAt = [&](double alpha) {
      return ChildSizes(RootOf(
          *GrownWith(data, [&](ChaidSettings& settings) { settings.SetAlphaOfMerge(alpha); })));
    };

    EXPECT_THAT(childSizesAt(0.15), ElementsAre(200.0, 100.0));
    EXPECT_THAT(childSizesAt(0.16), ElementsAre(100.0, 100.0, 100.0));
  }
}

TEST(ChaidGrower, SplitsMergedCategoriesAtTheLevelForThat) {
  // Categories 0 to 3 are merged, the last two groups with p = 0.064; of their halves, 0 and 1
  // differ from 2 and 3 with chi-square 4.0064, p = 0.0453, or F = 4.0267, p = 0.0455, and no other
  // two parts differ more.
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData const data = MakeCells(
        {{0, 100, 40}, {1, 100, 46}, {2, 100, 50}, {3, 100, 56}, {4, 100, 95}, {5, 100, 5}},
        global::MeasurementNominal, target);
    auto const childSizesAt = [&](double alpha) {
      return ChildSizes(RootOf(*GrownWith(data, [&](ChaidSettings& settings) {
        settings.SetAllowSplitMerge(true);
        settings.SetAlphaOfMergeSplit(alpha);
      })));
    };

    EXPECT_THAT(childSizesAt(0.045), ElementsAre(400.0, 100.0, 100.0));
    EXPECT_THAT(childSizesAt(0.046), ElementsAre(200.0, 200.0, 100.0, 100.0));
  }
}

TEST(ChaidGrower, AdjustsPValuesByTheNumberOfWaysToMerge) {
  // Four nominal categories make two groups in 7 ways.
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData const data = MakeCells({{0, 50, 15}, {1, 50, 35}, {2, 50, 15}, {3, 50, 35}},
                                      global::MeasurementNominal, target);
    auto const logPOf = [&](bool adjusted) {
      return RuleOf(*GrownWith(
                        data,
                        [&](ChaidSettings& settings) { settings.SetUseBonferroniAdj(adjusted); }))
          .GetStatistic(SplitLogPValue);
    };

    EXPECT_NEAR(logPOf(true) - logPOf(false), std::log(7.0), 1e-9);
  }
}

TEST(ChaidGrower, TestsByTheChiSquareMethod) {
  // Likelihood ratio of (30, 70; 60, 40): 2 sum n ln(n / e) with e = 45 and 55.
  SampleData const data = MakeCells({{0, 100, 70}, {1, 100, 40}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.SetChiSquareMethod(static_cast<ChiSquareMethod>(1));

  auto const grower = Grown(data, settings);

  double const expected = 2.0 * (30 * std::log(30 / 45.0) + 60 * std::log(60 / 45.0) +
                                 70 * std::log(70 / 55.0) + 40 * std::log(40 / 55.0));
  EXPECT_NEAR(RuleOf(*grower).GetStatistic(SplitTestStatistic), expected, 1e-9);
}

TEST(ChaidGrower, RefusesAChiSquareMethodThatDoesNotExist) {
  SampleData const data = MakeCells({{0, 10, 7}, {1, 10, 4}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.SetChiSquareMethod(static_cast<ChiSquareMethod>(2));

  try {
    data.Make(settings);
    FAIL();
  } catch (InputError const& error) {
    EXPECT_THAT(error.what(), HasSubstr("there is no chi-square method 2"));
  }
}

TEST(ChaidGrower, MakesNoMoreChildrenThanASplitCanHave) {
  for (bool const ordinal : {true, false}) {
    std::vector<double> numbers;
    std::vector<double> values;
    for (int i = 0; i < 3000; ++i) {
      values.push_back(i % 300);
      numbers.push_back(i % 2 * 1000.0 + i % 300 * 7.0 + i / 300 * 0.001);
    }
    SampleData data(3000);
    data.Numbers(numbers);
    ordinal ? data.Ordinal(values) : data.Nominal(values);
    auto settings = data.LooseSettings<RChaidSettingsImp>();
    settings.SetMaxNominalPredCategories(1000);
    for (SplitMergeMethod const method : {SplitMergeMethod0, SplitMergeMethod1}) {
      settings.SetSplitMergeMethod(method);

      auto const grower = Grown(data, settings);

      EXPECT_GT(RootOf(*grower).GetNumChildren(), 100);
      EXPECT_LE(RootOf(*grower).GetNumChildren(), 254);
    }
  }
}

TEST(ChaidGrower, RefusesEstimatesWithoutIterations) {
  SampleData const data = MakeCells({{0, 10, 7}, {1, 10, 4}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.SetMaxNumIterations(0);

  EXPECT_THROW(data.Make(settings), InputError);
}

TEST(ChaidGrower, RefusesAScoreThatIsNotFinite) {
  SampleData const data = MakeCells({{0, 10, 7}, {1, 10, 4}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.GetScores()->Set(1, std::nan(""));

  EXPECT_THROW(data.Make(settings), InputError);
}

TEST(ChaidGrower, RefusesANumberOfIntervalsOutOfRange) {
  SampleData const data = MakeCells({{0, 10, 7}, {1, 10, 4}}, global::MeasurementContinuous);
  auto const settings = data.LooseSettings<CChaidSettingsImp>();

  EXPECT_THROW(data.Make(settings, {.numThreads = 1, .numIntervals = 1}), InputError);
  EXPECT_THROW(data.Make(settings, {.numThreads = 1, .numIntervals = 65536}), InputError);
  EXPECT_NO_THROW(data.Make(settings, {.numThreads = 1, .numIntervals = 2}));
}

TEST(ChaidGrower, PredictsTheClassOfLeastExpectedCost) {
  SampleData const data = MakeCells({{0, 100, 10}, {1, 100, 40}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();

  EXPECT_EQ(RootOf(*Grown(data, settings)).GetChild(1)->GetAssignment(), 0);
  settings.GetCost()->Set(0, 1, 2.0);  // class 1 taken for class 0
  EXPECT_EQ(RootOf(*Grown(data, settings)).GetChild(1)->GetAssignment(), 1);
  EXPECT_EQ(RootOf(*Grown(data, settings)).GetChild(0)->GetAssignment(), 0);
}

TEST(ChaidGrower, WeighsClassesByTheirPriors) {
  SampleData const data = MakeCells({{0, 100, 10}, {1, 100, 40}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  auto const probability = [](Grower const& grower) {
    return RootOf(grower).GetChild(1)->GetClsInfo(TrainingSample)->GetClassProbability(1);
  };

  EXPECT_NEAR(probability(*Grown(data, settings)), 0.4, 1e-12);
  settings.GetPriors()->Set(PriorTypeDefault);
  // Equal priors: 0.5 40 / 50 against 0.5 60 / 150.
  EXPECT_NEAR(probability(*Grown(data, settings)), 0.4 / (0.4 + 0.2), 1e-12);
}

TEST(ChaidGrower, AlteredPriorsChangeTheImprovementAlone) {
  // Shares of 3/4 and 1/4, altered by costs of 1 and 3, are 1/2 each. A case of class 0 is then
  // 1/300, one of class 1 is 1/100: groups of (0.3, 0.1) and (0.2, 0.4). Gini: 1/2 - 2 (0.3 0.1) /
  // 0.4 - 2 (0.2 0.4) / 0.6 = 1/12. By the shares it is 2 (3/4 1/4) - (2 (0.9 0.1) + 2 (0.6 0.4)) /
  // 2 = 0.045.
  SampleData const data = MakeCells({{0, 100, 10}, {1, 100, 40}}, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();
  settings.GetCost()->Set(0, 1, 3.0);  // class 1 taken for class 0
  settings.GetStopRule()->SetMinImprovement(0.045 - 1e-9);
  auto const plain = Grown(data, settings);
  ASSERT_EQ(RootOf(*plain).GetNumChildren(), 2);
  EXPECT_NEAR(RuleOf(*plain).GetStatistic(SplitImprovement), 0.045, 1e-12);

  settings.GetPriors()->AlterValues(true);
  settings.GetStopRule()->SetMinImprovement(1.0 / 12.0 - 1e-9);
  auto const altered = Grown(data, settings);

  ASSERT_EQ(RootOf(*altered).GetNumChildren(), 2);
  EXPECT_NEAR(RuleOf(*altered).GetStatistic(SplitImprovement), 1.0 / 12.0, 1e-12);
  for (StatisticFlag const statistic : {SplitTestStatistic, SplitLogPValue}) {
    EXPECT_EQ(RuleOf(*altered).GetStatistic(statistic), RuleOf(*plain).GetStatistic(statistic));
  }
  for (unsigned int const child : {0U, 1U}) {
    EXPECT_EQ(RootOf(*altered).GetChild(child)->GetAssignment(),
              RootOf(*plain).GetChild(child)->GetAssignment());
  }
}

TEST(ChaidGrower, StopsAtTheStoppingRule) {
  // Shares of 20 and 50, 60 and 90 percent: the root splits by the first predictor, into means of
  // 0.35 and 0.75, and its children split by the second one, each mean 0.15 from theirs. That takes
  // 0.2^2 off the variance, then 0.15^2 in either half of the cases; off Gini, twice as much.
  std::vector<double> classes;
  std::vector<double> first;
  std::vector<double> second;
  int const numPositive[] = {20, 50, 60, 90};
  for (int i = 0; i < 400; ++i) {
    first.push_back(i < 200 ? 0.0 : 1.0);
    second.push_back(i / 100 % 2);
    classes.push_back(i % 100 < numPositive[i / 100] ? 1.0 : 0.0);
  }
  struct {
    char const* name;
    std::function<void(StopRule&)> change;
    int numTerminal;
  } const kRows[] = {
      {"nothing", [](StopRule&) {}, 4},
      {"a depth of two", [](StopRule& rule) { rule.SetMaxTreeDepth(2); }, 4},
      {"a depth of one", [](StopRule& rule) { rule.SetMaxTreeDepth(1); }, 2},
      {"no depth", [](StopRule& rule) { rule.SetMaxTreeDepth(0); }, 1},
      {"nodes of 200", [](StopRule& rule) { rule.SetMinNodeSize(200); }, 4},
      {"nodes of 201", [](StopRule& rule) { rule.SetMinNodeSize(201); }, 2},
      {"nodes of half", [](StopRule& rule) { rule.SetMinNodePercentSize(50.0); }, 4},
      {"nodes of more than half", [](StopRule& rule) { rule.SetMinNodePercentSize(50.1); }, 2},
      {"children of 100", [](StopRule& rule) { rule.SetMinChildSize(100); }, 4},
      {"children of 101", [](StopRule& rule) { rule.SetMinChildSize(101); }, 2},
      {"children of a quarter", [](StopRule& rule) { rule.SetMinChildPercentSize(25.0); }, 4},
      {"children of more", [](StopRule& rule) { rule.SetMinChildPercentSize(25.1); }, 2},
  };
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SampleData data(400);
    SetTarget(data, classes, target);
    data.Nominal(first).Nominal(second);
    auto const numTerminal = [&](std::function<void(StopRule&)> const& change) {
      return GrownWith(data, [&](ChaidSettings& settings) { change(*settings.GetStopRule()); })
          ->GetNumNodes(TerminalNodes);
    };
    for (auto const& row : kRows) {
      SCOPED_TRACE(std::string(NameOf(target)) + ", " + row.name);

      EXPECT_EQ(numTerminal(row.change), row.numTerminal);
    }

    double const scale = target == Target::kClasses ? 2.0 : 1.0;
    auto const numImproving = [&](double improvement) {
      return numTerminal([&](StopRule& rule) { rule.SetMinImprovement(scale * improvement); });
    };
    SCOPED_TRACE(NameOf(target));
    EXPECT_EQ(numImproving(0.15 * 0.15 / 2.0 - 1e-9), 4);
    EXPECT_EQ(numImproving(0.15 * 0.15 / 2.0 + 1e-9), 2);
    EXPECT_EQ(numImproving(0.2 * 0.2 - 1e-9), 2);
    EXPECT_EQ(numImproving(0.2 * 0.2 + 1e-9), 1);
  }
}

TEST(ChaidGrower, LeavesOutPredictorsWithTooManyCategories) {
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData const data =
        MakeCells({{0, 50, 15}, {1, 50, 35}, {2, 50, 10}}, global::MeasurementNominal, target);
    auto const allowing = [&](int count) {
      return GrownWith(
          data, [&](ChaidSettings& settings) { settings.SetMaxNominalPredCategories(count); });
    };

    EXPECT_EQ(RootOf(*allowing(3)).GetNumChildren(), 2);
    auto const grower = allowing(2);
    EXPECT_EQ(RootOf(*grower).GetNumChildren(), 0);
    EXPECT_THAT(grower->GetRemarks(), ElementsAre(HasSubstr("3 categories")));
  }
}

std::vector<int> PredictorsOfCompetitors(NodeImp const& node) {
  std::vector<int> predictors;
  for (int i = 0; i < node.GetNumCompetitors(); ++i) {
    predictors.push_back(node.GetCompetitorImp(static_cast<unsigned int>(i))->GetPredictorIndex());
  }
  return predictors;
}

TEST(ChaidGrower, KeepsCompetitorsInOrderOfTheirPValues) {
  std::vector<double> classes;
  std::vector<double> good;
  std::vector<double> best;
  std::vector<double> random;
  for (int i = 0; i < 600; ++i) {
    classes.push_back(i % 2);
    random.push_back(i / 2 % 3);
    good.push_back((i / 2) % 10 < 6 ? i % 2 : 1 - i % 2);
    best.push_back((i / 2) % 10 < 8 ? i % 2 : 1 - i % 2);
  }
  for (Target const target : {Target::kClasses, Target::kNumbers}) {
    SCOPED_TRACE(NameOf(target));
    SampleData data(600);
    SetTarget(data, classes, target);
    data.Nominal(random).Nominal(good).Nominal(best);

    auto const all = GrownWith(data, [](ChaidSettings&) {});
    auto const two =
        GrownWith(data, [](ChaidSettings& settings) { settings.SetMaxNumCompetitors(2); });

    EXPECT_THAT(PredictorsOfCompetitors(RootOf(*all)), ElementsAre(2, 1, 0));
    EXPECT_LT(RootOf(*all).GetCompetitorImp(0)->GetStatistic(SplitLogPValue),
              RootOf(*all).GetCompetitorImp(1)->GetStatistic(SplitLogPValue));
    EXPECT_THAT(PredictorsOfCompetitors(RootOf(*two)), ElementsAre(2, 1));
  }
}

TEST(ChaidGrower, KeepsApartPValuesThatAreZeroAsDoubles) {
  // Each predictor is the class but for some of 4000 cases, the middle one for the fewest.
  std::vector<double> classes;
  std::vector<std::vector<double>> predictors(3);
  int const numWrong[] = {60, 20, 40};
  for (int i = 0; i < 4000; ++i) {
    classes.push_back(i % 2);
    for (std::size_t which = 0; which < 3; ++which) {
      predictors[which].push_back(i < numWrong[which] ? 1 - i % 2 : i % 2);
    }
  }
  for (auto const level : {global::MeasurementNominal, global::MeasurementOrdinal}) {
    for (Target const target : {Target::kClasses, Target::kNumbers}) {
      SCOPED_TRACE(std::string(NameOf(target)) + ", level " + std::to_string(level));
      SampleData data(4000);
      SetTarget(data, classes, target);
      for (auto const& values : predictors) {
        level == global::MeasurementNominal ? data.Nominal(values) : data.Ordinal(values);
      }

      auto const grower = GrownWith(
          data, [](ChaidSettings& settings) { settings.GetStopRule()->SetMaxTreeDepth(1); });

      EXPECT_THAT(PredictorsOfCompetitors(RootOf(*grower)), ElementsAre(1, 2, 0));
      for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(std::exp(RootOf(*grower).GetCompetitorImp(i)->GetStatistic(SplitLogPValue)), 0.0);
      }
      EXPECT_THAT(ChildSizes(RootOf(*grower)), ElementsAre(2000.0, 2000.0));
    }
  }
}

// ---- Ordinal targets ----

/// Classes 0 to 2 by a predictor with values 0 and 1: the share of class 2 grows.
SampleData MakeOrdinalTarget() {
  std::vector<double> classes;
  std::vector<double> values;
  int const counts[2][3] = {{50, 30, 20}, {25, 30, 45}};
  for (int value = 0; value < 2; ++value) {
    for (int j = 0; j < 3; ++j) {
      classes.insert(classes.end(), static_cast<std::size_t>(counts[value][j]), j);
      values.insert(values.end(), static_cast<std::size_t>(counts[value][j]), value);
    }
  }
  SampleData data(classes.size());
  data.OrdinalClasses(classes).Nominal(values);
  return data;
}

TEST(ChaidGrower, TestsOrdinalTargetsByTheirScores) {
  SampleData const data = MakeOrdinalTarget();
  auto settings = data.LooseSettings<CChaidSettingsImp>();

  double const equallySpaced = RuleOf(*Grown(data, settings)).GetStatistic(SplitTestStatistic);
  settings.GetScores()->Set(2, 30.0);
  settings.GetScores()->Set(1, 1.0);
  double const farLast = RuleOf(*Grown(data, settings)).GetStatistic(SplitTestStatistic);

  EXPECT_GT(equallySpaced, 10.0);
  EXPECT_GT(std::abs(equallySpaced - farLast), 0.1);
}

TEST(ChaidGrower, TakesClassesForOrdinalIfTheSettingsDo) {
  SampleData const ordinal = MakeOrdinalTarget();
  SampleData nominal(ordinal.GetData().GetNumCases());
  auto const values = [&](int column) {
    double const* const begin = ordinal.GetData().GetColumn(column).values;
    return std::vector<double>(begin, begin + ordinal.GetData().GetNumCases());
  };
  nominal.Classes(values(0)).Nominal(values(1));
  auto const statistic = [](SampleData const& data, CoreSettingsImp const& core) {
    return RuleOf(*Grown(data, CChaidSettingsImp(core))).GetStatistic(SplitTestStatistic);
  };
  CoreSettingsImp core = nominal.Core();
  double const unordered = statistic(nominal, core);
  core.GetTarget()->SetMeasurementLevel(global::MeasurementOrdinal);

  EXPECT_EQ(statistic(nominal, core), statistic(ordinal, ordinal.Core()));
  EXPECT_NE(statistic(nominal, core), unordered);
}

TEST(ChaidGrower, IteratesToTheEpsilonOrTheLimit) {
  SampleData const data = MakeOrdinalTarget();
  auto const statistic = [&](double epsilon, int maxNumIterations) {
    auto settings = data.LooseSettings<CChaidSettingsImp>();
    settings.SetConvergenceEpsilon(epsilon);
    settings.SetMaxNumIterations(maxNumIterations);
    return RuleOf(*Grown(data, settings)).GetStatistic(SplitTestStatistic);
  };

  double const exact = statistic(1e-9, 1000);
  EXPECT_NEAR(statistic(1e-6, 1000), exact, 1e-4);
  EXPECT_GT(std::abs(statistic(1e-9, 1) - exact), 1e-6);
  EXPECT_GT(std::abs(statistic(5.0, 1000) - exact), 1e-6);
}

// ---- Weights ----

TEST(ChaidGrower, LetsCaseWeightsShapeWhatIsExpected) {
  std::vector<double> classes;
  std::vector<double> values;
  std::vector<double> weights;
  for (int i = 0; i < 200; ++i) {
    classes.push_back(i % 2);
    values.push_back(i % 10 < 5 ? 0.0 : 1.0);
    weights.push_back(i % 2 == 0 && i % 10 < 5 ? 4.0 : 1.0);
  }
  SampleData weighted(200);
  weighted.Classes(classes).Nominal(values).Weights(weights);
  SampleData equal(200);
  equal.Classes(classes).Nominal(values).Weights(std::vector<double>(200, 4.0));
  SampleData bare(200);
  bare.Classes(classes).Nominal(values);
  auto const logP = [](SampleData const& data) {
    auto settings = data.LooseSettings<CChaidSettingsImp>();
    settings.SetAlphaOfSplitNode(1.0);
    settings.GetStopRule()->SetMinImprovement(-1.0);
    return RuleOf(*Grown(data, settings)).GetStatistic(SplitLogPValue);
  };

  EXPECT_NEAR(logP(equal), logP(bare), 1e-9) << "weights that are all the same are none";
  EXPECT_LT(logP(weighted), logP(bare) - 1.0);
}

// ---- Risk ----

TEST(ChaidGrower, ValidatesByEachKindOfValidation) {
  std::vector<Cell> const cells = {{0, 100, 10}, {1, 100, 80}, {2, 100, 50}};
  SampleData const data = MakeCells(cells, global::MeasurementNominal);
  auto settings = data.LooseSettings<CChaidSettingsImp>();

  auto const resubstituted = Grown(data, settings);
  ASSERT_TRUE(resubstituted->Validate()) << resubstituted->GetFailureMessage();
  EXPECT_NEAR(resubstituted->GetStatistics()->GetRisk(), (10 + 20 + 50) / 300.0, 1e-12);

  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  settings.GetValidationSpec()->SetNumCVFolds(5);
  auto const crossed = Grown(data, settings);
  ASSERT_TRUE(crossed->Validate()) << crossed->GetFailureMessage();
  EXPECT_NEAR(crossed->GetStatistics()->GetRisk(), 0.28, 0.05);

  settings.GetValidationSpec()->Set(ValidationSplitSample);
  auto const split = Grown(data, settings);
  ASSERT_TRUE(split->Validate()) << split->GetFailureMessage();
  EXPECT_NEAR(split->GetStatistics()->GetRisk(), 0.28, 0.15);
  EXPECT_GT(split->GetNumCases(TestSample), 60U);
}

TEST(ChaidGrower, IsNotPruned) {
  SampleData const data =
      MakeCells({{0, 100, 10}, {1, 100, 20}, {2, 100, 40}}, global::MeasurementNominal);
  auto const grower = Grown(data, data.LooseSettings<CChaidSettingsImp>());
  ASSERT_EQ(RootOf(*grower).GetNumChildren(), 3) << "though all predict class 0";

  grower->Prune();

  EXPECT_EQ(RootOf(*grower).GetNumChildren(), 3);
}

// ---- What holds for random data ----

struct Columns {
  bool classes = true;
  bool ordinal = false;
  std::vector<double> target;
  std::vector<double> counts;
  std::vector<double> nominal;
  std::vector<double> ordinalPredictor;
  std::vector<double> continuous;

  SampleData Make(bool withCounts) const {
    SampleData data(target.size());
    if (!classes) {
      data.Numbers(target);
    } else if (ordinal) {
      data.OrdinalClasses(target);
    } else {
      data.Classes(target);
    }
    data.Nominal(nominal).Ordinal(ordinalPredictor).Ordered(continuous);
    if (withCounts) data.Frequencies(counts);
    return data;
  }
  Columns Pick(std::vector<std::size_t> const& rows) const {
    auto const pick = [&](std::vector<double> const& values) {
      std::vector<double> picked;
      for (std::size_t const row : rows) picked.push_back(values[row]);
      return picked;
    };
    return {classes,         ordinal,       pick(target),
            pick(counts),    pick(nominal), pick(ordinalPredictor),
            pick(continuous)};
  }
};

/// Some values are missing; the target follows all three predictors a little.
Columns RandomColumns(std::uint32_t seed, bool classes) {
  RandomNumbers random(seed);
  Columns columns;
  columns.classes = classes;
  columns.ordinal = classes && seed % 2 == 0;
  std::size_t const numCases = 150 + random.Below(200);
  for (std::size_t row = 0; row < numCases; ++row) {
    auto const draw = [&](std::uint32_t numValues) {
      return random.Below(9) == 0 ? kMissing : static_cast<double>(random.Below(numValues));
    };
    columns.nominal.push_back(draw(6));
    columns.ordinalPredictor.push_back(draw(5));
    columns.continuous.push_back(draw(1000));
    columns.counts.push_back(1.0 + random.Below(3));
    double const signal = (columns.nominal.back() == 2.0 ? 3.0 : 0.0) +
                          (columns.ordinalPredictor.back() == kMissing ? 1.0 : 0.0) +
                          (columns.continuous.back() > 600.0 ? 2.0 : 0.0);
    double const value = signal + random.Below(5);
    columns.target.push_back(classes ? std::min(2.0, std::floor(value / 3.0)) : value * 0.1);
  }
  return columns;
}

std::string GrownText(SampleData const& data, int numThreads = 1) {
  return Describe(
      *GrownWith(data, [](ChaidSettings&) {}, {.numThreads = numThreads})->GetRootNode());
}

class ChaidSeed : public testing::TestWithParam<std::uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Trees, ChaidSeed, testing::Range(1U, 31U));

TEST_P(ChaidSeed, ShuffledRowsGrowTheSameTree) {
  for (bool const classes : {true, false}) {
    Columns const columns = RandomColumns(GetParam(), classes);
    std::vector<std::size_t> rows(columns.target.size());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    RandomNumbers random(GetParam() + 1000);
    for (std::size_t i = rows.size(); i > 1; --i) {
      std::swap(rows[i - 1], rows[random.Below(static_cast<std::uint32_t>(i))]);
    }

    EXPECT_EQ(GrownText(columns.Make(true)), GrownText(columns.Pick(rows).Make(true)));
  }
}

TEST_P(ChaidSeed, FrequenciesGrowTheTreeOfRepeatedCases) {
  for (bool const classes : {true, false}) {
    Columns const columns = RandomColumns(GetParam(), classes);
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < columns.target.size(); ++row) {
      rows.insert(rows.end(), static_cast<std::size_t>(columns.counts[row]), row);
    }

    EXPECT_EQ(GrownText(columns.Make(true)), GrownText(columns.Pick(rows).Make(false)));
  }
}

TEST_P(ChaidSeed, AnyNumberOfThreadsGrowsTheSameTree) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);

    EXPECT_EQ(GrownText(data, 1), GrownText(data, 3));
  }
}

/// Frequencies differ, so that no two pairs of categories are equally far apart: of equal ones, the
/// order of the labels decides.
TEST_P(ChaidSeed, RelabelledCategoriesGrowTheSameLeaves) {
  for (bool const classes : {true, false}) {
    Columns columns = RandomColumns(GetParam(), classes);
    RandomNumbers random(GetParam() + 2000);
    for (double& count : columns.counts) count = 1.0 + random.Below(1000) / 999.0;
    auto const leaves = [](SampleData const& data) {
      auto const grower = GrownWith(data, [](ChaidSettings&) {});
      std::map<Node const*, int> numbers;
      std::vector<int> leafOf;  // by row, numbered in order of the rows
      for (std::size_t row = 0; row < data.GetData().GetNumCases(); ++row) {
        Node const* const node =
            grower->GetTree()->DropObservationThroughTree(data.Case(row).data(), nullptr);
        leafOf.push_back(numbers.emplace(node, static_cast<int>(numbers.size())).first->second);
      }
      return leafOf;
    };
    std::vector<int> const before = leaves(columns.Make(true));

    for (double& code : columns.nominal) {
      if (code != kMissing) code = std::fmod(code * 5.0 + 3.0, 6.0);  // another order of 0 to 5
    }

    EXPECT_EQ(leaves(columns.Make(true)), before);
  }
}

TEST_P(ChaidSeed, CasesReachTheNodesThatCountThem) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);
    auto const grower = GrownWith(data, [](ChaidSettings&) {});
    std::map<Node const*, double> counts;
    for (std::size_t row = 0; row < data.GetData().GetNumCases(); ++row) {
      ++counts[grower->GetTree()->DropObservationThroughTree(data.Case(row).data(), nullptr)];
    }

    PrefixNodeIterator walk(grower->GetRootNode());
    while (Node const* const node = walk.Next()) {
      if (node->GetNumChildren() == 0) {
        EXPECT_EQ(counts[node], node->GetNodeSize(TrainingSample));
      }
    }
  }
}

/// Whether a change of the settings gives another tree on some of the random data.
template <class Change>
bool ChangesSomeTree(bool classes, Change const& change) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SampleData const data = RandomColumns(seed, classes).Make(false);
    auto const grower = GrownWith(data, change);
    if (Describe(*grower->GetRootNode()) != GrownText(data)) return true;
  }
  return false;
}

TEST(ChaidGrower, EachWayOfMergingHasItsEffect) {
  for (bool const classes : {true, false}) {
    EXPECT_TRUE(ChangesSomeTree(
        classes, [](ChaidSettings& settings) { settings.SetSplitMergeMethod(SplitMergeMethod1); }));
    EXPECT_TRUE(ChangesSomeTree(classes, [](ChaidSettings& settings) {
      settings.SetAllowSplitMerge(true);
      settings.SetAlphaOfMergeSplit(0.049);
    }));
    EXPECT_FALSE(ChangesSomeTree(classes, [](ChaidSettings& settings) {
      settings.SetAlphaOfMergeSplit(0.049);
    })) << "without leave to split";
  }
}

TEST(ChaidGrower, MergesOnlyCategoriesThatMayBeMerged) {
  SampleData data(400);
  std::vector<double> classes;
  std::vector<double> categories;
  for (int row = 0; row < 400; ++row) {
    categories.push_back(row % 4);
    classes.push_back(row % 4 == 3 ? 1 : row / 4 % 2);  // three categories are alike
  }
  data.Classes(classes).Nominal(categories);
  for (bool const mayMerge : {true, false}) {
    CoreSettingsImp core = data.Core();
    core.GetPredictor(0)->SetValueMergeFlag(mayMerge);
    CChaidSettingsImp settings(core);
    settings.GetStopRule()->SetMinChildSize(1);

    auto const grower = Grown(data, settings);

    EXPECT_EQ(grower->GetRootNode()->GetNumChildren(), mayMerge ? 2 : 4);
  }
}

}  // namespace
}  // namespace tree::grow
