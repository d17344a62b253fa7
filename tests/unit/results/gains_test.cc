#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree {
namespace {

static_assert(std::is_abstract_v<GainsIntf>);
static_assert(std::has_virtual_destructor_v<GainsIntf>);
static_assert(std::has_virtual_destructor_v<Gains>);
static_assert(std::is_same_v<decltype(std::declval<GainsIntf const&>().Clone()), GainsIntf*>);
static_assert(
    std::is_same_v<decltype(std::declval<GainsIntf const&>().GetNode(0, 0)), Node const*>);
static_assert(std::is_same_v<decltype(std::declval<GainsIntf const&>().GetNumRows()), int>);
static_assert(std::is_same_v<decltype(std::declval<GainsIntf const&>().GetNumNodes(0)), int>);
static_assert(std::is_same_v<decltype(std::declval<GainsIntf const&>().HasColumn(0)), bool>);
static_assert(std::is_same_v<decltype(std::declval<GainsIntf const&>().GetValue(0, 0)), double>);
static_assert(std::is_same_v<decltype(std::declval<Gains const&>().GetNode(0, 0)), Node const*>);
static_assert(
    std::is_same_v<decltype(std::declval<Gains&>() = std::declval<GainsIntf const&>()), Gains&>);

using Log = std::vector<std::string>;

// A table whose answers tell their arguments, and that logs the life of each object by name:
// "clone a" or "delete a". Its clones are named with a prime more.
class LoggedTable : public GainsIntf {
 public:
  LoggedTable(std::string name, Log* log) : name_(std::move(name)), log_(log) {}
  ~LoggedTable() override { log_->push_back("delete " + name_); }

  int GetNumRows() const override { return 11; }
  int GetNumNodes(int row) const override { return 100 + row; }
  Node const* GetNode(int row, int position) const override {
    return row == 1 && position == 2 ? &node_ : nullptr;
  }
  bool HasColumn(int column) const override { return column == 3; }
  double GetValue(int row, int column) const override { return 10.0 * row + column; }
  GainsIntf* Clone() const override {
    log_->push_back("clone " + name_);
    return new LoggedTable(name_ + "'", log_);
  }

 private:
  static NodeImp const node_;

  std::string name_;
  Log* log_;
};

NodeImp const LoggedTable::node_;

// A table of `numRows` rows.
class PlainTable : public GainsIntf {
 public:
  explicit PlainTable(int numRows) : numRows_(numRows) {}

  int GetNumRows() const override { return numRows_; }
  int GetNumNodes(int /*row*/) const override { return 0; }
  Node const* GetNode(int /*row*/, int /*position*/) const override { return nullptr; }
  bool HasColumn(int /*column*/) const override { return false; }
  double GetValue(int /*row*/, int /*column*/) const override { return 0.0; }
  GainsIntf* Clone() const override { return new PlainTable(*this); }

 private:
  int numRows_;
};

void ExpectEmpty(Gains const& gains) {
  EXPECT_EQ(gains.GetNumRows(), 0);
  EXPECT_EQ(gains.GetNumNodes(0), 0);
  EXPECT_EQ(gains.GetNode(1, 2), nullptr);
  EXPECT_FALSE(gains.HasColumn(3));
  EXPECT_EQ(gains.GetValue(0, 0), systemMissingValue());
}

TEST(Gains, StartsEmpty) {
  Gains const gains;

  ExpectEmpty(gains);
}

TEST(Gains, AsksTheTableThatItHolds) {
  Log log;
  LoggedTable const table("a", &log);
  Gains gains;

  gains = table;

  EXPECT_EQ(gains.GetNumRows(), 11);
  EXPECT_EQ(gains.GetNumNodes(4), 104);
  EXPECT_EQ(gains.GetNode(1, 2), table.GetNode(1, 2));
  EXPECT_NE(gains.GetNode(1, 2), nullptr);
  EXPECT_EQ(gains.GetNode(2, 1), nullptr);
  EXPECT_TRUE(gains.HasColumn(3));
  EXPECT_FALSE(gains.HasColumn(4));
  EXPECT_EQ(gains.GetValue(5, 6), 56.0);
}

TEST(Gains, HoldsAFreshCloneAndLeavesTheTableToItsOwner) {
  Log log;
  Gains gains;
  {
    LoggedTable const table("a", &log);

    gains = table;

    EXPECT_EQ(log, (Log{"clone a"}));
  }
  EXPECT_EQ(log, (Log{"clone a", "delete a"}));
  EXPECT_EQ(gains.GetNumRows(), 11);
}

TEST(Gains, HoldsOneCloneWhenATableIsAssignedTwice) {
  Log log;
  LoggedTable const table("a", &log);
  Gains gains;

  gains = table;
  gains = table;

  EXPECT_EQ(log, (Log{"clone a", "delete a'", "clone a"}));
}

TEST(Gains, DeletesItsTableBeforeItClonesTheOneAssigned) {
  Log log;
  LoggedTable const first("a", &log);
  LoggedTable const second("b", &log);
  Gains gains;
  gains = first;
  log.clear();

  gains = second;

  EXPECT_EQ(log, (Log{"delete a'", "clone b"}));
}

TEST(Gains, DeletesItsTableAtItsEnd) {
  Log log;
  LoggedTable const table("a", &log);
  {
    Gains gains;
    gains = table;
    log.clear();
  }

  EXPECT_EQ(log, (Log{"delete a'"}));
}

TEST(Gains, ReturnsItselfFromAssignments) {
  PlainTable const table(1);
  Gains gains;
  Gains const other;

  EXPECT_EQ(&(gains = table), &gains);
  EXPECT_EQ(&(gains = other), &gains);
}

TEST(Gains, CopiesDeeply) {
  Log log;
  auto source = std::make_unique<Gains>();
  *source = LoggedTable("a", &log);
  log.clear();

  Gains const copied(*source);
  Gains assigned;
  assigned = *source;
  source.reset();

  EXPECT_EQ(log, (Log{"clone a'", "clone a'", "delete a'"}));
  EXPECT_EQ(copied.GetNumRows(), 11);
  EXPECT_EQ(assigned.GetNumRows(), 11);
}

TEST(Gains, ReplacesItsTableByThatOfAnotherHandle) {
  Log log;
  LoggedTable const first("a", &log);
  LoggedTable const second("b", &log);
  {
    Gains gains;
    gains = first;
    Gains other;
    other = second;
    log.clear();

    gains = other;

    EXPECT_EQ(log, (Log{"clone b'", "delete a'"}));
    log.clear();
  }
  EXPECT_EQ(log, (Log{"delete b'", "delete b''"}));
}

TEST(Gains, BecomesEmptyWhenAnEmptyHandleIsAssigned) {
  Log log;
  LoggedTable const table("a", &log);
  Gains gains;
  gains = table;
  log.clear();

  gains = Gains();

  EXPECT_EQ(log, (Log{"delete a'"}));
  ExpectEmpty(gains);
}

TEST(Gains, CopiesAnEmptyHandleToAnEmptyOne) {
  Gains const empty;

  Gains const copied(empty);

  ExpectEmpty(copied);
}

TEST(Gains, DoesNothingWhenAssignedToItself) {
  Log log;
  LoggedTable const table("a", &log);
  Gains gains;
  gains = table;
  log.clear();
  Gains const& same = gains;

  gains = same;

  EXPECT_EQ(log, Log());
  EXPECT_EQ(gains.GetNumRows(), 11);
}

TEST(Gains, IsEmptyWhenMemoryRunsOutForTheTableAssigned) {
  PlainTable const table(1);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    Gains gains;
    gains = table;
    EXPECT_EQ(gains.GetNumRows(), 1);
    try {
      gains = PlainTable(2);
    } catch (std::bad_alloc const&) {
      ExpectEmpty(gains);
      throw;
    }
  });

  EXPECT_EQ(numFailures, 2);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

TEST(Gains, KeepsItsTableWhenMemoryRunsOutForThatOfAnotherHandle) {
  Gains other;
  other = PlainTable(2);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    Gains gains;
    gains = PlainTable(1);
    try {
      gains = other;
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(gains.GetNumRows(), 1);
      throw;
    }
  });

  EXPECT_EQ(numFailures, 2);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

#ifndef NDEBUG
TEST(GainsDeathTest, RequiresAnotherTableThanTheOneHeld) {
  class SharedTable : public PlainTable {
   public:
    explicit SharedTable(GainsIntf** lastClone) : PlainTable(1), lastClone_(lastClone) {}
    GainsIntf* Clone() const override {
      *lastClone_ = new SharedTable(*this);
      return *lastClone_;
    }

   private:
    GainsIntf** lastClone_;
  };
  GainsIntf* held = nullptr;
  Gains gains;
  gains = SharedTable(&held);

  EXPECT_DEATH(gains = *held, "Gains::operator=.*the one that is held");
}
#endif

#if TREE_HAS_SLOTS
TEST(GainsIntf, HasItsVirtualOperationsInOrder) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&GainsIntf::GetNumRows), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&GainsIntf::GetNumNodes), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&GainsIntf::GetNode), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&GainsIntf::HasColumn), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&GainsIntf::GetValue), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&GainsIntf::Clone), kFirstSlot + 5);
}

// Another order than that of the table.
TEST(Gains, HasItsVirtualOperationsInOrder) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&Gains::GetNumRows), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&Gains::HasColumn), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&Gains::GetNumNodes), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&Gains::GetNode), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&Gains::GetValue), kFirstSlot + 4);
}
#endif

}  // namespace
}  // namespace tree
