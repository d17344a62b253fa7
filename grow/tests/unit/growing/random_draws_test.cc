#include "growing/random_draws.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "growing/workers.h"

namespace tree::grow {
namespace {

using testing::IsEmpty;

std::vector<std::size_t> SizesOf(std::vector<std::uint32_t> const& folds, std::size_t numFolds) {
  std::vector<std::size_t> sizes(numFolds);
  for (std::uint32_t const fold : folds) ++sizes.at(fold);
  return sizes;
}

std::size_t Count(std::vector<std::uint8_t> const& drawn) {
  return std::accumulate(drawn.begin(), drawn.end(), std::size_t{0});
}

TEST(DrawTestSample, DrawsTheSameForASeed) {
  EXPECT_EQ(DrawTestSample(1000, 0.3, 7), DrawTestSample(1000, 0.3, 7));
  EXPECT_NE(DrawTestSample(1000, 0.3, 7), DrawTestSample(1000, 0.3, 8));
}

TEST(DrawTestSample, DrawsAboutItsShare) {
  for (long seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    // Five standard deviations, sqrt(100000 * 0.3 * 0.7) = 145.
    EXPECT_NEAR(static_cast<double>(Count(DrawTestSample(100000, 0.3, seed))), 30000.0, 5 * 145.0);
  }
}

TEST(DrawTestSample, DrawsAllOrNothingAtTheEnds) {
  EXPECT_EQ(Count(DrawTestSample(100, 0.0, 1)), 0U);
  EXPECT_EQ(Count(DrawTestSample(100, 1.0, 1)), 100U);
  EXPECT_THAT(DrawTestSample(0, 0.5, 1), IsEmpty());
}

TEST(DrawTestSample, KeepsTheCasesThatASmallerShareDraws) {
  std::vector<std::uint8_t> const few = DrawTestSample(1000, 0.2, 5);
  std::vector<std::uint8_t> const many = DrawTestSample(1000, 0.6, 5);

  for (std::size_t index = 0; index < few.size(); ++index) EXPECT_LE(few[index], many[index]);
}

TEST(DrawFolds, DrawsTheSameForASeed) {
  EXPECT_EQ(DrawFolds(1000, 10, 7), DrawFolds(1000, 10, 7));
  EXPECT_NE(DrawFolds(1000, 10, 7), DrawFolds(1000, 10, 8));
}

TEST(DrawFolds, MakesFoldsOfAlmostTheSameSize) {
  struct {
    std::size_t numCases;
    std::size_t numFolds;
    std::vector<std::size_t> sizes;
  } const kRows[] = {
      {10, 5, {2, 2, 2, 2, 2}}, {11, 3, {4, 4, 3}}, {2, 4, {1, 1, 0, 0}}, {0, 2, {0, 0}}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.numCases);
    for (long seed = 1; seed <= 20; ++seed) {
      EXPECT_EQ(SizesOf(DrawFolds(row.numCases, row.numFolds, seed), row.numFolds), row.sizes);
    }
  }
}

TEST(DrawFolds, PutsEveryCaseInEveryFoldAboutAsOften) {
  constexpr long kNumSeeds = 3000;
  std::vector<std::vector<int>> counts(6, std::vector<int>(3));

  for (long seed = 1; seed <= kNumSeeds; ++seed) {
    std::vector<std::uint32_t> const folds = DrawFolds(6, 3, seed);
    for (std::size_t index = 0; index < 6; ++index) ++counts[index][folds[index]];
  }

  // Five standard deviations, sqrt(3000 * 1/3 * 2/3) = 26.
  for (auto const& ofCase : counts) {
    for (int const count : ofCase) EXPECT_NEAR(count, 1000.0, 5 * 26.0);
  }
}

TEST(RandomDraws, ArePolledAndTheSame) {
  constexpr std::size_t kNumCases = 2 * kWorkPerPoll + 5;  // three slices
  int numPolls = 0;
  auto const poll = [&numPolls] { ++numPolls; };

  EXPECT_EQ(DrawTestSample(kNumCases, 0.3, 7, poll), DrawTestSample(kNumCases, 0.3, 7));
  EXPECT_EQ(numPolls, 2);
  EXPECT_EQ(DrawFolds(kNumCases, 10, 7, poll), DrawFolds(kNumCases, 10, 7));
  EXPECT_EQ(numPolls, 4);
}

}  // namespace
}  // namespace tree::grow
