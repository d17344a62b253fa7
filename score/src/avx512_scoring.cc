#include "block_scoring.h"

#if defined(__x86_64__) && defined(__GNUC__)

// The intrinsics of GCC begin with registers that hold nothing, and it warns of them itself.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "case_values.h"
#include "routing.h"

// Eight cases to an instruction. What differs from `BlockScorer` is only how; the two are tested
// against each other. Functions are compiled for AVX-512 one by one, so that nothing else is.
#define TREE_AVX512 __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl")))
#define TREE_AVX512_INLINE TREE_AVX512 __attribute__((always_inline)) inline

namespace tree::score {
namespace {

constexpr std::uint32_t kLanes = 8;
constexpr std::uint32_t kVectors = 4;     // on their way at a time, while memory is waited for
constexpr std::uint32_t kPrefetched = 2;  // groups ahead
constexpr __mmask8 kAll = 0xFF;

// Gathers with all lanes and nothing left over from what was in the register before.
TREE_AVX512_INLINE __m512i Gather64(__m256i index, void const* base) {
  return _mm512_mask_i32gather_epi64(_mm512_setzero_si512(), kAll, index, base, 8);
}

/// The values of eight cases, each of another predictor, as doubles.
template <class Value>
class RowGather {
 public:
  TREE_AVX512_INLINE RowGather(Cases const& cases, std::size_t begin)
      : first_(static_cast<Value const*>(cases.GetRows()) + begin * cases.GetStride()),
        rowBytes_(cases.GetStride() * sizeof(Value)),
        stride_(_mm256_set1_epi32(static_cast<int>(cases.GetStride()))) {}

  /// Has the values of the cases from `place` on, that will be looked at soon, fetched.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t place, std::uint32_t count) const {
    if (rowBytes_ > kMaxRowBytes) return;
    char const* const first = reinterpret_cast<char const*>(first_) + place * rowBytes_;
    for (std::size_t byte = 0; byte < count * rowBytes_; byte += 64) {
      _mm_prefetch(first + byte, _MM_HINT_T0);
    }
  }

  /// `places`: of the cases in the block. `lanes`: those that need a value.
  TREE_AVX512_INLINE __m512d Get(__m256i places, __m256i predictors, __mmask8 lanes) const {
    __m256i const index = _mm256_add_epi32(_mm256_mullo_epi32(places, stride_), predictors);
    if constexpr (sizeof(Value) == sizeof(double)) {
      return _mm512_mask_i32gather_pd(_mm512_setzero_pd(), lanes, index, first_, 8);
    } else {
      return _mm512_cvtps_pd(
          _mm256_mmask_i32gather_ps(_mm256_setzero_ps(), lanes, index, first_, 4));
    }
  }

 private:
  // Of longer rows too little is asked for.
  static constexpr std::size_t kMaxRowBytes = 512;

  Value const* first_;
  std::size_t rowBytes_;
  __m256i stride_;
};

template <class Value>
class ColumnGather {
 public:
  TREE_AVX512_INLINE ColumnGather(Cases const& cases, std::size_t begin)
      : columns_(cases.GetColumns()), begin_(begin * sizeof(Value)) {}

  // Columns are read one after the other, which the processor foresees.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t /*place*/, std::uint32_t /*count*/) const {}

  // Deliberate: nothing is read for other lanes, whose columns may not be there.
  TREE_AVX512_INLINE __m512d Get(__m256i places, __m256i predictors, __mmask8 lanes) const {
    static_assert(offsetof(Column, values) == 0 && sizeof(Column) == 5 * sizeof(void*));
    __m256i const index = _mm256_add_epi32(predictors, _mm256_slli_epi32(predictors, 2));
    __m512i const columns = Gather64(index, columns_);
    __m512i const rows = _mm512_slli_epi64(_mm512_cvtepu32_epi64(places), kShift);
    __m512i const addresses = _mm512_add_epi64(_mm512_add_epi64(columns, rows),
                                               _mm512_set1_epi64(static_cast<long long>(begin_)));
    if constexpr (sizeof(Value) == sizeof(double)) {
      return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), lanes, addresses, nullptr, 1);
    } else {
      return _mm512_cvtps_pd(
          _mm512_mask_i64gather_ps(_mm256_setzero_ps(), lanes, addresses, nullptr, 1));
    }
  }

 private:
  static constexpr unsigned int kShift = sizeof(Value) == sizeof(double) ? 3 : 2;

  Column const* columns_;
  std::size_t begin_;  // bytes from a column's first value to that of the block
};

/// What a step of eight cases comes to.
struct Steps {
  __m256i next;
  __mmask8 ends;
  __mmask8 areSlow;
};

/// Which of eight cases go right by their codes, and which do if surrogates say so.
struct Sides {
  unsigned int right;
  unsigned int areUnknown;
};

/// Cases on their way, by the lanes of a few vectors.
struct Group {
  __m256i nodes[kVectors];
  __m256i places[kVectors];  // of the cases in the block
  __mmask8 areMoving[kVectors];
};

/// Scores the cases of one block.
template <class Missing, class Values, class Gather>
class VectorScorer {
 public:
  TREE_AVX512_INLINE VectorScorer(FlatTree const& tree, Cases const& cases, std::size_t begin)
      : slots_(tree.GetSlots()),
        missingValue_(tree.GetHeader().missingValue),
        levels_(tree.GetPlainLevels(Missing::kMayMiss)),
        gather_(cases, begin),
        values_(cases),
        begin_(begin) {}

  TREE_AVX512_INLINE void Run(std::uint32_t size, std::uint32_t* positions) const {
    constexpr std::uint32_t kStep = kVectors * kLanes;
    for (std::uint32_t place = 0; place < size; place += kStep) {
      gather_.Prefetch(place + kPrefetched * kStep, kStep);
      Group group;
      for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
        std::uint32_t const first = place + vector * kLanes;
        group.nodes[vector] = _mm256_setzero_si256();
        group.areMoving[vector] = MaskOf(first < size ? size - first : 0);
        // Lanes beyond the last case repeat it, so that nothing beyond its values is read.
        group.places[vector] = _mm256_min_epu32(
            _mm256_add_epi32(_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7), Broadcast(first)),
            Broadcast(size - 1));
      }
      for (std::uint32_t level = 0; level < levels_.count; ++level) {
#pragma GCC unroll 8
        for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
          group.nodes[vector] = Take<true>(group.nodes[vector], group.places[vector], kAll).next;
        }
      }
      if (!levels_.isWholeTree) {
        if (levels_.hasOthersBelow) {
          FollowToEnds<false>(group);
        } else {
          FollowToEnds<true>(group);
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
  TREE_AVX512_INLINE static __m256i Broadcast(std::uint32_t number) {
    return _mm256_set1_epi32(static_cast<int>(number));
  }

  TREE_AVX512_INLINE static __mmask8 Test(__m256i words, std::uint32_t flag) {
    return _mm256_test_epi32_mask(words, Broadcast(flag));
  }

  TREE_AVX512_INLINE static __mmask8 MaskOf(std::uint32_t numLanes) {
    return numLanes >= kLanes ? kAll : static_cast<__mmask8>((1U << numLanes) - 1);
  }

  template <bool Plain>
  TREE_AVX512_INLINE Steps Take(__m256i nodes, __m256i places, __mmask8 lanes) const {
    __m256i const index = _mm256_add_epi32(nodes, nodes);
    __m512i const payloads = Gather64(index, slots_);
    __m512i const rest = Gather64(index, &slots_->link);
    __m256i const links = _mm512_cvtepi64_epi32(rest);
    __m256i const words = _mm512_cvtepi64_epi32(_mm512_srli_epi64(rest, 32));
    __m256i const predictors = _mm256_and_si256(words, Broadcast(Slot::kPredictorMask));
    __m512d const values = gather_.Get(places, predictors, lanes);
    auto right = static_cast<unsigned int>(
        _mm512_cmp_pd_mask(values, _mm512_castsi512_pd(payloads), _CMP_NLE_UQ));
    unsigned int areSlow = 0;
    unsigned int areCodes = 0;
    if constexpr (!Plain) {
      constexpr std::uint32_t kCodesBit = KindBits(Kind::kCodes);
      constexpr std::uint32_t kGeneralBit = KindBits(Kind::kGeneral);
      static_assert(KindBits(Kind::kEnd) == (kCodesBit | kGeneralBit));
      areSlow = Test(words, kGeneralBit);
      areCodes = Test(words, kCodesBit) & lanes;
    }
    if constexpr (Missing::kMayMiss) {
      unsigned int areMissing =
          _mm512_cmp_pd_mask(values, _mm512_set1_pd(missingValue_), _CMP_EQ_OQ);
      if constexpr (Missing::kHasNulls) {
        areMissing |= FindNulls(values);
        right = (right & ~areMissing) | (areMissing & Test(words, Slot::kMissingRight));
      } else {
        right ^= areMissing & Test(words, Slot::kDetour);
      }
      if constexpr (!Plain) areSlow |= areMissing & Test(words, Slot::kSlow);
    }
    if constexpr (!Plain) {
      // In trees without sets of codes this is never so, and in others it hardly ever is not.
      if (areCodes != 0) {
        Sides const byCode = FindSidesByCode(values, payloads, words);
        right = (right & ~areCodes) | (byCode.right & areCodes);
        areSlow |= byCode.areUnknown & areCodes;
      }
    }
    unsigned int const leftEnds = Test(words, Slot::kLeftEnds);
    unsigned int const rightEnds = Test(words, Slot::kRightEnds);
    return {_mm256_mask_add_epi32(links, static_cast<__mmask8>(right), links, Broadcast(1)),
            static_cast<__mmask8>((right & rightEnds) | (~right & leftEnds)),
            static_cast<__mmask8>(areSlow)};
  }

  TREE_AVX512_INLINE static unsigned int FindNulls(__m512d values) {
    if constexpr (std::is_same_v<Missing, MissingOrNan>) {
      return _mm512_cmp_pd_mask(values, values, _CMP_UNORD_Q);
    } else {
      return _mm512_cmpeq_epi64_mask(_mm512_castpd_si512(values),
                                     _mm512_set1_epi64(static_cast<long long>(kNullBits)));
    }
  }

  // Where lanes would go if they were at nodes with sets of codes.
  TREE_AVX512_INLINE static Sides FindSidesByCode(__m512d values, __m512i payloads, __m256i words) {
    // Beyond the codes of 32 bits this is the lowest integer, which no value from 0 to 64 is.
    __m256i const codes = _mm512_cvttpd_epi32(values);
    unsigned int const areCodes =
        _mm512_cmp_pd_mask(_mm512_cvtepi32_pd(codes), values, _CMP_EQ_OQ) &
        _mm256_cmplt_epu32_mask(codes, Broadcast(64));
    __m512i const sets = _mm512_srlv_epi64(payloads, _mm512_cvtepu32_epi64(codes));
    unsigned int const bySet = _mm512_test_epi64_mask(sets, _mm512_set1_epi64(1));
    // Of codes that are not in halves, nothing but zeros is shifted here.
    unsigned int const areKnown =
        areCodes & _mm512_test_epi64_mask(sets, _mm512_set1_epi64(1LL << kCodesInHalf));
    return {(bySet & areCodes) | (Test(words, Slot::kMissingRight) & ~areCodes),
            Test(words, Slot::kSlow) & ~areKnown};
  }

  template <bool Plain>
  TREE_AVX512_INLINE void FollowToEnds(Group& group) const {
    unsigned int anyMoving = 0;
    do {
      anyMoving = 0;
#pragma GCC unroll 8
      for (std::uint32_t vector = 0; vector < kVectors; ++vector) {
        __mmask8 const lanes = group.areMoving[vector];
        unsigned int const areMoving = lanes;
        Steps const steps = Take<Plain>(group.nodes[vector], group.places[vector], lanes);
        unsigned int const areFast = areMoving & ~static_cast<unsigned int>(steps.areSlow);
        __m256i next =
            _mm256_mask_mov_epi32(group.nodes[vector], static_cast<__mmask8>(areFast), steps.next);
        unsigned int stillMoving = areFast & ~static_cast<unsigned int>(steps.ends);
        if constexpr (!Plain) {
          unsigned int const areSlow = areMoving & steps.areSlow;
          if (areSlow != 0) stillMoving |= MoveSlowly(areSlow, next, group.places[vector]);
        }
        group.nodes[vector] = next;
        group.areMoving[vector] = static_cast<__mmask8>(stillMoving);
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
      std::uint32_t const next = FollowSlowly<Missing>(
          slots_, slots_[laneNodes[lane]], missingValue_, values_, begin_ + lanePlaces[lane]);
      laneNodes[lane] = next;
      if (slots_[next].GetKind() != Kind::kEnd) stillMoving |= 1U << lane;
    }
    nodes = _mm256_load_si256(reinterpret_cast<__m256i const*>(laneNodes));
    return stillMoving;
  }

  Slot const* slots_;
  double missingValue_;
  PlainLevels levels_;
  Gather gather_;
  Values values_;
  std::size_t begin_;
};

template <class Missing, class Values, class Gather>
TREE_AVX512 void Score(FlatTree const& tree, Cases const& cases, std::size_t const* /*selection*/,
                       std::size_t begin, std::uint32_t size, std::uint32_t* positions) {
  VectorScorer<Missing, Values, Gather>(tree, cases, begin).Run(size, positions);
}

// Columns of any kind are copied to rows, of a few cases at a time, so that they stay in the
// fastest cache.
constexpr std::uint32_t kCopiedCases = 2 * kVectors * kLanes;
constexpr std::uint32_t kMaxCopiedPredictors = 64;
// More values than this for each level of the tree may take longer to copy than to look at one by
// one.
constexpr std::uint32_t kMaxCopiesPerLevel = 3;

bool AreFewToCopy(FlatTree const& tree) {
  std::uint32_t const numPredictors = tree.GetHeader().numPredictors;
  if (numPredictors > kMaxCopiedPredictors) return false;
  std::uint32_t numTested = 0;
  for (std::uint32_t predictor = 0; predictor < numPredictors; ++predictor) {
    if (tree.Tests(predictor)) ++numTested;
  }
  return numTested <= kMaxCopiesPerLevel * tree.GetHeader().depth;
}

// `rows`: of all predictors, of which those that the tree tests are written.
void CopyToRows(FlatTree const& tree, Cases const& cases, std::size_t begin, std::uint32_t size,
                double* rows) {
  AnyColumnValues const values(cases);
  std::uint32_t const numPredictors = tree.GetHeader().numPredictors;
  for (std::uint32_t predictor = 0; predictor < numPredictors; ++predictor) {
    if (!tree.Tests(predictor)) continue;
    for (std::uint32_t place = 0; place < size; ++place) {
      rows[place * numPredictors + predictor] = values.Get(begin + place, predictor);
    }
  }
}

TREE_AVX512 void ScoreCopies(FlatTree const& tree, Cases const& cases,
                             std::size_t const* /*selection*/, std::size_t begin,
                             std::uint32_t size, std::uint32_t* positions) {
  alignas(64) double rows[kCopiedCases * kMaxCopiedPredictors];
  Cases const copies = Cases::OfRows(rows, kCopiedCases, tree.GetHeader().numPredictors);
  for (std::uint32_t place = 0; place < size; place += kCopiedCases) {
    std::uint32_t const count = std::min(kCopiedCases, size - place);
    CopyToRows(tree, cases, begin + place, count, rows);
    VectorScorer<MissingOrNull, RowValues<double>, RowGather<double>>(tree, copies, 0)
        .Run(count, positions + place);
  }
}

template <class Values, class Gather>
ScoreBlock Choose(MissingKind missing) {
  switch (missing) {
    case MissingKind::kNever:
      return &Score<NeverMissing, Values, Gather>;
    case MissingKind::kOrNan:
      return &Score<MissingOrNan, Values, Gather>;
    case MissingKind::kByBits:
    case MissingKind::kByValue:
    case MissingKind::kOrNull:
      break;
  }
  return &Score<MissingByValue, Values, Gather>;
}

bool HasAvx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

// Places in memory are counted by signed numbers of 32 bits.
bool CanCount(FlatTree const& tree, Cases const& cases) {
  constexpr std::size_t kLimit = std::numeric_limits<std::int32_t>::max();
  return tree.GetHeader().numSlots <= kLimit / 2 &&
         cases.GetStride() <= (kLimit - Slot::kPredictorMask) / kBlockSize;
}

}  // namespace

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection) {
  if (hasSelection || !HasAvx512() || !CanCount(tree, cases)) return nullptr;
  Layout const layout = FindLayout(tree, cases);
  MissingKind const missing = FindMissingKind(tree, cases, layout);
  switch (layout) {
    case Layout::kDoubleRows:
      return Choose<RowValues<double>, RowGather<double>>(missing);
    case Layout::kFloatRows:
      return Choose<RowValues<float>, RowGather<float>>(missing);
    case Layout::kDoubleColumns:
      return Choose<ColumnValues<double>, ColumnGather<double>>(missing);
    case Layout::kFloatColumns:
      return Choose<ColumnValues<float>, ColumnGather<float>>(missing);
    case Layout::kAny:
      if (AreFewToCopy(tree)) return &ScoreCopies;
      break;
  }
  return nullptr;
}

}  // namespace tree::score

#else

namespace tree::score {

ScoreBlock ChooseAvx512ScoreBlock(FlatTree const&, Cases const&, bool) { return nullptr; }

}  // namespace tree::score

#endif
