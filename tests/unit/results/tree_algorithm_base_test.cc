#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "testing/aborting_algorithm.h"
#include "testing/fake_algorithm.h"
#include "testing/tree_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/results.h"

namespace tree {
namespace {

using testing::AbortingAlgorithm;
using testing::ANode;
using testing::FakeAlgorithm;
using testing::kNumBaseOperations;

// The operations that `TreeAlgorithmBase` asks of an implementation are these seven, and each one.
template <int... kOmitted>
constexpr bool EachIsPure(std::integer_sequence<int, kOmitted...> /*operations*/) {
  return (std::is_abstract_v<AbortingAlgorithm<TreeAlgorithmBase, kNumBaseOperations, kOmitted>> &&
          ...);
}
static_assert(kNumBaseOperations == 7);
static_assert(!std::is_abstract_v<AbortingAlgorithm<TreeAlgorithmBase, kNumBaseOperations>>);
static_assert(EachIsPure(std::make_integer_sequence<int, kNumBaseOperations>()));

static_assert(std::has_virtual_destructor_v<TreeAlgorithmBase>);
static_assert(AllNodes == 0);
static_assert(TerminalNodes == 1);
static_assert(std::is_same_v<std::underlying_type_t<NodeSelection>, int>);

using Shown = TreeAlgorithmBase const&;
static_assert(std::is_same_v<decltype(std::declval<Shown>().GetRootNode()), Node const*>);
static_assert(std::is_same_v<decltype(std::declval<Shown>().GetSettings()), AlgSettings const*>);
static_assert(std::is_same_v<decltype(std::declval<Shown>().IsClassificationTree()), bool>);
static_assert(
    std::is_same_v<decltype(std::declval<Shown>().GetStatistics()), TreeStatisticsImp const*>);
static_assert(std::is_same_v<decltype(std::declval<Shown>().FindNode(0U)), Node const*>);
static_assert(std::is_same_v<decltype(std::declval<Shown>().GetNumNodes(AllNodes)), int>);
static_assert(
    std::is_same_v<decltype(std::declval<Shown>().MakeGains(std::declval<GainsSettings const&>())),
                   GainsIntf*>);

// GetRootNode and IsClassificationTree leave that to their overrides.
static_assert(noexcept(std::declval<Shown>().GetSettings()));
static_assert(noexcept(std::declval<Shown>().GetStatistics()));
static_assert(noexcept(std::declval<Shown>().FindNode(0U)));
static_assert(noexcept(std::declval<Shown>().GetNumNodes(AllNodes)));
static_assert(noexcept(std::declval<Shown>().MakeGains(std::declval<GainsSettings const&>())));

TEST(TreeAlgorithmBase, IsDeletedThroughItsDestructor) {
  int deaths = 0;
  TreeAlgorithmBase* const algorithm =
      new testing::Watched<AbortingAlgorithm<TreeAlgorithmBase, kNumBaseOperations>>(&deaths);

  delete algorithm;

  EXPECT_EQ(deaths, 1);
}

// What a program that shows trees can learn from one, without a cast.
TEST(TreeAlgorithmBase, ShowsATree) {
  FakeAlgorithm algorithm(
      true, ANode(0)
                .SplitAt(0, 1.0, ANode(1).Classes({3.0, 1.0}, 0), ANode(2).Classes({0.0, 4.0}, 1))
                .Classes({3.0, 5.0}, 1)
                .Build());
  ASSERT_TRUE(algorithm.Validate());
  TreeAlgorithmBase const& base = algorithm;

  ASSERT_NE(base.GetRootNode(), nullptr);
  EXPECT_EQ(base.GetRootNode()->GetNumChildren(), 2);
  EXPECT_EQ(base.GetSettings()->GetType(), AlgCCart);
  EXPECT_TRUE(base.IsClassificationTree());
  EXPECT_EQ(base.GetNumNodes(AllNodes), 3);
  EXPECT_EQ(base.GetNumNodes(TerminalNodes), 2);
  EXPECT_EQ(base.FindNode(2), base.GetRootNode()->GetChild(1));
  EXPECT_EQ(base.FindNode(7), nullptr);
  ASSERT_NE(base.GetStatistics(), nullptr);
  EXPECT_EQ(base.GetStatistics()->GetMisclassificationCount(0, 1), 1.0);
}

#if TREE_HAS_SLOTS
TEST(TreeAlgorithmBase, HasItsVirtualOperationsInOrder) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::GetRootNode), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::GetSettings), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::IsClassificationTree), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::GetStatistics), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::FindNode), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::GetNumNodes), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithmBase::MakeGains), kFirstSlot + 6);
}
#endif

}  // namespace
}  // namespace tree
