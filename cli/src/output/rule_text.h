#ifndef TREE_CLI_SRC_OUTPUT_RULE_TEXT_H_
#define TREE_CLI_SRC_OUTPUT_RULE_TEXT_H_

#include <string>
#include <vector>

#include "output/names.h"
#include "tree/nodes.h"
#include "tree/split_rules.h"

// Rules in words.

namespace tree::cli {

/// Which values of a predictor go to a child: how they are compared, as `<=`, and with what. Values
/// between two cut points have two comparisons, categories have one with all of them.
struct Comparison {
  std::string sign;
  std::vector<std::string> values;  ///< not yet escaped for where they will stand
};
std::vector<Comparison> ComparisonsOf(SplitRuleImp const& rule, int child, TreeNames const& names);

/// The same as text, as `<= 206.5`, `= Dream,Torgersen` or `> 2 and <= 7`.
std::string ValuesText(SplitRuleImp const& rule, int child, TreeNames const& names);

/// The name of the predictor that the rule asks for.
std::string const& PredictorName(SplitRuleImp const& rule, TreeNames const& names);

/// Where a node stands among the children of its parent. Requires a parent.
int PositionInParent(Node const& node);

/// What sends cases to a node, as `flipper <= 206.5`; `root` for the root.
std::string ConditionText(Node const& node, TreeNames const& names);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_RULE_TEXT_H_
