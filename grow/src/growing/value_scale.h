#ifndef TREE_GROW_SRC_GROWING_VALUE_SCALE_H_
#define TREE_GROW_SRC_GROWING_VALUE_SCALE_H_

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tree::grow {

/// Maps the values of a predictor to others that are less crowded, without changing their order:
/// greater values have no lesser **marks**. Marks are proportional to the distance from an origin
/// up to a unit of it, and to its logarithm beyond. A **plain** scale leaves values as they are: it
/// is for predictors the values of which fill a good part of their range.
class ValueScale {
 public:
  /// Plain.
  ValueScale() = default;
  /// Requires a `unit` that is above 0 and normal, as one divided by it has to be.
  ValueScale(double origin, double unit) : origin_(origin), perUnit_(1.0 / unit) {}
  /// A scale for some of a predictor's finite values, which should reach from the least to the
  /// greatest one: the plain one, unless they are much more crowded on it than on another.
  static ValueScale For(std::vector<double> values);

  bool IsPlain() const { return perUnit_ == 0.0; }
  /// A finite number, even for an infinite value; any number for NaN. Requires a scale that is not
  /// plain. Deliberate: asks for nothing, so that several marks can be found at a time.
  double MarkOf(double value) const {
    // A number from 1 on, read as a whole one, is linear in itself between powers of two, and in
    // the exponent of these. Without the last bits that fits the digits of another number, where it
    // is put in place of those of `kZero`. No step of all this changes the order.
    constexpr unsigned int kNumLostBits = 11;
    constexpr double kZero = 0x1p52;
    constexpr std::uint64_t kOne = std::bit_cast<std::uint64_t>(1.0) >> kNumLostBits;
    double const distance = (value - origin_) * perUnit_;
    auto const bits = std::bit_cast<std::uint64_t>(1.0 + std::fabs(distance)) >> kNumLostBits;
    double const mark =
        std::bit_cast<double>(bits + (std::bit_cast<std::uint64_t>(kZero) - kOne)) - kZero;
    return std::copysign(mark, distance);
  }

 private:
  double origin_ = 0.0;
  double perUnit_ = 0.0;  // 0 if plain
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_VALUE_SCALE_H_
