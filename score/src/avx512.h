#ifndef TREE_SCORE_SRC_AVX512_H_
#define TREE_SCORE_SRC_AVX512_H_

// For sources that use AVX-512, where there is such a thing; to be included before others.
// Functions are compiled for it one by one, so that nothing else is.

// The intrinsics of GCC begin with registers that hold nothing, and it warns of them itself.
#if !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <cstdint>

#define TREE_AVX512 __attribute__((target("avx512f,avx512dq,avx512bw,avx512vl")))
#define TREE_AVX512_INLINE TREE_AVX512 __attribute__((always_inline)) inline

namespace tree::score {

/// How many cases an instruction is for.
constexpr std::uint32_t kLanes = 8;
constexpr __mmask8 kAll = 0xFF;

/// The first lanes, or all.
TREE_AVX512_INLINE __mmask8 MaskOf(std::uint32_t numLanes) {
  return numLanes >= kLanes ? kAll : static_cast<__mmask8>((1U << numLanes) - 1);
}

TREE_AVX512_INLINE __mmask8 MaskOfBits(unsigned int bits) { return static_cast<__mmask8>(bits); }

TREE_AVX512_INLINE __m256i Broadcast(std::uint32_t number) {
  return _mm256_set1_epi32(static_cast<int>(number));
}

TREE_AVX512_INLINE __mmask8 Test(__m256i words, std::uint32_t flag) {
  return _mm256_test_epi32_mask(words, Broadcast(flag));
}

TREE_AVX512_INLINE __m256i GetLow(__m512i words) { return _mm512_cvtepi64_epi32(words); }

TREE_AVX512_INLINE __m256i GetHigh(__m512i words) {
  return _mm512_cvtepi64_epi32(_mm512_srli_epi64(words, 32));
}

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_AVX512_H_
