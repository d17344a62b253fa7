#include "cart/row_surrogates.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "growing/row_ranges.h"

namespace tree::grow {
namespace {

using Placed = SurrogateSearch::Placed;

Placed PlacedOf(CaseLists const& lists, ChildOfPlace const& childOf) {
  Placed placed{};
  for (std::uint32_t place = 0; place < childOf.size(); ++place) {
    if (childOf[place] != kNoChild) placed[childOf[place]] += lists.WeightAt(place);
  }
  return placed;
}

/// What each predictor gives as a surrogate, from rows.
template <class Weight>
std::vector<FoundSurrogate> FindInRows(Sample const& cases, ChildOfPlace const& childOf,
                                       std::size_t primary, std::size_t maxNumSurrogates,
                                       int numThreads, bool byAll) {
  PreparedSample sample(cases, Form::kInRows, numThreads);
  CaseLists const lists = sample.MakeLists();
  NodeImp root;
  root.SetNumPredictors(static_cast<unsigned int>(cases.predictors.size()));
  SummariseRows(sample.GetData(), lists, lists.GetRoot().places, root);
  GrowingNode node;
  node.node = &root;
  node.ranges = lists.GetRoot();
  std::vector<FoundSurrogate> found(cases.predictors.size());
  RowSurrogates<Weight> surrogates(sample.GetData(), lists, childOf, maxNumSurrogates,
                                   sample.GetWorkers());
  // Twice, since memory is kept.
  for (int attempt = 0; attempt < 2; ++attempt) {
    found.assign(cases.predictors.size(), {});
    surrogates.Find(node, PlacedOf(lists, childOf), primary, Crew(sample.GetWorkers(), byAll),
                    found);
  }
  return found;
}

/// The same from sorted lists.
std::vector<FoundSurrogate> FindInLists(Sample const& cases, ChildOfPlace const& childOf,
                                        std::size_t primary) {
  PreparedSample sample(cases, Form::kSorted);
  CaseLists const lists = sample.MakeLists();
  SurrogateSearch search(sample.GetData(), lists, childOf, sample.GetWorkers());
  std::vector<FoundSurrogate> found(cases.predictors.size());
  for (std::size_t predictor = 0; predictor < found.size(); ++predictor) {
    if (predictor == primary) continue;
    found[predictor] = search.Find(lists.GetRoot(), PlacedOf(lists, childOf), predictor);
  }
  return found;
}

/// Those that count among the best ones have to be the same; others may be left out.
void ExpectSameBest(std::vector<FoundSurrogate> const& found,
                    std::vector<FoundSurrogate> const& expected, std::size_t maxNumSurrogates) {
  std::vector<double> associations;
  associations.reserve(expected.size());
  for (FoundSurrogate const& each : expected) associations.push_back(each.association);
  std::sort(associations.begin(), associations.end(), std::greater<>());
  double const limit = associations[std::min(maxNumSurrogates, associations.size()) - 1];
  for (std::size_t predictor = 0; predictor < expected.size(); ++predictor) {
    SCOPED_TRACE(predictor);
    if (expected[predictor].association < limit && found[predictor].association == 0.0) continue;
    EXPECT_EQ(found[predictor].association, expected[predictor].association);
    EXPECT_EQ(found[predictor].cutPoint, expected[predictor].cutPoint);
    EXPECT_EQ(found[predictor].reversed, expected[predictor].reversed);
  }
}

/// Predictors that have more and more to do with the first one, which splits.
Sample RandomSample(std::uint32_t seed, std::size_t numCases, std::size_t numPredictors) {
  RandomNumbers random(seed);
  Sample sample{.target = std::vector<double>(numCases)};
  sample.predictors.resize(numPredictors);
  for (std::size_t index = 0; index < numCases; ++index) {
    double const first = random.Multiple(0.01, 100);
    for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
      double value = random.Multiple(0.001, 1 + random.Below(3000)) +
                     first * static_cast<double>(predictor % 4);
      if (seed % 3 == 0) value = std::exp(4.0 * value);
      if (seed % 4 == 0 && random.Below(9) == 0) value = kMissing;
      if (seed % 5 == 0 && random.Below(60) == 0) value = HUGE_VAL;
      sample.predictors[predictor].values.push_back(predictor == 0 ? first : value);
    }
    if (seed % 2 == 0) sample.weights.push_back(1.0 + random.Below(4));
  }
  return sample;
}

ChildOfPlace SplitByFirst(Sample const& sample, std::uint32_t seed) {
  RandomNumbers random(seed);
  ChildOfPlace childOf;
  for (double const value : sample.predictors[0].values) {
    childOf.push_back(random.Below(50) == 0 ? kNoChild : value < 0.4 ? 0 : 1);
  }
  return childOf;
}

TEST(RowSurrogates, AreThoseOfSortedLists) {
  for (std::uint32_t seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    Sample const sample = RandomSample(seed, 2 + seed * 13, 9);
    ChildOfPlace const childOf = SplitByFirst(sample, seed);
    std::vector<FoundSurrogate> const expected = FindInLists(sample, childOf, 0);
    for (std::size_t const maxNum : {1U, 3U, 8U}) {
      auto const find =
          sample.weights.empty() ? FindInRows<std::uint32_t> : FindInRows<std::int64_t>;

      ExpectSameBest(find(sample, childOf, 0, maxNum, 1, false), expected, maxNum);
    }
  }
}

TEST(RowSurrogates, AreThoseOfSortedListsOnLongTails) {
  struct {
    char const* name;
    double (*stretch)(double);  // of a number between -1 and 1
  } const kRows[] = {
      {"above", [](double share) { return std::exp(12.0 * share); }},
      {"below", [](double share) { return 7.0 - std::exp(12.0 * share); }},
      {"on both sides", [](double share) { return std::pow(std::tan(1.57 * share), 3); }},
      {"with ties", [](double share) { return std::round(std::exp(12.0 * share)); }},
      {"half of them tied",
       [](double share) { return share < 0.0 ? 0.0 : std::exp(15.0 * share); }},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    for (std::uint32_t seed = 0; seed < 8; ++seed) {
      SCOPED_TRACE(seed);
      bool const isMixed = seed % 2 == 0;
      RandomNumbers random(seed);
      Sample sample{.target = std::vector<double>(3000)};
      sample.predictors.resize(6);
      for (std::size_t index = 0; index < sample.GetNumCases(); ++index) {
        double const first = random.Multiple(0.01, 100);
        sample.predictors[0].values.push_back(first);
        for (std::size_t predictor = 1; predictor < 6; ++predictor) {
          double const mean = 0.5 * (first - 0.5) + random.Multiple(0.001, 1400) - 0.7;
          double const share = std::clamp(mean, -0.999, 0.999);
          double value = isMixed && predictor == 3 ? share : row.stretch(share);
          if (seed % 4 == 1 && random.Below(9) == 0) value = kMissing;
          if (seed % 4 >= 2 && random.Below(60) == 0) value = HUGE_VAL;
          sample.predictors[predictor].values.push_back(value);
        }
      }
      ChildOfPlace const childOf = SplitByFirst(sample, seed);
      PreparedSample const prepared(sample, Form::kInRows);
      ASSERT_FALSE(prepared.GetData().GetCaseRows().GetScales()[1].IsPlain());

      auto const found = FindInRows<std::uint32_t>(sample, childOf, 0, 5, 2, seed % 3 == 0);

      ExpectSameBest(found, FindInLists(sample, childOf, 0), 5);
    }
  }
}

TEST(RowSurrogates, AreTheSameForAnyNumberOfThreads) {
  for (std::uint32_t seed = 1; seed < 6; seed += 2) {
    SCOPED_TRACE(seed);
    Sample const sample = RandomSample(seed, 30000, 5);
    ChildOfPlace const childOf = SplitByFirst(sample, seed);
    std::vector<FoundSurrogate> const expected = FindInLists(sample, childOf, 0);
    for (int const numThreads : {1, 2, 3, 8}) {
      SCOPED_TRACE(numThreads);

      ExpectSameBest(FindInRows<std::uint32_t>(sample, childOf, 0, 2, numThreads, true), expected,
                     2);
    }
  }
}

TEST(RowSurrogates, LeaveThePredictorOfThePrimarySplitOut) {
  Sample const sample{.target = std::vector<double>(4),
                      .predictors = {{{1.0, 2.0, 3.0, 4.0}}, {{1.0, 2.0, 3.0, 4.0}}}};

  auto const found = FindInRows<std::uint32_t>(sample, {0, 0, 1, 1}, 1, 5, 1, false);

  EXPECT_EQ(found[0].association, 1.0);
  EXPECT_EQ(found[0].cutPoint, 2.5);
  EXPECT_EQ(found[1].association, 0.0);
}

}  // namespace
}  // namespace tree::grow
