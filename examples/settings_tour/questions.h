#ifndef TREE_EXAMPLES_SETTINGS_TOUR_QUESTIONS_H_
#define TREE_EXAMPLES_SETTINGS_TOUR_QUESTIONS_H_

// Three questions about penguins, each as the variables that a tree for it is grown on: a target
// and seven predictors.

#include "tree/settings.h"

namespace settings_tour {

/// Which species is it? A nominal target.
tree::CoreSettingsImp SpeciesQuestion();

/// How many grams does it weigh? A continuous target; each row stands for a number of penguins.
tree::CoreSettingsImp BodyMassQuestion();

/// Is it light, middling or heavy? An ordinal target.
tree::CoreSettingsImp WeightClassQuestion();

/// The species again, from three measurements alone.
tree::CoreSettingsImp SpeciesByBillAndFlipper();

}  // namespace settings_tour

#endif  // TREE_EXAMPLES_SETTINGS_TOUR_QUESTIONS_H_
