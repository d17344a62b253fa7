#include "values/int32_truncation.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace tree::testing {
namespace {

using Limits = std::numeric_limits<double>;

constexpr std::int32_t kHighest = 2147483647;
constexpr std::int32_t kLowest = -2147483647 - 1;

struct Row {
  char const* name;
  double value;
  std::int32_t expected;
};

class TruncateToInt32 : public ::testing::TestWithParam<Row> {};

TEST_P(TruncateToInt32, Gives) {
  EXPECT_EQ(GetParam().expected, tree::TruncateToInt32(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Values, TruncateToInt32,
    ::testing::Values(
        Row{"zero", 0.0, 0}, Row{"negativeZero", -0.0, 0},
        Row{"smallestPositive", Limits::denorm_min(), 0},
        Row{"smallestNegative", -Limits::denorm_min(), 0}, Row{"justBelowOne", 0.9999999999, 0},
        Row{"justAboveMinusOne", -0.9999999999, 0}, Row{"one", 1.0, 1}, Row{"minusOne", -1.0, -1},
        Row{"fractionTowardZero", 2.9, 2}, Row{"negativeFractionTowardZero", -2.9, -2},
        Row{"highest", 2147483647.0, kHighest},
        Row{"fractionAboveHighestTruncatesFirst", 2147483647.5, kHighest},
        Row{"lastBelowTheRangeEnd", 2147483647.9999998, kHighest},
        Row{"oneAboveHighest", 2147483648.0, kLowest}, Row{"farAbove", 1e300, kLowest},
        Row{"lowest", -2147483648.0, kLowest},
        Row{"fractionBelowLowestTruncatesFirst", -2147483648.5, kLowest},
        Row{"aboveLowest", -2147483647.5, -2147483647},
        Row{"oneBelowLowest", -2147483649.0, kLowest}, Row{"farBelow", -1e300, kLowest},
        Row{"infinity", Limits::infinity(), kLowest},
        Row{"negativeInfinity", -Limits::infinity(), kLowest},
        Row{"nan", Limits::quiet_NaN(), kLowest},
        Row{"negativeNan", -Limits::quiet_NaN(), kLowest}),
    [](auto const& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace tree::testing
