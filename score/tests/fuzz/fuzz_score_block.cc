// Takes the bytes for a block: it is refused, or scores any cases without leaving it. The checksum
// is put right, since bytes would hardly ever have it.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "flat_tree.h"
#include "fuzz/fuzz_target.h"
#include "score_testing/random_trees.h"
#include "tree/score/scorer.h"

namespace {

using namespace tree::score;

constexpr std::size_t kNumCases = 40;

template <class Value>
void ScoreColumns(Scorer const& scorer, std::vector<Value> const& rows,
                  std::vector<std::uint32_t> const& expected) {
  std::size_t const numPredictors = scorer.GetNumPredictors();
  std::vector<std::vector<Value>> values(numPredictors, std::vector<Value>(kNumCases));
  std::vector<Column> columns;
  for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
    for (std::size_t row = 0; row < kNumCases; ++row) {
      values[predictor][row] = rows[row * numPredictors + predictor];
    }
    columns.emplace_back(values[predictor].data());
  }
  std::vector<std::uint32_t> positions(kNumCases);
  Answers answers;
  answers.positions = positions.data();
  scorer.Score(Cases::OfColumns(columns.data(), numPredictors, kNumCases), answers);
  if (positions != expected) throw std::logic_error("columns are scored otherwise");
}

template <class Value>
void ScoreRows(Scorer const& scorer, std::vector<double> const& values) {
  std::vector<Value> const rows(values.begin(), values.end());
  std::vector<std::uint32_t> positions(kNumCases);
  std::vector<std::uint32_t> ids(kNumCases);
  std::vector<double> predictions(kNumCases);
  std::vector<double> probabilities(kNumCases * scorer.GetNumClasses());
  Answers answers;
  answers.positions = positions.data();
  answers.ids = ids.data();
  if (scorer.HasPredictions()) answers.predictions = predictions.data();
  if (scorer.GetNumClasses() > 0) answers.probabilities = probabilities.data();
  scorer.Score(Cases::OfRows(rows.data(), kNumCases, scorer.GetNumPredictors()), answers);
  ScoreColumns(scorer, rows, positions);
  for (std::size_t row = 0; row < kNumCases; ++row) {
    std::uint32_t const position =
        scorer.FindPosition(rows.data() + row * scorer.GetNumPredictors());
    if (position != positions[row]) throw std::logic_error("one case is scored otherwise");
    if (scorer.GetId(position) != ids[row]) throw std::logic_error("an identifier differs");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::vector<std::uint64_t> block((size + 7) / 8);
  if (size > 0) std::memcpy(block.data(), data, size);
  if (size >= sizeof(BlockHeader)) {
    BlockHeader header;
    std::memcpy(&header, block.data(), sizeof(header));
    header.checksum = ComputeChecksum(block.data(), size);
    std::memcpy(block.data(), &header, sizeof(header));
  }
  try {
    Scorer const scorer = Scorer::OverBlock(block.data(), size);
    if (scorer.GetNumPredictors() > 1000 || scorer.GetNumClasses() > 1000) return 0;
    testing::Draw const draw = testing::DrawFrom(data, size);
    std::vector<double> values(kNumCases * scorer.GetNumPredictors());
    for (double& value : values) {
      value = static_cast<double>(static_cast<std::int32_t>(draw(256)) - 128) / 4.0;
    }
    ScoreRows<double>(scorer, values);
    ScoreRows<float>(scorer, values);
  } catch (InputError const&) {
  }
  return 0;
}
