#include "block_scoring.h"

#include <algorithm>
#include <cmath>

#include "case_values.h"
#include "routing.h"

namespace tree::score {
namespace {

// Rows on their way at a time: enough for the processor to have something to do while it waits for
// memory, and few enough for its registers.
constexpr std::uint32_t kLanes = 8;

// How far ahead the values of cases are called for.
constexpr std::uint32_t kCasesAhead = 64;

/// Scores the cases of one block, all down a level at a time.
template <class Missing, class Values, class Rows>
class BlockScorer {
 public:
  BlockScorer(FlatTree const& tree, Values const& values, Rows const& rows)
      : slots_(tree.GetSlots()),
        missing_(tree),
        levels_(tree.GetPlainLevels(Missing::kMayMiss)),
        asksForValues_(tree.GetHeader().numPredictors > 0),
        values_(values),
        rows_(rows) {}

  void Run(std::uint32_t size, std::uint32_t* positions) {
    if (levels_.isWholeTree) {
      PassPlainLevels(size, positions);
      return;
    }
    PassPlainLevels(size, nodes_);
    for (std::uint32_t place = 0; place < size; ++place) places_[place] = place;
    while (size > 0) {
      size = levels_.hasOthersBelow ? PassLevel<false>(size, positions)
                                    : PassLevel<true>(size, positions);
    }
  }

 private:
  // Without a branch.
  template <bool Plain>
  Step TakeStepOf(std::uint32_t place, std::uint32_t position) const {
    Slot const& node = slots_[position];
    std::uint32_t const predictor = node.GetPredictor();
    double const value = values_.Get(rows_.GetRow(place), predictor);
    return TakeStep<Missing, Plain>(node, value, missing_.Get(predictor));
  }

  // Calls for the values of later cases of the block, as many as are on their way at a time.
  // Inline: to the compiler a function that only calls for memory has no effect.
  [[gnu::always_inline]] void CallAhead(std::uint32_t place, std::uint32_t size) const {
    std::uint32_t const end = std::min(place + kLanes, size);
    for (; place < end; ++place) values_.CallFor(rows_.GetRow(place));
  }

  void PassPlainLevels(std::uint32_t size, std::uint32_t* nodes) const {
    std::uint32_t const count = levels_.count;
    std::uint32_t place = 0;
    for (; place + kLanes <= size; place += kLanes) {
      if (asksForValues_) CallAhead(place + kCasesAhead, size);
      std::uint32_t lanes[kLanes] = {};
      for (std::uint32_t level = 0; level < count; ++level) {
        for (std::uint32_t lane = 0; lane < kLanes; ++lane) {
          lanes[lane] = TakeStepOf<true>(place + lane, lanes[lane]).next;
        }
      }
      std::copy_n(lanes, kLanes, nodes + place);
    }
    for (; place < size; ++place) {
      std::uint32_t node = 0;
      for (std::uint32_t level = 0; level < count; ++level) {
        node = TakeStepOf<true>(place, node).next;
      }
      nodes[place] = node;
    }
  }

  // Takes those that are on their way down by one level, and gives the number of those that still
  // are then. Whether a case ends decides where it is noted, not what is done next.
  template <bool Plain>
  std::uint32_t PassLevel(std::uint32_t size, std::uint32_t* positions) {
    std::uint32_t numLeft = 0;
    std::uint32_t numSlow = 0;
    for (std::uint32_t index = 0; index < size; ++index) {
      std::uint32_t const node = nodes_[index];
      std::uint32_t const place = places_[index];
      Step const step = TakeStepOf<Plain>(place, node);
      positions[place] = step.next;
      if constexpr (!Plain) {
        slowNodes_[numSlow] = node;
        slowPlaces_[numSlow] = place;
        numSlow += step.isSlow;
      }
      nodes_[numLeft] = step.next;
      places_[numLeft] = place;
      numLeft += 1U & ~(step.ends | step.isSlow);
    }
    for (std::uint32_t index = 0; index < numSlow; ++index) {
      std::uint32_t const place = slowPlaces_[index];
      std::uint32_t const next = FollowSlowly<Missing>(slots_, slots_[slowNodes_[index]], missing_,
                                                       values_, rows_.GetRow(place));
      positions[place] = next;
      nodes_[numLeft] = next;
      places_[numLeft] = place;
      numLeft += static_cast<std::uint32_t>(slots_[next].GetKind() != Kind::kEnd);
    }
    return numLeft;
  }

  Slot const* slots_;
  MissingValues<Missing> missing_;
  PlainLevels levels_;
  bool asksForValues_;  // a tree of one node does not, and there may be none
  Values values_;
  Rows rows_;
  // Those on their way: where they are, and their places in the block.
  std::uint32_t nodes_[kBlockSize] = {};
  std::uint32_t places_[kBlockSize] = {};
  std::uint32_t slowNodes_[kBlockSize] = {};
  std::uint32_t slowPlaces_[kBlockSize] = {};
};

template <class Missing, class Values>
void ScoreSequence(FlatTree const& tree, Cases const& cases, std::size_t const* /*selection*/,
                   std::size_t begin, std::uint32_t size, std::uint32_t* positions) {
  BlockScorer<Missing, Values, InSequence>(tree, Values(cases), {begin}).Run(size, positions);
}

template <class Missing, class Values>
void ScoreSelection(FlatTree const& tree, Cases const& cases, std::size_t const* selection,
                    std::size_t begin, std::uint32_t size, std::uint32_t* positions) {
  BlockScorer<Missing, Values, Picked>(tree, Values(cases), {selection + begin})
      .Run(size, positions);
}

template <class Missing, class Values>
ScoreBlock Choose(bool hasSelection) {
  return hasSelection ? &ScoreSelection<Missing, Values> : &ScoreSequence<Missing, Values>;
}

template <class Values>
ScoreBlock Choose(MissingKind missing, bool hasSelection) {
  switch (missing) {
    case MissingKind::kNever:
      return Choose<NeverMissing, Values>(hasSelection);
    case MissingKind::kByBits:
      return Choose<MissingByBits, Values>(hasSelection);
    case MissingKind::kByValue:
      return Choose<MissingByValue, Values>(hasSelection);
    case MissingKind::kByPredictor:
      return Choose<ByPredictor<MissingByValue>, Values>(hasSelection);
    case MissingKind::kOrNan:
      return Choose<MissingOrNan, Values>(hasSelection);
    case MissingKind::kByPredictorOrNan:
      return Choose<ByPredictor<MissingOrNan>, Values>(hasSelection);
  }
  return nullptr;
}

bool AreAll(Column const* columns, std::uint32_t count, ValueType type) {
  return std::all_of(columns, columns + count, [type](Column const& column) {
    return column.values == nullptr ||
           (column.type == type && column.stride == 1 && column.validity == nullptr);
  });
}

}  // namespace

Layout FindLayout(FlatTree const& tree, Cases const& cases) {
  if (cases.GetColumns() == nullptr) {
    return cases.GetRowType() == ValueType::kFloat ? Layout::kFloatRows : Layout::kDoubleRows;
  }
  std::uint32_t const count = tree.GetHeader().numPredictors;
  if (AreAll(cases.GetColumns(), count, ValueType::kDouble)) return Layout::kDoubleColumns;
  if (AreAll(cases.GetColumns(), count, ValueType::kFloat)) return Layout::kFloatColumns;
  return Layout::kAny;
}

MissingKind FindMissingKind(FlatTree const& tree, Cases const& cases, Layout layout) {
  bool const byPredictor = tree.HasOwnMissingValues();
  if (cases.GetNanMeaning() == NanMeaning::kMissing) {
    return byPredictor ? MissingKind::kByPredictorOrNan : MissingKind::kOrNan;
  }
  if (byPredictor) return MissingKind::kByPredictor;
  double const missing = tree.GetHeader().missingValue;
  bool const isFloat = layout == Layout::kFloatRows || layout == Layout::kFloatColumns;
  // What no value can be equal to need not be looked for.
  if (std::isnan(missing)) return MissingKind::kNever;
  if (isFloat && std::isnan(tree.GetMissingFloat())) return MissingKind::kNever;
  return missing == 0.0 ? MissingKind::kByValue : MissingKind::kByBits;
}

ScoreBlock ChoosePortableScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection) {
  Layout const layout = FindLayout(tree, cases);
  MissingKind const missing = FindMissingKind(tree, cases, layout);
  switch (layout) {
    case Layout::kDoubleRows:
      return Choose<RowValues<double>>(missing, hasSelection);
    case Layout::kFloatRows:
      return Choose<RowValues<float>>(missing, hasSelection);
    case Layout::kDoubleColumns:
      return Choose<ColumnValues<double>>(missing, hasSelection);
    case Layout::kFloatColumns:
      return Choose<ColumnValues<float>>(missing, hasSelection);
    case Layout::kAny:
      break;
  }
  return tree.HasOwnMissingValues()
             ? Choose<ByPredictor<MissingOrNull>, AnyColumnValues>(hasSelection)
             : Choose<MissingOrNull, AnyColumnValues>(hasSelection);
}

ScoreBlock ChooseScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection) {
  ScoreBlock const fastest = ChooseAvx512ScoreBlock(tree, cases, hasSelection);
  return fastest != nullptr ? fastest : ChoosePortableScoreBlock(tree, cases, hasSelection);
}

}  // namespace tree::score
