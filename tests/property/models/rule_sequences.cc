#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "property/models/agree.h"
#include "property/models/rule_models.h"
#include "property/models/sequences.h"

namespace tree::testing {

namespace {

constexpr int kNumPredictors = 3;
constexpr int kNumCoreOperations = 5;

void ChangeCore(SplitRuleImp& rule, RuleModel& model, int operation, Choices& choices) {
  auto const flag = static_cast<unsigned int>(choices.Below(256));
  double const value = choices.Value();
  switch (operation) {
    case 0:
      rule.SetProperty(static_cast<SplitRulePropertyFlag>(flag % 16));
      model.SetProperty(flag % 16);
      break;
    case 1:
      rule.SetStatistic(static_cast<StatisticFlag>(flag), value);
      model.SetStatistic(flag, value);
      break;
    case 2: {
      int const child = static_cast<int>(flag % 8) - 2;
      rule.SetDumbRule(child, value);
      model.dumbChild = child;
      model.dumbProbability = value;
      break;
    }
    case 3:
      rule.AddMissingValueMapping(flag % 2 == 1);
      model.AddMissingValueMapping(flag % 2 == 1);
      break;
    default: {
      std::vector<int> newPositions;
      for (int left = std::max(model.NumChildren(), model.dumbChild + 1); left > 0; --left) {
        newPositions.push_back(choices.Below(8));
      }
      rule.ReorderMappings(newPositions);
      model.Reorder(newPositions);
      break;
    }
  }
}

/// A handle copies its rule, shows the same, and changes alone.
void CheckHandle(SplitRuleImp const& rule, RuleModel const& model, Choices& choices) {
  SplitRule handle(rule);
  SplitRule const copy(handle);
  Check(*static_cast<SplitRuleImp const*>(handle), model, choices);
  handle.AddMissingValueMapping(true);
  Agree("SplitRule::GetMissingValueMapping", handle.GetMissingValueMapping(), model.NumChildren());
  Check(*static_cast<SplitRuleImp const*>(copy), model, choices);
  Agree("SplitRule::GetNumChildren", copy.GetNumChildren(), model.NumChildren());
  Agree("SplitRule::GetPredictorIndex", copy.GetPredictorIndex(), model.predictor);
  auto const flag = static_cast<unsigned int>(choices.Below(16));
  double value = 0.0;
  auto const statistic = static_cast<StatisticFlag>(flag);
  Agree("SplitRule::HasStatistic", copy.HasStatistic(statistic), model.HasStatistic(flag));
  Agree("SplitRule::GetStatistic", copy.GetStatistic(statistic, &value),
        model.Statistic(flag).has_value());
  handle = copy;
  Check(*static_cast<SplitRuleImp const*>(handle), model, choices);
}

template <class Rule, class Model>
void CheckPairs(std::vector<std::unique_ptr<Rule>> const& rules, std::vector<Model> const& models,
                Choices& choices) {
  for (std::size_t each : {0U, 1U}) {
    Check(*rules[each], models[each], choices);
    for (std::size_t other : {0U, 1U}) {
      Agree("Compare", rules[each]->Compare(*rules[other]), models[each].Compare(models[other]));
      Agree("operator==", *rules[each] == *rules[other], models[each].CoreEquals(models[other]));
    }
  }
}

}  // namespace

void RunOrdinalRules(Choices choices) {
  std::vector<std::unique_ptr<OSplitRule>> rules;
  std::vector<OrdinalRuleModel> models;
  for (int rule = 0; rule < 2; ++rule) {
    double const missing = choices.Value();
    int const predictor = choices.Below(kNumPredictors);
    rules.push_back(std::make_unique<OSplitRule>(missing, predictor));
    models.emplace_back(missing, predictor);
  }

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    OSplitRule& rule = *rules[which];
    OrdinalRuleModel& model = models[which];
    int const operation = choices.Below(kNumCoreOperations + 14) - kNumCoreOperations;
    bool const reorders = operation == -1;
    switch (operation) {
      case 0:
      case 1:
      case 2:
      case 3: {
        IntervalModel const interval = ChooseInterval(choices);
        Agree("IsValidInterval", rule.IsValidInterval(interval.Build()), model.Accepts(interval));
        Agree("AddMappedValues", rule.AddMappedValues(interval.Build()), model.Add(interval));
        break;
      }
      case 4: {
        // The interval that follows the last cut point is the one that fits most often.
        IntervalModel interval = ChooseInterval(choices);
        if (!model.items.empty()) interval.left = model.items.back().cut;
        interval.boundedLeft = !model.items.empty();
        Agree("AddMappedValues", rule.AddMappedValues(interval.Build()), model.Add(interval));
        break;
      }
      case 5: {
        IntervalModel const interval = ChooseInterval(choices);
        bool const leftEnd = choices.Flag();
        rule.InsertCutPoint(interval.Build(), leftEnd);
        model.Insert(interval, leftEnd);
        break;
      }
      case 6: {
        double const cut = choices.Number();
        rule.SetCutPoint(cut);
        if (model.items.empty()) {
          model.items.push_back({cut, 0, false});
          model.upper = 1;
        } else {
          model.items.front().cut = cut;
        }
        break;
      }
      case 7: {
        double const cut = choices.Value();
        OSplitRule::OSplitRuleItem* const item = rule.IsPresent(cut);
        OrdinalRuleModel::Item* const expected = model.Find(cut);
        Agree("IsPresent", item != nullptr, expected != nullptr);
        if (item == nullptr) break;
        Agree("child of IsPresent", item->child, expected->child);
        Agree("openAtCut of IsPresent", item->openAtCut, expected->open);
        item->child = expected->child = choices.Below(5) - 1;
        break;
      }
      case 8:
        rule.SetStandard();
        if (model.IsValidBinary()) {
          model.items.front().child = 0;
          model.upper = 1;
        }
        break;
      case 9:
        rule.SetReverse();
        if (model.IsValidBinary()) {
          model.items.front().child = 1;
          model.upper = 0;
        }
        break;
      case 10: {
        Agree("CopyMappings", rule.CopyMappings(*rules[1 - which]), true);
        NSplitRule const nominal(0, 3);
        Agree("CopyMappings", rule.CopyMappings(nominal), false);
        Agree("AddMappedValues", rule.AddMappedValues(NValueSet()), false);
        Agree("Compare", rule.Compare(nominal), model.predictor == 0 ? 3 : 2);
        OrdinalRuleModel const& other = models[1 - which];
        model.missingMapping = other.missingMapping;
        model.items = other.items;
        model.upper = other.upper;
        break;
      }
      case 11: {
        rule = *rules[1 - which];
        model = models[1 - which];
        break;
      }
      case 12: {
        std::unique_ptr<SplitRuleImp> clone(rule.Clone());
        rules[which].reset(dynamic_cast<OSplitRule*>(clone.release()));
        CheckHandle(*rules[which], model, choices);
        break;
      }
      case 13: {
        std::unique_ptr<SplitRuleImp> const empty(rule.EmptyClone());
        Check(*empty, OrdinalRuleModel(model.missing, model.predictor), choices);
        break;
      }
      default:
        if (reorders && !model.IsValid()) break;
        ChangeCore(rule, model, operation + kNumCoreOperations, choices);
        break;
    }
    CheckPairs(rules, models, choices);
  }
}

void RunNominalRules(Choices choices) {
  std::vector<std::unique_ptr<NSplitRule>> rules;
  std::vector<NominalRuleModel> models;
  for (int rule = 0; rule < 2; ++rule) {
    int const predictor = choices.Below(kNumPredictors);
    int const numCategories = choices.Below(8) - 1;
    rules.push_back(std::make_unique<NSplitRule>(predictor, numCategories));
    models.emplace_back(predictor, numCategories);
  }

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    NSplitRule& rule = *rules[which];
    NominalRuleModel& model = models[which];
    int const operation = choices.Below(kNumCoreOperations + 8) - kNumCoreOperations;
    switch (operation) {
      case 0:
      case 1: {
        NValueSet codes;
        CodeSetModel expected;
        for (int left = choices.Below(4); left > 0; --left) {
          int const code = choices.Below(12) - 1;
          codes.Add(code);
          expected.Add(code);
        }
        Agree("AddMappedValues", rule.AddMappedValues(codes), true);
        model.Add(expected);
        break;
      }
      case 2:
      case 3: {
        int const category = choices.Below(20) - 2;
        int const child = choices.Below(6) - 2;
        rule.SetCatMapping(category, child);
        model.Set(category, child);
        break;
      }
      case 4: {
        Agree("CopyMappings", rule.CopyMappings(*rules[1 - which]), true);
        OSplitRule const ordinal(0.0, 0);
        Agree("CopyMappings", rule.CopyMappings(ordinal), false);
        Agree("AddMappedValues", rule.AddMappedValues(OValueSet()), false);
        Agree("Compare", rule.Compare(ordinal), model.predictor == 0 ? 3 : 2);
        NominalRuleModel const& other = models[1 - which];
        model.missingMapping = other.missingMapping;
        model.childOfCode = other.childOfCode;
        model.length = other.length;
        break;
      }
      case 5:
        rule = *rules[1 - which];
        model = models[1 - which];
        break;
      case 6: {
        std::unique_ptr<SplitRuleImp> clone(rule.Clone());
        rules[which].reset(dynamic_cast<NSplitRule*>(clone.release()));
        CheckHandle(*rules[which], model, choices);
        break;
      }
      case 7: {
        std::unique_ptr<SplitRuleImp> const empty(rule.EmptyClone());
        Check(*empty, NominalRuleModel(model.predictor, 0), choices);
        break;
      }
      default:
        ChangeCore(rule, model, operation + kNumCoreOperations, choices);
        break;
    }
    CheckPairs(rules, models, choices);
  }
}

}  // namespace tree::testing
