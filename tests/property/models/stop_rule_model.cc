#include <cmath>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "property/models/settings_part_models.h"

namespace tree::testing {

namespace {

bool IsPercentage(double value) { return value >= 0.0 && value <= 100.0; }

/// A value of which many lie at the ends of the percentages, some of them outside.
double ChoosePercentage(Choices& choices) {
  static constexpr double kEnds[] = {0.0, 100.0, 100.0 + 2e-14, -0.25, 50.0, 100.0 - 1e-13, 1e-13};
  int const choice = choices.Below(14);
  return choice < 7 ? kEnds[choice] : choices.Value();
}

bool AreClose(double a, double b) { return std::abs(a - b) <= 1e-12; }

}  // namespace

bool StopRuleModel::Equals(StopRuleModel const& other) const {
  return minNodeSize == other.minNodeSize && minChildSize == other.minChildSize &&
         maxTreeDepth == other.maxTreeDepth && AreClose(minImprovement, other.minImprovement) &&
         AreClose(minNodePercentSize, other.minNodePercentSize) &&
         AreClose(minChildPercentSize, other.minChildPercentSize);
}

void Change(StopRuleImp& rule, StopRuleModel& model, Choices& choices) {
  int const operation = choices.Below(8);
  int const number = choices.Integer();
  double const percentage = ChoosePercentage(choices);
  switch (operation) {
    case 0:
      rule.SetMinImprovement(percentage);
      model.minImprovement = percentage;
      break;
    case 1:
      rule.SetMinNodeSize(number);
      if (number >= 0) model.minNodeSize = number;
      break;
    case 2:
      rule.SetMinNodePercentSize(percentage);
      if (IsPercentage(percentage)) model.minNodePercentSize = percentage;
      break;
    case 3:
      rule.SetMinChildSize(number);
      if (number >= 0) model.minChildSize = number;
      break;
    case 4:
      rule.SetMinChildPercentSize(percentage);
      if (IsPercentage(percentage)) model.minChildPercentSize = percentage;
      break;
    case 5:
      rule.SetMaxTreeDepth(number);
      model.maxTreeDepth = number;
      break;
    default: {
      model = {choices.Value(), choices.Integer(), choices.Value(),
               number,          percentage,        choices.Integer()};
      auto const [improvement, nodeSize, nodePercent, childSize, childPercent, depth] = model;
      if (operation == 6) {
        rule.Init(improvement, nodeSize, nodePercent, childSize, childPercent, depth);
      } else {
        rule = StopRuleImp(improvement, nodeSize, nodePercent, childSize, childPercent, depth);
      }
      break;
    }
  }
}

void Check(StopRule const& rule, StopRuleModel const& model) {
  Agree("GetMinImprovement", rule.GetMinImprovement(), model.minImprovement);
  Agree("GetMinNodeSize", rule.GetMinNodeSize(), model.minNodeSize);
  Agree("GetMinNodePercentSize", rule.GetMinNodePercentSize(), model.minNodePercentSize);
  Agree("GetMinChildSize", rule.GetMinChildSize(), model.minChildSize);
  Agree("GetMinChildPercentSize", rule.GetMinChildPercentSize(), model.minChildPercentSize);
  Agree("GetMaxTreeDepth", rule.GetMaxTreeDepth(), model.maxTreeDepth);
}

void RunStopRules(Choices choices) { RunPair<StopRuleImp, StopRuleModel>(choices); }

}  // namespace tree::testing
