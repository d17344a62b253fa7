#include "quest/predictor_numbers.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

/// A sample of one ordered predictor.
Sample MakeSample(std::vector<double> const& values) {
  Sample sample;
  for (std::size_t index = 0; index < values.size(); ++index) {
    sample.target.push_back(static_cast<double>(index % 2));
  }
  sample.predictors = {{values, false}};
  return sample;
}

TEST(PredictorNumbers, GiveBackValuesSortedOrCoded) {
  std::vector<double> const values = {-3.5, 12.25, 0.1, kMissing, 7.0};
  for (Form const form : {Form::kSorted, Form::kCoded}) {
    PreparedSample const prepared(MakeSample(values), form);

    PredictorNumbers const numbers(prepared.GetData(), 0);

    for (double const value : values) {
      if (value == kMissing) continue;
      EXPECT_NEAR(numbers.ValueOf(static_cast<double>(numbers.Of(value))), value,
                  std::ldexp(15.75, -40));
    }
    EXPECT_EQ(numbers.Of(-3.5), -numbers.Of(12.25));
  }
}

TEST(PredictorNumbers, KeepTheOrderOfValues) {
  PreparedSample const prepared(MakeSample({1.0, 1.0 + 1e-10, 2.0}));

  PredictorNumbers const numbers(prepared.GetData(), 0);

  EXPECT_LT(numbers.Of(1.0), numbers.Of(1.0 + 1e-10));
}

TEST(PredictorNumbers, LeaveRoomForSquaresOfDifferencesTimesWeights) {
  Sample sample = MakeSample({-1e6, 1e6, 3.0});
  sample.weights = {0.1, 0.7, 0.35};
  PreparedSample const prepared(sample);

  PredictorNumbers const numbers(prepared.GetData(), 0);

  long double const range =
      static_cast<long double>(numbers.Of(1e6)) - static_cast<long double>(numbers.Of(-1e6));
  long double weight = 0.0L;
  for (std::int64_t const multiple : prepared.GetData().GetWeights().multiples) weight += multiple;
  EXPECT_LT(range * range * weight, std::ldexp(1.0L, 126));
  EXPECT_NEAR(numbers.ValueOf(static_cast<double>(numbers.Of(3.0))), 3.0, 1e-4);
}

TEST(PredictorNumbers, PutInfiniteValuesBeyondTheFiniteOnes) {
  double const infinity = std::numeric_limits<double>::infinity();
  PreparedSample const prepared(MakeSample({1.0, infinity, 2.0, -infinity}));

  PredictorNumbers const numbers(prepared.GetData(), 0);

  EXPECT_NEAR(numbers.ValueOf(static_cast<double>(numbers.Of(infinity))), 3.0, 1e-9);
  EXPECT_NEAR(numbers.ValueOf(static_cast<double>(numbers.Of(-infinity))), 0.0, 1e-9);
}

TEST(PredictorNumbers, TellInfiniteValuesFromLargeOnes) {
  double const infinity = std::numeric_limits<double>::infinity();
  for (auto const& values :
       {std::vector<double>{1e17, infinity}, {-1.5e308, 1.5e308, infinity}, {1.7e308, infinity}}) {
    SCOPED_TRACE(values.front());
    double const finite = values[values.size() - 2];
    PreparedSample const high(MakeSample(values));
    PredictorNumbers const numbers(high.GetData(), 0);
    EXPECT_GT(numbers.Of(infinity), numbers.Of(finite));

    std::vector<double> mirrored(values);
    for (double& value : mirrored) value = -value;
    PreparedSample const low(MakeSample(mirrored));
    PredictorNumbers const ofMirrored(low.GetData(), 0);
    EXPECT_LT(ofMirrored.Of(-infinity), ofMirrored.Of(-finite));
  }
}

TEST(PredictorNumbers, KnowOneValueAndNone) {
  PreparedSample const one(MakeSample({4.5, 4.5}));
  PreparedSample const none(MakeSample({kMissing, kMissing}));

  PredictorNumbers const numbers(one.GetData(), 0);

  EXPECT_EQ(numbers.ValueOf(static_cast<double>(numbers.Of(4.5))), 4.5);
  EXPECT_EQ(PredictorNumbers(none.GetData(), 0).Of(0.0), 0);
}

TEST(PredictorNumbers, SpanTheLargestRange) {
  double const largest = std::numeric_limits<double>::max();
  PreparedSample const prepared(MakeSample({-largest, largest, 0.0}));

  PredictorNumbers const numbers(prepared.GetData(), 0);

  EXPECT_EQ(numbers.Of(0.0), 0);
  EXPECT_EQ(numbers.Of(-largest), -numbers.Of(largest));
  EXPECT_GT(numbers.Of(largest), std::int64_t{1} << 30);
}

}  // namespace
}  // namespace tree::grow
