#ifndef EXAMPLES_PENGUINS_PLACEMENT_H_
#define EXAMPLES_PENGUINS_PLACEMENT_H_

#include <vector>

#include "penguins/penguin_table.h"
#include "tree/nodes.h"

// What sent a case to a child. Routing only says where a case goes; this asks the same rules in the
// same order to learn why.

namespace penguins {

enum class Means {
  kPrimaryRule,     // by the value of its predictor
  kMissingMapping,  // the primary rule says where missing values go
  kSurrogate,
  kDumbRule,
};

/// One step of a case on its way down.
struct Step {
  tree::NodeImp const* node;  // that the case leaves
  Means means;
  int surrogate;  // position of the surrogate that placed the case; -1 when none did
};

/// The way of a penguin from the root to its terminal node, which is not part of it.
std::vector<Step> WayDown(tree::NodeImp const& root, Penguin const& penguin);

/// Whether any step was made by these means.
bool Used(std::vector<Step> const& way, Means means);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_PLACEMENT_H_
