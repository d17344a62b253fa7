#include "score_testing/score_every_way.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <vector>

#include "block_scoring.h"
#include "flat_tree.h"
#include "score_testing/guarded_memory.h"
#include "tree/score/scorer.h"

namespace tree::score::testing {
namespace {

constexpr std::size_t kNumCases = 40;
static_assert(kNumCases <= kBlockSize);

double DrawFor(FlatTree const& tree, std::uint32_t predictor, Draw const& draw) {
  switch (draw(8)) {
    case 0:
      return tree.HasOwnMissingValues() ? tree.GetMissingValues()[predictor]
                                        : tree.GetHeader().missingValue;
    case 1:
      return std::numeric_limits<double>::quiet_NaN();
    case 2:
      return (draw(2) == 0 ? 1.0 : -1.0) * std::numeric_limits<double>::infinity();
    case 3:
      return static_cast<double>(draw(70));
    default:
      return static_cast<double>(static_cast<std::int32_t>(draw(256)) - 128) / 4.0;
  }
}

bool HaveSameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

class EveryWay {
 public:
  EveryWay(FlatTree const& tree, Scorer const& scorer, Draw const& draw)
      : tree_(tree),
        scorer_(scorer),
        numPredictors_(scorer.GetNumPredictors()),
        allCases_(kNumCases),
        bits_(kNumCases / 8) {
    std::iota(allCases_.begin(), allCases_.end(), std::size_t{0});
    for (std::size_t index = 0; index < kNumCases * numPredictors_; ++index) {
      values_.push_back(DrawFor(tree, static_cast<std::uint32_t>(index % numPredictors_), draw));
    }
    for (std::uint8_t& byte : bits_) byte = static_cast<std::uint8_t>(draw(256) | draw(256));
  }

  template <class Value>
  void Check() const {
    GuardedVector<Value> const rows(values_.begin(), values_.end());
    auto const ofRows = Cases::OfRows(rows.data(), kNumCases, numPredictors_);
    std::vector<std::uint32_t> const positions = Score(ofRows);
    CheckAnswers(ofRows, rows, positions);
    Score(ofRows.WithNan(NanMeaning::kMissing));

    std::vector<GuardedVector<Value>> const data = MakeColumns(rows);
    std::vector<Column> columns;
    columns.reserve(data.size());
    for (auto const& values : data) columns.emplace_back(values.data());
    auto const ofColumns = Cases::OfColumns(columns.data(), numPredictors_, kNumCases);
    if (Score(ofColumns) != positions) throw std::logic_error("columns are scored otherwise");
    for (Column& column : columns) column = column.WithValidity(bits_.data());
    Score(ofColumns);
    Score(ofColumns.WithNan(NanMeaning::kMissing));
  }

 private:
  // By each implementation that there is for them, one case after the other and picked.
  std::vector<std::uint32_t> Score(Cases const& cases) const {
    GuardedVector<std::uint32_t> positions(kNumCases);
    GuardedVector<std::uint32_t> others(kNumCases);
    Answers answers;
    answers.positions = positions.data();
    scorer_.Score(cases, answers);
    for (bool const arePicked : {false, true}) {
      ScoreBlock const implementations[] = {
          ChoosePortableScoreBlock(tree_, cases, arePicked),
          ChooseAvx512ScoreBlock(tree_, cases, arePicked),
      };
      for (ScoreBlock const implementation : implementations) {
        if (implementation == nullptr) continue;
        std::fill(others.begin(), others.end(), std::numeric_limits<std::uint32_t>::max());
        implementation(tree_, cases, arePicked ? allCases_.data() : nullptr, 0, kNumCases,
                       others.data());
        if (others != positions) throw std::logic_error("two implementations disagree");
      }
    }
    for (std::uint32_t const position : positions) {
      if (position >= scorer_.GetNumPositions()) throw std::logic_error("a position is none");
    }
    return {positions.begin(), positions.end()};
  }

  template <class Value>
  void CheckAnswers(Cases const& cases, GuardedVector<Value> const& rows,
                    std::vector<std::uint32_t> const& positions) const {
    std::size_t const numClasses = scorer_.GetNumClasses();
    GuardedVector<std::uint32_t> ids(kNumCases);
    GuardedVector<double> predictions(kNumCases);
    GuardedVector<double> probabilities(kNumCases * numClasses);
    Answers answers;
    answers.ids = ids.data();
    if (scorer_.HasPredictions()) answers.predictions = predictions.data();
    if (numClasses > 0) answers.probabilities = probabilities.data();
    scorer_.Score(cases, answers);
    for (std::size_t row = 0; row < kNumCases; ++row) {
      std::uint32_t const position = scorer_.FindPosition(rows.data() + row * numPredictors_);
      if (position != positions[row]) throw std::logic_error("one case is scored otherwise");
      if (scorer_.GetId(position) != ids[row]) throw std::logic_error("an identifier differs");
      if (scorer_.HasPredictions() &&
          !HaveSameBits(scorer_.GetPrediction(position), predictions[row])) {
        throw std::logic_error("a prediction differs");
      }
      double const* const ofCase = probabilities.data() + row * numClasses;
      if (!std::equal(ofCase, ofCase + numClasses, scorer_.GetProbabilities(position),
                      HaveSameBits)) {
        throw std::logic_error("a probability differs");
      }
    }
  }

  template <class Value>
  std::vector<GuardedVector<Value>> MakeColumns(GuardedVector<Value> const& rows) const {
    std::vector<GuardedVector<Value>> columns(numPredictors_, GuardedVector<Value>(kNumCases));
    for (std::size_t index = 0; index < rows.size(); ++index) {
      columns[index % numPredictors_][index / numPredictors_] = rows[index];
    }
    return columns;
  }

  FlatTree const& tree_;
  Scorer const& scorer_;
  std::size_t numPredictors_;
  GuardedVector<std::size_t> allCases_;
  std::vector<double> values_;        // by rows
  GuardedVector<std::uint8_t> bits_;  // a bitmap for every column
};

}  // namespace

void ScoreEveryWay(void const* block, std::size_t size, Draw const& draw) {
  FlatTree const tree(block, size);
  Scorer const scorer = Scorer::OverBlock(block, size);
  if (scorer.GetNumPredictors() > 1000 || scorer.GetNumClasses() > 1000) return;
  EveryWay const everyWay(tree, scorer, draw);
  everyWay.Check<double>();
  everyWay.Check<float>();
}

}  // namespace tree::score::testing
