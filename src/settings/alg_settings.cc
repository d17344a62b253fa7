#include "settings/cloning.h"
#include "tree/settings.h"

namespace tree {

namespace {

constexpr int kDefaultMaxNumCompetitors = 5;
constexpr int kDefaultMaxNominalPredCategories = 32;

bool IsContinuous(global::MeasurementLevel level) { return level == global::MeasurementContinuous; }

}  // namespace

AlgSettings::AlgSettings(CoreSettings const& core) {
  Init(kDefaultMaxNumCompetitors, kDefaultMaxNominalPredCategories, &core, nullptr, nullptr);
}

AlgSettings::AlgSettings(AlgSettings const& other) { AlgSettings::CopyFrom(other); }

AlgSettings& AlgSettings::operator=(AlgSettings const& other) {
  CopyFrom(other);
  return *this;
}

AlgSettings::~AlgSettings() { Clear(); }

int AlgSettings::GetMaxNumCompetitors() const { return maxNumCompetitors_; }

int AlgSettings::GetMaxNominalPredCategories() const { return maxNominalPredCategories_; }

CoreSettings const* AlgSettings::GetCoreSettings() const { return coreSettings_.get(); }

ValidationSpec* AlgSettings::GetValidationSpec() { return validationSpec_.get(); }

ValidationSpec const* AlgSettings::GetValidationSpec() const { return validationSpec_.get(); }

StopRule* AlgSettings::GetStopRule() { return stopRule_.get(); }

StopRule const* AlgSettings::GetStopRule() const { return stopRule_.get(); }

void AlgSettings::CopyFrom(AlgSettings const& other) {
  Init(other.GetMaxNumCompetitors(), other.GetMaxNominalPredCategories(), other.GetCoreSettings(),
       other.GetValidationSpec(), other.GetStopRule());
}

void AlgSettings::SetMaxNumCompetitors(int count) {
  if (count > 0) maxNumCompetitors_ = count;
  ValidateNumCompetitors();
}

void AlgSettings::SetMaxNominalPredCategories(int count) {
  if (count > 0) maxNominalPredCategories_ = count;
}

void AlgSettings::ValidateNumCompetitors() {
  if (maxNumCompetitors_ > CountPredictors()) maxNumCompetitors_ = CountPredictors();
  if (maxNumCompetitors_ <= 0) maxNumCompetitors_ = 1;
}

void AlgSettings::Init(int maxNumCompetitors, int maxNominalPredCategories,
                       CoreSettings const* core, ValidationSpec const* validation,
                       StopRule const* stopRule) {
  // All clones come before anything is deleted: the parts passed may be this object's own.
  auto newValidation = CloneOrDefault<ValidationSpecImp>(validation);
  auto newCore = CloneOrDefault<CoreSettingsImp>(core);
  if (coreSettings_ != nullptr) {
    // The kind of target is fixed: copied settings never turn a regression into a classification.
    global::MeasurementLevel const oldLevel = coreSettings_->GetTarget()->GetMeasurementLevel();
    VariableSettings* const newTarget = newCore->GetTarget();
    if (IsContinuous(oldLevel) != IsContinuous(newTarget->GetMeasurementLevel())) {
      newTarget->SetMeasurementLevel(oldLevel);
    }
  }
  auto newStopRule = CloneOrDefault<StopRuleImp>(stopRule);
  Clear();
  maxNumCompetitors_ = maxNumCompetitors;
  maxNominalPredCategories_ = maxNominalPredCategories;
  coreSettings_ = std::move(newCore);
  validationSpec_ = std::move(newValidation);
  stopRule_ = std::move(newStopRule);
  ValidateNumCompetitors();
}

void AlgSettings::Clear() {
  coreSettings_.reset();
  validationSpec_.reset();
  stopRule_.reset();
}

int AlgSettings::CountPredictors() const {
  return coreSettings_ == nullptr ? 0 : coreSettings_->GetNumPredictors();
}

}  // namespace tree
