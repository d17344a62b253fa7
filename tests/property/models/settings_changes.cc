#include "property/models/settings_changes.h"

#include <optional>
#include <type_traits>

#include "property/models/agree.h"
#include "testing/settings_builder.h"

namespace tree::testing {

namespace {

/// A part to initialise settings by, and what they then hold.
template <class Interface, class Model>
struct Offer {
  Interface const* part;
  Model model;
};

/// The settings' own part or the caller's.
template <class Interface, class Imp, class Model>
Offer<Interface, Model> OwnOrCallers(Interface const* own, Model const& ownModel,
                                     Part<Imp, Model> const& callers, Choices& choices) {
  if (choices.Flag()) return {own, ownModel};
  return {&callers.object, callers.model};
}

/// None, the settings' own part, which may be missing, or the caller's.
template <class Interface, class Imp, class Model>
Offer<Interface, Model> AnyPart(Interface const* own,
                                std::optional<std::type_identity_t<Model>> const& ownModel,
                                Part<Imp, Model> const& callers, Choices& choices) {
  if (choices.Below(3) == 1) return {nullptr, Model()};
  return OwnOrCallers(own, ownModel.value_or(Model()), callers, choices);
}

/// Changes one of the settings' own parts of a class.
template <class Imp, class Interface, class Model>
void ChangePart(Interface* part, Model& model, Choices& choices) {
  Change(dynamic_cast<Imp&>(*part), model, choices);
}

/// What settings of CART and QUEST share, of those that are classifications.
template <class Settings>
void ChangePriorsOrCosts(Settings& settings, SettingsModel& model, Choices& choices) {
  if (choices.Flag()) {
    ChangePart<PriorsImp>(settings.GetPriors(), model.own.priors, choices);
  } else {
    ChangePart<CostImp>(settings.GetCost(), model.own.costs, choices);
  }
}

void ChangeChaid(ChaidSettings& settings, SettingsModel::Chaid& model, Choices& choices) {
  double const alpha = choices.Value();
  switch (choices.Below(7)) {
    case 0:
      settings.SetAlphaOfSplitNode(alpha);
      model.alphaOfSplitNode = alpha;
      break;
    case 1:
      settings.SetAlphaOfMerge(alpha);
      model.alphaOfMerge = alpha;
      model.alphaOfMergeSplit = alpha / 2.0;
      break;
    case 2:
      settings.SetAlphaOfMergeSplit(alpha);
      model.alphaOfMergeSplit = alpha;
      break;
    case 3: {
      int const method = choices.Integer();
      settings.SetSplitMergeMethod(static_cast<SplitMergeMethod>(method));
      if (method == 0 || method == 1) model.splitMergeMethod = method;
      break;
    }
    case 4:
      model.allowSplitMerge = choices.Flag();
      settings.SetAllowSplitMerge(model.allowSplitMerge);
      break;
    case 5:
      model.useBonferroniAdj = choices.Flag();
      settings.SetUseBonferroniAdj(model.useBonferroniAdj);
      break;
    default:
      model = {alpha,          choices.Value(), choices.Value(), choices.Integer(),
               choices.Flag(), choices.Flag()};
      settings.Init(model.alphaOfSplitNode, model.alphaOfMerge, model.alphaOfMergeSplit,
                    static_cast<SplitMergeMethod>(model.splitMergeMethod), model.allowSplitMerge,
                    model.useBonferroniAdj);
      break;
  }
}

void ChangeCChaid(CChaidSettingsImp& settings, SettingsModel& model, CallersParts const& parts,
                  Choices& choices) {
  SettingsModel::Own& own = model.own;
  int const operation = choices.Below(8);
  double const epsilon = choices.Value();
  int const number = choices.Integer();
  auto const method = static_cast<ChiSquareMethod>(number);
  switch (operation) {
    case 0:
      settings.SetConvergenceEpsilon(epsilon);
      own.convergenceEpsilon = epsilon;
      break;
    case 1:
      settings.SetMaxNumIterations(number);
      own.maxNumIterations = number;
      break;
    case 2:
      settings.SetChiSquareMethod(method);
      own.chiSquareMethod = number;
      break;
    case 3:
      ChangePart<ScoresImp>(settings.GetScores(), own.scores, choices);
      break;
    case 4:
      ChangePriorsOrCosts(settings, model, choices);
      break;
    case 5: {
      auto const costs = OwnOrCallers(settings.GetCost(), own.costs, parts.costs, choices);
      auto const priors = OwnOrCallers(settings.GetPriors(), own.priors, parts.priors, choices);
      auto const scores = OwnOrCallers(settings.GetScores(), own.scores, parts.scores, choices);
      own.convergenceEpsilon = epsilon;
      own.chiSquareMethod = number;
      own.maxNumIterations = choices.Integer();
      bool const keepsCosts = costs.part == settings.GetCost();
      bool const keepsPriors = priors.part == settings.GetPriors();
      bool const keepsScores = scores.part == settings.GetScores();
      settings.Init(epsilon, method, own.maxNumIterations, *costs.part, *priors.part, *scores.part);
      // What is held already stays where it is.
      Agree("Init", costs.part == settings.GetCost(), keepsCosts);
      Agree("Init", priors.part == settings.GetPriors(), keepsPriors);
      Agree("Init", scores.part == settings.GetScores(), keepsScores);
      own.costs = costs.model;
      own.priors = priors.model;
      own.scores = scores.model;
      break;
    }
    default:
      ChangeChaid(settings, model.chaid, choices);
      break;
  }
}

void ChangeCart(CartSettings& settings, SettingsModel& model, CallersParts const& parts,
                Choices& choices) {
  int const number = choices.Integer();
  switch (choices.Below(4)) {
    case 0:
      settings.SetMaxNumSurrogates(number);
      model.maxNumSurrogates = number;
      model.ClampSurrogates();
      break;
    case 1:
      settings.ValidateNumSurrogates();
      model.ClampSurrogates();
      break;
    case 2:
      ChangePart<PruningSpecImp>(settings.GetPruningSpec(), model.pruning, choices);
      break;
    default: {
      auto const pruning =
          AnyPart(settings.GetPruningSpec(), model.pruning, parts.pruning, choices);
      settings.Init(pruning.part, number);
      model.pruning = pruning.model;
      model.maxNumSurrogates = number;
      model.ClampSurrogates();
      break;
    }
  }
}

void ChangeCCart(CCartSettingsImp& settings, SettingsModel& model, CallersParts const& parts,
                 Choices& choices) {
  SettingsModel::Own& own = model.own;
  int const criteria = choices.Integer();
  switch (choices.Below(5)) {
    case 0:
      settings.SetSplitCriteria(static_cast<CartSplitCriteria>(criteria));
      own.splitCriteria = criteria;
      break;
    case 1:
      ChangePriorsOrCosts(settings, model, choices);
      break;
    case 2: {
      auto const priors = OwnOrCallers(settings.GetPriors(), own.priors, parts.priors, choices);
      auto const costs = OwnOrCallers(settings.GetCost(), own.costs, parts.costs, choices);
      settings.Init(*priors.part, *costs.part, static_cast<CartSplitCriteria>(criteria));
      own.priors = priors.model;
      own.costs = costs.model;
      own.splitCriteria = criteria;
      break;
    }
    default:
      ChangeCart(settings, model, parts, choices);
      break;
  }
}

void ChangeQuest(QuestSettingsImp& settings, SettingsModel& model, CallersParts const& parts,
                 Choices& choices) {
  SettingsModel::Own& own = model.own;
  int const operation = choices.Below(7);
  double const alpha = choices.Value();
  int const number = choices.Integer();
  switch (operation) {
    case 0:
      settings.SetAlphaOfVariableSelection(alpha);
      own.alphaOfVariableSelection = alpha;
      break;
    case 1:
    case 2:
      settings.SetMaxNumSurrogates(number);
      if (model.AcceptsSurrogates(number)) model.maxNumSurrogates = number;
      break;
    case 3:
      settings.SetMaxNumNomCatsSurr(number);
      if (number > 0) own.maxNumNomCatsSurr = number;
      break;
    case 4:
      ChangePart<PruningSpecImp>(settings.GetPruningSpec(), model.pruning, choices);
      break;
    case 5:
      ChangePriorsOrCosts(settings, model, choices);
      break;
    default: {
      auto const pruning =
          AnyPart(settings.GetPruningSpec(), model.pruning, parts.pruning, choices);
      auto const priors = AnyPart(settings.GetPriors(), own.priors, parts.priors, choices);
      auto const costs = AnyPart(settings.GetCost(), own.costs, parts.costs, choices);
      own.alphaOfVariableSelection = alpha;
      model.maxNumSurrogates = number;
      own.maxNumNomCatsSurr = choices.Integer();
      settings.Init(alpha, number, own.maxNumNomCatsSurr, pruning.part, priors.part, costs.part);
      model.pruning = pruning.model;
      own.priors = priors.model;
      own.costs = costs.model;
      break;
    }
  }
}

}  // namespace

void CallersParts::Change(Choices& choices) {
  switch (choices.Below(8)) {
    case 0:
      return testing::Change(validation.object, validation.model, choices);
    case 1:
      return testing::Change(stopRule.object, stopRule.model, choices);
    case 2:
      return testing::Change(pruning.object, pruning.model, choices);
    case 3:
      return testing::Change(costs.object, costs.model, choices);
    case 4:
      return testing::Change(priors.object, priors.model, choices);
    case 5:
      return testing::Change(scores.object, scores.model, choices);
    default:
      return testing::Change(core.object, core.model, choices);
  }
}
void CallersParts::Check() const {
  testing::Check(core.object, core.model);
  testing::Check(validation.object, validation.model);
  testing::Check(stopRule.object, stopRule.model);
  testing::Check(pruning.object, pruning.model);
  testing::Check(costs.object, costs.model);
  testing::Check(priors.object, priors.model);
  testing::Check(scores.object, scores.model);
}

SettingsPair::SettingsPair(AlgorithmType type, Part<CoreSettingsImp, CoreModel> const& core)
    : settings(testing::SettingsOf(type, core.object)), model(type, core.model) {}

void ChangeShared(SettingsPair& pair, CallersParts const& parts, Choices& choices) {
  auto& [settings, model] = pair;
  int const operation = choices.Below(8);
  int const number = choices.Integer();
  switch (operation) {
    case 0:
    case 1:
      settings->SetMaxNumCompetitors(number);
      if (number > 0) model.maxNumCompetitors = number;
      model.ClampCompetitors();
      break;
    case 2:
      settings->SetMaxNominalPredCategories(number);
      if (number > 0) model.maxNominalPredCategories = number;
      break;
    case 3:
      settings->ValidateNumCompetitors();
      model.ClampCompetitors();
      break;
    case 4:
      if (!model.validation) break;
      ChangePart<ValidationSpecImp>(settings->GetValidationSpec(), *model.validation, choices);
      break;
    case 5:
      if (!model.stopRule) break;
      ChangePart<StopRuleImp>(settings->GetStopRule(), *model.stopRule, choices);
      break;
    default: {
      int const categories = choices.Integer();
      auto const core = AnyPart(settings->GetCoreSettings(), model.core, parts.core, choices);
      auto const validation =
          AnyPart(settings->GetValidationSpec(), model.validation, parts.validation, choices);
      auto const stopRule =
          AnyPart(settings->GetStopRule(), model.stopRule, parts.stopRule, choices);
      settings->Init(number, categories, core.part, validation.part, stopRule.part);
      model.Init(number, categories, core.model, validation.model, stopRule.model);
      break;
    }
  }
}

void ChangeOwn(SettingsPair& pair, CallersParts const& parts, Choices& choices) {
  auto& [settings, model] = pair;
  switch (model.type) {
    case AlgRCart:
      return ChangeCart(dynamic_cast<CartSettings&>(*settings), model, parts, choices);
    case AlgCCart:
      return ChangeCCart(dynamic_cast<CCartSettingsImp&>(*settings), model, parts, choices);
    case AlgRChaid:
      return ChangeChaid(dynamic_cast<ChaidSettings&>(*settings), model.chaid, choices);
    case AlgCChaid:
      return ChangeCChaid(dynamic_cast<CChaidSettingsImp&>(*settings), model, parts, choices);
    case AlgQuest:
      return ChangeQuest(dynamic_cast<QuestSettingsImp&>(*settings), model, parts, choices);
  }
}

}  // namespace tree::testing
