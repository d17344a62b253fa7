#ifndef TREE_GROW_SRC_ASSOCIATION_CLASS_TEST_H_
#define TREE_GROW_SRC_ASSOCIATION_CLASS_TEST_H_

#include <cstddef>
#include <span>
#include <vector>

#include "association/expected_frequencies.h"
#include "association/test_statistic.h"

namespace tree::grow {

/// How the association of groups with classes is tested.
enum class ClassTestKind {
  kPearson,          ///< chi-square of Pearson
  kLikelihoodRatio,  ///< chi-square of the likelihood ratio
  kRowEffects,       ///< for ordered classes: of row effects against independence
};

/// What a test of classes depends on.
struct ClassTestSettings {
  ClassTestKind kind = ClassTestKind::kPearson;
  FitLimits limits;  ///< `epsilon` in cases
  std::vector<double>
      scores;  ///< of `kRowEffects`: by class, finite; where there is none, its index
};

/// A group of cases as it falls into classes. Pointers are **borrowed**.
struct ClassRow {
  double const* sizes = nullptr;    ///< by class: cases, in units of frequency
  double const* weights = nullptr;  ///< by class: their weights, in any unit; null if all weigh 1
};

/// Tests of association of groups with classes; keeps the memory that it works with.
///
/// Rows and columns without cases do not count. With weights, expected frequencies are those of
/// `ExpectedFrequencies`; a cell without cases has the mean weight of the whole table, so that
/// weights that are all the same are none. Degrees of freedom: (rows - 1) (columns - 1), or rows -
/// 1 for row effects.
class ClassTest {
 public:
  /// `sizeUnit`: cases per unit of frequency.
  ClassTest(ClassTestSettings const& settings, std::size_t numClasses, double sizeUnit);

  TestStatistic Test(std::span<ClassRow const> rows);
  /// The same for two rows, faster in the usual case.
  TestStatistic TestPair(ClassRow const& first, ClassRow const& second);

  ClassTestSettings const& GetSettings() const { return settings_; }

 private:
  void Compress(std::span<ClassRow const> rows);
  TestStatistic PearsonOfTwoClasses(double const* first, double const* second) const;
  TestStatistic PearsonOfPair(double const* first, double const* second) const;

  ClassTestSettings settings_;
  std::size_t numClasses_;
  double sizeUnit_;
  ExpectedFrequencies fit_;
  // The present table without empty rows and columns:
  std::vector<std::size_t> columns_;
  std::vector<double> cells_;
  std::vector<double> meanWeights_;
  std::vector<double> scores_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_CLASS_TEST_H_
