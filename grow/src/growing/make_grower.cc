#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>

#include "cart/cart_method.h"
#include "chaid/chaid_method.h"
#include "data/case_roles.h"
#include "data/number_text.h"
#include "growing/tree_grower.h"
#include "quest/quest_method.h"
#include "tree/grow/grower.h"

namespace tree::grow {
namespace {

bool IsContinuous(global::MeasurementLevel level) { return level == global::MeasurementContinuous; }

std::string NameOf(global::MeasurementLevel level) {
  switch (level) {
    case global::MeasurementNominal:
      return "nominal";
    case global::MeasurementOrdinal:
      return "ordinal";
    case global::MeasurementContinuous:
      return "continuous";
    default:
      return "of level " + std::to_string(static_cast<int>(level));
  }
}

[[noreturn]] void Refuse(std::string const& why) {
  throw InputError("the settings do not fit the data: " + why);
}

/// Refuses settings that have a weight that the data has not, or the other way round.
void CheckWeight(std::string const& kind, bool inSettings, bool inData) {
  if (inSettings == inData) return;
  Refuse(inSettings ? "they have a " + kind + ", the data none"
                    : "they have no " + kind + ", the data has one");
}

/// Refuses settings that were made for other variables.
void CheckSettings(DataSet const& data, CaseRoles const& roles, AlgSettings const& settings) {
  CoreSettings const& core = *settings.GetCoreSettings();
  auto const numPredictors = static_cast<int>(roles.predictors.size());
  if (core.GetNumPredictors() != numPredictors) {
    Refuse("they have " + std::to_string(core.GetNumPredictors()) + " predictors, the data " +
           std::to_string(numPredictors));
  }
  for (int position = 0; position < numPredictors; ++position) {
    ColumnDescription const& column =
        data.GetColumn(roles.predictors[static_cast<std::size_t>(position)]).description;
    VariableSettings const& variable = *core.GetPredictor(position);
    if (variable.GetMeasurementLevel() != column.level) {
      Refuse("predictor \"" + column.name + "\" is " + NameOf(column.level) + ", in the settings " +
             NameOf(variable.GetMeasurementLevel()));
    }
    if (variable.GetMissingValue() != column.missingValue) {
      Refuse("predictor \"" + column.name + "\" has another missing value");
    }
  }
  CheckWeight("frequency weight", core.HasFreqWeight(), roles.frequencyWeight.has_value());
  CheckWeight("case weight", core.HasCaseWeight(), roles.caseWeight.has_value());
  ColumnDescription const& target = data.GetColumn(roles.target).description;
  if (core.GetTarget()->GetMissingValue() != target.missingValue) {
    Refuse("target \"" + target.name + "\" has another missing value");
  }
  bool const wantsNumbers = settings.GetType() == AlgRCart || settings.GetType() == AlgRChaid;
  if (wantsNumbers != IsContinuous(target.level)) {
    Refuse("target \"" + target.name + "\" is " + (wantsNumbers ? "not continuous" : "continuous") +
           ", which this kind of settings " +
           (wantsNumbers ? "requires" : "cannot grow a tree for"));
  }
}

TreeGrower::Algorithm MakeCart(AlgSettings const& settings) {
  TreeGrower::Algorithm algorithm;
  algorithm.settings.reset(settings.Clone());
  auto const& cart = dynamic_cast<CartSettings const&>(*algorithm.settings);
  algorithm.pruning = cart.GetPruningSpec();
  if (auto const* const classes = dynamic_cast<CCartSettings const*>(&cart)) {
    if (static_cast<int>(classes->GetSplitCriteria()) < 0 ||
        static_cast<int>(classes->GetSplitCriteria()) > 2) {
      throw InputError("there is no split criterion " +
                       std::to_string(static_cast<int>(classes->GetSplitCriteria())) +
                       "; 0 is Gini, 1 twoing, 2 ordered twoing");
    }
    algorithm.priors = classes->GetPriors();
    algorithm.costs = classes->GetCost();
  }
  double const minImprovement =
      std::as_const(*algorithm.settings).GetStopRule()->GetMinImprovement();
  algorithm.makeMethod = [&cart, minImprovement](TrainingData const& data,
                                                 ClassModel const* classes, double minChildSize,
                                                 double totalWeight) {
    return std::make_unique<CartMethod>(data, cart, classes,
                                        SplitLimits{minImprovement, minChildSize}, totalWeight);
  };
  return algorithm;
}

/// Scores of classes are distances: refuses what is none.
void CheckScores(Scores const& scores) {
  for (int j = 0; j < scores.GetNumClasses(); ++j) {
    if (std::isfinite(scores.Get(j))) continue;
    throw InputError("the score of class " + std::to_string(j) + " is not finite");
  }
}

TreeGrower::Algorithm MakeChaid(AlgSettings const& settings, int numIntervals) {
  TreeGrower::Algorithm algorithm;
  algorithm.settings.reset(settings.Clone());
  algorithm.numIntervals = numIntervals;
  algorithm.codeOrder = CodeOrder::kByCase;
  auto const& chaid = dynamic_cast<ChaidSettings const&>(*algorithm.settings);
  if (auto const* const classes = dynamic_cast<CChaidSettingsImp const*>(&chaid)) {
    int const method = static_cast<int>(classes->GetChiSquareMethod());
    if (method < 0 || method > 1) {
      throw InputError("there is no chi-square method " + std::to_string(method) +
                       "; 0 is Pearson's, 1 the likelihood ratio");
    }
    if (classes->GetMaxNumIterations() < 1) {
      throw InputError("an iterative estimate takes at least 1 iteration, and the settings allow " +
                       std::to_string(classes->GetMaxNumIterations()));
    }
    CheckScores(*classes->GetScores());
    algorithm.priors = classes->GetPriors();
    algorithm.costs = classes->GetCost();
  } else if (chaid.GetType() == AlgCChaid) {
    throw InputError("CHAID for classes needs CChaidSettingsImp, which has priors");
  }
  algorithm.makeMethod = [&chaid](TrainingData const& data, ClassModel const* classes,
                                  double minChildSize, double totalWeight) {
    return std::make_unique<ChaidMethod>(data, chaid, classes, minChildSize, totalWeight);
  };
  return algorithm;
}

TreeGrower::Algorithm MakeQuest(AlgSettings const& settings) {
  TreeGrower::Algorithm algorithm;
  algorithm.settings.reset(settings.Clone());
  auto const& quest = dynamic_cast<QuestSettings const&>(*algorithm.settings);
  algorithm.pruning = quest.GetPruningSpec();
  algorithm.priors = quest.GetPriors();
  algorithm.costs = quest.GetCost();
  algorithm.orderedForm = OrderedForm::kInRows;
  algorithm.makeMethod = [&quest](TrainingData const& data, ClassModel const* classes,
                                  double minChildSize, double) {
    return std::make_unique<QuestMethod>(data, quest, *classes, minChildSize);
  };
  return algorithm;
}

TreeGrower::Algorithm MakeAlgorithm(AlgSettings const& settings, GrowOptions const& options) {
  switch (settings.GetType()) {
    case AlgRCart:
    case AlgCCart:
      return MakeCart(settings);
    case AlgRChaid:
    case AlgCChaid:
      return MakeChaid(settings, options.numIntervals);
    case AlgQuest:
      return MakeQuest(settings);
    default:
      throw InputError("trees cannot be grown with settings of this kind");
  }
}

}  // namespace

Grower::~Grower() = default;

std::unique_ptr<Grower> MakeGrower(DataSet const& data, CaseRoles const& roles,
                                   AlgSettings const& settings, GrowOptions const& options) {
  if (options.numThreads < 0 || options.numThreads > 1024) {
    throw InputError("a grower cannot work with " + std::to_string(options.numThreads) +
                     " threads");
  }
  if (options.maxCodedValues < 0 || options.maxCodedValues > 65535) {
    throw InputError(
        "the number of values that are held as codes has to lie between 0 and 65535, "
        "and is " +
        std::to_string(options.maxCodedValues));
  }
  if (!(options.testShare > 0.0 && options.testShare < 1.0)) {
    throw InputError("the share of the test sample has to lie between 0 and 1, and is " +
                     NumberText(options.testShare));
  }
  if (options.numIntervals < 2 || options.numIntervals > 65535) {
    throw InputError("the number of intervals has to lie between 2 and 65535, and is " +
                     std::to_string(options.numIntervals));
  }
  CheckRoles(data, roles);
  CheckSettings(data, roles, settings);
  try {
    return std::make_unique<TreeGrower>(data, roles, MakeAlgorithm(settings, options), options);
  } catch (Cancelled const&) {
    return nullptr;
  }
}

void CopyCase(DataSet const& data, std::vector<int> const& predictors, std::size_t row,
              double* values) {
  std::transform(predictors.begin(), predictors.end(), values,
                 [&](int index) { return data.GetColumn(index).values[row]; });
}

}  // namespace tree::grow
