#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree {
namespace {

static_assert(std::has_virtual_destructor_v<TreeStatistics>);
static_assert(std::is_same_v<
              decltype(std::declval<TreeStatistics&>() = std::declval<TreeStatisticsIntf const&>()),
              TreeStatistics&>);

// Statistics of another class than ours, that log the life of each object: "clone a -> b" or
// "delete a", by name.
class LoggedStatistics : public TreeStatisticsIntf {
 public:
  LoggedStatistics(std::string name, std::vector<std::string>* log)
      : name_(std::move(name)), log_(log) {}
  ~LoggedStatistics() override { log_->push_back("delete " + name_); }

  double GetMisclassificationCount(int predicted, int observed) const override {
    return 10.0 * predicted + observed;
  }
  double GetRisk() const override { return 0.5; }
  double GetStdError() const override { return 0.25; }
  bool IsCls() const override { return true; }
  int GetNumClasses() const override { return 7; }
  TreeStatisticsIntf* Clone() const override {
    log_->push_back("clone " + name_);
    return new LoggedStatistics(name_ + "'", log_);
  }

 private:
  std::string name_;
  std::vector<std::string>* log_;
};

using Log = std::vector<std::string>;

TreeStatisticsImp WithRisk(double risk) {
  TreeStatisticsImp statistics;
  statistics.SetRisk(risk);
  return statistics;
}

void ExpectEmpty(TreeStatistics const& handle) {
  EXPECT_FALSE(handle.IsCls());
  EXPECT_EQ(handle.GetNumClasses(), 0);
  EXPECT_EQ(handle.GetRisk(), systemMissingValue());
  EXPECT_EQ(handle.GetStdError(), systemMissingValue());
  EXPECT_EQ(handle.GetMisclassificationCount(0, 0), systemMissingValue());
  EXPECT_EQ(handle.GetMisclassificationCount(-1, 99), systemMissingValue());
}

TEST(TreeStatistics, StartsEmpty) {
  TreeStatistics const handle;

  ExpectEmpty(handle);
}

TEST(TreeStatistics, AsksTheObjectThatItHolds) {
  Log log;
  LoggedStatistics const statistics("a", &log);
  TreeStatistics handle;

  handle = statistics;

  EXPECT_TRUE(handle.IsCls());
  EXPECT_EQ(handle.GetNumClasses(), 7);
  EXPECT_EQ(handle.GetRisk(), 0.5);
  EXPECT_EQ(handle.GetStdError(), 0.25);
  EXPECT_EQ(handle.GetMisclassificationCount(3, 4), 34.0);
}

TEST(TreeStatistics, HoldsACloneOfTheObjectAssigned) {
  TreeStatisticsImp statistics = WithRisk(0.5);
  TreeStatistics handle;
  handle = statistics;

  statistics.SetRisk(9.0);

  EXPECT_EQ(handle.GetRisk(), 0.5);
}

TEST(TreeStatistics, ReturnsItselfFromAssignments) {
  TreeStatisticsImp const statistics = WithRisk(0.5);
  TreeStatistics handle;
  TreeStatistics const other;

  EXPECT_EQ(&(handle = statistics), &handle);
  EXPECT_EQ(&(handle = other), &handle);
}

TEST(TreeStatistics, DeletesItsObjectBeforeItClonesTheOneAssigned) {
  Log log;
  LoggedStatistics const first("a", &log);
  LoggedStatistics const second("b", &log);
  TreeStatistics handle;
  handle = first;
  log.clear();

  handle = second;

  EXPECT_EQ(log, (Log{"delete a'", "clone b"}));
}

TEST(TreeStatistics, DeletesItsObjectBeforeItClonesThatOfAnotherHandle) {
  Log log;
  LoggedStatistics const first("a", &log);
  LoggedStatistics const second("b", &log);
  TreeStatistics handle;
  TreeStatistics other;
  handle = first;
  other = second;
  log.clear();

  handle = other;

  EXPECT_EQ(log, (Log{"delete a'", "clone b'"}));
}

TEST(TreeStatistics, DoesNothingWhenAssignedToItself) {
  Log log;
  LoggedStatistics const statistics("a", &log);
  TreeStatistics handle;
  handle = statistics;
  log.clear();
  TreeStatistics const& same = handle;

  handle = same;

  EXPECT_EQ(log, Log());
  EXPECT_EQ(handle.GetNumClasses(), 7);
}

TEST(TreeStatistics, BecomesEmptyWhenAnEmptyHandleIsAssigned) {
  Log log;
  LoggedStatistics const statistics("a", &log);
  TreeStatistics handle;
  handle = statistics;
  log.clear();

  handle = TreeStatistics();

  EXPECT_EQ(log, (Log{"delete a'"}));
  ExpectEmpty(handle);
}

TEST(TreeStatistics, CopiesDeeply) {
  Log log;
  auto source = std::make_unique<TreeStatistics>();
  *source = LoggedStatistics("a", &log);
  log.clear();

  TreeStatistics const copied(*source);
  TreeStatistics assigned;
  assigned = *source;
  source.reset();

  EXPECT_EQ(log, (Log{"clone a'", "clone a'", "delete a'"}));
  EXPECT_EQ(copied.GetNumClasses(), 7);
  EXPECT_EQ(assigned.GetNumClasses(), 7);
}

TEST(TreeStatistics, CopiesAnEmptyHandleToAnEmptyOne) {
  TreeStatistics const empty;

  TreeStatistics const copied(empty);

  ExpectEmpty(copied);
}

TEST(TreeStatistics, DeletesItsObjectAtItsEnd) {
  Log log;
  LoggedStatistics const statistics("a", &log);
  {
    TreeStatistics handle;
    handle = statistics;
    log.clear();
  }

  EXPECT_EQ(log, (Log{"delete a'"}));
}

TEST(TreeStatistics, IsEmptyAndLeaksNothingWhenMemoryRunsOutInAnAssignment) {
  TreeStatisticsImp const first = WithRisk(0.5);
  TreeStatisticsImp const second = WithRisk(0.25);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    TreeStatistics other;
    other = second;
    TreeStatistics handle;
    handle = first;
    try {
      handle = second;
      EXPECT_EQ(handle.GetRisk(), 0.25);
      handle = other;
    } catch (std::bad_alloc const&) {
      ExpectEmpty(handle);
      EXPECT_EQ(other.GetRisk(), 0.25);
      throw;
    }
  });

  EXPECT_EQ(numFailures, 4);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

#ifndef NDEBUG
// The object held is known only to the handle; one that gives itself away when it is made shows it.
TEST(TreeStatisticsDeathTest, RequiresAnotherObjectThanTheOneHeld) {
  class SharedStatistics : public TreeStatisticsImp {
   public:
    explicit SharedStatistics(TreeStatisticsIntf** lastClone) : lastClone_(lastClone) {}
    TreeStatisticsIntf* Clone() const override {
      *lastClone_ = new SharedStatistics(*this);
      return *lastClone_;
    }

   private:
    TreeStatisticsIntf** lastClone_;
  };
  TreeStatisticsIntf* held = nullptr;
  SharedStatistics const statistics(&held);
  TreeStatistics handle;
  handle = statistics;

  EXPECT_DEATH(handle = *held, "TreeStatistics::operator=.*the one that is held");
}
#endif

}  // namespace
}  // namespace tree
