#ifndef TREE_GROW_SRC_GROWING_FIXED_POINT_H_
#define TREE_GROW_SRC_GROWING_FIXED_POINT_H_

#include <cstdint>
#include <functional>
#include <vector>

namespace tree::grow {

/// What takes long calls it now and then; it ends that by throwing.
using PollFunction = std::function<void()>;
/// Of those who wait for the end.
inline void NoPoll() {}

/// Wide enough for sums of weighted numbers, and of squares.
__extension__ using WideInteger = __int128;

/// Weights of cases as whole multiples of a unit. Sums of whole numbers are exact, so they do not
/// depend on the order of the cases: equal divisions of a node have equal improvements whichever
/// predictor makes them, and no shuffling of the cases and no number of threads changes a tree.
struct FixedWeights {
  std::vector<std::int64_t> multiples;  ///< by case; empty when each case weighs 1
  double unit = 1.0;                    ///< 1 where all weights are whole numbers

  std::int64_t Of(std::uint32_t index) const { return multiples.empty() ? 1 : multiples[index]; }
};

/// Weights as multiples of 1, where all are whole numbers, or else of the smallest power of two
/// that keeps their sum, in units, within 2^52 (and so a whole double): the greatest relative error
/// of a sum is then 2^-53 times the number of cases. `weights`: above 0 and finite; may be empty.
FixedWeights FixWeights(std::vector<double> const& weights, PollFunction const& poll = NoPoll);

/// Numbers of cases as whole multiples of a power of two from a centre, for the same reason.
struct FixedNumbers {
  std::vector<std::int64_t> multiples;  ///< by case
  double centre = 0.0;                  ///< the middle of the range of the numbers
  double unit = 1.0;                    ///< a power of two

  double ValueOf(double multiple) const { return centre + multiple * unit; }
};

/// `values`: finite, one per case, with their `weights`. The unit is the smallest power of two with
/// which the sum of all cases, or of all that they stand for where weights are whole numbers, stays
/// below 2^61: for a million cases, the error of a value is less than 2^-41 of the range.
FixedNumbers FixNumbers(std::vector<double> const& values, FixedWeights const& weights,
                        PollFunction const& poll = NoPoll);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_FIXED_POINT_H_
