#include "growing/work_memory.h"

#include <cstddef>
#include <new>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "testing/failing_allocator.h"

namespace tree::grow {
namespace {

TEST(WorkMemory, HasRoomForWhatIsAskedFor) {
  WorkMemory<int> memory;

  for (std::size_t const count : {3U, 1000U, 0U, 20U, 1001U}) {
    int* const values = memory.Get(count);
    std::iota(values, values + count, 7);
    std::vector<int> expected(count);
    std::iota(expected.begin(), expected.end(), 7);
    EXPECT_EQ(std::vector<int>(values, values + count), expected);
  }
}

TEST(WorkMemory, IsKeptWhereNoMoreIsNeeded) {
  WorkMemory<int> memory;
  int* const values = memory.Get(100);
  values[99] = 42;

  EXPECT_EQ(memory.Get(10), values);
  EXPECT_EQ(memory.Get(100), values);
  EXPECT_EQ(values[99], 42);
}

TEST(WorkMemory, CanBeAskedAgainWhenThereWasNone) {
  WorkMemory<int> memory;
  memory.Get(10);
  {
    testing::FailingAllocator const allocator(1);
    EXPECT_THROW(memory.Get(1000), std::bad_alloc);
  }

  int* const values = memory.Get(10);

  values[9] = 42;
  EXPECT_EQ(memory.Get(10)[9], 42);
}

}  // namespace
}  // namespace tree::grow
