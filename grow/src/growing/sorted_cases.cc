#include "growing/sorted_cases.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>
#include <utility>

namespace tree::grow {
namespace {

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
        // Seldom true, and so faster than the usual functions, which wait for each other.
        if (value < minimum && value != -HUGE_VAL) minimum = value;
        if (value > maximum && value != HUGE_VAL) maximum = value;
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

constexpr unsigned int kKeySize = 32;  // in bits
constexpr unsigned int kMaxDigitSize = 12;
/// So few cases are sorted by insertion.
constexpr std::size_t kFewCases = 24;

}  // namespace

bool CaseSorter::Precedes(KeyedCase a, KeyedCase b) const {
  return a.key != b.key ? a.key < b.key : values_[a.index] < values_[b.index];
}

// The first pass goes from the values to their buckets at once: nothing but the buckets is written,
// and keys are cheap enough to be made twice. Most buckets fit the cache, where the rest is done.
std::vector<SortedCase> CaseSorter::Sort(double const* values,
                                         std::vector<std::uint32_t> const& indexes) {
  constexpr unsigned int kNumBitsLeft = kKeySize - kMaxDigitSize;
  values_ = values;
  KeyScale const scale(values, indexes, workers_);
  std::vector<std::uint32_t> ends(std::size_t{1} << kMaxDigitSize);
  ForSlices(indexes.size(), workers_, [&](std::size_t first, std::size_t last) {
    for (std::size_t position = first; position < last; ++position) {
      ++ends[scale.KeyOf(values[indexes[position]]) >> kNumBitsLeft];
    }
  });
  std::uint32_t begin = 0;
  for (std::uint32_t& end : ends) begin += std::exchange(end, begin);
  KeyedCase* const cases = cases_.Get(indexes.size());
  ForSlices(indexes.size(), workers_, [&](std::size_t first, std::size_t last) {
    for (std::size_t position = first; position < last; ++position) {
      std::uint32_t const index = indexes[position];
      std::uint32_t const key = scale.KeyOf(values[index]);
      cases[ends[key >> kNumBitsLeft]++] = {key, index};
    }
  });

  std::vector<SortedCase> sorted;
  sorted.reserve(indexes.size());
  constexpr std::size_t kCasesPerPoll = std::size_t{1} << 18;
  std::size_t nextPoll = kCasesPerPoll;
  begin = 0;
  for (std::uint32_t const end : ends) {
    if (begin == end) continue;
    if (begin >= nextPoll) {
      workers_.Poll();
      nextPoll = begin + kCasesPerPoll;
    }
    SortBucket({cases + begin, end - begin}, kNumBitsLeft);
    sorted.emplace_back(cases[begin].index, true);
    for (std::size_t place = begin + 1; place < end; ++place) {
      sorted.emplace_back(cases[place].index, Precedes(cases[place - 1], cases[place]));
    }
    begin = end;
  }
  return sorted;
}

/// Sorts cases whose keys differ only in the lowest `numBits`; stable.
void CaseSorter::SortBucket(std::span<KeyedCase> bucket, unsigned int numBits) {
  if (bucket.size() > kFewCases) {
    if (numBits == 0) return SortByValue(bucket);
    SortByDigit(bucket, numBits);
  }
  Insert(bucket);
}

/// Takes little time where the cases are nearly in order.
void CaseSorter::Insert(std::span<KeyedCase> bucket) const {
  for (std::size_t place = 1; place < bucket.size(); ++place) {
    KeyedCase const item = bucket[place];
    if (item.key > bucket[place - 1].key) continue;
    std::size_t to = place;
    for (; to > 0 && Precedes(item, bucket[to - 1]); --to) bucket[to] = bucket[to - 1];
    bucket[to] = item;
  }
}

void CaseSorter::SortByValue(std::span<KeyedCase> bucket) const {
  auto const precedes = [this](KeyedCase a, KeyedCase b) { return Precedes(a, b); };
  if (std::is_sorted(bucket.begin(), bucket.end(), precedes)) return;
  std::stable_sort(bucket.begin(), bucket.end(), precedes);
}

/// Sorts by so many of the bits that few cases are left to be told apart by the others, or sorts
/// these by the others, too.
void CaseSorter::SortByDigit(std::span<KeyedCase> bucket, unsigned int numBits) {
  auto const fitting = static_cast<unsigned int>(std::bit_width(bucket.size()));
  unsigned int const size = std::min({numBits, fitting, kMaxDigitSize});
  unsigned int const numBitsLeft = numBits - size;
  std::uint32_t const mask = (1U << size) - 1U;
  auto const digitOf = [=](KeyedCase item) { return (item.key >> numBitsLeft) & mask; };
  std::array<std::uint32_t, std::size_t{1} << kMaxDigitSize> places;
  std::span<std::uint32_t> const ends(places.data(), std::size_t{1} << size);
  std::fill(ends.begin(), ends.end(), 0U);
  ForSlices(bucket.size(), workers_, [&](std::size_t first, std::size_t last) {
    for (std::size_t place = first; place < last; ++place) ++ends[digitOf(bucket[place])];
  });
  std::uint32_t begin = 0;
  std::uint32_t greatest = 0;
  for (std::uint32_t& end : ends) {
    greatest = std::max(greatest, end);
    begin += std::exchange(end, begin);
  }
  KeyedCase* const moved = moved_.Get(bucket.size());
  ForSlices(bucket.size(), workers_, [&](std::size_t first, std::size_t last) {
    for (std::size_t place = first; place < last; ++place) {
      KeyedCase const item = bucket[place];
      moved[ends[digitOf(item)]++] = item;
    }
  });
  std::copy_n(moved, bucket.size(), bucket.begin());
  if (greatest <= kFewCases) return;
  begin = 0;
  for (std::uint32_t const end : ends) {
    if (end - begin > kFewCases) SortBucket(bucket.subspan(begin, end - begin), numBitsLeft);
    begin = end;
  }
}

double CutBetween(double lower, double upper) {
  // Halves first: their sum cannot leave the range.
  double const middle = lower / 2.0 + upper / 2.0;
  return lower <= middle && middle < upper ? middle : lower;
}

}  // namespace tree::grow
