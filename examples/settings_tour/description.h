#ifndef TREE_EXAMPLES_SETTINGS_TOUR_DESCRIPTION_H_
#define TREE_EXAMPLES_SETTINGS_TOUR_DESCRIPTION_H_

// Settings as text: a name and a value for everything that a kind of settings holds.

#include <string>
#include <vector>

#include "tree/settings.h"

namespace settings_tour {

/// One thing that settings hold. The same name means the same thing in every kind of settings.
struct Setting {
  std::string name;
  std::string value;
};

/// "R-CART", "C-CART", ...
std::string KindName(tree::AlgSettings const& settings);

/// All that `settings` hold: what every kind has first, then what is special about the kind.
std::vector<Setting> Describe(tree::AlgSettings const& settings);

/// A number in its shortest form, or "missing".
std::string Number(double number);

}  // namespace settings_tour

#endif  // TREE_EXAMPLES_SETTINGS_TOUR_DESCRIPTION_H_
