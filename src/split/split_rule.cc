#include "tree/assertions.h"
#include "tree/split_rules.h"

namespace tree {

namespace {

constexpr char kNeedsRule[] = "the handle holds no rule";

std::unique_ptr<SplitRuleImp> MakeRule(VariableSettings const& settings, int predictorIndex) {
  if (settings.GetMeasurementLevel() == global::MeasurementNominal) {
    return std::make_unique<NSplitRule>(predictorIndex, 0);
  }
  return std::make_unique<OSplitRule>(settings, predictorIndex);
}

std::unique_ptr<SplitRuleImp> CloneRule(SplitRuleImp const* rule) {
  internal::Require(rule != nullptr, "SplitRule", kNeedsRule);
  return std::unique_ptr<SplitRuleImp>(rule == nullptr ? nullptr : rule->Clone());
}

}  // namespace

SplitRule::SplitRule(VariableSettings const& settings, int predictorIndex)
    : rule_(MakeRule(settings, predictorIndex)) {}

SplitRule::SplitRule(SplitRuleImp const& rule) : rule_(CloneRule(&rule)) {}

SplitRule::SplitRule(SplitRule const& other) : rule_(CloneRule(other.rule_.get())) {}

SplitRule& SplitRule::operator=(SplitRule const& other) {
  rule_ = CloneRule(other.rule_.get());
  return *this;
}

SplitRule::~SplitRule() = default;

int SplitRule::GetNumChildren() const { return rule_ == nullptr ? 0 : rule_->GetNumChildren(); }

ValueSet* SplitRule::GetMappedValues(int child) const {
  return rule_ == nullptr ? nullptr : rule_->GetMappedValues(child);
}

bool SplitRule::AddMappedValues(ValueSet const& values) {
  internal::Require(rule_ != nullptr, "SplitRule::AddMappedValues", kNeedsRule);
  return rule_->AddMappedValues(values);
}

void SplitRule::AddMissingValueMapping(bool ownChild) {
  internal::Require(rule_ != nullptr, "SplitRule::AddMissingValueMapping", kNeedsRule);
  rule_->AddMissingValueMapping(ownChild);
}

int SplitRule::GetMissingValueMapping() const {
  return rule_ == nullptr ? 0 : rule_->GetMissingValueMapping();
}

bool SplitRule::GetStatistic(StatisticFlag flag, double* value) const {
  return rule_ != nullptr && rule_->GetStatistic(flag, value);
}

bool SplitRule::HasStatistic(StatisticFlag flag) const {
  return rule_ != nullptr && rule_->HasStatistic(flag);
}

bool SplitRule::HasProperty(SplitRulePropertyFlag flag) const {
  return rule_ != nullptr && rule_->HasProperty(flag);
}

int SplitRule::GetPredictorIndex() const {
  internal::Require(rule_ != nullptr, "SplitRule::GetPredictorIndex", kNeedsRule);
  return rule_->GetPredictorIndex();
}

}  // namespace tree
