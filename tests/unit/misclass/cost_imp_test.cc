#include <gtest/gtest.h>

#include <cmath>
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

static_assert(CostImp::CostMatrixMain == 0 && CostImp::CostMatrixSecondary == 1);
static_assert(std::is_same_v<int, std::underlying_type_t<CostImp::CostMatrix>>);

static_assert(std::is_base_of_v<Cost, CostImp>);
static_assert(std::is_copy_constructible_v<CostImp> && std::is_copy_assignable_v<CostImp>);
static_assert(std::is_convertible_v<decltype(std::declval<CostImp const&>().Clone()), Cost*>);
static_assert(std::is_same_v<decltype(&CostImp::SetImp), bool (CostImp::*)(int, int, double)>);
static_assert(
    std::is_same_v<decltype(&CostImp::SetDefault), void (CostImp::*)(CostImp::CostMatrix, int)>);
static_assert(std::is_same_v<decltype(&CostImp::IsDefaultMatrix),
                             bool (CostImp::*)(CostImp::CostMatrix) const>);
static_assert(std::is_same_v<decltype(&CostImp::GetMatrix),
                             TMatrix<double> const& (CostImp::*)(CostImp::CostMatrix) const>);
static_assert(std::is_same_v<decltype(&CostImp::Resize), void (CostImp::*)(int)>);

using Rows = std::vector<std::vector<double>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMinInt = std::numeric_limits<int>::min();

Rows RowsOf(Cost const& costs) {
  Rows rows;
  for (int row = 0; row < costs.GetNumClasses(); ++row) {
    rows.emplace_back();
    for (int column = 0; column < costs.GetNumClasses(); ++column) {
      rows.back().push_back(costs.Get(row, column));
    }
  }
  return rows;
}

Rows RowsOf(TMatrix<double> const& matrix) {
  Rows rows;
  for (int row = 0; row < matrix.GetNumRows(); ++row) {
    rows.emplace_back();
    for (int column = 0; column < matrix.GetNumRows(); ++column) {
      rows.back().push_back(matrix.GetAt(row, column));
    }
  }
  return rows;
}

Rows const kDefault2 = {{0.0, 1.0}, {1.0, 0.0}};
Rows const kDefault3 = {{0.0, 1.0, 1.0}, {1.0, 0.0, 1.0}, {1.0, 1.0, 0.0}};
Rows const kCustom3 = {{0.0, 2.0, 3.0}, {4.0, 0.0, 5.0}, {6.0, 7.0, 0.0}};

/// Costs with every cell of `kCustom3` set.
CostImp Custom3() {
  CostImp costs;
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      costs.Set(row, column,
                kCustom3[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]);
    }
  }
  return costs;
}

TEST(CostImp, BeginsEmptyAndDefault) {
  CostImp const costs;

  EXPECT_EQ(costs.GetNumClasses(), 0);
  EXPECT_EQ(costs.GetType(), CostTypeDefault);
  EXPECT_TRUE(costs.IsDefault());
  EXPECT_EQ(costs.GetMatrix(CostImp::CostMatrixMain).GetNumRows(), 0);
  EXPECT_EQ(costs.GetMatrix(CostImp::CostMatrixSecondary).GetNumRows(), 0);
}

TEST(CostImp, ReadsMinusOneOutsideTheMatrix) {
  CostImp const costs = Custom3();

  for (auto const& [row, column] : std::initializer_list<std::pair<int, int>>{
           {3, 0}, {0, 3}, {3, 3}, {-1, 0}, {0, -1}, {-1, -1}, {kMaxInt, 0}, {0, kMinInt}}) {
    SCOPED_TRACE(::testing::Message() << row << ", " << column);
    EXPECT_EQ(costs.Get(row, column), -1.0);
    EXPECT_EQ(costs.GetAt(row, column), -1.0);
  }
  EXPECT_EQ(CostImp().Get(0, 0), -1.0);
}

TEST(CostImp, ReadsEveryCellByRowAndColumn) {
  CostImp const costs = Custom3();

  EXPECT_EQ(RowsOf(costs), kCustom3);
  EXPECT_EQ(costs.GetAt(0, 2), 3.0);
  EXPECT_EQ(costs.GetAt(2, 0), 6.0);
}

TEST(CostImp, RefusesCellsThatNoCostMayHaveAndChangesNothing) {
  struct Refused {
    char const* name;
    int row;
    int column;
    double cost;
  };
  Refused const table[] = {
      {"negative row", -1, 0, 1.0},
      {"negative column", 0, -1, 1.0},
      {"least row", kMinInt, 0, 1.0},
      {"negative on the diagonal", -2, -2, 0.0},
      {"negative cost", 0, 1, -0.5},
      {"just negative cost", 0, 1, -std::numeric_limits<double>::denorm_min()},
      {"minus infinity", 0, 1, -kInfinity},
      {"not a number", 0, 1, kNaN},
      {"diagonal", 1, 1, 0.5},
      {"diagonal by a hair", 1, 1, std::numeric_limits<double>::denorm_min()},
      {"diagonal not a number", 1, 1, kNaN},
      {"diagonal beyond the matrix", 4, 4, 1.0},
      {"bad cost beyond the matrix", 0, 4, -1.0},
      {"row that has no count", kMaxInt, 0, 1.0},
      {"column that has no count", 0, kMaxInt, 1.0},
  };
  for (auto const& refused : table) {
    SCOPED_TRACE(refused.name);
    CostImp costs;
    costs.SetDefault(CostImp::CostMatrixMain, 2);

    EXPECT_FALSE(costs.Set(refused.row, refused.column, refused.cost));
    EXPECT_FALSE(costs.SetImp(refused.row, refused.column, refused.cost));
    EXPECT_FALSE(costs.SetAt(refused.row, refused.column, refused.cost));

    EXPECT_EQ(RowsOf(costs), kDefault2);
    EXPECT_EQ(costs.GetType(), CostTypeDefault);
  }
}

TEST(CostImp, AcceptsEveryCostThatIsNotNegativeOffTheDiagonal) {
  for (double const cost :
       {0.0, -0.0, std::numeric_limits<double>::denorm_min(), 0.5, 1.0, 1e300, kInfinity}) {
    SCOPED_TRACE(cost);
    CostImp costs;

    EXPECT_TRUE(costs.Set(1, 0, cost));

    EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 1.0}, {cost, 0.0}}));
    EXPECT_EQ(costs.GetType(), CostTypeCustom);
  }
}

TEST(CostImp, BecomesCustomByAZeroOnTheDiagonalWithoutAnyOtherChange) {
  CostImp costs;
  costs.SetDefault(CostImp::CostMatrixMain, 3);

  EXPECT_TRUE(costs.Set(1, 1, 0.0));

  EXPECT_EQ(costs.GetType(), CostTypeCustom);
  EXPECT_EQ(RowsOf(costs), kDefault3);
  EXPECT_TRUE(costs.IsDefault());
}

TEST(CostImp, TakesNegativeZeroOnTheDiagonalForZero) {
  CostImp costs;

  EXPECT_TRUE(costs.Set(0, 0, -0.0));

  EXPECT_EQ(RowsOf(costs), (Rows{{0.0}}));
}

TEST(CostImp, GrowsFromNothingByTheDefaultPattern) {
  CostImp costs;

  EXPECT_TRUE(costs.Set(0, 2, 3.0));

  EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 1.0, 3.0}, {1.0, 0.0, 1.0}, {1.0, 1.0, 0.0}}));
}

TEST(CostImp, GrowsByTheHigherOfRowAndColumnAndKeepsWhatItHeld) {
  struct Growth {
    char const* name;
    int row;
    int column;
    double cost;
    Rows expected;
  };
  Growth const table[] = {
      {"by row", 2, 0, 9.0, {{0.0, 2.0, 1.0}, {4.0, 0.0, 1.0}, {9.0, 1.0, 0.0}}},
      {"by column", 1, 2, 9.0, {{0.0, 2.0, 1.0}, {4.0, 0.0, 9.0}, {1.0, 1.0, 0.0}}},
      {"by diagonal", 2, 2, 0.0, {{0.0, 2.0, 1.0}, {4.0, 0.0, 1.0}, {1.0, 1.0, 0.0}}},
      {"by two",
       0,
       3,
       9.0,
       {{0.0, 2.0, 1.0, 9.0}, {4.0, 0.0, 1.0, 1.0}, {1.0, 1.0, 0.0, 1.0}, {1.0, 1.0, 1.0, 0.0}}},
  };
  for (auto const& growth : table) {
    SCOPED_TRACE(growth.name);
    CostImp costs;
    costs.Set(0, 1, 2.0);
    costs.Set(1, 0, 4.0);

    EXPECT_TRUE(costs.Set(growth.row, growth.column, growth.cost));

    EXPECT_EQ(RowsOf(costs), growth.expected);
  }
}

TEST(CostImp, KeepsZerosThatWereSetOffTheDiagonalWhenItGrows) {
  CostImp costs;
  costs.Set(0, 1, 0.0);

  costs.Set(2, 0, 5.0);

  EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 0.0, 1.0}, {1.0, 0.0, 1.0}, {5.0, 1.0, 0.0}}));
}

TEST(CostImp, SetsACellWithoutTheTypeByItsInnerOperation) {
  CostImp costs;

  EXPECT_TRUE(costs.SetImp(0, 1, 7.0));

  EXPECT_EQ(costs.GetType(), CostTypeDefault);
  EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 7.0}, {1.0, 0.0}}));
  EXPECT_FALSE(costs.IsDefault());
}

TEST(CostImp, StaysCustomWhenItsInnerOperationSetsACell) {
  CostImp costs = Custom3();

  costs.SetImp(0, 1, 1.0);

  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, CountsAsDefaultByItsCellsWhateverItsType) {
  CostImp costs;

  costs.Set(0, 1, 5.0);
  costs.Set(0, 1, 1.0);

  EXPECT_TRUE(costs.IsDefault());
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, ToleratesATrillionthInTheDefaultCost) {
  struct Case {
    double cost;
    bool isDefault;
  };
  for (auto const& [cost, isDefault] :
       {Case{1.0 + 0.9e-12, true}, Case{1.0 - 0.9e-12, true}, Case{1.0 + 1.1e-12, false},
        Case{1.0 - 1.1e-12, false}, Case{0.0, false}, Case{kInfinity, false}}) {
    SCOPED_TRACE(cost);
    for (auto const& [row, column] : std::initializer_list<std::pair<int, int>>{{0, 1}, {2, 1}}) {
      CostImp costs;
      costs.SetDefault(CostImp::CostMatrixMain, 3);
      costs.Set(row, column, cost);

      EXPECT_EQ(costs.IsDefault(), isDefault);
      EXPECT_EQ(costs.IsDefaultMatrix(CostImp::CostMatrixMain), isDefault);
    }
  }
}

TEST(CostImp, GoesBackToTheDefaultMatrixOfItsSizeOnce) {
  CostImp costs = Custom3();

  EXPECT_TRUE(costs.Set(CostTypeDefault));

  EXPECT_EQ(RowsOf(costs), kDefault3);
  EXPECT_EQ(costs.GetType(), CostTypeDefault);
  EXPECT_FALSE(costs.Set(CostTypeDefault));
  EXPECT_EQ(RowsOf(costs), kDefault3);
}

TEST(CostImp, RefusesTheDefaultTypeItHasEvenIfCellsWereSetBeneathIt) {
  CostImp costs;
  costs.SetImp(0, 1, 7.0);

  EXPECT_FALSE(costs.Set(CostTypeDefault));

  EXPECT_EQ(costs.Get(0, 1), 7.0);
}

TEST(CostImp, RefusesEveryOtherType) {
  for (int const type : {1, 2, -1, kMaxInt, kMinInt}) {
    SCOPED_TRACE(type);
    CostImp fresh;
    CostImp custom = Custom3();

    EXPECT_FALSE(fresh.Set(static_cast<CostType>(type)));
    EXPECT_FALSE(custom.Set(static_cast<CostType>(type)));

    EXPECT_EQ(fresh.GetType(), CostTypeDefault);
    EXPECT_EQ(custom.GetType(), CostTypeCustom);
    EXPECT_EQ(RowsOf(custom), kCustom3);
  }
}

TEST(CostImp, MakesTheMainMatrixDefaultInAnySize) {
  struct Case {
    int count;
    Rows expected;
  };
  for (auto const& [count, expected] :
       {Case{2, kDefault2}, Case{3, kDefault3}, Case{1, {{0.0}}}, Case{0, {}},
        Case{4,
             {{0.0, 1.0, 1.0, 1.0},
              {1.0, 0.0, 1.0, 1.0},
              {1.0, 1.0, 0.0, 1.0},
              {1.0, 1.0, 1.0, 0.0}}}}) {
    SCOPED_TRACE(count);
    CostImp costs = Custom3();

    costs.SetDefault(CostImp::CostMatrixMain, count);

    EXPECT_EQ(costs.GetNumClasses(), count);
    EXPECT_EQ(RowsOf(costs), expected);
    EXPECT_EQ(costs.GetType(), CostTypeDefault);
  }
}

TEST(CostImp, MakesTheTypeDefaultButKeepsTheCellsForANegativeCount) {
  for (int const count : {-1, kMinInt}) {
    CostImp costs = Custom3();

    costs.SetDefault(CostImp::CostMatrixMain, count);

    EXPECT_EQ(costs.GetType(), CostTypeDefault);
    EXPECT_EQ(RowsOf(costs), kCustom3);
  }
}

TEST(CostImp, GrowsByTheDefaultPatternAfterItWasMadeSmaller) {
  CostImp costs = Custom3();
  costs.SetDefault(CostImp::CostMatrixMain, 1);

  costs.SetImp(0, 2, 8.0);

  EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 1.0, 8.0}, {1.0, 0.0, 1.0}, {1.0, 1.0, 0.0}}));
}

TEST(CostImp, FillsTheSecondaryMatrixAlone) {
  CostImp costs = Custom3();

  costs.SetDefault(CostImp::CostMatrixSecondary, 2);

  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixMain)), kCustom3);
  EXPECT_EQ(costs.GetNumClasses(), 3);
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, ResizesTheSecondaryMatrixByItsDefault) {
  CostImp costs = Custom3();
  TMatrix<double> const& main = costs.GetMatrix(CostImp::CostMatrixMain);

  costs.SetDefault(CostImp::CostMatrixSecondary, 3);
  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault3);
  costs.SetDefault(CostImp::CostMatrixSecondary, 2);
  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
  costs.SetDefault(CostImp::CostMatrixSecondary, -1);
  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
  costs.SetDefault(CostImp::CostMatrixSecondary, 0);
  EXPECT_EQ(&costs.GetMatrix(CostImp::CostMatrixSecondary), &main);
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, LeavesTheSecondaryMatrixAloneInEveryOtherOperation) {
  CostImp costs;
  costs.SetDefault(CostImp::CostMatrixSecondary, 2);

  costs.Set(0, 2, 5.0);
  costs.Resize(4);
  costs.Resize(1);
  costs.Set(CostTypeDefault);
  costs.SetDefault(CostImp::CostMatrixMain, 3);

  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
}

TEST(CostImp, TakesAnUnknownMatrixForTheMainOneButKeepsTheType) {
  for (int const other : {2, -1}) {
    SCOPED_TRACE(other);
    auto const matrix = static_cast<CostImp::CostMatrix>(other);
    CostImp costs = Custom3();
    costs.SetDefault(CostImp::CostMatrixSecondary, 2);

    EXPECT_EQ(&costs.GetMatrix(matrix), &costs.GetMatrix(CostImp::CostMatrixMain));
    EXPECT_FALSE(costs.IsDefaultMatrix(matrix));

    costs.SetDefault(matrix, 3);

    EXPECT_EQ(RowsOf(costs), kDefault3);
    EXPECT_EQ(costs.GetType(), CostTypeCustom);
  }
}

TEST(CostImp, ShowsTheMainMatrixForASecondaryOneWithoutRows) {
  CostImp costs = Custom3();

  EXPECT_EQ(&costs.GetMatrix(CostImp::CostMatrixSecondary),
            &costs.GetMatrix(CostImp::CostMatrixMain));

  costs.SetDefault(CostImp::CostMatrixSecondary, 1);

  EXPECT_NE(&costs.GetMatrix(CostImp::CostMatrixSecondary),
            &costs.GetMatrix(CostImp::CostMatrixMain));
  EXPECT_EQ(costs.GetMatrix(CostImp::CostMatrixSecondary).GetNumRows(), 1);
}

TEST(CostImp, CallsTheSecondaryMatrixDefaultWithoutALookAtAnyCell) {
  CostImp costs = Custom3();

  EXPECT_FALSE(costs.IsDefaultMatrix(CostImp::CostMatrixSecondary));  // looks at the main one

  costs.SetDefault(CostImp::CostMatrixSecondary, 1);

  EXPECT_TRUE(costs.IsDefaultMatrix(CostImp::CostMatrixSecondary));
  EXPECT_FALSE(costs.IsDefaultMatrix(CostImp::CostMatrixMain));
  EXPECT_FALSE(costs.IsDefault());
}

TEST(CostImp, KeepsTheCostsBetweenTheClassesThatStay) {
  CostImp costs = Custom3();

  costs.Resize(2);

  EXPECT_EQ(RowsOf(costs), (Rows{{0.0, 2.0}, {4.0, 0.0}}));
  EXPECT_EQ(costs.Get(2, 0), -1.0);
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, AddsClassesByTheDefaultPattern) {
  CostImp costs = Custom3();

  costs.Resize(4);

  EXPECT_EQ(
      RowsOf(costs),
      (Rows{
          {0.0, 2.0, 3.0, 1.0}, {4.0, 0.0, 5.0, 1.0}, {6.0, 7.0, 0.0, 1.0}, {1.0, 1.0, 1.0, 0.0}}));
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, ForgetsTheCostsOfDroppedClasses) {
  CostImp costs = Custom3();

  costs.Resize(1);
  costs.Resize(3);

  EXPECT_EQ(RowsOf(costs), kDefault3);
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, StaysDefaultWhenResizedFromNothing) {
  CostImp costs;

  costs.Resize(3);

  EXPECT_EQ(RowsOf(costs), kDefault3);
  EXPECT_EQ(costs.GetType(), CostTypeDefault);
}

TEST(CostImp, IgnoresSizesThatAreNoChangeOrNoSize) {
  for (int const count : {3, 0, -1, kMinInt}) {
    SCOPED_TRACE(count);
    CostImp costs = Custom3();

    costs.Resize(count);

    EXPECT_EQ(RowsOf(costs), kCustom3);
    EXPECT_EQ(costs.GetType(), CostTypeCustom);
  }
}

// Every way of copying, by name.
struct CopyOfCosts {
  char const* name;
  std::unique_ptr<CostImp> (*make)(CostImp const& source);
};
CopyOfCosts const kCopies[] = {
    {"copy constructor", [](CostImp const& source) { return std::make_unique<CostImp>(source); }},
    {"clone",
     [](CostImp const& source) {
       return std::unique_ptr<CostImp>(dynamic_cast<CostImp*>(source.Clone()));
     }},
    {"assignment over nothing",
     [](CostImp const& source) {
       auto copy = std::make_unique<CostImp>();
       EXPECT_EQ(&(*copy = source), copy.get());
       return copy;
     }},
    {"assignment over more",
     [](CostImp const& source) {
       auto copy = std::make_unique<CostImp>();
       copy->Set(0, 5, 9.0);
       copy->SetDefault(CostImp::CostMatrixSecondary, 7);
       EXPECT_EQ(&(*copy = source), copy.get());
       return copy;
     }},
};

TEST(CostImp, CopiesBothMatricesAndTheTypeDeeply) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    CostImp source = Custom3();
    source.SetDefault(CostImp::CostMatrixSecondary, 2);

    std::unique_ptr<CostImp> const copy = way.make(source);

    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(RowsOf(*copy), kCustom3);
    EXPECT_EQ(RowsOf(copy->GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
    EXPECT_EQ(copy->GetType(), CostTypeCustom);

    copy->Set(0, 1, 50.0);
    copy->SetDefault(CostImp::CostMatrixSecondary, 3);
    copy->Set(CostTypeDefault);

    EXPECT_EQ(RowsOf(source), kCustom3);
    EXPECT_EQ(RowsOf(source.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
    EXPECT_EQ(source.GetType(), CostTypeCustom);
  }
}

TEST(CostImp, CopiesEmptyCosts) {
  for (auto const& way : kCopies) {
    SCOPED_TRACE(way.name);
    CostImp const source;

    std::unique_ptr<CostImp> const copy = way.make(source);

    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetNumClasses(), 0);
    EXPECT_EQ(copy->GetMatrix(CostImp::CostMatrixSecondary).GetNumRows(), 0);
    EXPECT_EQ(copy->GetType(), CostTypeDefault);
  }
}

TEST(CostImp, GrowsACopyAsItsSource) {
  CostImp const source = Custom3();
  CostImp copy(source);

  copy.Resize(4);

  EXPECT_EQ(copy.Get(2, 1), 7.0);
  EXPECT_EQ(copy.Get(3, 1), 1.0);
  EXPECT_EQ(copy.Get(3, 3), 0.0);
}

TEST(CostImp, SurvivesAssignmentToItself) {
  CostImp costs = Custom3();
  costs.SetDefault(CostImp::CostMatrixSecondary, 2);
  CostImp const& same = costs;

  costs = same;

  EXPECT_EQ(RowsOf(costs), kCustom3);
  EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
  EXPECT_EQ(costs.GetType(), CostTypeCustom);
}

TEST(CostImp, RefusesGrowthThatCannotBeAllocatedAndStaysAsItWas) {
  CostImp costs;
  costs.SetDefault(CostImp::CostMatrixMain, 2);
  long const live = CountLiveAllocations();
  {
    FailingAllocator const failing(1, true);

    EXPECT_FALSE(costs.Set(0, 3, 5.0));
    EXPECT_FALSE(costs.SetImp(0, 3, 5.0));
  }

  EXPECT_EQ(RowsOf(costs), kDefault2);
  EXPECT_EQ(costs.GetType(), CostTypeDefault);
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(CostImp, StaysAsItWasWhenAResultlessOperationRunsOutOfMemory) {
  struct Operation {
    char const* name;
    void (*run)(CostImp& costs);
  };
  Operation const table[] = {
      {"grow", [](CostImp& costs) { costs.Resize(5); }},
      {"shrink", [](CostImp& costs) { costs.Resize(2); }},
      {"main default", [](CostImp& costs) { costs.SetDefault(CostImp::CostMatrixMain, 5); }},
      {"secondary default",
       [](CostImp& costs) { costs.SetDefault(CostImp::CostMatrixSecondary, 5); }},
  };
  for (auto const& operation : table) {
    SCOPED_TRACE(operation.name);
    CostImp costs = Custom3();
    costs.SetDefault(CostImp::CostMatrixSecondary, 2);
    {
      FailingAllocator const failing(1, true);

      EXPECT_THROW(operation.run(costs), std::bad_alloc);
    }

    EXPECT_EQ(RowsOf(costs), kCustom3);
    EXPECT_EQ(RowsOf(costs.GetMatrix(CostImp::CostMatrixSecondary)), kDefault2);
    EXPECT_EQ(costs.GetType(), CostTypeCustom);
  }
}

TEST(CostImp, GoesBackToTheDefaultMatrixWithoutAnyAllocation) {
  CostImp costs = Custom3();
  long const before = CountAllocations();

  costs.Set(CostTypeDefault);

  EXPECT_EQ(CountAllocations(), before);
}

TEST(CostImp, LosesNothingWhenACopyRunsOutOfMemory) {
  CostImp source = Custom3();
  source.SetDefault(CostImp::CostMatrixSecondary, 2);
  long const live = CountLiveAllocations();

  long const failures = WithEveryAllocationFailing([&source] { delete source.Clone(); });

  EXPECT_EQ(failures, 3);  // the object and its two matrices
  EXPECT_EQ(CountLiveAllocations(), live);
}

TEST(CostImp, KeepsTheTargetAsItWasWhenAssignmentRunsOutOfMemory) {
  CostImp source = Custom3();
  source.SetDefault(CostImp::CostMatrixSecondary, 2);
  for (long nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    CostImp target;
    target.Set(0, 1, 7.0);
    {
      FailingAllocator const failing(nth);

      EXPECT_THROW(target = source, std::bad_alloc);
    }

    EXPECT_EQ(RowsOf(target), (Rows{{0.0, 7.0}, {1.0, 0.0}}));
    EXPECT_EQ(target.GetMatrix(CostImp::CostMatrixSecondary).GetNumRows(), 2);  // the main one's
    EXPECT_EQ(target.GetType(), CostTypeCustom);
  }
}

#if TREE_HAS_SLOTS
TEST(CostImp, AddsNoVirtualOperation) {
  EXPECT_EQ(VirtualSlot(&CostImp::SetImp), -1);
  EXPECT_EQ(VirtualSlot(&CostImp::SetDefault), -1);
  EXPECT_EQ(VirtualSlot(&CostImp::IsDefaultMatrix), -1);
  EXPECT_EQ(VirtualSlot(&CostImp::GetMatrix), -1);
  EXPECT_EQ(VirtualSlot(&CostImp::Resize), -1);
}
#endif

}  // namespace
}  // namespace tree::testing
