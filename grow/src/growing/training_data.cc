#include "growing/training_data.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <optional>
#include <utility>

#include "data/number_text.h"

namespace tree::grow {
namespace {

constexpr std::size_t kMaxClasses = 65535;

[[noreturn]] void RefuseTarget(Column const& target, std::size_t row, char const* why) {
  throw CaseError("column \"" + target.description.name + '"', row,
                  "value " + NumberText(target.values[row]) + ' ' + why);
}

}  // namespace

TrainingData::TrainingData(DataSet const& data, CaseRoles const& roles, AlgSettings const& settings,
                           std::vector<std::size_t> rows, std::vector<double> const& weights,
                           std::vector<double> const& frequencies, int maxCodedValues,
                           int numIntervals, OrderedForm orderedForm, PollFunction const& poll)
    : data_(data),
      target_(data.GetColumn(roles.target)),
      predictorColumns_(roles.predictors),
      maxNominalCategories_(static_cast<std::size_t>(settings.GetMaxNominalPredCategories())),
      maxCodedValues_(static_cast<std::size_t>(maxCodedValues)),
      numIntervals_(static_cast<std::size_t>(numIntervals)),
      orderedForm_(orderedForm),
      rows_(std::move(rows)),
      weights_(FixWeights(weights, poll)),
      frequencies_(FixWeights(frequencies, poll)) {
  if (rows_.size() > SortedCase::kMaxPlace) {
    throw InputError("more than " + std::to_string(SortedCase::kMaxPlace) + " cases");
  }
  ForSlices(rows_.size(), poll, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) {
      takesEachRow_ = takesEachRow_ && rows_[index] == index;
      size_ += static_cast<double>(frequencies_.Of(static_cast<std::uint32_t>(index)));
    }
  });
  size_ *= frequencies_.unit;
  ReadTarget(poll);
  for (int const index : roles.predictors)
    predictors_.emplace_back().column = &data.GetColumn(index);
}

void TrainingData::ReadTarget(PollFunction const& poll) {
  Column const& target = target_;
  auto const forRows = [&](auto const& visit) {
    ForSlices(rows_.size(), poll, [&](std::size_t begin, std::size_t end) {
      for (std::size_t index = begin; index < end; ++index) visit(rows_[index]);
    });
  };
  if (target.description.level != global::MeasurementContinuous) {
    double largest = static_cast<double>(target.description.labels.size()) - 1.0;
    classes_.reserve(rows_.size());
    forRows([&](std::size_t row) {
      double const value = target.values[row];
      if (value != std::floor(value) || value < 0.0) RefuseTarget(target, row, "is no class code");
      if (value >= static_cast<double>(kMaxClasses)) {
        RefuseTarget(target, row, "is more than the number of classes that are supported");
      }
      largest = std::max(largest, value);
      classes_.push_back(static_cast<std::uint16_t>(value));
    });
    numClasses_ = static_cast<std::size_t>(largest + 1.0);
    return;
  }
  std::vector<double> values;
  values.reserve(rows_.size());
  double least = HUGE_VAL;
  double greatest = -HUGE_VAL;
  forRows([&](std::size_t row) {
    double const value = target.values[row];
    if (std::isinf(value)) RefuseTarget(target, row, "cannot be predicted");
    least = std::min(least, value);
    greatest = std::max(greatest, value);
    values.push_back(value);
  });
  if (values.empty()) return;
  SetRange(least, greatest);
  numbers_ = FixNumbers(values, weights_, poll);
}

/// Squares of numbers' differences are what impurities and risks are made of.
void TrainingData::SetRange(double least, double greatest) {
  double const range = greatest - least;
  if (range > 0.0 && !std::isnormal(range * range)) {
    throw InputError("column \"" + target_.description.name + "\": numbers from " +
                     NumberText(least) + " to " + NumberText(greatest) +
                     " cannot be predicted: the square of their range is no number");
  }
  least_ = least;
  greatest_ = greatest;
  errorUnit_ = range > 0.0 ? std::ldexp(1.0, std::ilogb(range)) : 1.0;
}

void TrainingData::ShareTarget(TrainingData& other) {
  numClasses_ = other.numClasses_ = std::max(numClasses_, other.numClasses_);
  if (numbers_.multiples.empty() || other.numbers_.multiples.empty()) return;
  SetRange(std::min(least_, other.least_), std::max(greatest_, other.greatest_));
  other.SetRange(least_, greatest_);
}

void TrainingData::PreparePredictors(Workers& workers) {
  if (prepared_) return;
  std::atomic<std::size_t> numDone{0};
  ToolBox<CaseSorter> sorters([&] { return std::make_unique<CaseSorter>(workers); });
  workers.Run(predictors_.size(), [&](std::size_t position) {
    GrowingPredictor& predictor = predictors_[position];
    if (predictor.used && !predictor.IsCoded()) {
      GrowingPredictor prepared = predictor;  // which has nothing yet, and keeps it if this fails
      Prepare(prepared, sorters, workers);
      predictor = std::move(prepared);
    }
    workers.Advance(static_cast<double>(++numDone) / static_cast<double>(predictors_.size()));
  });
  if (orderedForm_ == OrderedForm::kInRows && caseRows_.IsEmpty()) ReadRows(workers);
  remarks_.clear();
  for (GrowingPredictor const& predictor : predictors_) {
    if (predictor.used) continue;
    remarks_.push_back("predictor \"" + predictor.column->description.name +
                       "\" is not used: " + predictor.whyNot);
  }
  prepared_ = true;
}

void TrainingData::ReadRows(Workers& workers) {
  std::vector<Column const*> columns;
  std::vector<std::size_t> inRows;
  for (std::size_t position = 0; position < predictors_.size(); ++position) {
    GrowingPredictor& predictor = predictors_[position];
    columns.push_back(predictor.column);
    predictor.isInRows = predictor.used && !predictor.IsCoded();
    if (predictor.isInRows) inRows.push_back(position);
  }
  caseRows_ = CaseRows(columns, std::move(inRows), rows_, workers);
}

std::vector<std::vector<SortedCase>> TrainingData::ReleaseSorted() {
  std::vector<std::vector<SortedCase>> lists(predictors_.size());
  for (std::size_t position = 0; position < lists.size(); ++position) {
    lists[position] = std::move(predictors_[position].sorted);
    predictors_[position].sorted.clear();
  }
  prepared_ = orderedForm_ == OrderedForm::kInRows;
  return lists;
}

void TrainingData::Prepare(GrowingPredictor& predictor, ToolBox<CaseSorter>& sorters,
                           Workers& workers) const {
  std::optional<ValueCodes> few;
  if (std::size_t const maxNumCodes = MaxNumCodes(predictor); maxNumCodes > 0) {
    few = CodeFewValues(*predictor.column, takesEachRow_ ? std::span<std::size_t const>() : rows_,
                        rows_.size(), maxNumCodes, workers);
  }
  if (few.has_value()) {
    predictor.codes = std::move(few->codes);
    predictor.values = std::move(few->values);
  } else {
    PrepareManyValues(predictor, sorters, workers);
  }
  if (predictor.IsCoded()) {
    predictor.hasMissing = std::find(predictor.codes.begin(), predictor.codes.end(),
                                     GrowingPredictor::kMissingCode) != predictor.codes.end();
  } else if (predictor.isSorted) {
    predictor.hasMissing = predictor.sorted.size() < rows_.size();
  }
  if (predictor.IsNominal()) CheckCategories(predictor);
}

/// Up to how many values are coded without sorting.
std::size_t TrainingData::MaxNumCodes(GrowingPredictor const& predictor) const {
  if (predictor.IsNominal()) return GrowingPredictor::kMaxValues;
  if (numIntervals_ == 0) return maxCodedValues_;
  bool const isOrdinal = predictor.column->description.level == global::MeasurementOrdinal;
  return isOrdinal ? GrowingPredictor::kMaxValues : numIntervals_;
}

void TrainingData::PrepareManyValues(GrowingPredictor& predictor, ToolBox<CaseSorter>& sorters,
                                     Workers& workers) const {
  Column const& column = *predictor.column;
  bool const keepsValues = !predictor.IsNominal() && numIntervals_ == 0;
  predictor.isSorted = keepsValues && orderedForm_ == OrderedForm::kSorted;
  if (keepsValues && !predictor.isSorted) return;
  std::vector<std::uint32_t> indexes;
  indexes.reserve(rows_.size());
  ForSlices(rows_.size(), workers, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) {
      if (!column.IsMissing(rows_[index])) indexes.push_back(static_cast<std::uint32_t>(index));
    }
  });
  std::vector<double> copied;
  double const* values = column.values;
  if (!takesEachRow_) {
    copied.resize(rows_.size());
    ForSlices(rows_.size(), workers, [&](std::size_t begin, std::size_t end) {
      for (std::size_t index = begin; index < end; ++index) {
        copied[index] = column.values[rows_[index]];
      }
    });
    values = copied.data();
  }
  std::vector<SortedCase> sorted;
  sorters.With([&](CaseSorter& sorter) { sorted = sorter.Sort(values, indexes); });
  if (keepsValues) {
    predictor.hasTies = std::any_of(sorted.begin(), sorted.end(),
                                    [](SortedCase item) { return !item.StartsValue(); });
    predictor.sorted = std::move(sorted);
    return;
  }
  predictor.hasIntervals = !predictor.IsNominal();
  ValueCodes coded = predictor.hasIntervals
                         ? CodeIntervals(sorted, values, frequencies_.multiples, rows_.size(),
                                         numIntervals_, workers)
                         : CodeSortedValues(sorted, values, rows_.size(), workers);
  predictor.codes = std::move(coded.codes);
  predictor.values = std::move(coded.values);
}

/// Nominal predictors with too many categories are not used. Nor are those with huge codes: each
/// rule would hold a table up to them. What is not used needs no codes.
void TrainingData::CheckCategories(GrowingPredictor& predictor) const {
  constexpr double kLargestCode = 1'000'000.0;
  std::size_t const numValues = predictor.values.size();
  if (numValues > maxNominalCategories_) {
    predictor.whyNot = "it has " + std::to_string(numValues) +
                       " categories, and the settings allow " +
                       std::to_string(maxNominalCategories_);
  } else if (numValues > GrowingPredictor::kMaxValues) {
    predictor.whyNot = "it has " + std::to_string(numValues) + " categories, and no more than " +
                       std::to_string(GrowingPredictor::kMaxValues) + " are supported";
  } else if (!predictor.values.empty() && predictor.values.back() > kLargestCode) {
    predictor.whyNot = "the code of one of its categories is more than 1000000";
  }
  predictor.used = predictor.whyNot.empty();
  if (predictor.used) return;
  std::vector<std::uint16_t>().swap(predictor.codes);
  std::vector<double>().swap(predictor.values);
}

}  // namespace tree::grow
