// One rule, one value: what `Classify` costs by kind and size of the rule.

#include <memory>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "tree/split_rules.h"
#include "tree/support.h"

namespace tree::bench {
namespace {

constexpr std::size_t kNumValues = 4096;

/// Values drawn evenly from [0, `limit`), some missing; as whole numbers for category codes.
std::vector<double> MakeValues(double limit, bool whole) {
  std::mt19937_64 engine(7);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  std::vector<double> values(kNumValues);
  for (double& value : values) {
    value = uniform(engine) * limit;
    if (whole) value = static_cast<double>(static_cast<int>(value));
    if (uniform(engine) < 0.05) value = systemMissingValue();
  }
  return values;
}

void Run(benchmark::State& state, SplitRuleImp const& rule, std::vector<double> const& values) {
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(rule.Classify(values[next]));
    next = (next + 1) % kNumValues;
  }
  state.SetItemsProcessed(state.iterations());
}

void ClassifyOrdinal(benchmark::State& state) {
  auto const numCutPoints = static_cast<int>(state.range(0));
  OSplitRule rule(systemMissingValue(), 0);
  for (int cut = 1; cut <= numCutPoints; ++cut) {
    OValueSet interval;
    interval.SetRightEnd(10.0 * cut);
    rule.InsertCutPoint(interval, false);
  }
  rule.AddMappedValues(OValueSet());
  rule.AddMissingValueMapping(false);
  Run(state, rule, MakeValues(10.0 * (numCutPoints + 1), false));
}
BENCHMARK(ClassifyOrdinal)->ArgName("cuts")->Arg(1)->Arg(3)->Arg(10);

void ClassifyNominal(benchmark::State& state) {
  auto const numCategories = static_cast<int>(state.range(0));
  NSplitRule rule(0, numCategories);
  for (int code = 0; code < numCategories; ++code) rule.SetCatMapping(code, code % 2);
  rule.AddMissingValueMapping(false);
  Run(state, rule, MakeValues(numCategories, true));
}
BENCHMARK(ClassifyNominal)->ArgName("categories")->Arg(5)->Arg(100)->Arg(100000);

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
