#include <cmath>
#include <string>

#include "data/case_roles.h"
#include "tree/grow/data_set.h"

namespace tree::grow {
namespace {

Column const* FindRole(DataSet const& data, std::optional<int> role) {
  return role.has_value() ? &data.GetColumn(*role) : nullptr;
}

/// Whether a case with this weight counts.
bool Weighs(Column const& weights, std::size_t row) {
  if (weights.IsMissing(row) || weights.values[row] <= 0.0) return false;
  if (std::isfinite(weights.values[row])) return true;
  throw InputError("column \"" + weights.description.name + "\": case " + std::to_string(row) +
                   ": a weight cannot be infinite");
}

}  // namespace

CaseSelection::CaseSelection(DataSet const& data, CaseRoles const& roles) {
  CheckRoles(data, roles);
  Column const& target = data.GetColumn(roles.target);
  Column const* const frequency = FindRole(data, roles.frequencyWeight);
  Column const* const caseWeight = FindRole(data, roles.caseWeight);
  Column const* const sample = FindRole(data, roles.sample);

  for (std::size_t row = 0; row < data.GetNumCases(); ++row) {
    if (target.IsMissing(row)) {
      ++leftOut_.missingTarget;
    } else if (frequency != nullptr && !Weighs(*frequency, row)) {
      ++leftOut_.frequencyWeight;
    } else if (caseWeight != nullptr && !Weighs(*caseWeight, row)) {
      ++leftOut_.caseWeight;
    } else if (sample != nullptr && sample->IsMissing(row)) {
      ++leftOut_.sample;
    } else {
      Sample& chosen = sample != nullptr && sample->values[row] != 0.0 ? test_ : training_;
      chosen.rows.push_back(row);
      double weight = 1.0;
      if (frequency != nullptr) {
        weight = frequency->values[row];
        chosen.frequencies.push_back(weight);
      }
      if (caseWeight != nullptr) weight *= caseWeight->values[row];
      if (frequency != nullptr || caseWeight != nullptr) chosen.weights.push_back(weight);
    }
  }
}

}  // namespace tree::grow
