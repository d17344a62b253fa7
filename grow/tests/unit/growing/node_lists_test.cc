#include "growing/node_lists.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <class Items>
std::vector<std::uint32_t> IndexesOf(Items const& items) {
  std::vector<std::uint32_t> indexes;
  for (auto const& item : items) indexes.push_back(item.index);
  return indexes;
}

TEST(NodeLists, GivesTheRootEverything) {
  NodeLists lists(3);
  lists.AddOrdered({{0, 2}, {1, 0}});
  lists.AddNominal({{7, 1}});

  NodeLists::Node const root = lists.MakeRoot();

  EXPECT_THAT(lists.Cases(root), ElementsAre(0, 1, 2));
  EXPECT_THAT(IndexesOf(lists.Ordered(root, 0)), ElementsAre(2, 0));
  EXPECT_THAT(IndexesOf(lists.Nominal(root, 1)), ElementsAre(1));
}

TEST(NodeLists, NumbersPredictorsInTheOrderInWhichTheyAreAdded) {
  NodeLists lists(1);

  EXPECT_EQ(lists.AddNominal({}), 0U);
  EXPECT_EQ(lists.AddOrdered({}), 1U);
  EXPECT_EQ(lists.AddNominal({}), 2U);
}

TEST(NodeLists, DividesANodeAndKeepsTheOrderOfItsLists) {
  NodeLists lists(5);
  lists.AddOrdered({{0, 3}, {0, 4}, {1, 0}, {2, 1}});
  lists.AddNominal({{5, 4}, {5, 2}, {6, 1}});

  std::vector<NodeLists::Node> const children = lists.Divide(lists.MakeRoot(), {1, 0, 1, 0, 1}, 2);

  ASSERT_EQ(children.size(), 2U);
  EXPECT_THAT(lists.Cases(children[0]), ElementsAre(1, 3));
  EXPECT_THAT(lists.Cases(children[1]), ElementsAre(0, 2, 4));
  EXPECT_THAT(IndexesOf(lists.Ordered(children[0], 0)), ElementsAre(3, 1));
  EXPECT_THAT(IndexesOf(lists.Ordered(children[1], 0)), ElementsAre(4, 0));
  EXPECT_THAT(IndexesOf(lists.Nominal(children[0], 1)), ElementsAre(1));
  EXPECT_THAT(IndexesOf(lists.Nominal(children[1], 1)), ElementsAre(4, 2));
}

TEST(NodeLists, GivesNobodyTheCasesThatGoNowhere) {
  NodeLists lists(4);
  lists.AddOrdered({{0, 0}, {1, 1}, {2, 2}, {3, 3}});
  int const nowhere = NodeLists::kNowhere;

  std::vector<NodeLists::Node> const children =
      lists.Divide(lists.MakeRoot(), {nowhere, 0, nowhere, 1}, 2);

  EXPECT_THAT(lists.Cases(children[0]), ElementsAre(1));
  EXPECT_THAT(lists.Cases(children[1]), ElementsAre(3));
  EXPECT_THAT(IndexesOf(lists.Ordered(children[1], 0)), ElementsAre(3));
}

TEST(NodeLists, LeavesAChildWithoutCasesEmpty) {
  NodeLists lists(2);
  lists.AddOrdered({{0, 0}});

  std::vector<NodeLists::Node> const children = lists.Divide(lists.MakeRoot(), {2, 2}, 3);

  ASSERT_EQ(children.size(), 3U);
  EXPECT_THAT(lists.Cases(children[0]), IsEmpty());
  EXPECT_THAT(IndexesOf(lists.Ordered(children[1], 0)), IsEmpty());
  EXPECT_THAT(lists.Cases(children[2]), ElementsAre(0, 1));
}

/// A tree grown by chance, beside which each node's cases are kept in a plain set.
class RandomGrowth {
 public:
  explicit RandomGrowth(std::uint32_t seed) : random_(seed), lists_(kNumCases) {
    std::set<std::uint32_t> all;
    for (std::uint32_t index = 0; index < kNumCases; ++index) {
      all.insert(index);
      if (random_.Below(5) > 0) ordered_.push_back({random_.Below(20), index});
      if (random_.Below(3) > 0) nominal_.push_back({random_.Below(4), index});
    }
    std::stable_sort(ordered_.begin(), ordered_.end(),
                     [](RankedCase const& a, RankedCase const& b) { return a.rank < b.rank; });
    lists_.AddOrdered(ordered_);
    lists_.AddNominal(nominal_);
    leaves_.push_back({lists_.MakeRoot(), all});
  }

  void Split() {
    std::size_t const chosen = random_.Below(static_cast<std::uint32_t>(leaves_.size()));
    Leaf const leaf = leaves_[chosen];
    leaves_.erase(leaves_.begin() + static_cast<std::ptrdiff_t>(chosen));
    int const numChildren = static_cast<int>(1 + random_.Below(4));
    std::vector<int> childOf(kNumCases, 12345);  // not to be read for other nodes' cases
    std::vector<std::set<std::uint32_t>> expected(static_cast<std::size_t>(numChildren));
    for (std::uint32_t const index : leaf.cases) {
      int const child =
          static_cast<int>(random_.Below(static_cast<std::uint32_t>(numChildren) + 1));
      childOf[index] = child == numChildren ? NodeLists::kNowhere : child;
      if (child < numChildren) expected[static_cast<std::size_t>(child)].insert(index);
    }
    std::vector<NodeLists::Node> const children = lists_.Divide(leaf.node, childOf, numChildren);
    for (std::size_t child = 0; child < children.size(); ++child) {
      leaves_.push_back({children[child], expected[child]});
    }
  }

  void Check() const {
    for (Leaf const& leaf : leaves_) {
      auto const cases = lists_.Cases(leaf.node);
      EXPECT_TRUE(std::equal(cases.begin(), cases.end(), leaf.cases.begin(), leaf.cases.end()));
      EXPECT_EQ(IndexesOf(lists_.Ordered(leaf.node, 0)), Filter(ordered_, leaf.cases));
      EXPECT_EQ(IndexesOf(lists_.Nominal(leaf.node, 1)), Filter(nominal_, leaf.cases));
    }
  }

 private:
  static constexpr std::uint32_t kNumCases = 60;
  struct Leaf {
    NodeLists::Node node;
    std::set<std::uint32_t> cases;
  };

  template <class Item>
  static std::vector<std::uint32_t> Filter(std::vector<Item> const& items,
                                           std::set<std::uint32_t> const& cases) {
    std::vector<std::uint32_t> found;
    for (Item const& item : items) {
      if (cases.count(item.index) > 0) found.push_back(item.index);
    }
    return found;
  }

  RandomNumbers random_;
  NodeLists lists_;
  std::vector<RankedCase> ordered_;
  std::vector<CodedCase> nominal_;
  std::vector<Leaf> leaves_;
};

TEST(NodeLists, KeepsEveryNodeOfARandomTreeInOrder) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomGrowth growth(seed);
    for (int split = 0; split < 10; ++split) {
      growth.Split();
      growth.Check();
    }
  }
}

}  // namespace
}  // namespace tree::grow
