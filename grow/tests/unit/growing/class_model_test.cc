#include "growing/class_model.h"

#include <cstdint>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

auto Near(double value) { return DoubleNear(value, 1e-12); }

PriorsImp Shares() {
  PriorsImp priors;
  priors.Set(PriorTypeAlternate);
  return priors;
}

PriorsImp Custom(std::vector<double> const& values) {
  PriorsImp priors;
  for (int index = 0; index < static_cast<int>(values.size()); ++index) {
    priors.Set(index, values[static_cast<std::size_t>(index)]);
  }
  return priors;
}

TEST(ClassModel, GivesACaseTheShareThatItsClassGivesIt) {
  ClassModel const classes(Custom({0.2, 0.8}), CostImp(), {10.0, 40.0});

  EXPECT_EQ(classes.GetNumClasses(), 2U);
  EXPECT_THAT(classes.GetPriors(), ElementsAre(Near(0.2), Near(0.8)));
  EXPECT_THAT(classes.GetFactors(), ElementsAre(Near(0.02), Near(0.02)));
  EXPECT_EQ(classes.GetSplitFactors(), classes.GetFactors());
}

TEST(ClassModel, AltersThePriorsOfSplitsOnlyAndOnlyWhereThatIsWanted) {
  CostImp costs;
  costs.Set(1, 0, 3.0);  // a case of class 0 taken for class 1
  costs.Set(0, 1, 1.0);
  PriorsImp priors = Shares();
  priors.AlterValues(true);

  ClassModel const altered(priors, costs, {10.0, 10.0});
  ClassModel const plain(Shares(), costs, {10.0, 10.0});

  EXPECT_THAT(altered.GetFactors(), ElementsAre(Near(0.05), Near(0.05)));
  EXPECT_THAT(altered.GetSplitFactors(), ElementsAre(Near(0.075), Near(0.025)));
  EXPECT_THAT(plain.GetSplitFactors(), ElementsAre(Near(0.05), Near(0.05)));
}

TEST(ClassModel, GivesAClassWithoutCasesNothing) {
  ClassModel const classes(PriorsImp(), CostImp(), {10.0, 0.0, 10.0});

  EXPECT_THAT(classes.GetFactors(), ElementsAre(Near(0.05), 0.0, Near(0.05)));
}

TEST(ClassModel, FindsTheProbabilitiesInANode) {
  // Priors alike: a case of class 0 stands for 0.5 / 10, one of class 1 for 0.5 / 30.
  ClassModel const classes(PriorsImp(), CostImp(), {10.0, 30.0});

  EXPECT_THAT(classes.Probabilities({10.0, 30.0}), ElementsAre(Near(0.5), Near(0.5)));
  EXPECT_THAT(classes.Probabilities({1.0, 6.0}), ElementsAre(Near(1.0 / 3.0), Near(2.0 / 3.0)));
}

TEST(ClassModel, FindsTheSharesWherePriorsAreShares) {
  ClassModel const classes(Shares(), CostImp(), {10.0, 30.0});

  EXPECT_THAT(classes.Probabilities({1.0, 7.0}), ElementsAre(Near(0.125), Near(0.875)));
}

TEST(ClassModel, FindsTheSharesWherePriorsLeaveNothing) {
  ClassModel const classes(Custom({1.0, 0.0, 0.0}), CostImp(), {5.0, 10.0, 30.0});

  EXPECT_THAT(classes.Probabilities({0.0, 1.0, 3.0}), ElementsAre(0.0, Near(0.25), Near(0.75)));
}

TEST(ClassModel, FindsNoProbabilitiesWithoutCases) {
  ClassModel const classes(PriorsImp(), CostImp(), {10.0, 30.0});

  EXPECT_THAT(classes.Probabilities({0.0, 0.0}), ElementsAre(0.0, 0.0));
}

TEST(ClassModel, PredictsTheMostProbableClass) {
  ClassModel const classes(PriorsImp(), CostImp(), {1.0, 1.0, 1.0});

  EXPECT_EQ(classes.Predict({0.2, 0.5, 0.3}), 1U);
}

TEST(ClassModel, PredictsTheFirstOfEqualClasses) {
  ClassModel const classes(PriorsImp(), CostImp(), {1.0, 1.0, 1.0});

  EXPECT_EQ(classes.Predict({0.2, 0.4, 0.4}), 1U);
  EXPECT_EQ(classes.Predict({0.0, 0.0, 0.0}), 0U);
  // A tenth is no double: costs that would be equal differ by rounding.
  EXPECT_EQ(classes.Predict({0.1 + 0.2, 0.3, 0.4}), 2U);
  EXPECT_EQ(classes.Predict({0.3, 0.1 + 0.2, 0.0}), 0U);
}

TEST(ClassModel, PredictsTheClassOfLeastExpectedCost) {
  CostImp costs;
  costs.Set(0, 1, 5.0);  // a case of class 1 taken for class 0
  costs.Set(1, 0, 1.0);
  ClassModel const classes(PriorsImp(), costs, {1.0, 1.0});

  EXPECT_EQ(classes.Predict({0.8, 0.2}), 1U) << "0.2 * 5 is more than 0.8 * 1";
  EXPECT_EQ(classes.Predict({0.9, 0.1}), 0U) << "0.1 * 5 is less than 0.9 * 1";
  EXPECT_EQ(classes.CostOf(0, 1), 5.0);
  EXPECT_EQ(classes.CostOf(1, 1), 0.0);
}

TEST(ClassModel, AddsUpTheRiskOfANode) {
  CostImp costs;
  costs.Set(0, 1, 5.0);
  costs.Set(1, 0, 2.0);
  ClassModel const classes(Custom({0.25, 0.75}), costs, {10.0, 30.0});

  EXPECT_NEAR(classes.RiskOf(0, {4.0, 6.0}), 5.0 * 0.75 * 6.0 / 30.0, 1e-12);
  EXPECT_NEAR(classes.RiskOf(1, {4.0, 6.0}), 2.0 * 0.25 * 4.0 / 10.0, 1e-12);
}

TEST(ClassModel, PredictsWhatCostsTheNodeLeast) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const numClasses = 2 + random.Below(4);
    CostImp costs;
    costs.SetDefault(CostImp::CostMatrixMain, static_cast<int>(numClasses));
    std::vector<double> weights;
    std::vector<double> inNode;
    std::vector<double> priors;
    for (std::size_t i = 0; i < numClasses; ++i) {
      for (std::size_t j = 0; j < numClasses; ++j) {
        if (i != j) costs.Set(static_cast<int>(i), static_cast<int>(j), random.Multiple(0.1, 50));
      }
      weights.push_back(random.Multiple(1.0, 100));
      inNode.push_back(random.Below(static_cast<std::uint32_t>(weights.back())));
      priors.push_back(random.Multiple(0.1, 10));
    }
    inNode[0] = weights[0];
    ClassModel const classes(Custom(priors), costs, weights);

    std::vector<double> const probabilities = classes.Probabilities(inNode);
    std::size_t const predicted = classes.Predict(probabilities);

    EXPECT_NEAR(std::accumulate(probabilities.begin(), probabilities.end(), 0.0), 1.0, 1e-12);
    for (std::size_t other = 0; other < numClasses; ++other) {
      EXPECT_LE(classes.RiskOf(predicted, inNode), classes.RiskOf(other, inNode) * (1.0 + 1e-9));
    }
  }
}

}  // namespace
}  // namespace tree::grow
