#ifndef TREE_TESTS_PROPERTY_MODELS_SETTINGS_CHANGES_H_
#define TREE_TESTS_PROPERTY_MODELS_SETTINGS_CHANGES_H_

// Settings beside their models, and the operations that change both.

#include <memory>

#include "property/models/settings_model.h"

namespace tree::testing {

template <class Imp, class Model>
struct Part {
  Imp object;
  Model model;
};

/// Parts that belong to the caller, of which settings only take clones.
struct CallersParts {
  /// Applies one chosen operation to a chosen part.
  void Change(Choices& choices);
  /// Throws unless all parts are as their models.
  void Check() const;

  Part<CoreSettingsImp, CoreModel> core;
  Part<ValidationSpecImp, ValidationModel> validation;
  Part<StopRuleImp, StopRuleModel> stopRule;
  Part<PruningSpecImp, PruningModel> pruning;
  Part<CostImp, CostModel> costs;
  Part<PriorsImp, PriorsModel> priors;
  Part<ScoresImp, ScoresModel> scores;
};

/// Settings of some kind and their model.
struct SettingsPair {
  SettingsPair(AlgorithmType type, Part<CoreSettingsImp, CoreModel> const& core);

  std::unique_ptr<AlgSettings> settings;
  SettingsModel model;
};

/// Applies one chosen operation of all kinds of settings to both.
void ChangeShared(SettingsPair& pair, CallersParts const& parts, Choices& choices);
/// Applies one chosen operation that only this kind of settings has.
void ChangeOwn(SettingsPair& pair, CallersParts const& parts, Choices& choices);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_SETTINGS_CHANGES_H_
