#include "growing/sorted_cases.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tree::grow {
namespace {

struct KeyedCase {
  std::uint32_t key;
  std::uint32_t index;
};

/// How much of a key is sorted by in each pass, and from which bit up.
struct Digits {
  unsigned int size;   // in bits
  unsigned int begin;  // bits below are not sorted by
};
/// Two passes leave few of some millions of cases to be told apart by what is below, three none.
constexpr Digits kTwoDigits{12, 8};
constexpr Digits kThreeDigits{11, 0};
constexpr std::size_t kManyCases = std::size_t{1} << 22;

std::uint32_t DigitOf(std::uint32_t key, Digits digits, unsigned int shift) {
  return (key >> shift) & ((1U << digits.size) - 1U);
}

/// How many of the cases have each value of each digit, from the lowest digit up.
using DigitCounts = std::vector<std::vector<std::uint32_t>>;

DigitCounts CountDigits(std::vector<KeyedCase> const& cases, Digits digits, Workers& workers) {
  DigitCounts counts;
  for (unsigned int shift = digits.begin; shift < 32; shift += digits.size) {
    counts.emplace_back(std::size_t{1} << digits.size);
  }
  ForSlices(cases.size(), workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t place = first; place < last; ++place) {
      unsigned int shift = digits.begin;
      for (auto& ofDigit : counts) {
        ++ofDigit[DigitOf(cases[place].key, digits, shift)];
        shift += digits.size;
      }
    }
  });
  return counts;
}

/// Whether so many cases share their highest digit that the second one would leave most together.
bool AreClustered(std::vector<std::uint32_t> const& ofHighest, std::size_t numCases) {
  constexpr std::size_t kTimesMean = 64;
  return *std::max_element(ofHighest.begin(), ofHighest.end()) / kTimesMean >
         numCases / ofHighest.size();
}

/// Sorts by the digits of the keys, from the lowest digit up; stable.
void SortByDigits(std::vector<KeyedCase>& cases, Digits digits, DigitCounts counts,
                  Workers& workers) {
  std::vector<KeyedCase> sorted(cases.size());
  unsigned int shift = digits.begin;
  for (auto& places : counts) {
    unsigned int const ofPass = std::exchange(shift, shift + digits.size);
    // Where all share the digit there is nothing to sort.
    if (!cases.empty() && places[DigitOf(cases.front().key, digits, ofPass)] == cases.size()) {
      continue;
    }
    std::uint32_t begin = 0;
    for (std::uint32_t& place : places) begin += std::exchange(place, begin);
    ForSlices(cases.size(), workers, [&](std::size_t first, std::size_t last) {
      for (std::size_t place = first; place < last; ++place) {
        KeyedCase const item = cases[place];
        sorted[places[DigitOf(item.key, digits, ofPass)]++] = item;
      }
    });
    cases.swap(sorted);
  }
}

/// Maps values to 32 bits without changing their order: greater keys have greater values, while
/// equal keys say nothing.
class KeyScale {
 public:
  KeyScale(double const* values, std::vector<std::uint32_t> const& indexes, Workers& workers) {
    double minimum = HUGE_VAL;
    double maximum = -HUGE_VAL;
    ForSlices(indexes.size(), workers, [&](std::size_t first, std::size_t last) {
      for (std::size_t position = first; position < last; ++position) {
        double const value = values[indexes[position]];
        if (std::isinf(value)) continue;
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
      }
    });
    if (minimum < maximum) {
      minimum_ = minimum;
      double const half = maximum / 2.0 - minimum / 2.0;  // the whole range may be no number
      if (std::isnormal(half)) perUnit_ = 1.0 / half;     // nor one divided by the smallest ones
    }
  }

  std::uint32_t KeyOf(double value) const {
    double const share = (value / 2.0 - minimum_ / 2.0) * perUnit_;
    return static_cast<std::uint32_t>(std::clamp(share, 0.0, 1.0) * 4294967295.0);
  }

 private:
  double minimum_ = 0.0;
  double perUnit_ = 1.0;  // of half the range
};

}  // namespace

std::vector<SortedCase> SortCases(double const* values, std::vector<std::uint32_t> const& indexes,
                                  Workers& workers) {
  KeyScale const scale(values, indexes, workers);
  std::vector<KeyedCase> cases;
  cases.reserve(indexes.size());
  ForSlices(indexes.size(), workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t position = first; position < last; ++position) {
      std::uint32_t const index = indexes[position];
      cases.push_back({scale.KeyOf(values[index]), index});
    }
  });
  Digits digits = kTwoDigits;
  DigitCounts counts = CountDigits(cases, digits, workers);
  if (cases.size() > kManyCases || AreClustered(counts.back(), cases.size())) {
    digits = kThreeDigits;
    counts = CountDigits(cases, digits, workers);
  }
  SortByDigits(cases, digits, std::move(counts), workers);
  workers.Poll();

  // What the digits do not tell apart is sorted by all of the key, and then by value.
  auto const precedes = [values](KeyedCase const& a, KeyedCase const& b) {
    return a.key != b.key ? a.key < b.key : values[a.index] < values[b.index];
  };
  std::vector<SortedCase> sorted(cases.size());
  constexpr std::size_t kCasesPerPoll = std::size_t{1} << 20;
  std::size_t nextPoll = kCasesPerPoll;
  for (std::size_t begin = 0; begin < cases.size();) {
    if (begin >= nextPoll) {
      workers.Poll();
      nextPoll = begin + kCasesPerPoll;
    }
    std::size_t end = begin + 1;
    bool ascends = true;
    while (end < cases.size() &&
           (cases[end].key >> digits.begin) == (cases[begin].key >> digits.begin)) {
      ascends = ascends && !precedes(cases[end], cases[end - 1]);
      ++end;
    }
    if (!ascends) {
      std::stable_sort(cases.begin() + static_cast<std::ptrdiff_t>(begin),
                       cases.begin() + static_cast<std::ptrdiff_t>(end), precedes);
    }
    sorted[begin] = {cases[begin].index, true};
    for (std::size_t place = begin + 1; place < end; ++place) {
      sorted[place] = {cases[place].index, precedes(cases[place - 1], cases[place])};
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
