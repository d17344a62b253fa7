#include "quest/quest_method.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "association/class_test.h"
#include "association/f_test.h"
#include "cart/class_criteria.h"
#include "cart/surrogate_rules.h"
#include "growing/node_rows.h"
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

/// Visits the cases at some places with a value of a coded predictor, with their place and the
/// code.
template <class Visit>
void ForCodes(CaseLists const& lists, Range places, std::size_t predictor, Visit const& visit) {
  PlacedCodes const codes = lists.Codes(predictor);
  ForEachPolling(places.begin, places.end, lists.GetWorkers(), [&](std::uint32_t place) {
    std::uint16_t const code = codes[place];
    if (code != GrowingPredictor::kMissingCode) visit(place, code);
  });
}

/// The places of a node in parts of `size`.
std::vector<Range> Slice(Range places, std::size_t size) {
  std::vector<Range> slices;
  for (std::uint32_t begin = places.begin; begin < places.end;) {
    auto const length = static_cast<std::uint32_t>(std::min<std::size_t>(size, places.end - begin));
    slices.push_back({begin, begin + length});
    begin += length;
  }
  return slices;
}

std::vector<PredictorTests> TestsOf(auto const& tested) {
  std::vector<PredictorTests> tests(tested.size());
  std::transform(tested.begin(), tested.end(), tests.begin(),
                 [](auto const& each) { return each.tests; });
  return tests;
}

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
  multiples_.resize(predictors.size());
  rowPositions_.resize(predictors.size());
  workers.Run(predictors.size(), [&](std::size_t predictor) {
    if (!predictors[predictor].used || predictors[predictor].IsNominal()) return;
    numbers_[predictor] = PredictorNumbers(data_, predictor);
    for (double const value : predictors[predictor].values) {
      multiples_[predictor].push_back(numbers_[predictor].Of(value));
    }
  });
  auto const inRows = data_.GetCaseRows().GetPredictors();
  for (std::size_t position = 0; position < inRows.size(); ++position) {
    rowPositions_[inRows[position]] = position;
  }
}

// ---- Tests ----

/// What the cases of a node add up to; their ranges are stored on the way.
ClassSums QuestMethod::SumRows(Scene const& scene) const {
  CaseRows const& rows = data_.GetCaseRows();
  std::vector<ClassSums> sums(scene.slices.size(), ClassSums(rows.GetWidth(), factors_.size()));
  std::vector<RowRanges> ranges(scene.slices.size(), RowRanges(rows));
  scene.crew.Run(scene.slices.size(), [&](std::size_t slice) {
    scene.rowSums.Add(scene.slices[slice], sums[slice], ranges[slice]);
  });
  for (std::size_t slice = 1; slice < sums.size(); ++slice) {
    sums[0] += sums[slice];
    ranges[0].Append(ranges[slice]);
  }
  ranges[0].Store(*scene.node.node);
  return std::move(sums[0]);
}

/// The weighted distances of a node's cases from the means of their classes.
ClassSums QuestMethod::SumDistances(Scene const& scene, std::span<Tested const> tested) const {
  CaseRows const& rows = data_.GetCaseRows();
  std::vector<std::int64_t> means;  // [position][class]
  for (std::size_t const predictor : rows.GetPredictors()) {
    for (NumberSums const& sums : tested[predictor].sums) means.push_back(WholeMean(sums));
  }
  std::vector<ClassSums> distances(scene.slices.size(),
                                   ClassSums(rows.GetWidth(), factors_.size()));
  scene.crew.Run(scene.slices.size(), [&](std::size_t slice) {
    scene.rowSums.AddDistances(scene.slices[slice], means, distances[slice]);
  });
  for (std::size_t slice = 1; slice < distances.size(); ++slice) distances[0] += distances[slice];
  return std::move(distances[0]);
}

void QuestMethod::SumCodes(Scene const& scene, std::size_t predictor, Tested& tested) const {
  std::uint16_t const* const classes = scene.lists.GetClasses();
  std::int64_t const* const frequencies = scene.lists.GetFrequencies();
  std::vector<std::int64_t> const& multiples = multiples_[predictor];
  tested.ownSums.assign(factors_.size(), {});
  ForCodes(scene.lists, scene.node.ranges.places, predictor,
           [&](std::uint32_t place, std::uint16_t code) {
             tested.ownSums[classes[place]].AddCase(frequencies == nullptr ? 1 : frequencies[place],
                                                    scene.lists.WeightAt(place), multiples[code]);
           });
  tested.sums = tested.ownSums;
}

void QuestMethod::TestSpreadOfCodes(Scene const& scene, std::size_t predictor,
                                    Tested& tested) const {
  std::uint16_t const* const classes = scene.lists.GetClasses();
  std::vector<std::int64_t> const& multiples = multiples_[predictor];
  std::vector<std::int64_t> means;
  for (NumberSums const& sums : tested.sums) means.push_back(WholeMean(sums));
  std::vector<NumberSums> distances(factors_.size());
  ForCodes(scene.lists, scene.node.ranges.places, predictor,
           [&](std::uint32_t place, std::uint16_t code) {
             std::size_t const ofClass = classes[place];
             distances[ofClass].sum += WideInteger{scene.lists.WeightAt(place)} *
                                       std::abs(multiples[code] - means[ofClass]);
           });
  TestSpread(distances, tested);
}

void QuestMethod::TestMeans(Tested& tested) const {
  TestStatistic const statistic = FTestOf(tested.sums, data_.GetFrequencies().unit);
  tested.statistic = statistic.value;
  tested.tests.logP = LogP(statistic);
}

/// Levene's test: whether the distances from the means of the classes have equal means.
/// `distances`: their weighted sums by class; what else there is of them is known.
void QuestMethod::TestSpread(std::span<NumberSums const> distances, Tested& tested) const {
  std::vector<NumberSums> spread(tested.sums.begin(), tested.sums.end());
  for (std::size_t j = 0; j < spread.size(); ++j) {
    WideInteger const mean = WholeMean(spread[j]);
    spread[j].squares += mean * (mean * spread[j].weight - 2 * spread[j].sum);
    spread[j].sum = distances[j].sum;
  }
  TestStatistic const statistic = FTestOf(spread, data_.GetFrequencies().unit);
  tested.levene = statistic.value;
  tested.tests.logLevene = LogP(statistic);
}

void QuestMethod::TestCategories(Scene const& scene, std::size_t predictor, Tested& tested) const {
  std::size_t const numClasses = factors_.size();
  std::size_t const numCodes = data_.GetPredictors()[predictor].values.size();
  std::uint16_t const* const classes = scene.lists.GetClasses();
  std::int64_t const* const frequencies = scene.lists.GetFrequencies();
  tested.sizes.assign(numCodes * numClasses, 0);
  tested.weights.assign(numCodes * numClasses, 0);
  ForCodes(scene.lists, scene.node.ranges.places, predictor,
           [&](std::uint32_t place, std::uint16_t code) {
             std::size_t const cell = code * numClasses + classes[place];
             tested.sizes[cell] += frequencies == nullptr ? 1 : frequencies[place];
             tested.weights[cell] += scene.lists.WeightAt(place);
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

std::optional<QuestMethod::Found> QuestMethod::FindSplit(Scene const& scene, std::size_t predictor,
                                                         Tested const& tested) const {
  if (data_.GetPredictors()[predictor].IsNominal()) return DivideCategories(predictor, tested);
  return FindCut(scene, predictor, tested);
}

std::optional<QuestMethod::Found> QuestMethod::FindCut(Scene const& scene, std::size_t predictor,
                                                       Tested const& tested) const {
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
    found.improvement = ImprovementOfCut(scene, predictor, tested, found.cutPoint);
    if (found.improvement > 0.0) return found;
  }
  return std::nullopt;
}

double QuestMethod::ImprovementOfCut(Scene const& scene, std::size_t predictor,
                                     Tested const& tested, double cutPoint) const {
  std::size_t const numClasses = factors_.size();
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  CaseRows const& rows = data_.GetCaseRows();
  std::size_t const position = rowPositions_[predictor];
  std::uint16_t const* const classes = scene.lists.GetClasses();
  std::int64_t const* const frequencies = scene.lists.GetFrequencies();
  struct Left {
    std::vector<std::int64_t> weights;  // by class
    std::int64_t size = 0;
  };
  std::vector<Left> lefts(scene.slices.size());
  scene.crew.Run(lefts.size(), [&](std::size_t slice) {
    std::vector<std::int64_t> weights(numClasses);
    std::int64_t size = 0;
    auto const add = [&](std::uint32_t place, double value) {
      bool const isLeft = value <= cutPoint;  // a missing one is not
      weights[classes[place]] += isLeft ? scene.lists.WeightAt(place) : 0;
      size += !isLeft ? 0 : frequencies == nullptr ? 1 : frequencies[place];
    };
    if (description.IsCoded()) {
      ForCodes(
          scene.lists, scene.slices[slice], predictor,
          [&](std::uint32_t place, std::uint16_t code) { add(place, description.values[code]); });
    } else {
      ForValues(rows, position, scene.lists, scene.slices[slice], add);
    }
    lefts[slice] = {std::move(weights), size};
  });
  std::vector<std::int64_t> left(numClasses);
  Side leftSide{std::vector<double>(numClasses), 0};
  Side rightSide{std::vector<double>(numClasses), 0};
  for (Left const& ofSlice : lefts) {
    leftSide.size += ofSlice.size;
    for (std::size_t j = 0; j < numClasses; ++j) left[j] += ofSlice.weights[j];
  }
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
  RowSums const rowSums(data_, lists, numbers_);
  std::size_t const fewCases = CasesPerSlice(data_.GetPredictors().size());
  // The sums of a slice take less memory than its cases do.
  std::size_t const sliceSize = std::max({std::size_t{1}, fewCases, 64 * factors_.size()});
  std::vector<RuleList> rules(nodes.size());
  ForNodes(nodes, fewCases, workers, [&](std::size_t node, Crew const& crew) {
    Range const places = nodes[node].ranges.places;
    rules[node] = FindSplitsOf({nodes[node], lists, rowSums, Slice(places, sliceSize), crew});
  });
  return rules;
}

RuleList QuestMethod::FindSplitsOf(Scene const& scene) const {
  auto const& predictors = data_.GetPredictors();
  double const alpha = settings_.GetAlphaOfVariableSelection();
  std::vector<Tested> tested(predictors.size());
  for (std::size_t predictor = 0; predictor < tested.size(); ++predictor) {
    tested[predictor].tests.used = predictors[predictor].used;
    tested[predictor].tests.isOrdered = !predictors[predictor].IsNominal();
  }
  auto const numUsed = std::count_if(predictors.begin(), predictors.end(),
                                     [](GrowingPredictor const& each) { return each.used; });
  if (numUsed == 0) return {};
  bool const hasRows = !data_.GetCaseRows().IsEmpty();
  std::optional<ClassSums> const sums = hasRows ? std::optional(SumRows(scene)) : std::nullopt;
  scene.crew.Run(tested.size(), [&](std::size_t predictor) {
    Tested& each = tested[predictor];
    if (!each.tests.used) return;
    if (!each.tests.isOrdered) {
      TestCategories(scene, predictor, each);
      return;
    }
    if (predictors[predictor].isInRows) {
      each.sums = sums->Of(rowPositions_[predictor]);
    } else {
      SumCodes(scene, predictor, each);
    }
    TestMeans(each);
  });
  if (!IsSelectedByMeans(TestsOf(tested), alpha)) {
    std::optional<ClassSums> const distances =
        hasRows ? std::optional(SumDistances(scene, tested)) : std::nullopt;
    scene.crew.Run(tested.size(), [&](std::size_t predictor) {
      Tested& each = tested[predictor];
      if (!each.tests.used || !each.tests.isOrdered) return;
      if (predictors[predictor].isInRows) {
        TestSpread(distances->Of(rowPositions_[predictor]), each);
      } else {
        TestSpreadOfCodes(scene, predictor, each);
      }
    });
  }

  auto const maxNumRules = static_cast<std::size_t>(std::max(1, settings_.GetMaxNumCompetitors()));
  double const minImprovement = settings_.GetStopRule()->GetMinImprovement();
  RuleList rules;
  SelectedPredictor const selected = SelectPredictor(TestsOf(tested), alpha);
  for (std::size_t const predictor : OrderOf(tested, selected)) {
    if (rules.size() == maxNumRules) break;
    Tested const& each = tested[predictor];
    std::optional<Found> const found = FindSplit(scene, predictor, each);
    if (!found.has_value()) continue;
    if (rules.empty() && found->improvement < minImprovement) break;
    bool const isSelected = predictor == selected.predictor;
    double const logP =
        isSelected ? selected.adjustedLogP
                   : std::min(0.0, each.tests.logP + std::log(static_cast<double>(numUsed)));
    double const statistic = isSelected && selected.byLevene ? each.levene : each.statistic;
    rules.push_back(MakeRule(predictor, *found, statistic, logP));
  }
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
