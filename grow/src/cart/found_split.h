#ifndef TREE_GROW_SRC_CART_FOUND_SPLIT_H_
#define TREE_GROW_SRC_CART_FOUND_SPLIT_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tree::grow {

/// The best split of a node by one predictor.
struct FoundSplit {
  double improvement = 0.0;          ///< on the scale of the tree; 0 where there is no split
  double cutPoint = 0.0;             ///< of an ordered predictor: values up to it go left
  std::vector<std::uint16_t> left;   ///< of a nominal one: the codes that go left, ascending
  std::vector<std::uint16_t> right;  ///< the other codes that the node has, ascending
};

/// Keeps the best of the scores that it is offered; of equal ones, the first.
class BestScore {
 public:
  /// Whether the division as it stands is the best so far, and then is kept. `sides`: as in
  /// `sides.h`.
  template <class Sides>
  bool Take(Sides& sides) {
    if (!sides.Reaches(threshold_)) return false;  // nearly always
    double const quotient = sides.GetQuotient();
    if (!(quotient > best_)) return false;
    best_ = quotient;
    threshold_ = quotient * (1.0 - 1e-10);  // more than rounding
    return true;
  }
  /// What a score has to reach to be looked at.
  double GetThreshold() const { return threshold_; }
  /// The best score; 0 as long as there is none.
  double Get() const { return best_; }

 private:
  double best_ = 0.0;
  double threshold_ = 0.0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CART_FOUND_SPLIT_H_
