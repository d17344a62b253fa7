#include "association/log_tails.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace tree::grow {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(LogChiSquareTail, HasClosedFormsForTwoAndFourDegreesOfFreedom) {
  for (double const value : {0.01, 1.0, 30.0, 1200.0, 1e6}) {
    SCOPED_TRACE(value);

    EXPECT_NEAR(LogChiSquareTail(value, 2.0), -value / 2.0, 1e-13 * value);
    EXPECT_NEAR(LogChiSquareTail(value, 4.0), -value / 2.0 + std::log1p(value / 2.0),
                1e-13 * value);
  }
}

TEST(LogFTail, HasAClosedFormForTwoDegreesOfFreedom) {
  // P(F > f) = (1 + 2 f / d)^(-d / 2)
  for (double const value : {0.01, 1.0, 30.0, 1e8}) {
    for (double const errors : {1.0, 10.0, 1000.0}) {
      SCOPED_TRACE(std::to_string(value) + ", " + std::to_string(errors));
      double const expected = -errors / 2.0 * std::log1p(2.0 * value / errors);

      EXPECT_NEAR(LogFTail(value, 2.0, errors), expected, 1e-13 * -expected);
    }
  }
}

TEST(LogFTail, IsThatOfTheSquareOfCauchysDistributionForOneAndOne) {
  // P(|t| > 1) = 1 / 2
  EXPECT_NEAR(LogFTail(1.0, 1.0, 1.0), std::log(0.5), 1e-15);
}

struct Reference {
  double value;
  double degreesOfFreedom;
  double errorDegreesOfFreedom;
  double logP;
};

TEST(LogFTail, KeepsItsDigitsWithMillionsOfCases) {
  // Summed up by the hypergeometric series with 50 digits.
  Reference const references[] = {
      {1.2, 40.0, 200000.0, -1.7131791846637660949},  {60.0, 1.0, 1e6, -32.288057290100380563},
      {300.0, 9.0, 200000.0, -1318.2391791622179852}, {1000.0, 1.0, 1e6, -503.43033354399757581},
      {1000.0, 19.0, 1e6, -9344.8735626754698703},    {10000.0, 3.0, 1e6, -14774.48718111404505},
      {10000.0, 9.0, 1e6, -43054.102923314342227},    {10000.0, 19.0, 1e6, -86892.397454574320616},
  };
  for (Reference const& reference : references) {
    SCOPED_TRACE(std::to_string(reference.value) + ", " +
                 std::to_string(reference.degreesOfFreedom));

    double const logP =
        LogFTail(reference.value, reference.degreesOfFreedom, reference.errorDegreesOfFreedom);

    EXPECT_NEAR(logP, reference.logP, 1e-11 * -reference.logP);
  }
}

TEST(LogTails, AreDefinedAtTheEdges) {
  double const nan = std::numeric_limits<double>::quiet_NaN();

  EXPECT_EQ(LogChiSquareTail(0.0, 3.0), 0.0);
  EXPECT_EQ(LogChiSquareTail(-1.0, 3.0), 0.0);
  EXPECT_EQ(LogChiSquareTail(nan, 3.0), 0.0);
  EXPECT_EQ(LogChiSquareTail(5.0, 0.0), 0.0);
  EXPECT_EQ(LogChiSquareTail(kInfinity, 0.0), 0.0);
  EXPECT_EQ(LogChiSquareTail(kInfinity, 3.0), -kInfinity);
  EXPECT_EQ(LogFTail(0.0, 3.0, 10.0), 0.0);
  EXPECT_EQ(LogFTail(-1.0, 3.0, 10.0), 0.0);
  EXPECT_EQ(LogFTail(nan, 3.0, 10.0), 0.0);
  EXPECT_EQ(LogFTail(5.0, 0.0, 10.0), 0.0);
  EXPECT_EQ(LogFTail(5.0, 3.0, 0.0), 0.0);
  EXPECT_EQ(LogFTail(kInfinity, 3.0, 0.0), 0.0);
  EXPECT_EQ(LogFTail(kInfinity, 3.0, 10.0), -kInfinity);
}

TEST(LogTails, AreFiniteForTheLargestValues) {
  double const largest = std::numeric_limits<double>::max();

  // Chi-square: -value / 2 in the main; F: -errors / 2 log(value).
  EXPECT_NEAR(LogChiSquareTail(largest, 9.0) / (-largest / 2.0), 1.0, 1e-12);
  EXPECT_NEAR(LogFTail(largest, 2.0, 10.0), -5.0 * (std::log(largest) + std::log(0.2)), 1e-9);
}

/// Expects that a tail falls along values from `from` to `to` in so many steps.
template <class Tail>
void ExpectFalls(Tail const& tail, double from, double to, int numSteps) {
  double before = tail(from);
  for (int step = 1; step <= numSteps; ++step) {
    double const value = from * std::pow(to / from, static_cast<double>(step) / numSteps);
    double const logP = tail(value);
    ASSERT_LT(logP, before) << value;
    before = logP;
  }
}

// Where the logarithm is no more that of a probability, at 1e-250, is within these ranges.

TEST(LogChiSquareTail, FallsWithTheValueFarBeyondWhatProbabilitiesCanShow) {
  for (double const df : {1.0, 2.0, 7.0, 60.0, 900.0}) {
    SCOPED_TRACE(df);
    auto const tail = [&](double value) { return LogChiSquareTail(value, df); };

    ExpectFalls(tail, df, 4000.0, 5000);
    ExpectFalls(tail, 1100.0, 1250.0, 300000);
  }
}

TEST(LogFTail, FallsWithTheValueFarBeyondWhatProbabilitiesCanShow) {
  for (double const df : {1.0, 3.0, 30.0}) {
    for (double const errors : {5.0, 60.0, 3000.0, 500000.0}) {
      SCOPED_TRACE(std::to_string(df) + ", " + std::to_string(errors));
      auto const tail = [&](double value) { return LogFTail(value, df, errors); };

      ExpectFalls(tail, 1.0, 1e6, 5000);
      ExpectFalls(tail, 30.0, 31.0, 30000);
    }
  }
}

TEST(LogFTail, FallsWithMoreCases) {
  double before = 0.0;
  for (int exponent = 0; exponent < 40; ++exponent) {
    double const errors = std::pow(1.5, exponent);
    double const logP = LogFTail(1300.0, 1.0, errors);
    ASSERT_LT(logP, before) << errors;
    before = logP;
  }
}

}  // namespace
}  // namespace tree::grow
