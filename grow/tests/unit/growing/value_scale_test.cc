#include "growing/value_scale.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kTiny = std::numeric_limits<double>::denorm_min();
constexpr double kMin = std::numeric_limits<double>::min();

/// Numbers of all kinds.
double AnyNumber(RandomNumbers& random) {
  std::uint64_t const high = random.Below(0xffffffffU);
  auto const value = std::bit_cast<double>(high << 32U | random.Below(0xffffffffU));
  return std::isnan(value) ? 0.0 : value;
}

TEST(ValueScale, LeavesNoOrderChanged) {
  struct {
    char const* name;
    double origin;
    double unit;
  } const kRows[] = {
      {"around zero", 0.0, 1.0},
      {"elsewhere", -3.7, 0.3},
      {"from the least", -kMax, 1.0},
      {"from the greatest", kMax, 1.0},
      {"small unit", 1.0, 1e-300},
      {"smallest unit", 0.0, kMin},
      {"great unit", 0.0, 1e300},
      {"greatest unit", kMax, 0x1p1022},
      {"origin that is hardly", kTiny, 2.0},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    RandomNumbers random(1);
    std::vector<double> values{-HUGE_VAL, -kMax, -1.0, -kMin,    -kTiny,
                               0.0,       kTiny, kMin, HUGE_VAL, kMax};
    for (double const steps : {-8.0, -4.0, -2.0, -1.0, -0.5, 0.5, 1.0, 2.0, 4.0, 8.0}) {
      double const value = row.origin + row.unit * steps;
      values.insert(values.end(), {std::nextafter(value, -HUGE_VAL), value, value + row.unit / 1e9,
                                   std::nextafter(value, HUGE_VAL)});
    }
    for (int number = 0; number < 5000; ++number) {
      values.push_back(AnyNumber(random));
      values.push_back(row.origin + row.unit * 1e-3 * random.Below(5000));
    }
    std::sort(values.begin(), values.end());
    ValueScale const scale(row.origin, row.unit);

    std::vector<double> marks;
    marks.reserve(values.size());
    for (double const value : values) marks.push_back(scale.MarkOf(value));

    EXPECT_TRUE(std::is_sorted(marks.begin(), marks.end()));
    EXPECT_TRUE(std::isfinite(marks.front()));
    EXPECT_TRUE(std::isfinite(marks.back()));
  }
}

TEST(ValueScale, IsLinearNearItsOriginAndLogarithmicBeyond) {
  ValueScale const scale(10.0, 4.0);

  double const unit = scale.MarkOf(14.0);

  // 1 and the distance make powers of two in whole units, with as much between them as in the
  // first.
  struct {
    char const* name;
    double value;
    double units;
  } const kRows[] = {
      {"origin", 10.0, 0.0},         {"quarter of a unit", 11.0, 0.25},
      {"half of a unit", 12.0, 0.5}, {"3 units", 22.0, 2.0},
      {"5 units", 30.0, 2.5},        {"7 units", 38.0, 3.0},
      {"below", 9.0, -0.25},         {"3 units below", -2.0, -2.0},
  };
  EXPECT_GT(unit, 0.0);
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(scale.MarkOf(row.value), row.units * unit);
  }
}

TEST(ValueScale, IsPlainWhereValuesAreNotCrowded) {
  struct {
    char const* name;
    std::size_t count;
    std::function<double(double)> valueOf;  // of a share of the cases
  } const kRows[] = {
      {"none", 0, [](double share) { return share; }},
      {"one", 1, [](double share) { return share; }},
      {"few", 10, [](double share) { return std::exp(99.0 * share); }},
      {"all the same", 500, [](double) { return 3.0; }},
      {"two of them", 500, [](double share) { return share < 0.2 ? 1.0 : 1e9; }},
      {"as many everywhere", 500, [](double share) { return share; }},
      {"more in the middle", 500, [](double share) { return std::pow(2.0 * share - 1.0, 3); }},
      {"more at one end", 500, [](double share) { return share * share; }},
      {"ends so far away that nothing parts the others", 500,
       [](double share) { return share > 0.997   ? kMax
                                 : share < 0.001 ? -kMax
                                                 : share; }},
      {"too near to each other for a unit", 500, [](double share) { return share * 1e-310; }},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<double> values;
    for (std::size_t number = 0; number < row.count; ++number) {
      values.push_back(row.valueOf(static_cast<double>(number) / 500.0));
    }

    EXPECT_TRUE(ValueScale::For(values).IsPlain());
  }
}

TEST(ValueScale, PartsCrowdedValues) {
  auto const twoSided = [](double share) { return std::tan(3.14 * (share - 0.5)); };
  struct {
    char const* name;
    std::function<double(double)> valueOf;  // of a share of the cases
  } const kRows[] = {
      {"long tail above", [](double share) { return std::exp(20.0 * share); }},
      {"long tail below", [](double share) { return -std::exp(20.0 * share); }},
      {"far from zero", [](double share) { return 1e6 + std::exp(20.0 * share); }},
      {"very long tail", [](double share) { return std::exp(1300.0 * share - 650.0); }},
      {"tails on both sides", [&](double share) { return std::pow(twoSided(share), 3); }},
      {"half of them the same",
       [](double share) { return share < 0.5 ? 0.0 : std::exp(30.0 * share); }},
      {"one far away", [](double share) { return share > 0.997 ? 1e12 : share; }},
      {"some far away on both sides",
       [](double share) { return share > 0.997   ? 1e12
                                 : share < 0.001 ? -1e12
                                                 : share; }},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<double> values;
    values.reserve(500);
    for (int number = 0; number < 500; ++number) values.push_back(row.valueOf(number / 500.0));
    std::reverse(values.begin(), values.begin() + 250);  // of no order

    ValueScale const scale = ValueScale::For(values);

    ASSERT_FALSE(scale.IsPlain());
    // The middle half of different values takes more than a hundredth of the scale.
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    double const quarter = scale.MarkOf(values[values.size() / 4]);
    double const threeQuarters = scale.MarkOf(values[3 * values.size() / 4]);
    double const range = scale.MarkOf(values.back()) - scale.MarkOf(values.front());
    EXPECT_GT((threeQuarters - quarter) / range, 0.01);
  }
}

}  // namespace
}  // namespace tree::grow
