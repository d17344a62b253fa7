#include <algorithm>

#include "tree/nodes.h"

namespace tree {

PredictorImp::PredictorImp() = default;

PredictorImp::PredictorImp(PredictorImp const& other) = default;

PredictorImp& PredictorImp::operator=(PredictorImp const& other) {
  values_ = other.values_;
  minimum_ = other.minimum_;
  maximum_ = other.maximum_;
  hasMissingValues_ = other.hasMissingValues_;
  return *this;
}

PredictorImp::~PredictorImp() = default;

bool PredictorImp::GetValueRange(double* minimum, double* maximum) const {
  *minimum = minimum_;
  *maximum = maximum_;
  return true;
}

bool PredictorImp::GetNumValues(int* count) const {
  *count = static_cast<int>(values_.size());
  return true;
}

bool PredictorImp::GetValues(double* values, int count) const {
  if (count < 0 || static_cast<std::size_t>(count) > values_.size()) return false;
  std::copy_n(values_.begin(), count, values);
  return true;
}

bool PredictorImp::HasMissingValues() const { return hasMissingValues_; }

void PredictorImp::SetValueRange(double minimum, double maximum) {
  minimum_ = minimum;
  maximum_ = maximum;
}

void PredictorImp::SetNumValues(int count) {
  values_.resize(static_cast<std::size_t>(std::max(count, 0)));
}

void PredictorImp::SetValues(double const* values, int count) {
  values_.assign(values, values + std::max(count, 0));
}

void PredictorImp::SetHasMissingValues(bool flag) { hasMissingValues_ = flag; }

bool PredictorImp::operator==(PredictorImp const& other) const {
  return minimum_ == other.minimum_ && maximum_ == other.maximum_ && values_ == other.values_ &&
         hasMissingValues_ == other.hasMissingValues_;
}

}  // namespace tree
