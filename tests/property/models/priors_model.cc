#include <memory>

#include "property/models/agree.h"
#include "property/models/misclassification_models.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"

namespace tree::testing {

namespace {

constexpr int kMaxClasses = 10;

using Values = PriorsModel::Values;
using Vector = PriorsImp::PriorVector;

/// The number of a vector of which some do not exist.
int ChooseVector(Choices& choices) { return choices.Below(PriorsModel::kNumVectors + 2) - 1; }

bool IsVector(int vector) { return vector >= 0 && vector < PriorsModel::kNumVectors; }

/// An index of which some are negative.
int ChooseIndex(Choices& choices) { return choices.Below(kMaxClasses + 2) - 2; }

/// A value of which most are priors.
double ChoosePrior(Choices& choices) {
  return choices.Below(4) == 1 ? choices.Value() : choices.Below(9) / 4.0;
}

/// Costs, and their model, after some changes.
struct SomeCosts {
  explicit SomeCosts(Choices& choices) {
    costs.Resize(kMaxClasses / 2);
    model.Resize(kMaxClasses / 2);
    for (int left = choices.Below(5); left > 0; --left) Change(costs, model, choices);
  }

  CostImp costs;
  CostModel model;
};

void GiveVector(PriorsImp& priors, PriorsModel& model, Choices& choices) {
  int const vector = ChooseVector(choices);
  int const kind = choices.Below(4);
  if (kind == 0) {
    // One that it holds already, wherever: it stays there.
    auto const held = static_cast<Vector>(choices.Below(PriorsModel::kNumVectors));
    priors.SetVector(static_cast<Vector>(vector), priors.GetVector(held, true));
  } else if (kind == 1) {
    priors.SetVector(static_cast<Vector>(vector), nullptr);
    model.Give(vector, std::nullopt);
  } else {
    auto given = std::make_unique<TArray<double>>(true);
    Values values;
    for (int left = choices.Below(6); left > 0; --left) {
      values.push_back(ChoosePrior(choices));
      given->SetAtGrow(static_cast<int>(values.size()) - 1, values.back());
    }
    priors.SetVector(static_cast<Vector>(vector), given.release());
    model.Give(vector, values);
  }
}

void TakeOverAnother(PriorsImp& priors, PriorsModel& model, Choices& choices) {
  if (choices.Flag()) {
    priors.Init(priors);
    return;
  }
  PriorsImp other;
  PriorsModel otherModel;
  for (int left = choices.Below(4); left > 0; --left) Change(other, otherModel, choices);
  priors.Init(other);
  model = otherModel;
}

void CheckVector(PriorsImp const& priors, PriorsModel const& model, int vector) {
  auto const id = static_cast<Vector>(vector);
  auto const index = static_cast<std::size_t>(vector);
  TArray<double> const* const values = priors.GetVector(id, false);
  Agree("GetVector", values != nullptr, model.vectors[index].has_value());
  Agree("FindValidId", static_cast<int>(priors.FindValidId(id)), model.Resolve(vector));

  TArray<double> const* const resolved = priors.GetVector(id, true);
  int const standIn = model.Resolve(vector);
  Agree("GetVector", resolved, priors.GetVector(static_cast<Vector>(standIn), false));
  Agree("GetVector", resolved, const_cast<PriorsImp&>(priors).GetVector(id, true));
  Agree("GetValues", priors.GetValues(id), resolved->GetData());
  int const size = resolved->GetSize();
  Agree("GetSize", size,
        static_cast<int>(model.vectors[static_cast<std::size_t>(standIn)]->size()));
  for (int position = -1; position <= size; ++position) {
    Agree("Get", priors.Get(position, id), model.Get(position, vector));
  }
}

}  // namespace

int PriorsModel::Resolve(int vector) const {
  while (!vectors[static_cast<std::size_t>(vector)]) --vector;
  return vector;
}

double PriorsModel::Get(int index, int vector) const {
  Values const& values = *vectors[static_cast<std::size_t>(Resolve(vector))];
  bool const isKnown = index >= 0 && index < static_cast<int>(values.size());
  return isKnown ? values[static_cast<std::size_t>(index)] : 0.0;
}

bool PriorsModel::SetType(int newType) {
  if (newType == type || (newType != PriorTypeDefault && newType != PriorTypeAlternate)) {
    return false;
  }
  type = newType;
  vectors = {Values()};
  return true;
}

bool PriorsModel::SetValue(int index, double value, int vector) {
  if (index < 0 || !(value >= 0.0)) return false;
  if (!IsVector(vector)) return true;
  std::optional<Values>& values = vectors[static_cast<std::size_t>(vector)];
  if (!values) values = Values();
  auto const position = static_cast<std::size_t>(index);
  if (position >= values->size()) values->resize(position + 1);
  (*values)[position] = value;
  return true;
}

void PriorsModel::Give(int vector, std::optional<Values> const& values) {
  if (vector == PriorsImp::PriorVectorSpecified || !IsVector(vector)) return;
  std::optional<Values>& held = vectors[static_cast<std::size_t>(vector)];
  if (vector == PriorsImp::PriorVectorAuxiliary || !held) held = values;
}

bool PriorsModel::Alter(int destination, int source, CostModel const& costs) {
  if (!IsVector(source) || !vectors[static_cast<std::size_t>(source)]) return false;
  Values const& priors = *vectors[static_cast<std::size_t>(source)];
  Values altered(priors.size());
  double total = 0.0;
  for (std::size_t row = 0; row < priors.size(); ++row) {
    for (std::size_t column = 0; column < priors.size(); ++column) {
      double const cost = costs.Get(static_cast<int>(row), static_cast<int>(column));
      altered[column] += priors[column] * cost;
      total += priors[column] * cost;
    }
  }
  if (!(total > 0.0)) return false;
  for (double& value : altered) value /= total;
  Give(destination, altered);
  return true;
}

bool PriorsModel::ComputeAltered(CostModel const& costs) {
  if (!isAltered) return true;
  if (!Alter(PriorsImp::PriorVectorAltered, PriorsImp::PriorVectorSpecified, costs)) return false;
  Alter(PriorsImp::PriorVectorAuxiliary, PriorsImp::PriorVectorAuxiliary, costs);
  return true;
}

void Change(PriorsImp& priors, PriorsModel& model, Choices& choices) {
  switch (choices.Below(12)) {
    case 0: {
      int const type = choices.Flag() ? choices.Below(2) : choices.Integer();
      Agree("Set", priors.Set(static_cast<PriorType>(type)), model.SetType(type));
      break;
    }
    case 1:
      model.isAltered = choices.Flag();
      priors.AlterValues(model.isAltered);
      break;
    case 2: {
      int const count = ChooseIndex(choices);
      bool const resizes = count >= 0 && count != static_cast<int>(model.Specified().size());
      Agree("Resize", priors.Resize(count), resizes);
      if (resizes) model.Specified().resize(static_cast<std::size_t>(count));
      break;
    }
    case 3:
    case 4: {
      int const vector = ChooseVector(choices);
      int const index = ChooseIndex(choices);
      double const value = ChoosePrior(choices);
      Agree("Set", priors.Set(index, value, static_cast<Vector>(vector)),
            model.SetValue(index, value, vector));
      break;
    }
    case 5:
      GiveVector(priors, model, choices);
      break;
    case 6:
      TakeOverAnother(priors, model, choices);
      break;
    case 7:
    case 8: {
      SomeCosts const some(choices);
      Agree("ComputeAltered", priors.ComputeAltered(some.costs), model.ComputeAltered(some.model));
      break;
    }
    case 9: {
      SomeCosts const some(choices);
      int const destination = ChooseVector(choices);
      int const source = ChooseVector(choices);
      Agree("AlterPriorVector",
            priors.AlterPriorVector(static_cast<Vector>(destination), static_cast<Vector>(source),
                                    some.costs),
            model.Alter(destination, source, some.model));
      break;
    }
    default: {
      int const index = ChooseIndex(choices);
      double const value = ChoosePrior(choices);
      bool const done = model.SetValue(index, value, PriorsImp::PriorVectorSpecified);
      if (done) model.type = PriorTypeCustom;
      Agree("Set", priors.Set(index, value), done);
      break;
    }
  }
}

void Check(PriorsImp const& priors, PriorsModel const& model) {
  int const count = static_cast<int>(model.Specified().size());
  Agree("GetType", static_cast<int>(priors.GetType()), model.type);
  Agree("HasAlteredValues", priors.HasAlteredValues(), model.isAltered);
  Agree("GetNumClasses", priors.GetNumClasses(), count);
  for (int index = -1; index <= count; ++index) {
    Agree("Get", priors.Get(index), model.Get(index, PriorsImp::PriorVectorSpecified));
    Agree("GetAltered", priors.GetAltered(index), model.Get(index, PriorsImp::PriorVectorAltered));
  }
  for (int vector = 0; vector < PriorsModel::kNumVectors; ++vector) {
    CheckVector(priors, model, vector);
  }
  for (int unknown : {-1, PriorsModel::kNumVectors}) {
    Agree("GetVector", priors.GetVector(static_cast<Vector>(unknown), false), nullptr);
  }
}

void RunPriors(Choices choices) { RunPair<PriorsImp, PriorsModel>(choices); }

}  // namespace tree::testing
