#include "tree/grow/data_set.h"

#include <cmath>
#include <limits>
#include <string>
#include <utility>

#include "data/number_text.h"

namespace tree::grow {
namespace {

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

[[noreturn]] void Refuse(ColumnDescription const& description, std::string const& why) {
  throw InputError("column " + Quoted(description.name) + ": " + why);
}

[[noreturn]] void RefuseValue(ColumnDescription const& description, std::size_t row, double value,
                              std::string const& why) {
  throw CaseError("column " + Quoted(description.name), row,
                  "value " + NumberText(value) + ' ' + why);
}

/// Category codes are stored in rules as 32-bit integers, and their number is one more.
constexpr double kMaxCode = std::numeric_limits<int>::max() - 1;

void CheckValues(ColumnDescription const& description, double const* values, std::size_t count) {
  bool const hasCodes =
      description.level == global::MeasurementNominal || !description.labels.empty();
  double const maxCode =
      description.labels.empty() ? kMaxCode : static_cast<double>(description.labels.size()) - 1.0;
  for (std::size_t row = 0; row < count; ++row) {
    double const value = values[row];
    if (std::isnan(value)) RefuseValue(description, row, value, "marks no missing case here");
    if (!hasCodes || value == description.missingValue) continue;
    if (value != std::floor(value) || value < 0.0) {
      RefuseValue(description, row, value, "is no category code");
    }
    if (value > maxCode) RefuseValue(description, row, value, "is beyond the last category");
  }
}

}  // namespace

DataSet::DataSet(std::size_t numCases) : numCases_(numCases) {}

DataSet::DataSet(DataSet&& other) noexcept = default;

DataSet& DataSet::operator=(DataSet&& other) noexcept = default;

DataSet::~DataSet() = default;

int DataSet::BorrowColumn(ColumnDescription description, double const* values) {
  return Append(std::move(description), values);
}

int DataSet::AddColumn(ColumnDescription description, std::vector<double> values) {
  if (values.size() != numCases_) {
    Refuse(description, "it has " + std::to_string(values.size()) + " values, the data " +
                            std::to_string(numCases_) + " cases");
  }
  owned_.reserve(owned_.size() + 1);
  int const index = Append(std::move(description), values.data());
  owned_.push_back(std::move(values));  // moving a vector leaves its elements where they are
  return index;
}

int DataSet::Append(ColumnDescription&& description, double const* values) {
  if (description.name.empty()) Refuse(description, "it has no name");
  if (FindColumn(description.name) >= 0) Refuse(description, "there is another one of this name");
  if (std::isnan(description.missingValue)) {
    Refuse(description, "NaN cannot be its missing value: it equals nothing");
  }
  CheckValues(description, values, numCases_);
  columns_.push_back({std::move(description), values});
  return GetNumColumns() - 1;
}

int DataSet::FindColumn(std::string_view name) const {
  for (int index = 0; index < GetNumColumns(); ++index) {
    if (GetColumn(index).description.name == name) return index;
  }
  return -1;
}

int DataSet::RequireColumn(std::string_view name) const {
  int const index = FindColumn(name);
  if (index < 0) throw InputError("there is no column " + Quoted(name));
  return index;
}

}  // namespace tree::grow
