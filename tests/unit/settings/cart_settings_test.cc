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

static_assert(std::is_abstract_v<CartSettings>);
static_assert(std::is_base_of_v<AlgSettings, CartSettings>);
static_assert(std::is_copy_assignable_v<CartSettings>);
static_assert(
    std::is_same_v<decltype(&CartSettings::ValidateNumSurrogates), void (CartSettings::*)()>);

// One of two overloads, so it is named by its type.
constexpr void (CartSettings::*kInit)(PruningSpec const*, int) = &CartSettings::Init;

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

RCartSettingsImp NewSettings(int numPredictors) { return RCartSettingsImp(CoreOf(numPredictors)); }

void ExpectDefaultPruning(PruningSpec const* pruning) {
  ASSERT_NE(dynamic_cast<PruningSpecImp const*>(pruning), nullptr);
  EXPECT_EQ(pruning->GetSERuleFactor(), 1.0);
  EXPECT_FALSE(pruning->GetPickMinRiskTree());
}

TEST(CartSettings, BeginsWithItsDefaults) {
  RCartSettingsImp const settings = NewSettings(10);

  ExpectDefaultPruning(settings.GetPruningSpec());
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 5);
  EXPECT_EQ(settings.GetMaxNumCompetitors(), 5);
  EXPECT_EQ(settings.GetMaxNominalPredCategories(), 32);
}

TEST(CartSettings, StopsAtDepthFiveAndLeavesTheOtherStoppingLimits) {
  Fields expected;
  Fields actual;
  StopRuleImp rule;
  rule.SetMaxTreeDepth(5);
  Describe("stop", rule, expected);

  RCartSettingsImp const settings = NewSettings(3);
  Describe("stop", *settings.GetStopRule(), actual);

  EXPECT_EQ(actual, expected);
}

TEST(CartSettings, ClampsTheDefaultNumberOfSurrogates) {
  struct Case {
    int predictors;
    int surrogates;
    int competitors;
  };
  for (auto const& [predictors, surrogates, competitors] :
       {Case{0, 0, 1}, Case{1, 0, 1}, Case{2, 1, 2}, Case{3, 2, 3}, Case{5, 4, 5}, Case{6, 5, 5},
        Case{7, 5, 5}, Case{100, 5, 5}}) {
    SCOPED_TRACE(predictors);
    RCartSettingsImp const settings = NewSettings(predictors);

    EXPECT_EQ(settings.GetMaxNumSurrogates(), surrogates);
    EXPECT_EQ(settings.GetMaxNumCompetitors(), competitors);
  }
}

TEST(CartSettings, ClampsTheNumberOfSurrogatesThatIsSet) {
  struct Case {
    char const* name;
    int predictors;
    int count;
    int expected;
  };
  Case const table[] = {
      {"within", 10, 2, 2},
      {"none", 10, 0, 0},
      {"negative", 10, -4, 0},
      {"least", 10, kMinInt, 0},
      {"one below all", 10, 9, 9},
      {"all", 10, 10, 9},
      {"beyond", 10, 11, 9},
      {"most", 10, kMaxInt, 9},
      {"one predictor", 1, 3, 0},
      {"no predictors", 0, 3, 0},
      {"no predictors, none", 0, 0, 0},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    RCartSettingsImp bySetter = NewSettings(row.predictors);
    RCartSettingsImp byInit = NewSettings(row.predictors);

    bySetter.SetMaxNumSurrogates(row.count);
    byInit.Init(nullptr, row.count);

    EXPECT_EQ(bySetter.GetMaxNumSurrogates(), row.expected);
    EXPECT_EQ(byInit.GetMaxNumSurrogates(), row.expected);
  }
}

TEST(CartSettings, ClampsSurrogatesAnewOnlyWhenToldTo) {
  RCartSettingsImp settings = NewSettings(10);
  settings.SetMaxNumSurrogates(8);
  settings.CopyFrom(PlainSettings(CoreOf(4)));  // leaves four predictors

  EXPECT_EQ(settings.GetMaxNumSurrogates(), 8);
  settings.ValidateNumSurrogates();
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 3);
  settings.CopyFrom(PlainSettings(CoreOf(10)));
  settings.ValidateNumSurrogates();
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 3);  // not raised again
}

TEST(CartSettings, CountsNoPredictorsOnceCleared) {
  RCartSettingsImp settings = NewSettings(10);
  settings.Clear();

  settings.SetMaxNumSurrogates(4);

  EXPECT_EQ(settings.GetMaxNumSurrogates(), 0);
  EXPECT_NE(settings.GetPruningSpec(), nullptr);
}

TEST(CartSettings, IsInitialisedWithACloneOfThePruning) {
  RCartSettingsImp settings = NewSettings(10);
  PruningSpecImp pruning;
  Fill(pruning, 1);

  settings.Init(&pruning, 3);
  Fill(pruning, 2);

  EXPECT_NE(settings.GetPruningSpec(), &pruning);
  EXPECT_EQ(settings.GetPruningSpec()->GetSERuleFactor(), 81.0);
  EXPECT_TRUE(settings.GetPruningSpec()->GetPickMinRiskTree());
  EXPECT_EQ(settings.GetMaxNumSurrogates(), 3);
}

TEST(CartSettings, IsInitialisedWithADefaultPruningForNull) {
  RCartSettingsImp settings = NewSettings(10);
  Fill(*settings.GetPruningSpec(), 1);

  settings.Init(nullptr, 3);

  ExpectDefaultPruning(settings.GetPruningSpec());
}

TEST(CartSettings, IsInitialisedWithItsOwnPruning) {
  RCartSettingsImp settings = NewSettings(10);
  Fill(*settings.GetPruningSpec(), 1);

  settings.Init(settings.GetPruningSpec(), 3);

  EXPECT_EQ(settings.GetPruningSpec()->GetSERuleFactor(), 81.0);
  EXPECT_TRUE(settings.GetPruningSpec()->GetPickMinRiskTree());
}

TEST(CartSettings, LeavesTheSharedPartAloneInInit) {
  std::unique_ptr<AlgSettings> const settings = FilledSettings(AlgRCart, 1);
  Fields const shared = GroupOf(Describe(*settings), "shared: ");

  dynamic_cast<CartSettings&>(*settings).Init(nullptr, 0);

  EXPECT_EQ(GroupOf(Describe(*settings), "shared: "), shared);
}

TEST(CartSettings, HandsOutItsPruningForReadingAndWriting) {
  RCartSettingsImp settings = NewSettings(3);
  RCartSettingsImp const& readable = settings;

  settings.GetPruningSpec()->SetSERuleFactor(0.5);

  EXPECT_EQ(readable.GetPruningSpec()->GetSERuleFactor(), 0.5);
  EXPECT_EQ(readable.GetPruningSpec(), settings.GetPruningSpec());
}

TEST(CartSettings, ClonesThePruningOnceAndDeletesEachCloneOnce) {
  PartLog log;
  {
    Instrumented<PruningSpecImp, PruningSpec> const pruning(&log, "pruning");
    RCartSettingsImp settings = NewSettings(3);

    settings.Init(&pruning, 1);
    EXPECT_EQ(log.clones, (std::vector<std::string>{"pruning"}));
    EXPECT_EQ(log.alive, 2);
    settings.Init(settings.GetPruningSpec(), 1);
    EXPECT_EQ(log.alive, 2);
    {
      std::unique_ptr<AlgSettings> const clone(settings.Clone());
      EXPECT_EQ(log.alive, 3);
      settings.CopyFrom(*clone);
      settings.CopyFrom(settings);
      EXPECT_EQ(log.alive, 3);
    }
    EXPECT_EQ(log.alive, 2);
    settings.Init(nullptr, 1);
    EXPECT_EQ(log.alive, 1);
    settings.Init(&pruning, 1);
  }
  EXPECT_EQ(log.alive, 0);
}

TEST(CartSettings, ClampsCopiedSurrogatesToTheCopiedPredictors) {
  RCartSettingsImp source = NewSettings(10);
  source.SetMaxNumSurrogates(8);
  RCartSettingsImp target = NewSettings(2);

  target.CopyFrom(source);

  EXPECT_EQ(target.GetMaxNumSurrogates(), 8);
}

TEST(CartSettings, ClampsTheSurrogatesThatItsSourceHasTooMany) {
  RCartSettingsImp source = NewSettings(10);
  source.SetMaxNumSurrogates(8);
  source.CopyFrom(PlainSettings(CoreOf(4)));
  RCartSettingsImp target = NewSettings(2);

  target.CopyFrom(source);
  RCartSettingsImp const copy(source);

  EXPECT_EQ(source.GetMaxNumSurrogates(), 8);
  EXPECT_EQ(target.GetMaxNumSurrogates(), 3);
  EXPECT_EQ(copy.GetMaxNumSurrogates(), 3);
}

TEST(CartSettings, CopiesWhatTheGettersOfItsSourceAnswer) {
  ForeignCCartSettings const source(CoreOf(4));
  RCartSettingsImp target = NewSettings(10);

  target.CopyFrom(source);

  EXPECT_NE(dynamic_cast<ForeignPruningSpec*>(target.GetPruningSpec()), nullptr);
  EXPECT_NE(target.GetPruningSpec(), source.GetPruningSpec());
  EXPECT_EQ(target.GetMaxNumSurrogates(), 1);
}

TEST(CartSettings, ConstructsACopyFromWhatTheGettersOfItsSourceAnswer) {
  ForeignCCartSettings const source(CoreOf(4));

  std::unique_ptr<AlgSettings> const clone(source.Clone());
  auto const& copied =
      static_cast<CartSettings const&>(dynamic_cast<ForeignCCartSettings const&>(*clone));

  // The field of the base, beneath what the class answers itself.
  EXPECT_NE(copied.CartSettings::GetPruningSpec(), nullptr);
  EXPECT_EQ(copied.CartSettings::GetPruningSpec()->GetSERuleFactor(), 2.5);
  EXPECT_EQ(copied.CartSettings::GetMaxNumSurrogates(), 1);
}

TEST(CartSettings, CopiesTheSharedPartAloneFromAnythingElse) {
  Claiming<RCartSettingsImp> disguised(AlgQuest, CoreOf(9));  // a CART that denies it
  FillCart(disguised, 2);
  Claiming<PlainSettings> const impostor(AlgCCart, CoreOf(9));  // no CART, though it says so
  Claiming<RChaidSettingsImp> const chaid(AlgRCart, CoreOf(9));
  Claiming<QuestSettingsImp> quest(AlgRCart, CoreOf(9));
  FillQuest(quest, 2);
  for (AlgSettings const* const source :
       {static_cast<AlgSettings const*>(&disguised), static_cast<AlgSettings const*>(&impostor),
        static_cast<AlgSettings const*>(&chaid), static_cast<AlgSettings const*>(&quest)}) {
    RCartSettingsImp target = NewSettings(10);
    FillCart(target, 1);
    Fields const before = Describe(target);
    PruningSpec const* const pruning = target.GetPruningSpec();

    target.CopyFrom(*source);

    EXPECT_EQ(GroupOf(Describe(target), "cart: "), GroupOf(before, "cart: "));
    EXPECT_EQ(target.GetPruningSpec(), pruning);
    EXPECT_EQ(target.GetCoreSettings()->GetNumPredictors(), 9);
    EXPECT_EQ(target.GetStopRule()->GetMaxTreeDepth(), source->GetStopRule()->GetMaxTreeDepth());
  }
}

TEST(CartSettings, IsAssignedAsItIsCopied) {
  std::unique_ptr<AlgSettings> const source = FilledSettings(AlgRCart, 2);
  CCartSettingsImp target(CoreOf(3));
  target.SetSplitCriteria(static_cast<CartSplitCriteria>(9));
  CartSettings& base = target;

  EXPECT_EQ(&(base = dynamic_cast<CartSettings const&>(*source)), &base);

  EXPECT_EQ(GroupOf(Describe(target), "cart: "), GroupOf(Describe(*source), "cart: "));
  EXPECT_EQ(target.GetSplitCriteria(), 9);
}

TEST(CartSettings, StaysAsItWasWhenInitRunsOutOfMemory) {
  PruningSpecImp const pruning;
  RCartSettingsImp settings = NewSettings(10);
  Fill(*settings.GetPruningSpec(), 1);
  Fields const expected = Describe(settings);
  {
    FailingAllocator const failing(1, true);

    EXPECT_THROW(settings.Init(&pruning, 1), std::bad_alloc);
    EXPECT_THROW(settings.Init(nullptr, 1), std::bad_alloc);
  }

  EXPECT_EQ(Describe(settings), expected);
}

#if TREE_HAS_SLOTS
TEST(CartSettings, KeepsTheOrderOfItsVirtualOperations) {
  using Cart = CartSettings;
  constexpr std::ptrdiff_t kFirst = kFirstSlot + 10;  // after those of the base
  EXPECT_EQ(VirtualSlot(static_cast<void (Cart::*)(AlgSettings const&)>(&Cart::CopyFrom)),
            kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(static_cast<PruningSpec* (Cart::*)()>(&Cart::GetPruningSpec)), kFirst + 0);
  EXPECT_EQ(VirtualSlot(static_cast<PruningSpec const* (Cart::*)() const>(&Cart::GetPruningSpec)),
            kFirst + 1);
  EXPECT_EQ(VirtualSlot(static_cast<int (Cart::*)() const>(&Cart::GetMaxNumSurrogates)),
            kFirst + 2);
  EXPECT_EQ(VirtualSlot(static_cast<void (Cart::*)(int)>(&Cart::SetMaxNumSurrogates)), kFirst + 3);
  EXPECT_EQ(VirtualSlot(kInit), -1);
  EXPECT_EQ(VirtualSlot(&Cart::ValidateNumSurrogates), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
