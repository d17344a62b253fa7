#ifndef TREE_GROW_SRC_ASSOCIATION_LOG_TAILS_H_
#define TREE_GROW_SRC_ASSOCIATION_LOG_TAILS_H_

// Upper tails of distributions as natural logarithms, which keep apart what would all be 0: down to
// exp(-1e300), with a relative error of the logarithm below 1e-11.

namespace tree::grow {

/// The logarithm of the probability that chi-square exceeds `value`; 0 for a value that is not
/// above 0, or not a number, and without degrees of freedom; -infinity for infinity. Cost: below 1
/// microsecond as a rule, and grows with the root of the degrees of freedom.
double LogChiSquareTail(double value, double degreesOfFreedom);

/// The logarithm of the probability that F exceeds `value`, in the same way. 0, too, where no
/// degree of freedom is left for the errors.
double LogFTail(double value, double degreesOfFreedom, double errorDegreesOfFreedom);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_ASSOCIATION_LOG_TAILS_H_
