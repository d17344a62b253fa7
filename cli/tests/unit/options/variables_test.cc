#include "options/variables.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"

namespace tree::cli {
namespace {

using testing::CreditData;
using ::testing::ElementsAre;
using testing::InputRefusal;
using testing::Read;

std::string RefusalOf(VariableOptions const& options) {
  grow::DataSet const data = CreditData();
  return InputRefusal([&] { FindRoles(options, data); });
}

TEST(FindRoles, TakesAllOtherColumnsForPredictors) {
  grow::CaseRoles const roles = FindRoles({.target = "class"}, CreditData());

  EXPECT_EQ(roles.target, 0);
  EXPECT_THAT(roles.predictors, ElementsAre(1, 2, 3, 4, 5));
  EXPECT_FALSE(roles.frequencyWeight.has_value());
  EXPECT_FALSE(roles.caseWeight.has_value());
  EXPECT_FALSE(roles.sample.has_value());
}

TEST(FindRoles, LeavesOutColumnsWithAnotherPart) {
  grow::CaseRoles const roles = FindRoles(
      {.target = "class", .excluded = {"purpose"}, .caseWeight = "weight", .sample = "part"},
      CreditData());

  EXPECT_THAT(roles.predictors, ElementsAre(1, 3));
  EXPECT_EQ(roles.caseWeight, 4);
  EXPECT_EQ(roles.sample, 5);
}

TEST(FindRoles, KeepsTheOrderInWhichPredictorsAreNamed) {
  grow::CaseRoles const roles = FindRoles(
      {.target = "amount", .predictors = {"rating", "class"}, .frequencyWeight = "weight"},
      CreditData());

  EXPECT_THAT(roles.predictors, ElementsAre(3, 0));
  EXPECT_EQ(roles.frequencyWeight, 4);
}

TEST(FindRoles, RefusesWhatDoesNotFitTheData) {
  struct {
    VariableOptions options;
    char const* message;
  } const rows[] = {
      {{.target = "klass"}, "--target: there is no column \"klass\""},
      {{.target = "class", .predictors = {"income"}},
       "--predictors: there is no column \"income\""},
      {{.target = "class", .excluded = {"income"}}, "--exclude: there is no column \"income\""},
      {{.target = "class", .sample = "income"}, "--sample: there is no column \"income\""},
      {{.target = "class", .predictors = {"class"}},
       "--predictors: column \"class\" is that of --target"},
      {{.target = "class", .predictors = {"amount", "amount"}},
       "--predictors: column \"amount\" is named twice"},
      {{.target = "class", .frequencyWeight = "weight", .caseWeight = "weight"},
       "--case-weight: column \"weight\" is that of --frequency-weight"},
      {{.target = "class", .predictors = {"amount"}, .excluded = {"amount"}},
       "--predictors: column \"amount\" is that of --exclude"},
      {{.target = "class", .frequencyWeight = "purpose"},
       "--frequency-weight: column \"purpose\" holds texts instead of numbers"},
      {{.target = "class", .caseWeight = "purpose"},
       "--case-weight: column \"purpose\" holds texts instead of numbers"},
      {{.target = "class", .sample = "purpose"},
       "--sample: column \"purpose\" holds texts instead of numbers"},
      {{.target = "class", .excluded = {"amount", "purpose", "rating", "weight", "part"}},
       "--exclude: no column is left to be a predictor"},
  };
  for (auto const& [options, message] : rows) EXPECT_EQ(RefusalOf(options), message);
}

TEST(FindRoles, SaysThatThereIsNothingBesideTheTarget) {
  grow::DataSet const data = Read("y\n1\n2\n", {});

  EXPECT_EQ(InputRefusal([&] { FindRoles({.target = "y"}, data); }),
            "--target: no other column is left to predict \"y\" from");
}

TEST(FindRoles, WantsTheClassesOfAnOrdinalTarget) {
  grow::CsvOptions csv;
  csv.levels = {{"amount", global::MeasurementOrdinal}};
  grow::DataSet const data = Read(testing::kCreditText, csv);

  EXPECT_EQ(InputRefusal([&] { FindRoles({.target = "amount"}, data); }),
            "--target: column \"amount\" is ordinal: --categories has to name its classes, from "
            "low to high");
  EXPECT_EQ(FindRoles({.target = "rating"}, CreditData()).target, 3);
}

TEST(FindRoles, RefusesAContinuousTargetWithCategories) {
  grow::CsvOptions csv;
  csv.levels = {{"rating", global::MeasurementContinuous}};
  csv.categories = {{"rating", {"low", "high"}}};
  grow::DataSet const data = Read(testing::kCreditText, csv);

  EXPECT_EQ(InputRefusal([&] { FindRoles({.target = "rating"}, data); }),
            "--target: column \"rating\" has categories, so it cannot be continuous: --level says "
            "that it is");
}

}  // namespace
}  // namespace tree::cli
