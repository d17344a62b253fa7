#include "output/rule_text.h"

#include <cmath>
#include <cstddef>
#include <memory>

#include "output/number_text.h"
#include "tree/values.h"

namespace tree::cli {
namespace {

VariableNames const& PredictorOf(SplitRuleImp const& rule, TreeNames const& names) {
  return names.predictors[static_cast<std::size_t>(rule.GetPredictorIndex())];
}

/// A cut point between labelled codes is the label below it: only whole codes occur.
std::string CutText(VariableNames const& variable, double cut) {
  if (variable.labels.empty()) return ShortNumber(cut);
  return LabelOf(variable, std::floor(cut));
}

/// A value at a cut point belongs to the interval below it, whatever the interval says.
std::vector<Comparison> OfInterval(OValueSet const& interval, VariableNames const& variable) {
  std::vector<Comparison> comparisons;
  if (interval.IsBoundedLeft()) {
    comparisons.push_back({">", {CutText(variable, interval.GetLeftEnd())}});
  }
  if (interval.IsBoundedRight()) {
    comparisons.push_back({"<=", {CutText(variable, interval.GetRightEnd())}});
  }
  return comparisons;
}

std::vector<Comparison> OfCategories(NValueSet const& categories, VariableNames const& variable) {
  Comparison comparison{"=", {}};
  std::unique_ptr<NValueSetIter> const codes(categories.GetIterator());
  while (codes->Advance()) comparison.values.push_back(LabelOf(variable, codes->GetData()));
  return {comparison};
}

}  // namespace

std::vector<Comparison> ComparisonsOf(SplitRuleImp const& rule, int child, TreeNames const& names) {
  VariableNames const& variable = PredictorOf(rule, names);
  std::vector<Comparison> comparisons;
  std::unique_ptr<ValueSet const> const values(rule.GetMappedValues(child));
  if (values != nullptr) {
    comparisons = values->IsNominalValueSet()
                      ? OfCategories(static_cast<NValueSet const&>(*values), variable)
                      : OfInterval(static_cast<OValueSet const&>(*values), variable);
  }
  if (rule.GetMissingValueMapping() == child) comparisons.push_back({"missing", {}});
  return comparisons;
}

std::string ValuesText(SplitRuleImp const& rule, int child, TreeNames const& names) {
  std::string text;
  for (Comparison const& comparison : ComparisonsOf(rule, child, names)) {
    if (!text.empty()) text += comparison.values.empty() ? " or " : " and ";
    text += comparison.sign;
    char mark = ' ';
    for (std::string const& value : comparison.values) {
      text += mark + Shown(value);
      mark = ',';
    }
  }
  return text;
}

std::string const& PredictorName(SplitRuleImp const& rule, TreeNames const& names) {
  return PredictorOf(rule, names).name;
}

int PositionInParent(Node const& node) {
  int position = 0;
  while (node.GetParent()->GetChild(static_cast<unsigned int>(position)) != &node) ++position;
  return position;
}

std::string ConditionText(Node const& node, TreeNames const& names) {
  if (node.GetParent() == nullptr) return "root";
  std::unique_ptr<SplitRule const> const handle(node.GetParent()->GetCompetitor(0));
  SplitRuleImp const& rule = **handle;
  return Shown(PredictorName(rule, names)) + ' ' + ValuesText(rule, PositionInParent(node), names);
}

}  // namespace tree::cli
