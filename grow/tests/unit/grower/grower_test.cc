// The operations on a tree, one by one, and what they refuse.

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/growing_listener.h"
#include "grow_testing/sample_data.h"
#include "tree/grow/gains_columns.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Classes 0, 1, 2 along the first predictor; the second one is nominal.
SampleData Steps() {
  SampleData data(9);
  data.Classes({0, 0, 0, 1, 1, 1, 2, 2, 2})
      .Ordered({1, 2, 3, 4, 5, 6, 7, 8, 9})
      .Nominal({0, 0, 1, 1, 1, 1, 2, 2, 2});
  return data;
}

class GrowerOnSteps : public testing::Test {
 protected:
  void ExpectFailure(bool result, AlgorithmFailure failure, std::string const& message) {
    EXPECT_FALSE(result);
    EXPECT_EQ(grower_->GetFailure(), failure);
    EXPECT_THAT(grower_->GetFailureMessage(), HasSubstr(message));
  }
  OSplitRule Cut(double at, int predictor = 0) const {
    OSplitRule rule(systemMissingValue(), predictor);
    rule.SetCutPoint(at);
    return rule;
  }

  SampleData data_ = Steps();
  CCartSettingsImp settings_ = data_.ClassSettings();
  std::unique_ptr<Grower> grower_ = data_.Make(settings_);
};

TEST_F(GrowerOnSteps, HasNoTreeAtFirst) {
  EXPECT_EQ(grower_->GetRootNode(), nullptr);
  EXPECT_EQ(grower_->GetTree(), nullptr);
  EXPECT_EQ(grower_->GetStatistics(), nullptr);
  EXPECT_EQ(grower_->FindNode(0), nullptr);
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 0);
  EXPECT_EQ(grower_->MakeGains(GainsSettings()), nullptr);
  EXPECT_TRUE(grower_->IsClassificationTree());
  EXPECT_EQ(grower_->GetFailure(), FailureNone);
  EXPECT_EQ(grower_->GetNumCases(TrainingSample), 9U);
  EXPECT_EQ(grower_->GetNumCases(TestSample), 0U);
  EXPECT_EQ(grower_->GetSettings()->GetType(), AlgCCart);
}

TEST_F(GrowerOnSteps, RefusesWorkOnATreeThatIsNotThere) {
  std::vector<SplitRule> splits;
  std::vector<PruningStep> steps;
  ExpectFailure(grower_->Prune(), FailureNoTree, "no tree");
  ExpectFailure(grower_->Validate(), FailureNoTree, "no tree");
  ExpectFailure(grower_->PruneNode(0), FailureNoTree, "no tree");
  ExpectFailure(grower_->GetPruningSequence(&steps), FailureNoTree, "no tree");
  ExpectFailure(grower_->FindCandidateSplits(0, &splits), FailureNoTree, "no tree");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(Cut(3.5))), FailureNoTree, "no tree");
  ExpectFailure(grower_->GrowNode(3, 1), FailureNoTree, "no tree");
}

TEST_F(GrowerOnSteps, RefusesNodesThatDoNotExist) {
  ASSERT_TRUE(grower_->Grow());
  std::string const before = Describe(*grower_->GetRootNode());
  std::vector<SplitRule> splits;

  ExpectFailure(grower_->PruneNode(77), FailureUnknownNode, "no node 77");
  ExpectFailure(grower_->GrowNode(77, 1), FailureUnknownNode, "no node 77");
  ExpectFailure(grower_->FindCandidateSplits(77, &splits), FailureUnknownNode, "no node 77");
  ExpectFailure(grower_->ApplySplit(77, SplitRule(Cut(3.5))), FailureUnknownNode, "no node 77");
  EXPECT_EQ(Describe(*grower_->GetRootNode()), before);
}

TEST_F(GrowerOnSteps, RefusesArgumentsThatMakeNoSense) {
  ExpectFailure(grower_->GrowNode(0, -1), FailureInvalidArgument, "-1 levels");
  ASSERT_TRUE(grower_->Grow());
  ExpectFailure(grower_->GrowNode(0, 0), FailureInvalidArgument, "0 levels");
  ExpectFailure(grower_->FindCandidateSplits(0, nullptr), FailureInvalidArgument, "no place");
  ExpectFailure(grower_->GetPruningSequence(nullptr), FailureInvalidArgument, "no place");
}

TEST_F(GrowerOnSteps, ForgetsAFailureWithTheNextSuccess) {
  EXPECT_FALSE(grower_->Prune());
  EXPECT_TRUE(grower_->Grow());
  EXPECT_EQ(grower_->GetFailure(), FailureNone);
  EXPECT_STREQ(grower_->GetFailureMessage(), "");
}

TEST_F(GrowerOnSteps, NumbersNodesByLevelFromTheRoot) {
  ASSERT_TRUE(grower_->Grow());

  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 5);
  EXPECT_EQ(grower_->GetNumNodes(TerminalNodes), 3);
  EXPECT_EQ(grower_->FindNode(0), grower_->GetRootNode());
  EXPECT_EQ(grower_->FindNode(1), grower_->GetRootNode()->GetChild(0));
  EXPECT_EQ(grower_->FindNode(4)->GetNumChildren(), 0);
}

TEST_F(GrowerOnSteps, GrowsTheSameTreeAgain) {
  ASSERT_TRUE(grower_->Grow());
  std::string const first = Describe(*grower_->GetRootNode());
  ASSERT_TRUE(grower_->Grow());

  EXPECT_EQ(Describe(*grower_->GetRootNode()), first);
}

TEST_F(GrowerOnSteps, PlantsARootAlone) {
  ASSERT_TRUE(grower_->GrowNode(0, 0));
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 1);
  EXPECT_EQ(grower_->GetRootNode()->GetNodeSize(TrainingSample), 9.0);

  ASSERT_TRUE(grower_->GrowNode(0, 1));
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 3);
}

TEST_F(GrowerOnSteps, GrowsANodeAnewUnderItsOldId) {
  ASSERT_TRUE(grower_->Grow());
  std::string const whole = Describe(*grower_->GetRootNode());
  unsigned int const inner = grower_->GetRootNode()->GetChild(0)->GetNumChildren() > 0 ? 1 : 2;
  ASSERT_TRUE(grower_->PruneNode(inner));
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 3);

  ASSERT_TRUE(grower_->GrowNode(inner, 1));

  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 5);
  ASSERT_NE(grower_->FindNode(inner), nullptr);
  EXPECT_EQ(grower_->FindNode(inner)->GetChild(0)->GetId(), 5U);  // ids 3 and 4 have been used
  EXPECT_EQ(grower_->FindNode(inner)->GetParent(), grower_->GetRootNode());
}

TEST_F(GrowerOnSteps, GrowingStepByStepGivesTheWholeTree) {
  ASSERT_TRUE(grower_->Grow());
  std::string const whole = Describe(*grower_->GetRootNode());
  ASSERT_TRUE(grower_->SetTree(nullptr));
  EXPECT_EQ(grower_->GetRootNode(), nullptr);
  auto const fresh = data_.Make(settings_);
  ASSERT_TRUE(fresh->GrowNode(0, 1));
  for (unsigned int const id : {1U, 2U}) ASSERT_TRUE(fresh->GrowNode(id, 1));

  EXPECT_EQ(Describe(*fresh->GetRootNode()), whole);
}

TEST_F(GrowerOnSteps, ChangingTheTreeDropsItsStatistics) {
  ASSERT_TRUE(grower_->Grow());
  ASSERT_TRUE(grower_->Validate());
  EXPECT_NE(grower_->GetStatistics(), nullptr);

  ASSERT_TRUE(grower_->PruneNode(0));
  EXPECT_EQ(grower_->GetStatistics(), nullptr);
}

TEST_F(GrowerOnSteps, FindsCandidatesWithoutChangingTheTree) {
  ASSERT_TRUE(grower_->Grow());
  std::string const before = Describe(*grower_->GetRootNode());
  std::vector<SplitRule> splits(3, SplitRule(Cut(1)));

  ASSERT_TRUE(grower_->FindCandidateSplits(0, &splits));

  ASSERT_EQ(splits.size(), 2U);
  EXPECT_EQ(splits[0].GetPredictorIndex(), 0);
  EXPECT_EQ(splits[1].GetPredictorIndex(), 1);
  double first = 0.0;
  double second = 0.0;
  EXPECT_TRUE(splits[0].GetStatistic(SplitImprovement, &first));
  EXPECT_TRUE(splits[1].GetStatistic(SplitImprovement, &second));
  EXPECT_GE(first, second);
  SplitRuleImp const* const best = splits[0];
  EXPECT_GE(best->GetDumbChildPos(), 0);
  EXPECT_EQ(Describe(*grower_->GetRootNode()), before);
}

TEST_F(GrowerOnSteps, SaysThatAPureNodeHasNoSplit) {
  ASSERT_TRUE(grower_->Grow());
  std::vector<SplitRule> splits;

  ExpectFailure(grower_->FindCandidateSplits(4, &splits), FailureNoSplit, "node 4");
  EXPECT_TRUE(splits.empty());
}

TEST_F(GrowerOnSteps, FindsNoCandidatesOfANodeThatIsTooSmallToBeSplit) {
  settings_.GetStopRule()->SetMinNodeSize(10);
  grower_ = data_.Make(settings_);
  ASSERT_TRUE(grower_->Grow());
  std::vector<SplitRule> splits;

  ExpectFailure(grower_->FindCandidateSplits(0, &splits), FailureNoSplit, "node 0");
  EXPECT_TRUE(splits.empty());
}

TEST_F(GrowerOnSteps, FindsCandidatesAtTheGreatestDepthToo) {
  settings_.GetStopRule()->SetMaxTreeDepth(0);
  grower_ = data_.Make(settings_);
  ASSERT_TRUE(grower_->Grow());
  std::vector<SplitRule> splits;

  EXPECT_TRUE(grower_->FindCandidateSplits(0, &splits));
  EXPECT_EQ(splits.size(), 2U);
}

TEST_F(GrowerOnSteps, SplitsASmallNodeAsTheUserWants) {
  settings_.GetStopRule()->SetMinNodeSize(10);
  grower_ = data_.Make(settings_);
  ASSERT_TRUE(grower_->Grow());

  ASSERT_TRUE(grower_->ApplySplit(0, SplitRule(Cut(5.0)))) << grower_->GetFailureMessage();

  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 3);
  EXPECT_EQ(grower_->GetRootNode()->GetNumCompetitors(), 1) << "the settings allow no other";
}

TEST_F(GrowerOnSteps, SplitsANodeAsTheUserWants) {
  ASSERT_TRUE(grower_->GrowNode(0, 0));

  ASSERT_TRUE(grower_->ApplySplit(0, SplitRule(Cut(5.0)))) << grower_->GetFailureMessage();
  NodeImp const& root = *grower_->GetTree();

  ASSERT_EQ(root.GetNumChildren(), 2);
  EXPECT_EQ(root.GetChild(0)->GetNodeSize(TrainingSample), 5.0);
  EXPECT_EQ(root.GetBiggestChildPos(), 0);
  EXPECT_EQ(root.GetNumCompetitors(), 2);  // its own rule, and the best one of the other predictor
  EXPECT_EQ(root.GetCompetitorImp(1)->GetPredictorIndex(), 1);
  EXPECT_EQ(root.GetNumSurrogates(), 1);
}

TEST_F(GrowerOnSteps, SplitsANodeIntoMoreThanTwo) {
  ASSERT_TRUE(grower_->GrowNode(0, 0));
  NSplitRule rule(1, 3);
  for (int category = 0; category < 3; ++category) rule.SetCatMapping(category, category);

  ASSERT_TRUE(grower_->ApplySplit(0, SplitRule(rule))) << grower_->GetFailureMessage();
  Node const& root = *grower_->GetRootNode();

  ASSERT_EQ(root.GetNumChildren(), 3);
  EXPECT_EQ(root.GetChild(0)->GetNodeSize(TrainingSample), 2.0);
  EXPECT_EQ(root.GetChild(1)->GetNodeSize(TrainingSample), 4.0);
  EXPECT_EQ(root.GetChild(2)->GetNodeSize(TrainingSample), 3.0);
  ASSERT_TRUE(grower_->GrowNode(2, 1));
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 6);
}

TEST_F(GrowerOnSteps, RefusesRulesThatDoNotFit) {
  ASSERT_TRUE(grower_->Grow());
  std::string const before = Describe(*grower_->GetRootNode());
  NSplitRule single(1, 3);
  for (int category = 0; category < 3; ++category) single.SetCatMapping(category, 0);

  ExpectFailure(grower_->ApplySplit(0, SplitRule(Cut(5, 2))), FailureInvalidSplit, "predictor 2");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(Cut(5, -1))), FailureInvalidSplit, "predictor -1");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(Cut(5, 1))), FailureInvalidSplit,
                "\"x1\" is nominal");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(NSplitRule(0, 2))), FailureInvalidSplit,
                "\"x0\" is ordered");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(single)), FailureInvalidSplit, "1 children");
  OSplitRule foreign(-1.0, 0);
  foreign.SetCutPoint(5.0);
  ExpectFailure(grower_->ApplySplit(0, SplitRule(foreign)), FailureInvalidSplit,
                "another missing value");
  ExpectFailure(grower_->ApplySplit(0, SplitRule(Cut(100))), FailureInvalidSplit,
                "less than two children");
  EXPECT_EQ(Describe(*grower_->GetRootNode()), before);
}

TEST(ApplySplit, SaysWhyAPredictorIsNotUsed) {
  SampleData data(2);
  data.Classes({0, 1}).Nominal({0, 2e6});
  auto const grower = data.Make(data.ClassSettings());
  ASSERT_TRUE(grower->Grow());
  NSplitRule rule(0, 2);
  rule.SetCatMapping(0, 0);

  EXPECT_FALSE(grower->ApplySplit(0, SplitRule(rule)));
  EXPECT_THAT(grower->GetFailureMessage(),
              HasSubstr("predictor \"x0\" is not used: the code of one of its categories is more "
                        "than 1000000"));
}

TEST_F(GrowerOnSteps, TakesATreeBack) {
  ASSERT_TRUE(grower_->Grow());
  std::string const whole = Describe(*grower_->GetRootNode());
  std::unique_ptr<NodeImp> kept(grower_->GetTree()->Clone());
  ASSERT_TRUE(grower_->PruneNode(0));

  ASSERT_TRUE(grower_->SetTree(kept.release()));
  EXPECT_EQ(Describe(*grower_->GetRootNode()), whole);
}

TEST_F(GrowerOnSteps, RefusesATreeOfTheOtherKind) {
  ASSERT_TRUE(grower_->Grow());
  auto regression = std::make_unique<NodeImp>();
  regression->SetClassificationNode(false);

  ExpectFailure(grower_->SetTree(regression.release()), FailureInvalidArgument, "regression");
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 5);
}

TEST_F(GrowerOnSteps, RefusesATreeWithoutTheStatisticsOfItsClasses) {
  ASSERT_TRUE(grower_->Grow());
  auto bare = std::make_unique<NodeImp>();
  bare->SetClassificationNode(true);
  ExpectFailure(grower_->SetTree(bare.release()), FailureInvalidArgument, "node 0");

  std::unique_ptr<NodeImp> other(grower_->GetTree()->Clone());
  auto classes = std::make_unique<ClsInfoImp>();
  classes->SetNumClasses(7);
  other->GetChildImp(1)->SetClsInfo(classes.release(), TrainingSample);
  ExpectFailure(grower_->SetTree(other.release()), FailureInvalidArgument, "node 2");
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 5);
}

TEST_F(GrowerOnSteps, RefusesATreeWithNodesOfTheOtherKind) {
  ASSERT_TRUE(grower_->Grow());
  std::unique_ptr<NodeImp> mixed(grower_->GetTree()->Clone());
  mixed->GetChildImp(1)->SetClassificationNode(false);

  ExpectFailure(grower_->SetTree(mixed.release()), FailureInvalidArgument, "node 2");
}

TEST_F(GrowerOnSteps, RefusesATreeThatPredictsNoClass) {
  ASSERT_TRUE(grower_->Grow());
  for (int const prediction : {-1, 1000000}) {
    std::unique_ptr<NodeImp> wrong(grower_->GetTree()->Clone());
    wrong->GetChildImp(1)->GetClsInfoImp(TrainingSample)->SetPrediction(prediction);

    ExpectFailure(grower_->SetTree(wrong.release()), FailureInvalidArgument,
                  "node 2 of the tree predicts " + std::to_string(prediction));
  }
  EXPECT_EQ(grower_->GetNumNodes(AllNodes), 5);
}

TEST_F(GrowerOnSteps, MakesGainsTables) {
  ASSERT_TRUE(grower_->Grow());
  GainsSettings settings;
  settings.SetTargetCategory(2);

  std::unique_ptr<GainsIntf> const gains(grower_->MakeGains(settings));

  ASSERT_NE(gains, nullptr);
  EXPECT_EQ(gains->GetNumRows(), 3);
  EXPECT_EQ(gains->GetValue(0, GainsResponse), 100.0);
}

// ---- Making growers ----

std::string RefusalOf(SampleData const& data, AlgSettings const& settings,
                      GrowOptions const& options = {1}) {
  try {
    data.Make(settings, options);
  } catch (InputError const& error) {
    return error.what();
  }
  return "none";
}

TEST(MakeGrower, RefusesSettingsThatWereMadeForOtherData) {
  SampleData const data = Steps();
  SampleData fewer(2);
  fewer.Classes({0, 1}).Ordered({0, 1});
  SampleData others(2);
  others.Classes({0, 1}).Nominal({0, 1}).Nominal({0, 1});
  SampleData numbers(2);
  numbers.Numbers({0, 1}).Ordered({0, 1}).Nominal({0, 1});

  EXPECT_THAT(RefusalOf(data, fewer.ClassSettings()),
              HasSubstr("they have 1 predictors, the data 2"));
  EXPECT_THAT(RefusalOf(data, others.ClassSettings()),
              HasSubstr("\"x0\" is continuous, in the settings nominal"));
  EXPECT_THAT(RefusalOf(data, numbers.NumberSettings()), HasSubstr("\"class\" is not continuous"));
  EXPECT_THAT(RefusalOf(numbers, data.ClassSettings()), HasSubstr("\"number\" is continuous"));
  CoreSettingsImp core = data.Core();
  core.GetPredictor(1)->SetMissingValue(-9.0);
  EXPECT_THAT(RefusalOf(data, CCartSettingsImp(core)),
              HasSubstr("predictor \"x1\" has another missing value"));
  core = data.Core();
  core.GetTarget()->SetMissingValue(-9.0);
  EXPECT_THAT(RefusalOf(data, CCartSettingsImp(core)),
              HasSubstr("target \"class\" has another missing value"));

  SampleData levels(2);
  levels.Classes({0, 1}).Nominal({0, 1}).Ordinal({0, 1}).Ordered({0, 1});
  struct {
    int predictor;
    global::MeasurementLevel level;
    char const* why;
  } const kRows[] = {
      {0, global::MeasurementOrdinal, "\"x0\" is nominal, in the settings ordinal"},
      {0, global::MeasurementContinuous, "\"x0\" is nominal, in the settings continuous"},
      {1, global::MeasurementNominal, "\"x1\" is ordinal, in the settings nominal"},
      {1, global::MeasurementContinuous, "\"x1\" is ordinal, in the settings continuous"},
      {2, global::MeasurementNominal, "\"x2\" is continuous, in the settings nominal"},
      {2, global::MeasurementOrdinal, "\"x2\" is continuous, in the settings ordinal"},
      {2, static_cast<global::MeasurementLevel>(7), "in the settings of level 7"},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.why);
    core = levels.Core();
    core.GetPredictor(row.predictor)->SetMeasurementLevel(row.level);

    EXPECT_THAT(RefusalOf(levels, CChaidSettingsImp(core)), HasSubstr(row.why));
    EXPECT_THAT(RefusalOf(levels, CCartSettingsImp(core)), HasSubstr(row.why));
  }
}

TEST(MakeGrower, RefusesSettingsThatHaveOtherWeights) {
  SampleData const plain = Steps();
  SampleData counted = Steps();
  counted.Frequencies(std::vector<double>(9, 2.0));
  SampleData weighted = Steps();
  weighted.Weights(std::vector<double>(9, 2.0));

  EXPECT_THAT(RefusalOf(plain, counted.ClassSettings()),
              HasSubstr("they have a frequency weight, the data none"));
  EXPECT_THAT(RefusalOf(counted, plain.ClassSettings()),
              HasSubstr("they have no frequency weight, the data has one"));
  EXPECT_THAT(RefusalOf(plain, weighted.ClassSettings()),
              HasSubstr("they have a case weight, the data none"));
  EXPECT_THAT(RefusalOf(weighted, counted.ClassSettings()), HasSubstr("frequency weight"));
  EXPECT_THAT(RefusalOf(weighted, plain.ClassSettings()),
              HasSubstr("they have no case weight, the data has one"));
}

TEST(MakeGrower, RefusesCostsAndPriorsThatCannotBeReckonedWith) {
  SampleData const data = Steps();
  double const infinity = std::numeric_limits<double>::infinity();
  CCartSettingsImp const plain = data.ClassSettings();
  CCartSettingsImp costly(plain);
  costly.GetCost()->Set(0, 1, infinity);
  CCartSettingsImp ruinous(plain);
  ruinous.GetCost()->Set(0, 1, 1e154);
  ruinous.GetCost()->Set(1, 2, 1e154);
  CCartSettingsImp certain(plain);
  certain.GetPriors()->Set(1, infinity);
  CCartSettingsImp heavy(plain);
  heavy.GetPriors()->Set(0, 1e308);
  heavy.GetPriors()->Set(2, 1e308);

  EXPECT_THAT(RefusalOf(data, costly), HasSubstr("cost of taking class 1 for class 0 is infinite"));
  EXPECT_THAT(RefusalOf(data, ruinous), HasSubstr("the costs are too large"));
  EXPECT_THAT(RefusalOf(data, certain), HasSubstr("prior of class 1 is infinite"));
  EXPECT_THAT(RefusalOf(data, heavy), HasSubstr("the priors are too large"));
}

TEST(MakeGrower, TakesLargeCostsAndPriors) {
  SampleData const data = Steps();
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetCost()->Set(0, 1, 1e153);
  settings.GetPriors()->Set(2, 1e307);
  settings.GetPriors()->Set(0, 1e307);
  settings.GetPriors()->AlterValues(true);

  auto const grower = data.Make(settings);
  ASSERT_TRUE(grower->Grow() && grower->Validate());

  EXPECT_TRUE(std::isfinite(grower->GetStatistics()->GetRisk()));
  EXPECT_TRUE(std::isfinite(grower->GetStatistics()->GetStdError()));
}

TEST(MakeGrower, KnowsTheClassesOfBothSamples) {
  struct {
    char const* name;
    std::vector<double> classes;
  } const kRows[] = {{"highest class in the training sample", {0, 2, 1, 0, 1, 0}},
                     {"highest class in the test sample", {0, 1, 1, 0, 2, 2}}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    SampleData data(6);
    data.Classes(row.classes).Ordered({1, 2, 2, 1, 2, 2}).Samples({0, 0, 0, 1, 1, 1});
    CCartSettingsImp settings = data.ClassSettings();
    settings.GetValidationSpec()->Set(ValidationSplitSample);

    auto const grower = data.Make(settings);
    ASSERT_TRUE(grower->Grow() && grower->Prune() && grower->Validate());

    Node const& root = *grower->GetRootNode();
    EXPECT_EQ(root.GetClsInfo(TrainingSample)->GetNumClasses(), 3);
    EXPECT_EQ(root.GetClsInfo(TestSample)->GetNumClasses(), 3);
    EXPECT_EQ(grower->GetStatistics()->GetNumClasses(), 3);
  }
}

TEST(MakeGrower, RefusesWhatItCannotDo) {
  SampleData const data = Steps();
  CCartSettingsImp criterion = data.ClassSettings();
  criterion.SetSplitCriteria(static_cast<CartSplitCriteria>(3));

  EXPECT_THAT(RefusalOf(data, criterion), HasSubstr("no split criterion 3"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {-1}), HasSubstr("-1 threads"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {1, 0.0}), HasSubstr("test sample"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {1, -1e-9}), HasSubstr("and is -1e-09"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {1, 1.0}), HasSubstr("test sample"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {1, 0.3, -1}), HasSubstr("and is -1"));
  EXPECT_THAT(RefusalOf(data, data.ClassSettings(), {1, 0.3, 65536}), HasSubstr("and is 65536"));
}

TEST(MakeGrower, RefusesTargetsThatCannotBePredicted) {
  SampleData infinite(2);
  infinite.Numbers({1.0, -HUGE_VAL}).Ordered({1, 2});

  EXPECT_THAT(RefusalOf(infinite, infinite.NumberSettings()),
              HasSubstr("column \"number\": case 1: value -inf cannot be predicted"));
}

TEST(MakeGrower, RefusesNumbersWhoseSquaresCannotBeReckonedWith) {
  struct {
    char const* name;
    std::vector<double> numbers;
    char const* range;
  } const kRows[] = {
      {"too far apart", {-1e200, 1e200, 0, 0}, "from -1e+200 to 1e+200 cannot be predicted"},
      {"as far as can be", {-1.5e308, 1.5e308, 0, 0}, "from -1.5e+308 to 1.5e+308"},
      {"too close together", {0, 1e-200, 0, 0}, "from 0 to 1e-200"},
      {"too far in the test sample", {0, 1, 1e200, 1e200}, "from 0 to 1e+200"},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    SampleData data(4);
    data.Numbers(row.numbers).Ordered({1, 2, 1, 2}).Samples({0, 0, 1, 1});

    EXPECT_THAT(RefusalOf(data, data.NumberSettings()), HasSubstr("column \"number\": numbers"));
    EXPECT_THAT(RefusalOf(data, data.NumberSettings()), HasSubstr(row.range));
  }
}

TEST(MakeGrower, RefusesMoreRepeatedCasesThanItCanDrawFrom) {
  SampleData data(2);
  data.Classes({0, 1}).Ordered({1, 2}).Frequencies({2e9, 2e9});
  CCartSettingsImp settings = data.ClassSettings();
  EXPECT_EQ(RefusalOf(data, settings), "none");

  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  EXPECT_THAT(RefusalOf(data, settings), HasSubstr("more than 2147483647 cases"));
}

TEST(MakeGrower, SaysThatManyClassesCostMuch) {
  for (std::size_t const count : {1000U, 1001U}) {
    SCOPED_TRACE(count);
    std::vector<double> classes(count);
    std::iota(classes.begin(), classes.end(), 0.0);
    SampleData data(count);
    data.Classes(classes).Ordered(classes);

    auto const grower = data.Make(data.ClassSettings());

    if (count == 1000) {
      EXPECT_THAT(grower->GetRemarks(), IsEmpty());
    } else {
      EXPECT_THAT(grower->GetRemarks(), ElementsAre(HasSubstr("\"class\" has 1001 classes")));
    }
  }
}

TEST(MakeGrower, HasAsManyFoldsAsThereAreCasesToDraw) {
  SampleData data(3);
  data.Classes({0, 1, 1}).Ordered({1, 2, 3}).Frequencies({2, 3, 2});
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  for (auto const& [wanted, given] : {std::pair(5, 5), std::pair(100, 7)}) {
    settings.GetValidationSpec()->SetNumCVFolds(wanted);
    EXPECT_EQ(data.Make(settings)->GetNumFolds(), given);
  }
}

TEST(MakeGrower, CountsRepeatedCases) {
  struct {
    char const* name;
    std::vector<double> frequencies;
    std::size_t count;
  } const kRows[] = {{"whole", {3, 2, 5}, 10U},
                     {"rounded", {1.5, 1.5, 0.6}, 4U},
                     {"never to nothing", {0.1, 0.1, 0.1}, 1U}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    SampleData data(3);
    data.Classes({0, 1, 1}).Ordered({1, 2, 3}).Frequencies(row.frequencies);

    EXPECT_EQ(data.Make(data.ClassSettings())->GetNumCases(TrainingSample), row.count);
  }
}

TEST(MakeGrower, CountsTheCasesLeftOut) {
  SampleData data(3);
  data.Classes({0, systemMissingValue(), 1}).Ordered({1, 2, 3}).Frequencies({1, 1, 0});

  auto const grower = data.Make(data.ClassSettings());

  EXPECT_EQ(grower->GetNumCases(TrainingSample), 1U);
  EXPECT_EQ(grower->GetLeftOut().missingTarget, 1U);
  EXPECT_EQ(grower->GetLeftOut().frequencyWeight, 1U);
}

TEST(MakeGrower, GrowsNothingWithoutCases) {
  SampleData data(1);
  data.Classes({systemMissingValue()}).Ordered({1});

  auto const grower = data.Make(data.ClassSettings());

  EXPECT_FALSE(grower->Grow());
  EXPECT_EQ(grower->GetFailure(), FailureNoData);
}

TEST(MakeGrower, GrowsARootWithoutPredictors) {
  SampleData data(2);
  data.Classes({0, 1});

  auto const grower = data.Make(data.ClassSettings());

  ASSERT_TRUE(grower->Grow()) << grower->GetFailureMessage();
  EXPECT_EQ(grower->GetNumNodes(AllNodes), 1);
}

// ---- Progress ----

class Listener : public ProgressListener {
 public:
  explicit Listener(int patience) : patience_(patience) {}

  bool Report(double fraction, char const* activity) noexcept override {
    EXPECT_EQ(std::this_thread::get_id(), thread_);
    EXPECT_GE(fraction, last_);
    EXPECT_LE(fraction, 1.0);
    EXPECT_STRNE(activity, "");
    last_ = fraction;
    return ++numReports_ < patience_;
  }
  int GetNumReports() const { return numReports_; }

 private:
  int patience_;
  std::thread::id thread_ = std::this_thread::get_id();
  double last_ = 0.0;
  int numReports_ = 0;
};

TEST(Progress, IsReportedInTheCallingThread) {
  SampleData const data = Steps();
  for (int const numThreads : {1, 3}) {
    auto const grower = data.Make(data.ClassSettings(), {numThreads});
    Listener listener(1000000);
    grower->SetProgressListener(&listener);

    EXPECT_TRUE(grower->Grow());
    EXPECT_GT(listener.GetNumReports(), 0);
  }
}

template <class Settings>
std::unique_ptr<Grower> MakeBy(SampleData const& data, int numThreads) {
  return data.Make(data.LooseSettings<Settings>(), {numThreads});
}

struct Algorithm {
  char const* name;
  std::unique_ptr<Grower> (*make)(SampleData const& data, int numThreads);
  bool isOfNumbers;
};

constexpr Algorithm kAlgorithms[] = {{"CART", MakeBy<CCartSettingsImp>, false},
                                     {"CART of numbers", MakeBy<RCartSettingsImp>, true},
                                     {"CHAID", MakeBy<CChaidSettingsImp>, false},
                                     {"CHAID of numbers", MakeBy<RChaidSettingsImp>, true},
                                     {"QUEST", MakeBy<QuestSettingsImp>, false}};

/// `Steps` with 60 cases, which are enough for tests.
SampleData LongSteps(bool ofNumbers) {
  std::vector<double> target;
  std::vector<double> values;
  std::vector<double> categories;
  for (int i = 0; i < 60; ++i) {
    target.push_back(i / 20);
    values.push_back(i);
    categories.push_back(i / 12);
  }
  SampleData data(60);
  ofNumbers ? data.Numbers(target) : data.Classes(target);
  data.Ordered(values).Nominal(categories);
  return data;
}

TEST(Progress, CancelledGrowingLeavesTheOldTree) {
  for (Algorithm const& algorithm : kAlgorithms) {
    SCOPED_TRACE(algorithm.name);
    SampleData const data = LongSteps(algorithm.isOfNumbers);
    for (auto const& [numThreads, patience] : {std::pair(1, 1), std::pair(1, 7), std::pair(3, 4)}) {
      auto const grower = algorithm.make(data, numThreads);
      ASSERT_TRUE(grower->Grow());
      ASSERT_GE(grower->GetNumNodes(AllNodes), 4);
      std::string const before = Describe(*grower->GetRootNode());
      GrowingListener listener(patience);
      grower->SetProgressListener(&listener);

      EXPECT_FALSE(grower->Grow());
      EXPECT_EQ(grower->GetFailure(), FailureCancelled);
      EXPECT_EQ(listener.GetNumReports(), patience);
      EXPECT_EQ(Describe(*grower->GetRootNode()), before);

      grower->SetProgressListener(nullptr);
      EXPECT_TRUE(grower->Grow());
      EXPECT_EQ(Describe(*grower->GetRootNode()), before);
    }
  }
}

TEST(Progress, CancelledGrowingOfTheFirstTreeLeavesNone) {
  for (Algorithm const& algorithm : kAlgorithms) {
    SCOPED_TRACE(algorithm.name);
    SampleData const data = LongSteps(algorithm.isOfNumbers);
    auto const grower = algorithm.make(data, 1);
    GrowingListener listener(5);
    grower->SetProgressListener(&listener);

    EXPECT_FALSE(grower->Grow());

    EXPECT_EQ(grower->GetFailure(), FailureCancelled);
    EXPECT_EQ(grower->GetRootNode(), nullptr);
    EXPECT_EQ(grower->GetNumNodes(AllNodes), 0);
  }
}

TEST(Progress, CancelledPreparationCanBeginAgain) {
  SampleData const data = Steps();
  auto const grower = data.Make(data.ClassSettings());
  Listener listener(1);
  grower->SetProgressListener(&listener);
  EXPECT_FALSE(grower->Grow());
  EXPECT_EQ(grower->GetRootNode(), nullptr);

  grower->SetProgressListener(nullptr);
  EXPECT_TRUE(grower->Grow());
  EXPECT_EQ(grower->GetNumNodes(AllNodes), 5);
}

class Activities : public ProgressListener {
 public:
  bool Report(double, char const* activity) noexcept override {
    seen.emplace_back(activity);
    return goesOn;
  }
  std::vector<std::string> seen;
  bool goesOn = true;
};

TEST(Progress, IsReportedWhileTheDataIsReadAndAfterwards) {
  SampleData const data = Steps();
  Activities listener;

  auto const grower = data.Make(data.ClassSettings(), {.numThreads = 1, .listener = &listener});

  ASSERT_NE(grower, nullptr);
  EXPECT_THAT(listener.seen, testing::Contains("reading the data"));
  listener.seen.clear();
  EXPECT_TRUE(grower->Grow());
  EXPECT_THAT(listener.seen, testing::Not(testing::IsEmpty()));
}

TEST(Progress, CancelledReadingLeavesNoGrower) {
  SampleData const data = Steps();
  for (ValidationType const type :
       {ValidationNone, ValidationSplitSample, ValidationCrossValidation}) {
    Activities listener;
    listener.goesOn = false;
    CCartSettingsImp settings = data.ClassSettings();
    settings.GetValidationSpec()->Set(type);

    EXPECT_EQ(data.Make(settings, {.numThreads = 1, .listener = &listener}), nullptr);
    EXPECT_THAT(listener.seen, testing::ElementsAre("reading the data"));
  }
}

TEST(Progress, TellsThatOnlyFoldsNeedPreparedData) {
  SampleData const data = Steps();
  for (ValidationType const type :
       {ValidationNone, ValidationSplitSample, ValidationCrossValidation}) {
    SCOPED_TRACE(static_cast<int>(type));
    CCartSettingsImp settings = data.ClassSettings();
    settings.GetValidationSpec()->Set(type);
    settings.GetValidationSpec()->SetNumCVFolds(2);
    auto const grower = data.Make(settings);
    ASSERT_TRUE(grower->Grow());
    Activities listener;
    grower->SetProgressListener(&listener);

    std::vector<PruningStep> steps;
    EXPECT_TRUE(grower->GetPruningSequence(&steps));
    EXPECT_TRUE(grower->Prune());
    EXPECT_TRUE(grower->Validate());

    bool const isCrossValidated = type == ValidationCrossValidation;
    EXPECT_EQ(std::count(listener.seen.begin(), listener.seen.end(), "preparing the data") > 0,
              isCrossValidated);
  }
}

}  // namespace
}  // namespace tree::grow
