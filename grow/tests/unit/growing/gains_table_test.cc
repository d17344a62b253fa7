#include "growing/gains_table.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "testing/tree_builder.h"
#include "tree/grow/gains_columns.h"
#include "tree/nodes.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree::grow {
namespace {

using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using tree::testing::ANode;

constexpr int kAllColumns[] = {GainsCases,    GainsCasesPercent, GainsTarget, GainsTargetPercent,
                               GainsResponse, GainsProfit,       GainsIndex,  GainsAverage};
constexpr PercentileIncrement kAllIncrements[] = {PercentileIncrement1,  PercentileIncrement2,
                                                  PercentileIncrement5,  PercentileIncrement10,
                                                  PercentileIncrement20, PercentileIncrement25};

auto Near(double value) { return DoubleNear(value, 1e-9); }

/// Classes 0 and 1. Response of class 1, training: node 1 25%, node 3 75%, node 4 50%, all 45%;
/// test: node 1 80%, node 3 50%, node 4 20%, all 38%.
std::unique_ptr<NodeImp> ClassTree() {
  return ANode(0)
      .Classes({55.0, 45.0})
      .Classes({31.0, 19.0}, 0, TestSample)
      .Over(ANode(1).Classes({30.0, 10.0}).Classes({2.0, 8.0}, 0, TestSample),
            ANode(2)
                .Classes({25.0, 35.0})
                .Classes({29.0, 11.0}, 0, TestSample)
                .Over(ANode(3).Classes({5.0, 15.0}).Classes({5.0, 5.0}, 0, TestSample),
                      ANode(4).Classes({20.0, 20.0}).Classes({24.0, 6.0}, 0, TestSample)))
      .Build();
}

/// Averages, training: node 1 2, node 3 6, node 4 4, all 4.8; test: 5, 1, 3, all 3.5.
std::unique_ptr<NodeImp> NumberTree() {
  return ANode(0)
      .Regression(50.0, 4.8)
      .Regression(8.0, 3.5, TestSample)
      .Over(ANode(1).Regression(10.0, 2.0).Regression(4.0, 5.0, TestSample),
            ANode(2)
                .Regression(40.0, 5.5)
                .Regression(4.0, 2.0, TestSample)
                .Over(ANode(3).Regression(30.0, 6.0).Regression(2.0, 1.0, TestSample),
                      ANode(4).Regression(10.0, 4.0).Regression(2.0, 3.0, TestSample)))
      .Build();
}

GainsSettings TargetOf(int category) {
  GainsSettings settings;
  settings.SetTargetCategory(category);
  return settings;
}

/// Averages of profit: class 0 loses 1 per case, class 1 wins 3.
GainsSettings ProfitSettings() {
  GainsSettings settings;
  settings.SetCategoryProfit(0, -1.0);
  settings.SetCategoryProfit(1, 3.0);
  return settings;
}

GainsSettings Percentiles(GainsSettings settings, int step) {
  settings.SetHasPercentileStatistics(true);
  settings.SetPercentileIncrement(static_cast<PercentileIncrement>(step));
  return settings;
}

GainsSettings Cumulative(GainsSettings settings) {
  settings.SetHasCumulativeStatistics(true);
  return settings;
}

std::vector<unsigned int> NodesOf(GainsIntf const& table, int row) {
  std::vector<unsigned int> ids;
  ids.reserve(static_cast<std::size_t>(table.GetNumNodes(row)));
  for (int position = 0; position < table.GetNumNodes(row); ++position) {
    ids.push_back(table.GetNode(row, position)->GetId());
  }
  return ids;
}

/// The last node of each row: with a row per node, the order of the rows.
std::vector<unsigned int> OrderOf(GainsIntf const& table) {
  std::vector<unsigned int> ids;
  ids.reserve(static_cast<std::size_t>(table.GetNumRows()));
  for (int row = 0; row < table.GetNumRows(); ++row) ids.push_back(NodesOf(table, row).back());
  return ids;
}

std::vector<double> ColumnOf(GainsIntf const& table, int column) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(table.GetNumRows()));
  for (int row = 0; row < table.GetNumRows(); ++row) values.push_back(table.GetValue(row, column));
  return values;
}

std::vector<int> ColumnsIn(GainsIntf const& table) {
  std::vector<int> columns;
  for (int const column : kAllColumns) {
    if (table.HasColumn(column)) columns.push_back(column);
  }
  return columns;
}

TEST(GainsTable, ShowsGainsOfATargetCategoryWithTheBestNodeFirst) {
  auto const root = ClassTree();

  auto const table = MakeGainsTable(*root, TargetOf(1));

  ASSERT_NE(table, nullptr);
  EXPECT_THAT(OrderOf(*table), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(20.0, 40.0, 40.0));
  EXPECT_THAT(ColumnOf(*table, GainsCasesPercent), ElementsAre(20.0, 40.0, 40.0));
  EXPECT_THAT(ColumnOf(*table, GainsTarget), ElementsAre(15.0, 20.0, 10.0));
  EXPECT_THAT(ColumnOf(*table, GainsTargetPercent),
              ElementsAre(Near(100.0 / 3.0), Near(400.0 / 9.0), Near(200.0 / 9.0)));
  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(75.0, 50.0, 25.0));
  EXPECT_THAT(ColumnOf(*table, GainsIndex),
              ElementsAre(Near(500.0 / 3.0), Near(1000.0 / 9.0), Near(500.0 / 9.0)));
}

TEST(GainsTable, ShowsGainsOfTheCategoryThatTheSettingsName) {
  auto const root = ClassTree();

  auto const table = MakeGainsTable(*root, TargetOf(0));

  EXPECT_THAT(OrderOf(*table), ElementsAre(1u, 4u, 3u));
  EXPECT_THAT(ColumnOf(*table, GainsTarget), ElementsAre(30.0, 20.0, 5.0));
  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(75.0, 50.0, 25.0));
}

TEST(GainsTable, ShowsTheProfitOfGainsOnceThereIsMoney) {
  auto const root = ClassTree();
  GainsSettings settings = ProfitSettings();
  settings.SetTargetCategory(0);

  auto const table = MakeGainsTable(*root, settings);

  // By response of the target category all the same.
  EXPECT_THAT(OrderOf(*table), ElementsAre(1u, 4u, 3u));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(0.0, 1.0, 2.0));
  EXPECT_THAT(ColumnOf(*table, GainsIndex),
              ElementsAre(Near(7500.0 / 55.0), Near(5000.0 / 55.0), Near(2500.0 / 55.0)));
}

TEST(GainsTable, OrdersByProfitWithoutATargetCategory) {
  auto const root = ClassTree();

  auto const table = MakeGainsTable(*root, ProfitSettings());

  // Node 3: (-5 + 45) / 20, node 4: (-20 + 60) / 40, node 1: (-30 + 30) / 40; all: 80 / 100.
  ASSERT_NE(table, nullptr);
  EXPECT_THAT(OrderOf(*table), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(2.0, 1.0, 0.0));
  EXPECT_THAT(ColumnOf(*table, GainsIndex), ElementsAre(Near(250.0), Near(125.0), 0.0));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(20.0, 40.0, 40.0));
}

TEST(GainsTable, TakesExpensesFromRevenues) {
  auto const root = ClassTree();
  GainsSettings settings;
  settings.SetCategoryRevenue(0, 5.0);
  settings.SetCategoryExpense(0, 1.0);
  settings.SetCategoryExpense(1, 2.0);

  auto const table = MakeGainsTable(*root, settings);

  // 4 for a case of class 0, -2 for one of class 1: (120 - 20) / 40, (80 - 40) / 40, (20 - 30)
  // / 20.
  EXPECT_THAT(OrderOf(*table), ElementsAre(1u, 4u, 3u));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(2.5, 1.0, -0.5));
}

TEST(GainsTable, LeavesAsideMoneyOfCategoriesThatTheTreeDoesNotHave) {
  auto const root = ClassTree();
  GainsSettings settings = ProfitSettings();
  settings.SetCategoryProfit(2, 1000.0);

  auto const table = MakeGainsTable(*root, settings);

  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(2.0, 1.0, 0.0));
}

TEST(GainsTable, ShowsAveragesOfARegressionTree) {
  auto const root = NumberTree();

  auto const table = MakeGainsTable(*root, GainsSettings());

  ASSERT_NE(table, nullptr);
  EXPECT_THAT(OrderOf(*table), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(30.0, 10.0, 10.0));
  EXPECT_THAT(ColumnOf(*table, GainsCasesPercent), ElementsAre(60.0, 20.0, 20.0));
  EXPECT_THAT(ColumnOf(*table, GainsAverage), ElementsAre(6.0, 4.0, 2.0));
  EXPECT_THAT(ColumnOf(*table, GainsIndex),
              ElementsAre(Near(125.0), Near(250.0 / 3.0), Near(125.0 / 3.0)));
}

TEST(GainsTable, LeavesMoneyAsideInARegressionTree) {
  auto const root = NumberTree();

  auto const table = MakeGainsTable(*root, ProfitSettings());

  ASSERT_NE(table, nullptr);
  EXPECT_FALSE(table->HasColumn(GainsProfit));
  EXPECT_THAT(ColumnOf(*table, GainsAverage), ElementsAre(6.0, 4.0, 2.0));
}

TEST(GainsTable, SaysWhichColumnsThereAre) {
  auto const classes = ClassTree();
  auto const numbers = NumberTree();
  GainsSettings targetAndMoney = ProfitSettings();
  targetAndMoney.SetTargetCategory(1);

  EXPECT_THAT(ColumnsIn(*MakeGainsTable(*classes, TargetOf(1))),
              ElementsAre(GainsCases, GainsCasesPercent, GainsTarget, GainsTargetPercent,
                          GainsResponse, GainsIndex));
  EXPECT_THAT(ColumnsIn(*MakeGainsTable(*classes, targetAndMoney)),
              ElementsAre(GainsCases, GainsCasesPercent, GainsTarget, GainsTargetPercent,
                          GainsResponse, GainsProfit, GainsIndex));
  EXPECT_THAT(ColumnsIn(*MakeGainsTable(*classes, ProfitSettings())),
              ElementsAre(GainsCases, GainsCasesPercent, GainsProfit, GainsIndex));
  EXPECT_THAT(ColumnsIn(*MakeGainsTable(*numbers, GainsSettings())),
              ElementsAre(GainsCases, GainsCasesPercent, GainsIndex, GainsAverage));
}

TEST(GainsTable, NumbersItsColumnsOnceAndForAll) {
  EXPECT_THAT(kAllColumns, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST(GainsTable, SortsAscendingWhereThatIsWanted) {
  auto const classes = ClassTree();
  auto const numbers = NumberTree();
  struct {
    char const* name;
    NodeImp const& root;
    GainsSettings settings;
  } cases[] = {{"target category", *classes, TargetOf(1)},
               {"profit", *classes, ProfitSettings()},
               {"average", *numbers, GainsSettings()}};

  for (auto& [name, root, settings] : cases) {
    SCOPED_TRACE(name);
    settings.SetSortOrder(SortAscending);

    EXPECT_THAT(OrderOf(*MakeGainsTable(root, settings)), ElementsAre(1u, 4u, 3u));
  }
}

TEST(GainsTable, SortsByTheSampleThatTheSettingsName) {
  auto const classes = ClassTree();
  auto const numbers = NumberTree();
  struct {
    char const* name;
    NodeImp const& root;
    GainsSettings settings;
    std::vector<unsigned int> order;
  } cases[] = {{"target category", *classes, TargetOf(1), {1, 3, 4}},
               {"profit", *classes, ProfitSettings(), {1, 3, 4}},
               {"average", *numbers, GainsSettings(), {1, 4, 3}}};

  for (auto& [name, root, settings, order] : cases) {
    SCOPED_TRACE(name);
    settings.SetSortKey(TestSample);
    auto const table = MakeGainsTable(root, settings);

    EXPECT_EQ(OrderOf(*table), order);
    // The values are those of the training sample still.
    EXPECT_THAT(ColumnOf(*table, GainsCases).front(),
                root.GetChild(0)->GetNodeSize(TrainingSample));
  }
}

TEST(GainsTable, ShowsTheSampleThatTheSettingsName) {
  auto const classes = ClassTree();
  auto const numbers = NumberTree();
  GainsSettings target = TargetOf(1);
  GainsSettings average;
  target.SetDataSample(TestSample);
  average.SetDataSample(TestSample);

  auto const targetTable = MakeGainsTable(*classes, target);
  auto const averageTable = MakeGainsTable(*numbers, average);

  // The order is that of the training sample still.
  EXPECT_THAT(OrderOf(*targetTable), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*targetTable, GainsCases), ElementsAre(10.0, 30.0, 10.0));
  EXPECT_THAT(ColumnOf(*targetTable, GainsCasesPercent), ElementsAre(20.0, 60.0, 20.0));
  EXPECT_THAT(ColumnOf(*targetTable, GainsTarget), ElementsAre(5.0, 6.0, 8.0));
  EXPECT_THAT(ColumnOf(*targetTable, GainsResponse), ElementsAre(50.0, 20.0, 80.0));
  EXPECT_THAT(ColumnOf(*targetTable, GainsIndex),
              ElementsAre(Near(5000.0 / 38.0), Near(2000.0 / 38.0), Near(8000.0 / 38.0)));
  EXPECT_THAT(OrderOf(*averageTable), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*averageTable, GainsCases), ElementsAre(2.0, 2.0, 4.0));
  EXPECT_THAT(ColumnOf(*averageTable, GainsAverage), ElementsAre(1.0, 3.0, 5.0));
}

TEST(GainsTable, KeepsNodesThatAreAlikeInTheOrderOfTheTree) {
  auto const classes = ANode(0)
                           .Over(ANode(1).Classes({2.0, 1.0}), ANode(2).Classes({1.0, 9.0}),
                                 ANode(3).Classes({20.0, 10.0}), ANode(4).Classes({200.0, 100.0}))
                           .Build();
  // 3 * 0.1 / 3 is not 0.1, so means that were made of sums would differ.
  auto const numbers = ANode(0)
                           .Over(ANode(1).Regression(1.0, 0.1), ANode(2).Regression(1.0, 9.0),
                                 ANode(3).Regression(3.0, 0.1), ANode(4).Regression(7.0, 0.1))
                           .Build();
  GainsSettings ascending = TargetOf(1);
  GainsSettings ascendingAverage;
  ascending.SetSortOrder(SortAscending);
  ascendingAverage.SetSortOrder(SortAscending);

  EXPECT_THAT(OrderOf(*MakeGainsTable(*classes, TargetOf(1))), ElementsAre(2u, 1u, 3u, 4u));
  EXPECT_THAT(OrderOf(*MakeGainsTable(*classes, ascending)), ElementsAre(1u, 3u, 4u, 2u));
  EXPECT_THAT(OrderOf(*MakeGainsTable(*numbers, GainsSettings())), ElementsAre(2u, 1u, 3u, 4u));
  EXPECT_THAT(OrderOf(*MakeGainsTable(*numbers, ascendingAverage)), ElementsAre(1u, 3u, 4u, 2u));
}

TEST(GainsTable, PutsNodesLastThatTheSortSampleCannotJudge) {
  auto const classes = ANode(0)
                           .Over(ANode(1).Classes({0.0, 0.0}), ANode(2).Classes({3.0, 1.0}),
                                 ANode(3).Classes({0.0, 0.0}), ANode(4).Classes({1.0, 3.0}))
                           .Build();
  auto const numbers = ANode(0)
                           .Over(ANode(1).Regression(0.0, 100.0), ANode(2).Regression(4.0, -7.0),
                                 ANode(3).Regression(0.0, -100.0), ANode(4).Regression(4.0, -5.0))
                           .Build();
  struct {
    char const* name;
    NodeImp const& root;
    GainsSettings settings;
  } cases[] = {{"target category", *classes, TargetOf(1)},
               {"profit", *classes, ProfitSettings()},
               {"average", *numbers, GainsSettings()}};

  for (auto& [name, root, settings] : cases) {
    SCOPED_TRACE(name);
    EXPECT_THAT(OrderOf(*MakeGainsTable(root, settings)), ElementsAre(4u, 2u, 1u, 3u));
    settings.SetSortOrder(SortAscending);
    EXPECT_THAT(OrderOf(*MakeGainsTable(root, settings)), ElementsAre(2u, 4u, 1u, 3u));
  }
}

TEST(GainsTable, PutsNodesLastWhoseProfitIsNoNumber) {
  auto const root =
      ANode(0).Over(ANode(1).Classes({1.0, 1.0}), ANode(2).Classes({3.0, 1.0})).Build();
  GainsSettings settings;
  settings.SetCategoryProfit(0, std::numeric_limits<double>::quiet_NaN());

  EXPECT_THAT(OrderOf(*MakeGainsTable(*root, settings)), ElementsAre(1u, 2u));
}

TEST(GainsTable, AddsUpCumulativeRows) {
  auto const root = ClassTree();
  GainsSettings settings = Cumulative(ProfitSettings());
  settings.SetTargetCategory(1);

  auto const table = MakeGainsTable(*root, settings);

  ASSERT_NE(table, nullptr);
  EXPECT_THAT(NodesOf(*table, 0), ElementsAre(3u));
  EXPECT_THAT(NodesOf(*table, 1), ElementsAre(3u, 4u));
  EXPECT_THAT(NodesOf(*table, 2), ElementsAre(3u, 4u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(20.0, 60.0, 100.0));
  EXPECT_THAT(ColumnOf(*table, GainsCasesPercent), ElementsAre(20.0, 60.0, 100.0));
  EXPECT_THAT(ColumnOf(*table, GainsTarget), ElementsAre(15.0, 35.0, 45.0));
  EXPECT_THAT(ColumnOf(*table, GainsTargetPercent),
              ElementsAre(Near(100.0 / 3.0), Near(700.0 / 9.0), 100.0));
  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(75.0, Near(175.0 / 3.0), 45.0));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(2.0, Near(4.0 / 3.0), 0.8));
  EXPECT_THAT(ColumnOf(*table, GainsIndex),
              ElementsAre(Near(500.0 / 3.0), Near(3500.0 / 27.0), 100.0));
}

TEST(GainsTable, AddsUpCumulativeAverages) {
  auto const root = NumberTree();

  auto const table = MakeGainsTable(*root, Cumulative(GainsSettings()));

  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(30.0, 40.0, 50.0));
  EXPECT_THAT(ColumnOf(*table, GainsAverage), ElementsAre(6.0, 5.5, 4.8));
  EXPECT_THAT(ColumnOf(*table, GainsIndex), ElementsAre(Near(125.0), Near(550.0 / 4.8), 100.0));
}

TEST(GainsTable, SharesNodesBetweenPercentileRowsInProportion) {
  auto const root = ClassTree();
  GainsSettings settings = Percentiles(ProfitSettings(), 25);
  settings.SetTargetCategory(1);

  auto const table = MakeGainsTable(*root, settings);

  // Cases by node: 20 and 5; 25; 10 and 15; 25.
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->GetNumRows(), 4);
  EXPECT_THAT(NodesOf(*table, 0), ElementsAre(3u, 4u));
  EXPECT_THAT(NodesOf(*table, 1), ElementsAre(4u));
  EXPECT_THAT(NodesOf(*table, 2), ElementsAre(4u, 1u));
  EXPECT_THAT(NodesOf(*table, 3), ElementsAre(1u));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(25.0, 25.0, 25.0, 25.0));
  EXPECT_THAT(ColumnOf(*table, GainsCasesPercent), ElementsAre(25.0, 25.0, 25.0, 25.0));
  EXPECT_THAT(ColumnOf(*table, GainsTarget), ElementsAre(17.5, 12.5, 8.75, 6.25));
  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(70.0, 50.0, 35.0, 25.0));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(1.8, 1.0, 0.4, 0.0));
  EXPECT_THAT(ColumnOf(*table, GainsIndex), ElementsAre(Near(7000.0 / 45.0), Near(5000.0 / 45.0),
                                                        Near(3500.0 / 45.0), Near(2500.0 / 45.0)));
}

TEST(GainsTable, SharesAveragesBetweenPercentileRows) {
  auto const root = NumberTree();

  auto const table = MakeGainsTable(*root, Percentiles(GainsSettings(), 25));

  // 12.5 cases a row: 12.5; 12.5; 5 and 7.5; 2.5 and 10.
  EXPECT_THAT(NodesOf(*table, 2), ElementsAre(3u, 4u));
  EXPECT_THAT(NodesOf(*table, 3), ElementsAre(4u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsCases), ElementsAre(12.5, 12.5, 12.5, 12.5));
  EXPECT_THAT(ColumnOf(*table, GainsAverage), ElementsAre(6.0, 6.0, Near(4.8), Near(2.4)));
}

TEST(GainsTable, TakesCasesForPercentilesInAscendingOrderWhereThatIsWanted) {
  auto const root = ClassTree();
  GainsSettings settings = Percentiles(TargetOf(1), 25);
  settings.SetSortOrder(SortAscending);

  auto const table = MakeGainsTable(*root, settings);

  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(25.0, 35.0, 50.0, 70.0));
}

TEST(GainsTable, MakesPercentilesOfTheDataSample) {
  auto const root = ClassTree();
  GainsSettings settings = Percentiles(TargetOf(1), 25);
  settings.SetDataSample(TestSample);

  auto const table = MakeGainsTable(*root, settings);

  // 12.5 cases a row: 10 of node 3 and 2.5 of node 4; 12.5; 12.5; 2.5 of node 4 and 10 of node 1.
  EXPECT_THAT(ColumnOf(*table, GainsTarget),
              ElementsAre(Near(5.5), Near(2.5), Near(2.5), Near(8.5)));
}

TEST(GainsTable, OffersEveryPercentileStep) {
  auto const root = ClassTree();

  for (int const step : kAllIncrements) {
    SCOPED_TRACE(step);
    auto const table = MakeGainsTable(*root, Percentiles(TargetOf(1), step));

    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->GetNumRows(), 100 / step);
    double target = 0.0;
    for (int row = 0; row < table->GetNumRows(); ++row) {
      SCOPED_TRACE(row);
      EXPECT_THAT(table->GetValue(row, GainsCasesPercent), Near(step));
      target += table->GetValue(row, GainsTarget);
    }
    EXPECT_THAT(target, Near(45.0));
  }
}

TEST(GainsTable, HasNoSplintersWhereNodesEndAtPercentileBorders) {
  NodeImp root;
  root.SetNumChildren(10);
  for (unsigned int position = 0; position < 10; ++position) {
    // Tenths do not add up exactly.
    root.SetChild(position, ANode(position).Regression(0.1, 10.0 - position).Build().release());
  }

  auto const table = MakeGainsTable(root, Percentiles(GainsSettings(), 10));

  for (int row = 0; row < 10; ++row) {
    SCOPED_TRACE(row);
    EXPECT_THAT(NodesOf(*table, row), ElementsAre(static_cast<unsigned int>(row)));
    EXPECT_THAT(table->GetValue(row, GainsAverage), Near(10.0 - row));
  }
}

TEST(GainsTable, LosesNoNodeToPercentilesHoweverSmall) {
  auto const root = ANode(0)
                        .Over(ANode(1).Regression(1e-12, 1.0), ANode(2).Regression(1.0, 2.0),
                              ANode(3).Regression(1e-12, 3.0), ANode(4).Regression(1e-30, 0.0))
                        .Build();

  auto const table = MakeGainsTable(*root, Percentiles(GainsSettings(), 25));

  EXPECT_THAT(NodesOf(*table, 0), ElementsAre(3u, 2u));
  EXPECT_THAT(NodesOf(*table, 1), ElementsAre(2u));
  EXPECT_THAT(NodesOf(*table, 2), ElementsAre(2u));
  EXPECT_THAT(NodesOf(*table, 3), ElementsAre(2u, 1u, 4u));
}

TEST(GainsTable, LeavesNodesWithoutCasesOutOfPercentileRows) {
  auto const root = ANode(0)
                        .Over(ANode(1).Classes({0.0, 9.0}).Classes({0.0, 3.0}, 0, TestSample),
                              ANode(2).Classes({5.0, 5.0}).Classes({0.0, 0.0}, 0, TestSample),
                              ANode(3).Classes({9.0, 0.0}).Classes({5.0, 0.0}, 0, TestSample))
                        .Build();
  GainsSettings settings = Percentiles(TargetOf(1), 25);
  settings.SetDataSample(TestSample);

  auto const table = MakeGainsTable(*root, settings);

  // Node 2 would be within the second row.
  ASSERT_EQ(table->GetNumRows(), 4);
  EXPECT_THAT(NodesOf(*table, 0), ElementsAre(1u));
  EXPECT_THAT(NodesOf(*table, 1), ElementsAre(1u, 3u));
  EXPECT_THAT(NodesOf(*table, 2), ElementsAre(3u));
  EXPECT_THAT(NodesOf(*table, 3), ElementsAre(3u));
  EXPECT_THAT(ColumnOf(*table, GainsResponse), ElementsAre(100.0, 50.0, 0.0, 0.0));
}

TEST(GainsTable, HasOneRowForARootThatIsTerminal) {
  auto const classes = ANode(0).Classes({3.0, 1.0}).Build();
  auto const numbers = ANode(0).Regression(3.0, 0.1).Build();
  struct {
    char const* name;
    GainsSettings target;
    GainsSettings average;
  } const cases[] = {{"by node", TargetOf(1), GainsSettings()},
                     {"cumulative", Cumulative(TargetOf(1)), Cumulative(GainsSettings())}};

  for (auto const& [name, target, average] : cases) {
    SCOPED_TRACE(name);
    auto const targetTable = MakeGainsTable(*classes, target);
    auto const averageTable = MakeGainsTable(*numbers, average);

    ASSERT_EQ(targetTable->GetNumRows(), 1);
    EXPECT_EQ(targetTable->GetNumNodes(0), 1);
    EXPECT_EQ(targetTable->GetNode(0, 0), classes.get());
    EXPECT_EQ(targetTable->GetValue(0, GainsCasesPercent), 100.0);
    EXPECT_EQ(targetTable->GetValue(0, GainsTargetPercent), 100.0);
    EXPECT_EQ(targetTable->GetValue(0, GainsResponse), 25.0);
    EXPECT_EQ(targetTable->GetValue(0, GainsIndex), 100.0);
    EXPECT_THAT(averageTable->GetValue(0, GainsAverage), Near(0.1));
    EXPECT_EQ(averageTable->GetValue(0, GainsIndex), 100.0);
  }
}

TEST(GainsTable, DividesARootThatIsTerminalIntoPercentiles) {
  auto const root = ANode(0).Classes({3.0, 1.0}).Build();

  auto const table = MakeGainsTable(*root, Percentiles(TargetOf(1), 20));

  EXPECT_THAT(OrderOf(*table), ElementsAre(0u, 0u, 0u, 0u, 0u));
  for (int row = 0; row < 5; ++row) {
    SCOPED_TRACE(row);
    EXPECT_THAT(table->GetValue(row, GainsCases), Near(0.8));
    EXPECT_THAT(table->GetValue(row, GainsResponse), Near(25.0));
    EXPECT_THAT(table->GetValue(row, GainsIndex), Near(100.0));
  }
}

TEST(GainsTable, ShowsZerosAndMissingValuesOfANodeWithoutCases) {
  auto const classes =
      ANode(0).Over(ANode(1).Classes({3.0, 1.0}), ANode(2).Classes({0.0, 0.0})).Build();
  auto const numbers =
      ANode(0).Over(ANode(1).Regression(4.0, 2.0), ANode(2).Regression(0.0, 8.0)).Build();
  GainsSettings targetAndMoney = ProfitSettings();
  targetAndMoney.SetTargetCategory(1);

  auto const target = MakeGainsTable(*classes, targetAndMoney);
  auto const average = MakeGainsTable(*numbers, GainsSettings());

  for (int const column : {GainsCases, GainsCasesPercent, GainsTarget, GainsTargetPercent,
                           GainsResponse, GainsProfit}) {
    SCOPED_TRACE(column);
    EXPECT_EQ(target->GetValue(1, column), 0.0);
  }
  EXPECT_EQ(target->GetValue(1, GainsIndex), systemMissingValue());
  EXPECT_EQ(average->GetValue(1, GainsCases), 0.0);
  EXPECT_EQ(average->GetValue(1, GainsAverage), systemMissingValue());
  EXPECT_EQ(average->GetValue(1, GainsIndex), systemMissingValue());
  EXPECT_EQ(average->GetValue(0, GainsIndex), 100.0);
}

TEST(GainsTable, TakesNothingFromTheMeanOfNoCases) {
  double const noNumber = std::numeric_limits<double>::quiet_NaN();
  auto const root =
      ANode(0).Over(ANode(1).Regression(0.0, noNumber), ANode(2).Regression(4.0, 2.0)).Build();

  auto const table = MakeGainsTable(*root, Cumulative(GainsSettings()));

  EXPECT_THAT(OrderOf(*table), ElementsAre(2u, 1u));
  EXPECT_THAT(ColumnOf(*table, GainsAverage), ElementsAre(2.0, 2.0));
}

TEST(GainsTable, ShowsATestSampleWithoutCases) {
  auto const classes = ANode(0)
                           .Over(ANode(1).Classes({3.0, 1.0}).Classes({0.0, 0.0}, 0, TestSample),
                                 ANode(2).Classes({1.0, 3.0}).Classes({0.0, 0.0}, 0, TestSample))
                           .Build();
  GainsSettings settings = TargetOf(1);
  settings.SetDataSample(TestSample);

  auto const byNode = MakeGainsTable(*classes, settings);
  auto const byPercentile = MakeGainsTable(*classes, Percentiles(settings, 25));

  ASSERT_NE(byNode, nullptr);
  EXPECT_THAT(OrderOf(*byNode), ElementsAre(2u, 1u));
  ASSERT_NE(byPercentile, nullptr);
  ASSERT_EQ(byPercentile->GetNumRows(), 4);
  EXPECT_THAT(NodesOf(*byPercentile, 0), IsEmpty());
  for (GainsIntf const* const table : {byNode.get(), byPercentile.get()}) {
    EXPECT_EQ(table->GetValue(0, GainsCases), 0.0);
    EXPECT_EQ(table->GetValue(0, GainsCasesPercent), 0.0);
    EXPECT_EQ(table->GetValue(0, GainsTargetPercent), 0.0);
    EXPECT_EQ(table->GetValue(0, GainsResponse), 0.0);
    EXPECT_EQ(table->GetValue(0, GainsIndex), systemMissingValue());
  }
}

TEST(GainsTable, HasNoIndexWhereThatOfAllCasesWouldBeZero) {
  auto const classes = ANode(0).Classes({4.0, 0.0}).Build();
  auto const numbers =
      ANode(0).Over(ANode(1).Regression(4.0, -2.0), ANode(2).Regression(4.0, 2.0)).Build();

  auto const target = MakeGainsTable(*classes, TargetOf(1));
  auto const average = MakeGainsTable(*numbers, GainsSettings());

  EXPECT_EQ(target->GetValue(0, GainsTargetPercent), 0.0);
  EXPECT_EQ(target->GetValue(0, GainsIndex), systemMissingValue());
  EXPECT_EQ(average->GetValue(0, GainsAverage), 2.0);
  EXPECT_EQ(average->GetValue(0, GainsIndex), systemMissingValue());
}

TEST(GainsTable, IsNotMadeOfWhatTheTreeCannotGive) {
  auto const classes = ANode(0)
                           .Classes({1.0, 1.0})
                           .Over(ANode(1).Classes({1.0, 0.0}), ANode(2).Classes({0.0, 1.0}))
                           .Build();
  auto const numbers = ANode(0).Regression(3.0, 1.0).Build();
  auto const partlyTested =
      ANode(0)
          .Classes({1.0, 1.0})
          .Classes({1.0, 1.0}, 0, TestSample)
          .Over(ANode(1).Classes({1.0, 0.0}).Classes({1.0, 1.0}, 0, TestSample),
                ANode(2).Classes({0.0, 1.0}))
          .Build();
  auto const bare = ANode(0).Build();
  auto unfinished = ANode(0).Classes({1.0, 1.0}).Build();
  unfinished->SetNumChildren(2);
  GainsSettings testTarget = TargetOf(1);
  testTarget.SetDataSample(TestSample);
  GainsSettings testKey = TargetOf(1);
  testKey.SetSortKey(TestSample);
  GainsSettings testAverage;
  testAverage.SetDataSample(TestSample);
  GainsSettings testAverageKey;
  testAverageKey.SetSortKey(TestSample);
  struct {
    char const* name;
    NodeImp const& root;
    GainsSettings settings;
  } const cases[] = {
      {"a category beyond the last", *classes, TargetOf(2)},
      {"the average of categories without money", *classes, GainsSettings()},
      {"the same, of a negative category", *classes, TargetOf(-5)},
      {"a category of a regression tree", *numbers, TargetOf(0)},
      {"a test sample of classes", *classes, testTarget},
      {"an order by a test sample of classes", *classes, testKey},
      {"a test sample of numbers", *numbers, testAverage},
      {"an order by a test sample of numbers", *numbers, testAverageKey},
      {"a test sample that one node lacks", *partlyTested, testTarget},
      {"an order by a test sample that one node lacks", *partlyTested, testKey},
      {"a node without statistics", *bare, GainsSettings()},
      {"a node without statistics, for a category", *bare, TargetOf(0)},
      {"a tree without its children", *unfinished, TargetOf(1)},
      {"percentiles by 0", *classes, Percentiles(TargetOf(1), 0)},
      {"percentiles by -10", *classes, Percentiles(TargetOf(1), -10)},
      {"percentiles by 3", *classes, Percentiles(TargetOf(1), 3)},
      {"percentiles by 200", *classes, Percentiles(TargetOf(1), 200)},
  };

  for (auto const& [name, root, settings] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(MakeGainsTable(root, settings), nullptr);
  }
}

TEST(GainsTable, IgnoresAPercentileStepWithoutPercentiles) {
  auto const root = ClassTree();
  GainsSettings settings = TargetOf(1);
  settings.SetPercentileIncrement(static_cast<PercentileIncrement>(0));

  EXPECT_NE(MakeGainsTable(*root, settings), nullptr);
}

TEST(GainsTable, TakesAnyNegativeCategoryForAverages) {
  auto const root = ClassTree();
  GainsSettings settings = ProfitSettings();
  settings.SetTargetCategory(-5);

  auto const table = MakeGainsTable(*root, settings);

  ASSERT_NE(table, nullptr);
  EXPECT_FALSE(table->HasColumn(GainsTarget));
  EXPECT_THAT(ColumnOf(*table, GainsProfit), ElementsAre(2.0, 1.0, 0.0));
}

TEST(GainsTable, HasNothingBeyondItsRowsPositionsAndColumns) {
  auto const root = ClassTree();

  auto const table = MakeGainsTable(*root, TargetOf(1));

  for (int const row : {-1, 3}) {
    SCOPED_TRACE(row);
    EXPECT_EQ(table->GetNumNodes(row), 0);
    EXPECT_EQ(table->GetNode(row, 0), nullptr);
    EXPECT_EQ(table->GetValue(row, GainsCases), systemMissingValue());
  }
  EXPECT_EQ(table->GetNode(0, -1), nullptr);
  EXPECT_EQ(table->GetNode(0, 1), nullptr);
  for (int const column : {-1, 8}) {
    SCOPED_TRACE(column);
    EXPECT_FALSE(table->HasColumn(column));
    EXPECT_EQ(table->GetValue(0, column), systemMissingValue());
  }
  EXPECT_EQ(table->GetValue(0, GainsProfit), systemMissingValue());
  EXPECT_EQ(table->GetValue(0, GainsAverage), systemMissingValue());
}

TEST(GainsTable, IsCopiedByAHandle) {
  auto const root = ClassTree();
  auto table = MakeGainsTable(*root, Cumulative(TargetOf(1)));
  Gains gains;

  gains = *table;
  table.reset();

  ASSERT_EQ(gains.GetNumRows(), 3);
  EXPECT_EQ(gains.GetNumNodes(1), 2);
  EXPECT_EQ(gains.GetNode(1, 0), root->GetChild(1)->GetChild(0));
  EXPECT_EQ(gains.GetValue(1, GainsTarget), 35.0);
  EXPECT_TRUE(gains.HasColumn(GainsIndex));
}

// --- against slow and obvious ways ---

/// `numNodes` terminal nodes of 1 to 20 cases, with a response of class 1 or a mean.
std::unique_ptr<NodeImp> RandomTree(RandomNumbers& random, unsigned int numNodes, bool classes) {
  auto root = std::make_unique<NodeImp>();
  root->SetNumChildren(static_cast<int>(numNodes));
  for (unsigned int position = 0; position < numNodes; ++position) {
    double const size = random.Multiple(1.0, 20);
    double const value = random.Below(static_cast<std::uint32_t>(size) + 1);
    auto node = ANode(position + 1);
    root->SetChild(position, (classes ? std::move(node).Classes({size - value, value})
                                      : std::move(node).Regression(size, value))
                                 .Build()
                                 .release());
  }
  return root;
}

TEST(GainsTable, AddsUpAsCumulativeNodesDo) {
  RandomNumbers random(7);
  for (int repetition = 0; repetition < 20; ++repetition) {
    auto const classes = RandomTree(random, 1 + random.Below(60), true);
    auto const numbers = RandomTree(random, 1 + random.Below(60), false);
    auto const target = MakeGainsTable(*classes, Cumulative(TargetOf(1)));
    auto const average = MakeGainsTable(*numbers, Cumulative(GainsSettings()));

    std::vector<Node const*> soFar;
    for (int row = 0; row < target->GetNumRows(); ++row) {
      soFar.push_back(target->GetNode(row, row));
      CumulativeNode group(soFar);
      EXPECT_EQ(target->GetValue(row, GainsCases), group.GetNodeSize(TrainingSample));
      EXPECT_EQ(target->GetValue(row, GainsTarget),
                group.GetClsInfo(TrainingSample)->GetClassCount(1));
    }
    soFar.clear();
    for (int row = 0; row < average->GetNumRows(); ++row) {
      soFar.push_back(average->GetNode(row, row));
      CumulativeNode group(soFar);
      EXPECT_EQ(average->GetValue(row, GainsCases), group.GetNodeSize(TrainingSample));
      EXPECT_THAT(average->GetValue(row, GainsAverage),
                  Near(group.GetRegInfo(TrainingSample)->GetMean()));
    }
  }
}

TEST(GainsTable, CutsPercentilesAsALineOfCasesIsCut) {
  RandomNumbers random(8);
  for (int repetition = 0; repetition < 20; ++repetition) {
    auto const root = RandomTree(random, 1 + random.Below(60), true);
    auto const byNode = MakeGainsTable(*root, TargetOf(1));
    // A hundred small parts for each case, so that every border is between two of them.
    std::vector<double> parts;
    for (int row = 0; row < byNode->GetNumRows(); ++row) {
      auto const numParts = static_cast<std::size_t>(100.0 * byNode->GetValue(row, GainsCases));
      parts.insert(parts.end(), numParts, byNode->GetValue(row, GainsResponse));
    }

    for (int const step : kAllIncrements) {
      SCOPED_TRACE(step);
      auto const table = MakeGainsTable(*root, Percentiles(TargetOf(1), step));

      std::size_t const numParts = parts.size() / 100 * static_cast<std::size_t>(step);
      auto part = parts.begin();
      for (int row = 0; row < table->GetNumRows(); ++row) {
        double sum = 0.0;
        for (std::size_t count = 0; count < numParts; ++count) sum += *part++;
        EXPECT_THAT(table->GetValue(row, GainsResponse),
                    DoubleNear(sum / static_cast<double>(numParts), 1e-7));
      }
      EXPECT_EQ(part, parts.end());
    }
  }
}

TEST(GainsTable, NamesAllNodesOfCumulativeRowsOfALargeTree) {
  constexpr int kNumNodes = 20000;
  NodeImp root;
  NodeImp* parent = &root;  // a chain of binary splits
  for (unsigned int id = 1; id < kNumNodes; ++id) {
    parent->SetNumChildren(2);
    parent->SetChild(0, ANode(id).Regression(1.0, id).Build().release());
    parent->SetChild(1, new NodeImp);
    parent = parent->GetChildImp(1);
  }
  std::unique_ptr<NodeImp> const last = ANode(kNumNodes).Regression(1.0, kNumNodes).Build();
  *parent = *last;
  parent->SetId(kNumNodes);

  auto const table = MakeGainsTable(root, Cumulative(GainsSettings()));

  ASSERT_EQ(table->GetNumRows(), kNumNodes);
  EXPECT_EQ(table->GetNumNodes(kNumNodes - 1), kNumNodes);
  EXPECT_EQ(table->GetNode(kNumNodes - 1, 0)->GetId(), kNumNodes);
  EXPECT_EQ(table->GetNode(kNumNodes - 1, kNumNodes - 1)->GetId(), 1u);
  EXPECT_EQ(table->GetValue(kNumNodes - 1, GainsAverage), 0.5 * (kNumNodes + 1));
}

}  // namespace
}  // namespace tree::grow
