#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/fake_algorithm.h"
#include "testing/foreign_node.h"
#include "testing/small_stack.h"
#include "testing/tree_builder.h"
#include "testing/virtual_slot.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree {
namespace {

using testing::ANode;
using testing::FakeAlgorithm;
using testing::ForeignClsInfo;
using testing::ForeignNode;

static_assert(std::is_abstract_v<TreeStatisticsIntf>);
static_assert(std::has_virtual_destructor_v<TreeStatisticsIntf>);
static_assert(std::is_base_of_v<TreeStatisticsIntf, TreeStatisticsImp>);
static_assert(std::is_convertible_v<decltype(std::declval<TreeStatisticsImp const&>().Clone()),
                                    TreeStatisticsIntf*>);
static_assert(std::is_same_v<decltype(std::declval<TreeStatisticsIntf const&>().Clone()),
                             TreeStatisticsIntf*>);
static_assert(std::is_same_v<decltype(std::declval<TreeStatisticsImp&>().AddMisclassificationInfo(
                                 std::declval<Node const*>(), TrainingSample)),
                             void>);
static_assert(std::is_same_v<decltype(std::declval<TreeStatisticsImp&>().Initialize(
                                 std::declval<TreeAlgorithm const&>(), 0.0, 0.0, ValidationNone)),
                             void>);

using Matrix = std::vector<std::vector<double>>;

Matrix MatrixOf(TreeStatisticsIntf const& statistics, int size) {
  Matrix matrix;
  for (int predicted = 0; predicted < size; ++predicted) {
    matrix.emplace_back();
    for (int observed = 0; observed < size; ++observed) {
      matrix.back().push_back(statistics.GetMisclassificationCount(predicted, observed));
    }
  }
  return matrix;
}

// A classification tree with an empty matrix for so many classes.
TreeStatisticsImp ForClasses(int count) {
  TreeStatisticsImp statistics;
  statistics.SetIsCls(true);
  statistics.SetNumClasses(count);
  return statistics;
}

// Two classes, and a value of its own in every field and cell.
TreeStatisticsImp Filled() {
  TreeStatisticsImp statistics = ForClasses(2);
  statistics.SetRisk(0.25);
  statistics.SetStdError(0.125);
  statistics.SetMisclassificationCount(0, 0, 1.0);
  statistics.SetMisclassificationCount(0, 1, 2.0);
  statistics.SetMisclassificationCount(1, 0, 3.0);
  statistics.SetMisclassificationCount(1, 1, 4.0);
  return statistics;
}

void ExpectFilled(TreeStatisticsIntf const& statistics) {
  EXPECT_TRUE(statistics.IsCls());
  EXPECT_EQ(statistics.GetNumClasses(), 2);
  EXPECT_EQ(statistics.GetRisk(), 0.25);
  EXPECT_EQ(statistics.GetStdError(), 0.125);
  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{1.0, 2.0}, {3.0, 4.0}}));
}

// A root that must not be counted over three terminal nodes: two predict class 0, one class 1. The
// test sample has other counts and predictions.
std::unique_ptr<NodeImp> ThreeTerminalNodes() {
  return ANode(0)
      .SplitAt(
          0, 1.0, ANode(1).Classes({50.0, 3.0}, 0).Classes({5.0, 1.0}, 1, TestSample),
          ANode(2)
              .SplitAt(1, 2.0, ANode(3).Classes({4.0, 43.0}, 1).Classes({0.5, 2.0}, 0, TestSample),
                       ANode(4).Classes({8.0, 1.0}, 0).Classes({7.0, 9.0}, 0, TestSample))
              .Classes({12.0, 44.0}, 1)
              .Classes({700.0, 700.0}, 1, TestSample))
      .Classes({62.0, 47.0}, 0)
      .Classes({900.0, 900.0}, 0, TestSample)
      .Build();
}

Matrix const kTrainingMatrix = {{58.0, 4.0}, {4.0, 43.0}};
Matrix const kTestMatrix = {{7.5, 11.0}, {5.0, 1.0}};

// --- Fields ---------------------------------------------------------------------------------

TEST(TreeStatisticsImp, StartsAsARegressionTreeWithoutRisk) {
  TreeStatisticsImp const statistics;

  EXPECT_FALSE(statistics.IsCls());
  EXPECT_EQ(statistics.GetNumClasses(), 0);
  EXPECT_EQ(statistics.GetRisk(), 0.0);
  EXPECT_EQ(statistics.GetStdError(), 0.0);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
}

TEST(TreeStatisticsImp, StoresRiskStandardErrorAndKind) {
  TreeStatisticsImp statistics;

  statistics.SetRisk(-3.5);
  statistics.SetStdError(systemMissingValue());
  statistics.SetIsCls(true);

  EXPECT_EQ(statistics.GetRisk(), -3.5);
  EXPECT_EQ(statistics.GetStdError(), systemMissingValue());
  EXPECT_TRUE(statistics.IsCls());
  statistics.SetIsCls(false);
  EXPECT_FALSE(statistics.IsCls());
}

TEST(TreeStatisticsImp, IsReadThroughItsAbstractClass) {
  TreeStatisticsImp const statistics = Filled();

  ExpectFilled(static_cast<TreeStatisticsIntf const&>(statistics));
}

TEST(TreeStatisticsImp, MakesAMatrixOfZerosForTheNumberOfClasses) {
  TreeStatisticsImp statistics = Filled();

  statistics.SetNumClasses(3);

  EXPECT_EQ(statistics.GetNumClasses(), 3);
  EXPECT_EQ(MatrixOf(statistics, 3), Matrix(3, std::vector<double>(3, 0.0)));
}

TEST(TreeStatisticsImp, EmptiesTheMatrixWhenTheSameNumberOfClassesIsSetAgain) {
  TreeStatisticsImp statistics = Filled();

  statistics.SetNumClasses(2);

  EXPECT_EQ(MatrixOf(statistics, 2), Matrix(2, std::vector<double>(2, 0.0)));
}

TEST(TreeStatisticsImp, StoresAnyNumberOfClasses) {
  TreeStatisticsImp statistics = Filled();

  statistics.SetNumClasses(-4);

  EXPECT_EQ(statistics.GetNumClasses(), -4);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
}

TEST(TreeStatisticsImp, MakesAMatrixWithoutChangingTheNumberOfClasses) {
  TreeStatisticsImp statistics = Filled();

  statistics.InitMatrix(3);

  EXPECT_EQ(statistics.GetNumClasses(), 2);
  EXPECT_EQ(MatrixOf(statistics, 3), Matrix(3, std::vector<double>(3, 0.0)));
}

TEST(TreeStatisticsImp, MakesNoMatrixOfZeroOrFewerClasses) {
  for (int const count : {0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(count);
    TreeStatisticsImp statistics = Filled();

    statistics.InitMatrix(count);

    EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
    EXPECT_EQ(statistics.GetNumClasses(), 2);
  }
}

TEST(TreeStatisticsImp, IndexesTheMatrixByPredictedThenObservedClass) {
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.SetMisclassificationCount(0, 1, 7.0);

  EXPECT_EQ(statistics.GetMisclassificationCount(0, 1), 7.0);
  EXPECT_EQ(statistics.GetMisclassificationCount(1, 0), 0.0);
}

TEST(TreeStatisticsImp, HidesTheMatrixWhileItIsNoClassificationTree) {
  TreeStatisticsImp statistics = Filled();

  statistics.SetIsCls(false);

  EXPECT_EQ(statistics.GetMisclassificationCount(0, 1), systemMissingValue());
  statistics.SetIsCls(true);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 1), 2.0);
}

TEST(TreeStatisticsImp, LooksAtNoIndexWithoutAMatrix) {
  TreeStatisticsImp statistics;
  EXPECT_EQ(statistics.GetMisclassificationCount(-1, 1000), systemMissingValue());

  statistics.SetIsCls(true);

  EXPECT_EQ(statistics.GetMisclassificationCount(-1, 1000), systemMissingValue());
}

TEST(TreeStatisticsImp, StoresACountInTheMatrixOfARegressionTree) {
  TreeStatisticsImp statistics;
  statistics.InitMatrix(1);

  statistics.SetMisclassificationCount(0, 0, 5.0);

  statistics.SetIsCls(true);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), 5.0);
}

// --- The walk over the terminal nodes -------------------------------------------------------

TEST(TreeStatisticsImp, CountsTheCasesOfTerminalNodesByPredictedClass) {
  std::unique_ptr<NodeImp> const root = ThreeTerminalNodes();
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.AddMisclassificationInfo(root.get(), TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 2), kTrainingMatrix);
}

TEST(TreeStatisticsImp, CountsTheGivenSampleByItsOwnPredictions) {
  std::unique_ptr<NodeImp> const root = ThreeTerminalNodes();
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.AddMisclassificationInfo(root.get(), TestSample);

  EXPECT_EQ(MatrixOf(statistics, 2), kTestMatrix);
}

TEST(TreeStatisticsImp, CountsTheSubtreeOfTheGivenNodeOnly) {
  std::unique_ptr<NodeImp> const root = ThreeTerminalNodes();
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.AddMisclassificationInfo(root->GetChild(1), TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{8.0, 1.0}, {4.0, 43.0}}));
}

TEST(TreeStatisticsImp, CountsATreeOfASingleNodeInTheRowOfItsPrediction) {
  std::unique_ptr<NodeImp> const root = ANode(0).Classes({1.0, 2.0, 4.0}, 2).Build();
  TreeStatisticsImp statistics = ForClasses(3);

  statistics.AddMisclassificationInfo(root.get(), TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 3), (Matrix{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 2.0, 4.0}}));
}

TEST(TreeStatisticsImp, DoublesItsCountsWhenItCountsTwice) {
  std::unique_ptr<NodeImp> const root = ThreeTerminalNodes();
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.AddMisclassificationInfo(root.get(), TrainingSample);
  statistics.AddMisclassificationInfo(root.get(), TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{116.0, 8.0}, {8.0, 86.0}}));
}

TEST(TreeStatisticsImp, CountsForRegressionTreesToo) {
  std::unique_ptr<NodeImp> const root = ThreeTerminalNodes();
  TreeStatisticsImp statistics = ForClasses(2);
  statistics.SetIsCls(false);

  statistics.AddMisclassificationInfo(root.get(), TrainingSample);

  statistics.SetIsCls(true);
  EXPECT_EQ(MatrixOf(statistics, 2), kTrainingMatrix);
}

TEST(TreeStatisticsImp, CountsNothingForNull) {
  TreeStatisticsImp statistics = Filled();

  statistics.AddMisclassificationInfo(nullptr, TrainingSample);

  ExpectFilled(statistics);
}

TEST(TreeStatisticsImp, CountsNothingForTerminalNodesThatSayNothing) {
  TreeStatisticsImp const statistics = Filled();
  struct {
    char const* name;
    std::unique_ptr<NodeImp> root;
  } const rows[] = {
      {"no statistics", ANode(0).Build()},
      {"the other sample only", ANode(0).Classes({9.0, 9.0}, 0, TestSample).Build()},
      {"regression statistics", ANode(0).Regression(9.0, 1.0).Build()},
      {"prediction below the classes", ANode(0).Classes({9.0, 9.0}, -1).Build()},
      {"prediction beyond the classes", ANode(0).Classes({9.0, 9.0}, 2).Build()},
      {"prediction far below",
       ANode(0).Classes({9.0, 9.0}, std::numeric_limits<int>::min()).Build()},
      {"prediction far beyond",
       ANode(0).Classes({9.0, 9.0}, std::numeric_limits<int>::max()).Build()},
      {"no classes", ANode(0).Classes({}).Build()},
      {"an inner node over a bare one", ANode(0).Over(ANode(1)).Classes({9.0, 9.0}).Build()},
  };

  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    TreeStatisticsImp counted = statistics;

    counted.AddMisclassificationInfo(row.root.get(), TrainingSample);

    ExpectFilled(counted);
  }
}

TEST(TreeStatisticsImp, CountsTheClassesThatANodeAndTheMatrixShare) {
  std::unique_ptr<NodeImp> const root =
      ANode(0).Over(ANode(1).Classes({1.0}, 0), ANode(2).Classes({2.0, 4.0, 8.0, 16.0}, 1)).Build();
  TreeStatisticsImp statistics = ForClasses(3);

  statistics.AddMisclassificationInfo(root.get(), TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 3), (Matrix{{1.0, 0.0, 0.0}, {2.0, 4.0, 8.0}, {0.0, 0.0, 0.0}}));
}

TEST(TreeStatisticsImp, CountsTheNumberOfClassesWhateverTheMatrixHolds) {
  std::unique_ptr<NodeImp> const root = ANode(0).Classes({1.0, 2.0, 4.0}, 2).Build();
  TreeStatisticsImp larger = ForClasses(2);
  larger.InitMatrix(3);
  TreeStatisticsImp smaller = ForClasses(3);
  smaller.InitMatrix(2);
  TreeStatisticsImp none = ForClasses(3);
  none.InitMatrix(0);

  larger.AddMisclassificationInfo(root.get(), TrainingSample);
  smaller.AddMisclassificationInfo(root.get(), TrainingSample);
  none.AddMisclassificationInfo(root.get(), TrainingSample);

  EXPECT_EQ(MatrixOf(larger, 3), (Matrix{{0.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 2.0, 0.0}}));
  EXPECT_EQ(MatrixOf(smaller, 2), (Matrix{{0.0, 0.0}, {0.0, 0.0}}));
  EXPECT_EQ(none.GetMisclassificationCount(0, 0), systemMissingValue());
}

// Adding 1e16, -1e16 and 1 in this order gives 1, in other orders 0.
TEST(TreeStatisticsImp, CountsTerminalNodesFromLeftToRight) {
  std::unique_ptr<NodeImp> const flat =
      ANode(0)
          .Over(ANode(1).Classes({1e16}), ANode(2).Classes({-1e16}), ANode(3).Classes({1.0}))
          .Build();
  std::unique_ptr<NodeImp> const deep =
      ANode(0)
          .Over(ANode(1).Over(ANode(2).Classes({1e16}), ANode(3).Classes({-1e16})),
                ANode(4).Classes({1.0}))
          .Build();

  for (NodeImp const* const root : {flat.get(), deep.get()}) {
    TreeStatisticsImp statistics = ForClasses(1);

    statistics.AddMisclassificationInfo(root, TrainingSample);

    EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), 1.0);
  }
}

TEST(TreeStatisticsImp, CountsForeignNodesAndDistributions) {
  ForeignClsInfo const first({1.0, 2.0}, 0);
  ForeignClsInfo const second({4.0, 8.0}, 1);
  ForeignClsInfo const ofTheRoot({100.0, 100.0}, 0);
  ForeignNode left;
  left.training.clsInfo = &first;
  ForeignNode right;
  right.training.clsInfo = &second;
  ForeignNode root;
  root.training.clsInfo = &ofTheRoot;
  root.children = {&left, &right, nullptr, &right};
  TreeStatisticsImp statistics = ForClasses(2);

  statistics.AddMisclassificationInfo(&root, TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{1.0, 2.0}, {8.0, 16.0}}));
}

TEST(TreeStatisticsImp, ReadsAForeignDistributionForAllClasses) {
  // Answers for classes that it does not count.
  class Talkative : public ForeignClsInfo {
   public:
    Talkative() : ForeignClsInfo({8.0}, 1) {}
    double GetClassCount(int index) const override { return 8.0 + index; }
  };
  Talkative const fewer;
  ForeignNode node;
  node.training.clsInfo = &fewer;
  TreeStatisticsImp statistics = ForClasses(3);

  statistics.AddMisclassificationInfo(&node, TrainingSample);

  EXPECT_EQ(MatrixOf(statistics, 3), (Matrix{{0.0, 0.0, 0.0}, {8.0, 9.0, 10.0}, {0.0, 0.0, 0.0}}));
}

TEST(TreeStatisticsImp, WalksATreeOfAMillionLevelsWithoutRecursion) {
  constexpr std::size_t kNumLevels = 1'000'000;
  ForeignClsInfo const distribution({1.0, 3.0}, 1);
  ForeignNode leaf;
  leaf.training.clsInfo = &distribution;
  std::vector<ForeignNode> levels(kNumLevels);
  for (std::size_t level = 0; level + 1 < kNumLevels; ++level) {
    bool const leafFirst = level % 2 == 0;
    levels[level].children = leafFirst ? std::vector<Node const*>{&leaf, &levels[level + 1]}
                                       : std::vector<Node const*>{&levels[level + 1], &leaf};
  }
  levels.back().children = {&leaf};
  TreeStatisticsImp statistics = ForClasses(2);

  ASSERT_TRUE(testing::RunOnSmallStack(
      [&] { statistics.AddMisclassificationInfo(&levels.front(), TrainingSample); }));

  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{0.0, 0.0}, {1e6, 3e6}}));

  ASSERT_TRUE(testing::RunOnSmallStack(
      [&] { statistics.AddMisclassificationInfo(&levels.front(), TrainingSample); }));

  EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{0.0, 0.0}, {2e6, 6e6}}));
}

// --- Taking over a tree ---------------------------------------------------------------------

TEST(TreeStatisticsImp, TakesOverATreeByItsValidation) {
  struct {
    char const* name;
    ValidationType validation;
    Matrix matrix;
  } const rows[] = {
      {"none", ValidationNone, kTrainingMatrix},
      {"split sample", ValidationSplitSample, kTestMatrix},
      {"cross-validation", ValidationCrossValidation,
       Matrix(2, std::vector<double>(2, systemMissingValue()))},
      {"any other", static_cast<ValidationType>(3), kTrainingMatrix},
  };
  FakeAlgorithm const algorithm(true, ThreeTerminalNodes());

  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    TreeStatisticsImp const made(algorithm, 0.07, 0.018, row.validation);
    TreeStatisticsImp initialized;
    initialized.Initialize(algorithm, 0.07, 0.018, row.validation);

    for (TreeStatisticsImp const* const statistics : {&made, &std::as_const(initialized)}) {
      EXPECT_TRUE(statistics->IsCls());
      EXPECT_EQ(statistics->GetNumClasses(), 2);
      EXPECT_EQ(statistics->GetRisk(), 0.07);
      EXPECT_EQ(statistics->GetStdError(), 0.018);
      EXPECT_EQ(MatrixOf(*statistics, 2), row.matrix);
    }
  }
}

TEST(TreeStatisticsImp, ForgetsEarlierCountsWhenItTakesOverATree) {
  FakeAlgorithm const algorithm(true, ThreeTerminalNodes());
  TreeStatisticsImp statistics(algorithm, 0.0, 0.0, ValidationNone);

  statistics.Initialize(algorithm, 0.0, 0.0, ValidationNone);
  EXPECT_EQ(MatrixOf(statistics, 2), kTrainingMatrix);

  statistics.Initialize(algorithm, 0.0, 0.0, ValidationCrossValidation);
  EXPECT_EQ(statistics.GetNumClasses(), 2);
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
}

TEST(TreeStatisticsImp, TakesTheNumberOfClassesFromTheRootByTheTrainingSample) {
  std::unique_ptr<NodeImp> const root = ANode(0)
                                            .Over(ANode(1).Classes({1.0, 2.0}, 1))
                                            .Classes({1.0, 2.0, 4.0})
                                            .Classes({1.0}, 0, TestSample)
                                            .Build();
  FakeAlgorithm const algorithm(true, std::unique_ptr<NodeImp>(root->Clone()));

  TreeStatisticsImp const statistics(algorithm, 0.0, 0.0, ValidationSplitSample);

  EXPECT_EQ(statistics.GetNumClasses(), 3);
  EXPECT_EQ(MatrixOf(statistics, 3), Matrix(3, std::vector<double>(3, 0.0)));
}

TEST(TreeStatisticsImp, HasNoClassesWhenTheRootHasNoDistribution) {
  struct {
    char const* name;
    std::unique_ptr<NodeImp> root;
  } rows[] = {
      {"no tree", nullptr},
      {"no statistics", ANode(0).Over(ANode(1).Classes({1.0, 2.0})).Build()},
      {"the test sample only", ANode(0).Classes({1.0, 2.0}, 0, TestSample).Build()},
      {"regression statistics", ANode(0).Regression(1.0, 2.0).Build()},
  };

  for (auto& row : rows) {
    SCOPED_TRACE(row.name);
    FakeAlgorithm const algorithm(true, std::move(row.root));
    for (ValidationType const validation :
         {ValidationNone, ValidationSplitSample, ValidationCrossValidation}) {
      TreeStatisticsImp statistics = Filled();

      statistics.Initialize(algorithm, 0.5, 0.0625, validation);

      EXPECT_TRUE(statistics.IsCls());
      EXPECT_EQ(statistics.GetNumClasses(), 0);
      EXPECT_EQ(statistics.GetRisk(), 0.5);
      EXPECT_EQ(statistics.GetStdError(), 0.0625);
      EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
    }
  }
}

TEST(TreeStatisticsImp, LeavesTheMatrixAsItWasForARegressionTree) {
  FakeAlgorithm const withRegression(false, ANode(0).Regression(1.0, 2.0).Build());
  FakeAlgorithm const withClasses(false, ThreeTerminalNodes());
  FakeAlgorithm const withoutTree(false);

  for (FakeAlgorithm const* const algorithm : {&withRegression, &withClasses, &withoutTree}) {
    TreeStatisticsImp statistics = Filled();

    statistics.Initialize(*algorithm, 0.5, 0.0625, ValidationNone);

    EXPECT_FALSE(statistics.IsCls());
    EXPECT_EQ(statistics.GetNumClasses(), 0);
    EXPECT_EQ(statistics.GetRisk(), 0.5);
    EXPECT_EQ(statistics.GetStdError(), 0.0625);
    EXPECT_EQ(statistics.GetMisclassificationCount(0, 0), systemMissingValue());
    statistics.SetIsCls(true);
    EXPECT_EQ(MatrixOf(statistics, 2), (Matrix{{1.0, 2.0}, {3.0, 4.0}}));
  }
}

TEST(TreeStatisticsImp, OutlivesTheTreeThatItWasTakenFrom) {
  auto algorithm = std::make_unique<FakeAlgorithm>(true, ThreeTerminalNodes());
  TreeStatisticsImp const statistics(*algorithm, 0.07, 0.018, ValidationNone);

  algorithm.reset();

  EXPECT_EQ(MatrixOf(statistics, 2), kTrainingMatrix);
}

// --- Copies and failure ---------------------------------------------------------------------

TEST(TreeStatisticsImp, CopiesEveryField) {
  TreeStatisticsImp const statistics = Filled();

  TreeStatisticsImp const copied(statistics);
  TreeStatisticsImp assigned = ForClasses(3);
  assigned = statistics;
  std::unique_ptr<TreeStatisticsIntf> const cloned(statistics.Clone());

  ExpectFilled(copied);
  ExpectFilled(assigned);
  ExpectFilled(*cloned);
}

TEST(TreeStatisticsImp, CopiesTheMatrixDeeply) {
  TreeStatisticsImp statistics = Filled();
  TreeStatisticsImp const copied(statistics);
  TreeStatisticsImp assigned;
  assigned = statistics;
  std::unique_ptr<TreeStatisticsIntf> const cloned(statistics.Clone());

  statistics.SetMisclassificationCount(0, 0, 99.0);
  statistics.SetNumClasses(1);
  statistics.SetRisk(9.0);

  ExpectFilled(copied);
  ExpectFilled(assigned);
  ExpectFilled(*cloned);
}

TEST(TreeStatisticsImp, StaysTheSameWhenAssignedToItself) {
  TreeStatisticsImp statistics = Filled();
  TreeStatisticsImp const& same = statistics;

  statistics = same;

  ExpectFilled(statistics);
}

TEST(TreeStatisticsImp, StaysTheSameWhenMemoryRunsOutInAnAssignment) {
  TreeStatisticsImp const other = ForClasses(3);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    TreeStatisticsImp statistics = Filled();
    try {
      statistics = other;
    } catch (std::bad_alloc const&) {
      ExpectFilled(statistics);
      throw;
    }
  });

  EXPECT_GT(numFailures, 0);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

TEST(TreeStatisticsImp, KeepsItsClassesWhenMemoryRunsOutForMore) {
  long const numFailures = testing::WithEveryAllocationFailing([] {
    TreeStatisticsImp statistics = Filled();
    try {
      statistics.SetNumClasses(3);
    } catch (std::bad_alloc const&) {
      ExpectFilled(statistics);
      throw;
    }
  });

  EXPECT_GT(numFailures, 0);
}

TEST(TreeStatisticsImp, StaysReadableWhenMemoryRunsOutWhileItTakesOverATree) {
  FakeAlgorithm const algorithm(true, ThreeTerminalNodes());
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    TreeStatisticsImp statistics = Filled();
    try {
      statistics.Initialize(algorithm, 0.5, 0.0625, ValidationNone);
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(MatrixOf(statistics, statistics.GetNumClasses()).size(), 2U);
      statistics.Initialize(algorithm, 0.5, 0.0625, ValidationNone);
      EXPECT_EQ(MatrixOf(statistics, 2), kTrainingMatrix);
      throw;
    }
  });

  EXPECT_GT(numFailures, 3);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

#ifndef NDEBUG
TEST(TreeStatisticsImpDeathTest, NamesTheOperationAndTheIndexOutOfRange) {
  TreeStatisticsImp statistics = Filled();

  EXPECT_DEATH(statistics.GetMisclassificationCount(2, 0),
               "TreeStatisticsImp::GetMisclassificationCount.*index 2 ");
  EXPECT_DEATH(statistics.GetMisclassificationCount(-1, 0),
               "TreeStatisticsImp::GetMisclassificationCount.*index -1 ");
  EXPECT_DEATH(statistics.SetMisclassificationCount(3, 1, 0.0),
               "TreeStatisticsImp::SetMisclassificationCount.*index 3 ");
  EXPECT_DEATH(statistics.SetMisclassificationCount(-2, 1, 0.0),
               "TreeStatisticsImp::SetMisclassificationCount.*index -2 ");
}

TEST(TreeStatisticsImpDeathTest, NamesAnObservedClassOutOfRange) {
  TreeStatisticsImp statistics = Filled();

  EXPECT_DEATH(statistics.GetMisclassificationCount(0, 5),
               "TreeStatisticsImp::GetMisclassificationCount.*index 5 ");
  EXPECT_DEATH(statistics.GetMisclassificationCount(1, -1),
               "TreeStatisticsImp::GetMisclassificationCount.*index -1 ");
  EXPECT_DEATH(statistics.SetMisclassificationCount(0, 4, 0.0),
               "TreeStatisticsImp::SetMisclassificationCount.*index 4 ");
}

TEST(TreeStatisticsImpDeathTest, StoresNoCountWithoutAMatrix) {
  TreeStatisticsImp statistics;

  EXPECT_DEATH(statistics.SetMisclassificationCount(0, 0, 1.0),
               "TreeStatisticsImp::SetMisclassificationCount.*index 0 ");
}
#endif

#if TREE_HAS_SLOTS
TEST(TreeStatisticsIntf, HasItsVirtualOperationsInOrder) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::GetMisclassificationCount), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::GetRisk), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::GetStdError), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::IsCls), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::GetNumClasses), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsIntf::Clone), kFirstSlot + 5);
}

TEST(TreeStatisticsImp, AddsNoVirtualOperations) {
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::SetRisk), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::SetStdError), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::SetIsCls), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::SetNumClasses), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::InitMatrix), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::SetMisclassificationCount), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::AddMisclassificationInfo), -1);
  EXPECT_EQ(VirtualSlot(&TreeStatisticsImp::Initialize), -1);
}
#endif

}  // namespace
}  // namespace tree
