// How trees are pruned and their risk measured.

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// `numCases` cases whose class follows the first predictor, with noise, and ten predictors of
/// noise. Without classes, they are the numbers 0 and 1.
SampleData Noisy(std::size_t numCases, std::uint32_t seed, bool hasClasses = true) {
  RandomNumbers random(seed);
  std::vector<double> classes;
  std::vector<double> signal;
  for (std::size_t row = 0; row < numCases; ++row) {
    signal.push_back(random.Below(100));
    bool const flipped = random.Below(5) == 0;
    classes.push_back((signal.back() < 50) != flipped ? 0 : 1);
  }
  SampleData data(numCases);
  hasClasses ? data.Classes(classes) : data.Numbers(classes);
  data.Ordered(signal);
  for (int i = 0; i < 10; ++i) {
    std::vector<double> noise;
    for (std::size_t row = 0; row < numCases; ++row) noise.push_back(random.Below(1000));
    data.Ordered(noise);
  }
  return data;
}

std::unique_ptr<Grower> Grown(SampleData const& data, AlgSettings const& settings,
                              GrowOptions const& options = {1}) {
  std::unique_ptr<Grower> grower = data.Make(settings, options);
  EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
  return grower;
}

/// A kind of settings, and how to make those that fit even noise.
struct Kind {
  char const* name;
  bool hasClasses;
  std::unique_ptr<AlgSettings> (*make)(SampleData const& data);
};

template <class Settings>
std::unique_ptr<AlgSettings> MakeCredulous(SampleData const& data) {
  auto settings = std::make_unique<Settings>(data.LooseSettings<Settings>());
  if constexpr (requires { settings->GetPriors(); }) {
    settings->GetPriors()->Set(PriorTypeAlternate);
  }
  if constexpr (std::is_base_of_v<ChaidSettings, Settings>) settings->SetAlphaOfSplitNode(1.0);
  return settings;
}

constexpr Kind kAllKinds[] = {
    {"CART for classes", true, MakeCredulous<CCartSettingsImp>},
    {"CART for numbers", false, MakeCredulous<RCartSettingsImp>},
    {"CHAID for classes", true, MakeCredulous<CChaidSettingsImp>},
    {"CHAID for numbers", false, MakeCredulous<RChaidSettingsImp>},
    {"QUEST", true, MakeCredulous<QuestSettingsImp>},
};

/// How trees are pruned; null where they are not.
PruningSpec* PruningOf(AlgSettings& settings) {
  if (auto* const cart = dynamic_cast<CartSettings*>(&settings)) return cart->GetPruningSpec();
  auto* const quest = dynamic_cast<QuestSettings*>(&settings);
  return quest != nullptr ? quest->GetPruningSpec() : nullptr;
}

TEST(Validation, WithoutOneTheRiskIsThatOfTheTrainingSample) {
  // 3 of 8 wrong: one in four on the left, two in four on the right.
  SampleData data(8);
  data.Classes({0, 0, 0, 1, 1, 1, 0, 0}).Ordered({1, 1, 1, 1, 2, 2, 2, 2});

  auto const grower = Grown(data, data.ClassSettings());
  ASSERT_TRUE(grower->Validate());
  TreeStatisticsImp const& statistics = *grower->GetStatistics();

  EXPECT_DOUBLE_EQ(statistics.GetRisk(), 3.0 / 8.0);
  EXPECT_DOUBLE_EQ(statistics.GetStdError(), std::sqrt(3.0 / 8.0 * 5.0 / 8.0 / 8.0));
  EXPECT_TRUE(statistics.IsCls());
  EXPECT_EQ(statistics.GetMisclassificationCount(0, 1), 3.0);
}

TEST(Validation, PriorsWeighTheErrorsOfTheirClasses) {
  // The root predicts class 1 at equal priors when it is the more costly one; all of class 0 wrong.
  SampleData data(4);
  data.Classes({0, 0, 0, 1}).Ordered({1, 1, 1, 1});
  CCartSettingsImp settings(data.Core());
  settings.GetCost()->Set(0, 1, 3.0);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Validate());

  EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetRisk(), 0.5);
  EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetStdError(), 0.0);
}

TEST(Validation, OfNumbersIsTheMeanSquaredError) {
  SampleData data(4);
  data.Numbers({1, 3, 10, 14}).Ordered({1, 1, 2, 2});

  auto const grower = Grown(data, data.NumberSettings());
  ASSERT_TRUE(grower->Validate());

  EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetRisk(), 2.5);  // 1, 1, 4, 4
  EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetStdError(), std::sqrt((8.5 - 6.25) / 4.0));
}

TEST(Validation, SplitSampleMeasuresOnTheTestColumn) {
  for (Kind const& kind : kAllKinds) {
    SCOPED_TRACE(kind.name);
    std::vector<double> const classes = {0, 0, 1, 1, 0, 1, 1, 1};
    SampleData data(8);
    kind.hasClasses ? data.Classes(classes) : data.Numbers(classes);
    data.Ordered({1, 1, 2, 2, 1, 1, 2, 2}).Samples({0, 0, 0, 0, 1, 1, 1, 1});
    auto const settings = kind.make(data);
    settings->GetValidationSpec()->Set(ValidationSplitSample);

    auto const grower = Grown(data, *settings);
    ASSERT_TRUE(grower->Validate());

    EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetRisk(), 0.25);
    if (kind.hasClasses) {
      EXPECT_EQ(grower->GetStatistics()->GetMisclassificationCount(0, 1), 1.0);
    }
  }
}

TEST(Validation, SplitSampleDrawsATestSampleBySeedAndShare) {
  for (Kind const& kind : kAllKinds) {
    SCOPED_TRACE(kind.name);
    SampleData const data = Noisy(1000, 1, kind.hasClasses);
    auto const settings = kind.make(data);
    settings->GetValidationSpec()->Set(ValidationSplitSample);

    auto const third = data.Make(*settings, {1, 0.3});
    auto const again = data.Make(*settings, {1, 0.3});
    auto const half = data.Make(*settings, {1, 0.5});
    settings->GetValidationSpec()->SetRandomSeed(5);
    auto const other = data.Make(*settings, {1, 0.3});
    for (Grower* const grower : {third.get(), again.get(), other.get()}) {
      ASSERT_TRUE(grower->Grow());
      ASSERT_TRUE(grower->Validate());
    }

    EXPECT_NEAR(static_cast<double>(third->GetNumCases(TestSample)), 300.0, 60.0);
    EXPECT_NEAR(static_cast<double>(half->GetNumCases(TestSample)), 500.0, 60.0);
    EXPECT_EQ(third->GetNumCases(TestSample) + third->GetNumCases(TrainingSample), 1000U);
    EXPECT_EQ(Describe(*third->GetRootNode()), Describe(*again->GetRootNode()));
    EXPECT_NE(Describe(*third->GetRootNode()), Describe(*other->GetRootNode()));
    EXPECT_EQ(third->GetStatistics()->GetRisk(), again->GetStatistics()->GetRisk());
    EXPECT_NE(third->GetStatistics()->GetRisk(), other->GetStatistics()->GetRisk());
  }
}

TEST(Validation, SeesThroughNoise) {
  // A tree grown out is right about what it has seen, and wrong about a good fifth of the rest.
  for (Kind const& kind : kAllKinds) {
    SCOPED_TRACE(kind.name);
    SampleData const data = Noisy(400, 2, kind.hasClasses);
    auto const settings = kind.make(data);
    auto const naive = Grown(data, *settings);
    ASSERT_TRUE(naive->Validate());
    settings->GetValidationSpec()->Set(ValidationCrossValidation);
    auto const crossed = Grown(data, *settings);
    ASSERT_TRUE(crossed->Validate());
    settings->GetValidationSpec()->Set(ValidationSplitSample);
    auto const split = Grown(data, *settings);
    ASSERT_TRUE(split->Validate());

    EXPECT_LT(naive->GetStatistics()->GetRisk(), 0.01);
    EXPECT_GT(crossed->GetStatistics()->GetRisk(), 0.2);
    EXPECT_GT(split->GetStatistics()->GetRisk(), 0.2);
    EXPECT_EQ(Describe(*naive->GetRootNode()), Describe(*crossed->GetRootNode()));
  }
}

TEST(Validation, CrossValidationFollowsSeedAndFolds) {
  for (Kind const& kind : kAllKinds) {
    SCOPED_TRACE(kind.name);
    SampleData const data = Noisy(100, 3, kind.hasClasses);
    auto const riskOf = [&](long seed, int folds) {
      auto const settings = kind.make(data);
      settings->GetValidationSpec()->Set(ValidationCrossValidation);
      settings->GetValidationSpec()->SetRandomSeed(seed);
      settings->GetValidationSpec()->SetNumCVFolds(folds);
      auto const grower = Grown(data, *settings);
      EXPECT_TRUE(grower->Validate());
      return grower->GetStatistics()->GetRisk();
    };

    double const risk = riskOf(1, 5);
    EXPECT_EQ(riskOf(1, 5), risk);
    EXPECT_NE(riskOf(2, 5), risk);
    EXPECT_NE(riskOf(1, 3), risk);
  }
}

/// By hand: one tree after the other, from data that lacks a case, which it then predicts.
TEST(Validation, LeavingOneOutIsGrowingWithoutEachCase) {
  RandomNumbers random(11);
  constexpr std::size_t kNumCases = 40;
  std::vector<double> target;
  std::vector<double> few;
  std::vector<double> group;
  for (std::size_t row = 0; row < kNumCases; ++row) {
    few.push_back(random.Below(8));
    group.push_back(random.Below(4));
    target.push_back((few.back() < 4) != (random.Below(4) == 0) ? 0 : 1);
  }
  for (Kind const& kind : kAllKinds) {
    SCOPED_TRACE(kind.name);
    auto const sampleWithout = [&](std::size_t leftOut) {
      auto const pick = [leftOut](std::vector<double> values) {
        if (leftOut < values.size()) {
          values.erase(values.begin() + static_cast<std::ptrdiff_t>(leftOut));
        }
        return values;
      };
      SampleData data(pick(target).size());
      kind.hasClasses ? data.Classes(pick(target)) : data.Numbers(pick(target));
      data.Ordered(pick(few)).Nominal(pick(group));
      return data;
    };
    SampleData const all = sampleWithout(kNumCases);
    auto const settings = kind.make(all);
    auto const naive = Grown(all, *settings);
    ASSERT_TRUE(naive->Validate());
    settings->GetValidationSpec()->Set(ValidationCrossValidation);
    settings->GetValidationSpec()->SetNumCVFolds(kNumCases);
    auto const crossed = Grown(all, *settings);
    ASSERT_TRUE(crossed->Validate()) << crossed->GetFailureMessage();
    double sum = 0.0;
    for (std::size_t row = 0; row < kNumCases; ++row) {
      SampleData const others = sampleWithout(row);
      auto const grower = Grown(others, *kind.make(others));
      double const predicted = grower->GetTree()
                                   ->DropObservationThroughTree(all.Case(row).data(), nullptr)
                                   ->GetAssignment();
      sum += (predicted - target[row]) * (predicted - target[row]);
    }

    std::vector<PruningStep> steps;
    ASSERT_TRUE(crossed->GetPruningSequence(&steps));

    EXPECT_NEAR(crossed->GetStatistics()->GetRisk(), sum / kNumCases, 1e-9);
    EXPECT_EQ(steps.front().risk, crossed->GetStatistics()->GetRisk());
    EXPECT_GT(crossed->GetStatistics()->GetRisk(), naive->GetStatistics()->GetRisk() + 0.05);
  }
}

TEST(Validation, LeavingOneOutIsTheMostThatFoldsCanDo) {
  SampleData data(6);
  data.Classes({0, 0, 0, 1, 1, 1}).Ordered({1, 2, 3, 7, 8, 9});
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  settings.GetValidationSpec()->SetNumCVFolds(100);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Validate()) << grower->GetFailureMessage();

  EXPECT_EQ(grower->GetStatistics()->GetRisk(), 0.0);
}

template <class Settings>
std::unique_ptr<AlgSettings> MakeSettings(CoreSettingsImp const& core) {
  return std::make_unique<Settings>(core);
}

/// The caller's values change after the data was prepared, in a way that leaves each case on its
/// side of every cut: only what reads the predictor anew can tell. That is forbidden, and shows how
/// often it is read.
TEST(Validation, FoldsGrowOnPredictorsThatWerePreparedOnce) {
  // Of value 1, one in four cases is of class 1; of value 2, three in four.
  std::vector<double> classes;
  std::vector<double> plain;
  std::vector<double> telling;  // each value a bit less where the class is 1
  for (int i = 0; i < 200; ++i) {
    bool const isHigh = i % 2 == 1;
    classes.push_back((i / 2 % 4 == 0) != isHigh ? 1.0 : 0.0);
    plain.push_back(isHigh ? 2.0 : 1.0);
    telling.push_back(plain.back() - 0.1 * classes.back());
  }
  struct {
    char const* name;
    std::unique_ptr<AlgSettings> (*make)(CoreSettingsImp const& core);
    int maxCodedValues;
  } const kRows[] = {{"CART, of codes", MakeSettings<CCartSettingsImp>, 256},
                     {"CART, of sorted lists", MakeSettings<CCartSettingsImp>, 0},
                     {"CHAID", MakeSettings<CChaidSettingsImp>, 256},
                     {"QUEST, of codes", MakeSettings<QuestSettingsImp>, 256},
                     {"QUEST, of rows", MakeSettings<QuestSettingsImp>, 0}};
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    auto const riskOf = [&](std::vector<double> const& atFirst, std::vector<double> const& later) {
      std::vector<double> values = atFirst;
      DataSet data(classes.size());
      data.AddColumn({"class", global::MeasurementNominal}, classes);
      data.BorrowColumn({"x", global::MeasurementContinuous}, values.data());
      CaseRoles const roles{.target = 0, .predictors = {1}};
      auto const settings = row.make(MakeCoreSettings(data, roles));
      settings->GetStopRule()->SetMinNodeSize(2);
      settings->GetStopRule()->SetMinChildSize(1);
      settings->GetValidationSpec()->Set(ValidationCrossValidation);
      auto const grower = MakeGrower(data, roles, *settings,
                                     {.numThreads = 1, .maxCodedValues = row.maxCodedValues});
      EXPECT_TRUE(grower->Grow()) << grower->GetFailureMessage();
      std::copy(later.begin(), later.end(), values.begin());
      EXPECT_TRUE(grower->Validate()) << grower->GetFailureMessage();
      return grower->GetStatistics()->GetRisk();
    };

    double const risk = riskOf(plain, plain);

    EXPECT_NEAR(risk, 0.25, 1e-9);
    EXPECT_EQ(riskOf(plain, telling), risk);
    EXPECT_EQ(riskOf(telling, telling), 0.0) << "had the values been read again";
  }
}

TEST(Validation, DrawsRowsWholeWhereFrequenciesAreNoWholeNumbers) {
  SampleData data(6);
  data.Classes({0, 0, 0, 1, 1, 1})
      .Ordered({1, 2, 3, 7, 8, 9})
      .Frequencies({1.5, 1.5, 1.5, 1.5, 1.5, 1.5});
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Validate()) << grower->GetFailureMessage();

  EXPECT_EQ(grower->GetStatistics()->GetRisk(), 0.0) << "leaves one row out at a time";
  EXPECT_EQ(grower->GetNumCases(TrainingSample), 9U);
  EXPECT_THAT(grower->GetRemarks(), ElementsAre(HasSubstr("\"frequency\"")));
}

TEST(Validation, DrawsNothingWhereAColumnSaysWhichSampleCasesBelongTo) {
  SampleData data(4);
  data.Classes({0, 1, 0, 1})
      .Ordered({1, 2, 1, 2})
      .Frequencies({0.5, 1.5, 2.5, 3.0})
      .Samples({0, 0, 1, 1});
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationSplitSample);

  auto const grower = Grown(data, settings);

  EXPECT_THAT(grower->GetRemarks(), IsEmpty());
}

/// The same tree of numbers, whatever they are multiplied with.
struct OfNumbers {
  int numNodes;
  std::vector<PruningStep> steps;
};

OfNumbers ValidatedNumbers(int exponent, ValidationType type) {
  RandomNumbers random(17);
  std::vector<double> numbers;
  std::vector<double> signal;
  std::vector<double> group;
  for (int row = 0; row < 120; ++row) {
    signal.push_back(random.Below(10));
    group.push_back(random.Below(5));
    numbers.push_back(std::ldexp(signal.back() + group.back() + random.Below(6), exponent));
  }
  SampleData data(numbers.size());
  data.Numbers(numbers).Ordered(signal).Nominal(group);
  RCartSettingsImp settings = data.NumberSettings();
  if (type != ValidationNone) settings.GetValidationSpec()->Set(type);
  auto const grower = Grown(data, settings);
  OfNumbers result{grower->GetNumNodes(AllNodes), {}};
  EXPECT_TRUE(grower->GetPruningSequence(&result.steps)) << grower->GetFailureMessage();
  return result;
}

TEST(Validation, OfLargeAndSmallNumbersIsThatOfOthersMultiplied) {
  for (ValidationType const type :
       {ValidationNone, ValidationSplitSample, ValidationCrossValidation}) {
    OfNumbers const plain = ValidatedNumbers(0, type);
    for (int const exponent : {-500, -340, 340, 500}) {
      SCOPED_TRACE("2^" + std::to_string(exponent) + ", validation " + std::to_string(type));
      OfNumbers const multiplied = ValidatedNumbers(exponent, type);

      EXPECT_EQ(multiplied.numNodes, plain.numNodes);
      ASSERT_EQ(multiplied.steps.size(), plain.steps.size());
      for (std::size_t step = 0; step < plain.steps.size(); ++step) {
        EXPECT_EQ(multiplied.steps[step].numTerminalNodes, plain.steps[step].numTerminalNodes);
        EXPECT_DOUBLE_EQ(std::ldexp(multiplied.steps[step].complexity, -2 * exponent),
                         plain.steps[step].complexity);
        EXPECT_DOUBLE_EQ(std::ldexp(multiplied.steps[step].risk, -2 * exponent),
                         plain.steps[step].risk);
        EXPECT_DOUBLE_EQ(std::ldexp(multiplied.steps[step].stdError, -2 * exponent),
                         plain.steps[step].stdError);
      }
    }
  }
}

TEST(Validation, MeasuresLargeErrorsOfTestCasesThatAreAllAlike) {
  SampleData data(4);
  data.Numbers({1.0, 2.0, 1e120, 1e120}).Ordered({1, 2, 1, 2}).Samples({0, 0, 1, 1});
  RCartSettingsImp settings = data.NumberSettings();
  settings.GetValidationSpec()->Set(ValidationSplitSample);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Validate());

  EXPECT_DOUBLE_EQ(grower->GetStatistics()->GetRisk(), 1e240);
  EXPECT_EQ(grower->GetStatistics()->GetStdError(), 0.0);
}

TEST(Pruning, CountsWhatIsWrongInNodesOfASingleCaseInAll) {
  // Each child has half a case of either number, 1 from its mean; the root lies 6 and 4 off.
  SampleData data(4);
  data.Numbers({0, 2, 10, 12}).Ordered({1, 1, 2, 2}).Frequencies({0.5, 0.5, 0.5, 0.5});

  auto const grower = Grown(data, data.NumberSettings());
  std::vector<PruningStep> steps;
  ASSERT_TRUE(grower->GetPruningSequence(&steps));

  ASSERT_EQ(steps.size(), 2U);
  EXPECT_DOUBLE_EQ(steps[1].complexity, 26.0 - 1.0);
}

TEST(Pruning, ByCrossValidationKeepsTheSignalAndDropsTheNoise) {
  SampleData const data = Noisy(600, 4);
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Prune());

  EXPECT_EQ(grower->GetNumNodes(TerminalNodes), 2);
  EXPECT_EQ(grower->GetTree()->GetCompetitorImp(0)->GetPredictorIndex(), 0);
}

TEST(Pruning, OnTheTrainingSampleDropsOnlyWhatDoesNotHelp) {
  SampleData const data = Noisy(200, 5);
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetPruningSpec()->SetPickMinRiskTree(true);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Validate());
  double const risk = grower->GetStatistics()->GetRisk();
  ASSERT_TRUE(grower->Prune());
  EXPECT_EQ(grower->GetStatistics(), nullptr);
  ASSERT_TRUE(grower->Validate());

  EXPECT_NEAR(grower->GetStatistics()->GetRisk(), risk, 1e-12);
  EXPECT_GT(grower->GetNumNodes(TerminalNodes), 10);
}

TEST(Pruning, TakesTheSmallestTreeWithinSoManyStandardErrors) {
  for (Kind const& kind : kAllKinds) {
    SampleData const data = Noisy(300, 6, kind.hasClasses);
    auto const settings = kind.make(data);
    PruningSpec* const pruning = PruningOf(*settings);
    if (pruning == nullptr) continue;
    for (ValidationType const type : {ValidationSplitSample, ValidationCrossValidation}) {
      SCOPED_TRACE(std::string(kind.name) + ", validation " + std::to_string(type));
      settings->GetValidationSpec()->Set(type);
      settings->GetValidationSpec()->SetNumCVFolds(3);
      auto const chosenBy = [&](double factor, bool least) {
        pruning->SetSERuleFactor(factor);
        pruning->SetPickMinRiskTree(least);
        auto const grower = Grown(data, *settings);
        EXPECT_TRUE(grower->Prune());
        return grower->GetNumNodes(TerminalNodes);
      };
      auto const grower = Grown(data, *settings);
      std::vector<PruningStep> steps;
      ASSERT_TRUE(grower->GetPruningSequence(&steps));
      auto const within = [&](double factor) {
        PruningStep const* least = &steps.front();
        for (PruningStep const& step : steps) {
          if (step.risk < least->risk) least = &step;
        }
        int smallest = 0;
        for (PruningStep const& step : steps) {
          if (step.risk <= least->risk + factor * least->stdError) smallest = step.numTerminalNodes;
        }
        return smallest;
      };
      // Some factor decides, so that a rule that forgets it is found out.
      double factor = 1.0;
      while (factor < 1000.0 && within(factor) == within(0.0)) factor *= 2.0;
      ASSERT_LT(within(factor), within(0.0));

      EXPECT_EQ(chosenBy(1.0, false), within(1.0));
      EXPECT_EQ(chosenBy(0.0, false), within(0.0));
      EXPECT_EQ(chosenBy(factor, false), within(factor));
      EXPECT_EQ(chosenBy(factor, true), within(0.0));
      EXPECT_EQ(chosenBy(1000.0, false), 1);
    }
  }
}

TEST(Pruning, RemembersTheRiskOfTheTreeThatItChose) {
  SampleData const data = Noisy(300, 7);
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  auto const grower = Grown(data, settings);
  std::vector<PruningStep> steps;
  ASSERT_TRUE(grower->GetPruningSequence(&steps));
  ASSERT_TRUE(grower->Prune());
  ASSERT_TRUE(grower->Validate());

  double risk = -1.0;
  for (PruningStep const& step : steps) {
    if (step.numTerminalNodes == grower->GetNumNodes(TerminalNodes)) risk = step.risk;
  }
  EXPECT_EQ(grower->GetStatistics()->GetRisk(), risk);
}

/// Notes whether validation was under way, each time that it is called.
class ValidationWatch : public ProgressListener {
 public:
  bool Report(double, char const* activity) noexcept override {
    hasSeenFolds_ = hasSeenFolds_ || std::string_view(activity) == "cross-validating";
    return true;
  }
  bool HasSeenFolds() const { return hasSeenFolds_; }

 private:
  bool hasSeenFolds_ = false;
};

TEST(Pruning, ValidatesNoSequenceTwice) {
  SampleData const data = Noisy(500, 7);
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  auto const grower = Grown(data, settings);
  ValidationWatch first;
  grower->SetProgressListener(&first);
  std::vector<PruningStep> steps;
  ASSERT_TRUE(grower->GetPruningSequence(&steps));
  ASSERT_TRUE(first.HasSeenFolds());
  ValidationWatch second;
  grower->SetProgressListener(&second);

  std::vector<PruningStep> again;
  ASSERT_TRUE(grower->GetPruningSequence(&again));
  ASSERT_TRUE(grower->Prune());
  grower->SetProgressListener(nullptr);

  EXPECT_FALSE(second.HasSeenFolds());
  EXPECT_EQ(again.size(), steps.size());
}

TEST(Pruning, LeavesCompetitorsAndTakesSurrogates) {
  SampleData const data = Noisy(100, 8);
  CCartSettingsImp settings = data.ClassSettings();
  settings.GetValidationSpec()->Set(ValidationCrossValidation);
  settings.GetPruningSpec()->SetSERuleFactor(1000.0);

  auto const grower = Grown(data, settings);
  ASSERT_TRUE(grower->Prune());

  EXPECT_EQ(grower->GetNumNodes(AllNodes), 1);
  EXPECT_GT(grower->GetRootNode()->GetNumCompetitors(), 0);
  EXPECT_EQ(grower->GetRootNode()->GetNumSurrogates(), 0);
}

}  // namespace
}  // namespace tree::grow
