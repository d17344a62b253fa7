#include "settings/cloning.h"
#include "tree/settings.h"

namespace tree {

namespace {

constexpr int kMaxTreeDepth = 5;

}  // namespace

QuestSettings::QuestSettings(CoreSettings const& core) : AlgSettings(core) {
  AlgSettings::GetStopRule()->SetMaxTreeDepth(kMaxTreeDepth);
}

QuestSettings::QuestSettings(QuestSettings const& other) = default;

QuestSettings& QuestSettings::operator=(QuestSettings const& other) {
  CopyFrom(other);
  return *this;
}

QuestSettings::~QuestSettings() = default;

QuestSettingsImp::QuestSettingsImp(CoreSettings const& core) : QuestSettings(core) {
  Init(0.05, 5, 32, nullptr, nullptr, nullptr);
  // Deliberate: no lower bound, and one more than the setter accepts.
  if (!ValidateNumSurrogates(maxNumSurrogates_)) maxNumSurrogates_ = CountPredictors() - 1;
}

QuestSettingsImp::QuestSettingsImp(QuestSettingsImp const& other) : QuestSettings(other) {
  Init(other.alphaOfVariableSelection_, other.maxNumSurrogates_, other.maxNumNomCatsSurr_,
       other.pruningSpec_.get(), other.priors_.get(), other.cost_.get());
}

QuestSettingsImp& QuestSettingsImp::operator=(QuestSettingsImp const& other) {
  CopyFrom(other);
  return *this;
}

QuestSettingsImp::~QuestSettingsImp() = default;

AlgorithmType QuestSettingsImp::GetType() const { return AlgQuest; }

AlgSettings* QuestSettingsImp::Clone() const { return new QuestSettingsImp(*this); }

void QuestSettingsImp::CopyFrom(AlgSettings const& other) {
  AlgSettings::CopyFrom(other);
  if (other.GetType() != AlgQuest) return;
  if (auto const* const quest = dynamic_cast<QuestSettings const*>(&other)) {
    Init(quest->GetAlphaOfVariableSelection(), quest->GetMaxNumSurrogates(),
         quest->GetMaxNumNomCatsSurr(), quest->GetPruningSpec(), quest->GetPriors(),
         quest->GetCost());
  }
}

PruningSpec* QuestSettingsImp::GetPruningSpec() { return pruningSpec_.get(); }

PruningSpec const* QuestSettingsImp::GetPruningSpec() const { return pruningSpec_.get(); }

int QuestSettingsImp::GetMaxNumSurrogates() const { return maxNumSurrogates_; }

void QuestSettingsImp::SetMaxNumSurrogates(int count) {
  if (ValidateNumSurrogates(count)) maxNumSurrogates_ = count;
}

int QuestSettingsImp::GetMaxNumNomCatsSurr() const { return maxNumNomCatsSurr_; }

void QuestSettingsImp::SetMaxNumNomCatsSurr(int count) {
  if (count > 0) maxNumNomCatsSurr_ = count;
}

Priors* QuestSettingsImp::GetPriors() { return priors_.get(); }

Priors const* QuestSettingsImp::GetPriors() const { return priors_.get(); }

Cost* QuestSettingsImp::GetCost() { return cost_.get(); }

Cost const* QuestSettingsImp::GetCost() const { return cost_.get(); }

double QuestSettingsImp::GetAlphaOfVariableSelection() const { return alphaOfVariableSelection_; }

void QuestSettingsImp::SetAlphaOfVariableSelection(double alpha) {
  alphaOfVariableSelection_ = alpha;
}

bool QuestSettingsImp::ValidateNumSurrogates(int count) const {
  return count < CountPredictors() - 1 && count >= 0;
}

void QuestSettingsImp::Init(double alphaOfVariableSelection, int maxNumSurrogates,
                            int maxNumNomCatsSurr, PruningSpec const* pruning, Priors const* priors,
                            Cost const* cost) {
  auto newPruning = CloneOrDefault<PruningSpecImp>(pruning);
  auto newPriors = CloneOrDefault<PriorsImp>(priors);
  auto newCost = CloneOrDefault<CostImp>(cost);
  alphaOfVariableSelection_ = alphaOfVariableSelection;
  maxNumSurrogates_ = maxNumSurrogates;
  maxNumNomCatsSurr_ = maxNumNomCatsSurr;
  pruningSpec_ = std::move(newPruning);
  priors_ = std::move(newPriors);
  cost_ = std::move(newCost);
}

}  // namespace tree
