#include "growing/training_data.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint16_t kNone = GrowingPredictor::kMissingCode;

std::vector<double> Counting(std::size_t count) {
  std::vector<double> values(count);
  std::iota(values.begin(), values.end(), 0.0);
  return values;
}

/// Data with a target of this level and the rows of all cases.
struct TargetOnly {
  TargetOnly(std::vector<double> const& values, global::MeasurementLevel level,
             std::vector<std::string> const& labels = {})
      : data(values.size()) {
    data.AddColumn({"y", level, labels, kMissing}, values);
  }
  TrainingData Read() const {
    std::vector<std::size_t> rows(data.GetNumCases());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    return TrainingData(data, roles, CCartSettingsImp(CoreSettingsImp()), rows, {}, {});
  }
  std::string Refusal() const {
    try {
      static_cast<void>(Read());
    } catch (InputError const& error) {
      return error.what();
    }
    return "";
  }

  DataSet data;
  CaseRoles roles;
};

TEST(TrainingData, ReadsClassesAndCountsThem) {
  PreparedSample const sample({.target = {0.0, 3.0, 1.0}});

  EXPECT_THAT(sample.GetData().GetClasses(), ElementsAre(0, 3, 1));
  EXPECT_EQ(sample.GetData().GetNumClasses(), 4U);
  EXPECT_THAT(sample.GetData().GetNumbers().multiples, IsEmpty());
}

TEST(TrainingData, KnowsClassesThatHaveALabelOnly) {
  TargetOnly const target({0.0, 1.0}, global::MeasurementNominal, {"a", "b", "c"});

  EXPECT_EQ(target.Read().GetNumClasses(), 3U);
}

TEST(TrainingData, TakesOrdinalTargetsForClasses) {
  TargetOnly const target({0.0, 2.0}, global::MeasurementOrdinal);

  EXPECT_THAT(target.Read().GetClasses(), ElementsAre(0, 2));
}

TEST(TrainingData, ReadsNumbers) {
  PreparedSample const sample({.target = {1.5, -2.5}, .hasClasses = false});

  EXPECT_EQ(sample.GetData().GetNumClasses(), 0U);
  EXPECT_THAT(sample.GetData().GetClasses(), IsEmpty());
  FixedNumbers const& numbers = sample.GetData().GetNumbers();
  EXPECT_EQ(numbers.ValueOf(static_cast<double>(numbers.multiples[0])), 1.5);
  EXPECT_EQ(numbers.ValueOf(static_cast<double>(numbers.multiples[1])), -2.5);
}

TEST(TrainingData, RefusesTargetsThatCannotBePredicted) {
  double const infinity = std::numeric_limits<double>::infinity();
  struct {
    char const* name;
    double value;
    global::MeasurementLevel level;
    char const* why;
  } const kRows[] = {
      {"a fraction", 0.5, global::MeasurementOrdinal, "is no class code"},
      {"a negative code", -1.0, global::MeasurementOrdinal, "is no class code"},
      {"infinite code", infinity, global::MeasurementOrdinal, "more than the number of classes"},
      {"too large a code", 65535.0, global::MeasurementNominal, "more than the number of classes"},
      {"infinite number", -infinity, global::MeasurementContinuous, "cannot be predicted"},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    TargetOnly const target({0.0, 1.0, row.value}, row.level);

    EXPECT_THAT(target.Refusal(), HasSubstr(row.why));
    EXPECT_THAT(target.Refusal(), HasSubstr("column \"y\": case 2"));
  }
}

TEST(TrainingData, SupportsThisManyClasses) {
  TargetOnly const target({0.0, 65534.0}, global::MeasurementNominal);

  EXPECT_EQ(target.Read().GetNumClasses(), 65535U);
}

TEST(TrainingData, ReadsTheRowsThatItIsGivenOnly) {
  DataSet data(4);
  data.AddColumn({"y", global::MeasurementNominal, {}, kMissing}, {0.0, kMissing, 1.0, 0.0});
  data.AddColumn({"x", global::MeasurementContinuous, {}, kMissing}, {5.0, 6.0, 7.0, 8.0});
  CaseRoles const roles{.target = 0, .predictors = {1}};
  CCartSettingsImp const settings(MakeCoreSettings(data, roles));

  TrainingData const training(data, roles, settings, {0, 2, 3}, {1.5, 2.0, 2.5}, {1.0, 2.0, 3.0});

  EXPECT_EQ(training.GetNumCases(), 3U);
  EXPECT_THAT(training.GetRows(), ElementsAre(0, 2, 3));
  EXPECT_THAT(training.GetClasses(), ElementsAre(0, 1, 0));
  EXPECT_EQ(training.ValueOf(0, 1), 7.0);
  EXPECT_EQ(static_cast<double>(training.GetWeights().Of(2)) * training.GetWeights().unit, 2.5);
  EXPECT_EQ(training.GetFrequencies().Of(2), 3);
  EXPECT_THAT(training.GetPredictorColumns(), ElementsAre(1));
  EXPECT_EQ(&training.GetData(), &data);
}

TEST(TrainingData, CopiesTheValuesOfACase) {
  PreparedSample const sample(
      {.target = {0.0, 1.0}, .predictors = {{{5.0, 6.0}}, {{1.0, kMissing}, true}}});
  std::vector<double> values(2);

  sample.GetData().CopyValues(1, values.data());

  EXPECT_THAT(values, ElementsAre(6.0, kMissing));
}

TEST(TrainingData, CodesNominalPredictorsByTheirValues) {
  PreparedSample const sample(
      {.target = {0.0, 1.0, 0.0, 1.0}, .predictors = {{{7.0, 2.0, kMissing, 7.0}, true}}});
  GrowingPredictor const& predictor = sample.GetData().GetPredictors()[0];

  EXPECT_TRUE(predictor.IsNominal());
  EXPECT_TRUE(predictor.IsCoded());
  EXPECT_TRUE(predictor.used);
  EXPECT_TRUE(predictor.hasMissing);
  EXPECT_THAT(predictor.values, ElementsAre(2.0, 7.0));
  EXPECT_THAT(predictor.codes, ElementsAre(1, 0, kNone, 1));
}

TEST(TrainingData, CodesOrderedPredictorsWithFewValues) {
  PreparedSample const sample(
      {.target = {0.0, 1.0, 0.0, 1.0}, .predictors = {{{7.5, -2.0, 0.0, 7.5}}}});
  GrowingPredictor const& predictor = sample.GetData().GetPredictors()[0];

  EXPECT_FALSE(predictor.IsNominal());
  EXPECT_FALSE(predictor.hasMissing);
  EXPECT_THAT(predictor.values, ElementsAre(-2.0, 0.0, 7.5));
  EXPECT_THAT(predictor.codes, ElementsAre(2, 0, 1, 2));
}

TEST(TrainingData, CodesOrderedPredictorsUpToALimitAndSortsOthers) {
  for (std::size_t const count : {256U, 257U}) {
    SCOPED_TRACE(count);
    PreparedSample const sample(
        {.target = std::vector<double>(count), .predictors = {{Counting(count)}}});
    GrowingPredictor const& predictor = sample.GetData().GetPredictors()[0];

    EXPECT_EQ(predictor.IsCoded(), count == 256);
    EXPECT_EQ(predictor.sorted.size(), count == 256 ? 0U : count);
    EXPECT_TRUE(predictor.used);
  }
}

TEST(TrainingData, TakesAnotherLimitOfCodes) {
  std::vector<double> const values = {3.0, 1.0, 2.0, 1.0};
  DataSet data(4);
  data.AddColumn({"y", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 0.0, 1.0});
  data.AddColumn({"x", global::MeasurementContinuous, {}, kMissing}, values);
  data.AddColumn({"z", global::MeasurementNominal, {}, kMissing}, values);
  CaseRoles const roles{.target = 0, .predictors = {1, 2}};
  CCartSettingsImp const settings(MakeCoreSettings(data, roles));
  for (int const limit : {0, 2, 3}) {
    SCOPED_TRACE(limit);
    TrainingData training(data, roles, settings, {0, 1, 2, 3}, {}, {}, limit);
    Workers workers(1);
    workers.Begin();

    training.PreparePredictors(workers);

    EXPECT_EQ(training.GetPredictors()[0].IsCoded(), limit == 3);
    EXPECT_TRUE(training.GetPredictors()[1].IsCoded()) << "nominal predictors are always coded";
  }
}

TEST(TrainingData, SortsTheCasesThatHaveAValue) {
  std::vector<double> values = Counting(300);
  std::reverse(values.begin(), values.end());
  values[299] = kMissing;
  values[0] = values[1];
  PreparedSample const sample({.target = std::vector<double>(300), .predictors = {{values}}});
  GrowingPredictor const& predictor = sample.GetData().GetPredictors()[0];

  EXPECT_TRUE(predictor.hasMissing);
  EXPECT_TRUE(predictor.hasTies);
  ASSERT_EQ(predictor.sorted.size(), 299U);
  EXPECT_EQ(predictor.sorted[0].Place(), 298U);
  EXPECT_EQ(predictor.sorted[297].Place(), 0U);
  EXPECT_EQ(predictor.sorted[298].Place(), 1U);
  EXPECT_FALSE(predictor.sorted[298].StartsValue());
}

TEST(TrainingData, KnowsWhereThereAreNoTies) {
  PreparedSample const sample(
      {.target = std::vector<double>(300), .predictors = {{Counting(300)}}});

  EXPECT_FALSE(sample.GetData().GetPredictors()[0].hasTies);
}

TEST(TrainingData, CodesPredictorsWithoutAnyValue) {
  PreparedSample const sample(
      {.target = {0.0, 1.0}, .predictors = {{{kMissing, kMissing}}, {{kMissing, kMissing}, true}}});

  for (GrowingPredictor const& predictor : sample.GetData().GetPredictors()) {
    EXPECT_TRUE(predictor.hasMissing);
    EXPECT_THAT(predictor.values, IsEmpty());
    EXPECT_THAT(predictor.codes, ElementsAre(kNone, kNone));
  }
}

TEST(TrainingData, LeavesOutPredictorsWithTooManyCategories) {
  for (std::size_t const count : {32U, 33U}) {
    SCOPED_TRACE(count);
    PreparedSample const sample(
        {.target = std::vector<double>(count), .predictors = {{Counting(count), true}}});

    EXPECT_EQ(sample.GetData().GetPredictors()[0].used, count == 32);
    if (count == 32) {
      EXPECT_THAT(sample.GetData().GetRemarks(), IsEmpty());
    } else {
      EXPECT_THAT(
          sample.GetData().GetRemarks(),
          ElementsAre("predictor \"x0\" is not used: it has 33 categories, and the settings "
                      "allow 32"));
    }
  }
}

TEST(TrainingData, LeavesOutPredictorsWithHugeCodes) {
  PreparedSample const sample({.target = {0.0, 1.0, 0.0},
                               .predictors = {{{1e6, 0.0, kMissing}, true},
                                              {{1e6 + 1.0, 0.0, kMissing}, true},
                                              {{1e6 + 1.0, 0.0, kMissing}}}});

  EXPECT_TRUE(sample.GetData().GetPredictors()[0].used);
  EXPECT_FALSE(sample.GetData().GetPredictors()[1].used);
  EXPECT_TRUE(sample.GetData().GetPredictors()[2].used);
  EXPECT_THAT(sample.GetData().GetRemarks(),
              ElementsAre("predictor \"x1\" is not used: the code of one of its categories is more "
                          "than 1000000"));
}

TEST(TrainingData, LeavesOutPredictorsWithMoreCategoriesThanCodes) {
  for (std::size_t const count : {65535U, 65536U, 65600U}) {
    SCOPED_TRACE(count);
    DataSet data(count);
    data.AddColumn({"y", global::MeasurementContinuous, {}, kMissing}, Counting(count));
    data.AddColumn({"x", global::MeasurementNominal, {}, kMissing}, Counting(count));
    CaseRoles const roles{.target = 0, .predictors = {1}};
    RCartSettingsImp settings(MakeCoreSettings(data, roles));
    settings.SetMaxNominalPredCategories(100000);
    std::vector<std::size_t> rows(count);
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    TrainingData training(data, roles, settings, rows, {}, {});
    Workers workers(1);
    workers.Begin();

    training.PreparePredictors(workers);

    EXPECT_EQ(training.GetPredictors()[0].used, count == 65535);
    if (count == 65535) {
      EXPECT_EQ(training.GetPredictors()[0].codes[65534], 65534);
    } else {
      EXPECT_THAT(training.GetPredictors()[0].codes, IsEmpty());
      EXPECT_THAT(training.GetRemarks(),
                  ElementsAre("predictor \"x\" is not used: it has " + std::to_string(count) +
                              " categories, and no more than 65535 are supported"));
    }
  }
}

TEST(TrainingData, PreparesPredictorsOnce) {
  std::vector<double> categories = {5.0, 7.0, 5.0};
  std::vector<double> numbers = {0.5, -1.0, 2.0};
  DataSet data(3);
  data.AddColumn({"y", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 0.0});
  data.AddColumn({"x", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 2.0});
  data.BorrowColumn({"z", global::MeasurementNominal, {}, kMissing}, categories.data());
  data.BorrowColumn({"w", global::MeasurementContinuous, {}, kMissing}, numbers.data());
  CaseRoles const roles{.target = 0, .predictors = {1, 2, 3}};
  CCartSettingsImp settings(MakeCoreSettings(data, roles));
  settings.SetMaxNominalPredCategories(2);
  TrainingData training(data, roles, settings, {0, 1, 2}, {}, {}, 0, 0, OrderedForm::kSorted);
  Workers workers(1);
  workers.Begin();

  training.PreparePredictors(workers);
  categories[1] = 8.0;
  numbers[0] = 9.0;  // the greatest instead of the middle one
  training.PreparePredictors(workers);

  EXPECT_EQ(training.GetRemarks().size(), 1U);
  auto const& predictors = training.GetPredictors();
  EXPECT_THAT(predictors[0].values, IsEmpty()) << "it is not used";
  EXPECT_THAT(predictors[1].values, ElementsAre(5.0, 7.0));
  ASSERT_EQ(predictors[2].sorted.size(), 3U);
  EXPECT_EQ(predictors[2].sorted[1].Place(), 0U);
  EXPECT_EQ(predictors[2].sorted[2].Place(), 2U);
}

TEST(TrainingData, MakesReleasedListsAgain) {
  DataSet data(4);
  data.AddColumn({"y", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 0.0, 1.0});
  data.AddColumn({"x", global::MeasurementContinuous, {}, kMissing}, {0.5, -1.0, 2.0, 0.5});
  data.AddColumn({"c", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 2.0, 3.0});
  CaseRoles const roles{.target = 0, .predictors = {1, 2}};
  CCartSettingsImp settings(MakeCoreSettings(data, roles));
  settings.SetMaxNominalPredCategories(2);
  TrainingData training(data, roles, settings, {0, 1, 2, 3}, {}, {}, 0);
  Workers workers(1);
  workers.Begin();
  training.PreparePredictors(workers);
  GrowingPredictor const& predictor = training.GetPredictors()[0];
  auto const places = [](std::vector<SortedCase> const& list) {
    std::vector<std::uint32_t> found;
    for (SortedCase const item : list) found.push_back(item.Place());
    return found;
  };

  std::vector<std::vector<SortedCase>> const released = training.ReleaseSorted();

  EXPECT_THAT(places(released[0]), testing::ElementsAre(1, 0, 3, 2));
  EXPECT_TRUE(released[1].empty());
  EXPECT_TRUE(predictor.sorted.empty());

  training.PreparePredictors(workers);

  EXPECT_EQ(places(predictor.sorted), places(released[0]));
  EXPECT_TRUE(predictor.hasTies);
  EXPECT_FALSE(training.GetPredictors()[1].used);
  EXPECT_THAT(training.GetPredictors()[1].codes, IsEmpty());
  EXPECT_EQ(training.GetRemarks().size(), 1U);
}

TEST(TrainingData, HoldsOrderedPredictorsInTheFormThatIsWanted) {
  DataSet data(4);
  data.AddColumn({"y", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 0.0, 1.0});
  data.AddColumn({"x", global::MeasurementContinuous, {}, kMissing}, {0.5, -1.0, kMissing, 4.0});
  data.AddColumn({"c", global::MeasurementNominal, {}, kMissing}, {0.0, 1.0, 1.0, 0.0});
  data.AddColumn({"few", global::MeasurementContinuous, {}, kMissing}, {1.0, 2.0, 1.0, 2.0});
  data.AddColumn({"z", global::MeasurementContinuous, {}, kMissing}, {5.0, 6.0, 7.0, 8.0});
  CaseRoles const roles{.target = 0, .predictors = {1, 2, 3, 4}};
  CCartSettingsImp const settings(MakeCoreSettings(data, roles));
  struct {
    char const* name;
    OrderedForm form;
    bool isSorted;
    bool isInRows;
  } const kRows[] = {
      {"sorted", OrderedForm::kSorted, true, false},
      {"in rows", OrderedForm::kInRows, false, true},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    TrainingData training(data, roles, settings, {0, 1, 2, 3}, {}, {}, 2, 0, row.form);
    Workers workers(1);
    workers.Begin();

    // Once more after lists were released.
    for (int attempt = 0; attempt < 2; ++attempt) {
      training.PreparePredictors(workers);

      auto const& predictors = training.GetPredictors();
      EXPECT_EQ(predictors[0].isSorted, row.isSorted);
      EXPECT_EQ(predictors[0].sorted.size(), row.isSorted ? 3U : 0U);
      EXPECT_EQ(predictors[3].sorted.size(), row.isSorted ? 4U : 0U);
      EXPECT_FALSE(predictors[1].isSorted || predictors[1].isInRows);
      EXPECT_FALSE(predictors[2].isSorted || predictors[2].isInRows);
      EXPECT_EQ(predictors[0].isInRows, row.isInRows);
      EXPECT_EQ(predictors[3].isInRows, row.isInRows);
      CaseRows const& rows = training.GetCaseRows();
      if (row.isInRows) {
        EXPECT_THAT(
            std::vector<std::size_t>(rows.GetPredictors().begin(), rows.GetPredictors().end()),
            ElementsAre(0U, 3U));
        EXPECT_THAT(std::vector<double>(rows.Of(3), rows.Of(3) + 2), ElementsAre(4.0, 8.0));
      } else {
        EXPECT_TRUE(rows.IsEmpty());
      }
      static_cast<void>(training.ReleaseSorted());
    }
  }
}

}  // namespace
}  // namespace tree::grow
