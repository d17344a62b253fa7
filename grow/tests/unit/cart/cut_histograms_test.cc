#include "cart/cut_histograms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using Histograms = CutHistograms<std::int64_t>;
using Cut = Histograms::Cut;
using Placed = Histograms::Placed;

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// A case of a node with one predictor.
struct Case {
  double value;
  std::size_t child;
  std::int64_t weight = 1;
};

Placed PlacedOf(std::vector<Case> const& cases) {
  Placed placed{};
  for (Case const& each : cases) placed[each.child] += each.weight;
  return placed;
}

/// The best cut that agrees on more than the majority, as the class is to be used.
std::optional<Cut> Search(Histograms& histograms, std::vector<Case> const& cases,
                          ValueScale const& scale = {}) {
  double least = HUGE_VAL;
  double greatest = -HUGE_VAL;
  for (Case const& each : cases) {
    if (!std::isfinite(each.value)) continue;
    least = std::min(least, each.value);
    greatest = std::max(greatest, each.value);
  }
  Placed const placed = PlacedOf(cases);
  histograms.Begin({&scale, 1}, cases.size(),
                   std::any_of(cases.begin(), cases.end(),
                               [](Case const& each) { return !std::isfinite(each.value); }));
  histograms.SetRange(0, least, greatest);
  for (Case const& each : cases) histograms.Count(&each.value, each.child, each.weight);
  std::int64_t const atBorder = histograms.BestAtBorder(0, placed);
  std::int64_t const wanted = std::max({placed[0] + 1, placed[1] + 1, atBorder});
  if (!histograms.Open(0, wanted)) return std::nullopt;
  std::vector<Histograms::Item> items;
  for (Case const& each : cases) {
    if (std::isnan(each.value) || !histograms.IsOpen(each.value)) continue;
    items.push_back({each.value, each.child == 0 ? each.weight : -each.weight});
  }
  std::vector<std::uint32_t> order(items.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return items[a].value < items[b].value;
  });
  return histograms.Find(items, order);
}

std::optional<Cut> Search(std::vector<Case> const& cases) {
  Histograms histograms;
  return Search(histograms, cases);
}

/// The same by trying every cut.
std::optional<Cut> TryAll(std::vector<Case> cases) {
  Placed const placed = PlacedOf(cases);
  std::int64_t wanted = std::max(placed[0], placed[1]) + 1;
  std::erase_if(cases, [](Case const& each) { return std::isnan(each.value); });
  std::sort(cases.begin(), cases.end(), [](auto& a, auto& b) { return a.value < b.value; });
  std::optional<Cut> best;
  for (std::size_t place = 1; place < cases.size(); ++place) {
    if (!(cases[place - 1].value < cases[place].value)) continue;
    Placed agreement{};  // straight and turned
    for (std::size_t other = 0; other < cases.size(); ++other) {
      agreement[cases[other].child ^ (other < place ? 0U : 1U)] += cases[other].weight;
    }
    if (std::max(agreement[0], agreement[1]) < wanted) continue;
    wanted = std::max(agreement[0], agreement[1]) + 1;
    best = {wanted - 1, cases[place - 1].value, cases[place].value, agreement[1] > agreement[0]};
  }
  return best;
}

void ExpectEqual(std::optional<Cut> const& found, std::optional<Cut> const& expected) {
  ASSERT_EQ(found.has_value(), expected.has_value());
  if (!found.has_value()) return;
  EXPECT_EQ(found->agreement, expected->agreement);
  EXPECT_EQ(found->lower, expected->lower);
  EXPECT_EQ(found->upper, expected->upper);
  EXPECT_EQ(found->reversed, expected->reversed);
}

TEST(CutHistograms, FindTheCutThatAgreesMost) {
  std::vector<Case> const cases{{1.0, 0}, {2.0, 0}, {3.0, 1}, {4.0, 0}, {5.0, 1}, {6.0, 1}};

  ExpectEqual(Search(cases), Cut{5, 2.0, 3.0, false});
}

TEST(CutHistograms, FindReversedCuts) {
  ExpectEqual(Search({{1.0, 1}, {2.0, 1}, {3.0, 0}, {4.0, 0}}), Cut{4, 2.0, 3.0, true});
}

TEST(CutHistograms, FindNothingThatIsNoBetterThanTheMajority) {
  EXPECT_FALSE(Search({{1.0, 0}, {2.0, 1}, {3.0, 0}}).has_value());
}

TEST(CutHistograms, CutBetweenValuesOnly) {
  EXPECT_FALSE(Search({{1.0, 0}, {1.0, 0}, {1.0, 1}, {1.0, 1}}).has_value());
}

TEST(CutHistograms, CountMissingValuesAsDisagreements) {
  ExpectEqual(Search({{kNone, 0}, {1.0, 0}, {2.0, 0}, {3.0, 1}, {kNone, 1}, {4.0, 1}}),
              Cut{4, 2.0, 3.0, false});
  EXPECT_FALSE(Search({{kNone, 0}, {kNone, 0}, {1.0, 0}, {2.0, 1}}).has_value());
}

TEST(CutHistograms, CutBetweenInfiniteValues) {
  std::vector<Case> const cases{{-HUGE_VAL, 0}, {-HUGE_VAL, 0}, {-HUGE_VAL, 0},
                                {HUGE_VAL, 1},  {HUGE_VAL, 1},  {HUGE_VAL, 1}};
  for (ValueScale const& scale : {ValueScale(), ValueScale(0.0, 1.0), ValueScale(5.0, 0.1)}) {
    Histograms histograms;

    ExpectEqual(Search(histograms, cases, scale), Cut{6, -HUGE_VAL, HUGE_VAL, false});
  }
}

// Which does not change the order of those that are infinite.
TEST(CutHistograms, CutBetweenInfiniteValuesBesideAnotherScale) {
  ValueScale const scales[] = {{}, {1.0, 1.0}};
  double const rows[][2] = {{-HUGE_VAL, 1.0}, {-HUGE_VAL, 9.0}, {HUGE_VAL, 2.0}, {HUGE_VAL, 5.0}};
  Histograms histograms;
  histograms.Begin(scales, 4, true);
  histograms.SetRange(0, HUGE_VAL, -HUGE_VAL);
  histograms.SetRange(1, 1.0, 9.0);
  for (std::size_t row = 0; row < 4; ++row) histograms.Count(rows[row], row / 2, 1);
  histograms.BestAtBorder(0, {2, 2});

  ASSERT_TRUE(histograms.Open(0, 3));
  Histograms::Item const items[] = {{-HUGE_VAL, 1}, {-HUGE_VAL, 1}, {HUGE_VAL, -1}, {HUGE_VAL, -1}};
  std::uint32_t const order[] = {0, 1, 2, 3};
  ExpectEqual(histograms.Find(items, order), Cut{4, -HUGE_VAL, HUGE_VAL, false});
}

TEST(CutHistograms, TakeTheLowestOfEqualCuts) {
  // Below 2 and below 4 there is one child 0 more than child 1.
  std::vector<Case> const cases{{1.0, 0}, {2.0, 1}, {3.0, 0}, {4.0, 1}};

  ExpectEqual(Search(cases), Cut{3, 1.0, 2.0, false});
}

TEST(CutHistograms, FindCutsAmongCrowdedValues) {
  // The greatest value is so far away that one bucket takes all others.
  struct {
    char const* name;
    double greatest;
  } const kRows[] = {{"far", 1e12}, {"too far", 1e308 * 10}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<Case> cases;
    for (std::size_t number = 0; number < 100; ++number) {
      cases.push_back({static_cast<double>(number), number < 37 ? 0U : 1U});
    }
    cases.push_back({row.greatest, 0});

    ExpectEqual(Search(cases), Cut{100, 36.0, 37.0, false});
  }
}

TEST(CutHistograms, AreNotBeatenByAnyCutOfRandomCases) {
  Histograms histograms;
  for (std::uint32_t seed = 0; seed < 600; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const numValues = seed % 3 == 0 ? 5 : 1 + random.Below(2000);
    bool const isSkewed = seed % 5 == 0;
    std::vector<Case> cases(2 + random.Below(300));
    for (Case& each : cases) {
      double const value = random.Multiple(0.1, numValues);
      each.value = isSkewed ? std::exp(value) : value;
      if (seed % 4 == 0 && random.Below(6) == 0) each.value = kNone;
      if (seed % 7 == 0 && random.Below(40) == 0)
        each.value = random.Below(2) == 0 ? HUGE_VAL : -HUGE_VAL;
      bool const isFar = value > 0.06 * numValues;
      each.child = random.Below(seed % 2 == 0 ? 3 : 2) == 0 ? 1U : isFar ? 1U : 0U;
      if (seed % 6 == 0) each.child = random.Below(2);
      each.weight = seed % 8 == 0 ? 1 + random.Below(9) : 1;
    }

    ExpectEqual(Search(histograms, cases), TryAll(cases));
  }
}

TEST(CutHistograms, FindTheSameOnAnyScale) {
  Histograms histograms;
  for (std::uint32_t seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    bool const hasTies = seed % 3 == 0;
    std::vector<Case> cases(2 + random.Below(300));
    for (Case& each : cases) {
      double const share = random.Multiple(0.001, 999) - 0.5;
      each.value = seed % 4 == 0   ? std::exp(20.0 * share)
                   : seed % 4 == 1 ? -std::exp(20.0 * share)
                   : seed % 4 == 2 ? std::tan(3.14 * share)
                                   : share * 1e308 * 2.0;
      if (hasTies && random.Below(2) == 0) each.value = std::round(each.value);
      if (seed % 5 == 0 && random.Below(9) == 0) each.value = kNone;
      if (seed % 7 == 0 && random.Below(20) == 0) each.value = HUGE_VAL;
      if (seed % 7 == 0 && random.Below(20) == 0) each.value = -HUGE_VAL;
      each.child = random.Below(3) == 0 ? 1U : share > 0.1 ? 1U : 0U;
    }
    auto const expected = TryAll(cases);
    ValueScale const kScales[] = {{},           {0.0, 1.0},   {1e300, 1e-300},
                                  {-3.0, 1e-9}, {0.0, 1e300}, {cases[0].value, 1.0}};
    for (ValueScale const& scale : kScales) {
      ExpectEqual(Search(histograms, cases, scale), expected);
    }
  }
}

TEST(CutHistograms, TakePredictorsWithoutAScaleBesideOthers) {
  struct {
    char const* name;
    std::vector<double> values;
  } const kRows[] = {
      {"usual", {1.0, 2.0, 3.0, 4.0, 5.0}},
      {"all the same but one", {1.0, 1.0, 1.0, 2.0, 2.0}},
      {"too near to each other", {0.0, 1e-320, 2e-320, 3e-320, 4e-320}},
      {"too far apart", {-1.5e308, -1e308, 0.0, 1e308, 1.5e308}},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::vector<double> const predictors[] = {row.values, {1.0, 10.0, 1e2, 1e3, 1e4}};
    ValueScale const scales[] = {{}, {1.0, 1.0}};
    Histograms histograms;
    histograms.Begin(scales, 5, false);
    for (std::size_t predictor = 0; predictor < 2; ++predictor) {
      histograms.SetRange(predictor, predictors[predictor].front(), predictors[predictor].back());
    }
    for (std::size_t number = 0; number < 5; ++number) {
      double const values[] = {predictors[0][number], predictors[1][number]};
      histograms.Count(values, number < 3 ? 0 : 1, 1);
    }
    for (std::size_t predictor = 0; predictor < 2; ++predictor) {
      SCOPED_TRACE(predictor);
      histograms.BestAtBorder(predictor, {3, 2});
      ASSERT_TRUE(histograms.Open(predictor, 4));
      std::vector<Histograms::Item> items;
      std::vector<std::uint32_t> order;
      for (std::size_t number = 0; number < 5; ++number) {
        double const value = predictors[predictor][number];
        if (!histograms.IsOpen(value)) continue;
        order.push_back(static_cast<std::uint32_t>(items.size()));
        items.push_back({value, number < 3 ? 1 : -1});
      }

      ExpectEqual(histograms.Find(items, order),
                  Cut{5, predictors[predictor][2], predictors[predictor][3], false});
    }
  }
}

TEST(CutHistograms, LookIntoFewCasesOfALongTail) {
  std::vector<Case> cases;
  for (std::size_t number = 0; number < 10000; ++number) {
    cases.push_back({std::exp(static_cast<double>(number) / 400.0), number % 100 == 0 ? 0U
                                                                    : number < 4321   ? 0U
                                                                                      : 1U});
  }
  Histograms histograms;

  auto const found = Search(histograms, cases, {1.0, 1.0});

  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->lower, cases[4320].value);
  auto const numOpen = std::count_if(
      cases.begin(), cases.end(), [&](Case const& each) { return histograms.IsOpen(each.value); });
  EXPECT_LT(numOpen, 200);
}

TEST(CutHistograms, LookIntoFewCases) {
  std::vector<Case> cases;
  for (std::size_t number = 0; number < 10000; ++number) {
    cases.push_back({static_cast<double>(number), number % 100 == 0 ? 0U
                                                  : number < 4321   ? 0U
                                                                    : 1U});
  }
  Histograms histograms;

  auto const found = Search(histograms, cases);

  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->lower, 4320.0);
  auto const numOpen = std::count_if(
      cases.begin(), cases.end(), [&](Case const& each) { return histograms.IsOpen(each.value); });
  EXPECT_LT(numOpen, 100);
}

}  // namespace
}  // namespace tree::grow
