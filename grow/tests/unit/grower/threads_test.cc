// What several threads do at the same time, for the thread sanitizer to look at.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"

namespace tree::grow {
namespace {

/// Sorted, coded and nominal predictors, some values missing.
SampleData Mixed() {
  RandomNumbers random(1);
  std::size_t const numCases = 3000;
  auto const draw = [&](std::uint32_t numValues, bool missing) {
    std::vector<double> values;
    for (std::size_t row = 0; row < numCases; ++row) {
      bool const gap = missing && random.Below(8) == 0;
      values.push_back(gap ? systemMissingValue() : static_cast<double>(random.Below(numValues)));
    }
    return values;
  };
  std::vector<double> const signal = draw(2000, false);
  std::vector<double> classes;
  for (double const value : signal) {
    classes.push_back((value < 1000.0) != (random.Below(4) == 0) ? 0.0 : 1.0);
  }
  SampleData data(numCases);
  data.Classes(classes).Ordered(signal).Ordered(draw(2000, true)).Ordered(draw(5, true));
  data.Nominal(draw(6, true)).Nominal(draw(4, false));
  return data;
}

std::string Work(SampleData const& data, int numThreads) {
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  settings.GetValidationSpec()->SetNumCVFolds(3);
  auto const grower = data.Make(settings, {numThreads});
  EXPECT_TRUE(grower->Grow());
  EXPECT_TRUE(grower->Prune());
  EXPECT_TRUE(grower->Validate());
  return Describe(*grower->GetRootNode()) + std::to_string(grower->GetStatistics()->GetRisk());
}

TEST(Threads, GrowPruneAndValidateTogether) {
  SampleData const data = Mixed();

  EXPECT_EQ(Work(data, 4), Work(data, 1));
}

/// So many predictors that all threads work on each of the upper nodes.
SampleData Wide() {
  RandomNumbers random(2);
  std::size_t const numCases = 1500;
  std::vector<std::vector<double>> columns(1400, std::vector<double>(numCases));
  std::vector<double> classes;
  for (auto& column : columns) {
    for (double& value : column) value = static_cast<double>(random.Below(5000));
  }
  for (std::size_t row = 0; row < numCases; ++row) {
    double const signal = columns[7][row] + columns[9][row] + random.Below(3000);
    classes.push_back(signal < 4500.0 ? 0.0 : signal < 8000.0 ? 1.0 : 2.0);
    columns[3][row] = static_cast<double>(random.Below(4));
    columns[7][row] = random.Below(9) == 0 ? systemMissingValue() : columns[7][row];
  }
  SampleData data(numCases);
  data.Classes(classes);
  for (std::size_t position = 0; position < columns.size(); ++position) {
    if (position == 3) {
      data.Nominal(columns[position]);
    } else {
      data.Ordered(columns[position]);
    }
  }
  return data;
}

std::string GrowByQuest(SampleData const& data, int numThreads) {
  auto settings = data.LooseSettings<QuestSettingsImp>();
  settings.SetMaxNumSurrogates(0);
  settings.GetStopRule()->SetMinChildSize(20);
  auto const grower = data.Make(settings, {numThreads});
  EXPECT_TRUE(grower->Grow());
  return Describe(*grower->GetRootNode());
}

TEST(Threads, ShareTheWorkOnNodesOfQuest) {
  SampleData const data = Wide();

  EXPECT_EQ(GrowByQuest(data, 4), GrowByQuest(data, 1));
}

class Impatient : public ProgressListener {
 public:
  bool Report(double, char const*) noexcept override { return ++numReports_ < 2; }

 private:
  int numReports_ = 0;
};

TEST(Threads, EndTogetherWhenCancelled) {
  SampleData const data = Mixed();
  auto const grower = data.Make(data.ClassSettings(), {4});
  Impatient listener;
  grower->SetProgressListener(&listener);

  for (int attempt = 0; attempt < 5; ++attempt) {
    if (grower->Grow()) continue;  // done before anybody was asked twice
    EXPECT_EQ(grower->GetFailure(), FailureCancelled);
  }
}

}  // namespace
}  // namespace tree::grow
