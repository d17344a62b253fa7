#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"
#include "tree/misclassification.h"

namespace tree::testing {
namespace {

RC_GTEST_PROP(CostImp, BehavesLikeAVectorOfRows, ()) { RunOnBytes(RunCosts); }

RC_GTEST_PROP(PriorsImp, BehavesLikeFourVectors, ()) { RunOnBytes(RunPriors); }

RC_GTEST_PROP(PriorsImp, AlteredPriorsAddUpToOneAndKeepToTheCostsOfTheirColumns, ()) {
  auto const values = *rc::gen::nonEmpty<std::vector<int>>(
      rc::gen::container<std::vector<int>>(rc::gen::inRange(1, 100)));
  int const count = static_cast<int>(values.size());
  PriorsImp priors;
  CostImp costs;
  costs.Resize(count);
  // A single class has no costs to weigh in.
  RC_PRE(count > 1);
  for (int index = 0; index < count; ++index) {
    priors.Set(index, values[static_cast<std::size_t>(index)]);
    costs.Set(index, (index + 1) % count, *rc::gen::inRange(0, 10));
  }
  std::vector<double> weights;
  double total = 0.0;
  for (int column = 0; column < count; ++column) {
    double cost = 0.0;
    for (int row = 0; row < count; ++row) cost += costs.Get(row, column);
    weights.push_back(priors.Get(column) * cost);
    total += weights.back();
  }
  RC_PRE(total > 0.0);

  priors.AlterValues(true);
  RC_ASSERT(priors.ComputeAltered(costs));

  double sum = 0.0;
  for (int index = 0; index < count; ++index) {
    double const expected = weights[static_cast<std::size_t>(index)] / total;
    RC_ASSERT(std::abs(priors.GetAltered(index) - expected) < 1e-12);
    sum += priors.GetAltered(index);
  }
  RC_ASSERT(std::abs(sum - 1.0) < 1e-12);
}

RC_GTEST_PROP(ScoresImp, BehavesLikeAVector, ()) { RunOnBytes(RunScores); }

}  // namespace
}  // namespace tree::testing
