#ifndef TREE_TESTS_PROPERTY_MODELS_VALUE_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_VALUE_MODELS_H_

// Slow, obvious counterparts of variables and value sets.

#include <cstdint>
#include <set>
#include <vector>

#include "property/models/choices.h"
#include "tree/support.h"
#include "tree/values.h"

namespace tree::testing {

/// A variable as four plain fields.
struct VariableModel {
  double missingValue = systemMissingValue();
  int numValues = 0;
  int level = global::MeasurementContinuous;
  bool mergeFlag = true;
};

/// Applies one chosen operation to both.
void Change(VariableSettings& variable, VariableModel& model, Choices& choices);

/// Throws unless everything that can be read is as in `model`.
void Check(VariableSettings const& variable, VariableModel const& model);

/// `value` truncated toward zero, by wide arithmetic; the most negative 32-bit integer for NaN and
/// whatever does not fit.
std::int64_t Truncated(double value);

/// An interval as six plain fields.
struct IntervalModel {
  double left = 0.0;
  double right = 0.0;
  bool openLeft = true;
  bool openRight = true;
  bool boundedLeft = false;
  bool boundedRight = false;

  void SetBoundedLeft(bool bounded);
  void SetBoundedRight(bool bounded);

  bool Contains(double value) const;
  bool IsEmpty() const;
  bool Equals(IntervalModel const& other) const;
  bool IsBefore(IntervalModel const& other) const;

  OValueSet Build() const;
};

/// An interval with numbers for ends.
IntervalModel ChooseInterval(Choices& choices);

/// Throws unless everything that can be read of `interval` is as in `model`; membership is asked
/// for some values of `choices` and values around the ends.
void Check(OValueSet const& interval, IntervalModel const& model, Choices& choices);

/// Codes by value, and once more in the order in which they came.
struct CodeSetModel {
  std::set<int> codes;
  std::vector<int> inOrder;

  bool Add(int code);
  bool Contains(double value) const;
};

/// Throws unless `codes` holds and yields what `model` says; membership as for an interval.
void Check(NValueSet const& codes, CodeSetModel const& model, Choices& choices);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_VALUE_MODELS_H_
