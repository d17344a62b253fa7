#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "testing/settings_builder.h"
#include "tree/settings.h"

namespace tree::testing {
namespace {

static_assert(std::is_base_of_v<ChaidSettings, RChaidSettingsImp>);
static_assert(!std::is_abstract_v<RChaidSettingsImp>);
static_assert(sizeof(RChaidSettingsImp) == sizeof(ChaidSettings));  // no fields of its own
static_assert(std::is_convertible_v<decltype(std::declval<RChaidSettingsImp const&>().Clone()),
                                    AlgSettings*>);

TEST(RChaidSettingsImp, IsOfItsKind) {
  RChaidSettingsImp const settings(CoreOf(3));

  EXPECT_EQ(settings.GetType(), AlgRChaid);
  EXPECT_EQ(settings.GetType(), 2);
}

TEST(RChaidSettingsImp, CopiesEverything) {
  std::unique_ptr<AlgSettings> const filled = FilledSettings(AlgRChaid, 1);
  auto const& source = dynamic_cast<RChaidSettingsImp const&>(*filled);

  RChaidSettingsImp const copy(source);
  std::unique_ptr<AlgSettings> const clone(source.Clone());
  RChaidSettingsImp assigned(CoreOf(2, global::MeasurementContinuous));
  RChaidSettingsImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<RChaidSettingsImp*>(clone.get()), nullptr);
  for (AlgSettings const* const each :
       {static_cast<AlgSettings const*>(&copy), static_cast<AlgSettings const*>(clone.get()),
        static_cast<AlgSettings const*>(&assigned)}) {
    EXPECT_EQ(Describe(*each), Describe(source));
    EXPECT_TRUE(AreIndependent(*each, source));
  }
}

TEST(RChaidSettingsImp, KeepsTheLevelOfItsTargetInAnAssignment) {
  RChaidSettingsImp const source(CoreOf(2, global::MeasurementContinuous));
  RChaidSettingsImp assigned(CoreOf(1, global::MeasurementNominal));

  assigned = source;
  RChaidSettingsImp const copy(source);

  EXPECT_EQ(assigned.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementNominal);
  EXPECT_EQ(copy.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementContinuous);
}

TEST(RChaidSettingsImp, CopiesADepthThatWasSet) {
  RChaidSettingsImp source(CoreOf(2));
  source.GetStopRule()->SetMaxTreeDepth(8);

  RChaidSettingsImp const copy(source);

  EXPECT_EQ(copy.GetStopRule()->GetMaxTreeDepth(), 8);
}

}  // namespace
}  // namespace tree::testing
