// What several threads do at the same time, for the thread sanitizer to look at.

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/growing_listener.h"
#include "grow_testing/sample_data.h"

namespace tree::grow {
namespace {

enum class Target { kClasses, kNumbers };

/// Sorted, coded and nominal predictors, some values missing.
SampleData Mixed(Target target = Target::kClasses) {
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
  std::vector<double> numbers;
  for (double const value : signal) {
    classes.push_back((value < 1000.0) != (random.Below(4) == 0) ? 0.0 : 1.0);
    numbers.push_back(value + 3000.0 * classes.back());
  }
  SampleData data(numCases);
  target == Target::kClasses ? data.Classes(classes) : data.Numbers(numbers);
  data.Ordered(signal).Ordered(draw(2000, true)).Ordered(draw(5, true));
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

/// Whether 1, 2 and 4 threads grow the same tree, of which the upper levels have most of the cases
/// and the lower ones few, by CHAID: it reads all cases for two predictors at once in the former,
/// and predictor by predictor in the latter.
template <class Settings>
void ExpectSameTreeByChaid(SampleData const& data) {
  auto settings = data.LooseSettings<Settings>();
  settings.GetStopRule()->SetMaxTreeDepth(10);
  settings.GetStopRule()->SetMinNodeSize(200);
  settings.SetAlphaOfSplitNode(0.5);
  settings.SetUseBonferroniAdj(false);
  settings.SetAllowSplitMerge(true);
  auto const grow = [&](int numThreads) {
    auto const grower = data.Make(settings, {numThreads});
    EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
    return Describe(*grower->GetRootNode());
  };
  std::string const tree = grow(1);
  EXPECT_GT(std::count(tree.begin(), tree.end(), '\n'), 20) << "nodes";

  EXPECT_EQ(grow(2), tree);
  EXPECT_EQ(grow(4), tree);
}

TEST(Threads, GrowTheSameTreeOfClassesByChaid) {
  ExpectSameTreeByChaid<CChaidSettingsImp>(Mixed());
}

TEST(Threads, GrowTheSameTreeOfNumbersByChaid) {
  ExpectSameTreeByChaid<RChaidSettingsImp>(Mixed(Target::kNumbers));
}

/// At steps of the first level that are about to be shared, and at those before them.
template <class Settings>
void ExpectToEndTogether(SampleData const& data, std::vector<int> const& steps) {
  auto const grower = data.Make(data.LooseSettings<Settings>(), {4});
  for (int const step : steps) {
    SCOPED_TRACE(step);
    GrowingListener listener(step);
    grower->SetProgressListener(&listener);

    EXPECT_FALSE(grower->Grow());
    EXPECT_EQ(grower->GetFailure(), FailureCancelled);
    EXPECT_EQ(listener.GetNumReports(), step);
  }
}

TEST(Threads, EndCartTogetherWhenCancelled) {
  ExpectToEndTogether<CCartSettingsImp>(Mixed(), {3, 4, 5, 6});
}

TEST(Threads, EndChaidTogetherWhenCancelled) {
  ExpectToEndTogether<CChaidSettingsImp>(Mixed(), {3, 4, 5, 6});
  ExpectToEndTogether<RChaidSettingsImp>(Mixed(Target::kNumbers), {3, 4, 5, 6});
}

TEST(Threads, EndQuestTogetherWhenCancelled) {
  ExpectToEndTogether<QuestSettingsImp>(Wide(), {5, 6});
}

}  // namespace
}  // namespace tree::grow
