#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "testing/sample_trees.h"
#include "testing/tree_builder.h"
#include "tree/nodes.h"

// Nodes in a tree ask each other's neighbours in turn and never come to an end unless something
// differs on the way. So these tests compare nodes that stand alone, or differ before they ask.

namespace tree {
namespace {

using testing::ANode;
using testing::NominalRule;

// A node that stands alone and holds everything else.
testing::NodeBuilder ALoneNode() {
  return ANode(3)
      .SplitAt(0, 5.0)
      .Competitor(NominalRule(1))
      .SurrogateAt(2, 6.0)
      .Surrogate(NominalRule(3))
      .Predictor(1.0, 2.0, {1.0, 2.0})
      .Predictor(3.0, 4.0);
}

std::unique_ptr<NodeImp> LoneClassificationNode() {
  return ALoneNode().Classes({1.0, 2.0}, 1).Classes({3.0, 4.0}, 0, TestSample).Build();
}

std::unique_ptr<NodeImp> LoneRegressionNode() {
  return ALoneNode().Regression(10.0, 2.0).Regression(20.0, 3.0, TestSample).Build();
}

TEST(NodeImpEquality, FindsNodesWithEqualPartsEqual) {
  EXPECT_TRUE(NodeImp() == NodeImp());
  EXPECT_TRUE(*LoneClassificationNode() == *LoneClassificationNode());
  EXPECT_TRUE(*LoneRegressionNode() == *LoneRegressionNode());

  std::unique_ptr<NodeImp> const node = LoneClassificationNode();
  EXPECT_TRUE(*node == *node);
}

TEST(NodeImpEquality, FindsCopyEqualToItsSource) {
  std::unique_ptr<NodeImp> const sources[] = {LoneClassificationNode(), LoneRegressionNode()};
  for (std::unique_ptr<NodeImp> const& source : sources) {
    std::unique_ptr<NodeImp> const clone(source->Clone());

    EXPECT_TRUE(*clone == *source);
    EXPECT_TRUE(*source == *clone);
  }
}

TEST(NodeImpEquality, NoticesDifferenceInEveryPart) {
  struct Row {
    char const* name;
    void (*change)(NodeImp&);
  };
  auto const setId = [](NodeImp& node) { node.SetId(4); };
  auto const setFlag = [](NodeImp& node) {
    node.SetClassificationNode(!node.IsClassificationNode());
  };
  Row const rows[] = {
      {"number of competitors",
       [](NodeImp& node) {
         std::unique_ptr<SplitRuleImp> const rules[] = {
             std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(0)),
             std::unique_ptr<SplitRuleImp>(node.GetCompetitorImp(1))};
         node.SetNumCompetitors(1);
         node.SetCompetitor(0, rules[0]->Clone());
       }},
      {"primary rule", [](NodeImp& node) { node.GetCompetitorImp(0)->SetDumbRule(1, 1.0); }},
      {"last competitor", [](NodeImp& node) { node.GetCompetitorImp(1)->SetDumbRule(1, 1.0); }},
      {"competitor taken out", [](NodeImp& node) { node.SetCompetitor(1, nullptr); }},
      {"number of surrogates",
       [](NodeImp& node) {
         std::unique_ptr<SplitRuleImp> const rules[] = {
             std::unique_ptr<SplitRuleImp>(node.GetSurrogateImp(0)),
             std::unique_ptr<SplitRuleImp>(node.GetSurrogateImp(1))};
         node.SetNumSurrogates(1);
         node.SetSurrogate(0, rules[0]->Clone());
       }},
      {"first surrogate", [](NodeImp& node) { node.GetSurrogateImp(0)->SetDumbRule(1, 1.0); }},
      {"last surrogate", [](NodeImp& node) { node.GetSurrogateImp(1)->SetDumbRule(1, 1.0); }},
      {"id", setId},
      {"classification flag", setFlag},
      {"number of predictors", [](NodeImp& node) { node.SetNumPredictors(3); }},
      {"first predictor", [](NodeImp& node) { node.SetPredictorRange(0, 1.0, 2.5); }},
      {"last predictor", [](NodeImp& node) { node.SetPredictorMissingValueFlag(1, true); }},
  };
  for (auto const make : {LoneClassificationNode, LoneRegressionNode}) {
    for (Row const& row : rows) {
      SCOPED_TRACE(row.name);
      std::unique_ptr<NodeImp> const original = make();
      std::unique_ptr<NodeImp> const changed = make();

      row.change(*changed);

      EXPECT_FALSE(*changed == *original);
      EXPECT_FALSE(*original == *changed);
    }
  }
}

TEST(NodeImpEquality, NoticesDifferenceInStatisticsOfEitherSample) {
  for (DataSample const sample : {TrainingSample, TestSample}) {
    SCOPED_TRACE(static_cast<int>(sample));
    std::unique_ptr<NodeImp> const classes = LoneClassificationNode();
    std::unique_ptr<NodeImp> const regression = LoneRegressionNode();

    classes->GetClsInfoImp(sample)->SetPercentSize(12.0);
    regression->GetRegInfoImp(sample)->SetMean(12.0);

    EXPECT_FALSE(*classes == *LoneClassificationNode());
    EXPECT_FALSE(*LoneClassificationNode() == *classes);
    EXPECT_FALSE(*regression == *LoneRegressionNode());
    EXPECT_FALSE(*LoneRegressionNode() == *regression);
  }
}

TEST(NodeImpEquality, ComparesRulesByTheirCommonPartOnly) {
  std::unique_ptr<NodeImp> const ordinal = ANode(0).SplitAt(0, 5.0).SurrogateAt(1, 6.0).Build();
  std::unique_ptr<NodeImp> const elsewhere = ANode(0).SplitAt(0, 55.0).SurrogateAt(1, 66.0).Build();
  std::unique_ptr<NodeImp> const nominal = ANode(0)
                                               .SplitBy(std::make_unique<NSplitRule>(0, 3))
                                               .Surrogate(std::make_unique<NSplitRule>(1, 4))
                                               .Build();

  EXPECT_TRUE(*ordinal == *elsewhere);
  EXPECT_TRUE(*ordinal == *nominal);
}

TEST(NodeImpEquality, DoesNotLookAtStatisticsThatItLacksItself) {
  for (DataSample const sample : {TrainingSample, TestSample}) {
    SCOPED_TRACE(static_cast<int>(sample));
    std::unique_ptr<NodeImp> const none = ANode(0).Build();
    std::unique_ptr<NodeImp> const classes = ANode(0).Classes({1.0, 2.0}, 1, sample).Build();
    std::unique_ptr<NodeImp> const noRegression = ANode(0).Build();
    noRegression->SetClassificationNode(false);
    std::unique_ptr<NodeImp> const regression = ANode(0).Regression(1.0, 2.0, sample).Build();

    EXPECT_TRUE(*none == *classes);
    EXPECT_FALSE(*classes == *none);
    EXPECT_TRUE(*noRegression == *regression);
    EXPECT_FALSE(*regression == *noRegression);
  }
}

TEST(NodeImpEquality, LooksOnlyAtTheSamplesThatItHolds) {
  std::unique_ptr<NodeImp> const one = ANode(0).Classes({1.0}).Build();
  std::unique_ptr<NodeImp> const both =
      ANode(0).Classes({1.0}).Classes({9.0}, 0, TestSample).Build();

  EXPECT_TRUE(*one == *both);
  EXPECT_FALSE(*both == *one);
}

TEST(NodeImpEquality, IsNeverTrueOfStatisticsWithNaN) {
  std::unique_ptr<NodeImp> const node = LoneClassificationNode();

  node->GetClsInfoImp(TrainingSample)->SetUnweightedCount(std::numeric_limits<double>::quiet_NaN());

  EXPECT_FALSE(*node == *node);
}

TEST(NodeImpEquality, NoticesAnotherNumberOfChildren) {
  std::unique_ptr<NodeImp> const none = ANode(0).Build();
  std::unique_ptr<NodeImp> const one = ANode(0).Over(ANode(1)).Build();
  std::unique_ptr<NodeImp> const two = ANode(0).Over(ANode(1), ANode(2)).Build();

  EXPECT_FALSE(*none == *one);
  EXPECT_FALSE(*one == *none);
  EXPECT_FALSE(*one == *two);
}

TEST(NodeImpEquality, ComparesChildrenBeforeAnythingElse) {
  // The grandchildren's numbers differ. That is found before parents are asked, or ids.
  std::unique_ptr<NodeImp> const a = ANode(0).Over(ANode(1).Over(ANode(2))).Build();
  std::unique_ptr<NodeImp> const b = ANode(0).Over(ANode(1)).Build();

  EXPECT_FALSE(*a == *b);
  EXPECT_FALSE(*b == *a);
}

TEST(NodeImpEquality, ComparesParents) {
  // Two leaves that hold the same, below parents with different numbers of children.
  std::unique_ptr<NodeImp> const one = ANode(0).Over(ANode(1)).Build();
  std::unique_ptr<NodeImp> const two = ANode(0).Over(ANode(1), ANode(2)).Build();

  EXPECT_FALSE(*one->GetChildImp(0) == *two->GetChildImp(0));
  EXPECT_FALSE(*two->GetChildImp(0) == *one->GetChildImp(0));
}

TEST(NodeImpEquality, ComparesParentsOnlyIfItHasOne) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1)).Build();
  std::unique_ptr<NodeImp> const lone = ANode(1).Build();

  EXPECT_TRUE(*lone == *root->GetChildImp(0));
  EXPECT_FALSE(*root->GetChildImp(0) == *lone);
}

TEST(NodeImpEquality, ComparesPositionsWithoutRule) {
  NodeImp a;
  NodeImp b;
  a.SetNumCompetitors(1);
  b.SetNumCompetitors(1);
  a.SetNumSurrogates(2);
  b.SetNumSurrogates(2);

  EXPECT_TRUE(a == b);

  b.SetSurrogate(1, NominalRule(0).release());

  EXPECT_FALSE(a == b);
  EXPECT_FALSE(b == a);
}

}  // namespace
}  // namespace tree
