#ifndef TREE_TREE_H_
#define TREE_TREE_H_

/// @file
/// Everything at once: the data model of decision trees. Programs that use a part of it include
/// that family's header.

/// @mainpage
/// The data model of decision trees, one header per family:
/// - values.h: variables, and sets of their values;
/// - split_rules.h: how a node divides cases among its children;
/// - nodes.h: the tree, the statistics of its nodes, and the way of a case (start here, with
///   `tree::NodeImp`);
/// - misclassification.h: priors, costs and scores of classes;
/// - settings.h: what a tree is grown with;
/// - results.h: what is reported about a finished tree, and the interface of growing algorithms;
/// - containers.h: containers of plain values, interfaces of lists;
/// - support.h: the missing value, which the library imports.
///
/// Words with one meaning. Of what a pointer points to: **new**, the caller deletes it; **taken**,
/// the object deletes it; **borrowed**, somebody else does; **copied**, it stays the caller's. Of
/// bad input: an operation *refuses* it (returns false and changes nothing), *ignores* it (changes
/// nothing, silently), *clamps* it (to what is said), or *requires* it not to come (undefined in a
/// release build; debug builds stop where they notice).

/// @namespace tree
/// The data model of decision trees: variables and sets of their values, split rules, nodes,
/// settings, the misclassification model, and what is reported about a finished tree.

#include "tree/containers.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"
#include "tree/results.h"
#include "tree/settings.h"
#include "tree/split_rules.h"
#include "tree/support.h"
#include "tree/values.h"

#endif  // TREE_TREE_H_
