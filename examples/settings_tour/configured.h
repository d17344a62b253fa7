#ifndef TREE_EXAMPLES_SETTINGS_TOUR_CONFIGURED_H_
#define TREE_EXAMPLES_SETTINGS_TOUR_CONFIGURED_H_

// Each of the five kinds of settings, configured for one of the questions. No two kinds agree on a
// setting that both could have chosen, so that a copy shows where its values come from.

#include "tree/settings.h"

namespace settings_tour {

/// CART for the body mass.
tree::RCartSettingsImp ConfiguredRCart();

/// CART for the species, with priors and costs.
tree::CCartSettingsImp ConfiguredCCart();

/// CHAID for the body mass.
tree::RChaidSettingsImp ConfiguredRChaid();

/// CHAID for the weight class, with costs and a score per class.
tree::CChaidSettingsImp ConfiguredCChaid();

/// QUEST for the species, with priors and costs of its own.
tree::QuestSettingsImp ConfiguredQuest();

}  // namespace settings_tour

#endif  // TREE_EXAMPLES_SETTINGS_TOUR_CONFIGURED_H_
