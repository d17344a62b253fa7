#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_parts.h"
#include "testing/foreign_settings.h"
#include "testing/part_log.h"
#include "testing/settings_builder.h"
#include "testing/virtual_slot.h"
#include "tree/settings.h"

// What all settings share is tested on settings that have nothing else.

namespace tree::testing {
namespace {

static_assert(AlgRCart == 0 && AlgCCart == 1 && AlgRChaid == 2 && AlgCChaid == 3 && AlgQuest == 4);
static_assert(std::is_same_v<int, std::underlying_type_t<AlgorithmType>>);
static_assert(std::is_convertible_v<AlgorithmType, int>);  // unscoped

static_assert(std::is_abstract_v<AlgSettings>);
static_assert(std::has_virtual_destructor_v<AlgSettings>);
static_assert(std::is_copy_assignable_v<AlgSettings>);
static_assert(
    std::is_same_v<decltype(&AlgSettings::SetMaxNumCompetitors), void (AlgSettings::*)(int)>);
static_assert(std::is_same_v<decltype(&AlgSettings::SetMaxNominalPredCategories),
                             void (AlgSettings::*)(int)>);
static_assert(
    std::is_same_v<decltype(&AlgSettings::ValidateNumCompetitors), void (AlgSettings::*)()>);
static_assert(std::is_same_v<decltype(&AlgSettings::Clear), void (AlgSettings::*)()>);
static_assert(std::is_same_v<decltype(&AlgSettings::Init),
                             void (AlgSettings::*)(int, int, CoreSettings const*,
                                                   ValidationSpec const*, StopRule const*)>);
static_assert(
    std::is_same_v<decltype(std::declval<AlgSettings&>().GetCoreSettings()), CoreSettings const*>);

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

using Level = global::MeasurementLevel;

PlainSettings SettingsWith(int numPredictors) { return PlainSettings(CoreOf(numPredictors)); }

void ExpectDefaultParts(AlgSettings const& settings) {
  Fields expected;
  Describe("validation", ValidationSpecImp(), expected);
  Describe("stop", StopRuleImp(), expected);
  Fields actual;
  ASSERT_NE(settings.GetValidationSpec(), nullptr);
  ASSERT_NE(settings.GetStopRule(), nullptr);
  Describe("validation", *settings.GetValidationSpec(), actual);
  Describe("stop", *settings.GetStopRule(), actual);
  EXPECT_EQ(actual, expected);
  EXPECT_NE(dynamic_cast<ValidationSpecImp const*>(settings.GetValidationSpec()), nullptr);
  EXPECT_NE(dynamic_cast<StopRuleImp const*>(settings.GetStopRule()), nullptr);
}

TEST(AlgSettings, BeginsWithItsDefaultsAndACloneOfTheCore) {
  CoreSettingsImp const core = FilledCore(1, global::MeasurementNominal);

  PlainSettings const settings(core);

  EXPECT_EQ(settings.GetMaxNumCompetitors(), 5);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
  ExpectDefaultParts(settings);
  Fields expected;
  Fields actual;
  Describe("core", core, expected);
  Describe("core", *settings.GetCoreSettings(), actual);
  EXPECT_EQ(actual, expected);
  EXPECT_NE(settings.GetCoreSettings(), &core);
  EXPECT_NE(settings.GetCoreSettings()->GetTarget(), core.GetTarget());
}

TEST(AlgSettings, KeepsItsOwnCoreWhenTheCallersChanges) {
  CoreSettingsImp core = CoreOf(2);
  PlainSettings const settings(core);

  core.AddPredictor();
  core.SetHasFreqWeight(true);
  core.GetTarget()->SetNumValues(9);

  EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 2);
  EXPECT_FALSE(settings.GetCoreSettings()->HasFreqWeight());
  EXPECT_EQ(settings.GetCoreSettings()->GetTarget()->GetNumValues(), 0);
}

TEST(AlgSettings, ClampsTheDefaultNumberOfCompetitors) {
  struct Case {
    int predictors;
    int competitors;
  };
  for (auto const& [predictors, competitors] :
       {Case{0, 1}, Case{1, 1}, Case{3, 3}, Case{4, 4}, Case{5, 5}, Case{6, 5}, Case{100, 5}}) {
    SCOPED_TRACE(predictors);
    EXPECT_EQ(SettingsWith(predictors).GetMaxNumCompetitors(), competitors);
  }
}

TEST(AlgSettings, SetsTheNumberOfCompetitorsWithinThePredictors) {
  struct Case {
    char const* name;
    int predictors;
    int count;
    int expected;
  };
  Case const table[] = {
      {"within", 9, 7, 7},
      {"all", 9, 9, 9},
      {"one more", 9, 10, 9},
      {"most", 9, kMaxInt, 9},
      {"one", 9, 1, 1},
      {"none keeps the old", 9, 0, 5},
      {"negative keeps", 9, -1, 5},
      {"least", 9, kMinInt, 5},
      {"beyond four", 4, 10, 4},
      {"no predictors", 0, 3, 1},
      {"no predictors, 0", 0, 0, 1},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    PlainSettings settings = SettingsWith(row.predictors);

    settings.SetMaxNumCompetitors(row.count);

    EXPECT_EQ(settings.GetMaxNumCompetitors(), row.expected);
  }
}

/// Core settings of which a test can take away predictors while settings hold them.
class ShrinkingCore : public ForeignCoreSettings {
 public:
  explicit ShrinkingCore(int const* numPredictors) : numPredictors_(numPredictors) {}
  CoreSettings* Clone() const override { return new ShrinkingCore(*this); }
  int GetNumPredictors() const override { return *numPredictors_; }

 private:
  int const* numPredictors_;
};

TEST(AlgSettings, ClampsTheOldNumberOfCompetitorsByARefusedOne) {
  int numPredictors = 9;
  for (int const refused : {0, -1}) {
    numPredictors = 9;
    PlainSettings settings{ShrinkingCore(&numPredictors)};
    settings.SetMaxNumCompetitors(7);
    numPredictors = 4;

    settings.SetMaxNumCompetitors(refused);

    EXPECT_EQ(settings.GetMaxNumCompetitors(), 4);
  }
}

TEST(AlgSettings, ClampsToThePredictorsAtTheTimeOfTheCall) {
  int numPredictors = 9;
  PlainSettings settings{ShrinkingCore(&numPredictors)};
  settings.SetMaxNumCompetitors(7);

  numPredictors = 4;
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 7);
  settings.ValidateNumCompetitors();
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 4);
  numPredictors = 9;
  settings.ValidateNumCompetitors();
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 4);  // not raised again
  numPredictors = 0;
  settings.ValidateNumCompetitors();
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 1);
}

TEST(AlgSettings, IgnoresNumbersOfCategoriesBelowOne) {
  struct Case {
    int count;
    int expected;
  };
  for (auto const& [count, expected] : {Case{1, 1}, Case{33, 33}, Case{kMaxInt, kMaxInt},
                                        Case{0, 32}, Case{-1, 32}, Case{kMinInt, 32}}) {
    SCOPED_TRACE(count);
    PlainSettings settings = SettingsWith(3);

    settings.SetMaxNominalPredCategories(count);

    EXPECT_EQ(settings.GetMaxNominalPredCategories(), expected);
    EXPECT_EQ(settings.GetMaxNumCompetitors(), 3);
  }
}

TEST(AlgSettings, LetsItsPartsBeChangedThroughItsPointers) {
  PlainSettings settings = SettingsWith(3);

  settings.GetStopRule()->SetMaxTreeDepth(8);
  settings.GetValidationSpec()->SetNumCVFolds(4);

  AlgSettings const& readable = settings;
  EXPECT_EQ(readable.GetStopRule()->GetMaxTreeDepth(), 8);
  EXPECT_EQ(readable.GetValidationSpec()->GetNumCVFolds(), 4);
  EXPECT_EQ(readable.GetStopRule(), settings.GetStopRule());
  EXPECT_EQ(readable.GetValidationSpec(), settings.GetValidationSpec());
}

TEST(AlgSettings, IsInitialisedWithClonesOfThePartsGiven) {
  CoreSettingsImp core = FilledCore(1, global::MeasurementNominal);
  ValidationSpecImp validation;
  StopRuleImp stopRule;
  Fill(validation, 1);
  Fill(stopRule, 1);
  PlainSettings settings = SettingsWith(3);

  settings.Init(4, 55, &core, &validation, &stopRule);
  Fields const expected = Describe(settings);
  Fill(validation, 2);
  Fill(stopRule, 2);
  core.AddPredictor();

  EXPECT_EQ(Describe(settings), expected);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 4);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 55);
  EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 9);
  EXPECT_EQ(settings.GetValidationSpec()->GetNumCVFolds(), 61);
  EXPECT_EQ(settings.GetStopRule()->GetMinNodeSize(), 11);
}

TEST(AlgSettings, IsInitialisedWithADefaultPartForNull) {
  PlainSettings settings(FilledCore(1, global::MeasurementContinuous));
  Fill(*settings.GetValidationSpec(), 1);
  Fill(*settings.GetStopRule(), 1);

  settings.Init(4, 55, nullptr, nullptr, nullptr);

  ExpectDefaultParts(settings);
  Fields expected;
  Fields actual;
  Describe("core", CoreSettingsImp(), expected);
  Describe("core", *settings.GetCoreSettings(), actual);
  EXPECT_EQ(actual, expected);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 1);
}

TEST(AlgSettings, TakesEachPartOfItsInitByItself) {
  CoreSettingsImp const core = CoreOf(7);
  ForeignValidationSpec const validation;
  ForeignStopRule const stopRule;

  for (int mask = 0; mask < 8; ++mask) {
    SCOPED_TRACE(mask);
    PlainSettings settings = SettingsWith(3);
    settings.Init(2, 55, (mask & 1) != 0 ? &core : nullptr, (mask & 2) != 0 ? &validation : nullptr,
                  (mask & 4) != 0 ? &stopRule : nullptr);

    EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), (mask & 1) != 0 ? 7 : 0);
    EXPECT_EQ(settings.GetValidationSpec()->GetNumCVFolds(), (mask & 2) != 0 ? 7 : 10);
    EXPECT_EQ(settings.GetStopRule()->GetMinNodeSize(), (mask & 4) != 0 ? 11 : 100);
  }
}

TEST(AlgSettings, StoresTheLimitsOfInitUncheckedButForTheClamp) {
  struct Case {
    int competitors;
    int categories;
    int expectedCompetitors;
  };
  for (auto const& [competitors, categories, expected] :
       {Case{2, 0, 2}, Case{10, -1, 3}, Case{0, kMinInt, 1}, Case{-7, kMaxInt, 1}}) {
    SCOPED_TRACE(competitors);
    PlainSettings settings = SettingsWith(0);

    settings.Init(competitors, categories, std::make_unique<CoreSettingsImp>(CoreOf(3)).get(),
                  nullptr, nullptr);

    EXPECT_EQ(settings.GetMaxNumCompetitors(), expected);
    EXPECT_EQ(settings.GetMaxNominalPredCategories(), categories);
  }
}

TEST(AlgSettings, IsInitialisedWithItsOwnParts) {
  PlainSettings settings(FilledCore(1, global::MeasurementNominal));
  Fill(*settings.GetValidationSpec(), 1);
  Fill(*settings.GetStopRule(), 1);
  Fields const expected = Describe(settings);

  settings.Init(settings.GetMaxNumCompetitors(), settings.GetMaxNominalPredCategories(),
                settings.GetCoreSettings(), settings.GetValidationSpec(), settings.GetStopRule());

  EXPECT_EQ(Describe(settings), expected);
}

TEST(AlgSettings, KeepsTheKindOfItsTarget) {
  struct Case {
    char const* name;
    int oldLevel;
    int newLevel;
    int expected;
  };
  Case const table[] = {
      {"nominal stays nominal", 0, 2, 0},
      {"continuous stays continuous", 2, 0, 2},
      {"ordinal stays ordinal", 1, 2, 1},
      {"continuous against ordinal", 2, 1, 2},
      {"both continuous", 2, 2, 2},
      {"both nominal", 0, 0, 0},
      {"nominal may become ordinal", 0, 1, 1},
      {"ordinal may become nominal", 1, 0, 0},
      {"unknown levels are not continuous", 7, 2, 7},
      {"unknown levels are not continuous either", 2, -1, 2},
      {"unknown against nominal", 0, 3, 3},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    CoreSettingsImp const newCore = FilledCore(1, static_cast<Level>(row.newLevel));
    PlainSettings const source(newCore);
    PlainSettings byInit(CoreOf(2, static_cast<Level>(row.oldLevel)));
    PlainSettings byCopy(CoreOf(2, static_cast<Level>(row.oldLevel)));

    byInit.Init(5, 32, &newCore, nullptr, nullptr);
    byCopy.CopyFrom(source);

    // All but the level of the target is the new one's.
    Fields expected;
    Describe("core", newCore, expected);
    expected["core target level"] = row.expected;
    for (AlgSettings const* const settings : {&byInit, &byCopy}) {
      Fields actual;
      Describe("core", *settings->GetCoreSettings(), actual);
      EXPECT_EQ(actual, expected);
    }
    EXPECT_EQ(newCore.GetTarget()->GetMeasurementLevel(), row.newLevel);
  }
}

TEST(AlgSettings, ChangesTheLevelOfAForeignTargetThroughItsInterface) {
  ForeignCoreSettings foreign(1);  // continuous by default
  PlainSettings settings(CoreOf(2, global::MeasurementNominal));

  settings.Init(5, 32, &foreign, nullptr, nullptr);

  EXPECT_NE(dynamic_cast<ForeignCoreSettings const*>(settings.GetCoreSettings()), nullptr);
  EXPECT_EQ(settings.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementNominal);
  EXPECT_EQ(foreign.GetTarget()->GetMeasurementLevel(), global::MeasurementContinuous);
}

TEST(AlgSettings, KeepsTheLevelOfItsTargetWithDefaultCoreSettings) {
  PlainSettings settings(CoreOf(2, global::MeasurementNominal));

  settings.Init(5, 32, nullptr, nullptr, nullptr);

  EXPECT_EQ(settings.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementNominal);
}

TEST(AlgSettings, HasNoPartsOnceCleared) {
  PlainSettings settings = SettingsWith(3);
  AlgSettings const& readable = settings;

  settings.Clear();

  EXPECT_EQ(settings.GetCoreSettings(), nullptr);
  EXPECT_EQ(settings.GetValidationSpec(), nullptr);
  EXPECT_EQ(readable.GetValidationSpec(), nullptr);
  EXPECT_EQ(settings.GetStopRule(), nullptr);
  EXPECT_EQ(readable.GetStopRule(), nullptr);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 3);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
  settings.Clear();  // once more does no harm
}

TEST(AlgSettings, HasNoKindOfTargetToKeepOnceCleared) {
  PlainSettings settings(CoreOf(2, global::MeasurementNominal));
  CoreSettingsImp const core = CoreOf(2, global::MeasurementContinuous);
  settings.Clear();

  settings.Init(5, 32, &core, nullptr, nullptr);

  EXPECT_EQ(settings.GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
            global::MeasurementContinuous);
}

TEST(AlgSettings, CountsNoPredictorsOnceCleared) {
  PlainSettings settings = SettingsWith(9);
  settings.Clear();

  settings.SetMaxNumCompetitors(4);

  EXPECT_EQ(settings.GetMaxNumCompetitors(), 1);
}

TEST(AlgSettings, GivesDefaultPartsToCopiesOnceCleared) {
  PlainSettings cleared(FilledCore(1, global::MeasurementContinuous));
  Fill(*cleared.GetStopRule(), 1);
  Fill(*cleared.GetValidationSpec(), 1);
  cleared.Clear();

  PlainSettings const copy(cleared);

  ExpectDefaultParts(copy);
  EXPECT_EQ(copy.GetCoreSettings()->GetNumPredictors(), 0);
  EXPECT_EQ(copy.GetMaxNumCompetitors(), 1);
  cleared.CopyFrom(cleared);
  ExpectDefaultParts(cleared);
}

TEST(AlgSettings, CopiesWhatTheGettersOfItsSourceAnswer) {
  ForeignSettings const source(6);
  PlainSettings target(FilledCore(1, global::MeasurementContinuous));

  target.CopyFrom(source);

  EXPECT_EQ(target.GetMaxNumCompetitors(), 3);
  EXPECT_EQ(target.GetMaxNominalPredCategories(), 77);
  EXPECT_NE(dynamic_cast<ForeignCoreSettings const*>(target.GetCoreSettings()), nullptr);
  EXPECT_EQ(target.GetCoreSettings()->GetNumPredictors(), 6);
  EXPECT_NE(dynamic_cast<ForeignValidationSpec*>(target.GetValidationSpec()), nullptr);
  EXPECT_NE(dynamic_cast<ForeignStopRule*>(target.GetStopRule()), nullptr);
  EXPECT_NE(target.GetCoreSettings(), source.GetCoreSettings());
  EXPECT_NE(target.GetStopRule(), source.GetStopRule());
}

TEST(AlgSettings, ClonesEachPartOnceAndDeletesEachCloneOnce) {
  PartLog log;
  {
    Instrumented<CoreSettingsImp, CoreSettings> const core(&log, "core", CoreOf(2));
    Instrumented<ValidationSpecImp, ValidationSpec> const validation(&log, "validation");
    Instrumented<StopRuleImp, StopRule> const stopRule(&log, "stop rule");
    PlainSettings settings = SettingsWith(1);

    settings.Init(1, 2, &core, &validation, &stopRule);

    EXPECT_EQ(log.clones, (std::vector<std::string>{"validation", "core", "stop rule"}));
    EXPECT_EQ(log.alive, 6);

    settings.Init(1, 2, settings.GetCoreSettings(), settings.GetValidationSpec(),
                  settings.GetStopRule());

    EXPECT_EQ(log.clones.size(), 6U);
    EXPECT_EQ(log.alive, 6);
    EXPECT_EQ(log.deletions, 3);
    {
      PlainSettings const copy(settings);
      EXPECT_EQ(log.alive, 9);
      settings.CopyFrom(copy);
      EXPECT_EQ(log.alive, 9);
    }
    EXPECT_EQ(log.alive, 6);
    settings.Clear();
    EXPECT_EQ(log.alive, 3);
  }
  EXPECT_EQ(log.alive, 0);
}

TEST(AlgSettings, ClonesItsPartsBeforeItDeletesThem) {
  // The old parts are the source of the new ones, so nothing may be deleted between two clonings.
  PartLog log;
  Instrumented<CoreSettingsImp, CoreSettings> const core(&log, "core", CoreOf(2));
  Instrumented<ValidationSpecImp, ValidationSpec> const validation(&log, "validation");
  Instrumented<StopRuleImp, StopRule> const stopRule(&log, "stop rule");
  PlainSettings settings = SettingsWith(1);
  settings.Init(1, 2, &core, &validation, &stopRule);
  Fields const expected = Describe(settings);

  settings.CopyFrom(settings);

  EXPECT_EQ(Describe(settings), expected);
  EXPECT_EQ(log.alive, 6);
}

TEST(AlgSettings, DeletesItsPartsWhenDeletedThroughTheBase) {
  PartLog log;
  Instrumented<CoreSettingsImp, CoreSettings> const core(&log, "core", CoreOf(2));
  std::unique_ptr<AlgSettings> settings = std::make_unique<PlainSettings>(core);
  EXPECT_EQ(log.alive, 2);

  settings.reset();

  EXPECT_EQ(log.alive, 1);
}

TEST(AlgSettings, StaysAsItWasWhenInitRunsOutOfMemory) {
  PlainSettings const before(FilledCore(1, global::MeasurementNominal));
  Fields const expected = Describe(before);
  PlainSettings const source(FilledCore(2, global::MeasurementContinuous));
  long const live = CountLiveAllocations();
  {
    PlainSettings target(before);
    long const failures = WithEveryAllocationFailing([&] {
      try {
        target.CopyFrom(source);
      } catch (std::bad_alloc const&) {
        EXPECT_EQ(Describe(target), expected);
        throw;
      }
    });

    EXPECT_GT(failures, 10);
    EXPECT_EQ(target.GetCoreSettings()->GetNumPredictors(), 10);
  }
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(AlgSettings, StaysAsItWasWhenDefaultPartsRunOutOfMemory) {
  PlainSettings const before(FilledCore(1, global::MeasurementNominal));
  Fields const expected = Describe(before);
  long const live = CountLiveAllocations();
  {
    PlainSettings target(before);
    long const failures = WithEveryAllocationFailing([&] {
      try {
        target.Init(1, 1, nullptr, nullptr, nullptr);
      } catch (std::bad_alloc const&) {
        EXPECT_EQ(Describe(target), expected);
        throw;
      }
    });

    EXPECT_GT(failures, 3);
    EXPECT_EQ(target.GetCoreSettings()->GetNumPredictors(), 0);
  }
  EXPECT_EQ(CountLiveAllocations(), live);
}

#if TREE_HAS_SLOTS
TEST(AlgSettings, KeepsTheOrderOfItsVirtualOperations) {
  using Alg = AlgSettings;
  EXPECT_EQ(VirtualSlot(static_cast<AlgorithmType (Alg::*)() const>(&Alg::GetType)),
            kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<Alg* (Alg::*)() const>(&Alg::Clone)), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<int (Alg::*)() const>(&Alg::GetMaxNumCompetitors)),
            kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<int (Alg::*)() const>(&Alg::GetMaxNominalPredCategories)),
            kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<CoreSettings const* (Alg::*)() const>(&Alg::GetCoreSettings)),
            kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<ValidationSpec* (Alg::*)()>(&Alg::GetValidationSpec)),
            kFirstSlot + 5);
  EXPECT_EQ(
      VirtualSlot(static_cast<ValidationSpec const* (Alg::*)() const>(&Alg::GetValidationSpec)),
      kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(static_cast<StopRule* (Alg::*)()>(&Alg::GetStopRule)), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(static_cast<StopRule const* (Alg::*)() const>(&Alg::GetStopRule)),
            kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(static_cast<void (Alg::*)(Alg const&)>(&Alg::CopyFrom)), kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(&Alg::SetMaxNumCompetitors), -1);
  EXPECT_EQ(VirtualSlot(&Alg::SetMaxNominalPredCategories), -1);
  EXPECT_EQ(VirtualSlot(&Alg::ValidateNumCompetitors), -1);
  EXPECT_EQ(VirtualSlot(&Alg::Init), -1);
  EXPECT_EQ(VirtualSlot(&Alg::Clear), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
