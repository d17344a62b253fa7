#include "quest/row_sums.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

/// Two sums are equal; not what gtest could print.
bool AreEqual(NumberSums const& a, NumberSums const& b) { return a == b; }

/// What `RowSums` does, case by case, in whole numbers.
class Expected {
 public:
  Expected(PreparedSample const& sample, CaseLists const& lists)
      : data_(sample.GetData()), lists_(lists) {
    for (std::size_t predictor = 0; predictor < data_.GetPredictors().size(); ++predictor) {
      numbers.emplace_back(data_, predictor);
    }
  }
  NumberSums Sums(Range places, std::size_t predictor, std::uint16_t ofClass) const {
    NumberSums sums;
    ForCases(places, predictor, ofClass, [&](std::uint32_t index, std::int64_t multiple) {
      sums.AddCase(data_.GetFrequencies().Of(index), data_.GetWeights().Of(index), multiple);
    });
    return sums;
  }
  WideInteger Distances(Range places, std::size_t predictor, std::uint16_t ofClass,
                        std::int64_t mean) const {
    WideInteger sum = 0;
    ForCases(places, predictor, ofClass, [&](std::uint32_t index, std::int64_t multiple) {
      sum += WideInteger{data_.GetWeights().Of(index)} * std::abs(multiple - mean);
    });
    return sum;
  }

  std::vector<PredictorNumbers> numbers;

 private:
  template <class Visit>
  void ForCases(Range places, std::size_t predictor, std::uint16_t ofClass,
                Visit const& visit) const {
    for (std::uint32_t place = places.begin; place < places.end; ++place) {
      std::uint32_t const index = lists_.CaseAt(place);
      if (data_.GetClasses()[index] != ofClass || data_.IsMissing(predictor, index)) continue;
      visit(index, numbers[predictor].Of(data_.ValueOf(predictor, index)));
    }
  }

  TrainingData const& data_;
  CaseLists const& lists_;
};

void ExpectSums(Sample const& cases, Range places) {
  PreparedSample sample(cases, Form::kInRows);
  CaseLists const lists = sample.MakeLists();
  Expected const expected(sample, lists);
  std::size_t const width = cases.predictors.size();
  std::size_t const numClasses = sample.GetData().GetNumClasses();
  RowSums const rowSums(sample.GetData(), lists, expected.numbers);
  ClassSums sums(width, numClasses);
  RowRanges ranges(sample.GetData().GetCaseRows());

  rowSums.Add(places, sums, ranges);

  std::vector<std::int64_t> means;
  for (std::size_t predictor = 0; predictor < width; ++predictor) {
    for (std::uint16_t ofClass = 0; ofClass < numClasses; ++ofClass) {
      NumberSums const& found = sums.Of(predictor)[ofClass];
      EXPECT_TRUE(AreEqual(found, expected.Sums(places, predictor, ofClass)))
          << "predictor " << predictor << ", class " << ofClass;
      means.push_back(WholeMean(found));
    }
  }
  ClassSums distances(width, numClasses);

  rowSums.AddDistances(places, means, distances);

  for (std::size_t predictor = 0; predictor < width; ++predictor) {
    for (std::uint16_t ofClass = 0; ofClass < numClasses; ++ofClass) {
      EXPECT_TRUE(
          distances.Of(predictor)[ofClass].sum ==
          expected.Distances(places, predictor, ofClass, means[predictor * numClasses + ofClass]))
          << "predictor " << predictor << ", class " << ofClass;
    }
  }
}

/// Values all over the range of doubles, in some predictors missing or infinite in one of so many
/// cases (0: in none).
Sample MakeSample(RandomNumbers& random, std::size_t count, std::uint32_t gapIn) {
  Sample sample{.target = std::vector<double>(count), .predictors = {}};
  for (double& ofClass : sample.target) ofClass = random.Below(3);
  std::size_t const width = 1 + random.Below(5);
  for (std::size_t position = 0; position < width; ++position) {
    Sample::Predictor& predictor = sample.predictors.emplace_back();
    double const scale = std::ldexp(1.0, static_cast<int>(random.Below(200)) - 100);
    double const shift = random.Below(2) == 0 ? 0.0 : random.Multiple(scale, 1000);
    for (std::size_t index = 0; index < count; ++index) {
      double value = shift + scale * random.Multiple(1e-9, 2'000'000'000);
      if (gapIn != 0 && random.Below(gapIn) == 0) {
        value = random.Below(3) == 0 ? HUGE_VAL : random.Below(2) == 0 ? -HUGE_VAL : kMissing;
      }
      predictor.values.push_back(value);
    }
  }
  return sample;
}

TEST(RowSums, AddUpWhatEachCaseHas) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const count = 2 + random.Below(60);
    Sample sample = MakeSample(random, count, seed % 2 == 0 ? 2 + random.Below(9) : 0);
    if (seed % 3 == 0) {
      for (std::size_t index = 0; index < count; ++index) {
        sample.weights.push_back(random.Multiple(seed % 4 == 0 ? 1e12 : 0.3, 9));
      }
    }
    if (seed % 5 == 0) {
      for (std::size_t index = 0; index < count; ++index) {
        sample.frequencies.push_back(random.Multiple(1.0, 4));
      }
      if (sample.weights.empty()) sample.weights = sample.frequencies;
    }
    std::uint32_t const begin = random.Below(count);

    ExpectSums(sample, {begin, begin + random.Below(count - begin + 1)});
  }
}

TEST(RowSums, EmptyWhatTheyHoldOfManyCasesInTime) {
  for (std::uint32_t const gapIn : {0U, 7U}) {
    SCOPED_TRACE(gapIn);
    RandomNumbers random(5);
    Sample sample = MakeSample(random, 20000, gapIn);
    // Half of the cases at each end of the range: no sums are greater.
    for (std::size_t index = 0; index < sample.target.size(); ++index) {
      sample.predictors[0].values[index] = index % 2 == 0 ? -1.0 : 1.0;
      sample.target[index] = index % 8 == 0 ? 2.0 : index % 2 == 0 ? 0.0 : 1.0;
    }

    ExpectSums(sample, {0, 20000});
  }
}

TEST(RowSums, AreTheSameInParts) {
  RandomNumbers random(8);
  PreparedSample sample(MakeSample(random, 50, 5), Form::kInRows);
  CaseLists const lists = sample.MakeLists();
  Expected const expected(sample, lists);
  std::size_t const width = sample.GetData().GetCaseRows().GetWidth();
  RowSums const rowSums(sample.GetData(), lists, expected.numbers);
  ClassSums sums(width, 3);
  ClassSums others(width, 3);
  RowRanges ranges(sample.GetData().GetCaseRows());

  rowSums.Add({0, 20}, sums, ranges);
  rowSums.Add({20, 50}, others, ranges);
  sums += others;

  for (std::size_t predictor = 0; predictor < width; ++predictor) {
    for (std::uint16_t ofClass = 0; ofClass < 3; ++ofClass) {
      EXPECT_TRUE(
          AreEqual(sums.Of(predictor)[ofClass], expected.Sums({0, 50}, predictor, ofClass)));
    }
  }
}

}  // namespace
}  // namespace tree::grow
