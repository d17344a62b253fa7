#include "quest/row_sums.h"

#include <algorithm>
#include <cmath>

#include "growing/node_rows.h"

namespace tree::grow {
namespace {

// Near this number, numbers are as far apart as whole ones are: adding it rounds.
constexpr double kRounder = 0x1.8p52;

/// A multiple has two halves, of which the upper one counts so many units: both are at most 2^20,
/// so that doubles hold the sums of the products of so many cases.
constexpr double kHalf = 0x1p20;
constexpr std::uint32_t kMaxCases = std::uint32_t{1} << 12;

/// Rounds to a whole number, an even one halfway. Requires less than 2^51.
inline double Round(double number) { return number + kRounder - kRounder; }

/// NaN stays what it is.
inline double Clamp(double value, double least, double greatest) {
  double const raised = value < least ? least : value;
  return raised > greatest ? greatest : raised;
}

/// What is held of each class until it is emptied into the exact sums: several rows of doubles.
class ClassBuffers {
 public:
  ClassBuffers(std::size_t numClasses, std::size_t size)
      : size_(size), values_(numClasses * size), counts_(numClasses) {}

  double* Of(std::size_t ofClass) { return values_.data() + ofClass * size_; }
  /// Counts a case; gives whether the class is full.
  bool Count(std::size_t ofClass) { return ++counts_[ofClass] == kMaxCases; }
  std::uint32_t CountOf(std::size_t ofClass) const { return counts_[ofClass]; }
  void Clear(std::size_t ofClass) {
    std::fill_n(Of(ofClass), size_, 0.0);
    counts_[ofClass] = 0;
  }

 private:
  std::size_t size_;
  std::vector<double> values_;
  std::vector<std::uint32_t> counts_;  // cases by class
};

/// Adds a case to what is held of its class, position by position. Nothing of all this overlaps, so
/// that several positions can be added at a time.
template <bool HasGaps>
inline void AddRow(std::size_t width, double const* __restrict row, double const* __restrict least,
                   double const* __restrict greatest, double const* __restrict centre,
                   double const* __restrict perUnit, double* __restrict high,
                   double* __restrict low, double* __restrict highSquares,
                   double* __restrict products, double* __restrict lowSquares,
                   double* __restrict counts) {
  for (std::size_t position = 0; position < width; ++position) {
    double value = row[position];
    bool const isMissing = HasGaps && value != value;
    if constexpr (HasGaps) value = Clamp(value, least[position], greatest[position]);
    double multiple = Round((value - centre[position]) * perUnit[position]);
    if constexpr (HasGaps) {
      multiple = isMissing ? 0.0 : multiple;
      counts[position] += isMissing ? 0.0 : 1.0;
    }
    double const upper = Round(multiple * (1.0 / kHalf));
    double const rest = multiple - upper * kHalf;
    high[position] += upper;
    low[position] += rest;
    highSquares[position] += upper * upper;
    products[position] += upper * rest;
    lowSquares[position] += rest * rest;
  }
}

/// The same for its distances from the means of its class.
template <bool HasGaps>
inline void AddRowOfDistances(std::size_t width, double const* __restrict row,
                              double const* __restrict least, double const* __restrict greatest,
                              double const* __restrict centre, double const* __restrict perUnit,
                              double const* __restrict mean, double* __restrict sums) {
  for (std::size_t position = 0; position < width; ++position) {
    double value = row[position];
    bool const isMissing = HasGaps && value != value;
    if constexpr (HasGaps) value = Clamp(value, least[position], greatest[position]);
    double const multiple = Round((value - centre[position]) * perUnit[position]);
    double const distance = std::abs(multiple - mean[position]);
    sums[position] += isMissing ? 0.0 : distance;
  }
}

WideInteger Whole(double number) { return static_cast<std::int64_t>(number); }

}  // namespace

ClassSums& ClassSums::operator+=(ClassSums const& other) {
  for (std::size_t cell = 0; cell < cells_.size(); ++cell) cells_[cell] += other.cells_[cell];
  return *this;
}

RowSums::RowSums(TrainingData const& data, CaseLists const& lists,
                 std::span<PredictorNumbers const> numbers)
    : rows_(data.GetCaseRows()),
      lists_(lists),
      width_(rows_.GetWidth()),
      numClasses_(data.GetNumClasses()),
      weighted_(lists.GetWeights() != nullptr || lists.GetFrequencies() != nullptr) {
  for (std::size_t const predictor : rows_.GetPredictors()) {
    least_.push_back(numbers[predictor].GetLeast());
    greatest_.push_back(numbers[predictor].GetGreatest());
    centre_.push_back(numbers[predictor].GetCentre());
    perUnit_.push_back(1.0 / numbers[predictor].GetUnit());
  }
}

/// As `PredictorNumbers` has it; NaN for a missing value.
inline double RowSums::MultipleOf(double value, std::size_t position) const {
  double const clamped = Clamp(value, least_[position], greatest_[position]);
  return Round((clamped - centre_[position]) * perUnit_[position]);
}

void RowSums::Add(Range places, ClassSums& sums, RowRanges& ranges) const {
  if (weighted_) {
    AddWeighted(places, sums, ranges);
  } else if (rows_.HasGaps()) {
    AddUnweighted<true>(places, sums, ranges);
  } else {
    AddUnweighted<false>(places, sums, ranges);
  }
}

template <bool HasGaps>
void RowSums::AddUnweighted(Range places, ClassSums& sums, RowRanges& ranges) const {
  std::size_t const width = width_;
  ClassBuffers buffers(numClasses_, (HasGaps ? 6 : 5) * width);
  auto const empty = [&](std::size_t ofClass) {
    double const* const buffer = buffers.Of(ofClass);
    for (std::size_t position = 0; position < width; ++position) {
      auto const held = [&](std::size_t which) { return Whole(buffer[which * width + position]); };
      NumberSums& cell = sums.Of(position)[ofClass];
      std::int64_t const count =
          HasGaps ? static_cast<std::int64_t>(held(5)) : buffers.CountOf(ofClass);
      cell.size += count;
      cell.weight += count;
      cell.sum += held(0) * (1 << 20) + held(1);
      cell.squares += held(2) * (std::int64_t{1} << 40) + held(3) * (1 << 21) + held(4);
    }
    buffers.Clear(ofClass);
  };
  std::uint16_t const* const classes = lists_.GetClasses();
  ForRows(rows_, lists_, places, lists_.GetNumPlaces(),
          [&](std::uint32_t place, double const* row) {
            std::size_t const ofClass = classes[place];
            double* const high = buffers.Of(ofClass);
            AddRow<HasGaps>(width, row, least_.data(), greatest_.data(), centre_.data(),
                            perUnit_.data(), high, high + width, high + 2 * width, high + 3 * width,
                            high + 4 * width, HasGaps ? high + 5 * width : nullptr);
            ranges.Add(row);
            if (buffers.Count(ofClass)) empty(ofClass);
          });
  for (std::size_t ofClass = 0; ofClass < numClasses_; ++ofClass) {
    if (buffers.CountOf(ofClass) > 0) empty(ofClass);
  }
}

void RowSums::AddWeighted(Range places, ClassSums& sums, RowRanges& ranges) const {
  std::uint16_t const* const classes = lists_.GetClasses();
  std::int64_t const* const frequencies = lists_.GetFrequencies();
  ForRows(rows_, lists_, places, lists_.GetNumPlaces(),
          [&](std::uint32_t place, double const* row) {
            std::int64_t const frequency = frequencies == nullptr ? 1 : frequencies[place];
            std::int64_t const weight = lists_.WeightAt(place);
            for (std::size_t position = 0; position < width_; ++position) {
              double const multiple = MultipleOf(row[position], position);
              if (std::isnan(multiple)) continue;
              sums.Of(position)[classes[place]].AddCase(frequency, weight,
                                                        static_cast<std::int64_t>(multiple));
            }
            ranges.Add(row);
          });
}

void RowSums::AddDistances(Range places, std::span<std::int64_t const> means,
                           ClassSums& distances) const {
  if (weighted_) {
    AddWeightedDistances(places, means, distances);
  } else if (rows_.HasGaps()) {
    AddUnweightedDistances<true>(places, means, distances);
  } else {
    AddUnweightedDistances<false>(places, means, distances);
  }
}

template <bool HasGaps>
void RowSums::AddUnweightedDistances(Range places, std::span<std::int64_t const> means,
                                     ClassSums& distances) const {
  std::size_t const width = width_;
  std::vector<double> meansOfClass(numClasses_ * width);  // [class][position]
  for (std::size_t position = 0; position < width; ++position) {
    for (std::size_t ofClass = 0; ofClass < numClasses_; ++ofClass) {
      meansOfClass[ofClass * width + position] =
          static_cast<double>(means[position * numClasses_ + ofClass]);
    }
  }
  // A distance is at most 2^41: doubles hold the sum of as many.
  ClassBuffers buffers(numClasses_, width);
  auto const empty = [&](std::size_t ofClass) {
    double const* const buffer = buffers.Of(ofClass);
    for (std::size_t position = 0; position < width; ++position) {
      distances.Of(position)[ofClass].sum += Whole(buffer[position]);
    }
    buffers.Clear(ofClass);
  };
  std::uint16_t const* const classes = lists_.GetClasses();
  ForRows(rows_, lists_, places, lists_.GetNumPlaces(),
          [&](std::uint32_t place, double const* row) {
            std::size_t const ofClass = classes[place];
            AddRowOfDistances<HasGaps>(width, row, least_.data(), greatest_.data(), centre_.data(),
                                       perUnit_.data(), meansOfClass.data() + ofClass * width,
                                       buffers.Of(ofClass));
            if (buffers.Count(ofClass)) empty(ofClass);
          });
  for (std::size_t ofClass = 0; ofClass < numClasses_; ++ofClass) {
    if (buffers.CountOf(ofClass) > 0) empty(ofClass);
  }
}

void RowSums::AddWeightedDistances(Range places, std::span<std::int64_t const> means,
                                   ClassSums& distances) const {
  std::uint16_t const* const classes = lists_.GetClasses();
  ForRows(rows_, lists_, places, lists_.GetNumPlaces(),
          [&](std::uint32_t place, double const* row) {
            std::int64_t const weight = lists_.WeightAt(place);
            std::size_t const ofClass = classes[place];
            for (std::size_t position = 0; position < width_; ++position) {
              double const multiple = MultipleOf(row[position], position);
              if (std::isnan(multiple)) continue;
              std::int64_t const distance = std::abs(static_cast<std::int64_t>(multiple) -
                                                     means[position * numClasses_ + ofClass]);
              distances.Of(position)[ofClass].sum += WideInteger{weight} * distance;
            }
          });
}

}  // namespace tree::grow
