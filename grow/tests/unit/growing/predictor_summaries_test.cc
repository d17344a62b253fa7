#include "growing/predictor_summaries.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <set>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"
#include "testing/tree_builder.h"

namespace tree::grow {
namespace {

using tree::testing::ANode;

/// What a node has of a predictor.
struct Summary {
  double minimum = 0.0;
  double maximum = 0.0;
  bool hasMissing = false;
  std::vector<double> values = {};

  bool operator==(Summary const&) const = default;
};

void PrintTo(Summary const& summary, std::ostream* stream) {
  *stream << "[" << summary.minimum << ", " << summary.maximum << "]"
          << (summary.hasMissing ? " with" : " without") << " missing, values "
          << ::testing::PrintToString(summary.values);
}

Summary SummaryOf(NodeImp const& node, int predictor) {
  Summary summary;
  int count = 0;
  EXPECT_TRUE(node.GetPredictorRange(predictor, &summary.minimum, &summary.maximum));
  EXPECT_TRUE(node.GetPredictorMissingValueFlag(predictor, &summary.hasMissing));
  EXPECT_TRUE(node.GetNumPredictorValues(predictor, &count));
  summary.values.resize(static_cast<std::size_t>(count));
  EXPECT_TRUE(node.GetPredictorValues(predictor, summary.values.data(), count));
  return summary;
}

Summary OfRoot(std::vector<double> const& values, bool nominal, Form form = Form::kAsItComes) {
  PreparedSample sample(
      {.target = std::vector<double>(values.size()), .predictors = {{values, nominal}}}, form);
  CaseLists const lists = sample.MakeLists();
  NodeImp node;
  node.SetNumPredictors(1);
  SummarisePredictor(sample.GetData(), lists, lists.GetRoot(), 0, node);
  return SummaryOf(node, 0);
}

/// Of as many children as are named. `included`: the cases of the parent, as for `CaseLists`.
std::vector<Summary> OfChildren(std::vector<double> const& values, bool nominal, Form form,
                                ChildOfPlace const& childOf, int numChildren,
                                std::vector<std::uint8_t> const& included = {}) {
  PreparedSample sample(
      {.target = std::vector<double>(values.size()), .predictors = {{values, nominal}}}, form);
  CaseLists const lists(std::as_const(sample).GetData(), included, sample.GetWorkers());
  auto const parent = std::make_unique<NodeImp>();
  parent->SetNumPredictors(1);
  SummarisePredictor(sample.GetData(), lists, lists.GetRoot(), 0, *parent);
  parent->SetNumChildren(numChildren);
  for (int child = 0; child < numChildren; ++child) {
    auto node = std::make_unique<NodeImp>();
    node->SetNumPredictors(1);
    parent->SetChild(static_cast<unsigned int>(child), node.release());
  }
  SummariseForChildren(sample.GetData(), lists, lists.GetRoot(), 0, childOf,
                       SumChildren(sample.GetData(), lists, lists.GetRoot(), childOf, numChildren),
                       *parent);
  std::vector<Summary> summaries;
  for (int child = 0; child < numChildren; ++child) {
    summaries.push_back(SummaryOf(*parent->GetChildImp(static_cast<unsigned int>(child)), 0));
  }
  return summaries;
}

TEST(SummarisePredictor, FindsTheRangeOfOrderedValues) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");

    EXPECT_EQ(OfRoot({3.0, 1.5, 2.0}, false, form), (Summary{1.5, 3.0, false}));
    EXPECT_EQ(OfRoot({3.0, kMissing, 2.0}, false, form), (Summary{2.0, 3.0, true}));
  }
}

TEST(SummarisePredictor, ListsCategories) {
  EXPECT_EQ(OfRoot({3.0, 0.0, 3.0, 2.0}, true), (Summary{0.0, 3.0, false, {0.0, 2.0, 3.0}}));
  EXPECT_EQ(OfRoot({3.0, kMissing}, true), (Summary{3.0, 3.0, true, {3.0}}));
}

/// So many categories, the last of them missing, that the predictor is left out.
std::vector<double> ManyCategories(std::size_t count) {
  std::vector<double> values(count);
  std::iota(values.begin(), values.end(), 3.0);
  values.back() = kMissing;
  return values;
}

TEST(SummarisePredictor, FindsOnlyTheRangeOfPredictorsThatAreLeftOut) {
  EXPECT_EQ(OfRoot(ManyCategories(41), true), (Summary{3.0, 42.0, true, {}}));
  std::vector<double> complete = ManyCategories(70000);
  EXPECT_EQ(OfRoot(complete, true), (Summary{3.0, 70001.0, true, {}}));
  complete.pop_back();
  EXPECT_EQ(OfRoot(complete, true), (Summary{3.0, 70001.0, false, {}}));
}

TEST(SummariseForChildren, FindsOnlyTheRangesOfPredictorsThatAreLeftOut) {
  ChildOfPlace childOf(41, 0);
  childOf[5] = childOf[7] = childOf[40] = 1;
  childOf[0] = kNoChild;

  EXPECT_THAT(OfChildren(ManyCategories(41), true, Form::kAsItComes, childOf, 2),
              ::testing::ElementsAre(Summary{4.0, 42.0, false, {}}, Summary{8.0, 10.0, true, {}}));
}

TEST(SummarisePredictor, GivesPredictorsWithoutValuesAnEmptyRange) {
  EXPECT_EQ(OfRoot({kMissing, kMissing}, false), (Summary{0.0, 0.0, true}));
  EXPECT_EQ(OfRoot({kMissing, kMissing}, true), (Summary{0.0, 0.0, true}));
}

TEST(SummarisePredictor, GivesASortedPredictorWithoutValuesInTheNodeAnEmptyRange) {
  // A case that is not included has one.
  PreparedSample sample({.target = {0.0, 1.0}, .predictors = {{{5.0, kMissing}}}}, Form::kSorted);
  CaseLists const lists(sample.GetData(), {0, 1}, sample.GetWorkers());
  NodeImp node;
  node.SetNumPredictors(1);

  SummarisePredictor(sample.GetData(), lists, lists.GetRoot(), 0, node);

  EXPECT_EQ(SummaryOf(node, 0), (Summary{0.0, 0.0, true}));
}

TEST(SummariseForChildren, GivesEachChildWhatItsCasesHave) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");

    EXPECT_THAT(OfChildren({3.0, 1.5, 2.0, kMissing, 7.0}, false, form, {0, 1, 0, 1, kNoChild}, 2),
                ::testing::ElementsAre(Summary{2.0, 3.0, false}, Summary{1.5, 1.5, true}));
  }
}

TEST(SummariseForChildren, ListsTheCategoriesOfEachChild) {
  EXPECT_THAT(
      OfChildren({3.0, 1.0, 2.0, kMissing, 3.0}, true, Form::kAsItComes, {0, 1, 0, 2, 1}, 3),
      ::testing::ElementsAre(Summary{2.0, 3.0, false, {2.0, 3.0}},
                             Summary{1.0, 3.0, false, {1.0, 3.0}}, Summary{0.0, 0.0, true}));
}

TEST(SummariseForChildren, LooksNoFurtherThanForWhatTheParentHas) {
  std::vector<double> const values = {9.0, 1.0, 2.0, 1.0, 2.0, kMissing};
  std::vector<std::uint8_t> const included = {0, 1, 1, 1, 1, 0};
  for (bool const nominal : {false, true}) {
    SCOPED_TRACE(nominal ? "nominal" : "ordered");
    std::vector<double> const both =
        nominal ? std::vector<double>{1.0, 2.0} : std::vector<double>();
    std::vector<double> const second = nominal ? std::vector<double>{2.0} : std::vector<double>();

    EXPECT_THAT(
        OfChildren(values, nominal, Form::kCoded, {0, 0, 0, 1}, 2, included),
        ::testing::ElementsAre(Summary{1.0, 2.0, false, both}, Summary{2.0, 2.0, false, second}));
  }
}

TEST(SummariseForChildren, GivesChildrenWithoutValuesAnEmptyRange) {
  EXPECT_THAT(OfChildren({3.0, kMissing}, false, Form::kSorted, {0, 2}, 3),
              ::testing::ElementsAre(Summary{3.0, 3.0, false}, Summary{0.0, 0.0, false},
                                     Summary{0.0, 0.0, true}));
}

TEST(SummariseForChildren, AgreesWithTheCasesOfRandomChildren) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::size_t const count = 1 + random.Below(40);
    std::uint32_t const missingIn = 2 + random.Below(20);
    std::vector<double> values(count);
    ChildOfPlace childOf(count);
    for (std::size_t index = 0; index < count; ++index) {
      values[index] = random.Below(missingIn) == 0 ? kMissing : random.Below(10);
      std::uint32_t const child = random.Below(4);
      childOf[index] = child == 3 ? kNoChild : static_cast<std::uint8_t>(child);
    }
    std::vector<Summary> expected(3);
    for (std::uint8_t child = 0; child < 3; ++child) {
      std::set<double> present;
      for (std::size_t index = 0; index < count; ++index) {
        if (childOf[index] != child) continue;
        if (values[index] == kMissing) {
          expected[child].hasMissing = true;
        } else {
          present.insert(values[index]);
        }
      }
      expected[child].values.assign(present.begin(), present.end());
      if (present.empty()) continue;
      expected[child].minimum = *present.begin();
      expected[child].maximum = *present.rbegin();
    }

    EXPECT_EQ(OfChildren(values, true, Form::kAsItComes, childOf, 3), expected);
    for (Summary& summary : expected) summary.values.clear();
    EXPECT_EQ(OfChildren(values, false, Form::kAsItComes, childOf, 3), expected);
    EXPECT_EQ(OfChildren(values, false, Form::kSorted, childOf, 3), expected);
  }
}

}  // namespace
}  // namespace tree::grow
