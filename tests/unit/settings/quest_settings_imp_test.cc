#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
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

namespace tree::testing {
namespace {

static_assert(std::is_abstract_v<QuestSettings>);
static_assert(sizeof(QuestSettings) == sizeof(AlgSettings));  // no fields of its own
static_assert(std::is_base_of_v<AlgSettings, QuestSettings>);
static_assert(std::is_base_of_v<QuestSettings, QuestSettingsImp>);
static_assert(
    std::is_convertible_v<decltype(std::declval<QuestSettingsImp const&>().Clone()), AlgSettings*>);
static_assert(std::is_same_v<decltype(&QuestSettingsImp::ValidateNumSurrogates),
                             bool (QuestSettingsImp::*)(int) const>);

// One of two overloads, so it is named by its type.
constexpr void (QuestSettingsImp::*kInit)(double, int, int, PruningSpec const*, Priors const*,
                                          Cost const*) = &QuestSettingsImp::Init;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

QuestSettingsImp NewSettings(int numPredictors = 10) {
  return QuestSettingsImp(CoreOf(numPredictors));
}

QuestSettingsImp Filled(int variant) {
  return dynamic_cast<QuestSettingsImp const&>(*FilledSettings(AlgQuest, variant));
}

void ExpectDefaultParts(QuestSettingsImp const& settings) {
  ASSERT_NE(dynamic_cast<PruningSpecImp const*>(settings.GetPruningSpec()), nullptr);
  EXPECT_EQ(settings.GetPruningSpec()->GetSERuleFactor(), 1.0);
  EXPECT_FALSE(settings.GetPruningSpec()->GetPickMinRiskTree());
  ASSERT_NE(dynamic_cast<PriorsImp const*>(settings.GetPriors()), nullptr);
  EXPECT_EQ(settings.GetPriors()->GetType(), PriorTypeDefault);
  EXPECT_EQ(settings.GetPriors()->GetNumClasses(), 0);
  ASSERT_NE(dynamic_cast<CostImp const*>(settings.GetCost()), nullptr);
  EXPECT_EQ(settings.GetCost()->GetType(), CostTypeDefault);
  EXPECT_EQ(settings.GetCost()->GetNumClasses(), 0);
}

TEST(QuestSettingsImp, BeginsWithItsDefaults) {
  QuestSettingsImp const settings = NewSettings();

  EXPECT_EQ(settings.GetType(), AlgQuest);
  EXPECT_EQ(settings.GetType(), 4);
  EXPECT_EQ(settings.GetAlphaOfVariableSelection(), 0.05);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 5);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), 32);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 5);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
  ExpectDefaultParts(settings);
}

TEST(QuestSettingsImp, StopsAtDepthFiveAndLeavesTheOtherStoppingLimits) {
  Fields expected;
  Fields actual;
  StopRuleImp rule;
  rule.SetMaxTreeDepth(5);
  Describe("stop", rule, expected);

  QuestSettingsImp const settings = NewSettings();
  Describe("stop", *settings.GetStopRule(), actual);

  EXPECT_EQ(actual, expected);
}

TEST(QuestSettingsImp, BeginsWithOneSurrogateMoreThanItsSetterAccepts) {
  struct Case {
    int predictors;
    int surrogates;
  };
  for (auto const& [predictors, surrogates] : {Case{0, -1}, Case{1, 0}, Case{2, 1}, Case{3, 2},
                                               Case{5, 4}, Case{6, 5}, Case{7, 5}, Case{10, 5}}) {
    SCOPED_TRACE(predictors);
    QuestSettingsImp settings = NewSettings(predictors);

    EXPECT_EQ(settings.GetMaxNumSurrogates(), surrogates);
    EXPECT_EQ(settings.ValidateNumSurrogates(surrogates), predictors >= 7);
  }
}

TEST(QuestSettingsImp, AcceptsSurrogatesBelowThePredictorsLessOne) {
  struct Case {
    char const* name;
    int predictors;
    int count;
    bool accepted;
  };
  Case const table[] = {
      {"most", 10, 8, true},
      {"one too many", 10, 9, false},
      {"all", 10, 10, false},
      {"none", 10, 0, true},
      {"negative", 10, -1, false},
      {"least", 10, kMinInt, false},
      {"greatest", 10, kMaxInt, false},
      {"none of two", 2, 0, true},
      {"one of two", 2, 1, false},
      {"none of one", 1, 0, false},
      {"none of none", 0, 0, false},
      {"negative of none", 0, -2, false},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    QuestSettingsImp settings = NewSettings(row.predictors);
    int const before = settings.GetMaxNumSurrogates();

    EXPECT_EQ(settings.ValidateNumSurrogates(row.count), row.accepted);
    EXPECT_EQ(settings.GetMaxNumSurrogates(), before);
    settings.SetMaxNumSurrogates(row.count);

    EXPECT_EQ(settings.GetMaxNumSurrogates(), row.accepted ? row.count : before);
  }
}

TEST(QuestSettingsImp, AcceptsNoSurrogatesOnceCleared) {
  QuestSettingsImp settings = NewSettings();
  settings.Clear();

  EXPECT_FALSE(settings.ValidateNumSurrogates(0));
  settings.SetMaxNumSurrogates(0);

  EXPECT_EQ(settings.GetMaxNumSurrogates(), 5);
}

TEST(QuestSettingsImp, IgnoresNumbersOfCategoriesBelowOne) {
  struct Case {
    int count;
    int expected;
  };
  for (auto const& [count, expected] : {Case{1, 1}, Case{33, 33}, Case{kMaxInt, kMaxInt},
                                        Case{0, 32}, Case{-1, 32}, Case{kMinInt, 32}}) {
    SCOPED_TRACE(count);
    QuestSettingsImp settings = NewSettings();

    settings.SetMaxNumNomCatsSurr(count);

    EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), expected);
    EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
  }
}

TEST(QuestSettingsImp, StoresAnyLevel) {
  for (double const alpha : {0.0, 1.0, -0.5, 2.0, kInfinity, -kInfinity}) {
    SCOPED_TRACE(alpha);
    QuestSettingsImp settings = NewSettings();

    settings.SetAlphaOfVariableSelection(alpha);

    EXPECT_EQ(settings.GetAlphaOfVariableSelection(), alpha);
  }
  QuestSettingsImp settings = NewSettings();
  settings.SetAlphaOfVariableSelection(kNaN);
  EXPECT_TRUE(std::isnan(settings.GetAlphaOfVariableSelection()));
}

TEST(QuestSettingsImp, HandsOutItsPartsForReadingAndWriting) {
  QuestSettingsImp settings = NewSettings();
  QuestSettingsImp const& readable = settings;

  settings.GetPruningSpec()->SetSERuleFactor(0.5);
  settings.GetPriors()->Set(0, 0.5);
  settings.GetCost()->Set(0, 1, 4.0);

  EXPECT_EQ(readable.GetPruningSpec()->GetSERuleFactor(), 0.5);
  EXPECT_EQ(readable.GetPriors()->Get(0), 0.5);
  EXPECT_EQ(readable.GetCost()->Get(0, 1), 4.0);
  EXPECT_EQ(readable.GetPruningSpec(), settings.GetPruningSpec());
  EXPECT_EQ(readable.GetPriors(), settings.GetPriors());
  EXPECT_EQ(readable.GetCost(), settings.GetCost());
}

TEST(QuestSettingsImp, IsInitialisedWithNumbersAsTheyAre) {
  QuestSettingsImp settings = NewSettings(3);

  settings.Init(-0.5, 100, -7, nullptr, nullptr, nullptr);

  EXPECT_EQ(settings.GetAlphaOfVariableSelection(), -0.5);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 100);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), -7);
  settings.Init(kInfinity, kMinInt, 0, nullptr, nullptr, nullptr);
  EXPECT_EQ(settings.GetAlphaOfVariableSelection(), kInfinity);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), kMinInt);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), 0);
}

TEST(QuestSettingsImp, IsInitialisedWithADefaultPartForNull) {
  QuestSettingsImp settings = Filled(1);

  settings.Init(0.5, 1, 1, nullptr, nullptr, nullptr);

  ExpectDefaultParts(settings);
}

TEST(QuestSettingsImp, TakesEachPartOfItsInitByItself) {
  ForeignPruningSpec const pruning;
  ForeignPriors const priors;
  ForeignCost const cost;
  for (int mask = 0; mask < 8; ++mask) {
    SCOPED_TRACE(mask);
    QuestSettingsImp settings = NewSettings();

    settings.Init(0.5, 1, 1, (mask & 1) != 0 ? &pruning : nullptr,
                  (mask & 2) != 0 ? &priors : nullptr, (mask & 4) != 0 ? &cost : nullptr);

    EXPECT_EQ(dynamic_cast<ForeignPruningSpec*>(settings.GetPruningSpec()) != nullptr,
              (mask & 1) != 0);
    EXPECT_EQ(dynamic_cast<ForeignPriors*>(settings.GetPriors()) != nullptr, (mask & 2) != 0);
    EXPECT_EQ(dynamic_cast<ForeignCost*>(settings.GetCost()) != nullptr, (mask & 4) != 0);
    EXPECT_NE(settings.GetPruningSpec(), &pruning);
    EXPECT_NE(settings.GetPriors(), &priors);
    EXPECT_NE(settings.GetCost(), &cost);
  }
}

TEST(QuestSettingsImp, KeepsItsPartsWhenTheCallersChange) {
  QuestSettingsImp settings = NewSettings();
  PruningSpecImp pruning;
  PriorsImp priors;
  CostImp cost;

  settings.Init(0.5, 1, 1, &pruning, &priors, &cost);
  Fill(pruning, 1);
  Fill(priors, 1);
  Fill(cost, 1);

  ExpectDefaultParts(settings);
}

TEST(QuestSettingsImp, IsInitialisedWithItsOwnParts) {
  QuestSettingsImp settings = Filled(1);
  Fields const expected = Describe(settings);

  settings.Init(settings.GetAlphaOfVariableSelection(), settings.GetMaxNumSurrogates(),
                settings.GetMaxNumNomCatsSurr(), settings.GetPruningSpec(), settings.GetPriors(),
                settings.GetCost());

  EXPECT_EQ(Describe(settings), expected);
}

TEST(QuestSettingsImp, ClonesEachPartOnceAndDeletesEachCloneOnce) {
  PartLog log;
  {
    Instrumented<PruningSpecImp, PruningSpec> const pruning(&log, "pruning");
    Instrumented<PriorsImp, Priors> const priors(&log, "priors");
    Instrumented<CostImp, Cost> const cost(&log, "cost");
    QuestSettingsImp settings = NewSettings();

    settings.Init(0.5, 1, 1, &pruning, &priors, &cost);
    EXPECT_EQ(log.clones, (std::vector<std::string>{"pruning", "priors", "cost"}));
    EXPECT_EQ(log.alive, 6);
    settings.Init(0.5, 1, 1, settings.GetPruningSpec(), settings.GetPriors(), settings.GetCost());
    EXPECT_EQ(log.clones.size(), 6U);
    EXPECT_EQ(log.alive, 6);
    {
      std::unique_ptr<AlgSettings> const clone(settings.Clone());
      EXPECT_EQ(log.alive, 9);
      settings.CopyFrom(*clone);
      settings.CopyFrom(settings);
      EXPECT_EQ(log.alive, 9);
    }
    EXPECT_EQ(log.alive, 6);
    settings.Init(0.5, 1, 1, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.alive, 3);
    settings.Init(0.5, 1, 1, &pruning, &priors, &cost);
  }
  EXPECT_EQ(log.alive, 0);
}

TEST(QuestSettingsImp, CopiesEverything) {
  QuestSettingsImp const source = Filled(1);

  QuestSettingsImp const copy(source);
  std::unique_ptr<AlgSettings> const clone(source.Clone());
  QuestSettingsImp assigned = Filled(2);
  QuestSettingsImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<QuestSettingsImp*>(clone.get()), nullptr);
  for (AlgSettings const* const each :
       {static_cast<AlgSettings const*>(&copy), static_cast<AlgSettings const*>(clone.get()),
        static_cast<AlgSettings const*>(&assigned)}) {
    EXPECT_EQ(Describe(*each), Describe(source));
    EXPECT_TRUE(AreIndependent(*each, source));
  }
}

TEST(QuestSettingsImp, CopiesNumbersThatItsSettersRefuse) {
  QuestSettingsImp source = NewSettings(3);  // two surrogates, one more than the setter accepts
  QuestSettingsImp const unlimited = [] {
    QuestSettingsImp settings = NewSettings(0);
    settings.Init(7.0, 100, -7, nullptr, nullptr, nullptr);
    return settings;
  }();
  QuestSettingsImp target = NewSettings();

  target.CopyFrom(source);
  EXPECT_EQ(target.GetMaxNumSurrogates(), 2);
  EXPECT_EQ(QuestSettingsImp(source).GetMaxNumSurrogates(), 2);
  EXPECT_EQ(QuestSettingsImp(NewSettings(0)).GetMaxNumSurrogates(), -1);
  target.CopyFrom(unlimited);
  EXPECT_EQ(target.GetMaxNumSurrogates(), 100);
  EXPECT_EQ(target.GetMaxNumNomCatsSurr(), -7);
  EXPECT_EQ(target.GetAlphaOfVariableSelection(), 7.0);
}

TEST(QuestSettingsImp, IsAssignedThroughItsInterfaceAsItIsCopied) {
  QuestSettingsImp const source = Filled(1);
  QuestSettingsImp target = Filled(2);
  QuestSettings& base = target;

  EXPECT_EQ(&(base = static_cast<QuestSettings const&>(source)), &base);

  EXPECT_EQ(Describe(target), Describe(source));
}

TEST(QuestSettingsImp, CopiesWhatTheGettersOfItsSourceAnswer) {
  ForeignQuestSettings const source(CoreOf(4));
  QuestSettingsImp settings = Filled(1);

  settings.CopyFrom(source);

  EXPECT_EQ(settings.GetAlphaOfVariableSelection(), 0.375);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 44);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), 55);
  EXPECT_NE(dynamic_cast<ForeignPruningSpec*>(settings.GetPruningSpec()), nullptr);
  EXPECT_NE(settings.GetPruningSpec(), source.GetPruningSpec());
  EXPECT_NE(dynamic_cast<ForeignPriors*>(settings.GetPriors()), nullptr);
  EXPECT_NE(settings.GetPriors(), source.GetPriors());
  EXPECT_NE(dynamic_cast<ForeignCost*>(settings.GetCost()), nullptr);
  EXPECT_NE(settings.GetCost(), source.GetCost());
}

TEST(QuestSettingsImp, CopiesTheSharedPartAloneFromAnythingElse) {
  std::vector<std::unique_ptr<AlgSettings>> sources;
  for (AlgorithmType const claimed :
       {AlgRCart, AlgCCart, AlgRChaid, AlgCChaid, static_cast<AlgorithmType>(5)}) {
    auto disguised = std::make_unique<Claiming<QuestSettingsImp>>(claimed, CoreOf(9));
    FillQuest(*disguised, 2);
    sources.push_back(std::move(disguised));
  }
  sources.push_back(std::make_unique<Claiming<PlainSettings>>(AlgQuest, CoreOf(9)));
  sources.push_back(std::make_unique<Claiming<CCartSettingsImp>>(AlgQuest, CoreOf(9)));
  for (auto const& source : sources) {
    SCOPED_TRACE(source->GetType());
    QuestSettingsImp settings = Filled(1);
    Fields const before = Describe(settings);
    Cost const* const cost = settings.GetCost();

    settings.CopyFrom(*source);

    EXPECT_EQ(GroupOf(Describe(settings), "quest: "), GroupOf(before, "quest: "));
    EXPECT_EQ(settings.GetCost(), cost);
    EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 9);
    EXPECT_EQ(settings.GetStopRule()->GetMaxTreeDepth(), source->GetStopRule()->GetMaxTreeDepth());
  }
}

TEST(QuestSettingsImp, StaysAsItWasWhenInitRunsOutOfMemory) {
  PruningSpecImp pruning;
  PriorsImp priors;
  CostImp cost;
  Fill(pruning, 2);
  Fill(priors, 2);
  Fill(cost, 2);
  QuestSettingsImp settings = Filled(1);
  Fields const expected = Describe(settings);
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&] {
    try {
      settings.Init(0.5, 1, 9, &pruning, &priors, &cost);
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(Describe(settings), expected);
      EXPECT_EQ(CountLiveAllocations(), live);
      throw;
    }
  });

  EXPECT_GT(failures, 4);
  EXPECT_EQ(settings.GetMaxNumNomCatsSurr(), 9);
}

#if TREE_HAS_SLOTS
TEST(QuestSettings, KeepsTheOrderOfItsVirtualOperations) {
  using Quest = QuestSettings;
  constexpr std::ptrdiff_t kFirst = kFirstSlot + 10;  // after those of the base
  EXPECT_EQ(VirtualSlot(static_cast<PruningSpec* (Quest::*)()>(&Quest::GetPruningSpec)),
            kFirst + 0);
  EXPECT_EQ(VirtualSlot(static_cast<PruningSpec const* (Quest::*)() const>(&Quest::GetPruningSpec)),
            kFirst + 1);
  EXPECT_EQ(VirtualSlot(static_cast<int (Quest::*)() const>(&Quest::GetMaxNumSurrogates)),
            kFirst + 2);
  EXPECT_EQ(VirtualSlot(static_cast<void (Quest::*)(int)>(&Quest::SetMaxNumSurrogates)),
            kFirst + 3);
  EXPECT_EQ(VirtualSlot(static_cast<int (Quest::*)() const>(&Quest::GetMaxNumNomCatsSurr)),
            kFirst + 4);
  EXPECT_EQ(VirtualSlot(static_cast<void (Quest::*)(int)>(&Quest::SetMaxNumNomCatsSurr)),
            kFirst + 5);
  EXPECT_EQ(VirtualSlot(static_cast<Priors* (Quest::*)()>(&Quest::GetPriors)), kFirst + 6);
  EXPECT_EQ(VirtualSlot(static_cast<Priors const* (Quest::*)() const>(&Quest::GetPriors)),
            kFirst + 7);
  EXPECT_EQ(VirtualSlot(static_cast<Cost* (Quest::*)()>(&Quest::GetCost)), kFirst + 8);
  EXPECT_EQ(VirtualSlot(static_cast<Cost const* (Quest::*)() const>(&Quest::GetCost)), kFirst + 9);
  EXPECT_EQ(
      VirtualSlot(static_cast<double (Quest::*)() const>(&Quest::GetAlphaOfVariableSelection)),
      kFirst + 10);
  EXPECT_EQ(VirtualSlot(static_cast<void (Quest::*)(double)>(&Quest::SetAlphaOfVariableSelection)),
            kFirst + 11);
  EXPECT_EQ(VirtualSlot(&QuestSettingsImp::ValidateNumSurrogates), -1);
  EXPECT_EQ(VirtualSlot(kInit), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
