#include "output/print_gains.h"

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "testing/tree_builder.h"
#include "tree/grow/gains_columns.h"
#include "tree/support.h"

namespace tree::cli {
namespace {

using tree::testing::ANode;

/// A table of given rows.
class FixedTable : public GainsIntf {
 public:
  using Values = std::map<int, double>;  // by column

  void AddRow(std::vector<unsigned int> const& ids, Values values) {
    std::vector<std::shared_ptr<NodeImp const>> nodes;
    for (unsigned int const id : ids) nodes.push_back(ANode(id).Build());
    rows_.emplace_back(std::move(nodes), std::move(values));
  }

  int GetNumRows() const override { return static_cast<int>(rows_.size()); }
  int GetNumNodes(int row) const override { return static_cast<int>(Row(row).first.size()); }
  Node const* GetNode(int row, int position) const override {
    return Row(row).first[static_cast<std::size_t>(position)].get();
  }
  bool HasColumn(int column) const override { return Row(0).second.count(column) > 0; }
  double GetValue(int row, int column) const override { return Row(row).second.at(column); }
  GainsIntf* Clone() const override { return new FixedTable(*this); }

 private:
  using Nodes = std::vector<std::shared_ptr<NodeImp const>>;

  std::pair<Nodes, Values> const& Row(int row) const {
    return rows_[static_cast<std::size_t>(row)];
  }

  std::vector<std::pair<Nodes, Values>> rows_;
};

std::string Printed(FixedTable const& table, bool isCumulative = false) {
  std::ostringstream out;
  PrintGains(out, table, isCumulative);
  return out.str();
}

TEST(PrintGains, WritesALinePerRowWithTheColumnsThatThereAre) {
  FixedTable table;
  table.AddRow({12}, {{grow::GainsCases, 20.5},
                      {grow::GainsCasesPercent, 100.0 / 3.0},
                      {grow::GainsTarget, 5.0},
                      {grow::GainsTargetPercent, 50.0},
                      {grow::GainsResponse, 25.0},
                      {grow::GainsIndex, 150.0}});

  EXPECT_EQ(Printed(table),
            " node         cases    % of cases          hits     % of hits response in %    index "
            "in %\n"
            "   12          20.5         33.33             5         50.00         25.00        "
            "150.00\n");
}

TEST(PrintGains, ListsTheNodesOfARow) {
  FixedTable table;
  table.AddRow({3, 4}, {{grow::GainsCases, 2.0}});

  EXPECT_EQ(Printed(table),
            " node         cases\n"
            "  3,4             2\n");
}

TEST(PrintGains, KeepsColumnsTogetherWhateverTheNumberOfNodes) {
  FixedTable table;
  table.AddRow({10, 11, 12}, {{grow::GainsCases, 2.0}});
  table.AddRow({12}, {{grow::GainsCases, 3.0}});

  EXPECT_EQ(Printed(table),
            "    node         cases\n"
            "10,11,12             2\n"
            "      12             3\n");
}

TEST(PrintGains, NamesTheLastNodeOfCumulativeRows) {
  FixedTable table;
  table.AddRow({3}, {{grow::GainsCases, 2.0}});
  table.AddRow({3, 4}, {{grow::GainsCases, 5.0}});

  EXPECT_EQ(Printed(table, true),
            "up to         cases\n"
            "    3             2\n"
            "    4             5\n");
}

TEST(PrintGains, LeavesOutWhatIsUnknown) {
  FixedTable table;
  table.AddRow({1}, {{grow::GainsAverage, systemMissingValue()}, {grow::GainsProfit, -1.5}});

  EXPECT_EQ(Printed(table),
            " node        profit          mean\n"
            "    1          -1.5             -\n");
}

}  // namespace
}  // namespace tree::cli
