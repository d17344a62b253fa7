#ifndef TREE_SCORE_SRC_AVX512_VALUES_H_
#define TREE_SCORE_SRC_AVX512_VALUES_H_

#include "avx512.h"
// After it:
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "case_values.h"
#include "tree/score/cases.h"

// The values of eight cases, each of another predictor, as doubles. Nothing is read for lanes that
// need no value, whose columns may not be there.

namespace tree::score {

template <class Value>
TREE_AVX512_INLINE __m512d GatherValues(Value const* values, __m256i index, __mmask8 lanes) {
  if constexpr (sizeof(Value) == sizeof(double)) {
    return _mm512_mask_i32gather_pd(_mm512_setzero_pd(), lanes, index, values, 8);
  } else {
    return _mm512_cvtps_pd(_mm256_mmask_i32gather_ps(_mm256_setzero_ps(), lanes, index, values, 4));
  }
}

/// The same at these addresses.
template <class Value>
TREE_AVX512_INLINE __m512d GatherValuesAt(__m512i addresses, __mmask8 lanes) {
  if constexpr (sizeof(Value) == sizeof(double)) {
    return _mm512_mask_i64gather_pd(_mm512_setzero_pd(), lanes, addresses, nullptr, 1);
  } else {
    return _mm512_cvtps_pd(
        _mm512_mask_i64gather_ps(_mm256_setzero_ps(), lanes, addresses, nullptr, 1));
  }
}

/// Counts of values as counts of bytes.
template <class Value>
TREE_AVX512_INLINE __m512i ToBytes(__m256i counts) {
  return _mm512_slli_epi64(_mm512_cvtepu32_epi64(counts), sizeof(Value) == sizeof(double) ? 3 : 2);
}

// How far ahead rows are called for. Of longer rows too little is asked for.
constexpr std::size_t kMaxRowBytes = 512;
constexpr std::uint32_t kCasesUntilSoon = 32;
constexpr std::uint32_t kCasesUntilLater = 256;

/// The values of rows that follow each other.
template <class Value>
class RowGather {
 public:
  TREE_AVX512_INLINE RowGather(Cases const& cases, InSequence rows, std::uint32_t /*size*/)
      : first_(static_cast<Value const*>(cases.GetRows()) + rows.begin * cases.GetStride()),
        rowBytes_(cases.GetStride() * sizeof(Value)),
        stride_(Broadcast(static_cast<std::uint32_t>(cases.GetStride()))) {}

  /// When it is the turn of the `count` cases from `place` on, has values fetched of as many cases
  /// that come soon after them, and, into a cache that has more room, of as many that come later.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t place, std::uint32_t count) const {
    if (rowBytes_ > kMaxRowBytes) return;
    std::size_t const begin = place * rowBytes_;
    std::size_t const end = begin + count * rowBytes_;
    char const* const soon = reinterpret_cast<char const*>(first_) + kCasesUntilSoon * rowBytes_;
    char const* const later = reinterpret_cast<char const*>(first_) + kCasesUntilLater * rowBytes_;
    for (std::size_t byte = (begin + 63) / 64 * 64; byte < end; byte += 64) {
      _mm_prefetch(soon + byte, _MM_HINT_T0);
      _mm_prefetch(later + byte, _MM_HINT_T1);
    }
  }

  /// What a case is found by, of each of eight cases.
  using Origins = __m256i;
  /// `places`: of the cases in the block.
  TREE_AVX512_INLINE Origins Find(__m256i places) const {
    return _mm256_mullo_epi32(places, stride_);
  }
  /// `lanes`: those that need a value.
  TREE_AVX512_INLINE __m512d Get(Origins rows, __m256i predictors, __mmask8 lanes) const {
    return GatherValues(first_, _mm256_add_epi32(rows, predictors), lanes);
  }

 private:
  Value const* first_;
  std::size_t rowBytes_;
  __m256i stride_;
};

/// How far picked rows lie from the first one of all, in bytes. `places`: of the cases in the
/// block.
TREE_AVX512_INLINE __m512i FindOffsets(Picked picked, __m256i places, std::size_t rowBytes) {
  static_assert(sizeof(*picked.rows) == sizeof(long long));
  __m512i const rows =
      _mm512_mask_i32gather_epi64(_mm512_setzero_si512(), kAll, places, picked.rows, 8);
  return _mm512_mullo_epi64(rows, _mm512_set1_epi64(static_cast<long long>(rowBytes)));
}

/// The values of rows that were picked.
template <class Value>
class PickedRowGather {
 public:
  TREE_AVX512_INLINE PickedRowGather(Cases const& cases, Picked picked, std::uint32_t size)
      : first_(static_cast<char const*>(cases.GetRows())),
        rowBytes_(cases.GetStride() * sizeof(Value)),
        valueBytes_(cases.GetNumPredictors() * sizeof(Value)),
        picked_(picked),
        size_(size) {}

  /// As that of rows that follow each other, but within the block, and into the fastest cache only.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t place, std::uint32_t count) const {
    if (valueBytes_ > kMaxRowBytes) return;
    std::uint32_t const end = std::min(place + kCasesUntilSoon + count, size_);
    for (std::uint32_t soon = place + kCasesUntilSoon; soon < end; ++soon) {
      char const* const row = first_ + picked_.GetRow(soon) * rowBytes_;
      for (std::size_t byte = 0; byte < valueBytes_; byte += 64) {
        _mm_prefetch(row + byte, _MM_HINT_T0);
      }
      _mm_prefetch(row + valueBytes_ - 1, _MM_HINT_T0);
    }
  }

  using Origins = __m512i;
  TREE_AVX512_INLINE Origins Find(__m256i places) const {
    __m512i const first = _mm512_set1_epi64(reinterpret_cast<long long>(first_));
    return _mm512_add_epi64(first, FindOffsets(picked_, places, rowBytes_));
  }
  TREE_AVX512_INLINE __m512d Get(Origins rows, __m256i predictors, __mmask8 lanes) const {
    return GatherValuesAt<Value>(_mm512_add_epi64(rows, ToBytes<Value>(predictors)), lanes);
  }

 private:
  char const* first_;
  std::size_t rowBytes_;
  std::size_t valueBytes_;
  Picked picked_;
  std::uint32_t size_;
};

/// Where the values of columns begin.
TREE_AVX512_INLINE __m512i GatherColumns(Column const* columns, __m256i predictors) {
  static_assert(offsetof(Column, values) == 0 && sizeof(Column) == 5 * sizeof(void*));
  __m256i const index = _mm256_add_epi32(predictors, _mm256_slli_epi32(predictors, 2));
  return _mm512_mask_i32gather_epi64(_mm512_setzero_si512(), kAll, index, columns, 8);
}

/// The values of columns, in rows that follow each other.
template <class Value>
class ColumnGather {
 public:
  TREE_AVX512_INLINE ColumnGather(Cases const& cases, InSequence rows, std::uint32_t /*size*/)
      : columns_(cases.GetColumns()), begin_(rows.begin * sizeof(Value)) {}

  // Columns are read one after the other, which the processor foresees.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t /*place*/, std::uint32_t /*count*/) const {}

  using Origins = __m512i;
  TREE_AVX512_INLINE Origins Find(__m256i places) const {
    __m512i const begin = _mm512_set1_epi64(static_cast<long long>(begin_));
    return _mm512_add_epi64(begin, ToBytes<Value>(places));
  }
  TREE_AVX512_INLINE __m512d Get(Origins rows, __m256i predictors, __mmask8 lanes) const {
    __m512i const columns = GatherColumns(columns_, predictors);
    return GatherValuesAt<Value>(_mm512_add_epi64(columns, rows), lanes);
  }

 private:
  Column const* columns_;
  std::size_t begin_;  // bytes from a column's first value to that of the block
};

/// The values of columns, in rows that were picked.
template <class Value>
class PickedColumnGather {
 public:
  TREE_AVX512_INLINE PickedColumnGather(Cases const& cases, Picked picked, std::uint32_t /*size*/)
      : columns_(cases.GetColumns()), picked_(picked) {}

  // Columns are read at many places at once as it is.
  TREE_AVX512_INLINE void Prefetch(std::uint32_t /*place*/, std::uint32_t /*count*/) const {}

  using Origins = __m512i;
  TREE_AVX512_INLINE Origins Find(__m256i places) const {
    return FindOffsets(picked_, places, sizeof(Value));
  }
  TREE_AVX512_INLINE __m512d Get(Origins rows, __m256i predictors, __mmask8 lanes) const {
    __m512i const columns = GatherColumns(columns_, predictors);
    return GatherValuesAt<Value>(_mm512_add_epi64(columns, rows), lanes);
  }

 private:
  Column const* columns_;
  Picked picked_;
};

/// A tile: copies of the values of a few cases, those of a predictor side by side and all of them
/// close together, so that they are in the fastest cache. Lines of whole columns often push each
/// other out of it, since they lie at like distances.
constexpr std::uint32_t kTileCases = 64;
constexpr std::uint32_t kTileShift = 6;
constexpr std::uint32_t kMaxTilePredictors = 64;
static_assert(kTileCases == 1U << kTileShift);

template <class Value>
class TileValues {
 public:
  explicit TileValues(Value const* tile) : tile_(tile) {}

  double Get(std::size_t row, std::uint32_t predictor) const {
    return static_cast<double>(tile_[(std::size_t{predictor} << kTileShift) + row]);
  }

 private:
  Value const* tile_;
};

template <class Value>
class TileGather {
 public:
  explicit TileGather(Value const* tile) : tile_(tile) {}

  TREE_AVX512_INLINE void Prefetch(std::uint32_t /*place*/, std::uint32_t /*count*/) const {}

  using Origins = __m256i;
  TREE_AVX512_INLINE Origins Find(__m256i places) const { return places; }
  TREE_AVX512_INLINE __m512d Get(Origins places, __m256i predictors, __mmask8 lanes) const {
    return GatherValues(tile_, _mm256_add_epi32(_mm256_slli_epi32(predictors, kTileShift), places),
                        lanes);
  }

 private:
  Value const* tile_;
};

/// Copies columns that all hold doubles or all hold floats, side by side and without bitmaps.
template <class Value>
class PlainCopy {
 public:
  explicit PlainCopy(Cases const& cases) : columns_(cases.GetColumns()) {}

  /// `to`: room for the cases of a tile, of which there are `count`.
  TREE_AVX512_INLINE void Copy(std::uint32_t predictor, InSequence rows, std::uint32_t count,
                               Value* to) const {
    auto const* const from = static_cast<Value const*>(columns_[predictor].values) + rows.begin;
    if (count < kTileCases) {
      std::copy_n(from, count, to);
      return;
    }
    constexpr std::uint32_t kLine = 64 / sizeof(Value);
    for (std::uint32_t place = 0; place < kTileCases; place += kLine) {
      auto const* const ahead = reinterpret_cast<char const*>(from + place + kTileCases);
      _mm_prefetch(ahead, _MM_HINT_T0);
      _mm_prefetch(ahead + kTileCases * sizeof(Value), _MM_HINT_T1);
      _mm512_store_si512(to + place, _mm512_loadu_si512(from + place));
    }
  }

 private:
  Column const* columns_;
};

/// Copies values one by one, as doubles.
template <class Values>
class ValueCopy {
 public:
  explicit ValueCopy(Cases const& cases) : values_(cases) {}

  template <class Rows>
  TREE_AVX512_INLINE void Copy(std::uint32_t predictor, Rows rows, std::uint32_t count,
                               double* to) const {
    for (std::uint32_t place = 0; place < count; ++place) {
      to[place] = values_.Get(rows.GetRow(place), predictor);
    }
  }

 private:
  Values values_;
};

/// Copies columns of any kind as doubles: the values that `AnyColumnValues` gives.
class AnyCopy {
 public:
  explicit AnyCopy(Cases const& cases)
      : columns_(cases.GetColumns()),
        valueCopy_(cases),
        nanIsNull_(cases.GetNanMeaning() == NanMeaning::kMissing) {}

  TREE_AVX512_INLINE void Copy(std::uint32_t predictor, InSequence rows, std::uint32_t count,
                               double* to) const {
    Column const& column = columns_[predictor];
    if (column.stride != 1) {
      valueCopy_.Copy(predictor, rows, count, to);
      return;
    }
    std::size_t const begin = rows.begin;
    __m512d const null = _mm512_set1_pd(std::bit_cast<double>(kNullBits));
    __m512d const nan =
        nanIsNull_ ? null : _mm512_set1_pd(std::numeric_limits<double>::quiet_NaN());
    for (std::uint32_t place = 0; place < count; place += kLanes) {
      std::uint32_t const numLanes = std::min(kLanes, count - place);
      __m512d values = Load(column, begin + place, MaskOf(numLanes));
      values = _mm512_mask_mov_pd(values, _mm512_cmp_pd_mask(values, values, _CMP_UNORD_Q), nan);
      __mmask8 const areNull = FindNulls(column, begin + place, numLanes);
      _mm512_store_pd(to + place, _mm512_mask_mov_pd(values, areNull, null));
    }
  }

 private:
  TREE_AVX512_INLINE static __m512d Load(Column const& column, std::size_t row, __mmask8 lanes) {
    switch (column.type) {
      case ValueType::kDouble:
        return _mm512_maskz_loadu_pd(lanes, static_cast<double const*>(column.values) + row);
      case ValueType::kFloat:
        return _mm512_cvtps_pd(
            _mm256_maskz_loadu_ps(lanes, static_cast<float const*>(column.values) + row));
      case ValueType::kCode:
        break;
    }
    return _mm512_cvtepi32_pd(
        _mm256_maskz_loadu_epi32(lanes, static_cast<std::int32_t const*>(column.values) + row));
  }

  // Of up to eight cases, those whose bits are 0. Bytes without a bit of theirs are not read.
  TREE_AVX512_INLINE static __mmask8 FindNulls(Column const& column, std::size_t row,
                                               std::uint32_t numLanes) {
    if (column.validity == nullptr) return 0;
    std::size_t const bit = column.validityOffset + row;
    std::uint8_t const* const byte = column.validity + bit / 8;
    auto const shift = static_cast<unsigned int>(bit % 8);
    unsigned int bits = byte[0];
    if (shift + numLanes > 8) bits |= static_cast<unsigned int>(byte[1]) << 8U;
    return MaskOfBits(~(bits >> shift));
  }

  Column const* columns_;
  ValueCopy<AnyColumnValues> valueCopy_;
  bool nanIsNull_;
};

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_AVX512_VALUES_H_
