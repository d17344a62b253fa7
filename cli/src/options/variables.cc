#include "options/variables.h"

#include <cstddef>
#include <string>
#include <vector>

#include "options/refusal.h"

namespace tree::cli {
namespace {

/// Hands out columns, each of them once.
class Columns {
 public:
  explicit Columns(grow::DataSet const& data)
      : data_(data), options_(static_cast<std::size_t>(data.GetNumColumns()), nullptr) {}

  int Take(char const* option, std::string const& name) {
    int const index = data_.FindColumn(name);
    if (index < 0) Refuse(option, "there is no column " + Quoted(name));
    char const*& takenBy = options_[static_cast<std::size_t>(index)];
    if (takenBy == option) Refuse(option, "column " + Quoted(name) + " is named twice");
    if (takenBy != nullptr) Refuse(option, "column " + Quoted(name) + " is that of " + takenBy);
    takenBy = option;
    return index;
  }

  std::optional<int> TakeNumbers(char const* option, std::optional<std::string> const& name) {
    if (!name.has_value()) return std::nullopt;
    int const index = Take(option, *name);
    if (data_.GetColumn(index).IsNominal()) {
      Refuse(option, "column " + Quoted(*name) + " holds texts instead of numbers");
    }
    return index;
  }

  std::vector<int> GetRest() const {
    std::vector<int> rest;
    for (int index = 0; index < data_.GetNumColumns(); ++index) {
      if (options_[static_cast<std::size_t>(index)] == nullptr) rest.push_back(index);
    }
    return rest;
  }

 private:
  grow::DataSet const& data_;
  std::vector<char const*> options_;  // that took the column, by column index
};

/// Classes and categories need codes, so those of an ordered target have to be known.
void CheckTarget(grow::ColumnDescription const& target) {
  bool const hasLabels = !target.labels.empty();
  if (target.level == global::MeasurementOrdinal && !hasLabels) {
    Refuse("--target", "column " + Quoted(target.name) +
                           " is ordinal: --categories has to name its classes, from low to high");
  }
  if (target.level == global::MeasurementContinuous && hasLabels) {
    Refuse("--target", "column " + Quoted(target.name) +
                           " has categories, so it cannot be continuous: --level says that it is");
  }
}

}  // namespace

grow::CaseRoles FindRoles(VariableOptions const& options, grow::DataSet const& data) {
  Columns columns(data);
  grow::CaseRoles roles;
  roles.target = columns.Take("--target", options.target);
  CheckTarget(data.GetColumn(roles.target).description);
  roles.frequencyWeight = columns.TakeNumbers("--frequency-weight", options.frequencyWeight);
  roles.caseWeight = columns.TakeNumbers("--case-weight", options.caseWeight);
  roles.sample = columns.TakeNumbers("--sample", options.sample);
  for (std::string const& name : options.excluded) columns.Take("--exclude", name);
  for (std::string const& name : options.predictors) {
    roles.predictors.push_back(columns.Take("--predictors", name));
  }
  if (options.predictors.empty()) roles.predictors = columns.GetRest();
  if (roles.predictors.empty()) {
    if (!options.excluded.empty()) Refuse("--exclude", "no column is left to be a predictor");
    Refuse("--target", "no other column is left to predict " + Quoted(options.target) + " from");
  }
  return roles;
}

}  // namespace tree::cli
