#ifndef TREE_TESTS_PROPERTY_MODELS_SEQUENCES_H_
#define TREE_TESTS_PROPERTY_MODELS_SEQUENCES_H_

// Sequences of operations on objects of the library and on their models, as long as there are
// choices. After each operation both must agree in all that can be read; `Mismatch` is thrown where
// they do not.

#include "property/models/choices.h"

namespace tree::testing {

void RunArraysOfDoubles(Choices choices);
void RunArraysOfInts(Choices choices);
void RunMatrices(Choices choices);
void RunPointerLists(Choices choices);
void RunVariableSettings(Choices choices);
void RunIntervals(Choices choices);
void RunCodeSets(Choices choices);
void RunOrdinalRules(Choices choices);
void RunNominalRules(Choices choices);
void RunClassDistributions(Choices choices);
void RunRegressionStatistics(Choices choices);
void RunPredictorSummaries(Choices choices);
void RunTree(Choices choices);
void RunCosts(Choices choices);
void RunPriors(Choices choices);
void RunScores(Choices choices);
void RunCoreSettings(Choices choices);
void RunStopRules(Choices choices);
void RunValidationSpecs(Choices choices);
void RunPruningSpecs(Choices choices);
void RunSettings(Choices choices);
void RunTreeStatistics(Choices choices);
void RunCumulativeNodes(Choices choices);
void RunGainsSettings(Choices choices);
void RunGainsSettingsHandles(Choices choices);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_SEQUENCES_H_
