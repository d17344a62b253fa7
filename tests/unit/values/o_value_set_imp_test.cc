#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "testing/value_set_builder.h"
#include "testing/virtual_slot.h"
#include "testing/watched.h"
#include "tree/values.h"

namespace tree::testing {
namespace {

static_assert(std::is_polymorphic_v<OValueSetImp> && std::has_virtual_destructor_v<OValueSetImp>);
static_assert(!std::is_base_of_v<ValueSet, OValueSetImp>);
static_assert(std::is_same_v<bool, decltype(std::declval<OValueSetImp const&>().Contains(1.0))>);

using Imp = OValueSetImp;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kTolerance = 1e-12;

double JustBelow(double value) { return std::nextafter(value, -kInfinity); }

/// Bounded at `left`, unbounded on the right, with 0 as the right end that is stored.
Imp BoundedAtLeftOnly(double left) {
  Imp interval;
  interval.SetLeftEnd(left);
  return interval;
}

/// Bounded at `right`, unbounded on the left, with 0 as the left end that is stored.
Imp BoundedAtRightOnly(double right) {
  Imp interval;
  interval.SetRightEnd(right);
  return interval;
}

TEST(OValueSetImp, BeginsAsTheWholeLine) {
  Imp const interval;

  EXPECT_EQ("(-inf, inf)", Written(interval));
  EXPECT_EQ(0.0, interval.GetLeftEnd());
  EXPECT_EQ(0.0, interval.GetRightEnd());
}

TEST(OValueSetImp, IsTheOpenIntervalBetweenTwoEnds) {
  Imp const interval(1.0, 3.0);

  EXPECT_EQ("(1, 3)", Written(interval));
}

TEST(OValueSetImp, StoresEndsInWhateverOrder) {
  EXPECT_EQ("(3, 1)", Written(Imp(3.0, 1.0)));
  EXPECT_EQ("(2, 2)", Written(Imp(2.0, 2.0)));
  EXPECT_EQ("(-inf, inf)", Written(Imp(-kInfinity, kInfinity)));
  EXPECT_TRUE(Imp(-kInfinity, kInfinity).IsBoundedLeft());
  EXPECT_TRUE(Imp(-kInfinity, kInfinity).IsBoundedRight());
}

TEST(OValueSetImp, OpensAndClosesEachEndByItself) {
  Imp interval(1.0, 3.0);

  interval.SetOpenLeft(false);
  EXPECT_EQ("[1, 3)", Written(interval));
  interval.SetOpenRight(false);
  EXPECT_EQ("[1, 3]", Written(interval));
  interval.SetOpenLeft(true);
  EXPECT_EQ("(1, 3]", Written(interval));
  interval.SetOpenRight(true);
  EXPECT_EQ("(1, 3)", Written(interval));
}

TEST(OValueSetImp, OpensAndClosesUnboundedEndsToo) {
  Imp interval;

  interval.SetOpenLeft(false);
  interval.SetOpenRight(false);

  EXPECT_EQ("[-inf, inf]", Written(interval));
}

TEST(OValueSetImp, SetLeftEndBoundsTheLeftSide) {
  Imp interval;

  interval.SetLeftEnd(4.0);

  EXPECT_EQ("(4, inf)", Written(interval));
  EXPECT_EQ(4.0, interval.GetLeftEnd());
  EXPECT_EQ(0.0, interval.GetRightEnd());
}

TEST(OValueSetImp, SetRightEndBoundsTheRightSide) {
  Imp interval;

  interval.SetRightEnd(4.0);

  EXPECT_EQ("(-inf, 4)", Written(interval));
  EXPECT_EQ(0.0, interval.GetLeftEnd());
  EXPECT_EQ(4.0, interval.GetRightEnd());
}

TEST(OValueSetImp, SetEndsKeepTheOpenness) {
  Imp interval = Closed<Imp>(1.0, 3.0);

  interval.SetLeftEnd(0.0);
  interval.SetRightEnd(9.0);

  EXPECT_EQ("[0, 9]", Written(interval));
}

TEST(OValueSetImp, BoundingASideKeepsItsStoredEnd) {
  Imp interval;

  interval.SetBoundedLeft(true);
  EXPECT_EQ("(0, inf)", Written(interval));
  interval.SetBoundedRight(true);
  EXPECT_EQ("(0, 0)", Written(interval));
}

TEST(OValueSetImp, UnboundingTheLeftSideCopiesTheRightEndIntoIt) {
  Imp interval = Closed<Imp>(1.0, 3.0);

  interval.SetBoundedLeft(false);

  EXPECT_EQ(3.0, interval.GetLeftEnd());
  EXPECT_EQ(3.0, interval.GetRightEnd());
  EXPECT_EQ("[-inf, 3]", Written(interval));
}

TEST(OValueSetImp, UnboundingTheRightSideCopiesTheLeftEndIntoIt) {
  Imp interval = Closed<Imp>(1.0, 3.0);

  interval.SetBoundedRight(false);

  EXPECT_EQ(1.0, interval.GetLeftEnd());
  EXPECT_EQ(1.0, interval.GetRightEnd());
  EXPECT_EQ("[1, inf]", Written(interval));
}

TEST(OValueSetImp, UnboundingAnUnboundedSideCopiesTheOtherEndAgain) {
  Imp interval = BoundedAtRightOnly(3.0);
  ASSERT_EQ(0.0, interval.GetLeftEnd());

  interval.SetBoundedLeft(false);

  EXPECT_EQ(3.0, interval.GetLeftEnd());
}

TEST(OValueSetImp, EmptyMakesTheIntervalFromZeroToZeroAndLeavesTheRightOpennessAlone) {
  struct Row {
    char const* name;
    Imp interval;
    char const* expected;
  };
  Row const kRows[] = {
      {"right end open", ClosedOpen<Imp>(1.0, 3.0), "(0, 0)"},
      {"right end closed", Closed<Imp>(1.0, 3.0), "(0, 0]"},
      {"unbounded", Imp(), "(0, 0)"},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    Imp interval = row.interval;

    interval.Empty();

    EXPECT_EQ(row.expected, Written(interval));
    EXPECT_TRUE(interval.IsEmpty());
  }
}

TEST(OValueSetImp, CopyAndAssignmentHaveAllFields) {
  struct Row {
    char const* name;
    Imp interval;
  };
  Row const kRows[] = {
      {"whole line", Imp()},
      {"closed", Closed<Imp>(1.0, 3.0)},
      {"open on the left", OpenClosed<Imp>(1.0, 3.0)},
      {"open on the right", ClosedOpen<Imp>(1.0, 3.0)},
      {"unbounded left, other end stored", BoundedAtRightOnly(3.0)},
      {"unbounded right, other end stored", BoundedAtLeftOnly(3.0)},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    Imp const copy(row.interval);
    Imp assigned(7.0, 8.0);

    EXPECT_EQ(&assigned, &(assigned = row.interval));

    for (Imp const* const each : {&copy, static_cast<Imp const*>(&assigned)}) {
      EXPECT_EQ(Written(row.interval), Written(*each));
      EXPECT_EQ(row.interval.GetLeftEnd(), each->GetLeftEnd());
      EXPECT_EQ(row.interval.GetRightEnd(), each->GetRightEnd());
    }
  }
}

TEST(OValueSetImp, CopyIsIndependent) {
  Imp source(1.0, 3.0);
  Imp const copy(source);

  source.Empty();

  EXPECT_EQ("(1, 3)", Written(copy));
}

TEST(OValueSetImp, AssignmentToItselfChangesNothing) {
  Imp interval = OpenClosed<Imp>(1.0, 3.0);
  Imp const& same = interval;

  interval = same;

  EXPECT_EQ("(1, 3]", Written(interval));
}

struct Membership {
  char const* name;
  Imp interval;
  double value;
  bool expected;
};

void ExpectMemberships(std::initializer_list<Membership> rows) {
  for (Membership const& row : rows) {
    EXPECT_EQ(row.expected, row.interval.Contains(row.value))
        << row.name << ": " << row.value << " in " << Written(row.interval);
  }
}

TEST(OValueSetImp, TheWholeLineContainsEverything) {
  ExpectMemberships({
      {"zero", Imp(), 0.0, true},
      {"far below", Imp(), -1e300, true},
      {"far above", Imp(), 1e300, true},
      {"infinity", Imp(), kInfinity, true},
      {"negative infinity", Imp(), -kInfinity, true},
      {"NaN", Imp(), kNaN, true},
  });
}

TEST(OValueSetImp, ContainsByTruncatedDifferences) {
  Imp const interval(1.0, 3.0);

  ExpectMemberships({
      {"inside", interval, 2.0, true},
      {"open left end", interval, 1.0, false},
      {"open right end, which is tested at the left end", interval, 3.0, true},
      {"half a unit above", interval, 3.5, true},
      {"half a unit below", interval, 0.5, true},
      {"more than a unit above", interval, 4.1, false},
      {"more than a unit below", interval, -0.1, false},
      {"a unit above", interval, 4.0, false},
      {"a unit below", interval, 0.0, false},
  });
}

TEST(OValueSetImp, ContainsUpToOneUnitLessTheToleranceBeyondAnEnd) {
  ExpectMemberships({
      {"left: tolerance reaches a unit", From<Imp>(0.0), -1.0 + kTolerance / 2, false},
      {"left: tolerance stays below a unit", From<Imp>(0.0), -1.0 + kTolerance * 2, true},
      {"right: tolerance reaches a unit", AtMost<Imp>(0.0), 1.0 - kTolerance / 2, false},
      {"right: tolerance stays below a unit", AtMost<Imp>(0.0), 1.0 - kTolerance * 2, true},
  });
}

TEST(OValueSetImp, AnOpenLeftEndExcludesWhatIsWithinTheToleranceOfIt) {
  Imp const open = Above<Imp>(0.0);

  ExpectMemberships({
      {"at the end", open, 0.0, false},
      {"within the tolerance above", open, JustBelow(kTolerance), false},
      {"at the tolerance above", open, kTolerance, true},
      {"within the tolerance below", open, -JustBelow(kTolerance), false},
      {"at the tolerance below", open, -kTolerance, true},
      {"closed: at the end", From<Imp>(0.0), 0.0, true},
      {"closed: within the tolerance", From<Imp>(0.0), kTolerance / 2, true},
  });
}

TEST(OValueSetImp, AnOpenRightEndIsTestedAtTheLeftEnd) {
  ExpectMemberships({
      {"left end, right end open", ClosedOpen<Imp>(1.0, 3.0), 1.0, false},
      {"right end, right end open", ClosedOpen<Imp>(1.0, 3.0), 3.0, true},
      {"left end, both closed", Closed<Imp>(1.0, 3.0), 1.0, true},
      {"right end, both closed", Closed<Imp>(1.0, 3.0), 3.0, true},
      {"left end, left end open", OpenClosed<Imp>(1.0, 3.0), 1.0, false},
      {"right end, left end open", OpenClosed<Imp>(1.0, 3.0), 3.0, true},
      {"stored left end of an unbounded side", BoundedAtRightOnly(3.0), 0.0, false},
      {"right end beside that stored left end", BoundedAtRightOnly(3.0), 3.0, true},
      {"right end that the unbounded side repeats", Below<Imp>(3.0), 3.0, false},
      {"right end that the unbounded side repeats, closed", AtMost<Imp>(3.0), 3.0, true},
      {"within the tolerance above", Below<Imp>(0.0), JustBelow(kTolerance), false},
      {"at the tolerance above", Below<Imp>(0.0), kTolerance, true},
      {"within the tolerance below", Below<Imp>(0.0), -JustBelow(kTolerance), false},
      {"at the tolerance below", Below<Imp>(0.0), -kTolerance, true},
  });
}

TEST(OValueSetImp, AnUnboundedSideImposesNothing) {
  ExpectMemberships({
      {"far below an unbounded left side", AtMost<Imp>(0.0), -2e9, true},
      {"far above an unbounded right side", From<Imp>(0.0), 2e9, true},
      {"above a bounded right side", AtMost<Imp>(0.0), 2.0, false},
      {"below a bounded left side", From<Imp>(0.0), -2.0, false},
      {"open unbounded left side, at its stored end", Imp(), 0.0, true},
      {"left side open but unbounded, right side closed", AtMost<Imp>(3.0), 3.0, true},
      {"right side open but unbounded, left side closed", From<Imp>(3.0), 3.0, true},
  });
}

TEST(OValueSetImp, ContainsNothingWhoseDifferenceLeavesThe32BitRange) {
  ExpectMemberships({
      {"3e9 above", From<Imp>(0.0), 3e9, false},
      {"highest integer above", From<Imp>(0.0), 2147483647.0, true},
      {"highest integer and a half", From<Imp>(0.0), 2147483647.5, true},
      {"one more than the highest integer", From<Imp>(0.0), 2147483648.0, false},
      {"highest integer and a half below", AtMost<Imp>(0.0), -2147483647.5, true},
      {"one more than the highest integer below", AtMost<Imp>(0.0), -2147483648.0, false},
      {"3e9 below", AtMost<Imp>(0.0), -3e9, false},
      {"lowest integer and a half below a left end", From<Imp>(0.0), -2147483648.5, false},
      {"far below a left end", From<Imp>(0.0), -1e300, false},
      {"far above a right end", AtMost<Imp>(0.0), 1e300, false},
  });
}

TEST(OValueSetImp, ContainsNoInfinityOrNaNOnceASideIsBounded) {
  ExpectMemberships({
      {"NaN, left side bounded", From<Imp>(0.0), kNaN, false},
      {"NaN, right side bounded", AtMost<Imp>(0.0), kNaN, false},
      {"NaN, both bounded", Closed<Imp>(0.0, 1.0), kNaN, false},
      {"infinity, left side bounded", From<Imp>(0.0), kInfinity, false},
      {"infinity, right side bounded", AtMost<Imp>(0.0), kInfinity, false},
      {"negative infinity, left side bounded", From<Imp>(0.0), -kInfinity, false},
      {"negative infinity, right side bounded", AtMost<Imp>(0.0), -kInfinity, false},
      {"zero, bounded at negative infinity", From<Imp>(-kInfinity), 0.0, false},
      {"zero, bounded at infinity", AtMost<Imp>(kInfinity), 0.0, false},
      {"infinity at itself", From<Imp>(kInfinity), kInfinity, false},
      {"zero, bounded at NaN", From<Imp>(kNaN), 0.0, false},
  });
}

TEST(OValueSetImp, IsEmptyByTheTruncatedWidth) {
  struct Row {
    char const* name;
    Imp interval;
    bool expected;
  };
  Row const kRows[] = {
      {"whole line", Imp(), false},
      {"half a unit wide", Imp(0.0, 0.5), true},
      {"half a unit wide, closed", Closed<Imp>(0.0, 0.5), true},
      {"one and a half units wide", Imp(0.0, 1.5), false},
      {"a unit wide", Imp(0.0, 1.0), true},
      {"a unit and less than the tolerance", Imp(0.0, 1.0 + kTolerance / 2), true},
      {"a unit and more than the tolerance", Imp(0.0, 1.0 + kTolerance * 2), false},
      {"a point, closed", Closed<Imp>(2.0, 2.0), false},
      {"a point, left end open", OpenClosed<Imp>(2.0, 2.0), true},
      {"a point, right end open", ClosedOpen<Imp>(2.0, 2.0), true},
      {"a point, open", Open<Imp>(2.0, 2.0), true},
      {"ends within the tolerance, closed", Closed<Imp>(0.0, JustBelow(kTolerance)), false},
      {"ends within the tolerance, open", Open<Imp>(0.0, JustBelow(kTolerance)), true},
      {"ends at the tolerance, closed", Closed<Imp>(0.0, kTolerance), true},
      {"right end below within the tolerance, closed", Closed<Imp>(JustBelow(kTolerance), 0.0),
       false},
      {"right end below at the tolerance, closed", Closed<Imp>(kTolerance, 0.0), true},
      {"right end below", Closed<Imp>(3.0, 1.0), true},
      {"right end far below", Closed<Imp>(3e9, 0.0), true},
      {"unbounded left, ends repeated", AtMost<Imp>(7.0), false},
      {"unbounded left, ends repeated, open", Below<Imp>(7.0), false},
      {"unbounded right, ends repeated", From<Imp>(7.0), false},
      {"unbounded right, ends repeated, open", Above<Imp>(7.0), false},
      {"unbounded right, stored end below", BoundedAtLeftOnly(7.0), true},
      {"unbounded right, stored end above", BoundedAtLeftOnly(-7.0), false},
      {"unbounded left, stored end above", BoundedAtRightOnly(-7.0), true},
      {"width of the highest integer and a half", Imp(0.0, 2147483647.5), false},
      {"width beyond the 32-bit range", Imp(0.0, 2147483648.0), true},
      {"width far beyond the 32-bit range", Imp(0.0, 3e9), true},
      {"infinite width", Closed<Imp>(-kInfinity, kInfinity), true},
      {"a point at infinity", Closed<Imp>(kInfinity, kInfinity), true},
      {"left end NaN", Closed<Imp>(kNaN, 1.0), true},
      {"right end NaN", Closed<Imp>(1.0, kNaN), true},
  };
  for (Row const& row : kRows) {
    EXPECT_EQ(row.expected, row.interval.IsEmpty()) << row.name << ": " << Written(row.interval);
  }
}

TEST(OValueSetImp, ComparesByTheLeftSide) {
  struct Row {
    char const* name;
    Imp a;
    Imp b;
    bool equal;
    bool aBeforeB;
    bool bBeforeA;
  };
  Row const kRows[] = {
      {"both unbounded on the left", AtMost<Imp>(3.0), AtMost<Imp>(5.0), true, false, false},
      {"whole line and unbounded left", Imp(), AtMost<Imp>(5.0), true, false, false},
      {"same left end, other right end", Imp(1.0, 3.0), Imp(1.0, 5.0), true, false, false},
      {"same left end, other openness", Open<Imp>(1.0, 3.0), Closed<Imp>(1.0, 3.0), true, false,
       false},
      {"same left end, other right bound", Imp(1.0, 3.0), Above<Imp>(1.0), true, false, false},
      {"left ends in order", Imp(1.0, 3.0), Imp(2.0, 3.0), false, true, false},
      {"left ends apart by the least step", Imp(1.0, 3.0), Imp(std::nextafter(1.0, 2.0), 3.0),
       false, true, false},
      {"zeros of either sign", Imp(0.0, 3.0), Imp(-0.0, 3.0), true, false, false},
      {"unbounded, stored end below", BoundedAtRightOnly(9.0), Imp(2.0, 5.0), false, true, false},
      {"unbounded, stored end above", BoundedAtRightOnly(9.0), Imp(-2.0, 5.0), false, true, true},
      {"unbounded, stored end the same", BoundedAtRightOnly(9.0), Imp(0.0, 5.0), true, true, false},
      {"left end NaN on one side", Imp(kNaN, 3.0), Imp(1.0, 3.0), false, false, false},
      {"left end NaN on both sides", Imp(kNaN, 3.0), Imp(kNaN, 3.0), false, false, false},
      {"infinite left ends", Imp(-kInfinity, 3.0), Imp(-kInfinity, 3.0), true, false, false},
  };
  for (Row const& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.equal, row.a == row.b);
    EXPECT_EQ(row.equal, row.b == row.a);
    EXPECT_EQ(row.aBeforeB, row.a < row.b);
    EXPECT_EQ(row.bBeforeA, row.b < row.a);
  }
}

TEST(OValueSetImp, ComparesABoundedLeftEndWithTheStoredOneOfAnUnboundedSide) {
  Imp const bounded(2.0, 5.0);
  Imp const unbounded = BoundedAtRightOnly(0.0);

  EXPECT_FALSE(bounded < unbounded);
  EXPECT_TRUE(unbounded < bounded);
}

TEST(OValueSetImp, IsDeletedThroughItsVirtualDestructor) {
  int deaths = 0;
  std::unique_ptr<OValueSetImp> interval = std::make_unique<Watched<OValueSetImp>>(&deaths);

  interval.reset();

  EXPECT_EQ(1, deaths);
}

TEST(OValueSetImp, OwnsNothing) {
  long const before = CountAllocations();

  Imp const interval(1.0, 3.0);
  Imp const copy(interval);

  EXPECT_EQ(before, CountAllocations());
}

#if TREE_HAS_SLOTS
TEST(OValueSetImp, KeepsTheOrderOfItsVirtualOperations) {
  EXPECT_EQ(0, VirtualSlot(&Imp::Contains));  // before the destructor
  EXPECT_EQ(-1, VirtualSlot(&Imp::GetLeftEnd));
  EXPECT_EQ(-1, VirtualSlot(&Imp::IsEmpty));
  EXPECT_EQ(-1, VirtualSlot(&Imp::SetLeftEnd));
  EXPECT_EQ(-1, VirtualSlot(&Imp::Empty));
}
#endif

}  // namespace
}  // namespace tree::testing
