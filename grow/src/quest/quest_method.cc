#include "quest/quest_method.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "association/class_test.h"
#include "association/f_test.h"
#include "cart/class_criteria.h"
#include "cart/surrogate_rules.h"
#include "quest/discriminant_coordinates.h"
#include "quest/normal_split.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

/// What is less than this share of the impurity of a node is rounding, no improvement.
constexpr double kRounding = 1e-12;

TestStatistic FTestOf(std::span<NumberSums const> sums, double sizeUnit) {
  NumberSums all;
  for (NumberSums const& ofClass : sums) all += ofClass;
  std::int64_t const centre = WholeMean(all);
  std::vector<NumberGroup> groups;
  for (NumberSums const& ofClass : sums) {
    if (ofClass.size > 0) groups.push_back(SumUp(ofClass, centre));
  }
  return FTest(groups, sizeUnit);
}

/// The weighted mean and variance of some numbers.
struct Moments {
  double weight = 0.0;
  double mean = 0.0;
  double squares = 0.0;  // around the mean

  void Add(double addedWeight, double number) {
    weight += addedWeight;
    double const difference = number - mean;
    mean += addedWeight / weight * difference;
    squares += addedWeight * difference * (number - mean);
  }
};

}  // namespace

QuestMethod::QuestMethod(TrainingData const& data, QuestSettings const& settings,
                         ClassModel const& classes, double minChildSize)
    : data_(data),
      settings_(settings),
      minChildSize_(std::max<std::int64_t>(
          1, static_cast<std::int64_t>(std::ceil(minChildSize / data.GetFrequencies().unit)))),
      factors_(classes.GetSplitFactors()),
      weighted_(data.GetWeights().unit != data.GetFrequencies().unit ||
                data.GetWeights().multiples != data.GetFrequencies().multiples) {
  for (double& factor : factors_) factor *= data.GetWeights().unit;
}

void QuestMethod::PrepareNumbers(Workers& workers) {
  if (!numbers_.empty()) return;
  auto const& predictors = data_.GetPredictors();
  numbers_.resize(predictors.size());
  workers.Run(predictors.size(), [&](std::size_t predictor) {
    if (predictors[predictor].IsNominal()) return;
    numbers_[predictor] = PredictorNumbers(data_, predictor);
  });
}

/// Visits the cases of a node with a value of an ordered predictor, with their place, the value,
/// and its multiple.
template <class Visit>
void QuestMethod::ForValues(CaseLists const& lists, GrowingNode const& node, std::size_t predictor,
                            Workers& workers, Visit const& visit) const {
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  PredictorNumbers const& numbers = numbers_[predictor];
  Range const places = node.ranges.places;
  if (description.IsCoded()) {
    PlacedCodes const codes = lists.Codes(predictor);
    std::vector<std::int64_t> multiples;
    for (double const value : description.values) multiples.push_back(numbers.Of(value));
    ForSlices(places.Size(), workers, [&](std::size_t begin, std::size_t end) {
      for (std::size_t offset = begin; offset < end; ++offset) {
        auto const place = places.begin + static_cast<std::uint32_t>(offset);
        std::uint16_t const code = codes[place];
        if (code == GrowingPredictor::kMissingCode) continue;
        visit(place, description.values[code], multiples[code]);
      }
    });
    return;
  }
  double const missing = description.column->description.missingValue;
  ForSlices(places.Size(), workers, [&](std::size_t begin, std::size_t end) {
    for (std::size_t offset = begin; offset < end; ++offset) {
      auto const place = places.begin + static_cast<std::uint32_t>(offset);
      double const value = data_.ValueOf(predictor, lists.CaseAt(place));
      if (value != missing) visit(place, value, numbers.Of(value));
    }
  });
}

// ---- Tests ----

void QuestMethod::TestMeans(CaseLists const& lists, GrowingNode const& node, std::size_t predictor,
                            Workers& workers, Tested& tested) const {
  std::uint16_t const* const classes = lists.GetClasses();
  std::int64_t const* const frequencies = lists.GetFrequencies();
  tested.sums.assign(factors_.size(), {});
  ForValues(lists, node, predictor, workers,
            [&](std::uint32_t place, double, std::int64_t multiple) {
              tested.sums[classes[place]].AddCase(frequencies == nullptr ? 1 : frequencies[place],
                                                  lists.WeightAt(place), multiple);
            });
  TestStatistic const statistic = FTestOf(tested.sums, data_.GetFrequencies().unit);
  tested.statistic = statistic.value;
  tested.tests.logP = LogP(statistic);
}

/// Levene's test: whether the distances from the means of the classes have equal means.
void QuestMethod::TestSpread(CaseLists const& lists, GrowingNode const& node, std::size_t predictor,
                             Workers& workers, Tested& tested) const {
  std::uint16_t const* const classes = lists.GetClasses();
  std::int64_t const* const frequencies = lists.GetFrequencies();
  std::vector<std::int64_t> means;
  for (NumberSums const& sums : tested.sums) means.push_back(WholeMean(sums));
  std::vector<NumberSums> distances(factors_.size());
  ForValues(
      lists, node, predictor, workers, [&](std::uint32_t place, double, std::int64_t multiple) {
        std::size_t const ofClass = classes[place];
        distances[ofClass].AddCase(frequencies == nullptr ? 1 : frequencies[place],
                                   lists.WeightAt(place), std::abs(multiple - means[ofClass]));
      });
  TestStatistic const statistic = FTestOf(distances, data_.GetFrequencies().unit);
  tested.levene = statistic.value;
  tested.tests.logLevene = LogP(statistic);
}

void QuestMethod::TestCategories(CaseLists const& lists, GrowingNode const& node,
                                 std::size_t predictor, Workers& workers, Tested& tested) const {
  std::size_t const numClasses = factors_.size();
  std::size_t const numCodes = data_.GetPredictors()[predictor].values.size();
  std::uint16_t const* const classes = lists.GetClasses();
  std::int64_t const* const frequencies = lists.GetFrequencies();
  PlacedCodes const codes = lists.Codes(predictor);
  tested.sizes.assign(numCodes * numClasses, 0);
  tested.weights.assign(numCodes * numClasses, 0);
  Range const places = node.ranges.places;
  ForSlices(places.Size(), workers, [&](std::size_t begin, std::size_t end) {
    for (std::size_t offset = begin; offset < end; ++offset) {
      auto const place = places.begin + static_cast<std::uint32_t>(offset);
      std::uint16_t const code = codes[place];
      if (code == GrowingPredictor::kMissingCode) continue;
      std::size_t const cell = code * numClasses + classes[place];
      tested.sizes[cell] += frequencies == nullptr ? 1 : frequencies[place];
      tested.weights[cell] += lists.WeightAt(place);
    }
  });
  std::vector<double> const sizes(tested.sizes.begin(), tested.sizes.end());
  std::vector<double> const weights(tested.weights.begin(), tested.weights.end());
  std::vector<ClassRow> rows;
  for (std::size_t code = 0; code < numCodes; ++code) {
    rows.push_back({sizes.data() + code * numClasses,
                    weighted_ ? weights.data() + code * numClasses : nullptr});
  }
  ClassTest test({}, numClasses, data_.GetFrequencies().unit);
  TestStatistic const statistic = test.Test(rows);
  tested.statistic = statistic.value;
  tested.tests.logP = LogP(statistic);
}

// ---- Splits ----

std::optional<QuestMethod::Found> QuestMethod::FindSplit(CaseLists const& lists,
                                                         GrowingNode const& node,
                                                         std::size_t predictor,
                                                         Tested const& tested,
                                                         Workers& workers) const {
  if (data_.GetPredictors()[predictor].IsNominal()) return DivideCategories(predictor, tested);
  return FindCut(lists, node, predictor, tested, workers);
}

std::optional<QuestMethod::Found> QuestMethod::FindCut(CaseLists const& lists,
                                                       GrowingNode const& node,
                                                       std::size_t predictor, Tested const& tested,
                                                       Workers& workers) const {
  std::size_t const numClasses = factors_.size();
  NumberSums all;
  for (NumberSums const& sums : tested.sums) all += sums;
  std::int64_t const centre = WholeMean(all);
  std::vector<ClassMoments> moments;
  for (std::size_t j = 0; j < numClasses; ++j) {
    NumberSums const& sums = tested.sums[j];
    double const probability = factors_[j] * static_cast<double>(sums.weight);
    if (!(probability > 0.0)) continue;
    NumberGroup const group = SumUp(sums, centre);
    double const count = group.size * data_.GetFrequencies().unit;
    double const variance = count > 1.0 ? group.within / group.weight * count / (count - 1.0) : 0.0;
    moments.push_back({probability, group.mean, variance});
  }
  for (double const point : NormalSplitPoints(moments)) {
    Found found;
    found.cutPoint = numbers_[predictor].ValueOf(static_cast<double>(centre) + point);
    found.improvement = ImprovementOfCut(lists, node, predictor, tested, found.cutPoint, workers);
    if (found.improvement > 0.0) return found;
  }
  return std::nullopt;
}

double QuestMethod::ImprovementOfCut(CaseLists const& lists, GrowingNode const& node,
                                     std::size_t predictor, Tested const& tested, double cutPoint,
                                     Workers& workers) const {
  std::size_t const numClasses = factors_.size();
  std::vector<std::int64_t> left(numClasses);
  Side leftSide{std::vector<double>(numClasses), 0};
  Side rightSide{std::vector<double>(numClasses), 0};
  std::uint16_t const* const classes = lists.GetClasses();
  std::int64_t const* const frequencies = lists.GetFrequencies();
  ForValues(lists, node, predictor, workers, [&](std::uint32_t place, double value, std::int64_t) {
    if (!(value <= cutPoint)) return;
    left[classes[place]] += lists.WeightAt(place);
    leftSide.size += frequencies == nullptr ? 1 : frequencies[place];
  });
  for (std::size_t j = 0; j < numClasses; ++j) {
    NumberSums const& sums = tested.sums[j];
    rightSide.size += sums.size;
    leftSide.probabilities[j] = factors_[j] * static_cast<double>(left[j]);
    rightSide.probabilities[j] = factors_[j] * static_cast<double>(sums.weight - left[j]);
  }
  rightSide.size -= leftSide.size;
  return ImprovementOf(leftSide, rightSide);
}

std::optional<QuestMethod::Found> QuestMethod::DivideCategories(std::size_t predictor,
                                                                Tested const& tested) const {
  std::size_t const numClasses = factors_.size();
  std::size_t const numCodes = data_.GetPredictors()[predictor].values.size();
  std::vector<std::size_t> present;
  std::vector<double> weights;  // [category present][class], after priors
  for (std::size_t code = 0; code < numCodes; ++code) {
    double sum = 0.0;
    for (std::size_t j = 0; j < numClasses; ++j) {
      sum += factors_[j] * static_cast<double>(tested.weights[code * numClasses + j]);
    }
    if (!(sum > 0.0)) continue;
    present.push_back(code);
    for (std::size_t j = 0; j < numClasses; ++j) {
      weights.push_back(factors_[j] * static_cast<double>(tested.weights[code * numClasses + j]));
    }
  }
  if (present.size() < 2) return std::nullopt;
  std::vector<double> const coordinates = DiscriminantCoordinates(weights, numClasses);
  if (coordinates.empty()) return std::nullopt;
  std::vector<ClassMoments> classMoments;
  for (std::size_t j = 0; j < numClasses; ++j) {
    Moments moments;
    std::int64_t size = 0;
    for (std::size_t place = 0; place < present.size(); ++place) {
      double const weight = weights[place * numClasses + j];
      if (weight > 0.0) moments.Add(weight, coordinates[place]);
      size += tested.sizes[present[place] * numClasses + j];
    }
    if (!(moments.weight > 0.0)) continue;
    double const count = static_cast<double>(size) * data_.GetFrequencies().unit;
    double const variance =
        count > 1.0 ? moments.squares / moments.weight * count / (count - 1.0) : 0.0;
    classMoments.push_back({moments.weight, moments.mean, variance});
  }
  for (double const cut : NormalSplitPoints(classMoments)) {
    Found found;
    found.childOf.assign(numCodes, kNoChild);
    Side sides[2] = {{std::vector<double>(numClasses), 0}, {std::vector<double>(numClasses), 0}};
    for (std::size_t place = 0; place < present.size(); ++place) {
      std::size_t const child = coordinates[place] <= cut ? 0 : 1;
      found.childOf[present[place]] = static_cast<std::uint8_t>(child);
      for (std::size_t j = 0; j < numClasses; ++j) {
        sides[child].probabilities[j] += weights[place * numClasses + j];
        sides[child].size += tested.sizes[present[place] * numClasses + j];
      }
    }
    found.improvement = ImprovementOf(sides[0], sides[1]);
    if (found.improvement > 0.0) return found;
  }
  return std::nullopt;
}

/// The decrease of Gini impurity, as for CART; 0 where a child is too small.
double QuestMethod::ImprovementOf(Side const& left, Side const& right) const {
  if (left.size < minChildSize_ || right.size < minChildSize_) return 0.0;
  std::size_t const numClasses = factors_.size();
  std::vector<double> node(numClasses);
  double sum = 0.0;
  for (std::size_t j = 0; j < numClasses; ++j) {
    node[j] = left.probabilities[j] + right.probabilities[j];
    sum += node[j];
  }
  Score const score =
      Gini::ScoreOf(left.probabilities.data(), right.probabilities.data(), numClasses);
  if (!(score.denominator > 0.0)) return 0.0;
  double const improvement =
      score.numerator / score.denominator - Gini::OffsetOf(node.data(), numClasses);
  return improvement > kRounding * sum ? improvement : 0.0;
}

/// The predictors that may split: the selected one, then the others in order of their p-values.
std::vector<std::size_t> QuestMethod::OrderOf(std::span<Tested const> tested,
                                              SelectedPredictor const& selected) const {
  std::vector<std::size_t> order;
  for (std::size_t predictor = 0; predictor < tested.size(); ++predictor) {
    if (tested[predictor].tests.used) order.push_back(predictor);
  }
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    bool const aSelected = a == selected.predictor;
    bool const bSelected = b == selected.predictor;
    if (aSelected != bSelected) return aSelected;
    return tested[a].tests.logP < tested[b].tests.logP;
  });
  return order;
}

std::vector<RuleList> QuestMethod::FindSplits(CaseLists const& lists,
                                              std::span<GrowingNode const> nodes,
                                              Workers& workers) {
  PrepareNumbers(workers);
  auto const& predictors = data_.GetPredictors();
  std::size_t const numPredictors = predictors.size();
  double const alpha = settings_.GetAlphaOfVariableSelection();
  std::vector<Tested> tested(nodes.size() * numPredictors);  // [node][predictor]
  auto const testsOf = [&](std::size_t node) {
    std::vector<PredictorTests> tests;
    for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
      tests.push_back(tested[node * numPredictors + predictor].tests);
    }
    return tests;
  };
  workers.Run(numPredictors, [&](std::size_t predictor) {
    for (std::size_t node = 0; node < nodes.size(); ++node) {
      Tested& ofNode = tested[node * numPredictors + predictor];
      ofNode.tests.used = predictors[predictor].used;
      ofNode.tests.isOrdered = !predictors[predictor].IsNominal();
      if (!ofNode.tests.used) continue;
      if (ofNode.tests.isOrdered) {
        TestMeans(lists, nodes[node], predictor, workers, ofNode);
      } else {
        TestCategories(lists, nodes[node], predictor, workers, ofNode);
      }
    }
  });
  std::vector<char> isOpen(nodes.size());
  for (std::size_t node = 0; node < nodes.size(); ++node) {
    isOpen[node] = IsSelectedByMeans(testsOf(node), alpha) ? 0 : 1;
  }
  workers.Run(numPredictors, [&](std::size_t predictor) {
    if (!predictors[predictor].used || predictors[predictor].IsNominal()) return;
    for (std::size_t node = 0; node < nodes.size(); ++node) {
      if (isOpen[node] == 0) continue;
      TestSpread(lists, nodes[node], predictor, workers, tested[node * numPredictors + predictor]);
    }
  });

  auto const maxNumRules = static_cast<std::size_t>(std::max(1, settings_.GetMaxNumCompetitors()));
  double const minImprovement = settings_.GetStopRule()->GetMinImprovement();
  auto const numUsed = std::count_if(predictors.begin(), predictors.end(),
                                     [](GrowingPredictor const& each) { return each.used; });
  std::vector<RuleList> rules(nodes.size());
  if (numUsed == 0) return rules;
  workers.Run(nodes.size(), [&](std::size_t node) {
    std::span<Tested const> const ofNode(tested.data() + node * numPredictors, numPredictors);
    SelectedPredictor const selected = SelectPredictor(testsOf(node), alpha);
    for (std::size_t const predictor : OrderOf(ofNode, selected)) {
      if (rules[node].size() == maxNumRules) break;
      Tested const& each = ofNode[predictor];
      std::optional<Found> const found = FindSplit(lists, nodes[node], predictor, each, workers);
      if (!found.has_value()) continue;
      if (rules[node].empty() && found->improvement < minImprovement) break;
      bool const isSelected = predictor == selected.predictor;
      double const logP =
          isSelected ? selected.adjustedLogP
                     : std::min(0.0, each.tests.logP + std::log(static_cast<double>(numUsed)));
      double const statistic = isSelected && selected.byLevene ? each.levene : each.statistic;
      rules[node].push_back(MakeRule(predictor, *found, statistic, logP));
    }
  });
  return rules;
}

std::vector<RuleList> QuestMethod::FindSurrogates(CaseLists const& lists,
                                                  std::span<GrowingNode const> nodes,
                                                  std::vector<SplitRuleImp const*> const& primaries,
                                                  ChildOfPlace const& childOf, Workers& workers) {
  SurrogateLimits const limits{settings_.GetMaxNumSurrogates(),
                               static_cast<std::size_t>(settings_.GetMaxNumNomCatsSurr())};
  return FindSurrogateRules(data_, lists, nodes, primaries, childOf, limits, workers);
}

std::unique_ptr<SplitRuleImp> QuestMethod::MakeRule(std::size_t predictor, Found const& found,
                                                    double statistic, double logP) const {
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  auto const position = static_cast<int>(predictor);
  std::unique_ptr<SplitRuleImp> rule;
  if (description.IsNominal()) {
    auto nominal = std::make_unique<NSplitRule>(position, 0);
    for (std::size_t code = 0; code < found.childOf.size(); ++code) {
      if (found.childOf[code] == kNoChild) continue;
      nominal->SetCatMapping(static_cast<int>(description.values[code]), found.childOf[code]);
    }
    rule = std::move(nominal);
  } else {
    auto ordered =
        std::make_unique<OSplitRule>(description.column->description.missingValue, position);
    ordered->SetCutPoint(found.cutPoint);
    rule = std::move(ordered);
  }
  rule->SetStatistic(SplitImprovement, found.improvement);
  rule->SetStatistic(SplitTestStatistic, statistic);
  rule->SetStatistic(SplitLogPValue, logP);
  return rule;
}

}  // namespace tree::grow
