#include "quest/variable_selection.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tree::grow {
namespace {

double CountUsed(std::span<PredictorTests const> tests) {
  return static_cast<double>(std::count_if(tests.begin(), tests.end(),
                                           [](PredictorTests const& each) { return each.used; }));
}

bool TakesPart(PredictorTests const& tests, bool inLevene) {
  return tests.used && (!inLevene || tests.isOrdered);
}

/// The position of the least p-value; none where no predictor takes part.
std::optional<std::size_t> FindLeast(std::span<PredictorTests const> tests, bool ofLevene) {
  auto const logP = [&](std::size_t position) {
    return ofLevene ? tests[position].logLevene : tests[position].logP;
  };
  std::optional<std::size_t> least;
  for (std::size_t position = 0; position < tests.size(); ++position) {
    if (!TakesPart(tests[position], ofLevene)) continue;
    if (!least.has_value() || logP(position) < logP(*least)) least = position;
  }
  return least;
}

}  // namespace

bool IsSelectedByMeans(std::span<PredictorTests const> tests, double alpha) {
  std::optional<std::size_t> const least = FindLeast(tests, false);
  return least.has_value() && tests[*least].logP < std::log(alpha / CountUsed(tests));
}

SelectedPredictor SelectPredictor(std::span<PredictorTests const> tests, double alpha) {
  double const numUsed = CountUsed(tests);
  std::size_t const byMeans = FindLeast(tests, false).value();
  std::optional<std::size_t> const byLevene = FindLeast(tests, true);
  if (!IsSelectedByMeans(tests, alpha) && byLevene.has_value()) {
    auto const numOrdered = static_cast<double>(std::count_if(
        tests.begin(), tests.end(), [](PredictorTests const& t) { return TakesPart(t, true); }));
    double const logP = tests[*byLevene].logLevene;
    if (logP < std::log(alpha / (numUsed + numOrdered))) {
      return {*byLevene, true, std::min(0.0, logP + std::log(numUsed + numOrdered))};
    }
  }
  return {byMeans, false, std::min(0.0, tests[byMeans].logP + std::log(numUsed))};
}

}  // namespace tree::grow
