#include "settings_tour/questions.h"

namespace settings_tour {
namespace {

constexpr int kNumSpecies = 3;
constexpr int kNumIslands = 3;
constexpr int kNumSexes = 2;
constexpr int kNumYears = 3;
constexpr int kNumWeightClasses = 3;

void AddNominal(tree::CoreSettings& core, int numValues) {
  tree::VariableSettings* const predictor = core.AddPredictor();  // the core settings own it
  predictor->SetMeasurementLevel(global::MeasurementNominal);
  predictor->SetNumValues(numValues);
}

void AddOrdinal(tree::CoreSettings& core, int numValues) {
  tree::VariableSettings* const predictor = core.AddPredictor();
  predictor->SetMeasurementLevel(global::MeasurementOrdinal);
  predictor->SetNumValues(numValues);
}

void AddMeasurements(tree::CoreSettings& core, int count) {
  for (int index = 0; index < count; ++index) core.AddPredictor();  // continuous, as all new ones
}

void SetTarget(tree::CoreSettings& core, global::MeasurementLevel level, int numValues) {
  core.GetTarget()->SetMeasurementLevel(level);
  core.GetTarget()->SetNumValues(numValues);
}

/// What is known of a penguin that has not been weighed.
void AddAllButMass(tree::CoreSettings& core) {
  AddNominal(core, kNumSpecies);
  AddNominal(core, kNumIslands);
  AddMeasurements(core, 3);  // bill length, bill depth, flipper length
  AddNominal(core, kNumSexes);
  AddOrdinal(core, kNumYears);
}

}  // namespace

tree::CoreSettingsImp SpeciesQuestion() {
  tree::CoreSettingsImp core;
  SetTarget(core, global::MeasurementNominal, kNumSpecies);
  AddNominal(core, kNumIslands);
  AddMeasurements(core, 4);  // bill length, bill depth, flipper length, body mass
  AddNominal(core, kNumSexes);
  AddOrdinal(core, kNumYears);
  return core;
}

tree::CoreSettingsImp BodyMassQuestion() {
  tree::CoreSettingsImp core;  // its target is continuous
  AddAllButMass(core);
  core.SetHasFreqWeight(true);
  return core;
}

tree::CoreSettingsImp WeightClassQuestion() {
  tree::CoreSettingsImp core;
  SetTarget(core, global::MeasurementOrdinal, kNumWeightClasses);
  AddAllButMass(core);
  return core;
}

tree::CoreSettingsImp SpeciesByBillAndFlipper() {
  tree::CoreSettingsImp core;
  SetTarget(core, global::MeasurementNominal, kNumSpecies);
  AddMeasurements(core, 3);
  return core;
}

}  // namespace settings_tour
