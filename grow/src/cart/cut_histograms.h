#ifndef TREE_GROW_SRC_CART_CUT_HISTOGRAMS_H_
#define TREE_GROW_SRC_CART_CUT_HISTOGRAMS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "growing/fixed_point.h"
#include "growing/value_scale.h"

namespace tree::grow {

/// Finds, for several ordered predictors, the cut that agrees most with a primary split, without
/// sorting the cases of the node. Their values are counted in buckets of the same width on some
/// scale, the borders of which are cuts; only the cases of those buckets need to be looked at one
/// by one within which a cut may agree as well as the best border. These are few, unless most
/// values are crowded together on the scale. What is found is exact.
///
/// To be called in this order: `Begin`, `SetRange` for each predictor, `Count` for each case,
/// `BestAtBorder`, and where a predictor is worth it `Open` and `Find`. Memory is kept from node to
/// node. `Weight`: holds the sums of weights.
template <class Weight>
class CutHistograms {
 public:
  /// The weights, in units, of cases that the primary split sends to child 0 and 1.
  using Placed = std::array<std::int64_t, 2>;
  /// A case of an open bucket. `weight`: negative in child 1.
  struct Item {
    double value;
    std::int64_t weight;
  };
  struct Cut {
    std::int64_t agreement = 0;
    double lower = 0.0;  ///< the values on both sides of it
    double upper = 0.0;
    bool reversed = false;  ///< whether child 0 is above
  };

  /// Begins a node. `scales`: for the values of each predictor; `hasGaps`: whether values may be
  /// NaN, where they are missing, or infinite.
  void Begin(std::span<ValueScale const> scales, std::size_t numCases, bool hasGaps);
  /// What the cases have of a predictor, but for infinite values.
  void SetRange(std::size_t predictor, double least, double greatest);
  /// Counts a case. `row`: its values, by predictor.
  void Count(double const* row, std::size_t child, Weight weight);
  /// The agreement of the best cut at a border. `placed`: of all cases that were counted.
  std::int64_t BestAtBorder(std::size_t predictor, Placed const& placed);
  /// Opens the buckets that have to be looked into for the best cut, if that agrees on `wanted` or
  /// more; gives whether there are any. `wanted`: at least `BestAtBorder`, and more than the weight
  /// of either child. Of one predictor at a time; after it `IsOpen` and `Find` refer to it.
  bool Open(std::size_t predictor, std::int64_t wanted);
  bool IsOpen(double value) const {
    return opened_.isOpen[BucketOf(opened_.predictor, value)] != 0;
  }
  /// The best cut; of equal ones, the lowest; none where none agrees on what was wanted. `items`:
  /// all cases of open buckets, `order`: their positions, ascending by value; `poll`: called now
  /// and then.
  std::optional<Cut> Find(std::span<Item const> items, std::span<std::uint32_t const> order,
                          PollFunction const& poll = NoPoll) const;

 private:
  struct Bucket {
    std::size_t number;
    std::int64_t excess;  // how much more of child 0 than of child 1 lies below it
    bool followsOpen;     // whether the last bucket with cases before it is open, too
  };
  struct Opened {
    std::size_t predictor = 0;
    std::int64_t wanted = 0;
    std::vector<char> isOpen;  // by bucket
    std::vector<Bucket> buckets;
  };

  /// The bucket of a mark; bucket 0 is left free. `last`: the greatest number, less 1.
  template <bool HasGaps>
  static std::int32_t BucketIn(double mark, double origin, double perUnit, double last) {
    double share = (mark - origin) * perUnit;
    if constexpr (HasGaps) {
      // An infinite value lies outside, or makes no number of a unit that is 0.
      share = share > 0.0 ? share : 0.0;
      share = share < last ? share : last;
    }
    return static_cast<std::int32_t>(share) + 1;
  }
  /// Not less for a greater value; 0 is for missing ones.
  std::size_t BucketOf(std::size_t predictor, double value) const {
    if (value != value) return 0;
    return static_cast<std::size_t>(
        BucketIn<true>(isScaled_ ? scales_[predictor].MarkOf(value) : value, origins_[predictor],
                       perUnit_[predictor], last_));
  }
  template <bool HasGaps>
  void FindBuckets(double const* row, double const* marks);
  Weight const* TableOf(std::size_t predictor) const {
    return counts_.data() + predictor * tableSize_;
  }

  bool hasGaps_ = false;
  bool isScaled_ = false;       // whether a scale is not plain; then marks are found for all values
  std::size_t numBuckets_ = 0;  // with that of missing values
  std::size_t tableSize_ = 0;
  double last_ = 0.0;
  std::vector<Weight> counts_;  // [predictor][bucket][child]
  // By predictor:
  std::vector<ValueScale> scales_;
  std::vector<double> marks_;    // of the present case
  std::vector<double> origins_;  // a mark, or a value if all scales are plain
  std::vector<double> perUnit_;
  std::vector<std::int32_t> buckets_;  // of the present case
  std::vector<Placed> placed_;         // with a value
  Opened opened_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_CUT_HISTOGRAMS_H_
