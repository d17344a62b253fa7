#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "property/models/settings_part_models.h"

namespace tree::testing {

namespace {

constexpr int kMaxPredictors = 12;

}  // namespace

void Change(CoreSettingsImp& core, CoreModel& model, Choices& choices) {
  int const count = model.NumPredictors();
  switch (choices.Below(8)) {
    case 0:
      model.hasFreqWeight = choices.Flag();
      core.SetHasFreqWeight(model.hasFreqWeight);
      break;
    case 1:
      model.hasCaseWeight = choices.Flag();
      core.SetHasCaseWeight(model.hasCaseWeight);
      break;
    case 2:
    case 3:
      Change(*core.GetTarget(), model.target, choices);
      break;
    case 4: {
      int const index = choices.Below(count);
      if (count == 0) break;
      Change(*core.GetPredictor(index), model.predictors[static_cast<std::size_t>(index)], choices);
      break;
    }
    case 5: {
      // Through the interface and back.
      CoreSettingsImp copy;
      copy.AddPredictor();
      copy = static_cast<CoreSettings const&>(core);
      core = static_cast<CoreSettings const&>(copy);
      break;
    }
    default: {
      if (count == kMaxPredictors) break;
      VariableSettings* const added = core.AddPredictor();
      model.predictors.emplace_back();
      Agree("AddPredictor", core.GetPredictor(count), added);
      for (int left = choices.Below(3); left > 0; --left) {
        Change(*added, model.predictors.back(), choices);
      }
      break;
    }
  }
}

void Check(CoreSettings const& core, CoreModel const& model) {
  Agree("HasFreqWeight", core.HasFreqWeight(), model.hasFreqWeight);
  Agree("HasCaseWeight", core.HasCaseWeight(), model.hasCaseWeight);
  Check(*core.GetTarget(), model.target);
  Agree("GetNumPredictors", core.GetNumPredictors(), model.NumPredictors());
  for (int index = 0; index < model.NumPredictors(); ++index) {
    Check(*core.GetPredictor(index), model.predictors[static_cast<std::size_t>(index)]);
  }
}

void RunCoreSettings(Choices choices) { RunPair<CoreSettingsImp, CoreModel>(choices); }

}  // namespace tree::testing
