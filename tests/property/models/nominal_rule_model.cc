#include "property/models/rule_models.h"

#include <algorithm>
#include <cmath>

#include "property/models/agree.h"

namespace tree::testing {

int NominalRuleModel::NumChildren() const {
  int count = missingMapping + 1;
  for (int code = 0; code < length; ++code) count = std::max(count, Get(code) + 1);
  return count;
}

int NominalRuleModel::Classify(double value) const {
  for (auto const& [code, child] : childOfCode) {
    if (static_cast<double>(code) == value && child >= 0) return child;
  }
  return missingMapping;
}

void NominalRuleModel::Reorder(std::vector<int> const& newPositions) {
  RuleModel::Reorder(newPositions);
  for (auto& [code, child] : childOfCode) {
    if (child >= 0) child = newPositions.at(static_cast<std::size_t>(child));
  }
}

std::unique_ptr<RuleModel> NominalRuleModel::Clone() const {
  return std::make_unique<NominalRuleModel>(*this);
}

std::unique_ptr<SplitRuleImp> NominalRuleModel::Build() const {
  auto rule = std::make_unique<NSplitRule>(predictor, length);
  std::vector<int> newPositions;
  for (auto const& [code, child] : childOfCode) {
    rule->SetCatMapping(code, static_cast<int>(newPositions.size()));
    newPositions.push_back(child);
  }
  if (missingMapping >= 0) {
    rule->AddMissingValueMapping(true);
    newPositions.push_back(missingMapping);
  }
  rule->ReorderMappings(newPositions);
  rule->SetDumbRule(dumbChild, dumbProbability);
  return rule;
}

void NominalRuleModel::Set(int category, int child) {
  if (category < 0) return;
  length = std::max(length, category + 1);
  childOfCode[category] = child;
}

int NominalRuleModel::Get(int category) const {
  auto const found = childOfCode.find(category);
  return found == childOfCode.end() ? -1 : found->second;
}

void NominalRuleModel::Add(CodeSetModel const& codes) {
  int const child = NumChildren();
  for (int const code : codes.inOrder) Set(code, child);
}

int NominalRuleModel::Compare(NominalRuleModel const& other) const {
  int result = CompareCore(other);
  if (result == 2) return 2;
  for (int code = 0; code < std::max(length, other.length); ++code) {
    bool const mapped = Get(code) >= 0;
    bool const othersMapped = other.Get(code) >= 0;
    if (mapped != othersMapped && other.NumChildren() != 0) return 3;
    if (Get(code) != other.Get(code)) result = 1;
  }
  return result;
}

void CheckNominal(NSplitRule const& rule, NominalRuleModel const& model, Choices& choices) {
  Agree("IsOrdered", rule.IsOrdered(), false);
  for (int code = -2; code < model.length + 2; ++code) {
    Agree("GetCatMapping", rule.GetCatMapping(code), model.Get(code));
    for (double const value : {code + 0.0, code + 0.5, std::nextafter(code, HUGE_VAL)}) {
      Agree("Classify", rule.Classify(value), model.Classify(value));
    }
  }
  for (int child = -2; child <= model.NumChildren(); ++child) {
    std::unique_ptr<ValueSet> const values(rule.GetMappedValues(child));
    CodeSetModel expected;
    for (int code = 0; code < model.length; ++code) {
      if (model.Get(code) == child) expected.Add(code);
    }
    Agree("GetMappedValues", values != nullptr, !expected.codes.empty());
    if (values != nullptr) Check(dynamic_cast<NValueSet const&>(*values), expected, choices);
  }
}

}  // namespace tree::testing
