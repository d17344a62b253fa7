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

GainsSettings MakeGains(std::string const& gains, char const* target) {
  grow::DataSet const data = CreditData();
  return MakeGainsSettings(gains, data.GetColumn(data.RequireColumn(target)).description);
}

TEST(MakeGainsSettings, FindsTheClass) {
  GainsSettings const settings = MakeGains("fair", "class");

  EXPECT_EQ(settings.GetTargetCategory(), kFair);
  EXPECT_EQ(settings.GetDataSample(), TrainingSample);
}

TEST(MakeGainsSettings, TakesTheMeanWhereThereAreNoClasses) {
  EXPECT_TRUE(MakeGains("mean", "amount").HasAverageBasedStatistics());
}

TEST(MakeGainsSettings, RefusesWhatThereIsNot) {
  EXPECT_EQ(InputRefusal([] { MakeGains("poor", "class"); }),
            "--gains: \"poor\" is no class of \"class\"");
  EXPECT_EQ(InputRefusal([] { MakeGains("median", "amount"); }),
            "--gains: target \"amount\" is continuous, which leaves the word mean");
}

}  // namespace
}  // namespace tree::cli
