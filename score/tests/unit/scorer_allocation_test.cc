// That nothing is allocated to score, whatever the tree and however the cases lie.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/rule_builder.h"
#include "testing/tree_builder.h"
#include "tree/score/scorer.h"

namespace tree::score {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::Gt;
using tree::testing::ANode;
using tree::testing::kMissing;

constexpr std::size_t kNumCases = 600;      // more than two blocks
constexpr std::size_t kNumPredictors = 70;  // more than are copied to tiles

std::unique_ptr<OSplitRule> CutAt(int predictor, double cutPoint) {
  auto rule = std::make_unique<OSplitRule>(kMissing, predictor);
  rule->SetCutPoint(cutPoint);
  return rule;
}

/// A node of two classes, which every one that cases end at has to be.
tree::testing::NodeBuilder AnEnd(unsigned int id) { return ANode(id).Classes({1.0, 3.0}, 1); }

std::unique_ptr<NodeImp> MakePlainTree() {
  return ANode(1)
      .SplitBy(CutAt(0, 40.0), AnEnd(2),
               ANode(3).SplitBy(CutAt(1, 0.5), AnEnd(4), AnEnd(5)).Dumb(0))
      .Dumb(1)
      .Build();
}

/// Predictor 1, and then predictor 2 by its code, stand in for predictor 0. What none of them
/// places ends at the root.
std::unique_ptr<NodeImp> MakeTreeWithSurrogates() {
  auto byCode = std::make_unique<NSplitRule>(2, 2);
  byCode->SetCatMapping(0, 0);
  byCode->SetCatMapping(1, 1);
  return ANode(1)
      .SplitBy(CutAt(0, 40.0), AnEnd(2),
               ANode(3).SplitBy(CutAt(1, 0.5), AnEnd(4), AnEnd(5)).Dumb(0))
      .Surrogate(CutAt(1, 0.5))
      .Surrogate(std::move(byCode))
      .Classes({2.0, 6.0}, 1)
      .Build();
}

/// Three children by predictor 0, for which predictor 1 stands in.
std::unique_ptr<NodeImp> MakeMultiwayTree() {
  return ANode(1)
      .SplitBy(std::make_unique<OSplitRule>(tree::testing::ThreeWayRule()), AnEnd(2), AnEnd(3),
               AnEnd(4))
      .Surrogate(CutAt(1, 0.5))
      .Dumb(2)
      .Build();
}

std::unique_ptr<NodeImp> MakeWideTree() {
  return ANode(1).SplitBy(CutAt(kNumPredictors - 1, 40.0), AnEnd(2), AnEnd(3)).Dumb(0).Build();
}

std::vector<std::pair<char const*, std::unique_ptr<NodeImp>>> MakeTrees() {
  std::vector<std::pair<char const*, std::unique_ptr<NodeImp>>> trees;
  trees.emplace_back("plain", MakePlainTree());
  trees.emplace_back("with surrogates", MakeTreeWithSurrogates());
  trees.emplace_back("multiway", MakeMultiwayTree());
  trees.emplace_back("wide", MakeWideTree());
  return trees;
}

/// The same values as rows and as columns. Predictor 0 has numbers up to 79, predictors 1 and 2 the
/// codes 0 and 1; each is missing in half as many cases as the one before it, and not without it.
template <class Value>
class Table {
 public:
  Table() : rows_(kNumCases * kNumPredictors), columns_(kNumCases * kNumPredictors) {
    for (std::size_t row = 0; row < kNumCases; ++row) {
      for (std::size_t predictor = 0; predictor < kNumPredictors; ++predictor) {
        std::size_t const range = predictor % 3 == 0 ? 80 : 2;
        bool const isMissing = row % (std::size_t{5} << std::min<std::size_t>(predictor, 2)) == 0;
        auto const value = static_cast<Value>(isMissing ? static_cast<int>(kMissing)
                                                        : static_cast<int>(row % range));
        rows_[row * kNumPredictors + predictor] = value;
        columns_[predictor * kNumCases + row] = value;
      }
    }
  }

  Cases GetRows() const { return Cases::OfRows(rows_.data(), kNumCases, kNumPredictors); }
  Value const* GetRow(std::size_t row) const { return rows_.data() + row * kNumPredictors; }
  Column GetColumn(std::size_t predictor) const {
    return Column(columns_.data() + predictor * kNumCases);
  }

 private:
  std::vector<Value> rows_;
  std::vector<Value> columns_;
};

/// The columns of one table, or of several in turn.
template <class... Values>
std::vector<Column> ListColumns(Table<Values> const&... tables) {
  std::vector<Column> columns;
  for (std::size_t predictor = 0; predictor < kNumPredictors; ++predictor) {
    Column const choices[] = {tables.GetColumn(predictor)...};
    columns.push_back(choices[predictor % sizeof...(tables)]);
  }
  return columns;
}

std::vector<Column> WithBitmap(std::vector<Column> columns, std::uint8_t const* bits) {
  for (std::size_t predictor = 0; predictor < columns.size(); ++predictor) {
    columns[predictor] = columns[predictor].WithValidity(bits, predictor);
  }
  return columns;
}

Cases OfColumns(std::vector<Column> const& columns) {
  return Cases::OfColumns(columns.data(), columns.size(), kNumCases);
}

TEST(Scorer, AllocatesNothingToScoreInOneThread) {
  Table<double> const doubles;
  Table<float> const floats;
  Table<std::int32_t> const codes;
  std::vector<std::uint8_t> const bits((kNumPredictors + kNumCases) / 8 + 1, 0b1011'0111);
  std::vector<Column> const doubleColumns = ListColumns(doubles);
  std::vector<Column> const floatColumns = ListColumns(floats);
  std::vector<Column> const nullColumns = WithBitmap(doubleColumns, bits.data());
  std::vector<Column> const mixedColumns =
      WithBitmap(ListColumns(doubles, floats, codes), bits.data());
  struct {
    char const* name;
    Cases cases;
  } const kinds[] = {
      {"rows of doubles", doubles.GetRows()},
      {"rows of floats", floats.GetRows()},
      {"rows with NaN for none", doubles.GetRows().WithNan(NanMeaning::kMissing)},
      {"columns of doubles", OfColumns(doubleColumns)},
      {"columns of floats", OfColumns(floatColumns)},
      {"columns with bitmaps", OfColumns(nullColumns)},
      {"columns of all types", OfColumns(mixedColumns)},
  };
  std::vector<std::size_t> backwards(kNumCases);
  std::iota(backwards.rbegin(), backwards.rend(), std::size_t{0});
  for (auto const& [treeName, root] : MakeTrees()) {
    SCOPED_TRACE(treeName);
    Scorer const scorer = Scorer::FromTree(*root);
    for (auto const& [kindName, cases] : kinds) {
      for (std::size_t const* const selection :
           {static_cast<std::size_t*>(nullptr), backwards.data()}) {
        SCOPED_TRACE(std::string(kindName) + (selection == nullptr ? "" : ", selected"));
        std::vector<std::uint32_t> positions(kNumCases);
        std::vector<std::uint32_t> ids(kNumCases);
        std::vector<double> predictions(kNumCases);
        std::vector<double> probabilities(2 * kNumCases);
        Answers const answers = {positions.data(), ids.data(), predictions.data(),
                                 probabilities.data()};
        ScoreOptions options;
        options.numThreads = 1;
        if (selection != nullptr) options.selection = Selection{selection, kNumCases};
        long const before = tree::testing::CountAllocations();

        scorer.Score(cases, answers, options);

        EXPECT_EQ(tree::testing::CountAllocations(), before);
        EXPECT_THAT(ids, AllOf(Each(Gt(0U)), Contains(2U)));
        EXPECT_THAT(probabilities, Each(Gt(0.0)));
      }
    }
  }
}

TEST(Scorer, AllocatesNothingToScoreOneCase) {
  Table<double> const doubles;
  Table<float> const floats;
  for (auto const& [name, root] : MakeTrees()) {
    SCOPED_TRACE(name);
    Scorer const scorer = Scorer::FromTree(*root);
    std::vector<std::uint32_t> positions(2 * kNumCases);
    long const before = tree::testing::CountAllocations();

    for (std::size_t row = 0; row < kNumCases; ++row) {
      positions[2 * row] = scorer.FindPosition(doubles.GetRow(row));
      positions[2 * row + 1] = scorer.FindPosition(floats.GetRow(row));
    }

    EXPECT_EQ(tree::testing::CountAllocations(), before);
    EXPECT_THAT(positions, Each(Gt(0U)));
  }
}

// The memory of a thread that is started counts for the one that starts it.
TEST(Scorer, StartsAsManyThreadsAsItIsAskedTo) {
  constexpr std::size_t kManyCases = 70'000;
  constexpr std::size_t kShareSize = 16'384;  // what a thread takes at a time
  std::vector<double> const rows(kManyCases * 2, 1.0);
  std::vector<std::uint32_t> positions(kManyCases);
  auto const root = MakePlainTree();
  Scorer const scorer = Scorer::FromTree(*root);
  auto const countAllocations = [&](int numThreads) {
    ScoreOptions options;
    options.numThreads = numThreads;
    long const before = tree::testing::CountAllocations();
    scorer.Score(Cases::OfRows(rows.data(), kManyCases, 2),
                 {positions.data(), nullptr, nullptr, nullptr}, options);
    return tree::testing::CountAllocations() - before;
  };

  EXPECT_EQ(countAllocations(1), 0);
  EXPECT_GT(countAllocations(2), 0);
  EXPECT_GT(countAllocations(3), countAllocations(2));
  // Where nobody knows how many threads the machine has, one does it all.
  std::size_t const numShares = (kManyCases + kShareSize - 1) / kShareSize;
  std::size_t const ofMachine = std::max(1U, std::thread::hardware_concurrency());
  EXPECT_EQ(countAllocations(0),
            countAllocations(static_cast<int>(std::min(ofMachine, numShares))));
}

}  // namespace
}  // namespace tree::score
