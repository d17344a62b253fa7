#include "association/class_test.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tree::grow {
namespace {

FitLimits InUnits(FitLimits limits, double sizeUnit) {
  limits.epsilon /= sizeUnit;
  return limits;
}

double Pearson(std::span<double const> observed, std::span<double const> expected) {
  double sum = 0.0;
  for (std::size_t index = 0; index < observed.size(); ++index) {
    double const difference = observed[index] - expected[index];
    sum += difference * difference / expected[index];
  }
  return sum;
}

/// Twice the logarithm of the ratio of the likelihoods of two expectations.
double LikelihoodRatio(std::span<double const> observed, std::span<double const> numerator,
                       std::span<double const> denominator) {
  double sum = 0.0;
  for (std::size_t index = 0; index < observed.size(); ++index) {
    if (observed[index] > 0.0) {
      sum += observed[index] * std::log(numerator[index] / denominator[index]);
    }
  }
  return std::max(0.0, 2.0 * sum);
}

}  // namespace

ClassTest::ClassTest(ClassTestSettings const& settings, std::size_t numClasses, double sizeUnit)
    : settings_(settings),
      numClasses_(numClasses),
      sizeUnit_(sizeUnit),
      fit_(InUnits(settings.limits, sizeUnit)) {
  while (settings_.scores.size() < numClasses) {
    settings_.scores.push_back(static_cast<double>(settings_.scores.size()));
  }
}

void ClassTest::Compress(std::span<ClassRow const> rows) {
  columns_.clear();
  scores_.clear();
  for (std::size_t j = 0; j < numClasses_; ++j) {
    if (std::any_of(rows.begin(), rows.end(),
                    [&](auto const& row) { return row.sizes[j] > 0.0; })) {
      columns_.push_back(j);
      scores_.push_back(settings_.scores[j]);
    }
  }
  cells_.clear();
  meanWeights_.clear();
  double size = 0.0;
  double weight = 0.0;
  for (ClassRow const& row : rows) {
    if (std::none_of(row.sizes, row.sizes + numClasses_, [](double cell) { return cell > 0.0; })) {
      continue;
    }
    for (std::size_t const column : columns_) {
      cells_.push_back(row.sizes[column]);
      if (row.weights == nullptr) continue;
      size += row.sizes[column];
      weight += row.weights[column];
      meanWeights_.push_back(row.weights[column] / row.sizes[column]);
    }
  }
  for (std::size_t index = 0; index < meanWeights_.size(); ++index) {
    // Deliberate: nothing is known of the weights in a cell without cases but what all others have.
    if (cells_[index] == 0.0) meanWeights_[index] = weight / size;
  }
}

TestStatistic ClassTest::Test(std::span<ClassRow const> rows) {
  Compress(rows);
  if (columns_.size() < 2 || cells_.size() < 2 * columns_.size()) return {};
  FrequencyTable const table{cells_, meanWeights_, columns_.size()};
  auto const freeRows = static_cast<double>(table.GetNumRows() - 1);
  auto const freeColumns = static_cast<double>(columns_.size() - 1);
  switch (settings_.kind) {
    case ClassTestKind::kRowEffects: {
      auto const [least, greatest] = std::minmax_element(scores_.begin(), scores_.end());
      if (!(*least < *greatest)) return {};
      auto const rowEffects = fit_.FitRowEffects(table, scores_);
      return {sizeUnit_ * LikelihoodRatio(cells_, rowEffects, fit_.GetIndependent()), freeRows,
              0.0};
    }
    case ClassTestKind::kLikelihoodRatio:
      return {sizeUnit_ * LikelihoodRatio(cells_, cells_, fit_.FitIndependence(table)),
              freeRows * freeColumns, 0.0};
    case ClassTestKind::kPearson:
    default:
      return {sizeUnit_ * Pearson(cells_, fit_.FitIndependence(table)), freeRows * freeColumns,
              0.0};
  }
}

TestStatistic ClassTest::TestPair(ClassRow const& first, ClassRow const& second) {
  if (settings_.kind == ClassTestKind::kPearson && first.weights == nullptr) {
    return numClasses_ == 2 ? PearsonOfTwoClasses(first.sizes, second.sizes)
                            : PearsonOfPair(first.sizes, second.sizes);
  }
  ClassRow const rows[] = {first, second};
  return Test(rows);
}

// Both closed forms are the same to the last bit with the rows exchanged.

TestStatistic ClassTest::PearsonOfTwoClasses(double const* first, double const* second) const {
  double const firstSum = first[0] + first[1];
  double const secondSum = second[0] + second[1];
  double const product = firstSum * secondSum * ((first[0] + second[0]) * (first[1] + second[1]));
  if (!(product > 0.0)) return {};
  double const excess = first[0] * second[1] - first[1] * second[0];
  return {sizeUnit_ * (firstSum + secondSum) * (excess * excess / product), 1.0, 0.0};
}

TestStatistic ClassTest::PearsonOfPair(double const* first, double const* second) const {
  double const firstSum = std::accumulate(first, first + numClasses_, 0.0);
  double const secondSum = std::accumulate(second, second + numClasses_, 0.0);
  if (!(firstSum > 0.0) || !(secondSum > 0.0)) return {};
  double sum = 0.0;
  double numColumns = 0.0;
  for (std::size_t j = 0; j < numClasses_; ++j) {
    double const column = first[j] + second[j];
    if (!(column > 0.0)) continue;
    double const excess = first[j] * secondSum - second[j] * firstSum;
    sum += excess * excess / column;
    numColumns += 1.0;
  }
  if (numColumns < 2.0) return {};
  return {sizeUnit_ * (sum / (firstSum * secondSum)), numColumns - 1.0, 0.0};
}

}  // namespace tree::grow
