// The hot path: dropping cases through balanced binary trees. Each benchmark reports the time per
// case, cases per second, and the time per level (`per_level`, in seconds).
//
// In cache, few enough cases go round that what they touch stays in the second level cache. Out of
// cache, every case goes through a tree of a forest with about two million nodes, chosen at random.

#include <memory>
#include <random>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "balanced_tree.h"

#ifdef TREE_BENCHMARK_OPENCV
#include <opencv2/ml.hpp>
#endif

namespace tree::bench {
namespace {

constexpr int kForestDepth = 20;
constexpr std::size_t kManyCases = std::size_t{1} << 20;
constexpr double kMissingProbability = 0.2;

/// Few cases for deep trees: what they touch has to fit in the second level cache.
std::size_t NumCasesInCache(int depth) { return depth <= 10 ? 4096 : 64; }

std::size_t NumTrees(int depth, bool inCache) {
  return inCache ? 1 : std::size_t{1} << (kForestDepth - depth);
}

Cases const& ManyCases(bool withMissing) {
  static Cases const complete(kManyCases, 0.0);
  static Cases const missing(kManyCases, kMissingProbability);
  return withMissing ? missing : complete;
}

/// A tree for each case, at random.
std::vector<std::uint32_t> ChooseTrees(std::size_t numCases, std::size_t numTrees) {
  std::mt19937_64 engine(11);
  std::uniform_int_distribution<std::uint32_t> uniform(0, static_cast<std::uint32_t>(numTrees - 1));
  std::vector<std::uint32_t> choice(numCases);
  for (std::uint32_t& tree : choice) tree = uniform(engine);
  return choice;
}

void Report(benchmark::State& state, double levels) {
  state.SetItemsProcessed(state.iterations());
  state.counters["per_level"] =
      benchmark::Counter(levels * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

template <class Tree, class Drop>
void Run(benchmark::State& state, std::vector<Tree> const& forest, bool inCache, bool withMissing,
         Drop drop) {
  int const depth = static_cast<int>(state.range(0));
  Cases const& cases = ManyCases(withMissing);
  std::size_t const numCases = inCache ? NumCasesInCache(depth) : kManyCases;
  std::vector<std::uint32_t> const choice = ChooseTrees(numCases, forest.size());
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(drop(forest[choice[next]], cases[next]));
    if (++next == numCases) next = 0;
  }
  Report(state, depth);
}

using Forest = std::vector<std::unique_ptr<NodeImp>>;

Forest MakeForest(int depth, bool inCache, MissingValues missing) {
  Forest forest;
  for (std::size_t left = NumTrees(depth, inCache); left > 0; --left) {
    forest.push_back(MakeBalancedTree(depth, missing));
  }
  return forest;
}

void RunForest(benchmark::State& state, Forest const& forest, MissingValues missing) {
  Run(state, forest, state.range(1) != 0, missing != MissingValues::kNone,
      [](std::unique_ptr<NodeImp> const& root, double const* values) {
        return root->DropObservationThroughTree(values, nullptr);
      });
}

void Drop(benchmark::State& state, MissingValues missing) {
  auto const depth = static_cast<int>(state.range(0));
  RunForest(state, MakeForest(depth, state.range(1) != 0, missing), missing);
}

/// The same trees once cloned: a clone's nodes lie in prefix order in memory.
void DropThroughClone(benchmark::State& state) {
  auto const depth = static_cast<int>(state.range(0));
  Forest forest = MakeForest(depth, state.range(1) != 0, MissingValues::kNone);
  Forest clones;
  for (std::unique_ptr<NodeImp> const& root : forest) clones.emplace_back(root->Clone());
  forest.clear();
  RunForest(state, clones, MissingValues::kNone);
}

void DropThroughFlatArray(benchmark::State& state) {
  auto const depth = static_cast<int>(state.range(0));
  bool const inCache = state.range(1) != 0;
  std::vector<FlatTree> const forest(NumTrees(depth, inCache), FlatTree(depth));
  Run(state, forest, inCache, false,
      [](FlatTree const& tree, double const* values) { return tree.Drop(values); });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"depth", "in_cache"});
  for (int const inCache : {1, 0}) {
    for (int const depth : {5, 10, 20}) benchmark->Args({depth, inCache});
  }
}

BENCHMARK_CAPTURE(Drop, complete, MissingValues::kNone)->Apply(Sizes);
BENCHMARK_CAPTURE(Drop, missing_mapped, MissingValues::kMapped)->Apply(Sizes);
BENCHMARK_CAPTURE(Drop, missing_surrogates, MissingValues::kSurrogates)->Apply(Sizes);
BENCHMARK(DropThroughClone)->Apply(Sizes);
BENCHMARK(DropThroughFlatArray)->Apply(Sizes);

#ifdef TREE_BENCHMARK_OPENCV

/// Cases as a matrix, with the sum of their values as the target: the best cuts of such a target
/// are the middles of the ranges, predictor by predictor, so that the tree comes out balanced.
std::pair<cv::Mat, cv::Mat> MakeSample(Cases const& cases, std::size_t count) {
  cv::Mat rows(static_cast<int>(count), kNumPredictors, CV_32F);
  cv::Mat target(static_cast<int>(count), 1, CV_32F);
  for (std::size_t index = 0; index < count; ++index) {
    float sum = 0.0F;
    for (int predictor = 0; predictor < kNumPredictors; ++predictor) {
      auto const value = static_cast<float>(cases[index][predictor]);
      rows.at<float>(static_cast<int>(index), predictor) = value;
      sum += value;
    }
    target.at<float>(static_cast<int>(index)) = sum;
  }
  return {rows, target};
}

/// Mean number of splits that a case meets.
double MeanDepth(cv::ml::DTrees const& tree, cv::Mat const& rows) {
  auto const& nodes = tree.getNodes();
  auto const& splits = tree.getSplits();
  double sum = 0.0;
  for (int row = 0; row < rows.rows; ++row) {
    int node = tree.getRoots().front();
    while (nodes[static_cast<std::size_t>(node)].split >= 0) {
      auto const& at = nodes[static_cast<std::size_t>(node)];
      auto const& split = splits[static_cast<std::size_t>(at.split)];
      bool const goesLeft = rows.at<float>(row, split.varIdx) <= split.c;
      node = goesLeft != split.inversed ? at.left : at.right;
      sum += 1.0;
    }
  }
  return sum / rows.rows;
}

/// A peer: OpenCV's decision tree of the same depth, asked for many cases in one call.
void DropThroughOpenCv(benchmark::State& state) {
  constexpr std::size_t kNumTrainingCases = 100000;
  auto const [training, target] = MakeSample(ManyCases(false), kNumTrainingCases);
  cv::Ptr<cv::ml::DTrees> const tree = cv::ml::DTrees::create();
  tree->setMaxDepth(static_cast<int>(state.range(0)));
  tree->setCVFolds(0);
  tree->setMinSampleCount(2);
  tree->setRegressionAccuracy(0.0F);
  tree->setUseSurrogates(false);
  tree->train(training, cv::ml::ROW_SAMPLE, target);
  cv::Mat const rows = training.rowRange(0, 4096);
  cv::Mat results;
  double const depth = MeanDepth(*tree, rows);
  for (auto _ : state) {
    tree->predict(rows, results);
    benchmark::DoNotOptimize(results.data);
  }
  state.SetItemsProcessed(state.iterations() * rows.rows);
  state.counters["mean_depth"] = depth;
  state.counters["per_level"] =
      benchmark::Counter(depth * rows.rows * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(DropThroughOpenCv)->ArgName("depth")->Arg(5)->Arg(10);

#endif  // TREE_BENCHMARK_OPENCV

}  // namespace
}  // namespace tree::bench

BENCHMARK_MAIN();
