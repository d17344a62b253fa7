// What has to be true of every tree, on random data. Seeds are in the names of what fails.

#include <algorithm>
#include <cmath>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

double const kMissing = systemMissingValue();

/// Columns of random data, so that they can be shuffled, repeated and changed before use.
struct Columns {
  bool classes = true;
  std::vector<double> target;
  std::vector<double> counts;   // whole frequencies
  std::vector<double> weights;  // fractions
  std::vector<std::vector<double>> ordered;
  std::vector<std::vector<double>> nominal;

  SampleData Make(bool withCounts, bool withWeights = false) const {
    SampleData data(target.size());
    classes ? data.Classes(target) : data.Numbers(target);
    for (auto const& column : ordered) data.Ordered(column);
    for (auto const& column : nominal) data.Nominal(column);
    if (withCounts) data.Frequencies(counts);
    if (withWeights) data.Weights(weights);
    return data;
  }
  /// The rows at these positions, in their order.
  Columns Pick(std::vector<std::size_t> const& rows) const {
    auto const pick = [&](std::vector<double> const& values) {
      std::vector<double> picked;
      for (std::size_t const row : rows) picked.push_back(values[row]);
      return picked;
    };
    Columns result;
    result.classes = classes;
    result.target = pick(target);
    result.counts = pick(counts);
    result.weights = pick(weights);
    for (auto const& column : ordered) result.ordered.push_back(pick(column));
    for (auto const& column : nominal) result.nominal.push_back(pick(column));
    return result;
  }
};

/// Few values, so that ties abound; some missing; the target follows two of the predictors.
Columns RandomColumns(std::uint32_t seed, bool classes, std::uint32_t numClasses = 3) {
  RandomNumbers random(seed);
  std::size_t const numCases = 20 + random.Below(60);
  Columns columns;
  columns.classes = classes;
  auto const draw = [&](std::uint32_t numValues, bool missing) {
    std::vector<double> values;
    for (std::size_t row = 0; row < numCases; ++row) {
      bool const gap = missing && random.Below(6) == 0;
      values.push_back(gap ? kMissing : static_cast<double>(random.Below(numValues)));
    }
    return values;
  };
  columns.ordered = {draw(7, false), draw(1000, true), draw(4, true)};
  columns.nominal = {draw(4, false), draw(6, true)};
  columns.counts = draw(4, false);
  for (double& count : columns.counts) count += 1.0;
  for (std::size_t row = 0; row < numCases; ++row) {
    double const signal = columns.ordered[0][row] + 2.0 * columns.nominal[0][row];
    double const value = signal + random.Below(4);
    columns.target.push_back(classes ? std::fmod(std::floor(value / 3.0), numClasses) : value);
  }
  for (std::size_t row = 0; row < numCases; ++row) {
    columns.weights.push_back(random.Multiple(0.1, 30));
  }
  return columns;
}

/// All ordered predictors sorted, or all of them coded.
constexpr GrowOptions kSorted{1, 0.3, 0};
constexpr GrowOptions kCoded{1, 0.3, 256};

std::unique_ptr<Grower> MakeFor(SampleData const& data, GrowOptions const& options) {
  bool const classes = data.GetData().GetColumn(data.GetRoles().target).IsNominal();
  return classes ? data.Make(data.ClassSettings(), options)
                 : data.Make(data.NumberSettings(), options);
}

std::string Grown(SampleData const& data, GrowOptions const& options) {
  std::unique_ptr<Grower> const grower = MakeFor(data, options);
  EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
  return Describe(*grower->GetRootNode());
}

class EverySeed : public testing::TestWithParam<std::uint32_t> {};
INSTANTIATE_TEST_SUITE_P(Trees, EverySeed, testing::Range(1U, 41U));

TEST_P(EverySeed, SortedAndCodedPredictorsGrowTheSameTree) {
  for (bool const classes : {true, false}) {
    for (bool const counted : {true, false}) {
      SampleData const data = RandomColumns(GetParam(), classes).Make(counted);

      EXPECT_EQ(Grown(data, kSorted), Grown(data, kCoded));
    }
  }
}

TEST_P(EverySeed, ShuffledRowsGrowTheSameTree) {
  for (bool const classes : {true, false}) {
    Columns const columns = RandomColumns(GetParam(), classes);
    std::vector<std::size_t> rows(columns.target.size());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    RandomNumbers random(GetParam() + 1000);
    for (std::size_t i = rows.size(); i > 1; --i) {
      std::swap(rows[i - 1], rows[random.Below(static_cast<std::uint32_t>(i))]);
    }

    for (GrowOptions const& options : {kSorted, kCoded}) {
      EXPECT_EQ(Grown(columns.Make(true), options), Grown(columns.Pick(rows).Make(true), options));
    }
  }
}

/// Each row as often as its frequency says, where it is.
std::vector<std::size_t> RepeatedRows(Columns const& columns) {
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < columns.target.size(); ++row) {
    rows.insert(rows.end(), static_cast<std::size_t>(columns.counts[row]), row);
  }
  return rows;
}

TEST_P(EverySeed, FrequenciesGrowTheTreeOfRepeatedCases) {
  for (bool const classes : {true, false}) {
    Columns const columns = RandomColumns(GetParam(), classes);
    std::vector<std::size_t> const rows = RepeatedRows(columns);

    for (GrowOptions const& options : {kSorted, kCoded}) {
      EXPECT_EQ(Grown(columns.Make(true), options), Grown(columns.Pick(rows).Make(false), options));
    }
  }
}

/// All that a validation shows, to the last bit.
template <class Settings>
std::string Validated(SampleData const& data, Settings settings, ValidationType type) {
  settings.GetValidationSpec()->Set(type);
  settings.GetValidationSpec()->SetNumCVFolds(4);
  std::unique_ptr<Grower> const grower = data.Make(settings, kSorted);
  std::vector<PruningStep> steps;
  EXPECT_TRUE(grower->Grow() && grower->GetPruningSequence(&steps) && grower->Validate())
      << grower->GetFailureMessage();
  std::ostringstream out;
  out << std::hexfloat << Describe(*grower->GetRootNode()) << grower->GetNumCases(TrainingSample)
      << " + " << grower->GetNumCases(TestSample) << " cases, risk "
      << grower->GetStatistics()->GetRisk() << ' ' << grower->GetStatistics()->GetStdError();
  for (PruningStep const& step : steps) {
    out << '\n'
        << step.numTerminalNodes << ' ' << step.complexity << ' ' << step.risk << ' '
        << step.stdError;
  }
  return out.str();
}

TEST_P(EverySeed, ValidationDrawsRepeatedCasesOneByOne) {
  for (bool const classes : {true, false}) {
    Columns const columns = RandomColumns(GetParam(), classes);
    for (bool const weighted : {false, true}) {
      SampleData const counted = columns.Make(true, weighted);
      SampleData const repeated = columns.Pick(RepeatedRows(columns)).Make(false, weighted);
      for (ValidationType const type : {ValidationSplitSample, ValidationCrossValidation}) {
        SCOPED_TRACE(type);
        if (classes) {
          EXPECT_EQ(Validated(counted, counted.ClassSettings(), type),
                    Validated(repeated, repeated.ClassSettings(), type));
        } else {
          EXPECT_EQ(Validated(counted, counted.NumberSettings(), type),
                    Validated(repeated, repeated.NumberSettings(), type));
        }
      }
    }
  }
}

TEST_P(EverySeed, AnyNumberOfThreadsGrowsTheSameTree) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);
    std::string const alone = Grown(data, kSorted);
    for (int const numThreads : {2, 3, 7}) {
      std::unique_ptr<Grower> const grower = MakeFor(data, {numThreads, 0.3, 0});
      ASSERT_TRUE(grower->Grow());

      EXPECT_EQ(Describe(*grower->GetRootNode()), alone) << numThreads << " threads";
    }
  }
}

/// The node of each case, by routing.
std::vector<unsigned int> RouteAll(Grower const& grower, SampleData const& data) {
  std::vector<unsigned int> nodes;
  for (std::size_t row = 0; row < data.GetData().GetNumCases(); ++row) {
    nodes.push_back(
        grower.GetTree()->DropObservationThroughTree(data.Case(row).data(), nullptr)->GetId());
  }
  return nodes;
}

TEST_P(EverySeed, MonotoneTransformsChangeNothingButCutPoints) {
  Columns columns = RandomColumns(GetParam(), true);
  SampleData const plain = columns.Make(false);
  for (auto& column : columns.ordered) {
    for (double& value : column) {
      if (value != kMissing) value = std::exp(value / 100.0) - 5.0;
    }
  }
  SampleData const bent = columns.Make(false);
  auto const grower = plain.Make(plain.ClassSettings());
  auto const bentGrower = bent.Make(bent.ClassSettings());
  ASSERT_TRUE(grower->Grow());
  ASSERT_TRUE(bentGrower->Grow());

  EXPECT_EQ(RouteAll(*grower, plain), RouteAll(*bentGrower, bent));
}

TEST_P(EverySeed, RoutingSendsEveryCaseWhereGrowingPutIt) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);
    std::unique_ptr<Grower> const grower = MakeFor(data, kSorted);
    ASSERT_TRUE(grower->Grow());
    std::vector<unsigned int> const nodes = RouteAll(*grower, data);

    PrefixNodeIterator walk(grower->GetRootNode());
    while (Node const* const node = walk.Next()) {
      if (node->GetNumChildren() > 0) continue;
      auto const count = std::count(nodes.begin(), nodes.end(), node->GetId());
      EXPECT_EQ(static_cast<double>(count), node->GetNodeSize(TrainingSample));
    }
  }
}

// ---- No legal split is better ----

double GiniOf(std::vector<double> const& counts) {
  double const sum = std::accumulate(counts.begin(), counts.end(), 0.0);
  double squares = 0.0;
  for (double const count : counts) squares += sum > 0.0 ? count * count / (sum * sum) : 0.0;
  return sum * (1.0 - squares);
}

double SpreadOf(std::vector<double> const& values) {
  if (values.empty()) return 0.0;
  double const mean =
      std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
  double sum = 0.0;
  for (double const value : values) sum += (value - mean) * (value - mean);
  return sum;
}

/// Impurity, times the number of cases.
double ImpurityOf(SampleData const& data, bool classes, std::vector<std::size_t> const& rows) {
  Column const& target = data.GetData().GetColumn(data.GetRoles().target);
  std::vector<double> counts(10);
  std::vector<double> values;
  for (std::size_t const row : rows) {
    values.push_back(target.values[row]);
    if (classes) counts[static_cast<std::size_t>(target.values[row])] += 1.0;
  }
  return classes ? GiniOf(counts) : SpreadOf(values);
}

/// What dividing the rows with a value by a set of values improves.
double ImprovementOf(SampleData const& data, bool classes, std::vector<std::size_t> const& rows,
                     int predictor, std::set<double> const& leftValues) {
  Column const& column =
      data.GetData().GetColumn(data.GetRoles().predictors[static_cast<std::size_t>(predictor)]);
  std::vector<std::size_t> both;
  std::vector<std::size_t> left;
  std::vector<std::size_t> right;
  for (std::size_t const row : rows) {
    if (column.IsMissing(row)) continue;
    both.push_back(row);
    (leftValues.count(column.values[row]) != 0 ? left : right).push_back(row);
  }
  if (left.empty() || right.empty()) return 0.0;
  return (ImpurityOf(data, classes, both) - ImpurityOf(data, classes, left) -
          ImpurityOf(data, classes, right)) /
         static_cast<double>(data.GetData().GetNumCases());
}

/// The greatest improvement of all legal splits by a predictor, one after the other.
double BestByForce(SampleData const& data, bool classes, std::vector<std::size_t> const& rows,
                   int predictor) {
  Column const& column =
      data.GetData().GetColumn(data.GetRoles().predictors[static_cast<std::size_t>(predictor)]);
  std::set<double> values;
  for (std::size_t const row : rows) {
    if (!column.IsMissing(row)) values.insert(column.values[row]);
  }
  std::vector<double> const sorted(values.begin(), values.end());
  double best = 0.0;
  if (!column.IsNominal()) {
    std::set<double> left;
    for (double const value : sorted) {
      left.insert(value);
      best = std::max(best, ImprovementOf(data, classes, rows, predictor, left));
    }
    return best;
  }
  for (std::uint32_t mask = 1; mask + 1 < (1U << sorted.size()); ++mask) {
    std::set<double> left;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
      if ((mask >> i & 1U) != 0) left.insert(sorted[i]);
    }
    best = std::max(best, ImprovementOf(data, classes, rows, predictor, left));
  }
  return best;
}

TEST_P(EverySeed, NoLegalSplitIsBetterThanTheChosenOne) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);
    std::unique_ptr<Grower> const grower = MakeFor(data, kSorted);
    ASSERT_TRUE(grower->Grow());

    PrefixNodeIterator walk(grower->GetRootNode());
    while (Node const* const each = walk.Next()) {
      auto const& node = dynamic_cast<NodeImp const&>(*each);
      std::vector<std::size_t> rows;
      for (std::size_t row = 0; row < data.GetData().GetNumCases(); ++row) {
        if (grower->GetTree()->DropObservationThroughTree(data.Case(row).data(), &node) == &node) {
          rows.push_back(row);
        }
      }
      double best = 0.0;
      for (int predictor = 0; predictor < static_cast<int>(data.GetNumPredictors()); ++predictor) {
        double const byForce = BestByForce(data, classes, rows, predictor);
        int const position = node.FindCompetitorPos(predictor);
        if (position >= 0) {
          double const kept = node.GetCompetitorImp(static_cast<unsigned int>(position))
                                  ->GetStatistic(SplitImprovement);
          EXPECT_NEAR(kept, byForce, 1e-9) << "node " << node.GetId() << " by " << predictor;
        }
        best = std::max(best, byForce);
      }
      double const chosen = node.GetNumCompetitors() > 0
                                ? node.GetCompetitorImp(0)->GetStatistic(SplitImprovement)
                                : 0.0;
      bool const ended = ImpurityOf(data, classes, rows) < 1e-9 || rows.size() < 2;
      EXPECT_NEAR(chosen, ended ? 0.0 : best, 1e-9) << "node " << node.GetId();
    }
  }
}

TEST_P(EverySeed, PruningSequencesAreNestedAndRiskGrowsAsTheyShrink) {
  for (bool const classes : {true, false}) {
    SampleData const data = RandomColumns(GetParam(), classes).Make(false);
    std::unique_ptr<Grower> const grower = MakeFor(data, kSorted);
    ASSERT_TRUE(grower->Grow());
    std::vector<PruningStep> steps;
    ASSERT_TRUE(grower->GetPruningSequence(&steps));

    EXPECT_EQ(steps.front().numTerminalNodes, grower->GetNumNodes(TerminalNodes));
    EXPECT_EQ(steps.back().numTerminalNodes, 1);
    for (std::size_t step = 1; step < steps.size(); ++step) {
      EXPECT_LT(steps[step].numTerminalNodes, steps[step - 1].numTerminalNodes);
      EXPECT_GE(steps[step].complexity, steps[step - 1].complexity);
      EXPECT_GE(steps[step].risk, steps[step - 1].risk - 1e-12);
      // Each node that was pruned stays pruned, or goes with one above it.
      for (unsigned int const id : steps[step - 1].nodesToPrune) {
        auto const covers = [&](unsigned int top) {
          for (Node const* node = grower->FindNode(id); node != nullptr; node = node->GetParent()) {
            if (node->GetId() == top) return true;
          }
          return false;
        };
        EXPECT_TRUE(
            std::any_of(steps[step].nodesToPrune.begin(), steps[step].nodesToPrune.end(), covers));
      }
    }
  }
}

TEST_P(EverySeed, StepsOfTheSequenceAreWhatTheySay) {
  SampleData const data = RandomColumns(GetParam(), true).Make(false);
  auto const grower = data.Make(data.ClassSettings());
  ASSERT_TRUE(grower->Grow());
  std::vector<PruningStep> steps;
  ASSERT_TRUE(grower->GetPruningSequence(&steps));

  for (PruningStep const& step : steps) {
    ASSERT_TRUE(grower->Grow());
    for (unsigned int const id : step.nodesToPrune) ASSERT_TRUE(grower->PruneNode(id));
    ASSERT_TRUE(grower->Validate());

    EXPECT_EQ(grower->GetNumNodes(TerminalNodes), step.numTerminalNodes);
    EXPECT_NEAR(grower->GetStatistics()->GetRisk(), step.risk, 1e-12);
    EXPECT_NEAR(grower->GetStatistics()->GetStdError(), step.stdError, 1e-12);
  }
}

}  // namespace
}  // namespace tree::grow
