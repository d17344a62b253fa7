#include "chaid/category_tables.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chaid/counted_cases.h"
#include "grow_testing/random_numbers.h"

namespace tree::grow {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr std::size_t kNumCategories = 3;
constexpr std::size_t kNumNodes = 2;

template <class Entry>
std::vector<Entry> TableOf(CategoryTables<Entry> const& tables, std::size_t node) {
  std::vector<Entry> table;
  tables.CopyTable(node, table);
  return table;
}

TEST(CategoryTables, StartWithoutCases) {
  CategoryTables<std::int64_t> const tables(kNumCategories, kNumNodes, 2);

  EXPECT_THAT(TableOf(tables, 1), ElementsAre(0, 0, 0, 0, 0, 0));
}

// Node 0 has the first two entries of a category, node 1 the others.
TEST(CategoryTables, KeepNodesAndCategoriesApart) {
  std::uint16_t const classes[] = {1, 0, 0};
  std::uint16_t const codes[] = {2, 0, 0};
  std::uint32_t const entries[] = {1, 2, 2};
  CategoryTables<std::int64_t> tables(kNumCategories, kNumNodes, 2);
  CategoryCodes const ofCases = {codes, 2};

  CategoryTables<std::int64_t>::Add<1>({&tables, 1}, {&ofCases, 1}, entries, 0, 3,
                                       SingleCases(classes));

  EXPECT_THAT(TableOf(tables, 0), ElementsAre(0, 0, 0, 0, 0, 1));
  EXPECT_THAT(TableOf(tables, 1), ElementsAre(2, 0, 0, 0, 0, 0));
}

TEST(CategoryTables, TakeCodesAboveThatOfMissingValuesForIt) {
  std::uint16_t const classes[] = {0, 1, 1};
  std::uint16_t const codes[] = {1, 2, 65535};
  std::uint32_t const indices[] = {0, 1, 2};
  CategoryTables<std::int64_t> tables(kNumCategories, 1, 2);

  tables.Add(indices, {codes, 2}, SingleCases(classes));

  EXPECT_THAT(TableOf(tables, 0), ElementsAre(0, 0, 1, 0, 0, 2));
}

TEST(CategoryTables, CanBeCleared) {
  std::uint16_t const classes[] = {1};
  std::uint16_t const codes[] = {1};
  std::uint32_t const indices[] = {0};
  CategoryTables<std::int64_t> tables(kNumCategories, kNumNodes, 2);
  tables.Add(indices, {codes, 2}, SingleCases(classes));

  tables.Clear();

  EXPECT_THAT(TableOf(tables, 0), Each(0));
}

TEST(CategoryTables, HaveNoRowsWithoutCategories) {
  EXPECT_TRUE(TableOf(CategoryTables<std::int64_t>(0, 1, 2), 0).empty());
}

/// Random cases of two classes and of numbers, in two nodes and by two predictors.
struct RandomCases {
  static constexpr std::size_t kNumCases = 200;

  explicit RandomCases(std::uint32_t seed) {
    RandomNumbers random(seed);
    for (std::size_t index = 0; index < kNumCases; ++index) {
      nodes.push_back(random.Below(kNumNodes));
      classes.push_back(static_cast<std::uint16_t>(random.Below(2)));
      frequencies.multiples.push_back(1 + random.Below(5));
      weights.multiples.push_back(1 + random.Below(99));
      numbers.multiples.push_back((static_cast<std::int64_t>(random.Below(99)) - 50) *
                                  (std::int64_t{1} << 50));
      for (auto& predictor : codes) {
        predictor.push_back(static_cast<std::uint16_t>(random.Below(kNumCategories)));
      }
    }
  }

  CategoryCodes CodesOf(std::size_t predictor) const {
    return {codes[predictor].data(), kNumCategories - 1};
  }

  std::vector<std::size_t> nodes;
  std::vector<std::uint16_t> classes;
  FixedWeights frequencies;
  FixedWeights weights;
  FixedNumbers numbers;
  std::vector<std::uint16_t> codes[2];
};

/// Adds up the cases of each node alone, those of all nodes together, and three parts of them,
/// merged in two orders: the tables of both predictors have to be the same.
template <class Cases>
void ExpectSameTables(RandomCases const& random, std::size_t rowSize, Cases const& cases) {
  using Entry = typename Cases::Entry;
  using Tables = CategoryTables<Entry>;
  std::vector<std::uint32_t> entries;
  for (std::size_t index = 0; index < RandomCases::kNumCases; ++index) {
    entries.push_back(
        static_cast<std::uint32_t>(random.nodes[index] * rowSize + cases.EntryOf(index)));
  }
  CategoryCodes const codes[] = {random.CodesOf(0), random.CodesOf(1)};
  auto const addUp = [&](std::size_t begin, std::size_t end) {
    std::vector<Tables> both(2, Tables(kNumCategories, kNumNodes, rowSize));
    Tables::template Add<2>(both, codes, entries, begin, end, cases);
    return both;
  };
  std::vector<Tables> const whole = addUp(0, RandomCases::kNumCases);
  std::vector<std::vector<Tables>> const parts = {addUp(0, 20), addUp(20, 20), addUp(20, 150),
                                                  addUp(150, RandomCases::kNumCases)};
  for (std::size_t predictor = 0; predictor < 2; ++predictor) {
    Tables forward = parts[0][predictor];
    for (std::size_t part = 1; part < 4; ++part) forward.Merge(parts[part][predictor]);
    Tables backward = parts[3][predictor];
    for (std::size_t part = 3; part-- > 0;) backward.Merge(parts[part][predictor]);
    for (std::size_t node = 0; node < kNumNodes; ++node) {
      SCOPED_TRACE("predictor " + std::to_string(predictor) + ", node " + std::to_string(node));
      std::vector<std::uint32_t> indices;
      for (std::uint32_t index = 0; index < RandomCases::kNumCases; ++index) {
        if (random.nodes[index] == node) indices.push_back(index);
      }
      Tables alone(kNumCategories, 1, rowSize);
      alone.Add(indices, codes[predictor], cases);

      EXPECT_TRUE(TableOf(whole[predictor], node) == TableOf(alone, 0));
      EXPECT_TRUE(TableOf(forward, node) == TableOf(alone, 0));
      EXPECT_TRUE(TableOf(backward, node) == TableOf(alone, 0));
    }
  }
}

TEST(CategoryTables, OfPartsAddUpInAnyOrder) {
  RandomCases const random(1);
  std::uint16_t const* const classes = random.classes.data();

  ExpectSameTables(random, 2, SingleCases(classes));
  ExpectSameTables(random, 2, RepeatedCases(classes, random.frequencies.multiples.data()));
  ExpectSameTables(random, 4, WeightedCases(classes, 2, random.frequencies, random.weights));
  ExpectSameTables(random, 1, NumberCases(random.numbers, random.frequencies, random.weights));
}

}  // namespace
}  // namespace tree::grow
