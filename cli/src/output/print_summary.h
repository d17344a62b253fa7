#ifndef TREE_CLI_SRC_OUTPUT_PRINT_SUMMARY_H_
#define TREE_CLI_SRC_OUTPUT_PRINT_SUMMARY_H_

#include <iosfwd>
#include <string>
#include <vector>

#include "options/options.h"
#include "tree/grow/data_set.h"
#include "tree/results.h"

// What is said about data and tree as wholes.

namespace tree::cli {

/// Writes a line on the cases of each sample and their variables.
void PrintData(std::ostream& out, std::string const& file, grow::DataSet const& data,
               grow::CaseRoles const& roles, std::size_t numTraining, std::size_t numTest);

/// Writes how the risk was measured, and the statistics in the library's text form, after a
/// cross-validation with the matrix of the training sample. `numFolds`: of a cross-validation.
/// Requires a validated tree.
void PrintStatistics(std::ostream& out, TreeAlgorithmBase const& algorithm,
                     std::vector<std::string> const& classes, int numFolds);

/// How many cases are left out and why, a sentence for each reason.
std::vector<std::string> LeftOutRemarks(grow::LeftOutCases const& leftOut,
                                        VariableOptions const& variables);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_PRINT_SUMMARY_H_
