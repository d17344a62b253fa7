#include "block_scoring.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include "avx512.h"
// After it:
#include <algorithm>
#include <cstddef>
#include <limits>

#include "avx512_routing.h"
#include "avx512_values.h"
#include "case_values.h"
#include "routing.h"

namespace tree::score {
namespace {

constexpr std::uint32_t kVectors = 4;  // on their way at a time, while memory is waited for
constexpr std::uint32_t kGroupSize = kVectors * kLanes;

/// Cases on their way, by the lanes of a few vectors.
struct Group {
  __m256i nodes[kVectors];
  __m256i places[kVectors];  // of the cases in the block
  std::uint32_t first;       // place of the first one in the block
  std::uint32_t called;      // place up to which values have been called for ahead
  __mmask8 areMoving[kVectors];
};

/// Scores the cases of one block. What differs from `BlockScorer` is only how; the two are tested
/// against each other.
template <class Missing, class Values, class Gather>
class VectorScorer {
 public:
  /// `begin`: the row of `values` that is the first of the block.
  TREE_AVX512_INLINE VectorScorer(FlatTree const& tree, Values const& values, Gather const& gather,
                                  std::size_t begin)
      : tree_(tree),
        slots_(tree.GetSlots()),
        missing_(tree),
        levels_(tree.GetPlainLevels(Missing::kMayMiss)),
        callsPerStep_(levels_.count == 0 ? kGroupSize
                                         : (kLanes + levels_.count - 1) / levels_.count),
        gather_(gather),
        values_(values),
        begin_(begin) {}

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
        group.places[vector] = _mm256_min_epu32(
            _mm256_add_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7), Broadcast(first)),
            Broadcast(size - 1));
      }
      if (levels_.count == 0) CallAhead(group);
      for (std::uint32_t level = 0; level < levels_.numAtFront; ++level) {
#pragma GCC unroll 8
        for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
          CallAhead(group);
          SlotVector const nodes = front.Get(group.nodes[vector]);
          group.nodes[vector] = Take<NodesMet::kPlain>(nodes, group.places[vector], kAll).next;
        }
      }
      for (std::uint32_t level = levels_.numAtFront; level < levels_.count; ++level) {
#pragma GCC unroll 8
        for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
          CallAhead(group);
          SlotVector const nodes = GatherSlots(slots_, group.nodes[vector]);
          group.nodes[vector] = Take<NodesMet::kPlain>(nodes, group.places[vector], kAll).next;
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
  // Calls for the values of later cases, a part at each step down the plain levels: all at once,
  // they would hold up those that are needed now.
  TREE_AVX512_INLINE void CallAhead(Group& group) const {
    std::uint32_t const count = std::min(callsPerStep_, group.first + kGroupSize - group.called);
    gather_.Prefetch(group.called, count);
    group.called += count;
  }

  template <NodesMet Met>
  TREE_AVX512_INLINE Steps Take(SlotVector const& nodes, __m256i places, __mmask8 lanes) const {
    __m256i const predictors = _mm256_and_si256(nodes.words, Broadcast(Slot::kPredictorMask));
    return TakeSteps<Missing, Met>(slots_, nodes, gather_.Get(places, predictors, lanes),
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
        Steps const steps = Take<Met>(nodes, group.places[vector], lanes);
        unsigned int const areFast = areMoving & ~unsigned{steps.areSlow};
        __m256i next = _mm256_mask_mov_epi32(group.nodes[vector], MaskOfBits(areFast), steps.next);
        unsigned int stillMoving = areFast & ~unsigned{steps.ends};
        if constexpr (Met != NodesMet::kPlain) {
          unsigned int const areSlow = areMoving & steps.areSlow;
          if (areSlow != 0) stillMoving |= MoveSlowly(areSlow, next, group.places[vector]);
        }
        group.nodes[vector] = next;
        group.areMoving[vector] = MaskOfBits(stillMoving);
        anyMoving |= stillMoving;
      }
    } while (anyMoving != 0);
  }

  // Moves these lanes one by one, and gives those of them that have not ended.
  // Flattened: what it calls is then compiled for AVX-512 as a part of it, and to change between
  // such instructions and older ones takes long.
  TREE_AVX512 __attribute__((noinline, flatten)) unsigned int MoveSlowly(unsigned int lanes,
                                                                         __m256i& nodes,
                                                                         __m256i places) const {
    alignas(32) std::uint32_t laneNodes[kLanes];
    alignas(32) std::uint32_t lanePlaces[kLanes];
    _mm256_store_si256(reinterpret_cast<__m256i*>(laneNodes), nodes);
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanePlaces), places);
    unsigned int stillMoving = 0;
    for (; lanes != 0; lanes &= lanes - 1) {
      auto const lane = static_cast<unsigned int>(__builtin_ctz(lanes));
      std::uint32_t const next = FollowSlowly<Missing>(slots_, slots_[laneNodes[lane]], missing_,
                                                       values_, begin_ + lanePlaces[lane]);
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
  Gather gather_;
  Values values_;
  std::size_t begin_;
};

/// Where the cases lie.
template <class Values, class Gather>
struct InPlace {
  template <class Missing>
  TREE_AVX512 static void Score(FlatTree const& tree, Cases const& cases,
                                std::size_t const* /*selection*/, std::size_t begin,
                                std::uint32_t size, std::uint32_t* positions) {
    VectorScorer<Missing, Values, Gather>(tree, Values(cases), Gather(cases, begin), begin)
        .Run(size, positions);
  }
};

/// In tiles.
template <class Value, class Copier>
struct InTiles {
  template <class Missing>
  TREE_AVX512 static void Score(FlatTree const& tree, Cases const& cases,
                                std::size_t const* /*selection*/, std::size_t begin,
                                std::uint32_t size, std::uint32_t* positions) {
    alignas(64) Value tile[kMaxTilePredictors * kTileCases];
    Copier const copier(cases);
    VectorScorer<Missing, TileValues<Value>, TileGather<Value>> const scorer(
        tree, TileValues<Value>(tile), TileGather<Value>(tile), 0);
    std::uint32_t const numPredictors = tree.GetHeader().numPredictors;
    for (std::uint32_t place = 0; place < size; place += kTileCases) {
      std::uint32_t const count = std::min(kTileCases, size - place);
      for (std::uint32_t predictor = 0; predictor < numPredictors; ++predictor) {
        if (!tree.Tests(predictor)) continue;
        copier.Copy(predictor, begin + place, count, tile + std::size_t{predictor} * kTileCases);
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
ScoreBlock ChooseForColumns(MissingKind missing, bool fitTiles) {
  return fitTiles ? Choose<InTiles<Value, PlainCopy<Value>>>(missing)
                  : Choose<InPlace<ColumnValues<Value>, ColumnGather<Value>>>(missing);
}

bool HasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

// Places in memory are counted by signed numbers of 32 bits: those of values, and those of the
// quarters of slots.
bool CanCount(FlatTree const& tree, Cases const& cases) {
  constexpr std::size_t kLimit = std::numeric_limits<std::int32_t>::max();
  return tree.GetHeader().numSlots <= kLimit / 4 &&
         cases.GetStride() <= (kLimit - Slot::kPredictorMask) / kBlockSize;
}

}  // namespace

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection) {
  if (hasSelection || !HasAvx512() || !CanCount(tree, cases)) return nullptr;
  Layout const layout = FindLayout(tree, cases);
  MissingKind const missing = FindMissingKind(tree, cases, layout);
  bool const fitTiles = tree.GetHeader().numPredictors <= kMaxTilePredictors;
  switch (layout) {
    case Layout::kDoubleRows:
      return Choose<InPlace<RowValues<double>, RowGather<double>>>(missing);
    case Layout::kFloatRows:
      return Choose<InPlace<RowValues<float>, RowGather<float>>>(missing);
    case Layout::kDoubleColumns:
      return ChooseForColumns<double>(missing, fitTiles);
    case Layout::kFloatColumns:
      return ChooseForColumns<float>(missing, fitTiles);
    case Layout::kAny:
      break;
  }
  if (!fitTiles) return nullptr;
  using InAnyTiles = InTiles<double, AnyCopy>;
  return tree.HasOwnMissingValues() ? &InAnyTiles::Score<ByPredictor<MissingOrNull>>
                                    : &InAnyTiles::Score<MissingOrNull>;
}

}  // namespace tree::score

#else

namespace tree::score {

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const&, Cases const&, bool) { return nullptr; }

}  // namespace tree::score

#endif
