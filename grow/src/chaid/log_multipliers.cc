#include "chaid/log_multipliers.h"

#include <boost/math/constants/constants.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <complex>
#include <vector>

namespace tree::grow {
namespace {

/// Stirling numbers of so many categories are less than 128^128, and so doubles.
constexpr std::size_t kMaxRecurrence = 128;

/// std::lgamma writes to a variable that all threads share.
double LogFactorial(double n) {
  namespace policies = boost::math::policies;
  return boost::math::lgamma(n + 1.0, policies::policy<policies::promote_double<false>>());
}

double LogBinomial(double n, double k) {
  if (k < 0.0 || k > n) return -HUGE_VAL;
  return LogFactorial(n) - LogFactorial(k) - LogFactorial(n - k);
}

double LogSum(double a, double b) {
  if (a < b) return LogSum(b, a);
  return std::isinf(a) ? a : a + std::log1p(std::exp(b - a));
}

/// By S(n, k) = k S(n - 1, k) + S(n - 1, k - 1), in which nothing cancels.
double LogStirlingByRecurrence(std::size_t n, std::size_t k) {
  std::vector<double> row(k + 1, 0.0);
  row[0] = 1.0;
  for (std::size_t number = 1; number <= n; ++number) {
    for (std::size_t group = std::min(number, k); group > 0; --group) {
      row[group] = static_cast<double>(group) * row[group] + row[group - 1];
    }
    row[0] = 0.0;
  }
  return std::log(row[k]);
}

/// The r with r / (1 - exp(-r)) = `mean`, above 1: the parameter of a Poisson distribution that,
/// once 0 is left out, has this mean.
double PoissonWithoutZero(double mean) {
  double low = 0.0;
  double high = mean;
  for (int step = 0; step < 60; ++step) {
    double const middle = (low + high) / 2.0;
    (middle / -std::expm1(-middle) < mean ? low : high) = middle;
  }
  return (low + high) / 2.0;
}

/// log(exp(z) - 1), without cancellation near 0 and without overflow.
std::complex<double> LogExpMinusOne(std::complex<double> z) {
  bool const large = z.real() > 1.0;
  if (large) z = -z;
  double const half = std::sin(z.imag() / 2.0);
  std::complex<double> const difference(
      std::expm1(z.real()) * std::cos(z.imag()) - 2.0 * half * half,
      std::exp(z.real()) * std::sin(z.imag()));
  return large ? -z + std::log(-difference) : std::log(difference);
}

/// S(n, k) = n! / k! [z^n] (exp(z) - 1)^k: up to known factors, the probability that k numbers from
/// a Poisson distribution without its 0 add up to n. That probability is a mean of the
/// characteristic function over equidistant angles, exact but for the probabilities that lie a
/// whole number of turns away; the parameter that makes n the expected sum puts those out of reach.
double LogStirlingByCharacteristic(double n, double k) {
  using Complex = std::complex<double>;
  double const mean = n / k;
  double const r = PoissonWithoutZero(mean);
  double const deviation = std::sqrt(k * mean * (1.0 + r - mean));
  int const numAngles = 2 * static_cast<int>(6.0 * deviation + 30.0) + 1;
  double const step = boost::math::constants::two_pi<double>() / numAngles;
  double const logOfAll = LogExpMinusOne(r).real();
  double sum = 1.0;
  for (int index = 1; 2 * index < numAngles; ++index) {
    double const angle = step * index;
    Complex const logOfOne = LogExpMinusOne(std::polar(r, angle)) - logOfAll;
    sum += 2.0 * std::exp(k * logOfOne - Complex(0.0, n * angle)).real();
  }
  return LogFactorial(n) - LogFactorial(k) - n * std::log(r) + k * logOfAll +
         std::log(sum / numAngles);
}

}  // namespace

double LogNominalMultiplier(std::size_t numCategories, std::size_t numGroups) {
  if (numGroups <= 1 || numGroups >= numCategories) return 0.0;
  if (numCategories <= kMaxRecurrence) return LogStirlingByRecurrence(numCategories, numGroups);
  return LogStirlingByCharacteristic(static_cast<double>(numCategories),
                                     static_cast<double>(numGroups));
}

double LogOrdinalMultiplier(std::size_t numCategories, std::size_t numGroups) {
  if (numGroups <= 1 || numGroups >= numCategories) return 0.0;
  return LogBinomial(static_cast<double>(numCategories - 1), static_cast<double>(numGroups - 1));
}

double LogFloatingMultiplier(std::size_t numCategories, std::size_t numGroups) {
  if (numGroups <= 1 || numGroups >= numCategories) return 0.0;
  auto const others = static_cast<double>(numCategories) - 2.0;
  auto const groups = static_cast<double>(numGroups);
  return LogSum(LogBinomial(others, groups - 2.0),
                std::log(groups) + LogBinomial(others, groups - 1.0));
}

double LogExhaustiveNominalMultiplier(std::size_t numCategories) {
  auto const c = static_cast<double>(numCategories);
  return numCategories < 2 ? 0.0 : std::log(c * (c * c - 1.0) / 6.0);
}

double LogExhaustiveOrdinalMultiplier(std::size_t numCategories) {
  auto const c = static_cast<double>(numCategories);
  return numCategories < 2 ? 0.0 : std::log(c * (c - 1.0) / 2.0);
}

double LogExhaustiveFloatingMultiplier(std::size_t numCategories) {
  return numCategories < 2 ? 0.0 : 2.0 * std::log(static_cast<double>(numCategories) - 1.0);
}

}  // namespace tree::grow
