#include "property/models/value_models.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "property/models/agree.h"

namespace tree::testing {

namespace {

constexpr double kTolerance = 1e-12;

}  // namespace

void Change(VariableSettings& variable, VariableModel& model, Choices& choices) {
  switch (choices.Below(4)) {
    case 0:
      model.missingValue = choices.Value();
      variable.SetMissingValue(model.missingValue);
      break;
    case 1:
      model.numValues = choices.Integer();
      variable.SetNumValues(model.numValues);
      break;
    case 2:
      model.level = choices.Flag() ? choices.Below(3) : choices.Integer();
      variable.SetMeasurementLevel(static_cast<global::MeasurementLevel>(model.level));
      break;
    default:
      model.mergeFlag = choices.Flag();
      variable.SetValueMergeFlag(model.mergeFlag);
      break;
  }
}

void Check(VariableSettings const& variable, VariableModel const& model) {
  Agree("GetMissingValue", variable.GetMissingValue(), model.missingValue);
  Agree("GetNumValues", variable.GetNumValues(), model.numValues);
  Agree("GetMeasurementLevel", static_cast<int>(variable.GetMeasurementLevel()), model.level);
  Agree("GetValueMergeFlag", variable.GetValueMergeFlag(), model.mergeFlag);
}

std::int64_t Truncated(double value) {
  constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
  if (!(std::fabs(value) < 1e15)) return kLowest;
  auto const wide = static_cast<std::int64_t>(static_cast<long double>(value));
  return wide < kLowest || wide > kHighest ? kLowest : wide;
}

void IntervalModel::SetBoundedLeft(bool bounded) {
  boundedLeft = bounded;
  if (!bounded) left = right;
}

void IntervalModel::SetBoundedRight(bool bounded) {
  boundedRight = bounded;
  if (!bounded) right = left;
}

bool IntervalModel::Contains(double value) const {
  bool const atLeftEnd = std::fabs(value - left) < kTolerance;
  bool const beyondLeft = Truncated(value - (left + kTolerance)) < 0;
  bool const beyondRight = Truncated(right - (value + kTolerance)) < 0;
  bool answer = true;
  if (boundedLeft) answer = !beyondLeft && !(atLeftEnd && openLeft);
  if (answer && boundedRight) answer = !beyondRight && !(atLeftEnd && openRight);
  return answer;
}

bool IntervalModel::IsEmpty() const {
  if (Truncated((right - kTolerance) - left) > 0) return false;
  bool const endsCoincide = std::fabs(right - left) < kTolerance;
  if (!endsCoincide) return true;
  return boundedLeft && boundedRight && (openLeft || openRight);
}

bool IntervalModel::Equals(IntervalModel const& other) const {
  if (!boundedLeft && !other.boundedLeft) return true;
  return left == other.left;
}

bool IntervalModel::IsBefore(IntervalModel const& other) const {
  if (boundedLeft) return left < other.left;
  return other.boundedLeft;
}

OValueSet IntervalModel::Build() const {
  OValueSet interval(left, right);
  interval.SetOpenLeft(openLeft);
  interval.SetOpenRight(openRight);
  if (!boundedLeft) interval.SetBoundedLeft(false);
  if (!boundedRight) interval.SetBoundedRight(false);
  return interval;
}

IntervalModel ChooseInterval(Choices& choices) {
  IntervalModel interval{choices.Number(), choices.Number(), true, true, true, true};
  int const flags = choices.Below(16);
  interval.openLeft = (flags & 1) != 0;
  interval.openRight = (flags & 2) != 0;
  if ((flags & 4) != 0) interval.SetBoundedLeft(false);
  if ((flags & 8) != 0) interval.SetBoundedRight(false);
  return interval;
}

void Check(OValueSet const& interval, IntervalModel const& model, Choices& choices) {
  Agree("GetLeftEnd", interval.GetLeftEnd(), model.left);
  Agree("GetRightEnd", interval.GetRightEnd(), model.right);
  Agree("IsOpenLeft", interval.IsOpenLeft(), model.openLeft);
  Agree("IsOpenRight", interval.IsOpenRight(), model.openRight);
  Agree("IsBoundedLeft", interval.IsBoundedLeft(), model.boundedLeft);
  Agree("IsBoundedRight", interval.IsBoundedRight(), model.boundedRight);
  Agree("IsEmpty", interval.IsEmpty(), model.IsEmpty());
  Agree("IsNominalValueSet", interval.IsNominalValueSet(), false);
  double const chosen = choices.Value();
  for (double const value : {chosen, model.left, model.right, model.left - 1.0, model.right + 1.0,
                             model.left + 2e-12, model.left - 2e-12, model.right + 2e-12}) {
    Agree("Contains", interval.Contains(value), model.Contains(value));
  }
}

bool CodeSetModel::Add(int code) {
  if (!codes.insert(code).second) return false;
  inOrder.push_back(code);
  return true;
}

bool CodeSetModel::Contains(double value) const {
  return std::any_of(codes.begin(), codes.end(),
                     [value](int code) { return static_cast<double>(code) == value; });
}

void Check(NValueSet const& codes, CodeSetModel const& model, Choices& choices) {
  Agree("GetNumElements", codes.GetNumElements(), static_cast<int>(model.inOrder.size()));
  Agree("IsNominalValueSet", codes.IsNominalValueSet(), true);
  std::unique_ptr<NValueSetIter> const iterator(codes.GetIterator());
  Agree("GetData before Advance", iterator->GetData(), -1);
  for (int const code : model.inOrder) {
    Agree("Advance", iterator->Advance(), true);
    Agree("GetData", iterator->GetData(), code);
    for (double const value : {code + 0.0, code + 0.5, code + 1.0, code + 4294967296.0}) {
      Agree("Contains", codes.Contains(value), model.Contains(value));
    }
  }
  Agree("Advance at the end", iterator->Advance(), false);
  double const chosen = choices.Value();
  Agree("Contains", codes.Contains(chosen), model.Contains(chosen));
}

}  // namespace tree::testing
