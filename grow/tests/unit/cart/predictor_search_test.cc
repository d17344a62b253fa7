#include "cart/predictor_search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cart/sides.h"
#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

enum class Criterion { kGini, kFastGini, kTwoing, kOrderedTwoing, kNumbers };

constexpr Criterion kClassCriteria[] = {Criterion::kGini, Criterion::kTwoing,
                                        Criterion::kOrderedTwoing};

/// What a search is asked.
struct Question {
  Sample sample;
  std::vector<double> factors = {};  ///< by class: what a weight of 1 adds to a probability
  std::int64_t minChildSize = 1;
};

template <class Sides>
FoundSplit SearchWith(Sides const& sides, PreparedSample& sample, CaseLists const& lists,
                      Question const& question, std::size_t predictor) {
  PredictorSearch<Sides> search(sample.GetData(), lists, sides, question.minChildSize,
                                sample.GetWorkers());
  NodeSums const sums = SumCases(sample.GetData(), lists.Cases(lists.GetRoot()));
  return search.Find(lists.GetRoot(), sums, predictor);
}

/// Does not depend on the order of the cases.
double TotalWeight(Sample const& sample) {
  if (sample.weights.empty()) return static_cast<double>(sample.GetNumCases());
  std::vector<double> weights(sample.weights);
  std::sort(weights.begin(), weights.end());
  return std::accumulate(weights.begin(), weights.end(), 0.0);
}

FoundSplit Search(PreparedSample& sample, Question const& question, Criterion criterion,
                  std::size_t predictor = 0) {
  CaseLists const lists = sample.MakeLists();
  TrainingData const& data = sample.GetData();
  ClassTarget classes{lists.GetClasses(), lists.GetWeights(), question.factors};
  for (double& factor : classes.factors) factor *= data.GetWeights().unit;
  NumberTarget const numbers{lists.GetNumbers(), lists.GetWeights(),
                             data.GetNumbers().unit * data.GetNumbers().unit *
                                 data.GetWeights().unit / TotalWeight(question.sample)};
  auto const with = [&](auto const& sides) {
    return SearchWith(sides, sample, lists, question, predictor);
  };
  switch (criterion) {
    case Criterion::kGini:
      return with(ClassSides<Gini>(classes));
    case Criterion::kFastGini:
      return with(TwoClassSides(classes));
    case Criterion::kTwoing:
      return with(ClassSides<Twoing>(classes));
    case Criterion::kOrderedTwoing:
      return with(ClassSides<OrderedTwoing>(classes));
    default:
      return numbers.weights == nullptr ? with(NumberSides<false>(numbers))
                                        : with(NumberSides<true>(numbers));
  }
}

FoundSplit Search(Question const& question, Criterion criterion, Form form = Form::kAsItComes) {
  PreparedSample sample(question.sample, form);
  return Search(sample, question, criterion);
}

// ---- The slow way ----

/// The side of each case: 0 left, 1 right, -1 without a value.
using Assignment = std::vector<int>;

double WeightOf(Sample const& sample, std::size_t index) {
  return sample.weights.empty() ? 1.0 : sample.weights[index];
}

double Gini1(std::vector<double> const& side) {
  double const sum = std::accumulate(side.begin(), side.end(), 0.0);
  double impurity = 1.0;
  for (double const each : side) impurity -= sum > 0.0 ? each / sum * (each / sum) : 0.0;
  return sum > 0.0 ? sum * impurity : 0.0;
}

double SlowClassImprovement(Question const& question, Criterion criterion,
                            Assignment const& sideOf) {
  std::vector<double> const& factors = question.factors;
  std::array<std::vector<double>, 2> sides;
  sides.fill(std::vector<double>(factors.size()));
  for (std::size_t index = 0; index < sideOf.size(); ++index) {
    if (sideOf[index] < 0) continue;
    auto const j = static_cast<std::size_t>(question.sample.target[index]);
    sides[static_cast<std::size_t>(sideOf[index])][j] +=
        factors[j] * WeightOf(question.sample, index);
  }
  std::vector<double> node(sides[0]);
  for (std::size_t j = 0; j < node.size(); ++j) node[j] += sides[1][j];
  if (criterion == Criterion::kGini || criterion == Criterion::kFastGini) {
    return Gini1(node) - Gini1(sides[0]) - Gini1(sides[1]);
  }
  double const left = std::accumulate(sides[0].begin(), sides[0].end(), 0.0);
  double const right = std::accumulate(sides[1].begin(), sides[1].end(), 0.0);
  if (!(left > 0.0) || !(right > 0.0)) return 0.0;
  double absolute = 0.0;
  double cumulative = 0.0;
  double largest = 0.0;
  for (std::size_t j = 0; j < node.size(); ++j) {
    double const difference = sides[0][j] / left - sides[1][j] / right;
    absolute += std::abs(difference);
    cumulative += difference;
    largest = std::max(largest, std::abs(cumulative));
  }
  double const measure = criterion == Criterion::kTwoing ? absolute / 2.0 : largest;
  return left * right / (left + right) * measure * measure;
}

double SlowNumberImprovement(Question const& question, Assignment const& sideOf) {
  auto const squaresOf = [&](auto const& isIn) {
    long double weight = 0.0L;
    long double sum = 0.0L;
    for (std::size_t index = 0; index < sideOf.size(); ++index) {
      if (!isIn(sideOf[index])) continue;
      weight += WeightOf(question.sample, index);
      sum += static_cast<long double>(WeightOf(question.sample, index)) *
             question.sample.target[index];
    }
    long double squares = 0.0L;
    for (std::size_t index = 0; index < sideOf.size(); ++index) {
      if (!isIn(sideOf[index])) continue;
      long double const deviation = question.sample.target[index] - sum / weight;
      squares += WeightOf(question.sample, index) * deviation * deviation;
    }
    return squares;
  };
  long double const explained = squaresOf([](int side) { return side >= 0; }) -
                                squaresOf([](int side) { return side == 0; }) -
                                squaresOf([](int side) { return side == 1; });
  return static_cast<double>(explained / TotalWeight(question.sample));
}

/// 0 where the children would be too small.
double SlowImprovement(Question const& question, Criterion criterion, Assignment const& sideOf) {
  double sizes[2] = {};
  for (std::size_t index = 0; index < sideOf.size(); ++index) {
    if (sideOf[index] < 0) continue;
    sizes[sideOf[index]] +=
        question.sample.frequencies.empty() ? 1.0 : question.sample.frequencies[index];
  }
  double const least = std::max(1.0, static_cast<double>(question.minChildSize));
  if (sizes[0] < least || sizes[1] < least) return 0.0;
  return criterion == Criterion::kNumbers ? SlowNumberImprovement(question, sideOf)
                                          : SlowClassImprovement(question, criterion, sideOf);
}

std::vector<double> ValuesIn(Sample::Predictor const& predictor) {
  std::set<double> values(predictor.values.begin(), predictor.values.end());
  values.erase(kMissing);
  return {values.begin(), values.end()};
}

Assignment CutAt(Sample::Predictor const& predictor, double cutPoint) {
  Assignment sideOf;
  for (double const value : predictor.values) {
    sideOf.push_back(value == kMissing ? -1 : value <= cutPoint ? 0 : 1);
  }
  return sideOf;
}

Assignment SendLeft(Sample::Predictor const& predictor, std::set<double> const& left) {
  Assignment sideOf;
  for (double const value : predictor.values) {
    sideOf.push_back(value == kMissing ? -1 : left.contains(value) ? 0 : 1);
  }
  return sideOf;
}

double BestOfAll(Question const& question, Criterion criterion) {
  Sample::Predictor const& predictor = question.sample.predictors[0];
  std::vector<double> const values = ValuesIn(predictor);
  double best = 0.0;
  if (!predictor.nominal) {
    for (double const value : values) {
      best = std::max(best, SlowImprovement(question, criterion, CutAt(predictor, value)));
    }
    return best;
  }
  for (std::uint32_t set = 1; values.size() > 1 && set < 1U << (values.size() - 1); ++set) {
    std::set<double> left;
    for (std::size_t position = 0; position < values.size(); ++position) {
      if ((set >> position) & 1U) left.insert(values[position]);
    }
    best = std::max(best, SlowImprovement(question, criterion, SendLeft(predictor, left)));
  }
  return best;
}

/// What the split that was found makes of the cases. Requires an improvement.
Assignment ByFound(Question const& question, FoundSplit const& found) {
  Sample::Predictor const& predictor = question.sample.predictors[0];
  if (!predictor.nominal) return CutAt(predictor, found.cutPoint);
  std::vector<double> const values = ValuesIn(predictor);
  std::set<double> left;
  std::set<std::uint16_t> all(found.right.begin(), found.right.end());
  for (std::uint16_t const code : found.left) {
    left.insert(values.at(code));
    EXPECT_TRUE(all.insert(code).second) << "category " << code << " goes left and right";
  }
  EXPECT_EQ(all.size(), values.size()) << "every category has a side";
  EXPECT_TRUE(std::is_sorted(found.left.begin(), found.left.end()));
  EXPECT_TRUE(std::is_sorted(found.right.begin(), found.right.end()));
  return SendLeft(predictor, left);
}

/// The split really has its improvement, and `exact`: no other one has a greater one.
void ExpectFound(Question const& question, Criterion criterion, Form form, bool exact = true) {
  FoundSplit const found = Search(question, criterion, form);
  double const best = BestOfAll(question, criterion);
  double const scale = criterion == Criterion::kNumbers ? 2500.0 : 10.0;

  if (found.improvement > 1e-11 * scale) {
    EXPECT_NEAR(SlowImprovement(question, criterion, ByFound(question, found)), found.improvement,
                1e-11 * scale);
  }
  if (exact) {
    EXPECT_NEAR(found.improvement, best, 1e-11 * scale);
  } else {
    EXPECT_LE(found.improvement, best + 1e-11 * scale);
  }
}

// ---- Small cases ----

Question Classes(std::vector<double> const& values, std::vector<double> const& classes,
                 bool nominal = false) {
  Question question{{.target = classes, .predictors = {{values, nominal}}}};
  question.factors.assign(
      static_cast<std::size_t>(*std::max_element(classes.begin(), classes.end())) + 1, 1.0);
  return question;
}

Question Numbers(std::vector<double> const& values, std::vector<double> const& numbers,
                 bool nominal = false) {
  return {{.target = numbers, .hasClasses = false, .predictors = {{values, nominal}}}};
}

/// Runs a test for the two forms of an ordered predictor.
template <class Test>
void InBothForms(Test const& test) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    test(form);
  }
}

TEST(PredictorSearch, SeparatesTwoClasses) {
  InBothForms([](Form form) {
    Question const question = Classes({5.0, 1.0, 2.0, 4.0, 3.0}, {1, 0, 0, 1, 0});

    for (Criterion const criterion : {Criterion::kGini, Criterion::kFastGini}) {
      FoundSplit const found = Search(question, criterion, form);

      EXPECT_EQ(found.cutPoint, 3.5);
      // 5 (1 - 9/25 - 4/25)
      EXPECT_NEAR(found.improvement, 2.4, 1e-12);
    }
  });
}

TEST(PredictorSearch, SeparatesNumbers) {
  InBothForms([](Form form) {
    FoundSplit const found =
        Search(Numbers({4.0, 1.0, 2.0, 8.0}, {10.0, 2.0, 2.0, 10.0}), Criterion::kNumbers, form);

    EXPECT_EQ(found.cutPoint, 3.0);
    EXPECT_NEAR(found.improvement, 16.0, 1e-12) << "the mean of the squares around the mean";
  });
}

TEST(PredictorSearch, SeparatesNumbersThatLieFarFromZero) {
  InBothForms([](Form form) {
    FoundSplit const found =
        Search(Numbers({1.0, 2.0, 3.0, 4.0}, {1e12, 1e12, 1e12 + 2.0, 1e12 + 2.0}),
               Criterion::kNumbers, form);

    EXPECT_EQ(found.cutPoint, 2.5);
    EXPECT_NEAR(found.improvement, 1.0, 1e-9);
  });
}

TEST(PredictorSearch, SeparatesCategories) {
  FoundSplit const found =
      Search(Classes({0, 4, 7, 0, 4, 7}, {0, 1, 0, 0, 1, 0}, true), Criterion::kGini);

  // Codes are positions among the categories: 0 and 2 against 1.
  std::vector<std::uint16_t> const& small = found.left.size() == 1 ? found.left : found.right;
  std::vector<std::uint16_t> const& large = found.left.size() == 1 ? found.right : found.left;
  EXPECT_THAT(small, ElementsAre(1));
  EXPECT_THAT(large, ElementsAre(0, 2));
  // 6 (1 - 16/36 - 4/36)
  EXPECT_NEAR(found.improvement, 8.0 / 3.0, 1e-12);
}

TEST(PredictorSearch, FindsNothingWhereNoSplitImproves) {
  struct {
    char const* name;
    Question question;
    Criterion criterion;
  } const kRows[] = {
      {"pure", Classes({1, 2, 3}, {1, 1, 1}), Criterion::kGini},
      {"pure, fast", Classes({1, 2, 3}, {1, 1, 1}), Criterion::kFastGini},
      {"pure, twoing", Classes({1, 2, 3}, {1, 1, 1}), Criterion::kTwoing},
      {"pure, ordered twoing", Classes({1, 2, 3}, {1, 1, 1}), Criterion::kOrderedTwoing},
      {"pure categories", Classes({1, 2, 3}, {2, 2, 2}, true), Criterion::kGini},
      {"pure categories, two classes", Classes({1, 2, 3}, {1, 1, 1}, true), Criterion::kGini},
      {"one value", Classes({7, 7, 7, 7}, {0, 1, 0, 1}), Criterion::kGini},
      {"one category", Classes({7, 7, 7, 7}, {0, 1, 0, 1}, true), Criterion::kGini},
      {"no value", Classes({kMissing, kMissing}, {0, 1}), Criterion::kGini},
      {"no category", Classes({kMissing, kMissing}, {0, 1}, true), Criterion::kGini},
      {"one case with a value", Classes({kMissing, 4}, {0, 1}), Criterion::kGini},
      {"equal numbers", Numbers({1, 2, 3}, {5, 5, 5}), Criterion::kNumbers},
      {"equal numbers in categories", Numbers({1, 2, 3}, {5, 5, 5}, true), Criterion::kNumbers},
  };
  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    InBothForms([&](Form form) {
      FoundSplit const found = Search(row.question, row.criterion, form);

      EXPECT_NEAR(found.improvement, 0.0, 1e-15);
    });
  }
}

TEST(PredictorSearch, TakesTheLowestOfEqualCuts) {
  InBothForms([](Form form) {
    Question const classes = Classes({1, 2, 3, 4}, {0, 1, 1, 0});

    for (Criterion const criterion :
         {Criterion::kGini, Criterion::kFastGini, Criterion::kTwoing, Criterion::kOrderedTwoing}) {
      EXPECT_EQ(Search(classes, criterion, form).cutPoint, 1.5);
    }
    EXPECT_EQ(Search(Numbers({1, 2, 3, 4}, {0, 1, 1, 0}), Criterion::kNumbers, form).cutPoint, 1.5);
  });
}

TEST(PredictorSearch, LeavesOutCasesWithoutAValue) {
  InBothForms([](Form form) {
    FoundSplit const found =
        Search(Classes({kMissing, 1, kMissing, 2}, {0, 0, 1, 1}), Criterion::kGini, form);

    EXPECT_EQ(found.cutPoint, 1.5);
    EXPECT_NEAR(found.improvement, 1.0, 1e-12) << "2 (1 - 1/4 - 1/4)";
  });
}

TEST(PredictorSearch, LeavesChildrenTheirLeastSize) {
  InBothForms([](Form form) {
    Question question = Classes({1, 2, 3, 4, 5, 6}, {0, 1, 1, 1, 1, 0});

    question.minChildSize = 2;
    EXPECT_EQ(Search(question, Criterion::kGini, form).cutPoint, 2.5);
    question.minChildSize = 3;
    EXPECT_EQ(Search(question, Criterion::kGini, form).improvement, 0.0);
    question.minChildSize = 4;
    EXPECT_EQ(Search(question, Criterion::kGini, form).improvement, 0.0);
  });
}

TEST(PredictorSearch, CountsRepeatedCasesAgainstTheLeastSize) {
  InBothForms([](Form form) {
    Question question = Classes({1, 2, 3}, {0, 1, 1});
    question.sample.frequencies = question.sample.weights = {3, 1, 1};
    question.minChildSize = 2;

    EXPECT_EQ(Search(question, Criterion::kGini, form).cutPoint, 1.5);
    question.minChildSize = 3;
    EXPECT_EQ(Search(question, Criterion::kGini, form).improvement, 0.0);
  });
}

TEST(PredictorSearch, WeighsClassesByTheirFactors) {
  // Plainly the cut at 2.5 is best; where the second class hardly counts, that at 1.5.
  InBothForms([](Form form) {
    Question question = Classes({1, 2, 3, 4, 5, 6}, {2, 0, 1, 1, 1, 1});

    EXPECT_EQ(Search(question, Criterion::kGini, form).cutPoint, 2.5);
    question.factors[1] = 1e-6;
    EXPECT_EQ(Search(question, Criterion::kGini, form).cutPoint, 1.5);
  });
}

TEST(PredictorSearch, CutsBetweenExtremeValues) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const largest = std::numeric_limits<double>::max();
  InBothForms([&](Form form) {
    EXPECT_EQ(Search(Classes({-infinity, infinity}, {0, 1}), Criterion::kGini, form).cutPoint,
              -infinity);
    EXPECT_EQ(Search(Classes({-largest, largest}, {0, 1}), Criterion::kGini, form).cutPoint, 0.0);
    EXPECT_EQ(Search(Classes({0.0, infinity}, {0, 1}), Criterion::kGini, form).cutPoint, 0.0);
  });
}

TEST(PredictorSearch, DoesNotSplitByPredictorsThatAreNotUsed) {
  std::vector<double> codes(33);
  std::vector<double> classes(33);
  for (std::size_t index = 0; index < 33; ++index) {
    codes[index] = static_cast<double>(index);
    classes[index] = static_cast<double>(index % 2);
  }

  EXPECT_EQ(Search(Classes(codes, classes, true), Criterion::kGini).improvement, 0.0);
}

TEST(PredictorSearch, SearchesOnlyTheCasesOfTheNode) {
  InBothForms([](Form form) {
    Question const question = Classes({1, 2, 3, 4, 5, 6}, {0, 0, 1, 0, 1, 1});
    PreparedSample sample(question.sample, form);
    CaseLists lists = sample.MakeLists();
    WorkMemory<SortedCase> scratch;
    auto children = lists.DivideCases(lists.GetRoot(), {0, 1, 0, 1, 1, 0}, 2);
    lists.DividePredictor(lists.GetRoot(), 0, children, scratch);
    ClassTarget const target{lists.GetClasses(), nullptr, question.factors};
    PredictorSearch<ClassSides<Gini>> search(sample.GetData(), lists, ClassSides<Gini>(target), 1,
                                             sample.GetWorkers());
    auto const find = [&](NodeRanges const& node) {
      return search.Find(node, SumCases(sample.GetData(), lists.Cases(node)), 0).cutPoint;
    };

    EXPECT_EQ(find(children[0]), 2.0) << "1 against 3 and 6";
    EXPECT_EQ(find(children[1]), 4.5) << "2 and 4 against 5";
    EXPECT_EQ(find(children[0]), 2.0) << "a search leaves nothing behind";
  });
}

TEST(PredictorSearch, SearchesMoreCasesThanItTakesAtATime) {
  constexpr std::size_t kSlice = kWorkPerPoll;
  Question question = Classes({}, {1.0});
  question.sample.target.assign(kSlice + 3, 0.0);
  question.sample.predictors.push_back({});
  for (std::size_t index = 0; index < kSlice + 3; ++index) {
    question.sample.predictors[0].values.push_back(static_cast<double>(index));
    question.sample.predictors[1].values.push_back(index < kSlice ? 1.0 : 3.0);
  }
  for (std::size_t index = kSlice; index < kSlice + 3; ++index) question.sample.target[index] = 1.0;
  question.factors = {1.0, 1.0};
  PreparedSample sample(question.sample);

  EXPECT_EQ(Search(sample, question, Criterion::kFastGini, 0).cutPoint,
            static_cast<double>(kSlice) - 0.5);
  EXPECT_EQ(Search(sample, question, Criterion::kFastGini, 1).cutPoint, 2.0);
  // The last cut that is allowed lies before the end of the first slice.
  question.minChildSize = 5;
  EXPECT_EQ(Search(sample, question, Criterion::kGini, 0).cutPoint,
            static_cast<double>(kSlice) - 2.5);
}

// ---- Random cases ----

Question RandomQuestion(RandomNumbers& random, bool hasClasses, std::uint32_t numClasses,
                        std::uint32_t numValues, bool nominal) {
  std::size_t const count = 2 + random.Below(40);
  Question question{{.target = {}, .hasClasses = hasClasses, .predictors = {{{}, nominal}}}};
  Sample& sample = question.sample;
  bool const weighted = random.Below(2) == 0;
  bool const whole = random.Below(2) == 0;
  bool const repeated = random.Below(2) == 0;
  std::uint32_t const missingIn = 3 + random.Below(20);
  for (std::size_t index = 0; index < count; ++index) {
    sample.target.push_back(hasClasses ? random.Below(numClasses) : random.Below(100) - 50.0);
    sample.predictors[0].values.push_back(random.Below(missingIn) == 0 ? kMissing
                                                                       : random.Below(numValues));
    if (weighted) sample.weights.push_back(random.Multiple(whole ? 1.0 : 0.1, 9));
    if (repeated) sample.frequencies.push_back(random.Multiple(1.0, 3));
  }
  if (hasClasses) {
    sample.target[0] = numClasses - 1.0;
    question.factors.resize(numClasses);
    bool const alike = random.Below(2) == 0;
    double const probability = 1.0 / TotalWeight(sample);
    for (double& factor : question.factors) {
      factor = alike ? probability : probability * random.Multiple(0.1, 20);
    }
  }
  question.minChildSize = random.Below(2) == 0 ? 1 : random.Below(6);
  return question;
}

TEST(PredictorSearch, IsNotBeatenByAnyCutOfRandomCases) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const numClasses = 2 + random.Below(4);
    Question const classes = RandomQuestion(random, true, numClasses, 12, false);
    Question const numbers = RandomQuestion(random, false, 0, 12, false);
    InBothForms([&](Form form) {
      for (Criterion const criterion : kClassCriteria) ExpectFound(classes, criterion, form);
      if (numClasses == 2 && classes.sample.weights.empty()) {
        ExpectFound(classes, Criterion::kFastGini, form);
      }
      ExpectFound(numbers, Criterion::kNumbers, form);
    });
  }
}

TEST(PredictorSearch, IsNotBeatenByAnyDivisionOfRandomCategories) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const numClasses = 2 + random.Below(3);
    Question classes = RandomQuestion(random, true, numClasses, 2 + random.Below(6), true);
    Question numbers = RandomQuestion(random, false, 0, 2 + random.Below(6), true);
    for (Criterion const criterion : kClassCriteria) {
      // Two classes and numbers have an order that contains the best division of all, though not
      // always the best one whose children are large enough.
      bool const exact = numClasses > 2 || classes.minChildSize <= 1;
      ExpectFound(classes, criterion, Form::kAsItComes, exact);
    }
    if (numClasses == 2 && classes.sample.weights.empty()) {
      ExpectFound(classes, Criterion::kFastGini, Form::kAsItComes, classes.minChildSize <= 1);
    }
    ExpectFound(numbers, Criterion::kNumbers, Form::kAsItComes, numbers.minChildSize <= 1);
  }
}

/// The greatest improvement of the legal cuts in the order of the categories' means, which are the
/// shares of the second of two classes.
double BestInOrder(Question const& question, Criterion criterion) {
  Sample::Predictor const& predictor = question.sample.predictors[0];
  auto const meanOf = [&](double category) {
    double weights[2] = {};
    double sum = 0.0;
    for (std::size_t index = 0; index < predictor.values.size(); ++index) {
      if (predictor.values[index] != category) continue;
      double const target = question.sample.target[index];
      double const weight = WeightOf(question.sample, index);
      sum += weight * target;
      weights[criterion != Criterion::kNumbers && target > 0.0 ? 1 : 0] += weight;
    }
    if (criterion == Criterion::kNumbers) return sum / weights[0];
    double const second = question.factors[1] * weights[1];
    return second / (question.factors[0] * weights[0] + second);
  };
  std::vector<double> values = ValuesIn(predictor);
  std::stable_sort(values.begin(), values.end(),
                   [&](double a, double b) { return meanOf(a) < meanOf(b); });
  double best = 0.0;
  std::set<double> left;
  for (double const value : values) {
    left.insert(value);
    best = std::max(best, SlowImprovement(question, criterion, SendLeft(predictor, left)));
  }
  return best;
}

TEST(PredictorSearch, IsNotBeatenByAnyLegalCutInTheOrderOfCategories) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Question classes = RandomQuestion(random, true, 2, 2 + random.Below(6), true);
    Question numbers = RandomQuestion(random, false, 0, 2 + random.Below(6), true);
    classes.minChildSize = numbers.minChildSize = 2 + random.Below(6);

    EXPECT_NEAR(Search(classes, Criterion::kGini).improvement,
                BestInOrder(classes, Criterion::kGini), 1e-10);
    EXPECT_NEAR(Search(numbers, Criterion::kNumbers).improvement,
                BestInOrder(numbers, Criterion::kNumbers), 1e-8);
  }
}

TEST(PredictorSearch, TakesNoDivisionBesideTheOrderOfCategories) {
  // Means 0, 2 and 10: either cut leaves a single case, and {0, 10} against {2, 2} is none.
  Question question = Numbers({0, 1, 1, 2}, {0, 2, 2, 10}, true);
  question.minChildSize = 2;

  EXPECT_EQ(Search(question, Criterion::kNumbers).improvement, 0.0);
  EXPECT_NEAR(BestOfAll(question, Criterion::kNumbers), 2.25, 1e-12);
}

/// Ordered twoing has orders that contain the best division; the other criteria mostly find it.
TEST(PredictorSearch, DividesManyCategoriesValidlyAndMostlyInTheBestWay) {
  for (Criterion const criterion : kClassCriteria) {
    SCOPED_TRACE(static_cast<int>(criterion));
    int numBest = 0;
    double least = 1.0;
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
      SCOPED_TRACE(seed);
      RandomNumbers random(seed);
      Question question{{.target = {}, .predictors = {{{}, true}}}, {1.0, 1.0, 1.0}};
      // Categories that are mixtures of three classes, one of which is frequent.
      for (std::uint32_t category = 0; category <= kMaxExhaustiveCategories; ++category) {
        std::uint32_t const frequent = random.Below(3);
        for (std::uint32_t j = 0; j < 3; ++j) {
          question.sample.predictors[0].values.push_back(category);
          question.sample.target.push_back(j);
          question.sample.weights.push_back(random.Multiple(1.0, j == frequent ? 20 : 10));
        }
      }
      FoundSplit const found = Search(question, criterion);
      double const best = BestOfAll(question, criterion);

      EXPECT_NEAR(SlowImprovement(question, criterion, ByFound(question, found)), found.improvement,
                  1e-9);
      EXPECT_LE(found.improvement, best + 1e-9);
      least = std::min(least, found.improvement / best);
      if (found.improvement > best - 1e-9) ++numBest;
    }
    EXPECT_GE(numBest, criterion == Criterion::kOrderedTwoing ? 10 : 8);
    EXPECT_GE(least, 0.9);
  }
}

/// In long lists, cases that cannot make a better cut are passed over.
TEST(PredictorSearch, FindsTheSameInListsAsInTables) {
  std::vector<std::uint32_t> const sizes = {50, 300, 2000, 5000};
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const count = sizes[seed % 4];
    std::uint32_t const numValues = seed % 3 == 0 ? 10 * count : count / 10;
    for (bool const hasClasses : {true, false}) {
      Question question{{.target = {}, .hasClasses = hasClasses, .predictors = {{}}}};
      double const threshold = random.Below(numValues);
      std::uint32_t const noise = 1 + random.Below(4);
      bool const hasMissing = random.Below(2) == 0;
      for (std::uint32_t index = 0; index < count; ++index) {
        double const value = random.Below(numValues);
        bool const isMissing = hasMissing && random.Below(10) == 0;
        question.sample.predictors[0].values.push_back(isMissing ? kMissing : value);
        bool const above = random.Below(4) < noise ? random.Below(2) == 0 : value > threshold;
        double const extreme = random.Below(200) == 0 ? 1000.0 : 0.0;
        question.sample.target.push_back(
            hasClasses ? (above ? 1.0 : 0.0) : (above ? 5.0 : 0.0) + random.Below(5) + extreme);
      }
      question.sample.target[0] = 1.0;
      question.factors = {random.Multiple(0.1, 20), random.Multiple(0.1, 20)};
      question.minChildSize = random.Below(2) == 0 ? 1 : random.Below(count / 2);
      std::vector<Criterion> criteria = {Criterion::kNumbers};
      if (hasClasses) criteria = {Criterion::kFastGini, Criterion::kGini, Criterion::kTwoing};
      for (Criterion const criterion : criteria) {
        SCOPED_TRACE(static_cast<int>(criterion));
        PreparedSample listed(question.sample, Form::kSorted);
        PreparedSample coded(question.sample, Form::kCoded);

        FoundSplit const inList = Search(listed, question, criterion);
        FoundSplit const inTable = Search(coded, question, criterion);

        EXPECT_EQ(inList.improvement, inTable.improvement);
        EXPECT_EQ(inList.cutPoint, inTable.cutPoint);
      }
    }
  }
}

TEST(PredictorSearch, FindsTheSameInCasesThatAreRepeatedAndInOnesThatWeighMore) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    Question weighted = RandomQuestion(random, true, 3, 10, false);
    weighted.sample.weights.clear();
    weighted.sample.frequencies.clear();
    Question repeated = weighted;
    repeated.sample.target.clear();
    repeated.sample.predictors[0].values.clear();
    for (std::size_t index = 0; index < weighted.sample.GetNumCases(); ++index) {
      double const frequency = random.Multiple(1.0, 3);
      weighted.sample.frequencies.push_back(frequency);
      for (double copy = 0.0; copy < frequency; ++copy) {
        repeated.sample.target.push_back(weighted.sample.target[index]);
        repeated.sample.predictors[0].values.push_back(weighted.sample.predictors[0].values[index]);
      }
    }
    weighted.sample.weights = weighted.sample.frequencies;
    InBothForms([&](Form form) {
      for (Criterion const criterion : kClassCriteria) {
        FoundSplit const byWeight = Search(weighted, criterion, form);
        FoundSplit const byCopies = Search(repeated, criterion, form);

        EXPECT_EQ(byWeight.cutPoint, byCopies.cutPoint);
        EXPECT_EQ(byWeight.improvement, byCopies.improvement) << "sums are exact";
      }
    });
  }
}

/// The same division by an ordered predictor, by its mirror image and by categories.
TEST(PredictorSearch, GivesEqualDivisionsEqualImprovements) {
  for (std::uint32_t seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    std::uint32_t const numClasses = 2 + random.Below(3);
    for (bool const hasClasses : {true, false}) {
      Question question = RandomQuestion(random, hasClasses, numClasses, 2, false);
      question.minChildSize = 1;
      Sample& sample = question.sample;
      std::vector<double> mirrored = sample.predictors[0].values;
      for (double& value : mirrored) value = value == kMissing ? kMissing : 1.0 - value;
      sample.predictors.push_back({sample.predictors[0].values, true});
      sample.predictors.push_back({mirrored});
      sample.predictors.push_back({mirrored, true});
      InBothForms([&](Form form) {
        PreparedSample prepared(sample, form);
        std::vector<Criterion> criteria = {Criterion::kNumbers};
        if (hasClasses) criteria.assign(std::begin(kClassCriteria), std::end(kClassCriteria));
        if (hasClasses && numClasses == 2 && sample.weights.empty()) {
          criteria.push_back(Criterion::kFastGini);
        }
        for (Criterion const criterion : criteria) {
          double const first = Search(prepared, question, criterion, 0).improvement;
          for (std::size_t predictor = 1; predictor < 4; ++predictor) {
            EXPECT_EQ(Search(prepared, question, criterion, predictor).improvement, first)
                << "predictor " << predictor << ", criterion " << static_cast<int>(criterion);
          }
        }
      });
    }
  }
}

TEST(PredictorSearch, DoesNotDependOnTheOrderOfTheCases) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    RandomNumbers random(seed);
    for (bool const hasClasses : {true, false}) {
      Question const question = RandomQuestion(random, hasClasses, 3, 10, seed % 3 == 0);
      Question reversed = question;
      for (std::vector<double>* column :
           {&reversed.sample.target, &reversed.sample.weights, &reversed.sample.frequencies,
            &reversed.sample.predictors[0].values}) {
        std::reverse(column->begin(), column->end());
      }
      InBothForms([&](Form form) {
        std::vector<Criterion> criteria = {Criterion::kNumbers};
        if (hasClasses) criteria.assign(std::begin(kClassCriteria), std::end(kClassCriteria));
        for (Criterion const criterion : criteria) {
          FoundSplit const one = Search(question, criterion, form);
          FoundSplit const other = Search(reversed, criterion, form);
          EXPECT_EQ(one.improvement, other.improvement);
          EXPECT_EQ(one.cutPoint, other.cutPoint);
          EXPECT_EQ(one.left, other.left);
          EXPECT_EQ(one.right, other.right);
        }
      });
    }
  }
}

}  // namespace
}  // namespace tree::grow
