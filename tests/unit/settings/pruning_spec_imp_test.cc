#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/settings.h"

namespace tree::testing {
namespace {

static_assert(std::is_abstract_v<PruningSpec>);
static_assert(std::has_virtual_destructor_v<PruningSpec>);
static_assert(sizeof(PruningSpec) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<PruningSpec, PruningSpecImp>);
static_assert(std::is_copy_constructible_v<PruningSpecImp>);
static_assert(std::is_copy_assignable_v<PruningSpecImp>);
static_assert(
    std::is_convertible_v<decltype(std::declval<PruningSpecImp const&>().Clone()), PruningSpec*>);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

void ExpectValues(PruningSpec const& plan, double factor, bool pickMinRiskTree) {
  EXPECT_EQ(plan.GetSERuleFactor(), factor);
  EXPECT_EQ(plan.GetPickMinRiskTree(), pickMinRiskTree);
}

TEST(PruningSpecImp, BeginsWithItsDefaults) {
  PruningSpecImp const plan;

  ExpectValues(plan, 1.0, false);
}

TEST(PruningSpecImp, StoresWhetherTheTreeOfLeastRiskIsPicked) {
  PruningSpecImp plan;

  plan.SetPickMinRiskTree(true);
  ExpectValues(plan, 1.0, true);
  plan.SetPickMinRiskTree(false);
  ExpectValues(plan, 1.0, false);
}

TEST(PruningSpecImp, IgnoresNegativeFactors) {
  struct Case {
    double factor;
    bool stored;
  };
  for (auto const& [factor, stored] :
       {Case{0.0, true}, Case{0.5, true}, Case{2.0, true}, Case{1e300, true}, Case{kInfinity, true},
        Case{-0.5, false}, Case{-std::numeric_limits<double>::denorm_min(), false},
        Case{-kInfinity, false}, Case{kNaN, false}}) {
    SCOPED_TRACE(factor);
    PruningSpecImp plan;
    plan.SetPickMinRiskTree(true);

    plan.SetSERuleFactor(factor);

    ExpectValues(plan, stored ? factor : 1.0, true);
  }
}

TEST(PruningSpecImp, CopiesAllFields) {
  PruningSpecImp source;
  source.SetPickMinRiskTree(true);
  source.SetSERuleFactor(2.5);

  PruningSpecImp const copy(source);
  std::unique_ptr<PruningSpec> const clone(source.Clone());
  PruningSpecImp assigned;
  PruningSpecImp const& result = assigned = source;
  source = PruningSpecImp();

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<PruningSpecImp*>(clone.get()), nullptr);
  ExpectValues(copy, 2.5, true);
  ExpectValues(*clone, 2.5, true);
  ExpectValues(assigned, 2.5, true);
  ExpectValues(source, 1.0, false);
}

TEST(PruningSpecImp, SurvivesAssignmentToItself) {
  PruningSpecImp plan;
  plan.SetSERuleFactor(2.5);
  PruningSpecImp const& same = plan;

  plan = same;

  ExpectValues(plan, 2.5, false);
}

TEST(PruningSpecImp, LosesNothingWhenACloneRunsOutOfMemory) {
  PruningSpecImp const plan;
  long const live = CountLiveAllocations();

  EXPECT_EQ(WithEveryAllocationFailing([&plan] { delete plan.Clone(); }), 1);

  EXPECT_EQ(CountLiveAllocations(), live);
}

#if TREE_HAS_SLOTS
TEST(PruningSpecImp, KeepsTheOrderOfItsVirtualOperations) {
  using Plan = PruningSpec;
  EXPECT_EQ(VirtualSlot(static_cast<Plan* (Plan::*)() const>(&Plan::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Plan::*)() const>(&Plan::GetPickMinRiskTree)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<double (Plan::*)() const>(&Plan::GetSERuleFactor)),
            kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<void (Plan::*)(bool)>(&Plan::SetPickMinRiskTree)),
            kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<void (Plan::*)(double)>(&Plan::SetSERuleFactor)),
            kFirstSlot + 4);
}
#endif

}  // namespace
}  // namespace tree::testing
