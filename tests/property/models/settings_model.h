#ifndef TREE_TESTS_PROPERTY_MODELS_SETTINGS_MODEL_H_
#define TREE_TESTS_PROPERTY_MODELS_SETTINGS_MODEL_H_

// A plain counterpart of the settings of all five kinds.

#include <optional>

#include "property/models/misclassification_models.h"
#include "property/models/settings_part_models.h"
#include "tree/settings.h"

namespace tree::testing {

/// The fields of all kinds; each kind has some of them. The parts that all share are missing after
/// a `Clear`.
struct SettingsModel {
  /// What CHAID of both variants has.
  struct Chaid {
    double alphaOfSplitNode = 0.05;
    double alphaOfMerge = 0.05;
    double alphaOfMergeSplit = 0.025;
    int splitMergeMethod = 0;
    bool allowSplitMerge = false;
    bool useBonferroniAdj = true;
  };
  /// What only settings of the same kind take over.
  struct Own {
    double convergenceEpsilon = 0.001;
    int chiSquareMethod = 0;
    int maxNumIterations = 100;
    int splitCriteria = 0;
    double alphaOfVariableSelection = 0.05;
    int maxNumNomCatsSurr = 32;
    CostModel costs;
    PriorsModel priors;
    ScoresModel scores;
  };

  /// New settings.
  SettingsModel(AlgorithmType algorithm, CoreModel const& coreSettings);

  bool IsChaid() const { return type == AlgRChaid || type == AlgCChaid; }
  bool IsCart() const { return type == AlgRCart || type == AlgCCart; }
  int NumPredictors() const { return core ? core->NumPredictors() : 0; }

  void ClampCompetitors();
  /// Of CART.
  void ClampSurrogates();
  /// Of QUEST.
  bool AcceptsSurrogates(int count) const;

  /// The parts are there: default ones stand in for null.
  void Init(int competitors, int categories, CoreModel const& newCore,
            ValidationModel const& newValidation, StopRuleModel const& newStopRule);
  void Clear();
  void CopyFrom(SettingsModel const& other);
  SettingsModel Copy() const;

  AlgorithmType type;
  int maxNumCompetitors = 5;
  int maxNominalPredCategories = 32;
  std::optional<CoreModel> core;
  std::optional<ValidationModel> validation;
  std::optional<StopRuleModel> stopRule;
  Chaid chaid;
  // Of CART, which takes them over from both its variants, and QUEST.
  PruningModel pruning;
  int maxNumSurrogates = 5;
  Own own;
};

/// Throws unless everything that can be read is as in `model`.
void Check(AlgSettings& settings, SettingsModel const& model);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_SETTINGS_MODEL_H_
