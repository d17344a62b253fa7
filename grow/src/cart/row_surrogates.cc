#include "cart/row_surrogates.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <tuple>

#include "growing/node_rows.h"

namespace tree::grow {

template <class Weight>
RowSurrogates<Weight>::RowSurrogates(TrainingData const& data, CaseLists const& lists,
                                     ChildOfPlace const& childOf, std::size_t maxNumSurrogates,
                                     Workers& workers)
    : rows_(data.GetCaseRows()),
      lists_(lists),
      childOf_(childOf),
      maxNumSurrogates_(maxNumSurrogates),
      workers_(workers),
      numThreads_(static_cast<std::size_t>(workers.GetNumThreads())),
      sortings_([&workers] { return std::make_unique<Sorting>(workers); }) {}

template <class Weight>
void RowSurrogates<Weight>::Find(GrowingNode const& node, Placed const& placed, std::size_t primary,
                                 Crew const& crew, std::span<FoundSurrogate> found) {
  parts_.With([&](std::vector<Part>& parts) {
    std::size_t const width = rows_.GetWidth();
    parts.resize(crew.IsWhole() ? std::min(numThreads_, width) : 1);
    for (std::size_t part = 0; part < parts.size(); ++part) {
      parts[part].begin = part * width / parts.size();
      parts[part].end = (part + 1) * width / parts.size();
    }
    crew.Run(parts.size(), [&](std::size_t part) { Count(node, placed, parts[part]); });
    // Predictors that cannot be among the best ones are looked at no more.
    std::vector<std::int64_t> best;
    for (Part const& part : parts) {
      for (std::size_t position = part.begin; position < part.end; ++position) {
        if (rows_.GetPredictors()[position] == primary) continue;
        best.push_back(part.best[position - part.begin]);
      }
    }
    std::sort(best.begin(), best.end(), std::greater<>());
    std::int64_t wanted = std::max(placed[0], placed[1]) + 1;
    if (best.size() > maxNumSurrogates_) wanted = std::max(wanted, best[maxNumSurrogates_ - 1]);
    crew.Run(parts.size(), [&](std::size_t part) {
      FindCuts(node, placed, primary, wanted, parts[part], found);
    });
  });
}

template <class Weight>
void RowSurrogates<Weight>::Count(GrowingNode const& node, Placed const& placed, Part& part) const {
  Range const places = node.ranges.places;
  CutHistograms<Weight>& histograms = part.histograms;
  std::size_t const width = part.end - part.begin;
  histograms.Begin(rows_.GetScales().subspan(part.begin, width), places.Size(), rows_.HasGaps());
  for (std::size_t offset = 0; offset < width; ++offset) {
    double least = 0.0;
    double greatest = 0.0;
    node.node->GetPredictorRange(static_cast<int>(rows_.GetPredictors()[part.begin + offset]),
                                 &least, &greatest);
    if (std::isinf(least) || std::isinf(greatest)) {
      std::tie(least, greatest) = FiniteRangeOf(places, part.begin + offset);
    }
    histograms.SetRange(offset, least, greatest);
  }
  ForRows(rows_, lists_, places, lists_.GetNumPlaces(),
          [&](std::uint32_t place, double const* row) {
            std::uint8_t const child = childOf_[place];
            if (child == kNoChild) return;
            histograms.Count(row + part.begin, child, static_cast<Weight>(lists_.WeightAt(place)));
          });
  part.best.resize(width);
  for (std::size_t offset = 0; offset < width; ++offset) {
    part.best[offset] = histograms.BestAtBorder(offset, placed);
  }
}

template <class Weight>
std::pair<double, double> RowSurrogates<Weight>::FiniteRangeOf(Range places,
                                                               std::size_t position) const {
  double least = HUGE_VAL;
  double greatest = -HUGE_VAL;
  ForValues(rows_, position, lists_, places, [&](std::uint32_t, double value) {
    if (!std::isfinite(value)) return;
    least = std::min(least, value);
    greatest = std::max(greatest, value);
  });
  // Where no value is finite, any range parts the infinite ones as well as another.
  if (!(least <= greatest)) return {0.0, 0.0};
  return {least, greatest};
}

template <class Weight>
void RowSurrogates<Weight>::FindCuts(GrowingNode const& node, Placed const& placed,
                                     std::size_t primary, std::int64_t wanted, Part& part,
                                     std::span<FoundSurrogate> found) {
  sortings_.With([&](Sorting& sorting) {
    for (std::size_t offset = 0; offset < part.best.size(); ++offset) {
      std::size_t const position = part.begin + offset;
      std::size_t const predictor = rows_.GetPredictors()[position];
      if (predictor == primary) continue;
      if (!part.histograms.Open(offset, std::max(wanted, part.best[offset]))) continue;
      Collect(node.ranges.places, position, part, sorting.items);
      Sort(sorting);
      auto const cut =
          part.histograms.Find(sorting.items, sorting.order, [this] { workers_.Poll(); });
      if (!cut.has_value()) continue;
      FoundSurrogate& surrogate = found[predictor];
      surrogate.association = SurrogateSearch::AssociationOf(cut->agreement, placed);
      surrogate.cutPoint = CutBetween(cut->lower, cut->upper);
      surrogate.reversed = cut->reversed;
    }
  });
}

template <class Weight>
void RowSurrogates<Weight>::Collect(Range places, std::size_t position, Part const& part,
                                    std::vector<Item>& items) const {
  items.clear();
  items.reserve(places.Size());
  ForValues(rows_, position, lists_, places, [&](std::uint32_t place, double value) {
    if (!part.histograms.IsOpen(value) || childOf_[place] == kNoChild) return;
    std::int64_t const weight = lists_.WeightAt(place);
    items.push_back({value, childOf_[place] == 0 ? weight : -weight});
  });
}

template <class Weight>
void RowSurrogates<Weight>::Sort(Sorting& sorting) const {
  constexpr std::size_t kFewItems = 2048;
  std::vector<Item> const& items = sorting.items;
  std::vector<std::uint32_t>& order = sorting.order;
  order.resize(items.size());
  std::iota(order.begin(), order.end(), 0U);
  if (items.size() <= kFewItems) {
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return items[a].value < items[b].value; });
    return;
  }
  workers_.Poll();
  sorting.values.resize(items.size());
  ForSlices(items.size(), workers_, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) {
      sorting.values[index] = items[index].value;
    }
  });
  std::vector<SortedCase> const sorted = sorting.sorter.Sort(sorting.values.data(), order);
  ForSlices(sorted.size(), workers_, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) order[index] = sorted[index].Place();
  });
}

template class RowSurrogates<std::uint32_t>;
template class RowSurrogates<std::int64_t>;

}  // namespace tree::grow
