#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "property/models/agree.h"
#include "property/models/sequences.h"
#include "property/models/statistics_models.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree::testing {

namespace {

constexpr int kMaxLeaves = 5;
constexpr int kMaxCases = 6;
constexpr int kMaxClasses = 4;

// Between means (of values up to 8) or shares that were added up in another order.
constexpr double kTolerance = 1e-12;

void AgreeClosely(std::string_view what, double actual, double expected) {
  bool const isClose = std::abs(actual - expected) <= kTolerance;
  Agree(what, isClose ? expected : actual, expected);
}

/// A case that ended in a leaf. `place`: its class, or the bin of its target; -1 without bins.
struct Case {
  double weight;
  double target;
  int place;
};

/// What a leaf is told of one sample.
struct LeafSample {
  double Weight() const {
    double sum = 0.0;
    for (Case const& each : cases) sum += each.weight;
    return sum;
  }
  double UnweightedCount() const {
    return knowsNumCases ? static_cast<double>(cases.size()) : Weight();
  }
  double WeightedTargets() const {
    double sum = 0.0;
    for (Case const& each : cases) sum += each.weight * each.target;
    return sum;
  }
  double WeightAt(int place) const {
    double sum = 0.0;
    for (Case const& each : cases) sum += each.place == place ? each.weight : 0.0;
    return sum;
  }

  std::vector<Case> cases;
  int numPlaces = 0;
  double percent = 0.0;
  bool knowsNumCases = true;
};

struct Leaf {
  double Size(std::size_t slot) const { return samples[slot] ? samples[slot]->Weight() : 0.0; }

  NodeImp* node;
  bool isClassification;
  std::array<std::optional<LeafSample>, 2> samples;
};

/// Weights and targets are multiples of 1/4, so that sums of them are exact in any order.
LeafSample ChooseSample(int numPlaces, bool isClassification, Choices& choices) {
  LeafSample sample;
  sample.numPlaces = choices.Below(6) == 1 ? choices.Below(kMaxClasses) : numPlaces;
  sample.percent = choices.Below(100);
  sample.knowsNumCases = isClassification || choices.Flag();
  for (int left = choices.Below(kMaxCases); left > 0; --left) {
    double const weight = choices.Below(9) / 4.0;
    double const target = (choices.Below(65) - 32) / 4.0;
    int const place = sample.numPlaces == 0 ? -1 : choices.Below(sample.numPlaces);
    sample.cases.push_back({weight, target, place});
  }
  // Without classes there are no cases.
  if (sample.numPlaces == 0 && isClassification) sample.cases.clear();
  return sample;
}

void Put(NodeImp& node, LeafSample const& sample, bool isClassification, DataSample which) {
  if (isClassification) {
    auto info = std::make_unique<ClsInfoImp>();
    info->SetNumClasses(sample.numPlaces);
    for (int place = 0; place < sample.numPlaces; ++place) {
      info->SetClassCount(place, sample.WeightAt(place));
    }
    info->SetUnweightedCount(sample.UnweightedCount());
    info->SetPercentSize(sample.percent);
    node.SetClsInfo(info.release(), which);
    return;
  }
  auto info = std::make_unique<RegInfoImp>();
  double const weight = sample.Weight();
  info->SetCount(weight);
  if (weight > 0.0) info->SetMean(sample.WeightedTargets() / weight);
  if (sample.knowsNumCases) {
    info->SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, sample.UnweightedCount());
  }
  info->SetNumBins(sample.numPlaces);
  for (int place = 0; place < sample.numPlaces; ++place) {
    info->SetBinSize(place, sample.WeightAt(place));
  }
  node.SetRegInfo(info.release(), which);
}

/// A root whose children are all leaves.
class Leaves {
 public:
  explicit Leaves(Choices& choices)
      : numPlaces_(choices.Below(kMaxClasses)), isClassification_(choices.Flag()) {
    int const count = 1 + choices.Below(kMaxLeaves);
    root_.SetNumChildren(count);
    for (int position = 0; position < count; ++position) {
      auto* const node = new NodeImp;
      root_.SetChild(static_cast<unsigned int>(position), node);
      bool const isOdd = choices.Below(8) == 1;
      leaves_.push_back({node, isOdd != isClassification_, {}});
      node->SetClassificationNode(leaves_.back().isClassification);
      for (std::size_t slot : {0U, 1U}) Fill(leaves_.back(), slot, choices);
    }
    CountRoot();
  }

  /// Some of them, in any order.
  std::vector<Leaf const*> ChooseGroup(Choices& choices) const {
    int const count = static_cast<int>(leaves_.size());
    std::vector<int> positions = choices.Permutation(count);
    positions.resize(static_cast<std::size_t>(1 + choices.Below(count)));
    std::vector<Leaf const*> group;
    for (int const position : positions) {
      group.push_back(&leaves_[static_cast<std::size_t>(position)]);
    }
    return group;
  }

  /// Other cases in a chosen leaf, which keeps its kind.
  void ChangeOne(Choices& choices) {
    Leaf& leaf = leaves_[static_cast<std::size_t>(choices.Below(static_cast<int>(leaves_.size())))];
    auto const slot = static_cast<std::size_t>(choices.Below(2));
    // Whether a group is valid is found out when it is made, so training statistics that are not
    // there do not come later.
    if (slot == 1 || leaf.samples[0]) Fill(leaf, slot, choices);
    CountRoot();
  }

  /// What share of the root, or of whatever the growing algorithm says, is in the leaf.
  double Percentage(Leaf const& leaf, std::size_t slot) const {
    if (leaf.isClassification) return leaf.samples[slot] ? leaf.samples[slot]->percent : 0.0;
    double const total = Total(slot);
    return total > 0.0 ? leaf.Size(slot) / total : 0.0;
  }

 private:
  void Fill(Leaf& leaf, std::size_t slot, Choices& choices) {
    if (!leaf.samples[slot] && choices.Below(6) == 1) return;
    leaf.samples[slot] = ChooseSample(numPlaces_, leaf.isClassification, choices);
    Put(*leaf.node, *leaf.samples[slot], leaf.isClassification, static_cast<DataSample>(slot));
  }

  double Total(std::size_t slot) const {
    double total = 0.0;
    for (Leaf const& leaf : leaves_) total += leaf.Size(slot);
    return total;
  }

  void CountRoot() {
    for (std::size_t slot : {0U, 1U}) {
      auto info = std::make_unique<RegInfoImp>();
      info->SetCount(Total(slot));
      root_.SetRegInfo(info.release(), static_cast<DataSample>(slot));
    }
  }

  NodeImp root_;
  std::vector<Leaf> leaves_;
  int numPlaces_;
  bool isClassification_;
};

using Group = std::vector<Leaf const*>;

void CheckSizes(CumulativeNode const& cumulative, Group const& group, Leaves const& leaves,
                std::size_t slot) {
  auto const sample = static_cast<DataSample>(slot);
  bool const isValid = group.front()->samples[0].has_value();
  double size = 0.0;
  double unweighted = 0.0;
  double percentage = 0.0;
  for (Leaf const* leaf : group) {
    size += leaf->Size(slot);
    unweighted += leaf->samples[slot] ? leaf->samples[slot]->UnweightedCount() : 0.0;
    percentage += leaves.Percentage(*leaf, slot);
  }
  if (!isValid) size = unweighted = percentage = systemMissingValue();

  Agree("Validate", cumulative.Validate(), isValid);
  Agree("GetNodeSize", cumulative.GetNodeSize(sample), size);
  Agree("GetUnweightedNodeSize", cumulative.GetUnweightedNodeSize(sample), unweighted);
  AgreeClosely("GetPercentageNodeSize", cumulative.GetPercentageNodeSize(sample), percentage);
  auto const of = [&](int type) {
    return cumulative.GetNodeSize(static_cast<CumulativeNode::NodeSizeType>(type), sample);
  };
  Agree("GetNodeSize", of(CumulativeNode::NodeSizeWeighted), size);
  Agree("GetNodeSize", of(CumulativeNode::NodeSizeUnweighted), unweighted);
  AgreeClosely("GetNodeSize", of(CumulativeNode::NodeSizePercentage), percentage);
  for (int const unknown : {-1, 3}) {
    Agree("GetNodeSize", of(unknown), isValid ? 0.0 : systemMissingValue());
  }
}

void CheckClasses(CumulativeNode& cumulative, Group const& group, std::size_t slot) {
  ClsInfoImp const* const info = cumulative.GetClsInfo(static_cast<DataSample>(slot));
  bool const isValid = group.front()->samples[0].has_value();
  Agree("GetClsInfo", info != nullptr, isValid);
  if (!isValid) return;

  ClassModel expected;
  bool isFirst = true;
  for (Leaf const* leaf : group) {
    if (!leaf->isClassification || !leaf->samples[slot]) continue;
    LeafSample const& sample = *leaf->samples[slot];
    if (isFirst) expected.counts.resize(static_cast<std::size_t>(sample.numPlaces));
    isFirst = false;
    for (std::size_t index = 0; index < expected.counts.size(); ++index) {
      expected.counts[index] += sample.WeightAt(static_cast<int>(index));
    }
    expected.unweighted += sample.UnweightedCount();
  }
  expected.probabilities.resize(expected.counts.size());
  Check(*info, expected);
}

void CheckRegression(CumulativeNode& cumulative, Group const& group, std::size_t slot) {
  RegInfoImp const* const info = cumulative.GetRegInfo(static_cast<DataSample>(slot));
  bool const isValid = group.front()->samples[0].has_value();
  Agree("GetRegInfo", info != nullptr, isValid);
  if (!isValid) return;

  RegressionModel expected;
  double weightedTargets = 0.0;
  double unweighted = 0.0;
  for (Leaf const* leaf : group) {
    if (leaf->isClassification || leaf->Size(slot) == 0.0) continue;
    LeafSample const& sample = *leaf->samples[slot];
    expected.count += sample.Weight();
    weightedTargets += sample.WeightedTargets();
    unweighted += sample.UnweightedCount();
    if (expected.bins.empty()) expected.bins.resize(static_cast<std::size_t>(sample.numPlaces));
    for (std::size_t index = 0; index < expected.bins.size(); ++index) {
      expected.bins[index] += sample.WeightAt(static_cast<int>(index));
    }
  }
  double const mean =
      expected.count > 0.0 ? weightedTargets / expected.count : systemMissingValue();
  AgreeClosely("GetMean", info->GetMean(), mean);
  expected.mean = info->GetMean();
  expected.extended[RegInfoImp::StoreStdDev] = systemMissingValue();
  expected.extended[RegInfoImp::StoreUnweightedCount] = unweighted;
  Check(*info, expected);
}

}  // namespace

void RunCumulativeNodes(Choices choices) {
  while (choices.Any()) {
    Leaves leaves(choices);
    Group const group = leaves.ChooseGroup(choices);
    std::vector<Node const*> nodes;
    for (Leaf const* leaf : group) nodes.push_back(leaf->node);
    auto cumulative = std::make_unique<CumulativeNode>(nodes);
    for (int left = 1 + choices.Below(4); left > 0; --left) {
      auto const slot = static_cast<std::size_t>(choices.Below(2));
      CheckSizes(*cumulative, group, leaves, slot);
      CheckClasses(*cumulative, group, slot);
      CheckRegression(*cumulative, group, slot);
      leaves.ChangeOne(choices);
      if (choices.Flag()) cumulative = std::make_unique<CumulativeNode>(*cumulative);
    }
  }
}

}  // namespace tree::testing
