#include "tree/support.h"
#include "tree/values.h"

namespace tree {

VariableSettings::~VariableSettings() = default;

VariableSettingsImp::VariableSettingsImp() : missingValue_(systemMissingValue()) {}

VariableSettingsImp::VariableSettingsImp(VariableSettingsImp const& other) = default;

VariableSettingsImp& VariableSettingsImp::operator=(VariableSettingsImp const& other) = default;

VariableSettingsImp::~VariableSettingsImp() = default;

VariableSettings* VariableSettingsImp::Clone() const { return new VariableSettingsImp(*this); }

double VariableSettingsImp::GetMissingValue() const { return missingValue_; }

global::MeasurementLevel VariableSettingsImp::GetMeasurementLevel() const {
  return measurementLevel_;
}

bool VariableSettingsImp::GetValueMergeFlag() const { return valueMergeFlag_; }

int VariableSettingsImp::GetNumValues() const { return numValues_; }

void VariableSettingsImp::SetMeasurementLevel(global::MeasurementLevel level) {
  measurementLevel_ = level;
}

void VariableSettingsImp::SetMissingValue(double value) { missingValue_ = value; }

void VariableSettingsImp::SetValueMergeFlag(bool flag) { valueMergeFlag_ = flag; }

void VariableSettingsImp::SetNumValues(int count) { numValues_ = count; }

}  // namespace tree
