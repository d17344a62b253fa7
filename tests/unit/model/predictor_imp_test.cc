#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/virtual_slot.h"
#include "tree/nodes.h"

namespace tree {
namespace {

using ::testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

PredictorImp Filled() {
  PredictorImp summary;
  summary.SetValueRange(-1.5, 9.0);
  double const values[] = {3.0, 1.0, 2.0};
  summary.SetValues(values, 3);
  summary.SetHasMissingValues(true);
  return summary;
}

std::vector<double> ValuesOf(PredictorImp const& summary) {
  int count = -1;
  EXPECT_TRUE(summary.GetNumValues(&count));
  std::vector<double> values(static_cast<std::size_t>(count));
  EXPECT_TRUE(summary.GetValues(values.data(), count));
  return values;
}

void ExpectRange(PredictorImp const& summary, double minimum, double maximum) {
  double storedMinimum = -99.0;
  double storedMaximum = -99.0;
  EXPECT_TRUE(summary.GetValueRange(&storedMinimum, &storedMaximum));
  EXPECT_EQ(storedMinimum, minimum);
  EXPECT_EQ(storedMaximum, maximum);
}

TEST(PredictorImp, StartsEmpty) {
  PredictorImp const summary;

  ExpectRange(summary, 0.0, 0.0);
  EXPECT_THAT(ValuesOf(summary), ElementsAre());
  EXPECT_FALSE(summary.HasMissingValues());
}

#if TREE_HAS_SLOTS
TEST(PredictorImp, KeepsTheOrderOfItsVirtualOperations) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&PredictorImp::GetValueRange), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&PredictorImp::GetNumValues), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&PredictorImp::GetValues), kFirstSlot + 2);
  EXPECT_EQ(VirtualSlot(&PredictorImp::HasMissingValues), kFirstSlot + 3);
  EXPECT_EQ(VirtualSlot(&PredictorImp::SetValueRange), kFirstSlot + 4);
  EXPECT_EQ(VirtualSlot(&PredictorImp::SetNumValues), kFirstSlot + 5);
  EXPECT_EQ(VirtualSlot(&PredictorImp::SetValues), kFirstSlot + 6);
  EXPECT_EQ(VirtualSlot(&PredictorImp::SetHasMissingValues), kFirstSlot + 7);
}
#endif

TEST(PredictorImp, StoresRangeInWhateverOrder) {
  PredictorImp summary;

  summary.SetValueRange(5.0, 1.0);
  ExpectRange(summary, 5.0, 1.0);

  summary.SetValueRange(-kInfinity, kInfinity);
  ExpectRange(summary, -kInfinity, kInfinity);
}

TEST(PredictorImp, StoresWhetherValuesAreMissing) {
  PredictorImp summary;

  summary.SetHasMissingValues(true);
  EXPECT_TRUE(summary.HasMissingValues());

  summary.SetHasMissingValues(false);
  EXPECT_FALSE(summary.HasMissingValues());
}

TEST(PredictorImp, KeepsValuesThatStayWhenTheirNumberChanges) {
  PredictorImp summary = Filled();

  summary.SetNumValues(2);
  EXPECT_THAT(ValuesOf(summary), ElementsAre(3.0, 1.0));

  summary.SetNumValues(4);
  EXPECT_THAT(ValuesOf(summary), ElementsAre(3.0, 1.0, 0.0, 0.0));

  summary.SetNumValues(0);
  EXPECT_THAT(ValuesOf(summary), ElementsAre());
}

TEST(PredictorImp, TakesNegativeNumberOfValuesForNone) {
  PredictorImp summary = Filled();
  double const value = 1.0;

  summary.SetNumValues(-1);
  EXPECT_THAT(ValuesOf(summary), ElementsAre());

  summary = Filled();
  summary.SetValues(&value, -1);
  EXPECT_THAT(ValuesOf(summary), ElementsAre());
}

TEST(PredictorImp, ReplacesValuesByThoseGiven) {
  struct Row {
    char const* name;
    int before;
  };
  Row const rows[] = {{"over none", 0}, {"over as many", 3}, {"over more", 5}, {"over fewer", 1}};
  double const values[] = {7.0, 8.0, 9.0};
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    PredictorImp summary;
    summary.SetNumValues(row.before);

    summary.SetValues(values, 3);

    EXPECT_THAT(ValuesOf(summary), ElementsAre(7.0, 8.0, 9.0));
  }
}

TEST(PredictorImp, TakesNoValuesFromNull) {
  PredictorImp summary = Filled();

  summary.SetValues(nullptr, 0);

  EXPECT_THAT(ValuesOf(summary), ElementsAre());
}

TEST(PredictorImp, CopiesTheValuesItIsGiven) {
  PredictorImp summary;
  double values[] = {7.0, 8.0};
  summary.SetValues(values, 2);

  values[0] = 0.0;

  EXPECT_THAT(ValuesOf(summary), ElementsAre(7.0, 8.0));
}

TEST(PredictorImp, HandsOutAsManyValuesAsAskedFor) {
  PredictorImp const summary = Filled();
  double values[] = {-1.0, -1.0, -1.0};

  EXPECT_TRUE(summary.GetValues(values, 2));
  EXPECT_THAT(values, ElementsAre(3.0, 1.0, -1.0));

  EXPECT_TRUE(summary.GetValues(values, 3));
  EXPECT_THAT(values, ElementsAre(3.0, 1.0, 2.0));
}

TEST(PredictorImp, HandsOutNoValuesAsEasily) {
  double value = -1.0;

  EXPECT_TRUE(PredictorImp().GetValues(&value, 0));
  EXPECT_TRUE(Filled().GetValues(&value, 0));
  EXPECT_EQ(value, -1.0);
}

TEST(PredictorImp, RefusesToHandOutValuesItDoesNotHold) {
  PredictorImp const filled = Filled();
  PredictorImp const empty;
  double values[] = {-1.0, -1.0, -1.0, -1.0};

  EXPECT_FALSE(filled.GetValues(values, 4));
  EXPECT_FALSE(filled.GetValues(values, -1));
  EXPECT_FALSE(filled.GetValues(values, std::numeric_limits<int>::min()));
  EXPECT_FALSE(filled.GetValues(values, std::numeric_limits<int>::max()));
  EXPECT_FALSE(empty.GetValues(values, 1));
  EXPECT_THAT(values, ElementsAre(-1.0, -1.0, -1.0, -1.0));
}

TEST(PredictorImp, CopiesAllFieldsDeeply) {
  PredictorImp const source = Filled();

  PredictorImp copy(source);
  PredictorImp assigned;
  PredictorImp& result = assigned = source;

  EXPECT_EQ(&result, &assigned);
  for (PredictorImp* const each : {&copy, &assigned}) {
    ExpectRange(*each, -1.5, 9.0);
    EXPECT_THAT(ValuesOf(*each), ElementsAre(3.0, 1.0, 2.0));
    EXPECT_TRUE(each->HasMissingValues());
    double const other = 100.0;
    each->SetValues(&other, 1);
    each->SetValueRange(0.0, 1.0);
  }
  EXPECT_TRUE(source == Filled());
}

TEST(PredictorImp, StaysAsItIsWhenAssignedToItself) {
  PredictorImp summary = Filled();
  PredictorImp const& itself = summary;

  summary = itself;

  EXPECT_TRUE(summary == Filled());
}

TEST(PredictorImp, EqualsOnlyWhatAgreesInEveryField) {
  struct Row {
    char const* name;
    void (*change)(PredictorImp&);
  };
  Row const rows[] = {
      {"minimum", [](PredictorImp& summary) { summary.SetValueRange(-1.0, 9.0); }},
      {"maximum", [](PredictorImp& summary) { summary.SetValueRange(-1.5, 9.5); }},
      {"number of values", [](PredictorImp& summary) { summary.SetNumValues(2); }},
      {"one value more", [](PredictorImp& summary) { summary.SetNumValues(4); }},
      {"a value",
       [](PredictorImp& summary) {
         double const values[] = {3.0, 1.0, 2.5};
         summary.SetValues(values, 3);
       }},
      {"missing values", [](PredictorImp& summary) { summary.SetHasMissingValues(false); }},
      {"tiny difference",
       [](PredictorImp& summary) { summary.SetValueRange(-1.5, 9.000000000000002); }},
  };
  PredictorImp const original = Filled();
  EXPECT_TRUE(original == Filled());
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    PredictorImp changed = Filled();

    row.change(changed);

    EXPECT_FALSE(changed == original);
    EXPECT_FALSE(original == changed);
  }
}

TEST(PredictorImp, NeverEqualsWhatHoldsNaN) {
  PredictorImp range = Filled();
  PredictorImp value = Filled();

  range.SetValueRange(0.0, kNaN);
  value.SetValues(&kNaN, 1);

  EXPECT_FALSE(range == range);
  EXPECT_FALSE(value == value);
}

TEST(PredictorImp, StaysAsItIsWhenMemoryRunsOut) {
  PredictorImp source = Filled();
  source.SetNumValues(50);
  double const values[50] = {};
  long const live = testing::CountLiveAllocations();

  auto const expectUnchangedAfter = [](auto const& operation) {
    return testing::WithEveryAllocationFailing([&operation] {
      PredictorImp summary = Filled();
      try {
        operation(summary);
      } catch (std::bad_alloc const&) {
        EXPECT_TRUE(summary == Filled());
        throw;
      }
    });
  };
  // Making the summary takes one allocation, and the operation another one.
  EXPECT_EQ(expectUnchangedAfter([](PredictorImp& summary) { summary.SetNumValues(50); }), 2);
  EXPECT_EQ(expectUnchangedAfter([&](PredictorImp& summary) { summary.SetValues(values, 50); }), 2);
  EXPECT_EQ(expectUnchangedAfter([&](PredictorImp& summary) { summary = source; }), 2);
  EXPECT_EQ(testing::CountLiveAllocations(), live);
}

}  // namespace
}  // namespace tree
