#include "options/refusal.h"

#include "tree/grow/input_error.h"

namespace tree::cli {

void Refuse(char const* option, std::string const& why) {
  throw grow::InputError(std::string(option) + ": " + why);
}

std::string Quoted(std::string const& text) { return '"' + text + '"'; }

}  // namespace tree::cli
