#ifndef TREE_SCORE_SRC_AVX512_ROUTING_H_
#define TREE_SCORE_SRC_AVX512_ROUTING_H_

#include "avx512.h"
// After it:
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "case_values.h"
#include "flat_tree.h"
#include "routing.h"

// How eight cases get from a node to the next. What differs from routing.h is only how; the two are
// tested against each other.

namespace tree::score {

/// Eight slots.
struct SlotVector {
  __m512i payloads;
  __m256i links;
  __m256i words;
};

/// Nothing is read for lanes that are not asked for.
TREE_AVX512_INLINE SlotVector GatherSlots(Slot const* slots, __m256i positions,
                                          __mmask8 lanes = kAll) {
  __m512i const zeros = _mm512_setzero_si512();
  __m256i const index = _mm256_add_epi32(positions, positions);
  // The links, and above them the words.
  __m512i const rests = _mm512_mask_i32gather_epi64(zeros, lanes, index, &slots->link, 8);
  return {_mm512_mask_i32gather_epi64(zeros, lanes, index, slots, 8), GetLow(rests),
          GetHigh(rests)};
}

/// The slots at the front of a tree, in registers.
class Front {
 public:
  TREE_AVX512_INLINE explicit Front(FlatTree const& tree) {
    constexpr std::uint32_t kNumParts = PlainLevels::kFrontSlots * 2 / kLanes;
    static_assert(kNumParts == 4);
    __m512i parts[kNumParts];
    std::uint32_t numWords = 2 * std::min(tree.GetHeader().numSlots, PlainLevels::kFrontSlots);
    for (std::uint32_t part = 0; part < kNumParts; ++part) {
      std::uint32_t const count = std::min(numWords, kLanes);
      parts[part] = _mm512_maskz_loadu_epi64(MaskOf(count), tree.GetSlots() + part * kLanes / 2);
      numWords -= count;
    }
    __m512i const even = _mm512_setr_epi64(0, 2, 4, 6, 8, 10, 12, 14);
    __m512i const odd = _mm512_setr_epi64(1, 3, 5, 7, 9, 11, 13, 15);
    __m512i rests[2];
    for (std::size_t half = 0; half < 2; ++half) {
      __m512i const low = parts[2 * half];
      __m512i const high = parts[2 * half + 1];
      payloads_[half] = _mm512_permutex2var_epi64(low, even, high);
      rests[half] = _mm512_permutex2var_epi64(low, odd, high);
    }
    links_ = Join(GetLow(rests[0]), GetLow(rests[1]));
    words_ = Join(GetHigh(rests[0]), GetHigh(rests[1]));
  }

  /// Requires positions at the front.
  TREE_AVX512_INLINE SlotVector Get(__m256i positions) const {
    return {_mm512_permutex2var_epi64(payloads_[0], _mm512_cvtepu32_epi64(positions), payloads_[1]),
            Pick(positions, links_), Pick(positions, words_)};
  }

 private:
  TREE_AVX512_INLINE static __m512i Join(__m256i low, __m256i high) {
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
  }

  TREE_AVX512_INLINE static __m256i Pick(__m256i positions, __m512i words) {
    return _mm512_castsi512_si256(
        _mm512_permutexvar_epi32(_mm512_castsi256_si512(positions), words));
  }

  __m512i payloads_[2];
  __m512i links_;
  __m512i words_;
};

/// What a step of eight cases comes to.
struct Steps {
  __m256i next;
  __mmask8 ends;
  __mmask8
      areSlow;  // to be moved by `FollowSlowly`; what the others say of them counts for nothing
};

/// Which of eight values are null.
template <class Missing>
TREE_AVX512_INLINE __mmask8 FindNulls(__m512d values) {
  static_assert(Missing::kHasNulls);
  if constexpr (Missing::kNanIsNull) {
    return _mm512_cmp_pd_mask(values, values, _CMP_UNORD_Q);
  } else {
    return _mm512_cmpeq_epi64_mask(_mm512_castpd_si512(values),
                                   _mm512_set1_epi64(static_cast<long long>(kNullBits)));
  }
}

/// Eight values as category codes below their limits, and which of them are such codes.
struct Codes {
  __m256i codes;
  __mmask8 areCodes;
};

TREE_AVX512_INLINE Codes FindCodes(__m512d values, __m256i limits) {
  // Beyond the integers of 32 bits this is the lowest of them, which is no code.
  __m256i const codes = _mm512_cvttpd_epi32(values);
  __mmask8 const areWhole = _mm512_cmp_pd_mask(_mm512_cvtepi32_pd(codes), values, _CMP_EQ_OQ);
  return {codes, _mm256_mask_cmplt_epu32_mask(areWhole, codes, limits)};
}

/// Which of eight cases go right by their codes, and which do if surrogates say so.
struct Sides {
  unsigned int right;
  unsigned int areUnknown;
};

/// Where lanes would go if they were at nodes with sets of codes.
TREE_AVX512_INLINE Sides FindSidesByCode(__m512d values, SlotVector const& nodes) {
  Codes const found = FindCodes(values, Broadcast(64));
  unsigned int const areCodes = found.areCodes;
  __m256i const words = nodes.words;
  __m512i const sets = _mm512_srlv_epi64(nodes.payloads, _mm512_cvtepu32_epi64(found.codes));
  unsigned int const bySet = _mm512_test_epi64_mask(sets, _mm512_set1_epi64(1));
  // Of codes that are not in halves, nothing but zeros is shifted here.
  unsigned int const areKnown =
      areCodes & _mm512_test_epi64_mask(sets, _mm512_set1_epi64(1LL << kCodesInHalf));
  return {(bySet & areCodes) | (Test(words, Slot::kMissingRight) & ~areCodes),
          Test(words, Slot::kSlow) & ~areKnown};
}

/// The children of the first cut points at or above the values, or else those above all.
/// `tables`: positions of the cut points, of which there are `sizes`.
TREE_AVX512_INLINE __m256i FindIntervals(Slot const* slots, __m256i tables, __m256i sizes,
                                         __m256i above, __m512d values, __mmask8 lanes) {
  __m256i begins = _mm256_setzero_si256();
  __m256i ends = sizes;
  __mmask8 searching = _mm256_mask_cmplt_epu32_mask(lanes, begins, ends);
  while (searching != 0) {
    __m256i const middles = _mm256_srli_epi32(_mm256_add_epi32(begins, ends), 1);
    __m256i const cuts = _mm256_add_epi32(tables, middles);
    __m512d const cutPoints = _mm512_mask_i32gather_pd(_mm512_setzero_pd(), searching,
                                                       _mm256_add_epi32(cuts, cuts), slots, 8);
    __mmask8 const areBelow = _mm512_mask_cmp_pd_mask(searching, cutPoints, values, _CMP_GE_OQ);
    ends = _mm256_mask_mov_epi32(ends, areBelow, middles);
    begins = _mm256_mask_add_epi32(begins, MaskOfBits(searching & ~unsigned{areBelow}), middles,
                                   Broadcast(1));
    searching = _mm256_mask_cmplt_epu32_mask(searching, begins, ends);
  }
  __m256i const cuts = _mm256_add_epi32(tables, begins);
  __mmask8 const areBelow = _mm256_mask_cmplt_epu32_mask(lanes, begins, sizes);
  return _mm256_mmask_i32gather_epi32(above, areBelow, _mm256_slli_epi32(cuts, 2), &slots->link, 4);
}

/// The steps of `lanes`, which are at general nodes; those whose primary rules place them. Apart
/// from the others, so that those stay short.
template <class Missing>
TREE_AVX512 __attribute__((noinline)) Steps TakeGeneralSteps(Slot const* slots,
                                                             SlotVector const& nodes,
                                                             __m512d values, __mmask8 lanes) {
  __m256i const none = Broadcast(kNoChild);
  __m256i const groups = nodes.links;
  __m256i const positions = _mm256_add_epi32(groups, GetLow(nodes.payloads));
  SlotVector const rules = GatherSlots(slots, positions, lanes);
  __m256i const words = rules.words;
  __m256i const sizes = GetLow(rules.payloads);
  __m256i const tables = _mm256_add_epi32(positions, Broadcast(2));
  __mmask8 const areOrdered = Test(words, GeneralRule::kOrdered) & lanes;
  unsigned int areMissing = 0;

  Codes const found = FindCodes(values, sizes);
  unsigned int const areCodes = found.areCodes & lanes & ~unsigned{areOrdered};
  __m256i const entries = _mm256_add_epi32(_mm256_slli_epi32(tables, 2), found.codes);
  static_assert(GeneralRule::kCodesPerSlot == 4);
  __m256i children = _mm256_mmask_i32gather_epi32(none, MaskOfBits(areCodes), entries, slots, 4);
  areMissing = _mm256_cmpeq_epi32_mask(children, none);
  if (areOrdered != 0) {
    __m256i const inOrder =
        FindIntervals(slots, tables, sizes, GetHigh(rules.payloads), values, areOrdered);
    children = _mm256_mask_mov_epi32(children, areOrdered, inOrder);
    __m256i const seconds = _mm256_add_epi32(positions, Broadcast(1));
    __m512d const missingValues = _mm512_mask_i32gather_pd(
        _mm512_setzero_pd(), areOrdered, _mm256_add_epi32(seconds, seconds), slots, 8);
    unsigned int areMissingHere = _mm512_cmp_pd_mask(values, missingValues, _CMP_EQ_OQ);
    if constexpr (Missing::kHasNulls) areMissingHere |= FindNulls<Missing>(values);
    areMissing = (areMissing & ~unsigned{areOrdered}) | (areMissingHere & areOrdered);
  }
  children = _mm256_mask_mov_epi32(children, MaskOfBits(areMissing), rules.links);
  unsigned int const arePlaced = _mm256_cmpneq_epi32_mask(children, none);
  unsigned int const areLast = Test(words, Slot::kLast);
  children =
      _mm256_mask_mov_epi32(children, MaskOfBits(areLast & ~arePlaced), GetHigh(nodes.payloads));
  __mmask8 const areKnown = MaskOfBits((arePlaced | areLast) & lanes);
  __m256i const next = _mm256_add_epi32(groups, children);
  __m256i const nextWords = _mm256_mmask_i32gather_epi32(
      _mm256_setzero_si256(), areKnown, _mm256_slli_epi32(next, 2), &slots->word, 4);
  __mmask8 const ends = _mm256_cmpeq_epi32_mask(
      _mm256_and_si256(nextWords, Broadcast(Slot::kKindMask)), Broadcast(KindBits(Kind::kEnd)));
  return {next, ends, MaskOfBits(lanes & ~unsigned{areKnown})};
}

/// What nodes may be met.
enum class NodesMet : std::uint8_t { kPlain, kOfTwoWays, kAny };

/// The missing values of eight predictors.
template <class Missing>
TREE_AVX512_INLINE __m512d GetMissingValues(MissingValues<Missing> const& missing,
                                            __m256i predictors) {
  if constexpr (Missing::kByPredictor) {
    return _mm512_mask_i32gather_pd(_mm512_setzero_pd(), kAll, predictors, missing.GetByPredictor(),
                                    8);
  } else {
    return _mm512_set1_pd(missing.GetCommon());
  }
}

/// The steps of `lanes` from nodes where they look at these values.
template <class Missing, NodesMet Met>
TREE_AVX512_INLINE Steps TakeSteps(Slot const* slots, SlotVector const& nodes, __m512d values,
                                   __m512d missingValues, __mmask8 lanes) {
  __m256i const links = nodes.links;
  __m256i const words = nodes.words;
  auto right = static_cast<unsigned int>(
      _mm512_cmp_pd_mask(values, _mm512_castsi512_pd(nodes.payloads), _CMP_NLE_UQ));
  unsigned int areSlow = 0;
  constexpr bool kMayBeSlow = Met != NodesMet::kPlain;
  if constexpr (Missing::kMayMiss) {
    unsigned int areMissing = _mm512_cmp_pd_mask(values, missingValues, _CMP_EQ_OQ);
    if constexpr (Missing::kHasNulls) {
      areMissing |= FindNulls<Missing>(values);
      right = (right & ~areMissing) | (areMissing & Test(words, Slot::kMissingRight));
    } else {
      right ^= areMissing & Test(words, Slot::kDetour);
    }
    if constexpr (kMayBeSlow) areSlow = areMissing & Test(words, Slot::kSlow);
  }
  if constexpr (kMayBeSlow) {
    // In trees without sets of codes this is never so, and in others it hardly ever is not.
    unsigned int const areCodes = Test(words, KindBits(Kind::kCodes)) & lanes;
    if (areCodes != 0) {
      Sides const byCode = FindSidesByCode(values, nodes);
      right = (right & ~areCodes) | (byCode.right & areCodes);
      areSlow |= byCode.areUnknown & areCodes;
    }
  }
  unsigned int ends =
      (right & Test(words, Slot::kRightEnds)) | (~right & Test(words, Slot::kLeftEnds));
  __m256i next = _mm256_mask_add_epi32(links, MaskOfBits(right), links, Broadcast(1));
  if constexpr (Met == NodesMet::kAny) {
    // Of an end this is said too, but no lane has ended.
    unsigned int const areGeneral = Test(words, KindBits(Kind::kGeneral)) & lanes;
    if (areGeneral != 0) {
      Steps const general = TakeGeneralSteps<Missing>(slots, nodes, values, MaskOfBits(areGeneral));
      next = _mm256_mask_mov_epi32(next, MaskOfBits(areGeneral), general.next);
      ends = (ends & ~areGeneral) | (general.ends & areGeneral);
      areSlow = (areSlow & ~areGeneral) | general.areSlow;
    }
  }
  return {next, MaskOfBits(ends), MaskOfBits(areSlow)};
}

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_AVX512_ROUTING_H_
