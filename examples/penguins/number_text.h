#ifndef EXAMPLES_PENGUINS_NUMBER_TEXT_H_
#define EXAMPLES_PENGUINS_NUMBER_TEXT_H_

#include <string>

// Numbers in the forms in which the reports show them.

namespace penguins {

/// With as many digits as it needs, at most six.
std::string Short(double number);

/// With so many decimals.
std::string Fixed(double number, int decimals);

/// With one decimal and a percent sign. `percent`: in [0, 100].
std::string Percent(double percent);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_NUMBER_TEXT_H_
