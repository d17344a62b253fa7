// What QUEST makes of data and settings, seen from outside.

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

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

double CutOf(Grower const& grower) {
  return dynamic_cast<OSplitRule const&>(RuleOf(grower)).GetCutPoint();
}

/// Settings whose priors are the shares of the sample.
QuestSettingsImp SettingsOf(SampleData const& data) {
  auto settings = data.LooseSettings<QuestSettingsImp>();
  settings.GetPriors()->Set(PriorTypeAlternate);
  return settings;
}

/// 100 cases of each of two classes; values of class 1 are 4 higher.
std::vector<double> ShiftedValues() {
  std::vector<double> values;
  for (int i = 0; i < 200; ++i) values.push_back(i / 2 % 7 + 4.0 * (i % 2));
  return values;
}

std::vector<double> AlternatingClasses(std::size_t count) {
  std::vector<double> classes;
  for (std::size_t i = 0; i < count; ++i) classes.push_back(static_cast<double>(i % 2));
  return classes;
}

// ---- Splits ----

TEST(QuestGrower, CutsHalfwayBetweenClassesThatSpreadAlike) {
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(ShiftedValues());
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);

  auto const grower = Grown(data, settings);

  double sums[2] = {0.0, 0.0};
  for (std::size_t i = 0; i < 200; ++i) sums[i % 2] += ShiftedValues()[i];
  EXPECT_NEAR(CutOf(*grower), (sums[0] + sums[1]) / 200.0, 1e-6);
  EXPECT_GT(RuleOf(*grower).GetStatistic(SplitTestStatistic), 100.0);
  EXPECT_LT(RuleOf(*grower).GetStatistic(SplitLogPValue), -50.0);
  EXPECT_GT(RuleOf(*grower).GetStatistic(SplitImprovement), 0.1);
}

TEST(QuestGrower, MergesClassesToTwo) {
  std::vector<double> classes;
  std::vector<double> values;
  for (int i = 0; i < 300; ++i) {
    classes.push_back(i % 3);
    values.push_back((i % 3 == 1 ? 100.0 : i % 3 * 2.0) + i / 3 % 5);
  }
  SampleData data(300);
  data.Classes(classes).Ordered(values);
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);

  auto const grower = Grown(data, settings);

  EXPECT_EQ(RootOf(*grower).GetChild(0)->GetNodeSize(TrainingSample), 200.0);
  EXPECT_EQ(RootOf(*grower).GetChild(1)->GetClsInfo(TrainingSample)->GetClassCount(1), 100.0);
}

TEST(QuestGrower, DividesCategoriesByTheirDiscriminantCoordinates) {
  std::vector<double> classes;
  std::vector<double> values;
  for (int i = 0; i < 400; ++i) {
    int const category = i % 4;
    values.push_back(category);
    classes.push_back(i / 4 % 10 < (category == 1 || category == 2 ? 9 : 1) ? 1.0 : 0.0);
  }
  SampleData data(400);
  data.Classes(classes).Nominal(values);
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);

  auto const grower = Grown(data, settings);

  SplitRuleImp const& rule = RuleOf(*grower);
  EXPECT_EQ(rule.Classify(1.0), rule.Classify(2.0));
  EXPECT_EQ(rule.Classify(0.0), rule.Classify(3.0));
  EXPECT_NE(rule.Classify(0.0), rule.Classify(1.0));
  EXPECT_EQ(rule.Classify(4.0), -1) << "a category that was never seen";
}

TEST(QuestGrower, ChoosesBySpreadWhereMeansDoNotDiffer) {
  std::vector<double> noise;
  std::vector<double> spread;
  for (int i = 0; i < 400; ++i) {
    noise.push_back((i / 2 * 7 + i % 2 * 3) % 11 + 0.3 * (i % 2));
    spread.push_back((i % 2 == 0 ? 1.0 : 10.0) * (i / 2 % 9 - 4));
  }
  SampleData data(400);
  data.Classes(AlternatingClasses(400)).Ordered(noise).Ordered(spread);
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);

  EXPECT_EQ(RuleOf(*Grown(data, settings)).GetPredictorIndex(), 1);

  // At a level that nothing fails, the first tests choose.
  settings.SetAlphaOfVariableSelection(3.0);
  auto const byMeans = Grown(data, settings);
  EXPECT_TRUE(RootOf(*byMeans).GetNumChildren() == 0 || RuleOf(*byMeans).GetPredictorIndex() == 0);
}

/// Of 100 cases of class 0, then 100 of class 1: 1 for the first so many of each class, 0 for the
/// others; or the other way round.
std::vector<double> OnesOf(std::size_t inClass0, std::size_t inClass1, bool areZeros = false) {
  std::vector<double> values(200, areZeros ? 1.0 : 0.0);
  std::fill_n(values.begin(), inClass0, 1.0 - values.front());
  std::fill_n(values.begin() + 100, inClass1, 1.0 - values.back());
  return values;
}

TEST(QuestGrower, LetsTheNextPredictorSplitWhereTheChosenOneLeavesAChildTooSmall) {
  // With two categories, chi-square is 200 times the square of the correlation with the class:
  // 10.53 for 0 and 10 ones, 2.88 for 44 and 56, 8 for 40 and 60; F is 198 r^2 / (1 - r^2).
  std::vector<double> classes(200);
  std::fill(classes.begin() + 100, classes.end(), 1.0);
  struct {
    char const* name;
    bool isNominal;
    bool isSmallBelow;
  } const kRows[] = {{"a category", true, false},
                     {"the greater values", false, false},
                     {"the lower values", false, true}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    SampleData data(200);
    data.Classes(classes);
    for (auto const& values : {OnesOf(0, 10, row.isSmallBelow), OnesOf(44, 56), OnesOf(40, 60)}) {
      row.isNominal ? data.Nominal(values) : data.Ordered(values);
    }
    QuestSettingsImp settings = SettingsOf(data);
    settings.GetStopRule()->SetMaxTreeDepth(1);
    auto const statisticFor = [&](double squaredCorrelation) {
      return row.isNominal ? 200.0 * squaredCorrelation
                           : 198.0 * squaredCorrelation / (1.0 - squaredCorrelation);
    };

    settings.GetStopRule()->SetMinChildSize(10);
    auto const chosen = Grown(data, settings);
    settings.GetStopRule()->SetMinChildSize(11);
    auto const next = Grown(data, settings);

    ASSERT_EQ(RootOf(*chosen).GetNumCompetitors(), 3);
    EXPECT_EQ(RuleOf(*chosen).GetPredictorIndex(), 0);
    EXPECT_NEAR(RuleOf(*chosen).GetStatistic(SplitTestStatistic), statisticFor(1.0 / 19.0), 1e-6);
    ASSERT_EQ(RootOf(*next).GetNumCompetitors(), 2);
    EXPECT_EQ(RuleOf(*next).GetPredictorIndex(), 2);
    EXPECT_NEAR(RuleOf(*next).GetStatistic(SplitTestStatistic), statisticFor(0.04), 1e-6);
    EXPECT_EQ(RootOf(*next).GetCompetitorImp(1)->GetPredictorIndex(), 1);
    EXPECT_EQ(RootOf(*next).GetChild(0)->GetNodeSize(TrainingSample), 100.0);
    // All predictors were tested: 3 p, where p = erfc(sqrt(8 / 2)).
    if (row.isNominal) {
      EXPECT_NEAR(RuleOf(*next).GetStatistic(SplitLogPValue), std::log(3.0 * std::erfc(2.0)), 1e-9);
    }
  }
}

TEST(QuestGrower, TakesInfiniteValuesForTheGreatestOnes) {
  std::vector<double> values = ShiftedValues();
  values[1] = HUGE_VAL;
  values[0] = -HUGE_VAL;
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(values);

  auto const grower = Grown(data, SettingsOf(data));

  ASSERT_EQ(RootOf(*grower).GetNumChildren(), 2);
  EXPECT_TRUE(std::isfinite(CutOf(*grower)));
}

TEST(QuestGrower, SplitsPredictorsWithInfiniteValuesOnly) {
  std::vector<double> values;
  for (int i = 0; i < 100; ++i) values.push_back(i % 2 == 0 ? 0.0 : HUGE_VAL);
  SampleData data(100);
  data.Classes(AlternatingClasses(100)).Ordered(values);

  EXPECT_EQ(RootOf(*Grown(data, SettingsOf(data))).GetNumChildren(), 2);
}

TEST(QuestGrower, SplitsBesideAClassThatDoesNotVary) {
  // Class 0 is 0; class 1 is -1 or 1, and has the same mean.
  std::vector<double> values;
  for (int i = 0; i < 200; ++i) values.push_back(i % 2 == 0 ? 0.0 : i % 4 - 2.0);
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(values);

  EXPECT_EQ(Grown(data, SettingsOf(data))->GetNumNodes(TerminalNodes), 3);
}

TEST(QuestGrower, DoesNotSplitWhereNothingVaries) {
  SampleData data(40);
  data.Classes(AlternatingClasses(40))
      .Ordered(std::vector<double>(40, 3.0))
      .Nominal(std::vector<double>(40, 1.0));

  EXPECT_EQ(RootOf(*Grown(data, SettingsOf(data))).GetNumChildren(), 0);
}

// ---- Settings ----

TEST(QuestGrower, MovesTheCutWithThePriors) {
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(ShiftedValues());
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);
  double const equal = CutOf(*Grown(data, settings));

  settings.GetPriors()->Set(0, 0.9);
  settings.GetPriors()->Set(1, 0.1);

  EXPECT_GT(CutOf(*Grown(data, settings)), equal + 0.5) << "class 0 takes more room";
}

TEST(QuestGrower, MovesTheCutWithCostsThatAlterPriors) {
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(ShiftedValues());
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);
  double const equal = CutOf(*Grown(data, settings));

  settings.GetCost()->Set(1, 0, 9.0);  // class 0 taken for class 1
  EXPECT_EQ(CutOf(*Grown(data, settings)), equal);
  settings.GetPriors()->AlterValues(true);
  EXPECT_GT(CutOf(*Grown(data, settings)), equal + 0.5);
}

TEST(QuestGrower, PredictsTheClassOfLeastExpectedCost) {
  // The cut is at 4.95: of class 1, the 15 cases with value 4 lie below it, beside 72 of class 0.
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(ShiftedValues());
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);
  auto const lower = [&] { return RootOf(*Grown(data, settings)).GetChild(0)->GetAssignment(); };

  EXPECT_EQ(lower(), 0.0);
  settings.GetCost()->Set(0, 1, 4.5);  // class 1 taken for class 0; 72 / 15 is 4.8
  EXPECT_EQ(lower(), 0.0);
  settings.GetCost()->Set(0, 1, 5.0);
  EXPECT_EQ(lower(), 1.0);
}

TEST(QuestGrower, StopsAtTheStoppingRule) {
  std::vector<double> values;
  std::vector<double> classes;
  for (int i = 0; i < 320; ++i) {
    values.push_back(i);
    classes.push_back(i < 100 ? 0.0 : i < 180 ? 1.0 : i < 230 ? 0.0 : 1.0);
  }
  SampleData data(320);
  data.Classes(classes).Ordered(values);
  auto const grown = [&](std::function<void(StopRule&)> const& change) {
    QuestSettingsImp settings = SettingsOf(data);
    change(*settings.GetStopRule());
    return Grown(data, settings)->GetNumNodes(TerminalNodes);
  };

  int const all = grown([](StopRule&) {});
  ASSERT_GE(all, 4);
  EXPECT_EQ(grown([](StopRule& rule) { rule.SetMaxTreeDepth(1); }), 2);
  EXPECT_EQ(grown([](StopRule& rule) { rule.SetMinNodeSize(321); }), 1);
  EXPECT_EQ(grown([](StopRule& rule) { rule.SetMinNodePercentSize(100.0); }), 2);
  EXPECT_LT(grown([](StopRule& rule) { rule.SetMinChildSize(100); }), all);
  EXPECT_LT(grown([](StopRule& rule) { rule.SetMinChildPercentSize(30.0); }), all);
  EXPECT_EQ(grown([](StopRule& rule) { rule.SetMinImprovement(0.4); }), 1);
}

/// The second and the third predictor follow the first, the third less closely.
SampleData MakeFollowers() {
  std::vector<double> first = ShiftedValues();
  std::vector<double> second;
  std::vector<double> third;
  std::vector<double> noise;
  for (int i = 0; i < 200; ++i) {
    double const value = first[static_cast<std::size_t>(i)];
    second.push_back(i % 12 == 0 ? 5.0 : value);
    third.push_back(i % 4 == 0 ? 4.0 : value);
    noise.push_back(i % 3);
    if (i % 25 == 7) first[static_cast<std::size_t>(i)] = kMissing;
  }
  SampleData data(200);
  data.Classes(AlternatingClasses(200))
      .Ordered(first)
      .Ordered(second)
      .Ordered(third)
      .Nominal(noise);
  return data;
}

TEST(QuestGrower, KeepsCompetitorsAndSurrogatesUpToTheirLimits) {
  SampleData const data = MakeFollowers();
  QuestSettingsImp settings = SettingsOf(data);
  ASSERT_EQ(settings.GetMaxNumSurrogates(), 3);

  auto const grower = Grown(data, settings);
  NodeImp const& root = RootOf(*grower);
  EXPECT_GE(root.GetNumCompetitors(), 3);
  EXPECT_GE(root.GetNumSurrogates(), 2);
  EXPECT_LE(root.GetCompetitorImp(1)->GetStatistic(SplitLogPValue),
            root.GetCompetitorImp(2)->GetStatistic(SplitLogPValue));
  EXPECT_GE(root.GetSurrogateImp(0)->GetStatistic(SurrogateAssociation),
            root.GetSurrogateImp(1)->GetStatistic(SurrogateAssociation));

  settings.SetMaxNumCompetitors(2);
  settings.SetMaxNumSurrogates(1);
  auto const fewer = Grown(data, settings);
  EXPECT_EQ(RootOf(*fewer).GetNumCompetitors(), 2);
  EXPECT_EQ(RootOf(*fewer).GetNumSurrogates(), 1);
}

TEST(QuestGrower, LeavesNominalSurrogatesWithTooManyCategoriesOut) {
  std::vector<double> const values = ShiftedValues();
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(values).Nominal(values).Ordered(values);
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetStopRule()->SetMaxTreeDepth(1);
  auto const hasNominal = [&] {
    auto const grower = Grown(data, settings);
    NodeImp const& root = RootOf(*grower);
    for (int i = 0; i < root.GetNumSurrogates(); ++i) {
      if (root.GetSurrogateImp(static_cast<unsigned int>(i))->GetPredictorIndex() == 1) return true;
    }
    return RuleOf(*grower).GetPredictorIndex() == 1;
  };

  ASSERT_TRUE(hasNominal());
  settings.SetMaxNumNomCatsSurr(10);
  EXPECT_FALSE(hasNominal());
}

/// Whether some rule of the tree is about a predictor.
bool HasRuleOf(Grower const& grower, int predictor) {
  PrefixNodeIterator walk(grower.GetRootNode());
  while (Node const* const node = walk.Next()) {
    auto const& rules = dynamic_cast<NodeImp const&>(*node);
    for (int i = 0; i < rules.GetNumCompetitors(); ++i) {
      auto const position = static_cast<unsigned int>(i);
      if (rules.GetCompetitorImp(position)->GetPredictorIndex() == predictor) return true;
    }
    for (int i = 0; i < rules.GetNumSurrogates(); ++i) {
      auto const position = static_cast<unsigned int>(i);
      if (rules.GetSurrogateImp(position)->GetPredictorIndex() == predictor) return true;
    }
  }
  return false;
}

TEST(QuestGrower, LeavesPredictorsWithTooManyCategoriesOut) {
  std::vector<double> const values = ShiftedValues();  // 11 of them
  SampleData data(200);
  data.Classes(AlternatingClasses(200)).Ordered(values).Nominal(values);
  QuestSettingsImp settings = SettingsOf(data);
  settings.SetMaxNominalPredCategories(11);
  auto const all = Grown(data, settings);
  EXPECT_TRUE(HasRuleOf(*all, 1));
  EXPECT_THAT(all->GetRemarks(), testing::IsEmpty());

  settings.SetMaxNominalPredCategories(10);
  auto const fewer = Grown(data, settings);

  EXPECT_TRUE(HasRuleOf(*fewer, 0));
  EXPECT_FALSE(HasRuleOf(*fewer, 1));
  EXPECT_THAT(fewer->GetRemarks(), testing::ElementsAre(testing::HasSubstr("11 categories")));
}

TEST(QuestGrower, GrowsTheSameTreeInWhateverFormItHoldsThePredictors) {
  for (std::uint32_t seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const numCases = 40 + random.Below(200);
    std::vector<double> classes;
    std::vector<std::vector<double>> columns(3);
    for (std::size_t row = 0; row < numCases; ++row) {
      for (auto& column : columns) {
        bool const isInfinite = seed % 3 == 0 && random.Below(15) == 0;
        bool const isMissing = seed % 2 == 0 && random.Below(6) == 0;
        column.push_back(isInfinite  ? -HUGE_VAL
                         : isMissing ? systemMissingValue()
                                     : random.Multiple(0.1, 400));
      }
      classes.push_back(columns[0].back() + random.Multiple(0.1, 200) < 30.0 ? random.Below(2)
                                                                             : 2.0);
    }
    SampleData data(numCases);
    data.Classes(classes).Ordered(columns[0]).Ordered(columns[1]).Ordered(columns[2]);
    auto settings = data.LooseSettings<QuestSettingsImp>();
    settings.SetMaxNumSurrogates(seed % 4 == 0 ? 1 : 0);

    std::string trees[2];
    for (bool const areCoded : {false, true}) {
      auto const grower =
          data.Make(settings, {.numThreads = 1, .maxCodedValues = areCoded ? 65535 : 0});
      ASSERT_TRUE(grower->Grow());
      trees[areCoded ? 1 : 0] = Describe(*grower->GetRootNode());
    }

    EXPECT_EQ(trees[0], trees[1]);
  }
}

TEST(QuestGrower, PrunesAsCartDoes) {
  std::mt19937 engine(3);
  std::vector<double> classes;
  std::vector<double> values;
  std::vector<double> noise;
  for (int i = 0; i < 400; ++i) {
    classes.push_back(static_cast<double>(engine() % 10 < (i % 2 == 0 ? 2U : 8U)));
    values.push_back(i % 2 * 3 + static_cast<double>(engine() % 100) / 50.0);
    noise.push_back(static_cast<double>(engine() % 1000));
  }
  SampleData data(400);
  data.Classes(classes).Ordered(values).Ordered(noise);
  QuestSettingsImp settings = SettingsOf(data);
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  auto const grower = Grown(data, settings);
  int const before = grower->GetNumNodes(TerminalNodes);
  ASSERT_GT(before, 5);

  ASSERT_TRUE(grower->Prune()) << grower->GetFailureMessage();
  ASSERT_TRUE(grower->Validate()) << grower->GetFailureMessage();

  EXPECT_LT(grower->GetNumNodes(TerminalNodes), before);
  EXPECT_NEAR(grower->GetStatistics()->GetRisk(), 0.2, 0.07);

  settings.GetPruningSpec()->SetSERuleFactor(1000.0);
  auto const hard = Grown(data, settings);
  ASSERT_TRUE(hard->Prune());
  EXPECT_EQ(hard->GetNumNodes(TerminalNodes), 1);
}

// ---- What holds for random data ----

struct Columns {
  std::vector<double> classes;
  std::vector<double> counts;
  std::vector<double> few;
  std::vector<double> many;
  std::vector<double> nominal;

  SampleData Make(bool withCounts) const {
    SampleData data(classes.size());
    data.Classes(classes).Ordered(few).Ordered(many).Nominal(nominal);
    if (withCounts) data.Frequencies(counts);
    return data;
  }
  Columns Pick(std::vector<std::size_t> const& rows) const {
    auto const pick = [&](std::vector<double> const& values) {
      std::vector<double> picked;
      for (std::size_t const row : rows) picked.push_back(values[row]);
      return picked;
    };
    return {pick(classes), pick(counts), pick(few), pick(many), pick(nominal)};
  }
};

Columns RandomColumns(std::uint32_t seed) {
  RandomNumbers random(seed);
  Columns columns;
  std::size_t const numCases = 100 + random.Below(150);
  for (std::size_t row = 0; row < numCases; ++row) {
    auto const draw = [&](std::uint32_t numValues) {
      return random.Below(10) == 0 ? kMissing : static_cast<double>(random.Below(numValues));
    };
    columns.few.push_back(draw(6));
    columns.many.push_back(draw(100000) / 7.0);
    if (columns.many.back() < 0.0) columns.many.back() = kMissing;
    columns.nominal.push_back(draw(5));
    columns.counts.push_back(1.0 + random.Below(3));
    double const signal = (columns.few.back() > 2.0 ? 2.0 : 0.0) +
                          (columns.nominal.back() == 3.0 ? 2.0 : 0.0) +
                          (columns.many.back() > 5000.0 ? 2.0 : 0.0);
    columns.classes.push_back(std::min(2.0, std::floor((signal + random.Below(4)) / 3.0)));
  }
  return columns;
}

std::string GrownText(SampleData const& data, GrowOptions const& options = {1}) {
  return Describe(*Grown(data, SettingsOf(data), options)->GetRootNode());
}

class QuestSeed : public testing::TestWithParam<std::uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Trees, QuestSeed, testing::Range(1U, 31U));

TEST_P(QuestSeed, ShuffledRowsGrowTheSameTree) {
  Columns const columns = RandomColumns(GetParam());
  std::vector<std::size_t> rows(columns.classes.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  RandomNumbers random(GetParam() + 1000);
  for (std::size_t i = rows.size(); i > 1; --i) {
    std::swap(rows[i - 1], rows[random.Below(static_cast<std::uint32_t>(i))]);
  }

  EXPECT_EQ(GrownText(columns.Make(true)), GrownText(columns.Pick(rows).Make(true)));
}

TEST_P(QuestSeed, FrequenciesGrowTheTreeOfRepeatedCases) {
  Columns const columns = RandomColumns(GetParam());
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < columns.classes.size(); ++row) {
    rows.insert(rows.end(), static_cast<std::size_t>(columns.counts[row]), row);
  }

  EXPECT_EQ(GrownText(columns.Make(true)), GrownText(columns.Pick(rows).Make(false)));
}

TEST_P(QuestSeed, ThreadsAndCodesGrowTheSameTree) {
  SampleData const data = RandomColumns(GetParam()).Make(false);

  std::string const tree = GrownText(data);

  EXPECT_EQ(tree, GrownText(data, {.numThreads = 3}));
  EXPECT_EQ(tree, GrownText(data, {.numThreads = 1, .maxCodedValues = 0}));
}

/// The leaf of each row, numbered in order of the rows.
std::vector<int> LeavesOf(SampleData const& data) {
  auto const grower = Grown(data, SettingsOf(data));
  std::map<Node const*, int> numbers;
  std::vector<int> leaves;
  for (std::size_t row = 0; row < data.GetData().GetNumCases(); ++row) {
    Node const* const node =
        grower->GetTree()->DropObservationThroughTree(data.Case(row).data(), nullptr);
    leaves.push_back(numbers.emplace(node, static_cast<int>(numbers.size())).first->second);
  }
  return leaves;
}

/// Frequencies differ, so that nothing is equally good: of equals, the order of the labels decides.
TEST_P(QuestSeed, RelabelledCategoriesGrowTheSameLeaves) {
  Columns columns = RandomColumns(GetParam());
  RandomNumbers random(GetParam() + 2000);
  for (double& count : columns.counts) count = 1.0 + random.Below(1000) / 999.0;
  std::vector<int> const before = LeavesOf(columns.Make(true));

  for (double& code : columns.nominal) {
    if (code != kMissing) code = std::fmod(code * 2.0 + 3.0, 5.0);  // another order of 0 to 4
  }

  EXPECT_EQ(LeavesOf(columns.Make(true)), before);
}

TEST_P(QuestSeed, CasesReachTheNodesThatCountThem) {
  SampleData const data = RandomColumns(GetParam()).Make(false);
  auto const grower = Grown(data, SettingsOf(data));
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

/// The simulation of Loh and Shih 1997, section 5, in kind: classes that have nothing to do with
/// predictors of very different numbers of possible splits.
TEST(QuestGrower, ChoosesEachPredictorAboutEquallyOftenUnderIndependence) {
  constexpr int kNumTrials = 600;
  constexpr std::size_t kNumPredictors = 6;
  constexpr int kNumCases = 300;
  std::vector<int> chosen(kNumPredictors);
  std::mt19937 engine(17);
  std::normal_distribution<double> normal;
  std::exponential_distribution<double> exponential;
  for (int trial = 0; trial < kNumTrials; ++trial) {
    std::vector<double> classes;
    std::vector<std::vector<double>> columns(kNumPredictors);
    for (int i = 0; i < kNumCases; ++i) {
      classes.push_back(static_cast<double>(engine() % 3));
      columns[0].push_back(normal(engine));
      columns[1].push_back(exponential(engine));
      columns[2].push_back(static_cast<double>(engine() % 2));
      columns[3].push_back(static_cast<double>(engine() % 10));
      columns[4].push_back(static_cast<double>(engine() % 2));
      columns[5].push_back(static_cast<double>(engine() % 15));
    }
    SampleData data(kNumCases);
    data.Classes(classes);
    for (std::size_t i = 0; i < 4; ++i) data.Ordered(columns[i]);
    for (std::size_t i = 4; i < 6; ++i) data.Nominal(columns[i]);
    QuestSettingsImp settings = SettingsOf(data);
    settings.GetStopRule()->SetMaxTreeDepth(1);
    auto const grower = Grown(data, settings);
    if (RootOf(*grower).GetNumChildren() == 0) continue;
    ++chosen[static_cast<std::size_t>(RuleOf(*grower).GetPredictorIndex())];
  }

  for (std::size_t i = 0; i < kNumPredictors; ++i) {
    RecordProperty("chosen" + std::to_string(i), chosen[i]);
    // Four standard errors of a share of 1/6 of 600 are 37.
    EXPECT_NEAR(chosen[i], kNumTrials / static_cast<double>(kNumPredictors), 37.0)
        << "predictor " << i;
  }
}

}  // namespace
}  // namespace tree::grow
