#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "score_testing/random_trees.h"
#include "tree/score/scorer.h"

namespace tree::score {
namespace {

constexpr std::size_t kNumCases = 100'000;
constexpr std::size_t kNumPredictors = 6;

class ScorerThreads : public ::testing::Test {
 protected:
  ScorerThreads()
      : engine_(11), draw_([this](std::uint32_t below) {
          return static_cast<std::uint32_t>(engine_() % below);
        }) {
    testing::TreeShape shape;
    shape.maxNumNodes = 300;
    root_ = testing::MakeTree(shape, draw_);
    for (std::size_t index = 0; index < kNumCases * kNumPredictors; ++index) {
      rows_.push_back(testing::DrawValue(draw_));
    }
  }

  std::vector<std::uint32_t> Score(Scorer const& scorer, int numThreads) const {
    std::vector<std::uint32_t> positions(kNumCases);
    Answers answers;
    answers.positions = positions.data();
    ScoreOptions options;
    options.numThreads = numThreads;
    scorer.Score(Cases::OfRows(rows_.data(), kNumCases, kNumPredictors), answers, options);
    return positions;
  }

  std::mt19937_64 engine_;
  testing::Draw draw_;
  std::unique_ptr<NodeImp> root_;
  std::vector<double> rows_;
};

TEST_F(ScorerThreads, AnswerTheSameWhateverTheirNumber) {
  Scorer const scorer = Scorer::FromTree(*root_);

  std::vector<std::uint32_t> const byOne = Score(scorer, 1);

  for (int const numThreads : {0, 2, 3, 64}) {
    SCOPED_TRACE(numThreads);
    EXPECT_EQ(Score(scorer, numThreads), byOne);
  }
}

TEST_F(ScorerThreads, MayAllUseOneScorer) {
  Scorer const scorer = Scorer::FromTree(*root_);
  std::vector<std::vector<std::uint32_t>> answers(4);
  std::vector<std::thread> threads;

  for (auto& answer : answers) {
    threads.emplace_back([&] { answer = Score(scorer, 2); });
  }
  for (std::thread& thread : threads) thread.join();

  for (auto const& answer : answers) EXPECT_EQ(answer, answers.front());
}

}  // namespace
}  // namespace tree::score
