#include "property/models/rule_models.h"

#include <algorithm>
#include <cmath>

#include "property/models/agree.h"
#include "tree/support.h"

namespace tree::testing {

namespace {

constexpr int kNumSlots = 4;

// Single bits and combinations, with a slot and without.
constexpr unsigned int kFlags[] = {0, 1, 2, 3, 4, 5, 8, 12, 15, 16, 17, 24, 64, 127, 128, 129};

std::set<int> Bits(unsigned int word) {
  std::set<int> bits;
  for (int bit = 0; bit < 32; ++bit) {
    if ((word >> bit & 1U) != 0) bits.insert(bit);
  }
  return bits;
}

unsigned int Word(std::set<int> const& bits) {
  unsigned int word = 0;
  for (int const bit : bits) word += 1U << bit;
  return word;
}

std::optional<int> Slot(unsigned int flag) {
  std::set<int> const bits = Bits(flag & 0x7FU);
  if (bits.empty() || *bits.rbegin() >= kNumSlots) return std::nullopt;
  return *bits.rbegin();
}

}  // namespace

void RuleModel::Reorder(std::vector<int> const& newPositions) {
  if (missingMapping >= 0)
    missingMapping = newPositions.at(static_cast<std::size_t>(missingMapping));
  if (dumbChild >= 0) dumbChild = newPositions.at(static_cast<std::size_t>(dumbChild));
  properties.insert(2);
}

void RuleModel::AddMissingValueMapping(bool ownChild) {
  missingMapping = ownChild ? NumChildren() : NumChildren() - 1;
}

void RuleModel::SetProperty(unsigned int flag) {
  std::set<int> const bits = Bits(flag);
  if (bits.contains(0) || bits.contains(1)) {
    properties.erase(0);
    properties.erase(1);
  }
  properties.insert(bits.begin(), bits.end());
}

void RuleModel::SetStatistic(unsigned int flag, double value) {
  std::set<int> const bits = Bits(flag);
  auto const present = static_cast<std::size_t>(std::count_if(
      bits.begin(), bits.end(), [this](int bit) { return statistics.contains(bit); }));
  if (present != 0 && present != bits.size()) return;
  statistics.insert(bits.begin(), bits.end());
  if (std::optional<int> const slot = Slot(flag)) statisticValues[*slot] = value;
}

bool RuleModel::HasStatistic(unsigned int flag) const {
  std::set<int> const bits = Bits(flag);
  return std::includes(statistics.begin(), statistics.end(), bits.begin(), bits.end());
}

std::optional<double> RuleModel::Statistic(unsigned int flag) const {
  std::optional<int> const slot = Slot(flag);
  if (!HasStatistic(flag) || !slot) return std::nullopt;
  auto const found = statisticValues.find(*slot);
  return found == statisticValues.end() ? systemMissingValue() : found->second;
}

int RuleModel::CompareCore(RuleModel const& other) const {
  if (predictor != other.predictor) return 2;
  return missingMapping == other.missingMapping ? 0 : 1;
}

bool RuleModel::CoreEquals(RuleModel const& other) const {
  for (int slot = 0; slot < kNumSlots; ++slot) {
    auto const read = [slot](RuleModel const& rule) {
      auto const found = rule.statisticValues.find(slot);
      return found == rule.statisticValues.end() ? systemMissingValue() : found->second;
    };
    if (!(read(*this) == read(other))) return false;
  }
  return predictor == other.predictor && dumbProbability == other.dumbProbability &&
         dumbChild == other.dumbChild && missingMapping == other.missingMapping &&
         statistics == other.statistics && properties == other.properties;
}

std::unique_ptr<RuleModel> ChooseRule(Choices& choices, int numPredictors, int numChildren,
                                      bool withDumbChild) {
  int const predictor = choices.Below(numPredictors);
  std::unique_ptr<RuleModel> rule;
  if (choices.Flag()) {
    auto ordinal = std::make_unique<OrdinalRuleModel>(
        choices.Flag() ? systemMissingValue() : choices.Value(), predictor);
    for (int left = choices.Below(4); left > 0; --left) {
      IntervalModel interval;
      interval.right = choices.Number();
      interval.openRight = choices.Flag();
      interval.boundedRight = true;
      if (ordinal->Find(interval.right) == nullptr) ordinal->Insert(interval, false);
    }
    for (OrdinalRuleModel::Item& item : ordinal->items) item.child = choices.Below(numChildren);
    ordinal->upper = choices.Below(numChildren);
    rule = std::move(ordinal);
  } else {
    auto nominal = std::make_unique<NominalRuleModel>(predictor, choices.Below(6));
    for (int left = choices.Below(6); left > 0; --left) {
      nominal->Set(choices.Below(8), choices.Below(numChildren));
    }
    rule = std::move(nominal);
  }
  if (choices.Below(3) == 1) rule->missingMapping = choices.Below(numChildren);
  if (withDumbChild || choices.Flag()) rule->dumbChild = choices.Below(numChildren);
  rule->dumbProbability = choices.Number();
  rule->properties = {0, 2};
  return rule;
}

void Check(SplitRuleImp const& rule, RuleModel const& model, Choices& choices) {
  Agree("GetPredictorIndex", rule.GetPredictorIndex(), model.predictor);
  Agree("GetMissingValueMapping", rule.GetMissingValueMapping(), model.missingMapping);
  Agree("GetDumbChildPos", rule.GetDumbChildPos(), model.dumbChild);
  Agree("GetDumbChildProb", rule.GetDumbChildProb(), model.dumbProbability);
  Agree("GetCreationFlags", rule.GetCreationFlags(), static_cast<int>(Word(model.properties)));
  Agree("GetNumChildren", rule.GetNumChildren(), model.NumChildren());
  double const chosen = choices.Value();
  Agree("Classify", rule.Classify(chosen), model.Classify(chosen));
  for (unsigned int const flag : kFlags) {
    auto const statistic = static_cast<StatisticFlag>(flag);
    std::optional<double> const expected = model.Statistic(flag);
    double value = 4711.0;
    Agree("HasStatistic", rule.HasStatistic(statistic), model.HasStatistic(flag));
    Agree("GetStatistic", rule.GetStatistic(statistic, &value), expected.has_value());
    Agree("GetStatistic", value, expected.value_or(4711.0));
    Agree("GetStatistic", rule.GetStatistic(statistic), expected.value_or(systemMissingValue()));
    Agree("GetFlagPosition", SplitRuleImp::GetFlagPosition(statistic), Slot(flag).value_or(-1));
  }
  if (auto const* ordinal = dynamic_cast<OrdinalRuleModel const*>(&model)) {
    CheckOrdinal(dynamic_cast<OSplitRule const&>(rule), *ordinal, choices);
  } else {
    CheckNominal(dynamic_cast<NSplitRule const&>(rule),
                 dynamic_cast<NominalRuleModel const&>(model), choices);
  }
}

}  // namespace tree::testing
