#include "growing/ranked_predictor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {

bool operator==(RankedCase const& a, RankedCase const& b) {
  return a.rank == b.rank && a.index == b.index;
}
void PrintTo(RankedCase const& item, std::ostream* stream) {
  *stream << "{rank " << item.rank << ", index " << item.index << '}';
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
double const kMissing = systemMissingValue();

RankedPredictor Rank(std::vector<double> const& values) {
  Column const column{{}, values.data()};
  std::vector<std::size_t> rows(values.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return RankCases(column, rows);
}

TEST(RankCases, OrdersCasesByValueAndThenByIndex) {
  RankedPredictor const ranked = Rank({3.0, 1.0, 2.0, 1.0, 3.0});

  EXPECT_THAT(ranked.values, ElementsAre(1.0, 2.0, 3.0));
  EXPECT_THAT(ranked.cases, ElementsAre(RankedCase{0, 1}, RankedCase{0, 3}, RankedCase{1, 2},
                                        RankedCase{2, 0}, RankedCase{2, 4}));
}

TEST(RankCases, LeavesOutMissingValues) {
  RankedPredictor const ranked = Rank({kMissing, 7.0, kMissing});

  EXPECT_THAT(ranked.values, ElementsAre(7.0));
  EXPECT_THAT(ranked.cases, ElementsAre(RankedCase{0, 1}));
}

TEST(RankCases, HasNothingToRankWithoutValues) {
  EXPECT_THAT(Rank({}).cases, IsEmpty());
  EXPECT_THAT(Rank({kMissing, kMissing}).values, IsEmpty());
}

TEST(RankCases, LooksAtTheRowsOfTheSampleOnly) {
  std::vector<double> const values = {9.0, 5.0, 8.0, 4.0};
  Column const column{{}, values.data()};

  RankedPredictor const ranked = RankCases(column, {1, 3});

  EXPECT_THAT(ranked.values, ElementsAre(4.0, 5.0));
  EXPECT_THAT(ranked.cases, ElementsAre(RankedCase{0, 1}, RankedCase{1, 0}));
}

TEST(RankCases, OrdersNumbersOfEverySignAndSize) {
  std::vector<double> const ascending = {-kInfinity, -1e308, -1.5, -1.0, -1e-300, -kSmallest, 0.0,
                                         kSmallest,  1e-300, 1.0,  1.5,  1e308,   kInfinity};
  std::vector<double> const descending(ascending.rbegin(), ascending.rend());

  EXPECT_EQ(Rank(ascending).values, ascending);
  EXPECT_EQ(Rank(descending).values, ascending);
}

TEST(RankCases, TakesZerosOfEitherSignForOneValue) {
  RankedPredictor const ranked = Rank({0.0, -0.0, 0.0});

  EXPECT_THAT(ranked.values, ElementsAre(0.0));
  EXPECT_FALSE(std::signbit(ranked.values[0]));
  EXPECT_THAT(ranked.cases, ElementsAre(RankedCase{0, 0}, RankedCase{0, 1}, RankedCase{0, 2}));
}

TEST(RankCases, TellsValuesApartThatDifferInTheirLastBit) {
  double const next = std::nextafter(1.0, 2.0);

  RankedPredictor const ranked = Rank({next, 1.0, next, 1.0});

  EXPECT_THAT(ranked.values, ElementsAre(1.0, next));
  EXPECT_THAT(ranked.cases,
              ElementsAre(RankedCase{0, 1}, RankedCase{0, 3}, RankedCase{1, 0}, RankedCase{1, 2}));
}

TEST(RankCases, OrdersLikeASlowStableSort) {
  std::uint32_t const seed = 20261121;
  SCOPED_TRACE(seed);
  RandomNumbers random(seed);
  for (std::uint32_t const numDistinct : {1U, 5U, 1000U, 1'000'000U}) {
    SCOPED_TRACE(numDistinct);
    std::vector<double> values(5000);
    for (double& value : values) {
      value = std::ldexp(random.Below(numDistinct) - 300.0, static_cast<int>(random.Below(3)) * 20);
      if (random.Below(7) == 0) value = kMissing;
    }
    std::vector<std::uint32_t> expected;
    for (std::uint32_t index = 0; index < values.size(); ++index) {
      if (values[index] != kMissing) expected.push_back(index);
    }
    std::stable_sort(expected.begin(), expected.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return values[a] < values[b]; });

    RankedPredictor const ranked = Rank(values);

    ASSERT_EQ(ranked.cases.size(), expected.size());
    for (std::size_t place = 0; place < expected.size(); ++place) {
      ASSERT_EQ(ranked.cases[place].index, expected[place]);
      ASSERT_EQ(ranked.values[ranked.cases[place].rank], values[expected[place]]);
    }
    EXPECT_TRUE(std::is_sorted(ranked.values.begin(), ranked.values.end(), std::less_equal<>()))
        << "strictly ascending";
  }
}

TEST(CutBetween, LiesInTheMiddle) {
  EXPECT_EQ(CutBetween(1.0, 2.0), 1.5);
  EXPECT_EQ(CutBetween(-3.0, 1.0), -1.0);
  EXPECT_EQ(CutBetween(1e308, 1.5e308), 1.25e308);
}

TEST(CutBetween, AlwaysSeparatesTheValues) {
  struct Case {
    char const* name;
    double lower;
    double upper;
  };
  for (Case const& row :
       {Case{"neighbours", 1.0, std::nextafter(1.0, 2.0)}, Case{"smallest", 0.0, kSmallest},
        Case{"two smallest", kSmallest, 2 * kSmallest}, Case{"from -infinity", -kInfinity, 0.0},
        Case{"to infinity", 0.0, kInfinity}, Case{"both infinite", -kInfinity, kInfinity},
        Case{"the whole range", -1.7e308, 1.7e308}}) {
    SCOPED_TRACE(row.name);
    double const cut = CutBetween(row.lower, row.upper);

    EXPECT_LE(row.lower, cut);
    EXPECT_LT(cut, row.upper);
  }
}

}  // namespace
}  // namespace tree::grow
