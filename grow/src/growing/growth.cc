#include "growing/growth.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "growing/placement.h"
#include "growing/predictor_summaries.h"
#include "growing/row_ranges.h"

namespace tree::grow {
namespace {

/// So many nodes are split at a time: enough to keep all threads busy, and few enough for what is
/// found of each predictor in each node to take little memory.
constexpr std::size_t kNodesPerBlock = 512;
/// The rows of a block's cases are gone through several times: so many values stay in the cache of
/// a thread. Several threads, which have to wait for each other after each block, get more to do.
constexpr std::size_t kRowValuesInCache = std::size_t{1} << 17;
constexpr std::size_t kRowValuesPerThread = std::size_t{1} << 20;

void StoreCompetitors(NodeImp& node, RuleList rules) {
  node.SetNumCompetitors(static_cast<unsigned int>(rules.size()));
  for (std::size_t position = 0; position < rules.size(); ++position) {
    node.SetCompetitor(static_cast<unsigned int>(position), rules[position].release());
  }
}

void StoreSurrogates(NodeImp& node, RuleList rules) {
  node.SetNumSurrogates(static_cast<unsigned int>(rules.size()));
  for (std::size_t position = 0; position < rules.size(); ++position) {
    node.SetSurrogate(static_cast<unsigned int>(position), rules[position].release());
  }
}

SplitRuleImp* PrimaryOf(NodeImp const& node) {
  return node.GetNumCompetitors() > 0 ? node.GetCompetitorImp(0) : nullptr;
}

}  // namespace

Growth::Growth(TrainingData const& data, CaseLists& lists, SplitMethod& method,
               NodeStatistics const& statistics, GrowthLimits const& limits, unsigned int& nextId,
               Workers& workers)
    : data_(data),
      lists_(lists),
      method_(method),
      statistics_(statistics),
      limits_(limits),
      nextId_(nextId),
      workers_(workers),
      childOf_(lists.GetNumPlaces(), kNoChild) {}

void Growth::PlantRoot(NodeImp& root) {
  root_ = {&root, 0, lists_.GetRoot(), SumCases(data_, lists_.Cases(lists_.GetRoot()), poll_)};
  workers_.Poll();
  statistics_.Fill(root, lists_.Cases(root_.ranges), root_.sums, poll_);
  std::size_t const numPredictors = data_.GetPredictors().size();
  root.SetNumPredictors(static_cast<unsigned int>(numPredictors));
  workers_.Run(numPredictors, [&](std::size_t predictor) {
    if (data_.GetPredictors()[predictor].isInRows) return;
    SummarisePredictor(data_, lists_, root_.ranges, predictor, root);
  });
}

bool Growth::IsOpen(GrowingNode const& node) const {
  return node.level < limits_.maxLevels && MayBeSplit(node);
}

bool Growth::MayBeSplit(GrowingNode const& node) const {
  double const size = static_cast<double>(node.sums.size) * data_.GetFrequencies().unit;
  return size >= limits_.minNodeSize && size >= 2.0 && size >= 2.0 * limits_.minChildSize &&
         !IsPure(*node.node);
}

RuleList Growth::FindRootSplits() {
  if (!MayBeSplit(root_)) return {};
  return std::move(method_.FindSplits(lists_, {&root_, 1}, workers_).front());
}

void Growth::Grow() {
  std::vector<GrowingNode> level;
  bool const hasPrimary = PrimaryOf(*root_.node) != nullptr;
  if (hasPrimary || !IsOpen(root_)) {
    SummariseRows(data_, lists_, root_.ranges.places, *root_.node);
  }
  if (hasPrimary || IsOpen(root_)) level.push_back(root_);
  numFinished_ = 0;
  for (int depth = 0; !level.empty(); ++depth) {
    std::vector<GrowingNode> next;
    for (std::size_t begin = 0; begin < level.size();) {
      std::span<GrowingNode const> const rest(level.data() + begin, level.size() - begin);
      std::size_t const size = SizeOfBlock(rest);
      GrowBlock(rest.first(size), next);
      begin += size;
    }
    level = std::move(next);
    std::size_t numOpen = 0;
    for (GrowingNode const& node : level) numOpen += node.ranges.places.Size();
    ReportLevel(depth + 1, numOpen);
  }
}

/// How many of the nodes make up the next block; at least 1.
std::size_t Growth::SizeOfBlock(std::span<GrowingNode const> nodes) const {
  auto const numThreads = static_cast<std::size_t>(workers_.GetNumThreads());
  std::size_t const maxNumValues =
      numThreads == 1 ? kRowValuesInCache : numThreads * kRowValuesPerThread;
  std::size_t const width = data_.GetCaseRows().GetWidth();
  std::size_t numValues = 0;
  std::size_t size = 0;
  for (; size < std::min(nodes.size(), kNodesPerBlock); ++size) {
    numValues += width * nodes[size].ranges.places.Size();
    if (size > 0 && numValues > maxNumValues) break;
  }
  return size;
}

void Growth::ReportLevel(int level, std::size_t numOpen) {
  // A tree is done when it has reached its depth, or when no cases are left to split; what comes
  // first is not known.
  double const byLevel = static_cast<double>(level) / static_cast<double>(limits_.maxLevels);
  double const byCases =
      1.0 - static_cast<double>(numOpen) / static_cast<double>(root_.ranges.places.Size());
  workers_.Advance(std::max(byLevel, byCases));
}

void Growth::GrowBlock(std::span<GrowingNode const> block, std::vector<GrowingNode>& next) {
  StoreRules(block);
  PlaceCases(block);
  MakeChildren(block, next);
}

/// Gives each node its primary split and the competitors, unless it came with one.
void Growth::StoreRules(std::span<GrowingNode const> block) {
  if (PrimaryOf(*block.front().node) != nullptr) return;
  std::vector<RuleList> splits = method_.FindSplits(lists_, block, workers_);
  for (std::size_t node = 0; node < block.size(); ++node) {
    StoreCompetitors(*block[node].node, std::move(splits[node]));
  }
}

void Growth::PlaceCases(std::span<GrowingNode const> block) {
  std::vector<SplitRuleImp const*> primaries(block.size());
  workers_.Run(block.size(), [&](std::size_t node) {
    SplitRuleImp* const primary = PrimaryOf(*block[node].node);
    primaries[node] = primary;
    if (primary == nullptr) return;
    PlaceByRule(data_, lists_, block[node].ranges, *primary, childOf_);
    SetDumbRule(lists_, block[node].ranges, childOf_, *primary);
  });
  std::vector<RuleList> surrogates =
      method_.FindSurrogates(lists_, block, primaries, childOf_, workers_);
  workers_.Run(block.size(), [&](std::size_t node) {
    if (primaries[node] == nullptr) return;
    StoreSurrogates(*block[node].node, std::move(surrogates[node]));
    PlaceRest(data_, lists_, block[node].ranges, *block[node].node, childOf_);
  });
}

void Growth::MakeChildren(std::span<GrowingNode const> block, std::vector<GrowingNode>& next) {
  std::size_t const numPredictors = data_.GetPredictors().size();
  for (GrowingNode const& parent : block) {
    SplitRuleImp const* const primary = PrimaryOf(*parent.node);
    if (primary == nullptr) continue;
    int const numChildren = primary->GetNumChildren();
    parent.node->SetNumChildren(numChildren);
    for (int position = 0; position < numChildren; ++position) {
      auto child = std::make_unique<NodeImp>();
      child->SetId(nextId_++);
      child->SetNumPredictors(static_cast<unsigned int>(numPredictors));
      parent.node->SetChild(static_cast<unsigned int>(position), child.release());
    }
  }
  std::vector<std::vector<NodeSums>> sums(block.size());  // [parent][child]
  workers_.Run(block.size(), [&](std::size_t number) {
    int const numChildren = block[number].node->GetNumChildren();
    if (numChildren == 0) return;
    sums[number] = SumChildren(data_, lists_, block[number].ranges, childOf_, numChildren);
  });
  workers_.Run(numPredictors, [&](std::size_t predictor) {
    // The method does so for the children that go on; for the others see below.
    if (data_.GetPredictors()[predictor].isInRows) return;
    for (std::size_t number = 0; number < block.size(); ++number) {
      if (sums[number].empty()) continue;
      SummariseForChildren(data_, lists_, block[number].ranges, predictor, childOf_, sums[number],
                           *block[number].node);
      workers_.Poll(block[number].ranges.places.Size());
    }
  });
  std::vector<std::vector<GrowingNode>> families(block.size());
  std::vector<std::vector<NodeRanges>> ranges(block.size());
  // What the cases are is not needed any more where none of the children goes on.
  std::vector<char> goesOn(block.size());
  workers_.Run(block.size(), [&](std::size_t number) {
    GrowingNode const& parent = block[number];
    int const numChildren = parent.node->GetNumChildren();
    if (numChildren == 0) return;
    auto const divide = [&] {
      ranges[number] = lists_.DivideCases(parent.ranges, childOf_, numChildren);
    };
    bool const readsCases = data_.GetNumClasses() == 0 || !data_.GetCaseRows().IsEmpty();
    if (readsCases) divide();
    for (std::size_t position = 0; position < sums[number].size(); ++position) {
      GrowingNode child{parent.node->GetChildImp(static_cast<unsigned int>(position)),
                        parent.level + 1,
                        {},
                        std::move(sums[number][position])};
      workers_.Poll();
      statistics_.Fill(
          *child.node,
          readsCases ? lists_.Cases(ranges[number][position]) : std::span<std::uint32_t const>(),
          child.sums, poll_);
      if (IsOpen(child)) {
        goesOn[number] = 1;
      } else if (readsCases) {
        SummariseRows(data_, lists_, ranges[number][position].places, *child.node);
      }
      families[number].push_back(std::move(child));
    }
    if (!readsCases && goesOn[number] != 0) divide();
  });
  workers_.Run(numPredictors, [&](std::size_t predictor) {
    scratch_.With([&](WorkMemory<SortedCase>& scratch) {
      for (std::size_t number = 0; number < block.size(); ++number) {
        if (goesOn[number] == 0) continue;
        lists_.DividePredictor(block[number].ranges, predictor, ranges[number], scratch);
        workers_.Poll(block[number].ranges.places.Size());
      }
    });
  });
  for (std::size_t number = 0; number < block.size(); ++number) {
    for (std::size_t child = 0; child < families[number].size(); ++child) {
      GrowingNode& node = families[number][child];
      if (!IsOpen(node)) continue;
      node.ranges = std::move(ranges[number][child]);
      next.push_back(std::move(node));
    }
  }
}

}  // namespace tree::grow
