#include "options/help_formatter.h"

#include <cstddef>
#include <sstream>

namespace tree::cli {
namespace {

constexpr std::size_t kLineLength = 98;
constexpr std::size_t kIndent = 29;  // of what options do

}  // namespace

std::string HelpFormatter::make_usage(CLI::App const* /*app*/, std::string name) const {
  return "Usage: " + name + " [OPTION...] --target COLUMN FILE\n";
}

std::string HelpFormatter::make_group(std::string group, bool isPositional,
                                      std::vector<CLI::Option const*> options) const {
  std::string text = (isPositional ? "\n" : "") + group + ":\n";
  for (CLI::Option const* const option : options) text += make_option(option, isPositional);
  return text + (isPositional ? "\n" : "");
}

std::string HelpFormatter::make_option(CLI::Option const* option, bool isPositional) const {
  std::string line = "  " + option->get_name(isPositional, !isPositional);
  bool const hasValue = option->get_type_size() != 0 && !isPositional;
  if (hasValue) line += ' ' + option->get_type_name();

  std::string text = option->get_description();
  if (!option->get_default_str().empty()) text += " [" + option->get_default_str() + ']';

  std::string result;
  bool isFirstWord = true;
  std::istringstream words(text);
  for (std::string word; words >> word; isFirstWord = false) {
    bool const breaks =
        isFirstWord ? line.size() + 1 > kIndent : line.size() + 1 + word.size() > kLineLength;
    if (breaks) {
      result += line + '\n';
      line.clear();
    }
    if (line.size() < kIndent) {
      line.resize(kIndent, ' ');
    } else {
      line += ' ';
    }
    line += word;
  }
  return result + line + '\n';
}

}  // namespace tree::cli
