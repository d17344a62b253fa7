#include "property/models/settings_model.h"

#include <algorithm>
#include <utility>

#include "property/models/agree.h"

namespace tree::testing {

namespace {

/// The part that `get` finds in settings that can be changed and in those that cannot: the same.
template <class Settings, class Get>
auto* Part(Settings& settings, Get get) {
  auto const* const part = get(std::as_const(settings));
  Agree("getter of a part", static_cast<decltype(part)>(get(settings)), part);
  return part;
}

template <class Imp, class Interface>
Imp const& As(Interface const* part) {
  if (part == nullptr) throw Mismatch("a part is missing");
  return dynamic_cast<Imp const&>(*part);
}

template <class Settings>
void CheckCosts(Settings& settings, CostModel const& model) {
  auto const* const part = Part(settings, [](auto& from) { return from.GetCost(); });
  Check(As<CostImp>(part), model);
}

template <class Settings>
void CheckPriors(Settings& settings, PriorsModel const& model) {
  auto const* const part = Part(settings, [](auto& from) { return from.GetPriors(); });
  Check(As<PriorsImp>(part), model);
}

template <class Settings>
void CheckPruning(Settings& settings, SettingsModel const& model) {
  auto const* const part = Part(settings, [](auto& from) { return from.GetPruningSpec(); });
  Check(As<PruningSpec>(part), model.pruning);
  Agree("GetMaxNumSurrogates", settings.GetMaxNumSurrogates(), model.maxNumSurrogates);
}

void CheckShared(AlgSettings& settings, SettingsModel const& model) {
  Agree("GetType", static_cast<int>(settings.GetType()), static_cast<int>(model.type));
  Agree("GetMaxNumCompetitors", settings.GetMaxNumCompetitors(), model.maxNumCompetitors);
  Agree("GetMaxNominalPredCategories", settings.GetMaxNominalPredCategories(),
        model.maxNominalPredCategories);
  CoreSettings const* const core = settings.GetCoreSettings();
  auto const* const validation =
      Part(settings, [](auto& from) { return from.GetValidationSpec(); });
  auto const* const stopRule = Part(settings, [](auto& from) { return from.GetStopRule(); });
  Agree("GetCoreSettings", core != nullptr, model.core.has_value());
  Agree("GetValidationSpec", validation != nullptr, model.validation.has_value());
  Agree("GetStopRule", stopRule != nullptr, model.stopRule.has_value());
  if (core != nullptr) Check(*core, *model.core);
  if (validation != nullptr) Check(*validation, *model.validation);
  if (stopRule != nullptr) Check(*stopRule, *model.stopRule);
}

void CheckChaid(ChaidSettings const& settings, SettingsModel::Chaid const& model) {
  Agree("GetAlphaOfSplitNode", settings.GetAlphaOfSplitNode(), model.alphaOfSplitNode);
  Agree("GetAlphaOfMerge", settings.GetAlphaOfMerge(), model.alphaOfMerge);
  Agree("GetAlphaOfMergeSplit", settings.GetAlphaOfMergeSplit(), model.alphaOfMergeSplit);
  Agree("GetSplitMergeMethod", static_cast<int>(settings.GetSplitMergeMethod()),
        model.splitMergeMethod);
  Agree("GetAllowSplitMerge", settings.GetAllowSplitMerge(), model.allowSplitMerge);
  Agree("GetUseBonferroniAdj", settings.GetUseBonferroniAdj(), model.useBonferroniAdj);
}

void CheckCChaid(CChaidSettingsImp& settings, SettingsModel::Own const& model) {
  Agree("GetConvergenceEpsilon", settings.GetConvergenceEpsilon(), model.convergenceEpsilon);
  Agree("GetMaxNumIterations", settings.GetMaxNumIterations(), model.maxNumIterations);
  Agree("GetChiSquareMethod", static_cast<int>(settings.GetChiSquareMethod()),
        model.chiSquareMethod);
  CheckCosts(settings, model.costs);
  CheckPriors(settings, model.priors);
  auto const* const scores = Part(settings, [](auto& from) { return from.GetScores(); });
  Check(As<ScoresImp>(scores), model.scores);
}

void CheckCCart(CCartSettingsImp& settings, SettingsModel::Own const& model) {
  Agree("GetSplitCriteria", static_cast<int>(settings.GetSplitCriteria()), model.splitCriteria);
  CheckCosts(settings, model.costs);
  CheckPriors(settings, model.priors);
}

void CheckQuest(QuestSettingsImp& settings, SettingsModel const& model) {
  CheckPruning(settings, model);
  Agree("GetAlphaOfVariableSelection", settings.GetAlphaOfVariableSelection(),
        model.own.alphaOfVariableSelection);
  Agree("GetMaxNumNomCatsSurr", settings.GetMaxNumNomCatsSurr(), model.own.maxNumNomCatsSurr);
  for (int const difference : {-2, -1, 0, 1}) {
    int const count = model.NumPredictors() + difference;
    Agree("ValidateNumSurrogates", settings.ValidateNumSurrogates(count),
          model.AcceptsSurrogates(count));
  }
  CheckCosts(settings, model.own.costs);
  CheckPriors(settings, model.own.priors);
}

}  // namespace

SettingsModel::SettingsModel(AlgorithmType algorithm, CoreModel const& coreSettings)
    : type(algorithm),
      core(coreSettings),
      validation(ValidationModel()),
      stopRule(StopRuleModel()) {
  stopRule->maxTreeDepth = IsChaid() ? 3 : 5;
  ClampCompetitors();
  if (IsCart()) ClampSurrogates();
  if (type == AlgQuest && !AcceptsSurrogates(maxNumSurrogates)) {
    maxNumSurrogates = NumPredictors() - 1;
  }
  if (type == AlgCChaid) own.priors.type = PriorTypeAlternate;
}

void SettingsModel::ClampCompetitors() {
  maxNumCompetitors = std::max(1, std::min(maxNumCompetitors, NumPredictors()));
}

void SettingsModel::ClampSurrogates() {
  maxNumSurrogates = std::max(0, std::min(maxNumSurrogates, NumPredictors() - 1));
}

bool SettingsModel::AcceptsSurrogates(int count) const {
  return count >= 0 && count < NumPredictors() - 1;
}

void SettingsModel::Init(int competitors, int categories, CoreModel const& newCore,
                         ValidationModel const& newValidation, StopRuleModel const& newStopRule) {
  int const newLevel = newCore.target.level;
  int const oldLevel = core ? core->target.level : newLevel;
  bool const wasContinuous = oldLevel == global::MeasurementContinuous;
  bool const isContinuous = newLevel == global::MeasurementContinuous;
  maxNumCompetitors = competitors;
  maxNominalPredCategories = categories;
  core = newCore;
  core->target.level = wasContinuous == isContinuous ? newLevel : oldLevel;
  validation = newValidation;
  stopRule = newStopRule;
  ClampCompetitors();
}

void SettingsModel::Clear() {
  core.reset();
  validation.reset();
  stopRule.reset();
}

void SettingsModel::CopyFrom(SettingsModel const& other) {
  Init(other.maxNumCompetitors, other.maxNominalPredCategories, other.core.value_or(CoreModel()),
       other.validation.value_or(ValidationModel()), other.stopRule.value_or(StopRuleModel()));
  if (IsChaid() && other.IsChaid()) chaid = other.chaid;
  if ((IsCart() && other.IsCart()) || (type == AlgQuest && other.type == AlgQuest)) {
    pruning = other.pruning;
    maxNumSurrogates = other.maxNumSurrogates;
    if (IsCart()) ClampSurrogates();
  }
  if (type == other.type) own = other.own;
}

SettingsModel SettingsModel::Copy() const {
  SettingsModel copy(type, CoreModel());
  copy.Clear();
  copy.CopyFrom(*this);
  return copy;
}

void Check(AlgSettings& settings, SettingsModel const& model) {
  CheckShared(settings, model);
  if (model.IsChaid()) CheckChaid(dynamic_cast<ChaidSettings&>(settings), model.chaid);
  if (model.IsCart()) CheckPruning(dynamic_cast<CartSettings&>(settings), model);
  if (model.type == AlgCChaid) CheckCChaid(dynamic_cast<CChaidSettingsImp&>(settings), model.own);
  if (model.type == AlgCCart) CheckCCart(dynamic_cast<CCartSettingsImp&>(settings), model.own);
  if (model.type == AlgQuest) CheckQuest(dynamic_cast<QuestSettingsImp&>(settings), model);
}

}  // namespace tree::testing
