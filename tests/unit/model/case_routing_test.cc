#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {
namespace {

using testing::ANode;
using ::testing::ElementsAre;
using testing::RichClassificationTree;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A rule that answers what it is told to, one answer after the other, the last one for ever, and
// keeps the values that it was asked about.
class ScriptedRule : public OSplitRule {
 public:
  ScriptedRule(int predictorIndex, std::vector<int> answers, std::vector<double>* asked = nullptr)
      : OSplitRule(systemMissingValue(), predictorIndex),
        answers_(std::move(answers)),
        asked_(asked) {}

  int Classify(double value) const override {
    if (asked_ != nullptr) asked_->push_back(value);
    std::size_t const answer = std::min(next_++, answers_.size() - 1);
    return answers_[answer];
  }

 private:
  std::vector<int> answers_;
  std::vector<double>* asked_;
  mutable std::size_t next_ = 0;
};

std::unique_ptr<SplitRuleImp> Answering(int predictor, std::vector<int> answers,
                                        std::vector<double>* asked = nullptr) {
  return std::make_unique<ScriptedRule>(predictor, std::move(answers), asked);
}

// A node that chooses its child by itself.
class ChoosingNode : public NodeImp {
 public:
  explicit ChoosingNode(int choice) : choice_(choice) {}
  int Classify(double const*) const override { return choice_; }

 private:
  int choice_;
};

// 0 over 1 and 2 by predictor 0 at 5, 2 over 3 and 4 by predictor 1 at 10.
std::unique_ptr<NodeImp> TwoLevels() {
  return ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2).SplitAt(1, 10.0, ANode(3), ANode(4))).Build();
}

TEST(CaseRouting, ChoosesNoChildAtTerminalNode) {
  double const values[] = {1.0};
  NodeImp const bare;
  std::unique_ptr<NodeImp> const withRules = ANode(0).SplitAt(0, 5.0).SurrogateAt(0, 6.0).Build();

  EXPECT_EQ(bare.Classify(values), -1);
  EXPECT_EQ(bare.Classify(nullptr), -1);
  EXPECT_EQ(withRules->Classify(values), -1);
}

TEST(CaseRouting, ChoosesNoChildOnceChildrenAreRemoved) {
  double const values[] = {1.0};
  std::unique_ptr<NodeImp> const root = ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2)).Build();
  ASSERT_EQ(root->Classify(values), 0);

  root->RemoveChildren(true);

  EXPECT_EQ(root->GetNumCompetitors(), 1);
  EXPECT_EQ(root->Classify(values), -1);
  EXPECT_EQ(root->DropObservationThroughTree(values, nullptr), root.get());
}

TEST(CaseRouting, TakesTheChildThatPrimaryRuleNames) {
  std::unique_ptr<NodeImp> const root = ANode(0).SplitAt(1, 5.0, ANode(1), ANode(2)).Build();

  struct Row {
    char const* name;
    double value;
    int child;
  };
  Row const rows[] = {
      {"below the cut", 4.0, 0},           {"at the cut", 5.0, 0},
      {"above the cut", 5.0001, 1},        {"as low as can be", -kInfinity, 0},
      {"as high as can be", kInfinity, 1}, {"a NaN, which is not missing", kNaN, 1},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    double const values[] = {-100.0, row.value, 100.0};
    EXPECT_EQ(root->Classify(values), row.child);
  }
}

TEST(CaseRouting, AsksNobodyElseOncePrimaryRuleHasAnswered) {
  std::vector<double> askedOfPrimary;
  std::vector<double> askedOfOthers;
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitBy(Answering(2, {0}, &askedOfPrimary), ANode(1))
                                            .Competitor(Answering(0, {0}, &askedOfOthers))
                                            .Surrogate(Answering(1, {0}, &askedOfOthers))
                                            .Build();
  double const values[] = {10.0, 11.0, 12.0};

  EXPECT_EQ(root->Classify(values), 0);

  EXPECT_THAT(askedOfPrimary, ElementsAre(12.0));
  EXPECT_THAT(askedOfOthers, ElementsAre());
}

TEST(CaseRouting, AsksSurrogatesInOrderUntilOneAnswers) {
  std::vector<double> asked;
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitBy(Answering(0, {-1}, &asked), ANode(1), ANode(2))
                                            .Surrogate(Answering(3, {-1}, &asked))
                                            .Surrogate(Answering(1, {-7}, &asked))
                                            .Surrogate(Answering(2, {1}, &asked))
                                            .Surrogate(Answering(4, {0}, &asked))
                                            .Dumb(0)
                                            .Build();
  double const values[] = {10.0, 11.0, 12.0, 13.0, 14.0};

  EXPECT_EQ(root->Classify(values), 1);

  // Each was asked about the value of its own predictor.
  EXPECT_THAT(asked, ElementsAre(10.0, 13.0, 11.0, 12.0));
}

TEST(CaseRouting, TakesFirstSurrogateThatCanPlaceTheCase) {
  double const missing = systemMissingValue();
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitAt(0, 5.0, ANode(1), ANode(2))
                                            .SurrogateAt(1, 7.0)
                                            .SurrogateAt(2, 9.0)
                                            .Dumb(0)
                                            .Build();
  struct Row {
    char const* name;
    double values[3];
    int child;
  };
  Row const rows[] = {
      {"primary rule whatever surrogates say", {9.0, 0.0, 0.0}, 1},
      {"first surrogate whatever the second says", {missing, 8.0, 0.0}, 1},
      {"second surrogate when the first lacks its value", {missing, missing, 10.0}, 1},
      {"second surrogate to the other side", {missing, missing, 9.0}, 0},
      {"dumb rule when all lack their values", {missing, missing, missing}, 0},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(root->Classify(row.values), row.child);
  }
}

TEST(CaseRouting, TakesMappingOfMissingValuesBeforeSurrogates) {
  double const missing = systemMissingValue();
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitAt(0, 5.0, ANode(1), ANode(2), ANode(3)).SurrogateAt(1, 7.0).Build();
  double const values[] = {missing, 0.0};
  ASSERT_EQ(root->Classify(values), 0);

  root->GetCompetitorImp(0)->AddMissingValueMapping(true);

  EXPECT_EQ(root->Classify(values), 2);
}

TEST(CaseRouting, CallsMissingWhatTheRuleCallsMissing) {
  auto rule = std::make_unique<OSplitRule>(-9.0, 0);
  rule->SetCutPoint(5.0);
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitBy(std::move(rule), ANode(1), ANode(2)).SurrogateAt(1, 7.0).Build();
  double const missing[] = {-9.0, 100.0};
  double const systemMissing[] = {systemMissingValue(), 100.0};

  EXPECT_EQ(root->Classify(missing), 1);        // by the surrogate
  EXPECT_EQ(root->Classify(systemMissing), 0);  // an ordinary, very low value to this rule
}

TEST(CaseRouting, PassesWhatNominalRuleCannotPlaceToSurrogates) {
  auto rule = std::make_unique<NSplitRule>(0, 2);
  rule->SetCatMapping(0, 0);
  rule->SetCatMapping(1, 1);
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitBy(std::move(rule), ANode(1), ANode(2)).SurrogateAt(1, 7.0).Build();

  for (double const value : {2.0, 0.5, -1.0, kNaN, kInfinity, systemMissingValue()}) {
    double const low[] = {value, 0.0};
    double const high[] = {value, 8.0};
    EXPECT_EQ(root->Classify(low), 0) << value;
    EXPECT_EQ(root->Classify(high), 1) << value;
  }
  double const known[] = {1.0, 0.0};
  EXPECT_EQ(root->Classify(known), 1);
}

TEST(CaseRouting, TakesDumbChildOfPrimaryRuleLast) {
  std::unique_ptr<SplitRuleImp> surrogate = Answering(1, {-1});
  surrogate->SetDumbRule(0, 1.0);
  std::unique_ptr<SplitRuleImp> competitor = Answering(1, {0});
  competitor->SetDumbRule(0, 1.0);
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .SplitBy(Answering(0, {-1}), ANode(1), ANode(2))
                                            .Dumb(1)
                                            .Competitor(std::move(competitor))
                                            .Surrogate(std::move(surrogate))
                                            .Build();
  double const values[] = {1.0, 2.0};

  EXPECT_EQ(root->Classify(values), 1);
}

TEST(CaseRouting, TakesDumbChildWhereThereAreNoSurrogates) {
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitBy(Answering(0, {-1}), ANode(1), ANode(2)).Dumb(1).Build();
  double const value = 1.0;

  EXPECT_EQ(root->Classify(&value), 1);
}

TEST(CaseRouting, PassesOnWhateverRulesAnswer) {
  double const values[] = {1.0, 2.0};
  std::unique_ptr<NodeImp> const byPrimary = ANode(0).SplitBy(Answering(0, {7}), ANode(1)).Build();
  std::unique_ptr<NodeImp> const bySurrogate =
      ANode(0).SplitBy(Answering(0, {-1}), ANode(1)).Surrogate(Answering(1, {8})).Build();
  std::unique_ptr<NodeImp> const byDumbRule =
      ANode(0).SplitBy(Answering(0, {-1}), ANode(1)).Dumb(9).Build();
  std::unique_ptr<NodeImp> const byNothing = ANode(0).SplitBy(Answering(0, {-1}), ANode(1)).Build();
  std::unique_ptr<NodeImp> const byNegativeDumbRule =
      ANode(0).SplitBy(Answering(0, {-3}), ANode(1)).Dumb(-5).Build();

  EXPECT_EQ(byPrimary->Classify(values), 7);
  EXPECT_EQ(bySurrogate->Classify(values), 8);
  EXPECT_EQ(byDumbRule->Classify(values), 9);
  EXPECT_EQ(byNothing->Classify(values), -1);
  EXPECT_EQ(byNegativeDumbRule->Classify(values), -5);
}

TEST(CaseRouting, FindsChildByPosition) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  NodeImp const& constRoot = *root;

  for (int const position : {0, 1}) {
    NodeImp* child = nullptr;
    NodeImp const* constChild = nullptr;

    EXPECT_TRUE(root->Child(position, &child));
    EXPECT_TRUE(constRoot.Child(position, &constChild));

    EXPECT_EQ(child, root->GetChildImp(static_cast<unsigned int>(position)));
    EXPECT_EQ(constChild, child);
  }
}

TEST(CaseRouting, LeavesOutputAloneWhereThereIsNoChild) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1), ANode(2)).Build();
  NodeImp const& constRoot = *root;
  NodeImp leaf;

  for (int const position :
       {-1, 2, 3, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(position);
    NodeImp* child = &leaf;
    NodeImp const* constChild = &leaf;

    EXPECT_FALSE(root->Child(position, &child));
    EXPECT_FALSE(constRoot.Child(position, &constChild));
    EXPECT_FALSE(leaf.Child(0, &child));

    EXPECT_EQ(child, &leaf);
    EXPECT_EQ(constChild, &leaf);
  }
}

TEST(CaseRouting, DropsCaseToItsTerminalNode) {
  std::unique_ptr<NodeImp> const root = TwoLevels();
  struct Row {
    double values[2];
    unsigned int terminal;
  };
  Row const rows[] = {
      {{5.0, 11.0}, 1}, {{5.0, 9.0}, 1}, {{6.0, 10.0}, 3}, {{6.0, 11.0}, 4}, {{kNaN, kNaN}, 4}};
  for (Row const& row : rows) {
    NodeImp const* const end = root->DropObservationThroughTree(row.values, nullptr);

    ASSERT_NE(end, nullptr);
    EXPECT_EQ(end->GetId(), row.terminal);
    EXPECT_EQ(end->GetNumChildren(), 0);
  }
}

TEST(CaseRouting, DropsCaseFromAnyNode) {
  std::unique_ptr<NodeImp> const root = TwoLevels();
  double const values[] = {0.0, 11.0};  // would go to node 1 from the root

  EXPECT_EQ(root->GetChildImp(1)->DropObservationThroughTree(values, nullptr)->GetId(), 4u);
}

TEST(CaseRouting, LeavesCaseAtLoneNode) {
  NodeImp const node;
  NodeImp const other;

  EXPECT_EQ(node.DropObservationThroughTree(nullptr, nullptr), &node);
  EXPECT_EQ(node.DropObservationThroughTree(nullptr, &node), &node);
  EXPECT_EQ(node.DropObservationThroughTree(nullptr, &other), nullptr);
}

TEST(CaseRouting, StopsAtStopNodeOnThePath) {
  std::unique_ptr<NodeImp> const root = TwoLevels();
  double const values[] = {6.0, 11.0};  // by way of nodes 0 and 2 to node 4
  NodeImp const* const inner = root->GetChildImp(1);
  NodeImp const* const terminal = inner->GetChildImp(1);

  EXPECT_EQ(root->DropObservationThroughTree(values, root.get()), root.get());
  EXPECT_EQ(root->DropObservationThroughTree(values, inner), inner);
  EXPECT_EQ(root->DropObservationThroughTree(values, terminal), terminal);
}

TEST(CaseRouting, AsksNoRuleOnceAtStopNode) {
  std::vector<double> asked;
  std::unique_ptr<NodeImp> const root =
      ANode(0).SplitBy(Answering(0, {0}, &asked), ANode(1)).Build();

  EXPECT_EQ(root->DropObservationThroughTree(nullptr, root.get()), root.get());

  EXPECT_THAT(asked, ElementsAre());
}

TEST(CaseRouting, AnswersNullWhenThePathMissesStopNode) {
  std::unique_ptr<NodeImp> const root = TwoLevels();
  double const values[] = {6.0, 11.0};
  NodeImp const elsewhere;
  NodeImp const* const inner = root->GetChildImp(1);

  EXPECT_EQ(root->DropObservationThroughTree(values, root->GetChildImp(0)), nullptr);
  EXPECT_EQ(root->DropObservationThroughTree(values, inner->GetChildImp(0)), nullptr);
  EXPECT_EQ(root->DropObservationThroughTree(values, &elsewhere), nullptr);
  EXPECT_EQ(inner->DropObservationThroughTree(values, root.get()), nullptr);
}

TEST(CaseRouting, LeavesCaseAtNodeThatCannotPlaceIt) {
  std::unique_ptr<NodeImp> const root = TwoLevels();
  double const missing = systemMissingValue();
  double const nothing[] = {missing, missing};
  double const onlyFirst[] = {6.0, missing};
  NodeImp const* const inner = root->GetChildImp(1);

  EXPECT_EQ(root->DropObservationThroughTree(nothing, nullptr), root.get());
  EXPECT_EQ(root->DropObservationThroughTree(nothing, inner), nullptr);
  EXPECT_EQ(root->DropObservationThroughTree(onlyFirst, nullptr), inner);
  EXPECT_EQ(root->DropObservationThroughTree(onlyFirst, inner), inner);
  EXPECT_EQ(root->DropObservationThroughTree(onlyFirst, inner->GetChildImp(0)), nullptr);
}

TEST(CaseRouting, UsesSurrogatesAndDumbRulesOnEveryLevel) {
  std::unique_ptr<NodeImp> const root =
      ANode(0)
          .SplitAt(0, 5.0, ANode(1),
                   ANode(2).SplitAt(1, 10.0, ANode(3), ANode(4)).Dumb(0).SurrogateAt(0, 100.0))
          .SurrogateAt(2, 1.0)
          .Dumb(1)
          .Build();
  double const missing = systemMissingValue();
  double const bySurrogate[] = {missing, missing, 0.0};
  double const byDumbRules[] = {missing, missing, missing};
  double const bySecondSurrogate[] = {101.0, missing, missing};

  EXPECT_EQ(root->DropObservationThroughTree(bySurrogate, nullptr)->GetId(), 1u);
  EXPECT_EQ(root->DropObservationThroughTree(byDumbRules, nullptr)->GetId(), 3u);
  EXPECT_EQ(root->DropObservationThroughTree(bySecondSurrogate, nullptr)->GetId(), 4u);
}

TEST(CaseRouting, TriesTheSameNodeAgainForPositionBeyondItsChildren) {
  std::vector<double> asked;
  std::unique_ptr<NodeImp> const root =
      ANode(0)
          .SplitBy(Answering(0, {2, 7, std::numeric_limits<int>::max(), 1}, &asked), ANode(1),
                   ANode(2))
          .Build();
  double const value = 3.5;

  NodeImp const* const end = root->DropObservationThroughTree(&value, nullptr);

  EXPECT_EQ(end, root->GetChildImp(1));
  EXPECT_THAT(asked, ElementsAre(3.5, 3.5, 3.5, 3.5));
}

TEST(CaseRouting, EndsAtTheSameNodeOnceItCannotPlaceTheCase) {
  std::unique_ptr<NodeImp> const roots[] = {
      ANode(0).SplitBy(Answering(0, {5, -1}), ANode(1)).Build(),
      ANode(0).SplitBy(Answering(0, {5, -1}), ANode(1)).Build()};
  double const value = 0.0;

  EXPECT_EQ(roots[0]->DropObservationThroughTree(&value, nullptr), roots[0].get());
  EXPECT_EQ(roots[1]->DropObservationThroughTree(&value, roots[1]->GetChildImp(0)), nullptr);
}

TEST(CaseRouting, LetsEachNodeChooseByItsVirtualOperation) {
  ChoosingNode root(1);
  root.SetNumChildren(2);
  root.SetChild(0, ANode(1).Build().release());
  auto* const inner = new ChoosingNode(0);
  root.SetChild(1, inner);
  inner->SetNumChildren(1);
  inner->SetChild(0, ANode(3).Build().release());

  EXPECT_EQ(root.DropObservationThroughTree(nullptr, nullptr), inner->GetChildImp(0));
}

TEST(CaseRouting, AsksTheVirtualOperationWhetherANodeIsTerminal) {
  class Closed : public NodeImp {
   public:
    explicit Closed(int numChildren) : numChildren_(numChildren) {}
    int GetNumChildren() const override { return numChildren_; }

   private:
    int numChildren_;
  };
  for (int const numChildren : {0, -3}) {
    SCOPED_TRACE(numChildren);
    Closed node(numChildren);
    node.SetNumChildren(2);
    node.SetChild(0, new NodeImp);
    node.SetChild(1, new NodeImp);
    auto rule = std::make_unique<OSplitRule>(systemMissingValue(), 0);
    rule->SetCutPoint(0.5);
    node.SetNumCompetitors(1);
    node.SetCompetitor(0, rule.release());
    double const values[] = {0.0};

    EXPECT_EQ(node.Classify(values), -1);
    EXPECT_EQ(node.DropObservationThroughTree(values, nullptr), &node);
  }
}

TEST(CaseRouting, EndsAtNodeThatChoosesNoChild) {
  ChoosingNode root(-2);
  root.SetNumChildren(1);
  root.SetChild(0, new NodeImp);

  EXPECT_EQ(root.DropObservationThroughTree(nullptr, nullptr), &root);
  EXPECT_EQ(root.DropObservationThroughTree(nullptr, root.GetChildImp(0)), nullptr);
}

TEST(CaseRouting, CallsDumbChildOfPrimaryRuleTheBiggest) {
  std::unique_ptr<NodeImp> const root =
      ANode(0)
          .SplitAt(0, 5.0, ANode(1).Classes({100.0}), ANode(2).Classes({1.0}))
          .CompetitorAt(1, 5.0)
          .Build();
  root->GetCompetitorImp(1)->SetDumbRule(0, 1.0);
  EXPECT_EQ(root->GetBiggestChildPos(), -1);

  for (int const position : {1, 0, 77, -4}) {
    root->GetCompetitorImp(0)->SetDumbRule(position, 0.5);

    EXPECT_EQ(root->GetBiggestChildPos(), position);
  }
}

TEST(CaseRouting, KnowsBiggestChildWithoutChildren) {
  std::unique_ptr<NodeImp> const node = ANode(0).SplitAt(0, 5.0).Dumb(1).Build();

  EXPECT_EQ(node->GetBiggestChildPos(), 1);
}

TEST(CaseRouting, KnowsNoBiggestChildWithoutPrimaryRule) {
  std::unique_ptr<NodeImp> const noRules =
      ANode(0).Over(ANode(1).Classes({9.0}), ANode(2)).SurrogateAt(0, 1.0).Build();
  NodeImp emptyPosition;
  emptyPosition.SetNumCompetitors(1);

  EXPECT_EQ(noRules->GetBiggestChildPos(), -1);
  EXPECT_EQ(emptyPosition.GetBiggestChildPos(), -1);
}

TEST(CaseRouting, FindsFirstCompetitorOfPredictor) {
  std::unique_ptr<NodeImp> const node = ANode(0)
                                            .SplitAt(4, 1.0)
                                            .CompetitorAt(7, 1.0)
                                            .CompetitorAt(2, 1.0)
                                            .CompetitorAt(7, 2.0)
                                            .CompetitorAt(4, 2.0)
                                            .SurrogateAt(9, 1.0)
                                            .Build();
  struct Row {
    char const* name;
    int predictor;
    int position;
  };
  Row const rows[] = {
      {"primary split", 4, 0},
      {"first of two competitors", 7, 1},
      {"competitor behind others", 2, 2},
      {"surrogate only", 9, -1},
      {"no rule", 0, -1},
      {"negative", -1, -1},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(node->FindCompetitorPos(row.predictor), row.position);
  }
  EXPECT_EQ(NodeImp().FindCompetitorPos(0), -1);
}

TEST(CaseRouting, PassesOverPositionsWithoutCompetitor) {
  NodeImp node;
  node.SetNumCompetitors(3);
  node.SetCompetitor(1, testing::NominalRule(5).release());

  EXPECT_EQ(node.FindCompetitorPos(5), 1);
  EXPECT_EQ(node.FindCompetitorPos(0), -1);
}

TEST(CaseRouting, RoutesAlikeInCopy) {
  std::unique_ptr<NodeImp> const root = RichClassificationTree();
  std::unique_ptr<NodeImp> const copy(root->Clone());
  double const missing = systemMissingValue();

  for (double const first : {20.0, 50.0, missing}) {
    for (double const second : {1.6, 1.74, 1.9, missing}) {
      for (double const third : {0.0, 1.0, 4.0, missing}) {
        double const values[] = {first, second, third, 0.0};
        EXPECT_EQ(copy->DropObservationThroughTree(values, nullptr)->GetId(),
                  root->DropObservationThroughTree(values, nullptr)->GetId());
      }
    }
  }
}

#ifndef NDEBUG
TEST(CaseRoutingDeathTest, StopsAtNodeWithChildrenButNoPrimaryRule) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1)).Build();
  double const value = 0.0;

  EXPECT_DEATH(static_cast<void>(root->Classify(&value)),
               "NodeImp::Classify: .*needs a primary split rule");
}
#endif

}  // namespace
}  // namespace tree
