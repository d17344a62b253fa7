#include "foundation/allocation_checks.h"

#include <gtest/gtest.h>

#include <limits>

#include "testing/failing_allocator.h"

namespace tree::testing {
namespace {

TEST(AllocationChecks, GiveAnArrayTheSize) {
  TArray<double> array(true);

  ResizeOrThrow(array, 3);

  EXPECT_EQ(array.GetSize(), 3);
}

TEST(AllocationChecks, LeaveSizesAloneThatAnArrayRefuses) {
  TArray<double> array(true);
  array.Resize(2);

  for (int const count : {2, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(count);
    EXPECT_NO_THROW(ResizeOrThrow(array, count));
    EXPECT_EQ(array.GetSize(), 2);
  }
}

TEST(AllocationChecks, ThrowWhenAnArrayCannotGrow) {
  TArray<double> array(true);
  array.Resize(2);
  {
    FailingAllocator const failing(1);

    EXPECT_THROW(ResizeOrThrow(array, 3), std::bad_alloc);
  }

  EXPECT_EQ(array.GetSize(), 2);
}

TEST(AllocationChecks, ThrowWhenACopyOfAnArrayStayedEmpty) {
  TArray<int> array(true);
  array.Resize(2);
  TArray<int> const complete(array);
  TArray<int> const empty(true);

  EXPECT_NO_THROW(RequireCopied(array, complete));
  EXPECT_THROW(RequireCopied(array, empty), std::bad_alloc);
}

TEST(AllocationChecks, ThrowWhenACopyOfAMatrixStayedEmpty) {
  TMatrix<double> matrix(true);
  matrix.SetAtGrow(1, 1, 2.0);
  TMatrix<double> const complete(matrix);
  TMatrix<double> const empty(true);

  EXPECT_NO_THROW(RequireCopied(matrix, complete));
  EXPECT_THROW(RequireCopied(matrix, empty), std::bad_alloc);
}

}  // namespace
}  // namespace tree::testing
