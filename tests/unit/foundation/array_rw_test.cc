#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "testing/debug_death.h"
#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/containers.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

using Element = VariableSettings*;
using ReadOnly = MCTree::AArrayRO<Element>;
using ReadWrite = MCTree::AArrayRW<Element>;
using List = MCTree::ArrayRW<Element>;

static_assert(std::is_abstract_v<ReadOnly> && std::has_virtual_destructor_v<ReadOnly>);
static_assert(std::is_abstract_v<ReadWrite> && std::is_base_of_v<ReadOnly, ReadWrite>);
static_assert(!std::is_abstract_v<List> && std::is_base_of_v<ReadWrite, List>);

// Each class shows both index operators.
static_assert(std::is_same_v<Element const&, decltype(std::declval<ReadOnly const&>()[0])>);
static_assert(std::is_same_v<Element const&, decltype(std::declval<ReadWrite const&>()[0])>);
static_assert(std::is_same_v<Element&, decltype(std::declval<ReadWrite&>()[0])>);
static_assert(std::is_same_v<Element const&, decltype(std::declval<List const&>()[0])>);
static_assert(std::is_same_v<Element&, decltype(std::declval<List&>()[0])>);
static_assert(std::is_same_v<Element const&, decltype(std::declval<List const&>().GetAt(0))>);
static_assert(std::is_same_v<int, decltype(std::declval<ReadOnly const&>().GetNumElements())>);
static_assert(
    std::is_same_v<void, decltype(std::declval<ReadWrite&>().Add(std::declval<Element const&>()))>);
static_assert(
    std::is_same_v<void, decltype(std::declval<ReadWrite&>().SetAt(0, std::declval<Element&>()))>);

class ArrayRW : public ::testing::Test {
 protected:
  VariableSettingsImp a_;
  VariableSettingsImp b_;
  VariableSettingsImp c_;
  List list_;
};

TEST_F(ArrayRW, BeginsEmpty) { EXPECT_EQ(0, list_.GetNumElements()); }

TEST_F(ArrayRW, AddAppends) {
  list_.Add(&b_);
  list_.Add(&a_);
  list_.Add(&b_);

  EXPECT_EQ(3, list_.GetNumElements());
  EXPECT_EQ(&b_, list_.GetAt(0));
  EXPECT_EQ(&a_, list_.GetAt(1));
  EXPECT_EQ(&b_, list_.GetAt(2));
}

TEST_F(ArrayRW, ReadsAlikeInAllThreeWays) {
  list_.Add(&a_);
  list_.Add(&b_);

  List const& readOnly = list_;

  EXPECT_EQ(&b_, readOnly[1]);
  EXPECT_EQ(&b_, list_[1]);
  EXPECT_EQ(&b_, readOnly.GetAt(1));
}

TEST_F(ArrayRW, WritesThroughTheWritableIndex) {
  list_.Add(&a_);
  list_.Add(&b_);

  list_[1] = &c_;

  EXPECT_EQ(&a_, list_.GetAt(0));
  EXPECT_EQ(&c_, list_.GetAt(1));
}

TEST_F(ArrayRW, SetAtReplacesAnElement) {
  list_.Add(&a_);
  list_.Add(&b_);
  Element replacement = &c_;

  list_.SetAt(0, replacement);

  EXPECT_EQ(&c_, list_.GetAt(0));
  EXPECT_EQ(&b_, list_.GetAt(1));
  EXPECT_EQ(&c_, replacement);
  EXPECT_EQ(2, list_.GetNumElements());
}

TEST_F(ArrayRW, WorksThroughItsInterfaces) {
  ReadWrite& writable = list_;
  ReadOnly const& readable = list_;
  Element replacement = &c_;

  writable.Add(&a_);
  writable.Add(&b_);
  writable[0] = &b_;
  writable.SetAt(1, replacement);

  EXPECT_EQ(2, readable.GetNumElements());
  EXPECT_EQ(&b_, readable[0]);
  EXPECT_EQ(&c_, std::as_const(writable)[1]);
  writable.Clear();
  EXPECT_EQ(0, readable.GetNumElements());
}

TEST_F(ArrayRW, ClearEmptiesItAndDeletesNothing) {
  int deaths = 0;
  auto const watched = std::make_unique<Watched<VariableSettingsImp>>(&deaths);
  list_.Add(watched.get());

  list_.Clear();

  EXPECT_EQ(0, list_.GetNumElements());
  EXPECT_EQ(0, deaths);
}

TEST_F(ArrayRW, EndsWithoutDeletingWhatItPointsTo) {
  int deaths = 0;
  auto const watched = std::make_unique<Watched<VariableSettingsImp>>(&deaths);

  {
    List list;
    list.Add(watched.get());
  }

  EXPECT_EQ(0, deaths);
}

TEST_F(ArrayRW, EndsThroughTheReadOnlyInterfaceWithoutALeak) {
  long const before = CountLiveAllocations();

  {
    auto list = std::make_unique<List>();
    list->Add(&a_);
    std::unique_ptr<ReadOnly> const readOnly = std::move(list);
  }

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST_F(ArrayRW, CopyHoldsTheSamePointersInAListOfItsOwn) {
  list_.Add(&a_);

  List copy(list_);
  copy.Add(&b_);
  list_[0] = &c_;

  EXPECT_EQ(1, list_.GetNumElements());
  EXPECT_EQ(2, copy.GetNumElements());
  EXPECT_EQ(&a_, copy.GetAt(0));
}

TEST_F(ArrayRW, AssignmentHoldsTheSamePointersInAListOfItsOwn) {
  list_.Add(&a_);
  List target;
  target.Add(&b_);
  target.Add(&c_);

  target = list_;
  list_[0] = &c_;

  EXPECT_EQ(1, target.GetNumElements());
  EXPECT_EQ(&a_, target.GetAt(0));
}

TEST_F(ArrayRW, AssignmentToItselfDoesNothing) {
  list_.Add(&a_);
  List const& same = list_;

  list_ = same;

  EXPECT_EQ(1, list_.GetNumElements());
  EXPECT_EQ(&a_, list_.GetAt(0));
}

TEST_F(ArrayRW, HoldsOtherTypesToo) {
  MCTree::ArrayRW<double> numbers;

  numbers.Add(1.5);
  numbers.Add(2.5);
  numbers[0] = 3.5;

  EXPECT_EQ(2, numbers.GetNumElements());
  EXPECT_EQ(3.5, numbers.GetAt(0));
  EXPECT_EQ(2.5, numbers.GetAt(1));
}

#if TREE_HAS_SLOTS
TEST_F(ArrayRW, KeepsTheOrderOfItsVirtualOperations) {
  using ReadIndex = Element const& (ReadOnly::*)(int) const;
  using WriteIndex = Element& (ReadWrite::*)(int);

  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&ReadOnly::GetNumElements));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(static_cast<ReadIndex>(&ReadOnly::operator[])));
  EXPECT_EQ(kFirstSlot + 2, VirtualSlot(&ReadWrite::Add));
  EXPECT_EQ(kFirstSlot + 3, VirtualSlot(&ReadWrite::Clear));
  EXPECT_EQ(kFirstSlot + 4, VirtualSlot(static_cast<WriteIndex>(&ReadWrite::operator[])));
  EXPECT_EQ(kFirstSlot + 5, VirtualSlot(&ReadWrite::SetAt));
  EXPECT_EQ(kFirstSlot + 6, VirtualSlot(&List::GetAt));
}
#endif

class ArrayRWDeathTest : public DeathTest {
 protected:
  ArrayRWDeathTest() { list_.Add(&a_); }

  VariableSettingsImp a_;
  List list_;
};

TEST_F(ArrayRWDeathTest, NamesTheIndexReached) {
  EXPECT_ASSERTION(static_cast<void>(std::as_const(list_)[1]), "ArrayRW::operator\\[\\]: index 1");
  EXPECT_ASSERTION(list_[-1] = &a_, "ArrayRW::operator\\[\\]: index -1");
}

TEST_F(ArrayRWDeathTest, NamesTheIndexReadByName) {
  EXPECT_ASSERTION(static_cast<void>(list_.GetAt(1)), "ArrayRW::GetAt: index 1");
}

TEST_F(ArrayRWDeathTest, NamesTheIndexSet) {
  EXPECT_ASSERTION(
      {
        Element element = &a_;
        list_.SetAt(1, element);
      },
      "ArrayRW::SetAt: index 1");
}

}  // namespace
}  // namespace tree::testing
