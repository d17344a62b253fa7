#include "growing/ranked_predictor.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <tuple>
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

/// Sorts those whose leading bits agree by the rest of their values. `values`: of the cases.
void SortWithinLeadingBits(std::vector<RankedCase>& cases, std::vector<double>& values) {
  std::vector<std::pair<double, RankedCase>> run;
  for (std::size_t begin = 0; begin < cases.size();) {
    std::size_t end = begin + 1;
    bool sorted = true;
    for (; end < cases.size() && cases[end].rank == cases[begin].rank; ++end) {
      sorted = sorted && values[end - 1] <= values[end];
    }
    if (!sorted) {
      run.clear();
      for (std::size_t place = begin; place < end; ++place) {
        run.emplace_back(values[place], cases[place]);
      }
      std::stable_sort(run.begin(), run.end(),
                       [](auto const& a, auto const& b) { return a.first < b.first; });
      for (std::size_t place = begin; place < end; ++place) {
        std::tie(values[place], cases[place]) = run[place - begin];
      }
    }
    begin = end;
  }
}

}  // namespace

RankedPredictor RankCases(Column const& column, std::vector<std::size_t> const& rows) {
  RankedPredictor result;
  std::vector<RankedCase>& cases = result.cases;
  cases.reserve(rows.size());
  for (std::size_t index = 0; index < rows.size(); ++index) {
    double const value = column.values[rows[index]];
    if (value == column.description.missingValue) continue;
    cases.push_back({LeadingBits(value), static_cast<std::uint32_t>(index)});
  }
  SortByLeadingBits(cases);

  // Gathering all values at once lets the processor wait for many of them at the same time.
  std::vector<double> values(cases.size());
  std::transform(cases.begin(), cases.end(), values.begin(), [&](RankedCase const& item) {
    return column.values[rows[item.index]] + 0.0;  // the sum turns -0.0 into 0.0
  });
  SortWithinLeadingBits(cases, values);
  for (std::size_t place = 0; place < cases.size(); ++place) {
    if (result.values.empty() || result.values.back() != values[place]) {
      result.values.push_back(values[place]);
    }
    cases[place].rank = static_cast<std::uint32_t>(result.values.size() - 1);
  }
  return result;
}

double CutBetween(double lower, double upper) {
  // Halves first: their sum cannot leave the range.
  double const middle = lower / 2.0 + upper / 2.0;
  return lower <= middle && middle < upper ? middle : lower;
}

}  // namespace tree::grow
