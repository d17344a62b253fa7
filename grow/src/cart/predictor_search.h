#ifndef TREE_GROW_SRC_CART_PREDICTOR_SEARCH_H_
#define TREE_GROW_SRC_CART_PREDICTOR_SEARCH_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "cart/category_order.h"
#include "cart/found_split.h"
#include "growing/case_lists.h"
#include "growing/node_sums.h"

namespace tree::grow {

/// Up to so many categories all ways to divide them are tried, where no order of them is known that
/// contains the best one.
inline constexpr std::size_t kMaxExhaustiveCategories = 12;

/// Finds the best split of a node by one predictor, on the cases that have a value of it. Of equal
/// splits, the one with the lowest cut point. `Sides`: one of `sides.h`.
///
/// Categories are divided in the best of all ways for two classes and for numbers, by ordered
/// twoing, and wherever the node has at most `kMaxExhaustiveCategories` of them; otherwise they are
/// cut in the order of `PrincipalScores`. Where categories are cut in an order, the least size of a
/// child only chooses among the cuts of that order.
template <class Sides>
class PredictorSearch {
 public:
  /// `minChildSize`: the least size of a child, in units of frequency. All **borrowed**.
  PredictorSearch(TrainingData const& data, CaseLists const& lists, Sides sides,
                  std::int64_t minChildSize, Workers& workers)
      : data_(data),
        lists_(lists),
        sides_(std::move(sides)),
        minChildSize_(std::max<std::int64_t>(1, minChildSize)),
        workers_(workers) {}

  /// The best split; its improvement is 0 where there is none.
  FoundSplit Find(NodeRanges const& node, NodeSums const& sums, std::size_t predictor) {
    GrowingPredictor const& description = data_.GetPredictors()[predictor];
    if (!description.used) return {};
    sides_.SetNode(sums);
    if (!description.IsCoded()) {
      return FindCut(lists_.Sorted(node, predictor), node.places.Size(), sums, predictor);
    }
    FillTable(node.places, predictor);
    return description.IsNominal() ? DivideCategories() : CutTable(description);
  }

 private:
  using Sum = typename Sides::Sum;

  // ---- Sorted predictors ----

  FoundSplit FindCut(std::span<SortedCase const> cases, std::size_t numInNode, NodeSums const& sums,
                     std::size_t predictor) {
    if (cases.size() < 2) return {};
    total_.assign(sides_.GetGroupSize(), 0);
    std::int64_t size = 0;
    if (cases.size() == numInNode) {
      sides_.GroupOf(sums, total_.data());
      size = sums.size;
    } else {
      for (SortedCase const item : cases) {
        sides_.AddTo(total_.data(), item.Place());
        size += FrequencyAt(item.Place());
      }
    }
    sides_.Start(total_.data());
    Scan scan{std::move(sides_), {}, size, 0, 0, false};
    ForSlices(cases.size() - 1, workers_, [&](std::size_t begin, std::size_t end) {
      if (!scan.tooFewOnRight) ScanSlice(cases, begin, end, scan);
    });
    sides_ = std::move(scan.sides);
    FoundSplit split;
    split.improvement = ImprovementOf(scan.best);
    if (split.improvement > 0.0) {
      split.cutPoint = CutBetween(ValueOf(predictor, cases[scan.bestPosition]),
                                  ValueOf(predictor, cases[scan.bestPosition + 1]));
    }
    return split;
  }

  /// How far a search through a sorted list has come.
  struct Scan {
    Sides sides;
    BestScore best;
    std::int64_t sizeOnRight;
    std::int64_t sizeOnLeft;
    std::size_t bestPosition;  // in the list
    bool tooFewOnRight;
  };

  /// Looks at the cuts behind the cases from `begin` to `end` - 1. Most of them lie far below the
  /// best one so far, and so do their neighbours: whole blocks of cases are only added up.
  void ScanSlice(std::span<SortedCase const> cases, std::size_t begin, std::size_t end,
                 Scan& progress) const {
    Scan scan = std::move(progress);  // a copy of its own stays in registers
    std::int64_t const* const frequencies = lists_.GetFrequencies();
    bool const scattered = cases.size() > kPlacesInCache;
    std::size_t const blockSize = scattered ? 64 : cases.size() > 4096 ? 32 : 8;
    std::size_t const last = cases.size() - 1;
    std::size_t position = begin;
    while (position < end && !scan.tooFewOnRight) {
      std::size_t const blockEnd = std::min(position + blockSize, end);
      if (scattered) {
        for (std::size_t ahead = position + blockSize; ahead < blockEnd + blockSize; ++ahead) {
          scan.sides.Prefetch(cases[std::min(ahead, last)].Place());
        }
      }
      if (frequencies == nullptr &&
          scan.sides.StaysBelow(scan.best.GetThreshold(),
                                static_cast<std::int64_t>(blockEnd - position))) {
        auto const size = static_cast<std::int64_t>(blockEnd - position);
        for (; position < blockEnd; ++position) scan.sides.Move(cases[position].Place());
        scan.sizeOnLeft += size;
        scan.sizeOnRight -= size;
      } else {
        for (; position < blockEnd; ++position) ScanCase(cases, position, frequencies, scan);
      }
    }
    progress = std::move(scan);
  }

  void ScanCase(std::span<SortedCase const> cases, std::size_t position,
                std::int64_t const* frequencies, Scan& scan) const {
    std::uint32_t const place = cases[position].Place();
    scan.sides.Move(place);
    std::int64_t const size = frequencies == nullptr ? 1 : frequencies[place];
    scan.sizeOnLeft += size;
    scan.sizeOnRight -= size;
    if (!cases[position + 1].StartsValue() || scan.sizeOnLeft < minChildSize_) return;
    if (scan.sizeOnRight < minChildSize_) {
      scan.tooFewOnRight = true;
    } else if (scan.best.Take(scan.sides)) {
      scan.bestPosition = position;
    }
  }

  // ---- Coded predictors ----

  /// Adds up the cases of each code, and lists the codes that the node has.
  void FillTable(Range places, std::size_t predictor) {
    std::size_t const groupSize = sides_.GetGroupSize();
    std::size_t const numCodes = data_.GetPredictors()[predictor].values.size();
    table_.assign(numCodes * groupSize, 0);
    sizes_.assign(numCodes, 0);
    PlacedCodes const codes = lists_.Codes(predictor);
    ForSlices(places.Size(), workers_, [&](std::size_t begin, std::size_t end) {
      for (std::size_t offset = begin; offset < end; ++offset) {
        auto const place = places.begin + static_cast<std::uint32_t>(offset);
        std::uint16_t const code = codes[place];
        if (code == GrowingPredictor::kMissingCode) continue;
        sides_.AddTo(table_.data() + code * groupSize, place);
        sizes_[code] += FrequencyAt(place);
      }
    });
    present_.clear();
    total_.assign(groupSize, 0);
    size_ = 0;
    for (std::size_t code = 0; code < sizes_.size(); ++code) {
      if (sizes_[code] == 0) continue;
      present_.push_back(static_cast<std::uint16_t>(code));
      for (std::size_t part = 0; part < groupSize; ++part) total_[part] += GroupOf(code)[part];
      size_ += sizes_[code];
    }
  }

  double ValueOf(std::size_t predictor, SortedCase item) const {
    return data_.ValueOf(predictor, lists_.CaseAt(item.Place()));
  }
  std::int64_t FrequencyAt(std::uint32_t place) const {
    return lists_.GetFrequencies() == nullptr ? 1 : lists_.GetFrequencies()[place];
  }

  Sum const* GroupOf(std::size_t code) const {
    return table_.data() + code * sides_.GetGroupSize();
  }

  bool SizesAllow(std::int64_t sizeOnLeft) const {
    return sizeOnLeft >= minChildSize_ && size_ - sizeOnLeft >= minChildSize_;
  }

  double ImprovementOf(BestScore const& best) const {
    return best.Get() > 0.0 ? std::max(0.0, sides_.ImprovementOf(best.Get())) : 0.0;
  }

  /// The best of the divisions that cut the codes in the order of `present_`: how many of them go
  /// left; 0 for none.
  std::pair<std::size_t, double> CutInOrder() {
    sides_.Start(total_.data());
    BestScore best;
    std::size_t numOnLeft = 0;
    std::int64_t sizeOnLeft = 0;
    for (std::size_t place = 0; place + 1 < present_.size(); ++place) {
      sides_.MoveGroup(GroupOf(present_[place]), 1);
      sizeOnLeft += sizes_[present_[place]];
      if (SizesAllow(sizeOnLeft) && best.Take(sides_)) numOnLeft = place + 1;
    }
    return {numOnLeft, ImprovementOf(best)};
  }

  FoundSplit CutTable(GrowingPredictor const& predictor) {
    auto const [numOnLeft, improvement] = CutInOrder();
    if (!(improvement > 0.0)) return {};
    return {improvement,
            CutBetween(predictor.values[present_[numOnLeft - 1]],
                       predictor.values[present_[numOnLeft]]),
            {},
            {}};
  }

  FoundSplit DivideCategories() {
    if (present_.size() < 2) return {};
    if (!sides_.HasKey() && present_.size() <= kMaxExhaustiveCategories) return TryAll();
    FoundSplit best;
    for (std::vector<double> const& keys : OrdersOfCategories()) {
      std::vector<std::uint16_t> const ascending = present_;
      std::stable_sort(present_.begin(), present_.end(),
                       [&](std::uint16_t a, std::uint16_t b) { return keys[a] < keys[b]; });
      auto const [numOnLeft, improvement] = CutInOrder();
      if (improvement > best.improvement) {
        auto const middle = present_.begin() + static_cast<std::ptrdiff_t>(numOnLeft);
        best = {improvement, 0.0, {present_.begin(), middle}, {middle, present_.end()}};
      }
      present_ = ascending;
    }
    std::sort(best.left.begin(), best.left.end());
    std::sort(best.right.begin(), best.right.end());
    return best;
  }

  /// Keys by code: orders of the categories of the node that contain the best division between
  /// them, or are likely to contain a good one. Source of the first: Breiman, Friedman, Olshen and
  /// Stone 1984, theorem 4.5 for two classes, and so for each pair of superclasses that ordered
  /// twoing looks at; proposition 8.16 for numbers.
  std::vector<std::vector<double>> OrdersOfCategories() const {
    std::vector<double> keys(sizes_.size());
    if (sides_.HasKey()) {
      for (std::uint16_t const code : present_) keys[code] = sides_.KeyOf(GroupOf(code));
      return {keys};
    }
    std::vector<double> const factors = sides_.GetFactors();
    std::vector<double> weights;  // [category][class]
    for (std::uint16_t const code : present_) {
      for (std::size_t j = 0; j < factors.size(); ++j) {
        weights.push_back(factors[j] * static_cast<double>(GroupOf(code)[j]));
      }
    }
    std::vector<std::vector<double>> orders;
    if (sides_.HasOrderedClasses()) {
      orders = SuperclassShares(weights, factors.size());
    } else {
      orders.push_back(PrincipalScores(weights, factors.size()));
    }
    for (std::vector<double>& scores : orders) {
      for (std::size_t place = 0; place < present_.size(); ++place) {
        keys[present_[place]] = scores[place];
      }
      scores = keys;
    }
    return orders;
  }

  /// The best of all divisions. Goes through them in the order of a Gray code, so that from one to
  /// the next a single category changes sides; the last category stays on the right, for every
  /// division has its mirror. Costs 2^(categories - 1).
  FoundSplit TryAll() {
    sides_.Start(total_.data());
    BestScore best;
    std::uint64_t onLeft = 0;  // bit i: category i of `present_`
    std::uint64_t bestOnLeft = 0;
    std::int64_t sizeOnLeft = 0;
    std::uint64_t const count = std::uint64_t{1} << (present_.size() - 1);
    for (std::uint64_t number = 1; number < count; ++number) {
      auto const category = static_cast<std::size_t>(std::countr_zero(number));
      onLeft ^= std::uint64_t{1} << category;
      int const sign = ((onLeft >> category) & 1U) != 0 ? 1 : -1;
      sides_.MoveGroup(GroupOf(present_[category]), sign);
      sizeOnLeft += sign * sizes_[present_[category]];
      if (SizesAllow(sizeOnLeft) && best.Take(sides_)) bestOnLeft = onLeft;
    }
    FoundSplit split;
    split.improvement = ImprovementOf(best);
    if (!(split.improvement > 0.0)) return split;
    for (std::size_t place = 0; place < present_.size(); ++place) {
      ((bestOnLeft >> place) & 1U ? split.left : split.right).push_back(present_[place]);
    }
    return split;
  }

  TrainingData const& data_;
  CaseLists const& lists_;
  Sides sides_;
  std::int64_t minChildSize_;
  Workers& workers_;
  std::vector<Sum> total_;  // of the cases with a value
  // Of the present node and coded predictor:
  std::vector<Sum> table_;              // a group per code
  std::vector<std::int64_t> sizes_;     // by code
  std::vector<std::uint16_t> present_;  // codes that the node has
  std::int64_t size_ = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_PREDICTOR_SEARCH_H_
