#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "chaid/category_merger.h"
#include "growing/fixed_point.h"

// Merging held against R's tests of every pair on the way: association/README.md tells how the
// fixtures are made.

namespace tree::grow {
namespace {

/// What R has found after one merger.
struct Step {
  double pairLogP = 0.0;
  double value = 0.0;
  double logP = 0.0;
  double logMultiplier = 0.0;
  std::vector<std::uint16_t> groupOf;
};

struct Merging {
  std::string name;
  CategoryKind kind = CategoryKind::kNominal;
  bool floating = false;
  std::size_t numClasses = 0;
  std::vector<std::vector<double>> categories;  // sizes by class, or numbers
  std::vector<Step> steps;

  MergedCategories Merge(MergeSettings const& settings) const {
    return numClasses > 0 ? MergeClasses(settings) : MergeNumbers(settings);
  }

 private:
  MergedCategories MergeClasses(MergeSettings const& settings) const {
    std::vector<std::int64_t> table;
    for (auto const& sizes : categories) {
      for (double const size : sizes) table.push_back(std::llround(size));
    }
    CategoryMerger<ClassGroups> merger(ClassGroups({}, numClasses, false, 1.0), settings);
    return merger.Merge(table, kind, floating);
  }
  MergedCategories MergeNumbers(MergeSettings const& settings) const {
    std::vector<double> all;
    for (auto const& numbers : categories) all.insert(all.end(), numbers.begin(), numbers.end());
    FixedNumbers const fixed = CoarsenForSquares(FixNumbers(all, {}), {});
    std::vector<NumberSums> table;
    std::size_t index = 0;
    for (auto const& numbers : categories) {
      NumberSums& sums = table.emplace_back();
      for (std::size_t count = numbers.size(); count > 0; --count) {
        sums.AddCase(1, 1, fixed.multiples[index++]);
      }
    }
    CategoryMerger<NumberGroups> merger(NumberGroups(1.0), settings);
    return merger.Merge(table, kind, floating);
  }
};

std::vector<Merging> ReadMergings() {
  std::ifstream stream(std::string(TREE_GROW_ASSOCIATION_FIXTURES) + "/mergings.txt");
  EXPECT_TRUE(stream.is_open());
  std::vector<Merging> mergings;
  for (std::string text; std::getline(stream, text);) {
    std::istringstream fields(text);
    std::string word;
    std::getline(fields, word, '\t');
    if (word == "merging") {
      Merging& merging = mergings.emplace_back();
      std::string kind;
      std::getline(fields, merging.name, '\t');
      std::getline(fields, kind, '\t');
      merging.kind = kind == "nominal" ? CategoryKind::kNominal : CategoryKind::kOrdinal;
      fields >> merging.floating >> merging.numClasses;
    } else if (word == "step") {
      Step& step = mergings.back().steps.emplace_back();
      fields >> step.pairLogP >> step.value >> step.logP >> step.logMultiplier;
      for (std::uint16_t group = 0; fields >> group;) step.groupOf.push_back(group);
    } else {
      auto& category = mergings.back().categories.emplace_back();
      for (double number = 0.0; fields >> number;) category.push_back(number);
    }
  }
  return mergings;
}

void ExpectStep(MergedCategories const& merged, Step const& step) {
  EXPECT_EQ(merged.groupOf, step.groupOf);
  EXPECT_NEAR(merged.statistic.value, step.value, 1e-9 * step.value);
  EXPECT_NEAR(merged.logP, step.logP, 1e-9 * -step.logP);
}

TEST(MergingOfR, TakesTheSameSteps) {
  std::size_t numSteps = 0;
  for (Merging const& merging : ReadMergings()) {
    double least = 0.0;  // of the p-values so far
    for (std::size_t index = 0; index < merging.steps.size(); ++index) {
      SCOPED_TRACE(merging.name + ", step " + std::to_string(index));
      Step const& step = merging.steps[index];
      least = std::min(least, step.pairLogP);
      // A level that lets all merge that R has merged so far, and not the next pair.
      bool const isLast = index + 1 == merging.steps.size();
      if (!isLast && merging.steps[index + 1].pairLogP >= least) continue;
      MergeSettings settings;
      settings.alphaOfMerge = std::exp(least) * (1.0 - 1e-9);

      MergedCategories const merged = merging.Merge(settings);

      ExpectStep(merged, step);
      EXPECT_NEAR(merged.adjustedLogP, std::min(0.0, step.logP + step.logMultiplier),
                  1e-9 * -step.logP);
      ++numSteps;
    }
  }
  EXPECT_GT(numSteps, 40U);
}

TEST(MergingOfR, KeepsTheSameStepExhaustively) {
  MergeSettings settings;
  settings.exhaustive = true;
  for (Merging const& merging : ReadMergings()) {
    SCOPED_TRACE(merging.name);
    Step best = merging.steps[0];
    for (Step const& step : merging.steps) {
      if (step.logP <= best.logP) best = step;
    }

    MergedCategories const merged = merging.Merge(settings);

    if (merged.numGroups == merged.groupOf.size()) {
      EXPECT_LT(merged.logP, best.logP);  // not merging at all is best
    } else {
      ExpectStep(merged, best);
    }
  }
}

}  // namespace
}  // namespace tree::grow
