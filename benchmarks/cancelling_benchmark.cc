// How soon a long operation ends once its listener wants it to: the time from the wish, which comes
// at moments spread over the whole operation, to the return. `longest_ms` is the longest one.

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "output/write_cases.h"
#include "tree/grow/csv.h"
#include "tree/grow/grower.h"

namespace tree::bench {
namespace {

using grow::CaseRoles;
using grow::DataSet;
using grow::Grower;

constexpr std::size_t kNumCases = 1'000'000;
constexpr std::size_t kNumPredictors = 20;
constexpr std::size_t kNumNominal = 5;
constexpr int kNumWishes = 16;

using Clock = std::chrono::steady_clock;

/// Wants an operation to end from some moment on.
class WishToEnd : public ProgressListener {
 public:
  explicit WishToEnd(Clock::time_point moment) : moment_(moment) {}
  bool Report(double, char const*) noexcept override { return Clock::now() < moment_; }

 private:
  Clock::time_point moment_;
};

using Columns = std::vector<std::vector<double>>;

/// Nominal predictors, ordered ones, and last a number that two of either kind have a say in.
Columns MakeColumns() {
  std::mt19937_64 engine(7);
  std::normal_distribution<double> normal;
  Columns columns(kNumPredictors + 1, std::vector<double>(kNumCases));
  for (std::size_t row = 0; row < kNumCases; ++row) {
    for (std::size_t position = 0; position < kNumPredictors; ++position) {
      columns[position][row] =
          position < kNumNominal ? static_cast<double>(engine() % 10) : normal(engine);
    }
    columns[kNumPredictors][row] = columns[kNumNominal][row] +
                                   columns[kNumNominal + 1][row] * columns[kNumNominal + 2][row] +
                                   (columns[0][row] > 6.0 ? 1.0 : 0.0) + normal(engine);
  }
  return columns;
}

Columns const& GetColumns() {
  static Columns const columns = MakeColumns();
  return columns;
}

std::string MakeCsv() {
  std::ostringstream text;
  for (std::size_t position = 0; position <= kNumPredictors; ++position) {
    text << (position == 0 ? "" : ",") << 'x' << position;
  }
  for (std::size_t row = 0; row < kNumCases; ++row) {
    for (std::size_t position = 0; position <= kNumPredictors; ++position) {
      text << (position == 0 ? '\n' : ',') << GetColumns()[position][row];
    }
  }
  text << '\n';
  return std::move(text).str();
}

enum class Target { kClass, kNumber };

/// The cases as a data set, with the target as a number or as the class of its sign.
struct Cases {
  explicit Cases(Target target) : data(kNumCases) {
    for (std::size_t position = 0; position <= kNumPredictors; ++position) {
      grow::ColumnDescription description;
      description.name = "x" + std::to_string(position);
      if (position < kNumNominal) description.level = global::MeasurementNominal;
      std::vector<double> values = GetColumns()[position];
      if (position == kNumPredictors && target == Target::kClass) {
        description.level = global::MeasurementNominal;
        for (double& value : values) value = value > 0.5 ? 1.0 : 0.0;
      }
      int const index = data.AddColumn(description, std::move(values));
      if (position == kNumPredictors) {
        roles.target = index;
      } else {
        roles.predictors.push_back(index);
      }
    }
  }

  DataSet data;
  CaseRoles roles;
};

Cases const& CasesOf(Target target) {
  static Cases const classes(Target::kClass);
  static Cases const numbers(Target::kNumber);
  return target == Target::kClass ? classes : numbers;
}

template <class Settings>
std::unique_ptr<Settings> MakeSettings(Target target) {
  Cases const& cases = CasesOf(target);
  auto settings = std::make_unique<Settings>(grow::MakeCoreSettings(cases.data, cases.roles));
  settings->GetStopRule()->SetMaxTreeDepth(10);
  settings->GetStopRule()->SetMinNodeSize(100);
  settings->GetStopRule()->SetMinChildSize(50);
  return settings;
}

template <class Settings>
std::unique_ptr<Settings> MakeSettingsWithSurrogates(Target target) {
  auto settings = MakeSettings<Settings>(target);
  settings->SetMaxNumSurrogates(5);
  settings->SetMaxNumCompetitors(5);
  return settings;
}

template <class Settings>
std::unique_ptr<Settings> MakeSettingsWithFolds(Target target) {
  auto settings = MakeSettings<Settings>(target);
  settings->GetValidationSpec()->Set(ValidationCrossValidation);
  settings->GetValidationSpec()->SetNumCVFolds(3);
  return settings;
}

std::unique_ptr<Grower> MakeGrowerOf(Target target, AlgSettings const& settings,
                                     ProgressListener* listener = nullptr) {
  Cases const& cases = CasesOf(target);
  grow::GrowOptions options;
  options.listener = listener;
  return grow::MakeGrower(cases.data, cases.roles, settings, options);
}

/// What can be cancelled: called with the listener.
using Operation = std::function<void(ProgressListener&)>;
/// Makes an operation that has not begun; its time does not count.
using Prepare = std::function<Operation()>;

void Cancel(benchmark::State& state, Prepare const& prepare) {
  Operation const undisturbed = prepare();
  Clock::time_point const begin = Clock::now();
  WishToEnd never(Clock::time_point::max());
  undisturbed(never);
  Clock::duration const whole = Clock::now() - begin;
  std::chrono::duration<double> longest{};
  int wish = 0;
  for (auto _ : state) {
    Operation const operation = prepare();
    Clock::time_point const moment = Clock::now() + whole * (2 * wish + 1) / (2 * kNumWishes);
    WishToEnd listener(moment);
    operation(listener);
    auto const late = std::max<std::chrono::duration<double>>(std::chrono::duration<double>::zero(),
                                                              Clock::now() - moment);
    state.SetIterationTime(late.count());
    longest = std::max(longest, late);
    wish = (wish + 1) % kNumWishes;
  }
  state.counters["longest_ms"] = 1000.0 * longest.count();
  state.counters["whole_ms"] = 1000.0 * std::chrono::duration<double>(whole).count();
}

void ReadText(benchmark::State& state) {
  std::string const text = MakeCsv();
  Cancel(state, [&] {
    auto stream = std::make_shared<std::istringstream>(text);
    return [stream](ProgressListener& listener) {
      grow::CsvOptions options;
      options.listener = &listener;
      benchmark::DoNotOptimize(grow::ReadCsv(*stream, "cases.csv", options));
    };
  });
}

void ReadCases(benchmark::State& state) {
  auto const settings = MakeSettings<CCartSettingsImp>(Target::kClass);
  Cancel(state, [&] {
    return [&](ProgressListener& listener) {
      benchmark::DoNotOptimize(MakeGrowerOf(Target::kClass, *settings, &listener));
    };
  });
}

/// `isGrown`: whether the operation needs a grown tree.
void CancelGrower(benchmark::State& state, Target target, AlgSettings const& settings, bool isGrown,
                  bool (*operate)(Grower&)) {
  Cancel(state, [&]() -> Operation {
    std::shared_ptr<Grower> const grower = MakeGrowerOf(target, settings);
    if (isGrown && !grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
    return [grower, operate](ProgressListener& listener) {
      grower->SetProgressListener(&listener);
      benchmark::DoNotOptimize(operate(*grower));
      grower->SetProgressListener(nullptr);
    };
  });
}

bool Grow(Grower& grower) { return grower.Grow(); }
bool Prune(Grower& grower) { return grower.Prune(); }
bool Validate(Grower& grower) { return grower.Validate(); }

void GrowCartForClasses(benchmark::State& state) {
  auto const settings = MakeSettingsWithSurrogates<CCartSettingsImp>(Target::kClass);
  CancelGrower(state, Target::kClass, *settings, false, Grow);
}

void GrowCartForNumbers(benchmark::State& state) {
  auto const settings = MakeSettingsWithSurrogates<RCartSettingsImp>(Target::kNumber);
  CancelGrower(state, Target::kNumber, *settings, false, Grow);
}

void GrowQuest(benchmark::State& state) {
  auto const settings = MakeSettingsWithSurrogates<QuestSettingsImp>(Target::kClass);
  CancelGrower(state, Target::kClass, *settings, false, Grow);
}

void GrowChaidForClasses(benchmark::State& state) {
  auto const settings = MakeSettings<CChaidSettingsImp>(Target::kClass);
  CancelGrower(state, Target::kClass, *settings, false, Grow);
}

void GrowChaidForNumbers(benchmark::State& state) {
  auto const settings = MakeSettings<RChaidSettingsImp>(Target::kNumber);
  CancelGrower(state, Target::kNumber, *settings, false, Grow);
}

void PruneByFolds(benchmark::State& state) {
  auto const settings = MakeSettingsWithFolds<CCartSettingsImp>(Target::kClass);
  CancelGrower(state, Target::kClass, *settings, true, Prune);
}

void ValidateByFolds(benchmark::State& state) {
  auto const settings = MakeSettingsWithFolds<RCartSettingsImp>(Target::kNumber);
  CancelGrower(state, Target::kNumber, *settings, true, Validate);
}

void WritePredictions(benchmark::State& state) {
  auto const settings = MakeSettings<CCartSettingsImp>(Target::kClass);
  std::unique_ptr<Grower> const grower = MakeGrowerOf(Target::kClass, *settings);
  if (!grower->Grow()) throw std::runtime_error(grower->GetFailureMessage());
  Cases const& cases = CasesOf(Target::kClass);
  Cancel(state, [&] {
    return [&](ProgressListener& listener) {
      std::ostringstream out;
      cli::WriteCases(out, *grower->GetTree(), cases.data, cases.roles, ',', listener);
    };
  });
}

void SpreadWishes(benchmark::internal::Benchmark* benchmark) {
  benchmark->UseManualTime()->Iterations(kNumWishes)->Unit(benchmark::kMillisecond);
}

BENCHMARK(ReadText)->Apply(SpreadWishes);
BENCHMARK(ReadCases)->Apply(SpreadWishes);
BENCHMARK(GrowCartForClasses)->Apply(SpreadWishes);
BENCHMARK(GrowCartForNumbers)->Apply(SpreadWishes);
BENCHMARK(GrowQuest)->Apply(SpreadWishes);
BENCHMARK(GrowChaidForClasses)->Apply(SpreadWishes);
BENCHMARK(GrowChaidForNumbers)->Apply(SpreadWishes);
BENCHMARK(PruneByFolds)->Apply(SpreadWishes);
BENCHMARK(ValidateByFolds)->Apply(SpreadWishes);
BENCHMARK(WritePredictions)->Apply(SpreadWishes);

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
