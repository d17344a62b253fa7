#ifndef TREE_GROW_SRC_ASSOCIATION_EXPECTED_FREQUENCIES_H_
#define TREE_GROW_SRC_ASSOCIATION_EXPECTED_FREQUENCIES_H_

#include <cstddef>
#include <span>
#include <vector>

namespace tree::grow {

/// When an iterative fit ends.
struct FitLimits {
  double epsilon = 0.001;   ///< when no expected frequency changes by as much any more
  int maxIterations = 100;  ///< at the latest after so many
};

/// A table of frequencies, rows after each other, in which no row and no column adds up to 0.
struct FrequencyTable {
  std::span<double const> cells;
  /// The mean weight of a case in each cell, on any scale; empty where all cases weigh the same.
  std::span<double const> meanWeights;
  std::size_t numColumns = 0;

  std::size_t GetNumRows() const { return cells.size() / numColumns; }
};

/// Fits log-linear models to tables of frequencies; keeps the memory that it works with. The
/// expected frequencies are those of cases, whose weights multiply what is modelled: with mean
/// weights v(i,j), m(i,j) = [model](i,j) / v(i,j).
class ExpectedFrequencies {
 public:
  explicit ExpectedFrequencies(FitLimits const& limits) : limits_(limits) {}

  /// Independence, a(i) b(j) / v(i,j): the row sum times the column sum over the whole, or, with
  /// weights, by iterative proportional fitting. **Borrowed** until the next call.
  std::span<double const> FitIndependence(FrequencyTable const& table);

  /// Row effects, a(i) b(j) exp(c(i) score(j)) / v(i,j): a row's mean score is fitted, too. Source:
  /// Goodman 1979, Simple models for the analysis of association in cross-classifications having
  /// ordered categories; rows and columns in turn as there, the effect of a row by Newton's method.
  /// Fits independence first. `scores`: by column, finite, not all equal. **Borrowed** until the
  /// next call.
  std::span<double const> FitRowEffects(FrequencyTable const& table,
                                        std::span<double const> scores);
  /// What the last call has found for independence.
  std::span<double const> GetIndependent() const { return independent_; }

 private:
  void SumMargins(FrequencyTable const& table);
  void ScaleRows(std::vector<double>& cells) const;
  void ScaleColumns(std::vector<double>& cells);
  void TiltRows();
  bool HasConverged(std::vector<double> const& cells) const;

  FitLimits limits_;
  std::size_t numColumns_ = 0;
  std::vector<double> rowSums_;
  std::vector<double> columnSums_;
  std::vector<double> independent_;
  std::vector<double> rowEffects_;
  std::vector<double> previous_;       // of the iteration before
  std::vector<double> factors_;        // by column
  std::vector<double> positions_;      // of the scores: the least at 0, the greatest at 1
  std::vector<double> meanPositions_;  // by row
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_EXPECTED_FREQUENCIES_H_
