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

/// Whether two statistics have the same degrees of freedom, so that the greater value is the more
/// significant.
inline bool AreComparable(TestStatistic const& left, TestStatistic const& right) {
  return left.degreesOfFreedom == right.degreesOfFreedom &&
         left.errorDegreesOfFreedom == right.errorDegreesOfFreedom;
}

/// Whether F is surely less significant than another, by bounds that cost a fraction of the
/// p-values; false means nothing. For one degree of freedom, and any of the errors.
bool IsSurelyLessSignificant(TestStatistic const& left, TestStatistic const& right);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_TEST_STATISTIC_H_
