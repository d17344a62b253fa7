#ifndef TREE_GROW_SRC_GROWING_CLASS_MODEL_H_
#define TREE_GROW_SRC_GROWING_CLASS_MODEL_H_

#include <cstddef>
#include <vector>

#include "tree/misclassification.h"

namespace tree::grow {

/// What a classification tree knows about its classes as a whole: how often they are, how probable
/// they are taken to be, and what mistakes cost. All by class index.
class ClassModel {
 public:
  /// `classWeights`: weighted number of the training cases of each class, at least one above 0.
  ClassModel(Priors const& priors, Cost const& costs, std::vector<double> const& classWeights);

  std::size_t GetNumClasses() const { return priors_.size(); }
  /// The priors of the classes.
  std::vector<double> const& GetPriors() const { return priors_; }
  /// What a case of weight 1 adds to the probability of a node when splits are sought: the prior,
  /// altered by the costs when the settings want that, over the weight of the class.
  std::vector<double> const& GetSplitFactors() const { return splitFactors_; }
  /// What a case of weight 1 adds to the probability of a node.
  std::vector<double> const& GetFactors() const { return factors_; }
  /// The cost of taking a case of class `observed` for class `predicted`.
  double CostOf(std::size_t predicted, std::size_t observed) const {
    return costs_[predicted * priors_.size() + observed];
  }

  /// The probabilities of the classes in a node, which add up to 1: with the weight N_j(t) of class
  /// j there, in proportion to prior(j) N_j(t) / N_j. Source: Breiman, Friedman, Olshen and Stone
  /// 1984, section 2.4. Where priors of 0 leave nothing, the shares of the weights.
  std::vector<double> Probabilities(std::vector<double> const& nodeWeights) const;
  /// The class of least expected cost; of equal ones, the first.
  std::size_t Predict(std::vector<double> const& probabilities) const;
  /// What a node costs that predicts a class for all its cases, as its part of the risk of a tree:
  /// the sum over classes j of C(predicted | j) prior(j) N_j(t) / N_j.
  double RiskOf(std::size_t predicted, std::vector<double> const& nodeWeights) const;

 private:
  std::vector<double> priors_;
  std::vector<double> factors_;
  std::vector<double> splitFactors_;
  std::vector<double> costs_;  // [predicted][observed]
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_CLASS_MODEL_H_
