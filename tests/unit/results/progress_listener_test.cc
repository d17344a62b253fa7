#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/results.h"

namespace tree {
namespace {

static_assert(std::is_abstract_v<ProgressListener>);
static_assert(std::has_virtual_destructor_v<ProgressListener>);
static_assert(noexcept(std::declval<ProgressListener&>().Report(0.5, "")));
static_assert(std::is_same_v<decltype(std::declval<ProgressListener&>().Report(0.5, "")), bool>);

class Halfway : public ProgressListener {
 public:
  bool Report(double fraction, char const* /*activity*/) noexcept override {
    return fraction < 0.5;
  }
};

TEST(ProgressListener, SaysWhetherToGoOn) {
  Halfway halfway;
  ProgressListener& listener = halfway;

  EXPECT_TRUE(listener.Report(0.25, "growing"));
  EXPECT_FALSE(listener.Report(0.5, "growing"));
}

TEST(ProgressListener, IsDeletedThroughItsDestructor) {
  int deaths = 0;
  ProgressListener* const listener = new testing::Watched<Halfway>(&deaths);

  delete listener;

  EXPECT_EQ(deaths, 1);
}

#if TREE_HAS_SLOTS
TEST(ProgressListener, ReportsByItsFirstVirtualOperation) {
  EXPECT_EQ(testing::VirtualSlot(&ProgressListener::Report), testing::kFirstSlot);
}
#endif

}  // namespace
}  // namespace tree
