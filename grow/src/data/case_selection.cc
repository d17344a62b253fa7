#include <cmath>
#include <string>

#include "data/case_roles.h"
#include "data/number_text.h"
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
  throw CaseError("column \"" + weights.description.name + '"', row, "a weight cannot be infinite");
}

/// The columns of weights, as messages name them; at least one of them is there.
std::string NamesOf(Column const* frequency, Column const* caseWeight) {
  auto const quoted = [](Column const* column) { return '"' + column->description.name + '"'; };
  if (frequency == nullptr) return "column " + quoted(caseWeight);
  if (caseWeight == nullptr) return "column " + quoted(frequency);
  return "columns " + quoted(frequency) + " and " + quoted(caseWeight);
}

/// The weight of a case that has frequency and case weight.
double Product(Column const& frequency, Column const& caseWeight, std::size_t row) {
  double const product = frequency.values[row] * caseWeight.values[row];
  if (std::isfinite(product)) return product;
  throw CaseError(NamesOf(&frequency, &caseWeight), row,
                  NumberText(frequency.values[row]) + " times " +
                      NumberText(caseWeight.values[row]) + " cannot be a weight");
}

}  // namespace

CaseSelection::CaseSelection(DataSet const& data, CaseRoles const& roles,
                             std::function<void()> const& poll) {
  CheckRoles(data, roles);
  Column const& target = data.GetColumn(roles.target);
  Column const* const frequency = FindRole(data, roles.frequencyWeight);
  Column const* const caseWeight = FindRole(data, roles.caseWeight);
  Column const* const sample = FindRole(data, roles.sample);

  training_.rows.reserve(data.GetNumCases());  // growing on the way would copy them all
  double sum = 0.0;                            // of all weights
  constexpr std::size_t kRowsPerPoll = std::size_t{1} << 20;
  for (std::size_t row = 0; row < data.GetNumCases(); ++row) {
    if (poll && row % kRowsPerPoll == 0) poll();
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
      if (frequency != nullptr) chosen.frequencies.push_back(frequency->values[row]);
      if (frequency == nullptr && caseWeight == nullptr) continue;
      chosen.weights.push_back(frequency == nullptr    ? caseWeight->values[row]
                               : caseWeight == nullptr ? frequency->values[row]
                                                       : Product(*frequency, *caseWeight, row));
      sum += chosen.weights.back();
    }
  }
  if (!std::isfinite(sum)) {
    throw InputError(NamesOf(frequency, caseWeight) +
                     ": the weights add up to more than a number can be");
  }
}

}  // namespace tree::grow
