#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "property/models/settings_part_models.h"

namespace tree::testing {

void Change(PruningSpecImp& pruning, PruningModel& model, Choices& choices) {
  if (choices.Below(3) == 1) {
    model.picksMinRisk = choices.Flag();
    pruning.SetPickMinRiskTree(model.picksMinRisk);
  } else {
    double const factor = choices.Value();
    pruning.SetSERuleFactor(factor);
    if (factor >= 0.0) model.factor = factor;
  }
}

void Check(PruningSpec const& pruning, PruningModel const& model) {
  Agree("GetSERuleFactor", pruning.GetSERuleFactor(), model.factor);
  Agree("GetPickMinRiskTree", pruning.GetPickMinRiskTree(), model.picksMinRisk);
}

void RunPruningSpecs(Choices choices) { RunPair<PruningSpecImp, PruningModel>(choices); }

}  // namespace tree::testing
