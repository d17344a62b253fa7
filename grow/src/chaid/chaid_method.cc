#include "chaid/chaid_method.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "chaid/category_tables.h"
#include "chaid/class_groups.h"
#include "chaid/counted_cases.h"
#include "chaid/number_groups.h"
#include "growing/fixed_point.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

bool HaveSameMultiples(FixedWeights const& left, FixedWeights const& right) {
  return left.unit == right.unit && left.multiples == right.multiples;
}

/// By predictor: a row for each code, and one for missing values where there are any.
std::vector<std::size_t> NumRows(TrainingData const& data) {
  std::vector<std::size_t> counts;
  for (GrowingPredictor const& predictor : data.GetPredictors()) {
    counts.push_back(predictor.values.size() + (predictor.hasMissing ? 1U : 0U));
  }
  return counts;
}

ClassTestSettings TestOf(CChaidSettings const& settings, std::size_t numClasses, bool isOrdinal) {
  ClassTestSettings test;
  test.kind = isOrdinal                            ? ClassTestKind::kRowEffects
              : settings.GetChiSquareMethod() == 1 ? ClassTestKind::kLikelihoodRatio
                                                   : ClassTestKind::kPearson;
  test.limits = {settings.GetConvergenceEpsilon(), settings.GetMaxNumIterations()};
  test.scores.resize(numClasses);
  std::iota(test.scores.begin(), test.scores.end(), 0.0);
  Scores const& scores = *settings.GetScores();
  if (scores.GetType() == ScoreTypeDefault) return test;
  auto const numScores = std::min(numClasses, static_cast<std::size_t>(scores.GetNumClasses()));
  for (std::size_t j = 0; j < numScores; ++j) test.scores[j] = scores.Get(static_cast<int>(j));
  return test;
}

/// The decrease of Gini impurity that groups of categories bring, as for CART, on the cases of the
/// table. `weights`: where the weights of the classes begin in a row; `factors`: what a unit of
/// them adds to the probability of a node.
double GiniOf(MergedCategories const& merged, std::span<std::int64_t const> table,
              std::size_t rowSize, std::size_t weights, std::vector<double> const& factors) {
  std::size_t const numClasses = factors.size();
  std::vector<double> groups(merged.numGroups * numClasses);
  std::vector<double> node(numClasses);
  for (std::size_t row = 0; row < merged.groupOf.size(); ++row) {
    if (merged.groupOf[row] == MergedCategories::kNoGroup) continue;
    double* const group = groups.data() + merged.groupOf[row] * numClasses;
    for (std::size_t j = 0; j < numClasses; ++j) {
      double const probability =
          factors[j] * static_cast<double>(table[row * rowSize + weights + j]);
      group[j] += probability;
      node[j] += probability;
    }
  }
  auto const score = [&](double const* probabilities) {
    double sum = 0.0;
    double squares = 0.0;
    for (std::size_t j = 0; j < numClasses; ++j) {
      sum += probabilities[j];
      squares += probabilities[j] * probabilities[j];
    }
    return sum > 0.0 ? squares / sum : 0.0;
  };
  double improvement = -score(node.data());
  for (std::size_t group = 0; group < merged.numGroups; ++group) {
    improvement += score(groups.data() + group * numClasses);
  }
  return std::max(0.0, improvement);
}

/// The sum of squares between groups of categories, in units of weight and number.
double SquaresBetween(MergedCategories const& merged, std::span<NumberSums const> table) {
  std::vector<NumberSums> groups(merged.numGroups);
  NumberSums node;
  for (std::size_t row = 0; row < table.size(); ++row) {
    if (merged.groupOf[row] == MergedCategories::kNoGroup) continue;
    groups[merged.groupOf[row]] += table[row];
    node += table[row];
  }
  std::int64_t const centre = WholeMean(node);
  auto const score = [centre](NumberSums const& sums) {
    auto const excess = static_cast<double>(sums.sum - WideInteger{centre} * sums.weight);
    return sums.weight > 0 ? excess * excess / static_cast<double>(sums.weight) : 0.0;
  };
  double squares = -score(node);
  for (NumberSums const& group : groups) squares += score(group);
  return std::max(0.0, squares);
}

/// Sends missing values to a child. The rule itself sends them to its last child, or to a new one
/// behind it; any other child has to be the last for a moment.
void MapMissing(SplitRuleImp& rule, int child) {
  int const numChildren = rule.GetNumChildren();
  if (child >= numChildren) {
    rule.AddMissingValueMapping(true);
    return;
  }
  std::vector<int> swapped(static_cast<std::size_t>(numChildren));
  std::iota(swapped.begin(), swapped.end(), 0);
  std::swap(swapped[static_cast<std::size_t>(child)], swapped.back());
  bool const isLast = child == numChildren - 1;
  if (!isLast) rule.ReorderMappings(swapped);
  rule.AddMissingValueMapping(false);
  if (!isLast) rule.ReorderMappings(swapped);
}

/// So many predictors are counted in one pass over the cases.
constexpr std::size_t kCountedTogether = 2;

CategoryCodes CodesOf(GrowingPredictor const& predictor) {
  return {predictor.codes.data(), static_cast<std::uint16_t>(predictor.values.size())};
}

}  // namespace

ChaidMethod::ChaidMethod(TrainingData const& data, ChaidSettings const& settings,
                         ClassModel const* classes, double minChildSize, double totalWeight)
    : data_(data),
      settings_(settings),
      classes_(classes),
      minChildSize_(minChildSize),
      totalWeight_(totalWeight),
      weighted_(!HaveSameMultiples(data.GetWeights(), data.GetFrequencies())),
      numRows_(NumRows(data)),
      rowSize_(classes == nullptr ? 1
               : weighted_        ? 2 * data.GetNumClasses()
                                  : data.GetNumClasses()) {
  CoreSettings const& core = *settings.GetCoreSettings();
  for (std::size_t predictor = 0; predictor < numRows_.size(); ++predictor) {
    mayMerge_.push_back(core.GetPredictor(static_cast<int>(predictor))->GetValueMergeFlag() ? 1
                                                                                            : 0);
  }
  if (classes != nullptr) {
    bool const isOrdinal = core.GetTarget()->GetMeasurementLevel() == global::MeasurementOrdinal;
    test_ = TestOf(dynamic_cast<CChaidSettings const&>(settings), data.GetNumClasses(), isOrdinal);
  } else {
    numbers_ = CoarsenForSquares(data.GetNumbers(), data.GetWeights());
  }
}

/// Where each case adds to a row of entries for all nodes, and for the cases of no node behind
/// them: the entries of its node begin at its position among `nodes` times the size of a row.
template <class Cases>
std::vector<std::uint32_t> ChaidMethod::EntriesOfCases(CaseLists const& lists,
                                                       std::span<GrowingNode const> nodes,
                                                       Cases const& counted,
                                                       Workers& workers) const {
  std::vector<std::uint32_t> entries(data_.GetNumCases(),
                                     static_cast<std::uint32_t>(nodes.size() * rowSize_));
  workers.Run(nodes.size(), [&](std::size_t node) {
    std::span<std::uint32_t const> const cases = lists.Cases(nodes[node].ranges);
    ForSlices(cases.size(), workers, [&](std::size_t begin, std::size_t end) {
      for (std::uint32_t const index : cases.subspan(begin, end - begin)) {
        entries[index] = static_cast<std::uint32_t>(node * rowSize_ + counted.EntryOf(index));
      }
    });
  });
  return entries;
}

/// Sums up the cases of each node by the categories of each predictor, and merges these. `improve`:
/// what groups of the categories of a table improve.
///
/// Where the nodes have most of the cases, all are read in their order, once for some predictors
/// together, and each case finds the entry of its node. Otherwise the cases of one node are read
/// after those of another.
template <class Groups, class Cases, class Improve>
std::vector<ChaidMethod::Found> ChaidMethod::FindGroups(CaseLists const& lists,
                                                        std::span<GrowingNode const> nodes,
                                                        Groups const& groups, Cases const& counted,
                                                        Improve const& improve,
                                                        Workers& workers) const {
  using Entry = typename Groups::Entry;
  MergeSettings const settings{settings_.GetAlphaOfMerge(),
                               settings_.GetAlphaOfMergeSplit(),
                               settings_.GetAllowSplitMerge(),
                               settings_.GetSplitMergeMethod() == SplitMergeMethod1,
                               settings_.GetUseBonferroniAdj(),
                               minChildSize_,
                               kMaxChildren};
  auto const& predictors = data_.GetPredictors();
  std::size_t const numPredictors = predictors.size();
  std::vector<Found> found(nodes.size() * numPredictors);  // [node][predictor]
  auto const merge = [&](std::size_t node, std::size_t predictor, CategoryMerger<Groups>& merger,
                         std::vector<Entry> const& table) {
    CategoryKind const kind =
        predictors[predictor].IsNominal() ? CategoryKind::kNominal : CategoryKind::kOrdinal;
    MergedCategories const& merged =
        merger.Merge(table, kind, predictors[predictor].hasMissing, mayMerge_[predictor] != 0);
    if (merged.numGroups < 2) return;
    found[node * numPredictors + predictor] = {merged, improve(merged, table)};
  };

  std::vector<std::size_t> together;  // predictors whose tables of all nodes are made in one pass
  std::vector<std::size_t> alone;
  std::size_t numInNodes = 0;
  for (GrowingNode const& node : nodes) numInNodes += node.ranges.places.Size();
  bool const readsAll = numInNodes >= data_.GetNumCases() / 4;
  constexpr std::size_t kMaxBytes = std::size_t{1} << 25;
  for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
    if (!predictors[predictor].used) continue;
    std::size_t const size = numRows_[predictor] * (nodes.size() + 1) * rowSize_ * sizeof(Entry);
    (readsAll && size <= kMaxBytes ? together : alone).push_back(predictor);
  }
  std::vector<std::uint32_t> const entries = together.empty()
                                                 ? std::vector<std::uint32_t>()
                                                 : EntriesOfCases(lists, nodes, counted, workers);
  std::size_t const numTasks = (together.size() + kCountedTogether - 1) / kCountedTogether;
  workers.Run(numTasks, [&](std::size_t task) {
    std::size_t const begin = task * kCountedTogether;
    std::size_t const end = std::min(together.size(), begin + kCountedTogether);
    std::vector<CategoryTables<Entry>> tables;  // by predictor; behind the nodes, of no node
    std::vector<CategoryCodes> codes;
    for (std::size_t position = begin; position < end; ++position) {
      tables.emplace_back(numRows_[together[position]], nodes.size() + 1, rowSize_);
      codes.push_back(CodesOf(predictors[together[position]]));
    }
    ForSlices(data_.GetNumCases(), workers, [&](std::size_t first, std::size_t last) {
      if (tables.size() == kCountedTogether) {
        CategoryTables<Entry>::template Add<kCountedTogether>(tables, codes, entries, first, last,
                                                              counted);
      } else {
        CategoryTables<Entry>::template Add<1>(tables, codes, entries, first, last, counted);
      }
    });
    CategoryMerger<Groups> merger(groups, settings, &workers);
    std::vector<Entry> table;  // of one node
    for (std::size_t position = begin; position < end; ++position) {
      for (std::size_t node = 0; node < nodes.size(); ++node) {
        tables[position - begin].CopyTable(node, table);
        merge(node, together[position], merger, table);
      }
    }
  });
  workers.Run(alone.size(), [&](std::size_t task) {
    CategoryCodes const codes = CodesOf(predictors[alone[task]]);
    CategoryMerger<Groups> merger(groups, settings, &workers);
    CategoryTables<Entry> tables(numRows_[alone[task]], 1, rowSize_);
    std::vector<Entry> table;
    for (std::size_t node = 0; node < nodes.size(); ++node) {
      tables.Clear();
      std::span<std::uint32_t const> const cases = lists.Cases(nodes[node].ranges);
      ForSlices(cases.size(), workers, [&](std::size_t begin, std::size_t end) {
        tables.Add(cases.subspan(begin, end - begin), codes, counted);
      });
      tables.CopyTable(0, table);
      merge(node, alone[task], merger, table);
    }
  });
  return found;
}

std::vector<ChaidMethod::Found> ChaidMethod::FindClassGroups(CaseLists const& lists,
                                                             std::span<GrowingNode const> nodes,
                                                             Workers& workers) const {
  std::size_t const numClasses = data_.GetNumClasses();
  std::uint16_t const* const classes = data_.GetClasses().data();
  FixedWeights const& frequencies = data_.GetFrequencies();
  FixedWeights const& weights = data_.GetWeights();
  ClassGroups const groups(test_, numClasses, weighted_, frequencies.unit);
  std::vector<double> factors = classes_->GetSplitFactors();
  for (double& factor : factors) factor *= weights.unit;
  auto const improve = [&](MergedCategories const& merged, std::span<std::int64_t const> table) {
    return GiniOf(merged, table, rowSize_, weighted_ ? numClasses : 0, factors);
  };
  auto const find = [&](auto const& counted) {
    return FindGroups(lists, nodes, groups, counted, improve, workers);
  };
  if (weighted_) return find(WeightedCases(classes, numClasses, frequencies, weights));
  if (frequencies.multiples.empty()) return find(SingleCases(classes));
  return find(RepeatedCases(classes, frequencies.multiples.data()));
}

std::vector<ChaidMethod::Found> ChaidMethod::FindNumberGroups(CaseLists const& lists,
                                                              std::span<GrowingNode const> nodes,
                                                              Workers& workers) const {
  FixedWeights const& frequencies = data_.GetFrequencies();
  FixedWeights const& weights = data_.GetWeights();
  double const scale = numbers_.unit * numbers_.unit * weights.unit / totalWeight_;
  auto const improve = [&](MergedCategories const& merged, std::span<NumberSums const> table) {
    return SquaresBetween(merged, table) * scale;
  };
  return FindGroups(lists, nodes, NumberGroups(frequencies.unit),
                    NumberCases(numbers_, frequencies, weights), improve, workers);
}

std::vector<RuleList> ChaidMethod::FindSplits(CaseLists const& lists,
                                              std::span<GrowingNode const> nodes,
                                              Workers& workers) {
  std::vector<Found> const found = classes_ != nullptr ? FindClassGroups(lists, nodes, workers)
                                                       : FindNumberGroups(lists, nodes, workers);
  std::size_t const numPredictors = data_.GetPredictors().size();
  auto const maxNumRules = static_cast<std::size_t>(std::max(1, settings_.GetMaxNumCompetitors()));
  double const logAlpha = std::log(settings_.GetAlphaOfSplitNode());
  double const minImprovement = settings_.GetStopRule()->GetMinImprovement();
  std::vector<RuleList> rules(nodes.size());
  for (std::size_t node = 0; node < nodes.size(); ++node) {
    Found const* const ofNode = found.data() + node * numPredictors;
    std::vector<std::size_t> best;
    for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
      if (ofNode[predictor].merged.numGroups >= 2) best.push_back(predictor);
    }
    std::stable_sort(best.begin(), best.end(), [&](std::size_t a, std::size_t b) {
      return ofNode[a].merged.adjustedLogP < ofNode[b].merged.adjustedLogP;
    });
    if (best.size() > maxNumRules) best.resize(maxNumRules);
    if (best.empty() || !(ofNode[best.front()].merged.adjustedLogP <= logAlpha) ||
        ofNode[best.front()].improvement < minImprovement) {
      continue;
    }
    for (std::size_t const predictor : best) {
      rules[node].push_back(MakeRule(predictor, ofNode[predictor]));
    }
  }
  return rules;
}

std::vector<RuleList> ChaidMethod::FindSurrogates(CaseLists const&,
                                                  std::span<GrowingNode const> nodes,
                                                  std::vector<SplitRuleImp const*> const&,
                                                  ChildOfPlace const&, Workers&) {
  return std::vector<RuleList>(nodes.size());
}

std::unique_ptr<SplitRuleImp> ChaidMethod::MakeRule(std::size_t predictor,
                                                    Found const& found) const {
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  std::vector<std::uint16_t> const& groupOf = found.merged.groupOf;
  std::vector<std::size_t> present;  // codes with a group, ascending
  for (std::size_t code = 0; code < description.values.size(); ++code) {
    if (groupOf[code] != MergedCategories::kNoGroup) present.push_back(code);
  }
  auto const position = static_cast<int>(predictor);
  std::unique_ptr<SplitRuleImp> rule;
  if (description.IsNominal()) {
    auto nominal = std::make_unique<NSplitRule>(position, 0);
    for (std::size_t const code : present) {
      nominal->SetCatMapping(static_cast<int>(description.values[code]), groupOf[code]);
    }
    rule = std::move(nominal);
  } else {
    rule = std::make_unique<OSplitRule>(description.column->description.missingValue, position);
    // From the lowest up, each interval without a lower end: one with both ends might be refused,
    // since intervals know no differences below 1.
    for (std::size_t place = 0; place + 1 < present.size(); ++place) {
      if (groupOf[present[place]] == groupOf[present[place + 1]]) continue;
      OValueSet upToCut;
      upToCut.SetRightEnd(description.values[present[place]]);
      upToCut.SetOpenRight(false);
      rule->AddMappedValues(upToCut);
    }
    rule->AddMappedValues(OValueSet());  // all that is above
  }
  if (description.hasMissing && groupOf.back() != MergedCategories::kNoGroup) {
    MapMissing(*rule, groupOf.back());
  }
  rule->SetStatistic(SplitImprovement, found.improvement);
  rule->SetStatistic(SplitTestStatistic, found.merged.statistic.value);
  rule->SetStatistic(SplitLogPValue, found.merged.adjustedLogP);
  return rule;
}

}  // namespace tree::grow
