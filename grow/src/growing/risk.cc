#include "growing/risk.h"

#include <algorithm>
#include <cmath>

namespace tree::grow {
namespace {

/// The standard error of a mean of n values, from the mean of their squares.
double StdErrorOf(double mean, double meanOfSquares, double numCases) {
  return numCases > 0.0 ? std::sqrt(std::max(0.0, meanOfSquares - mean * mean) / numCases) : 0.0;
}

}  // namespace

LossSums LossSums::Of(TrainingData const& data, std::span<std::uint32_t const> cases,
                      double prediction) {
  LossSums sums(data.GetNumClasses());
  sums.unit_ = data.GetErrorUnit();
  std::int64_t size = 0;
  std::int64_t weight = 0;
  std::vector<std::int64_t> observed(data.GetNumClasses());
  for (std::uint32_t const index : cases) {
    size += data.GetFrequencies().Of(index);
    std::int64_t const ofCase = data.GetWeights().Of(index);
    weight += ofCase;
    if (!observed.empty()) {
      observed[data.GetClasses()[index]] += ofCase;
      continue;
    }
    FixedNumbers const& numbers = data.GetNumbers();
    double const error =
        (numbers.ValueOf(static_cast<double>(numbers.multiples[index])) - prediction) / sums.unit_;
    double const square = error * error;
    sums.squares_ += static_cast<double>(ofCase) * data.GetWeights().unit * square;
    sums.fourths_ += static_cast<double>(ofCase) * data.GetWeights().unit * square * square;
  }
  sums.numCases_ = static_cast<double>(size) * data.GetFrequencies().unit;
  sums.weight_ = static_cast<double>(weight) * data.GetWeights().unit;
  for (std::size_t j = 0; j < observed.size(); ++j) {
    sums.counts_[static_cast<std::size_t>(prediction) * observed.size() + j] =
        static_cast<double>(observed[j]) * data.GetWeights().unit;
  }
  return sums;
}

LossSums& LossSums::Add(LossSums const& other, double sign) {
  numCases_ += sign * other.numCases_;
  weight_ += sign * other.weight_;
  unit_ = other.unit_;
  squares_ += sign * other.squares_;
  fourths_ += sign * other.fourths_;
  for (std::size_t cell = 0; cell < counts_.size(); ++cell) {
    counts_[cell] += sign * other.counts_[cell];
  }
  return *this;
}

RiskEstimate RiskModel::Estimate(LossSums const& losses) const {
  if (!(losses.weight_ > 0.0)) return {};
  if (classes_ == nullptr) {
    double const risk = std::max(0.0, losses.squares_) / losses.weight_;
    double const error = StdErrorOf(risk, losses.fourths_ / losses.weight_, losses.numCases_);
    return {risk * losses.unit_ * losses.unit_, error * losses.unit_ * losses.unit_};
  }
  return priorsAreShares_ ? EstimateBySample(losses) : EstimateByPriors(losses);
}

RiskEstimate RiskModel::EstimateBySample(LossSums const& losses) const {
  double risk = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < losses.numClasses_; ++i) {
    for (std::size_t j = 0; j < losses.numClasses_; ++j) {
      double const share = losses.counts_[i * losses.numClasses_ + j] / losses.weight_;
      double const cost = classes_->CostOf(i, j);
      risk += cost * share;
      squares += cost * cost * share;
    }
  }
  return {risk, StdErrorOf(risk, squares, losses.numCases_)};
}

RiskEstimate RiskModel::EstimateByPriors(LossSums const& losses) const {
  double risk = 0.0;
  double variance = 0.0;
  for (std::size_t j = 0; j < losses.numClasses_; ++j) {
    double observed = 0.0;
    for (std::size_t i = 0; i < losses.numClasses_; ++i) {
      observed += losses.counts_[i * losses.numClasses_ + j];
    }
    if (!(observed > 0.0)) continue;
    double ofClass = 0.0;
    double squares = 0.0;
    for (std::size_t i = 0; i < losses.numClasses_; ++i) {
      double const share = losses.counts_[i * losses.numClasses_ + j] / observed;
      double const cost = classes_->CostOf(i, j);
      ofClass += cost * share;
      squares += cost * cost * share;
    }
    double const prior = classes_->GetPriors()[j];
    double const numCases = observed * losses.numCases_ / losses.weight_;
    double const error = StdErrorOf(ofClass, squares, numCases);
    risk += prior * ofClass;
    variance += prior * prior * error * error;
  }
  return {risk, std::sqrt(variance)};
}

}  // namespace tree::grow
