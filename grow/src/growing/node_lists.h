#ifndef TREE_GROW_SRC_GROWING_NODE_LISTS_H_
#define TREE_GROW_SRC_GROWING_NODE_LISTS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/ranked_predictor.h"

namespace tree::grow {

/// A case, by its index in the sample, with the category code that it has in one nominal predictor.
struct CodedCase {
  std::uint32_t code;
  std::uint32_t index;
};

/// The cases of every node of a tree that is being grown. There is one list of all cases, and one
/// per predictor of those that have a value of it; a node is a range of each. Splitting a node puts
/// its ranges in order of children, and each child's part of a list keeps the order of the list:
/// ordered predictors are sorted once for the whole tree, and all nodes together take the memory of
/// the root.
class NodeLists {
 public:
  /// A part of one list.
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;

    std::size_t Size() const { return end - begin; }
  };
  /// The parts of one node.
  struct Node {
    Range all;                       ///< of the list of all cases
    std::vector<Range> byPredictor;  ///< of the list of each predictor
  };

  /// Of a case that goes to no child.
  static constexpr int kNowhere = -1;

  /// The lists of the root, with cases 0 to `numCases` - 1 and no predictors.
  explicit NodeLists(std::size_t numCases);
  /// Adds an ordered predictor. `cases`: **taken**, in order of rank. Gives its position. To be
  /// called before the root is split.
  std::size_t AddOrdered(std::vector<RankedCase> cases);
  /// Adds a nominal predictor. `cases`: **taken**. Gives its position, as above.
  std::size_t AddNominal(std::vector<CodedCase> cases);

  /// The root, which has everything.
  Node MakeRoot() const;
  /// All cases of a node.
  std::span<std::uint32_t const> Cases(Node const& node) const;
  /// The cases of a node with a value of the ordered predictor, in order of rank.
  std::span<RankedCase const> Ordered(Node const& node, std::size_t predictor) const;
  /// The cases of a node with a value of the nominal predictor.
  std::span<CodedCase const> Nominal(Node const& node, std::size_t predictor) const;

  /// Divides a node among children, whose parts come to lie in order of position; those of cases
  /// that go nowhere come last, and belong to no child. `childOf`: position of the child of each
  /// case, by index, from 0 to `numChildren` - 1, or `kNowhere`; read for cases of the node only.
  /// Ends what was borrowed of the node. Linear in the node's cases times the predictors.
  std::vector<Node> Divide(Node const& node, std::vector<int> const& childOf, int numChildren);

 private:
  struct List {
    std::vector<RankedCase> ordered;
    std::vector<CodedCase> nominal;  // one of the two is empty
  };

  std::vector<std::uint32_t> all_;
  std::vector<List> predictors_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_NODE_LISTS_H_
