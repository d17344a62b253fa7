#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "grow_testing/sample_data.h"
#include "tree/grow/split_statistics.h"

// The rules of roots that QUEST grows, held against what R's tests and MASS's discriminants make of
// the same cases: quest/README.md tells how the fixture is made.

namespace tree::grow {
namespace {

struct ExpectedRule {
  int predictor = 0;
  std::string test;
  double statistic = 0.0;
  double logP = 0.0;
  double improvement = 0.0;
  double cut = 0.0;         // of an ordered predictor
  std::vector<double> low;  // categories of child 0 of a nominal one
};

struct ExpectedRoot {
  std::string name;
  std::vector<double> classes;
  std::vector<double> frequencies;
  std::vector<double> weights;
  std::vector<double> priors;
  std::vector<std::pair<std::string, std::vector<double>>> predictors;  // with the kind of each
  std::vector<ExpectedRule> rules;

  SampleData Make() const {
    SampleData data(classes.size());
    data.Classes(classes);
    for (auto const& [kind, values] : predictors) {
      kind == "nominal" ? data.Nominal(values) : data.Ordered(values);
    }
    if (!frequencies.empty()) data.Frequencies(frequencies);
    if (!weights.empty()) data.Weights(weights);
    return data;
  }
};

std::vector<std::string> FieldsOf(std::string const& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
  return fields;
}

std::vector<ExpectedRoot> ReadRoots() {
  std::ifstream stream(std::string(TREE_GROW_QUEST_FIXTURES) + "/rules.txt");
  EXPECT_TRUE(stream.is_open());
  std::vector<ExpectedRoot> roots;
  for (std::string line; std::getline(stream, line);) {
    std::vector<std::string> const fields = FieldsOf(line);
    std::string const& word = fields.at(0);
    if (word == "data") {
      roots.emplace_back().name = fields.at(1);
      continue;
    }
    ExpectedRoot& root = roots.back();
    if (word == "rule") {
      root.rules.push_back({std::stoi(fields.at(1)),
                            fields.at(2),
                            std::stod(fields.at(3)),
                            std::stod(fields.at(4)),
                            std::stod(fields.at(5)),
                            0.0,
                            {}});
      continue;
    }
    std::vector<double> numbers;
    for (std::size_t field = 1; field < fields.size(); ++field) {
      numbers.push_back(fields[field] == "missing" ? systemMissingValue()
                                                   : std::stod(fields[field]));
    }
    if (word == "classes") {
      root.classes = numbers;
    } else if (word == "frequencies") {
      root.frequencies = numbers;
    } else if (word == "weights") {
      root.weights = numbers;
    } else if (word == "priors") {
      root.priors = numbers;
    } else if (word == "cut") {
      root.rules.back().cut = numbers.at(0);
    } else if (word == "low") {
      root.rules.back().low = numbers;
    } else {
      root.predictors.emplace_back(word, numbers);
    }
  }
  return roots;
}

void ExpectNear(double value, double expected, double tolerance) {
  EXPECT_NEAR(value, expected, tolerance * std::max(1e-3, std::abs(expected)));
}

void ExpectRule(SplitRuleImp const& rule, ExpectedRule const& expected, ExpectedRoot const& root) {
  ASSERT_EQ(rule.GetPredictorIndex(), expected.predictor);
  // With case weights, chi-square ends an iteration when no frequency changes by a thousandth.
  bool const isIterative = expected.test == "chi-square" && !root.weights.empty();
  double const tolerance = isIterative ? 1e-4 : 1e-9;
  ExpectNear(rule.GetStatistic(SplitTestStatistic), expected.statistic, tolerance);
  ExpectNear(rule.GetStatistic(SplitLogPValue), expected.logP, tolerance);
  ExpectNear(rule.GetStatistic(SplitImprovement), expected.improvement, 1e-9);
  if (auto const* const ordered = dynamic_cast<OSplitRule const*>(&rule)) {
    ExpectNear(ordered->GetCutPoint(), expected.cut, 1e-9);
    return;
  }
  auto const predictor = static_cast<std::size_t>(expected.predictor);
  for (double const category : root.predictors[predictor].second) {
    bool const isLow =
        std::find(expected.low.begin(), expected.low.end(), category) != expected.low.end();
    EXPECT_EQ(rule.Classify(category), isLow ? 0 : 1) << "category " << category;
  }
}

void ExpectRules(ExpectedRoot const& expected, GrowOptions const& options) {
  SampleData const data = expected.Make();
  auto settings = data.LooseSettings<QuestSettingsImp>();
  settings.GetStopRule()->SetMaxTreeDepth(1);
  settings.GetPriors()->Set(PriorTypeAlternate);
  for (std::size_t j = 0; j < expected.priors.size(); ++j) {
    settings.GetPriors()->Set(static_cast<int>(j), expected.priors[j]);
  }

  std::unique_ptr<Grower> const grower = data.Make(settings, options);
  ASSERT_TRUE(grower->Grow()) << grower->GetFailureMessage();

  auto const& root = dynamic_cast<NodeImp const&>(*grower->GetRootNode());
  ASSERT_EQ(root.GetNumCompetitors(), static_cast<int>(expected.rules.size()));
  for (std::size_t i = 0; i < expected.rules.size(); ++i) {
    SCOPED_TRACE("rule " + std::to_string(i));
    ExpectRule(*root.GetCompetitorImp(static_cast<unsigned int>(i)), expected.rules[i], expected);
  }
}

TEST(QuestOfR, HasTheSameRulesAtTheRoot) {
  std::size_t numRules = 0;
  for (ExpectedRoot const& expected : ReadRoots()) {
    SCOPED_TRACE(expected.name);
    numRules += expected.rules.size();
    ExpectRules(expected, {.numThreads = 1});
  }
  EXPECT_EQ(numRules, 54U);
}

TEST(QuestOfR, HasTheSameRulesWhereValuesAreNotCoded) {
  for (ExpectedRoot const& expected : ReadRoots()) {
    SCOPED_TRACE(expected.name);
    ExpectRules(expected, {.numThreads = 1, .maxCodedValues = 0});
  }
}

}  // namespace
}  // namespace tree::grow
