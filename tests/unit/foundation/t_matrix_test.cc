#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <utility>

#include "testing/container_checks.h"
#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "tree/containers.h"

// Asked for by the address sanitizer: a request for more memory than there can be is to fail, as it
// does in other builds, and not to end the program.
extern "C" char const* __asan_default_options();
extern "C" char const* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace tree::testing {
namespace {

using ::testing::ElementsAre;

using Matrix = ::TMatrix<double>;

static_assert(std::is_same_v<bool, decltype(std::declval<Matrix&>().Init(1, 1))>);
static_assert(std::is_same_v<bool, decltype(std::declval<Matrix&>().Grow(1, 1))>);
static_assert(std::is_same_v<void, decltype(std::declval<Matrix&>().Clear())>);
static_assert(std::is_same_v<void, decltype(std::declval<Matrix&>().SetAt(0, 0, 1.0))>);
static_assert(std::is_same_v<void, decltype(std::declval<Matrix&>().SetAtGrow(0, 0, 1.0))>);
static_assert(std::is_same_v<double const&, decltype(std::declval<Matrix const&>().GetAt(0, 0))>);
static_assert(std::is_same_v<int, decltype(std::declval<Matrix const&>().GetNumRows())>);
static_assert(!std::is_polymorphic_v<Matrix>);

/// The 2 x 3 cells 11, 12, 13 / 21, 22, 23, all used.
Matrix TwoByThree(bool zeroFill = true) {
  Matrix matrix(zeroFill);
  matrix.Init(2, 3);
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 3; ++column) {
      matrix.SetAt(row, column, 10.0 * (row + 1) + (column + 1));
    }
  }
  return matrix;
}

auto IsTwoByThree() {
  return ElementsAre(ElementsAre(11.0, 12.0, 13.0), ElementsAre(21.0, 22.0, 23.0));
}

/// Whether the matrix has no storage at all.
bool IsWithoutStorage(Matrix& matrix) {
  return matrix.GetNumRows() == 0 && !HasRoomAt(matrix, 0, 0);
}

/// Both settings of the zero-fill flag, which have to look alike.
class TMatrix : public ::testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Flags, TMatrix, ::testing::Bool(),
                         [](auto const& flag) { return flag.param ? "zeroFill" : "noZeroFill"; });

TEST_P(TMatrix, BeginsEmptyWithoutStorage) {
  long const before = CountAllocations();

  Matrix matrix(GetParam());

  EXPECT_EQ(before, CountAllocations());
  EXPECT_TRUE(IsWithoutStorage(matrix));
}

TEST_P(TMatrix, InitMakesZeroCellsThatAreNotUsed) {
  Matrix matrix(GetParam());

  ASSERT_TRUE(matrix.Init(2, 3));

  EXPECT_EQ(0, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), ElementsAre(ElementsAre(0, 0, 0), ElementsAre(0, 0, 0)));
  EXPECT_TRUE(HasShape(matrix, 2, 3));
}

TEST_P(TMatrix, InitReplacesTheStorageAndKeepsTheUsedCounts) {
  Matrix matrix = TwoByThree(GetParam());
  long const before = CountLiveAllocations();

  ASSERT_TRUE(matrix.Init(3, 4));

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 3, 4), ElementsAre(ElementsAre(0, 0, 0, 0), ElementsAre(0, 0, 0, 0),
                                                 ElementsAre(0, 0, 0, 0)));
}

TEST_P(TMatrix, InitOfNoCellsIsAccepted) {
  Matrix matrix(GetParam());

  EXPECT_TRUE(matrix.Init(0, 0));

  EXPECT_TRUE(IsWithoutStorage(matrix));
}

TEST_P(TMatrix, InitThatCannotAllocateIsFalseAndChangesNothing) {
  Matrix matrix = TwoByThree(GetParam());
  {
    FailingAllocator const allocator(1, true);

    EXPECT_FALSE(matrix.Init(4, 4));
  }

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
  EXPECT_TRUE(HasShape(matrix, 2, 3));
}

TEST_P(TMatrix, InitOfImpossibleShapesIsFalseAndChangesNothing) {
  constexpr int kMost = std::numeric_limits<int>::max();
  struct Row {
    char const* name;
    int rows;
    int columns;
  };
  constexpr Row kRows[] = {
      {"negative rows", -1, 3},
      {"negative columns", 2, -1},
      {"both negative", -1, -1},
      {"more cells than memory", kMost, kMost},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    Matrix matrix = TwoByThree(GetParam());

    EXPECT_FALSE(matrix.Init(row.rows, row.columns));

    EXPECT_EQ(2, matrix.GetNumRows());
    EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
  }
}

TEST_P(TMatrix, GrowKeepsEveryCellInItsPlaceAndAddsZeros) {
  Matrix matrix = TwoByThree(GetParam());

  ASSERT_TRUE(matrix.Grow(3, 5));

  EXPECT_THAT(CellsOf(matrix, 3, 5),
              ElementsAre(ElementsAre(11, 12, 13, 0, 0), ElementsAre(21, 22, 23, 0, 0),
                          ElementsAre(0, 0, 0, 0, 0)));
  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_TRUE(HasShape(matrix, 3, 5));
}

TEST_P(TMatrix, GrowNeverShrinksEitherSide) {
  struct Row {
    char const* name;
    int rows;
    int columns;
    int expectedRows;
    int expectedColumns;
  };
  constexpr Row kRows[] = {
      {"fewer rows, more columns", 1, 5, 3, 5},
      {"more rows, fewer columns", 5, 1, 5, 3},
      {"fewer of both", 1, 1, 3, 3},
      {"the same shape", 3, 3, 3, 3},
      {"nothing", 0, 0, 3, 3},
      {"negative", -1, -1, 3, 3},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    Matrix matrix(GetParam());
    matrix.Init(3, 3);
    for (int cell = 0; cell < 9; ++cell) matrix.SetAt(cell / 3, cell % 3, cell + 1.0);

    EXPECT_TRUE(matrix.Grow(row.rows, row.columns));

    for (int r = 0; r < row.expectedRows; ++r) {
      for (int c = 0; c < row.expectedColumns; ++c) {
        double const expected = r < 3 && c < 3 ? 3.0 * r + c + 1.0 : 0.0;
        EXPECT_EQ(expected, matrix.GetAt(r, c)) << "cell (" << r << ", " << c << ")";
      }
    }
    EXPECT_EQ(3, matrix.GetNumRows());
    EXPECT_TRUE(HasShape(matrix, row.expectedRows, row.expectedColumns));
  }
}

TEST_P(TMatrix, GrowKeepsTheUsedRowsAndColumnsSoThatACopyIsWhole) {
  Matrix matrix = TwoByThree(GetParam());
  matrix.Grow(3, 5);

  Matrix const copy(matrix);

  EXPECT_EQ(2, copy.GetNumRows());
  EXPECT_THAT(CellsOf(copy, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, GrowFreesTheOldBlock) {
  Matrix matrix = TwoByThree(GetParam());
  long const before = CountLiveAllocations();

  ASSERT_TRUE(matrix.Grow(3, 5));

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST_P(TMatrix, GrowOfAnEmptyMatrixMakesZeroCells) {
  Matrix matrix(GetParam());

  ASSERT_TRUE(matrix.Grow(1, 2));

  EXPECT_EQ(0, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 1, 2), ElementsAre(ElementsAre(0, 0)));
}

TEST_P(TMatrix, GrowThatCannotAllocateIsFalseAndChangesNothing) {
  Matrix matrix = TwoByThree(GetParam());
  {
    FailingAllocator const allocator(1, true);

    EXPECT_FALSE(matrix.Grow(4, 4));
  }

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
  EXPECT_TRUE(HasShape(matrix, 2, 3));
}

TEST_P(TMatrix, SetAtStoresAndUsesTheCellWithAllRowsBeforeIt) {
  Matrix matrix(GetParam());
  matrix.Init(3, 3);

  matrix.SetAt(1, 2, 7.0);

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 3, 3),
              ElementsAre(ElementsAre(0, 0, 0), ElementsAre(0, 0, 7), ElementsAre(0, 0, 0)));
}

TEST_P(TMatrix, SetAtInAnEarlierRowKeepsTheUsedRows) {
  Matrix matrix = TwoByThree(GetParam());

  matrix.SetAt(0, 0, 7.0);

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_EQ(7.0, matrix.GetAt(0, 0));
}

TEST_P(TMatrix, SetAtGrowWithinTheShapeAllocatesNothing) {
  Matrix matrix(GetParam());
  matrix.Init(2, 3);
  long const before = CountAllocations();

  matrix.SetAtGrow(1, 2, 7.0);

  EXPECT_EQ(before, CountAllocations());
  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_EQ(7.0, matrix.GetAt(1, 2));
}

TEST_P(TMatrix, SetAtGrowGrowsToExactlyTheCell) {
  Matrix matrix(GetParam());

  matrix.SetAtGrow(1, 2, 7.0);

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), ElementsAre(ElementsAre(0, 0, 0), ElementsAre(0, 0, 7)));
  EXPECT_TRUE(HasShape(matrix, 2, 3));
}

TEST_P(TMatrix, SetAtGrowGrowsOneSideAlone) {
  struct Row {
    char const* name;
    int row;
    int column;
    int expectedRows;
    int expectedColumns;
  };
  constexpr Row kRows[] = {{"a row more", 2, 0, 3, 3}, {"a column more", 0, 3, 2, 4}};
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    Matrix matrix = TwoByThree(GetParam());

    matrix.SetAtGrow(row.row, row.column, 7.0);

    EXPECT_EQ(7.0, matrix.GetAt(row.row, row.column));
    EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
    EXPECT_TRUE(HasShape(matrix, row.expectedRows, row.expectedColumns));
  }
}

TEST_P(TMatrix, SetAtGrowTakesACellOfItsOwn) {
  Matrix matrix = TwoByThree(GetParam());

  matrix.SetAtGrow(2, 3, matrix.GetAt(1, 2));

  EXPECT_EQ(23.0, matrix.GetAt(2, 3));
}

TEST_P(TMatrix, ClearFreesTheStorage) {
  long const before = CountLiveAllocations();
  Matrix matrix = TwoByThree(GetParam());

  matrix.Clear();

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_TRUE(IsWithoutStorage(matrix));
}

TEST_P(TMatrix, ClearForgetsTheUsedColumnsToo) {
  Matrix matrix = TwoByThree(GetParam());
  matrix.Clear();
  matrix.Init(2, 2);

  Matrix copy(matrix);

  EXPECT_TRUE(IsWithoutStorage(copy));
}

TEST_P(TMatrix, EndsByFreeingItsStorage) {
  long const before = CountLiveAllocations();

  {
    Matrix const matrix = TwoByThree(GetParam());
    ASSERT_EQ(before + 1, CountLiveAllocations());
  }

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST_P(TMatrix, CopyHasTheUsedCountsAndTheWholeBlock) {
  Matrix source(GetParam());
  source.Init(3, 4);
  source.SetAt(1, 2, 7.0);

  Matrix copy(source);

  EXPECT_EQ(2, copy.GetNumRows());
  EXPECT_THAT(CellsOf(copy, 3, 4), ElementsAre(ElementsAre(0, 0, 0, 0), ElementsAre(0, 0, 7, 0),
                                               ElementsAre(0, 0, 0, 0)));
  EXPECT_TRUE(HasShape(copy, 3, 4));
}

TEST_P(TMatrix, CopyOfACopyHasTheCellsToo) {
  Matrix const source = TwoByThree(GetParam());

  Matrix const copy(source);
  Matrix const copyOfCopy(copy);

  EXPECT_THAT(CellsOf(copyOfCopy, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, CopyIsIndependent) {
  Matrix source = TwoByThree(GetParam());
  Matrix const copy(source);

  source.SetAt(0, 0, 99.0);

  EXPECT_THAT(CellsOf(copy, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, CopyOfAMatrixWithoutUsedCellsIsEmptyThoughTheSourceHasStorage) {
  Matrix source(GetParam());
  source.Init(3, 3);
  long const before = CountAllocations();

  Matrix copy(source);

  EXPECT_EQ(before, CountAllocations());
  EXPECT_TRUE(IsWithoutStorage(copy));
}

TEST_P(TMatrix, CopyThatCannotAllocateIsEmpty) {
  Matrix const source = TwoByThree(GetParam());
  FailingAllocator const allocator(1);

  Matrix copy(source);

  EXPECT_TRUE(allocator.HasFailed());
  EXPECT_TRUE(IsWithoutStorage(copy));
}

TEST_P(TMatrix, AssignmentCopiesTheUsedCountsAndTheWholeBlock) {
  Matrix source(GetParam());
  source.Init(3, 4);
  source.SetAt(1, 2, 7.0);
  Matrix target(GetParam());
  target.SetAtGrow(5, 5, 9.0);

  target = source;

  EXPECT_EQ(2, target.GetNumRows());
  EXPECT_THAT(CellsOf(target, 3, 4), ElementsAre(ElementsAre(0, 0, 0, 0), ElementsAre(0, 0, 7, 0),
                                                 ElementsAre(0, 0, 0, 0)));
  EXPECT_TRUE(HasShape(target, 3, 4));
}

TEST_P(TMatrix, AssignmentFreesTheOldBlock) {
  Matrix const source = TwoByThree(GetParam());
  Matrix target = TwoByThree(GetParam());
  long const before = CountLiveAllocations();

  target = source;

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST_P(TMatrix, AssignmentIsIndependent) {
  Matrix source = TwoByThree(GetParam());
  Matrix target(GetParam());
  target = source;

  source.SetAt(0, 0, 99.0);

  EXPECT_THAT(CellsOf(target, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, AssignmentOfAMatrixWithoutUsedCellsEmptiesTheTargetThoughTheSourceHasStorage) {
  Matrix source(GetParam());
  source.Init(3, 3);
  Matrix target = TwoByThree(GetParam());

  target = source;

  EXPECT_TRUE(IsWithoutStorage(target));
}

TEST_P(TMatrix, AssignmentToItselfDoesNothing) {
  Matrix matrix = TwoByThree(GetParam());
  Matrix const& same = matrix;
  long const before = CountAllocations();

  matrix = same;

  EXPECT_EQ(before, CountAllocations());
  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, AssignmentReturnsItsTarget) {
  Matrix const source = TwoByThree(GetParam());
  Matrix target(GetParam());

  EXPECT_EQ(&target, &(target = source));
}

TEST_P(TMatrix, AssignmentThatCannotAllocateLeavesTheTargetEmpty) {
  Matrix const source = TwoByThree(GetParam());
  Matrix target = TwoByThree(GetParam());
  FailingAllocator const allocator(1);

  target = source;

  EXPECT_TRUE(allocator.HasFailed());
  EXPECT_TRUE(IsWithoutStorage(target));
}

TEST_P(TMatrix, MoveTakesTheStorageAndLeavesTheSourceEmpty) {
  Matrix source = TwoByThree(GetParam());
  long const before = CountAllocations();

  Matrix moved(std::move(source));

  EXPECT_EQ(before, CountAllocations());
  EXPECT_EQ(2, moved.GetNumRows());
  EXPECT_THAT(CellsOf(moved, 2, 3), IsTwoByThree());
  EXPECT_TRUE(HasShape(moved, 2, 3));
  EXPECT_TRUE(IsWithoutStorage(source));
}

TEST_P(TMatrix, MoveAssignmentTakesTheStorageAndFreesTheOldBlock) {
  Matrix source = TwoByThree(GetParam());
  Matrix target(GetParam());
  target.SetAtGrow(4, 4, 1.0);
  long const before = CountLiveAllocations();

  target = std::move(source);

  EXPECT_EQ(before - 1, CountLiveAllocations());
  EXPECT_EQ(2, target.GetNumRows());
  EXPECT_THAT(CellsOf(target, 2, 3), IsTwoByThree());
  EXPECT_TRUE(HasShape(target, 2, 3));
  EXPECT_TRUE(IsWithoutStorage(source));
}

TEST_P(TMatrix, MoveAssignmentToItselfDoesNothing) {
  Matrix matrix = TwoByThree(GetParam());
  Matrix& same = matrix;

  matrix = std::move(same);

  EXPECT_EQ(2, matrix.GetNumRows());
  EXPECT_THAT(CellsOf(matrix, 2, 3), IsTwoByThree());
}

TEST_P(TMatrix, AMovedMatrixIsCopiedWhole) {
  Matrix source = TwoByThree(GetParam());
  Matrix const moved(std::move(source));

  Matrix const copy(moved);

  EXPECT_THAT(CellsOf(copy, 2, 3), IsTwoByThree());
}

class TMatrixDeathTest : public DeathTest {
 protected:
  Matrix matrix_ = TwoByThree();
};

TEST_F(TMatrixDeathTest, NamesTheRowRead) {
  EXPECT_ASSERTION(static_cast<void>(matrix_.GetAt(2, 0)), "TMatrix::GetAt: index 2");
  EXPECT_ASSERTION(static_cast<void>(matrix_.GetAt(-1, 0)), "TMatrix::GetAt: index -1");
}

TEST_F(TMatrixDeathTest, NamesTheColumnRead) {
  EXPECT_ASSERTION(static_cast<void>(matrix_.GetAt(0, 3)), "TMatrix::GetAt: index 3");
  EXPECT_ASSERTION(static_cast<void>(matrix_.GetAt(0, -1)), "TMatrix::GetAt: index -1");
}

TEST_F(TMatrixDeathTest, NamesTheRowSet) {
  EXPECT_ASSERTION(matrix_.SetAt(2, 0, 1.0), "TMatrix::SetAt: index 2");
  EXPECT_ASSERTION(matrix_.SetAt(-1, 0, 1.0), "TMatrix::SetAt: index -1");
}

TEST_F(TMatrixDeathTest, NamesTheColumnSet) {
  EXPECT_ASSERTION(matrix_.SetAt(0, 3, 1.0), "TMatrix::SetAt: index 3");
  EXPECT_ASSERTION(matrix_.SetAt(0, -1, 1.0), "TMatrix::SetAt: index -1");
}

TEST_F(TMatrixDeathTest, NamesTheNegativeIndexGrownTo) {
  EXPECT_ASSERTION(matrix_.SetAtGrow(-1, 0, 1.0), "TMatrix::SetAtGrow: index -1");
  EXPECT_ASSERTION(matrix_.SetAtGrow(0, -1, 1.0), "TMatrix::SetAtGrow: index -1");
}

}  // namespace
}  // namespace tree::testing
