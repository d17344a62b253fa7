#ifndef TREE_TESTS_TESTING_ABORTING_ALGORITHM_H_
#define TREE_TESTS_TESTING_ABORTING_ALGORITHM_H_

#include <cstdlib>
#include <type_traits>
#include <vector>

#include "tree/results.h"

// Implementations of the operations of an algorithm, one at a time, that stop the program: for
// tests of which operations there are and which ones the library calls.

namespace tree::testing {

/// `Base` with its pure operation number `kOperation` implemented, in the order of the table of
/// virtual operations, from 0.
template <int kOperation, class Base>
class Aborting;

#define TREE_ABORTING_OPERATION(number, signature) \
  template <class Base>                            \
  class Aborting<number, Base> : public Base {     \
   public:                                         \
    signature noexcept override { std::abort(); }  \
  }

TREE_ABORTING_OPERATION(0, Node const* GetRootNode() const);
TREE_ABORTING_OPERATION(1, AlgSettings const* GetSettings() const);
TREE_ABORTING_OPERATION(2, bool IsClassificationTree() const);
TREE_ABORTING_OPERATION(3, TreeStatisticsImp const* GetStatistics() const);
TREE_ABORTING_OPERATION(4, Node const* FindNode(unsigned int /*id*/) const);
TREE_ABORTING_OPERATION(5, int GetNumNodes(NodeSelection /*selection*/) const);
TREE_ABORTING_OPERATION(6, GainsIntf* MakeGains(GainsSettings const& /*settings*/) const);
TREE_ABORTING_OPERATION(7, bool Grow());
TREE_ABORTING_OPERATION(8, bool GrowNode(unsigned int /*nodeId*/, int /*numLevels*/));
TREE_ABORTING_OPERATION(9, bool FindCandidateSplits(unsigned int /*nodeId*/,
                                                    std::vector<SplitRule>* /*candidates*/));
TREE_ABORTING_OPERATION(10, bool ApplySplit(unsigned int /*nodeId*/, SplitRule const& /*rule*/));
TREE_ABORTING_OPERATION(11, bool PruneNode(unsigned int /*nodeId*/));
TREE_ABORTING_OPERATION(12, bool Prune());
TREE_ABORTING_OPERATION(13, bool GetPruningSequence(std::vector<PruningStep>* /*steps*/));
TREE_ABORTING_OPERATION(14, bool Validate());
TREE_ABORTING_OPERATION(15, bool SetTree(NodeImp* /*root*/));
TREE_ABORTING_OPERATION(16, NodeImp const* GetTree() const);
TREE_ABORTING_OPERATION(17, void SetProgressListener(ProgressListener* /*listener*/));
TREE_ABORTING_OPERATION(18, AlgorithmFailure GetFailure() const);
TREE_ABORTING_OPERATION(19, char const* GetFailureMessage() const);

#undef TREE_ABORTING_OPERATION

/// The numbers of pure operations of `TreeAlgorithmBase`, and of `TreeAlgorithm` with them.
constexpr int kNumBaseOperations = 7;
constexpr int kNumOperations = 20;

template <class Base, int kCount, int kOmitted>
struct AbortingUpTo {
  using Rest = typename AbortingUpTo<Base, kCount - 1, kOmitted>::Type;
  using Type = std::conditional_t<kCount - 1 == kOmitted, Rest, Aborting<kCount - 1, Rest>>;
};

template <class Base, int kOmitted>
struct AbortingUpTo<Base, 0, kOmitted> {
  using Type = Base;
};

/// `Base` with its first `kCount` operations implemented, but not number `kOmitted`.
template <class Base, int kCount, int kOmitted = -1>
using AbortingAlgorithm = typename AbortingUpTo<Base, kCount, kOmitted>::Type;

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_ABORTING_ALGORITHM_H_
