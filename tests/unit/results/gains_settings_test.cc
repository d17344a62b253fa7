#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <utility>

#include "testing/failing_allocator.h"
#include "tree/results.h"

// `GainsSettingsImp` and its handle `GainsSettings` offer the same operations, so most tests here
// run for both.

namespace tree {
namespace {

static_assert(SortAscending == 0);
static_assert(SortDescending == 1);
static_assert(PercentileIncrement1 == 1);
static_assert(PercentileIncrement2 == 2);
static_assert(PercentileIncrement5 == 5);
static_assert(PercentileIncrement10 == 10);
static_assert(PercentileIncrement20 == 20);
static_assert(PercentileIncrement25 == 25);
static_assert(std::is_same_v<std::underlying_type_t<SortOrder>, int>);
static_assert(std::is_same_v<std::underlying_type_t<PercentileIncrement>, int>);
static_assert(!std::is_polymorphic_v<GainsSettingsImp>);
static_assert(!std::is_polymorphic_v<GainsSettings>);
static_assert(sizeof(GainsSettings) == sizeof(GainsSettingsImp*));

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

template <class Settings>
class AnyGainsSettings : public ::testing::Test {};

class NamesOfSettings {
 public:
  template <class Settings>
  static std::string GetName(int /*index*/) {
    return std::is_same_v<Settings, GainsSettings> ? "GainsSettings" : "GainsSettingsImp";
  }
};

using BothClasses = ::testing::Types<GainsSettingsImp, GainsSettings>;
TYPED_TEST_SUITE(AnyGainsSettings, BothClasses, NamesOfSettings);

// Settings that differ from the default in every field but the flags, and take profits.
template <class Settings>
Settings TakingProfits() {
  Settings settings;
  settings.SetTargetCategory(2);
  settings.SetPercentileIncrement(PercentileIncrement25);
  settings.SetSortOrder(SortAscending);
  settings.SetDataSample(TestSample);
  settings.SetSortKey(TestSample);
  settings.DoCategoryExpense(1, 3.0);
  settings.SetCategoryProfit(0, 10.0);
  return settings;
}

template <class Settings>
void ExpectFieldsOfTakingProfits(Settings const& settings) {
  EXPECT_EQ(settings.GetTargetCategory(), 2);
  EXPECT_EQ(settings.GetPercentileIncrement(), PercentileIncrement25);
  EXPECT_EQ(settings.GetSortOrder(), SortAscending);
  EXPECT_EQ(settings.GetDataSample(), TestSample);
  EXPECT_EQ(settings.GetSortKey(), TestSample);
  EXPECT_FALSE(settings.HasCumulativeStatistics());
  EXPECT_FALSE(settings.HasPercentileStatistics());
  EXPECT_EQ(settings.GetNumCategories(), 2);
  EXPECT_EQ(settings.GetCategoryRevenue(0), 10.0);
  EXPECT_EQ(settings.GetCategoryRevenue(1), 0.0);
  EXPECT_EQ(settings.GetCategoryExpense(0), 0.0);
  EXPECT_EQ(settings.GetCategoryExpense(1), 3.0);
}

// Settings that take revenues and expenses.
template <class Settings>
Settings TakingRevenues() {
  Settings settings;
  settings.SetCategoryRevenue(0, 10.0);
  return settings;
}

template <class Settings>
bool TakesProfitsNow(Settings& settings) {
  double const before = settings.GetCategoryProfit(0);
  settings.SetCategoryProfit(0, before + 1.0);
  return settings.GetCategoryProfit(0) != before;
}

template <class Settings>
bool TakesRevenuesNow(Settings& settings) {
  double const before = settings.GetCategoryRevenue(0);
  settings.SetCategoryRevenue(0, before + 1.0);
  return settings.GetCategoryRevenue(0) != before;
}

template <class Settings>
bool TakesExpensesNow(Settings& settings) {
  double const before = settings.GetCategoryExpense(0);
  settings.SetCategoryExpense(0, before + 1.0);
  return settings.GetCategoryExpense(0) != before;
}

// --- Fields ---------------------------------------------------------------------------------

TYPED_TEST(AnyGainsSettings, StartsWithItsDefaults) {
  TypeParam const settings;

  EXPECT_FALSE(settings.HasCumulativeStatistics());
  EXPECT_FALSE(settings.HasPercentileStatistics());
  EXPECT_EQ(settings.GetTargetCategory(), -1);
  EXPECT_TRUE(settings.HasAverageBasedStatistics());
  EXPECT_EQ(static_cast<int>(settings.GetPercentileIncrement()), 10);
  EXPECT_EQ(static_cast<int>(settings.GetSortOrder()), 1);
  EXPECT_EQ(settings.GetDataSample(), TrainingSample);
  EXPECT_EQ(settings.GetSortKey(), TrainingSample);
  EXPECT_EQ(settings.GetNumCategories(), 0);
}

TYPED_TEST(AnyGainsSettings, StoresAnyValueOfItsFields) {
  TypeParam settings;

  settings.SetTargetCategory(-7);
  settings.SetPercentileIncrement(static_cast<PercentileIncrement>(33));
  settings.SetSortOrder(static_cast<SortOrder>(-3));
  settings.SetDataSample(static_cast<DataSample>(8));
  settings.SetSortKey(static_cast<DataSample>(9));

  EXPECT_EQ(settings.GetTargetCategory(), -7);
  EXPECT_EQ(static_cast<int>(settings.GetPercentileIncrement()), 33);
  EXPECT_EQ(static_cast<int>(settings.GetSortOrder()), -3);
  EXPECT_EQ(static_cast<int>(settings.GetDataSample()), 8);
  EXPECT_EQ(static_cast<int>(settings.GetSortKey()), 9);
}

TYPED_TEST(AnyGainsSettings, IsAverageBasedBelowTargetCategoryZero) {
  struct {
    int category;
    bool averageBased;
  } const rows[] = {{std::numeric_limits<int>::min(), true},
                    {-1, true},
                    {0, false},
                    {1, false},
                    {std::numeric_limits<int>::max(), false}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.category);
    TypeParam settings;

    settings.SetTargetCategory(row.category);

    EXPECT_EQ(settings.HasAverageBasedStatistics(), row.averageBased);
  }
}

TYPED_TEST(AnyGainsSettings, EndsPercentilesWhenCumulativeStatisticsBegin) {
  TypeParam settings;
  settings.SetHasPercentileStatistics(true);

  settings.SetHasCumulativeStatistics(true);

  EXPECT_TRUE(settings.HasCumulativeStatistics());
  EXPECT_FALSE(settings.HasPercentileStatistics());
}

TYPED_TEST(AnyGainsSettings, EndsCumulativeStatisticsWhenPercentilesBegin) {
  TypeParam settings;
  settings.SetHasCumulativeStatistics(true);

  settings.SetHasPercentileStatistics(true);

  EXPECT_FALSE(settings.HasCumulativeStatistics());
  EXPECT_TRUE(settings.HasPercentileStatistics());
}

TYPED_TEST(AnyGainsSettings, LeavesTheOtherFlagWhenOneIsCleared) {
  TypeParam cumulative;
  cumulative.SetHasCumulativeStatistics(true);
  TypeParam percentile;
  percentile.SetHasPercentileStatistics(true);

  cumulative.SetHasPercentileStatistics(false);
  percentile.SetHasCumulativeStatistics(false);

  EXPECT_TRUE(cumulative.HasCumulativeStatistics());
  EXPECT_FALSE(cumulative.HasPercentileStatistics());
  EXPECT_TRUE(percentile.HasPercentileStatistics());
  EXPECT_FALSE(percentile.HasCumulativeStatistics());
}

TYPED_TEST(AnyGainsSettings, ClearsEachFlag) {
  TypeParam settings;

  settings.SetHasCumulativeStatistics(true);
  settings.SetHasCumulativeStatistics(false);
  EXPECT_FALSE(settings.HasCumulativeStatistics());

  settings.SetHasPercentileStatistics(true);
  settings.SetHasPercentileStatistics(false);
  EXPECT_FALSE(settings.HasPercentileStatistics());
  EXPECT_FALSE(settings.HasCumulativeStatistics());
}

// --- Money ----------------------------------------------------------------------------------

TYPED_TEST(AnyGainsSettings, StoresAProfitAsRevenueWithoutExpense) {
  TypeParam settings;

  settings.SetCategoryProfit(2, 50.0);

  EXPECT_EQ(settings.GetNumCategories(), 3);
  EXPECT_EQ(settings.GetCategoryRevenue(0), 0.0);
  EXPECT_EQ(settings.GetCategoryRevenue(1), 0.0);
  EXPECT_EQ(settings.GetCategoryRevenue(2), 50.0);
  for (int category = 0; category < 3; ++category) {
    EXPECT_EQ(settings.GetCategoryExpense(category), 0.0) << category;
  }
  EXPECT_EQ(settings.GetCategoryProfit(2), 50.0);
  settings.SetCategoryRevenue(0, 10.0);
  EXPECT_EQ(settings.GetCategoryRevenue(0), 0.0);
}

TYPED_TEST(AnyGainsSettings, TakesRevenuesAndExpensesOfDifferentCategories) {
  TypeParam settings;

  settings.SetCategoryRevenue(1, 8.0);
  settings.SetCategoryExpense(3, 2.0);

  EXPECT_EQ(settings.GetNumCategories(), 4);
  EXPECT_EQ(settings.GetCategoryProfit(0), 0.0);
  EXPECT_EQ(settings.GetCategoryProfit(1), 8.0);
  EXPECT_EQ(settings.GetCategoryProfit(2), 0.0);
  EXPECT_EQ(settings.GetCategoryProfit(3), -2.0);
  settings.SetCategoryProfit(0, 99.0);
  EXPECT_EQ(settings.GetCategoryProfit(0), 0.0);
}

TYPED_TEST(AnyGainsSettings, SubtractsExpenseFromRevenue) {
  TypeParam settings;
  settings.SetCategoryRevenue(0, 8.0);
  settings.SetCategoryExpense(0, 3.0);

  EXPECT_EQ(settings.GetCategoryProfit(0), 5.0);
}

TYPED_TEST(AnyGainsSettings, StoresAnyAmount) {
  TypeParam settings;

  settings.SetCategoryRevenue(0, -4.0);
  settings.SetCategoryExpense(0, kNaN);

  EXPECT_EQ(settings.GetCategoryRevenue(0), -4.0);
  EXPECT_NE(settings.GetCategoryExpense(0), settings.GetCategoryExpense(0));
}

TYPED_TEST(AnyGainsSettings, CountsTheLongerOfRevenuesAndExpenses) {
  TypeParam moreRevenues;
  moreRevenues.SetCategoryRevenue(4, 1.0);
  moreRevenues.SetCategoryExpense(1, 1.0);
  TypeParam moreExpenses;
  moreExpenses.SetCategoryExpense(4, 1.0);
  moreExpenses.SetCategoryRevenue(1, 1.0);

  EXPECT_EQ(moreRevenues.GetNumCategories(), 5);
  EXPECT_EQ(moreExpenses.GetNumCategories(), 5);
}

TYPED_TEST(AnyGainsSettings, HasNoMoneyInCategoriesOutOfRange) {
  TypeParam settings;
  settings.SetCategoryRevenue(1, 8.0);
  settings.SetCategoryExpense(1, 2.0);

  for (int const category :
       {-1, 2, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    SCOPED_TRACE(category);
    EXPECT_EQ(settings.GetCategoryRevenue(category), 0.0);
    EXPECT_EQ(settings.GetCategoryExpense(category), 0.0);
    EXPECT_EQ(settings.GetCategoryProfit(category), 0.0);
  }
}

TYPED_TEST(AnyGainsSettings, KeepsLaterCategoriesWhenAnEarlierOneIsSet) {
  TypeParam settings;
  settings.SetCategoryRevenue(3, 8.0);

  settings.SetCategoryRevenue(1, 4.0);

  EXPECT_EQ(settings.GetNumCategories(), 4);
  EXPECT_EQ(settings.GetCategoryRevenue(3), 8.0);
  EXPECT_EQ(settings.GetCategoryRevenue(1), 4.0);
}

TYPED_TEST(AnyGainsSettings, TakesWhatItsFirstSetterSays) {
  enum Setter { Revenue, Expense, Profit };
  struct {
    char const* name;
    Setter first;
    Setter second;
    bool taken;
  } const rows[] = {
      {"revenue, revenue", Revenue, Revenue, true}, {"revenue, expense", Revenue, Expense, true},
      {"revenue, profit", Revenue, Profit, false},  {"expense, revenue", Expense, Revenue, true},
      {"expense, expense", Expense, Expense, true}, {"expense, profit", Expense, Profit, false},
      {"profit, revenue", Profit, Revenue, false},  {"profit, expense", Profit, Expense, false},
      {"profit, profit", Profit, Profit, true},
  };
  auto const set = [](TypeParam& settings, Setter setter, double value) {
    if (setter == Revenue) settings.SetCategoryRevenue(0, value);
    if (setter == Expense) settings.SetCategoryExpense(0, value);
    if (setter == Profit) settings.SetCategoryProfit(0, value);
  };
  auto const get = [](TypeParam const& settings, Setter setter) {
    if (setter == Revenue) return settings.GetCategoryRevenue(0);
    if (setter == Expense) return settings.GetCategoryExpense(0);
    return settings.GetCategoryProfit(0);
  };

  for (auto const& row : rows) {
    SCOPED_TRACE(row.name);
    TypeParam settings;
    set(settings, row.first, 5.0);
    double const before = get(settings, row.second);

    set(settings, row.second, 123.0);

    EXPECT_EQ(get(settings, row.second), row.taken ? 123.0 : before);
  }
}

TYPED_TEST(AnyGainsSettings, IgnoresEverythingAboutASetterOfTheOtherKind) {
  TypeParam profits;
  profits.SetCategoryProfit(0, 5.0);
  TypeParam revenues;
  revenues.SetCategoryRevenue(0, 5.0);

  profits.SetCategoryRevenue(7, 1.0);
  profits.SetCategoryExpense(7, 1.0);
  revenues.SetCategoryProfit(7, 1.0);

  EXPECT_EQ(profits.GetNumCategories(), 1);
  EXPECT_EQ(revenues.GetNumCategories(), 1);
  EXPECT_TRUE(TakesProfitsNow(profits));
  EXPECT_TRUE(TakesRevenuesNow(revenues));
  EXPECT_TRUE(TakesExpensesNow(revenues));
}

TYPED_TEST(AnyGainsSettings, TakesNoOtherKindEvenAfterAnAmountOfZero) {
  TypeParam settings;

  settings.SetCategoryRevenue(0, 0.0);

  EXPECT_FALSE(TakesProfitsNow(settings));
}

TYPED_TEST(AnyGainsSettings, ClearsAnEarlierExpenseWhenAProfitIsSet) {
  TypeParam settings;
  settings.DoCategoryExpense(0, 5.0);

  settings.SetCategoryProfit(0, 10.0);

  EXPECT_EQ(settings.GetCategoryExpense(0), 0.0);
  EXPECT_EQ(settings.GetCategoryProfit(0), 10.0);
}

TYPED_TEST(AnyGainsSettings, StoresDirectlyWhateverItTakes) {
  TypeParam profits;
  profits.SetCategoryProfit(0, 5.0);
  TypeParam revenues;
  revenues.SetCategoryRevenue(0, 5.0);

  for (TypeParam* const settings : {&profits, &revenues}) {
    settings->DoCategoryRevenue(2, 8.0);
    settings->DoCategoryExpense(3, 6.0);

    EXPECT_EQ(settings->GetNumCategories(), 4);
    EXPECT_EQ(settings->GetCategoryRevenue(1), 0.0);
    EXPECT_EQ(settings->GetCategoryRevenue(2), 8.0);
    EXPECT_EQ(settings->GetCategoryExpense(2), 0.0);
    EXPECT_EQ(settings->GetCategoryExpense(3), 6.0);
  }
}

TYPED_TEST(AnyGainsSettings, ChoosesNothingByStoringDirectly) {
  TypeParam profits;
  TypeParam revenues;
  for (TypeParam* const settings : {&profits, &revenues}) {
    settings->DoCategoryRevenue(0, 8.0);
    settings->DoCategoryExpense(0, 6.0);
  }

  EXPECT_TRUE(TakesProfitsNow(profits));
  EXPECT_TRUE(TakesRevenuesNow(revenues));
}

TYPED_TEST(AnyGainsSettings, ShrinksNothingByStoringDirectly) {
  TypeParam settings;
  settings.DoCategoryRevenue(4, 1.0);

  settings.DoCategoryRevenue(0, 2.0);

  EXPECT_EQ(settings.GetNumCategories(), 5);
  EXPECT_EQ(settings.GetCategoryRevenue(4), 1.0);
}

// --- Copies ---------------------------------------------------------------------------------

TYPED_TEST(AnyGainsSettings, CopiesEveryFieldAndBothLists) {
  TypeParam const settings = TakingProfits<TypeParam>();

  TypeParam const copied(settings);
  TypeParam assigned;
  assigned.SetHasPercentileStatistics(true);
  assigned.DoCategoryRevenue(9, 9.0);
  assigned.DoCategoryExpense(9, 9.0);
  assigned = settings;

  ExpectFieldsOfTakingProfits(copied);
  ExpectFieldsOfTakingProfits(assigned);
}

TYPED_TEST(AnyGainsSettings, CopiesBothFlags) {
  TypeParam cumulative;
  cumulative.SetHasCumulativeStatistics(true);
  TypeParam percentile;
  percentile.SetHasPercentileStatistics(true);

  TypeParam const copied(cumulative);
  EXPECT_TRUE(copied.HasCumulativeStatistics());
  EXPECT_FALSE(copied.HasPercentileStatistics());

  TypeParam assigned(cumulative);
  assigned = percentile;
  EXPECT_FALSE(assigned.HasCumulativeStatistics());
  EXPECT_TRUE(assigned.HasPercentileStatistics());
}

TYPED_TEST(AnyGainsSettings, MayChooseAgainAfterACopy) {
  TypeParam const profits = TakingProfits<TypeParam>();
  TypeParam const revenues = TakingRevenues<TypeParam>();

  TypeParam copyOfProfits(profits);
  TypeParam copyOfRevenues(revenues);
  TypeParam assignedProfits;
  assignedProfits = profits;
  TypeParam assignedRevenues;
  assignedRevenues = revenues;

  EXPECT_TRUE(TakesRevenuesNow(copyOfProfits));
  EXPECT_TRUE(TakesProfitsNow(copyOfRevenues));
  EXPECT_TRUE(TakesRevenuesNow(assignedProfits));
  EXPECT_TRUE(TakesProfitsNow(assignedRevenues));
}

TYPED_TEST(AnyGainsSettings, MayChooseAgainAfterSomethingIsAssignedToIt) {
  TypeParam profits = TakingProfits<TypeParam>();
  TypeParam revenues = TakingRevenues<TypeParam>();
  TypeParam const otherProfits = TakingProfits<TypeParam>();

  profits = TypeParam();
  revenues = otherProfits;

  EXPECT_TRUE(TakesExpensesNow(profits));
  EXPECT_TRUE(TakesExpensesNow(revenues));
}

TYPED_TEST(AnyGainsSettings, StillTakesTheSameAfterBeingCopied) {
  TypeParam settings = TypeParam();
  settings.SetCategoryProfit(0, 1.0);

  TypeParam const copy(settings);

  EXPECT_FALSE(TakesRevenuesNow(settings));
}

TYPED_TEST(AnyGainsSettings, DoesNothingWhenAssignedToItself) {
  TypeParam settings;
  settings.SetCategoryProfit(0, 10.0);
  TypeParam const& same = settings;

  settings = same;

  EXPECT_EQ(settings.GetCategoryProfit(0), 10.0);
  EXPECT_FALSE(TakesRevenuesNow(settings));
  EXPECT_FALSE(TakesExpensesNow(settings));
  EXPECT_TRUE(TakesProfitsNow(settings));
}

TYPED_TEST(AnyGainsSettings, IsIndependentOfItsCopies) {
  TypeParam settings = TakingProfits<TypeParam>();
  TypeParam const copied(settings);
  TypeParam assigned;
  assigned = settings;

  settings.SetTargetCategory(99);
  settings.DoCategoryRevenue(0, 99.0);
  settings.DoCategoryExpense(5, 99.0);

  ExpectFieldsOfTakingProfits(copied);
  ExpectFieldsOfTakingProfits(assigned);
}

TYPED_TEST(AnyGainsSettings, ReturnsItselfFromAnAssignment) {
  TypeParam settings;
  TypeParam const other;

  EXPECT_EQ(&(settings = other), &settings);
}

// --- Failure --------------------------------------------------------------------------------

// A copy that is complete before anything is destroyed leaves the old values when it fails.
TYPED_TEST(AnyGainsSettings, KeepsItsValuesWhenMemoryRunsOutInAnAssignment) {
  TypeParam other;
  other.DoCategoryRevenue(20, 1.0);
  other.DoCategoryExpense(20, 1.0);
  long const liveBefore = testing::CountLiveAllocations();

  long const numFailures = testing::WithEveryAllocationFailing([&] {
    TypeParam settings = TakingProfits<TypeParam>();
    bool hasFailed = false;
    try {
      settings = other;
    } catch (std::bad_alloc const&) {
      hasFailed = true;
    }
    if (!hasFailed) return;
    ExpectFieldsOfTakingProfits(settings);
    throw std::bad_alloc();
  });

  EXPECT_GE(numFailures, 2);
  EXPECT_EQ(testing::CountLiveAllocations(), liveBefore);
}

TYPED_TEST(AnyGainsSettings, StaysAsItWasWhenMemoryRunsOutForARevenue) {
  long const numFailures = testing::WithEveryAllocationFailing([] {
    TypeParam settings;
    try {
      settings.SetCategoryRevenue(3, 1.0);
    } catch (std::bad_alloc const&) {
      EXPECT_EQ(settings.GetNumCategories(), 0);
      EXPECT_TRUE(TakesProfitsNow(settings));
      throw;
    }
  });

  EXPECT_GT(numFailures, 0);
}

#ifndef NDEBUG
TYPED_TEST(AnyGainsSettings, StopsADebugBuildAtANegativeCategory) {
  TypeParam settings;

  EXPECT_DEATH(settings.DoCategoryRevenue(-1, 1.0), "DoCategoryRevenue.*index -1 ");
  EXPECT_DEATH(settings.DoCategoryExpense(-2, 1.0), "DoCategoryExpense.*index -2 ");
  EXPECT_DEATH(settings.SetCategoryRevenue(-3, 1.0), "Revenue.*index -3 ");
  EXPECT_DEATH(settings.SetCategoryExpense(-4, 1.0), "Expense.*index -4 ");
  EXPECT_DEATH(settings.SetCategoryProfit(-5, 1.0), "GainsSettingsImp.*index -5 ");
}
#endif

}  // namespace
}  // namespace tree
