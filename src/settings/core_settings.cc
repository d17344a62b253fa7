#include <utility>

#include "settings/cloning.h"
#include "tree/assertions.h"
#include "tree/settings.h"

template class MCTree::AArrayRO<tree::VariableSettings*>;
template class MCTree::AArrayRW<tree::VariableSettings*>;
template class MCTree::ArrayRW<tree::VariableSettings*>;

namespace tree {

namespace {

void Append(MCTree::ArrayRW<VariableSettings*>& predictors,
            std::unique_ptr<VariableSettings> predictor) {
  predictors.Add(predictor.get());
  static_cast<void>(predictor.release());  // the list's owner has it now
}

}  // namespace

CoreSettings::~CoreSettings() = default;

CoreSettingsImp::CoreSettingsImp()
    : target_(std::make_unique<VariableSettingsImp>()), predictors_(new PredictorList) {}

CoreSettingsImp::CoreSettingsImp(CoreSettingsImp const& other)
    : CoreSettings(other),
      target_(CloneOf(*other.target_)),
      predictors_(ClonePredictors(other)),
      hasFreqWeight_(other.hasFreqWeight_),
      hasCaseWeight_(other.hasCaseWeight_) {}

CoreSettingsImp& CoreSettingsImp::operator=(CoreSettings const& other) {
  if (this == &other) return *this;
  std::unique_ptr<VariableSettings> target = CloneOf(*other.GetTarget());
  OwnedPredictors predictors = ClonePredictors(other);
  hasFreqWeight_ = other.HasFreqWeight();
  hasCaseWeight_ = other.HasCaseWeight();
  target_ = std::move(target);
  predictors_ = std::move(predictors);
  return *this;
}

CoreSettingsImp& CoreSettingsImp::operator=(CoreSettingsImp const& other) {
  return *this = static_cast<CoreSettings const&>(other);
}

CoreSettingsImp::~CoreSettingsImp() {
  target_.reset();  // the target goes before the predictors
}

VariableSettings* CoreSettingsImp::AddPredictor() {
  Append(*predictors_, std::make_unique<VariableSettingsImp>());
  return GetPredictor(GetNumPredictors() - 1);
}

void CoreSettingsImp::SetHasFreqWeight(bool flag) { hasFreqWeight_ = flag; }

void CoreSettingsImp::SetHasCaseWeight(bool flag) { hasCaseWeight_ = flag; }

CoreSettings* CoreSettingsImp::Clone() const { return new CoreSettingsImp(*this); }

int CoreSettingsImp::GetNumPredictors() const {
  return predictors_ == nullptr ? 0 : predictors_->GetNumElements();
}

VariableSettings const* CoreSettingsImp::GetPredictor(int index) const {
  internal::RequireIndex(index, GetNumPredictors(), "CoreSettingsImp::GetPredictor");
  return (*predictors_)[index];
}

VariableSettings* CoreSettingsImp::GetPredictor(int index) {
  return const_cast<VariableSettings*>(std::as_const(*this).GetPredictor(index));
}

VariableSettings const* CoreSettingsImp::GetTarget() const { return target_.get(); }

VariableSettings* CoreSettingsImp::GetTarget() { return target_.get(); }

bool CoreSettingsImp::HasFreqWeight() const { return hasFreqWeight_; }

bool CoreSettingsImp::HasCaseWeight() const { return hasCaseWeight_; }

void CoreSettingsImp::DeletePredictors::operator()(PredictorList* predictors) const {
  std::unique_ptr<PredictorList> const list(predictors);
  for (int index = 0; index < list->GetNumElements(); ++index) delete (*list)[index];
}

CoreSettingsImp::OwnedPredictors CoreSettingsImp::ClonePredictors(CoreSettings const& other) {
  OwnedPredictors clones(new PredictorList);
  for (int index = 0; index < other.GetNumPredictors(); ++index) {
    Append(*clones, CloneOf(*other.GetPredictor(index)));
  }
  return clones;
}

}  // namespace tree
