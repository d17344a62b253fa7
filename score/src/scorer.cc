#include "tree/score/scorer.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <exception>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "block_scoring.h"
#include "flat_tree.h"
#include "flattening.h"
#include "routing.h"

namespace tree::score {
namespace {

// What a thread takes at a time. A thread takes longer to start than to score so many cases.
constexpr std::size_t kShareSize = 64 * kBlockSize;

double PredictionOf(FlatTree const& tree, Slot const& end) {
  if (tree.GetHeader().numClasses == 0) return end.GetCut();
  return static_cast<std::int32_t>(end.GetLow());
}

/// Writes the answers for cases whose positions are known.
class AnswerWriter {
 public:
  AnswerWriter(FlatTree const& tree, Answers const& answers)
      : tree_(tree), slots_(tree.GetSlots()), answers_(answers) {}

  void Write(std::uint32_t const* positions, std::size_t begin, std::uint32_t size) const {
    if (answers_.ids != nullptr) {
      for (std::uint32_t place = 0; place < size; ++place) {
        answers_.ids[begin + place] = slots_[positions[place]].link;
      }
    }
    if (answers_.predictions != nullptr) {
      for (std::uint32_t place = 0; place < size; ++place) {
        answers_.predictions[begin + place] = PredictionOf(tree_, slots_[positions[place]]);
      }
    }
    if (answers_.probabilities != nullptr) {
      std::size_t const numClasses = tree_.GetHeader().numClasses;
      double* to = answers_.probabilities + begin * numClasses;
      for (std::uint32_t place = 0; place < size; ++place, to += numClasses) {
        std::copy_n(tree_.GetProbabilities(slots_[positions[place]].GetHigh()), numClasses, to);
      }
    }
  }

 private:
  FlatTree const& tree_;
  Slot const* slots_;
  Answers const& answers_;
};

void CheckCases(FlatTree const& tree, Cases const& cases) {
  std::uint32_t const numPredictors = tree.GetHeader().numPredictors;
  if (cases.GetNumPredictors() < numPredictors) {
    throw InputError("the cases have " + std::to_string(cases.GetNumPredictors()) +
                     " predictors, and the tree asks for " + std::to_string(numPredictors));
  }
  if (cases.GetNumCases() == 0 || numPredictors == 0) return;
  Column const* const columns = cases.GetColumns();
  if (columns == nullptr && cases.GetRows() == nullptr) {
    throw InputError("the cases have no values");
  }
  for (std::uint32_t predictor = 0; columns != nullptr && predictor < numPredictors; ++predictor) {
    if (columns[predictor].values == nullptr && tree.Tests(predictor)) {
      throw InputError("column " + std::to_string(predictor) +
                       " has no values, and the tree asks for it");
    }
  }
}

void CheckOptions(Cases const& cases, ScoreOptions const& options) {
  if (options.numThreads < 0) throw InputError("the number of threads is negative");
  if (!options.selection.has_value() || options.selection->size == 0) return;
  std::size_t const* const begin = options.selection->numbers;
  if (begin == nullptr) throw InputError("the selection has no numbers");
  std::size_t const* const end = begin + options.selection->size;
  std::size_t const numCases = cases.GetNumCases();
  std::size_t const* const bad =
      std::find_if(begin, end, [numCases](std::size_t number) { return number >= numCases; });
  if (bad != end) {
    throw InputError("case " + std::to_string(*bad) + " is selected, and there are " +
                     std::to_string(numCases));
  }
}

void CheckAnswers(FlatTree const& tree, Answers const& answers) {
  if (answers.predictions != nullptr && tree.GetHeader().hasPredictions == 0) {
    throw InputError(
        "the tree has no predictions: a node without statistics of the training sample");
  }
  if (answers.probabilities != nullptr && tree.GetHeader().numClasses == 0) {
    throw InputError("the tree has no class probabilities");
  }
}

/// The cases of one call, shared out to threads.
class Call {
 public:
  Call(FlatTree const& tree, AnswerWriter const& writer, Cases const& cases,
       std::uint32_t* positions, ScoreOptions const& options)
      : tree_(tree),
        writer_(writer),
        cases_(cases),
        positions_(positions),
        selection_(options.selection.value_or(Selection()).numbers),
        numCases_(options.selection.has_value() ? options.selection->size : cases.GetNumCases()),
        scoreBlock_(ChooseScoreBlock(tree, cases, options.selection.has_value())) {}

  void Run(int numThreads) {
    std::size_t const wanted =
        numThreads > 0 ? static_cast<std::size_t>(numThreads) : std::thread::hardware_concurrency();
    std::size_t const numShares = (numCases_ + kShareSize - 1) / kShareSize;
    std::size_t const numHelpers = std::max<std::size_t>(1, std::min(wanted, numShares)) - 1;
    if (numHelpers == 0) {
      TakeShares();
      return;
    }
    std::vector<std::thread> helpers;
    helpers.reserve(numHelpers);
    try {
      while (helpers.size() < numHelpers) helpers.emplace_back([this] { TakeShares(); });
    } catch (std::exception const&) {
      // Where no more threads can be had, those that there are do it all.
    }
    TakeShares();
    for (std::thread& helper : helpers) helper.join();
  }

 private:
  void TakeShares() noexcept {
    for (;;) {
      std::size_t const begin = next_.fetch_add(kShareSize);
      if (begin >= numCases_) return;
      ScoreShare(begin, std::min(numCases_, begin + kShareSize));
    }
  }

  void ScoreShare(std::size_t begin, std::size_t end) const {
    std::uint32_t block[kBlockSize];
    for (; begin < end; begin += kBlockSize) {
      auto const size = static_cast<std::uint32_t>(std::min(kBlockSize, end - begin));
      std::uint32_t* const positions = positions_ != nullptr ? positions_ + begin : block;
      scoreBlock_(tree_, cases_, selection_, begin, size, positions);
      writer_.Write(positions, begin, size);
    }
  }

  FlatTree const& tree_;
  AnswerWriter const& writer_;
  Cases const& cases_;
  std::uint32_t* positions_;
  std::size_t const* selection_;
  std::size_t numCases_;
  ScoreBlock scoreBlock_;
  std::atomic<std::size_t> next_{0};
};

}  // namespace

Scorer::Scorer(std::shared_ptr<FlatTree const> tree) : tree_(std::move(tree)) {}
Scorer::Scorer(Scorer const& other) = default;
Scorer& Scorer::operator=(Scorer const& other) = default;
Scorer::~Scorer() = default;

Scorer Scorer::FromTree(NodeImp const& root) {
  return Scorer(std::make_shared<FlatTree const>(Flatten(root)));
}

Scorer Scorer::FromBlock(void const* block, std::size_t size) {
  BlockMemory memory(size);
  if (size > 0) std::memcpy(memory.GetData(), block, size);
  return Scorer(std::make_shared<FlatTree const>(std::move(memory)));
}

Scorer Scorer::OverBlock(void const* block, std::size_t size) {
  return Scorer(std::make_shared<FlatTree const>(block, size));
}

void Scorer::Score(Cases const& cases, Answers const& answers, ScoreOptions const& options) const {
  CheckCases(*tree_, cases);
  CheckOptions(cases, options);
  CheckAnswers(*tree_, answers);
  AnswerWriter const writer(*tree_, answers);
  Call(*tree_, writer, cases, answers.positions, options).Run(options.numThreads);
}

std::uint32_t Scorer::FindPosition(double const* values) const noexcept {
  return FindEnd(*tree_, values, tree_->GetHeader().missingValue);
}

std::uint32_t Scorer::FindPosition(float const* values) const noexcept {
  return FindEnd(*tree_, values, tree_->GetMissingFloat());
}

std::uint32_t Scorer::GetId(std::uint32_t position) const noexcept {
  return tree_->GetSlots()[position].link;
}

double Scorer::GetPrediction(std::uint32_t position) const noexcept {
  return PredictionOf(*tree_, tree_->GetSlots()[position]);
}

double const* Scorer::GetProbabilities(std::uint32_t position) const noexcept {
  if (GetNumClasses() == 0) return nullptr;
  return tree_->GetProbabilities(tree_->GetSlots()[position].GetHigh());
}

std::uint32_t Scorer::GetNumPositions() const noexcept { return tree_->GetHeader().numSlots; }
std::uint32_t Scorer::GetNumNodes() const noexcept { return tree_->GetHeader().numNodes; }
std::uint32_t Scorer::GetDepth() const noexcept { return tree_->GetHeader().depth; }
std::uint32_t Scorer::GetNumPredictors() const noexcept { return tree_->GetHeader().numPredictors; }
std::uint32_t Scorer::GetNumClasses() const noexcept { return tree_->GetHeader().numClasses; }
bool Scorer::HasPredictions() const noexcept { return tree_->GetHeader().hasPredictions != 0; }
void const* Scorer::GetBlock() const noexcept { return &tree_->GetHeader(); }
std::size_t Scorer::GetSize() const noexcept { return tree_->GetHeader().size; }

}  // namespace tree::score
