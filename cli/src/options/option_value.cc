#include "options/option_value.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace tree::cli {
namespace {

/// Whether all of the text is a number that the type can hold.
template <class T>
bool ReadAll(std::string_view text, T& number) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

template <class T>
T OptionValue::WholeNumber(T min, T max) const {
  T number = 0;
  if (ReadAll(text_, number) && number >= min && number <= max) return number;
  bool const isBounded = max < std::numeric_limits<T>::max();
  Refuse("is not a whole number " +
         (isBounded ? "from " + std::to_string(min) + " to " + std::to_string(max)
                    : "of at least " + std::to_string(min)));
}

template int OptionValue::WholeNumber(int min, int max) const;
template long OptionValue::WholeNumber(long min, long max) const;

double OptionValue::Number(NumberRange const& range) const {
  double number = 0.0;
  if (ReadAll(text_, number) && std::isfinite(number)) {
    bool const isInside = range.isOpen ? number > range.min && number < range.max
                                       : number >= range.min && number <= range.max;
    if (isInside) return number;
  }
  Refuse(std::string("is not ") + range.what);
}

void OptionValue::Refuse(std::string const& why) const {
  throw UsageError(option_ + ": value \"" + text_ + "\" " + why);
}

}  // namespace tree::cli
