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
