#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_parts.h"
#include "testing/settings_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/settings.h"
#include "tree/support.h"

namespace tree::testing {
namespace {

static_assert(std::is_abstract_v<CoreSettings>);
static_assert(std::has_virtual_destructor_v<CoreSettings>);
static_assert(sizeof(CoreSettings) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<CoreSettings, CoreSettingsImp>);
static_assert(std::is_copy_constructible_v<CoreSettingsImp>);
static_assert(std::is_copy_assignable_v<CoreSettingsImp>);
static_assert(std::is_assignable_v<CoreSettingsImp&, CoreSettings const&>);
static_assert(
    std::is_convertible_v<decltype(std::declval<CoreSettingsImp const&>().Clone()), CoreSettings*>);
static_assert(std::is_same_v<decltype(std::declval<CoreSettingsImp const&>().GetPredictor(0)),
                             VariableSettings const*>);
static_assert(
    std::is_same_v<decltype(std::declval<CoreSettingsImp&>().GetPredictor(0)), VariableSettings*>);

Fields FieldsOf(CoreSettings const& core) {
  Fields fields;
  Describe("core", core, fields);
  return fields;
}

/// Nine predictors, and no field with its default.
CoreSettingsImp Filled() { return FilledCore(1, global::MeasurementNominal); }

/// The addresses of the target and all predictors.
std::vector<VariableSettings const*> VariablesOf(CoreSettings const& core) {
  std::vector<VariableSettings const*> variables{core.GetTarget()};
  for (int index = 0; index < core.GetNumPredictors(); ++index) {
    variables.push_back(core.GetPredictor(index));
  }
  return variables;
}

void ExpectNoneShared(CoreSettings const& a, CoreSettings const& b) {
  for (VariableSettings const* const ofA : VariablesOf(a)) {
    for (VariableSettings const* const ofB : VariablesOf(b)) EXPECT_NE(ofA, ofB);
  }
}

TEST(CoreSettingsImp, BeginsWithADefaultTargetAndNothingElse) {
  CoreSettingsImp const core;

  EXPECT_EQ(core.GetNumPredictors(), 0);
  EXPECT_FALSE(core.HasFreqWeight());
  EXPECT_FALSE(core.HasCaseWeight());
  ASSERT_NE(core.GetTarget(), nullptr);
  EXPECT_NE(dynamic_cast<VariableSettingsImp const*>(core.GetTarget()), nullptr);
  EXPECT_EQ(core.GetTarget()->GetMeasurementLevel(), global::MeasurementContinuous);
  EXPECT_EQ(core.GetTarget()->GetMissingValue(), systemMissingValue());
  EXPECT_EQ(core.GetTarget()->GetNumValues(), 0);
  EXPECT_TRUE(core.GetTarget()->GetValueMergeFlag());
}

TEST(CoreSettingsImp, AppendsDefaultPredictorsInOrder) {
  CoreSettingsImp core;

  VariableSettings* const first = core.AddPredictor();
  VariableSettings* const second = core.AddPredictor();
  VariableSettings* const third = core.AddPredictor();

  ASSERT_EQ(core.GetNumPredictors(), 3);
  EXPECT_EQ(core.GetPredictor(0), first);
  EXPECT_EQ(core.GetPredictor(1), second);
  EXPECT_EQ(core.GetPredictor(2), third);
  CoreSettingsImp const& readable = core;
  EXPECT_EQ(readable.GetPredictor(0), first);
  EXPECT_EQ(readable.GetPredictor(1), second);
  EXPECT_EQ(readable.GetPredictor(2), third);
  EXPECT_NE(dynamic_cast<VariableSettingsImp*>(third), nullptr);
  EXPECT_EQ(third->GetMeasurementLevel(), global::MeasurementContinuous);
  EXPECT_EQ(third->GetMissingValue(), systemMissingValue());
  EXPECT_EQ(third->GetNumValues(), 0);
  EXPECT_TRUE(third->GetValueMergeFlag());
}

TEST(CoreSettingsImp, KeepsPredictorsInPlaceWhenMoreAreAdded) {
  CoreSettingsImp core;
  VariableSettings* const first = core.AddPredictor();
  first->SetNumValues(7);

  for (int count = 0; count < 1000; ++count) core.AddPredictor();

  EXPECT_EQ(core.GetPredictor(0), first);
  EXPECT_EQ(core.GetPredictor(0)->GetNumValues(), 7);
}

TEST(CoreSettingsImp, LetsVariablesBeFilledInThroughItsPointers) {
  CoreSettingsImp core;

  core.AddPredictor()->SetNumValues(3);
  core.GetTarget()->SetNumValues(4);
  core.GetPredictor(0)->SetMissingValue(-9.0);

  CoreSettingsImp const& readable = core;
  EXPECT_EQ(readable.GetPredictor(0)->GetNumValues(), 3);
  EXPECT_EQ(readable.GetPredictor(0)->GetMissingValue(), -9.0);
  EXPECT_EQ(readable.GetTarget()->GetNumValues(), 4);
  EXPECT_EQ(readable.GetTarget(), core.GetTarget());
}

TEST(CoreSettingsImp, StoresEachWeightFlagByItself) {
  CoreSettingsImp core;

  core.SetHasFreqWeight(true);
  EXPECT_TRUE(core.HasFreqWeight());
  EXPECT_FALSE(core.HasCaseWeight());
  core.SetHasFreqWeight(false);
  core.SetHasCaseWeight(true);
  EXPECT_FALSE(core.HasFreqWeight());
  EXPECT_TRUE(core.HasCaseWeight());
  core.SetHasCaseWeight(false);
  EXPECT_FALSE(core.HasCaseWeight());
}

// Every way of copying from core settings, by name.
struct CopyOfCore {
  char const* name;
  std::unique_ptr<CoreSettings> (*make)(CoreSettingsImp const& source);
};
CopyOfCore const kCopies[] = {
    {"copy constructor",
     [](CoreSettingsImp const& source) {
       return std::unique_ptr<CoreSettings>(std::make_unique<CoreSettingsImp>(source));
     }},
    {"clone",
     [](CoreSettingsImp const& source) { return std::unique_ptr<CoreSettings>(source.Clone()); }},
    {"assignment over nothing",
     [](CoreSettingsImp const& source) {
       auto copy = std::make_unique<CoreSettingsImp>();
       EXPECT_EQ(&(*copy = source), copy.get());
       return std::unique_ptr<CoreSettings>(std::move(copy));
     }},
    {"assignment over other predictors",
     [](CoreSettingsImp const& source) {
       auto copy = std::make_unique<CoreSettingsImp>(FilledCore(2, global::MeasurementContinuous));
       EXPECT_EQ(&(*copy = source), copy.get());
       return std::unique_ptr<CoreSettings>(std::move(copy));
     }},
    {"assignment through the interface",
     [](CoreSettingsImp const& source) {
       auto copy = std::make_unique<CoreSettingsImp>(FilledCore(2, global::MeasurementContinuous));
       EXPECT_EQ(&(*copy = static_cast<CoreSettings const&>(source)), copy.get());
       return std::unique_ptr<CoreSettings>(std::move(copy));
     }},
};

TEST(CoreSettingsImp, CopiesEverythingInOrder) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    CoreSettingsImp const source = Filled();
    Fields const expected = FieldsOf(source);

    std::unique_ptr<CoreSettings> const copy = way.make(source);

    EXPECT_NE(dynamic_cast<CoreSettingsImp*>(copy.get()), nullptr);
    EXPECT_EQ(copy->GetNumPredictors(), 9);
    EXPECT_EQ(FieldsOf(*copy), expected);
    EXPECT_EQ(FieldsOf(source), expected);
  }
}

TEST(CoreSettingsImp, SharesNoVariableWithItsCopies) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    CoreSettingsImp const source = Filled();
    Fields const expected = FieldsOf(source);
    std::unique_ptr<CoreSettings> const copy = way.make(source);

    ExpectNoneShared(source, *copy);
    copy->GetTarget()->SetNumValues(777);
    for (int index = 0; index < copy->GetNumPredictors(); ++index) {
      copy->GetPredictor(index)->SetNumValues(777);
    }
    copy->AddPredictor();
    copy->SetHasFreqWeight(!copy->HasFreqWeight());
    copy->SetHasCaseWeight(!copy->HasCaseWeight());

    EXPECT_EQ(FieldsOf(source), expected);
  }
}

TEST(CoreSettingsImp, CopiesNothingAsNothing) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    CoreSettingsImp const source;

    std::unique_ptr<CoreSettings> const copy = way.make(source);

    EXPECT_EQ(FieldsOf(*copy), FieldsOf(source));
  }
}

TEST(CoreSettingsImp, AddsPredictorsToACopy) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    std::unique_ptr<CoreSettings> const copy = way.make(Filled());

    VariableSettings* const added = copy->AddPredictor();

    EXPECT_EQ(copy->GetNumPredictors(), 10);
    EXPECT_EQ(copy->GetPredictor(9), added);
  }
}

TEST(CoreSettingsImp, IsLeftAloneBySelfAssignment) {
  CoreSettingsImp core = Filled();
  Fields const expected = FieldsOf(core);
  std::vector<VariableSettings const*> const variables = VariablesOf(core);
  CoreSettingsImp const& same = core;

  EXPECT_EQ(&(core = same), &core);
  EXPECT_EQ(&(core = static_cast<CoreSettings const&>(same)), &core);

  EXPECT_EQ(FieldsOf(core), expected);
  EXPECT_EQ(VariablesOf(core), variables);
}

TEST(CoreSettingsImp, TakesOverSettingsOfAnyClass) {
  ForeignCoreSettings source(2);
  source.GetTarget()->SetNumValues(5);
  source.GetPredictor(0)->SetNumValues(6);
  source.GetPredictor(1)->SetNumValues(7);
  source.SetHasFreqWeight(false);
  source.SetHasCaseWeight(true);
  CoreSettingsImp core = Filled();

  core = source;

  EXPECT_EQ(FieldsOf(core), FieldsOf(source));
  ExpectNoneShared(core, source);
}

/// Variables that are no `VariableSettingsImp` of the plain kind: they count their ends.
class ForeignVariable : public Watched<VariableSettingsImp> {
 public:
  explicit ForeignVariable(int* deaths) : Watched(deaths), deaths_(deaths) {}
  VariableSettings* Clone() const override {
    auto clone = std::make_unique<ForeignVariable>(deaths_);
    clone->SetNumValues(GetNumValues());
    return clone.release();
  }

 private:
  int* deaths_;
};

/// Core settings with variables of another class.
class WatchedCore : public ForeignCoreSettings {
 public:
  using ForeignCoreSettings::GetPredictor;
  using ForeignCoreSettings::GetTarget;

  explicit WatchedCore(int* deaths)
      : ForeignCoreSettings(0), target_(deaths), first_(deaths), second_(deaths) {
    target_.SetNumValues(1);
    first_.SetNumValues(2);
    second_.SetNumValues(3);
  }
  int GetNumPredictors() const override { return 2; }
  VariableSettings const* GetPredictor(int index) const override {
    return index == 0 ? &first_ : &second_;
  }
  VariableSettings const* GetTarget() const override { return &target_; }

 private:
  ForeignVariable target_;
  ForeignVariable first_;
  ForeignVariable second_;
};

TEST(CoreSettingsImp, ClonesVariablesOfAnyClassAndDeletesEachOnce) {
  int deaths = 0;
  WatchedCore const source(&deaths);
  {
    CoreSettingsImp core;

    core = source;

    EXPECT_NE(dynamic_cast<ForeignVariable*>(core.GetTarget()), nullptr);
    EXPECT_EQ(core.GetTarget()->GetNumValues(), 1);
    EXPECT_NE(dynamic_cast<ForeignVariable*>(core.GetPredictor(1)), nullptr);
    EXPECT_EQ(core.GetPredictor(0)->GetNumValues(), 2);
    EXPECT_EQ(core.GetPredictor(1)->GetNumValues(), 3);
    EXPECT_EQ(deaths, 0);
    {
      CoreSettingsImp const copy(core);
      EXPECT_NE(dynamic_cast<ForeignVariable const*>(copy.GetPredictor(1)), nullptr);
      EXPECT_EQ(copy.GetPredictor(1)->GetNumValues(), 3);
    }
    EXPECT_EQ(deaths, 3);
  }
  EXPECT_EQ(deaths, 6);
}

TEST(CoreSettingsImp, DeletesWhatAnAssignmentReplaces) {
  int deaths = 0;
  WatchedCore const source(&deaths);
  CoreSettingsImp core;
  core = source;

  core = CoreSettingsImp();

  EXPECT_EQ(deaths, 3);
  EXPECT_EQ(core.GetNumPredictors(), 0);
}

/// A variable that writes its number of values down when it is deleted.
class LastWords : public VariableSettingsImp {
 public:
  explicit LastWords(std::vector<int>* words) : words_(words) {}
  ~LastWords() override { words_->push_back(GetNumValues()); }
  VariableSettings* Clone() const override {
    auto clone = std::make_unique<LastWords>(words_);
    clone->SetNumValues(GetNumValues() + 10);
    return clone.release();
  }

 private:
  std::vector<int>* words_;
};

/// Target 1 and predictors 2 and 3, whose clones are 11, 12 and 13.
class LastWordsCore : public ForeignCoreSettings {
 public:
  using ForeignCoreSettings::GetPredictor;
  using ForeignCoreSettings::GetTarget;

  explicit LastWordsCore(std::vector<int>* words) : target_(words), first_(words), second_(words) {
    target_.SetNumValues(1);
    first_.SetNumValues(2);
    second_.SetNumValues(3);
  }
  int GetNumPredictors() const override { return 2; }
  VariableSettings const* GetPredictor(int index) const override {
    return index == 0 ? &first_ : &second_;
  }
  VariableSettings const* GetTarget() const override { return &target_; }

 private:
  LastWords target_;
  LastWords first_;
  LastWords second_;
};

TEST(CoreSettingsImp, DeletesTheTargetAndThenThePredictorsInOrder) {
  std::vector<int> words;
  LastWordsCore const source(&words);
  {
    CoreSettingsImp core;
    core = source;
  }

  EXPECT_EQ(words, (std::vector<int>{11, 12, 13}));
}

TEST(CoreSettingsImp, LeavesNothingBehind) {
  long const live = CountLiveAllocations();
  {
    CoreSettingsImp core = Filled();
    core = FilledCore(2, global::MeasurementContinuous);
    std::unique_ptr<CoreSettings> const clone(core.Clone());
  }

  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(CoreSettingsImp, LosesNothingWhenMemoryRunsOut) {
  CoreSettingsImp const source = Filled();
  struct Operation {
    char const* name;
    void (*run)(CoreSettingsImp const& source);
  };
  Operation const table[] = {
      {"default", [](CoreSettingsImp const&) { CoreSettingsImp const core; }},
      {"copy", [](CoreSettingsImp const& core) { CoreSettingsImp const copy(core); }},
      {"clone", [](CoreSettingsImp const& core) { delete core.Clone(); }},
  };

  for (auto const& operation : table) {
    SCOPED_TRACE(operation.name);
    long const live = CountLiveAllocations();

    EXPECT_GT(WithEveryAllocationFailing([&] { operation.run(source); }), 1);
    EXPECT_EQ(CountLiveAllocations(), live);
  }
}

TEST(CoreSettingsImp, StaysAsItWasWhenAnAssignmentRunsOutOfMemory) {
  CoreSettingsImp const source = Filled();
  CoreSettingsImp const before = FilledCore(2, global::MeasurementContinuous);
  Fields const expected = FieldsOf(before);
  long const live = CountLiveAllocations();
  {
    CoreSettingsImp target(before);

    long const failures = WithEveryAllocationFailing([&] {
      try {
        target = source;
      } catch (std::bad_alloc const&) {
        EXPECT_EQ(FieldsOf(target), expected);
        throw;
      }
    });

    EXPECT_GT(failures, 10);
    EXPECT_EQ(FieldsOf(target), FieldsOf(source));
  }
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(CoreSettingsImp, StaysAsItWasWhenAPredictorCannotBeAdded) {
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([] {
    CoreSettingsImp core;
    int count = 0;
    try {
      for (; count < 5; ++count) core.AddPredictor();
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(core.GetNumPredictors(), count);
    }
  });

  EXPECT_GT(failures, 5);
  EXPECT_EQ(CountLiveAllocations(), live);
}

#ifndef NDEBUG
TEST(CoreSettingsImpDeathTest, StopsAtPredictorsThatItDoesNotHave) {
  CoreSettingsImp core = CoreOf(2);
  CoreSettingsImp const& readable = core;

  EXPECT_DEATH(core.GetPredictor(2), "CoreSettingsImp::GetPredictor: index 2 is out of range");
  EXPECT_DEATH(core.GetPredictor(-1), "CoreSettingsImp::GetPredictor: index -1 is out of range");
  EXPECT_DEATH(static_cast<void>(readable.GetPredictor(2)),
               "CoreSettingsImp::GetPredictor: index 2 is out of range");
  EXPECT_DEATH(static_cast<void>(readable.GetPredictor(-1)),
               "CoreSettingsImp::GetPredictor: index -1 is out of range");
}
#endif

#if TREE_HAS_SLOTS
TEST(CoreSettingsImp, KeepsTheOrderOfItsVirtualOperations) {
  using Core = CoreSettings;
  using Variable = VariableSettings;
  EXPECT_EQ(VirtualSlot(static_cast<Variable* (Core::*)()>(&Core::AddPredictor)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<void (Core::*)(bool)>(&Core::SetHasFreqWeight)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<void (Core::*)(bool)>(&Core::SetHasCaseWeight)),
            kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<Core* (Core::*)() const>(&Core::Clone)), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<int (Core::*)() const>(&Core::GetNumPredictors)),
            kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<Variable const* (Core::*)(int) const>(&Core::GetPredictor)),
            kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(static_cast<Variable* (Core::*)(int)>(&Core::GetPredictor)),
            kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(static_cast<Variable const* (Core::*)() const>(&Core::GetTarget)),
            kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(static_cast<Variable* (Core::*)()>(&Core::GetTarget)), kFirstSlot + 8);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Core::*)() const>(&Core::HasFreqWeight)), kFirstSlot + 9);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Core::*)() const>(&Core::HasCaseWeight)),
            kFirstSlot + 10);
}
#endif

}  // namespace
}  // namespace tree::testing
