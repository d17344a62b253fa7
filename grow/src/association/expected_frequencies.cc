#include "association/expected_frequencies.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tree::grow {

void ExpectedFrequencies::SumMargins(FrequencyTable const& table) {
  numColumns_ = table.numColumns;
  rowSums_.assign(table.GetNumRows(), 0.0);
  columnSums_.assign(numColumns_, 0.0);
  for (std::size_t row = 0; row < rowSums_.size(); ++row) {
    for (std::size_t column = 0; column < numColumns_; ++column) {
      double const cell = table.cells[row * numColumns_ + column];
      rowSums_[row] += cell;
      columnSums_[column] += cell;
    }
  }
}

/// Multiplies the rows of a table so that they add up to the row sums.
void ExpectedFrequencies::ScaleRows(std::vector<double>& cells) const {
  for (std::size_t row = 0; row < rowSums_.size(); ++row) {
    auto const begin = cells.begin() + static_cast<std::ptrdiff_t>(row * numColumns_);
    auto const end = begin + static_cast<std::ptrdiff_t>(numColumns_);
    double const factor = rowSums_[row] / std::accumulate(begin, end, 0.0);
    std::transform(begin, end, begin, [&](double cell) { return factor * cell; });
  }
}

/// Multiplies the columns so that they add up to the column sums.
void ExpectedFrequencies::ScaleColumns(std::vector<double>& cells) {
  factors_.assign(numColumns_, 0.0);
  for (std::size_t index = 0; index < cells.size(); index += numColumns_) {
    for (std::size_t column = 0; column < numColumns_; ++column) {
      factors_[column] += cells[index + column];
    }
  }
  for (std::size_t column = 0; column < numColumns_; ++column) {
    factors_[column] = columnSums_[column] / factors_[column];
  }
  for (std::size_t index = 0; index < cells.size(); index += numColumns_) {
    for (std::size_t column = 0; column < numColumns_; ++column) {
      cells[index + column] *= factors_[column];
    }
  }
}

bool ExpectedFrequencies::HasConverged(std::vector<double> const& cells) const {
  for (std::size_t index = 0; index < cells.size(); ++index) {
    if (!(std::abs(cells[index] - previous_[index]) < limits_.epsilon)) return false;
  }
  return true;
}

std::span<double const> ExpectedFrequencies::FitIndependence(FrequencyTable const& table) {
  SumMargins(table);
  double const all = std::accumulate(rowSums_.begin(), rowSums_.end(), 0.0);
  independent_.resize(table.cells.size());
  for (std::size_t row = 0; row < rowSums_.size(); ++row) {
    for (std::size_t column = 0; column < numColumns_; ++column) {
      independent_[row * numColumns_ + column] = rowSums_[row] * columnSums_[column] / all;
    }
  }
  if (table.meanWeights.empty()) return independent_;
  for (std::size_t index = 0; index < independent_.size(); ++index) {
    independent_[index] /= table.meanWeights[index];
  }
  for (int iteration = 0; iteration < limits_.maxIterations; ++iteration) {
    previous_ = independent_;
    ScaleRows(independent_);
    ScaleColumns(independent_);
    if (HasConverged(independent_)) break;
  }
  return independent_;
}

void ExpectedFrequencies::TiltRows() {
  // A step that changes the odds of the outermost columns by more than this overshoots.
  constexpr double kLargestStep = 2.0;
  for (std::size_t row = 0; row < rowSums_.size(); ++row) {
    double* const cells = rowEffects_.data() + row * numColumns_;
    double sum = 0.0;
    double moment = 0.0;
    for (std::size_t column = 0; column < numColumns_; ++column) {
      sum += cells[column];
      moment += cells[column] * positions_[column];
    }
    double const mean = moment / sum;
    double variance = 0.0;
    for (std::size_t column = 0; column < numColumns_; ++column) {
      variance += cells[column] * (positions_[column] - mean) * (positions_[column] - mean);
    }
    variance /= sum;
    double const missed = meanPositions_[row] - mean;
    if (missed == 0.0) continue;
    double const step = std::clamp(missed / variance, -kLargestStep, kLargestStep);
    for (std::size_t column = 0; column < numColumns_; ++column) {
      cells[column] *= std::exp(step * (positions_[column] - mean));
    }
  }
}

std::span<double const> ExpectedFrequencies::FitRowEffects(FrequencyTable const& table,
                                                           std::span<double const> scores) {
  FitIndependence(table);
  // Where between the ends scores lie does not change the model.
  auto const [least, greatest] = std::minmax_element(scores.begin(), scores.end());
  double const range = *greatest / 2.0 - *least / 2.0;
  positions_.resize(numColumns_);
  for (std::size_t column = 0; column < numColumns_; ++column) {
    positions_[column] = (scores[column] / 2.0 - *least / 2.0) / range;
  }
  meanPositions_.resize(rowSums_.size());
  for (std::size_t row = 0; row < rowSums_.size(); ++row) {
    double const* const cells = table.cells.data() + row * numColumns_;
    meanPositions_[row] =
        std::inner_product(cells, cells + numColumns_, positions_.begin(), 0.0) / rowSums_[row];
  }
  rowEffects_ = independent_;
  for (int iteration = 0; iteration < limits_.maxIterations; ++iteration) {
    previous_ = rowEffects_;
    TiltRows();
    ScaleRows(rowEffects_);
    ScaleColumns(rowEffects_);
    if (HasConverged(rowEffects_)) break;
  }
  return rowEffects_;
}

}  // namespace tree::grow
