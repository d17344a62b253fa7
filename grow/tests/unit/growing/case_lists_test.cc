#include "growing/case_lists.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

std::vector<std::uint32_t> PlacesOf(std::span<SortedCase const> cases) {
  std::vector<std::uint32_t> places;
  for (SortedCase const item : cases) places.push_back(item.Place());
  return places;
}

std::vector<bool> StartsOf(std::span<SortedCase const> cases) {
  std::vector<bool> starts;
  for (SortedCase const item : cases) starts.push_back(item.StartsValue());
  return starts;
}

std::vector<std::uint32_t> CasesOf(CaseLists const& lists, NodeRanges const& node) {
  auto const cases = lists.Cases(node);
  return {cases.begin(), cases.end()};
}

/// Divides cases and all predictors, as growing does.
std::vector<NodeRanges> Divide(CaseLists& lists, NodeRanges const& node,
                               ChildOfPlace const& childOf, int numChildren) {
  std::vector<NodeRanges> children = lists.DivideCases(node, childOf, numChildren);
  WorkMemory<SortedCase> scratch;
  std::fill_n(scratch.Get(3), 3, SortedCase(12345, true));
  for (std::size_t predictor = 0; predictor < node.byPredictor.size(); ++predictor) {
    lists.DividePredictor(node, predictor, children, scratch);
  }
  return children;
}

/// Whether the lists have of a node what its cases have, by looking at every case.
void ExpectNode(CaseLists const& lists, NodeRanges const& node, TrainingData const& data,
                std::vector<std::uint32_t> const& cases) {
  ASSERT_EQ(CasesOf(lists, node), cases);
  ASSERT_EQ(node.byPredictor.size(), data.GetPredictors().size());
  for (std::uint32_t offset = 0; offset < cases.size(); ++offset) {
    std::uint32_t const place = node.places.begin + offset;
    std::uint32_t const index = cases[offset];
    ASSERT_EQ(lists.CaseAt(place), index);
    ASSERT_EQ(lists.WeightAt(place), data.GetWeights().Of(index));
    if (lists.GetWeights() != nullptr) {
      ASSERT_EQ(lists.GetWeights()[place], data.GetWeights().Of(index));
    }
    if (lists.GetFrequencies() != nullptr) {
      ASSERT_EQ(lists.GetFrequencies()[place], data.GetFrequencies().Of(index));
    }
    if (lists.GetClasses() != nullptr) {
      ASSERT_EQ(lists.GetClasses()[place], data.GetClasses()[index]);
    }
    if (lists.GetNumbers() != nullptr) {
      ASSERT_EQ(lists.GetNumbers()[place], data.GetNumbers().multiples[index]);
    }
  }
  for (std::size_t position = 0; position < data.GetPredictors().size(); ++position) {
    SCOPED_TRACE(position);
    GrowingPredictor const& predictor = data.GetPredictors()[position];
    if (predictor.IsCoded()) {
      for (std::uint32_t offset = 0; offset < cases.size(); ++offset) {
        ASSERT_EQ(lists.Codes(position)[node.places.begin + offset],
                  predictor.codes[cases[offset]]);
      }
      continue;
    }
    std::vector<std::uint32_t> expected;
    for (std::uint32_t const index : cases) {
      if (data.ValueOf(position, index) != kMissing) expected.push_back(index);
    }
    std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
      return data.ValueOf(position, a) < data.ValueOf(position, b);
    });
    auto const sorted = lists.Sorted(node, position);
    ASSERT_EQ(sorted.size(), expected.size());
    for (std::size_t place = 0; place < sorted.size(); ++place) {
      ASSERT_EQ(lists.CaseAt(sorted[place].Place()), expected[place]);
      bool const starts = place == 0 || data.ValueOf(position, expected[place]) !=
                                            data.ValueOf(position, expected[place - 1]);
      ASSERT_EQ(sorted[place].StartsValue(), starts) << "at " << place;
    }
  }
}

TEST(CaseLists, BeginWithAllCasesInTheRoot) {
  PreparedSample sample({.target = {1.0, 0.0, 1.0}, .predictors = {{{4.0, 2.0, 4.0}}}});
  CaseLists const lists = sample.MakeLists();

  EXPECT_EQ(lists.GetNumPlaces(), 3U);
  EXPECT_THAT(CasesOf(lists, lists.GetRoot()), ElementsAre(0, 1, 2));
  EXPECT_EQ(lists.GetClasses()[0], 1);
  EXPECT_EQ(lists.Codes(0)[1], 0);
  EXPECT_EQ(lists.GetWeights(), nullptr);
  EXPECT_EQ(lists.GetFrequencies(), nullptr);
  EXPECT_EQ(lists.GetNumbers(), nullptr);
  EXPECT_EQ(lists.WeightAt(2), 1);
}

TEST(CaseLists, LeaveOutCasesThatAreNotIncluded) {
  PreparedSample sample({.target = {0.0, 0.0, 1.0, 1.0},
                         .predictors = {{{4.0, 4.0, 4.0, 2.0}}, {{1.0, 1.0, 1.0, 0.0}, true}}},
                        Form::kSorted);

  CaseLists const lists(sample.GetData(), {0, 1, 1, 1}, sample.GetWorkers());

  EXPECT_THAT(CasesOf(lists, lists.GetRoot()), ElementsAre(1, 2, 3));
  EXPECT_THAT(PlacesOf(lists.Sorted(lists.GetRoot(), 0)), ElementsAre(2, 0, 1));
  EXPECT_THAT(StartsOf(lists.Sorted(lists.GetRoot(), 0)), ElementsAre(true, true, false))
      << "the value 4 starts with another case now";
  EXPECT_EQ(lists.Codes(1)[2], 0);
}

TEST(CaseLists, UseUpTheSortedListsOfTheData) {
  PreparedSample sample({.target = {0.0, 0.0, 1.0, 1.0},
                         .predictors = {{{4.0, 4.0, 3.0, 2.0}}, {{1.0, 1.0, 1.0, 0.0}, true}}},
                        Form::kSorted);

  CaseLists const lists(sample.GetData(), sample.GetWorkers());

  EXPECT_TRUE(sample.GetData().GetPredictors()[0].sorted.empty());
  EXPECT_THAT(CasesOf(lists, lists.GetRoot()), ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(PlacesOf(lists.Sorted(lists.GetRoot(), 0)), ElementsAre(3, 2, 0, 1));
  EXPECT_THAT(StartsOf(lists.Sorted(lists.GetRoot(), 0)), ElementsAre(true, true, true, false));
  EXPECT_EQ(lists.Codes(1)[3], 0);
}

TEST(CaseLists, DivideTheCasesOfANodeInTheirOrder) {
  PreparedSample sample({.target = {0.0, 1.0, 2.0, 3.0, 4.0}});
  CaseLists lists = sample.MakeLists();

  auto const children = lists.DivideCases(lists.GetRoot(), {1, 0, 1, 0, 0}, 2);

  EXPECT_THAT(CasesOf(lists, children[0]), ElementsAre(1, 3, 4));
  EXPECT_THAT(CasesOf(lists, children[1]), ElementsAre(0, 2));
  EXPECT_THAT(std::vector<int>(lists.GetClasses(), lists.GetClasses() + 5),
              ElementsAre(1, 3, 4, 0, 2));
}

TEST(CaseLists, CanBeCancelledWhileTheyDivideManyCases) {
  PreparedSample sample(TwoSlices(false));
  CaseLists lists = sample.MakeLists();
  ChildOfPlace const childOf(lists.GetNumPlaces(), 1);
  Impatient listener;
  sample.GetWorkers().SetListener(&listener);
  sample.GetWorkers().Begin();

  EXPECT_THROW(lists.DivideCases(lists.GetRoot(), childOf, 2), Cancelled);
  sample.GetWorkers().SetListener(nullptr);
}

TEST(CaseLists, StartEachValueAnewInEachChild) {
  PreparedSample sample(
      {.target = std::vector<double>(6), .predictors = {{{1.0, 1.0, 1.0, 2.0, 2.0, 3.0}}}},
      Form::kSorted);
  CaseLists lists = sample.MakeLists();

  auto const children = Divide(lists, lists.GetRoot(), {0, 1, 1, 0, 0, 1}, 2);

  EXPECT_THAT(PlacesOf(lists.Sorted(children[0], 0)), ElementsAre(0, 1, 2));
  EXPECT_THAT(StartsOf(lists.Sorted(children[0], 0)), ElementsAre(true, true, false));
  EXPECT_THAT(PlacesOf(lists.Sorted(children[1], 0)), ElementsAre(3, 4, 5));
  EXPECT_THAT(StartsOf(lists.Sorted(children[1], 0)), ElementsAre(true, false, true));
}

TEST(CaseLists, PutCasesOfNoChildAtTheEnd) {
  PreparedSample sample({.target = std::vector<double>(5),
                         .predictors = {{{5.0, 4.0, 3.0, 2.0, 1.0}}, {{1.0, 2.0, 3.0, 4.0, 5.0}}}},
                        Form::kSorted);
  CaseLists lists = sample.MakeLists();

  auto const children = Divide(lists, lists.GetRoot(), {1, kNoChild, 0, kNoChild, 0}, 2);

  EXPECT_THAT(CasesOf(lists, children[0]), ElementsAre(2, 4));
  EXPECT_THAT(CasesOf(lists, children[1]), ElementsAre(0));
  EXPECT_EQ(lists.CaseAt(3), 1U);
  EXPECT_EQ(lists.CaseAt(4), 3U);
  EXPECT_THAT(PlacesOf(lists.Sorted(children[0], 0)), ElementsAre(1, 0));
  EXPECT_THAT(PlacesOf(lists.Sorted(children[1], 0)), ElementsAre(2));
}

TEST(CaseLists, AllowChildrenWithoutCases) {
  PreparedSample sample({.target = std::vector<double>(3), .predictors = {{{1.0, 2.0, 3.0}}}},
                        Form::kSorted);
  struct {
    char const* name;
    ChildOfPlace childOf;
    int numChildren;
    std::vector<std::uint32_t> sizes;
  } const kRows[] = {
      {"all left", {0, 0, 0}, 2, {3, 0}},
      {"all right", {1, 1, 1}, 2, {0, 3}},
      {"all in the middle", {1, 1, 1}, 3, {0, 3, 0}},
      {"none", {kNoChild, kNoChild, kNoChild}, 2, {0, 0}},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    CaseLists lists = sample.MakeLists();

    auto const children = Divide(lists, lists.GetRoot(), row.childOf, row.numChildren);

    ASSERT_EQ(children.size(), row.sizes.size());
    for (std::size_t child = 0; child < children.size(); ++child) {
      EXPECT_EQ(children[child].places.Size(), row.sizes[child]);
      EXPECT_EQ(children[child].byPredictor[0].Size(), row.sizes[child]);
    }
  }
}

TEST(CaseLists, DivideInAsManyChildrenAsASplitCanHave) {
  auto constexpr kCount = static_cast<std::size_t>(kMaxChildren);
  Sample cases{.target = std::vector<double>(kCount + 1), .predictors = {{}}};
  ChildOfPlace childOf(kCount + 1, kNoChild);
  cases.predictors[0].values.assign(kCount + 1, 7.0);
  for (std::size_t place = 0; place < kCount; ++place) {
    childOf[place] = static_cast<std::uint8_t>(kCount - 1 - place);
  }
  PreparedSample sample(cases, Form::kSorted);
  CaseLists lists = sample.MakeLists();

  auto const children = Divide(lists, lists.GetRoot(), childOf, kMaxChildren);

  ASSERT_EQ(children.size(), kCount);
  for (std::uint32_t child = 0; child < kCount; ++child) {
    EXPECT_THAT(CasesOf(lists, children[child]), ElementsAre(kCount - 1 - child));
    EXPECT_THAT(StartsOf(lists.Sorted(children[child], 0)), ElementsAre(true));
  }
}

TEST(CaseLists, DivideMoreCasesThanTheCacheHolds) {
  constexpr std::uint32_t kCount = static_cast<std::uint32_t>(kPlacesInCache) + 5;
  Sample cases{.target = std::vector<double>(kCount), .predictors = {{}, {}}};
  ChildOfPlace childOf(kCount);
  for (std::uint32_t index = 0; index < kCount; ++index) {
    cases.predictors[0].values.push_back(index / 2);
    cases.predictors[1].values.push_back(-static_cast<double>(index));
    childOf[index] = index % 3 == 0 ? 1 : 0;
  }
  PreparedSample sample(cases, Form::kSorted);
  CaseLists lists = sample.MakeLists();

  auto const children = Divide(lists, lists.GetRoot(), childOf, 2);

  std::vector<std::vector<std::uint32_t>> expected(2);
  for (std::uint32_t index = 0; index < kCount; ++index) expected[childOf[index]].push_back(index);
  for (std::size_t child = 0; child < 2; ++child) {
    ExpectNode(lists, children[child], sample.GetData(), expected[child]);
  }
}

Sample RandomSample(RandomNumbers& random) {
  std::size_t const count = 1 + random.Below(120);
  Sample sample{.target = std::vector<double>(count), .hasClasses = random.Below(2) == 0};
  for (double& value : sample.target) value = random.Below(4);
  auto const draw = [&](std::uint32_t numValues, std::uint32_t missingIn) {
    std::vector<double> values(count);
    for (double& value : values) {
      value = random.Below(missingIn) == 0 ? kMissing : random.Below(numValues);
    }
    return values;
  };
  // Values without ties are kept in a way of their own.
  std::vector<double> distinct(count);
  for (std::size_t index = 0; index < count; ++index) {
    distinct[index] = static_cast<double>(index * 7919 % 10007) / 16.0;
  }
  sample.predictors = {{draw(5, 1000000)}, {draw(1000, 4)}, {draw(3, 5), true}, {distinct}};
  if (random.Below(2) == 0) {
    for (std::size_t index = 0; index < count; ++index) {
      sample.weights.push_back(random.Multiple(0.5, 9));
    }
  }
  if (random.Below(2) == 0) {
    for (std::size_t index = 0; index < count; ++index) {
      sample.frequencies.push_back(random.Multiple(1.0, 3));
    }
  }
  return sample;
}

TEST(CaseLists, HaveWhatTheCasesOfEachNodeHaveAtEveryLevel) {
  for (std::uint32_t seed = 1; seed <= 150; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    PreparedSample sample(RandomSample(random), seed % 2 == 0 ? Form::kSorted : Form::kAsItComes);
    std::vector<std::uint8_t> included;
    if (seed % 3 == 0) included.resize(sample.GetData().GetNumCases());
    std::vector<std::uint32_t> cases;
    for (std::uint32_t index = 0; index < sample.GetData().GetNumCases(); ++index) {
      bool const isIncluded = included.empty() || random.Below(3) != 0;
      if (!included.empty()) included[index] = isIncluded ? 1 : 0;
      if (isIncluded) cases.push_back(index);
    }
    CaseLists lists(sample.GetData(), included, sample.GetWorkers());
    struct Node {
      NodeRanges ranges;
      std::vector<std::uint32_t> cases;
    };
    std::vector<Node> level = {{lists.GetRoot(), cases}};
    for (int depth = 0; depth < 5; ++depth) {
      std::vector<Node> next;
      ChildOfPlace childOf(lists.GetNumPlaces(), kNoChild);
      for (Node const& node : level) {
        ExpectNode(lists, node.ranges, sample.GetData(), node.cases);
        if (HasFatalFailure()) return;
        std::uint32_t const numChildren = 2 + random.Below(2);
        bool const losesCases = random.Below(3) == 0;
        std::vector<std::vector<std::uint32_t>> casesOf(numChildren);
        for (std::uint32_t offset = 0; offset < node.cases.size(); ++offset) {
          std::uint32_t const place = node.ranges.places.begin + offset;
          std::uint32_t const child = random.Below(numChildren);
          bool const lost = losesCases && random.Below(4) == 0;
          childOf[place] = lost ? kNoChild : static_cast<std::uint8_t>(child);
          if (!lost) casesOf[child].push_back(node.cases[offset]);
        }
        auto const children = Divide(lists, node.ranges, childOf, static_cast<int>(numChildren));
        for (std::uint32_t child = 0; child < numChildren; ++child) {
          if (random.Below(4) != 0) next.push_back({children[child], casesOf[child]});
        }
      }
      level = std::move(next);
    }
    for (Node const& node : level) ExpectNode(lists, node.ranges, sample.GetData(), node.cases);
    if (HasFatalFailure()) return;
  }
}

}  // namespace
}  // namespace tree::grow
