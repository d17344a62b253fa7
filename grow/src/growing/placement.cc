#include "growing/placement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "growing/node_rows.h"

namespace tree::grow {
namespace {

std::uint8_t ChildFrom(int position) {
  return position < 0 || position >= kMaxChildren ? kNoChild : static_cast<std::uint8_t>(position);
}

/// Visits the places of a node, and polls on the way.
template <class Visit>
void ForPlaces(CaseLists const& lists, NodeRanges const& node, Visit const& visit) {
  ForEachPolling(node.places.begin, node.places.end, lists.GetWorkers(), visit);
}

void PlaceCoded(GrowingPredictor const& predictor, CaseLists const& lists, NodeRanges const& node,
                SplitRuleImp const& rule, ChildOfPlace& childOf) {
  PlacedCodes const codes = lists.Codes(static_cast<std::size_t>(rule.GetPredictorIndex()));
  std::vector<std::uint8_t> childOfCode;
  for (double const value : predictor.values)
    childOfCode.push_back(ChildFrom(rule.Classify(value)));
  std::uint8_t const childOfMissing =
      ChildFrom(rule.Classify(predictor.column->description.missingValue));
  ForPlaces(lists, node, [&](std::uint32_t place) {
    std::uint16_t const code = codes[place];
    childOf[place] = code == GrowingPredictor::kMissingCode ? childOfMissing : childOfCode[code];
  });
}

/// A rule may cut through an interval.
void PlaceByValue(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                  SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const position = static_cast<std::size_t>(rule.GetPredictorIndex());
  ForPlaces(lists, node, [&](std::uint32_t place) {
    childOf[place] = ChildFrom(rule.Classify(data.ValueOf(position, lists.CaseAt(place))));
  });
}

/// By the values in the rows of the cases.
void PlaceRows(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
               SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const predictor = static_cast<std::size_t>(rule.GetPredictorIndex());
  CaseRows const& rows = data.GetCaseRows();
  auto const inRows = rows.GetPredictors();
  auto const position = static_cast<std::size_t>(
      std::lower_bound(inRows.begin(), inRows.end(), predictor) - inRows.begin());
  double const missing = data.GetPredictors()[predictor].column->description.missingValue;
  std::uint8_t const childOfMissing = ChildFrom(rule.Classify(missing));
  ForValues(rows, position, lists, node.places, [&](std::uint32_t place, double value) {
    childOf[place] = std::isnan(value) ? childOfMissing : ChildFrom(rule.Classify(value));
  });
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
    auto const numFirst = static_cast<std::uint32_t>(middle - cases.begin());
    auto const numCases = static_cast<std::uint32_t>(cases.size());
    ForEachPolling(0, numFirst, lists.GetWorkers(),
                   [&](std::uint32_t place) { childOf[cases[place].Place()] = first; });
    ForEachPolling(numFirst, numCases, lists.GetWorkers(),
                   [&](std::uint32_t place) { childOf[cases[place].Place()] = last; });
    return;
  }
  std::uint8_t child = kNoChild;
  ForEachPolling(0, static_cast<std::uint32_t>(cases.size()), lists.GetWorkers(),
                 [&](std::uint32_t place) {
                   if (cases[place].StartsValue()) child = childAt(cases[place]);
                   childOf[cases[place].Place()] = child;
                 });
}

}  // namespace

void PlaceByRule(TrainingData const& data, CaseLists const& lists, NodeRanges const& node,
                 SplitRuleImp const& rule, ChildOfPlace& childOf) {
  auto const position = static_cast<std::size_t>(rule.GetPredictorIndex());
  GrowingPredictor const& predictor = data.GetPredictors()[position];
  if (predictor.hasIntervals) {
    PlaceByValue(data, lists, node, rule, childOf);
  } else if (predictor.IsCoded()) {
    PlaceCoded(predictor, lists, node, rule, childOf);
  } else if (predictor.isInRows) {
    PlaceRows(data, lists, node, rule, childOf);
  } else {
    PlaceSorted(data, lists, node, rule, childOf);
  }
}

void SetDumbRule(CaseLists const& lists, NodeRanges const& node, ChildOfPlace const& childOf,
                 SplitRuleImp& rule) {
  std::array<std::int64_t, kMaxChildren> weights{};
  std::int64_t sum = 0;
  ForPlaces(lists, node, [&](std::uint32_t place) {
    if (childOf[place] == kNoChild) return;
    std::int64_t const weight = lists.WeightAt(place);
    weights[childOf[place]] += weight;
    sum += weight;
  });
  if (sum == 0) return;
  auto const largest = std::max_element(weights.begin(), weights.end());
  rule.SetDumbRule(static_cast<int>(largest - weights.begin()),
                   static_cast<double>(*largest) / static_cast<double>(sum));
}

void PlaceRest(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
               NodeImp const& node, ChildOfPlace& childOf) {
  SplitRuleImp const& primary = *node.GetCompetitorImp(0);
  ForPlaces(lists, ranges, [&](std::uint32_t place) {
    if (childOf[place] != kNoChild) return;
    int child = -1;
    for (int position = 0; position < node.GetNumSurrogates() && child < 0; ++position) {
      SplitRuleImp const& surrogate = *node.GetSurrogateImp(static_cast<unsigned int>(position));
      auto const predictor = static_cast<std::size_t>(surrogate.GetPredictorIndex());
      child = surrogate.Classify(data.ValueOf(predictor, lists.CaseAt(place)));
    }
    childOf[place] = ChildFrom(child >= 0 ? child : primary.GetDumbChildPos());
  });
}

}  // namespace tree::grow
