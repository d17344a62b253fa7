#ifndef TREE_GROW_SRC_QUEST_VARIABLE_SELECTION_H_
#define TREE_GROW_SRC_QUEST_VARIABLE_SELECTION_H_

#include <cstddef>
#include <span>
#include <vector>

namespace tree::grow {

/// The tests of a predictor in a node. Natural logarithms of p-values; 0 where there is nothing to
/// test.
struct PredictorTests {
  bool used = true;
  bool isOrdered = true;
  double logP = 0.0;       ///< of equal means of the classes (F), or of independence (chi-square)
  double logLevene = 0.0;  ///< of equal spread of the classes: of ordered predictors only
};

/// Which predictor splits a node.
struct SelectedPredictor {
  std::size_t predictor = 0;
  bool byLevene = false;
  double adjustedLogP = 0.0;  ///< of the test that chose it, times the number of tests; at most 0
};

/// Whether the first tests choose, so that Levene's are not needed: the least p-value times the
/// number of predictors used is below `alpha`.
bool IsSelectedByMeans(std::span<PredictorTests const> tests, double alpha);

/// The predictor of the least p-value of the first tests, if that is below alpha / M for M
/// predictors; or else that of the least of Levene's, if that is below alpha / (M + M1) for M1
/// ordered ones; or else the first one after all. Of equal ones, the one with the lowest position.
/// Requires a predictor that is used. Source: Loh and Shih 1997, algorithm 1.
SelectedPredictor SelectPredictor(std::span<PredictorTests const> tests, double alpha);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_VARIABLE_SELECTION_H_
