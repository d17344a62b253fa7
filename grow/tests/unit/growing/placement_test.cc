#include "growing/placement.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "testing/tree_builder.h"
#include "testing/value_set_builder.h"

namespace tree::grow {
namespace {

using ::testing::ElementsAre;
using tree::testing::Above;
using tree::testing::ANode;
using tree::testing::AtMost;
using tree::testing::OpenClosed;

std::unique_ptr<OSplitRule> CutAt(int predictor, double cutPoint) {
  auto rule = std::make_unique<OSplitRule>(kMissing, predictor);
  rule->SetCutPoint(cutPoint);
  return rule;
}

/// (-inf, 2], (2, 7] and (7, inf) for children 0, 1 and 2.
std::unique_ptr<OSplitRule> ThreeWay(int predictor) {
  auto rule = std::make_unique<OSplitRule>(kMissing, predictor);
  rule->AddMappedValues(AtMost(2.0));
  rule->AddMappedValues(OpenClosed(2.0, 7.0));
  rule->AddMappedValues(Above(7.0));
  return rule;
}

/// Maps codes 0, 1, ... to these children; -1 to none.
std::unique_ptr<NSplitRule> Categories(int predictor, std::vector<int> const& children) {
  auto rule = std::make_unique<NSplitRule>(predictor, 0);
  for (int code = 0; code < static_cast<int>(children.size()); ++code) {
    rule->SetCatMapping(code, children[static_cast<std::size_t>(code)]);
  }
  return rule;
}

ChildOfPlace Place(PreparedSample& sample, SplitRuleImp const& rule) {
  CaseLists const lists = sample.MakeLists();
  ChildOfPlace childOf(lists.GetNumPlaces(), 77);
  PlaceByRule(sample.GetData(), lists, lists.GetRoot(), rule, childOf);
  return childOf;
}

Sample OnePredictor(std::vector<double> const& values, bool nominal = false) {
  return {.target = std::vector<double>(values.size()), .predictors = {{values, nominal}}};
}

TEST(PlaceByRule, SendsValuesUpToTheCutPointLeft) {
  for (Form const form : {Form::kAsItComes, Form::kSorted, Form::kInRows}) {
    SCOPED_TRACE(static_cast<int>(form));
    PreparedSample sample(OnePredictor({3.0, kMissing, 1.0, 2.0}), form);

    EXPECT_THAT(Place(sample, *CutAt(0, 2.0)), ElementsAre(1, kNoChild, 0, 0));
  }
}

TEST(PlaceByRule, CanBeCancelledOnTheWay) {
  for (bool const nominal : {false, true}) {
    SCOPED_TRACE(nominal);
    PreparedSample sample(TwoSlices(nominal));
    CaseLists const lists = sample.MakeLists();
    ChildOfPlace childOf(lists.GetNumPlaces(), 0);
    auto const cut = CutAt(0, 1e9);
    auto const categories = Categories(0, {0, 1});
    auto const three = ThreeWay(0);
    Impatient listener;
    auto const cancels = [&](auto const& work) {
      sample.GetWorkers().SetListener(&listener);
      sample.GetWorkers().Begin();
      EXPECT_THROW(work(), Cancelled);
      sample.GetWorkers().SetListener(nullptr);
    };
    auto const place = [&](SplitRuleImp const& rule) {
      PlaceByRule(sample.GetData(), lists, lists.GetRoot(), rule, childOf);
    };

    if (nominal) {
      cancels([&] { place(*categories); });
      cancels([&] { SetDumbRule(lists, lists.GetRoot(), childOf, *categories); });
    } else {
      cancels([&] { place(*cut); });
      cancels([&] { place(*three); });
    }
  }
}

TEST(PlaceByRule, HandlesCutPointsBesideAllValues) {
  PreparedSample sample(OnePredictor({3.0, 1.0, 2.0}), Form::kSorted);

  EXPECT_THAT(Place(sample, *CutAt(0, 0.5)), ElementsAre(1, 1, 1));
  EXPECT_THAT(Place(sample, *CutAt(0, 3.0)), ElementsAre(0, 0, 0));
}

TEST(PlaceByRule, MindsReversedRules) {
  PreparedSample sample(OnePredictor({3.0, 1.0, 2.0}), Form::kSorted);
  auto const rule = CutAt(0, 2.0);
  rule->SetReverse();

  EXPECT_THAT(Place(sample, *rule), ElementsAre(0, 1, 1));
}

TEST(PlaceByRule, SendsMissingValuesWhereTheRuleMapsThem) {
  for (Form const form : {Form::kAsItComes, Form::kSorted, Form::kInRows}) {
    SCOPED_TRACE(static_cast<int>(form));
    PreparedSample sample(OnePredictor({3.0, kMissing, 1.0}), form);
    auto const rule = CutAt(0, 2.0);
    rule->AddMissingValueMapping(true);

    EXPECT_THAT(Place(sample, *rule), ElementsAre(1, 2, 0));
  }
}

TEST(PlaceByRule, PlacesNoCaseWithoutAValue) {
  PreparedSample sample(OnePredictor({kMissing, kMissing}));

  EXPECT_THAT(Place(sample, *CutAt(0, 2.0)), ElementsAre(kNoChild, kNoChild));
}

TEST(PlaceByRule, SendsIntervalsToTheirChildren) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    PreparedSample sample(OnePredictor({8.0, 2.0, 7.0, 5.0, kMissing, 2.0, 9.0}), form);

    EXPECT_THAT(Place(sample, *ThreeWay(0)), ElementsAre(2, 0, 1, 1, kNoChild, 0, 2));
  }
}

TEST(PlaceByRule, SendsCategoriesToTheirChildren) {
  PreparedSample sample(OnePredictor({2.0, 0.0, 1.0, 3.0, kMissing, 9.0}, true));

  EXPECT_THAT(Place(sample, *Categories(0, {1, 0, 2, -1})),
              ElementsAre(2, 1, 0, kNoChild, kNoChild, kNoChild));
}

TEST(PlaceByRule, KnowsNoChildrenBeyondTheMost) {
  PreparedSample sample(OnePredictor({0.0, 1.0, 2.0}, true));

  EXPECT_THAT(Place(sample, *Categories(0, {kMaxChildren - 1, kMaxChildren, 100000})),
              ElementsAre(kMaxChildren - 1, kNoChild, kNoChild));
}

TEST(PlaceByRule, LeavesOtherNodesAlone) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    PreparedSample sample(OnePredictor({3.0, 1.0, 4.0, 2.0}), form);
    CaseLists lists = sample.MakeLists();
    WorkMemory<SortedCase> scratch;
    auto children = lists.DivideCases(lists.GetRoot(), {0, 1, 0, 1}, 2);
    lists.DividePredictor(lists.GetRoot(), 0, children, scratch);
    ChildOfPlace childOf(4, 77);

    PlaceByRule(sample.GetData(), lists, children[1], *CutAt(0, 1.5), childOf);

    EXPECT_THAT(childOf, ElementsAre(77, 77, 0, 1));
  }
}

TEST(PlaceByRule, PlacesCasesAsTheRuleClassifiesThem) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::vector<double> values(1 + random.Below(40));
    for (double& value : values) value = random.Below(5) == 0 ? kMissing : random.Below(10);
    std::vector<std::unique_ptr<SplitRuleImp>> rules;
    rules.push_back(CutAt(0, random.Below(20) / 2.0 - 0.5));
    rules.push_back(CutAt(0, random.Below(20) / 2.0 - 0.5));
    static_cast<OSplitRule&>(*rules.back()).SetReverse();
    rules.push_back(ThreeWay(0));
    rules.push_back(std::make_unique<OSplitRule>(kMissing, 0));
    if (random.Below(2) == 0) {
      for (auto const& rule : rules) rule->AddMissingValueMapping(random.Below(2) == 0);
    }
    for (Form const form : {Form::kAsItComes, Form::kSorted, Form::kInRows}) {
      PreparedSample sample(OnePredictor(values), form);
      for (auto const& rule : rules) {
        ChildOfPlace const childOf = Place(sample, *rule);
        for (std::size_t place = 0; place < values.size(); ++place) {
          int const child = rule->Classify(values[place]);
          ASSERT_EQ(childOf[place], child < 0 ? kNoChild : child) << values[place];
        }
      }
    }
  }
}

std::pair<int, double> DumbRule(Sample const& cases, ChildOfPlace const& childOf) {
  PreparedSample sample(cases);
  CaseLists const lists = sample.MakeLists();
  NSplitRule rule(0, 0);
  SetDumbRule(lists, lists.GetRoot(), childOf, rule);
  return {rule.GetDumbChildPos(), rule.GetDumbChildProb()};
}

TEST(SetDumbRule, TakesTheChildThatGetsMost) {
  EXPECT_EQ(DumbRule({.target = std::vector<double>(5)}, {1, 0, 1, 1, 2}), std::pair(1, 0.6));
}

TEST(SetDumbRule, GoesByWeight) {
  EXPECT_EQ(DumbRule({.target = std::vector<double>(3), .weights = {1.0, 5.0, 2.0}}, {0, 1, 0}),
            std::pair(1, 0.625));
}

TEST(SetDumbRule, TakesTheFirstOfEqualChildren) {
  EXPECT_EQ(DumbRule({.target = std::vector<double>(4)}, {2, 1, 1, 2}), std::pair(1, 0.5));
}

TEST(SetDumbRule, LeavesOutCasesThatAreNotPlaced) {
  EXPECT_EQ(DumbRule({.target = std::vector<double>(4)}, {kNoChild, kNoChild, kNoChild, 0}),
            std::pair(0, 1.0));
}

TEST(SetDumbRule, SetsNoneWhereNoCaseIsPlaced) {
  EXPECT_EQ(DumbRule({.target = std::vector<double>(2)}, {kNoChild, kNoChild}),
            std::pair(-1, -1.0));
}

TEST(PlaceRest, AsksTheSurrogatesInOrderAndThenTheDumbRule) {
  double const none = kMissing;
  PreparedSample sample({.target = std::vector<double>(5),
                         .predictors = {{{1.0, none, none, none, 9.0}},
                                        {{9.0, 9.0, none, none, 0.0}},
                                        {{9.0, 0.0, 0.0, none, 0.0}, true}}});
  auto const node = ANode(0)
                        .SplitBy(CutAt(0, 5.0))
                        .Dumb(1)
                        .Surrogate(CutAt(1, 5.0))
                        .Surrogate(Categories(2, {0}))
                        .Build();
  CaseLists const lists = sample.MakeLists();
  ChildOfPlace childOf(5, kNoChild);
  PlaceByRule(sample.GetData(), lists, lists.GetRoot(), *node->GetCompetitorImp(0), childOf);
  EXPECT_THAT(childOf, ElementsAre(0, kNoChild, kNoChild, kNoChild, 1));

  PlaceRest(sample.GetData(), lists, lists.GetRoot(), *node, childOf);

  EXPECT_THAT(childOf, ElementsAre(0, 1, 0, 1, 1));
}

TEST(PlaceRest, LeavesCasesWhereNothingPlacesThem) {
  PreparedSample sample(OnePredictor({kMissing, 1.0}));
  auto const node = ANode(0).SplitBy(CutAt(0, 5.0)).Build();
  CaseLists const lists = sample.MakeLists();
  ChildOfPlace childOf = {kNoChild, 0};

  PlaceRest(sample.GetData(), lists, lists.GetRoot(), *node, childOf);

  EXPECT_THAT(childOf, ElementsAre(kNoChild, 0));
}

TEST(PlaceRest, PlacesCasesAsTheNodeClassifiesThem) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 1 + random.Below(60);
    Sample cases{.target = std::vector<double>(count), .predictors = {{}, {}, {{}, true}}};
    for (Sample::Predictor& predictor : cases.predictors) {
      for (std::size_t index = 0; index < count; ++index) {
        predictor.values.push_back(random.Below(3) == 0 ? kMissing : random.Below(10));
      }
    }
    PreparedSample sample(cases, seed % 2 == 0 ? Form::kSorted : Form::kAsItComes);
    std::vector<int> children(8);
    for (int& child : children) child = static_cast<int>(random.Below(3)) - 1;
    auto const node = ANode(0)
                          .SplitBy(CutAt(0, random.Below(10)))
                          .Surrogate(Categories(2, children))
                          .Surrogate(CutAt(1, random.Below(10)))
                          .Build();
    // Routing asks as many rules as a node with children has.
    node->SetNumChildren(2);
    node->SetChild(0, std::make_unique<NodeImp>().release());
    node->SetChild(1, std::make_unique<NodeImp>().release());
    CaseLists const lists = sample.MakeLists();
    ChildOfPlace childOf(count, kNoChild);
    SplitRuleImp& primary = *node->GetCompetitorImp(0);
    PlaceByRule(sample.GetData(), lists, lists.GetRoot(), primary, childOf);
    SetDumbRule(lists, lists.GetRoot(), childOf, primary);

    PlaceRest(sample.GetData(), lists, lists.GetRoot(), *node, childOf);

    for (std::uint32_t index = 0; index < count; ++index) {
      std::vector<double> values(3);
      sample.GetData().CopyValues(index, values.data());
      int const child = node->Classify(values.data());
      ASSERT_EQ(childOf[index], child < 0 ? kNoChild : child) << "case " << index;
    }
  }
}

}  // namespace
}  // namespace tree::grow
