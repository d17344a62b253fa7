// Summing up many nodes: the misclassification matrix of a tree of a million nodes, and thousands
// of nodes seen as one.

#include <cstddef>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "large_tree.h"
#include "tree/nodes.h"
#include "tree/results.h"

namespace tree::bench {
namespace {

constexpr std::size_t kNumMerged = 10'000;

/// Makes the statistics of one node, whose number varies them.
using Describe = void (*)(NodeImp& node, int number);

void ReportPer(char const* name, std::size_t things, benchmark::State& state) {
  auto const total = static_cast<double>(things) * static_cast<double>(state.iterations());
  state.counters[name] =
      benchmark::Counter(total, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void FillMatrix(benchmark::State& state) {
  std::unique_ptr<NodeImp> const root = MakeLargeTree(FillWithRuleAndClasses);
  TreeStatisticsImp statistics;
  statistics.SetIsCls(true);
  statistics.SetNumClasses(3);
  for (auto _ : state) {
    statistics.AddMisclassificationInfo(root.get(), TrainingSample);
    benchmark::DoNotOptimize(statistics.GetMisclassificationCount(0, 0));
  }
  ReportPer("per_node", kNumNodes, state);
}

/// The walk alone, which `FillMatrix` contains.
void WalkOnly(benchmark::State& state) {
  std::unique_ptr<NodeImp> const root = MakeLargeTree(FillWithRuleAndClasses);
  for (auto _ : state) {
    int terminals = 0;
    PrefixNodeIterator iterator(root.get());
    while (Node const* const node = iterator.Next()) terminals += node->GetNumChildren() == 0;
    benchmark::DoNotOptimize(terminals);
  }
  ReportPer("per_node", kNumNodes, state);
}

template <int kNumClasses>
void DescribeClasses(NodeImp& node, int number) {
  auto info = std::make_unique<ClsInfoImp>();
  info->SetNumClasses(kNumClasses);
  for (int cls = 0; cls < kNumClasses; ++cls) info->SetClassCount(cls, number % (cls + 2));
  node.SetClsInfo(info.release(), TrainingSample);
}

template <int kNumBins>
void DescribeRegression(NodeImp& node, int number) {
  auto info = std::make_unique<RegInfoImp>();
  info->SetNumBins(kNumBins);
  for (int bin = 0; bin < kNumBins; ++bin) info->SetBinSize(bin, number % (bin + 2));
  info->SetCount(number + 1.0);
  info->SetMean(number);
  node.SetRegInfo(info.release(), TrainingSample);
}

/// Nodes that lie in memory as they were made, and a group of them.
class Group {
 public:
  explicit Group(Describe describe) : nodes_(kNumMerged) {
    for (std::size_t index = 0; index < kNumMerged; ++index) {
      describe(nodes_[index], static_cast<int>(index));
      members_.push_back(&nodes_[index]);
    }
  }

  std::vector<Node const*> const& Members() const { return members_; }

 private:
  std::vector<NodeImp> nodes_;
  std::vector<Node const*> members_;
};

void MergeClasses(benchmark::State& state, Describe describe) {
  Group const group(describe);
  CumulativeNode node(group.Members());
  for (auto _ : state) benchmark::DoNotOptimize(node.GetClsInfo(TrainingSample));
  ReportPer("per_node", kNumMerged, state);
}

void MergeRegression(benchmark::State& state, Describe describe) {
  Group const group(describe);
  CumulativeNode node(group.Members());
  for (auto _ : state) benchmark::DoNotOptimize(node.GetRegInfo(TrainingSample));
  ReportPer("per_node", kNumMerged, state);
}

BENCHMARK(FillMatrix)->Unit(benchmark::kMillisecond);
BENCHMARK(WalkOnly)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(MergeClasses, classes_3, DescribeClasses<3>)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(MergeClasses, classes_100, DescribeClasses<100>)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(MergeRegression, no_bins, DescribeRegression<0>)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(MergeRegression, bins_20, DescribeRegression<20>)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
