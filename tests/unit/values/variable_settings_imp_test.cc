#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/support.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

static_assert(global::MeasurementNominal == 0 && global::MeasurementContinuous == 2);
static_assert(std::is_same_v<int, std::underlying_type_t<global::MeasurementLevel>>);
static_assert(std::is_convertible_v<global::MeasurementLevel, int>);  // unscoped

static_assert(std::is_abstract_v<VariableSettings>);
static_assert(std::has_virtual_destructor_v<VariableSettings>);
static_assert(sizeof(VariableSettings) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<VariableSettings, VariableSettingsImp>);
static_assert(std::is_convertible_v<decltype(std::declval<VariableSettings const&>().Clone()),
                                    VariableSettings*>);
static_assert(
    std::is_same_v<global::MeasurementLevel,
                   decltype(std::declval<VariableSettings const&>().GetMeasurementLevel())>);
static_assert(
    std::is_same_v<int, decltype(std::declval<VariableSettings const&>().GetNumValues())>);
static_assert(
    std::is_same_v<double, decltype(std::declval<VariableSettings const&>().GetMissingValue())>);
static_assert(
    std::is_same_v<bool, decltype(std::declval<VariableSettings const&>().GetValueMergeFlag())>);

/// Settings of which no field has its default.
VariableSettingsImp Changed() {
  VariableSettingsImp settings;
  settings.SetMissingValue(-9.0);
  settings.SetNumValues(4);
  settings.SetMeasurementLevel(global::MeasurementNominal);
  settings.SetValueMergeFlag(false);
  return settings;
}

void ExpectChanged(VariableSettings const& settings) {
  EXPECT_EQ(-9.0, settings.GetMissingValue());
  EXPECT_EQ(4, settings.GetNumValues());
  EXPECT_EQ(global::MeasurementNominal, settings.GetMeasurementLevel());
  EXPECT_FALSE(settings.GetValueMergeFlag());
}

void ExpectDefaults(VariableSettings const& settings) {
  EXPECT_EQ(systemMissingValue(), settings.GetMissingValue());
  EXPECT_EQ(0, settings.GetNumValues());
  EXPECT_EQ(global::MeasurementContinuous, settings.GetMeasurementLevel());
  EXPECT_TRUE(settings.GetValueMergeFlag());
}

TEST(VariableSettingsImp, BeginsWithItsDefaults) {
  VariableSettingsImp const settings;

  ExpectDefaults(settings);
}

TEST(VariableSettingsImp, StoresEachFieldByItself) {
  {
    VariableSettingsImp settings;
    settings.SetMissingValue(-9.0);
    EXPECT_EQ(-9.0, settings.GetMissingValue());
    settings.SetMissingValue(systemMissingValue());
    ExpectDefaults(settings);
  }
  {
    VariableSettingsImp settings;
    settings.SetNumValues(4);
    EXPECT_EQ(4, settings.GetNumValues());
    settings.SetNumValues(0);
    ExpectDefaults(settings);
  }
  {
    VariableSettingsImp settings;
    settings.SetMeasurementLevel(global::MeasurementNominal);
    EXPECT_EQ(global::MeasurementNominal, settings.GetMeasurementLevel());
    settings.SetMeasurementLevel(global::MeasurementContinuous);
    ExpectDefaults(settings);
  }
  {
    VariableSettingsImp settings;
    settings.SetValueMergeFlag(false);
    EXPECT_FALSE(settings.GetValueMergeFlag());
    settings.SetValueMergeFlag(true);
    ExpectDefaults(settings);
  }
}

TEST(VariableSettingsImp, StoresAnyNumberOfValuesUnchecked) {
  for (int const count :
       {-5, 0, 7, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(count);
    VariableSettingsImp settings;

    settings.SetNumValues(count);

    EXPECT_EQ(count, settings.GetNumValues());
  }
}

TEST(VariableSettingsImp, StoresAnyMeasurementLevelUnchecked) {
  for (int const level : {-1, 0, 1, 2, 3, 1000, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(level);
    VariableSettingsImp settings;

    settings.SetMeasurementLevel(static_cast<global::MeasurementLevel>(level));

    EXPECT_EQ(level, settings.GetMeasurementLevel());
  }
}

TEST(VariableSettingsImp, StoresAnyMissingValueUnchecked) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (double const value :
       {0.0, -1.5, kInfinity, -kInfinity, std::numeric_limits<double>::max()}) {
    SCOPED_TRACE(value);
    VariableSettingsImp settings;

    settings.SetMissingValue(value);

    EXPECT_EQ(value, settings.GetMissingValue());
  }
  VariableSettingsImp settings;
  settings.SetMissingValue(std::numeric_limits<double>::quiet_NaN());
  EXPECT_TRUE(std::isnan(settings.GetMissingValue()));
}

TEST(VariableSettingsImp, CopyHasAllFields) {
  VariableSettingsImp const source = Changed();

  VariableSettingsImp const copy(source);

  ExpectChanged(copy);
}

TEST(VariableSettingsImp, AssignmentCopiesAllFields) {
  VariableSettingsImp const source = Changed();
  VariableSettingsImp target;

  EXPECT_EQ(&target, &(target = source));

  ExpectChanged(target);
}

TEST(VariableSettingsImp, AssignmentToItselfChangesNothing) {
  VariableSettingsImp settings = Changed();
  VariableSettingsImp const& same = settings;

  settings = same;

  ExpectChanged(settings);
}

TEST(VariableSettingsImp, CloneIsANewObjectOfTheSameClassWithAllFields) {
  VariableSettingsImp const source = Changed();

  std::unique_ptr<VariableSettings> const clone(source.Clone());

  ASSERT_NE(nullptr, dynamic_cast<VariableSettingsImp const*>(clone.get()));
  EXPECT_NE(&source, clone.get());
  ExpectChanged(*clone);
}

TEST(VariableSettingsImp, CloneIsIndependent) {
  VariableSettingsImp source = Changed();
  std::unique_ptr<VariableSettings> const clone(source.Clone());

  source = VariableSettingsImp();

  ExpectChanged(*clone);
  clone->SetNumValues(11);
  ExpectDefaults(source);
}

TEST(VariableSettingsImp, CloneBelongsToTheCaller) {
  long const before = CountLiveAllocations();

  delete VariableSettingsImp().Clone();

  EXPECT_EQ(before, CountLiveAllocations());
}

TEST(VariableSettingsImp, IsDeletedThroughItsInterface) {
  int deaths = 0;
  std::unique_ptr<VariableSettings> settings =
      std::make_unique<Watched<VariableSettingsImp>>(&deaths);

  settings.reset();

  EXPECT_EQ(1, deaths);
}

#if TREE_HAS_SLOTS
TEST(VariableSettingsImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(kFirstSlot + 0, VirtualSlot(&VariableSettings::Clone));
  EXPECT_EQ(kFirstSlot + 1, VirtualSlot(&VariableSettings::GetMissingValue));
  EXPECT_EQ(kFirstSlot + 2, VirtualSlot(&VariableSettings::GetMeasurementLevel));
  EXPECT_EQ(kFirstSlot + 3, VirtualSlot(&VariableSettings::GetValueMergeFlag));
  EXPECT_EQ(kFirstSlot + 4, VirtualSlot(&VariableSettings::GetNumValues));
  EXPECT_EQ(kFirstSlot + 5, VirtualSlot(&VariableSettings::SetMeasurementLevel));
  EXPECT_EQ(kFirstSlot + 6, VirtualSlot(&VariableSettings::SetMissingValue));
  EXPECT_EQ(kFirstSlot + 7, VirtualSlot(&VariableSettings::SetValueMergeFlag));
  EXPECT_EQ(kFirstSlot + 8, VirtualSlot(&VariableSettings::SetNumValues));
}
#endif

}  // namespace
}  // namespace tree::testing
