// Copying the settings of growing algorithms that know ten thousand predictors.

#include <memory>

#include <benchmark/benchmark.h>

#include "tree/settings.h"

namespace tree::bench {
namespace {

constexpr int kNumPredictors = 10'000;

CoreSettingsImp MakeCoreSettings() {
  CoreSettingsImp core;
  core.GetTarget()->SetMeasurementLevel(global::MeasurementNominal);
  core.GetTarget()->SetNumValues(3);
  for (int index = 0; index < kNumPredictors; ++index) {
    VariableSettings* const predictor = core.AddPredictor();
    predictor->SetMeasurementLevel(index % 2 == 0 ? global::MeasurementContinuous
                                                  : global::MeasurementNominal);
    predictor->SetNumValues(index % 20);
  }
  return core;
}

void Report(benchmark::State& state) {
  auto const predictors = static_cast<double>(kNumPredictors * state.iterations());
  state.counters["per_predictor"] =
      benchmark::Counter(predictors, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void AddPredictors(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(MakeCoreSettings().GetNumPredictors());
  Report(state);
}

void CloneVariables(benchmark::State& state) {
  CoreSettingsImp const core = MakeCoreSettings();
  for (auto _ : state) {
    std::unique_ptr<CoreSettings> const clone(core.Clone());
    benchmark::DoNotOptimize(clone.get());
  }
  Report(state);
}

template <typename Settings>
void CloneSettings(benchmark::State& state) {
  Settings const settings(MakeCoreSettings());
  for (auto _ : state) {
    std::unique_ptr<AlgSettings> const clone(settings.Clone());
    benchmark::DoNotOptimize(clone.get());
  }
  Report(state);
}

template <typename To, typename From>
void CopyBetween(benchmark::State& state) {
  From const from(MakeCoreSettings());
  To to((CoreSettingsImp()));
  for (auto _ : state) {
    to.CopyFrom(from);
    benchmark::DoNotOptimize(to.GetCoreSettings());
  }
  Report(state);
}

BENCHMARK(AddPredictors)->Unit(benchmark::kMicrosecond);
BENCHMARK(CloneVariables)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(CloneSettings, CCartSettingsImp)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(CloneSettings, QuestSettingsImp)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(CopyBetween, CCartSettingsImp, CCartSettingsImp)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(CopyBetween, CCartSettingsImp, QuestSettingsImp)->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(CopyBetween, QuestSettingsImp, RChaidSettingsImp)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
