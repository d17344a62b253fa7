#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "testing/failing_allocator.h"
#include "testing/sample_trees.h"
#include "testing/tree_comparison.h"
#include "tree/nodes.h"

// Every allocation of each operation is made to fail in turn: the node stays as it was, and nothing
// is lost.

namespace tree {
namespace {

using testing::CountLiveAllocations;
using testing::FirstDifference;
using testing::RichClassificationTree;
using testing::RichRegressionTree;
using testing::WithEveryAllocationFailing;

using Make = std::unique_ptr<NodeImp> (*)();
constexpr Make kMakers[] = {RichClassificationTree, RichRegressionTree};

// Runs `operation` on `node` with every allocation failing, and expects that each failure leaves
// the node as `expected`. Returns the number of failures.
template <class Operation>
long ExpectUnchangedByFailures(NodeImp& node, NodeImp const& expected, Operation operation) {
  return WithEveryAllocationFailing([&] {
    try {
      operation(node);
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(FirstDifference(node, expected), "");
      throw;
    }
  });
}

TEST(NodeImpAllocationFailure, LosesNothingWhenCloneFails) {
  for (Make const make : kMakers) {
    std::unique_ptr<NodeImp> const source = make();
    long const live = CountLiveAllocations();

    long const failures = WithEveryAllocationFailing([&source] {
      std::unique_ptr<NodeImp> const clone(source->Clone());
      EXPECT_EQ(FirstDifference(*clone, *source), "");
    });

    EXPECT_GT(failures, 20);
    EXPECT_EQ(CountLiveAllocations(), live);
    EXPECT_EQ(FirstDifference(*source, *make()), "");
  }
}

TEST(NodeImpAllocationFailure, LosesNothingWhenCopyConstructionFails) {
  std::unique_ptr<NodeImp> const source = RichClassificationTree();
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] { NodeImp const copy(*source); });

  EXPECT_GT(failures, 20);
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(NodeImpAllocationFailure, KeepsTargetAsItWasWhenAssignmentFails) {
  for (Make const makeTarget : kMakers) {
    for (Make const makeSource : kMakers) {
      std::unique_ptr<NodeImp> const before = makeTarget();
      std::unique_ptr<NodeImp> const source = makeSource();
      long const live = CountLiveAllocations();
      {
        std::unique_ptr<NodeImp> const target = makeTarget();
        long const failures = ExpectUnchangedByFailures(
            *target, *before, [&source](NodeImp& node) { node = *source; });

        EXPECT_GT(failures, 20);
        EXPECT_EQ(FirstDifference(*target, *source), "");
      }
      EXPECT_EQ(CountLiveAllocations(), live);
    }
  }
}

TEST(NodeImpAllocationFailure, KeepsNodeAsItWasWhenOperationFails) {
  struct Row {
    char const* name;
    void (*operation)(NodeImp&);
  };
  Row const rows[] = {
      {"number of predictors", [](NodeImp& node) { node.SetNumPredictors(50); }},
      {"number of predictor values", [](NodeImp& node) { node.SetNumPredictorValues(0, 50); }},
      {"predictor values",
       [](NodeImp& node) {
         double const values[50] = {};
         node.SetPredictorValues(0, values, 50);
       }},
      {"handle of competitor",
       [](NodeImp& node) { std::unique_ptr<SplitRule> const handle(node.GetCompetitor(0)); }},
      {"handle of surrogate",
       [](NodeImp& node) { std::unique_ptr<SplitRule> const handle(node.GetSurrogate(0)); }},
      {"order of children",
       [](NodeImp& node) {
         node.ReorderSiblings({1, 0});
       }},
      // Once these succeed, what the node held before belongs to the caller.
      {"number of children",
       [](NodeImp& node) {
         NodeImp* const children[] = {node.GetChildImp(0), node.GetChildImp(1)};
         node.SetNumChildren(9);
         for (NodeImp* const child : children) delete child;
       }},
      {"number of competitors",
       [](NodeImp& node) {
         SplitRuleImp* const rules[] = {node.GetCompetitorImp(0), node.GetCompetitorImp(1)};
         node.SetNumCompetitors(9);
         for (SplitRuleImp* const rule : rules) delete rule;
       }},
      {"number of surrogates",
       [](NodeImp& node) {
         SplitRuleImp* const rules[] = {node.GetSurrogateImp(0), node.GetSurrogateImp(1)};
         node.SetNumSurrogates(9);
         for (SplitRuleImp* const rule : rules) delete rule;
       }},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    std::unique_ptr<NodeImp> const before = RichClassificationTree();
    long const live = CountLiveAllocations();
    {
      std::unique_ptr<NodeImp> const node = RichClassificationTree();

      EXPECT_GE(ExpectUnchangedByFailures(*node, *before, row.operation), 1);
    }
    EXPECT_EQ(CountLiveAllocations(), live);
  }
}

TEST(NodeImpAllocationFailure, NeedsNoMemoryToRouteShrinkAndDelete) {
  std::unique_ptr<NodeImp> node = RichClassificationTree();
  double const values[] = {20.0, 1.6, 0.0, 0.0};
  int reached = -1;
  bool hasFailed = true;
  {
    testing::FailingAllocator const allocator(1, true);
    reached = static_cast<int>(node->DropObservationThroughTree(values, nullptr)->GetId());
    node->RemoveChild(0);
    node->RemoveChildren(true);
    node->Clean();
    node.reset();
    hasFailed = allocator.HasFailed();
  }
  EXPECT_FALSE(hasFailed);
  EXPECT_EQ(reached, 1);
}

}  // namespace
}  // namespace tree
