#ifndef TREE_TESTS_TESTING_SETTINGS_BUILDER_H_
#define TREE_TESTS_TESTING_SETTINGS_BUILDER_H_

#include <map>
#include <memory>
#include <set>
#include <string>

#include "tree/misclassification.h"
#include "tree/settings.h"
#include "tree/values.h"

// Settings with every field filled, and all that can be read of settings as a table of named
// fields, so that an operation that forgets a field, or touches one too many, is found out.

namespace tree::testing {

inline constexpr AlgorithmType kAllAlgorithms[] = {AlgRCart, AlgCCart, AlgRChaid, AlgCChaid,
                                                   AlgQuest};

/// Default predictors in the given number, and a default target but for its level.
inline CoreSettingsImp CoreOf(int numPredictors,
                              global::MeasurementLevel target = global::MeasurementNominal) {
  CoreSettingsImp core;
  for (int index = 0; index < numPredictors; ++index) core.AddPredictor();
  core.GetTarget()->SetMeasurementLevel(target);
  return core;
}

/// New settings of the kind, from `core`.
inline std::unique_ptr<AlgSettings> SettingsOf(AlgorithmType type, CoreSettings const& core) {
  switch (type) {
    case AlgRCart:
      return std::make_unique<RCartSettingsImp>(core);
    case AlgCCart:
      return std::make_unique<CCartSettingsImp>(core);
    case AlgRChaid:
      return std::make_unique<RChaidSettingsImp>(core);
    case AlgCChaid:
      return std::make_unique<CChaidSettingsImp>(core);
    case AlgQuest:
      return std::make_unique<QuestSettingsImp>(core);
  }
  return nullptr;
}

inline bool IsRegression(AlgorithmType type) { return type == AlgRCart || type == AlgRChaid; }

/// Two variants, 1 and 2, that agree in no field.
inline void Fill(StopRule& rule, int variant) {
  rule.SetMinImprovement(0.25 * variant);
  rule.SetMinNodeSize(10 + variant);
  rule.SetMinNodePercentSize(20.0 + variant);
  rule.SetMinChildSize(30 + variant);
  rule.SetMinChildPercentSize(40.0 + variant);
  rule.SetMaxTreeDepth(50 + variant);
}

inline void Fill(ValidationSpec& validation, int variant) {
  validation.Set(variant == 1 ? ValidationSplitSample : ValidationCrossValidation);
  validation.SetNumCVFolds(60 + variant);
  validation.SetRandomSeed(70 + variant);
}

inline void Fill(PruningSpec& pruning, int variant) {
  pruning.SetPickMinRiskTree(variant == 1);
  pruning.SetSERuleFactor(80.0 + variant);
}

inline void Fill(Cost& cost, int variant) { cost.Set(0, variant, 90.0 + variant); }

inline void Fill(Priors& priors, int variant) {
  priors.Set(0, 0.25 * variant);
  priors.AlterValues(variant == 1);
}

inline void Fill(Scores& scores, int variant) { scores.Set(variant, 100.0 + variant); }

inline void Fill(VariableSettings& variable, int variant, int position) {
  variable.SetMissingValue(-100.0 * variant - position);
  variable.SetNumValues(10 * variant + position);
  variable.SetValueMergeFlag(variant == 1);
}

/// Nine predictors in variant 1, ten in variant 2.
inline CoreSettingsImp FilledCore(int variant, global::MeasurementLevel target) {
  CoreSettingsImp core = CoreOf(8 + variant, target);
  Fill(*core.GetTarget(), variant, 0);
  for (int index = 0; index < core.GetNumPredictors(); ++index) {
    Fill(*core.GetPredictor(index), variant, index + 1);
    core.GetPredictor(index)->SetMeasurementLevel(static_cast<global::MeasurementLevel>(variant));
  }
  core.SetHasFreqWeight(variant == 1);
  core.SetHasCaseWeight(variant == 2);
  return core;
}

inline void FillChaid(ChaidSettings& settings, int variant) {
  settings.SetAlphaOfSplitNode(0.01 * variant);
  settings.SetAlphaOfMerge(0.03 * variant);
  settings.SetAlphaOfMergeSplit(0.05 * variant);
  settings.SetSplitMergeMethod(variant == 1 ? SplitMergeMethod0 : SplitMergeMethod1);
  settings.SetAllowSplitMerge(variant == 1);
  settings.SetUseBonferroniAdj(variant == 2);
}

inline void FillCChaid(CChaidSettingsImp& settings, int variant) {
  settings.SetConvergenceEpsilon(0.125 * variant);
  settings.SetMaxNumIterations(200 + variant);
  settings.SetChiSquareMethod(static_cast<ChiSquareMethod>(variant));
  Fill(*settings.GetCost(), variant);
  Fill(*settings.GetPriors(), variant);
  Fill(*settings.GetScores(), variant);
}

inline void FillCart(CartSettings& settings, int variant) {
  settings.SetMaxNumSurrogates(1 + variant);
  Fill(*settings.GetPruningSpec(), variant);
}

inline void FillCCart(CCartSettings& settings, int variant) {
  Fill(*settings.GetPriors(), variant);
  Fill(*settings.GetCost(), variant);
  settings.SetSplitCriteria(static_cast<CartSplitCriteria>(variant));
}

inline void FillQuest(QuestSettings& settings, int variant) {
  settings.SetAlphaOfVariableSelection(0.07 * variant);
  settings.SetMaxNumSurrogates(3 + variant);
  settings.SetMaxNumNomCatsSurr(300 + variant);
  Fill(*settings.GetPruningSpec(), variant);
  Fill(*settings.GetPriors(), variant);
  Fill(*settings.GetCost(), variant);
}

/// Settings of the kind; variants 1 and 2 differ in every field but the level of the target, which
/// is continuous for the two regressions and nominal for the others.
inline std::unique_ptr<AlgSettings> FilledSettings(AlgorithmType type, int variant) {
  auto const level =
      IsRegression(type) ? global::MeasurementContinuous : global::MeasurementNominal;
  std::unique_ptr<AlgSettings> settings = SettingsOf(type, FilledCore(variant, level));
  settings->SetMaxNumCompetitors(6 + variant);
  settings->SetMaxNominalPredCategories(400 + variant);
  Fill(*settings->GetValidationSpec(), variant);
  Fill(*settings->GetStopRule(), variant);
  if (auto* const chaid = dynamic_cast<ChaidSettings*>(settings.get())) FillChaid(*chaid, variant);
  if (auto* const chaid = dynamic_cast<CChaidSettingsImp*>(settings.get())) {
    FillCChaid(*chaid, variant);
  }
  if (auto* const cart = dynamic_cast<CartSettings*>(settings.get())) FillCart(*cart, variant);
  if (auto* const cart = dynamic_cast<CCartSettings*>(settings.get())) FillCCart(*cart, variant);
  if (auto* const quest = dynamic_cast<QuestSettings*>(settings.get())) FillQuest(*quest, variant);
  return settings;
}

/// Fields by name, numbers and flags alike. The name begins with the group, as "chaid: ".
using Fields = std::map<std::string, double>;

inline void Describe(std::string const& name, VariableSettings const& variable, Fields& fields) {
  fields[name + " level"] = variable.GetMeasurementLevel();
  fields[name + " missing value"] = variable.GetMissingValue();
  fields[name + " values"] = variable.GetNumValues();
  fields[name + " merge flag"] = variable.GetValueMergeFlag();
}

inline void Describe(std::string const& name, StopRule const& rule, Fields& fields) {
  fields[name + " improvement"] = rule.GetMinImprovement();
  fields[name + " node size"] = rule.GetMinNodeSize();
  fields[name + " node percent"] = rule.GetMinNodePercentSize();
  fields[name + " child size"] = rule.GetMinChildSize();
  fields[name + " child percent"] = rule.GetMinChildPercentSize();
  fields[name + " depth"] = rule.GetMaxTreeDepth();
}

inline void Describe(std::string const& name, ValidationSpec const& validation, Fields& fields) {
  fields[name + " type"] = validation.GetType();
  fields[name + " folds"] = validation.GetNumCVFolds();
  fields[name + " seed"] = static_cast<double>(validation.GetRandomSeed());
}

inline void Describe(std::string const& name, PruningSpec const& pruning, Fields& fields) {
  fields[name + " minimum risk"] = pruning.GetPickMinRiskTree();
  fields[name + " factor"] = pruning.GetSERuleFactor();
}

inline void Describe(std::string const& name, Cost const& cost, Fields& fields) {
  fields[name + " type"] = cost.GetType();
  for (int row = 0; row < cost.GetNumClasses(); ++row) {
    for (int column = 0; column < cost.GetNumClasses(); ++column) {
      fields[name + " " + std::to_string(row) + "," + std::to_string(column)] =
          cost.Get(row, column);
    }
  }
}

inline void Describe(std::string const& name, Priors const& priors, Fields& fields) {
  fields[name + " type"] = priors.GetType();
  fields[name + " alter flag"] = priors.HasAlteredValues();
  for (int index = 0; index < priors.GetNumClasses(); ++index) {
    fields[name + " " + std::to_string(index)] = priors.Get(index);
    fields[name + " altered " + std::to_string(index)] = priors.GetAltered(index);
  }
}

inline void Describe(std::string const& name, Scores const& scores, Fields& fields) {
  fields[name + " type"] = scores.GetType();
  for (int index = 0; index < scores.GetNumClasses(); ++index) {
    fields[name + " " + std::to_string(index)] = scores.Get(index);
  }
}

inline void Describe(std::string const& name, CoreSettings const& core, Fields& fields) {
  Describe(name + " target", *core.GetTarget(), fields);
  for (int index = 0; index < core.GetNumPredictors(); ++index) {
    Describe(name + " predictor " + std::to_string(index), *core.GetPredictor(index), fields);
  }
  fields[name + " frequency weight"] = core.HasFreqWeight();
  fields[name + " case weight"] = core.HasCaseWeight();
}

/// All that can be read of settings, in the groups "shared: ", "chaid: ", "categorical chaid: ",
/// "cart: ", "categorical cart: " and "quest: ". A part that is missing leaves its fields out.
inline Fields Describe(AlgSettings const& settings) {
  Fields fields;
  fields["shared: competitors"] = settings.GetMaxNumCompetitors();
  fields["shared: categories"] = settings.GetMaxNominalPredCategories();
  if (auto const* const core = settings.GetCoreSettings()) Describe("shared: core", *core, fields);
  if (auto const* const validation = settings.GetValidationSpec()) {
    Describe("shared: validation", *validation, fields);
  }
  if (auto const* const rule = settings.GetStopRule()) Describe("shared: stop", *rule, fields);
  if (auto const* const chaid = dynamic_cast<ChaidSettings const*>(&settings)) {
    fields["chaid: split node"] = chaid->GetAlphaOfSplitNode();
    fields["chaid: merge"] = chaid->GetAlphaOfMerge();
    fields["chaid: merge split"] = chaid->GetAlphaOfMergeSplit();
    fields["chaid: method"] = chaid->GetSplitMergeMethod();
    fields["chaid: allow"] = chaid->GetAllowSplitMerge();
    fields["chaid: bonferroni"] = chaid->GetUseBonferroniAdj();
  }
  if (auto const* const chaid = dynamic_cast<CChaidSettingsImp const*>(&settings)) {
    fields["categorical chaid: epsilon"] = chaid->GetConvergenceEpsilon();
    fields["categorical chaid: iterations"] = chaid->GetMaxNumIterations();
    fields["categorical chaid: method"] = chaid->GetChiSquareMethod();
    Describe("categorical chaid: cost", *chaid->GetCost(), fields);
    Describe("categorical chaid: priors", *chaid->GetPriors(), fields);
    Describe("categorical chaid: scores", *chaid->GetScores(), fields);
  }
  if (auto const* const cart = dynamic_cast<CartSettings const*>(&settings)) {
    fields["cart: surrogates"] = cart->GetMaxNumSurrogates();
    Describe("cart: pruning", *cart->GetPruningSpec(), fields);
  }
  if (auto const* const cart = dynamic_cast<CCartSettings const*>(&settings)) {
    fields["categorical cart: criterion"] = cart->GetSplitCriteria();
    Describe("categorical cart: priors", *cart->GetPriors(), fields);
    Describe("categorical cart: cost", *cart->GetCost(), fields);
  }
  if (auto const* const quest = dynamic_cast<QuestSettings const*>(&settings)) {
    fields["quest: alpha"] = quest->GetAlphaOfVariableSelection();
    fields["quest: surrogates"] = quest->GetMaxNumSurrogates();
    fields["quest: categories"] = quest->GetMaxNumNomCatsSurr();
    Describe("quest: pruning", *quest->GetPruningSpec(), fields);
    Describe("quest: priors", *quest->GetPriors(), fields);
    Describe("quest: cost", *quest->GetCost(), fields);
  }
  return fields;
}

/// The fields of one group, as "chaid: ".
inline Fields GroupOf(Fields const& fields, std::string const& group) {
  Fields found;
  for (auto const& [name, value] : fields) {
    if (name.compare(0, group.size(), group) == 0) found[name] = value;
  }
  return found;
}

/// The addresses of all parts that settings own. Two settings are independent when they have none
/// in common.
inline std::set<void const*> OwnedParts(AlgSettings const& settings) {
  std::set<void const*> parts{settings.GetCoreSettings(), settings.GetValidationSpec(),
                              settings.GetStopRule()};
  if (auto const* const core = settings.GetCoreSettings()) {
    parts.insert(core->GetTarget());
    for (int index = 0; index < core->GetNumPredictors(); ++index) {
      parts.insert(core->GetPredictor(index));
    }
  }
  if (auto const* const chaid = dynamic_cast<CChaidSettingsImp const*>(&settings)) {
    parts.insert({chaid->GetCost(), chaid->GetPriors(), chaid->GetScores()});
  }
  if (auto const* const cart = dynamic_cast<CartSettings const*>(&settings)) {
    parts.insert(cart->GetPruningSpec());
  }
  if (auto const* const cart = dynamic_cast<CCartSettings const*>(&settings)) {
    parts.insert({cart->GetPriors(), cart->GetCost()});
  }
  if (auto const* const quest = dynamic_cast<QuestSettings const*>(&settings)) {
    parts.insert({quest->GetPruningSpec(), quest->GetPriors(), quest->GetCost()});
  }
  parts.erase(nullptr);
  return parts;
}

/// Whether the two settings own no part in common.
inline bool AreIndependent(AlgSettings const& a, AlgSettings const& b) {
  for (void const* const part : OwnedParts(a)) {
    if (OwnedParts(b).count(part) != 0) return false;
  }
  return true;
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_SETTINGS_BUILDER_H_
