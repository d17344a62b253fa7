#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <memory>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_parts.h"
#include "tree/misclassification.h"

namespace tree::testing {
namespace {

using Vector = PriorsImp::PriorVector;
using Values = std::vector<double>;
using Rows = std::vector<std::vector<double>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr Vector kSpecified = PriorsImp::PriorVectorSpecified;
constexpr Vector kAltered = PriorsImp::PriorVectorAltered;
constexpr Vector kAuxiliary = PriorsImp::PriorVectorAuxiliary;
constexpr Vector kAuxiliaryFixed = PriorsImp::PriorVectorAuxiliaryFixed;
constexpr Vector kAll[] = {kSpecified, kAltered, kAuxiliary, kAuxiliaryFixed};
constexpr Vector kOptional[] = {kAltered, kAuxiliary, kAuxiliaryFixed};

Values ValuesOf(PriorsImp const& priors, Vector vector) {
  TArray<double> const* const array = priors.GetVector(vector, false);
  if (array == nullptr) return {};
  return Values(array->GetData(), array->GetData() + array->GetSize());
}

void ExpectValues(PriorsImp const& priors, Vector vector, Values const& expected) {
  Values const actual = ValuesOf(priors, vector);
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t index = 0; index < expected.size(); ++index) {
    EXPECT_NEAR(actual[index], expected[index], 1e-15) << "index " << index;
  }
}

void SetAll(PriorsImp& priors, Vector vector, Values const& values) {
  for (std::size_t index = 0; index < values.size(); ++index) {
    priors.Set(static_cast<int>(index), values[index], vector);
  }
}

/// Priors with these specified values, altered ones wanted.
PriorsImp Wanting(Values const& specified) {
  PriorsImp priors;
  SetAll(priors, kSpecified, specified);
  priors.AlterValues(true);
  return priors;
}

/// Costs of 1 and 2: column sums 2 and 1.
CostImp OneAndTwo() {
  CostImp costs;
  costs.Set(0, 1, 1.0);
  costs.Set(1, 0, 2.0);
  return costs;
}

/// Costs with nothing but zeros.
CostImp NoCosts() {
  CostImp costs;
  costs.Set(0, 1, 0.0);
  costs.Set(1, 0, 0.0);
  return costs;
}

TEST(PriorsImpAlteration, WeighsPriorsByTheSumsOfTheCostColumns) {
  PriorsImp priors = Wanting({0.5, 0.5});

  EXPECT_TRUE(priors.ComputeAltered(OneAndTwo()));

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
  ExpectValues(priors, kSpecified, {0.5, 0.5});
  EXPECT_DOUBLE_EQ(priors.GetAltered(0), 2.0 / 3.0);
  EXPECT_EQ(priors.Get(0), 0.5);
}

TEST(PriorsImpAlteration, AgreesWithWhatWasWorkedOutByHand) {
  struct Case {
    char const* name;
    Values priors;
    Rows costs;
    Values expected;
  };
  Case const table[] = {
      // Column sums 6, 3, 8; weights 1.2, 0.9, 4.0; total 6.1.
      {"three classes",
       {0.2, 0.3, 0.5},
       {{0.0, 1.0, 3.0}, {2.0, 0.0, 5.0}, {4.0, 2.0, 0.0}},
       {1.2 / 6.1, 0.9 / 6.1, 4.0 / 6.1}},
      {"default costs change nothing", {0.25, 0.75}, {{0.0, 1.0}, {1.0, 0.0}}, {0.25, 0.75}},
      // Priors need not have sum 1: weights 4 and 3.
      {"priors as counts", {2.0, 3.0}, {{0.0, 1.0}, {2.0, 0.0}}, {4.0 / 7.0, 3.0 / 7.0}},
      {"a class without prior", {0.0, 0.5}, {{0.0, 1.0}, {2.0, 0.0}}, {0.0, 1.0}},
      {"a column without cost", {0.5, 0.5}, {{0.0, 1.0}, {0.0, 0.0}}, {0.0, 1.0}},
      // Foreign costs may cost on the diagonal: column sums 3 and 5.
      {"diagonal counts too", {0.5, 0.5}, {{1.0, 1.0}, {2.0, 4.0}}, {3.0 / 8.0, 5.0 / 8.0}},
      {"one class", {0.5}, {{3.0}}, {1.0}},
      // Only the cells of the two classes are read.
      {"more costs than priors",
       {0.5, 0.5},
       {{0.0, 1.0, 9.0}, {2.0, 0.0, 9.0}, {9.0, 9.0, 0.0}},
       {2.0 / 3.0, 1.0 / 3.0}},
      // Each missing cell counts -1: column sums 0+5-1 = 4, 4+0-1 = 3 and -3; weights 3.2, 0.3 and
      // -0.3; total 3.2.
      {"fewer costs than priors",
       {0.8, 0.1, 0.1},
       {{0.0, 4.0}, {5.0, 0.0}},
       {1.0, 0.09375, -0.09375}},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    PriorsImp priors = Wanting(row.priors);

    EXPECT_TRUE(priors.ComputeAltered(ForeignCost(row.costs)));

    ExpectValues(priors, kAltered, row.expected);
    ExpectValues(priors, kSpecified, row.priors);
  }
}

TEST(PriorsImpAlteration, ReadsTheCostsRowByRow) {
  PriorsImp priors = Wanting({0.5, 0.5});
  ForeignCost const costs({{0.0, 1.0}, {2.0, 0.0}});

  priors.ComputeAltered(costs);

  EXPECT_EQ(costs.GetReads(), (std::vector<ForeignCost::Cell>{{0, 0}, {0, 1}, {1, 0}, {1, 1}}));
}

TEST(PriorsImpAlteration, IsRefusedWithoutAPositiveTotal) {
  struct Case {
    char const* name;
    Values priors;
    Rows costs;
  };
  Case const table[] = {
      {"no costs", {0.5, 0.5}, {{0.0, 0.0}, {0.0, 0.0}}},
      {"no priors", {}, {{0.0, 1.0}, {2.0, 0.0}}},
      {"zero priors", {0.0, 0.0}, {{0.0, 1.0}, {2.0, 0.0}}},
      {"empty costs", {0.5, 0.5}, {}},
      // Column sums 0+1-1 = 0, 0 and -3: total -0.6.
      {"missing cells prevail", {0.2, 0.6, 0.2}, {{0.0, 1.0}, {1.0, 0.0}}},
      {"negative costs", {0.5, 0.5}, {{0.0, -1.0}, {-2.0, 0.0}}},
      {"not a number", {0.5, 0.5}, {{0.0, kNaN}, {2.0, 0.0}}},
      {"infinite cost of a class without prior", {0.0, 0.5}, {{0.0, 1.0}, {kInfinity, 0.0}}},
  };
  for (auto const& row : table) {
    SCOPED_TRACE(row.name);
    PriorsImp priors = Wanting(row.priors);
    priors.Set(0, 0.25, kAuxiliary);
    priors.Set(0, 0.75, kAuxiliaryFixed);

    EXPECT_FALSE(priors.ComputeAltered(ForeignCost(row.costs)));

    EXPECT_EQ(priors.GetVector(kAltered, false), nullptr);
    EXPECT_EQ(ValuesOf(priors, kSpecified), row.priors);
    EXPECT_EQ(ValuesOf(priors, kAuxiliary), Values{0.25});
    EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), Values{0.75});
  }
}

TEST(PriorsImpAlteration, IsRefusedForCostsThatAreAllZero) {
  PriorsImp priors = Wanting({0.5, 0.5});

  EXPECT_FALSE(priors.ComputeAltered(NoCosts()));

  EXPECT_EQ(priors.GetVector(kAltered, false), nullptr);
  EXPECT_EQ(priors.GetAltered(0), 0.5);
}

TEST(PriorsImpAlteration, SucceedsForTheLeastPositiveTotal) {
  double const least = std::numeric_limits<double>::denorm_min();
  PriorsImp priors = Wanting({least, 0.0});

  EXPECT_TRUE(priors.ComputeAltered(ForeignCost({{1.0, 0.0}, {0.0, 0.0}})));

  EXPECT_EQ(ValuesOf(priors, kAltered), (Values{1.0, 0.0}));
}

TEST(PriorsImpAlteration, DoesNothingAndIsFineWhenNotWanted) {
  PriorsImp priors = Wanting({0.5, 0.5});
  SetAll(priors, kAuxiliary, {0.5, 0.5});
  priors.AlterValues(false);
  ForeignCost const costs;

  EXPECT_TRUE(priors.ComputeAltered(costs));
  EXPECT_TRUE(priors.ComputeAltered(NoCosts()));

  EXPECT_EQ(priors.GetVector(kAltered, false), nullptr);
  EXPECT_EQ(ValuesOf(priors, kAuxiliary), (Values{0.5, 0.5}));
  EXPECT_TRUE(costs.GetReads().empty());
}

TEST(PriorsImpAlteration, KeepsTheFirstAlteredPriors) {
  PriorsImp priors = Wanting({0.5, 0.5});
  priors.ComputeAltered(OneAndTwo());
  CostImp others;
  others.Set(0, 1, 9.0);

  EXPECT_TRUE(priors.ComputeAltered(others));

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
}

TEST(PriorsImpAlteration, StillSaysThatCostsDoNotWeighInWhenAlreadyAltered) {
  PriorsImp priors = Wanting({0.5, 0.5});
  priors.ComputeAltered(OneAndTwo());

  EXPECT_FALSE(priors.ComputeAltered(NoCosts()));

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
}

TEST(PriorsImpAlteration, ComputesAnewOnceThePriorsAreDefinedAnew) {
  PriorsImp priors = Wanting({0.5, 0.5});
  priors.ComputeAltered(OneAndTwo());

  priors.Set(PriorTypeAlternate);
  SetAll(priors, kSpecified, {0.2, 0.8});
  EXPECT_TRUE(priors.ComputeAltered(OneAndTwo()));

  ExpectValues(priors, kAltered, {0.4 / 1.2, 0.8 / 1.2});
}

TEST(PriorsImpAlteration, KeepsAlteredPriorsWhenASinglePriorChanges) {
  PriorsImp priors = Wanting({0.5, 0.5});
  priors.ComputeAltered(OneAndTwo());

  priors.Set(0, 0.9);
  priors.ComputeAltered(OneAndTwo());

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
}

TEST(PriorsImpAlteration, AltersTheAuxiliaryVectorInPlaceAndNeverTheFixedOne) {
  PriorsImp priors = Wanting({0.5, 0.5});
  SetAll(priors, kAuxiliary, {0.2, 0.8});
  SetAll(priors, kAuxiliaryFixed, {0.2, 0.8});

  EXPECT_TRUE(priors.ComputeAltered(OneAndTwo()));

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
  ExpectValues(priors, kAuxiliary, {0.4 / 1.2, 0.8 / 1.2});  // weights 0.4 and 0.8
  EXPECT_EQ(ValuesOf(priors, kAuxiliaryFixed), (Values{0.2, 0.8}));
}

TEST(PriorsImpAlteration, AltersTheAuxiliaryVectorAgainEveryTime) {
  PriorsImp priors = Wanting({0.5, 0.5});
  SetAll(priors, kAuxiliary, {0.5, 0.5});

  priors.ComputeAltered(OneAndTwo());
  priors.ComputeAltered(OneAndTwo());

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
  ExpectValues(priors, kAuxiliary, {0.8, 0.2});  // weights 4/3 and 1/3
}

TEST(PriorsImpAlteration, MakesNoAuxiliaryVector) {
  PriorsImp priors = Wanting({0.5, 0.5});

  priors.ComputeAltered(OneAndTwo());

  EXPECT_EQ(priors.GetVector(kAuxiliary, false), nullptr);
  EXPECT_EQ(priors.GetVector(kAuxiliaryFixed, false), nullptr);
}

TEST(PriorsImpAlteration, DoesNotMindAnAuxiliaryVectorThatCannotBeAltered) {
  PriorsImp priors = Wanting({0.5, 0.5});
  SetAll(priors, kAuxiliary, {0.0, 0.0});

  EXPECT_TRUE(priors.ComputeAltered(OneAndTwo()));

  EXPECT_EQ(ValuesOf(priors, kAuxiliary), (Values{0.0, 0.0}));
  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
}

TEST(PriorsImpAlteration, LeavesTypeAndFlagAsTheyAre) {
  PriorsImp priors = Wanting({0.5, 0.5});

  priors.ComputeAltered(OneAndTwo());

  EXPECT_EQ(priors.GetType(), PriorTypeDefault);
  EXPECT_TRUE(priors.HasAlteredValues());
  EXPECT_EQ(priors.GetNumClasses(), 2);
}

TEST(PriorsImpAlteration, PutsAnyVectorIntoAnyEmptySlot) {
  for (Vector const source : kAll) {
    for (Vector const destination : kOptional) {
      if (source == destination) continue;
      SCOPED_TRACE(::testing::Message() << source << " into " << destination);
      PriorsImp priors;
      SetAll(priors, source, {0.5, 0.5});

      EXPECT_TRUE(priors.AlterPriorVector(destination, source, OneAndTwo()));

      ExpectValues(priors, destination, {2.0 / 3.0, 1.0 / 3.0});
      EXPECT_EQ(ValuesOf(priors, source), (Values{0.5, 0.5}));
    }
  }
}

TEST(PriorsImpAlteration, NeedsNoFlagForASingleVector) {
  PriorsImp priors = Wanting({0.5, 0.5});
  priors.AlterValues(false);

  EXPECT_TRUE(priors.AlterPriorVector(kAltered, kSpecified, OneAndTwo()));

  ExpectValues(priors, kAltered, {2.0 / 3.0, 1.0 / 3.0});
}

TEST(PriorsImpAlteration, DropsTheResultForASlotThatKeepsWhatItHas) {
  for (Vector const destination :
       {kSpecified, kAltered, kAuxiliaryFixed, static_cast<Vector>(4), static_cast<Vector>(-1)}) {
    SCOPED_TRACE(destination);
    PriorsImp priors;
    for (Vector const vector : kAll) SetAll(priors, vector, {0.5, 0.5});
    long const live = CountLiveAllocations();

    EXPECT_TRUE(priors.AlterPriorVector(destination, kSpecified, OneAndTwo()));

    EXPECT_EQ(CountLiveAllocations(), live);
    for (Vector const vector : kAll) EXPECT_EQ(ValuesOf(priors, vector), (Values{0.5, 0.5}));
  }
}

TEST(PriorsImpAlteration, DoesNotFallBackFromAnAbsentSource) {
  PriorsImp priors;
  SetAll(priors, kSpecified, {0.5, 0.5});

  for (Vector const source :
       {kAltered, kAuxiliary, kAuxiliaryFixed, static_cast<Vector>(4), static_cast<Vector>(-1)}) {
    SCOPED_TRACE(source);
    EXPECT_FALSE(priors.AlterPriorVector(kAuxiliary, source, OneAndTwo()));
    EXPECT_EQ(priors.GetVector(kAuxiliary, false), nullptr);
  }
}

TEST(PriorsImpAlteration, KeepsTheDestinationWhenRefused) {
  PriorsImp priors;
  for (Vector const vector : kAll) SetAll(priors, vector, {0.5, 0.5});
  TArray<double> const* const auxiliary = priors.GetVector(kAuxiliary, false);

  EXPECT_FALSE(priors.AlterPriorVector(kAuxiliary, kSpecified, NoCosts()));

  EXPECT_EQ(priors.GetVector(kAuxiliary, false), auxiliary);
  for (Vector const vector : kAll) EXPECT_EQ(ValuesOf(priors, vector), (Values{0.5, 0.5}));
}

TEST(PriorsImpAlteration, NeverAltersAVectorInPartWhenMemoryRunsOut) {
  CostImp const costs = OneAndTwo();
  PriorsImp before = Wanting({0.5, 0.5});
  SetAll(before, kAuxiliary, {0.2, 0.8});
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&] {
    PriorsImp priors(before);
    bool altered = false;
    try {
      altered = priors.ComputeAltered(costs);
    } catch (std::bad_alloc const&) {
    }
    EXPECT_EQ(priors.Get(0), 0.5);
    bool const hasAltered = priors.GetVector(kAltered, false) != nullptr;
    EXPECT_TRUE(hasAltered || !altered);
    EXPECT_DOUBLE_EQ(priors.GetAltered(0), hasAltered ? 2.0 / 3.0 : 0.5);
    EXPECT_DOUBLE_EQ(priors.GetAltered(1), hasAltered ? 1.0 / 3.0 : 0.5);
    bool const asBefore = priors.Get(0, kAuxiliary) == 0.2;
    EXPECT_TRUE(asBefore || hasAltered);
    EXPECT_DOUBLE_EQ(priors.Get(0, kAuxiliary), asBefore ? 0.2 : 0.4 / 1.2);
    EXPECT_DOUBLE_EQ(priors.Get(1, kAuxiliary), asBefore ? 0.8 : 0.8 / 1.2);
  });

  EXPECT_GE(failures, 4);  // two arrays with their storage each
  EXPECT_EQ(CountLiveAllocations(), live);
}

}  // namespace
}  // namespace tree::testing
