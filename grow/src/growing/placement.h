#ifndef TREE_GROW_SRC_GROWING_PLACEMENT_H_
#define TREE_GROW_SRC_GROWING_PLACEMENT_H_

#include "growing/case_lists.h"
#include "tree/nodes.h"
#include "tree/split_rules.h"

namespace tree::grow {

/// Says for each case of a node which child the rule sends it to; `kNoChild` where it sends it
/// nowhere.
void PlaceByRule(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                 SplitRuleImp const& rule, ChildOfPlace& childOf);

/// Makes the dumb rule of a primary rule: the child that gets the most weight of the cases that the
/// rule places, the first of equal ones, with its share of that weight. None where no case is
/// placed.
void SetDumbRule(CaseLists const& lists, NodeRanges const& node, ChildOfPlace const& childOf,
                 SplitRuleImp& rule);

/// Sends the cases that the primary rule has placed nowhere the way that routing sends them: by the
/// surrogates of the node in order, and at last by the dumb rule.
void PlaceRest(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
               NodeImp const& node, ChildOfPlace& childOf);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_PLACEMENT_H_
