#include "output/print_gains.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

#include "output/number_text.h"
#include "tree/grow/gains_columns.h"
#include "tree/support.h"

namespace tree::cli {
namespace {

constexpr std::size_t kIdWidth = 5;
constexpr int kWidth = 14;

struct Heading {
  char const* text;
  grow::GainsColumn column;
  bool isPercentage;
};
constexpr Heading kHeadings[] = {
    {"cases", grow::GainsCases, false},           {"% of cases", grow::GainsCasesPercent, true},
    {"hits", grow::GainsTarget, false},           {"% of hits", grow::GainsTargetPercent, true},
    {"response in %", grow::GainsResponse, true}, {"profit", grow::GainsProfit, false},
    {"mean", grow::GainsAverage, false},          {"index in %", grow::GainsIndex, true}};

std::string ValueText(double value, bool isPercentage) {
  if (value == systemMissingValue()) return "-";
  return isPercentage ? FixedNumber(value, 2) : ShortNumber(value);
}

/// The nodes of a row, by id.
std::string NodesText(GainsIntf const& table, int row, bool isCumulative) {
  std::string text;
  int const count = table.GetNumNodes(row);
  for (int position = isCumulative ? count - 1 : 0; position < count; ++position) {
    if (!text.empty()) text += ',';
    text += std::to_string(table.GetNode(row, position)->GetId());
  }
  return text;
}

}  // namespace

void PrintGains(std::ostream& out, GainsIntf const& table, bool isCumulative) {
  std::vector<std::string> nodes;
  std::size_t width = kIdWidth;
  for (int row = 0; row < table.GetNumRows(); ++row) {
    nodes.push_back(NodesText(table, row, isCumulative));
    width = std::max(width, nodes.back().size());
  }
  auto const idWidth = static_cast<int>(width);
  out << std::setw(idWidth) << (isCumulative ? "up to" : "node");
  for (auto const& [text, column, isPercentage] : kHeadings) {
    if (table.HasColumn(column)) out << std::setw(kWidth) << text;
  }
  out << '\n';
  for (int row = 0; row < table.GetNumRows(); ++row) {
    out << std::setw(idWidth) << nodes[static_cast<std::size_t>(row)];
    for (auto const& [text, column, isPercentage] : kHeadings) {
      if (table.HasColumn(column)) {
        out << std::setw(kWidth) << ValueText(table.GetValue(row, column), isPercentage);
      }
    }
    out << '\n';
  }
}

}  // namespace tree::cli
