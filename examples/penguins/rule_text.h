#ifndef EXAMPLES_PENGUINS_RULE_TEXT_H_
#define EXAMPLES_PENGUINS_RULE_TEXT_H_

#include <string>
#include <string_view>

#include "tree/nodes.h"
#include "tree/split_rules.h"

// Rules in words.

namespace penguins {

/// The column that the rule tests.
std::string_view PredictorName(tree::SplitRule const& rule);

/// Which values of its predictor the rule sends to the child, as `<= 4525` or `is Dream or
/// missing`.
std::string Values(tree::SplitRule const& rule, int child);

/// What sends cases to the node, as `body_mass_g <= 4525`; `all penguins` for the root.
std::string Condition(tree::Node const& node);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_RULE_TEXT_H_
