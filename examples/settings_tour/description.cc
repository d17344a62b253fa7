#include "settings_tour/description.h"

#include <iomanip>
#include <sstream>

#include "tree/support.h"

namespace settings_tour {
namespace {

using Settings = std::vector<Setting>;

std::string YesOrNo(bool flag) { return flag ? "yes" : "no"; }

std::string LevelName(global::MeasurementLevel level) {
  switch (level) {
    case global::MeasurementNominal:
      return "nominal";
    case global::MeasurementOrdinal:
      return "ordinal";
    case global::MeasurementContinuous:
      return "continuous";
  }
  return "unknown";
}

std::string ValidationName(tree::ValidationType type) {
  switch (type) {
    case tree::ValidationNone:
      return "none";
    case tree::ValidationSplitSample:
      return "split sample";
    case tree::ValidationCrossValidation:
      return "cross-validation";
  }
  return "unknown";
}

std::string PruningText(tree::PruningSpec const& pruning) {
  if (pruning.GetPickMinRiskTree()) return "least risk";
  return Number(pruning.GetSERuleFactor()) + " SE";
}

std::string PriorsText(tree::Priors const& priors) {
  if (priors.GetType() == tree::PriorTypeDefault) return "default";
  if (priors.GetType() == tree::PriorTypeAlternate) return "alternate";
  std::string text;
  for (int index = 0; index < priors.GetNumClasses(); ++index) {
    text += Number(priors.Get(index)) + " ";
  }
  return text + (priors.HasAlteredValues() ? "to be altered" : "as they are");
}

/// The cells in which the costs differ from the default pattern.
std::string CostText(tree::Cost const& cost) {
  if (cost.IsDefault()) return "default";
  std::string text;
  for (int row = 0; row < cost.GetNumClasses(); ++row) {
    for (int column = 0; column < cost.GetNumClasses(); ++column) {
      if (row == column || cost.Get(row, column) == 1.0) continue;
      if (!text.empty()) text += ", ";
      text += "(" + std::to_string(row) + "," + std::to_string(column) +
              ")=" + Number(cost.Get(row, column));
    }
  }
  return text;
}

std::string ScoresText(tree::Scores const& scores) {
  if (scores.GetType() == tree::ScoreTypeDefault) return "default";
  std::string text;
  for (int index = 0; index < scores.GetNumClasses(); ++index) {
    if (index > 0) text += " ";
    text += Number(scores.Get(index));
  }
  return text;
}

void DescribeVariables(tree::CoreSettings const& core, Settings& rows) {
  rows.push_back({"target", LevelName(core.GetTarget()->GetMeasurementLevel())});
  rows.push_back({"values of target", std::to_string(core.GetTarget()->GetNumValues())});
  rows.push_back({"predictors", std::to_string(core.GetNumPredictors())});
  rows.push_back({"frequency weight", YesOrNo(core.HasFreqWeight())});
}

void DescribeValidation(tree::ValidationSpec const& validation, Settings& rows) {
  rows.push_back({"validation", ValidationName(validation.GetType())});
  rows.push_back({"folds", std::to_string(validation.GetNumCVFolds())});
  rows.push_back({"seed", std::to_string(validation.GetRandomSeed())});
}

void DescribeStopRule(tree::StopRule const& stop, Settings& rows) {
  rows.push_back({"least improvement", Number(stop.GetMinImprovement())});
  rows.push_back({"least node size", std::to_string(stop.GetMinNodeSize())});
  rows.push_back({"least node size, %", Number(stop.GetMinNodePercentSize())});
  rows.push_back({"least child size", std::to_string(stop.GetMinChildSize())});
  rows.push_back({"least child size, %", Number(stop.GetMinChildPercentSize())});
  rows.push_back({"tree depth", std::to_string(stop.GetMaxTreeDepth())});
}

void DescribeCart(tree::CartSettings const& cart, Settings& rows) {
  rows.push_back({"pruning", PruningText(*cart.GetPruningSpec())});
  rows.push_back({"surrogates", std::to_string(cart.GetMaxNumSurrogates())});
}

void DescribeCCart(tree::CCartSettings const& cart, Settings& rows) {
  rows.push_back({"priors", PriorsText(*cart.GetPriors())});
  rows.push_back({"costs", CostText(*cart.GetCost())});
}

void DescribeChaid(tree::ChaidSettings const& chaid, Settings& rows) {
  rows.push_back({"alpha of split", Number(chaid.GetAlphaOfSplitNode())});
  rows.push_back({"alpha of merge", Number(chaid.GetAlphaOfMerge())});
  rows.push_back({"alpha of merge split", Number(chaid.GetAlphaOfMergeSplit())});
  rows.push_back({"split-merge method", std::to_string(chaid.GetSplitMergeMethod())});
  rows.push_back({"split merged", YesOrNo(chaid.GetAllowSplitMerge())});
  rows.push_back({"Bonferroni", YesOrNo(chaid.GetUseBonferroniAdj())});
}

void DescribeCChaid(tree::CChaidSettingsImp const& chaid, Settings& rows) {
  rows.push_back({"convergence", Number(chaid.GetConvergenceEpsilon())});
  rows.push_back({"iterations", std::to_string(chaid.GetMaxNumIterations())});
  rows.push_back({"priors", PriorsText(*chaid.GetPriors())});
  rows.push_back({"costs", CostText(*chaid.GetCost())});
  rows.push_back({"scores", ScoresText(*chaid.GetScores())});
}

void DescribeQuest(tree::QuestSettings const& quest, Settings& rows) {
  rows.push_back({"alpha of selection", Number(quest.GetAlphaOfVariableSelection())});
  rows.push_back({"pruning", PruningText(*quest.GetPruningSpec())});
  rows.push_back({"surrogates", std::to_string(quest.GetMaxNumSurrogates())});
  rows.push_back({"surrogate categories", std::to_string(quest.GetMaxNumNomCatsSurr())});
  rows.push_back({"priors", PriorsText(*quest.GetPriors())});
  rows.push_back({"costs", CostText(*quest.GetCost())});
}

}  // namespace

std::string Number(double number) {
  if (number == systemMissingValue()) return "missing";
  std::ostringstream text;
  text << std::setprecision(10) << number;
  return text.str();
}

std::string KindName(tree::AlgSettings const& settings) {
  switch (settings.GetType()) {
    case tree::AlgRCart:
      return "R-CART";
    case tree::AlgCCart:
      return "C-CART";
    case tree::AlgRChaid:
      return "R-CHAID";
    case tree::AlgCChaid:
      return "C-CHAID";
    case tree::AlgQuest:
      return "QUEST";
  }
  return "unknown";
}

std::vector<Setting> Describe(tree::AlgSettings const& settings) {
  Settings rows;
  DescribeVariables(*settings.GetCoreSettings(), rows);
  rows.push_back({"competitors", std::to_string(settings.GetMaxNumCompetitors())});
  rows.push_back({"nominal categories", std::to_string(settings.GetMaxNominalPredCategories())});
  DescribeValidation(*settings.GetValidationSpec(), rows);
  DescribeStopRule(*settings.GetStopRule(), rows);

  if (auto const* cart = dynamic_cast<tree::CartSettings const*>(&settings)) {
    DescribeCart(*cart, rows);
  }
  if (auto const* cart = dynamic_cast<tree::CCartSettings const*>(&settings)) {
    DescribeCCart(*cart, rows);
  }
  if (auto const* chaid = dynamic_cast<tree::ChaidSettings const*>(&settings)) {
    DescribeChaid(*chaid, rows);
  }
  if (auto const* chaid = dynamic_cast<tree::CChaidSettingsImp const*>(&settings)) {
    DescribeCChaid(*chaid, rows);
  }
  if (auto const* quest = dynamic_cast<tree::QuestSettings const*>(&settings)) {
    DescribeQuest(*quest, rows);
  }
  return rows;
}

}  // namespace settings_tour
