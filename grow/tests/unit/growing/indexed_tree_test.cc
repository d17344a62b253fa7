#include "growing/indexed_tree.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample.h"
#include "testing/tree_builder.h"

namespace tree::grow {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tree::testing::ANode;

/// By predictor 0: node 1 up to 1, node 2 above; node 2 by predictor 1: node 5 up to 10, node 7
/// above.
std::unique_ptr<NodeImp> FiveNodes() {
  return ANode(0)
      .SplitAt(0, 1.0, ANode(1), ANode(2).SplitAt(1, 10.0, ANode(5), ANode(7)).Dumb(1))
      .Dumb(0)
      .Build();
}

std::vector<std::uint32_t> CasesOf(RoutedCases const& routed, std::size_t position) {
  auto const cases = routed.CasesOf(position);
  return {cases.begin(), cases.end()};
}

TEST(IndexedTree, NumbersNodesInPrefixOrder) {
  auto const root =
      ANode(0)
          .Over(ANode(1).Over(ANode(2), ANode(3), ANode(4)), ANode(5), ANode(6).Over(ANode(7)))
          .Build();

  IndexedTree const tree(*root);

  ASSERT_EQ(tree.GetNumNodes(), 8U);
  std::vector<std::size_t> ends;
  std::vector<std::size_t> parents;
  for (std::size_t position = 0; position < 8; ++position) {
    EXPECT_EQ(tree.GetNode(position).GetId(), position);
    ends.push_back(tree.EndOf(position));
    parents.push_back(tree.ParentOf(position));
  }
  EXPECT_THAT(ends, ElementsAre(8, 5, 3, 4, 5, 6, 8, 8));
  EXPECT_THAT(parents, ElementsAre(0, 0, 1, 1, 1, 0, 0, 6));
  EXPECT_EQ(tree.ChildOf(0, 0), 1U);
  EXPECT_EQ(tree.ChildOf(0, 2), 6U);
  EXPECT_EQ(tree.ChildOf(1, 2), 4U);
  EXPECT_TRUE(tree.IsTerminal(5));
  EXPECT_FALSE(tree.IsTerminal(6));
}

TEST(IndexedTree, HoldsARootAlone) {
  auto const root = ANode(0).Build();

  IndexedTree const tree(*root);

  EXPECT_EQ(tree.GetNumNodes(), 1U);
  EXPECT_TRUE(tree.IsTerminal(0));
  EXPECT_EQ(tree.Route(nullptr), 0U);
}

TEST(IndexedTree, RoutesCasesAsTheTreeDoes) {
  auto const root = FiveNodes();
  IndexedTree const tree(*root);
  double const missing = systemMissingValue();
  struct {
    char const* name;
    double values[2];
    std::size_t end;
  } const kRows[] = {{"left", {1.0, 50.0}, 1},
                     {"right, left", {1.5, 10.0}, 3},
                     {"right, right", {1.5, 11.0}, 4},
                     {"by the dumb rule", {missing, 0.0}, 1},
                     {"right, by the dumb rule", {2.0, missing}, 4}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);

    EXPECT_EQ(tree.Route(row.values), row.end);
    EXPECT_EQ(&tree.GetNode(row.end), root->DropObservationThroughTree(row.values, nullptr));
  }
}

TEST(IndexedTree, LeavesACaseWhereNothingCanPlaceIt) {
  auto const root = ANode(0).SplitAt(0, 1.0, ANode(1), ANode(2)).Build();
  IndexedTree const tree(*root);
  double const missing = systemMissingValue();

  EXPECT_EQ(tree.Route(&missing), 0U);
}

TEST(IndexedTree, LeavesACaseWhereTheRuleNamesNoChild) {
  auto const root = ANode(0).SplitAt(0, 1.0, ANode(1)).Build();
  IndexedTree const tree(*root);
  double const above = 2.0;

  EXPECT_EQ(tree.Route(&above), 0U);
}

TEST(RoutedCases, AreThoseThatPassThroughANode) {
  auto const root = FiveNodes();
  IndexedTree const tree(*root);
  PreparedSample sample(
      {.target = std::vector<double>(6),
       .predictors = {{{2.0, 0.0, 2.0, 1.0, 2.0, 2.0}}, {{11.0, 5.0, 9.0, 5.0, 10.0, 99.0}}}});

  RoutedCases const routed(tree, sample.GetData(), {0, 1, 2, 3, 4}, sample.GetWorkers());

  EXPECT_THAT(CasesOf(routed, 0), ElementsAre(1, 3, 2, 4, 0));
  EXPECT_THAT(CasesOf(routed, 1), ElementsAre(1, 3));
  EXPECT_THAT(CasesOf(routed, 2), ElementsAre(2, 4, 0));
  EXPECT_THAT(CasesOf(routed, 3), ElementsAre(2, 4));
  EXPECT_THAT(CasesOf(routed, 4), ElementsAre(0));
}

TEST(RoutedCases, MayEndInAnInnerNode) {
  auto rule = std::make_unique<OSplitRule>(kMissing, 0);
  rule->SetCutPoint(1.0);
  auto const root = ANode(0).SplitBy(std::move(rule), ANode(1), ANode(2)).Build();
  IndexedTree const tree(*root);
  PreparedSample sample({.target = {0.0, 1.0}, .predictors = {{{kMissing, kMissing}}}});

  RoutedCases const routed(tree, sample.GetData(), {0, 1}, sample.GetWorkers());

  EXPECT_THAT(CasesOf(routed, 0), ElementsAre(0, 1));
  EXPECT_THAT(CasesOf(routed, 1), IsEmpty());
}

TEST(RoutedCases, CanBeNone) {
  auto const root = FiveNodes();
  IndexedTree const tree(*root);
  PreparedSample sample({.target = {0.0}, .predictors = {{{2.0}}, {{11.0}}}});

  RoutedCases const routed(tree, sample.GetData(), {}, sample.GetWorkers());

  EXPECT_THAT(CasesOf(routed, 0), IsEmpty());
}

TEST(RoutedCases, AreTheSameWithSeveralThreads) {
  auto const root = FiveNodes();
  IndexedTree const tree(*root);
  Sample cases{.target = std::vector<double>(30000), .predictors = {{}, {}}};
  for (std::size_t index = 0; index < 30000; ++index) {
    cases.predictors[0].values.push_back(static_cast<double>(index % 3));
    cases.predictors[1].values.push_back(static_cast<double>(index % 17));
  }
  PreparedSample one(cases);
  PreparedSample four(cases, Form::kAsItComes, 4);

  RoutedCases const byOne(tree, one.GetData(), AllCases(one.GetData()), one.GetWorkers());
  RoutedCases const byFour(tree, four.GetData(), AllCases(four.GetData()), four.GetWorkers());

  for (std::size_t position = 0; position < tree.GetNumNodes(); ++position) {
    EXPECT_EQ(CasesOf(byOne, position), CasesOf(byFour, position));
  }
}

TEST(AllCases, AreAllInOrder) {
  PreparedSample const sample({.target = {0.0, 1.0, 0.0}});

  EXPECT_THAT(AllCases(sample.GetData()), ElementsAre(0, 1, 2));
}

}  // namespace
}  // namespace tree::grow
