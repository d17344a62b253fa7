#include "block_scoring.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include "avx512.h"
// After it:
#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "avx512_routing.h"
#include "avx512_values.h"
#include "case_values.h"
#include "routing.h"

namespace tree::score {
namespace {

constexpr std::uint32_t kVectors = 4;  // on their way at a time, while memory is waited for
constexpr std::uint32_t kGroupSize = kVectors * kLanes;

/// Scores the cases of one block. What differs from `BlockScorer` is only how; the two are tested
/// against each other.
template <class Missing, class Values, class Gather, class Rows>
class VectorScorer {
 public:
  /// `rows`: the rows of `values` that are the cases of the block.
  TREE_AVX512_INLINE VectorScorer(FlatTree const& tree, Values const& values, Gather const& gather,
                                  Rows const& rows)
      : tree_(tree),
        slots_(tree.GetSlots()),
        missing_(tree),
        levels_(tree.GetPlainLevels(Missing::kMayMiss)),
        callsPerStep_(levels_.count == 0 ? kGroupSize
                                         : (kLanes + levels_.count - 1) / levels_.count),
        gather_(gather),
        values_(values),
        rows_(rows) {}

  TREE_AVX512_INLINE void Run(std::uint32_t size, std::uint32_t* positions) const {
    Front const front(tree_);
    for (std::uint32_t place = 0; place < size; place += kGroupSize) {
      Group group;
      group.first = place;
      group.called = place;
      for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
        std::uint32_t const first = place + vector * kLanes;
        group.nodes[vector] = _mm256_setzero_si256();
        group.areMoving[vector] = MaskOf(first < size ? size - first : 0);
        // Lanes beyond the last case repeat it, so that nothing beyond its values is read.
        group.origins[vector] = gather_.Find(_mm256_min_epu32(
            _mm256_add_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7), Broadcast(first)),
            Broadcast(size - 1)));
      }
      if (levels_.count == 0) CallAhead(group);
      for (std::uint32_t level = 0; level < levels_.numAtFront; ++level) {
#pragma GCC unroll 8
        for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
          CallAhead(group);
          SlotVector const nodes = front.Get(group.nodes[vector]);
          group.nodes[vector] = Take<NodesMet::kPlain>(nodes, group.origins[vector], kAll).next;
        }
      }
      for (std::uint32_t level = levels_.numAtFront; level < levels_.count; ++level) {
#pragma GCC unroll 8
        for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
          CallAhead(group);
          SlotVector const nodes = GatherSlots(slots_, group.nodes[vector]);
          group.nodes[vector] = Take<NodesMet::kPlain>(nodes, group.origins[vector], kAll).next;
        }
      }
      if (!levels_.isWholeTree) {
        if (levels_.hasGeneralBelow) {
          FollowToEnds<NodesMet::kAny>(group);
        } else if (levels_.hasOthersBelow) {
          FollowToEnds<NodesMet::kOfTwoWays>(group);
        } else {
          FollowToEnds<NodesMet::kPlain>(group);
        }
      }
      for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
        std::uint32_t const first = place + vector * kLanes;
        __mmask8 const lanes = MaskOf(first < size ? size - first : 0);
        _mm256_mask_storeu_epi32(positions + first, lanes, group.nodes[vector]);
      }
    }
  }

 private:
  // Cases on their way, by the lanes of a few vectors.
  struct Group {
    __m256i nodes[kVectors];
    typename Gather::Origins origins[kVectors];
    std::uint32_t first;   // place of the first case in the block
    std::uint32_t called;  // place up to which values have been called for ahead
    __mmask8 areMoving[kVectors];
  };

  // Calls for the values of later cases, a part at each step down the plain levels: all at once,
  // they would hold up those that are needed now.
  TREE_AVX512_INLINE void CallAhead(Group& group) const {
    std::uint32_t const count = std::min(callsPerStep_, group.first + kGroupSize - group.called);
    gather_.Prefetch(group.called, count);
    group.called += count;
  }

  template <NodesMet Met>
  TREE_AVX512_INLINE Steps Take(SlotVector const& nodes, typename Gather::Origins origins,
                                __mmask8 lanes) const {
    __m256i const predictors = _mm256_and_si256(nodes.words, Broadcast(Slot::kPredictorMask));
    return TakeSteps<Missing, Met>(slots_, nodes, gather_.Get(origins, predictors, lanes),
                                   GetMissingValues(missing_, predictors), lanes);
  }

  template <NodesMet Met>
  TREE_AVX512_INLINE void FollowToEnds(Group& group) const {
    unsigned int anyMoving = 0;
    do {
      anyMoving = 0;
#pragma GCC unroll 8
      for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
        __mmask8 const lanes = group.areMoving[vector];
        unsigned int const areMoving = lanes;
        SlotVector const nodes = GatherSlots(slots_, group.nodes[vector]);
        Steps const steps = Take<Met>(nodes, group.origins[vector], lanes);
        unsigned int const areFast = areMoving & ~unsigned{steps.areSlow};
        __m256i next = _mm256_mask_mov_epi32(group.nodes[vector], MaskOfBits(areFast), steps.next);
        unsigned int stillMoving = areFast & ~unsigned{steps.ends};
        if constexpr (Met != NodesMet::kPlain) {
          unsigned int const areSlow = areMoving & steps.areSlow;
          if (areSlow != 0) stillMoving |= MoveSlowly(areSlow, next, group.first + vector * kLanes);
        }
        group.nodes[vector] = next;
        group.areMoving[vector] = MaskOfBits(stillMoving);
        anyMoving |= stillMoving;
      }
    } while (anyMoving != 0);
  }

  // Moves these lanes one by one, and gives those of them that have not ended. `first`: the place
  // of the first lane's case in the block.
  // Flattened: what it calls is then compiled for AVX-512 as a part of it, and to change between
  // such instructions and older ones takes long.
  TREE_AVX512 __attribute__((noinline, flatten)) unsigned int MoveSlowly(
      unsigned int lanes, __m256i& nodes, std::uint32_t first) const {
    alignas(32) std::uint32_t laneNodes[kLanes];
    _mm256_store_si256(reinterpret_cast<__m256i*>(laneNodes), nodes);
    unsigned int stillMoving = 0;
    for (; lanes != 0; lanes &= lanes - 1) {
      auto const lane = static_cast<unsigned int>(__builtin_ctz(lanes));
      std::uint32_t const next = FollowSlowly<Missing>(slots_, slots_[laneNodes[lane]], missing_,
                                                       values_, rows_.GetRow(first + lane));
      laneNodes[lane] = next;
      if (slots_[next].GetKind() != Kind::kEnd) stillMoving |= 1U << lane;
    }
    nodes = _mm256_load_si256(reinterpret_cast<__m256i const*>(laneNodes));
    return stillMoving;
  }

  FlatTree const& tree_;
  Slot const* slots_;
  MissingValues<Missing> missing_;
  PlainLevels levels_;
  std::uint32_t callsPerStep_;  // cases
  Gather const& gather_;
  Values values_;
  Rows rows_;
};

template <class Rows>
Rows GetRows(std::size_t const* selection, std::size_t begin) {
  if constexpr (std::is_same_v<Rows, Picked>) {
    return {selection + begin};
  } else {
    return {begin};
  }
}

/// Where the cases lie.
template <class Values, class Gather, class Rows>
struct InPlace {
  template <class Missing>
  TREE_AVX512 static void Score(FlatTree const& tree, Cases const& cases,
                                std::size_t const* selection, std::size_t begin, std::uint32_t size,
                                std::uint32_t* positions) {
    auto const rows = GetRows<Rows>(selection, begin);
    Gather const gather(cases, rows, size);
    VectorScorer<Missing, Values, Gather, Rows>(tree, Values(cases), gather, rows)
        .Run(size, positions);
  }
};

/// In tiles.
template <class Value, class Copier, class Rows>
struct InTiles {
  template <class Missing>
  TREE_AVX512 static void Score(FlatTree const& tree, Cases const& cases,
                                std::size_t const* selection, std::size_t begin, std::uint32_t size,
                                std::uint32_t* positions) {
    auto const rows = GetRows<Rows>(selection, begin);
    alignas(64) Value tile[kMaxTilePredictors * kTileCases];
    Copier const copier(cases);
    TileGather<Value> const gather(tile);
    VectorScorer<Missing, TileValues<Value>, TileGather<Value>, InSequence> const scorer(
        tree, TileValues<Value>(tile), gather, InSequence{0});
    std::uint32_t const numPredictors = tree.GetHeader().numPredictors;
    for (std::uint32_t place = 0; place < size; place += kTileCases) {
      std::uint32_t const count = std::min(kTileCases, size - place);
      for (std::uint32_t predictor = 0; predictor < numPredictors; ++predictor) {
        if (!tree.Tests(predictor)) continue;
        copier.Copy(predictor, rows.From(place), count, tile + std::size_t{predictor} * kTileCases);
      }
      scorer.Run(count, positions + place);
    }
  }
};

template <class Way>
ScoreBlock Choose(MissingKind missing) {
  switch (missing) {
    case MissingKind::kNever:
      return &Way::template Score<NeverMissing>;
    case MissingKind::kByBits:
    case MissingKind::kByValue:
      return &Way::template Score<MissingByValue>;
    case MissingKind::kByPredictor:
      return &Way::template Score<ByPredictor<MissingByValue>>;
    case MissingKind::kOrNan:
      return &Way::template Score<MissingOrNan>;
    case MissingKind::kByPredictorOrNan:
      return &Way::template Score<ByPredictor<MissingOrNan>>;
  }
  return nullptr;
}

template <class Value>
ScoreBlock ChooseForRows(MissingKind missing, bool hasSelection) {
  using Values = RowValues<Value>;
  return hasSelection ? Choose<InPlace<Values, PickedRowGather<Value>, Picked>>(missing)
                      : Choose<InPlace<Values, RowGather<Value>, InSequence>>(missing);
}

template <class Value>
ScoreBlock ChooseForColumns(MissingKind missing, bool hasSelection, bool inTiles) {
  using Values = ColumnValues<Value>;
  if (hasSelection) {
    return inTiles ? Choose<InTiles<double, ValueCopy<Values>, Picked>>(missing)
                   : Choose<InPlace<Values, PickedColumnGather<Value>, Picked>>(missing);
  }
  return inTiles ? Choose<InTiles<Value, PlainCopy<Value>, InSequence>>(missing)
                 : Choose<InPlace<Values, ColumnGather<Value>, InSequence>>(missing);
}

template <class Copier, class Rows>
ScoreBlock ChooseForAny(bool byPredictor) {
  using Way = InTiles<double, Copier, Rows>;
  return byPredictor ? &Way::template Score<ByPredictor<MissingOrNull>>
                     : &Way::template Score<MissingOrNull>;
}

bool HasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

// Slots are found by signed numbers of 32 bits, which count quarters of them; and so are the values
// of rows that follow each other.
constexpr std::size_t kMaxPlaces = std::numeric_limits<std::int32_t>::max();

bool CanCountSlots(FlatTree const& tree) { return tree.GetHeader().numSlots <= kMaxPlaces / 4; }

bool CanCountValues(Cases const& cases) {
  return cases.GetStride() <= (kMaxPlaces - Slot::kPredictorMask) / kBlockSize;
}

// Values of columns are copied where they lie side by side. Those of picked cases are far apart, so
// it is worth while for trees so deep that a case is asked for most of its values.
bool AreBetterInTiles(FlatTree const& tree, bool hasSelection) {
  return !hasSelection || tree.GetHeader().depth >= tree.GetHeader().numPredictors;
}

}  // namespace

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection) {
  // A tree of one node asks for no values, and there may be none.
  if (tree.GetHeader().numPredictors == 0) return nullptr;
  if (!HasAvx512() || !CanCountSlots(tree)) return nullptr;
  if (!hasSelection && !CanCountValues(cases)) return nullptr;
  Layout const layout = FindLayout(tree, cases);
  MissingKind const missing = FindMissingKind(tree, cases, layout);
  bool const fitTiles = tree.GetHeader().numPredictors <= kMaxTilePredictors;
  bool const inTiles = fitTiles && AreBetterInTiles(tree, hasSelection);
  switch (layout) {
    case Layout::kDoubleRows:
      return ChooseForRows<double>(missing, hasSelection);
    case Layout::kFloatRows:
      return ChooseForRows<float>(missing, hasSelection);
    case Layout::kDoubleColumns:
      return ChooseForColumns<double>(missing, hasSelection, inTiles);
    case Layout::kFloatColumns:
      return ChooseForColumns<float>(missing, hasSelection, inTiles);
    case Layout::kAny:
      break;
  }
  if (!inTiles) return nullptr;
  bool const byPredictor = tree.HasOwnMissingValues();
  return hasSelection ? ChooseForAny<ValueCopy<AnyColumnValues>, Picked>(byPredictor)
                      : ChooseForAny<AnyCopy, InSequence>(byPredictor);
}

}  // namespace tree::score

#else

namespace tree::score {

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const&, Cases const&, bool) { return nullptr; }

}  // namespace tree::score

#endif
