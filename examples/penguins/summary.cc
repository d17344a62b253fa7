#include "penguins/summary.h"

#include <cstddef>
#include <iomanip>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "hand_built/gains_table.h"
#include "penguins/number_text.h"
#include "penguins/penguin_table.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"

namespace penguins {
namespace {

constexpr int kNumSpecies = static_cast<int>(kSpecies.size());
constexpr int kNameWidth = 11;

std::string_view SpeciesName(int species) { return kSpecies[static_cast<std::size_t>(species)]; }

void PrintSpeciesNames(std::ostream& out) {
  for (std::string_view const name : kSpecies) out << std::setw(kNameWidth) << name;
}

std::string_view Text(tree::ValidationType validation) {
  switch (validation) {
    case tree::ValidationNone:
      return "none, so by the cases that the tree was made from";
    case tree::ValidationSplitSample:
      return "by a test sample";
    case tree::ValidationCrossValidation:
      return "by cross-validation";
  }
  return "unknown";
}

std::string VariablesText(tree::CoreSettings const& variables) {
  int numNominal = 0;
  for (int index = 0; index < variables.GetNumPredictors(); ++index) {
    auto const level = variables.GetPredictor(index)->GetMeasurementLevel();
    if (level == global::MeasurementNominal) ++numNominal;
  }
  return std::to_string(variables.GetTarget()->GetNumValues()) + " species, " +
         std::to_string(variables.GetNumPredictors()) + " predictors, " +
         std::to_string(numNominal) + " of them nominal";
}

void PrintCosts(std::ostream& out, tree::Cost const& costs) {
  out << std::setw(kNameWidth) << "predicted";
  PrintSpeciesNames(out);
  out << "  observed\n";
  for (int predicted = 0; predicted < kNumSpecies; ++predicted) {
    out << std::setw(kNameWidth) << SpeciesName(predicted);
    for (int observed = 0; observed < kNumSpecies; ++observed) {
      out << std::setw(kNameWidth) << Short(costs.Get(predicted, observed));
    }
    out << '\n';
  }
}

std::vector<tree::Node const*> NodesOf(tree::GainsIntf const& table, int row) {
  std::vector<tree::Node const*> nodes;
  for (int position = 0; position < table.GetNumNodes(row); ++position) {
    nodes.push_back(table.GetNode(row, position));
  }
  return nodes;
}

std::string IdsOf(std::vector<tree::Node const*> const& nodes) {
  std::string text;
  for (tree::Node const* const node : nodes) {
    if (!text.empty()) text += ", ";
    text += std::to_string(node->GetId());
  }
  return text;
}

}  // namespace

void PrintSettings(std::ostream& out, tree::CCartSettings const& settings) {
  tree::Priors const& priors = *settings.GetPriors();
  out << "\nThe settings: priors and costs\n\n"
      << "CART: " << VariablesText(*settings.GetCoreSettings()) << ". What a mistake costs:\n\n";
  PrintCosts(out, *settings.GetCost());

  out << "\nEach species' share of the cases as its prior, and how the costs alter it:\n\n"
      << std::setw(kNameWidth) << "";
  PrintSpeciesNames(out);
  out << '\n' << std::setw(kNameWidth) << "prior";
  for (int species = 0; species < kNumSpecies; ++species) {
    out << std::setw(kNameWidth) << Fixed(priors.Get(species), 3);
  }
  out << '\n' << std::setw(kNameWidth) << "altered";
  for (int species = 0; species < kNumSpecies; ++species) {
    out << std::setw(kNameWidth) << Fixed(priors.GetAltered(species), 3);
  }
  out << '\n';
}

void PrintStatistics(std::ostream& out, tree::TreeAlgorithm& algorithm) {
  out << "\nThe statistics of the tree, by predicted and observed species\n\n"
      << "validation: " << Text(algorithm.GetSettings()->GetValidationSpec()->GetType()) << '\n'
      << "risk: the mean cost of a case, by the costs above\n\n";
  if (algorithm.Validate()) {
    out << *algorithm.GetStatistics();
  } else {
    out << algorithm.GetFailureMessage() << '\n';
  }
}

void PrintGains(std::ostream& out, tree::TreeAlgorithmBase const& algorithm, int species) {
  tree::GainsSettings settings;
  settings.SetTargetCategory(species);
  settings.SetSortOrder(tree::SortDescending);
  settings.SetHasCumulativeStatistics(true);
  tree::DataSample const sample = settings.GetDataSample();

  out << "\nTerminal nodes taken together, row by row\n\n"
      << "target category: " << SpeciesName(settings.GetTargetCategory()) << '\n'
      << "order: its share in the node, "
      << (settings.GetSortOrder() == tree::SortDescending ? "descending" : "ascending") << '\n'
      << "rows: " << (settings.HasCumulativeStatistics() ? "cumulative" : "node by node") << "\n\n";
  std::unique_ptr<tree::GainsIntf const> const table(algorithm.MakeGains(settings));
  if (table == nullptr) {
    out << "the tree cannot give them\n";
    return;
  }

  out << std::left << std::setw(14) << "nodes" << std::right << "cases   of all";
  PrintSpeciesNames(out);
  out << "  gain of all " << SpeciesName(species) << "s\n";
  for (int row = 0; row < table->GetNumRows(); ++row) {
    std::vector<tree::Node const*> const nodes = NodesOf(*table, row);
    tree::CumulativeNode together(nodes);
    out << std::left << std::setw(14) << IdsOf(nodes) << std::right << std::setw(5)
        << Short(together.GetNodeSize(sample)) << std::setw(9)
        << Percent(together.GetPercentageNodeSize(sample));
    tree::ClsInfo const& classes = *together.GetClsInfo(sample);
    for (int other = 0; other < kNumSpecies; ++other) {
      out << std::setw(kNameWidth) << Percent(100.0 * classes.GetClassPercent(other));
    }
    out << std::setw(6) << Short(table->GetValue(row, hand_built::kGain)) << std::setw(9)
        << Percent(table->GetValue(row, hand_built::kGainPercent)) << '\n';
  }
}

}  // namespace penguins
