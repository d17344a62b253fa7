#include "growing/row_ranges.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "growing/predictor_summaries.h"

namespace tree::grow {
namespace {

/// What a node has of a predictor.
struct Summary {
  double minimum = 0.0;
  double maximum = 0.0;
  bool hasMissing = false;

  bool operator==(Summary const&) const = default;
};

void PrintTo(Summary const& summary, std::ostream* stream) {
  *stream << "[" << summary.minimum << ", " << summary.maximum << "]"
          << (summary.hasMissing ? " with" : " without") << " missing";
}

Summary SummaryOf(NodeImp const& node, int predictor) {
  Summary summary;
  EXPECT_TRUE(node.GetPredictorRange(predictor, &summary.minimum, &summary.maximum));
  EXPECT_TRUE(node.GetPredictorMissingValueFlag(predictor, &summary.hasMissing));
  return summary;
}

Summary OfAll(std::vector<double> const& values) {
  PreparedSample sample(
      {.target = std::vector<double>(values.size()), .predictors = {{values, false}}},
      Form::kInRows);
  CaseLists const lists = sample.MakeLists();
  NodeImp node;
  node.SetNumPredictors(1);
  SummariseRows(sample.GetData(), lists, lists.GetRoot().places, node);
  return SummaryOf(node, 0);
}

TEST(SummariseRows, FindsTheRangeOfValues) {
  EXPECT_EQ(OfAll({3.0, 1.5, 2.0}), (Summary{1.5, 3.0, false}));
  EXPECT_EQ(OfAll({7.0}), (Summary{7.0, 7.0, false}));
}

TEST(SummariseRows, LeavesMissingValuesOut) {
  EXPECT_EQ(OfAll({3.0, kMissing, 2.0}), (Summary{2.0, 3.0, true}));
  EXPECT_EQ(OfAll({kMissing, -HUGE_VAL, kMissing, HUGE_VAL}), (Summary{-HUGE_VAL, HUGE_VAL, true}));
}

TEST(SummariseRows, KnowsInfiniteValuesFromNone) {
  EXPECT_EQ(OfAll({HUGE_VAL, HUGE_VAL}), (Summary{HUGE_VAL, HUGE_VAL, false}));
  EXPECT_EQ(OfAll({-HUGE_VAL, kMissing}), (Summary{-HUGE_VAL, -HUGE_VAL, true}));
}

TEST(SummariseRows, GivesAPredictorWithoutValuesAnEmptyRange) {
  PreparedSample sample({.target = {0.0, 1.0}, .predictors = {{{5.0, kMissing}}}}, Form::kInRows);
  CaseLists const lists(sample.GetData(), {0, 1}, sample.GetWorkers());
  NodeImp node;
  node.SetNumPredictors(1);

  SummariseRows(sample.GetData(), lists, lists.GetRoot().places, node);

  EXPECT_EQ(SummaryOf(node, 0), (Summary{0.0, 0.0, true}));
}

TEST(SummariseRows, LeavesOtherPredictorsAlone) {
  PreparedSample sample(
      {.target = {0.0, 1.0}, .predictors = {{{5.0, 6.0}, true}, {{8.0, 9.0}, false}}},
      Form::kInRows);
  CaseLists const lists = sample.MakeLists();
  NodeImp node;
  node.SetNumPredictors(2);
  node.SetPredictorRange(0, 1.0, 2.0);

  SummariseRows(sample.GetData(), lists, lists.GetRoot().places, node);

  EXPECT_EQ(SummaryOf(node, 0), (Summary{1.0, 2.0, false}));
  EXPECT_EQ(SummaryOf(node, 1), (Summary{8.0, 9.0, false}));
}

TEST(SummariseRows, CanBeCancelledOnTheWay) {
  PreparedSample sample(TwoSlices(false), Form::kInRows);
  CaseLists const lists = sample.MakeLists();
  NodeImp node;
  node.SetNumPredictors(1);
  Impatient listener;
  sample.GetWorkers().SetListener(&listener);
  sample.GetWorkers().Begin();

  EXPECT_THROW(SummariseRows(sample.GetData(), lists, lists.GetRoot().places, node), Cancelled);
  sample.GetWorkers().SetListener(nullptr);
}

TEST(RowRanges, KeepTheFirstOfEqualLeastValuesAndTheLastOfEqualGreatestOnes) {
  // As sorted lists do: zeros are equal, but print differently.
  for (bool const inTwoParts : {false, true}) {
    SCOPED_TRACE(inTwoParts);
    PreparedSample sample({.target = {0.0, 1.0}, .predictors = {{{0.0, -0.0}}}}, Form::kInRows);
    CaseRows const& rows = sample.GetData().GetCaseRows();
    RowRanges ranges(rows);
    RowRanges later(rows);

    ranges.Add(rows.Of(0));
    (inTwoParts ? later : ranges).Add(rows.Of(1));
    if (inTwoParts) ranges.Append(later);

    NodeImp node;
    node.SetNumPredictors(1);
    ranges.Store(node);
    EXPECT_FALSE(std::signbit(SummaryOf(node, 0).minimum));
    EXPECT_TRUE(std::signbit(SummaryOf(node, 0).maximum));
  }
}

TEST(RowRanges, AgreeWithThoseOfSortedListsInPartsOfRandomCases) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 1 + random.Below(30);
    Sample cases{.target = std::vector<double>(count), .predictors = {{}, {}, {}}};
    for (Sample::Predictor& predictor : cases.predictors) {
      std::uint32_t const missingIn = 1 + random.Below(8);
      for (std::size_t index = 0; index < count; ++index) {
        predictor.values.push_back(random.Below(missingIn) == 0 ? kMissing
                                                                : random.Multiple(0.5, 9));
      }
    }
    PreparedSample inRows(cases, Form::kInRows);
    PreparedSample sorted(cases, Form::kSorted);
    CaseLists const lists = sorted.MakeLists();
    CaseRows const& rows = inRows.GetData().GetCaseRows();
    RowRanges ranges(rows);
    RowRanges later(rows);
    std::uint32_t const middle = random.Below(static_cast<std::uint32_t>(count));
    for (std::uint32_t index = 0; index < count; ++index) {
      (index < middle ? ranges : later).Add(rows.Of(index));
    }

    ranges.Append(later);

    NodeImp node;
    NodeImp expected;
    node.SetNumPredictors(3);
    expected.SetNumPredictors(3);
    ranges.Store(node);
    for (int predictor = 0; predictor < 3; ++predictor) {
      SummarisePredictor(sorted.GetData(), lists, lists.GetRoot(),
                         static_cast<std::size_t>(predictor), expected);
      EXPECT_EQ(SummaryOf(node, predictor), SummaryOf(expected, predictor)) << predictor;
    }
  }
}

}  // namespace
}  // namespace tree::grow
