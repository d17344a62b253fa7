#include "penguins/rule_text.h"

#include <cstddef>
#include <memory>

#include "penguins/number_text.h"
#include "penguins/penguin_table.h"
#include "tree/values.h"

namespace penguins {
namespace {

std::string IntervalText(tree::OValueSet const& interval) {
  std::string text;
  if (interval.IsBoundedLeft()) {
    text = (interval.IsOpenLeft() ? "> " : ">= ") + Short(interval.GetLeftEnd());
  }
  if (interval.IsBoundedRight()) {
    if (!text.empty()) text += " and ";
    text += (interval.IsOpenRight() ? "< " : "<= ") + Short(interval.GetRightEnd());
  }
  return text;
}

std::string IslandsText(tree::NValueSet const& islands) {
  std::string text;
  std::unique_ptr<tree::NValueSetIter> const iterator(islands.GetIterator());
  while (iterator->Advance()) {
    text += text.empty() ? "is " : " or ";
    text += kIslands[static_cast<std::size_t>(iterator->GetData())];
  }
  return text;
}

int PositionInParent(tree::Node const& node) {
  tree::Node const& parent = *node.GetParent();
  int position = 0;
  while (parent.GetChild(static_cast<unsigned int>(position)) != &node) ++position;
  return position;
}

}  // namespace

std::string_view PredictorName(tree::SplitRule const& rule) {
  return kPredictors[static_cast<std::size_t>(rule.GetPredictorIndex())];
}

std::string Values(tree::SplitRule const& rule, int child) {
  std::unique_ptr<tree::ValueSet const> const values(rule.GetMappedValues(child));
  std::string text;
  if (values != nullptr) {
    text = values->IsNominalValueSet() ? IslandsText(static_cast<tree::NValueSet const&>(*values))
                                       : IntervalText(static_cast<tree::OValueSet const&>(*values));
  }
  if (rule.GetMissingValueMapping() == child) text += text.empty() ? "is missing" : " or missing";
  return text;
}

std::string Condition(tree::Node const& node) {
  if (node.GetParent() == nullptr) return "all penguins";
  std::unique_ptr<tree::SplitRule const> const rule(node.GetParent()->GetCompetitor(0));
  return std::string(PredictorName(*rule)) + ' ' + Values(*rule, PositionInParent(node));
}

}  // namespace penguins
