#ifndef TREE_TESTS_PROPERTY_MODELS_AGREE_H_
#define TREE_TESTS_PROPERTY_MODELS_AGREE_H_

#include <cmath>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <type_traits>

namespace tree::testing {

/// Thrown where the library and its model differ. RapidCheck reports and shrinks it, a fuzzer stops
/// at it.
class Mismatch : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// Equal, or both NaN.
template <class T>
bool Same(T const& a, T const& b) {
  if constexpr (std::is_floating_point_v<T>) {
    if (std::isnan(a) && std::isnan(b)) return true;
  }
  return a == b;
}

/// Throws `Mismatch` unless `actual` (the library's answer) is the same as `expected` (the
/// model's). `what`: the operation asked.
template <class T>
void Agree(std::string_view what, T const& actual, std::type_identity_t<T> const& expected) {
  if (Same(actual, expected)) return;
  std::ostringstream message;
  message.precision(17);
  message << what << ": the library says " << actual << ", the model " << expected;
  throw Mismatch(message.str());
}

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_AGREE_H_
