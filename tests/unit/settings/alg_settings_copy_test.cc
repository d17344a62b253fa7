#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/settings_builder.h"
#include "tree/settings.h"

// Copying of settings in all 25 pairs of kinds: which fields a copy takes over, and which it keeps.

namespace tree::testing {
namespace {

struct Pair {
  AlgorithmType target;
  AlgorithmType source;
  std::vector<std::string> copied;  // groups of fields; all others are kept
  bool sameKindOfTarget;            // both variables continuous, or neither
};

Pair const kPairs[] = {
    {AlgRCart, AlgRCart, {"shared: ", "cart: "}, true},
    {AlgRCart, AlgCCart, {"shared: ", "cart: "}, false},
    {AlgRCart, AlgRChaid, {"shared: "}, true},
    {AlgRCart, AlgCChaid, {"shared: "}, false},
    {AlgRCart, AlgQuest, {"shared: "}, false},

    {AlgCCart, AlgRCart, {"shared: ", "cart: "}, false},
    {AlgCCart, AlgCCart, {"shared: ", "cart: ", "categorical cart: "}, true},
    {AlgCCart, AlgRChaid, {"shared: "}, false},
    {AlgCCart, AlgCChaid, {"shared: "}, true},
    {AlgCCart, AlgQuest, {"shared: "}, true},

    {AlgRChaid, AlgRCart, {"shared: "}, true},
    {AlgRChaid, AlgCCart, {"shared: "}, false},
    {AlgRChaid, AlgRChaid, {"shared: ", "chaid: "}, true},
    {AlgRChaid, AlgCChaid, {"shared: ", "chaid: "}, false},
    {AlgRChaid, AlgQuest, {"shared: "}, false},

    {AlgCChaid, AlgRCart, {"shared: "}, false},
    {AlgCChaid, AlgCCart, {"shared: "}, true},
    {AlgCChaid, AlgRChaid, {"shared: ", "chaid: "}, false},
    {AlgCChaid, AlgCChaid, {"shared: ", "chaid: ", "categorical chaid: "}, true},
    {AlgCChaid, AlgQuest, {"shared: "}, true},

    {AlgQuest, AlgRCart, {"shared: "}, false},
    {AlgQuest, AlgCCart, {"shared: "}, true},
    {AlgQuest, AlgRChaid, {"shared: "}, false},
    {AlgQuest, AlgCChaid, {"shared: "}, true},
    {AlgQuest, AlgQuest, {"shared: ", "quest: "}, true},
};

/// What `target` has to be after a copy from `source`.
Fields ExpectedCopy(Pair const& pair, Fields const& target, Fields const& source) {
  Fields expected = target;
  for (std::string const& group : pair.copied) {
    for (auto const& [name, value] : GroupOf(expected, group)) expected.erase(name);
    for (auto const& [name, value] : GroupOf(source, group)) expected[name] = value;
  }
  std::string const level = "shared: core target level";
  if (!pair.sameKindOfTarget) expected[level] = target.at(level);
  return expected;
}

TEST(AlgSettings, AreFilledInTwoVariantsThatDifferInEveryField) {
  for (AlgorithmType const type : kAllAlgorithms) {
    SCOPED_TRACE(type);
    Fields const first = Describe(*FilledSettings(type, 1));
    Fields const second = Describe(*FilledSettings(type, 2));
    Fields const defaults = Describe(*SettingsOf(type, CoreOf(9)));
    for (auto const& [name, value] : first) {
      if (name == "shared: core target level" || second.count(name) == 0) continue;
      // A cell that no variant sets is 1 (or 0) in both, as is the type of custom parts.
      if (name.find("cost") != std::string::npos || name.find("type") != std::string::npos ||
          name.find("scores") != std::string::npos) {
        continue;
      }
      EXPECT_NE(value, second.at(name)) << name;
    }
    EXPECT_NE(first, second);
    EXPECT_NE(first, defaults);
    EXPECT_NE(GroupOf(first, "shared: "), GroupOf(second, "shared: "));
  }
}

TEST(AlgSettings, CopyExactlyWhatBothKindsShare) {
  for (Pair const& pair : kPairs) {
    SCOPED_TRACE(::testing::Message() << "into " << pair.target << " from " << pair.source);
    std::unique_ptr<AlgSettings> const target = FilledSettings(pair.target, 1);
    std::unique_ptr<AlgSettings> const source = FilledSettings(pair.source, 2);
    Fields const sourceFields = Describe(*source);
    Fields const expected = ExpectedCopy(pair, Describe(*target), sourceFields);

    target->CopyFrom(*source);

    EXPECT_EQ(Describe(*target), expected);
    EXPECT_EQ(target->GetType(), pair.target);
    EXPECT_EQ(Describe(*source), sourceFields);
    EXPECT_TRUE(AreIndependent(*target, *source));
  }
}

TEST(AlgSettings, AreAssignedThroughTheBaseAsTheyAreCopied) {
  for (Pair const& pair : kPairs) {
    SCOPED_TRACE(::testing::Message() << "into " << pair.target << " from " << pair.source);
    std::unique_ptr<AlgSettings> const target = FilledSettings(pair.target, 1);
    std::unique_ptr<AlgSettings> const source = FilledSettings(pair.source, 2);
    Fields const expected = ExpectedCopy(pair, Describe(*target), Describe(*source));

    AlgSettings& result = *target = *source;

    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(Describe(*target), expected);
    EXPECT_TRUE(AreIndependent(*target, *source));
  }
}

TEST(AlgSettings, KeepTheKindOfTargetInEveryDirection) {
  for (Pair const& pair : kPairs) {
    SCOPED_TRACE(::testing::Message() << "into " << pair.target << " from " << pair.source);
    std::unique_ptr<AlgSettings> const target = FilledSettings(pair.target, 1);

    target->CopyFrom(*FilledSettings(pair.source, 2));

    EXPECT_EQ(
        target->GetCoreSettings()->GetTarget()->GetMeasurementLevel(),
        IsRegression(pair.target) ? global::MeasurementContinuous : global::MeasurementNominal);
  }
}

TEST(AlgSettings, SurviveBeingCopiedFromThemselves) {
  for (AlgorithmType const type : kAllAlgorithms) {
    SCOPED_TRACE(type);
    std::unique_ptr<AlgSettings> const settings = FilledSettings(type, 1);
    Fields const expected = Describe(*settings);
    AlgSettings const& same = *settings;

    settings->CopyFrom(same);
    EXPECT_EQ(Describe(*settings), expected);
    *settings = same;
    EXPECT_EQ(Describe(*settings), expected);
  }
}

TEST(AlgSettings, CloneEverythingOfTheirKind) {
  for (AlgorithmType const type : kAllAlgorithms) {
    SCOPED_TRACE(type);
    for (int const variant : {1, 2}) {
      std::unique_ptr<AlgSettings> const source = FilledSettings(type, variant);
      Fields const expected = Describe(*source);

      std::unique_ptr<AlgSettings> const clone(source->Clone());

      EXPECT_EQ(clone->GetType(), type);
      EXPECT_EQ(Describe(*clone), expected);
      EXPECT_EQ(Describe(*source), expected);
      EXPECT_TRUE(AreIndependent(*clone, *source));
      EXPECT_EQ(OwnedParts(*clone).size(), OwnedParts(*source).size());
    }
  }
}

TEST(AlgSettings, ShareNothingWithTheirClones) {
  for (AlgorithmType const type : kAllAlgorithms) {
    SCOPED_TRACE(type);
    std::unique_ptr<AlgSettings> const source = FilledSettings(type, 1);
    Fields const expected = Describe(*source);
    std::unique_ptr<AlgSettings> const clone(source->Clone());

    *clone = *FilledSettings(type, 2);
    Fill(*clone->GetStopRule(), 2);
    Fill(*clone->GetValidationSpec(), 2);

    EXPECT_EQ(Describe(*source), expected);
  }
}

TEST(AlgSettings, ReportTheirKind) {
  for (AlgorithmType const type : kAllAlgorithms) {
    EXPECT_EQ(SettingsOf(type, CoreOf(1))->GetType(), type);
  }
}

TEST(AlgSettings, HaveTheirSharedPartInitialisedWhateverTheirKind) {
  CoreSettingsImp const core = CoreOf(2);
  RCartSettingsImp rCart(core);
  CCartSettingsImp cCart(core);
  RChaidSettingsImp rChaid(core);
  CChaidSettingsImp cChaid(core);
  QuestSettingsImp quest(core);

  rCart.Init(2, 40, &core, nullptr, nullptr);
  cCart.Init(2, 41, &core, nullptr, nullptr);
  rChaid.Init(2, 42, &core, nullptr, nullptr);
  cChaid.Init(2, 43, &core, nullptr, nullptr);
  quest.Init(2, 44, &core, nullptr, nullptr);

  int categories = 40;
  for (AlgSettings const* const settings :
       {static_cast<AlgSettings const*>(&rCart), static_cast<AlgSettings const*>(&cCart),
        static_cast<AlgSettings const*>(&rChaid), static_cast<AlgSettings const*>(&cChaid),
        static_cast<AlgSettings const*>(&quest)}) {
    EXPECT_EQ(settings->GetMaxNominalPredCategories(), categories++);
    EXPECT_EQ(settings->GetStopRule()->GetMaxTreeDepth(), 0);  // a default one
  }
}

TEST(AlgSettings, LoseNothingWhenMemoryRunsOut) {
  for (AlgorithmType const type : kAllAlgorithms) {
    SCOPED_TRACE(type);
    CoreSettingsImp const core = CoreOf(3);
    std::unique_ptr<AlgSettings> const source = FilledSettings(type, 1);
    long const live = CountLiveAllocations();

    EXPECT_GT(WithEveryAllocationFailing([&] { SettingsOf(type, core); }), 10);
    EXPECT_EQ(CountLiveAllocations(), live);

    EXPECT_GT(WithEveryAllocationFailing([&] { delete source->Clone(); }), 15);
    EXPECT_EQ(CountLiveAllocations(), live);
  }
}

// A copy into `target` whose `nth` allocation fails. Returns whether there was one.
bool CopyWithFailure(AlgSettings& target, AlgSettings const& source, long nth) {
  FailingAllocator const failing(nth);
  try {
    target.CopyFrom(source);
  } catch (std::bad_alloc const&) {
    return true;
  }
  return false;
}

TEST(AlgSettings, StayWholeWhenACopyRunsOutOfMemory) {
  for (Pair const& pair : kPairs) {
    SCOPED_TRACE(::testing::Message() << "into " << pair.target << " from " << pair.source);
    std::unique_ptr<AlgSettings> const source = FilledSettings(pair.source, 2);
    std::unique_ptr<AlgSettings> const before = FilledSettings(pair.target, 1);
    Fields const complete = ExpectedCopy(pair, Describe(*before), Describe(*source));
    long const live = CountLiveAllocations();
    bool failed = true;
    for (long nth = 1; failed; ++nth) {
      std::unique_ptr<AlgSettings> const target(before->Clone());
      failed = CopyWithFailure(*target, *source, nth);

      // Every part is there, of the old settings or of the new ones, and can be used.
      EXPECT_GE(OwnedParts(*target).size(), OwnedParts(*before).size()) << "allocation " << nth;
      target->CopyFrom(*source);
      EXPECT_EQ(Describe(*target), complete) << "allocation " << nth;
    }
    EXPECT_EQ(CountLiveAllocations(), live);
  }
}

}  // namespace
}  // namespace tree::testing
