#include "chaid/log_multipliers.h"

#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using boost::multiprecision::cpp_int;

double LogOf(cpp_int const& number) {
  auto const numBits = static_cast<int>(msb(number));
  int const dropped = numBits > 900 ? numBits - 900 : 0;
  return std::log(static_cast<double>(number >> dropped)) + dropped * std::log(2.0);
}

cpp_int Binomial(std::size_t n, std::size_t k) {
  if (k > n) return 0;
  cpp_int product = 1;
  for (std::size_t factor = 1; factor <= k; ++factor) product = product * (n - k + factor) / factor;
  return product;
}

/// Stirling numbers of the second kind of `n`, by k from 0.
std::vector<cpp_int> StirlingNumbers(std::size_t n) {
  std::vector<cpp_int> row(n + 1, 0);
  row[0] = 1;
  for (std::size_t number = 1; number <= n; ++number) {
    for (std::size_t k = number; k > 0; --k) row[k] = k * row[k] + row[k - 1];
    row[0] = 0;
  }
  return row;
}

void ExpectLog(double logMultiplier, cpp_int const& multiplier) {
  double const expected = LogOf(multiplier);
  EXPECT_NEAR(logMultiplier, expected, 1e-13 * std::max(1.0, expected));
}

TEST(LogNominalMultiplier, IsThatOfWaysToDivideFourCategories) {
  EXPECT_EQ(LogNominalMultiplier(4, 1), 0.0);
  EXPECT_DOUBLE_EQ(LogNominalMultiplier(4, 2), std::log(7.0));
  EXPECT_DOUBLE_EQ(LogNominalMultiplier(4, 3), std::log(6.0));
  EXPECT_EQ(LogNominalMultiplier(4, 4), 0.0);
}

TEST(LogMultipliers, AreThoseOfExactArithmeticUpToThirtyCategories) {
  for (std::size_t c = 1; c <= 30; ++c) {
    std::vector<cpp_int> const stirling = StirlingNumbers(c);
    for (std::size_t r = 1; r <= c; ++r) {
      SCOPED_TRACE(std::to_string(c) + " to " + std::to_string(r));
      ExpectLog(LogNominalMultiplier(c, r), stirling[r]);
      ExpectLog(LogOrdinalMultiplier(c, r), Binomial(c - 1, r - 1));
      if (c > 1 && r > 1) {
        ExpectLog(LogFloatingMultiplier(c, r), Binomial(c - 2, r - 2) + r * Binomial(c - 2, r - 1));
      }
    }
  }
}

/// The sum over numbers of groups from 2 to `c` of the pairs that there are then.
template <class PairsOf>
cpp_int SumOfPairs(std::size_t c, PairsOf const& pairsOf) {
  cpp_int sum = 0;
  for (std::size_t groups = 2; groups <= c; ++groups) sum += pairsOf(groups);
  return sum;
}

TEST(LogMultipliers, AreThoseOfThePairsThatTheExhaustiveMethodCompares) {
  for (std::size_t c = 2; c <= 30; ++c) {
    SCOPED_TRACE(c);
    ExpectLog(LogExhaustiveNominalMultiplier(c),
              SumOfPairs(c, [](std::size_t groups) { return groups * (groups - 1) / 2; }));
    ExpectLog(LogExhaustiveOrdinalMultiplier(c),
              SumOfPairs(c, [](std::size_t groups) { return groups - 1; }));
    ExpectLog(LogExhaustiveFloatingMultiplier(c),
              SumOfPairs(c, [](std::size_t groups) { return groups - 2 + groups - 1; }));
  }
}

TEST(LogNominalMultiplier, IsThatOfExactArithmeticForHundredsOfCategories) {
  for (std::size_t const c : {127U, 128U, 129U, 300U}) {
    std::vector<cpp_int> const stirling = StirlingNumbers(c);
    for (std::size_t r = 1; r <= c; r += r < 5 || r + 8 > c ? 1 : 7) {
      SCOPED_TRACE(std::to_string(c) + " to " + std::to_string(r));
      ExpectLog(LogNominalMultiplier(c, r), stirling[r]);
    }
  }
}

TEST(LogMultipliers, AreThoseOfClosedFormsForAsManyCategoriesAsThereCanBe) {
  std::size_t const c = 65535;
  cpp_int const one = 1;
  cpp_int powerOfThree = 1;
  for (std::size_t factor = 1; factor < c; ++factor) powerOfThree *= 3;

  ExpectLog(LogNominalMultiplier(c, 2), (one << (c - 1)) - 1);
  ExpectLog(LogNominalMultiplier(c, 3), (powerOfThree - (one << c) + 1) / 2);
  // What is small here is the difference of logarithms of factorials, which are above 1e5.
  EXPECT_NEAR(LogNominalMultiplier(c, c - 1), LogOf(Binomial(c, 2)), 2e-9);
  EXPECT_NEAR(LogNominalMultiplier(c, c - 2), LogOf(Binomial(c, 3) + 3 * Binomial(c, 4)), 2e-9);
  EXPECT_NEAR(LogOrdinalMultiplier(c, 3), LogOf(Binomial(c - 1, 2)), 1e-9);
  EXPECT_NEAR(LogOrdinalMultiplier(c, 2000), LogOf(Binomial(c - 1, 1999)), 1e-9);
  EXPECT_NEAR(LogFloatingMultiplier(c, 3), LogOf(Binomial(c - 2, 1) + 3 * Binomial(c - 2, 2)),
              1e-9);
  EXPECT_NEAR(LogExhaustiveNominalMultiplier(c), LogOf(cpp_int(c) * (cpp_int(c) * c - 1) / 6),
              1e-13);
}

TEST(LogNominalMultiplier, RisesAndFallsOnceForThousandsOfCategories) {
  // Stirling numbers are log-concave in the groups (Lieb 1968).
  std::size_t const c = 20000;
  double before = LogNominalMultiplier(c, 1000);
  double stepBefore = LogNominalMultiplier(c, 1000) - LogNominalMultiplier(c, 900);
  for (std::size_t r = 1100; r < c; r += 100) {
    double const logMultiplier = LogNominalMultiplier(c, r);
    ASSERT_LT(logMultiplier - before, stepBefore) << r;
    stepBefore = logMultiplier - before;
    before = logMultiplier;
  }
}

TEST(LogMultipliers, AreZeroWhereThereIsOneWay) {
  for (std::size_t const c : {1U, 2U, 10U, 1000U}) {
    SCOPED_TRACE(c);
    for (std::size_t const r : {std::size_t{1}, c}) {
      EXPECT_EQ(LogNominalMultiplier(c, r), 0.0);
      EXPECT_EQ(LogOrdinalMultiplier(c, r), 0.0);
      EXPECT_EQ(LogFloatingMultiplier(c, r), 0.0);
    }
  }
  for (std::size_t const c : {0U, 1U, 2U}) {
    EXPECT_EQ(LogExhaustiveNominalMultiplier(c), 0.0);
    EXPECT_EQ(LogExhaustiveOrdinalMultiplier(c), 0.0);
    EXPECT_EQ(LogExhaustiveFloatingMultiplier(c), 0.0);
  }
}

}  // namespace
}  // namespace tree::grow
