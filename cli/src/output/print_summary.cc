#include "output/print_summary.h"

#include <ostream>

#include "output/names.h"

namespace tree::cli {
namespace {

std::string Counted(std::size_t count, char const* thing) {
  return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

std::string HowMeasured(ValidationSpec const& validation, int numFolds) {
  switch (validation.GetType()) {
    case ValidationSplitSample:
      return "on the test sample";
    case ValidationCrossValidation:
      return "by cross-validation in " + std::to_string(numFolds) + " folds";
    default:
      return "on the cases that the tree was grown on, and so flattering";
  }
}

}  // namespace

void PrintData(std::ostream& out, std::string const& file, grow::DataSet const& data,
               grow::CaseRoles const& roles, std::size_t numTraining, std::size_t numTest) {
  grow::ColumnDescription const& target = data.GetColumn(roles.target).description;
  bool const hasClasses = target.level != global::MeasurementContinuous;
  out << (hasClasses ? "Classification" : "Regression") << " tree of " << Shown(target.name)
      << " on " << Counted(numTraining, "case") << " of " << file;
  if (numTest > 0) out << ", tested on " << numTest;
  out << ", by " << Counted(roles.predictors.size(), "predictor") << "\n\n";
}

void PrintStatistics(std::ostream& out, TreeAlgorithmBase const& algorithm,
                     std::vector<std::string> const& classes, int numFolds) {
  ValidationSpec const& validation = *algorithm.GetSettings()->GetValidationSpec();
  TreeStatisticsImp statistics = *algorithm.GetStatistics();
  out << "Risk, measured " << HowMeasured(validation, numFolds) << '\n';
  if (statistics.IsCls()) {
    out << "Rows of the matrix are predicted classes, columns observed ones:";
    char const* mark = " ";
    for (std::string const& label : classes) {
      out << mark << Shown(label);
      mark = ", ";
    }
    out << '\n';
    if (validation.GetType() == ValidationCrossValidation) {
      // Statistics have none then, for the trees of the folds are others.
      statistics.InitMatrix(statistics.GetNumClasses());
      statistics.AddMisclassificationInfo(algorithm.GetRootNode(), TrainingSample);
      out << "It counts the cases that the tree was grown on.\n";
    }
  }
  out << statistics;
}

std::vector<std::string> LeftOutRemarks(grow::LeftOutCases const& leftOut,
                                        VariableOptions const& variables) {
  std::vector<std::string> remarks;
  auto const add = [&remarks](std::size_t count, std::string const& column, char const* why) {
    if (count == 0) return;
    remarks.push_back(Counted(count, "case") + (count == 1 ? " is" : " are") +
                      " left out: column \"" + column + "\" is " + why);
  };
  constexpr char kNoWeight[] = "missing, zero or negative there";
  add(leftOut.missingTarget, variables.target, "missing there");
  add(leftOut.frequencyWeight, variables.frequencyWeight.value_or(""), kNoWeight);
  add(leftOut.caseWeight, variables.caseWeight.value_or(""), kNoWeight);
  add(leftOut.sample, variables.sample.value_or(""), "missing there");
  return remarks;
}

}  // namespace tree::cli
