#include "block_scoring.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "flattening.h"
#include "testing/tree_builder.h"

namespace tree::score {
namespace {

using tree::testing::ANode;

FlatTree MakeTree() {
  auto const root = ANode(1).SplitAt(0, 1.0, ANode(2), ANode(3)).Dumb(0).Build();
  return FlatTree(Flatten(*root));
}

bool HasAvx512() {
#if defined(__x86_64__)
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

TEST(ChooseScoreBlock, TakesVectorsOfEveryLayoutWhereTheProcessorHasThem) {
  if (!HasAvx512()) GTEST_SKIP() << "this processor has none";
  FlatTree const tree = MakeTree();
  double const doubles[] = {0.0, 2.0};
  float const floats[] = {0.0F, 2.0F};
  std::int32_t const codes[] = {0, 2};
  Column const ofDoubles[] = {Column(doubles)};
  Column const ofFloats[] = {Column(floats)};
  Column const ofCodes[] = {Column(codes)};
  struct {
    char const* name;
    Cases cases;
  } const kinds[] = {
      {"rows of doubles", Cases::OfRows(doubles, 2, 1)},
      {"rows of floats", Cases::OfRows(floats, 2, 1)},
      {"columns of doubles", Cases::OfColumns(ofDoubles, 1, 2)},
      {"columns of floats", Cases::OfColumns(ofFloats, 1, 2)},
      {"columns of codes", Cases::OfColumns(ofCodes, 1, 2)},
  };
  for (auto const& [name, cases] : kinds) {
    SCOPED_TRACE(name);
    ScoreBlock const vectors = ChooseAvx512ScoreBlock(tree, cases, false);

    EXPECT_NE(vectors, nullptr);
    EXPECT_EQ(ChooseScoreBlock(tree, cases, false), vectors);
    EXPECT_NE(ChoosePortableScoreBlock(tree, cases, false), vectors);
  }
}

// Values are found by signed numbers of 32 bits, of which a block of 256 rows must not take more.
TEST(ChooseScoreBlock, TakesNoVectorsWhereRowsLieTooFarApart) {
  if (!HasAvx512()) GTEST_SKIP() << "this processor has none";
  FlatTree const tree = MakeTree();
  double const value = 0.0;
  std::size_t const limit =
      (std::numeric_limits<std::int32_t>::max() - std::size_t{Slot::kPredictorMask}) / kBlockSize;
  struct {
    std::size_t stride;
    bool hasVectors;
  } const rows[] = {{1, true}, {limit, true}, {limit + 1, false}, {std::size_t{1} << 32U, false}};
  for (auto const& [stride, hasVectors] : rows) {
    SCOPED_TRACE(stride);
    Cases const cases = Cases::OfRows(&value, 1, 1, stride);

    EXPECT_EQ(ChooseAvx512ScoreBlock(tree, cases, false) != nullptr, hasVectors);
    EXPECT_NE(ChooseScoreBlock(tree, cases, false), nullptr);
  }
}

}  // namespace
}  // namespace tree::score
