#include "options/settings.h"

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"
#include "options/variables.h"
#include "testing/settings_builder.h"

namespace tree::cli {
namespace {

using testing::CreditData;
using testing::InputRefusal;

// Classes of the credit data, by index.
constexpr int kBad = 0;
constexpr int kFair = 1;
constexpr int kGood = 2;

Options For(char const* target) {
  Options options;
  options.variables.target = target;
  return options;
}

std::unique_ptr<AlgSettings> Make(Options const& options) {
  grow::DataSet const data = CreditData();
  return MakeSettings(options, data, FindRoles(options.variables, data));
}

std::unique_ptr<CCartSettings> MakeForClasses(Options const& options) {
  return std::unique_ptr<CCartSettings>(dynamic_cast<CCartSettings*>(Make(options).release()));
}

std::string RefusalOf(Options const& options) {
  return InputRefusal([&] { Make(options); });
}

TEST(MakeSettings, ChoosesTheClassByTheTarget) {
  EXPECT_EQ(Make(For("class"))->GetType(), AlgCCart);
  EXPECT_EQ(Make(For("rating"))->GetType(), AlgCCart);
  EXPECT_EQ(Make(For("amount"))->GetType(), AlgRCart);
}

TEST(MakeSettings, DescribesTheVariables) {
  Options options = For("class");
  options.variables.caseWeight = "weight";

  std::unique_ptr<AlgSettings const> const settings = Make(options);
  CoreSettings const& core = *settings->GetCoreSettings();

  EXPECT_EQ(core.GetTarget()->GetNumValues(), 3);
  EXPECT_EQ(core.GetNumPredictors(), 4);
  EXPECT_TRUE(core.HasCaseWeight());
}

TEST(MakeSettings, KeepsTheDefaultsOfWhatIsNotGiven) {
  for (char const* const target : {"class", "amount"}) {
    SCOPED_TRACE(target);
    std::unique_ptr<AlgSettings const> const settings = Make(For(target));
    CoreSettings const& core = *settings->GetCoreSettings();
    CCartSettingsImp const forClasses(core);
    RCartSettingsImp const forNumbers(core);
    AlgSettings const& defaults =
        settings->GetType() == AlgCCart ? static_cast<AlgSettings const&>(forClasses) : forNumbers;

    EXPECT_EQ(tree::testing::Describe(*settings), tree::testing::Describe(defaults));
  }
}

TEST(MakeSettings, SetsWhenToStop) {
  Options options = For("class");
  options.stop = {.maxDepth = 7,
                  .minNodeSize = 20,
                  .minNodePercent = 2.5,
                  .minChildSize = 6,
                  .minChildPercent = 1.5,
                  .minImprovement = 0.01};

  std::unique_ptr<AlgSettings const> const settings = Make(options);
  StopRule const& rule = *settings->GetStopRule();

  EXPECT_EQ(rule.GetMaxTreeDepth(), 7);
  EXPECT_EQ(rule.GetMinNodeSize(), 20);
  EXPECT_EQ(rule.GetMinNodePercentSize(), 2.5);
  EXPECT_EQ(rule.GetMinChildSize(), 6);
  EXPECT_EQ(rule.GetMinChildPercentSize(), 1.5);
  EXPECT_EQ(rule.GetMinImprovement(), 0.01);
}

TEST(MakeSettings, SetsHowTheRiskIsMeasured) {
  Options options = For("amount");
  options.validation = {.type = ValidationCrossValidation, .numFolds = 4, .seed = 17};

  std::unique_ptr<AlgSettings const> const settings = Make(options);
  ValidationSpec const& validation = *settings->GetValidationSpec();

  EXPECT_EQ(validation.GetType(), ValidationCrossValidation);
  EXPECT_EQ(validation.GetNumCVFolds(), 4);
  EXPECT_EQ(validation.GetRandomSeed(), 17);
  options.validation = {.type = ValidationNone};
  EXPECT_EQ(Make(options)->GetValidationSpec()->GetType(), ValidationNone);
}

TEST(MakeSettings, SetsHowToPrune) {
  Options options = For("amount");
  options.pruning = {.prune = true, .seRuleFactor = 0.5};
  std::unique_ptr<AlgSettings const> const settings = Make(options);
  PruningSpec const& pruning = *dynamic_cast<CartSettings const&>(*settings).GetPruningSpec();

  EXPECT_EQ(pruning.GetSERuleFactor(), 0.5);
  EXPECT_FALSE(pruning.GetPickMinRiskTree());

  Options forClasses = For("class");
  forClasses.pruning = {.prune = true, .pickMinRiskTree = true};
  EXPECT_TRUE(MakeForClasses(forClasses)->GetPruningSpec()->GetPickMinRiskTree());
}

TEST(MakeSettings, SetsHowManyRulesToKeep) {
  Options options = For("class");
  options.rules = {.maxNumCompetitors = 2, .maxNumSurrogates = 0, .maxNumCategories = 12};

  std::unique_ptr<CCartSettings> const settings = MakeForClasses(options);

  EXPECT_EQ(settings->GetMaxNumCompetitors(), 2);
  EXPECT_EQ(settings->GetMaxNumSurrogates(), 0);
  EXPECT_EQ(settings->GetMaxNominalPredCategories(), 12);
}

TEST(MakeSettings, SetsTheCriterion) {
  Options options = For("class");
  options.classes.criterion = static_cast<CartSplitCriteria>(2);

  EXPECT_EQ(MakeForClasses(options)->GetSplitCriteria(), 2);
}

TEST(MakeSettings, SetsTheTypeOfPriors) {
  Options options = For("class");
  options.classes.priorType = PriorTypeAlternate;
  EXPECT_EQ(MakeForClasses(options)->GetPriors()->GetType(), PriorTypeAlternate);

  options.classes.priorType = PriorTypeDefault;
  EXPECT_EQ(MakeForClasses(options)->GetPriors()->GetType(), PriorTypeDefault);
}

TEST(MakeSettings, NormsThePriorsOfClasses) {
  Options options = For("class");
  options.classes.priorType = PriorTypeCustom;
  options.classes.priors = {{"good", 1.0}, {"bad", 3.0}, {"fair", 0.0}};

  std::unique_ptr<CCartSettings> const settings = MakeForClasses(options);
  Priors const& priors = *settings->GetPriors();

  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
  EXPECT_EQ(priors.GetNumClasses(), 3);
  EXPECT_EQ(priors.Get(kBad), 0.75);
  EXPECT_EQ(priors.Get(kFair), 0.0);
  EXPECT_EQ(priors.Get(kGood), 0.25);
  EXPECT_FALSE(priors.HasAlteredValues());
}

TEST(MakeSettings, SetsCostsByPredictedAndObservedClass) {
  Options options = For("class");
  options.classes.alteredPriors = true;
  options.classes.costs = {{"good", "bad", 5.0}};

  std::unique_ptr<CCartSettings> const settings = MakeForClasses(options);
  Cost const& costs = *settings->GetCost();

  EXPECT_EQ(costs.GetNumClasses(), 3);
  EXPECT_EQ(costs.Get(kGood, kBad), 5.0);
  EXPECT_EQ(costs.Get(kBad, kGood), 1.0);
  EXPECT_EQ(costs.Get(kFair, kBad), 1.0);
  EXPECT_EQ(costs.Get(kFair, kFair), 0.0);
  EXPECT_TRUE(settings->GetPriors()->HasAlteredValues());
}

TEST(MakeSettings, RefusesPriorsThatDoNotFitTheClasses) {
  struct {
    std::vector<ClassNumber> priors;
    char const* message;
  } const rows[] = {
      {{{"good", 1.0}, {"poor", 1.0}}, "--priors: \"poor\" is no class of \"class\""},
      {{{"good", 1.0}, {"good", 1.0}}, "--priors: \"good\" is named twice"},
      {{{"good", 1.0}, {"bad", 1.0}}, "--priors: class \"fair\" is given none"},
      {{{"good", 0.0}, {"bad", 0.0}, {"fair", 0.0}}, "--priors: they are all 0"},
      {{{"good", 1e308}, {"bad", 1e308}, {"fair", 0.0}},
       "--priors: their sum is more than a number can be"},
  };
  for (auto const& [priors, message] : rows) {
    Options options = For("class");
    options.classes.priorType = PriorTypeCustom;
    options.classes.priors = priors;
    EXPECT_EQ(RefusalOf(options), message);
  }
}

TEST(MakeSettings, RefusesCostsThatDoNotFitTheClasses) {
  Options options = For("class");
  options.classes.costs = {{"good", "poor", 5.0}};
  EXPECT_EQ(RefusalOf(options), "--cost: \"poor\" is no class of \"class\"");

  options.classes.costs = {{"poor", "good", 5.0}};
  EXPECT_EQ(RefusalOf(options), "--cost: \"poor\" is no class of \"class\"");

  options.classes.costs = {{"good", "good", 5.0}};
  EXPECT_EQ(RefusalOf(options), "--cost: \"good\" is taken for itself, which is no mistake");
}

TEST(MakeSettings, RefusesOptionsForClassesWhereThereAreNone) {
  char const* const why = ": there are no classes: target \"amount\" is continuous";

  Options criterion = For("amount");
  criterion.classes.criterion = CartSplitCriteria0;
  EXPECT_EQ(RefusalOf(criterion), std::string("--criterion") + why);

  Options priors = For("amount");
  priors.classes.priorType = PriorTypeDefault;
  EXPECT_EQ(RefusalOf(priors), std::string("--priors") + why);

  Options costs = For("amount");
  costs.classes.costs = {{"a", "b", 1.0}};
  EXPECT_EQ(RefusalOf(costs), std::string("--cost") + why);
}

GainsSettings MakeGains(GainsOptions const& options, char const* target) {
  grow::DataSet const data = CreditData();
  return MakeGainsSettings(options, data.GetColumn(data.RequireColumn(target)).description);
}

// ---- CHAID ----

Options ForChaid(char const* target) {
  Options options = For(target);
  options.method = Method::kChaid;
  return options;
}

TEST(MakeSettings, KeepsTheDefaultsOfChaid) {
  for (char const* const target : {"class", "amount"}) {
    SCOPED_TRACE(target);
    std::unique_ptr<AlgSettings const> const settings = Make(ForChaid(target));
    CoreSettings const& core = *settings->GetCoreSettings();
    CChaidSettingsImp const forClasses(core);
    RChaidSettingsImp const forNumbers(core);
    AlgSettings const& defaults =
        settings->GetType() == AlgCChaid ? static_cast<AlgSettings const&>(forClasses) : forNumbers;

    EXPECT_EQ(settings->GetType(), std::string(target) == "class" ? AlgCChaid : AlgRChaid);
    EXPECT_EQ(tree::testing::Describe(*settings), tree::testing::Describe(defaults));
  }
}

TEST(MakeSettings, KeepsTheCategoriesOfSomePredictorsApart) {
  Options options = ForChaid("class");
  options.variables.predictors = {"amount", "rating"};
  options.chaid.keptPredictors = {"rating"};

  std::unique_ptr<AlgSettings const> const settings = Make(options);

  CoreSettings const& core = *settings->GetCoreSettings();
  EXPECT_TRUE(core.GetPredictor(0)->GetValueMergeFlag());
  EXPECT_FALSE(core.GetPredictor(1)->GetValueMergeFlag());
  options.chaid.keptPredictors = {"rating", "weight"};
  EXPECT_EQ(RefusalOf(options), "--keep-categories: there is no predictor \"weight\"");
}

TEST(MakeSettings, SetsHowChaidMerges) {
  Options options = ForChaid("rating");
  options.chaid.alphaOfSplit = 0.01;
  options.chaid.alphaOfMerge = 0.2;
  options.chaid.alphaOfResplit = 0.15;
  options.chaid.hasNoBonferroni = true;
  options.chaid.epsilon = 0.5;
  options.chaid.maxNumIterations = 7;
  options.stop.maxDepth = 9;

  std::unique_ptr<AlgSettings> const made = Make(options);
  auto const& settings = dynamic_cast<CChaidSettingsImp const&>(*made);

  EXPECT_EQ(settings.GetAlphaOfSplitNode(), 0.01);
  EXPECT_EQ(settings.GetAlphaOfMerge(), 0.2);
  EXPECT_EQ(settings.GetAlphaOfMergeSplit(), 0.15);
  EXPECT_TRUE(settings.GetAllowSplitMerge());
  EXPECT_FALSE(settings.GetUseBonferroniAdj());
  EXPECT_EQ(settings.GetSplitMergeMethod(), SplitMergeMethod0);
  EXPECT_EQ(settings.GetConvergenceEpsilon(), 0.5);
  EXPECT_EQ(settings.GetMaxNumIterations(), 7);
  EXPECT_EQ(settings.GetStopRule()->GetMaxTreeDepth(), 9);
}

TEST(MakeSettings, TestsByChiSquareWhatHasNoOrder) {
  Options options = ForChaid("class");
  options.chaid.chiSquare = static_cast<ChiSquareMethod>(1);

  std::unique_ptr<AlgSettings> const made = Make(options);

  EXPECT_EQ(static_cast<int>(dynamic_cast<CChaidSettings const&>(*made).GetChiSquareMethod()), 1);
  options.variables.target = "rating";
  EXPECT_EQ(RefusalOf(options),
            "--chi-square: target \"rating\" is ordinal, and so is tested by the scores of its "
            "classes");
}

TEST(MakeSettings, MergesExhaustivelyWhereToldTo) {
  Options options = ForChaid("amount");
  options.chaid.isExhaustive = true;

  std::unique_ptr<AlgSettings> const made = Make(options);

  EXPECT_EQ(dynamic_cast<ChaidSettings const&>(*made).GetSplitMergeMethod(), SplitMergeMethod1);
}

TEST(MakeSettings, SetsTheScoresOfAnOrdinalTarget) {
  Options options = ForChaid("rating");
  options.chaid.scores = {{"high", 10.0}};

  std::unique_ptr<AlgSettings> const made = Make(options);
  Scores const& scores = *dynamic_cast<CChaidSettings const&>(*made).GetScores();

  grow::DataSet const data = CreditData();
  auto const& labels = data.GetColumn(data.RequireColumn("rating")).description.labels;
  ASSERT_EQ(scores.GetNumClasses(), static_cast<int>(labels.size()));
  for (std::size_t index = 0; index < labels.size(); ++index) {
    EXPECT_EQ(scores.Get(static_cast<int>(index)),
              labels[index] == "high" ? 10.0 : static_cast<double>(index));
  }
}

TEST(MakeSettings, RefusesScoresOfATargetWithoutOrder) {
  Options options = ForChaid("class");
  options.chaid.scores = {{"good", 1.0}};

  EXPECT_EQ(RefusalOf(options), "--score: target \"class\" is not ordinal");
}

TEST(MakeSettings, RefusesWhatChaidHasForClassesOnly) {
  Options scores = ForChaid("amount");
  scores.chaid.scores = {{"good", 1.0}};
  Options chiSquare = ForChaid("amount");
  chiSquare.chaid.chiSquare = ChiSquareMethod0;
  Options epsilon = ForChaid("amount");
  epsilon.chaid.epsilon = 0.1;
  Options iterations = ForChaid("amount");
  iterations.chaid.maxNumIterations = 3;
  std::string const why = ": there are no classes: target \"amount\" is continuous";

  EXPECT_EQ(RefusalOf(scores), "--score" + why);
  EXPECT_EQ(RefusalOf(chiSquare), "--chi-square" + why);
  EXPECT_EQ(RefusalOf(epsilon), "--epsilon" + why);
  EXPECT_EQ(RefusalOf(iterations), "--iterations" + why);
}

// ---- QUEST ----

TEST(MakeSettings, KeepsTheDefaultsOfQuest) {
  Options options = For("class");
  options.method = Method::kQuest;

  std::unique_ptr<AlgSettings const> const settings = Make(options);

  EXPECT_EQ(tree::testing::Describe(*settings),
            tree::testing::Describe(QuestSettingsImp(*settings->GetCoreSettings())));
}

TEST(MakeSettings, SetsWhatOnlyQuestHas) {
  Options options = For("class");
  options.method = Method::kQuest;
  options.quest = {.alphaOfSelection = 0.2, .maxNumSurrogateCategories = 4};
  options.rules.maxNumSurrogates = 100;
  options.pruning.seRuleFactor = 2.5;
  options.classes.priorType = PriorTypeAlternate;
  options.classes.costs = {{"good", "bad", 4.0}};

  std::unique_ptr<AlgSettings> const made = Make(options);
  auto const& settings = dynamic_cast<QuestSettings const&>(*made);

  EXPECT_EQ(settings.GetAlphaOfVariableSelection(), 0.2);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), 4);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), settings.GetCoreSettings()->GetNumPredictors() - 1);
  EXPECT_EQ(settings.GetPruningSpec()->GetSERuleFactor(), 2.5);
  EXPECT_EQ(settings.GetPriors()->GetType(), PriorTypeAlternate);
  EXPECT_EQ(settings.GetCost()->Get(kGood, kBad), 4.0);
}

TEST(MakeSettings, RefusesQuestForNumbers) {
  Options options = For("amount");
  options.method = Method::kQuest;

  EXPECT_EQ(RefusalOf(options),
            "--method: quest grows trees for classes: target \"amount\" is continuous");
}

// ---- Gains ----

TEST(MakeGainsSettings, FindsTheClass) {
  GainsSettings const settings = MakeGains({.target = "fair"}, "class");

  EXPECT_EQ(settings.GetTargetCategory(), kFair);
  EXPECT_EQ(settings.GetDataSample(), TrainingSample);
  EXPECT_FALSE(settings.HasCumulativeStatistics());
  EXPECT_FALSE(settings.HasPercentileStatistics());
  EXPECT_EQ(settings.GetSortOrder(), SortDescending);
  EXPECT_EQ(settings.GetSortKey(), TrainingSample);
  EXPECT_EQ(settings.GetNumCategories(), 0);
}

TEST(MakeGainsSettings, TakesTheMeanWhereThereAreNoClasses) {
  EXPECT_TRUE(MakeGains({.target = "mean"}, "amount").HasAverageBasedStatistics());
}

TEST(MakeGainsSettings, SaysWhatTheRowsAreAndTheirOrder) {
  GainsSettings const cumulative = MakeGains(
      {.target = "fair", .rows = GainsRows::kCumulative, .order = SortAscending}, "class");
  EXPECT_TRUE(cumulative.HasCumulativeStatistics());
  EXPECT_EQ(cumulative.GetSortOrder(), SortAscending);

  GainsSettings const percentiles = MakeGains({.target = "mean",
                                               .rows = GainsRows::kPercentiles,
                                               .percentileStep = 25,
                                               .sortSample = TestSample},
                                              "amount");
  EXPECT_TRUE(percentiles.HasPercentileStatistics());
  EXPECT_EQ(percentiles.GetPercentileIncrement(), PercentileIncrement25);
  EXPECT_EQ(percentiles.GetSortKey(), TestSample);
}

TEST(MakeGainsSettings, KnowsWhatTheClassesBringIn) {
  GainsSettings const profits = MakeGains({.profits = {{"good", 2.0}, {"bad", -5.0}}}, "class");
  EXPECT_TRUE(profits.HasAverageBasedStatistics());
  EXPECT_EQ(profits.GetCategoryProfit(kGood), 2.0);
  EXPECT_EQ(profits.GetCategoryProfit(kBad), -5.0);
  EXPECT_EQ(profits.GetCategoryProfit(kFair), 0.0);

  GainsSettings const both = MakeGains(
      {.target = "good", .revenues = {{"good", 20.0}}, .expenses = {{"good", 1.0}, {"fair", 3.0}}},
      "class");
  EXPECT_EQ(both.GetCategoryProfit(kGood), 19.0);
  EXPECT_EQ(both.GetCategoryProfit(kFair), -3.0);
}

TEST(MakeGainsSettings, RefusesWhatThereIsNot) {
  struct {
    GainsOptions options;
    char const* target;
    char const* message;
  } const rows[] = {
      {{.target = "poor"}, "class", "--gains: \"poor\" is no class of \"class\""},
      {{.profits = {{"poor", 1.0}}}, "class", "--profit: \"poor\" is no class of \"class\""},
      {{.revenues = {{"poor", 1.0}}}, "class", "--revenue: \"poor\" is no class of \"class\""},
      {{.expenses = {{"poor", 1.0}}}, "class", "--expense: \"poor\" is no class of \"class\""},
      {{.target = "median"},
       "amount",
       "--gains: target \"amount\" is continuous, which leaves the word mean"},
      {{.profits = {{"a", 1.0}}},
       "amount",
       "--profit: there are no classes: target \"amount\" is continuous"},
      {{.revenues = {{"a", 1.0}}},
       "amount",
       "--revenue: there are no classes: target \"amount\" is continuous"},
      {{.expenses = {{"a", 1.0}}},
       "amount",
       "--expense: there are no classes: target \"amount\" is continuous"},
  };
  for (auto const& [options, target, message] : rows) {
    EXPECT_EQ(InputRefusal([&, &wanted = options, &of = target] { MakeGains(wanted, of); }),
              message);
  }
}

}  // namespace
}  // namespace tree::cli
