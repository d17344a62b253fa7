#include "settings_tour/configured.h"

#include "settings_tour/questions.h"

namespace settings_tour {
namespace {

// The classes of the species question, and those of the weight classes.
constexpr int kAdelie = 0;
constexpr int kChinstrap = 1;
constexpr int kGentoo = 2;
constexpr int kLight = 0;
constexpr int kMiddling = 1;
constexpr int kHeavy = 2;

void SetSizes(tree::StopRule& rule, int minNodeSize, int minChildSize) {
  rule.SetMinNodeSize(minNodeSize);
  rule.SetMinChildSize(minChildSize);
}

void SetPercentSizes(tree::StopRule& rule, double minNodePercent, double minChildPercent) {
  rule.SetMinNodePercentSize(minNodePercent);
  rule.SetMinChildPercentSize(minChildPercent);
}

}  // namespace

tree::RCartSettingsImp ConfiguredRCart() {
  tree::RCartSettingsImp settings(BodyMassQuestion());
  settings.SetMaxNumCompetitors(3);
  settings.SetMaxNominalPredCategories(12);

  tree::StopRule* const stop = settings.GetStopRule();  // the settings own it, and all their parts
  stop->SetMinImprovement(0.001);
  SetSizes(*stop, 40, 20);
  SetPercentSizes(*stop, 8.0, 4.0);
  stop->SetMaxTreeDepth(6);

  tree::ValidationSpec* const validation = settings.GetValidationSpec();
  validation->Set(tree::ValidationCrossValidation);
  validation->SetNumCVFolds(5);
  validation->SetRandomSeed(11);

  settings.GetPruningSpec()->SetPickMinRiskTree(true);
  settings.SetMaxNumSurrogates(2);
  return settings;
}

tree::CCartSettingsImp ConfiguredCCart() {
  tree::CCartSettingsImp settings(SpeciesQuestion());
  settings.SetMaxNumCompetitors(4);
  settings.SetMaxNominalPredCategories(8);

  tree::StopRule* const stop = settings.GetStopRule();
  stop->SetMinImprovement(0.0005);
  SetSizes(*stop, 30, 10);
  SetPercentSizes(*stop, 5.0, 2.5);
  stop->SetMaxTreeDepth(4);

  tree::ValidationSpec* const validation = settings.GetValidationSpec();
  validation->Set(tree::ValidationSplitSample);
  validation->SetNumCVFolds(4);  // kept for the day when the validation changes
  validation->SetRandomSeed(2009);

  settings.GetPruningSpec()->SetSERuleFactor(0.5);
  settings.SetMaxNumSurrogates(3);

  tree::Priors* const priors = settings.GetPriors();
  priors->Set(kAdelie, 0.45);
  priors->Set(kChinstrap, 0.2);
  priors->Set(kGentoo, 0.35);
  priors->AlterValues(true);

  settings.GetCost()->Set(kAdelie, kChinstrap, 3.0);  // a Chinstrap taken for an Adelie
  settings.GetCost()->Set(kGentoo, kChinstrap, 2.0);
  return settings;
}

tree::RChaidSettingsImp ConfiguredRChaid() {
  tree::RChaidSettingsImp settings(BodyMassQuestion());
  settings.SetMaxNumCompetitors(2);
  settings.SetMaxNominalPredCategories(24);

  tree::StopRule* const stop = settings.GetStopRule();
  stop->SetMinImprovement(0.002);
  SetSizes(*stop, 60, 25);
  SetPercentSizes(*stop, 10.0, 6.0);
  stop->SetMaxTreeDepth(2);

  tree::ValidationSpec* const validation = settings.GetValidationSpec();
  validation->Set(tree::ValidationCrossValidation);
  validation->SetNumCVFolds(20);
  validation->SetRandomSeed(7);

  settings.SetAlphaOfSplitNode(0.01);
  settings.SetAlphaOfMerge(0.1);  // sets the level for splitting again, too: 0.05
  settings.SetSplitMergeMethod(tree::SplitMergeMethod1);
  settings.SetAllowSplitMerge(true);
  settings.SetUseBonferroniAdj(false);
  return settings;
}

tree::CChaidSettingsImp ConfiguredCChaid() {
  tree::CChaidSettingsImp settings(WeightClassQuestion());
  settings.SetMaxNumCompetitors(6);
  settings.SetMaxNominalPredCategories(20);

  tree::StopRule* const stop = settings.GetStopRule();
  stop->SetMinImprovement(0.005);
  SetSizes(*stop, 50, 15);
  SetPercentSizes(*stop, 6.0, 3.0);
  stop->SetMaxTreeDepth(8);

  tree::ValidationSpec* const validation = settings.GetValidationSpec();
  validation->Set(tree::ValidationSplitSample);
  validation->SetNumCVFolds(3);
  validation->SetRandomSeed(344);

  settings.SetAlphaOfSplitNode(0.02);
  settings.SetAlphaOfMerge(0.08);
  settings.SetAlphaOfMergeSplit(0.03);  // after the level for merging, which would overwrite it
  settings.SetConvergenceEpsilon(0.0001);
  settings.SetMaxNumIterations(250);

  tree::Scores* const scores = settings.GetScores();  // grams, about the middle of each class
  scores->Set(kLight, 3300.0);
  scores->Set(kMiddling, 4200.0);
  scores->Set(kHeavy, 5400.0);

  settings.GetCost()->Set(kLight, kHeavy, 4.0);  // a heavy one taken for light
  settings.GetPriors()->Set(tree::PriorTypeDefault);
  return settings;
}

tree::QuestSettingsImp ConfiguredQuest() {
  tree::QuestSettingsImp settings(SpeciesQuestion());
  settings.SetMaxNumCompetitors(1);
  settings.SetMaxNominalPredCategories(16);

  tree::StopRule* const stop = settings.GetStopRule();
  stop->SetMinImprovement(0.01);
  SetSizes(*stop, 20, 5);
  SetPercentSizes(*stop, 4.0, 2.0);
  stop->SetMaxTreeDepth(7);

  tree::ValidationSpec* const validation = settings.GetValidationSpec();
  validation->Set(tree::ValidationCrossValidation);
  validation->SetNumCVFolds(25);
  validation->SetRandomSeed(1);

  settings.GetPruningSpec()->SetSERuleFactor(2.0);
  settings.SetMaxNumSurrogates(4);
  settings.SetMaxNumNomCatsSurr(10);
  settings.SetAlphaOfVariableSelection(0.1);

  tree::Priors* const priors = settings.GetPriors();
  priors->Set(kAdelie, 0.5);
  priors->Set(kChinstrap, 0.25);
  priors->Set(kGentoo, 0.25);

  settings.GetCost()->Set(kChinstrap, kGentoo, 5.0);
  return settings;
}

}  // namespace settings_tour
