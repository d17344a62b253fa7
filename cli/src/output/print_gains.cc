#include "output/print_gains.h"

#include <iomanip>
#include <ostream>
#include <string>

#include "output/number_text.h"
#include "tree/grow/gains_columns.h"
#include "tree/support.h"

namespace tree::cli {
namespace {

constexpr int kIdWidth = 5;
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

}  // namespace

void PrintGains(std::ostream& out, GainsIntf const& table) {
  out << std::setw(kIdWidth) << "node";
  for (auto const& [text, column, isPercentage] : kHeadings) {
    if (table.HasColumn(column)) out << std::setw(kWidth) << text;
  }
  out << '\n';
  for (int row = 0; row < table.GetNumRows(); ++row) {
    for (int position = 0; position < table.GetNumNodes(row); ++position) {
      if (position > 0) out << ',';
      out << std::setw(position == 0 ? kIdWidth : 0) << table.GetNode(row, position)->GetId();
    }
    for (auto const& [text, column, isPercentage] : kHeadings) {
      if (table.HasColumn(column)) {
        out << std::setw(kWidth) << ValueText(table.GetValue(row, column), isPercentage);
      }
    }
    out << '\n';
  }
}

}  // namespace tree::cli
