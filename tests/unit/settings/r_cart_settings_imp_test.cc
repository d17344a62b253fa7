#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "testing/settings_builder.h"
#include "tree/settings.h"

namespace tree::testing {
namespace {

static_assert(std::is_base_of_v<CartSettings, RCartSettingsImp>);
static_assert(!std::is_abstract_v<RCartSettingsImp>);
static_assert(sizeof(RCartSettingsImp) == sizeof(CartSettings));  // no fields of its own
static_assert(
    std::is_convertible_v<decltype(std::declval<RCartSettingsImp const&>().Clone()), AlgSettings*>);

TEST(RCartSettingsImp, IsOfItsKind) {
  RCartSettingsImp const settings(CoreOf(3));

  EXPECT_EQ(settings.GetType(), AlgRCart);
  EXPECT_EQ(settings.GetType(), 0);
}

TEST(RCartSettingsImp, CopiesEverything) {
  std::unique_ptr<AlgSettings> const filled = FilledSettings(AlgRCart, 1);
  auto const& source = dynamic_cast<RCartSettingsImp const&>(*filled);

  RCartSettingsImp const copy(source);
  std::unique_ptr<AlgSettings> const clone(source.Clone());
  RCartSettingsImp assigned(CoreOf(2, global::MeasurementContinuous));
  RCartSettingsImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<RCartSettingsImp*>(clone.get()), nullptr);
  for (AlgSettings const* const each :
       {static_cast<AlgSettings const*>(&copy), static_cast<AlgSettings const*>(clone.get()),
        static_cast<AlgSettings const*>(&assigned)}) {
    EXPECT_EQ(Describe(*each), Describe(source));
    EXPECT_TRUE(AreIndependent(*each, source));
  }
}

TEST(RCartSettingsImp, KeepsTheLevelOfItsTargetInAnAssignment) {
  RCartSettingsImp const source(CoreOf(2, global::MeasurementContinuous));
  RCartSettingsImp assigned(CoreOf(1, global::MeasurementNominal));

  assigned = source;
  RCartSettingsImp const copy(source);

  EXPECT_EQ(assigned.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementNominal);
  EXPECT_EQ(copy.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementContinuous);
}

TEST(RCartSettingsImp, CopiesADepthThatWasSet) {
  RCartSettingsImp source(CoreOf(2));
  source.GetStopRule()->SetMaxTreeDepth(8);

  RCartSettingsImp const copy(source);

  EXPECT_EQ(copy.GetStopRule()->GetMaxTreeDepth(), 8);
}

}  // namespace
}  // namespace tree::testing
