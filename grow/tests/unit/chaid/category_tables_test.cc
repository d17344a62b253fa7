#include "chaid/category_tables.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "association/number_sums.h"
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

TEST(CategoryTables, KeepNodesAndCategoriesApart) {
  CategoryTables<std::int64_t> tables(kNumCategories, kNumNodes, 2);

  ++tables.Row(2)[1];
  tables.Row(0)[2] += 7;

  EXPECT_EQ(tables.GetStride(), 4U);
  EXPECT_EQ(tables.Row(0) + tables.GetStride(), tables.Row(1));
  EXPECT_THAT(TableOf(tables, 0), ElementsAre(0, 0, 0, 0, 0, 1));
  EXPECT_THAT(TableOf(tables, 1), ElementsAre(7, 0, 0, 0, 0, 0));
}

TEST(CategoryTables, CanBeCleared) {
  CategoryTables<std::int64_t> tables(kNumCategories, kNumNodes, 2);
  tables.Row(1)[3] = 5;

  tables.Clear();

  EXPECT_THAT(TableOf(tables, 1), Each(0));
}

TEST(CategoryTables, HaveNoRowsWithoutCategories) {
  EXPECT_TRUE(TableOf(CategoryTables<std::int64_t>(0, 1, 2), 0).empty());
}

struct Case {
  std::size_t category;
  std::size_t node;
  std::size_t classIndex;
  std::int64_t weight;
};

std::vector<Case> MakeCases(std::uint32_t seed) {
  RandomNumbers random(seed);
  std::vector<Case> cases;
  for (int index = 0; index < 200; ++index) {
    cases.push_back({random.Below(kNumCategories), random.Below(kNumNodes), random.Below(2),
                     1 + random.Below(99)});
  }
  return cases;
}

/// Adds up cases whole and in three parts, and compares the parts merged in two orders.
template <class Entry, class Add>
void ExpectPartsToAddUp(std::size_t rowSize, Add const& add) {
  CategoryTables<Entry> whole(kNumCategories, kNumNodes, rowSize);
  std::vector<CategoryTables<Entry>> parts(3, whole);
  std::vector<Case> const cases = MakeCases(1);
  for (std::size_t index = 0; index < cases.size(); ++index) {
    add(whole, cases[index]);
    add(parts[index * index % 3], cases[index]);
  }

  CategoryTables<Entry> forward = parts[0];
  forward.Merge(parts[1]);
  forward.Merge(parts[2]);
  CategoryTables<Entry> backward = parts[2];
  backward.Merge(parts[1]);
  backward.Merge(parts[0]);

  for (std::size_t node = 0; node < kNumNodes; ++node) {
    EXPECT_TRUE(TableOf(forward, node) == TableOf(whole, node)) << "node " << node;
    EXPECT_TRUE(TableOf(backward, node) == TableOf(whole, node)) << "node " << node;
  }
}

TEST(CategoryTables, OfPartsOfClassesAddUpInAnyOrder) {
  ExpectPartsToAddUp<std::int64_t>(4, [](CategoryTables<std::int64_t>& tables, Case const& one) {
    std::int64_t* const entries = tables.Row(one.category) + 4 * one.node;
    entries[one.classIndex] += 1;
    entries[2 + one.classIndex] += one.weight;
  });
}

TEST(CategoryTables, OfPartsOfNumbersAddUpInAnyOrder) {
  ExpectPartsToAddUp<NumberSums>(1, [](CategoryTables<NumberSums>& tables, Case const& one) {
    std::int64_t const number = (one.weight - 50) * (std::int64_t{1} << 50);
    tables.Row(one.category)[one.node].AddCase(1, one.weight, number);
  });
}

}  // namespace
}  // namespace tree::grow
