#ifndef TREE_GROW_SRC_QUEST_PREDICTOR_NUMBERS_H_
#define TREE_GROW_SRC_QUEST_PREDICTOR_NUMBERS_H_

#include <cstdint>

#include "growing/training_data.h"

namespace tree::grow {

/// The values of an ordered predictor as whole multiples of a power of two from a centre, so that
/// sums of them and of their squares are exact, and no order of the cases changes them. Values are
/// rounded to a share of 2^-40 of their range, or more where weights are great; infinite ones are
/// taken to lie as far beyond the finite ones as these lie apart, or, where these are all the same
/// or too far apart for that, as far as numbers reach around zero. The unit is at least 2^-1022, so
/// that values nearer to each other are the same.
class PredictorNumbers {
 public:
  PredictorNumbers() = default;
  /// `data`: with prepared predictors. Linear in the cases, unless the predictor is coded.
  PredictorNumbers(TrainingData const& data, std::size_t predictor);

  std::int64_t Of(double value) const;
  double ValueOf(double multiple) const { return centre_ + multiple * unit_; }
  /// A multiple is what a value, from the least to the greatest one, is away from the centre, in
  /// units, which are powers of two; rounded, and to an even one halfway.
  ///@{
  double GetLeast() const { return least_; }
  double GetGreatest() const { return greatest_; }
  double GetCentre() const { return centre_; }
  double GetUnit() const { return unit_; }
  ///@}

 private:
  double least_ = 0.0;
  double greatest_ = 0.0;
  double centre_ = 0.0;
  double unit_ = 1.0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_PREDICTOR_NUMBERS_H_
