#include "association/test_statistic.h"

#include <cmath>

#include "association/log_tails.h"

namespace tree::grow {
namespace {

/// Between which bounds the square of the normal deviate lies that has the p-value of F with one
/// degree of freedom. Source: Wallace 1959, Bounds on normal approximations to Student's and the
/// chi-square distributions, section 2.
struct SquaredDeviate {
  double lower;
  double upper;
};

SquaredDeviate BoundDeviate(TestStatistic const& statistic) {
  double const errors = statistic.errorDegreesOfFreedom;
  double const upper = errors * std::log1p(statistic.value / errors);
  // Rounding must not make what is equal surely less.
  constexpr double kWiden = 1e-12;
  return {upper * (1.0 - 0.5 / errors) * (1.0 - kWiden), upper * (1.0 + kWiden)};
}

bool HasBounds(TestStatistic const& statistic) {
  return statistic.degreesOfFreedom == 1.0 && statistic.errorDegreesOfFreedom > 0.5;
}

}  // namespace

double LogP(TestStatistic const& statistic) {
  return statistic.errorDegreesOfFreedom > 0.0
             ? LogFTail(statistic.value, statistic.degreesOfFreedom,
                        statistic.errorDegreesOfFreedom)
             : LogChiSquareTail(statistic.value, statistic.degreesOfFreedom);
}

bool IsSurelyLessSignificant(TestStatistic const& left, TestStatistic const& right) {
  if (!HasBounds(left) || !HasBounds(right)) return false;
  return BoundDeviate(left).upper < BoundDeviate(right).lower;
}

}  // namespace tree::grow
