#include "flattening.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "testing/probe_rule.h"
#include "testing/rule_builder.h"
#include "testing/small_stack.h"
#include "testing/tree_builder.h"
#include "tree/score/scorer.h"

namespace tree::score {
namespace {

using tree::testing::ANode;
using tree::testing::ProbeRule;

std::unique_ptr<SplitRuleImp> CutAt(int predictor, double cutPoint,
                                    double missingValue = systemMissingValue()) {
  auto rule = std::make_unique<OSplitRule>(missingValue, predictor);
  rule->SetCutPoint(cutPoint);
  return rule;
}

std::string FlattenToError(NodeImp const& root) {
  try {
    Flatten(root);
  } catch (InputError const& error) {
    return error.what();
  }
  return "none";
}

TEST(Flattening, TakesSixteenBytesANodeOfBinaryOrdinalRules) {
  auto const root = ANode(1)
                        .SplitAt(0, 1.0, ANode(2).Regression(1.0, 1.0),
                                 ANode(3)
                                     .SplitAt(1, 2.0, ANode(4).Regression(1.0, 2.0),
                                              ANode(5).Regression(1.0, 3.0))
                                     .Dumb(0))
                        .Dumb(1)
                        .Build();

  EXPECT_EQ(Flatten(*root).GetSize(), sizeof(BlockHeader) + 5 * 16);
}

// Of binary ordinal rules, too. An end has an identifier and a prediction, which do not fit beside
// a cut point.
TEST(Flattening, TakesSixteenBytesMoreForANodeWhereCasesCanEnd) {
  struct Case {
    char const* name;
    bool hasDumbRule;
    bool mapsMissing;
    std::size_t numSlots;
  };
  constexpr Case kCases[] = {
      {"a dumb rule", true, false, 3},
      {"a mapping for missing values", false, true, 3},
      {"neither", false, false, 3 + 1},
  };
  for (Case const& each : kCases) {
    SCOPED_TRACE(each.name);
    auto rule = CutAt(0, 1.0);
    if (each.hasDumbRule) rule->SetDumbRule(1, 1.0);
    if (each.mapsMissing) rule->AddMissingValueMapping(false);
    auto const root =
        ANode(1)
            .SplitBy(std::move(rule), ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0))
            .Regression(2.0, 1.5)
            .Build();

    EXPECT_EQ(Flatten(*root).GetSize(), sizeof(BlockHeader) + each.numSlots * 16);
  }
}

std::size_t SizeOfThreeNodes(std::unique_ptr<SplitRuleImp> upper,
                             std::unique_ptr<SplitRuleImp> lower) {
  auto const root = ANode(1)
                        .SplitBy(std::move(upper), ANode(2).Regression(1.0, 1.0),
                                 ANode(3)
                                     .SplitBy(std::move(lower), ANode(4).Regression(1.0, 2.0),
                                              ANode(5).Regression(1.0, 3.0))
                                     .Dumb(1))
                        .Dumb(0)
                        .Build();
  return Flatten(*root).GetSize();
}

TEST(Flattening, TakesSixteenBytesMoreForAPredictorWithAMissingValueOfItsOwn) {
  struct Case {
    char const* name;
    double upper;
    double lower;
    std::size_t numOwn;
  };
  double const nan = std::numeric_limits<double>::quiet_NaN();
  Case const cases[] = {
      {"one", -9.0, -9.0, 0}, {"two", -9.0, -8.0, 1},         {"zeros", 0.0, -0.0, 0},
      {"none", nan, nan, 0},  {"one and none", -9.0, nan, 1}, {"none and one", nan, -9.0, 1},
  };
  for (Case const& each : cases) {
    SCOPED_TRACE(each.name);

    EXPECT_EQ(SizeOfThreeNodes(CutAt(0, 1.0, each.upper), CutAt(1, 2.0, each.lower)),
              sizeof(BlockHeader) + 5 * sizeof(Slot) + each.numOwn * 16);
  }
}

// A table of one cut point takes three slots.
TEST(Flattening, TakesFortyEightBytesMoreForANodeWithAMissingValueOfItsOwn) {
  EXPECT_EQ(SizeOfThreeNodes(CutAt(0, 1.0, -9.0), CutAt(0, 0.0, -8.0)),
            sizeof(BlockHeader) + 5 * 16 + 48);
}

TEST(Flattening, LetsNodesInTablesHaveNoSayInMissingValues) {
  auto const root = ANode(1)
                        .SplitBy(CutAt(0, 1.0, -9.0), ANode(2).Regression(1.0, 1.0),
                                 ANode(3)
                                     .SplitBy(CutAt(0, 2.0, -8.0), ANode(4).Regression(1.0, 2.0),
                                              ANode(5).Regression(1.0, 3.0))
                                     .Dumb(1))
                        .Surrogate(std::make_unique<OSplitRule>(tree::testing::OrdinalRule(
                            {tree::testing::AtMost(1.0), tree::testing::Above(1.0)})))
                        .Surrogate(CutAt(0, 0.0, -7.0))
                        .Dumb(0)
                        .Build();

  FlatTree const tree(Flatten(*root));

  EXPECT_TRUE(tree.GetPlainLevels(true).hasGeneralBelow);
  EXPECT_FALSE(tree.HasOwnMissingValues());
  EXPECT_EQ(tree.GetHeader().missingValue, -8.0);
}

TEST(Flattening, TakesSixteenBytesASurrogate) {
  auto const root =
      ANode(1)
          .SplitAt(0, 1.0, ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0))
          .Dumb(1)
          .SurrogateAt(1, 1.0)
          .SurrogateAt(2, 1.0)
          .Build();

  EXPECT_EQ(Flatten(*root).GetSize(), sizeof(BlockHeader) + 5 * 16);
}

std::unique_ptr<SplitRuleImp> ByCodes(int numCodes, int numChildren) {
  auto rule = std::make_unique<NSplitRule>(0, numCodes);
  for (int code = 0; code < numCodes; ++code) rule->SetCatMapping(code, code % numChildren);
  return rule;
}

std::unique_ptr<SplitRuleImp> ByThreeIntervals() {
  return std::make_unique<OSplitRule>(tree::testing::ThreeWayRule());
}

// The root and three children, of which only those that cases end in have statistics.
std::unique_ptr<NodeImp> ThreeWays(std::unique_ptr<SplitRuleImp> rule, bool mapsMissing) {
  if (mapsMissing) rule->AddMissingValueMapping(false);
  return ANode(1)
      .SplitBy(std::move(rule), ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0),
               ANode(4).Regression(1.0, 3.0))
      .Build();
}

TEST(Flattening, HasNoEndAtANodeWhoseRulesPlaceEveryCase) {
  struct Case {
    char const* name;
    std::unique_ptr<SplitRuleImp> (*makeRule)();
    bool mapsMissing;
    std::uint32_t numEnds;
  };
  constexpr Case kCases[] = {
      {"codes", [] { return ByCodes(3, 3); }, true, 3},
      {"codes, missing values left over", [] { return ByCodes(3, 3); }, false, 4},
      {"many codes", [] { return ByCodes(100, 3); }, true, 3},
      {"cut points", &ByThreeIntervals, true, 3},
      {"cut points, missing values left over", &ByThreeIntervals, false, 4},
      {"cut points, all above them left over",
       [] {
         auto rule = ByThreeIntervals();
         rule->ReorderMappings({0, 1, -1});
         return rule;
       },
       true, 4},
  };
  for (Case const& each : kCases) {
    SCOPED_TRACE(each.name);
    auto const root = ThreeWays(each.makeRule(), each.mapsMissing);

    BlockHeader const header = FlatTree(Flatten(*root)).GetHeader();

    EXPECT_EQ(header.numEnds, each.numEnds);
    EXPECT_EQ(header.hasPredictions, each.numEnds == 3 ? 1U : 0U);
  }
}

TEST(Flattening, HasNoEndAtANodeWhoseSurrogatesPlaceEveryCase) {
  auto surrogate = ByCodes(3, 3);
  surrogate->AddMissingValueMapping(false);
  auto const root = ANode(1)
                        .SplitBy(ByThreeIntervals(), ANode(2).Regression(1.0, 1.0),
                                 ANode(3).Regression(1.0, 2.0), ANode(4).Regression(1.0, 3.0))
                        .Surrogate(std::move(surrogate))
                        .Build();

  EXPECT_EQ(FlatTree(Flatten(*root)).GetHeader().numEnds, 3U);
}

TEST(Flattening, LeavesOutSurrogatesThatAreNeverAsked) {
  auto rule = CutAt(0, 1.0);
  rule->AddMissingValueMapping(false);
  auto const root =
      ANode(1)
          .SplitBy(std::move(rule), ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0))
          .SurrogateAt(7, 1.0)
          .Build();

  BlockMemory block = Flatten(*root);

  EXPECT_EQ(block.GetSize(), sizeof(BlockHeader) + 3 * 16);
  EXPECT_EQ(FlatTree(std::move(block)).GetHeader().numPredictors, 1U);
}

TEST(Flattening, HoldsFewCodesInTheNode) {
  auto rule = std::make_unique<NSplitRule>(0, 64);
  rule->SetCatMapping(63, 0);
  rule->SetCatMapping(5, 1);
  auto const root =
      ANode(1)
          .SplitBy(std::move(rule), ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0))
          .Dumb(0)
          .Build();

  EXPECT_EQ(Flatten(*root).GetSize(), sizeof(BlockHeader) + 3 * 16);
}

TEST(Flattening, HoldsFewerCodesInANodeWithSurrogates) {
  struct Case {
    char const* name;
    int highestCode;
    int surrogatesHighestCode;
    std::size_t numSlots;
  };
  // A table takes two slots and one for each four codes.
  constexpr Case kCases[] = {
      {"few of both", 31, 31, 4},
      {"too many of the rule", 32, 31, 3 + (2 + 9) + (2 + 8)},
      {"too many of the surrogate", 31, 32, 3 + (2 + 8) + (2 + 9)},
  };
  for (Case const& each : kCases) {
    SCOPED_TRACE(each.name);
    auto rule = std::make_unique<NSplitRule>(0, 64);
    rule->SetCatMapping(each.highestCode, 1);
    auto surrogate = std::make_unique<NSplitRule>(1, 64);
    surrogate->SetCatMapping(each.surrogatesHighestCode, 1);
    auto const root =
        ANode(1)
            .SplitBy(std::move(rule), ANode(2).Regression(1.0, 1.0), ANode(3).Regression(1.0, 2.0))
            .Surrogate(std::move(surrogate))
            .Dumb(0)
            .Build();

    EXPECT_EQ(Flatten(*root).GetSize(), sizeof(BlockHeader) + each.numSlots * 16);
  }
}

TEST(Flattening, CountsWhatItHolds) {
  auto const root = ANode(1)
                        .SplitAt(4, 1.0, ANode(2).Classes({1.0, 3.0}, 1),
                                 ANode(3).SplitAt(1, 2.0, ANode(4).Classes({1.0, 1.0}),
                                                  ANode(5).Classes({2.0, 1.0})))
                        .Dumb(1)
                        .Classes({4.0, 5.0})
                        .Build();
  root->GetChildImp(1)->SetClsInfo(new ClsInfoImp, TrainingSample);
  root->GetChildImp(1)->GetClsInfoImp(TrainingSample)->SetNumClasses(2);

  FlatTree const tree(Flatten(*root));

  BlockHeader const& header = tree.GetHeader();
  EXPECT_EQ(header.numNodes, 5U);
  EXPECT_EQ(header.numEnds, 4U);  // three terminal nodes, and one where cases can stay
  EXPECT_EQ(header.numPredictors, 5U);
  EXPECT_EQ(header.numClasses, 2U);
  EXPECT_EQ(header.depth, 2U);
  EXPECT_EQ(header.hasPredictions, 1U);
}

TEST(Flattening, RefusesATreeThatItCannotFollow) {
  struct Case {
    char const* name;
    std::unique_ptr<NodeImp> root;
    char const* reason;
  };
  auto const twoNodes = [] {
    auto node = ANode(7).Over(ANode(8), ANode(9)).Build();
    node->SetNumCompetitors(1);
    return node;
  };
  std::vector<Case> cases;
  cases.push_back(
      {"no rule", ANode(7).Over(ANode(8)).Build(), "node 7: it has children and no split rule"});
  cases.push_back({"a rule that is not set", twoNodes(), "node 7: a split rule is not there"});
  cases.push_back({"a surrogate that is not set",
                   ANode(7).SplitAt(0, 1.0, ANode(8), ANode(9)).Surrogate(nullptr).Build(),
                   "node 7: a split rule is not there"});
  cases.push_back({"a rule of another class",
                   ANode(7).SplitBy(std::make_unique<ProbeRule>(0), ANode(8), ANode(9)).Build(),
                   "node 7: a split rule is of a class that is not known"});
  cases.push_back({"a surrogate of another class",
                   ANode(7)
                       .SplitAt(0, 1.0, ANode(8), ANode(9))
                       .Surrogate(std::make_unique<ProbeRule>(0))
                       .Build(),
                   "node 7: a split rule is of a class that is not known"});
  cases.push_back({"a child beyond the last one", ANode(7).SplitAt(0, 1.0, ANode(8)).Build(),
                   "node 7: a split rule names a child beyond the last one"});
  cases.push_back(
      {"a surrogate's child beyond the last one",
       ANode(6)
           .SplitAt(
               0, 1.0, ANode(1),
               ANode(7).SplitBy(std::make_unique<NSplitRule>(0, 1), ANode(8)).SurrogateAt(0, 1.0))
           .Build(),
       "node 7: a split rule names a child beyond the last one"});
  cases.push_back({"a dumb rule beyond the last child",
                   ANode(7).SplitAt(0, 1.0, ANode(8), ANode(9)).Dumb(2).Build(),
                   "node 7: its dumb rule names a child beyond the last one"});
  cases.push_back({"a predictor that is too far",
                   ANode(7).SplitAt(1 << 22, 1.0, ANode(8), ANode(9)).Build(),
                   "node 7: a predictor index is above 4194303"});
  cases.push_back({"a child that is not set", twoNodes(), "node 7: a child is not there"});
  cases.back().root->SetCompetitor(0, CutAt(0, 1.0).release());
  delete cases.back().root->GetChildImp(1);
  cases.back().root->SetChild(1, nullptr);
  class Derived : public NodeImp {};
  cases.push_back({"a node of another class", twoNodes(),
                   "node 5: it is of a class that is not "
                   "known"});
  cases.back().root->SetCompetitor(0, CutAt(0, 1.0).release());
  delete cases.back().root->GetChildImp(1);
  cases.back().root->SetChild(1, new Derived);
  cases.back().root->GetChildImp(1)->SetId(5);

  for (Case const& each : cases) {
    SCOPED_TRACE(each.name);

    EXPECT_EQ(FlattenToError(*each.root), each.reason);
  }
}

TEST(Flattening, FollowsAChainOfAMillionNodes) {
  constexpr unsigned int kLength = 1'000'000;
  auto const root = std::make_unique<NodeImp>();
  NodeImp* node = root.get();
  for (unsigned int id = 1; id <= kLength; ++id) {
    node->SetNumChildren(2);
    node->SetChild(0, new NodeImp);
    node->SetChild(1, new NodeImp);
    node->SetNumCompetitors(1);
    node->SetCompetitor(0, CutAt(0, static_cast<double>(id)).release());
    node->GetChildImp(0)->SetId(id);
    node = node->GetChildImp(1);
  }
  double const values[] = {1.0, kLength / 2 + 0.5, kLength + 1.0};
  std::uint32_t ids[3] = {};

  bool const ran = tree::testing::RunOnSmallStack([&] {
    Scorer const scorer = Scorer::FromTree(*root);
    Answers answers;
    answers.ids = ids;
    scorer.Score(Cases::OfRows(values, 3, 1), answers);
  });

  ASSERT_TRUE(ran);
  EXPECT_EQ(ids[0], 1U);
  EXPECT_EQ(ids[1], kLength / 2 + 1);
  EXPECT_EQ(ids[2], 0U);  // the last one has no identifier of its own
}

}  // namespace
}  // namespace tree::score
