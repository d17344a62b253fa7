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

static_assert(ChiSquareMethod0 == 0);
static_assert(std::is_same_v<int, std::underlying_type_t<ChiSquareMethod>>);
static_assert(std::is_convertible_v<ChiSquareMethod, int>);  // unscoped

static_assert(std::is_abstract_v<CChaidSettings>);
static_assert(sizeof(CChaidSettings) == sizeof(ChaidSettings));  // no fields of its own
static_assert(std::is_base_of_v<ChaidSettings, CChaidSettings>);
static_assert(std::is_base_of_v<CChaidSettings, CChaidSettingsImp>);
static_assert(std::is_convertible_v<decltype(std::declval<CChaidSettingsImp const&>().Clone()),
                                    AlgSettings*>);
static_assert(std::is_same_v<decltype(std::declval<CChaidSettingsImp&>().GetPriors()), Priors*>);
static_assert(
    std::is_same_v<decltype(std::declval<CChaidSettingsImp const&>().GetPriors()), Priors const*>);

// One of two overloads, so it is named by its type.
constexpr void (CChaidSettingsImp::*kInit)(double, ChiSquareMethod, int, Cost const&, Priors const&,
                                           Scores const&) = &CChaidSettingsImp::Init;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

CChaidSettingsImp NewSettings() { return CChaidSettingsImp(CoreOf(3)); }

CChaidSettingsImp Filled(int variant) {
  return dynamic_cast<CChaidSettingsImp const&>(*FilledSettings(AlgCChaid, variant));
}

TEST(CChaidSettingsImp, BeginsWithItsDefaults) {
  CChaidSettingsImp const settings = NewSettings();

  EXPECT_EQ(settings.GetType(), AlgCChaid);
  EXPECT_EQ(settings.GetType(), 3);
  EXPECT_EQ(settings.GetAlphaOfSplitNode(), 0.05);
  EXPECT_EQ(settings.GetAlphaOfMerge(), 0.05);
  EXPECT_EQ(settings.GetAlphaOfMergeSplit(), 0.025);
  EXPECT_EQ(settings.GetSplitMergeMethod(), SplitMergeMethod0);
  EXPECT_FALSE(settings.GetAllowSplitMerge());
  EXPECT_TRUE(settings.GetUseBonferroniAdj());
  EXPECT_EQ(settings.GetConvergenceEpsilon(), 0.001);
  EXPECT_EQ(settings.GetChiSquareMethod(), ChiSquareMethod0);
  EXPECT_EQ(settings.GetMaxNumIterations(), 100);
  EXPECT_EQ(settings.GetStopRule()->GetMaxTreeDepth(), 3);
}

TEST(CChaidSettingsImp, BeginsWithDefaultCostsAndScoresButAlternatePriors) {
  CChaidSettingsImp const settings = NewSettings();

  ASSERT_NE(dynamic_cast<CostImp const*>(settings.GetCost()), nullptr);
  EXPECT_EQ(settings.GetCost()->GetType(), CostTypeDefault);
  EXPECT_EQ(settings.GetCost()->GetNumClasses(), 0);
  ASSERT_NE(dynamic_cast<ScoresImp const*>(settings.GetScores()), nullptr);
  EXPECT_EQ(settings.GetScores()->GetType(), ScoreTypeDefault);
  EXPECT_EQ(settings.GetScores()->GetNumClasses(), 0);
  ASSERT_NE(dynamic_cast<PriorsImp const*>(settings.GetPriors()), nullptr);
  EXPECT_EQ(settings.GetPriors()->GetType(), PriorTypeAlternate);
  EXPECT_EQ(settings.GetPriors()->GetNumClasses(), 0);
  EXPECT_FALSE(settings.GetPriors()->HasAlteredValues());
}

TEST(CChaidSettingsImp, HandsOutItsPartsForReadingAndWriting) {
  CChaidSettingsImp settings = NewSettings();
  CChaidSettingsImp const& readable = settings;

  settings.GetCost()->Set(0, 1, 4.0);
  settings.GetPriors()->Set(0, 0.5);
  settings.GetScores()->Set(0, 6.0);

  EXPECT_EQ(readable.GetCost()->Get(0, 1), 4.0);
  EXPECT_EQ(readable.GetPriors()->Get(0), 0.5);
  EXPECT_EQ(readable.GetScores()->Get(0), 6.0);
  EXPECT_EQ(readable.GetCost(), settings.GetCost());
  EXPECT_EQ(readable.GetPriors(), settings.GetPriors());
  EXPECT_EQ(readable.GetScores(), settings.GetScores());
}

TEST(CChaidSettingsImp, StoresAnyNumber) {
  for (double const epsilon : {0.0, -1.0, 7.0, kInfinity, -kInfinity}) {
    CChaidSettingsImp settings = NewSettings();
    settings.SetConvergenceEpsilon(epsilon);
    EXPECT_EQ(settings.GetConvergenceEpsilon(), epsilon);
    EXPECT_EQ(settings.GetMaxNumIterations(), 100);
  }
  for (int const number : {0, 1, -1, kMaxInt, kMinInt}) {
    SCOPED_TRACE(number);
    CChaidSettingsImp settings = NewSettings();
    settings.SetMaxNumIterations(number);
    EXPECT_EQ(settings.GetMaxNumIterations(), number);
    EXPECT_EQ(settings.GetChiSquareMethod(), 0);
    settings.SetMaxNumIterations(5);
    settings.SetChiSquareMethod(static_cast<ChiSquareMethod>(number));
    EXPECT_EQ(settings.GetChiSquareMethod(), number);
    EXPECT_EQ(settings.GetMaxNumIterations(), 5);
    EXPECT_EQ(settings.GetConvergenceEpsilon(), 0.001);
  }
  CChaidSettingsImp settings = NewSettings();
  settings.SetConvergenceEpsilon(kNaN);
  EXPECT_TRUE(std::isnan(settings.GetConvergenceEpsilon()));
}

TEST(CChaidSettingsImp, IsInitialisedWithNumbersAsTheyAreAndClones) {
  CChaidSettingsImp settings = NewSettings();
  ForeignCost const cost;
  ForeignPriors const priors;
  ForeignScores const scores;

  settings.Init(-0.5, static_cast<ChiSquareMethod>(9), -7, cost, priors, scores);

  EXPECT_EQ(settings.GetConvergenceEpsilon(), -0.5);
  EXPECT_EQ(settings.GetChiSquareMethod(), 9);
  EXPECT_EQ(settings.GetMaxNumIterations(), -7);
  EXPECT_NE(dynamic_cast<ForeignCost*>(settings.GetCost()), nullptr);
  EXPECT_NE(dynamic_cast<ForeignPriors*>(settings.GetPriors()), nullptr);
  EXPECT_NE(dynamic_cast<ForeignScores*>(settings.GetScores()), nullptr);
  EXPECT_NE(settings.GetCost(), &cost);
  EXPECT_NE(settings.GetPriors(), &priors);
  EXPECT_NE(settings.GetScores(), &scores);
}

TEST(CChaidSettingsImp, KeepsItsCostsWhenTheCallersChange) {
  CChaidSettingsImp settings = NewSettings();
  CostImp cost;
  PriorsImp priors;
  ScoresImp scores;
  cost.Set(0, 1, 4.0);

  settings.Init(0.1, ChiSquareMethod0, 1, cost, priors, scores);
  cost.Set(0, 1, 9.0);
  priors.Set(0, 9.0);
  scores.Set(0, 9.0);

  EXPECT_EQ(settings.GetCost()->Get(0, 1), 4.0);
  EXPECT_EQ(settings.GetPriors()->GetNumClasses(), 0);
  EXPECT_EQ(settings.GetScores()->GetNumClasses(), 0);
}

TEST(CChaidSettingsImp, KeepsAnObjectThatItHoldsAlready) {
  CChaidSettingsImp settings = Filled(1);
  Fields expected = Describe(settings);
  Cost const* const cost = settings.GetCost();
  Priors const* const priors = settings.GetPriors();
  Scores const* const scores = settings.GetScores();

  settings.Init(0.75, static_cast<ChiSquareMethod>(4), 12, *cost, *priors, *scores);

  EXPECT_EQ(settings.GetCost(), cost);
  EXPECT_EQ(settings.GetPriors(), priors);
  EXPECT_EQ(settings.GetScores(), scores);
  expected["categorical chaid: epsilon"] = 0.75;
  expected["categorical chaid: method"] = 4;
  expected["categorical chaid: iterations"] = 12;
  EXPECT_EQ(Describe(settings), expected);
}

TEST(CChaidSettingsImp, KeepsEachObjectThatItHoldsByItself) {
  for (int mask = 0; mask < 8; ++mask) {
    SCOPED_TRACE(mask);
    CChaidSettingsImp settings = NewSettings();
    CostImp const newCost;
    PriorsImp const newPriors;
    ScoresImp const newScores;
    Cost const* const cost = settings.GetCost();
    Priors const* const priors = settings.GetPriors();
    Scores const* const scores = settings.GetScores();

    settings.Init(0.5, ChiSquareMethod0, 1, (mask & 1) != 0 ? *cost : newCost,
                  (mask & 2) != 0 ? *priors : newPriors, (mask & 4) != 0 ? *scores : newScores);

    EXPECT_EQ(settings.GetCost() == cost, (mask & 1) != 0);
    EXPECT_EQ(settings.GetPriors() == priors, (mask & 2) != 0);
    EXPECT_EQ(settings.GetScores() == scores, (mask & 4) != 0);
  }
}

TEST(CChaidSettingsImp, KeepsItsObjectsWhenCopiedFromItself) {
  CChaidSettingsImp settings = Filled(1);
  Fields const expected = Describe(settings);
  Cost const* const cost = settings.GetCost();
  Priors const* const priors = settings.GetPriors();
  Scores const* const scores = settings.GetScores();
  CChaidSettingsImp const& same = settings;

  settings.CopyFrom(same);
  settings = same;

  EXPECT_EQ(settings.GetCost(), cost);
  EXPECT_EQ(settings.GetPriors(), priors);
  EXPECT_EQ(settings.GetScores(), scores);
  EXPECT_EQ(Describe(settings), expected);
}

TEST(CChaidSettingsImp, ClonesEachPartOnceAndDeletesEachCloneOnce) {
  PartLog log;
  {
    Instrumented<CostImp, Cost> const cost(&log, "cost");
    Instrumented<PriorsImp, Priors> const priors(&log, "priors");
    Instrumented<ScoresImp, Scores> const scores(&log, "scores");
    CChaidSettingsImp settings = NewSettings();

    settings.Init(0.1, ChiSquareMethod0, 1, cost, priors, scores);
    EXPECT_EQ(log.clones, (std::vector<std::string>{"cost", "priors", "scores"}));
    EXPECT_EQ(log.alive, 6);

    settings.Init(0.2, ChiSquareMethod0, 2, *settings.GetCost(), *settings.GetPriors(),
                  *settings.GetScores());
    EXPECT_EQ(log.clones.size(), 3U);
    EXPECT_EQ(log.alive, 6);
    {
      std::unique_ptr<AlgSettings> const clone(settings.Clone());
      EXPECT_EQ(log.alive, 9);
      settings.CopyFrom(*clone);
      EXPECT_EQ(log.alive, 9);
    }
    EXPECT_EQ(log.alive, 6);
  }
  EXPECT_EQ(log.alive, 0);
}

TEST(CChaidSettingsImp, ReplacesOnePartAfterTheOther) {
  PartLog log;
  Instrumented<CostImp, Cost> const cost(&log, "cost");
  Instrumented<PriorsImp, Priors> const priors(&log, "priors");
  Instrumented<ScoresImp, Scores> const scores(&log, "scores");
  CChaidSettingsImp settings = NewSettings();
  settings.Init(0.1, ChiSquareMethod0, 1, cost, priors, scores);
  log.events.clear();

  settings.Init(0.1, ChiSquareMethod0, 1, cost, priors, scores);

  EXPECT_EQ(log.events,
            (std::vector<std::string>{"clone cost", "delete cost", "clone priors", "delete priors",
                                      "clone scores", "delete scores"}));
}

TEST(CChaidSettingsImp, CopiesEverything) {
  CChaidSettingsImp const source = Filled(1);

  CChaidSettingsImp const copy(source);
  std::unique_ptr<AlgSettings> const clone(source.Clone());
  CChaidSettingsImp assigned = Filled(2);
  CChaidSettingsImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<CChaidSettingsImp*>(clone.get()), nullptr);
  for (AlgSettings const* const each :
       {static_cast<AlgSettings const*>(&copy), static_cast<AlgSettings const*>(clone.get()),
        static_cast<AlgSettings const*>(&assigned)}) {
    EXPECT_EQ(Describe(*each), Describe(source));
    EXPECT_TRUE(AreIndependent(*each, source));
  }
}

TEST(CChaidSettingsImp, IsAssignedThroughItsInterfaceAsItIsCopied) {
  CChaidSettingsImp const source = Filled(1);
  CChaidSettingsImp target = Filled(2);
  CChaidSettings& base = target;

  EXPECT_EQ(&(base = static_cast<CChaidSettings const&>(source)), &base);

  EXPECT_EQ(Describe(target), Describe(source));
}

TEST(CChaidSettingsImp, CopiesPriorsOfTheDefaultTypeToo) {
  CChaidSettingsImp source = NewSettings();
  source.GetPriors()->Set(PriorTypeDefault);

  CChaidSettingsImp const copy(source);

  EXPECT_EQ(copy.GetPriors()->GetType(), PriorTypeDefault);
}

TEST(CChaidSettingsImp, KeepsItsOwnFieldsFromARegression) {
  CChaidSettingsImp settings = Filled(1);
  Fields const before = Describe(settings);
  Cost const* const cost = settings.GetCost();
  std::unique_ptr<AlgSettings> const regression = FilledSettings(AlgRChaid, 2);

  settings.CopyFrom(*regression);

  Fields const after = Describe(settings);
  EXPECT_EQ(GroupOf(after, "chaid: "), GroupOf(Describe(*regression), "chaid: "));
  EXPECT_EQ(GroupOf(after, "categorical chaid: "), GroupOf(before, "categorical chaid: "));
  EXPECT_EQ(settings.GetCost(), cost);
}

TEST(CChaidSettingsImp, KeepsItsOwnFieldsFromAClassThatLacksThem) {
  Claiming<RChaidSettingsImp> const impostor(AlgCChaid, CoreOf(2));
  CChaidSettingsImp settings = Filled(1);
  Fields const before = Describe(settings);

  settings.CopyFrom(impostor);

  Fields const after = Describe(settings);
  EXPECT_EQ(GroupOf(after, "chaid: "), GroupOf(Describe(impostor), "chaid: "));
  EXPECT_EQ(GroupOf(after, "categorical chaid: "), GroupOf(before, "categorical chaid: "));
  EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 2);
}

TEST(CChaidSettingsImp, CopiesWhatTheInterfaceShowsFromAnotherClass) {
  ForeignCChaidSettings const foreign(CoreOf(2));  // has no priors to give
  CChaidSettingsImp settings = Filled(1);
  Priors const* const priors = settings.GetPriors();

  settings.CopyFrom(foreign);

  EXPECT_EQ(GroupOf(Describe(settings), "chaid: "), GroupOf(Describe(foreign), "chaid: "));
  EXPECT_EQ(settings.GetConvergenceEpsilon(), 0.375);
  EXPECT_EQ(settings.GetMaxNumIterations(), 44);
  EXPECT_EQ(settings.GetChiSquareMethod(), 5);
  EXPECT_NE(dynamic_cast<testing::ForeignCost const*>(settings.GetCost()), nullptr);
  EXPECT_NE(settings.GetCost(), foreign.GetCost());
  EXPECT_NE(dynamic_cast<testing::ForeignScores const*>(settings.GetScores()), nullptr);
  EXPECT_NE(settings.GetScores(), foreign.GetScores());
  EXPECT_EQ(settings.GetPriors(), priors);
  EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 2);
}

TEST(CChaidSettingsImp, GoesByTheTypeThatItsSourceAnswers) {
  struct Case {
    AlgorithmType claimed;
    bool copiesChaid;
  };
  for (auto const& [claimed, copiesChaid] :
       {Case{AlgRChaid, true}, Case{AlgCCart, false}, Case{AlgRCart, false}, Case{AlgQuest, false},
        Case{static_cast<AlgorithmType>(5), false}, Case{static_cast<AlgorithmType>(-1), false}}) {
    SCOPED_TRACE(claimed);
    Claiming<CChaidSettingsImp> source(claimed, CoreOf(2));
    FillChaid(source, 2);
    FillCChaid(source, 2);
    CChaidSettingsImp settings = Filled(1);
    Fields const before = Describe(settings);

    settings.CopyFrom(source);

    Fields const after = Describe(settings);
    EXPECT_EQ(GroupOf(after, "chaid: "),
              GroupOf(copiesChaid ? Describe(source) : before, "chaid: "));
    EXPECT_EQ(GroupOf(after, "categorical chaid: "), GroupOf(before, "categorical chaid: "));
    EXPECT_EQ(settings.GetCoreSettings()->GetNumPredictors(), 2);
  }
}

TEST(CChaidSettingsImp, KeepsAllPartsWhenInitRunsOutOfMemory) {
  CostImp cost;
  PriorsImp priors;
  ScoresImp scores;
  Fill(cost, 2);
  Fill(priors, 2);
  Fill(scores, 2);
  CChaidSettingsImp settings = Filled(1);

  long const failures = WithEveryAllocationFailing([&] {
    try {
      settings.Init(0.5, ChiSquareMethod0, 1, cost, priors, scores);
    } catch (std::bad_alloc const&) {
      // Some may be new already, the others are those of before.
      ASSERT_NE(settings.GetCost(), nullptr);
      EXPECT_GT(settings.GetCost()->GetNumClasses(), 0);
      ASSERT_NE(settings.GetPriors(), nullptr);
      EXPECT_GT(settings.GetPriors()->GetNumClasses(), 0);
      ASSERT_NE(settings.GetScores(), nullptr);
      EXPECT_GT(settings.GetScores()->GetNumClasses(), 0);
      throw;
    }
  });

  EXPECT_GT(failures, 4);
  CChaidSettingsImp expected = Filled(1);
  expected.Init(0.5, ChiSquareMethod0, 1, cost, priors, scores);
  EXPECT_EQ(Describe(settings), Describe(expected));
}

#if TREE_HAS_SLOTS
TEST(CChaidSettings, KeepsTheOrderOfItsVirtualOperations) {
  using Chaid = CChaidSettings;
  constexpr std::ptrdiff_t kFirst = kFirstSlot + 10;  // after those of the base
  EXPECT_EQ(VirtualSlot(static_cast<double (Chaid::*)() const>(&Chaid::GetConvergenceEpsilon)),
            kFirst + 0);
  EXPECT_EQ(VirtualSlot(static_cast<int (Chaid::*)() const>(&Chaid::GetMaxNumIterations)),
            kFirst + 1);
  EXPECT_EQ(
      VirtualSlot(static_cast<ChiSquareMethod (Chaid::*)() const>(&Chaid::GetChiSquareMethod)),
      kFirst + 2);
  EXPECT_EQ(VirtualSlot(static_cast<Cost const* (Chaid::*)() const>(&Chaid::GetCost)), kFirst + 3);
  EXPECT_EQ(VirtualSlot(static_cast<Cost* (Chaid::*)()>(&Chaid::GetCost)), kFirst + 4);
  EXPECT_EQ(VirtualSlot(static_cast<Scores const* (Chaid::*)() const>(&Chaid::GetScores)),
            kFirst + 5);
  EXPECT_EQ(VirtualSlot(static_cast<Scores* (Chaid::*)()>(&Chaid::GetScores)), kFirst + 6);
  EXPECT_EQ(VirtualSlot(static_cast<void (Chaid::*)(double)>(&Chaid::SetConvergenceEpsilon)),
            kFirst + 7);
  EXPECT_EQ(VirtualSlot(static_cast<void (Chaid::*)(int)>(&Chaid::SetMaxNumIterations)),
            kFirst + 8);
  EXPECT_EQ(VirtualSlot(static_cast<void (Chaid::*)(ChiSquareMethod)>(&Chaid::SetChiSquareMethod)),
            kFirst + 9);
  using Imp = CChaidSettingsImp;
  EXPECT_EQ(VirtualSlot(static_cast<Priors* (Imp::*)()>(&Imp::GetPriors)), -1);
  EXPECT_EQ(VirtualSlot(static_cast<Priors const* (Imp::*)() const>(&Imp::GetPriors)), -1);
  EXPECT_EQ(VirtualSlot(kInit), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
