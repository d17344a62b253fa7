#include "penguins/penguin_settings.h"

#include <algorithm>

#include "tree/misclassification.h"
#include "tree/values.h"

namespace penguins {
namespace {

constexpr int kNumSpecies = static_cast<int>(kSpecies.size());
constexpr int kNumPredictors = static_cast<int>(kPredictors.size());
constexpr double kCostOfMissedChinstrap = 3.0;

void MakeNominal(tree::VariableSettings& variable, int numCategories) {
  variable.SetMeasurementLevel(global::MeasurementNominal);
  variable.SetNumValues(numCategories);
}

tree::CoreSettingsImp Variables() {
  tree::CoreSettingsImp variables;
  MakeNominal(*variables.GetTarget(), kNumSpecies);
  for (int predictor = 0; predictor < kNumPredictors; ++predictor) {
    tree::VariableSettings& variable = *variables.AddPredictor();  // continuous
    if (predictor == kIsland) MakeNominal(variable, static_cast<int>(kIslands.size()));
  }
  return variables;
}

/// Rows are predicted species, columns observed ones.
tree::CostImp Costs() {
  tree::CostImp costs;
  costs.SetDefault(tree::CostImp::CostMatrixMain, kNumSpecies);
  for (int predicted = 0; predicted < kNumSpecies; ++predicted) {
    if (predicted != kChinstrap) costs.Set(predicted, kChinstrap, kCostOfMissedChinstrap);
  }
  return costs;
}

tree::PriorsImp SharesOfData(std::vector<Penguin> const& penguins) {
  tree::PriorsImp priors;
  for (int species = 0; species < kNumSpecies; ++species) {
    auto const count =
        std::count_if(penguins.begin(), penguins.end(),
                      [species](Penguin const& penguin) { return penguin.species == species; });
    priors.Set(species, static_cast<double>(count) / static_cast<double>(penguins.size()));
  }
  return priors;
}

}  // namespace

tree::CCartSettingsImp MakeSettings(std::vector<Penguin> const& penguins) {
  tree::CCartSettingsImp settings(Variables());

  // The tree that is written down keeps these; the defaults ask for bigger nodes.
  settings.GetStopRule()->SetMaxTreeDepth(3);
  settings.GetStopRule()->SetMinNodeSize(2);
  settings.GetStopRule()->SetMinChildSize(1);

  tree::CostImp const costs = Costs();
  tree::PriorsImp priors = SharesOfData(penguins);
  priors.AlterValues(true);  // without this wish, computing them would do nothing
  priors.ComputeAltered(costs);
  settings.Init(priors, costs, tree::CartSplitCriteria0);
  return settings;
}

}  // namespace penguins
