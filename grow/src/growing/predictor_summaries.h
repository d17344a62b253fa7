#ifndef TREE_GROW_SRC_GROWING_PREDICTOR_SUMMARIES_H_
#define TREE_GROW_SRC_GROWING_PREDICTOR_SUMMARIES_H_

#include <cstddef>
#include <vector>

#include "growing/case_lists.h"
#include "growing/node_sums.h"
#include "tree/nodes.h"

namespace tree::grow {

/// Stores in a node what its cases have of one predictor: the range of the values, whether some
/// are missing, and the categories of a nominal predictor that is used: one that is left out may
/// have very many. A predictor without any value has the range 0 to 0. For the root of growing.
void SummarisePredictor(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
                        std::size_t predictor, NodeImp& node);

/// The same for the children that the cases of a node `ranges` are about to be divided among.
/// `sums`: of each of them. The parent has its own summary.
void SummariseForChildren(TrainingData const& data, CaseLists const& lists,
                          NodeRanges const& ranges, std::size_t predictor,
                          ChildOfPlace const& childOf, std::vector<NodeSums> const& sums,
                          NodeImp& parent);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_PREDICTOR_SUMMARIES_H_
