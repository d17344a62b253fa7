#include "growing/ranked_predictor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace tree::grow {
namespace {

/// The first 32 bits of a double, changed so that they ascend with it.
std::uint32_t LeadingBits(double value) {
  auto const bits = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value + 0.0) >>
                                               32);  // the sum turns -0.0 into 0.0
  return (bits & 0x8000'0000U) != 0 ? ~bits : bits | 0x8000'0000U;
}

constexpr unsigned int kDigitBits = 11;
constexpr std::size_t kNumDigits = 3;  // 3 x 11 bits hold 32
constexpr std::size_t kNumBuckets = std::size_t{1} << kDigitBits;

std::size_t DigitOf(std::uint32_t bits, std::size_t digit) {
  return (bits >> (digit * kDigitBits)) & (kNumBuckets - 1);
}

/// Sorts by the field that holds the leading bits, from the lowest digit up; stable.
void SortByLeadingBits(std::vector<RankedCase>& cases) {
  std::array<std::array<std::uint32_t, kNumBuckets>, kNumDigits> counts{};
  for (RankedCase const& item : cases) {
    for (std::size_t digit = 0; digit < kNumDigits; ++digit) {
      ++counts[digit][DigitOf(item.rank, digit)];
    }
  }
  std::vector<RankedCase> sorted(cases.size());
  for (std::size_t digit = 0; digit < kNumDigits; ++digit) {
    auto& places = counts[digit];
    // Where all share the digit there is nothing to sort.
    if (!cases.empty() && places[DigitOf(cases.front().rank, digit)] == cases.size()) continue;
    std::uint32_t begin = 0;
    for (std::uint32_t& place : places) begin += std::exchange(place, begin);
    for (RankedCase const& item : cases) sorted[places[DigitOf(item.rank, digit)]++] = item;
    cases.swap(sorted);
  }
}

}  // namespace

RankedPredictor RankCases(Column const& column, std::vector<std::size_t> const& rows) {
  auto const valueOf = [&](RankedCase const& item) { return column.values[rows[item.index]]; };
  RankedPredictor result;
  std::vector<RankedCase>& cases = result.cases;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    if (column.IsMissing(rows[index])) continue;
    cases.push_back({LeadingBits(column.values[rows[index]]), static_cast<std::uint32_t>(index)});
  }
  SortByLeadingBits(cases);

  for (auto run = cases.begin(); run != cases.end();) {
    auto const end = std::find_if(run, cases.end(),
                                  [&](RankedCase const& item) { return item.rank != run->rank; });
    auto const byValue = [&](RankedCase const& a, RankedCase const& b) {
      return valueOf(a) < valueOf(b);
    };
    if (!std::is_sorted(run, end, byValue)) std::stable_sort(run, end, byValue);
    for (; run != end; ++run) {
      double const value = valueOf(*run) + 0.0;
      if (result.values.empty() || result.values.back() != value) result.values.push_back(value);
      run->rank = static_cast<std::uint32_t>(result.values.size() - 1);
    }
  }
  return result;
}

double CutBetween(double lower, double upper) {
  // Halves first: their sum cannot leave the range.
  double const middle = lower / 2.0 + upper / 2.0;
  return lower <= middle && middle < upper ? middle : lower;
}

}  // namespace tree::grow
