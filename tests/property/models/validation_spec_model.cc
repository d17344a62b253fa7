#include <limits>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "property/models/settings_part_models.h"

namespace tree::testing {

namespace {

long ChooseSeed(Choices& choices) {
  int const number = choices.Integer();
  switch (choices.Below(4)) {
    case 1:
      return std::numeric_limits<long>::max() - 8 + number % 8;
    case 2:
      return std::numeric_limits<long>::min() + 8 + number % 8;
    default:
      return number;
  }
}

}  // namespace

void Change(ValidationSpecImp& validation, ValidationModel& model, Choices& choices) {
  switch (choices.Below(3)) {
    case 0: {
      int const type = choices.Integer();
      bool const accepts = type == ValidationSplitSample || type == ValidationCrossValidation;
      Agree("Set", validation.Set(static_cast<ValidationType>(type)), accepts);
      if (accepts) model.type = type;
      break;
    }
    case 1: {
      int const count = choices.Integer();
      Agree("SetNumCVFolds", validation.SetNumCVFolds(count), count >= 2);
      if (count >= 2) model.numFolds = count;
      break;
    }
    default: {
      long const seed = ChooseSeed(choices);
      Agree("SetRandomSeed", validation.SetRandomSeed(seed), seed >= 1);
      if (seed >= 1) model.seed = seed;
      break;
    }
  }
}

void Check(ValidationSpec const& validation, ValidationModel const& model) {
  Agree("GetType", static_cast<int>(validation.GetType()), model.type);
  Agree("GetNumCVFolds", validation.GetNumCVFolds(), model.numFolds);
  Agree("GetRandomSeed", validation.GetRandomSeed(), model.seed);
}

void RunValidationSpecs(Choices choices) { RunPair<ValidationSpecImp, ValidationModel>(choices); }

}  // namespace tree::testing
