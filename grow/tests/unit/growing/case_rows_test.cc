#include "growing/case_rows.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using ::testing::ElementsAre;

Column MakeColumn(std::vector<double> const& values) {
  Column column{{}, values.data()};
  column.description.missingValue = kMissing;
  return column;
}

TEST(CaseRows, PutTheValuesOfACaseTogether) {
  std::vector<double> const first = {1.0, 2.0, 3.0};
  std::vector<double> const second = {4.0, 5.0, 6.0};
  std::vector<double> const third = {7.0, 8.0, 9.0};
  Column const columns[] = {MakeColumn(first), MakeColumn(second), MakeColumn(third)};
  Workers workers(1);

  CaseRows const rows({&columns[0], &columns[1], &columns[2]}, {0, 2}, {2, 0}, workers);

  EXPECT_EQ(rows.GetWidth(), 2U);
  EXPECT_THAT(rows.GetPredictors(), ElementsAre(0U, 2U));
  EXPECT_THAT(std::vector<double>(rows.Of(0), rows.Of(0) + 2), ElementsAre(3.0, 9.0));
  EXPECT_THAT(std::vector<double>(rows.Of(1), rows.Of(1) + 2), ElementsAre(1.0, 7.0));
  EXPECT_FALSE(rows.HasGaps());
}

TEST(CaseRows, HoldNoNumberForAMissingValue) {
  std::vector<double> const values = {1.0, kMissing};
  Column const column = MakeColumn(values);
  Workers workers(1);

  CaseRows const rows({&column}, {0}, {0, 1}, workers);

  EXPECT_EQ(*rows.Of(0), 1.0);
  EXPECT_TRUE(std::isnan(*rows.Of(1)));
}

TEST(CaseRows, KnowWhetherSomeValuesAreMissingOrInfinite) {
  struct {
    char const* name;
    double value;
    bool isGap;
  } const kRows[] = {
      {"a number", 2.0, false},
      {"missing", kMissing, true},
      {"infinite", HUGE_VAL, true},
      {"infinite below", -HUGE_VAL, true},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<double> const values = {1.0, row.value, 3.0};
    Column const column = MakeColumn(values);
    Workers workers(1);

    EXPECT_EQ(CaseRows({&column}, {0}, {0, 1, 2}, workers).HasGaps(), row.isGap);
    EXPECT_FALSE(CaseRows({&column}, {0}, {0, 2}, workers).HasGaps()) << "no case of it";
  }
}

TEST(CaseRows, FindScalesForCrowdedValues) {
  constexpr std::size_t kNumCases = 100000;  // in several parts, of which few cases are sampled
  struct {
    char const* name;
    double odd;  // the value of one case
    double factor;
    bool isPlain;
  } const kRows[] = {
      {"not crowded", 0.5, 0.0, true},       {"one missing", kMissing, 0.0, true},
      {"one infinite", HUGE_VAL, 0.0, true}, {"one infinite below", -HUGE_VAL, 0.0, true},
      {"one far away", 1e12, 0.0, false},    {"one far below", -1e12, 0.0, false},
      {"long tail", 0.5, 30.0, false},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<double> values;
    std::vector<std::size_t> places;
    for (std::size_t index = 0; index < kNumCases; ++index) {
      double const share = static_cast<double>(index) / kNumCases;
      values.push_back(row.factor > 0.0 ? std::exp(row.factor * share) : share);
      places.push_back(index);
    }
    values[77777] = row.odd;
    Column const column = MakeColumn(values);
    Workers workers(2);
    workers.Begin();

    CaseRows const rows({&column, &column}, {0, 1}, places, workers);

    ASSERT_EQ(rows.GetScales().size(), 2U);
    EXPECT_EQ(rows.GetScales()[0].IsPlain(), row.isPlain);
    EXPECT_EQ(rows.GetScales()[1].IsPlain(), row.isPlain);
  }
}

TEST(CaseRows, AreEmptyWithoutPredictors) {
  Workers workers(1);

  EXPECT_TRUE(CaseRows().IsEmpty());
  EXPECT_TRUE(CaseRows({}, {}, {0, 1}, workers).IsEmpty());
}

TEST(CaseRows, AreReadByThreadsInParts) {
  constexpr std::size_t kCount = (std::size_t{1} << 15) + 300;
  std::vector<double> values(kCount);
  std::vector<std::size_t> places(kCount);
  for (std::size_t row = 0; row < kCount; ++row) {
    values[row] = static_cast<double>(row) / 4.0;
    places[row] = kCount - 1 - row;
  }
  Column const column = MakeColumn(values);
  Workers workers(2);
  workers.Begin();

  CaseRows const rows({&column, &column}, {0, 1}, places, workers);

  for (std::uint32_t index = 0; index < kCount; ++index) {
    ASSERT_EQ(rows.Of(index)[0], values[kCount - 1 - index]) << index;
    ASSERT_EQ(rows.Of(index)[1], values[kCount - 1 - index]) << index;
  }
}

}  // namespace
}  // namespace tree::grow
