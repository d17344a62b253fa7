#ifndef TREE_TESTS_PROPERTY_MODELS_SETTINGS_PART_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_SETTINGS_PART_MODELS_H_

// Plain counterparts of the parts that algorithm settings own.

#include <vector>

#include "property/models/choices.h"
#include "property/models/value_models.h"
#include "tree/settings.h"

namespace tree::testing {

struct CoreModel {
  int NumPredictors() const { return static_cast<int>(predictors.size()); }

  VariableModel target;
  std::vector<VariableModel> predictors;
  bool hasFreqWeight = false;
  bool hasCaseWeight = false;
};

struct StopRuleModel {
  bool Equals(StopRuleModel const& other) const;

  double minImprovement = 0.0001;
  int minNodeSize = 100;
  double minNodePercentSize = 0.0;
  int minChildSize = 50;
  double minChildPercentSize = 0.0;
  int maxTreeDepth = 0;
};

struct ValidationModel {
  int type = ValidationNone;
  int numFolds = 10;
  long seed = 2000000;
};

struct PruningModel {
  double factor = 1.0;
  bool picksMinRisk = false;
};

/// Applies one chosen operation to both.
void Change(CoreSettingsImp& core, CoreModel& model, Choices& choices);
void Change(StopRuleImp& rule, StopRuleModel& model, Choices& choices);
void Change(ValidationSpecImp& validation, ValidationModel& model, Choices& choices);
void Change(PruningSpecImp& pruning, PruningModel& model, Choices& choices);

/// Throws unless everything that can be read is as in `model`.
void Check(CoreSettings const& core, CoreModel const& model);
void Check(StopRule const& rule, StopRuleModel const& model);
void Check(ValidationSpec const& validation, ValidationModel const& model);
void Check(PruningSpec const& pruning, PruningModel const& model);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_SETTINGS_PART_MODELS_H_
