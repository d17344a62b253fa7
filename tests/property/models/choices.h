#ifndef TREE_TESTS_PROPERTY_MODELS_CHOICES_H_
#define TREE_TESTS_PROPERTY_MODELS_CHOICES_H_

#include <cstdint>
#include <span>
#include <vector>

namespace tree::testing {

/// Turns bytes into the choices of a random test: which operation comes next, on what, with which
/// numbers. The bytes come from RapidCheck or from a fuzzer, so both drive the same sequences. Once
/// they are used up every further choice is the first one, and loops on `Any()` end.
class Choices {
 public:
  /// `bytes`: **borrowed**.
  explicit Choices(std::span<std::uint8_t const> bytes) : bytes_(bytes) {}

  bool Any() const { return !bytes_.empty(); }
  /// 0 to `count` - 1; 0 for a count below 2. Requires `count` <= 256.
  int Below(int count);
  bool Flag() { return Below(2) == 1; }
  /// A double that tends to be awkward: NaN, infinities, -0.0, the missing value, limits of 32-bit
  /// conversion, any bit pattern; or one of a few multiples of 1/4 around 0, so that ties with an
  /// earlier one are common.
  double Value();
  /// As `Value()`, but never NaN.
  double Number();
  /// An int that tends to be awkward: the limits, or one of a few around 0.
  int Integer();
  /// A permutation of 0 to `count` - 1.
  std::vector<int> Permutation(int count);

 private:
  std::uint8_t Next();

  std::span<std::uint8_t const> bytes_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_CHOICES_H_
