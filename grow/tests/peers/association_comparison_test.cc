#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "association/class_test.h"
#include "association/f_test.h"
#include "association/log_tails.h"
#include "association/number_sums.h"
#include "growing/fixed_point.h"

// The tests of association, held against R's: association/README.md tells how the fixtures are
// made.

namespace tree::grow {
namespace {

/// A line of a fixture: fields between tabs.
using Line = std::vector<std::string>;

std::vector<Line> ReadLines(std::string const& name) {
  std::ifstream stream(std::string(TREE_GROW_ASSOCIATION_FIXTURES) + "/" + name);
  EXPECT_TRUE(stream.is_open()) << name;
  std::vector<Line> lines;
  for (std::string text; std::getline(stream, text);) {
    Line& line = lines.emplace_back();
    std::istringstream fields(text);
    for (std::string field; std::getline(fields, field, '\t');) line.push_back(field);
  }
  return lines;
}

std::vector<double> NumbersOf(Line const& line) {
  std::vector<double> numbers;
  for (std::size_t field = 1; field < line.size(); ++field) {
    numbers.push_back(std::stod(line[field]));
  }
  return numbers;
}

void ExpectNear(double value, double expected, double tolerance) {
  EXPECT_NEAR(value, expected, tolerance * std::abs(expected));
}

TEST(AssociationOfR, HasTheSameTails) {
  std::size_t numTails = 0;
  for (Line const& line : ReadLines("tails.txt")) {
    std::vector<double> const numbers = NumbersOf(line);
    SCOPED_TRACE(line[0] + " " + line[1] + " " + line[2] + " " + line[3]);

    double const logP = line[0] == "f" ? LogFTail(numbers[0], numbers[1], numbers[2])
                                       : LogChiSquareTail(numbers[0], numbers[1]);

    ExpectNear(logP, numbers[3], 1e-12);
    ++numTails;
  }
  EXPECT_GT(numTails, 300U);
}

struct TestedTable {
  std::string name;
  std::size_t numClasses = 0;
  std::vector<std::vector<double>> sizes;
  std::vector<std::vector<double>> weights;
  std::vector<double> scores;

  TestStatistic Test(ClassTestKind kind) const {
    std::vector<ClassRow> rows;
    for (std::size_t row = 0; row < sizes.size(); ++row) {
      rows.push_back({sizes[row].data(), weights.empty() ? nullptr : weights[row].data()});
    }
    return ClassTest({kind, {1e-11, 100000}, scores}, numClasses, 1.0).Test(rows);
  }
};

TEST(AssociationOfR, HasTheSameTestsOfClasses) {
  std::size_t numTests = 0;
  TestedTable table;
  for (Line const& line : ReadLines("class_tables.txt")) {
    SCOPED_TRACE(table.name);
    if (line[0] == "table") {
      table = {line[1], std::stoul(line[2]), {}, {}, {}};
    } else if (line[0] == "sizes") {
      table.sizes.push_back(NumbersOf(line));
    } else if (line[0] == "weights") {
      table.weights.push_back(NumbersOf(line));
    } else if (line[0] == "scores") {
      table.scores = NumbersOf(line);
    } else {
      SCOPED_TRACE(line[0]);
      std::vector<double> const expected = NumbersOf(line);

      TestStatistic const statistic =
          table.Test(line[0] == "pearson"       ? ClassTestKind::kPearson
                     : line[0] == "row-effects" ? ClassTestKind::kRowEffects
                                                : ClassTestKind::kLikelihoodRatio);

      ExpectNear(statistic.value, expected[0], 1e-7);
      EXPECT_EQ(statistic.degreesOfFreedom, expected[1]);
      ExpectNear(LogP(statistic), expected[2], 1e-7);
      ++numTests;
    }
  }
  EXPECT_GT(numTests, 80U);
}

/// Numbers of several groups in fixed point.
struct Groups {
  std::vector<std::vector<double>> numbers;
  std::vector<std::vector<double>> weights;

  /// `ofDistances`: of the distances from the means of the groups.
  TestStatistic Test(bool ofDistances) const {
    std::vector<double> all;
    std::vector<double> allWeights;
    for (auto const& group : numbers) all.insert(all.end(), group.begin(), group.end());
    for (auto const& group : weights) {
      allWeights.insert(allWeights.end(), group.begin(), group.end());
    }
    FixedWeights const fixedWeights = FixWeights(allWeights);
    FixedNumbers const fixed = CoarsenForSquares(FixNumbers(all, fixedWeights), fixedWeights);
    std::vector<NumberGroup> groups;
    std::uint32_t begin = 0;
    for (auto const& group : numbers) {
      auto const end = begin + static_cast<std::uint32_t>(group.size());
      NumberSums sums;
      for (std::uint32_t index = begin; index < end; ++index) {
        sums.AddCase(1, fixedWeights.Of(index), fixed.multiples[index]);
      }
      if (ofDistances) {
        std::int64_t const centre = WholeMean(sums);
        sums = {};
        for (std::uint32_t index = begin; index < end; ++index) {
          sums.AddCase(1, fixedWeights.Of(index), std::abs(fixed.multiples[index] - centre));
        }
      }
      groups.push_back(SumUp(sums, 0));
      begin = end;
    }
    return FTest(groups, 1.0);
  }
};

TEST(AssociationOfR, HasTheSameTestsOfNumbers) {
  std::size_t numTests = 0;
  std::string name;
  Groups groups;
  for (Line const& line : ReadLines("number_groups.txt")) {
    SCOPED_TRACE(name);
    if (line[0] == "numbers") {
      name = line[1];
      groups = {};
    } else if (line[0] == "group") {
      groups.numbers.push_back(NumbersOf(line));
    } else if (line[0] == "weights") {
      groups.weights.push_back(NumbersOf(line));
    } else {
      SCOPED_TRACE(line[0]);
      std::vector<double> const expected = NumbersOf(line);

      TestStatistic const statistic = groups.Test(line[0] == "levene");

      ExpectNear(statistic.value, expected[0], 1e-9);
      EXPECT_EQ(statistic.degreesOfFreedom, expected[1]);
      EXPECT_EQ(statistic.errorDegreesOfFreedom, expected[2]);
      ExpectNear(LogP(statistic), expected[3], 1e-9);
      ++numTests;
    }
  }
  EXPECT_EQ(numTests, 14U);
}

}  // namespace
}  // namespace tree::grow
