#ifndef EXAMPLES_PENGUINS_PENGUIN_SETTINGS_H_
#define EXAMPLES_PENGUINS_PENGUIN_SETTINGS_H_

#include <vector>

#include "penguins/penguin_table.h"
#include "tree/settings.h"

namespace penguins {

/// Settings of CART for the species by the five predictors. A species' prior is its share of the
/// data. Every mistake costs 1, but to miss a Chinstrap costs 3; the priors are altered by that.
/// There is no validation: the tree is judged by the cases that it was made from.
tree::CCartSettingsImp MakeSettings(std::vector<Penguin> const& penguins);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_PENGUIN_SETTINGS_H_
