#include "settings/cloning.h"
#include "tree/settings.h"

namespace tree {

namespace {

constexpr int kMaxTreeDepth = 3;

}  // namespace

ChaidSettings::ChaidSettings(CoreSettings const& core) : AlgSettings(core) {
  Init(0.05, 0.05, 0.025, SplitMergeMethod0, false, true);
  AlgSettings::GetStopRule()->SetMaxTreeDepth(kMaxTreeDepth);
}

ChaidSettings::ChaidSettings(ChaidSettings const& other) = default;

ChaidSettings& ChaidSettings::operator=(ChaidSettings const& other) {
  CopyFrom(other);
  return *this;
}

ChaidSettings::~ChaidSettings() = default;

void ChaidSettings::CopyFrom(AlgSettings const& other) {
  AlgSettings::CopyFrom(other);
  AlgorithmType const type = other.GetType();
  if (type != AlgRChaid && type != AlgCChaid) return;
  if (auto const* const chaid = dynamic_cast<ChaidSettings const*>(&other)) {
    Init(chaid->alphaOfSplitNode_, chaid->alphaOfMerge_, chaid->alphaOfMergeSplit_,
         chaid->splitMergeMethod_, chaid->allowSplitMerge_, chaid->useBonferroniAdj_);
  }
}

void ChaidSettings::SetAlphaOfSplitNode(double alpha) { alphaOfSplitNode_ = alpha; }

void ChaidSettings::SetAlphaOfMerge(double alpha) {
  alphaOfMerge_ = alpha;
  alphaOfMergeSplit_ = alpha / 2.0;
}

void ChaidSettings::SetAlphaOfMergeSplit(double alpha) { alphaOfMergeSplit_ = alpha; }

void ChaidSettings::SetSplitMergeMethod(SplitMergeMethod method) {
  if (method == SplitMergeMethod0 || method == SplitMergeMethod1) splitMergeMethod_ = method;
}

void ChaidSettings::SetAllowSplitMerge(bool flag) { allowSplitMerge_ = flag; }

void ChaidSettings::SetUseBonferroniAdj(bool flag) { useBonferroniAdj_ = flag; }

void ChaidSettings::Init(double alphaOfSplitNode, double alphaOfMerge, double alphaOfMergeSplit,
                         SplitMergeMethod splitMergeMethod, bool allowSplitMerge,
                         bool useBonferroniAdj) {
  alphaOfSplitNode_ = alphaOfSplitNode;
  alphaOfMerge_ = alphaOfMerge;
  alphaOfMergeSplit_ = alphaOfMergeSplit;
  splitMergeMethod_ = splitMergeMethod;
  allowSplitMerge_ = allowSplitMerge;
  useBonferroniAdj_ = useBonferroniAdj;
}

CChaidSettings::CChaidSettings(CoreSettings const& core) : ChaidSettings(core) {}

CChaidSettings::CChaidSettings(CChaidSettings const& other) = default;

CChaidSettings& CChaidSettings::operator=(CChaidSettings const& other) {
  CopyFrom(other);
  return *this;
}

CChaidSettings::~CChaidSettings() = default;

CChaidSettingsImp::CChaidSettingsImp(CoreSettings const& core)
    : CChaidSettings(core),
      cost_(std::make_unique<CostImp>()),
      priors_(std::make_unique<PriorsImp>()),
      scores_(std::make_unique<ScoresImp>()) {
  priors_->Set(PriorTypeAlternate);
  Init(0.001, ChiSquareMethod0, 100, *cost_, *priors_, *scores_);
}

CChaidSettingsImp::CChaidSettingsImp(CChaidSettingsImp const& other) : CChaidSettings(other) {
  Init(other.convergenceEpsilon_, other.chiSquareMethod_, other.maxNumIterations_, *other.cost_,
       *other.priors_, *other.scores_);
}

CChaidSettingsImp& CChaidSettingsImp::operator=(CChaidSettingsImp const& other) {
  CopyFrom(other);
  return *this;
}

CChaidSettingsImp::~CChaidSettingsImp() = default;

AlgorithmType CChaidSettingsImp::GetType() const { return AlgCChaid; }

AlgSettings* CChaidSettingsImp::Clone() const { return new CChaidSettingsImp(*this); }

void CChaidSettingsImp::CopyFrom(AlgSettings const& other) {
  ChaidSettings::CopyFrom(other);
  if (other.GetType() != AlgCChaid) return;
  auto const* const chaid = dynamic_cast<CChaidSettings const*>(&other);
  if (chaid == nullptr) return;
  // The interface shows no priors: those of a class that is not ours stay unknown.
  auto const* const own = dynamic_cast<CChaidSettingsImp const*>(chaid);
  Init(chaid->GetConvergenceEpsilon(), chaid->GetChiSquareMethod(), chaid->GetMaxNumIterations(),
       *chaid->GetCost(), own != nullptr ? *own->priors_ : *priors_, *chaid->GetScores());
}

double CChaidSettingsImp::GetConvergenceEpsilon() const { return convergenceEpsilon_; }

int CChaidSettingsImp::GetMaxNumIterations() const { return maxNumIterations_; }

ChiSquareMethod CChaidSettingsImp::GetChiSquareMethod() const { return chiSquareMethod_; }

Cost const* CChaidSettingsImp::GetCost() const { return cost_.get(); }

Cost* CChaidSettingsImp::GetCost() { return cost_.get(); }

Scores const* CChaidSettingsImp::GetScores() const { return scores_.get(); }

Scores* CChaidSettingsImp::GetScores() { return scores_.get(); }

void CChaidSettingsImp::SetConvergenceEpsilon(double epsilon) { convergenceEpsilon_ = epsilon; }

void CChaidSettingsImp::SetMaxNumIterations(int count) { maxNumIterations_ = count; }

void CChaidSettingsImp::SetChiSquareMethod(ChiSquareMethod method) { chiSquareMethod_ = method; }

void CChaidSettingsImp::Init(double convergenceEpsilon, ChiSquareMethod chiSquareMethod,
                             int maxNumIterations, Cost const& cost, Priors const& priors,
                             Scores const& scores) {
  convergenceEpsilon_ = convergenceEpsilon;
  chiSquareMethod_ = chiSquareMethod;
  maxNumIterations_ = maxNumIterations;
  // An object that is held already is not cloned: pointers to it stay good.
  if (&cost != cost_.get()) cost_ = CloneOf(cost);
  if (&priors != priors_.get()) priors_ = CloneOf(priors);
  if (&scores != scores_.get()) scores_ = CloneOf(scores);
}

RChaidSettingsImp::RChaidSettingsImp(CoreSettings const& core) : ChaidSettings(core) {}

RChaidSettingsImp::RChaidSettingsImp(RChaidSettingsImp const& other) = default;

RChaidSettingsImp& RChaidSettingsImp::operator=(RChaidSettingsImp const& other) {
  CopyFrom(other);
  return *this;
}

RChaidSettingsImp::~RChaidSettingsImp() = default;

AlgorithmType RChaidSettingsImp::GetType() const { return AlgRChaid; }

AlgSettings* RChaidSettingsImp::Clone() const { return new RChaidSettingsImp(*this); }

}  // namespace tree
