#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "score_testing/random_trees.h"
#include "tree/score/scorer.h"

namespace tree::score {
namespace {

constexpr std::size_t kNumCases = 70'000;  // threads take 16,384 at a time
constexpr std::size_t kNumPredictors = 6;
constexpr std::uint32_t kNumClasses = 3;

/// What a call can be asked for.
struct AllAnswers {
  std::vector<std::uint32_t> positions;
  std::vector<std::uint32_t> ids;
  std::vector<double> predictions;
  std::vector<double> probabilities;
};

template <class Number>
bool HaveSameBytes(std::vector<Number> const& a, std::vector<Number> const& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Number)) == 0;
}

void ExpectSameBytes(AllAnswers const& a, AllAnswers const& b) {
  EXPECT_TRUE(HaveSameBytes(a.positions, b.positions));
  EXPECT_TRUE(HaveSameBytes(a.ids, b.ids));
  EXPECT_TRUE(HaveSameBytes(a.predictions, b.predictions));
  EXPECT_TRUE(HaveSameBytes(a.probabilities, b.probabilities));
}

class ScorerThreads : public ::testing::Test {
 protected:
  ScorerThreads()
      : engine_(11), draw_([this](std::uint32_t below) {
          return static_cast<std::uint32_t>(engine_() % below);
        }) {
    testing::TreeShape shape;
    shape.maxNumNodes = 300;
    shape.numFullLevels = 3;
    do {
      root_ = testing::MakeTree(shape, draw_);
    } while (Scorer::FromTree(*root_).GetNumClasses() != kNumClasses);
    for (std::size_t index = 0; index < kNumCases * kNumPredictors; ++index) {
      doubles_.push_back(testing::DrawValue(draw_));
      floats_.push_back(static_cast<float>(draw_(100)) / 4.0F - 9.0F);
    }
    for (std::size_t byte = 0; byte < kNumCases / 8 + 1; ++byte) {
      bits_.push_back(static_cast<std::uint8_t>(draw_(256) | draw_(256)));
    }
    for (std::size_t place = 0; place < kNumCases - 5; ++place) {
      selection_.push_back(draw_(kNumCases));
    }
  }

  /// Columns of other cases, whose values are those of the rows one after the other. `hasFloats`:
  /// in every second one.
  std::vector<Column> MakeColumns(bool hasFloats, bool hasBitmaps) const {
    std::vector<Column> columns;
    for (std::size_t predictor = 0; predictor < kNumPredictors; ++predictor) {
      bool const isFloat = hasFloats && predictor % 2 == 1;
      std::size_t const first = predictor * kNumCases;
      columns.push_back(isFloat ? Column(floats_.data() + first) : Column(doubles_.data() + first));
      if (hasBitmaps) columns.back() = columns.back().WithValidity(bits_.data(), predictor % 8);
    }
    return columns;
  }

  /// All answers, asked for by one call or, unless `together`, positions by one and the others by
  /// another. `filler`: what stands where they go to.
  AllAnswers Score(Scorer const& scorer, Cases const& cases, bool isSelected, int numThreads,
                   bool together, double filler) const {
    std::size_t const count = isSelected ? selection_.size() : kNumCases;
    AllAnswers all{std::vector<std::uint32_t>(count, static_cast<std::uint32_t>(filler)),
                   std::vector<std::uint32_t>(count, static_cast<std::uint32_t>(filler)),
                   std::vector<double>(count, filler),
                   std::vector<double>(count * scorer.GetNumClasses(), filler)};
    ScoreOptions options;
    options.numThreads = numThreads;
    if (isSelected) options.selection = Selection{selection_.data(), selection_.size()};
    Answers answers = {all.positions.data(), all.ids.data(), all.predictions.data(),
                       all.probabilities.data()};
    if (!together) {
      scorer.Score(cases, {all.positions.data(), nullptr, nullptr, nullptr}, options);
      answers.positions = nullptr;
    }
    scorer.Score(cases, answers, options);
    return all;
  }

  AllAnswers ScoreOneByOne(Scorer const& scorer, bool isSelected) const {
    AllAnswers all;
    for (std::size_t place = 0; place < (isSelected ? selection_.size() : kNumCases); ++place) {
      std::size_t const row = isSelected ? selection_[place] : place;
      std::uint32_t const position = scorer.FindPosition(doubles_.data() + row * kNumPredictors);
      double const* const probabilities = scorer.GetProbabilities(position);
      all.positions.push_back(position);
      all.ids.push_back(scorer.GetId(position));
      all.predictions.push_back(scorer.GetPrediction(position));
      all.probabilities.insert(all.probabilities.end(), probabilities,
                               probabilities + scorer.GetNumClasses());
    }
    return all;
  }

  Cases Rows() const { return Cases::OfRows(doubles_.data(), kNumCases, kNumPredictors); }

  std::mt19937_64 engine_;
  testing::Draw draw_;
  std::unique_ptr<NodeImp> root_;
  std::vector<double> doubles_;
  std::vector<float> floats_;
  std::vector<std::uint8_t> bits_;
  std::vector<std::size_t> selection_;
};

TEST_F(ScorerThreads, AnswerTheSameWhateverTheirNumber) {
  Scorer const scorer = Scorer::FromTree(*root_);
  auto const ofColumns = [](std::vector<Column> const& columns) {
    return Cases::OfColumns(columns.data(), columns.size(), kNumCases);
  };
  std::vector<Column> const doubles = MakeColumns(false, false);
  std::vector<Column> const nulls = MakeColumns(false, true);
  std::vector<Column> const mixed = MakeColumns(true, true);
  struct {
    char const* name;
    Cases cases;
  } const kinds[] = {
      {"rows of doubles", Rows()},
      {"rows of floats", Cases::OfRows(floats_.data(), kNumCases, kNumPredictors)},
      {"columns of doubles", ofColumns(doubles)},
      {"columns with bitmaps", ofColumns(nulls)},
      {"columns of two types with bitmaps", ofColumns(mixed)},
  };
  ASSERT_EQ(scorer.GetNumClasses(), kNumClasses);
  for (auto const& [name, cases] : kinds) {
    for (bool const isSelected : {false, true}) {
      SCOPED_TRACE(std::string(name) + (isSelected ? ", selected" : ""));

      AllAnswers const byOne = Score(scorer, cases, isSelected, 1, true, 7e8);

      for (int const numThreads : {0, 2, 3, 64}) {
        for (bool const together : {true, false}) {
          SCOPED_TRACE(std::to_string(numThreads) + (together ? "" : ", positions apart"));
          ExpectSameBytes(Score(scorer, cases, isSelected, numThreads, together, 8e8), byOne);
        }
      }
    }
  }
}

// Answers can be the same for every number of threads and wrong.
TEST_F(ScorerThreads, AnswerEachCaseAsIfItWereAlone) {
  Scorer const scorer = Scorer::FromTree(*root_);
  for (bool const isSelected : {false, true}) {
    SCOPED_TRACE(isSelected ? "selected" : "all");

    ExpectSameBytes(Score(scorer, Rows(), isSelected, 3, true, 7e8),
                    ScoreOneByOne(scorer, isSelected));
  }
}

TEST_F(ScorerThreads, MayAllUseOneScorer) {
  Scorer const scorer = Scorer::FromTree(*root_);
  std::vector<AllAnswers> answers(4);
  std::vector<std::thread> threads;

  for (AllAnswers& answer : answers) {
    threads.emplace_back([&] { answer = Score(scorer, Rows(), false, 2, true, 0.0); });
  }
  for (std::thread& thread : threads) thread.join();

  for (AllAnswers const& answer : answers) ExpectSameBytes(answer, answers.front());
}

}  // namespace
}  // namespace tree::score
