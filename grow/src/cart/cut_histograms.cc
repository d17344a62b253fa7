#include "cart/cut_histograms.h"

#include <algorithm>
#include <cmath>

#include "growing/workers.h"

namespace tree::grow {
namespace {

/// The excess of one child below a cut wanders about as far as the root of the number of cases. Few
/// buckets are open when they hold little beside that; more of them would take longer to clear and
/// to go through than they save.
std::size_t NumBuckets(std::size_t numCases) {
  auto const count = static_cast<double>(numCases);
  return 1 + static_cast<std::size_t>(std::min(count / 2.0, 8.0 * std::sqrt(count)));
}

/// None of this overlaps, so that several marks can be found at a time.
void FindMarks(std::size_t numPredictors, double const* __restrict row,
               ValueScale const* __restrict scales, double* __restrict marks) {
  for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
    marks[predictor] = scales[predictor].MarkOf(row[predictor]);
  }
}

/// As good as a plain one.
ValueScale ScaleForRange(double least, double greatest) {
  double const range = greatest - least;
  bool const isUsable = std::isnormal(range) && std::isnormal(1.0 / range);
  return {least, isUsable ? range : 1.0};
}

}  // namespace

template <class Weight>
void CutHistograms<Weight>::Begin(std::span<ValueScale const> scales, std::size_t numCases,
                                  bool hasGaps) {
  std::size_t const numPredictors = scales.size();
  hasGaps_ = hasGaps;
  isScaled_ = !std::all_of(scales.begin(), scales.end(),
                           [](ValueScale const& scale) { return scale.IsPlain(); });
  numBuckets_ = 1 + NumBuckets(numCases);
  tableSize_ = 2 * numBuckets_;
  last_ = static_cast<double>(numBuckets_ - 2);
  counts_.assign(numPredictors * tableSize_, 0);
  scales_.assign(scales.begin(), scales.end());
  marks_.resize(numPredictors);
  origins_.resize(numPredictors);
  perUnit_.resize(numPredictors);
  buckets_.resize(numPredictors);
  placed_.resize(numPredictors);
}

template <class Weight>
void CutHistograms<Weight>::SetRange(std::size_t predictor, double least, double greatest) {
  if (!(least <= greatest)) least = greatest = 0.0;  // no finite value
  if (isScaled_) {
    ValueScale& scale = scales_[predictor];
    if (scale.IsPlain()) scale = ScaleForRange(least, greatest);
    least = scale.MarkOf(least);
    greatest = scale.MarkOf(greatest);
  }
  // Values above the last border are the greatest one, and those next to it by rounding.
  double const perUnit = last_ / (greatest - least);
  bool const isUsable = std::isfinite(perUnit) && std::isfinite(greatest - least);
  // Or else one bucket takes them all.
  origins_[predictor] = isUsable ? least : 0.0;
  perUnit_[predictor] = isUsable ? perUnit : 0.0;
}

/// Nothing of all this overlaps, so that several buckets can be found at a time.
template <class Weight>
template <bool HasGaps>
void CutHistograms<Weight>::FindBuckets(double const* __restrict row,
                                        double const* __restrict marks) {
  std::size_t const numPredictors = buckets_.size();
  double const last = last_;
  double const* const __restrict origins = origins_.data();
  double const* const __restrict perUnit = perUnit_.data();
  std::int32_t* const __restrict buckets = buckets_.data();
  for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
    std::int32_t const bucket =
        BucketIn<HasGaps>(marks[predictor], origins[predictor], perUnit[predictor], last);
    buckets[predictor] = HasGaps && row[predictor] != row[predictor] ? 0 : bucket;
  }
}

template <class Weight>
void CutHistograms<Weight>::Count(double const* row, std::size_t child, Weight weight) {
  std::size_t const numPredictors = buckets_.size();
  if (isScaled_) FindMarks(numPredictors, row, scales_.data(), marks_.data());
  double const* const marks = isScaled_ ? marks_.data() : row;
  if (hasGaps_) {
    FindBuckets<true>(row, marks);
  } else {
    FindBuckets<false>(row, marks);
  }
  std::size_t const tableSize = tableSize_;
  std::int32_t const* const buckets = buckets_.data();
  Weight* counts = counts_.data() + child;
  for (std::size_t predictor = 0; predictor < numPredictors; ++predictor) {
    counts[2 * static_cast<std::size_t>(buckets[predictor])] += weight;
    counts += tableSize;
  }
}

template <class Weight>
std::int64_t CutHistograms<Weight>::BestAtBorder(std::size_t predictor, Placed const& placed) {
  Weight const* const table = TableOf(predictor);
  Placed& both = placed_[predictor];
  both = {placed[0] - static_cast<std::int64_t>(table[0]),
          placed[1] - static_cast<std::int64_t>(table[1])};
  std::int64_t excess = 0;
  std::int64_t most = 0;
  std::int64_t least = 0;
  for (std::size_t bucket = 1; bucket < numBuckets_; ++bucket) {
    excess += static_cast<std::int64_t>(table[2 * bucket]);
    excess -= static_cast<std::int64_t>(table[2 * bucket + 1]);
    most = std::max(most, excess);
    least = std::min(least, excess);
  }
  return std::max(both[1] + most, both[0] - least);
}

template <class Weight>
bool CutHistograms<Weight>::Open(std::size_t predictor, std::int64_t wanted) {
  Weight const* const table = TableOf(predictor);
  opened_.predictor = predictor;
  opened_.wanted = wanted;
  opened_.buckets.clear();
  auto const hasCases = [&](std::size_t bucket) {
    return table[2 * bucket] != 0 || table[2 * bucket + 1] != 0;
  };
  auto const open = [&](std::size_t bucket, std::int64_t excess) {
    if (opened_.buckets.empty()) opened_.isOpen.assign(numBuckets_, 0);
    std::size_t before = bucket - 1;
    while (before > 0 && !hasCases(before)) --before;
    opened_.isOpen[bucket] = 1;
    opened_.buckets.push_back({bucket, excess, opened_.isOpen[before] != 0});
  };
  // An excess that a cut has to reach, straight or turned.
  std::int64_t const high = wanted - placed_[predictor][1];
  std::int64_t const low = placed_[predictor][0] - wanted;
  std::int64_t excess = 0;
  bool beginsAtCut = false;
  for (std::size_t bucket = 1; bucket < numBuckets_; ++bucket) {
    auto const first = static_cast<std::int64_t>(table[2 * bucket]);
    auto const second = static_cast<std::int64_t>(table[2 * bucket + 1]);
    // No cut within it reaches more than one that has all of one child below, and none of the
    // other.
    if (excess + first >= high || excess - second <= low || beginsAtCut) {
      std::int64_t const behind = excess + first - second;
      bool const endsAtCut = behind >= high || behind <= low;
      if (hasCases(bucket)) {
        if ((first != 0 && second != 0) || beginsAtCut || endsAtCut) open(bucket, excess);
        beginsAtCut = endsAtCut;
      }
    }
    excess += first - second;
  }
  return !opened_.buckets.empty();
}

template <class Weight>
auto CutHistograms<Weight>::Find(std::span<Item const> items, std::span<std::uint32_t const> order,
                                 PollFunction const& poll) const -> std::optional<Cut> {
  Placed const& both = placed_[opened_.predictor];
  std::optional<Cut> best;
  std::int64_t wanted = opened_.wanted;
  auto bucket = opened_.buckets.begin();
  std::int64_t excess = 0;
  std::size_t lastBucket = 0;
  double lastValue = 0.0;
  for (std::size_t index = 0; index < order.size(); ++index) {
    if (index % kWorkPerPoll == kWorkPerPoll - 1) poll();
    Item const& item = items[order[index]];
    bool isCut = item.value > lastValue;
    std::size_t const number = BucketOf(opened_.predictor, item.value);
    if (number != lastBucket) {
      while (bucket->number != number) ++bucket;
      excess = bucket->excess;
      isCut = bucket->followsOpen;
    }
    std::int64_t const straight = both[1] + excess;
    std::int64_t const turned = both[0] - excess;
    if (isCut && std::max(straight, turned) >= wanted) {
      wanted = std::max(straight, turned) + 1;
      best = {wanted - 1, lastValue, item.value, turned > straight};
    }
    excess += item.weight;
    lastBucket = number;
    lastValue = item.value;
  }
  return best;
}

template class CutHistograms<std::uint32_t>;
template class CutHistograms<std::int64_t>;

}  // namespace tree::grow
