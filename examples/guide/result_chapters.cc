#include <iomanip>
#include <iostream>
#include <memory>
#include <vector>

#include "guide/chapters.h"
#include "guide/penguin_tree.h"
#include "hand_built/gains_table.h"
#include "hand_built/hand_built_tree.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"
#include "tree/results.h"

namespace guide {
namespace {

// [listener]
/// Ends an operation once it is half done.
class Impatient final : public tree::ProgressListener {
 public:
  bool Report(double fraction, char const* activity) noexcept override {
    std::cout << activity << ", " << 100.0 * fraction << " %\n";
    return fraction < 0.5;
  }
};
// [listener]

void PrintFailure(tree::TreeAlgorithm const& algorithm) {
  std::cout << "failure " << algorithm.GetFailure() << ": " << algorithm.GetFailureMessage()
            << '\n';
}

void PrintState(tree::TreeAlgorithm const& algorithm) {
  std::cout << algorithm.GetNumNodes(tree::TerminalNodes) << " terminal nodes, "
            << (algorithm.GetStatistics() == nullptr ? "no " : "") << "statistics\n";
}

void PrintGains(tree::Gains const& gains) {
  std::cout << "  node  cases      %  gain      %  response  profit\n";
  for (int row = 0; row < gains.GetNumRows(); ++row) {
    // [read gains]
    tree::Node const* const last = gains.GetNode(row, gains.GetNumNodes(row) - 1);
    std::cout << std::setw(6) << last->GetId();
    for (int column = hand_built::kCases; column < hand_built::kNumColumns; ++column) {
      if (gains.HasColumn(column)) std::cout << "  " << std::setw(5) << gains.GetValue(row, column);
    }
    // [read gains]
    std::cout << '\n';
  }
}

}  // namespace

void ShowAlgorithm() {
  std::cout << "\nAn algorithm, and tree statistics\n\n";
  // [use an algorithm]
  hand_built::HandBuiltTree handBuilt(PenguinSettings(), BuildPenguinTree());
  tree::TreeAlgorithm& algorithm = handBuilt;
  if (!algorithm.Grow()) PrintFailure(algorithm);

  Impatient impatient;
  algorithm.SetProgressListener(&impatient);
  if (!algorithm.Validate()) PrintFailure(algorithm);
  algorithm.SetProgressListener(nullptr);

  if (algorithm.Validate()) {
    tree::TreeStatistics statistics;
    statistics = *algorithm.GetStatistics();  // a copy, which outlives the algorithm
    std::cout << "risk " << statistics.GetRisk() << " +- " << statistics.GetStdError() << '\n';
  }
  // [use an algorithm]

  // [statistics as text]
  std::cout << *algorithm.GetStatistics();
  // [statistics as text]

  std::cout << '\n';
  // [undo]
  std::unique_ptr<tree::NodeImp> before(algorithm.GetTree()->Clone());
  if (!algorithm.PruneNode(7)) PrintFailure(algorithm);
  if (algorithm.PruneNode(1)) PrintState(algorithm);
  if (algorithm.SetTree(before.release())) PrintState(algorithm);  // taken
  // [undo]
}

void ShowCumulativeNode(tree::NodeImp const& root) {
  std::cout << "\nA cumulative node\n\n";
  // [cumulative node]
  tree::Node const* const chinstraps = root.GetChildImp(0)->GetChild(1);
  tree::Node const* const gentoos = root.GetChild(1);
  tree::CumulativeNode both({chinstraps, gentoos});
  tree::ClsInfo const* const classes = both.GetClsInfo(tree::TestSample);
  std::cout << both.GetNodeSize(tree::TestSample) << " cases, "
            << classes->GetClassCount(kChinstrap) << " of them Chinstraps\n";
  // [cumulative node]
}

void ShowAlteredPriors() {
  std::cout << "\nPriors altered by costs\n\n";
  // [altered priors]
  tree::CostImp costs;
  costs.SetDefault(tree::CostImp::CostMatrixMain, kNumSpecies);
  costs.Set(kAdelie, kChinstrap, 3.0);  // row: taken for an Adelie; column: a Chinstrap

  tree::PriorsImp priors;
  priors.Set(kAdelie, 0.5);
  priors.Set(kChinstrap, 0.25);
  priors.Set(kGentoo, 0.25);
  priors.AlterValues(true);  // wanted
  if (priors.ComputeAltered(costs)) {
    for (int species = 0; species < kNumSpecies; ++species) {
      std::cout << SpeciesName(species) << ": " << priors.Get(species) << " becomes "
                << priors.GetAltered(species) << '\n';
    }
  }
  // [altered priors]
}

void ShowGains() {
  std::cout << "\nGains\n\n";
  hand_built::HandBuiltTree const algorithm(PenguinSettings(), BuildPenguinTree());
  // [gains settings]
  tree::GainsSettings settings;
  settings.SetTargetCategory(kChinstrap);
  settings.SetDataSample(tree::TestSample);   // what the rows show
  settings.SetSortKey(tree::TrainingSample);  // what orders them
  settings.SetCategoryProfit(kChinstrap, 10.0);
  settings.SetCategoryProfit(kGentoo, -1.0);
  // [gains settings]

  std::cout << std::fixed << std::setprecision(1);
  // [make gains]
  std::unique_ptr<tree::GainsIntf const> const table(algorithm.MakeGains(settings));
  if (table != nullptr) {
    tree::Gains gains;
    gains = *table;  // a clone
    PrintGains(gains);
  }
  // [make gains]

  settings.SetHasCumulativeStatistics(true);
  std::unique_ptr<tree::GainsIntf const> const cumulative(algorithm.MakeGains(settings));
  tree::Gains gains;
  gains = *cumulative;
  std::cout << "\ncumulative\n";
  PrintGains(gains);
  std::cout << std::defaultfloat << std::setprecision(6);

  settings.SetTargetCategory(kNumSpecies);
  std::unique_ptr<tree::GainsIntf const> const none(algorithm.MakeGains(settings));
  std::cout << "\nfor a class that there is not: " << (none == nullptr ? "no table" : "a table")
            << '\n';
}

}  // namespace guide
