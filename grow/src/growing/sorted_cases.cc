#include "growing/sorted_cases.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace tree::grow {
namespace {

struct KeyedCase {
  std::uint32_t key;
  std::uint32_t index;
};

constexpr unsigned int kDigitBits = 11;
constexpr std::size_t kNumDigits = 3;  // 3 x 11 bits hold 32
constexpr std::size_t kNumBuckets = std::size_t{1} << kDigitBits;

std::size_t DigitOf(std::uint32_t key, std::size_t digit) {
  return (key >> (digit * kDigitBits)) & (kNumBuckets - 1);
}

/// Sorts by key, from the lowest digit up; stable.
void SortByKey(std::vector<KeyedCase>& cases, Workers& workers) {
  std::array<std::array<std::uint32_t, kNumBuckets>, kNumDigits> counts{};
  for (KeyedCase const& item : cases) {
    for (std::size_t digit = 0; digit < kNumDigits; ++digit) {
      ++counts[digit][DigitOf(item.key, digit)];
    }
  }
  std::vector<KeyedCase> sorted(cases.size());
  for (std::size_t digit = 0; digit < kNumDigits; ++digit) {
    auto& places = counts[digit];
    // Where all share the digit there is nothing to sort.
    if (!cases.empty() && places[DigitOf(cases.front().key, digit)] == cases.size()) continue;
    std::uint32_t begin = 0;
    for (std::uint32_t& place : places) begin += std::exchange(place, begin);
    ForSlices(cases.size(), workers, [&](std::size_t first, std::size_t last) {
      for (std::size_t place = first; place < last; ++place) {
        KeyedCase const item = cases[place];
        sorted[places[DigitOf(item.key, digit)]++] = item;
      }
    });
    cases.swap(sorted);
  }
}

/// Maps values to 32 bits without changing their order: greater keys have greater values, while
/// equal keys say nothing.
class KeyScale {
 public:
  KeyScale(double const* values, std::vector<std::uint32_t> const& indexes) {
    double minimum = HUGE_VAL;
    double maximum = -HUGE_VAL;
    for (std::uint32_t const index : indexes) {
      if (std::isinf(values[index])) continue;
      minimum = std::min(minimum, values[index]);
      maximum = std::max(maximum, values[index]);
    }
    if (minimum < maximum) {
      minimum_ = minimum;
      half_ = maximum / 2.0 - minimum / 2.0;  // the whole range may be no number
      if (!(half_ > 0.0)) half_ = 1.0;        // nor half of the smallest one
    }
  }

  std::uint32_t KeyOf(double value) const {
    double const share = (value / 2.0 - minimum_ / 2.0) / half_;
    return static_cast<std::uint32_t>(std::clamp(share, 0.0, 1.0) * 4294967295.0);
  }

 private:
  double minimum_ = 0.0;
  double half_ = 1.0;
};

}  // namespace

std::vector<SortedCase> SortCases(double const* values, std::vector<std::uint32_t> const& indexes,
                                  Workers& workers) {
  KeyScale const scale(values, indexes);
  std::vector<KeyedCase> cases;
  cases.reserve(indexes.size());
  for (std::uint32_t const index : indexes) cases.push_back({scale.KeyOf(values[index]), index});
  SortByKey(cases, workers);
  workers.Poll();

  std::vector<SortedCase> sorted(cases.size());
  for (std::size_t begin = 0; begin < cases.size();) {
    std::size_t end = begin + 1;
    bool ascends = true;
    bool varies = false;
    while (end < cases.size() && cases[end].key == cases[begin].key) {
      double const last = values[cases[end - 1].index];
      double const next = values[cases[end].index];
      ascends = ascends && last <= next;
      varies = varies || last != next;
      ++end;
    }
    if (!ascends) {
      std::stable_sort(cases.begin() + static_cast<std::ptrdiff_t>(begin),
                       cases.begin() + static_cast<std::ptrdiff_t>(end),
                       [values](KeyedCase const& a, KeyedCase const& b) {
                         return values[a.index] < values[b.index];
                       });
    }
    for (std::size_t place = begin; place < end; ++place) {
      bool const starts = place == begin ||
                          (varies && values[cases[place].index] != values[cases[place - 1].index]);
      sorted[place] = {cases[place].index, starts};
    }
    begin = end;
  }
  return sorted;
}

double CutBetween(double lower, double upper) {
  // Halves first: their sum cannot leave the range.
  double const middle = lower / 2.0 + upper / 2.0;
  return lower <= middle && middle < upper ? middle : lower;
}

}  // namespace tree::grow
