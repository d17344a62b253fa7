#ifndef TREE_GROW_SRC_GROWING_VALUE_CODES_H_
#define TREE_GROW_SRC_GROWING_VALUE_CODES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "growing/sorted_cases.h"
#include "growing/workers.h"
#include "tree/grow/data_set.h"

namespace tree::grow {

/// Small numbers for the values of a predictor in all cases.
struct ValueCodes {
  static constexpr std::uint16_t kMissing = 0xFFFF;

  std::vector<std::uint16_t> codes;  ///< by case: positions in `values`, or `kMissing`
  std::vector<double> values;        ///< what the codes stand for, ascending
};

/// Codes the different values, if there are no more than `maxNumValues`, which is at most 65535.
/// `rows`: of the cases; empty for the first `numCases`. Stops at the first value too many, and
/// takes a few nanoseconds for each case otherwise: nothing is sorted.
std::optional<ValueCodes> CodeFewValues(Column const& column, std::span<std::size_t const> rows,
                                        std::size_t numCases, std::size_t maxNumValues,
                                        Workers& workers);

/// Codes the different values of sorted cases. Values beyond the 65535th share the code of missing
/// ones: a predictor with so many cannot be used as a coded one. `values`: by index, as they were
/// sorted; `numCases`: of all cases, with those that have no value.
ValueCodes CodeSortedValues(std::vector<SortedCase> const& sorted, double const* values,
                            std::size_t numCases, Workers& workers);

/// Codes intervals that hold about equally many cases each, at most `numIntervals` of them. Each
/// ends with a value of a case, which is what its code stands for: the one where the cases up to it
/// first reach i / numIntervals of all. Intervals that would be empty, since many cases share a
/// value, are left out. `frequencies`: how many cases each stands for; may be empty.
ValueCodes CodeIntervals(std::vector<SortedCase> const& sorted, double const* values,
                         std::vector<std::int64_t> const& frequencies, std::size_t numCases,
                         std::size_t numIntervals, Workers& workers);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_VALUE_CODES_H_
