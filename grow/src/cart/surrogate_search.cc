#include "cart/surrogate_search.h"

#include <algorithm>
#include <utility>

namespace tree::grow {
namespace {

/// Follows a cut point from below: the weights on its lower side, by child of the primary split.
class MovingCut {
 public:
  /// `both`: of the cases with a value; `majority`: what a surrogate has to be better than.
  MovingCut(SurrogateSearch::Placed const& both, std::int64_t majority)
      : both_(both), best_(majority) {}

  void Move(std::size_t child, std::int64_t weight) { lower_[child] += weight; }
  /// Whether the cut as it stands agrees better than all before it.
  bool TakeIfBetter() {
    std::int64_t const straight = lower_[0] + both_[1] - lower_[1];
    std::int64_t const turned = lower_[1] + both_[0] - lower_[0];
    if (std::max(straight, turned) <= best_) return false;
    best_ = std::max(straight, turned);
    reversed_ = turned > straight;
    return true;
  }
  std::int64_t GetAgreement() const { return best_; }
  bool IsReversed() const { return reversed_; }

 private:
  SurrogateSearch::Placed both_;
  SurrogateSearch::Placed lower_{};
  std::int64_t best_;
  bool reversed_ = false;
};

}  // namespace

double SurrogateSearch::AssociationOf(std::int64_t agreement, Placed const& placed) {
  std::int64_t const majority = std::max(placed[0], placed[1]);
  std::int64_t const minority = std::min(placed[0], placed[1]);
  if (agreement <= majority || minority == 0) return 0.0;
  return static_cast<double>(agreement - majority) / static_cast<double>(minority);
}

FoundSurrogate SurrogateSearch::Find(NodeRanges const& node, Placed const& placed,
                                     std::size_t predictor) {
  GrowingPredictor const& description = data_.GetPredictors()[predictor];
  if (!description.used) return {};
  if (!description.IsCoded()) {
    return FindCut(lists_.Sorted(node, predictor), node.places.Size(), predictor, placed);
  }
  FillTable(node.places, predictor);
  return description.IsNominal() ? AssignCategories(placed) : CutTable(description, placed);
}

FoundSurrogate SurrogateSearch::FindCut(std::span<SortedCase const> cases, std::size_t numInNode,
                                        std::size_t predictor, Placed const& placed) {
  Placed both = placed;
  if (cases.size() < numInNode) {
    both = {};
    for (SortedCase const item : cases) {
      std::uint8_t const child = childOf_[item.Place()];
      if (child != kNoChild) both[child] += lists_.WeightAt(item.Place());
    }
  }
  // Cases that the primary split does not place have no say in where the cut point lies.
  MovingCut cut(both, std::max(placed[0], placed[1]));
  std::uint32_t last = 0;  // the last case placed
  bool any = false;
  bool startsValue = false;
  std::pair<std::uint32_t, std::uint32_t> around{};
  ForSlices(cases.size(), workers_, [&](std::size_t begin, std::size_t end) {
    for (std::size_t place = begin; place < end; ++place) {
      SortedCase const item = cases[place];
      startsValue = startsValue || item.StartsValue();
      std::uint8_t const child = childOf_[item.Place()];
      if (child == kNoChild) continue;
      if (startsValue && any && cut.TakeIfBetter()) around = {last, item.Place()};
      cut.Move(child, lists_.WeightAt(item.Place()));
      startsValue = false;
      any = true;
      last = item.Place();
    }
  });
  FoundSurrogate found;
  found.association = AssociationOf(cut.GetAgreement(), placed);
  if (found.association > 0.0) {
    found.cutPoint = CutBetween(data_.ValueOf(predictor, lists_.CaseAt(around.first)),
                                data_.ValueOf(predictor, lists_.CaseAt(around.second)));
    found.reversed = cut.IsReversed();
  }
  return found;
}

void SurrogateSearch::FillTable(Range places, std::size_t predictor) {
  table_.assign(data_.GetPredictors()[predictor].values.size(), {});
  PlacedCodes const codes = lists_.Codes(predictor);
  ForSlices(places.Size(), workers_, [&](std::size_t begin, std::size_t end) {
    for (std::size_t offset = begin; offset < end; ++offset) {
      auto const place = places.begin + static_cast<std::uint32_t>(offset);
      std::uint16_t const code = codes[place];
      if (code == GrowingPredictor::kMissingCode || childOf_[place] == kNoChild) continue;
      table_[code][childOf_[place]] += lists_.WeightAt(place);
    }
  });
}

FoundSurrogate SurrogateSearch::CutTable(GrowingPredictor const& predictor,
                                         Placed const& placed) const {
  Placed both{};
  for (Placed const& entry : table_) {
    both[0] += entry[0];
    both[1] += entry[1];
  }
  MovingCut cut(both, std::max(placed[0], placed[1]));
  constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  std::size_t last = kNone;  // the last code with cases
  std::pair<std::size_t, std::size_t> around{};
  for (std::size_t code = 0; code < table_.size(); ++code) {
    if (table_[code] == Placed{}) continue;
    if (last != kNone && cut.TakeIfBetter()) around = {last, code};
    for (std::size_t child = 0; child < 2; ++child) cut.Move(child, table_[code][child]);
    last = code;
  }
  FoundSurrogate found;
  found.association = AssociationOf(cut.GetAgreement(), placed);
  if (found.association > 0.0) {
    found.cutPoint = CutBetween(predictor.values[around.first], predictor.values[around.second]);
    found.reversed = cut.IsReversed();
  }
  return found;
}

FoundSurrogate SurrogateSearch::AssignCategories(Placed const& placed) const {
  Placed both{};
  for (Placed const& entry : table_) {
    both[0] += entry[0];
    both[1] += entry[1];
  }
  FoundSurrogate found;
  found.childOfCode.assign(table_.size(), kNoChild);
  std::int64_t agreement = 0;
  for (std::size_t code = 0; code < table_.size(); ++code) {
    Placed const& entry = table_[code];
    if (entry == Placed{}) continue;
    // A category that is torn goes with the majority; the left one, if there is none.
    bool const left = entry[0] != entry[1] ? entry[0] > entry[1] : both[0] >= both[1];
    found.childOfCode[code] = left ? 0 : 1;
    agreement += std::max(entry[0], entry[1]);
  }
  found.association = AssociationOf(agreement, placed);
  return found;
}

}  // namespace tree::grow
