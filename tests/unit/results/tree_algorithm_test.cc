#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

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
using testing::kNumOperations;

// The operations that `TreeAlgorithm` asks of an implementation are these twenty, and each one.
template <int... kOmitted>
constexpr bool EachIsPure(std::integer_sequence<int, kOmitted...> /*operations*/) {
  return (std::is_abstract_v<AbortingAlgorithm<TreeAlgorithm, kNumOperations, kOmitted>> && ...);
}
static_assert(kNumOperations == 20);
static_assert(!std::is_abstract_v<AbortingAlgorithm<TreeAlgorithm, kNumOperations>>);
static_assert(EachIsPure(std::make_integer_sequence<int, kNumOperations>()));

static_assert(std::is_base_of_v<TreeAlgorithmBase, TreeAlgorithm>);
static_assert(std::has_virtual_destructor_v<TreeAlgorithm>);

static_assert(FailureNone == 0);
static_assert(FailureNoData == 1);
static_assert(FailureInvalidSettings == 2);
static_assert(FailureNoTree == 3);
static_assert(FailureUnknownNode == 4);
static_assert(FailureInvalidSplit == 5);
static_assert(FailureNoSplit == 6);
static_assert(FailureCancelled == 7);
static_assert(FailureOutOfMemory == 8);
static_assert(FailureInternal == 9);
static_assert(FailureInvalidArgument == 10);
static_assert(std::is_same_v<std::underlying_type_t<AlgorithmFailure>, int>);

using Changing = TreeAlgorithm&;
using Reading = TreeAlgorithm const&;
static_assert(std::is_same_v<decltype(std::declval<Changing>().Grow()), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().GrowNode(0U, 1)), bool>);
static_assert(
    std::is_same_v<decltype(std::declval<Changing>().FindCandidateSplits(0U, nullptr)), bool>);
static_assert(
    std::is_same_v<
        decltype(std::declval<Changing>().ApplySplit(0U, std::declval<SplitRule const&>())), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().PruneNode(0U)), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().Prune()), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().GetPruningSequence(nullptr)), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().Validate()), bool>);
static_assert(std::is_same_v<decltype(std::declval<Changing>().SetTree(nullptr)), bool>);
static_assert(std::is_same_v<decltype(std::declval<Reading>().GetTree()), NodeImp const*>);
static_assert(
    std::is_same_v<decltype(std::declval<Changing>().SetProgressListener(nullptr)), void>);
static_assert(std::is_same_v<decltype(std::declval<Reading>().GetFailure()), AlgorithmFailure>);
static_assert(std::is_same_v<decltype(std::declval<Reading>().GetFailureMessage()), char const*>);

static_assert(noexcept(std::declval<Changing>().Grow()));
static_assert(noexcept(std::declval<Changing>().GrowNode(0U, 1)));
static_assert(noexcept(std::declval<Changing>().FindCandidateSplits(0U, nullptr)));
static_assert(noexcept(std::declval<Changing>().ApplySplit(0U, std::declval<SplitRule const&>())));
static_assert(noexcept(std::declval<Changing>().PruneNode(0U)));
static_assert(noexcept(std::declval<Changing>().Prune()));
static_assert(noexcept(std::declval<Changing>().GetPruningSequence(nullptr)));
static_assert(noexcept(std::declval<Changing>().Validate()));
static_assert(noexcept(std::declval<Changing>().SetTree(nullptr)));
static_assert(noexcept(std::declval<Reading>().GetTree()));
static_assert(noexcept(std::declval<Changing>().SetProgressListener(nullptr)));
static_assert(noexcept(std::declval<Reading>().GetFailure()));
static_assert(noexcept(std::declval<Reading>().GetFailureMessage()));

std::unique_ptr<NodeImp> ThreeNodes() {
  return ANode(0)
      .SplitAt(0, 1.0, ANode(1).Classes({3.0, 1.0}, 0), ANode(2).Classes({0.0, 4.0}, 1))
      .Classes({3.0, 5.0}, 1)
      .Build();
}

void ExpectStatisticsOfThreeNodes(TreeStatisticsImp const& statistics) {
  EXPECT_TRUE(statistics.IsCls());
  EXPECT_EQ(statistics.GetNumClasses(), 2);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), 3.0);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 1), 1.0);
  EXPECT_EQ(statistics.GetMisclassificationCount(1, 0), 0.0);
  EXPECT_EQ(statistics.GetMisclassificationCount(1, 1), 4.0);
}

TEST(PruningStep, StartsWithZeros) {
  PruningStep const step;

  EXPECT_EQ(step.numTerminalNodes, 0);
  EXPECT_EQ(step.complexity, 0.0);
  EXPECT_EQ(step.risk, 0.0);
  EXPECT_EQ(step.stdError, 0.0);
  EXPECT_TRUE(step.nodesToPrune.empty());
}

TEST(TreeAlgorithm, IsDeletedThroughEitherOfItsDestructors) {
  using Complete = testing::Watched<AbortingAlgorithm<TreeAlgorithm, kNumOperations>>;
  int deaths = 0;
  TreeAlgorithm* const algorithm = new Complete(&deaths);
  TreeAlgorithmBase* const base = new Complete(&deaths);

  delete algorithm;
  delete base;

  EXPECT_EQ(deaths, 2);
}

// The library asks an algorithm for its root and its kind, and for nothing else: every other
// operation of this one stops the program.
TEST(TreeAlgorithm, IsAskedByTheLibraryForItsRootAndKindOnly) {
  class RootAndKind : public AbortingAlgorithm<TreeAlgorithm, kNumOperations> {
   public:
    explicit RootAndKind(Node const* root) : root_(root) {}
    Node const* GetRootNode() const noexcept override { return root_; }
    bool IsClassificationTree() const noexcept override { return true; }

   private:
    Node const* root_;
  };
  std::unique_ptr<NodeImp> const root = ThreeNodes();
  RootAndKind const algorithm(root.get());

  TreeStatisticsImp const statistics(algorithm, 0.0, 0.0, ValidationNone);

  ExpectStatisticsOfThreeNodes(statistics);
}

// What an interactive program does to a tree, through the interface alone.
TEST(TreeAlgorithm, WorksOnATree) {
  FakeAlgorithm fake(true, ThreeNodes());
  TreeAlgorithm& algorithm = fake;

  EXPECT_FALSE(algorithm.Grow());
  EXPECT_EQ(algorithm.GetFailure(), FailureNoData);
  EXPECT_STRNE(algorithm.GetFailureMessage(), "");
  EXPECT_FALSE(algorithm.PruneNode(9));
  EXPECT_EQ(algorithm.GetFailure(), FailureUnknownNode);

  EXPECT_TRUE(algorithm.Validate());
  EXPECT_EQ(algorithm.GetFailure(), FailureNone);
  EXPECT_STREQ(algorithm.GetFailureMessage(), "");
  EXPECT_NE(algorithm.GetStatistics(), nullptr);

  double const values[] = {1.5};
  EXPECT_EQ(algorithm.GetTree()->DropObservationThroughTree(values, nullptr)->GetId(), 2U);

  std::unique_ptr<NodeImp> kept(algorithm.GetTree()->Clone());
  EXPECT_TRUE(algorithm.PruneNode(0));
  EXPECT_EQ(algorithm.GetStatistics(), nullptr);
  EXPECT_EQ(algorithm.GetNumNodes(AllNodes), 1);

  EXPECT_TRUE(algorithm.SetTree(kept.release()));
  EXPECT_EQ(algorithm.GetNumNodes(AllNodes), 3);
  EXPECT_TRUE(algorithm.SetTree(nullptr));
  EXPECT_EQ(algorithm.GetRootNode(), nullptr);
  EXPECT_EQ(algorithm.GetTree(), nullptr);
  EXPECT_FALSE(algorithm.Validate());
  EXPECT_EQ(algorithm.GetFailure(), FailureNoTree);
}

#if TREE_HAS_SLOTS
TEST(TreeAlgorithm, AddsItsVirtualOperationsInOrder) {
  using testing::VirtualSlot;
  constexpr std::ptrdiff_t kFirst = testing::kFirstSlot + kNumBaseOperations;

  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::Grow), kFirst);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::GrowNode), kFirst + 1);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::FindCandidateSplits), kFirst + 2);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::ApplySplit), kFirst + 3);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::PruneNode), kFirst + 4);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::Prune), kFirst + 5);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::GetPruningSequence), kFirst + 6);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::Validate), kFirst + 7);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::SetTree), kFirst + 8);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::GetTree), kFirst + 9);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::SetProgressListener), kFirst + 10);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::GetFailure), kFirst + 11);
  EXPECT_EQ(VirtualSlot(&TreeAlgorithm::GetFailureMessage), kFirst + 12);
}

// An algorithm made by hand: an object whose table of virtual operations a test has filled in. All
// that the library can know of it is the position of an operation in the table.
class HandMadeAlgorithm {
 public:
  using Slot = std::uintptr_t;

  explicit HandMadeAlgorithm(Node const* root) : root_(root) {
    // The header names the class for whoever asks for it at run time.
    AbortingAlgorithm<TreeAlgorithm, kNumOperations> const model;
    Slot* operationsOfModel = nullptr;
    std::memcpy(&operationsOfModel, static_cast<void const*>(&model), sizeof operationsOfModel);
    for (std::size_t i = 0; i < kHeader; ++i) table_[i] = (operationsOfModel - kHeader)[i];
    for (std::size_t i = kHeader; i < table_.size(); ++i) table_[i] = AddressOf(&Abort);
    table_[kHeader + kDestructors] = AddressOf(&GetRoot);
    table_[kHeader + kDestructors + 2] = AddressOf(&IsClassification);
    operations_ = &table_[kHeader];
  }
  HandMadeAlgorithm(HandMadeAlgorithm const&) = delete;
  HandMadeAlgorithm& operator=(HandMadeAlgorithm const&) = delete;

  TreeAlgorithm const& Get() const { return *reinterpret_cast<TreeAlgorithm const*>(this); }

 private:
  static constexpr std::size_t kHeader = 2;  // offset to the whole object, type information
  static constexpr std::size_t kDestructors = 2;

  static Node const* GetRoot(HandMadeAlgorithm const* self) { return self->root_; }
  static bool IsClassification(HandMadeAlgorithm const* /*self*/) { return true; }
  static void Abort() { std::abort(); }

  template <class Function>
  static Slot AddressOf(Function function) {
    return reinterpret_cast<Slot>(function);
  }

  Slot const* operations_ =
      nullptr;  // stands first, where an object keeps the pointer to its table
  Node const* root_;
  std::array<Slot, kHeader + kDestructors + kNumOperations> table_{};
};

TEST(TreeAlgorithm, IsCalledByThePositionsOfItsFirstAndThirdOperation) {
  std::unique_ptr<NodeImp> const root = ThreeNodes();
  HandMadeAlgorithm const algorithm(root.get());

  TreeStatisticsImp const statistics(algorithm.Get(), 0.25, 0.5, ValidationNone);

  ExpectStatisticsOfThreeNodes(statistics);
  EXPECT_EQ(statistics.GetRisk(), 0.25);
}
#endif

}  // namespace
}  // namespace tree
