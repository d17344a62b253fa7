#include "growing/training_data.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tree::grow {
namespace {

constexpr std::size_t kMaxClasses = 65535;

[[noreturn]] void RefuseTarget(Column const& target, std::size_t row, char const* why) {
  throw InputError("column \"" + target.description.name + "\": case " + std::to_string(row) +
                   ": " + std::to_string(target.values[row]) + " " + why);
}

}  // namespace

TrainingData::TrainingData(DataSet const& data, CaseRoles const& roles, AlgSettings const& settings,
                           std::vector<std::size_t> rows, std::vector<double> const& weights,
                           std::vector<double> const& frequencies, int maxCodedValues)
    : data_(data),
      predictorColumns_(roles.predictors),
      maxNominalCategories_(static_cast<std::size_t>(settings.GetMaxNominalPredCategories())),
      maxCodedValues_(static_cast<std::size_t>(maxCodedValues)),
      rows_(std::move(rows)),
      weights_(FixWeights(weights)),
      frequencies_(FixWeights(frequencies)) {
  if (rows_.size() > SortedCase::kMaxPlace) {
    throw InputError("more than " + std::to_string(SortedCase::kMaxPlace) + " cases");
  }
  ReadTarget(data.GetColumn(roles.target));
  for (int const index : roles.predictors)
    predictors_.emplace_back().column = &data.GetColumn(index);
}

void TrainingData::ReadTarget(Column const& target) {
  if (target.description.level != global::MeasurementContinuous) {
    double largest = static_cast<double>(target.description.labels.size()) - 1.0;
    classes_.reserve(rows_.size());
    for (std::size_t const row : rows_) {
      double const value = target.values[row];
      if (value != std::floor(value) || value < 0.0) RefuseTarget(target, row, "is no class code");
      if (value >= static_cast<double>(kMaxClasses)) {
        RefuseTarget(target, row, "is more than the number of classes that are supported");
      }
      largest = std::max(largest, value);
      classes_.push_back(static_cast<std::uint16_t>(value));
    }
    numClasses_ = static_cast<std::size_t>(largest + 1.0);
    return;
  }
  std::vector<double> values;
  values.reserve(rows_.size());
  for (std::size_t const row : rows_) {
    if (std::isinf(target.values[row])) RefuseTarget(target, row, "cannot be predicted");
    values.push_back(target.values[row]);
  }
  numbers_ = FixNumbers(values, weights_);
}

void TrainingData::PreparePredictors(Workers& workers) {
  if (prepared_) return;
  std::atomic<std::size_t> numDone{0};
  workers.Run(predictors_.size(), [&](std::size_t position) {
    Prepare(predictors_[position], workers);
    workers.Advance(static_cast<double>(++numDone) / static_cast<double>(predictors_.size()));
  });
  for (GrowingPredictor const& predictor : predictors_) {
    if (predictor.used) continue;
    remarks_.push_back("predictor \"" + predictor.column->description.name +
                       "\" is not used: " + predictor.whyNot);
  }
  prepared_ = true;
}

void TrainingData::Prepare(GrowingPredictor& predictor, Workers& workers) const {
  predictor.sorted.clear();
  predictor.codes.clear();
  predictor.values.clear();
  predictor.whyNot.clear();
  std::vector<double> values(rows_.size());
  std::vector<std::uint32_t> indexes;
  indexes.reserve(rows_.size());
  for (std::size_t index = 0; index < rows_.size(); ++index) {
    values[index] = predictor.column->values[rows_[index]];
    if (!predictor.column->IsMissing(rows_[index])) {
      indexes.push_back(static_cast<std::uint32_t>(index));
    }
  }
  predictor.hasMissing = indexes.size() < rows_.size();
  std::vector<SortedCase> sorted = SortCases(values.data(), indexes, workers);
  auto const numValues = static_cast<std::size_t>(
      std::count_if(sorted.begin(), sorted.end(), [](SortedCase c) { return c.StartsValue(); }));
  if (!predictor.IsNominal() && numValues > maxCodedValues_) {
    predictor.hasTies = numValues < sorted.size();
    predictor.sorted = std::move(sorted);
    return;
  }
  CodeValues(predictor, values, sorted);
  if (predictor.IsNominal()) CheckCategories(predictor);
}

/// Nominal predictors with too many categories are not used. Nor are those with huge codes: each
/// rule would hold a table up to them.
void TrainingData::CheckCategories(GrowingPredictor& predictor) const {
  constexpr double kLargestCode = 1'000'000.0;
  std::size_t const numValues = predictor.values.size();
  if (numValues > std::min<std::size_t>(maxNominalCategories_, GrowingPredictor::kMissingCode)) {
    predictor.whyNot = "it has " + std::to_string(numValues) +
                       " categories, and the settings allow " +
                       std::to_string(maxNominalCategories_);
  } else if (!predictor.values.empty() && predictor.values.back() > kLargestCode) {
    predictor.whyNot = "the code of one of its categories is more than 1000000";
  }
  predictor.used = predictor.whyNot.empty();
}

void TrainingData::CodeValues(GrowingPredictor& predictor, std::vector<double> const& values,
                              std::vector<SortedCase> const& sorted) const {
  predictor.codes.assign(rows_.size(), GrowingPredictor::kMissingCode);
  for (SortedCase const item : sorted) {
    if (item.StartsValue()) predictor.values.push_back(values[item.Place()]);
    // Of too many values for a code the predictor will not be used.
    predictor.codes[item.Place()] = static_cast<std::uint16_t>(
        std::min<std::size_t>(predictor.values.size() - 1, GrowingPredictor::kMissingCode));
  }
}

}  // namespace tree::grow
