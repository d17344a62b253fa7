#include "growing/placement.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace tree::grow {
namespace {

std::uint8_t ChildFrom(int position) {
  return position < 0 || position >= kMaxChildren ? kNoChild : static_cast<std::uint8_t>(position);
}

void PlaceCoded(GrowingPredictor const& predictor, PlacedCodes codes, NodeRanges const& node,
                SplitRuleImp const& rule, ChildOfPlace& childOf) {
  std::vector<std::uint8_t> childOfCode;
  for (double const value : predictor.values)
    childOfCode.push_back(ChildFrom(rule.Classify(value)));
  std::uint8_t const childOfMissing =
      ChildFrom(rule.Classify(predictor.column->description.missingValue));
  for (std::uint32_t place = node.places.begin; place < node.places.end; ++place) {
    std::uint16_t const code = codes[place];
    childOf[place] = code == GrowingPredictor::kMissingCode ? childOfMissing : childOfCode[code];
  }
}

/// A rule may cut through an interval.
void PlaceByValue(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                  SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const position = static_cast<std::size_t>(rule.GetPredictorIndex());
  for (std::uint32_t place = node.places.begin; place < node.places.end; ++place) {
    childOf[place] = ChildFrom(rule.Classify(data.ValueOf(position, lists.CaseAt(place))));
  }
}

void PlaceSorted(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                 SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const position = static_cast<std::size_t>(rule.GetPredictorIndex());
  std::span<SortedCase const> const cases = lists.Sorted(node, position);
  if (cases.size() < node.places.Size()) {
    std::uint8_t const childOfMissing =
        ChildFrom(rule.Classify(data.GetPredictors()[position].column->description.missingValue));
    std::fill(childOf.begin() + node.places.begin, childOf.begin() + node.places.end,
              childOfMissing);
  }
  auto const valueOf = [&](SortedCase item) {
    return data.ValueOf(position, lists.CaseAt(item.Place()));
  };
  auto const childAt = [&](SortedCase item) { return ChildFrom(rule.Classify(valueOf(item))); };
  // A rule with one cut point is asked only as often as it takes to find where the list changes
  // sides; any other one, once for each value.
  auto const* const ordered = dynamic_cast<OSplitRule const*>(&rule);
  if (ordered != nullptr && ordered->IsValidBinary() && !cases.empty() &&
      ordered->GetMissingValue() ==
          data.GetPredictors()[position].column->description.missingValue) {
    std::uint8_t const first = childAt(cases.front());
    std::uint8_t const last = childAt(cases.back());
    auto const middle = std::partition_point(cases.begin(), cases.end(), [&](SortedCase item) {
      return valueOf(item) <= ordered->GetCutPoint();
    });
    for (auto item = cases.begin(); item != middle; ++item) childOf[item->Place()] = first;
    for (auto item = middle; item != cases.end(); ++item) childOf[item->Place()] = last;
    return;
  }
  std::uint8_t child = kNoChild;
  for (SortedCase const item : cases) {
    if (item.StartsValue()) child = childAt(item);
    childOf[item.Place()] = child;
  }
}

}  // namespace

void PlaceByRule(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                 SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const position = static_cast<std::size_t>(rule.GetPredictorIndex());
  GrowingPredictor const& predictor = data.GetPredictors()[position];
  if (predictor.hasIntervals) {
    PlaceByValue(data, lists, node, rule, childOf);
  } else if (predictor.IsCoded()) {
    PlaceCoded(predictor, lists.Codes(position), node, rule, childOf);
  } else {
    PlaceSorted(data, lists, node, rule, childOf);
  }
}

void SetDumbRule(CaseLists const& lists, NodeRanges const& node, ChildOfPlace const& childOf,
                 SplitRuleImp& rule) {
  std::array<std::int64_t, kMaxChildren> weights{};
  std::int64_t sum = 0;
  for (std::uint32_t place = node.places.begin; place < node.places.end; ++place) {
    if (childOf[place] == kNoChild) continue;
    std::int64_t const weight = lists.WeightAt(place);
    weights[childOf[place]] += weight;
    sum += weight;
  }
  if (sum == 0) return;
  auto const largest = std::max_element(weights.begin(), weights.end());
  rule.SetDumbRule(static_cast<int>(largest - weights.begin()),
                   static_cast<double>(*largest) / static_cast<double>(sum));
}

void PlaceRest(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
               NodeImp const& node, ChildOfPlace& childOf) {
  SplitRuleImp const& primary = *node.GetCompetitorImp(0);
  for (std::uint32_t place = ranges.places.begin; place < ranges.places.end; ++place) {
    if (childOf[place] != kNoChild) continue;
    int child = -1;
    for (int position = 0; position < node.GetNumSurrogates() && child < 0; ++position) {
      SplitRuleImp const& surrogate = *node.GetSurrogateImp(static_cast<unsigned int>(position));
      auto const predictor = static_cast<std::size_t>(surrogate.GetPredictorIndex());
      child = surrogate.Classify(data.ValueOf(predictor, lists.CaseAt(place)));
    }
    childOf[place] = ChildFrom(child >= 0 ? child : primary.GetDumbChildPos());
  }
}

}  // namespace tree::grow
