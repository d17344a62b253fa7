#ifndef TREE_CLI_SRC_OPTIONS_OPTION_VALUE_H_
#define TREE_CLI_SRC_OPTIONS_OPTION_VALUE_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "options/options.h"

namespace tree::cli {

/// Which numbers an option takes.
struct NumberRange {
  double min;
  double max;
  bool isOpen;       ///< whether the ends themselves are refused
  char const* what;  ///< as in "is not a number above 0"
};

inline constexpr NumberRange kPercentage = {0.0, 100.0, false, "a number from 0 to 100"};

/// A word that an option takes, and what it means.
template <class T>
struct Choice {
  char const* word;
  T value;
};

/// What was given for an option, still as text. Every reading throws `UsageError` for a text that
/// it cannot read, with a message that names option and text.
class OptionValue {
 public:
  OptionValue(std::string option, std::string text)
      : option_(std::move(option)), text_(std::move(text)) {}

  std::string const& GetOption() const { return option_; }
  std::string const& GetText() const { return text_; }

  /// A whole number in decimal digits, from `min` to `max`, which is not named if it is the
  /// greatest that there is.
  template <class T>
  T WholeNumber(T min, T max) const;
  double Number(NumberRange const& range) const;
  /// What one of the words means.
  template <class T, std::size_t Count>
  T OneOf(Choice<T> const (&choices)[Count]) const {
    std::string words;
    for (Choice<T> const& choice : choices) {
      if (text_ == choice.word) return choice.value;
      if (!words.empty()) words += ", ";
      words += choice.word;
    }
    Refuse(Count == 1 ? "is not " + words : "is none of " + words);
  }
  /// Throws the error. `why`: begins with the verb.
  [[noreturn]] void Refuse(std::string const& why) const;

 private:
  std::string option_;
  std::string text_;
};

extern template int OptionValue::WholeNumber(int min, int max) const;
extern template long OptionValue::WholeNumber(long min, long max) const;

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_OPTION_VALUE_H_
