#include "settings/cloning.h"
#include "tree/settings.h"

namespace tree {

namespace {

constexpr int kMaxTreeDepth = 5;
constexpr int kDefaultMaxNumSurrogates = 5;

}  // namespace

CartSettings::CartSettings(CoreSettings const& core) : AlgSettings(core) {
  Init(nullptr, kDefaultMaxNumSurrogates);
  AlgSettings::GetStopRule()->SetMaxTreeDepth(kMaxTreeDepth);
}

CartSettings::CartSettings(CartSettings const& other) : AlgSettings(other) {
  Init(other.GetPruningSpec(), other.GetMaxNumSurrogates());
}

CartSettings& CartSettings::operator=(CartSettings const& other) {
  CopyFrom(other);
  return *this;
}

CartSettings::~CartSettings() = default;

void CartSettings::CopyFrom(AlgSettings const& other) {
  AlgSettings::CopyFrom(other);
  AlgorithmType const type = other.GetType();
  if (type != AlgRCart && type != AlgCCart) return;
  if (auto const* const cart = dynamic_cast<CartSettings const*>(&other)) {
    Init(cart->GetPruningSpec(), cart->GetMaxNumSurrogates());
  }
}

PruningSpec* CartSettings::GetPruningSpec() { return pruningSpec_.get(); }

PruningSpec const* CartSettings::GetPruningSpec() const { return pruningSpec_.get(); }

int CartSettings::GetMaxNumSurrogates() const { return maxNumSurrogates_; }

void CartSettings::SetMaxNumSurrogates(int count) {
  maxNumSurrogates_ = count;
  ValidateNumSurrogates();
}

void CartSettings::Init(PruningSpec const* pruning, int maxNumSurrogates) {
  pruningSpec_ = CloneOrDefault<PruningSpecImp>(pruning);
  maxNumSurrogates_ = maxNumSurrogates;
  ValidateNumSurrogates();
}

void CartSettings::ValidateNumSurrogates() {
  if (maxNumSurrogates_ >= CountPredictors()) maxNumSurrogates_ = CountPredictors() - 1;
  if (maxNumSurrogates_ < 0) maxNumSurrogates_ = 0;
}

CCartSettings::CCartSettings(CoreSettings const& core) : CartSettings(core) {}

CCartSettings::CCartSettings(CCartSettings const& other) = default;

CCartSettings& CCartSettings::operator=(CCartSettings const& other) {
  CopyFrom(other);
  return *this;
}

CCartSettings::~CCartSettings() = default;

CCartSettingsImp::CCartSettingsImp(CoreSettings const& core)
    : CCartSettings(core),
      priors_(std::make_unique<PriorsImp>()),
      cost_(std::make_unique<CostImp>()) {}

CCartSettingsImp::CCartSettingsImp(CCartSettingsImp const& other) : CCartSettings(other) {
  Init(*other.priors_, *other.cost_, other.splitCriteria_);
}

CCartSettingsImp& CCartSettingsImp::operator=(CCartSettingsImp const& other) {
  CopyFrom(other);
  return *this;
}

CCartSettingsImp::~CCartSettingsImp() = default;

AlgorithmType CCartSettingsImp::GetType() const { return AlgCCart; }

AlgSettings* CCartSettingsImp::Clone() const { return new CCartSettingsImp(*this); }

void CCartSettingsImp::CopyFrom(AlgSettings const& other) {
  CartSettings::CopyFrom(other);
  if (other.GetType() != AlgCCart) return;
  if (auto const* const cart = dynamic_cast<CCartSettings const*>(&other)) {
    Init(*cart->GetPriors(), *cart->GetCost(), cart->GetSplitCriteria());
  }
}

Priors const* CCartSettingsImp::GetPriors() const { return priors_.get(); }

Priors* CCartSettingsImp::GetPriors() { return priors_.get(); }

Cost const* CCartSettingsImp::GetCost() const { return cost_.get(); }

Cost* CCartSettingsImp::GetCost() { return cost_.get(); }

CartSplitCriteria CCartSettingsImp::GetSplitCriteria() const { return splitCriteria_; }

void CCartSettingsImp::SetSplitCriteria(CartSplitCriteria criteria) { splitCriteria_ = criteria; }

void CCartSettingsImp::Init(Priors const& priors, Cost const& cost,
                            CartSplitCriteria splitCriteria) {
  auto newPriors = CloneOf(priors);
  auto newCost = CloneOf(cost);
  splitCriteria_ = splitCriteria;
  priors_ = std::move(newPriors);
  cost_ = std::move(newCost);
}

RCartSettingsImp::RCartSettingsImp(CoreSettings const& core) : CartSettings(core) {}

RCartSettingsImp::RCartSettingsImp(RCartSettingsImp const& other) = default;

RCartSettingsImp& RCartSettingsImp::operator=(RCartSettingsImp const& other) {
  CopyFrom(other);
  return *this;
}

RCartSettingsImp::~RCartSettingsImp() = default;

AlgorithmType RCartSettingsImp::GetType() const { return AlgRCart; }

AlgSettings* RCartSettingsImp::Clone() const { return new RCartSettingsImp(*this); }

}  // namespace tree
