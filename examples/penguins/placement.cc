#include "penguins/placement.h"

#include <algorithm>
#include <cstddef>

#include "tree/split_rules.h"

namespace penguins {
namespace {

double Value(tree::SplitRuleImp const& rule, Penguin const& penguin) {
  return penguin.values[static_cast<std::size_t>(rule.GetPredictorIndex())];
}

Step StepFrom(tree::NodeImp const& node, Penguin const& penguin) {
  tree::SplitRuleImp const& primary = *node.GetCompetitorImp(0);
  double const value = Value(primary, penguin);
  if (primary.Classify(value) >= 0) {
    return {&node, IsMissing(value) ? Means::kMissingMapping : Means::kPrimaryRule, -1};
  }
  for (int position = 0; position < node.GetNumSurrogates(); ++position) {
    tree::SplitRuleImp const& rule = *node.GetSurrogateImp(static_cast<unsigned int>(position));
    if (rule.Classify(Value(rule, penguin)) >= 0) return {&node, Means::kSurrogate, position};
  }
  return {&node, Means::kDumbRule, -1};
}

}  // namespace

std::vector<Step> WayDown(tree::NodeImp const& root, Penguin const& penguin) {
  std::vector<Step> way;
  tree::NodeImp const* node = &root;
  for (tree::NodeImp const* next = node; node->Child(node->Classify(penguin.values.data()), &next);
       node = next) {
    way.push_back(StepFrom(*node, penguin));
  }
  return way;
}

bool Used(std::vector<Step> const& way, Means means) {
  return std::any_of(way.begin(), way.end(),
                     [means](Step const& step) { return step.means == means; });
}

}  // namespace penguins
