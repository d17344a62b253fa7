#ifndef TREE_TREE_H_
#define TREE_TREE_H_

// Everything at once: the data model of decision trees. Programs that use a part of it include that
// family's header.

#include "tree/containers.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"
#include "tree/results.h"
#include "tree/settings.h"
#include "tree/split_rules.h"
#include "tree/support.h"
#include "tree/values.h"

#endif  // TREE_TREE_H_
