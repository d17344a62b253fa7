#include "chaid/class_groups.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <numeric>

#include "cart/category_order.h"

namespace tree::grow {
namespace {

/// The scores in a greater unit, a power of two, in which sums of them stay numbers.
std::vector<double> BelowOne(std::vector<double> scores) {
  int exponent = 0;
  for (double const score : scores) {
    int ofScore = 0;
    std::frexp(score, &ofScore);
    exponent = std::max(exponent, ofScore);
  }
  for (double& score : scores) score = std::ldexp(score, -exponent);
  return scores;
}

}  // namespace

ClassGroups::ClassGroups(ClassTestSettings const& settings, std::size_t numClasses, bool weighted,
                         double sizeUnit)
    : test_(settings, numClasses, sizeUnit),
      numClasses_(numClasses),
      rowSize_(weighted ? 2 * numClasses : numClasses),
      sizeUnit_(sizeUnit) {}

bool ClassGroups::Append(Entry const* row) {
  if (std::all_of(row, row + numClasses_, [](Entry size) { return size == 0; })) return false;
  std::transform(row, row + rowSize_, std::back_inserter(categories_),
                 [](Entry entry) { return static_cast<double>(entry); });
  return true;
}

void ClassGroups::MakeGroups() {
  groups_ = categories_;
  groups_.resize(categories_.size() + 2 * rowSize_, 0.0);
}

double ClassGroups::SizeOf(std::size_t group) const {
  double const* const row = Group(group);
  return sizeUnit_ * std::accumulate(row, row + numClasses_, 0.0);
}

void ClassGroups::ClearGroup(std::size_t group) { std::fill_n(Group(group), rowSize_, 0.0); }

void ClassGroups::AddGroup(std::size_t group, std::size_t other) {
  std::transform(Group(group), Group(group) + rowSize_, Group(other), Group(group), std::plus<>());
}

void ClassGroups::AddCategory(std::size_t group, std::size_t category) {
  std::transform(Group(group), Group(group) + rowSize_, Category(category), Group(group),
                 std::plus<>());
}

void ClassGroups::RemoveCategory(std::size_t group, std::size_t category) {
  std::transform(Group(group), Group(group) + rowSize_, Category(category), Group(group),
                 std::minus<>());
}

ClassRow ClassGroups::RowOf(std::size_t group) const {
  double const* const row = Group(group);
  return {row, rowSize_ > numClasses_ ? row + numClasses_ : nullptr};
}

TestStatistic ClassGroups::TestPair(std::size_t first, std::size_t second) {
  return test_.TestPair(RowOf(first), RowOf(second));
}

TestStatistic ClassGroups::Test(std::span<std::size_t const> groups) {
  rows_.clear();
  for (std::size_t const group : groups) rows_.push_back(RowOf(group));
  return test_.Test(rows_);
}

void ClassGroups::SortForCuts(std::vector<std::size_t>& categories) const {
  std::vector<double> scores(GetNumCategories());
  if (test_.GetSettings().kind == ClassTestKind::kRowEffects || numClasses_ == 2) {
    // By the mean score; of two classes without an order, by the share of the second.
    std::vector<double> const classScores = test_.GetSettings().kind == ClassTestKind::kRowEffects
                                                ? BelowOne(test_.GetSettings().scores)
                                                : std::vector<double>{0.0, 1.0};
    for (std::size_t const category : categories) {
      double const* const row = Category(category);
      scores[category] = std::inner_product(row, row + numClasses_, classScores.begin(), 0.0) /
                         std::accumulate(row, row + numClasses_, 0.0);
    }
  } else {
    std::vector<double> sizes;
    for (std::size_t const category : categories) {
      sizes.insert(sizes.end(), Category(category), Category(category) + numClasses_);
    }
    std::vector<double> const principal = PrincipalScores(sizes, numClasses_);
    for (std::size_t index = 0; index < categories.size(); ++index) {
      scores[categories[index]] = principal[index];
    }
  }
  std::stable_sort(categories.begin(), categories.end(),
                   [&](std::size_t a, std::size_t b) { return scores[a] < scores[b]; });
}

bool ClassGroups::AreCutsBest() const {
  // Of two classes, chi-square is convex in the shares (Breiman et al. 1984, theorem 4.5). Weights
  // and the fit of row effects disturb that.
  return numClasses_ == 2 && rowSize_ == numClasses_ &&
         test_.GetSettings().kind != ClassTestKind::kRowEffects;
}

}  // namespace tree::grow
