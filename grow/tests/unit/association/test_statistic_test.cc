#include "association/test_statistic.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

TEST(LogP, IsThatOfChiSquareWithoutErrors) { EXPECT_NEAR(LogP({7.0, 2.0, 0.0}), -3.5, 1e-14); }

TEST(LogP, IsThatOfFWithErrors) {
  // (1 + 2 * 3 / 10)^-5
  EXPECT_NEAR(LogP({3.0, 2.0, 10.0}), -5.0 * std::log(1.6), 1e-14);
}

TEST(LogP, IsZeroWithoutAnythingToTest) {
  EXPECT_EQ(LogP({}), 0.0);
  EXPECT_EQ(LogP({3.0, 0.0, 10.0}), 0.0);
}

TEST(AreComparable, AsksForTheSameDegreesOfFreedom) {
  EXPECT_TRUE(AreComparable({1.0, 3.0, 0.0}, {2.0, 3.0, 0.0}));
  EXPECT_FALSE(AreComparable({1.0, 3.0, 0.0}, {2.0, 2.0, 0.0}));
  EXPECT_TRUE(AreComparable({1.0, 3.0, 9.0}, {2.0, 3.0, 9.0}));
  EXPECT_FALSE(AreComparable({1.0, 3.0, 9.0}, {2.0, 3.0, 10.0}));
}

TEST(IsSurelyLessSignificant, KnowsOnlyFWithOneDegreeOfFreedom) {
  EXPECT_TRUE(IsSurelyLessSignificant({1.0, 1.0, 9.0}, {200.0, 1.0, 10.0}));
  EXPECT_FALSE(IsSurelyLessSignificant({200.0, 1.0, 9.0}, {1.0, 1.0, 10.0}));
  EXPECT_FALSE(IsSurelyLessSignificant({1.0, 1.0, 0.0}, {200.0, 1.0, 0.0}));
  EXPECT_FALSE(IsSurelyLessSignificant({1.0, 3.0, 9.0}, {200.0, 3.0, 10.0}));
  EXPECT_FALSE(IsSurelyLessSignificant({1.0, 0.0, 9.0}, {200.0, 0.0, 9.0}));
}

TEST(IsSurelyLessSignificant, IsRightWhereverItIsSureOfF) {
  RandomNumbers random(1);
  int numSure = 0;
  for (int round = 0; round < 20000; ++round) {
    auto const draw = [&] {
      double const errors = random.Multiple(0.6, 200) * std::exp(random.Multiple(0.1, 60));
      return TestStatistic{std::exp(random.Multiple(0.01, 1000)) / 20.0, 1.0, errors};
    };
    TestStatistic const left = draw();
    TestStatistic const right = draw();

    bool const sure = IsSurelyLessSignificant(left, right);

    numSure += sure ? 1 : 0;
    if (sure) {
      ASSERT_GT(LogP(left), LogP(right)) << left.value << ' ' << left.errorDegreesOfFreedom << ' '
                                         << right.value << ' ' << right.errorDegreesOfFreedom;
    }
  }
  EXPECT_GT(numSure, 9000);  // of about 10000
}

TEST(IsSurelyLessSignificant, KnowsInfinity) {
  double const infinity = std::numeric_limits<double>::infinity();

  EXPECT_TRUE(IsSurelyLessSignificant({5.0, 1.0, 8.0}, {infinity, 1.0, 9.0}));
  EXPECT_FALSE(IsSurelyLessSignificant({infinity, 1.0, 8.0}, {infinity, 1.0, 9.0}));
}

}  // namespace
}  // namespace tree::grow
