#ifndef TREE_GROW_SRC_CART_NOMINAL_SEARCH_H_
#define TREE_GROW_SRC_CART_NOMINAL_SEARCH_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "cart/ordered_search.h"
#include "growing/node_lists.h"

namespace tree::grow {

/// A split of a node by categories of a nominal predictor.
struct NominalSplit {
  std::vector<std::uint32_t> left;   ///< codes that go left, ascending
  std::vector<std::uint32_t> right;  ///< the other codes that the node has, ascending
  double improvement = 0.0;          ///< on the scale of the sides that it was found with
};

/// Up to so many categories all ways to divide them are tried, where no order of them is known that
/// contains the best one.
inline constexpr std::size_t kMaxExhaustiveCategories = 12;

/// Divides the categories of one node.
template <class Sides>
class NominalSearch {
 public:
  /// `cases`: of the node, those with a value, in any order.
  NominalSearch(std::span<CodedCase const> cases, ChildLimits const& limits, Sides& sides)
      : limits_(limits), sides_(sides) {
    std::vector<CodedCase> sorted(cases.begin(), cases.end());
    std::sort(sorted.begin(), sorted.end(), [](CodedCase const& a, CodedCase const& b) {
      return a.code != b.code ? a.code < b.code : a.index < b.index;
    });
    for (CodedCase const& item : sorted) {
      if (categories_.empty() || categories_.back().code != item.code) {
        categories_.push_back({item.code, sides.EmptyGroup(), 0.0, true});
      }
      Category& category = categories_.back();
      sides.AddTo(category.group, item.index);
      category.size += limits.FrequencyOf(item.index);
    }
    for (Category const& category : categories_) {
      sides_.AddToRight(category.group);
      sizeOnRight_ += category.size;
    }
  }

  ~NominalSearch() { sides_.Clear(); }
  NominalSearch(NominalSearch const&) = delete;
  NominalSearch& operator=(NominalSearch const&) = delete;

  /// Number of categories that the node has.
  std::size_t CountCategories() const { return categories_.size(); }

  /// The best division among those that cut the categories in the order of their keys. Source:
  /// Breiman, Friedman, Olshen and Stone 1984, theorem 4.5 for two classes and proposition 8.16 for
  /// numbers: the best of all is among them.
  std::optional<NominalSplit> CutInOrderOfKeys() {
    std::stable_sort(categories_.begin(), categories_.end(),
                     [this](Category const& a, Category const& b) {
                       return sides_.KeyOf(a.group) < sides_.KeyOf(b.group);
                     });
    for (std::size_t place = 0; place + 1 < categories_.size(); ++place) {
      Move(categories_[place]);
      TakeIfBetter();
    }
    return best_;
  }

  /// The best of all divisions. Goes through them in the order of a Gray code, so that from one to
  /// the next a single category changes sides; the last category stays on the right, for every
  /// division has its mirror. Costs 2^(categories - 1).
  std::optional<NominalSplit> TryAll() {
    if (categories_.size() < 2) return best_;
    std::uint64_t const count = std::uint64_t{1} << (categories_.size() - 1);
    for (std::uint64_t number = 1; number < count; ++number) {
      Move(categories_[static_cast<std::size_t>(std::countr_zero(number))]);
      TakeIfBetter();
    }
    return best_;
  }

 private:
  struct Category {
    std::uint32_t code;
    typename Sides::Group group;
    double size;
    bool onRight;
  };

  void Move(Category& category) {
    double const size = category.onRight ? category.size : -category.size;
    if (category.onRight) {
      sides_.MoveToLeft(category.group);
    } else {
      sides_.MoveToRight(category.group);
    }
    sizeOnLeft_ += size;
    sizeOnRight_ -= size;
    category.onRight = !category.onRight;
  }

  void TakeIfBetter() {
    if (sizeOnLeft_ < limits_.minSize || sizeOnRight_ < limits_.minSize) return;
    double const improvement = sides_.Improvement();
    if (!(improvement > (best_.has_value() ? best_->improvement : 0.0))) return;
    best_ = NominalSplit{{}, {}, improvement};
    for (Category const& category : categories_) {
      (category.onRight ? best_->right : best_->left).push_back(category.code);
    }
    std::sort(best_->left.begin(), best_->left.end());
    std::sort(best_->right.begin(), best_->right.end());
  }

  ChildLimits const& limits_;
  Sides& sides_;
  std::vector<Category> categories_;
  double sizeOnLeft_ = 0.0;
  double sizeOnRight_ = 0.0;
  std::optional<NominalSplit> best_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_NOMINAL_SEARCH_H_
