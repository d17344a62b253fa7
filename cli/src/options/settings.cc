#include "options/settings.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "options/refusal.h"

namespace tree::cli {
namespace {

/// The classes of a target.
class Classes {
 public:
  explicit Classes(grow::ColumnDescription const& target) : target_(target) {}

  int GetCount() const { return static_cast<int>(target_.labels.size()); }
  std::string const& GetLabel(int index) const {
    return target_.labels[static_cast<std::size_t>(index)];
  }
  int IndexOf(char const* option, std::string const& label) const {
    auto const found = std::find(target_.labels.begin(), target_.labels.end(), label);
    if (found == target_.labels.end()) {
      Refuse(option, Quoted(label) + " is no class of " + Quoted(target_.name));
    }
    return static_cast<int>(found - target_.labels.begin());
  }

 private:
  grow::ColumnDescription const& target_;
};

// --- the parts of settings ---

void Apply(StopOptions const& options, StopRule& rule) {
  if (options.maxDepth) rule.SetMaxTreeDepth(*options.maxDepth);
  if (options.minNodeSize) rule.SetMinNodeSize(*options.minNodeSize);
  if (options.minNodePercent) rule.SetMinNodePercentSize(*options.minNodePercent);
  if (options.minChildSize) rule.SetMinChildSize(*options.minChildSize);
  if (options.minChildPercent) rule.SetMinChildPercentSize(*options.minChildPercent);
  if (options.minImprovement) rule.SetMinImprovement(*options.minImprovement);
}

void Apply(ValidationOptions const& options, ValidationSpec& validation) {
  // New settings validate nothing, and cannot be told to.
  if (options.type.value_or(ValidationNone) != ValidationNone) validation.Set(*options.type);
  if (options.numFolds) validation.SetNumCVFolds(*options.numFolds);
  if (options.seed) validation.SetRandomSeed(*options.seed);
}

void Apply(PruningOptions const& options, PruningSpec& pruning) {
  if (options.seRuleFactor) pruning.SetSERuleFactor(*options.seRuleFactor);
  pruning.SetPickMinRiskTree(options.pickMinRiskTree);
}

void ApplyPriors(ClassOptions const& options, Classes const& classes, Priors& priors) {
  constexpr char kOption[] = "--priors";
  priors.AlterValues(options.alteredPriors);
  if (!options.priorType.has_value()) return;
  if (options.priorType != PriorTypeCustom) {
    priors.Set(*options.priorType);
    return;
  }
  std::vector<bool> isGiven(static_cast<std::size_t>(classes.GetCount()));
  double sum = 0.0;
  for (auto const& [label, prior] : options.priors) {
    int const index = classes.IndexOf(kOption, label);
    if (isGiven[static_cast<std::size_t>(index)])
      Refuse(kOption, Quoted(label) + " is named twice");
    isGiven[static_cast<std::size_t>(index)] = true;
    sum += prior;
  }
  auto const missing = std::find(isGiven.begin(), isGiven.end(), false);
  if (missing != isGiven.end()) {
    Refuse(kOption, "class " +
                        Quoted(classes.GetLabel(static_cast<int>(missing - isGiven.begin()))) +
                        " is given none");
  }
  if (!(sum > 0.0)) Refuse(kOption, "they are all 0");
  if (!std::isfinite(sum)) Refuse(kOption, "their sum is more than a number can be");
  for (auto const& [label, prior] : options.priors) {
    priors.Set(classes.IndexOf(kOption, label), prior / sum);
  }
}

void ApplyCosts(ClassOptions const& options, Classes const& classes, Cost& costs) {
  constexpr char kOption[] = "--cost";
  if (options.costs.empty()) return;
  int const last = classes.GetCount() - 1;
  costs.Set(last, last, 0.0);  // makes the matrix as large as there are classes
  for (MistakeCost const& mistake : options.costs) {
    int const predicted = classes.IndexOf(kOption, mistake.predicted);
    int const observed = classes.IndexOf(kOption, mistake.observed);
    if (predicted == observed) {
      Refuse(kOption, Quoted(mistake.predicted) + " is taken for itself, which is no mistake");
    }
    costs.Set(predicted, observed, mistake.cost);
  }
}

void ApplyShared(Options const& options, AlgSettings& settings) {
  Apply(options.stop, *settings.GetStopRule());
  Apply(options.validation, *settings.GetValidationSpec());
  if (options.rules.maxNumCompetitors) {
    settings.SetMaxNumCompetitors(*options.rules.maxNumCompetitors);
  }
  if (options.rules.maxNumCategories) {
    settings.SetMaxNominalPredCategories(*options.rules.maxNumCategories);
  }
}

std::string WhyNoClasses(std::string const& target) {
  return "there are no classes: target " + Quoted(target) + " is continuous";
}

void RefuseMoney(GainsOptions const& options, std::string const& target) {
  std::string const why = WhyNoClasses(target);
  if (!options.profits.empty()) Refuse("--profit", why);
  if (!options.revenues.empty()) Refuse("--revenue", why);
  if (!options.expenses.empty()) Refuse("--expense", why);
}

void RefuseClassOptions(Options const& given, std::string const& target) {
  std::string const why = WhyNoClasses(target);
  ClassOptions const& options = given.classes;
  if (given.chaid.chiSquare.has_value()) Refuse("--chi-square", why);
  if (!given.chaid.scores.empty()) Refuse("--score", why);
  if (given.chaid.epsilon.has_value()) Refuse("--epsilon", why);
  if (given.chaid.maxNumIterations.has_value()) Refuse("--iterations", why);
  if (options.criterion.has_value()) Refuse("--criterion", why);
  if (options.priorType.has_value()) Refuse("--priors", why);
  if (!options.costs.empty()) Refuse("--cost", why);
}

// --- the methods ---

std::unique_ptr<AlgSettings> MakeCartSettings(Options const& options, CoreSettings const& core,
                                              grow::ColumnDescription const& target) {
  std::unique_ptr<CartSettings> settings;
  if (target.level == global::MeasurementContinuous) {
    RefuseClassOptions(options, target.name);
    settings = std::make_unique<RCartSettingsImp>(core);
  } else {
    auto forClasses = std::make_unique<CCartSettingsImp>(core);
    Classes const classes(target);
    if (options.classes.criterion) forClasses->SetSplitCriteria(*options.classes.criterion);
    ApplyPriors(options.classes, classes, *forClasses->GetPriors());
    ApplyCosts(options.classes, classes, *forClasses->GetCost());
    settings = std::move(forClasses);
  }
  ApplyShared(options, *settings);
  Apply(options.pruning, *settings->GetPruningSpec());
  if (options.rules.maxNumSurrogates) {
    settings->SetMaxNumSurrogates(*options.rules.maxNumSurrogates);
  }
  return settings;
}

void ApplyScores(ChaidOptions const& options, Classes const& classes,
                 grow::ColumnDescription const& target, Scores& scores) {
  constexpr char kOption[] = "--score";
  if (options.scores.empty()) return;
  if (target.level != global::MeasurementOrdinal) {
    Refuse(kOption, "target " + Quoted(target.name) + " is not ordinal");
  }
  for (int index = 0; index < classes.GetCount(); ++index) scores.Set(index, index);
  for (auto const& [label, score] : options.scores) {
    scores.Set(classes.IndexOf(kOption, label), score);
  }
}

void KeepCategories(ChaidOptions const& options, grow::DataSet const& data,
                    grow::CaseRoles const& roles, CoreSettings& core) {
  for (std::string const& name : options.keptPredictors) {
    auto const position =
        std::find_if(roles.predictors.begin(), roles.predictors.end(),
                     [&](int column) { return data.GetColumn(column).description.name == name; });
    if (position == roles.predictors.end()) {
      Refuse("--keep-categories", "there is no predictor " + Quoted(name));
    }
    core.GetPredictor(static_cast<int>(position - roles.predictors.begin()))
        ->SetValueMergeFlag(false);
  }
}

void Apply(ChaidOptions const& options, ChaidSettings& settings) {
  if (options.alphaOfSplit) settings.SetAlphaOfSplitNode(*options.alphaOfSplit);
  if (options.alphaOfMerge) settings.SetAlphaOfMerge(*options.alphaOfMerge);
  settings.SetAllowSplitMerge(options.alphaOfResplit.has_value());
  if (options.alphaOfResplit) settings.SetAlphaOfMergeSplit(*options.alphaOfResplit);
  if (options.isExhaustive) settings.SetSplitMergeMethod(SplitMergeMethod1);
  settings.SetUseBonferroniAdj(!options.hasNoBonferroni);
}

std::unique_ptr<AlgSettings> MakeChaidSettings(Options const& options, CoreSettings const& core,
                                               grow::ColumnDescription const& target) {
  std::unique_ptr<ChaidSettings> settings;
  if (target.level == global::MeasurementContinuous) {
    RefuseClassOptions(options, target.name);
    settings = std::make_unique<RChaidSettingsImp>(core);
  } else {
    auto forClasses = std::make_unique<CChaidSettingsImp>(core);
    ChaidOptions const& chaid = options.chaid;
    Classes const classes(target);
    if (chaid.chiSquare && target.level == global::MeasurementOrdinal) {
      Refuse("--chi-square", "target " + Quoted(target.name) +
                                 " is ordinal, and so is tested by the scores of its classes");
    }
    if (chaid.chiSquare) forClasses->SetChiSquareMethod(*chaid.chiSquare);
    if (chaid.epsilon) forClasses->SetConvergenceEpsilon(*chaid.epsilon);
    if (chaid.maxNumIterations) forClasses->SetMaxNumIterations(*chaid.maxNumIterations);
    ApplyPriors(options.classes, classes, *forClasses->GetPriors());
    ApplyCosts(options.classes, classes, *forClasses->GetCost());
    ApplyScores(chaid, classes, target, *forClasses->GetScores());
    settings = std::move(forClasses);
  }
  ApplyShared(options, *settings);
  Apply(options.chaid, *settings);
  return settings;
}

std::unique_ptr<AlgSettings> MakeQuestSettings(Options const& options, CoreSettings const& core,
                                               grow::ColumnDescription const& target) {
  if (target.level == global::MeasurementContinuous) {
    Refuse("--method",
           "quest grows trees for classes: target " + Quoted(target.name) + " is continuous");
  }
  auto settings = std::make_unique<QuestSettingsImp>(core);
  Classes const classes(target);
  ApplyPriors(options.classes, classes, *settings->GetPriors());
  ApplyCosts(options.classes, classes, *settings->GetCost());
  ApplyShared(options, *settings);
  Apply(options.pruning, *settings->GetPruningSpec());
  // The setter takes fewer than there can be.
  int const maxNumSurrogates =
      std::min(options.rules.maxNumSurrogates.value_or(settings->GetMaxNumSurrogates()),
               core.GetNumPredictors() - 1);
  settings->Init(options.quest.alphaOfSelection.value_or(settings->GetAlphaOfVariableSelection()),
                 maxNumSurrogates,
                 options.quest.maxNumSurrogateCategories.value_or(settings->GetMaxNumNomCatsSurr()),
                 settings->GetPruningSpec(), settings->GetPriors(), settings->GetCost());
  return settings;
}

}  // namespace

std::unique_ptr<AlgSettings> MakeSettings(Options const& options, grow::DataSet const& data,
                                          grow::CaseRoles const& roles) {
  CoreSettingsImp core = grow::MakeCoreSettings(data, roles);
  KeepCategories(options.chaid, data, roles, core);
  grow::ColumnDescription const& target = data.GetColumn(roles.target).description;
  switch (options.method) {
    case Method::kCart:
      return MakeCartSettings(options, core, target);
    case Method::kChaid:
      return MakeChaidSettings(options, core, target);
    case Method::kQuest:
      return MakeQuestSettings(options, core, target);
  }
  return nullptr;
}

GainsSettings MakeGainsSettings(GainsOptions const& options,
                                grow::ColumnDescription const& target) {
  GainsSettings settings;
  if (target.level == global::MeasurementContinuous) {
    RefuseMoney(options, target.name);
    if (options.target != "mean") {
      Refuse("--gains",
             "target " + Quoted(target.name) + " is continuous, which leaves the word mean");
    }
  } else {
    Classes const classes(target);
    if (!options.target.empty()) {
      settings.SetTargetCategory(classes.IndexOf("--gains", options.target));
    }
    for (auto const& [label, profit] : options.profits) {
      settings.SetCategoryProfit(classes.IndexOf("--profit", label), profit);
    }
    for (auto const& [label, revenue] : options.revenues) {
      settings.SetCategoryRevenue(classes.IndexOf("--revenue", label), revenue);
    }
    for (auto const& [label, expense] : options.expenses) {
      settings.SetCategoryExpense(classes.IndexOf("--expense", label), expense);
    }
  }
  settings.SetHasCumulativeStatistics(options.rows == GainsRows::kCumulative);
  settings.SetHasPercentileStatistics(options.rows == GainsRows::kPercentiles);
  settings.SetPercentileIncrement(static_cast<PercentileIncrement>(options.percentileStep));
  settings.SetSortOrder(options.order);
  settings.SetSortKey(options.sortSample);
  return settings;
}

}  // namespace tree::cli
