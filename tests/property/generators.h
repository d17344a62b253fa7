#ifndef TREE_TESTS_PROPERTY_GENERATORS_H_
#define TREE_TESTS_PROPERTY_GENERATORS_H_

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <rapidcheck.h>

#include "property/models/choices.h"
#include "tree/support.h"

namespace tree::testing {

/// Bytes for `Choices`, up to some hundreds of them.
inline rc::Gen<std::vector<std::uint8_t>> Bytes() {
  return rc::gen::scale(6.0, rc::gen::arbitrary<std::vector<std::uint8_t>>());
}

/// Numbers of which many tie: multiples of 1/4 around 0, the extremes, the missing value.
inline rc::Gen<double> Numbers() {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  return rc::gen::weightedOneOf<double>(
      {{4, rc::gen::map(rc::gen::inRange(-16, 17), [](int quarters) { return quarters / 4.0; })},
       {1, rc::gen::arbitrary<double>()},
       {1, rc::gen::element(kInfinity, -kInfinity, -0.0, 1e300, -1e300, 4e9, 2147483647.5,
                            systemMissingValue())}});
}

/// As `Numbers()`, and NaN.
inline rc::Gen<double> Values() {
  return rc::gen::weightedOneOf<double>({{9, Numbers()}, {1, rc::gen::just(std::nan(""))}});
}

/// Runs a sequence of operations on chosen bytes.
template <class Sequence>
void RunOnBytes(Sequence sequence) {
  std::vector<std::uint8_t> const bytes = *Bytes();
  sequence(Choices(bytes));
}

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_GENERATORS_H_
