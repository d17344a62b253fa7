#ifndef TREE_GROW_SRC_CART_ROW_SURROGATES_H_
#define TREE_GROW_SRC_CART_ROW_SURROGATES_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "cart/cut_histograms.h"
#include "cart/surrogate_search.h"
#include "growing/case_rows.h"
#include "growing/crew.h"
#include "growing/sorted_cases.h"
#include "growing/split_method.h"
#include "growing/tool_box.h"

namespace tree::grow {

/// Finds surrogates by the predictors in the rows of the data, as `SurrogateSearch` does by the
/// others, with all predictors of a node at once. `Weight`: holds the sums of weights.
template <class Weight>
class RowSurrogates {
 public:
  using Placed = SurrogateSearch::Placed;

  /// `childOf`: as for `SurrogateSearch`; `maxNumSurrogates`: of a node. References are
  /// **borrowed**.
  RowSurrogates(TrainingData const& data, CaseLists const& lists, ChildOfPlace const& childOf,
                std::size_t maxNumSurrogates, Workers& workers);

  /// Finds the best surrogates of a node that has the ranges of the predictors in rows: of each of
  /// these predictors but `primary` the best one, if it can be among `maxNumSurrogates` of the
  /// node. `found`: by predictor; that of others stays as it is.
  void Find(GrowingNode const& node, Placed const& placed, std::size_t primary, Crew const& crew,
            std::span<FoundSurrogate> found);

 private:
  /// Some of the predictors, as positions in a row.
  struct Part {
    std::size_t begin = 0;
    std::size_t end = 0;
    CutHistograms<Weight> histograms;
    std::vector<std::int64_t> best;  // at borders
  };
  using Item = typename CutHistograms<Weight>::Item;
  /// What the cases of open buckets are sorted with.
  struct Sorting {
    explicit Sorting(Workers& workers) : sorter(workers) {}

    CaseSorter sorter;
    std::vector<Item> items;
    std::vector<double> values;
    std::vector<std::uint32_t> order;
  };

  void Count(GrowingNode const& node, Placed const& placed, Part& part) const;
  std::pair<double, double> FiniteRangeOf(Range places, std::size_t position) const;
  void FindCuts(GrowingNode const& node, Placed const& placed, std::size_t primary,
                std::int64_t wanted, Part& part, std::span<FoundSurrogate> found);
  void Collect(Range places, std::size_t position, Part const& part,
               std::vector<Item>& items) const;
  void Sort(Sorting& sorting) const;

  CaseRows const& rows_;
  CaseLists const& lists_;
  ChildOfPlace const& childOf_;
  std::size_t maxNumSurrogates_;
  Workers& workers_;
  std::size_t numThreads_;
  ToolBox<std::vector<Part>> parts_;
  ToolBox<Sorting> sortings_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_ROW_SURROGATES_H_
