#include "growing/node_statistics.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "growing/indexed_tree.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

/// The statistics of these cases, in a node of their own.
std::unique_ptr<NodeImp> NodeOf(PreparedSample const& sample,
                                std::vector<std::uint32_t> const& cases, ClassModel const* classes,
                                double rootWeight, DataSample which = TrainingSample) {
  auto node = std::make_unique<NodeImp>();
  NodeStatistics(sample.GetData(), which, classes, rootWeight)
      .Fill(*node, cases, SumCases(sample.GetData(), cases));
  return node;
}

RegInfoImp const& Numbers(NodeImp const& node) { return *node.GetRegInfoImp(TrainingSample); }

std::vector<double> BinsOf(RegInfoImp const& info) {
  std::vector<double> bins;
  for (int bin = 0; bin < info.GetNumBins(); ++bin) bins.push_back(info.GetBinSize(bin));
  return bins;
}

TEST(NodeStatistics, HaveCountsAndProbabilitiesOfClasses) {
  PreparedSample const sample({.target = {0.0, 0.0, 0.0, 1.0}, .weights = {1.0, 2.0, 3.0, 6.0}});
  ClassModel const classes(PriorsImp(), CostImp(), {6.0, 6.0});

  auto const node = NodeOf(sample, {1, 3}, &classes, 12.0);

  ASSERT_TRUE(node->IsClassificationNode());
  ClsInfoImp const& info = *node->GetClsInfoImp(TrainingSample);
  EXPECT_EQ(info.GetClassCount(0), 2.0);
  EXPECT_EQ(info.GetClassCount(1), 6.0);
  // 0.5 * 2/6 against 0.5 * 6/6
  EXPECT_NEAR(info.GetClassProbability(0), 0.25, 1e-12);
  EXPECT_NEAR(info.GetClassProbability(1), 0.75, 1e-12);
  EXPECT_EQ(info.GetPrediction(), 1);
  EXPECT_EQ(info.GetUnweightedCount(), 2.0);
  EXPECT_NEAR(info.GetPercentSize(), 100.0 * 8.0 / 12.0, 1e-12);
}

TEST(NodeStatistics, CountRepeatedCases) {
  PreparedSample const sample(
      {.target = {0.0, 1.0}, .weights = {1.5, 3.0}, .frequencies = {3.0, 6.0}});
  ClassModel const classes(PriorsImp(), CostImp(), {1.5, 3.0});

  auto const node = NodeOf(sample, {0, 1}, &classes, 4.5);

  EXPECT_EQ(node->GetUnweightedNodeSize(TrainingSample), 9.0);
  EXPECT_EQ(node->GetNodeSize(TrainingSample), 4.5);
}

TEST(NodeStatistics, LeaveThePredictionToTheTrainingSample) {
  PreparedSample const sample({.target = {0.0, 0.0, 1.0, 1.0, 1.0}});
  ClassModel const classes(PriorsImp(), CostImp(), {2.0, 3.0});
  auto const node = NodeOf(sample, {0, 1}, &classes, 5.0);
  NodeStatistics const test(sample.GetData(), TestSample, &classes, 5.0);
  std::vector<std::uint32_t> const others = {2, 3, 4};

  test.Fill(*node, others, SumCases(sample.GetData(), others));

  EXPECT_EQ(node->GetClsInfo(TestSample)->GetPrediction(), 0);
  EXPECT_EQ(node->GetClsInfo(TestSample)->GetClassCount(1), 3.0);
}

TEST(NodeStatistics, HaveNoPercentSizeWhereTheRootIsEmpty) {
  PreparedSample const sample({.target = {0.0, 1.0}});
  ClassModel const classes(PriorsImp(), CostImp(), {1.0, 1.0});

  EXPECT_EQ(NodeOf(sample, {}, &classes, 0.0)->GetClsInfoImp(TrainingSample)->GetCount(), 0.0);
}

TEST(NodeStatistics, DescribeNumbers) {
  PreparedSample const sample({.target = {2.0, 4.0, 4.0, 6.0, 100.0}, .hasClasses = false});

  auto const node = NodeOf(sample, {0, 1, 2, 3}, nullptr, 5.0);

  ASSERT_FALSE(node->IsClassificationNode());
  EXPECT_EQ(Numbers(*node).GetCount(), 4.0);
  EXPECT_EQ(Numbers(*node).GetUnweightedCount(), 4.0);
  EXPECT_EQ(Numbers(*node).GetMean(), 4.0);
  EXPECT_EQ(Numbers(*node).GetMinimum(), 2.0);
  EXPECT_EQ(Numbers(*node).GetMaximum(), 6.0);
  EXPECT_NEAR(Numbers(*node).GetStdDev(), std::sqrt(8.0 / 3.0), 1e-12);
}

TEST(NodeStatistics, WeighNumbers) {
  // mean (1 * 2 + 3 * 6) / 4 = 5, squares (1 * 9 + 3 * 1) / 4 = 3, of two cases: 3 * 2 / 1
  PreparedSample const sample({.target = {2.0, 6.0}, .hasClasses = false, .weights = {1.0, 3.0}});

  auto const node = NodeOf(sample, {0, 1}, nullptr, 4.0);

  EXPECT_EQ(Numbers(*node).GetCount(), 4.0);
  EXPECT_EQ(Numbers(*node).GetUnweightedCount(), 2.0);
  EXPECT_EQ(Numbers(*node).GetMean(), 5.0);
  EXPECT_NEAR(Numbers(*node).GetStdDev(), std::sqrt(6.0), 1e-12);
  EXPECT_NEAR(SumOfSquares(Numbers(*node)), 12.0, 1e-12);
}

TEST(NodeStatistics, CountRepeatedNumbers) {
  // 2, 6, 6 and 6: mean 5, squares 9 + 3, of four cases: 12 / 3
  PreparedSample const sample({.target = {2.0, 6.0},
                               .hasClasses = false,
                               .weights = {1.0, 3.0},
                               .frequencies = {1.0, 3.0}});

  auto const node = NodeOf(sample, {0, 1}, nullptr, 4.0);

  EXPECT_EQ(Numbers(*node).GetUnweightedCount(), 4.0);
  EXPECT_NEAR(Numbers(*node).GetStdDev(), 2.0, 1e-12);
  EXPECT_NEAR(SumOfSquares(Numbers(*node)), 12.0, 1e-12);
}

TEST(NodeStatistics, HaveNoDeviationOfASingleCase) {
  PreparedSample const sample({.target = {2.0, 6.0}, .hasClasses = false});

  auto const node = NodeOf(sample, {1}, nullptr, 2.0);

  EXPECT_EQ(Numbers(*node).GetMean(), 6.0);
  EXPECT_EQ(Numbers(*node).GetStdDev(), 0.0);
  EXPECT_EQ(SumOfSquares(Numbers(*node)), 0.0);
}

TEST(NodeStatistics, DescribeNoCases) {
  PreparedSample const sample({.target = {2.0, 6.0}, .hasClasses = false});

  auto const node = NodeOf(sample, {}, nullptr, 2.0);

  EXPECT_EQ(Numbers(*node).GetCount(), 0.0);
  EXPECT_EQ(Numbers(*node).GetUnweightedCount(), 0.0);
  EXPECT_EQ(Numbers(*node).GetNumBins(), kNumBins);
}

TEST(NodeStatistics, HaveADeviationOfPartsOfASingleCase) {
  // Half a case of 2 and half a case of 6; with n / (n - 1) there would be none.
  PreparedSample const sample({.target = {2.0, 6.0},
                               .hasClasses = false,
                               .weights = {0.5, 0.5},
                               .frequencies = {0.5, 0.5}});

  auto const node = NodeOf(sample, {0, 1}, nullptr, 1.0);

  EXPECT_EQ(Numbers(*node).GetUnweightedCount(), 1.0);
  EXPECT_NEAR(Numbers(*node).GetStdDev(), 2.0, 1e-12);
  EXPECT_NEAR(SumOfSquares(Numbers(*node)), 4.0, 1e-12);
}

TEST(NodeStatistics, PredictForTheTestSampleWhatTheTrainingSamplePredicts) {
  PreparedSample const sample({.target = {2.0, 4.0, 10.0}, .hasClasses = false});
  auto const node = NodeOf(sample, {0, 1}, nullptr, 3.0);
  NodeStatistics const test(sample.GetData(), TestSample, nullptr, 3.0);
  for (std::vector<std::uint32_t> const& others :
       {std::vector<std::uint32_t>{2}, std::vector<std::uint32_t>{}}) {
    test.Fill(*node, others, SumCases(sample.GetData(), others));

    EXPECT_EQ(node->GetRegInfo(TestSample)->GetPrediction(), 3.0) << others.size() << " cases";
    EXPECT_EQ(node->GetRegInfo(TrainingSample)->GetPrediction(), 3.0);
  }
  EXPECT_EQ(node->GetRegInfo(TestSample)->GetMean(), 0.0);
}

TEST(NodeStatistics, CountNumbersInTwentyBinsFromLeastToGreatest) {
  // Bins are 1 wide; the greatest number belongs to the last one.
  PreparedSample const sample({.target = {0.0, 0.5, 1.0, 9.5, 19.0, 20.0},
                               .hasClasses = false,
                               .weights = {1.0, 2.0, 4.0, 8.0, 16.0, 32.0}});

  auto const node = NodeOf(sample, {0, 1, 2, 3, 4, 5}, nullptr, 63.0);

  std::vector<double> expected(20);
  expected[0] = 3.0;
  expected[1] = 4.0;
  expected[9] = 8.0;
  expected[19] = 48.0;
  EXPECT_EQ(BinsOf(Numbers(*node)), expected);
}

TEST(NodeStatistics, PutEqualNumbersIntoTheFirstBin) {
  PreparedSample const sample({.target = {3.0, 3.0, 8.0}, .hasClasses = false});

  auto const node = NodeOf(sample, {0, 1}, nullptr, 3.0);

  EXPECT_EQ(BinsOf(Numbers(*node))[0], 2.0);
  EXPECT_EQ(Numbers(*node).GetStdDev(), 0.0);
}

TEST(NodeStatistics, AgreeWithSlowSumsOfRandomNumbers) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 2 + random.Below(100);
    Sample cases{.target = std::vector<double>(count), .hasClasses = false};
    double const scale = std::ldexp(1.0, static_cast<int>(random.Below(200)) - 100);
    double const offset = random.Below(2) * 1e6;
    for (double& value : cases.target) value = scale * (offset + random.Below(1000) / 10.0);
    bool const whole = random.Below(2) == 0;
    for (std::size_t index = 0; index < count; ++index) {
      cases.weights.push_back(random.Multiple(whole ? 1.0 : 0.1, 30));
    }
    PreparedSample const sample(cases);

    auto const node = NodeOf(sample, AllCases(sample.GetData()), nullptr, 1.0);

    long double weight = 0.0L;
    long double sum = 0.0L;
    for (std::size_t index = 0; index < count; ++index) {
      weight += cases.weights[index];
      sum += static_cast<long double>(cases.weights[index]) * cases.target[index];
    }
    long double const mean = sum / weight;
    long double squares = 0.0L;
    for (std::size_t index = 0; index < count; ++index) {
      long double const deviation = cases.target[index] - mean;
      squares += cases.weights[index] * deviation * deviation;
    }
    auto const n = static_cast<long double>(count);
    auto const stdDev = static_cast<double>(std::sqrt(squares / weight * n / (n - 1.0L)));
    EXPECT_NEAR(Numbers(*node).GetMean(), static_cast<double>(mean),
                1e-12 * scale * 1e3 + 1e-15 * std::abs(static_cast<double>(mean)));
    EXPECT_NEAR(Numbers(*node).GetStdDev(), stdDev, 1e-9 * stdDev);
    EXPECT_NEAR(SumOfSquares(Numbers(*node)), static_cast<double>(squares),
                1e-9 * static_cast<double>(squares));
  }
}

TEST(NodeStatistics, DescribeExtremeNumbers) {
  struct {
    char const* name;
    std::vector<double> values;
    double mean;
    double stdDev;
  } const kRows[] = {
      {"large", {-1e150, 1e150}, 0.0, std::sqrt(2.0) * 1e150},
      {"small", {0.0, 2e-150}, 1e-150, std::sqrt(2.0) * 1e-150},
      {"far from 0", {1e15, 1e15 + 2.0}, 1e15 + 1.0, std::sqrt(2.0)},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    PreparedSample const sample({.target = row.values, .hasClasses = false});

    auto const node = NodeOf(sample, {0, 1}, nullptr, 2.0);

    EXPECT_NEAR(Numbers(*node).GetMean(), row.mean, 1e-12 * row.stdDev);
    EXPECT_NEAR(Numbers(*node).GetStdDev(), row.stdDev, 1e-9 * row.stdDev);
  }
}

TEST(IsPure, LooksForASecondClass) {
  PreparedSample const sample({.target = {0.0, 0.0, 2.0}});
  ClassModel const classes(PriorsImp(), CostImp(), {2.0, 0.0, 1.0});

  EXPECT_TRUE(IsPure(*NodeOf(sample, {0, 1}, &classes, 3.0)));
  EXPECT_FALSE(IsPure(*NodeOf(sample, {0, 2}, &classes, 3.0)));
  EXPECT_TRUE(IsPure(*NodeOf(sample, {}, &classes, 3.0)));
}

TEST(IsPure, LooksForASecondNumber) {
  PreparedSample const sample({.target = {0.1, 0.1, 0.2}, .hasClasses = false});

  EXPECT_TRUE(IsPure(*NodeOf(sample, {0, 1}, nullptr, 3.0)));
  EXPECT_FALSE(IsPure(*NodeOf(sample, {0, 2}, nullptr, 3.0)));
  EXPECT_TRUE(IsPure(*NodeOf(sample, {}, nullptr, 3.0)));
}

}  // namespace
}  // namespace tree::grow
