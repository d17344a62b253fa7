#include "options/settings.h"

#include <algorithm>
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

void RefuseClassOptions(ClassOptions const& options, std::string const& target) {
  std::string const why = "there are no classes: target " + Quoted(target) + " is continuous";
  if (options.criterion.has_value()) Refuse("--criterion", why);
  if (options.priorType.has_value()) Refuse("--priors", why);
  if (!options.costs.empty()) Refuse("--cost", why);
}

// --- the methods ---

std::unique_ptr<AlgSettings> MakeCartSettings(Options const& options, CoreSettings const& core,
                                              grow::ColumnDescription const& target) {
  std::unique_ptr<CartSettings> settings;
  if (target.level == global::MeasurementContinuous) {
    RefuseClassOptions(options.classes, target.name);
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

}  // namespace

std::unique_ptr<AlgSettings> MakeSettings(Options const& options, grow::DataSet const& data,
                                          grow::CaseRoles const& roles) {
  CoreSettingsImp const core = grow::MakeCoreSettings(data, roles);
  grow::ColumnDescription const& target = data.GetColumn(roles.target).description;
  switch (options.method) {
    case Method::kCart:
      return MakeCartSettings(options, core, target);
  }
  return nullptr;
}

GainsSettings MakeGainsSettings(std::string const& gains, grow::ColumnDescription const& target) {
  constexpr char kOption[] = "--gains";
  GainsSettings settings;
  if (target.level != global::MeasurementContinuous) {
    settings.SetTargetCategory(Classes(target).IndexOf(kOption, gains));
  } else if (gains != "mean") {
    Refuse(kOption, "target " + Quoted(target.name) + " is continuous, which leaves the word mean");
  }
  return settings;
}

}  // namespace tree::cli
