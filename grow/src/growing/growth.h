#ifndef TREE_GROW_SRC_GROWING_GROWTH_H_
#define TREE_GROW_SRC_GROWING_GROWTH_H_

#include <cstddef>
#include <span>
#include <vector>

#include "growing/case_lists.h"
#include "growing/node_statistics.h"
#include "growing/split_method.h"
#include "growing/tool_box.h"
#include "growing/work_memory.h"
#include "growing/workers.h"
#include "tree/nodes.h"

namespace tree::grow {

/// When a node is not split any further.
struct GrowthLimits {
  int maxLevels = 0;          ///< below the node that growing begins at
  double minNodeSize = 0.0;   ///< in cases
  double minChildSize = 1.0;  ///< in cases
};

/// Grows a tree downwards, level by level: finds the splits of a block of nodes, divides their
/// cases, and makes their children. Within a block the work is shared among threads predictor by
/// predictor; what is found does not depend on how.
class Growth {
 public:
  /// `nextId`: the id of the next new node, which is counted up. All **borrowed**.
  Growth(TrainingData const& data, CaseLists& lists, SplitMethod& method,
         NodeStatistics const& statistics, GrowthLimits const& limits, unsigned int& nextId,
         Workers& workers);

  /// Makes `root` the node of all cases of the lists: statistics and summaries. Those of predictors
  /// that are held in rows come when it grows.
  void PlantRoot(NodeImp& root);
  /// Grows below the root until the limits or the method end every branch. The root may have a
  /// primary rule that it is to be split by, with competitors; it must have no children.
  void Grow();
  /// The splits that the root could have; none where it is pure or too small, whatever its depth.
  RuleList FindRootSplits();

  Growth(Growth const&) = delete;
  Growth& operator=(Growth const&) = delete;

 private:
  std::size_t SizeOfBlock(std::span<GrowingNode const> nodes) const;
  void GrowBlock(std::span<GrowingNode const> block, std::vector<GrowingNode>& next);
  void StoreRules(std::span<GrowingNode const> block);
  void PlaceCases(std::span<GrowingNode const> block);
  void MakeChildren(std::span<GrowingNode const> block, std::vector<GrowingNode>& next);
  bool IsOpen(GrowingNode const& node) const;
  bool MayBeSplit(GrowingNode const& node) const;
  void ReportLevel(int level, std::size_t numOpen);

  TrainingData const& data_;
  CaseLists& lists_;
  SplitMethod& method_;
  NodeStatistics const& statistics_;
  GrowthLimits limits_;
  unsigned int& nextId_;
  Workers& workers_;
  PollFunction poll_ = [this] { workers_.Poll(); };
  GrowingNode root_;
  ChildOfPlace childOf_;
  ToolBox<WorkMemory<SortedCase>> scratch_;  // for dividing predictors
  std::size_t numFinished_ = 0;              // cases in nodes that will not be split
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_GROWTH_H_
