#include "output/print_tree.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "output/number_text.h"
#include "output/rule_text.h"

namespace tree::cli {
namespace {

constexpr int kProbabilityDecimals = 4;

void PrintLegend(std::ostream& out, ShownTree const& tree) {
  if (tree.HasClasses()) {
    out << "node) rule, cases, loss, prediction (probabilities:";
    char const* mark = " ";
    for (std::string const& label : tree.GetNames().target.labels) {
      out << mark << Shown(label);
      mark = ", ";
    }
    out << ")\n";
  } else {
    out << "node) rule, cases, deviance, mean\n";
  }
  out << "      * marks a terminal node\n\n";
}

void PrintClasses(std::ostream& out, ShownTree const& tree, Node const& node) {
  out << "  " << ShortNumber(tree.Loss(node)) << "  " << Shown(tree.Prediction(node));
  char const* mark = "  (";
  for (double const probability : ShownTree::Probabilities(node)) {
    out << mark << FixedNumber(probability, kProbabilityDecimals);
    mark = " ";
  }
  out << ')';
}

std::size_t WidthOfIds(Node const& root) {
  unsigned int greatest = 0;
  PrefixNodeIterator nodes(&root);
  while (Node const* const node = nodes.Next()) greatest = std::max(greatest, node->GetId());
  return std::to_string(greatest).size();
}

}  // namespace

void PrintTree(std::ostream& out, ShownTree const& tree) {
  PrintLegend(out, tree);
  std::size_t const width = WidthOfIds(tree.GetRoot());
  DepthWalk walk(tree.GetRoot());
  while (Node const* const node = walk.Next()) {
    std::string const id = std::to_string(node->GetId());
    out << std::string(2 * walk.GetDepth() + width - id.size(), ' ') << id << ") "
        << ConditionText(*node, tree.GetNames()) << "  "
        << ShortNumber(node->GetNodeSize(TrainingSample));
    if (tree.HasClasses()) {
      PrintClasses(out, tree, *node);
    } else {
      out << "  " << ShortNumber(ShownTree::Deviance(*node)) << "  " << tree.Prediction(*node);
    }
    out << (node->GetNumChildren() == 0 ? " *\n" : "\n");
  }
}

}  // namespace tree::cli
