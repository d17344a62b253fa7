// Building, cloning, walking and deleting a tree of a million nodes, and what a node takes.

#include <malloc.h>

#include <limits>
#include <memory>

#include <benchmark/benchmark.h>

#include "large_tree.h"
#include "tree/nodes.h"

namespace tree::bench {
namespace {

void Report(benchmark::State& state) {
  auto const nodes = static_cast<double>(kNumNodes) * static_cast<double>(state.iterations());
  state.counters["per_node"] =
      benchmark::Counter(nodes, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// Bytes handed out by the allocator, its own overhead included.
double AllocatedBytes() {
  struct mallinfo2 const info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd);
}

void Build(benchmark::State& state, Fill fill) {
  double bytes = 0.0;
  for (auto _ : state) {
    double const before = AllocatedBytes();
    std::unique_ptr<NodeImp> root = MakeLargeTree(fill);
    bytes = AllocatedBytes() - before;
    state.PauseTiming();
    root.reset();
    state.ResumeTiming();
  }
  Report(state);
  state.counters["bytes_per_node"] = bytes / static_cast<double>(kNumNodes);
}

void Clone(benchmark::State& state, Fill fill) {
  std::unique_ptr<NodeImp> const root = MakeLargeTree(fill);
  for (auto _ : state) {
    std::unique_ptr<NodeImp> clone(root->Clone());
    benchmark::DoNotOptimize(clone.get());
    state.PauseTiming();
    clone.reset();
    state.ResumeTiming();
  }
  Report(state);
}

void Traverse(benchmark::State& state, Fill fill) {
  std::unique_ptr<NodeImp> const root = MakeLargeTree(fill);
  for (auto _ : state) {
    PrefixNodeIterator iterator(root.get());
    unsigned int sum = 0;
    while (Node const* const node = iterator.Next()) sum += node->GetId();
    benchmark::DoNotOptimize(sum);
  }
  Report(state);
}

void Delete(benchmark::State& state, Fill fill) {
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<NodeImp> root = MakeLargeTree(fill);
    state.ResumeTiming();
    root.reset();
  }
  Report(state);
}

BENCHMARK_CAPTURE(Build, bare_nodes, FillWithNothing)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules, FillWithRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules_and_3_classes, FillWithRuleAndClasses)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules_and_regression, FillWithRuleAndRegression)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Clone, rules, FillWithRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Clone, rules_and_3_classes, FillWithRuleAndClasses)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Traverse, rules, FillWithRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Delete, rules, FillWithRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Delete, rules_and_3_classes, FillWithRuleAndClasses)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tree::bench

int main(int argc, char** argv) {
  // What has been freed stays with the allocator: otherwise it depends on the layout of the heap
  // whether a round waits for the system to hand out fresh pages.
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
