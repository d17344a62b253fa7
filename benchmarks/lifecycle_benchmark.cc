// Building, cloning, walking and deleting a tree of a million nodes, and what a node takes.

#include <malloc.h>

#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "tree/nodes.h"
#include "tree/support.h"

namespace tree::bench {
namespace {

// Odd, so that each node has two children or none.
constexpr std::size_t kNumNodes = 1'000'001;

/// Makes what a node holds besides its children.
using Fill = void (*)(NodeImp&, bool isTerminal);

void SetBinaryRule(NodeImp& node, bool isTerminal) {
  if (isTerminal) return;
  auto rule = std::make_unique<OSplitRule>(systemMissingValue(), 0);
  rule->SetCutPoint(0.5);
  rule->SetDumbRule(0, 0.5);
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, rule.release());
}

void SetRuleAndClasses(NodeImp& node, bool isTerminal) {
  SetBinaryRule(node, isTerminal);
  auto info = std::make_unique<ClsInfoImp>();
  info->SetNumClasses(3);
  node.SetClsInfo(info.release(), TrainingSample);
}

void SetRuleAndRegression(NodeImp& node, bool isTerminal) {
  SetBinaryRule(node, isTerminal);
  auto info = std::make_unique<RegInfoImp>();
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, 1.0);
  node.SetRegInfo(info.release(), TrainingSample);
}

/// A complete binary tree, made level by level.
std::unique_ptr<NodeImp> MakeTree(Fill fill) {
  auto root = std::make_unique<NodeImp>();
  std::vector<NodeImp*> nodes{root.get()};
  nodes.reserve(kNumNodes);
  for (std::size_t index = 0; index < kNumNodes; ++index) {
    NodeImp& node = *nodes[index];
    node.SetId(static_cast<unsigned int>(index));
    bool const isTerminal = nodes.size() == kNumNodes;
    fill(node, isTerminal);
    if (isTerminal) continue;
    node.SetNumChildren(2);
    for (unsigned int position : {0U, 1U}) {
      nodes.push_back(new NodeImp);
      node.SetChild(position, nodes.back());
    }
  }
  return root;
}

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
    std::unique_ptr<NodeImp> root = MakeTree(fill);
    bytes = AllocatedBytes() - before;
    state.PauseTiming();
    root.reset();
    state.ResumeTiming();
  }
  Report(state);
  state.counters["bytes_per_node"] = bytes / static_cast<double>(kNumNodes);
}

void Clone(benchmark::State& state, Fill fill) {
  std::unique_ptr<NodeImp> const root = MakeTree(fill);
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
  std::unique_ptr<NodeImp> const root = MakeTree(fill);
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
    std::unique_ptr<NodeImp> root = MakeTree(fill);
    state.ResumeTiming();
    root.reset();
  }
  Report(state);
}

void NoFill(NodeImp& /*node*/, bool /*isTerminal*/) {}

BENCHMARK_CAPTURE(Build, bare_nodes, NoFill)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules, SetBinaryRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules_and_3_classes, SetRuleAndClasses)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, rules_and_regression, SetRuleAndRegression)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Clone, rules, SetBinaryRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Clone, rules_and_3_classes, SetRuleAndClasses)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Traverse, rules, SetBinaryRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Delete, rules, SetBinaryRule)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Delete, rules_and_3_classes, SetRuleAndClasses)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
