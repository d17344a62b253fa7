#ifndef TREE_CLI_SRC_OPTIONS_REFUSAL_H_
#define TREE_CLI_SRC_OPTIONS_REFUSAL_H_

#include <string>

namespace tree::cli {

/// Throws `InputError` for an option that does not fit the data. `why`: a sentence without its end.
[[noreturn]] void Refuse(char const* option, std::string const& why);

/// A name within a message.
std::string Quoted(std::string const& text);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_REFUSAL_H_
