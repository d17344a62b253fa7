#include "growing/sorted_cases.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

/// Sorts the slow way and compares.
void ExpectSorted(std::vector<double> const& values, std::vector<std::uint32_t> const& indexes) {
  Workers workers(1);
  workers.Begin();
  std::vector<std::uint32_t> expected(indexes);
  std::stable_sort(expected.begin(), expected.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });

  std::vector<SortedCase> const sorted = CaseSorter(workers).Sort(values.data(), indexes);

  ASSERT_EQ(sorted.size(), expected.size());
  for (std::size_t place = 0; place < sorted.size(); ++place) {
    ASSERT_EQ(sorted[place].Place(), expected[place]) << "at place " << place;
    bool const starts = place == 0 || values[expected[place]] != values[expected[place - 1]];
    ASSERT_EQ(sorted[place].StartsValue(), starts) << "at place " << place;
  }
}

void ExpectSorted(std::vector<double> const& values) {
  std::vector<std::uint32_t> indexes(values.size());
  std::iota(indexes.begin(), indexes.end(), 0U);
  ExpectSorted(values, indexes);
}

TEST(SortedCase, KeepsPlaceAndStart) {
  SortedCase const last(SortedCase::kMaxPlace, true);
  SortedCase const first(0, false);

  EXPECT_EQ(last.Place(), SortedCase::kMaxPlace);
  EXPECT_TRUE(last.StartsValue());
  EXPECT_EQ(first.Place(), 0U);
  EXPECT_FALSE(first.StartsValue());
}

TEST(CaseSorter, SortsByValueAndThenByIndex) {
  Workers workers(1);
  workers.Begin();
  std::vector<double> const values = {5.0, 1.0, 5.0, -2.0, 1.0};

  std::vector<SortedCase> const sorted = CaseSorter(workers).Sort(values.data(), {0, 1, 2, 3, 4});

  std::vector<std::uint32_t> places;
  std::vector<bool> starts;
  for (SortedCase const item : sorted) {
    places.push_back(item.Place());
    starts.push_back(item.StartsValue());
  }
  EXPECT_THAT(places, testing::ElementsAre(3, 1, 4, 0, 2));
  EXPECT_THAT(starts, testing::ElementsAre(true, true, false, true, false));
}

TEST(CaseSorter, LeavesOutCasesThatAreNotListed) {
  ExpectSorted({5.0, 1.0, 5.0, -2.0, 1.0}, {0, 2, 4});
  ExpectSorted({5.0, 1.0, 5.0, -2.0, 1.0}, {3});
  ExpectSorted({5.0, 1.0, 5.0, -2.0, 1.0}, {});
}

TEST(CaseSorter, SortsSpecialValues) {
  struct {
    char const* name;
    std::vector<double> values;
  } const kRows[] = {
      {"no values", {}},
      {"all equal", {3.0, 3.0, 3.0}},
      {"zeros of both signs", {0.0, -0.0, 0.0, -0.0}},
      {"zeros among others", {1.0, 0.0, -0.0, -1.0, 0.0, -0.0}},
      {"infinities alone", {kInfinity, -kInfinity, kInfinity, -kInfinity}},
      {"one infinity", {kInfinity}},
      {"infinities around one value", {kInfinity, 2.0, -kInfinity, 2.0}},
      {"infinities around values", {2.0, kInfinity, 1.0, -kInfinity, 3.0, 2.0}},
      {"infinities beside the largest", {kInfinity, kLargest, -kInfinity, -kLargest, 0.0}},
      {"the whole range", {kLargest, -kLargest, 0.0, 1.0, -1.0, kLargest / 2.0}},
      {"denormals", {kSmallest, 0.0, -kSmallest, 3.0 * kSmallest, 2.0 * kSmallest}},
      {"the two smallest", {kSmallest, 0.0, kSmallest, 0.0}},
      {"neighbours", {1.0, std::nextafter(1.0, 2.0), std::nextafter(1.0, 0.0), 1.0}},
      {"denormals beside the largest", {kSmallest, kLargest, 0.0, -kSmallest}},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    ExpectSorted(row.values);
  }
}

TEST(CaseSorter, SortsAsASlowerSortDoes) {
  struct {
    char const* name;
    std::function<double(RandomNumbers&)> draw;
  } const kRows[] = {
      {"uniform", [](RandomNumbers& random) { return random.Below(1U << 31) / 7.0; }},
      {"few values", [](RandomNumbers& random) { return random.Below(5) - 2.0; }},
      {"clusters",
       [](RandomNumbers& random) {
         return std::ldexp(1.0, static_cast<int>(random.Below(8)) * 100) +
                random.Below(1000) * 1e-10;
       }},
      {"clusters of neighbours",
       [](RandomNumbers& random) {
         return random.Below(2) * 1e9 + random.Below(1000) * std::ldexp(1.0, -40);
       }},
      {"all sizes",
       [](RandomNumbers& random) {
         double const sign = random.Below(2) == 0 ? 1.0 : -1.0;
         return sign *
                std::ldexp(1.0 + random.Below(8), static_cast<int>(random.Below(2096)) - 1074);
       }},
      {"with infinities",
       [](RandomNumbers& random) {
         std::uint32_t const kind = random.Below(10);
         return kind == 0 ? kInfinity : kind == 1 ? -kInfinity : random.Below(100) / 3.0;
       }},
      {"denormals", [](RandomNumbers& random) { return random.Below(300) * kSmallest; }},
      {"ever more towards zero",
       [](RandomNumbers& random) {
         return std::ldexp(1.0 + random.Below(1U << 31) / 2147483648.0,
                           -static_cast<int>(random.Below(45)));
       }},
      {"most in a corner of the range",
       [](RandomNumbers& random) {
         return random.Below(500) == 0 ? 1e6 : random.Below(1U << 31) / 1e9;
       }},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
      SCOPED_TRACE(seed);
      RandomNumbers random(seed);
      std::vector<double> values(random.Below(3000));
      for (double& value : values) value = row.draw(random);
      std::vector<std::uint32_t> indexes;
      for (std::uint32_t index = 0; index < values.size(); ++index) {
        if (random.Below(5) != 0) indexes.push_back(index);
      }
      ExpectSorted(values, indexes);
      if (HasFatalFailure()) return;
    }
  }
}

TEST(CaseSorter, SortsOneListAfterTheOther) {
  Workers workers(1);
  workers.Begin();
  CaseSorter sorter(workers);
  RandomNumbers random(5);
  for (std::uint32_t const size : {2000U, 10U, 0U, 3000U, 1U}) {
    std::vector<double> values(size);
    for (double& value : values) value = random.Below(1000) / 7.0;
    std::vector<std::uint32_t> indexes(size);
    std::iota(indexes.begin(), indexes.end(), 0U);

    std::vector<SortedCase> const sorted = sorter.Sort(values.data(), indexes);

    std::stable_sort(indexes.begin(), indexes.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });
    ASSERT_EQ(sorted.size(), size);
    for (std::size_t place = 0; place < size; ++place) {
      ASSERT_EQ(sorted[place].Place(), indexes[place]) << "at place " << place << " of " << size;
    }
  }
}

TEST(CutBetween, IsTheMeanOfTheNeighbours) {
  EXPECT_EQ(CutBetween(1.0, 2.0), 1.5);
  EXPECT_EQ(CutBetween(-3.0, 1.0), -1.0);
}

TEST(CutBetween, PartsAllNeighbours) {
  struct {
    char const* name;
    double lower;
    double upper;
  } const kRows[] = {
      {"no number between", 1.0, std::nextafter(1.0, 2.0)},
      {"no number between, below zero", std::nextafter(-1.0, -2.0), -1.0},
      {"the smallest number", 0.0, kSmallest},
      {"below the smallest number", -kSmallest, 0.0},
      {"denormals", kSmallest, 2.0 * kSmallest},
      {"odd denormals", 3.0 * kSmallest, 5.0 * kSmallest},
      {"the whole range", -kLargest, kLargest},
      {"the largest", std::nextafter(kLargest, 0.0), kLargest},
      {"up to infinity", 7.0, kInfinity},
      {"from infinity", -kInfinity, 7.0},
      {"between infinities", -kInfinity, kInfinity},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);

    double const cut = CutBetween(row.lower, row.upper);

    EXPECT_LE(row.lower, cut);
    EXPECT_LT(cut, row.upper);
  }
}

}  // namespace
}  // namespace tree::grow
