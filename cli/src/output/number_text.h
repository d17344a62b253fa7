#ifndef TREE_CLI_SRC_OUTPUT_NUMBER_TEXT_H_
#define TREE_CLI_SRC_OUTPUT_NUMBER_TEXT_H_

#include <string>

// Numbers in the forms in which results show them, the same in every locale.

namespace tree::cli {

/// For people: up to seven significant digits.
std::string ShortNumber(double number);

/// With so many decimals.
std::string FixedNumber(double number, int decimals);

/// For programs: as short as it can be and still be read back as the same number.
std::string ExactNumber(double number);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_NUMBER_TEXT_H_
