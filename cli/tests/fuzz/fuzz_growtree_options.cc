// Reads any arguments: they are refused by a message, or become settings that hold what they say.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli_testing/credit_data.h"
#include "fuzz/fuzz_target.h"
#include "options/label_reader.h"
#include "options/option_parser.h"
#include "options/settings.h"
#include "options/variables.h"

namespace {

using namespace tree::cli;  // NOLINT(google-build-using-namespace): what is fuzzed

void Require(bool holds, char const* what) {
  if (!holds) throw std::logic_error(what);
}

/// An argument per line.
std::vector<std::string> ArgumentsIn(std::string const& text) {
  std::vector<std::string> arguments;
  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t const end = std::min(text.find('\n', begin), text.size());
    arguments.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return arguments;
}

std::string InQuotes(std::string const& label) {
  std::string quoted = "\"";
  for (char const c : label) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

/// Labels in quotes are read as they were written.
void CheckLabels(std::vector<std::string> const& labels) {
  if (labels.empty()) return;
  std::string list;
  for (std::string const& label : labels) list += (list.empty() ? "" : ",") + InQuotes(label);
  Require(LabelsOf(list) == labels, "labels are read as others");
}

void CheckSettings(tree::AlgSettings const& settings) {
  tree::StopRule const& rule = *settings.GetStopRule();
  Require(rule.GetMaxTreeDepth() >= 0 && rule.GetMinNodeSize() >= 0, "a size is negative");
  Require(rule.GetMinNodePercentSize() >= 0.0 && rule.GetMinNodePercentSize() <= 100.0,
          "a percentage is none");
  Require(settings.GetMaxNumCompetitors() >= 1, "there are no competitors");
  Require(settings.GetValidationSpec()->GetNumCVFolds() >= 2, "there are no folds");
  auto const* const classes = dynamic_cast<tree::CCartSettings const*>(&settings);
  if (classes == nullptr || classes->GetPriors()->GetType() != tree::PriorTypeCustom) return;
  double sum = 0.0;
  for (int index = 0; index < classes->GetPriors()->GetNumClasses(); ++index) {
    sum += classes->GetPriors()->Get(index);
  }
  Require(std::fabs(sum - 1.0) < 1e-9, "priors do not sum to 1");
}

void Check(ParsedArguments const& parsed) {
  if (!parsed.text.empty()) return;
  Options const& options = parsed.options;
  Require(!options.variables.target.empty(), "there is no target");
  Require(options.grow.testShare > 0.0 && options.grow.testShare < 1.0, "a share is none");
  tree::grow::DataSet const data = testing::CreditData();
  try {
    tree::grow::CaseRoles const roles = FindRoles(options.variables, data);
    CheckSettings(*MakeSettings(options, data, roles));
    if (options.gains.AreWanted()) {
      tree::GainsSettings const gains =
          MakeGainsSettings(options.gains, data.GetColumn(roles.target).description);
      Require(100 % gains.GetPercentileIncrement() == 0, "percentiles do not end at the last case");
    }
  } catch (tree::grow::InputError const& error) {
    Require(std::string(error.what()).starts_with("--"), "a message names no option");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::vector<std::string> const arguments =
      ArgumentsIn(std::string(reinterpret_cast<char const*>(data), size));
  CheckLabels(arguments);
  try {
    Check(ParseArguments(arguments));
  } catch (UsageError const& error) {
    Require(!std::string(error.what()).empty(), "a message says nothing");
  }
  return 0;
}
