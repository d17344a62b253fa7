#include "output/print_details.h"

#include <memory>
#include <ostream>
#include <string>

#include "output/number_text.h"
#include "output/rule_text.h"
#include "tree/grow/split_statistics.h"

namespace tree::cli {
namespace {

constexpr int kProbabilityDecimals = 4;

struct StatisticName {
  StatisticFlag flag;
  char const* name;
};
constexpr StatisticName kStatistics[] = {{grow::SplitImprovement, "improvement"},
                                         {grow::SurrogateAssociation, "association"},
                                         {grow::SplitTestStatistic, "test statistic"},
                                         {grow::SplitLogPValue, "log of p-value"}};

void PrintRule(std::ostream& out, SplitRuleImp const& rule, TreeNames const& names) {
  out << "    " << Shown(PredictorName(rule, names));
  for (int child = 0; child < rule.GetNumChildren(); ++child) {
    out << (child == 0 ? " " : " | ") << ValuesText(rule, child, names);
  }
  for (auto const& [flag, name] : kStatistics) {
    double statistic = 0.0;
    if (rule.GetStatistic(flag, &statistic)) out << ", " << name << ' ' << ShortNumber(statistic);
  }
  out << '\n';
}

void PrintClasses(std::ostream& out, ShownTree const& tree, Node const& node, DataSample sample) {
  ClsInfo const& classes = *node.GetClsInfo(sample);
  out << (sample == TrainingSample ? "  cases:" : "  test cases:");
  for (int index = 0; index < classes.GetNumClasses(); ++index) {
    out << (index == 0 ? " " : ", ") << Shown(LabelOf(tree.GetNames().target, index)) << ' '
        << ShortNumber(classes.GetClassCount(index));
  }
  out << '\n';
}

void PrintProbabilities(std::ostream& out, ShownTree const& tree, Node const& node) {
  out << "  probabilities:";
  int index = 0;
  for (double const probability : ShownTree::Probabilities(node)) {
    out << (index == 0 ? " " : ", ") << Shown(LabelOf(tree.GetNames().target, index)) << ' '
        << FixedNumber(probability, kProbabilityDecimals);
    ++index;
  }
  out << '\n';
}

void PrintNumbers(std::ostream& out, Node const& node, DataSample sample) {
  RegInfo const& numbers = *node.GetRegInfo(sample);
  out << (sample == TrainingSample ? "  cases: " : "  test cases: ")
      << ShortNumber(node.GetNodeSize(sample));
  if (node.GetNodeSize(sample) > 0.0) {
    out << ", mean " << ShortNumber(numbers.GetMean()) << ", standard deviation "
        << ShortNumber(numbers.GetStdDev()) << ", from " << ShortNumber(numbers.GetMinimum())
        << " to " << ShortNumber(numbers.GetMaximum());
  }
  out << '\n';
}

void PrintStatistics(std::ostream& out, ShownTree const& tree, Node const& node,
                     DataSample sample) {
  if (node.GetClsInfo(sample) != nullptr) {
    PrintClasses(out, tree, node, sample);
  } else if (node.GetRegInfo(sample) != nullptr) {
    PrintNumbers(out, node, sample);
  }
}

void PrintRules(std::ostream& out, Node const& node, TreeNames const& names) {
  for (int position = 0; position < node.GetNumCompetitors(); ++position) {
    if (position == 0) out << "  splits:\n";
    std::unique_ptr<SplitRule const> const rule(
        node.GetCompetitor(static_cast<unsigned int>(position)));
    PrintRule(out, **rule, names);
  }
  for (int position = 0; position < node.GetNumSurrogates(); ++position) {
    if (position == 0) out << "  surrogates:\n";
    std::unique_ptr<SplitRule const> const rule(
        node.GetSurrogate(static_cast<unsigned int>(position)));
    PrintRule(out, **rule, names);
  }
}

void PrintChildren(std::ostream& out, Node const& node) {
  if (node.GetNumChildren() == 0) return;
  out << "  children:";
  for (int position = 0; position < node.GetNumChildren(); ++position) {
    out << (position == 0 ? " node " : " | node ")
        << node.GetChild(static_cast<unsigned int>(position))->GetId();
  }
  out << '\n';
  int const biggest = node.GetBiggestChildPos();
  if (biggest < 0) return;
  std::unique_ptr<SplitRule const> const handle(node.GetCompetitor(0));
  SplitRuleImp const& rule = **handle;
  out << "  other cases: node " << node.GetChild(static_cast<unsigned int>(biggest))->GetId()
      << ", probability " << FixedNumber(rule.GetDumbChildProb(), kProbabilityDecimals) << '\n';
}

}  // namespace

void PrintDetails(std::ostream& out, ShownTree const& tree) {
  PrefixNodeIterator nodes(&tree.GetRoot());
  while (Node const* const node = nodes.Next()) {
    if (node != &tree.GetRoot()) out << '\n';
    out << "node " << node->GetId() << ": " << ConditionText(*node, tree.GetNames()) << '\n'
        << "  size: " << ShortNumber(node->GetNodeSize(TrainingSample)) << " of "
        << ShortNumber(tree.GetRoot().GetNodeSize(TrainingSample)) << " ("
        << FixedNumber(tree.PercentSize(*node, TrainingSample), 1) << " %)\n"
        << "  prediction: " << Shown(tree.Prediction(*node));
    if (tree.HasClasses()) out << ", loss " << ShortNumber(tree.Loss(*node));
    out << '\n';
    PrintStatistics(out, tree, *node, TrainingSample);
    if (tree.HasClasses()) PrintProbabilities(out, tree, *node);
    if (tree.HasTestSample()) PrintStatistics(out, tree, *node, TestSample);
    PrintRules(out, *node, tree.GetNames());
    PrintChildren(out, *node);
  }
}

}  // namespace tree::cli
