#include <gtest/gtest.h>

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

static_assert(CartSplitCriteria0 == 0);
static_assert(std::is_same_v<int, std::underlying_type_t<CartSplitCriteria>>);
static_assert(std::is_convertible_v<CartSplitCriteria, int>);  // unscoped

static_assert(std::is_abstract_v<CCartSettings>);
static_assert(sizeof(CCartSettings) == sizeof(CartSettings));  // no fields of its own
static_assert(std::is_base_of_v<CartSettings, CCartSettings>);
static_assert(std::is_base_of_v<CCartSettings, CCartSettingsImp>);
static_assert(
    std::is_convertible_v<decltype(std::declval<CCartSettingsImp const&>().Clone()), AlgSettings*>);

// One of two overloads, so it is named by its type.
constexpr void (CCartSettingsImp::*kInit)(Priors const&, Cost const&,
                                          CartSplitCriteria) = &CCartSettingsImp::Init;

CCartSettingsImp NewSettings() { return CCartSettingsImp(CoreOf(3)); }

CCartSettingsImp Filled(int variant) {
  return dynamic_cast<CCartSettingsImp const&>(*FilledSettings(AlgCCart, variant));
}

TEST(CCartSettingsImp, BeginsWithItsDefaults) {
  CCartSettingsImp const settings = NewSettings();

  EXPECT_EQ(settings.GetType(), AlgCCart);
  EXPECT_EQ(settings.GetType(), 1);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 2);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 3);
  EXPECT_EQ(settings.GetStopRule()->GetMaxTreeDepth(), 5);
  EXPECT_EQ(settings.GetPruningSpec()->GetSERuleFactor(), 1.0);
  EXPECT_FALSE(settings.GetPruningSpec()->GetPickMinRiskTree());
  EXPECT_EQ(settings.GetSplitCriteria(), CartSplitCriteria0);
  ASSERT_NE(dynamic_cast<PriorsImp const*>(settings.GetPriors()), nullptr);
  EXPECT_EQ(settings.GetPriors()->GetType(), PriorTypeDefault);
  EXPECT_EQ(settings.GetPriors()->GetNumClasses(), 0);
  ASSERT_NE(dynamic_cast<CostImp const*>(settings.GetCost()), nullptr);
  EXPECT_EQ(settings.GetCost()->GetType(), CostTypeDefault);
  EXPECT_EQ(settings.GetCost()->GetNumClasses(), 0);
}

TEST(CCartSettingsImp, HandsOutItsPartsForReadingAndWriting) {
  CCartSettingsImp settings = NewSettings();
  CCartSettingsImp const& readable = settings;

  settings.GetCost()->Set(0, 1, 4.0);
  settings.GetPriors()->Set(0, 0.5);

  EXPECT_EQ(readable.GetCost()->Get(0, 1), 4.0);
  EXPECT_EQ(readable.GetPriors()->Get(0), 0.5);
  EXPECT_EQ(readable.GetCost(), settings.GetCost());
  EXPECT_EQ(readable.GetPriors(), settings.GetPriors());
}

TEST(CCartSettingsImp, StoresAnyCriterion) {
  for (int const criterion :
       {0, 1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(criterion);
    CCartSettingsImp settings = NewSettings();

    settings.SetSplitCriteria(static_cast<CartSplitCriteria>(criterion));

    EXPECT_EQ(settings.GetSplitCriteria(), criterion);
  }
}

TEST(CCartSettingsImp, IsInitialisedWithClonesAndTheCriterion) {
  CCartSettingsImp settings = NewSettings();
  PriorsImp priors;
  CostImp cost;
  priors.Set(0, 0.5);
  cost.Set(0, 1, 4.0);

  settings.Init(priors, cost, static_cast<CartSplitCriteria>(-3));
  priors.Set(0, 0.9);
  cost.Set(0, 1, 9.0);

  EXPECT_EQ(settings.GetSplitCriteria(), -3);
  EXPECT_EQ(settings.GetPriors()->Get(0), 0.5);
  EXPECT_EQ(settings.GetCost()->Get(0, 1), 4.0);
}

TEST(CCartSettingsImp, IsInitialisedWithPartsOfAnyClass) {
  CCartSettingsImp settings = NewSettings();

  settings.Init(ForeignPriors(), ForeignCost(), CartSplitCriteria0);

  EXPECT_NE(dynamic_cast<ForeignPriors*>(settings.GetPriors()), nullptr);
  EXPECT_NE(dynamic_cast<ForeignCost*>(settings.GetCost()), nullptr);
}

TEST(CCartSettingsImp, IsInitialisedWithItsOwnParts) {
  CCartSettingsImp settings = Filled(1);
  Fields const expected = Describe(settings);

  settings.Init(*settings.GetPriors(), *settings.GetCost(), settings.GetSplitCriteria());

  EXPECT_EQ(Describe(settings), expected);
}

TEST(CCartSettingsImp, ClonesEachPartOnceAndDeletesEachCloneOnce) {
  PartLog log;
  {
    Instrumented<PriorsImp, Priors> const priors(&log, "priors");
    Instrumented<CostImp, Cost> const cost(&log, "cost");
    CCartSettingsImp settings = NewSettings();

    settings.Init(priors, cost, CartSplitCriteria0);
    EXPECT_EQ(log.clones, (std::vector<std::string>{"priors", "cost"}));
    EXPECT_EQ(log.alive, 4);
    settings.Init(*settings.GetPriors(), *settings.GetCost(), CartSplitCriteria0);
    EXPECT_EQ(log.clones.size(), 4U);  // its own are cloned as well
    EXPECT_EQ(log.alive, 4);
    EXPECT_EQ(log.deletions, 2);
    {
      std::unique_ptr<AlgSettings> const clone(settings.Clone());
      EXPECT_EQ(log.alive, 6);
      settings.CopyFrom(*clone);
      settings.CopyFrom(settings);
      EXPECT_EQ(log.alive, 6);
    }
    EXPECT_EQ(log.alive, 4);
  }
  EXPECT_EQ(log.alive, 0);
}

TEST(CCartSettingsImp, CopiesEverything) {
  CCartSettingsImp const source = Filled(1);

  CCartSettingsImp const copy(source);
  std::unique_ptr<AlgSettings> const clone(source.Clone());
  CCartSettingsImp assigned = Filled(2);
  CCartSettingsImp const& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  EXPECT_NE(dynamic_cast<CCartSettingsImp*>(clone.get()), nullptr);
  for (AlgSettings const* const each :
       {static_cast<AlgSettings const*>(&copy), static_cast<AlgSettings const*>(clone.get()),
        static_cast<AlgSettings const*>(&assigned)}) {
    EXPECT_EQ(Describe(*each), Describe(source));
    EXPECT_TRUE(AreIndependent(*each, source));
  }
}

TEST(CCartSettingsImp, IsAssignedThroughItsInterfaceAsItIsCopied) {
  CCartSettingsImp const source = Filled(1);
  CCartSettingsImp target = Filled(2);
  CCartSettings& base = target;

  EXPECT_EQ(&(base = static_cast<CCartSettings const&>(source)), &base);

  EXPECT_EQ(Describe(target), Describe(source));
}

TEST(CCartSettingsImp, KeepsItsOwnPartsFromARegression) {
  CCartSettingsImp settings = Filled(1);
  Fields const before = Describe(settings);
  Cost const* const cost = settings.GetCost();
  Priors const* const priors = settings.GetPriors();
  std::unique_ptr<AlgSettings> const regression = FilledSettings(AlgRCart, 2);

  settings.CopyFrom(*regression);

  Fields const after = Describe(settings);
  EXPECT_EQ(GroupOf(after, "cart: "), GroupOf(Describe(*regression), "cart: "));
  EXPECT_EQ(GroupOf(after, "categorical cart: "), GroupOf(before, "categorical cart: "));
  EXPECT_EQ(settings.GetCost(), cost);
  EXPECT_EQ(settings.GetPriors(), priors);
}

TEST(CCartSettingsImp, CopiesWhatTheGettersOfItsSourceAnswer) {
  ForeignCCartSettings const source(CoreOf(4));
  CCartSettingsImp settings = Filled(1);

  settings.CopyFrom(source);

  EXPECT_NE(dynamic_cast<ForeignPriors*>(settings.GetPriors()), nullptr);
  EXPECT_NE(settings.GetPriors(), source.GetPriors());
  EXPECT_NE(dynamic_cast<ForeignCost*>(settings.GetCost()), nullptr);
  EXPECT_NE(settings.GetCost(), source.GetCost());
  EXPECT_NE(dynamic_cast<ForeignPruningSpec*>(settings.GetPruningSpec()), nullptr);
  EXPECT_EQ(settings.GetSplitCriteria(), 5);
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 1);
}

TEST(CCartSettingsImp, GoesByTheTypeThatItsSourceAnswers) {
  struct Case {
    AlgorithmType claimed;
    bool copiesCart;
  };
  for (auto const& [claimed, copiesCart] :
       {Case{AlgRCart, true}, Case{AlgRChaid, false}, Case{AlgCChaid, false}, Case{AlgQuest, false},
        Case{static_cast<AlgorithmType>(5), false}, Case{static_cast<AlgorithmType>(-1), false}}) {
    SCOPED_TRACE(claimed);
    Claiming<CCartSettingsImp> source(claimed, CoreOf(9));
    FillCart(source, 2);
    FillCCart(source, 2);
    CCartSettingsImp settings = Filled(1);
    Fields const before = Describe(settings);

    settings.CopyFrom(source);

    Fields const after = Describe(settings);
    EXPECT_EQ(GroupOf(after, "cart: "), GroupOf(copiesCart ? Describe(source) : before, "cart: "));
    EXPECT_EQ(GroupOf(after, "categorical cart: "), GroupOf(before, "categorical cart: "));
  }
}

TEST(CCartSettingsImp, KeepsItsOwnPartsFromARegressionThatClaimsToBeItsKind) {
  Claiming<RCartSettingsImp> source(AlgCCart, CoreOf(9));
  FillCart(source, 2);
  CCartSettingsImp settings = Filled(1);
  Fields const before = Describe(settings);

  settings.CopyFrom(source);

  Fields const after = Describe(settings);
  EXPECT_EQ(GroupOf(after, "cart: "), GroupOf(Describe(source), "cart: "));
  EXPECT_EQ(GroupOf(after, "categorical cart: "), GroupOf(before, "categorical cart: "));
}

TEST(CCartSettingsImp, StaysAsItWasWhenInitRunsOutOfMemory) {
  PriorsImp priors;
  CostImp cost;
  Fill(priors, 2);
  Fill(cost, 2);
  CCartSettingsImp settings = Filled(1);
  Fields const expected = Describe(settings);
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&] {
    try {
      settings.Init(priors, cost, static_cast<CartSplitCriteria>(9));
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(Describe(settings), expected);
      EXPECT_EQ(CountLiveAllocations(), live);
      throw;
    }
  });

  EXPECT_GT(failures, 3);
  EXPECT_EQ(settings.GetSplitCriteria(), 9);
}

#if TREE_HAS_SLOTS
TEST(CCartSettings, KeepsTheOrderOfItsVirtualOperations) {
  using Cart = CCartSettings;
  constexpr std::ptrdiff_t kFirst = kFirstSlot + 14;  // after those of the bases
  EXPECT_EQ(VirtualSlot(static_cast<Priors const* (Cart::*)() const>(&Cart::GetPriors)),
            kFirst + 0);
  EXPECT_EQ(VirtualSlot(static_cast<Priors* (Cart::*)()>(&Cart::GetPriors)), kFirst + 1);
  EXPECT_EQ(VirtualSlot(static_cast<Cost const* (Cart::*)() const>(&Cart::GetCost)), kFirst + 2);
  EXPECT_EQ(VirtualSlot(static_cast<Cost* (Cart::*)()>(&Cart::GetCost)), kFirst + 3);
  EXPECT_EQ(VirtualSlot(static_cast<CartSplitCriteria (Cart::*)() const>(&Cart::GetSplitCriteria)),
            kFirst + 4);
  EXPECT_EQ(VirtualSlot(static_cast<void (Cart::*)(CartSplitCriteria)>(&Cart::SetSplitCriteria)),
            kFirst + 5);
  EXPECT_EQ(VirtualSlot(kInit), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
