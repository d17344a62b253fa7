#ifndef TREE_GROW_TESTS_TESTING_RANDOM_NUMBERS_H_
#define TREE_GROW_TESTS_TESTING_RANDOM_NUMBERS_H_

#include <cstdint>
#include <random>

namespace tree::grow {

/// Random whole numbers, the same for a seed on every machine.
class RandomNumbers {
 public:
  explicit RandomNumbers(std::uint32_t seed) : engine_(seed) {}

  /// From 0 to `count` - 1.
  std::uint32_t Below(std::uint32_t count) { return static_cast<std::uint32_t>(engine_()) % count; }
  /// `step` times a number from 1 to `count`.
  double Multiple(double step, std::uint32_t count) { return step * (1.0 + Below(count)); }

 private:
  std::mt19937 engine_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_TESTS_TESTING_RANDOM_NUMBERS_H_
