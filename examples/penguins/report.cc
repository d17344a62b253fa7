#include "penguins/report.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iomanip>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "penguins/number_text.h"
#include "penguins/penguin_tree.h"
#include "penguins/placement.h"
#include "penguins/rule_text.h"
#include "tree/split_rules.h"

namespace penguins {
namespace {

constexpr int kNumSpecies = static_cast<int>(kSpecies.size());

std::size_t Position(int position) { return static_cast<std::size_t>(position); }

int PredictedSpecies(tree::Node const& node) { return static_cast<int>(node.GetAssignment()); }

int Depth(tree::Node const* node) {
  int depth = 0;
  while ((node = node->GetParent()) != nullptr) ++depth;
  return depth;
}

void PrintSurrogates(std::ostream& out, tree::Node const& node, std::string const& indent) {
  for (int position = 0; position < node.GetNumSurrogates(); ++position) {
    std::unique_ptr<tree::SplitRule const> const rule(
        node.GetSurrogate(static_cast<unsigned int>(position)));
    out << indent << "surrogate: " << PredictorName(*rule);
    for (int child = 0; child < node.GetNumChildren(); ++child) {
      out << ' ' << Values(*rule, child) << " to node "
          << node.GetChild(static_cast<unsigned int>(child))->GetId() << ',';
    }
    double agreed = 0.0;
    double bothPlaced = 0.0;
    rule->GetStatistic(kAgreed, &agreed);
    rule->GetStatistic(kBothPlaced, &bothPlaced);
    out << " agrees in " << Short(agreed) << " of " << Short(bothPlaced) << " cases\n";
  }
}

void PrintDumbRule(std::ostream& out, tree::Node const& node, std::string const& indent) {
  std::unique_ptr<tree::SplitRule const> const handle(node.GetCompetitor(0));
  tree::SplitRuleImp const* const rule = *handle;
  auto const position = static_cast<unsigned int>(node.GetBiggestChildPos());
  out << indent << "dumb rule: node " << node.GetChild(position)->GetId() << ", probability "
      << Fixed(rule->GetDumbChildProb(), 3) << '\n';
}

void PrintNode(std::ostream& out, tree::Node const& node) {
  std::string const indent(Position(2 * Depth(&node)), ' ');
  tree::ClsInfo const& classes = *node.GetClsInfo(tree::TrainingSample);
  out << indent << "node " << node.GetId() << ": " << Condition(node) << '\n'
      << indent << "  " << Short(node.GetNodeSize(tree::TrainingSample)) << " cases ("
      << Percent(node.GetPercentageNodeSize(tree::TrainingSample)) << "): ";
  for (int species = 0; species < kNumSpecies; ++species) {
    out << kSpecies[Position(species)] << ' ' << Percent(100.0 * classes.GetClassPercent(species))
        << ", ";
  }
  out << "predicts " << kSpecies[Position(PredictedSpecies(node))] << '\n';
  if (node.GetNumChildren() == 0) return;
  PrintSurrogates(out, node, indent + "  ");
  PrintDumbRule(out, node, indent + "  ");
}

std::string IslandsOf(tree::Node const& node) {
  int count = 0;
  node.GetNumPredictorValues(kIsland, &count);
  std::vector<double> codes(Position(count));
  node.GetPredictorValues(kIsland, codes.data(), count);
  std::string text;
  for (double const code : codes) {
    if (!text.empty()) text += ", ";
    text += kIslands[static_cast<std::size_t>(code)];
  }
  return text;
}

std::string RangeOf(tree::Node const& node, int predictor) {
  double minimum = 0.0;
  double maximum = 0.0;
  node.GetPredictorRange(predictor, &minimum, &maximum);
  return IsMissing(minimum) ? "" : Short(minimum) + " to " + Short(maximum);
}

std::string SummaryOf(tree::Node const& node, int predictor) {
  std::string const values = predictor == kIsland ? IslandsOf(node) : RangeOf(node, predictor);
  if (values.empty()) return "no values";
  bool missing = false;
  node.GetPredictorMissingValueFlag(predictor, &missing);
  return values + (missing ? ", some missing" : "");
}

std::string Describe(Step const& step) {
  std::string at = "node " + std::to_string(step.node->GetId()) + " by ";
  switch (step.means) {
    case Means::kPrimaryRule:
      return at + "its rule";
    case Means::kMissingMapping:
      return at + "its missing value mapping";
    case Means::kSurrogate: {
      auto const position = static_cast<unsigned int>(step.surrogate);
      int const predictor = step.node->GetSurrogateImp(position)->GetPredictorIndex();
      return at + "surrogate " + std::string(kPredictors[Position(predictor)]);
    }
    case Means::kDumbRule:
      return at + "its dumb rule";
  }
  return at;
}

}  // namespace

void PrintData(std::ostream& out, std::string const& file, std::vector<Penguin> const& penguins) {
  out << file << ": " << penguins.size() << " penguins, "
      << std::count_if(penguins.begin(), penguins.end(),
                       [](Penguin const& penguin) { return penguin.HasMissingValues(); })
      << " of them with missing values\n";
}

void PrintTree(std::ostream& out, tree::Node const& root) {
  out << "\nThe tree, in prefix order\n\n";
  tree::PrefixNodeIterator nodes(&root);
  while (tree::Node const* const node = nodes.Next()) PrintNode(out, *node);
}

void PrintPredictorSummaries(std::ostream& out, tree::Node const& root) {
  out << "\nThe predictors, node by node\n";
  tree::PrefixNodeIterator nodes(&root);
  while (tree::Node const* const node = nodes.Next()) {
    out << "\nnode " << node->GetId() << '\n';
    for (int predictor = 0; predictor < node->GetNumPredictors(); ++predictor) {
      out << "  " << std::left << std::setw(17) << kPredictors[Position(predictor)] << std::right
          << "  " << SummaryOf(*node, predictor) << '\n';
    }
  }
}

void PrintPlacements(std::ostream& out, tree::NodeImp const& root,
                     std::vector<Penguin> const& penguins) {
  constexpr std::array kAllMeans = {Means::kPrimaryRule, Means::kMissingMapping, Means::kSurrogate,
                                    Means::kDumbRule};
  std::map<unsigned int, std::map<Means, int>> placedAtNode;  // by id
  std::map<Means, int> neededBy;  // cases that used these means anywhere on their way
  for (Penguin const& penguin : penguins) {
    std::vector<Step> const way = WayDown(root, penguin);
    for (Step const& step : way) ++placedAtNode[step.node->GetId()][step.means];
    for (Means const means : kAllMeans) neededBy[means] += Used(way, means) ? 1 : 0;
  }

  out << "\nHow many cases each means placed\n\n"
      << "node  primary rule  missing value mapping  surrogates  dumb rule\n";
  for (auto& [id, placed] : placedAtNode) {
    out << std::setw(4) << id << std::setw(14) << placed[Means::kPrimaryRule] << std::setw(23)
        << placed[Means::kMissingMapping] << std::setw(12) << placed[Means::kSurrogate]
        << std::setw(11) << placed[Means::kDumbRule] << '\n';
  }
  out << "\nOf " << penguins.size() << " cases, " << neededBy[Means::kSurrogate]
      << " needed a surrogate, " << neededBy[Means::kDumbRule] << " the dumb rule and "
      << neededBy[Means::kMissingMapping] << " a missing value mapping.\n";
}

void PrintMissing(std::ostream& out, tree::NodeImp const& root,
                  std::vector<Penguin> const& penguins) {
  out << "\nWhere the cases with missing values ended\n\n";
  bool any = false;
  for (Penguin const& penguin : penguins) {
    if (!penguin.HasMissingValues()) continue;
    any = true;
    tree::NodeImp const* const end =
        root.DropObservationThroughTree(penguin.values.data(), nullptr);
    out << "line " << penguin.line << ", observed " << kSpecies[Position(penguin.species)]
        << ": node " << end->GetId() << ", predicted " << kSpecies[Position(PredictedSpecies(*end))]
        << '\n';
    for (Step const& step : WayDown(root, penguin)) out << "  placed at " << Describe(step) << '\n';
  }
  if (!any) out << "none has any\n";
}

void PrintPredictions(std::ostream& out, tree::NodeImp const& root,
                      std::vector<Penguin> const& penguins) {
  std::array<std::array<int, kSpecies.size()>, kSpecies.size()> table{};  // predicted, observed
  int hits = 0;
  for (Penguin const& penguin : penguins) {
    int const predicted =
        PredictedSpecies(*root.DropObservationThroughTree(penguin.values.data(), nullptr));
    ++table[Position(predicted)][Position(penguin.species)];
    if (predicted == penguin.species) ++hits;
  }

  out << "\nPredicted by observed species\n\n" << std::setw(11) << "predicted";
  for (std::string_view const name : kSpecies) out << std::setw(11) << name;
  out << "  observed\n";
  for (std::size_t predicted = 0; predicted < table.size(); ++predicted) {
    out << std::setw(11) << kSpecies[predicted];
    for (int const count : table[predicted]) out << std::setw(11) << count;
    out << '\n';
  }
  double const accuracy = 100.0 * hits / static_cast<double>(penguins.size());
  out << "\nAccuracy: " << hits << " of " << penguins.size() << " (" << Percent(accuracy)
      << "), measured on the cases that the tree was made from, and so flattering.\n";
}

}  // namespace penguins
