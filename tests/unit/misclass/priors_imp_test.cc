#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/misclassification.h"

namespace tree::testing {
namespace {

using Vector = PriorsImp::PriorVector;
using Values = std::vector<double>;

static_assert(PriorTypeDefault == 0 && PriorTypeAlternate == 1 && PriorTypeCustom == 2);
static_assert(std::is_same_v<int, std::underlying_type_t<PriorType>>);
static_assert(std::is_convertible_v<PriorType, int>);  // unscoped
static_assert(PriorsImp::PriorVectorSpecified == 0 && PriorsImp::PriorVectorAltered == 1);
static_assert(PriorsImp::PriorVectorAuxiliary == 2 && PriorsImp::PriorVectorAuxiliaryFixed == 3);
static_assert(std::is_same_v<int, std::underlying_type_t<Vector>>);

static_assert(std::is_abstract_v<Priors>);
static_assert(std::has_virtual_destructor_v<Priors>);
static_assert(sizeof(Priors) == sizeof(void*));  // no fields
static_assert(std::is_base_of_v<Priors, PriorsImp>);
static_assert(std::is_copy_constructible_v<PriorsImp> && std::is_copy_assignable_v<PriorsImp>);
static_assert(std::is_convertible_v<decltype(std::declval<PriorsImp const&>().Clone()), Priors*>);

static_assert(std::is_same_v<decltype(&PriorsImp::Init), void (PriorsImp::*)(PriorsImp const&)>);
static_assert(
    std::is_same_v<decltype(&PriorsImp::FindValidId), Vector (PriorsImp::*)(Vector) const>);
static_assert(std::is_same_v<decltype(std::declval<PriorsImp&>().GetVector(Vector(), false)),
                             TArray<double>*>);
static_assert(std::is_same_v<decltype(std::declval<PriorsImp const&>().GetVector(Vector(), false)),
                             TArray<double> const*>);
static_assert(
    std::is_same_v<decltype(&PriorsImp::GetValues), double const* (PriorsImp::*)(Vector) const>);
static_assert(
    std::is_same_v<decltype(&PriorsImp::SetVector), void (PriorsImp::*)(Vector, TArray<double>*)>);
static_assert(std::is_same_v<decltype(std::declval<PriorsImp&>().Set(0, 0.0, Vector())), bool>);
static_assert(std::is_same_v<decltype(std::declval<PriorsImp&>().Get(0, Vector())), double>);
static_assert(std::is_same_v<decltype(&PriorsImp::Resize), bool (PriorsImp::*)(int)>);
static_assert(
    std::is_same_v<decltype(&PriorsImp::ComputeAltered), bool (PriorsImp::*)(Cost const&)>);
static_assert(std::is_same_v<decltype(&PriorsImp::AlterPriorVector),
                             bool (PriorsImp::*)(Vector, Vector, Cost const&)>);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

constexpr Vector kSpecified = PriorsImp::PriorVectorSpecified;
constexpr Vector kAltered = PriorsImp::PriorVectorAltered;
constexpr Vector kAuxiliary = PriorsImp::PriorVectorAuxiliary;
constexpr Vector kAuxiliaryFixed = PriorsImp::PriorVectorAuxiliaryFixed;
constexpr Vector kAll[] = {kSpecified, kAltered, kAuxiliary, kAuxiliaryFixed};
constexpr Vector kOptional[] = {kAltered, kAuxiliary, kAuxiliaryFixed};

/// The values of exactly that vector; empty when it does not exist.
Values ValuesOf(PriorsImp const& priors, Vector vector) {
  TArray<double> const* const array = priors.GetVector(vector, false);
  if (array == nullptr) return {};
  return Values(array->GetData(), array->GetData() + array->GetSize());
}

/// A new array with these values, for a test to hand over.
TArray<double>* ArrayOf(std::initializer_list<double> values) {
  auto array = std::make_unique<TArray<double>>(true);
  int index = 0;
  for (double const value : values) array->SetAtGrow(index++, value);
  return array.release();
}

/// Custom priors with all four vectors, each with values of its own, and altered priors wanted.
PriorsImp FullPriors() {
  PriorsImp priors;
  priors.Set(0, 0.25);
  priors.Set(1, 0.75);
  priors.SetVector(kAltered, ArrayOf({0.1, 0.2}));
  priors.SetVector(kAuxiliary, ArrayOf({0.3, 0.4, 0.5}));
  priors.SetVector(kAuxiliaryFixed, ArrayOf({0.6}));
  priors.AlterValues(true);
  return priors;
}

void ExpectFull(PriorsImp const& priors) {
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25, 0.75}));
  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.1, 0.2}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliary), (Values{0.3, 0.4, 0.5}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), (Values{0.6}));
  EXPECT_TRUE(priors.HasAlteredValues());
  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
}

void ExpectFresh(PriorsImp const& priors) {
  EXPECT_EQ(priors.GetNumClasses(), 0);
  for (Vector const vector : kOptional) EXPECT_EQ(priors.GetVector(vector, false), nullptr);
  EXPECT_FALSE(priors.HasAlteredValues());
  EXPECT_EQ(priors.GetType(), PriorTypeDefault);
}

TEST(PriorsImp, BeginsWithoutValuesAsDefault) {
  PriorsImp const priors;

  ExpectFresh(priors);
  EXPECT_NE(priors.GetVector(kSpecified, false), nullptr);
  EXPECT_EQ(priors.Get(0), 0.0);
  EXPECT_EQ(priors.GetAltered(0), 0.0);
}

TEST(PriorsImp, SetsOnePriorAndBecomesCustom) {
  PriorsImp priors;

  EXPECT_TRUE(priors.Set(0, 0.3));

  EXPECT_EQ(priors.GetNumClasses(), 1);
  EXPECT_EQ(priors.Get(0), 0.3);
  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
}

TEST(PriorsImp, BecomesCustomFromTheAlternateTypeToo) {
  PriorsImp priors;
  priors.Set(PriorTypeAlternate);

  priors.Set(0, 0.3);

  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
}

TEST(PriorsImp, SetsAPriorBeyondItsEndWithZerosBelow) {
  PriorsImp priors;

  EXPECT_TRUE(priors.Set(5, 0.1));

  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.0, 0.0, 0.0, 0.0, 0.0, 0.1}));
  EXPECT_EQ(priors.GetNumClasses(), 6);
}

TEST(PriorsImp, SetsAPriorInPlace) {
  PriorsImp priors = FullPriors();

  EXPECT_TRUE(priors.Set(0, 0.5));

  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.5, 0.75}));
  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.1, 0.2}));
}

TEST(PriorsImp, RefusesPriorsThatAreNoneAndChangesNothing) {
  struct Refused {
    char const* name;
    int index;
    double value;
  };
  Refused const table[] = {
      {"negative index", -1, 0.5},
      {"least index", kMinInt, 0.5},
      {"negative value", 0, -0.1},
      {"just negative value", 0, -std::numeric_limits<double>::denorm_min()},
      {"minus infinity", 0, -kInfinity},
      {"not a number", 0, kNaN},
      {"bad value beyond the end", 7, -0.1},
  };
  for (auto const& refused : table) {
    SCOPED_TRACE(refused.name);
    PriorsImp fresh;
    PriorsImp full = FullPriors();

    EXPECT_FALSE(fresh.Set(refused.index, refused.value));
    for (Vector const vector : kAll) {
      EXPECT_FALSE(fresh.Set(refused.index, refused.value, vector));
      EXPECT_FALSE(full.Set(refused.index, refused.value, vector));
    }

    ExpectFresh(fresh);
    ExpectFull(full);
  }
}

TEST(PriorsImp, RefusesTheIndexThatHasNoCount) {
  PriorsImp fresh;
  PriorsImp full = FullPriors();

  EXPECT_FALSE(fresh.Set(kMaxInt, 0.5));
  EXPECT_FALSE(full.Set(kMaxInt, 0.5));
  for (Vector const vector : kAll) EXPECT_FALSE(full.Set(kMaxInt, 0.5, vector));

  ExpectFresh(fresh);
  ExpectFull(full);
}

TEST(PriorsImp, AcceptsEveryValueThatIsNotNegative) {
  for (double const value : {0.0, -0.0, 0.5, 1.0, 7.0, 1e300, kInfinity}) {
    SCOPED_TRACE(value);
    PriorsImp priors;

    EXPECT_TRUE(priors.Set(0, value));

    EXPECT_EQ(priors.Get(0), value);
  }
}

// The capacity shows in what needs no allocation, and growth to exactly what is asked for in the
// next index needing one.
TEST(PriorsImp, BeginsWithRoomForTwo) {
  PriorsImp priors;
  priors.Set(0, 0.3);
  long const before = CountAllocations();

  priors.Set(1, 0.3);
  EXPECT_EQ(CountAllocations(), before);
  priors.Set(2, 0.3);
  EXPECT_EQ(CountAllocations(), before + 1);
  priors.Set(3, 0.1);
  EXPECT_EQ(CountAllocations(), before + 2);

  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.3, 0.3, 0.3, 0.1}));
}

TEST(PriorsImp, BeginsWithRoomForTheIndexWhereThatIsMore) {
  PriorsImp priors;
  long const before = CountAllocations();

  priors.Set(5, 0.1);
  EXPECT_EQ(CountAllocations(), before + 1);
  priors.Set(4, 0.1);
  EXPECT_EQ(CountAllocations(), before + 1);
  priors.Set(6, 0.1);
  EXPECT_EQ(CountAllocations(), before + 2);
}

TEST(PriorsImp, BeginsAVectorWithRoomForAllClasses) {
  for (Vector const vector : kOptional) {
    SCOPED_TRACE(vector);
    PriorsImp priors;
    priors.Set(3, 0.1);
    long const before = CountAllocations();

    priors.Set(0, 0.5, vector);
    EXPECT_EQ(CountAllocations(), before + 2);  // the array and its storage
    priors.Set(3, 0.5, vector);
    EXPECT_EQ(CountAllocations(), before + 2);
    priors.Set(4, 0.5, vector);
    EXPECT_EQ(CountAllocations(), before + 3);
  }
}

TEST(PriorsImp, SetsAVectorAtAndBeyondTheNumberOfClasses) {
  for (int const index : {2, 3, 4}) {
    SCOPED_TRACE(index);
    PriorsImp priors;
    priors.Set(2, 0.1);

    EXPECT_TRUE(priors.Set(index, 0.5, kAuxiliary));

    Values expected(static_cast<std::size_t>(index), 0.0);
    expected.push_back(0.5);
    EXPECT_EQ(ValuesOf(priors, kAuxiliary), expected);
  }
}

TEST(PriorsImp, FillsAnEmptyVectorThatItHasInPlace) {
  PriorsImp priors;
  priors.Set(2, 0.1);
  auto* const handedOver = new TArray<double>(true);
  priors.SetVector(kAltered, handedOver);

  EXPECT_TRUE(priors.Set(1, 0.5, kAltered));

  EXPECT_EQ(priors.GetVector(kAltered, false), handedOver);
  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.0, 0.5}));
}

TEST(PriorsImp, SetsAgainAfterAllPriorsWereDropped) {
  PriorsImp priors = FullPriors();
  priors.Resize(0);

  EXPECT_TRUE(priors.Set(1, 0.5));

  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.0, 0.5}));
}

TEST(PriorsImp, SetsAVectorWithoutAChangeOfTypeOrOfTheOthers) {
  for (Vector const vector : kAll) {
    SCOPED_TRACE(vector);
    PriorsImp priors;

    EXPECT_TRUE(priors.Set(1, 0.5, vector));

    EXPECT_EQ(priors.GetType(), PriorTypeDefault);
    for (Vector const each : kAll) {
      EXPECT_EQ(ValuesOf(priors, each), each == vector ? (Values{0.0, 0.5}) : Values{});
    }
  }
}

TEST(PriorsImp, StoresNothingForAVectorThatIsNoneOfTheFour) {
  long const live = CountLiveAllocations();
  {
    PriorsImp priors;

    for (int const id : {4, -1, kMaxInt, kMinInt}) {
      EXPECT_TRUE(priors.Set(0, 0.5, static_cast<Vector>(id)));
    }

    ExpectFresh(priors);
  }
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, ReadsZeroOutOfRange) {
  PriorsImp const priors = FullPriors();

  for (int const index : {-1, 2, 3, kMaxInt, kMinInt}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(priors.Get(index), 0.0);
    EXPECT_EQ(priors.GetAltered(index), 0.0);
    EXPECT_EQ(priors.Get(index, kSpecified), 0.0);
  }
  EXPECT_EQ(priors.Get(2, kAuxiliary), 0.5);  // longer than the specified vector
  EXPECT_EQ(priors.Get(3, kAuxiliary), 0.0);
  EXPECT_EQ(priors.Get(1, kAuxiliaryFixed), 0.0);  // shorter: no falling back for one value
  EXPECT_EQ(priors.Get(0, static_cast<Vector>(-1)), 0.0);
}

TEST(PriorsImp, ReadsEachVector) {
  PriorsImp const priors = FullPriors();

  EXPECT_EQ(priors.Get(1), 0.75);
  EXPECT_EQ(priors.GetAltered(1), 0.2);
  EXPECT_EQ(priors.Get(1, kSpecified), 0.75);
  EXPECT_EQ(priors.Get(1, kAltered), 0.2);
  EXPECT_EQ(priors.Get(1, kAuxiliary), 0.4);
  EXPECT_EQ(priors.Get(0, kAuxiliaryFixed), 0.6);
}

TEST(PriorsImp, ReadsSpecifiedPriorsAsLongAsNoneAreAltered) {
  PriorsImp priors;
  priors.Set(0, 0.25);
  priors.Set(1, 0.75);
  priors.AlterValues(true);

  EXPECT_EQ(priors.GetAltered(0), 0.25);
  EXPECT_EQ(priors.GetAltered(1), 0.75);
}

TEST(PriorsImp, FallsBackToTheNextLowerVectorThatExists) {
  struct Case {
    char const* name;
    bool altered;
    bool auxiliary;
    bool auxiliaryFixed;
    int found[4];  // by the vector asked for
  };
  Case const table[] = {
      {"none", false, false, false, {0, 0, 0, 0}},
      {"altered", true, false, false, {0, 1, 1, 1}},
      {"auxiliary", false, true, false, {0, 0, 2, 2}},
      {"altered and auxiliary", true, true, false, {0, 1, 2, 2}},
      {"fixed", false, false, true, {0, 0, 0, 3}},
      {"altered and fixed", true, false, true, {0, 1, 1, 3}},
      {"auxiliary and fixed", false, true, true, {0, 0, 2, 3}},
      {"all", true, true, true, {0, 1, 2, 3}},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    PriorsImp priors;
    priors.Set(0, 0.5);
    if (row.altered) priors.SetVector(kAltered, ArrayOf({0.1}));
    if (row.auxiliary) priors.SetVector(kAuxiliary, ArrayOf({0.2}));
    if (row.auxiliaryFixed) priors.SetVector(kAuxiliaryFixed, ArrayOf({0.3}));
    PriorsImp const& readable = priors;
    double const values[] = {0.5, 0.1, 0.2, 0.3};

    for (Vector const asked : kAll) {
      SCOPED_TRACE(asked);
      auto const found = static_cast<Vector>(row.found[asked]);
      EXPECT_EQ(priors.FindValidId(asked), found);
      EXPECT_EQ(priors.GetVector(asked, true), priors.GetVector(found, false));
      EXPECT_EQ(readable.GetVector(asked, true), priors.GetVector(found, false));
      EXPECT_EQ(readable.GetVector(asked, false),
                asked == found ? priors.GetVector(found, true) : nullptr);
      EXPECT_EQ(priors.GetVector(asked, false), readable.GetVector(asked, false));
      EXPECT_EQ(priors.Get(0, asked), values[found]);
      EXPECT_EQ(priors.GetValues(asked), priors.GetVector(found, false)->GetData());
    }
    EXPECT_EQ(priors.GetAltered(0), row.altered ? 0.1 : 0.5);
  }
}

TEST(PriorsImp, HasNoVectorButTheFour) {
  PriorsImp priors = FullPriors();
  PriorsImp const& readable = priors;

  for (int const id : {4, 5, kMaxInt, -1, kMinInt}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(priors.GetVector(static_cast<Vector>(id), false), nullptr);
    EXPECT_EQ(readable.GetVector(static_cast<Vector>(id), false), nullptr);
  }
}

TEST(PriorsImp, FallsBackFromBeyondTheFourToTheHighestAndHasNothingBelowThem) {
  PriorsImp priors;
  priors.Set(0, 0.5);
  priors.SetVector(kAuxiliary, ArrayOf({0.2}));

  for (int const id : {4, 5, kMaxInt}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(priors.FindValidId(static_cast<Vector>(id)), kAuxiliary);
    EXPECT_EQ(priors.GetVector(static_cast<Vector>(id), true), priors.GetVector(kAuxiliary, false));
    EXPECT_EQ(priors.Get(0, static_cast<Vector>(id)), 0.2);
  }
  for (int const id : {-1, kMinInt}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(priors.GetVector(static_cast<Vector>(id), true), nullptr);
    EXPECT_EQ(priors.GetValues(static_cast<Vector>(id)), nullptr);
  }
}

TEST(PriorsImp, HandsOutTheSpecifiedVectorForWriting) {
  PriorsImp priors;
  priors.GetVector(kSpecified, false)->SetAtGrow(1, 0.5);

  EXPECT_EQ(priors.GetNumClasses(), 2);
  EXPECT_EQ(priors.Get(1), 0.5);
}

TEST(PriorsImp, HasNoValuesWithoutStorage) {
  EXPECT_EQ(PriorsImp().GetValues(kSpecified), nullptr);
  EXPECT_EQ(PriorsImp().GetValues(kAuxiliaryFixed), nullptr);
}

TEST(PriorsImp, SaysWhetherAlteredPriorsAreWantedAndComputesNothing) {
  PriorsImp priors;
  priors.Set(0, 0.5);

  priors.AlterValues(true);

  EXPECT_TRUE(priors.HasAlteredValues());
  EXPECT_EQ(priors.GetVector(kAltered, false), nullptr);
  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
  priors.AlterValues(false);
  EXPECT_FALSE(priors.HasAlteredValues());
}

TEST(PriorsImp, KeepsAlteredPriorsThatAreNoLongerWanted) {
  PriorsImp priors = FullPriors();

  priors.AlterValues(false);

  EXPECT_EQ(priors.GetAltered(0), 0.1);
}

TEST(PriorsImp, DropsAllValuesWithAChangeOfType) {
  for (PriorType const type : {PriorTypeDefault, PriorTypeAlternate}) {
    SCOPED_TRACE(type);
    PriorsImp priors = FullPriors();

    EXPECT_TRUE(priors.Set(type));

    EXPECT_EQ(priors.GetType(), type);
    EXPECT_EQ(priors.GetNumClasses(), 0);
    EXPECT_EQ(priors.GetValues(kSpecified), nullptr);
    for (Vector const vector : kOptional) EXPECT_EQ(priors.GetVector(vector, false), nullptr);
    EXPECT_TRUE(priors.HasAlteredValues());
  }
}

TEST(PriorsImp, GoesFromEachSettableTypeToTheOther) {
  PriorsImp priors;

  EXPECT_TRUE(priors.Set(PriorTypeAlternate));
  EXPECT_EQ(priors.GetType(), PriorTypeAlternate);
  EXPECT_TRUE(priors.Set(PriorTypeDefault));
  EXPECT_EQ(priors.GetType(), PriorTypeDefault);
}

TEST(PriorsImp, RefusesTheTypeItHasAndKeepsItsValues) {
  for (PriorType const type : {PriorTypeDefault, PriorTypeAlternate}) {
    SCOPED_TRACE(type);
    PriorsImp priors;
    priors.Set(type);
    for (Vector const vector : kAll) priors.Set(0, 0.5, vector);

    EXPECT_FALSE(priors.Set(type));

    EXPECT_EQ(priors.GetType(), type);
    for (Vector const vector : kAll) EXPECT_EQ(ValuesOf(priors, vector), Values{0.5});
  }
}

TEST(PriorsImp, RefusesTypesThatCannotBeChosen) {
  for (int const type : {2, 3, -1, kMaxInt, kMinInt}) {
    SCOPED_TRACE(type);
    PriorsImp full = FullPriors();
    PriorsImp fresh;

    EXPECT_FALSE(full.Set(static_cast<PriorType>(type)));
    EXPECT_FALSE(fresh.Set(static_cast<PriorType>(type)));

    ExpectFull(full);
    ExpectFresh(fresh);
  }
}

TEST(PriorsImp, ResizesTheSpecifiedVectorAlone) {
  PriorsImp priors = FullPriors();

  EXPECT_TRUE(priors.Resize(4));
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25, 0.75, 0.0, 0.0}));
  EXPECT_TRUE(priors.Resize(1));
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25}));
  EXPECT_TRUE(priors.Resize(2));
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25, 0.0}));

  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.1, 0.2}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliary), (Values{0.3, 0.4, 0.5}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), (Values{0.6}));
  EXPECT_EQ(priors.GetType(), PriorTypeCustom);
}

TEST(PriorsImp, KeepsTheTypeWhenResized) {
  PriorsImp priors;

  EXPECT_TRUE(priors.Resize(3));

  EXPECT_EQ(priors.GetType(), PriorTypeDefault);
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.0, 0.0, 0.0}));
}

TEST(PriorsImp, RefusesTheNumberItHasAndNegativeNumbers) {
  PriorsImp priors = FullPriors();

  for (int const count : {2, -1, kMinInt}) {
    SCOPED_TRACE(count);
    EXPECT_FALSE(priors.Resize(count));
    ExpectFull(priors);
  }
  EXPECT_FALSE(PriorsImp().Resize(0));
}

TEST(PriorsImp, TakesAnArrayIntoEachEmptySlot) {
  for (Vector const vector : kOptional) {
    SCOPED_TRACE(vector);
    PriorsImp priors;
    TArray<double>* const array = ArrayOf({0.5});

    priors.SetVector(vector, array);

    EXPECT_EQ(priors.GetVector(vector, false), array);
  }
}

TEST(PriorsImp, ReplacesTheAuxiliaryVectorOnly) {
  PriorsImp priors = FullPriors();

  for (Vector const vector : kAll) priors.SetVector(vector, ArrayOf({0.9}));

  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25, 0.75}));
  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.1, 0.2}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliary), (Values{0.9}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), (Values{0.6}));
}

TEST(PriorsImp, ReleasesEveryArrayThatItIgnoresOrReplaces) {
  for (int const id : {0, 1, 2, 3, 4, -1}) {
    SCOPED_TRACE(id);
    long const live = CountLiveAllocations();
    PriorsImp priors = FullPriors();
    long const full = CountLiveAllocations();

    priors.SetVector(static_cast<Vector>(id), ArrayOf({0.9}));

    EXPECT_EQ(CountLiveAllocations(), full);
    priors = PriorsImp();
    EXPECT_EQ(CountLiveAllocations(), live);
  }
}

TEST(PriorsImp, DeletesAllVectorsInTheEnd) {
  long const live = CountLiveAllocations();

  { PriorsImp const priors = FullPriors(); }

  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, DeletesAllVectorsWithAChangeOfType) {
  long const live = CountLiveAllocations();
  PriorsImp priors = FullPriors();

  priors.Set(PriorTypeAlternate);

  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, RemovesTheAuxiliaryVectorForNullAndIgnoresNullElsewhere) {
  PriorsImp priors = FullPriors();

  for (Vector const vector : kAll) priors.SetVector(vector, nullptr);

  EXPECT_EQ(priors.GetVector(kAuxiliary, false), nullptr);
  EXPECT_EQ(ValuesOf(priors, kSpecified), (Values{0.25, 0.75}));
  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{0.1, 0.2}));
  EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), (Values{0.6}));
}

TEST(PriorsImp, TakesAnArrayAfterNull) {
  for (Vector const vector : kOptional) {
    PriorsImp priors;
    priors.SetVector(vector, nullptr);

    priors.SetVector(vector, ArrayOf({0.5}));

    EXPECT_EQ(ValuesOf(priors, vector), Values{0.5});
  }
}

TEST(PriorsImp, StaysAsItIsWhenHandedAnArrayThatItHolds) {
  for (Vector const held : kAll) {
    for (Vector const slot : kAll) {
      SCOPED_TRACE(::testing::Message() << held << " into " << slot);
      PriorsImp priors = FullPriors();

      priors.SetVector(slot, priors.GetVector(held, false));

      ExpectFull(priors);
    }
  }
}

TEST(PriorsImp, KeepsWhatItHoldsWhenHandedItForAnEmptySlot) {
  PriorsImp priors;
  priors.SetVector(kAltered, ArrayOf({0.5}));

  priors.SetVector(kAuxiliary, priors.GetVector(kAltered, false));

  EXPECT_EQ(ValuesOf(priors, kAltered), Values{0.5});
  EXPECT_EQ(priors.GetVector(kAuxiliary, false), nullptr);
}

// Every way of copying, by name.
struct CopyOfPriors {
  char const* name;
  std::unique_ptr<PriorsImp> (*make)(PriorsImp const& source);
};
CopyOfPriors const kCopies[] = {
    {"copy constructor",
     [](PriorsImp const& source) { return std::make_unique<PriorsImp>(source); }},
    {"clone",
     [](PriorsImp const& source) {
       return std::unique_ptr<PriorsImp>(dynamic_cast<PriorsImp*>(source.Clone()));
     }},
    {"assignment over nothing",
     [](PriorsImp const& source) {
       auto copy = std::make_unique<PriorsImp>();
       EXPECT_EQ(&(*copy = source), copy.get());
       return copy;
     }},
    {"assignment over all",
     [](PriorsImp const& source) {
       auto copy = std::make_unique<PriorsImp>();
       for (Vector const vector : kAll) copy->Set(6, 0.125, vector);
       copy->Set(0, 0.125);
       copy->AlterValues(true);
       EXPECT_EQ(&(*copy = source), copy.get());
       return copy;
     }},
    {"initialisation over all",
     [](PriorsImp const& source) {
       auto copy = std::make_unique<PriorsImp>();
       for (Vector const vector : kAll) copy->Set(6, 0.125, vector);
       copy->Set(0, 0.125);
       copy->AlterValues(true);
       copy->Init(source);
       return copy;
     }},
};

TEST(PriorsImp, CopiesEverythingDeeply) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    PriorsImp const source = FullPriors();

    std::unique_ptr<PriorsImp> const copy = way.make(source);

    ASSERT_NE(copy, nullptr);
    ExpectFull(*copy);
    for (Vector const vector : kAll) {
      EXPECT_NE(copy->GetVector(vector, false), source.GetVector(vector, false));
      EXPECT_NE(copy->GetValues(vector), source.GetValues(vector));
      copy->Set(0, 0.0, vector);
    }
    copy->AlterValues(false);
    copy->Set(PriorTypeAlternate);
    ExpectFull(source);
  }
}

TEST(PriorsImp, CopiesWhatIsAbsentAsAbsent) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    PriorsImp const source;

    std::unique_ptr<PriorsImp> const copy = way.make(source);

    ASSERT_NE(copy, nullptr);
    ExpectFresh(*copy);
  }
}

TEST(PriorsImp, CopiesEachOptionalVectorByItself) {
  for (Vector const vector : kOptional) {
    SCOPED_TRACE(vector);
    PriorsImp source;
    source.Set(1, 0.5, vector);
    PriorsImp target = FullPriors();

    target.Init(source);

    for (Vector const each : kAll) {
      EXPECT_EQ(ValuesOf(target, each), each == vector ? (Values{0.0, 0.5}) : Values{});
    }
  }
}

TEST(PriorsImp, CopiesTheCapacityWithTheValues) {
  for (Vector const vector : kAll) {
    SCOPED_TRACE(vector);
    PriorsImp source;
    source.Set(0, 0.3, vector);
    PriorsImp copy(source);
    long const before = CountAllocations();

    copy.Set(1, 0.3, vector);
    EXPECT_EQ(CountAllocations(), before);
    copy.Set(2, 0.3, vector);
    EXPECT_EQ(CountAllocations(), before + 1);
  }
}

TEST(PriorsImp, CopiesAVectorThatExistsWithoutValues) {
  PriorsImp source;
  source.SetVector(kAuxiliary, new TArray<double>(true));

  PriorsImp const copy(source);

  ASSERT_NE(copy.GetVector(kAuxiliary, false), nullptr);
  EXPECT_EQ(copy.GetVector(kAuxiliary, false)->GetSize(), 0);
}

TEST(PriorsImp, SurvivesBeingCopiedFromItself) {
  PriorsImp priors = FullPriors();
  PriorsImp const& same = priors;

  priors = same;
  ExpectFull(priors);
  priors.Init(same);
  ExpectFull(priors);
}

// Priors that call themselves alternate, whatever is stored.
class AlternatePriors : public PriorsImp {
 public:
  PriorType GetType() const override { return PriorTypeAlternate; }
};

TEST(PriorsImp, CopiesTheTypeThatItsSourceAnswers) {
  AlternatePriors source;
  source.Set(0, 0.5);
  PriorsImp target;

  target.Init(source);
  std::unique_ptr<Priors> const clone(source.Clone());

  EXPECT_EQ(target.GetType(), PriorTypeAlternate);
  EXPECT_EQ(clone->GetType(), PriorTypeAlternate);
  EXPECT_EQ(clone->Get(0), 0.5);
}

TEST(PriorsImp, RefusesGrowthThatCannotBeAllocatedAndKeepsItsValues) {
  PriorsImp priors = FullPriors();
  long const live = CountLiveAllocations();
  {
    FailingAllocator const failing(1, true);

    EXPECT_FALSE(priors.Set(100, 0.5));
    for (Vector const vector : kAll) EXPECT_FALSE(priors.Set(100, 0.5, vector));
    EXPECT_FALSE(priors.Resize(100));
  }

  ExpectFull(priors);
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, KeepsItsTypeWhenAPriorCannotBeAllocated) {
  PriorsImp priors;
  {
    FailingAllocator const failing(1, true);

    EXPECT_FALSE(priors.Set(0, 0.5));
  }

  ExpectFresh(priors);
}

TEST(PriorsImp, LeavesAVectorAbsentThatCannotBeAllocated) {
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([] {
    PriorsImp priors;
    bool set = false;
    try {
      set = priors.Set(0, 0.5, kAuxiliary);
    } catch (std::bad_alloc const&) {
    }
    EXPECT_EQ(priors.GetVector(kAuxiliary, false) != nullptr, set);
    EXPECT_EQ(priors.Get(0, kAuxiliary), set ? 0.5 : 0.0);
  });

  EXPECT_EQ(failures, 2);
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, LosesNothingWhenACopyRunsOutOfMemory) {
  PriorsImp const source = FullPriors();
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] { delete source.Clone(); });

  EXPECT_GE(failures, 8);  // the object, four storages, three arrays
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(PriorsImp, KeepsTheTargetAsItWasWhenAssignmentRunsOutOfMemory) {
  PriorsImp source;
  for (Vector const vector : kAll) source.Set(3, 0.5, vector);
  PriorsImp target = FullPriors();
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source, &target, live] {
    try {
      target = source;
    } catch (std::bad_alloc const&) {
      ExpectFull(target);
      EXPECT_EQ(CountLiveAllocations(), live);
      throw;
    }
  });

  EXPECT_GE(failures, 7);  // four storages and three arrays
  EXPECT_EQ(target.Get(3, kAuxiliaryFixed), 0.5);
}

#if TREE_HAS_SLOTS
TEST(PriorsImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(VirtualSlot(static_cast<Priors* (Priors::*)() const>(&Priors::Clone)), kFirstSlot + 0);
  EXPECT_EQ(VirtualSlot(static_cast<PriorType (Priors::*)() const>(&Priors::GetType)),
            kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Priors::*)() const>(&Priors::HasAlteredValues)),
            kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(static_cast<int (Priors::*)() const>(&Priors::GetNumClasses)),
            kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(static_cast<double (Priors::*)(int) const>(&Priors::Get)), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(static_cast<double (Priors::*)(int) const>(&Priors::GetAltered)),
            kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(static_cast<void (Priors::*)(bool)>(&Priors::AlterValues)), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Priors::*)(int, double)>(&Priors::Set)), kFirstSlot + 7);
  EXPECT_EQ(VirtualSlot(static_cast<bool (Priors::*)(PriorType)>(&Priors::Set)), kFirstSlot + 8);
}

TEST(PriorsImp, AddsNoVirtualOperation) {
  EXPECT_EQ(VirtualSlot(&PriorsImp::Init), -1);
  EXPECT_EQ(VirtualSlot(&PriorsImp::FindValidId), -1);
  EXPECT_EQ(VirtualSlot(&PriorsImp::SetVector), -1);
  EXPECT_EQ(VirtualSlot(&PriorsImp::Resize), -1);
  EXPECT_EQ(VirtualSlot(&PriorsImp::ComputeAltered), -1);
  EXPECT_EQ(VirtualSlot(&PriorsImp::AlterPriorVector), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
