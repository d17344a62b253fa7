#include "guide/penguin_tree.h"

#include <array>
#include <numeric>
#include <utility>

#include "tree/split_rules.h"
#include "tree/support.h"
#include "tree/values.h"

namespace guide {
namespace {

/// Penguins by species.
using Counts = std::array<double, kNumSpecies>;

constexpr Counts kAllInTraining = {100, 44, 80};
constexpr Counts kAllInTest = {52, 24, 44};

double Sum(Counts const& counts) { return std::accumulate(counts.begin(), counts.end(), 0.0); }

// [class distribution]
void SetDistribution(tree::NodeImp& node, tree::DataSample sample, Counts const& counts,
                     Counts const& countsOfRoot, Species prediction) {
  double const size = Sum(counts);
  auto info = std::make_unique<tree::ClsInfoImp>();
  info->SetNumClasses(kNumSpecies);
  for (std::size_t species = 0; species < counts.size(); ++species) {
    info->SetClassCount(static_cast<int>(species), counts[species]);
    info->SetClassProbability(static_cast<int>(species), counts[species] / size);
  }
  info->SetPrediction(prediction);
  info->SetUnweightedCount(size);
  info->SetPercentSize(100.0 * size / Sum(countsOfRoot));
  node.SetClsInfo(info.release(), sample);  // taken: the node deletes it
}
// [class distribution]

std::unique_ptr<tree::NodeImp> MakeNode(unsigned int id, Counts const& training, Counts const& test,
                                        Species prediction) {
  auto node = std::make_unique<tree::NodeImp>();
  node->SetId(id);
  SetDistribution(*node, tree::TrainingSample, training, kAllInTraining, prediction);
  SetDistribution(*node, tree::TestSample, test, kAllInTest, prediction);
  return node;
}

// [predictor summaries]
void SummarisePredictors(tree::NodeImp& root) {
  root.SetNumPredictors(kNumPredictors);
  double const islands[] = {kBiscoe, kDream, kTorgersen};
  root.SetPredictorValues(kIsland, islands, kNumIslands);  // copied
  root.SetPredictorRange(kFlipperLength, 172.0, 231.0);
  root.SetPredictorMissingValueFlag(kFlipperLength, true);
}
// [predictor summaries]

// [rules]
/// Up to 206.5 mm to child 0, above to child 1.
std::unique_ptr<tree::OSplitRule> ByFlipper() {
  auto rule = std::make_unique<tree::OSplitRule>(systemMissingValue(), kFlipperLength);
  rule->SetCutPoint(206.5);
  rule->SetDumbRule(0, 141.0 / 224.0);              // the bigger child, and its share of the cases
  rule->SetStatistic(tree::StatisticFlag1, 0.345);  // here, by how much Gini's impurity sinks
  return rule;
}

/// Flat bills, up to 16.45 mm, to child 1: the other way round.
std::unique_ptr<tree::OSplitRule> ByBillDepth() {
  auto rule = std::make_unique<tree::OSplitRule>(systemMissingValue(), kBillDepth);
  rule->SetCutPoint(16.45);
  rule->SetReverse();
  return rule;
}

/// Dream and Torgersen to child 0, Biscoe to child 1.
std::unique_ptr<tree::NSplitRule> ByIsland() {
  auto rule = std::make_unique<tree::NSplitRule>(kIsland, kNumIslands);
  rule->SetCatMapping(kDream, 0);
  rule->SetCatMapping(kTorgersen, 0);
  rule->SetCatMapping(kBiscoe, 1);
  return rule;
}
// [rules]

std::unique_ptr<tree::OSplitRule> ByBillLength() {
  auto rule = std::make_unique<tree::OSplitRule>(systemMissingValue(), kBillLength);
  rule->SetCutPoint(43.35);
  rule->SetDumbRule(0, 100.0 / 141.0);
  return rule;
}

// [split]
void SplitRoot(tree::NodeImp& root, std::unique_ptr<tree::NodeImp> shortFlippers,
               std::unique_ptr<tree::NodeImp> longFlippers) {
  root.SetNumCompetitors(2);
  root.SetCompetitor(0, ByFlipper().release());  // position 0: the rule by which the node splits
  root.SetCompetitor(1, ByIsland().release());   // the runner-up, for people to choose

  root.SetNumSurrogates(2);  // the best one first
  root.SetSurrogate(0, ByBillDepth().release());
  root.SetSurrogate(1, ByIsland().release());

  root.SetNumChildren(2);
  root.SetChild(0, shortFlippers.release());
  root.SetChild(1, longFlippers.release());
}
// [split]

void SplitShortFlippers(tree::NodeImp& node, std::unique_ptr<tree::NodeImp> shortBills,
                        std::unique_ptr<tree::NodeImp> longBills) {
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, ByBillLength().release());
  node.SetNumChildren(2);
  node.SetChild(0, shortBills.release());
  node.SetChild(1, longBills.release());
}

}  // namespace

char const* SpeciesName(int species) {
  constexpr std::array kNames = {"Adelie", "Chinstrap", "Gentoo"};
  return kNames[static_cast<std::size_t>(species)];
}

// [variables]
tree::CoreSettingsImp PenguinVariables() {
  tree::CoreSettingsImp variables;
  variables.GetTarget()->SetMeasurementLevel(global::MeasurementNominal);
  variables.GetTarget()->SetNumValues(kNumSpecies);

  tree::VariableSettings* const island = variables.AddPredictor();  // borrowed
  island->SetMeasurementLevel(global::MeasurementNominal);
  island->SetNumValues(kNumIslands);
  for (int index = kBillLength; index < kNumPredictors; ++index) variables.AddPredictor();
  return variables;
}
// [variables]

// [settings]
tree::CCartSettingsImp PenguinSettings() {
  tree::CCartSettingsImp settings(PenguinVariables());  // clones the variables
  settings.SetMaxNumCompetitors(3);
  settings.SetMaxNumSurrogates(2);
  settings.GetStopRule()->SetMaxTreeDepth(2);
  settings.GetValidationSpec()->Set(tree::ValidationSplitSample);
  settings.GetPruningSpec()->SetSERuleFactor(0.5);
  settings.GetCost()->Set(kGentoo, kGentoo, 0.0);     // makes room for all three classes
  settings.GetCost()->Set(kAdelie, kChinstrap, 3.0);  // a Chinstrap taken for an Adelie
  return settings;
}
// [settings]

std::unique_ptr<tree::NodeImp> BuildPenguinTree() {
  auto root = MakeNode(0, kAllInTraining, kAllInTest, kAdelie);
  SummarisePredictors(*root);

  auto shortFlippers = MakeNode(1, {99, 42, 0}, {51, 21, 1}, kAdelie);
  SplitShortFlippers(*shortFlippers, MakeNode(3, {96, 4, 0}, {50, 1, 0}, kAdelie),
                     MakeNode(4, {3, 38, 0}, {1, 20, 1}, kChinstrap));
  SplitRoot(*root, std::move(shortFlippers), MakeNode(2, {1, 2, 80}, {1, 3, 43}, kGentoo));
  return root;
}

std::unique_ptr<tree::NodeImp> BuildMassNode() {
  // [regression statistics]
  auto info = std::make_unique<tree::RegInfoImp>();
  info->SetCount(223.0);
  info->SetMean(4197.2);
  info->SetMinimum(2700.0);
  info->SetMaximum(6300.0);
  info->SetExtendedStatistic(tree::RegInfoImp::StoreStdDev, 792.4);
  info->SetNumBins(4);  // 900 grams wide each
  info->SetBinSize(0, 56.0);
  info->SetBinSize(1, 94.0);
  info->SetBinSize(2, 50.0);
  info->SetBinSize(3, 23.0);

  auto node = std::make_unique<tree::NodeImp>();
  node->SetRegInfo(info.release(), tree::TrainingSample);  // now a regression node
  // [regression statistics]
  return node;
}

}  // namespace guide
