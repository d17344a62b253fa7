#include "property/models/choices.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "tree/support.h"

namespace tree::testing {

namespace {

using Limits = std::numeric_limits<double>;

std::array const kAwkward = {Limits::quiet_NaN(),
                             Limits::infinity(),
                             -Limits::infinity(),
                             -0.0,
                             systemMissingValue(),
                             Limits::max(),
                             Limits::denorm_min(),
                             Limits::epsilon(),
                             1e-12,
                             1e300,
                             -1e300,
                             2147483647.0,
                             2147483647.5,
                             2147483648.0,
                             -2147483648.5,
                             -2147483649.0,
                             4e9,
                             0x1p53};

// The bytes below twice this number stand for numbers of a grid around 0, those after them for the
// awkward ones.
constexpr int kGrid = 32;
constexpr int kRawBytes = 255;

using IntLimits = std::numeric_limits<int>;

std::array const kAwkwardIntegers = {IntLimits::min(),     IntLimits::max(), IntLimits::min() + 1,
                                     IntLimits::max() - 1, -1000000,         1000000};

}  // namespace

std::uint8_t Choices::Next() {
  if (bytes_.empty()) return 0;
  std::uint8_t const next = bytes_.front();
  bytes_ = bytes_.subspan(1);
  return next;
}

int Choices::Below(int count) { return count < 2 ? 0 : Next() % count; }

double Choices::Value() {
  int const choice = Next();
  if (choice == kRawBytes) {
    std::uint64_t bits = 0;
    for (int byte = 0; byte < 8; ++byte) bits = bits << 8 | Next();
    return std::bit_cast<double>(bits);
  }
  int const awkward = choice - 2 * kGrid;
  if (awkward >= 0 && static_cast<std::size_t>(awkward) < kAwkward.size()) {
    return kAwkward[static_cast<std::size_t>(awkward)];
  }
  return (choice % kGrid - kGrid / 4) / 4.0;
}

double Choices::Number() {
  double const value = Value();
  return std::isnan(value) ? 0.0 : value;
}

int Choices::Integer() {
  int const choice = Next();
  int const awkward = choice - 2 * kGrid;
  if (awkward >= 0 && static_cast<std::size_t>(awkward) < kAwkwardIntegers.size()) {
    return kAwkwardIntegers[static_cast<std::size_t>(awkward)];
  }
  return choice % kGrid - kGrid / 4;
}

std::vector<int> Choices::Permutation(int count) {
  std::vector<int> order(static_cast<std::size_t>(count));
  std::iota(order.begin(), order.end(), 0);
  for (std::size_t left = order.size(); left > 1; --left) {
    std::swap(order[left - 1], order[static_cast<std::size_t>(Below(static_cast<int>(left)))]);
  }
  return order;
}

}  // namespace tree::testing
