#include <cmath>
#include <cstddef>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quest/discriminant_coordinates.h"
#include "quest/normal_split.h"

// Discriminants held against those of R's MASS: discriminants/README.md tells how the fixtures are
// made.

namespace tree::grow {
namespace {

/// Calls `visit` with the first word of each line and the rest of it.
template <class Visit>
void ForLines(std::string const& name, Visit const& visit) {
  std::ifstream stream(std::string(TREE_GROW_DISCRIMINANT_FIXTURES) + "/" + name);
  ASSERT_TRUE(stream.is_open()) << name;
  for (std::string text; std::getline(stream, text);) {
    std::istringstream fields(text);
    std::string word;
    std::getline(fields, word, '\t');
    visit(word, fields);
  }
}

/// The numbers with mean 0 and variance 1 in the weights of their rows; the greatest one positive.
std::vector<double> Standardised(std::vector<double> numbers, std::vector<double> const& sizes) {
  double const size = std::accumulate(sizes.begin(), sizes.end(), 0.0);
  double const mean = std::inner_product(numbers.begin(), numbers.end(), sizes.begin(), 0.0) / size;
  double squares = 0.0;
  double farthest = 0.0;
  for (std::size_t row = 0; row < numbers.size(); ++row) {
    numbers[row] -= mean;
    squares += sizes[row] / size * numbers[row] * numbers[row];
    if (std::abs(numbers[row]) > std::abs(farthest)) farthest = numbers[row];
  }
  for (double& number : numbers) number /= std::copysign(std::sqrt(squares), farthest);
  return numbers;
}

TEST(DiscriminantsOfMass, PlaceCategoriesAlike) {
  std::string name;
  std::size_t numClasses = 0;
  std::vector<double> weights;
  std::vector<double> sizes;
  int numTables = 0;
  ForLines("coordinates.txt", [&](std::string const& word, std::istream& fields) {
    if (word == "table") {
      std::getline(fields, name, '\t');
      fields >> numClasses;
      weights.clear();
      sizes.clear();
      return;
    }
    std::vector<double> numbers;
    for (double number = 0.0; fields >> number;) numbers.push_back(number);
    if (word == "weights") {
      weights.insert(weights.end(), numbers.begin(), numbers.end());
      sizes.push_back(std::accumulate(numbers.begin(), numbers.end(), 0.0));
      return;
    }
    SCOPED_TRACE(name);
    std::vector<double> const expected = Standardised(numbers, sizes);

    std::vector<double> const coordinates = DiscriminantCoordinates(weights, numClasses);

    ASSERT_EQ(coordinates.size(), expected.size());
    for (std::size_t row = 0; row < expected.size(); ++row) {
      EXPECT_NEAR(coordinates[row], expected[row], 1e-8) << row;
    }
    ++numTables;
  });
  EXPECT_EQ(numTables, 14);
}

TEST(DiscriminantsOfMass, SplitNumbersAtTheSamePoint) {
  std::string name;
  std::vector<ClassMoments> classes;
  int numSplits = 0;
  ForLines("splits.txt", [&](std::string const& word, std::istream& fields) {
    if (word == "split") {
      std::getline(fields, name, '\t');
      classes.clear();
    } else if (word == "class") {
      ClassMoments& moments = classes.emplace_back();
      fields >> moments.probability >> moments.mean >> moments.variance;
    } else {
      SCOPED_TRACE(name);
      double expected = 0.0;
      fields >> expected;

      std::vector<double> const cuts = NormalSplitPoints(classes);

      ASSERT_FALSE(cuts.empty());
      EXPECT_NEAR(cuts[0], expected, 1e-8 * std::abs(expected));
      ++numSplits;
    }
  });
  EXPECT_GT(numSplits, 15);
}

}  // namespace
}  // namespace tree::grow
