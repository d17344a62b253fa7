#ifndef TREE_GROW_SRC_ASSOCIATION_TEST_STATISTIC_H_
#define TREE_GROW_SRC_ASSOCIATION_TEST_STATISTIC_H_

namespace tree::grow {

/// What a test of association gives: chi-square, or F.
struct TestStatistic {
  double value = 0.0;
  double degreesOfFreedom = 0.0;       ///< 0 where there is nothing to test
  double errorDegreesOfFreedom = 0.0;  ///< of F; 0 for chi-square
};

/// The natural logarithm of the p-value; 0 where there is nothing to test.
double LogP(TestStatistic const& statistic);

/// Whether a statistic is surely less significant than another, by a bound that costs a fraction of
/// their p-values; false means nothing. For chi-square and F with the same degrees of freedom on
/// both sides, and for F with one degree of freedom.
bool IsSurelyLessSignificant(TestStatistic const& left, TestStatistic const& right);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_TEST_STATISTIC_H_
