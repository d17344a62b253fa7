#include "output/print_summary.h"

#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"
#include "cli_testing/fixed_algorithm.h"
#include "cli_testing/trees.h"
#include "options/variables.h"

namespace tree::cli {
namespace {

using testing::CreditData;
using ::testing::ElementsAre;
using testing::FixedAlgorithm;
using ::testing::IsEmpty;

std::string PrintedData(VariableOptions const& variables, std::size_t numTraining,
                        std::size_t numTest) {
  grow::DataSet const data = CreditData();
  std::ostringstream out;
  PrintData(out, "credit.csv", data, FindRoles(variables, data), numTraining, numTest);
  return out.str();
}

std::string PrintedStatistics(FixedAlgorithm const& algorithm) {
  std::ostringstream out;
  PrintStatistics(out, algorithm, {"Adelie", "Gen,too"}, 7);
  return out.str();
}

TEST(PrintData, SaysWhatTheTreeIsOf) {
  EXPECT_EQ(PrintedData({.target = "class"}, 700, 300),
            "Classification tree of class on 700 cases of credit.csv, tested on 300, by 5 "
            "predictors\n\n");
  EXPECT_EQ(PrintedData({.target = "amount", .predictors = {"purpose"}}, 1, 0),
            "Regression tree of amount on 1 case of credit.csv, by 1 predictor\n\n");
  EXPECT_EQ(PrintedData({.target = "rating", .predictors = {"purpose"}}, 2, 0),
            "Classification tree of rating on 2 cases of credit.csv, by 1 predictor\n\n");
}

TEST(PrintStatistics, SaysHowTheRiskWasMeasured) {
  FixedAlgorithm algorithm(testing::ClassTree(), testing::ClassSettings());
  algorithm.Validate();

  EXPECT_EQ(PrintedStatistics(algorithm),
            "Risk, measured on the cases that the tree was grown on, and so flattering\n"
            "Rows of the matrix are predicted classes, columns observed ones: Adelie, \"Gen,too\"\n"
            "Classification tree.\n"
            "Number of target classes = 2\n"
            "\n"
            "50  0  \n"
            "10  40  Risk estimate 0.25\n"
            "Standard error of risk estimate 0.5\n");
}

TEST(PrintStatistics, CountsTheTrainingSampleAfterACrossValidation) {
  CCartSettingsImp settings = testing::ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  FixedAlgorithm cross(testing::ClassTree(), settings);
  cross.Validate();

  EXPECT_EQ(PrintedStatistics(cross),
            "Risk, measured by cross-validation in 7 folds\n"
            "Rows of the matrix are predicted classes, columns observed ones: Adelie, \"Gen,too\"\n"
            "It counts the cases that the tree was grown on.\n"
            "Classification tree.\n"
            "Number of target classes = 2\n"
            "\n"
            "50  0  \n"
            "10  40  Risk estimate 0.25\n"
            "Standard error of risk estimate 0.5\n");
}

TEST(PrintStatistics, TellsOfTheTestSample) {
  RCartSettingsImp settings(*testing::ClassSettings().GetCoreSettings());
  settings.GetValidationSpec()->Set(ValidationSplitSample);
  FixedAlgorithm split(testing::NumberTree(), settings);
  split.Validate();

  EXPECT_EQ(PrintedStatistics(split),
            "Risk, measured on the test sample\n"
            "Regression tree.\n"
            "Risk estimate 0.25\n"
            "Standard error of risk estimate 0.5\n");
}

TEST(LeftOutRemarks, GiveEveryReason) {
  VariableOptions variables;
  variables.target = "class";
  variables.frequencyWeight = "n";
  variables.caseWeight = "w";
  variables.sample = "s";

  EXPECT_THAT(LeftOutRemarks({2, 1, 3, 4}, variables),
              ElementsAre("2 cases are left out: column \"class\" is missing there",
                          "1 case is left out: column \"n\" is missing, zero or negative there",
                          "3 cases are left out: column \"w\" is missing, zero or negative there",
                          "4 cases are left out: column \"s\" is missing there"));
  EXPECT_THAT(LeftOutRemarks({}, variables), IsEmpty());
}

}  // namespace
}  // namespace tree::cli
