#include "tree/grow/data_set.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::HasSubstr;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

ColumnDescription Continuous(std::string name) {
  ColumnDescription description;
  description.name = std::move(name);
  return description;
}

ColumnDescription Nominal(std::string name, std::vector<std::string> labels = {}) {
  ColumnDescription description = Continuous(std::move(name));
  description.level = global::MeasurementNominal;
  description.labels = std::move(labels);
  return description;
}

/// The message with which a column of three values is refused; empty when it is accepted.
std::string Refusal(ColumnDescription const& description, std::vector<double> values) {
  DataSet data(3);
  try {
    data.AddColumn(description, std::move(values));
  } catch (InputError const& error) {
    EXPECT_EQ(data.GetNumColumns(), 0) << "a refused column leaves nothing behind";
    return error.what();
  }
  return "";
}

TEST(DataSet, HasNoColumnsAtFirst) {
  DataSet const data(3);

  EXPECT_EQ(data.GetNumCases(), 3U);
  EXPECT_EQ(data.GetNumColumns(), 0);
}

TEST(DataSet, NumbersColumnsInTheOrderInWhichTheyAreAdded) {
  std::vector<double> const borrowed = {7.0, 8.0, 9.0};
  DataSet data(3);

  EXPECT_EQ(data.AddColumn(Continuous("first"), {1.0, 2.0, 3.0}), 0);
  EXPECT_EQ(data.BorrowColumn(Continuous("second"), borrowed.data()), 1);

  EXPECT_EQ(data.GetNumColumns(), 2);
  EXPECT_EQ(data.GetColumn(0).description.name, "first");
  EXPECT_EQ(data.GetColumn(0).values[2], 3.0);
  EXPECT_EQ(data.GetColumn(1).description.name, "second");
}

TEST(DataSet, ReadsABorrowedColumnWhereItLies) {
  std::vector<double> const borrowed = {7.0, 8.0, 9.0};
  DataSet data(3);

  data.BorrowColumn(Continuous("x"), borrowed.data());

  EXPECT_EQ(data.GetColumn(0).values, borrowed.data());
}

TEST(DataSet, KeepsItsOwnColumnsInPlaceWhenMoreAreAddedAndWhenItMoves) {
  DataSet data(1);
  data.AddColumn(Continuous("x0"), {0.5});
  double const* const values = data.GetColumn(0).values;
  for (int index = 1; index < 100; ++index) {
    data.AddColumn(Continuous("x" + std::to_string(index)), {1.0 * index});
  }

  DataSet moved(std::move(data));
  DataSet assigned(7);
  assigned = std::move(moved);

  EXPECT_EQ(assigned.GetNumCases(), 1U);
  EXPECT_EQ(assigned.GetColumn(0).values, values);
  EXPECT_EQ(values[0], 0.5);
  EXPECT_EQ(assigned.GetColumn(99).values[0], 99.0);
}

TEST(DataSet, FindsColumnsByName) {
  DataSet data(1);
  data.AddColumn(Continuous("x"), {1.0});
  data.AddColumn(Continuous("y"), {1.0});

  EXPECT_EQ(data.FindColumn("y"), 1);
  EXPECT_EQ(data.FindColumn("Y"), -1);
  EXPECT_EQ(data.RequireColumn("x"), 0);
}

TEST(DataSet, NamesTheColumnThatIsNotThere) {
  DataSet const data(1);

  try {
    data.RequireColumn("weight");
    FAIL() << "found a column that nobody added";
  } catch (InputError const& error) {
    EXPECT_STREQ(error.what(), "there is no column \"weight\"");
  }
}

TEST(DataSet, RefusesColumnsThatCannotBeUsed) {
  ColumnDescription nanIsMissing = Continuous("x");
  nanIsMissing.missingValue = kNaN;
  struct Case {
    char const* name;
    ColumnDescription description;
    std::vector<double> values;
    char const* message;
  };
  std::vector<Case> const cases = {
      {"no name", Continuous(""), {1, 2, 3}, "it has no name"},
      {"too short", Continuous("x"), {1, 2}, "it has 2 values, the data 3 cases"},
      {"too long", Continuous("x"), {1, 2, 3, 4}, "it has 4 values, the data 3 cases"},
      {"NaN", Continuous("x"), {1, kNaN, 3}, "column \"x\": case 1: value nan"},
      {"NaN as a code", Nominal("x"), {1, 2, kNaN}, "case 2"},
      {"NaN as missing value", nanIsMissing, {1, 2, 3}, "NaN cannot be its missing value"},
      {"a fraction as a code", Nominal("x"), {0, 0.5, 1}, "case 1: value 0.5 is no category"},
      {"a negative code", Nominal("x"), {0, 1, -1}, "case 2: value -1 is no category code"},
      {"an infinite code", Nominal("x"), {kInfinity, 1, 1}, "case 0: value inf is beyond the last"},
      {"a code without label", Nominal("x", {"a", "b"}), {0, 1, 2}, "beyond the last category"},
      {"a code beyond 32 bits", Nominal("x"), {0, 1, 2147483647.0}, "beyond the last category"},
  };

  for (Case const& row : cases) {
    SCOPED_TRACE(row.name);
    EXPECT_THAT(Refusal(row.description, row.values), HasSubstr(row.message));
  }
}

TEST(DataSet, AcceptsColumnsAtTheLimits) {
  ColumnDescription ninesAreMissing = Nominal("x", {"a", "b"});
  ninesAreMissing.missingValue = 9.0;

  EXPECT_EQ(Refusal(Continuous("x"), {-kInfinity, kInfinity, -0.5}), "");
  EXPECT_EQ(Refusal(Nominal("x"), {0, 2147483646.0, systemMissingValue()}), "");
  EXPECT_EQ(Refusal(ninesAreMissing, {0, 9, 1}), "");
}

TEST(DataSet, RefusesASecondColumnOfTheSameName) {
  DataSet data(1);
  data.AddColumn(Continuous("x"), {1.0});

  EXPECT_THROW(data.AddColumn(Nominal("x"), {1.0}), InputError);
  EXPECT_EQ(data.GetNumColumns(), 1);
}

TEST(Column, TellsMissingValuesByItsOwnMark) {
  ColumnDescription description = Continuous("x");
  description.missingValue = -99.0;
  DataSet data(3);
  data.AddColumn(description, {-99.0, 5.0, systemMissingValue()});

  EXPECT_TRUE(data.GetColumn(0).IsMissing(0));
  EXPECT_FALSE(data.GetColumn(0).IsMissing(1));
  EXPECT_FALSE(data.GetColumn(0).IsMissing(2));
}

}  // namespace
}  // namespace tree::grow
