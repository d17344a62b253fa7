#include "data/case_roles.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tree::grow {
namespace {

/// One more than the highest code, where the labels do not tell; 0 for plain numbers.
int CountCategories(Column const& column, std::size_t numCases) {
  ColumnDescription const& description = column.description;
  if (!description.labels.empty()) return static_cast<int>(description.labels.size());
  if (!column.IsNominal()) return 0;
  double count = 0.0;
  for (std::size_t row = 0; row < numCases; ++row) {
    if (!column.IsMissing(row)) count = std::max(count, column.values[row] + 1.0);
  }
  return static_cast<int>(count);
}

void Describe(Column const& column, std::size_t numCases, VariableSettings& variable) {
  variable.SetMeasurementLevel(column.description.level);
  variable.SetMissingValue(column.description.missingValue);
  variable.SetNumValues(CountCategories(column, numCases));
}

}  // namespace

void CheckRoles(DataSet const& data, CaseRoles const& roles) {
  std::vector<bool> taken(static_cast<std::size_t>(data.GetNumColumns()));
  auto const take = [&](int index) {
    if (index < 0 || index >= data.GetNumColumns()) {
      throw InputError("there is no column with index " + std::to_string(index));
    }
    if (taken[static_cast<std::size_t>(index)]) {
      throw InputError("column \"" + data.GetColumn(index).description.name +
                       "\" is given two parts to play");
    }
    taken[static_cast<std::size_t>(index)] = true;
  };
  take(roles.target);
  for (int const index : roles.predictors) take(index);
  for (std::optional<int> const role : {roles.frequencyWeight, roles.caseWeight, roles.sample}) {
    if (role.has_value()) take(*role);
  }
}

CoreSettingsImp MakeCoreSettings(DataSet const& data, CaseRoles const& roles) {
  CheckRoles(data, roles);
  CoreSettingsImp core;
  Describe(data.GetColumn(roles.target), data.GetNumCases(), *core.GetTarget());
  for (int const index : roles.predictors) {
    Describe(data.GetColumn(index), data.GetNumCases(), *core.AddPredictor());
  }
  core.SetHasFreqWeight(roles.frequencyWeight.has_value());
  core.SetHasCaseWeight(roles.caseWeight.has_value());
  return core;
}

}  // namespace tree::grow
