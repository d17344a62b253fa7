#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/container_checks.h"
#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "tree/containers.h"

namespace tree::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

static_assert(std::is_same_v<bool, decltype(std::declval<::TArray<int>&>().Init(1))>);
static_assert(std::is_same_v<bool, decltype(std::declval<::TArray<int>&>().Init(1, true))>);
static_assert(std::is_same_v<bool, decltype(std::declval<::TArray<int>&>().Grow(1))>);
static_assert(std::is_same_v<bool, decltype(std::declval<::TArray<int>&>().Resize(1))>);
static_assert(std::is_same_v<void, decltype(std::declval<::TArray<int>&>().Clear())>);
static_assert(std::is_same_v<void, decltype(std::declval<::TArray<int>&>().SetAt(0, 1))>);
static_assert(std::is_same_v<void, decltype(std::declval<::TArray<int>&>().SetAtGrow(0, 1))>);
static_assert(std::is_same_v<void, decltype(std::declval<::TArray<double>&>().AddAtGrow(0, 1.0))>);
static_assert(std::is_same_v<int, decltype(std::declval<::TArray<int> const&>().GetSize())>);
static_assert(std::is_same_v<int const*, decltype(std::declval<::TArray<int> const&>().GetData())>);
static_assert(std::is_same_v<int const&, decltype(std::declval<::TArray<int> const&>()[0])>);
static_assert(std::is_same_v<int&, decltype(std::declval<::TArray<int>&>()[0])>);
static_assert(!std::is_polymorphic_v<::TArray<int>>);

/// What an array holds, and how it was told to copy it. Both ways have to look alike.
template <class T, bool zeroFill>
struct Kind {
  using Element = T;
  static constexpr bool kZeroFill = zeroFill;
};

struct KindNames {
  template <class Kind>
  static std::string GetName(int) {
    std::string const element = std::is_same_v<typename Kind::Element, int> ? "int" : "double";
    return element + (Kind::kZeroFill ? "CopiedByBlock" : "CopiedByElement");
  }
};

template <class Kind>
class TArray : public ::testing::Test {
 protected:
  using Element = typename Kind::Element;
  using Array = ::TArray<Element>;

  static Array Empty() { return Array(Kind::kZeroFill); }

  /// Elements as given, with a capacity of exactly their number.
  static Array Of(std::vector<Element> const& elements) {
    Array array(Kind::kZeroFill);
    array.Resize(static_cast<int>(elements.size()));
    int index = 0;
    for (Element const element : elements) array.SetAt(index++, element);
    return array;
  }

  /// Elements as given, then spare elements up to the capacity.
  static Array Of(std::vector<Element> const& elements, int capacity) {
    Array array = Of(elements);
    array.Grow(capacity);
    return array;
  }
};

using Kinds =
    ::testing::Types<Kind<double, true>, Kind<double, false>, Kind<int, true>, Kind<int, false>>;
TYPED_TEST_SUITE(TArray, Kinds, KindNames);

TYPED_TEST(TArray, BeginsEmptyWithoutStorage) {
  auto array = this->Empty();

  EXPECT_EQ(nullptr, array.GetData());
  EXPECT_EQ(0, array.GetSize());
  EXPECT_TRUE(HasCapacity(array, 0));
}

TYPED_TEST(TArray, InitMakesZeroedStorageAndKeepsTheSize) {
  auto array = this->Empty();

  ASSERT_TRUE(array.Init(3, false));

  EXPECT_EQ(0, array.GetSize());
  EXPECT_THAT(StorageOf(array, 3), Each(0));
  EXPECT_TRUE(HasCapacity(array, 3));
}

TYPED_TEST(TArray, InitWithKeepMakesZeroedStorageTooForNothingIsReadUnwritten) {
  auto array = this->Empty();

  ASSERT_TRUE(array.Init(3, true));

  EXPECT_EQ(0, array.GetSize());
  EXPECT_THAT(StorageOf(array, 3), Each(0));
  EXPECT_TRUE(HasCapacity(array, 3));
}

TYPED_TEST(TArray, InitLeavesThePreviousBlockToTheCaller) {
  auto array = this->Of({1, 2, 3});
  auto const* const previous = array.GetData();
  long const before = CountLiveAllocations();

  ASSERT_TRUE(array.Init(3, false));

  EXPECT_EQ(before + 1, CountLiveAllocations());
  EXPECT_NE(previous, array.GetData());
  EXPECT_THAT(std::vector(previous, previous + 3), ElementsAre(1, 2, 3));
  EXPECT_THAT(ElementsOf(array), ElementsAre(0, 0, 0));
  delete[] previous;
}

TYPED_TEST(TArray, InitOfFewerElementsThanTheOldCapacitySetsTheSizeToTheirNumber) {
  struct Row {
    char const* name;
    int oldSize;
    int count;
    int expectedSize;
  };
  constexpr int kOldCapacity = 4;
  constexpr Row kRows[] = {
      {"capacity exceeds the count, size too", 4, 2, 2},
      {"capacity exceeds the count, size does not", 1, 2, 2},
      {"capacity exceeds a count of none", 3, 0, 0},
      {"capacity is the count", 3, 4, 3},
      {"capacity is below the count", 3, 5, 3},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    auto array = this->Of({1, 2, 3, 4});
    array.Clear();
    array.Grow(kOldCapacity);
    array.SetAt(row.oldSize - 1, 9);
    auto const* const previous = array.GetData();

    EXPECT_TRUE(array.Init(row.count, false));

    EXPECT_EQ(row.expectedSize, array.GetSize());
    EXPECT_THAT(StorageOf(array, row.count), Each(0));
    delete[] previous;
    EXPECT_TRUE(HasCapacity(array, row.count));
  }
}

TYPED_TEST(TArray, InitOfACountBelowOneIsTrueAndDoesNothing) {
  for (int const count : {0, -1, -2147483647 - 1}) {
    SCOPED_TRACE(count);
    auto array = this->Of({1, 2});
    auto const* const data = array.GetData();

    EXPECT_TRUE(array.Init(count));

    EXPECT_EQ(data, array.GetData());
    EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
  }
}

TYPED_TEST(TArray, InitOfACountFromOneOnIsInitWithoutKeep) {
  auto array = this->Of({1, 2});
  auto const* const previous = array.GetData();

  EXPECT_TRUE(array.Init(1));

  EXPECT_NE(previous, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(0));
  EXPECT_TRUE(HasCapacity(array, 1));
  delete[] previous;
}

TYPED_TEST(TArray, InitThatCannotAllocateIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2, 3}, 4);
  auto const* const data = array.GetData();
  {
    FailingAllocator const allocator(1, true);

    EXPECT_FALSE(array.Init(2, false));
    EXPECT_FALSE(array.Init(2, true));
    EXPECT_FALSE(array.Init(2));
  }

  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2, 3));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, InitOfANegativeCountIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2});

  EXPECT_FALSE(array.Init(-1, false));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
}

TYPED_TEST(TArray, GrowKeepsTheElementsAndTheSizeAndZeroesTheNewTail) {
  auto array = this->Of({1, 2, 3});

  ASSERT_TRUE(array.Grow(5));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2, 3));
  EXPECT_THAT(StorageOf(array, 5), ElementsAre(1, 2, 3, 0, 0));
  EXPECT_TRUE(HasCapacity(array, 5));
}

TYPED_TEST(TArray, GrowFreesTheOldBlock) {
  auto array = this->Of({1, 2, 3});
  long const before = CountLiveAllocations();

  ASSERT_TRUE(array.Grow(5));

  EXPECT_EQ(before, CountLiveAllocations());
}

TYPED_TEST(TArray, GrowOfAnEmptyArrayMakesZeroedStorage) {
  auto array = this->Empty();

  ASSERT_TRUE(array.Grow(2));

  EXPECT_EQ(0, array.GetSize());
  EXPECT_THAT(StorageOf(array, 2), ElementsAre(0, 0));
}

TYPED_TEST(TArray, GrowToLessKeepsWhatFitsAndCutsTheSizeAsInitDoes) {
  auto array = this->Of({1, 2, 3, 4});

  ASSERT_TRUE(array.Grow(2));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(array, 2));
}

TYPED_TEST(TArray, GrowThatCannotAllocateIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2, 3});
  auto const* const data = array.GetData();
  long const before = CountLiveAllocations();
  {
    FailingAllocator const allocator(1, true);

    EXPECT_FALSE(array.Grow(5));
  }

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2, 3));
  EXPECT_TRUE(HasCapacity(array, 3));
}

TYPED_TEST(TArray, GrowOfANegativeCountIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2});

  EXPECT_FALSE(array.Grow(-1));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
}

TYPED_TEST(TArray, ResizeToThePresentSizeIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2}, 4);
  auto const* const data = array.GetData();

  EXPECT_FALSE(array.Resize(2));

  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, ResizeOfAnEmptyArrayToNothingIsFalse) {
  auto array = this->Empty();

  EXPECT_FALSE(array.Resize(0));

  EXPECT_EQ(nullptr, array.GetData());
}

TYPED_TEST(TArray, ResizeToLessZeroesTheDroppedElementsAndKeepsTheCapacity) {
  auto array = this->Of({1, 2, 3, 4});
  auto const* const data = array.GetData();

  EXPECT_TRUE(array.Resize(1));

  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1));
  EXPECT_THAT(StorageOf(array, 4), ElementsAre(1, 0, 0, 0));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, ResizeToNothingZeroesAllAndKeepsTheCapacity) {
  auto array = this->Of({1, 2});

  EXPECT_TRUE(array.Resize(0));

  EXPECT_EQ(0, array.GetSize());
  EXPECT_THAT(StorageOf(array, 2), ElementsAre(0, 0));
  EXPECT_TRUE(HasCapacity(array, 2));
}

TYPED_TEST(TArray, ResizeToMoreWithinTheCapacityAllocatesNothing) {
  auto array = this->Of({1, 2}, 5);
  auto const* const data = array.GetData();

  EXPECT_TRUE(array.Resize(5));

  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2, 0, 0, 0));
}

TYPED_TEST(TArray, ResizeBeyondTheCapacityGrowsToExactlyTheSize) {
  auto array = this->Of({1, 2});

  EXPECT_TRUE(array.Resize(4));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2, 0, 0));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, ResizeThatCannotAllocateIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2});
  {
    FailingAllocator const allocator(1, true);

    EXPECT_FALSE(array.Resize(4));
  }

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
}

TYPED_TEST(TArray, ResizeToANegativeSizeIsFalseAndChangesNothing) {
  auto array = this->Of({1, 2});

  EXPECT_FALSE(array.Resize(-1));

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
}

TYPED_TEST(TArray, ClearFreesTheStorage) {
  long const before = CountLiveAllocations();
  auto array = this->Of({1, 2}, 4);

  array.Clear();

  EXPECT_EQ(before, CountLiveAllocations());
  EXPECT_EQ(nullptr, array.GetData());
  EXPECT_EQ(0, array.GetSize());
  EXPECT_TRUE(HasCapacity(array, 0));
}

TYPED_TEST(TArray, EndsByFreeingItsStorage) {
  long const before = CountLiveAllocations();

  {
    auto const array = this->Of({1, 2}, 4);
    ASSERT_EQ(before + 1, CountLiveAllocations());
  }

  EXPECT_EQ(before, CountLiveAllocations());
}

TYPED_TEST(TArray, ReadsElementsByTheConstantIndexWithoutAChange) {
  auto const array = this->Of({1, 2}, 4);

  EXPECT_EQ(1, array[0]);
  EXPECT_EQ(2, array[1]);
  EXPECT_EQ(0, array[3]);
  EXPECT_EQ(2, array.GetSize());
}

TYPED_TEST(TArray, WritesThroughTheWritableIndex) {
  auto array = this->Of({1, 2, 3});

  array[1] = 7;

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 7, 3));
}

TYPED_TEST(TArray, ReadingThroughTheWritableIndexRaisesTheSize) {
  auto array = this->Of({1}, 4);

  EXPECT_EQ(0, array[2]);

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 0, 0));
}

TYPED_TEST(TArray, TheWritableIndexBelowTheSizeKeepsTheSize) {
  auto array = this->Of({1, 2, 3});

  EXPECT_EQ(1, array[0]);
  EXPECT_EQ(3, array[2]);

  EXPECT_EQ(3, array.GetSize());
}

TYPED_TEST(TArray, TheWritableIndexNeverAllocates) {
  auto array = this->Of({1}, 4);
  long const before = CountAllocations();

  array[3] = 5;

  EXPECT_EQ(before, CountAllocations());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 0, 0, 5));
}

TYPED_TEST(TArray, SetAtStoresAndRaisesTheSizeWhenBeyondIt) {
  auto array = this->Of({1}, 4);

  array.SetAt(2, 6);
  array.SetAt(0, 5);

  EXPECT_THAT(ElementsOf(array), ElementsAre(5, 0, 6));
}

TYPED_TEST(TArray, SetAtNeverAllocates) {
  auto array = this->Of({1}, 4);
  long const before = CountAllocations();

  array.SetAt(3, 6);

  EXPECT_EQ(before, CountAllocations());
}

TYPED_TEST(TArray, SetAtGrowGrowsToExactlyTheIndexPlusOne) {
  auto array = this->Empty();

  array.SetAtGrow(2, 7);

  EXPECT_THAT(ElementsOf(array), ElementsAre(0, 0, 7));
  EXPECT_TRUE(HasCapacity(array, 3));
}

TYPED_TEST(TArray, SetAtGrowAllocatesAnewAtEveryStepBeyondTheCapacity) {
  auto array = this->Empty();

  for (int index = 0; index < 20; ++index) {
    SCOPED_TRACE(index);
    long const before = CountAllocations();

    array.SetAtGrow(index, 1);

    EXPECT_EQ(before + 1, CountAllocations());
  }
}

TYPED_TEST(TArray, SetAtGrowWithinTheCapacityAllocatesNothing) {
  auto array = this->Of({1, 2}, 4);
  long const before = CountAllocations();

  array.SetAtGrow(0, 5);
  array.SetAtGrow(3, 6);

  EXPECT_EQ(before, CountAllocations());
  EXPECT_THAT(ElementsOf(array), ElementsAre(5, 2, 0, 6));
}

TYPED_TEST(TArray, SetAtGrowTakesAnElementOfItsOwn) {
  auto array = this->Of({4, 5});

  array.SetAtGrow(2, std::as_const(array)[1]);

  EXPECT_THAT(ElementsOf(array), ElementsAre(4, 5, 5));
}

TYPED_TEST(TArray, AddAtGrowAddsToTheElement) {
  auto array = this->Of({1, 2});

  array.AddAtGrow(1, 5);

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 7));
}

TYPED_TEST(TArray, AddAtGrowGrowsToExactlyTheIndexPlusOneAndAddsToZero) {
  auto array = this->Of({1});

  array.AddAtGrow(3, 5);

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 0, 0, 5));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, AddAtGrowWithinTheCapacityRaisesTheSizeAndAllocatesNothing) {
  auto array = this->Of({1}, 4);
  long const before = CountAllocations();

  array.AddAtGrow(2, 5);

  EXPECT_EQ(before, CountAllocations());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 0, 5));
}

TYPED_TEST(TArray, AddAtGrowTakesAnElementOfItsOwn) {
  auto array = this->Of({4, 5});

  array.AddAtGrow(2, std::as_const(array)[1]);

  EXPECT_THAT(ElementsOf(array), ElementsAre(4, 5, 5));
}

TYPED_TEST(TArray, CopyHasTheElementsAndACapacityOfTheirNumber) {
  auto const source = this->Of({1, 2, 3}, 7);

  auto copy = source;

  EXPECT_THAT(ElementsOf(copy), ElementsAre(1, 2, 3));
  EXPECT_TRUE(HasCapacity(copy, 3));
}

TYPED_TEST(TArray, CopyIsIndependent) {
  auto source = this->Of({1, 2});
  auto copy = source;

  source.SetAt(0, 8);
  copy.SetAt(1, 9);

  EXPECT_THAT(ElementsOf(source), ElementsAre(8, 2));
  EXPECT_THAT(ElementsOf(copy), ElementsAre(1, 9));
}

TYPED_TEST(TArray, CopyOfAnArrayWithoutElementsInUseAllocatesNothing) {
  auto source = this->Empty();
  source.Grow(4);
  long const before = CountAllocations();

  auto copy = source;

  EXPECT_EQ(before, CountAllocations());
  EXPECT_EQ(nullptr, copy.GetData());
  EXPECT_EQ(0, copy.GetSize());
  EXPECT_TRUE(HasCapacity(copy, 0));
}

TYPED_TEST(TArray, CopyThatCannotAllocateIsEmpty) {
  auto const source = this->Of({1, 2});
  FailingAllocator const allocator(1, true);

  auto const copy = source;

  EXPECT_EQ(nullptr, copy.GetData());
  EXPECT_EQ(0, copy.GetSize());
}

TYPED_TEST(TArray, AssignmentCopiesTheElementsAndTheCapacity) {
  auto const source = this->Of({1, 2, 3}, 5);
  auto target = this->Of({7, 8, 9, 10, 11, 12});

  target = source;

  EXPECT_THAT(ElementsOf(target), ElementsAre(1, 2, 3));
  EXPECT_THAT(StorageOf(target, 5), ElementsAre(1, 2, 3, 0, 0));
  EXPECT_TRUE(HasCapacity(target, 5));
}

TYPED_TEST(TArray, AssignmentFreesTheOldBlock) {
  auto const source = this->Of({1, 2, 3});
  auto target = this->Of({7});
  long const before = CountLiveAllocations();

  target = source;

  EXPECT_EQ(before, CountLiveAllocations());
}

TYPED_TEST(TArray, AssignmentIsIndependent) {
  auto source = this->Of({1, 2});
  auto target = this->Empty();
  target = source;

  source.SetAt(0, 8);
  target.SetAt(1, 9);

  EXPECT_THAT(ElementsOf(source), ElementsAre(8, 2));
  EXPECT_THAT(ElementsOf(target), ElementsAre(1, 9));
}

TYPED_TEST(TArray, AssignmentOfAnArrayWithoutElementsInUseCopiesTheCapacity) {
  auto source = this->Empty();
  source.Grow(4);
  auto target = this->Of({7});

  target = source;

  EXPECT_EQ(0, target.GetSize());
  EXPECT_THAT(StorageOf(target, 4), Each(0));
  EXPECT_TRUE(HasCapacity(target, 4));
}

TYPED_TEST(TArray, AssignmentOfAnArrayWithoutStorageEmptiesTheTarget) {
  auto const source = this->Empty();
  auto target = this->Of({7, 8});

  target = source;

  EXPECT_EQ(nullptr, target.GetData());
  EXPECT_EQ(0, target.GetSize());
  EXPECT_TRUE(HasCapacity(target, 0));
}

TYPED_TEST(TArray, AssignmentToItselfDoesNothing) {
  auto array = this->Of({1, 2}, 4);
  auto const& same = array;
  auto const* const data = array.GetData();

  array = same;

  EXPECT_EQ(data, array.GetData());
  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(array, 4));
}

TYPED_TEST(TArray, AssignmentReturnsItsTarget) {
  auto const source = this->Of({1});
  auto target = this->Empty();

  EXPECT_EQ(&target, &(target = source));
}

TYPED_TEST(TArray, AssignmentThatCannotAllocateLeavesTheTargetEmpty) {
  auto const source = this->Of({1, 2});
  auto target = this->Of({7});
  FailingAllocator const allocator(1, true);

  target = source;

  EXPECT_EQ(nullptr, target.GetData());
  EXPECT_EQ(0, target.GetSize());
}

TYPED_TEST(TArray, MoveTakesTheStorageAndLeavesTheSourceEmpty) {
  auto source = this->Of({1, 2}, 4);
  auto const* const data = source.GetData();

  auto moved = std::move(source);

  EXPECT_EQ(data, moved.GetData());
  EXPECT_THAT(ElementsOf(moved), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(moved, 4));
  EXPECT_EQ(nullptr, source.GetData());
  EXPECT_EQ(0, source.GetSize());
  EXPECT_TRUE(HasCapacity(source, 0));
}

TYPED_TEST(TArray, MoveAssignmentTakesTheStorageAndFreesTheOldBlock) {
  auto source = this->Of({1, 2}, 4);
  auto target = this->Of({7, 8, 9});
  long const before = CountLiveAllocations();

  target = std::move(source);

  EXPECT_EQ(before - 1, CountLiveAllocations());
  EXPECT_THAT(ElementsOf(target), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(target, 4));
  EXPECT_EQ(nullptr, source.GetData());
  EXPECT_EQ(0, source.GetSize());
  EXPECT_TRUE(HasCapacity(source, 0));
}

TYPED_TEST(TArray, MoveAssignmentToItselfDoesNothing) {
  auto array = this->Of({1, 2}, 4);
  auto& same = array;

  array = std::move(same);

  EXPECT_THAT(ElementsOf(array), ElementsAre(1, 2));
  EXPECT_TRUE(HasCapacity(array, 4));
}

// Elements that a block copy would damage show that copies go element by element.
TEST(TArrayOfStrings, CopiesElementByElementWithoutTheZeroFillFlag) {
  std::string const longText(100, 'x');
  ::TArray<std::string> array(false);
  array.SetAtGrow(0, longText);
  array.SetAtGrow(1, "b");

  ::TArray<std::string> const copy(array);
  ::TArray<std::string> assigned(false);
  assigned = array;
  array.Clear();

  EXPECT_THAT(ElementsOf(copy), ElementsAre(longText, "b"));
  EXPECT_THAT(ElementsOf(assigned), ElementsAre(longText, "b"));
}

class TArrayDeathTest : public DeathTest {
 protected:
  TArrayDeathTest() { array_.Resize(2); }

  ::TArray<double> array_{true};
};

TEST_F(TArrayDeathTest, NamesTheIndexRead) {
  EXPECT_ASSERTION(static_cast<void>(std::as_const(array_)[7]), "TArray::operator\\[\\]: index 7");
  EXPECT_ASSERTION(static_cast<void>(std::as_const(array_)[2]), "TArray::operator\\[\\]: index 2");
  EXPECT_ASSERTION(static_cast<void>(std::as_const(array_)[-1]),
                   "TArray::operator\\[\\]: index -1");
}

TEST_F(TArrayDeathTest, NamesTheIndexReachedForWriting) {
  EXPECT_ASSERTION(array_[7] = 1.0, "TArray::operator\\[\\]: index 7");
  EXPECT_ASSERTION(array_[2] = 1.0, "TArray::operator\\[\\]: index 2");
  EXPECT_ASSERTION(array_[-1] = 1.0, "TArray::operator\\[\\]: index -1");
}

TEST_F(TArrayDeathTest, NamesTheIndexSet) {
  EXPECT_ASSERTION(array_.SetAt(2, 1.0), "TArray::SetAt: index 2");
  EXPECT_ASSERTION(array_.SetAt(-1, 1.0), "TArray::SetAt: index -1");
}

TEST_F(TArrayDeathTest, NamesTheNegativeIndexGrownTo) {
  EXPECT_ASSERTION(array_.SetAtGrow(-1, 1.0), "TArray::SetAtGrow: index -1");
  EXPECT_ASSERTION(array_.AddAtGrow(-1, 1.0), "TArray::AddAtGrow: index -1");
}

// Without any storage the write after a failed growth hits the null address, in every build.
TEST_F(TArrayDeathTest, WritesAnywayWhenGrowthFails) {
  EXPECT_DEATH(
      {
        ::TArray<double> array(true);
        FailingAllocator const allocator(1, true);
        array.SetAtGrow(0, 1.0);
      },
      "");
  EXPECT_DEATH(
      {
        ::TArray<double> array(true);
        FailingAllocator const allocator(1, true);
        array.AddAtGrow(0, 1.0);
      },
      "");
}

}  // namespace
}  // namespace tree::testing
