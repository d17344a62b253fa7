#include "output/number_text.h"

#include <array>
#include <charconv>

namespace tree::cli {
namespace {

// The longest text is that of the greatest double with decimals.
using Text = std::array<char, 400>;

template <class... Format>
std::string TextOf(double number, Format... format) {
  Text text;
  double const unsignedZero = number == 0.0 ? 0.0 : number;
  auto const result =
      std::to_chars(text.data(), text.data() + text.size(), unsignedZero, format...);
  return {text.data(), result.ptr};
}

}  // namespace

std::string ShortNumber(double number) { return TextOf(number, std::chars_format::general, 7); }

std::string FixedNumber(double number, int decimals) {
  return TextOf(number, std::chars_format::fixed, decimals);
}

std::string ExactNumber(double number) { return TextOf(number); }

}  // namespace tree::cli
