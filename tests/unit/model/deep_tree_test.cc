#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "testing/failing_allocator.h"
#include "testing/small_stack.h"
#include "testing/watched.h"
#include "tree/nodes.h"
#include "tree/support.h"

// A tree may be as deep as memory allows. Each test works on a chain of a million nodes in a thread
// whose stack is so small that an operation which recurs by depth dies long before its end.

namespace tree {
namespace {

using testing::RunOnSmallStack;

constexpr int kDepth = 1'000'000;
// For what is done several times; three bytes of stack per node would be too many.
constexpr int kStillDeep = 100'000;

// The id of the nodes beside a chain.
constexpr unsigned int kBeside = 0xFFFFFFFF;

// A rule that sends every value of predictor 0 but the missing one to `child`.
SplitRuleImp* NewRuleToChild(int child) {
  auto rule = std::make_unique<OSplitRule>(systemMissingValue(), 0);
  rule->AddMappedValues(OValueSet());
  rule->ReorderMappings({child});
  return rule.release();
}

// Grows a chain of `depth` nodes, with ids from 0 at `top`, below which every node has
// `numChildren` children and the chain goes on in child `position`.
void GrowChain(NodeImp& top, int depth, int numChildren = 1, int position = 0) {
  NodeImp* node = &top;
  for (int level = 1; level < depth; ++level) {
    if (node->GetNumCompetitors() == 0) node->SetNumCompetitors(1);
    node->SetCompetitor(0, NewRuleToChild(position));
    node->SetNumChildren(numChildren);
    for (int child = 0; child < numChildren; ++child) {
      auto* const grown = new NodeImp;
      grown->SetId(child == position ? static_cast<unsigned int>(level) : kBeside);
      node->SetChild(static_cast<unsigned int>(child), grown);
    }
    node = node->GetChildImp(static_cast<unsigned int>(position));
  }
}

std::unique_ptr<NodeImp> Chain(int depth) {
  auto top = std::make_unique<NodeImp>();
  GrowChain(*top, depth);
  return top;
}

// Counts the nodes, expecting that they are a chain with the ids that it was grown with.
int CountChain(Node const& top) {
  int count = 0;
  bool idsInOrder = true;
  bool parentsRight = true;
  Node const* parent = nullptr;
  for (Node const* node = &top; node != nullptr; node = node->GetChild(0)) {
    idsInOrder = idsInOrder && node->GetId() == static_cast<unsigned int>(count);
    parentsRight = parentsRight && (parent == nullptr || node->GetParent() == parent);
    parent = node;
    ++count;
  }
  EXPECT_TRUE(idsInOrder);
  EXPECT_TRUE(parentsRight);
  return count;
}

TEST(DeepTree, RoutesCaseToItsEnd) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const chain = Chain(kDepth);
    double const value = 1.0;

    NodeImp const* const end = chain->DropObservationThroughTree(&value, nullptr);

    EXPECT_EQ(end->GetId(), kDepth - 1u);
    EXPECT_EQ(chain->DropObservationThroughTree(&value, end), end);
  }));
}

TEST(DeepTree, IsTraversed) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const chain = Chain(kDepth);
    PrefixNodeIterator iterator(chain.get());
    int count = 0;
    bool idsInOrder = true;

    while (Node const* const node = iterator.Next()) {
      idsInOrder = idsInOrder && node->GetId() == static_cast<unsigned int>(count);
      ++count;
    }

    EXPECT_EQ(count, kDepth);
    EXPECT_TRUE(idsInOrder);
    EXPECT_EQ(iterator.HasMore(), 1);
  }));
}

TEST(DeepTree, IsCloned) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> chain = Chain(kDepth);

    std::unique_ptr<NodeImp> const clone(chain->Clone());
    chain.reset();

    EXPECT_EQ(CountChain(*clone), kDepth);
    double const value = 1.0;
    EXPECT_EQ(clone->DropObservationThroughTree(&value, nullptr)->GetId(), kDepth - 1u);
  }));
}

TEST(DeepTree, IsAssignedOverAnother) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const source = Chain(kDepth);
    std::unique_ptr<NodeImp> const target = Chain(kDepth / 2);

    *target = *source;

    EXPECT_EQ(CountChain(*target), kDepth);
    EXPECT_EQ(CountChain(*source), kDepth);
  }));
}

TEST(DeepTree, IsPrunedBack) {
  long const live = testing::CountLiveAllocations();
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const chain = Chain(kDepth);

    chain->RemoveChildren(true);
    EXPECT_EQ(chain->GetNumChildren(), 0);
    EXPECT_EQ(chain->GetNumCompetitors(), 1);

    GrowChain(*chain, kStillDeep);
    chain->RemoveChild(0);
    EXPECT_EQ(chain->GetNumChildren(), 0);

    GrowChain(*chain, kStillDeep);
    chain->Clean();
    EXPECT_EQ(chain->GetNumChildren(), 0);
  }));
  EXPECT_EQ(testing::CountLiveAllocations(), live);
}

TEST(DeepTree, IsDeletedNodeByNode) {
  ASSERT_TRUE(RunOnSmallStack([] {
    int deaths = 0;
    {
      auto top = std::make_unique<testing::Watched<NodeImp>>(&deaths);
      NodeImp* node = top.get();
      for (int level = 1; level < kDepth; ++level) {
        node->SetNumChildren(1);
        node->SetChild(0, new testing::Watched<NodeImp>(&deaths));
        node = node->GetChildImp(0);
      }
      EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, kDepth);
  }));
}

TEST(DeepTree, ClimbsToItsRootForTheShareOfItsEnd) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const chain = Chain(kDepth);
    double const value = 1.0;
    NodeImp const* const end = chain->DropObservationThroughTree(&value, nullptr);
    NodeImp* last = chain.get();
    while (last != end) last = last->GetChildImp(0);
    for (NodeImp* const node : {chain.get(), last}) {
      auto info = std::make_unique<RegInfoImp>();
      info->SetCount(node == last ? 3.0 : 12.0);
      node->SetRegInfo(info.release(), TrainingSample);
    }

    EXPECT_EQ(last->GetPercentageNodeSize(TrainingSample), 0.25);
  }));
}

TEST(DeepTree, HandlesChainInWhateverChild) {
  for (int const position : {0, 1, 2}) {
    SCOPED_TRACE(position);
    long const live = testing::CountLiveAllocations();
    ASSERT_TRUE(RunOnSmallStack([position] {
      auto root = std::make_unique<NodeImp>();
      GrowChain(*root, kStillDeep, 3, position);

      std::unique_ptr<NodeImp> const clone(root->Clone());
      root.reset();

      double const value = 1.0;
      EXPECT_EQ(clone->DropObservationThroughTree(&value, nullptr)->GetId(), kStillDeep - 1u);
      int count = 0;
      PrefixNodeIterator iterator(clone.get());
      while (iterator.Next() != nullptr) ++count;
      EXPECT_EQ(count, 1 + 3 * (kStillDeep - 1));
      EXPECT_TRUE(clone->RemoveChildren(false));
    }));
    EXPECT_EQ(testing::CountLiveAllocations(), live);
  }
}

TEST(DeepTree, IsLeftAsItWasWhenMemoryRunsOutHalfWay) {
  ASSERT_TRUE(RunOnSmallStack([] {
    std::unique_ptr<NodeImp> const source = Chain(kDepth);
    std::unique_ptr<NodeImp> const target = Chain(3);
    long const live = testing::CountLiveAllocations();
    bool thrown = false;

    {
      // Each node takes several allocations, so this is far down the chain, and not at its end.
      testing::FailingAllocator const allocator(kDepth, true);
      try {
        *target = *source;
      } catch (std::bad_alloc const&) {
        thrown = true;
      }
    }

    EXPECT_TRUE(thrown);
    EXPECT_EQ(testing::CountLiveAllocations(), live);
    EXPECT_EQ(CountChain(*target), 3);
  }));
}

}  // namespace
}  // namespace tree
