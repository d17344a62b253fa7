#include "property/models/agree.h"
#include "property/models/misclassification_models.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"
#include "tree/support.h"

namespace tree::testing {

namespace {

constexpr int kMaxCategories = 10;

void SetDefault(ScoresModel& model) {
  for (std::size_t index = 0; index < model.scores.size(); ++index) {
    model.scores[index] = static_cast<double>(index);
  }
  model.type = ScoreTypeDefault;
}

}  // namespace

void Change(ScoresImp& scores, ScoresModel& model, Choices& choices) {
  switch (choices.Below(6)) {
    case 0: {
      int const type = choices.Integer();
      Agree("Set", scores.Set(static_cast<ScoreType>(type)), type == ScoreTypeDefault);
      if (type == ScoreTypeDefault) SetDefault(model);
      break;
    }
    case 1:
      scores.SetDefault();
      SetDefault(model);
      break;
    case 2: {
      int const count = choices.Below(kMaxCategories);
      scores.Resize(count);
      model.scores.resize(static_cast<std::size_t>(count));
      break;
    }
    default: {
      int const index = choices.Below(kMaxCategories + 2) - 2;
      double const score = choices.Value();
      Agree("Set", scores.Set(index, score), index >= 0);
      if (index < 0) break;
      auto const position = static_cast<std::size_t>(index);
      if (position >= model.scores.size()) model.scores.resize(position + 1);
      model.scores[position] = score;
      model.type = ScoreTypeCustom;
      break;
    }
  }
}

void Check(ScoresImp const& scores, ScoresModel const& model) {
  int const count = static_cast<int>(model.scores.size());
  Agree("GetNumClasses", scores.GetNumClasses(), count);
  Agree("GetType", static_cast<int>(scores.GetType()), model.type);
  for (int index = -1; index <= count; ++index) {
    bool const isKnown = index >= 0 && index < count;
    Agree("Get", scores.Get(index),
          isKnown ? model.scores[static_cast<std::size_t>(index)] : systemMissingValue());
  }
}

void RunScores(Choices choices) { RunPair<ScoresImp, ScoresModel>(choices); }

}  // namespace tree::testing
