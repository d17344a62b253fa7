#include "association/number_sums.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

TEST(NumberSums, AddsUpWeightedCases) {
  NumberSums sums;

  sums.AddCase(2, 3, -5);
  sums.AddCase(1, 10, 7);

  EXPECT_EQ(sums.size, 3);
  EXPECT_EQ(sums.weight, 13);
  EXPECT_TRUE(sums.sum == -15 + 70);
  EXPECT_TRUE(sums.squares == 75 + 490);
}

TEST(NumberSums, TakesAwayWhatWasAdded) {
  NumberSums first;
  first.AddCase(1, 1, std::int64_t{1} << 58);
  NumberSums second;
  second.AddCase(4, 2, -17);

  NumberSums both = first;
  both += second;
  both -= first;

  EXPECT_TRUE(both == second);
}

TEST(CoarsenForSquares, LeavesWholeWeightsAsTheyAre) {
  FixedWeights const none;
  FixedNumbers const numbers = FixNumbers({1.0, 2.5, 9.0}, none);

  FixedNumbers const coarse = CoarsenForSquares(numbers, none);

  EXPECT_EQ(coarse.multiples, numbers.multiples);
  EXPECT_EQ(coarse.unit, numbers.unit);
}

TEST(CoarsenForSquares, MakesRoomForSquaresOfDifferencesTimesWeights) {
  std::vector<double> const values = {-1e6, 1e6, 0.0, 123456.789};
  FixedWeights const weights = FixWeights({0.1, 0.7, 0.35, 0.05});
  FixedNumbers const numbers = FixNumbers(values, weights);

  FixedNumbers const coarse = CoarsenForSquares(numbers, weights);

  long double squares = 0.0L;
  for (std::size_t index = 0; index < values.size(); ++index) {
    auto const number = static_cast<double>(coarse.multiples[index]);
    squares += 4.0L * number * number * static_cast<double>(weights.multiples[index]);
    EXPECT_NEAR(coarse.ValueOf(number), values[index], 2e6 * std::ldexp(1.0, -34));
  }
  EXPECT_LT(squares, std::ldexp(1.0L, 125));
  EXPECT_EQ(coarse.multiples[0], -coarse.multiples[1]);
}

TEST(WholeMean, IsTheWholePartOfTheMean) {
  NumberSums sums;
  EXPECT_EQ(WholeMean(sums), 0);

  sums.AddCase(1, 2, 10);
  sums.AddCase(1, 1, 12);

  EXPECT_EQ(WholeMean(sums), 10);  // of 32 / 3
}

}  // namespace
}  // namespace tree::grow
