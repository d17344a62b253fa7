#include "cart/cart_method.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <utility>

#include "cart/best_positions.h"
#include "cart/predictor_search.h"
#include "cart/surrogate_rules.h"
#include "growing/node_statistics.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

/// What is less than this share of the impurity of a node is rounding, no improvement.
constexpr double kRounding = 1e-12;

int CriterionOf(CartSettings const& settings) {
  auto const* const classSettings = dynamic_cast<CCartSettings const*>(&settings);
  return classSettings == nullptr ? 0 : static_cast<int>(classSettings->GetSplitCriteria());
}

}  // namespace

CartMethod::CartMethod(TrainingData const& data, CartSettings const& settings,
                       ClassModel const* classes, SplitLimits const& limits, double totalWeight)
    : data_(data),
      settings_(settings),
      classes_(classes),
      limits_(limits),
      totalWeight_(totalWeight),
      criterion_(CriterionOf(settings)) {
  double const weightUnit = data.GetWeights().unit;
  if (classes != nullptr) {
    factors_ = classes->GetSplitFactors();
    for (double& factor : factors_) factor *= weightUnit;
  } else {
    scale_ = weightUnit / totalWeight;
  }
}

template <class Visit>
void CartMethod::WithSides(CaseLists const& lists, Visit const& visit) const {
  bool const weighted = lists.GetWeights() != nullptr;
  ClassTarget const classes{lists.GetClasses(), lists.GetWeights(), factors_};
  NumberTarget const numbers{lists.GetNumbers(), lists.GetWeights(), scale_,
                             data_.GetNumbers().unit};
  if (classes_ == nullptr) {
    weighted ? visit(NumberSides<true>(numbers)) : visit(NumberSides<false>(numbers));
  } else if (criterion_ == 1) {
    visit(ClassSides<Twoing>(classes));
  } else if (criterion_ == 2) {
    visit(ClassSides<OrderedTwoing>(classes));
  } else if (factors_.size() == 2 && !weighted) {
    visit(TwoClassSides(classes));
  } else {
    visit(ClassSides<Gini>(classes));
  }
}

double CartMethod::RoundingOf(GrowingNode const& node) const {
  double impurity = 0.0;
  if (classes_ == nullptr) {
    impurity = SumOfSquares(*node.node->GetRegInfoImp(TrainingSample), totalWeight_);
  } else {
    for (std::size_t j = 0; j < factors_.size(); ++j) {
      impurity += factors_[j] * static_cast<double>(node.sums.classWeights[j]);
    }
  }
  return kRounding * impurity;
}

std::unique_ptr<SplitRuleImp> CartMethod::MakeRule(std::size_t predictor,
                                                   FoundSplit const& split) const {
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  auto const position = static_cast<int>(predictor);
  std::unique_ptr<SplitRuleImp> rule;
  if (description.IsNominal()) {
    auto nominal = std::make_unique<NSplitRule>(position, 0);
    auto const map = [&](std::vector<std::uint16_t> const& codes, int child) {
      for (std::uint16_t const code : codes) {
        nominal->SetCatMapping(static_cast<int>(description.values[code]), child);
      }
    };
    map(split.left, 0);
    map(split.right, 1);
    rule = std::move(nominal);
  } else {
    auto ordered =
        std::make_unique<OSplitRule>(description.column->description.missingValue, position);
    ordered->SetCutPoint(split.cutPoint);
    rule = std::move(ordered);
  }
  rule->SetStatistic(SplitImprovement, split.improvement);
  return rule;
}

std::vector<RuleList> CartMethod::FindSplits(CaseLists const& lists,
                                             std::span<GrowingNode const> nodes, Workers& workers) {
  std::size_t const numPredictors = data_.GetPredictors().size();
  std::vector<FoundSplit> found(nodes.size() * numPredictors);  // [node][predictor]
  double const frequencyUnit = data_.GetFrequencies().unit;
  auto const minChildSize =
      static_cast<std::int64_t>(std::ceil(limits_.minChildSize / frequencyUnit));
  WithSides(lists, [&](auto const& sides) {
    using Sides = std::decay_t<decltype(sides)>;
    workers.Run(numPredictors, [&](std::size_t predictor) {
      PredictorSearch<Sides> search(data_, lists, sides, minChildSize, workers);
      for (std::size_t node = 0; node < nodes.size(); ++node) {
        found[node * numPredictors + predictor] =
            search.Find(nodes[node].ranges, nodes[node].sums, predictor);
        workers.Poll(nodes[node].ranges.places.Size());
      }
    });
  });
  auto const maxNumRules = static_cast<std::size_t>(std::max(1, settings_.GetMaxNumCompetitors()));
  std::vector<RuleList> rules(nodes.size());
  for (std::size_t node = 0; node < nodes.size(); ++node) {
    FoundSplit const* const ofNode = found.data() + node * numPredictors;
    double const rounding = RoundingOf(nodes[node]);
    auto const best = BestPositions(numPredictors, maxNumRules, [&](std::size_t predictor) {
      double const improvement = ofNode[predictor].improvement;
      return improvement > rounding ? improvement : 0.0;
    });
    if (best.empty() || ofNode[best.front()].improvement < limits_.minImprovement) continue;
    for (std::size_t const predictor : best) {
      rules[node].push_back(MakeRule(predictor, ofNode[predictor]));
    }
  }
  return rules;
}

std::vector<RuleList> CartMethod::FindSurrogates(CaseLists const& lists,
                                                 std::span<GrowingNode const> nodes,
                                                 std::vector<SplitRuleImp const*> const& primaries,
                                                 ChildOfPlace const& childOf, Workers& workers) {
  return FindSurrogateRules(data_, lists, nodes, primaries, childOf,
                            {settings_.GetMaxNumSurrogates(), GrowingPredictor::kMaxValues},
                            workers);
}

}  // namespace tree::grow
