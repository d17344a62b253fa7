#ifndef TREE_GROW_SRC_GROWING_NODE_ROWS_H_
#define TREE_GROW_SRC_GROWING_NODE_ROWS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "growing/case_lists.h"
#include "growing/case_rows.h"

namespace tree::grow {

/// So many values are gone through in a few milliseconds.
inline constexpr std::size_t kValuesPerSlice = std::size_t{1} << 20;

/// As many cases as one thread goes through at a time, with so many predictors.
inline std::size_t CasesPerSlice(std::size_t numPredictors) {
  return kValuesPerSlice / std::max<std::size_t>(1, numPredictors);
}

/// Visits the cases at some places, which lie scattered, with their place and their values; polls.
/// `stillEnd`: the end of the places at which no other thread moves cases: those behind the node's
/// are called for, too, since the next node is there.
template <class Visit>
void ForRows(CaseRows const& rows, CaseLists const& lists, Range places, std::size_t stillEnd,
             Visit const& visit) {
  std::size_t const distance = rows.GetPrefetchDistance();
  std::size_t const last = stillEnd - 1;
  std::size_t untilPoll = kValuesPerSlice;
  for (std::uint32_t place = places.begin; place < places.end; ++place) {
    std::size_t const ahead = std::min(place + distance, last);
    rows.Prefetch(lists.CaseAt(static_cast<std::uint32_t>(ahead)));
    visit(place, rows.Of(lists.CaseAt(place)));
    if (untilPoll > rows.GetWidth()) {
      untilPoll -= rows.GetWidth();
    } else {
      lists.GetWorkers().Poll();
      untilPoll = kValuesPerSlice;
    }
  }
}

/// The same with the value of one predictor only, while no thread moves cases. `position`: of it in
/// a row.
template <class Visit>
void ForValues(CaseRows const& rows, std::size_t position, CaseLists const& lists, Range places,
               Visit const& visit) {
  constexpr std::size_t kDistance = 24;
  std::size_t const last = lists.GetNumPlaces() - 1;
  ForEachPolling(places.begin, places.end, lists.GetWorkers(), [&](std::uint32_t place) {
    std::size_t const ahead = std::min(place + kDistance, last);
    __builtin_prefetch(rows.Of(lists.CaseAt(static_cast<std::uint32_t>(ahead))) + position);
    visit(place, rows.Of(lists.CaseAt(place))[position]);
  });
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_NODE_ROWS_H_
