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

static_assert(ValidationNone == 0 && ValidationSplitSample == 1 && ValidationCrossValidation == 2);
static_assert(std::is_same_v<int, std::underlying_type_t<ValidationType>>);
static_assert(std::is_convertible_v<ValidationType, int>);  // unscoped

static_assert(std::is_abstract_v<ValidationSpec>);
static_assert(std::has_virtual_destructor_v<ValidationSpec>);
static_assert(sizeof(ValidationSpec) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<ValidationSpec, ValidationSpecImp>);
static_assert(std::is_copy_constructible_v<ValidationSpecImp>);
static_assert(std::is_copy_assignable_v<ValidationSpecImp>);
static_assert(std::is_convertible_v<decltype(std::declval<ValidationSpecImp const&>().Clone()),
                                    ValidationSpec*>);
static_assert(sizeof(long) == 8, "seeds have 64 bits");

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr long kMaxLong = std::numeric_limits<long>::max();
constexpr long kMinLong = std::numeric_limits<long>::min();

void ExpectValues(ValidationSpec const& plan, ValidationType type, int folds, long seed) {
  EXPECT_EQ(plan.GetType(), type);
  EXPECT_EQ(plan.GetNumCVFolds(), folds);
  EXPECT_EQ(plan.GetRandomSeed(), seed);
}

TEST(ValidationSpecImp, BeginsWithItsDefaults) {
  ValidationSpecImp const plan;

  ExpectValues(plan, ValidationNone, 10, 2000000L);
}

TEST(ValidationSpecImp, AcceptsTheSplitSampleAndCrossValidation) {
  ValidationSpecImp plan;

  EXPECT_TRUE(plan.Set(ValidationSplitSample));
  ExpectValues(plan, ValidationSplitSample, 10, 2000000L);
  EXPECT_TRUE(plan.Set(ValidationCrossValidation));
  ExpectValues(plan, ValidationCrossValidation, 10, 2000000L);
  EXPECT_TRUE(plan.Set(ValidationCrossValidation));
  EXPECT_TRUE(plan.Set(ValidationSplitSample));
  ExpectValues(plan, ValidationSplitSample, 10, 2000000L);
}

TEST(ValidationSpecImp, RefusesNoValidationAndUnknownTypes) {
  for (int const type : {0, 3, -1, kMaxInt, kMinInt}) {
    SCOPED_TRACE(type);
    ValidationSpecImp fresh;
    ValidationSpecImp plan;
    plan.Set(ValidationCrossValidation);

    EXPECT_FALSE(fresh.Set(static_cast<ValidationType>(type)));
    EXPECT_FALSE(plan.Set(static_cast<ValidationType>(type)));

    ExpectValues(fresh, ValidationNone, 10, 2000000L);
    ExpectValues(plan, ValidationCrossValidation, 10, 2000000L);
  }
}

TEST(ValidationSpecImp, GoesBackToNoValidationByACopyOfOneThatNeverHadAny) {
  ValidationSpecImp plan;
  plan.Set(ValidationSplitSample);

  plan = ValidationSpecImp();

  EXPECT_EQ(plan.GetType(), ValidationNone);
}

TEST(ValidationSpecImp, RefusesLessThanTwoFolds) {
  struct Case {
    int count;
    bool accepted;
  };
  for (auto const& [count, accepted] :
       {Case{2, true}, Case{3, true}, Case{50, true}, Case{kMaxInt, true}, Case{1, false},
        Case{0, false}, Case{-1, false}, Case{kMinInt, false}}) {
    SCOPED_TRACE(count);
    for (int const type : {0, 1, 2}) {  // stored whatever the type is
      ValidationSpecImp plan;
      plan.Set(static_cast<ValidationType>(type));

      EXPECT_EQ(plan.SetNumCVFolds(count), accepted);

      ExpectValues(plan, static_cast<ValidationType>(type), accepted ? count : 10, 2000000L);
    }
  }
}

TEST(ValidationSpecImp, RefusesSeedsBelowOne) {
  struct Case {
    long seed;
    bool accepted;
  };
  for (auto const& [seed, accepted] :
       {Case{1L, true}, Case{2L, true}, Case{5000000000L, true}, Case{kMaxLong, true},
        Case{0L, false}, Case{-1L, false}, Case{kMinLong, false}}) {
    SCOPED_TRACE(seed);
    ValidationSpecImp plan;

    EXPECT_EQ(plan.SetRandomSeed(seed), accepted);

    ExpectValues(plan, ValidationNone, 10, accepted ? seed : 2000000L);
  }
}

TEST(ValidationSpecImp, CopiesAllFields) {
  ValidationSpecImp source;
  source.Set(ValidationCrossValidation);
  source.SetNumCVFolds(7);
  source.SetRandomSeed(99);

  ValidationSpecImp const copy(source);
  std::unique_ptr<ValidationSpec> const clone(source.Clone());
  ValidationSpecImp assigned;
  ValidationSpecImp const& result = assigned = source;
  source = ValidationSpecImp();

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<ValidationSpecImp*>(clone.get()), nullptr);
  ExpectValues(copy, ValidationCrossValidation, 7, 99);
  ExpectValues(*clone, ValidationCrossValidation, 7, 99);
  ExpectValues(assigned, ValidationCrossValidation, 7, 99);
}

TEST(ValidationSpecImp, ClonesNoValidationToo) {
  std::unique_ptr<ValidationSpec> const clone(ValidationSpecImp().Clone());

  ExpectValues(*clone, ValidationNone, 10, 2000000L);
}

TEST(ValidationSpecImp, SurvivesAssignmentToItself) {
  ValidationSpecImp plan;
  plan.SetNumCVFolds(7);
  ValidationSpecImp const& same = plan;

  plan = same;

  ExpectValues(plan, ValidationNone, 7, 2000000L);
}

TEST(ValidationSpecImp, LosesNothingWhenACloneRunsOutOfMemory) {
  ValidationSpecImp const plan;
  long const live = CountLiveAllocations();

  EXPECT_EQ(WithEveryAllocationFailing([&plan] { delete plan.Clone(); }), 1);

  EXPECT_EQ(CountLiveAllocations(), live);
}

#if TREE_HAS_SLOTS
TEST(ValidationSpecImp, KeepsTheOrderOfItsVirtualOperations) {
  using Plan = ValidationSpec;
  EXPECT_EQ(VirtualSlot(static_cast<Plan* (Plan::*)() const>(&Plan::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<ValidationType (Plan::*)() const>(&Plan::GetType)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<int (Plan::*)() const>(&Plan::GetNumCVFolds)), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<long (Plan::*)() const>(&Plan::GetRandomSeed)), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Plan::*)(ValidationType)>(&Plan::Set)), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Plan::*)(int)>(&Plan::SetNumCVFolds)), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Plan::*)(long)>(&Plan::SetRandomSeed)), kFirstSlot + 6);
}
#endif

}  // namespace
}  // namespace tree::testing
