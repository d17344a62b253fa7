#ifndef TREE_GROW_SRC_GROWING_SORTED_CASES_H_
#define TREE_GROW_SRC_GROWING_SORTED_CASES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/work_memory.h"
#include "growing/workers.h"

namespace tree::grow {

/// A case in a list of cases that is sorted by a predictor: its place among the cases, and whether
/// its value differs from that of the case before it in the list. Four bytes, since growing
/// streams through such lists, and their size is its speed.
class SortedCase {
 public:
  static constexpr std::uint32_t kMaxPlace = 0x7FFF'FFFF;

  /// Leaves it undefined, unless it is asked for a value.
  SortedCase() = default;
  SortedCase(std::uint32_t place, bool startsValue)
      : bits_(place | (startsValue ? kStartBit : 0U)) {}

  /// Where the case is: its index in the sample, or its place in the lists of a tree.
  std::uint32_t Place() const { return bits_ & kMaxPlace; }
  /// Whether its value is greater than that of the case before it; true for the first case.
  bool StartsValue() const { return (bits_ & kStartBit) != 0; }

 private:
  static constexpr std::uint32_t kStartBit = 0x8000'0000;

  std::uint32_t bits_;
};

/// Sorts cases by their values, by radix from the highest digit down. Keeps the memory that it
/// works with: to be used for many predictors, by one thread.
class CaseSorter {
 public:
  /// `workers`: polled on the way. **Borrowed**.
  explicit CaseSorter(Workers& workers) : workers_(workers) {}

  /// The cases in order of their values, ascending, and of their indexes among equal ones.
  /// `values`: by index, no NaN. `indexes`: of the cases to sort, ascending, none above
  /// `SortedCase::kMaxPlace`. Linear in the cases, unless the values lie in clusters that are far
  /// apart.
  std::vector<SortedCase> Sort(double const* values, std::vector<std::uint32_t> const& indexes);

 private:
  /// `key`: greater for greater values; equal keys say nothing.
  struct KeyedCase {
    std::uint32_t key;
    std::uint32_t index;
  };

  bool Precedes(KeyedCase a, KeyedCase b) const;
  void SortBucket(std::span<KeyedCase> bucket, unsigned int numBits);
  void Insert(std::span<KeyedCase> bucket) const;
  void SortByValue(std::span<KeyedCase> bucket) const;
  void SortByDigit(std::span<KeyedCase> bucket, unsigned int numBits);

  Workers& workers_;
  double const* values_ = nullptr;  // of the cases that are being sorted, by index
  WorkMemory<KeyedCase> cases_;
  WorkMemory<KeyedCase> moved_;
};

/// The cut point between two neighbouring values, lower < upper: their mean, or, where rounding
/// leaves no number between them, the lower one, which as a cut still parts them.
double CutBetween(double lower, double upper);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_SORTED_CASES_H_
