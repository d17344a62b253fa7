#include "growing/node_statistics.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

namespace tree::grow {
namespace {

/// How many low bits deviations have to lose so that the weighted sum of their squares fits into
/// 126 bits. None as long as the weights are whole numbers and not extreme.
int ShiftOfDeviations(std::int64_t range, std::int64_t weight) {
  auto const widthOf = [](std::int64_t value) {
    return static_cast<int>(std::bit_width(static_cast<std::uint64_t>(value)));
  };
  return std::max(0, widthOf(range) - (126 - widthOf(weight)) / 2);
}

/// What makes the mean square of n cases an estimate of the variance of all there are. Parts of a
/// single case estimate nothing, and have the deviation that they have.
double BesselFactor(double count) { return count > 1.0 ? count / (count - 1.0) : 1.0; }

}  // namespace

void NodeStatistics::Fill(NodeImp& node, std::span<std::uint32_t const> cases, NodeSums const& sums,
                          PollFunction const& poll) const {
  if (classes_ != nullptr) {
    node.SetClsInfo(MakeClsInfo(node, sums).release(), sample_);
  } else {
    node.SetRegInfo(MakeRegInfo(node, cases, sums, poll).release(), sample_);
  }
}

std::unique_ptr<ClsInfoImp> NodeStatistics::MakeClsInfo(NodeImp const& node,
                                                        NodeSums const& sums) const {
  auto info = std::make_unique<ClsInfoImp>();
  std::vector<double> const weights = ClassWeightsOf(data_, sums);
  std::vector<double> const probabilities = classes_->Probabilities(weights);
  info->SetNumClasses(static_cast<int>(weights.size()));
  for (std::size_t j = 0; j < weights.size(); ++j) {
    info->SetClassCount(static_cast<int>(j), weights[j]);
    info->SetClassProbability(static_cast<int>(j), probabilities[j]);
  }
  info->SetPrediction(sample_ == TrainingSample ? static_cast<int>(classes_->Predict(probabilities))
                                                : static_cast<int>(node.GetAssignment()));
  info->SetUnweightedCount(static_cast<double>(sums.size) * data_.GetFrequencies().unit);
  if (rootWeight_ > 0.0) info->SetPercentSize(100.0 * info->GetCount() / rootWeight_);
  return info;
}

std::unique_ptr<RegInfoImp> NodeStatistics::MakeRegInfo(NodeImp const& node,
                                                        std::span<std::uint32_t const> cases,
                                                        NodeSums const& sums,
                                                        PollFunction const& poll) const {
  auto info = std::make_unique<RegInfoImp>();
  double const count = static_cast<double>(sums.size) * data_.GetFrequencies().unit;
  info->SetCount(static_cast<double>(sums.weight) * data_.GetWeights().unit);
  info->SetNumBins(kNumBins);
  info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, count);
  if (sample_ != TrainingSample) {
    info->SetExtendedStatistic(RegInfoImp::StorePrediction, node.GetAssignment());
  }
  if (cases.empty()) return info;

  FixedNumbers const& numbers = data_.GetNumbers();
  auto const wholeMean = static_cast<std::int64_t>(sums.weightedNumbers / sums.weight);
  auto const rest = static_cast<double>(sums.weightedNumbers % sums.weight);
  info->SetMean(
      numbers.ValueOf(static_cast<double>(wholeMean) + rest / static_cast<double>(sums.weight)));
  std::int64_t minimum = std::numeric_limits<std::int64_t>::max();
  std::int64_t maximum = std::numeric_limits<std::int64_t>::min();
  ForSlices(cases.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::uint32_t const index : cases.subspan(begin, end - begin)) {
      minimum = std::min(minimum, numbers.multiples[index]);
      maximum = std::max(maximum, numbers.multiples[index]);
    }
  });
  info->SetMinimum(numbers.ValueOf(static_cast<double>(minimum)));
  info->SetMaximum(numbers.ValueOf(static_cast<double>(maximum)));

  std::int64_t const range = std::max<std::int64_t>(1, maximum - minimum);
  int const shift = ShiftOfDeviations(range, sums.weight);
  std::array<std::int64_t, kNumBins> bins{};
  WideInteger squares = 0;
  bool const isNarrow = range <= std::numeric_limits<std::int64_t>::max() / kNumBins;
  ForSlices(cases.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::uint32_t const index : cases.subspan(begin, end - begin)) {
      std::int64_t const number = numbers.multiples[index];
      std::int64_t const weight = data_.GetWeights().Of(index);
      WideInteger const deviation = (number - wholeMean) / (std::int64_t{1} << shift);
      squares += deviation * deviation * weight;
      std::int64_t const above = number - minimum;
      auto const bin = static_cast<std::size_t>(
          isNarrow ? above * kNumBins / range  // the same, where wide numbers would only take time
                   : static_cast<std::int64_t>(WideInteger{above} * kNumBins / range));
      bins[std::min<std::size_t>(bin, kNumBins - 1)] += weight;
    }
  });
  for (int bin = 0; bin < kNumBins; ++bin) {
    info->SetBinSize(
        bin, static_cast<double>(bins[static_cast<std::size_t>(bin)]) * data_.GetWeights().unit);
  }
  // In units of the numbers, whose squares may lie beyond what a double can hold.
  double const variance = std::ldexp(static_cast<double>(squares), 2 * shift) /
                          static_cast<double>(sums.weight) * BesselFactor(count);
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, std::sqrt(variance) * numbers.unit);
  return info;
}

bool IsPure(NodeImp const& node) {
  if (!node.IsClassificationNode()) {
    RegInfo const& info = *node.GetRegInfo(TrainingSample);
    return !(info.GetMinimum() < info.GetMaximum());
  }
  ClsInfo const& info = *node.GetClsInfo(TrainingSample);
  int numPresent = 0;
  for (int j = 0; j < info.GetNumClasses(); ++j) numPresent += info.GetClassCount(j) > 0.0 ? 1 : 0;
  return numPresent < 2;
}

double SumOfSquares(RegInfoImp const& info, double unit) {
  // The weight first: it is small where the unit is the weight of the tree.
  double const weight = info.GetCount() / unit / BesselFactor(info.GetUnweightedCount());
  return weight * info.GetStdDev() * info.GetStdDev();
}

}  // namespace tree::grow
