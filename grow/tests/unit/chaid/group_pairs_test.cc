#include "chaid/group_pairs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

using Key = std::pair<std::size_t, std::size_t>;

/// Pairs that are tested by looking them up, and all tests that were asked for.
class PairsUnderTest {
 public:
  PairsUnderTest(CategoryKind kind, std::size_t numCategories, bool floating) {
    pairs.Reset(kind, numCategories, floating);
  }

  void Update(std::vector<std::size_t> const& changed) {
    asked.clear();
    pairs.Update(changed, [&](std::size_t first, std::size_t second) {
      asked.emplace_back(first, second);
      return std::optional<TestStatistic>({values.at({first, second}), 1.0, 0.0});
    });
  }
  void UpdateAll() { Update({pairs.GetGroups().begin(), pairs.GetGroups().end()}); }
  Key FindLeast() {
    GroupPair pair;
    EXPECT_TRUE(pairs.FindLeastSignificant(pair));
    return {pair.first, pair.second};
  }

  GroupPairs pairs;
  std::map<Key, double> values;
  std::vector<Key> asked;
};

TEST(GroupPairs, AreAllPairsOfNominalCategories) {
  PairsUnderTest test(CategoryKind::kNominal, 3, false);
  test.values = {{{0, 1}, 3.0}, {{0, 2}, 1.0}, {{1, 2}, 2.0}};

  test.UpdateAll();

  EXPECT_THAT(test.asked, UnorderedElementsAre(Key(0, 1), Key(0, 2), Key(1, 2)));
  EXPECT_EQ(test.FindLeast(), Key(0, 2));
  EXPECT_NEAR(test.pairs.LogPOf({1, 2}), std::log(std::erfc(1.0)), 1e-14);
}

TEST(GroupPairs, AreNeighboursOfOrdinalCategories) {
  PairsUnderTest test(CategoryKind::kOrdinal, 4, false);
  test.values = {{{0, 1}, 3.0}, {{1, 2}, 2.0}, {{2, 3}, 5.0}};

  test.UpdateAll();

  EXPECT_THAT(test.asked, UnorderedElementsAre(Key(0, 1), Key(1, 2), Key(2, 3)));
  EXPECT_EQ(test.FindLeast(), Key(1, 2));
}

TEST(GroupPairs, AreWithTheFloatingCategoryWhateverIsBetween) {
  PairsUnderTest test(CategoryKind::kOrdinal, 4, true);
  test.values = {{{0, 1}, 3.0}, {{1, 2}, 2.0}, {{0, 3}, 0.5}, {{1, 3}, 7.0}, {{2, 3}, 5.0}};

  test.UpdateAll();

  EXPECT_EQ(test.asked.size(), 5U);
  EXPECT_EQ(test.FindLeast(), Key(0, 3));
}

TEST(GroupPairs, GiveTheFirstOfEqualOnes) {
  PairsUnderTest test(CategoryKind::kNominal, 4, false);
  for (std::size_t second = 1; second < 4; ++second) {
    for (std::size_t first = 0; first < second; ++first) test.values[{first, second}] = 2.0;
  }
  test.values[{0, 1}] = 3.0;
  test.UpdateAll();
  EXPECT_EQ(test.FindLeast(), Key(0, 2));

  // A lower partner that becomes as good as the best one.
  test.values[{0, 1}] = 2.0;
  test.Update({1});

  EXPECT_EQ(test.FindLeast(), Key(0, 1));
}

TEST(GroupPairs, TestOnlyWhatHasChanged) {
  PairsUnderTest test(CategoryKind::kNominal, 4, false);
  test.values = {{{0, 1}, 3.0}, {{0, 2}, 1.0}, {{0, 3}, 4.0},
                 {{1, 2}, 2.0}, {{1, 3}, 6.0}, {{2, 3}, 5.0}};
  test.UpdateAll();

  test.pairs.Remove(2);
  test.values[{0, 1}] = 8.0;
  test.values[{0, 3}] = 9.0;
  test.Update({0});

  EXPECT_THAT(test.asked, UnorderedElementsAre(Key(0, 1), Key(0, 3)));
  EXPECT_THAT(test.pairs.GetGroups(), ElementsAre(0, 1, 3));
  EXPECT_EQ(test.FindLeast(), Key(1, 3));
}

TEST(GroupPairs, BringNeighboursTogetherWhenOneIsRemoved) {
  PairsUnderTest test(CategoryKind::kOrdinal, 4, false);
  test.values = {{{0, 1}, 3.0}, {{1, 2}, 2.0}, {{2, 3}, 5.0}};
  test.UpdateAll();

  test.pairs.Remove(2);
  test.values = {{{0, 1}, 3.0}, {{1, 3}, 2.5}};
  test.Update({1});

  EXPECT_THAT(test.asked, UnorderedElementsAre(Key(0, 1), Key(1, 3)));
  EXPECT_EQ(test.FindLeast(), Key(1, 3));
}

TEST(GroupPairs, TakeBackWhatWasRemoved) {
  PairsUnderTest test(CategoryKind::kOrdinal, 3, false);
  test.values = {{{0, 1}, 3.0}, {{1, 2}, 2.0}, {{0, 2}, 9.0}};
  test.UpdateAll();
  test.pairs.Remove(1);
  test.Update({0});
  EXPECT_EQ(test.FindLeast(), Key(0, 2));

  test.pairs.Insert(1);
  test.Update({0, 1});

  EXPECT_THAT(test.pairs.GetGroups(), ElementsAre(0, 1, 2));
  EXPECT_EQ(test.FindLeast(), Key(1, 2));
}

TEST(GroupPairs, LeaveOutPairsThatMustNotBeMerged) {
  GroupPairs pairs;
  pairs.Reset(CategoryKind::kNominal, 3, false);
  auto const test = [](std::size_t first, std::size_t second) -> std::optional<TestStatistic> {
    if (first == 0) return std::nullopt;
    return TestStatistic{static_cast<double>(second), 1.0, 0.0};
  };
  pairs.Update(pairs.GetGroups(), test);

  GroupPair pair;
  EXPECT_TRUE(pairs.FindLeastSignificant(pair));
  EXPECT_EQ(pair.first, 1U);

  pairs.Remove(2);
  pairs.Update(std::array<std::size_t, 1>{1}, test);
  EXPECT_FALSE(pairs.FindLeastSignificant(pair));
}

TEST(GroupPairs, CompareByProbabilityWhereDegreesOfFreedomDiffer) {
  GroupPairs pairs;
  pairs.Reset(CategoryKind::kOrdinal, 3, false);

  pairs.Update(pairs.GetGroups(), [](std::size_t first, std::size_t) {
    return std::optional<TestStatistic>(first == 0 ? TestStatistic{4.0, 1.0, 0.0}
                                                   : TestStatistic{6.0, 9.0, 0.0});
  });

  GroupPair pair;
  EXPECT_TRUE(pairs.FindLeastSignificant(pair));
  EXPECT_EQ(pair.first, 1U);
}

TEST(GroupPairs, FindTheMostSimilarOfAllPartners) {
  PairsUnderTest nominal(CategoryKind::kNominal, 3, false);
  nominal.values = {{{0, 1}, 3.0}, {{0, 2}, 4.0}, {{1, 2}, 2.0}};
  nominal.UpdateAll();
  EXPECT_EQ(nominal.pairs.FindMostSimilar(0), 1U);
  EXPECT_EQ(nominal.pairs.FindMostSimilar(1), 2U);
  EXPECT_EQ(nominal.pairs.FindMostSimilar(2), 1U);

  PairsUnderTest ordinal(CategoryKind::kOrdinal, 4, true);
  ordinal.values = {{{0, 1}, 3.0}, {{1, 2}, 2.0}, {{0, 3}, 0.5}, {{1, 3}, 7.0}, {{2, 3}, 5.0}};
  ordinal.UpdateAll();
  EXPECT_EQ(ordinal.pairs.FindMostSimilar(0), 3U);
  EXPECT_EQ(ordinal.pairs.FindMostSimilar(1), 2U);
  EXPECT_EQ(ordinal.pairs.FindMostSimilar(2), 1U);
  EXPECT_EQ(ordinal.pairs.FindMostSimilar(3), 0U);
}

/// The pair of least value among those that may be merged, the first of equal ones.
Key LookForLeast(PairsUnderTest const& test, CategoryKind kind, std::size_t floating) {
  auto const groups = test.pairs.GetGroups();
  Key best;
  double value = INFINITY;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (std::size_t j = i + 1; j < groups.size(); ++j) {
      bool const mayMerge = kind == CategoryKind::kNominal || j == i + 1 || groups[j] == floating;
      double const candidate = test.values.at({groups[i], groups[j]});
      if (mayMerge && candidate < value) {
        value = candidate;
        best = {groups[i], groups[j]};
      }
    }
  }
  return best;
}

TEST(GroupPairs, RememberTheBestThroughAllChanges) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    auto const kind = seed % 2 == 0 ? CategoryKind::kNominal : CategoryKind::kOrdinal;
    std::size_t const numCategories = 3 + random.Below(8);
    bool const floating = seed % 4 == 1;
    PairsUnderTest test(kind, numCategories, floating);
    auto const change = [&](std::size_t group) {
      for (std::size_t other = 0; other < numCategories; ++other) {
        if (other != group) {
          test.values[{std::min(group, other), std::max(group, other)}] = random.Below(12);
        }
      }
    };
    for (std::size_t group = 0; group < numCategories; ++group) change(group);
    test.UpdateAll();
    std::vector<std::size_t> removed;

    while (test.pairs.GetGroups().size() > 2) {
      Key const least = test.FindLeast();
      ASSERT_EQ(least, LookForLeast(test, kind, floating ? numCategories - 1 : numCategories));
      test.pairs.Remove(least.second);
      change(least.first);
      std::vector<std::size_t> changed = {least.first};
      if (!removed.empty() && removed.back() > least.first && random.Below(4) == 0) {
        test.pairs.Insert(removed.back());
        change(removed.back());
        changed.push_back(removed.back());
        removed.pop_back();
      }
      removed.push_back(least.second);
      test.Update(changed);
    }
  }
}

}  // namespace
}  // namespace tree::grow
