#ifndef TREE_GROW_SRC_CHAID_COUNTED_CASES_H_
#define TREE_GROW_SRC_CHAID_COUNTED_CASES_H_

#include <cstddef>
#include <cstdint>

#include "association/number_sums.h"
#include "growing/fixed_point.h"

// What a case adds to `CategoryTables`: each kind of cases says to which of the entries that a node
// has for a category (`EntryOf`), and adds it (`Add`). Cases are **borrowed**.

namespace tree::grow {

/// Cases of classes that count once each.
class SingleCases {
 public:
  using Entry = std::int64_t;

  /// `classes`: by case.
  explicit SingleCases(std::uint16_t const* classes) : classes_(classes) {}

  std::size_t EntryOf(std::size_t index) const { return classes_[index]; }
  void Add(Entry* entry, std::size_t /*index*/) const { ++*entry; }

 private:
  std::uint16_t const* classes_;
};

/// Cases of classes that count several times.
class RepeatedCases {
 public:
  using Entry = std::int64_t;

  /// `frequencies`: by case, in their unit.
  RepeatedCases(std::uint16_t const* classes, std::int64_t const* frequencies)
      : classes_(classes), frequencies_(frequencies) {}

  std::size_t EntryOf(std::size_t index) const { return classes_[index]; }
  void Add(Entry* entry, std::size_t index) const { *entry += frequencies_[index]; }

 private:
  std::uint16_t const* classes_;
  std::int64_t const* frequencies_;
};

/// Cases of classes with weights beside their frequencies: a node has an entry for the frequency of
/// each class, and then one for the weight of each.
class WeightedCases {
 public:
  using Entry = std::int64_t;

  WeightedCases(std::uint16_t const* classes, std::size_t numClasses,
                FixedWeights const& frequencies, FixedWeights const& weights)
      : classes_(classes), numClasses_(numClasses), frequencies_(frequencies), weights_(weights) {}

  std::size_t EntryOf(std::size_t index) const { return classes_[index]; }
  void Add(Entry* entry, std::size_t index) const {
    entry[0] += frequencies_.Of(static_cast<std::uint32_t>(index));
    entry[numClasses_] += weights_.Of(static_cast<std::uint32_t>(index));
  }

 private:
  std::uint16_t const* classes_;
  std::size_t numClasses_;
  FixedWeights const& frequencies_;
  FixedWeights const& weights_;
};

/// Cases with numbers.
class NumberCases {
 public:
  using Entry = NumberSums;

  NumberCases(FixedNumbers const& numbers, FixedWeights const& frequencies,
              FixedWeights const& weights)
      : numbers_(numbers), frequencies_(frequencies), weights_(weights) {}

  std::size_t EntryOf(std::size_t /*index*/) const { return 0; }
  void Add(Entry* entry, std::size_t index) const {
    auto const number = static_cast<std::uint32_t>(index);
    entry->AddCase(frequencies_.Of(number), weights_.Of(number), numbers_.multiples[index]);
  }

 private:
  FixedNumbers const& numbers_;
  FixedWeights const& frequencies_;
  FixedWeights const& weights_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CHAID_COUNTED_CASES_H_
