#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tree/grow/data_set.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

double const kMissing = systemMissingValue();

/// Columns of six cases: 0 target, 1 frequency weight, 2 case weight, 3 sample, 4 predictor.
DataSet SixCases(std::vector<double> target, std::vector<double> frequency,
                 std::vector<double> caseWeight, std::vector<double> sample) {
  DataSet data(6);
  auto const add = [&data](char const* name, std::vector<double> values) {
    ColumnDescription description;
    description.name = name;
    if (values.empty()) values.assign(6, 1.0);
    data.AddColumn(description, std::move(values));
  };
  add("target", std::move(target));
  add("frequency", std::move(frequency));
  add("weight", std::move(caseWeight));
  add("sample", std::move(sample));
  add("x", {});
  return data;
}

CaseRoles AllRoles() { return {0, {4}, 1, 2, 3}; }

TEST(CaseSelection, TakesEveryCaseIntoTheTrainingSampleUnlessToldOtherwise) {
  DataSet const data = SixCases({}, {}, {}, {});

  CaseSelection const selection(data, {0, {4}});

  EXPECT_THAT(selection.GetRows(TrainingSample), ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_THAT(selection.GetRows(TestSample), IsEmpty());
  EXPECT_THAT(selection.GetWeights(TrainingSample), IsEmpty());
  EXPECT_THAT(selection.GetFrequencies(TrainingSample), IsEmpty());
}

TEST(CaseSelection, LeavesOutCasesWithoutTarget) {
  DataSet const data = SixCases({1, kMissing, 1, kMissing, 1, 1}, {}, {}, {});

  CaseSelection const selection(data, {0, {4}});

  EXPECT_THAT(selection.GetRows(TrainingSample), ElementsAre(0, 2, 4, 5));
  EXPECT_EQ(selection.GetLeftOut().missingTarget, 2U);
}

TEST(CaseSelection, LeavesOutCasesThatWeighNothing) {
  DataSet const data = SixCases({}, {1, 0, -1, kMissing, 2, 0.5}, {1, 1, 1, 1, 0, 3}, {});

  CaseSelection const selection(data, {0, {4}, 1, 2});

  EXPECT_THAT(selection.GetRows(TrainingSample), ElementsAre(0, 5));
  EXPECT_EQ(selection.GetLeftOut().frequencyWeight, 3U);
  EXPECT_EQ(selection.GetLeftOut().caseWeight, 1U);
}

TEST(CaseSelection, MultipliesFrequencyAndCaseWeight) {
  DataSet const data = SixCases({}, {1, 2, 3, 4, 5, 6}, {0.5, 0.5, 2, 2, 1, 1}, {});

  CaseSelection const selection(data, {0, {4}, 1, 2});

  EXPECT_THAT(selection.GetWeights(TrainingSample), ElementsAre(0.5, 1, 6, 8, 5, 6));
  EXPECT_THAT(selection.GetFrequencies(TrainingSample), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST(CaseSelection, TakesOneKindOfWeightAlone) {
  DataSet const data = SixCases({}, {1, 2, 3, 4, 5, 6}, {0.5, 0.5, 2, 2, 1, 1}, {});

  CaseSelection const byFrequency(data, {0, {4}, 1});
  CaseSelection const byWeight(data, {0, {4}, std::nullopt, 2});

  EXPECT_THAT(byFrequency.GetWeights(TrainingSample), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(byFrequency.GetFrequencies(TrainingSample), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(byWeight.GetWeights(TrainingSample), ElementsAre(0.5, 0.5, 2, 2, 1, 1));
  EXPECT_THAT(byWeight.GetFrequencies(TrainingSample), IsEmpty());
}

TEST(CaseSelection, PutsCasesIntoTheSampleThatTheirColumnSays) {
  DataSet const data = SixCases({}, {1, 2, 3, 4, 5, 6}, {}, {0, 1, 0, -1, kMissing, 0.5});

  CaseSelection const selection(data, AllRoles());

  EXPECT_THAT(selection.GetRows(TrainingSample), ElementsAre(0, 2));
  EXPECT_THAT(selection.GetRows(TestSample), ElementsAre(1, 3, 5));
  EXPECT_THAT(selection.GetFrequencies(TestSample), ElementsAre(2, 4, 6));
  EXPECT_EQ(selection.GetLeftOut().sample, 1U);
}

TEST(CaseSelection, CountsACaseWithSeveralReasonsOnce) {
  DataSet const data = SixCases({kMissing, 1, 1, 1, 1, 1}, {0, 0, 1, 1, 1, 1}, {0, 0, 0, 1, 1, 1},
                                {kMissing, kMissing, kMissing, kMissing, 0, 0});

  CaseSelection const selection(data, AllRoles());

  EXPECT_EQ(selection.GetLeftOut().missingTarget, 1U);
  EXPECT_EQ(selection.GetLeftOut().frequencyWeight, 1U);
  EXPECT_EQ(selection.GetLeftOut().caseWeight, 1U);
  EXPECT_EQ(selection.GetLeftOut().sample, 1U);
  EXPECT_THAT(selection.GetRows(TrainingSample), ElementsAre(4, 5));
}

TEST(CaseSelection, RefusesAnInfiniteWeight) {
  double const infinity = std::numeric_limits<double>::infinity();
  DataSet const data = SixCases({}, {}, {1, 1, infinity, 1, 1, 1}, {});

  try {
    CaseSelection const selection(data, AllRoles());
    FAIL() << "took an infinite weight";
  } catch (InputError const& error) {
    EXPECT_STREQ(error.what(), "column \"weight\": case 2: a weight cannot be infinite");
  }
}

TEST(CaseSelection, SaysWhichCaseItCannotUse) {
  DataSet const data = SixCases({}, {1, 1, 1, -std::numeric_limits<double>::infinity(), 1, 1},
                                {1, 1, 1, 1, std::numeric_limits<double>::infinity(), 1}, {});

  try {
    CaseSelection const selection(data, AllRoles());
    FAIL() << "took an infinite weight";
  } catch (CaseError const& error) {
    EXPECT_EQ(error.GetWhere(), "column \"weight\"");
    EXPECT_EQ(error.GetRow(), 4U);
    EXPECT_EQ(error.GetWhy(), "a weight cannot be infinite");
  }
}

TEST(CaseSelection, RefusesWeightsThatAreInfiniteTogether) {
  struct {
    char const* name;
    std::vector<double> frequency;
    std::vector<double> weight;
    char const* message;
  } const kRows[] = {
      {"product",
       {1, 1e200, 1, 1, 1, 1},
       {1, 1e200, 1, 1, 1, 1},
       "columns \"frequency\" and \"weight\": case 1: 1e+200 times 1e+200 cannot be a weight"},
      {"sum",
       {1, 1e200, 1, 1e200, 1, 1},
       {1, 1e108, 1, 1e108, 1, 1},
       "columns \"frequency\" and \"weight\": the weights add up to more than a number can be"},
      {"sum of one column",
       {1e308, 1e308, 1, 1, 1, 1},
       {},
       "columns \"frequency\" and \"weight\": the weights add up to more than a number can be"},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    DataSet const data = SixCases({}, row.frequency, row.weight, {});
    try {
      CaseSelection const selection(data, AllRoles());
      ADD_FAILURE() << "took the weights";
    } catch (InputError const& error) {
      EXPECT_STREQ(error.what(), row.message);
    }
  }
}

TEST(CaseSelection, NamesTheOneColumnWhoseWeightsAreTooLarge) {
  DataSet const data = SixCases({}, {}, {1e308, 1e308, 1, 1, 1, 1}, {});
  CaseRoles roles = AllRoles();
  roles.frequencyWeight.reset();

  try {
    CaseSelection const selection(data, roles);
    FAIL() << "took the weights";
  } catch (InputError const& error) {
    EXPECT_STREQ(error.what(),
                 "column \"weight\": the weights add up to more than a number can be");
  }
}

/// Both readers of the roles refuse the same.
void ExpectRefused(DataSet const& data, CaseRoles const& roles, std::string const& message) {
  try {
    CaseSelection const selection(data, roles);
    ADD_FAILURE() << "selected cases";
  } catch (InputError const& error) {
    EXPECT_EQ(error.what(), message);
  }
  try {
    MakeCoreSettings(data, roles);
    ADD_FAILURE() << "made settings";
  } catch (InputError const& error) {
    EXPECT_EQ(error.what(), message);
  }
}

TEST(CaseRoles, MustNameColumnsThatExist) {
  DataSet const data = SixCases({}, {}, {}, {});

  ExpectRefused(data, {5, {4}}, "there is no column with index 5");
  ExpectRefused(data, {-1, {4}}, "there is no column with index -1");
  ExpectRefused(data, {0, {4, 7}}, "there is no column with index 7");
  ExpectRefused(data, {0, {4}, 8}, "there is no column with index 8");
  ExpectRefused(data, {0, {4}, 1, 9}, "there is no column with index 9");
  ExpectRefused(data, {0, {4}, 1, 2, 10}, "there is no column with index 10");
}

TEST(CaseRoles, MustGiveAColumnOnePartAtMost) {
  DataSet const data = SixCases({}, {}, {}, {});

  ExpectRefused(data, {0, {4, 0}}, "column \"target\" is given two parts to play");
  ExpectRefused(data, {0, {4, 4}}, "column \"x\" is given two parts to play");
  ExpectRefused(data, {0, {4}, 1, 1}, "column \"frequency\" is given two parts to play");
}

TEST(MakeCoreSettings, DescribesTargetAndPredictorsInOrder) {
  DataSet data(3);
  ColumnDescription species;
  species.name = "species";
  species.level = global::MeasurementNominal;
  species.labels = {"Adelie", "Gentoo"};
  data.AddColumn(species, {0, 1, 0});
  ColumnDescription size;
  size.name = "size";
  size.level = global::MeasurementOrdinal;
  size.labels = {"small", "middle", "large"};
  size.missingValue = 99.0;
  data.AddColumn(size, {0, 1, 99});
  ColumnDescription code;
  code.name = "code";
  code.level = global::MeasurementNominal;
  data.AddColumn(code, {4, systemMissingValue(), 1});
  ColumnDescription mass;
  mass.name = "mass";
  data.AddColumn(mass, {1.5, 2.5, 3.5});

  CoreSettingsImp const core = MakeCoreSettings(data, {0, {3, 2, 1}});

  EXPECT_EQ(core.GetTarget()->GetMeasurementLevel(), global::MeasurementNominal);
  EXPECT_EQ(core.GetTarget()->GetNumValues(), 2);
  ASSERT_EQ(core.GetNumPredictors(), 3);
  EXPECT_EQ(core.GetPredictor(0)->GetMeasurementLevel(), global::MeasurementContinuous);
  EXPECT_EQ(core.GetPredictor(0)->GetNumValues(), 0);
  EXPECT_EQ(core.GetPredictor(1)->GetMeasurementLevel(), global::MeasurementNominal);
  EXPECT_EQ(core.GetPredictor(1)->GetNumValues(), 5) << "one more than the highest code";
  EXPECT_EQ(core.GetPredictor(2)->GetMeasurementLevel(), global::MeasurementOrdinal);
  EXPECT_EQ(core.GetPredictor(2)->GetNumValues(), 3);
  EXPECT_EQ(core.GetPredictor(2)->GetMissingValue(), 99.0);
  EXPECT_FALSE(core.HasFreqWeight());
  EXPECT_FALSE(core.HasCaseWeight());
}

TEST(MakeCoreSettings, SaysWhichWeightsThereAre) {
  DataSet const data = SixCases({}, {}, {}, {});

  EXPECT_TRUE(MakeCoreSettings(data, {0, {4}, 1}).HasFreqWeight());
  EXPECT_FALSE(MakeCoreSettings(data, {0, {4}, 1}).HasCaseWeight());
  EXPECT_FALSE(MakeCoreSettings(data, {0, {4}, std::nullopt, 2}).HasFreqWeight());
  EXPECT_TRUE(MakeCoreSettings(data, {0, {4}, std::nullopt, 2}).HasCaseWeight());
}

TEST(CaseSelection, EndsWhereItIsPolled) {
  struct Enough {};
  DataSet const data = SixCases({}, {}, {}, {});
  int numPolls = 0;

  CaseSelection const selection(data, {0, {4}}, [&numPolls] { ++numPolls; });

  EXPECT_EQ(numPolls, 1);
  EXPECT_EQ(selection.GetRows(TrainingSample).size(),
            CaseSelection(data, {0, {4}}).GetRows(TrainingSample).size());
  EXPECT_THROW(CaseSelection(data, {0, {4}}, [] { throw Enough(); }), Enough);
}

}  // namespace
}  // namespace tree::grow
