#include "growing/value_codes.h"

#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMissing = -9.0;
constexpr std::uint16_t kNone = ValueCodes::kMissing;

std::vector<std::size_t> AllRows(std::size_t count) {
  std::vector<std::size_t> rows(count);
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return rows;
}

std::optional<ValueCodes> CodeFew(std::vector<double> const& values, std::size_t maxNumValues) {
  Workers workers(1);
  workers.Begin();
  Column column;
  column.description.missingValue = kMissing;
  column.values = values.data();
  auto coded = CodeFewValues(column, {}, values.size(), maxNumValues, workers);
  auto const byRow =
      CodeFewValues(column, AllRows(values.size()), values.size(), maxNumValues, workers);
  EXPECT_EQ(coded.has_value(), byRow.has_value());
  if (coded.has_value() && byRow.has_value()) {
    EXPECT_EQ(coded->codes, byRow->codes);
    EXPECT_EQ(coded->values, byRow->values);
  }
  return coded;
}

/// Codes intervals of values of which none is missing.
ValueCodes Intervals(std::vector<double> const& values, std::size_t numIntervals,
                     std::vector<std::int64_t> const& frequencies = {}) {
  Workers workers(1);
  workers.Begin();
  std::vector<std::uint32_t> indexes(values.size());
  std::iota(indexes.begin(), indexes.end(), 0U);
  return CodeIntervals(CaseSorter(workers).Sort(values.data(), indexes), values.data(), frequencies,
                       values.size(), numIntervals, workers);
}

TEST(CodeFewValues, CodesValuesInTheirOrder) {
  auto const coded = CodeFew({5.0, -1.5, 5.0, 2.0}, 3);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, ElementsAre(-1.5, 2.0, 5.0));
  EXPECT_THAT(coded->codes, ElementsAre(2, 0, 2, 1));
}

TEST(CodeFewValues, LeavesMissingValuesWithoutACode) {
  auto const coded = CodeFew({kMissing, 4.0, kMissing, 3.0}, 2);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, ElementsAre(3.0, 4.0));
  EXPECT_THAT(coded->codes, ElementsAre(kNone, 1, kNone, 0));
}

TEST(CodeFewValues, GivesUpAtOneValueTooMany) {
  EXPECT_FALSE(CodeFew({1.0, 2.0, 3.0}, 2).has_value());
  EXPECT_TRUE(CodeFew({1.0, 2.0, 3.0}, 3).has_value());
}

TEST(CodeFewValues, TakesBothZerosForOneValue) {
  auto const coded = CodeFew({0.0, -0.0, 1.0}, 2);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->codes, ElementsAre(0, 0, 1));
}

TEST(CodeFewValues, TellsSmallWholeNumbersFromOthers) {
  auto const coded = CodeFew({1023.0, 1024.0, 0.5, 1.0, 1023.5, -1.0, 1024.0, 1.0}, 6);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, ElementsAre(-1.0, 0.5, 1.0, 1023.0, 1023.5, 1024.0));
  EXPECT_THAT(coded->codes, ElementsAre(3, 5, 1, 2, 4, 0, 5, 2));
}

TEST(CodeFewValues, CodesInfinitiesAndNeighboursOfNumbers) {
  double const above = std::nextafter(1.0, 2.0);

  auto const coded = CodeFew({kInfinity, 1.0, above, -kInfinity, kInfinity}, 4);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, ElementsAre(-kInfinity, 1.0, above, kInfinity));
  EXPECT_THAT(coded->codes, ElementsAre(3, 1, 2, 0, 3));
}

TEST(CodeFewValues, CodesNothingWhereAllIsMissing) {
  auto const coded = CodeFew({kMissing, kMissing}, 5);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, IsEmpty());
  EXPECT_THAT(coded->codes, ElementsAre(kNone, kNone));
}

TEST(CodeFewValues, ReadsOnlyTheRowsOfTheCases) {
  Workers workers(1);
  workers.Begin();
  std::vector<double> const values = {7.0, 8.0, 9.0, 7.0};
  Column column;
  column.description.missingValue = kMissing;
  column.values = values.data();

  auto const coded = CodeFewValues(column, std::vector<std::size_t>{0, 2, 3}, 3, 2, workers);

  ASSERT_TRUE(coded.has_value());
  EXPECT_THAT(coded->values, ElementsAre(7.0, 9.0));
  EXPECT_THAT(coded->codes, ElementsAre(0, 1, 0));
}

TEST(CodeFewValues, CodesAsManyValuesAsThereAreCodes) {
  std::vector<double> values(65535);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = -static_cast<double>(i);
  values[9] = -9.5;  // which is not missing

  auto const coded = CodeFew(values, 65535);

  ASSERT_TRUE(coded.has_value());
  EXPECT_EQ(coded->codes.front(), 65534);
  EXPECT_EQ(coded->codes.back(), 0);
}

TEST(CodeSortedValues, AgreesWithCodingWithoutSorting) {
  RandomNumbers random(11);
  std::vector<double> values(500);
  for (double& value : values) value = static_cast<double>(random.Below(40)) / 4.0;
  std::vector<std::uint32_t> indexes(values.size());
  std::iota(indexes.begin(), indexes.end(), 0U);
  Workers workers(1);
  workers.Begin();

  ValueCodes const sorted = CodeSortedValues(CaseSorter(workers).Sort(values.data(), indexes),
                                             values.data(), values.size(), workers);

  auto const few = CodeFew(values, 40);
  ASSERT_TRUE(few.has_value());
  EXPECT_EQ(sorted.values, few->values);
  EXPECT_EQ(sorted.codes, few->codes);
}

TEST(CodeIntervals, EndWithTheValueThatReachesTheirShare) {
  ValueCodes const coded = Intervals({10.0, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0}, 5);

  EXPECT_THAT(coded.values, ElementsAre(2.0, 4.0, 6.0, 8.0, 10.0));
  EXPECT_THAT(coded.codes, ElementsAre(4, 0, 0, 1, 1, 2, 2, 3, 3, 4));
}

TEST(CodeIntervals, LeaveOutThoseThatAShareOfEqualValuesSwallows) {
  ValueCodes const coded = Intervals({0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 1.0, 2.0}, 4);

  EXPECT_THAT(coded.values, ElementsAre(0.0, 2.0));
}

TEST(CodeIntervals, CountCasesByTheirFrequencies) {
  ValueCodes const coded = Intervals({1.0, 2.0, 3.0}, 2, {4, 1, 1});

  EXPECT_THAT(coded.values, ElementsAre(1.0, 3.0));
  EXPECT_EQ(coded.values, Intervals({1.0, 1.0, 1.0, 1.0, 2.0, 3.0}, 2).values);
}

TEST(CodeIntervals, GiveNoCodeToCasesThatAreNotSorted) {
  std::vector<double> const values = {1.0, kMissing, 2.0};
  Workers workers(1);
  workers.Begin();

  ValueCodes const coded = CodeIntervals(CaseSorter(workers).Sort(values.data(), {0, 2}),
                                         values.data(), {}, 3, 10, workers);

  EXPECT_THAT(coded.codes, ElementsAre(0, kNone, 1));
  EXPECT_THAT(coded.values, ElementsAre(1.0, 2.0));
}

TEST(CodeIntervals, HoldAboutEquallyManyCases) {
  for (unsigned int seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::vector<double> values(300);
    std::iota(values.begin(), values.end(), -150.0);
    for (std::size_t i = values.size() - 1; i > 0; --i) {
      std::swap(values[i], values[random.Below(static_cast<std::uint32_t>(i + 1))]);
    }

    ValueCodes const coded = Intervals(values, 10);

    std::map<std::uint16_t, int> sizes;
    for (std::uint16_t const code : coded.codes) ++sizes[code];
    ASSERT_EQ(sizes.size(), 10U);
    for (auto const& [code, size] : sizes) EXPECT_EQ(size, 30) << "interval " << code;
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_LE(values[i], coded.values[coded.codes[i]]);
      if (coded.codes[i] > 0) {
        EXPECT_GT(values[i], coded.values[coded.codes[i] - 1U]);
      }
    }
  }
}

}  // namespace
}  // namespace tree::grow
