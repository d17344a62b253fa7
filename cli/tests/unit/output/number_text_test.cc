#include "output/number_text.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace tree::cli {
namespace {

TEST(NumberText, ShowsUpToSevenDigits) {
  EXPECT_EQ(ShortNumber(206.5), "206.5");
  EXPECT_EQ(ShortNumber(1000000.0), "1000000");
  EXPECT_EQ(ShortNumber(1.0 / 3.0), "0.3333333");
  EXPECT_EQ(ShortNumber(123456789.0), "1.234568e+08");
  EXPECT_EQ(ShortNumber(-2.5), "-2.5");
}

TEST(NumberText, ShowsSoManyDecimals) {
  EXPECT_EQ(FixedNumber(0.12345, 3), "0.123");
  EXPECT_EQ(FixedNumber(100.0, 1), "100.0");
  EXPECT_EQ(FixedNumber(std::numeric_limits<double>::max(), 4).size(), 309u + 5u);
}

TEST(NumberText, WritesWhatCanBeReadBack) {
  EXPECT_EQ(ExactNumber(0.1), "0.1");
  EXPECT_EQ(ExactNumber(5.0), "5");
  for (double const number : {1.0 / 3.0, 2.0 / 3.0, 1e-300, 123456.789012345}) {
    EXPECT_EQ(std::stod(ExactNumber(number)), number);
  }
}

TEST(NumberText, GivesZeroNoSign) {
  EXPECT_EQ(ShortNumber(-0.0), "0");
  EXPECT_EQ(FixedNumber(-0.0, 2), "0.00");
  EXPECT_EQ(ExactNumber(-0.0), "0");
}

}  // namespace
}  // namespace tree::cli
