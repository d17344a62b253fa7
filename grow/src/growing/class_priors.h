#ifndef TREE_GROW_SRC_GROWING_CLASS_PRIORS_H_
#define TREE_GROW_SRC_GROWING_CLASS_PRIORS_H_

#include <cstddef>
#include <vector>

#include "tree/misclassification.h"

namespace tree::grow {

/// The cost of taking a case of class `observed` for class `predicted`: the cell with the predicted
/// class as row and the observed one as column; what the matrix lacks costs 1, or 0 on the
/// diagonal.
double CostOf(Cost const& costs, int predicted, int observed);

/// Refuses, by `InputError`, costs and custom priors that are infinite, or so large that their
/// sums, or the squares of the costs, are.
void CheckClassNumbers(Priors const& priors, Cost const& costs, std::size_t numClasses);

/// The prior probabilities of the classes, which add up to 1. `classWeights`: weighted number of
/// training cases, by class, at least one of them above 0.
/// By type: `PriorTypeDefault`, all classes alike; `PriorTypeAlternate`, their shares of the
/// training cases; `PriorTypeCustom`, as they were set. A class without training cases has the
/// prior 0, for nothing can be learned about it; and if no class is left a prior, all that have
/// cases are alike.
std::vector<double> FindPriors(Priors const& priors, std::vector<double> const& classWeights);

/// Priors altered by costs: with p(j) and the sum C(j) of column j, proportional to p(j) C(j).
/// Splits found with them mind the costs. Source: Breiman, Friedman, Olshen and Stone 1984, section
/// 4.4. Where all of them would be 0, the priors stay.
std::vector<double> AlterPriors(std::vector<double> const& priors, Cost const& costs);

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_CLASS_PRIORS_H_
