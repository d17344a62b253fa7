#ifndef TREE_GROW_SRC_CASE_ROLES_H_
#define TREE_GROW_SRC_CASE_ROLES_H_

#include "tree/grow/data_set.h"

namespace tree::grow {

/// Throws `InputError` unless the columns exist and each plays at most one part.
void CheckRoles(DataSet const& data, CaseRoles const& roles);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CASE_ROLES_H_
