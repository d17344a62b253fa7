#include "cart/cart_method.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "growing/node_statistics.h"
#include "growing/placement.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// A method on the root of a sample, or on children of it.
class Setting {
 public:
  explicit Setting(Sample const& cases, Form form = Form::kAsItComes, int numThreads = 1)
      : sample_(cases, form, numThreads), lists_(sample_.MakeLists()) {
    if (cases.hasClasses) classes_.emplace(PriorsImp(), CostImp(), sample_.ClassWeights(lists_));
    NodeSums const sums = SumCases(sample_.GetData(), lists_.Cases(lists_.GetRoot()));
    totalWeight_ = static_cast<double>(sums.weight) * sample_.GetData().GetWeights().unit;
    AddNode(lists_.GetRoot());
  }

  CartSettings& GetSettings() { return sample_.GetSettings(); }
  CCartSettingsImp& GetClassSettings() { return dynamic_cast<CCartSettingsImp&>(GetSettings()); }
  CaseLists const& GetLists() const { return lists_; }
  /// Goes on from the root to children of it.
  void Divide(ChildOfPlace const& childOf, int numChildren) {
    auto children = lists_.DivideCases(lists_.GetRoot(), childOf, numChildren);
    WorkMemory<SortedCase> scratch;
    for (std::size_t predictor = 0; predictor < lists_.GetRoot().byPredictor.size(); ++predictor) {
      lists_.DividePredictor(lists_.GetRoot(), predictor, children, scratch);
    }
    nodes_.clear();
    for (NodeRanges const& child : children) AddNode(child);
  }

  std::vector<RuleList> FindAllSplits(SplitLimits const& limits = {}) {
    return Method(limits).FindSplits(lists_, nodes_, sample_.GetWorkers());
  }
  RuleList FindSplits(SplitLimits const& limits = {}) {
    return std::move(FindAllSplits(limits).front());
  }
  /// Of the first node, for this primary split.
  RuleList FindSurrogates(SplitRuleImp const* primary) {
    ChildOfPlace childOf(lists_.GetNumPlaces(), kNoChild);
    if (primary != nullptr) {
      PlaceByRule(sample_.GetData(), lists_, lists_.GetRoot(), *primary, childOf);
    }
    return std::move(
        Method({})
            .FindSurrogates(lists_, {nodes_.data(), 1}, {primary}, childOf, sample_.GetWorkers())
            .front());
  }

 private:
  CartMethod Method(SplitLimits const& limits) {
    return CartMethod(sample_.GetData(), GetSettings(), classes_.has_value() ? &*classes_ : nullptr,
                      limits, totalWeight_);
  }
  void AddNode(NodeRanges const& ranges) {
    auto const cases = lists_.Cases(ranges);
    trees_.push_back(std::make_unique<NodeImp>());
    nodes_.push_back({trees_.back().get(), 0, ranges, SumCases(sample_.GetData(), cases)});
    NodeStatistics(sample_.GetData(), TrainingSample, classes_.has_value() ? &*classes_ : nullptr,
                   totalWeight_)
        .Fill(*trees_.back(), cases, nodes_.back().sums);
  }

  PreparedSample sample_;
  CaseLists lists_;
  std::optional<ClassModel> classes_;
  double totalWeight_ = 0.0;
  std::vector<std::unique_ptr<NodeImp>> trees_;
  std::vector<GrowingNode> nodes_;
};

std::vector<int> PredictorsOf(RuleList const& rules) {
  std::vector<int> predictors;
  for (auto const& rule : rules) predictors.push_back(rule->GetPredictorIndex());
  return predictors;
}

double CutOf(SplitRuleImp const& rule) {
  return dynamic_cast<OSplitRule const&>(rule).GetCutPoint();
}

double ImprovementOf(SplitRuleImp const& rule) { return rule.GetStatistic(SplitImprovement); }

/// Predictor 0 says nothing, 1 separates but for one case, 2 separates.
Sample ThreePredictors() {
  return {.target = {0, 0, 0, 1, 1, 1},
          .predictors = {{{5, 5, 5, 5, 5, 5}}, {{1, 2, 4, 3, 5, 6}}, {{0, 1, 0, 2, 2, 3}, true}}};
}

TEST(CartMethod, GivesTheSplitsOfANodeBestFirst) {
  Setting setting(ThreePredictors());

  RuleList const rules = setting.FindSplits();

  ASSERT_THAT(PredictorsOf(rules), ElementsAre(2, 1));
  EXPECT_NEAR(ImprovementOf(*rules[0]), 0.5, 1e-12);
  // 0.5 - (4/6) * 2 * 3/4 * 1/4: up to 2.5, of four cases on the right one is of class 0.
  EXPECT_NEAR(ImprovementOf(*rules[1]), 0.5 - 0.25, 1e-12);
}

TEST(CartMethod, MakesRulesOfTheKindOfThePredictor) {
  Setting setting(ThreePredictors());

  RuleList const rules = setting.FindSplits();

  ASSERT_THAT(rules, SizeIs(2));
  ASSERT_FALSE(rules[0]->IsOrdered());
  EXPECT_EQ(rules[0]->Classify(0.0), rules[0]->Classify(1.0));
  EXPECT_EQ(rules[0]->Classify(2.0), rules[0]->Classify(3.0));
  EXPECT_EQ(rules[0]->Classify(0.0) + rules[0]->Classify(2.0), 1);
  EXPECT_LT(rules[0]->Classify(4.0), 0) << "a category that no case has";
  ASSERT_TRUE(rules[1]->IsOrdered());
  EXPECT_EQ(CutOf(*rules[1]), 2.5);
  EXPECT_EQ(dynamic_cast<OSplitRule const&>(*rules[1]).GetMissingValue(), kMissing);
  EXPECT_LT(rules[1]->Classify(kMissing), 0);
}

TEST(CartMethod, GivesTheFirstPredictorOfEqualOnes) {
  Setting setting(
      {.target = {0, 0, 1, 1}, .predictors = {{{1, 1, 1, 2}}, {{4, 3, 2, 1}}, {{1, 2, 3, 4}}}});

  EXPECT_THAT(PredictorsOf(setting.FindSplits()), ElementsAre(1, 2, 0));
}

TEST(CartMethod, KeepsAsManySplitsAsTheSettingsDo) {
  Setting setting(
      {.target = {0, 0, 1, 1}, .predictors = {{{1, 1, 1, 2}}, {{4, 3, 2, 1}}, {{1, 2, 3, 4}}}});

  setting.GetSettings().SetMaxNumCompetitors(2);
  EXPECT_THAT(PredictorsOf(setting.FindSplits()), ElementsAre(1, 2));
  setting.GetSettings().SetMaxNumCompetitors(1);
  EXPECT_THAT(PredictorsOf(setting.FindSplits()), ElementsAre(1));
}

TEST(CartMethod, SplitsNothingWithoutTheLeastImprovement) {
  Setting setting(ThreePredictors());

  EXPECT_THAT(setting.FindSplits({.minImprovement = 0.4999}), SizeIs(2))
      << "competitors may be worse";
  EXPECT_THAT(setting.FindSplits({.minImprovement = 0.5001}), IsEmpty());
}

TEST(CartMethod, TakesRoundingForNoImprovement) {
  // Shares are the same in all categories, but not to the last bit of the sums.
  Sample cases{.target = {}, .predictors = {{}}};
  for (int value = 0; value < 6; ++value) {
    for (int repeat = 0; repeat < 10 + value; ++repeat) {
      for (double const code : {0.0, 1.0, 2.0}) {
        cases.target.push_back(code);
        cases.predictors[0].values.push_back(value);
        cases.weights.push_back(0.1 * (1.0 + code));
      }
    }
  }
  Setting setting(cases);
  for (int const criterion : {0, 1, 2}) {
    SCOPED_TRACE(criterion);
    setting.GetClassSettings().SetSplitCriteria(static_cast<CartSplitCriteria>(criterion));

    EXPECT_THAT(setting.FindSplits({.minImprovement = 0.0}), IsEmpty());
  }
}

TEST(CartMethod, LeavesChildrenTheirLeastSize) {
  Setting setting({.target = {0, 1, 1, 1, 1, 0}, .predictors = {{{1, 2, 3, 4, 5, 6}}}});

  EXPECT_EQ(CutOf(*setting.FindSplits()[0]), 1.5);
  EXPECT_EQ(CutOf(*setting.FindSplits({.minChildSize = 1.5})[0]), 2.5) << "two cases, that is";
  EXPECT_THAT(setting.FindSplits({.minChildSize = 3.5}), IsEmpty());
}

TEST(CartMethod, GoesByTheCriterionOfTheSettings) {
  // The first cut splits class 2 off.
  Setting setting({.target = {2, 2, 2, 0, 0, 1, 1, 0, 1, 0, 1, 1},
                   .predictors = {{{1, 1, 1, 2, 2, 2, 3, 3, 3, 3, 3, 3}}}});
  std::vector<double> improvements;
  for (int const criterion : {0, 1, 2}) {
    setting.GetClassSettings().SetSplitCriteria(static_cast<CartSplitCriteria>(criterion));
    improvements.push_back(ImprovementOf(*setting.FindSplits()[0]));
  }

  // Priors are alike. Up to 1.5: Gini 2/3 - 2/3 * 1/2; twoing 1/3 * 2/3, the sides being pure.
  EXPECT_NEAR(improvements[0], 1.0 / 3.0, 1e-12);
  EXPECT_NEAR(improvements[1], 2.0 / 9.0, 1e-12);
  EXPECT_NEAR(improvements[2], 2.0 / 9.0, 1e-12);
}

TEST(CartMethod, MeasuresImprovementsOfNumbersAsMeanSquares) {
  Setting setting({.target = {0, 0, 10, 10}, .hasClasses = false, .predictors = {{{1, 2, 3, 4}}}});

  RuleList const rules = setting.FindSplits();

  ASSERT_THAT(rules, SizeIs(1));
  EXPECT_NEAR(ImprovementOf(*rules[0]), 25.0, 1e-9);
}

TEST(CartMethod, WeighsNumbers) {
  // Mean 7.5; a quarter of the weight is 7.5 away, the rest 2.5.
  Setting setting(
      {.target = {0, 10}, .hasClasses = false, .predictors = {{{1, 2}}}, .weights = {0.5, 1.5}});

  EXPECT_NEAR(ImprovementOf(*setting.FindSplits()[0]), 18.75, 1e-9);
}

TEST(CartMethod, SplitsManyNodesAtATime) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    Setting setting({.target = {0, 0, 1, 0, 1, 1, 1}, .predictors = {{{1, 2, 3, 4, 5, 6, 7}}}},
                    form);
    setting.Divide({0, 1, 0, 1, 1, 0, 2}, 3);

    std::vector<RuleList> const rules = setting.FindAllSplits();

    ASSERT_THAT(rules, SizeIs(3));
    EXPECT_EQ(CutOf(*rules[0].at(0)), 2.0);
    EXPECT_EQ(CutOf(*rules[1].at(0)), 4.5);
    EXPECT_THAT(rules[2], IsEmpty());
    // Each node's improvement is on the scale of the tree, by the priors of the classes: two of
    // three cases of class 0 (0.5 / 3 each) against one of four of class 1 (0.5 / 4).
    double const first = 2.0 / 6.0;
    double const second = 1.0 / 8.0;
    double const sum = first + second;
    EXPECT_NEAR(ImprovementOf(*rules[1][0]), sum - (first * first + second * second) / sum, 1e-12);
  }
}

TEST(CartMethod, GivesTheSameWithSeveralThreads) {
  Sample cases{.target = {}, .predictors = {{}, {}, {}, {{}, true}}};
  RandomNumbers random(1);
  for (int index = 0; index < 500; ++index) {
    cases.target.push_back(random.Below(3));
    for (Sample::Predictor& predictor : cases.predictors) {
      predictor.values.push_back(random.Below(20));
    }
  }
  Setting one(cases, Form::kSorted);
  Setting four(cases, Form::kSorted, 4);

  RuleList const byOne = one.FindSplits();
  RuleList const byFour = four.FindSplits();

  ASSERT_EQ(PredictorsOf(byOne), PredictorsOf(byFour));
  for (std::size_t position = 0; position < byOne.size(); ++position) {
    EXPECT_EQ(ImprovementOf(*byOne[position]), ImprovementOf(*byFour[position]));
    EXPECT_EQ(byOne[position]->Compare(*byFour[position]), 0);
  }
}

/// Predictor 1 agrees with 0 but for one case, 2 reversed and 3 by categories entirely, 4 not at
/// all.
Sample FivePredictors() {
  return {.target = {0, 0, 0, 1, 1, 1},
          .predictors = {{{1, 2, 3, 4, 5, 6}},
                         {{1, 1, 9, 9, 9, 9}},
                         {{6, 5, 4, 3, 2, 1}},
                         {{7, 7, 8, 3, 3, 0}, true},
                         {{5, 5, 5, 5, 5, 5}}}};
}

std::unique_ptr<OSplitRule> PrimaryAt(double cutPoint) {
  auto rule = std::make_unique<OSplitRule>(kMissing, 0);
  rule->SetCutPoint(cutPoint);
  return rule;
}

TEST(CartMethod, GivesSurrogatesBestFirst) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    Setting setting(FivePredictors(), form);

    RuleList const surrogates = setting.FindSurrogates(PrimaryAt(3.5).get());

    ASSERT_THAT(PredictorsOf(surrogates), ElementsAre(2, 3, 1));
    EXPECT_EQ(surrogates[0]->GetStatistic(SurrogateAssociation), 1.0);
    EXPECT_EQ(CutOf(*surrogates[0]), 3.5);
    EXPECT_EQ(surrogates[0]->Classify(3.0), 1) << "reversed";
    EXPECT_EQ(surrogates[0]->Classify(4.0), 0);
    EXPECT_EQ(surrogates[1]->Classify(7.0), 0);
    EXPECT_EQ(surrogates[1]->Classify(8.0), 0);
    EXPECT_EQ(surrogates[1]->Classify(3.0), 1);
    EXPECT_EQ(surrogates[1]->Classify(0.0), 1);
    EXPECT_LT(surrogates[1]->Classify(1.0), 0) << "a category that no case has";
    EXPECT_NEAR(surrogates[2]->GetStatistic(SurrogateAssociation), 2.0 / 3.0, 1e-12);
    EXPECT_EQ(surrogates[2]->Classify(9.0), 1);
  }
}

TEST(CartMethod, MapsNoSurrogateCategoriesThatTheNodeLacks) {
  Setting setting({.target = {0, 0, 1, 1, 0},
                   .predictors = {{{1, 2, 3, 4, kMissing}}, {{0, 0, 2, 2, 1}, true}}});

  RuleList const surrogates = setting.FindSurrogates(PrimaryAt(2.5).get());

  ASSERT_THAT(surrogates, SizeIs(1));
  EXPECT_EQ(surrogates[0]->Classify(0.0), 0);
  EXPECT_LT(surrogates[0]->Classify(1.0), 0) << "only of a case that the primary does not place";
  EXPECT_EQ(surrogates[0]->Classify(2.0), 1);
}

TEST(CartMethod, KeepsAsManySurrogatesAsTheSettingsDo) {
  Setting setting(FivePredictors());

  setting.GetSettings().SetMaxNumSurrogates(2);
  EXPECT_THAT(PredictorsOf(setting.FindSurrogates(PrimaryAt(3.5).get())), ElementsAre(2, 3));
  setting.GetSettings().SetMaxNumSurrogates(0);
  EXPECT_THAT(setting.FindSurrogates(PrimaryAt(3.5).get()), IsEmpty());
}

TEST(CartMethod, FindsNoSurrogatesWithoutAPrimarySplit) {
  Setting setting(FivePredictors());

  EXPECT_THAT(setting.FindSurrogates(nullptr), IsEmpty());
}

TEST(CartMethod, FindsNoSurrogatesOfSplitsInMoreThanTwo) {
  Setting setting(FivePredictors());
  NSplitRule primary(3, 9);
  primary.SetCatMapping(7, 0);
  primary.SetCatMapping(8, 1);
  primary.SetCatMapping(3, 2);

  EXPECT_THAT(setting.FindSurrogates(&primary), IsEmpty());
}

}  // namespace
}  // namespace tree::grow
