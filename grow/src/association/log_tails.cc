#include "association/log_tails.h"

#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <cmath>
#include <limits>

namespace tree::grow {
namespace {

namespace policies = boost::math::policies;

/// What does not converge gives its best value, and nothing is thrown.
using Policy = policies::policy<
    policies::promote_double<false>, policies::domain_error<policies::ignore_error>,
    policies::pole_error<policies::ignore_error>, policies::overflow_error<policies::ignore_error>,
    policies::underflow_error<policies::ignore_error>,
    policies::evaluation_error<policies::ignore_error>>;

/// Below this probability logarithms are computed without the probability itself, which has digits
/// as far down as 1e-307 only.
constexpr double kSmallProbability = 1e-250;

/// The logarithm of a probability by whichever of it and its complement is known without
/// cancellation.
double LogOf(double probability, double complement) {
  return probability < 0.5 ? std::log(probability) : std::log1p(-complement);
}

/// log(gamma(a)) without its main part (a - 1/2) log(a) - a + log(2 pi) / 2.
double StirlingRest(double a) {
  if (a < 16.0) {
    double const main =
        (a - 0.5) * std::log(a) - a + 0.5 * std::log(boost::math::constants::two_pi<double>());
    return boost::math::lgamma(a, Policy()) - main;
  }
  double const squared = 1.0 / (a * a);
  return (1.0 / 12.0 -
          squared * (1.0 / 360.0 - squared * (1.0 / 1260.0 - squared * (1.0 / 1680.0)))) /
         a;
}

/// log(ratio) - (ratio - 1), given both, without cancellation where the ratio is near 1.
double LogMinusDifference(double logRatio, double difference) {
  return std::abs(difference) < 0.5 ? boost::math::log1pmx(difference, Policy())
                                    : logRatio - difference;
}

/// Evaluates b0 + a1 / (b1 + a2 / (b2 + ...)) by the method of Lentz. `next` moves to the next pair
/// of a and b.
template <class Next>
double ContinuedFraction(double first, Next const& next) {
  constexpr int kMaxTerms = 100000;
  auto const away = [](double value) { return value == 0.0 ? 1e-300 : value; };
  double fraction = away(first);
  double numerators = fraction;
  double denominators = 0.0;
  for (int term = 1; term < kMaxTerms; ++term) {
    auto const [a, b] = next(term);
    denominators = 1.0 / away(b + a * denominators);
    numerators = away(b + a / numerators);
    double const factor = numerators * denominators;
    fraction *= factor;
    if (std::abs(factor - 1.0) < std::numeric_limits<double>::epsilon()) break;
  }
  return fraction;
}

struct Term {
  double numerator;
  double denominator;
};

/// The logarithm of the upper incomplete gamma function over gamma(a), for x far above a.
/// Legendre's continued fraction; the factor before it as Loader 2000, Fast and accurate
/// computation of binomial probabilities, computes that of the Poisson distribution.
double LogGammaTail(double a, double x) {
  double const logFactor = a * LogMinusDifference(std::log(x / a), (x - a) / a) +
                           0.5 * std::log(a / boost::math::constants::two_pi<double>()) -
                           StirlingRest(a);
  double const fraction = ContinuedFraction(x + 1.0 - a, [&](int term) {
    return Term{-term * (term - a), x + 2.0 * term + 1.0 - a};
  });
  return logFactor - std::log(fraction);
}

/// The logarithm of the tail of F beyond `value`, far above 1, with a = errors / 2 and b = others /
/// 2: of the incomplete beta function at a / (a + b value). The fraction is equation 26.5.8 of
/// Abramowitz and Stegun 1964, the factor as above.
double LogBetaTail(double a, double b, double value) {
  double const sum = a + b;
  double const scaled = b + a / value;  // (a + b value) / value, which does not overflow
  double const x = a / scaled / value;
  double const logRatio = std::log(sum / scaled) - std::log(value);
  double const logFactor =
      a * LogMinusDifference(logRatio, (b / scaled) * (1.0 / value - 1.0)) +
      b * LogMinusDifference(std::log(sum / scaled), (a / scaled) * (1.0 - 1.0 / value)) +
      0.5 * std::log(a / sum * b / boost::math::constants::two_pi<double>()) - StirlingRest(a) -
      StirlingRest(b) + StirlingRest(sum);
  double const fraction = ContinuedFraction(1.0, [&](int term) {
    double const m = term / 2;  // NOLINT(bugprone-integer-division): two terms for each m
    double const numerator = term % 2 == 0
                                 ? m * (b - m) * x / ((a + 2.0 * m - 1.0) * (a + 2.0 * m))
                                 : -(a + m) * (sum + m) * x / ((a + 2.0 * m) * (a + 2.0 * m + 1.0));
    return Term{numerator, 1.0};
  });
  return logFactor - std::log(a * fraction);
}

}  // namespace

double LogChiSquareTail(double value, double degreesOfFreedom) {
  if (!(value > 0.0) || !(degreesOfFreedom > 0.0)) return 0.0;
  if (std::isinf(value)) return -value;
  double const a = degreesOfFreedom / 2.0;
  double const x = value / 2.0;
  double const tail = boost::math::gamma_q(a, x, Policy());
  if (tail < kSmallProbability) return LogGammaTail(a, x);
  return LogOf(tail, tail < 0.5 ? 0.0 : boost::math::gamma_p(a, x, Policy()));
}

double LogFTail(double value, double degreesOfFreedom, double errorDegreesOfFreedom) {
  if (!(value > 0.0) || !(degreesOfFreedom > 0.0) || !(errorDegreesOfFreedom > 0.0)) return 0.0;
  if (std::isinf(value)) return -value;
  double const a = errorDegreesOfFreedom / 2.0;
  double const b = degreesOfFreedom / 2.0;
  // Of x and 1 - x the one that is below 1/2 has all its digits.
  double const ratio = b * value / a;
  double const x = 1.0 / (1.0 + ratio);
  bool const fromAbove = ratio < 1.0;
  double const complementOfX = 1.0 / (1.0 + 1.0 / ratio);
  double const tail = fromAbove ? boost::math::ibetac(b, a, complementOfX, Policy())
                                : boost::math::ibeta(a, b, x, Policy());
  if (tail < kSmallProbability) return LogBetaTail(a, b, value);
  if (tail < 0.5) return std::log(tail);
  return std::log1p(-(fromAbove ? boost::math::ibeta(b, a, complementOfX, Policy())
                                : boost::math::ibetac(a, b, x, Policy())));
}

}  // namespace tree::grow
