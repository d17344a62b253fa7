#ifndef TREE_TESTS_TESTING_SAMPLE_TREES_H_
#define TREE_TESTS_TESTING_SAMPLE_TREES_H_

#include <memory>
#include <utility>

#include "testing/tree_builder.h"
#include "tree/nodes.h"
#include "tree/values.h"

// Trees that fill every field a node has, so that an operation that forgets one is found out.

namespace tree::testing {

/// A rule on categories of `predictor` that knows everything a rule can know: {0, 2} go to child 0,
/// {1} to child 1, missing values to child 1, and there is a dumb rule and a statistic.
inline std::unique_ptr<SplitRuleImp> NominalRule(int predictor) {
  auto rule = std::make_unique<NSplitRule>(predictor, 3);
  rule->SetCatMapping(0, 0);
  rule->SetCatMapping(2, 0);
  rule->SetCatMapping(1, 1);
  rule->AddMissingValueMapping(false);
  rule->SetDumbRule(0, 0.625);
  rule->SetStatistic(StatisticFlag2, 3.5);
  rule->SetProperty(SplitRuleCreatedAlternate);
  return rule;
}

/// Five nodes: 0 over 1 and 2, 2 over 3 and 4. Node 0 has every kind of part twice.
inline std::unique_ptr<NodeImp> RichClassificationTree() {
  return ANode(0)
      .SplitAt(0, 40.0, ANode(1).Classes({4.0, 0.5}, 0),
               ANode(2)
                   .SplitAt(1, 1.75, ANode(3).Classes({0.0, 2.0}, 1), ANode(4))
                   .SurrogateAt(2, 3.0)
                   .Classes({1.0, 5.5}, 1)
                   .Predictor(1.5, 2.0))
      .Dumb(1, 0.75)
      .Competitor(NominalRule(3))
      .SurrogateAt(1, 1.7)
      .Surrogate(NominalRule(2))
      .Classes({5.0, 6.0}, 1, TrainingSample)
      .Classes({2.0, 1.0}, 0, TestSample)
      .Predictor(18.0, 90.0, {18.0, 40.0, 90.0}, true)
      .Predictor(1.5, 2.0)
      .Build();
}

/// Three nodes: 10 over 11 and 12. Node 10 has every kind of part.
inline std::unique_ptr<NodeImp> RichRegressionTree() {
  std::unique_ptr<NodeImp> root =
      ANode(10)
          .SplitBy(NominalRule(0), ANode(11).Regression(30.0, 2.0), ANode(12).Regression(90.0, 4.0))
          .CompetitorAt(1, 7.0)
          .SurrogateAt(1, 6.5)
          .Regression(120.0, 3.5, TrainingSample)
          .Regression(12.0, 3.25, TestSample)
          .Predictor(0.0, 2.0, {0.0, 1.0, 2.0})
          .Build();
  RegInfoImp* const info = root->GetRegInfoImp(TrainingSample);
  info->SetMinimum(-1.0);
  info->SetMaximum(9.0);
  info->SetNumBins(2);
  info->SetBinSize(0, 100.0);
  info->SetBinSize(1, 20.0);
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, 1.25);
  info->SetExtendedStatistic(RegInfoImp::StorePrediction, 3.0);
  info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, 118.0);
  info->SetExtendedStatistic(RegInfoImp::StoreReserved5, 0.5);
  return root;
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_SAMPLE_TREES_H_
