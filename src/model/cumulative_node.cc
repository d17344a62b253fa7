#include <algorithm>

#include "model/readable_classes.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {

namespace {

double SizeOf(Node const& node, CumulativeNode::NodeSizeType type, DataSample sample) {
  switch (type) {
    case CumulativeNode::NodeSizeWeighted:
      return node.GetNodeSize(sample);
    case CumulativeNode::NodeSizeUnweighted:
      return node.GetUnweightedNodeSize(sample);
    case CumulativeNode::NodeSizePercentage:
      return node.GetPercentageNodeSize(sample);
  }
  return 0.0;
}

// Adds value to sum `index`, the next one if there is none yet.
void AddAt(std::vector<double>& sums, int index, double value) {
  auto const position = static_cast<std::size_t>(index);
  if (position >= sums.size()) sums.resize(position + 1);
  sums[position] += value;
}

}  // namespace

CumulativeNode::CumulativeNode(std::vector<Node const*> const& nodes)
    : nodes_(nodes), valid_(Validate()) {}

CumulativeNode::CumulativeNode(CumulativeNode const& other) = default;

CumulativeNode& CumulativeNode::operator=(CumulativeNode const& other) = default;

CumulativeNode::~CumulativeNode() = default;

double CumulativeNode::GetNodeSize(DataSample sample) const {
  return GetNodeSize(NodeSizeWeighted, sample);
}

double CumulativeNode::GetUnweightedNodeSize(DataSample sample) const {
  return GetNodeSize(NodeSizeUnweighted, sample);
}

double CumulativeNode::GetPercentageNodeSize(DataSample sample) const {
  return GetNodeSize(NodeSizePercentage, sample);
}

ClsInfoImp const* CumulativeNode::GetClsInfo(DataSample sample) {
  if (!valid_) return nullptr;
  int numClasses = 0;
  bool hasNumClasses = false;
  double unweightedCount = 0.0;
  std::vector<double> classSums;
  for (Node const* const node : nodes_) {
    // Deliberate: not needed here, but every node of a group is asked for its size first, whatever
    // its kind, so that nodes which fill themselves on demand see one order of questions.
    static_cast<void>(node->GetNodeSize(sample));
    ClsInfo const* const info = node->GetClsInfo(sample);
    if (info == nullptr) continue;
    if (!hasNumClasses) numClasses = info->GetNumClasses();
    hasNumClasses = true;
    // Only our own objects know their count; a node's size answers for any other.
    auto const* const own = dynamic_cast<ClsInfoImp const*>(info);
    unweightedCount +=
        own != nullptr ? own->GetUnweightedCount() : node->GetUnweightedNodeSize(sample);
    int const numReadable = CountReadableClasses(*info, numClasses);
    for (int k = 0; k < numReadable; ++k) AddAt(classSums, k, info->GetClassCount(k));
  }
  classSums.resize(static_cast<std::size_t>(std::max(numClasses, 0)));
  clsInfo_.SetNumClasses(numClasses);
  for (int k = 0; k < numClasses; ++k) {
    clsInfo_.SetClassCount(k, classSums[static_cast<std::size_t>(k)]);
  }
  clsInfo_.SetUnweightedCount(unweightedCount);
  return &clsInfo_;
}

RegInfoImp const* CumulativeNode::GetRegInfo(DataSample sample) {
  if (!valid_) return nullptr;
  double weight = 0.0;
  double weightedMean = 0.0;
  double count = 0.0;
  double unweightedCount = 0.0;
  int numBins = 0;
  std::vector<double> binSums;
  for (Node const* const node : nodes_) {
    double const size = node->GetNodeSize(sample);
    if (size == 0.0) continue;
    RegInfo const* const info = node->GetRegInfo(sample);
    if (info == nullptr) continue;
    weightedMean += size * info->GetMean();
    weight += size;
    // Deliberate: asked like the mean, though merged nodes report no standard deviation.
    static_cast<void>(info->GetStdDev());
    if (numBins == 0) numBins = info->GetNumBins();
    // Only our own objects know their counts; the node's sizes answer for any other.
    auto const* const own = dynamic_cast<RegInfoImp const*>(info);
    count += own != nullptr ? own->GetCount() : size;
    unweightedCount +=
        own != nullptr ? own->GetUnweightedCount() : node->GetUnweightedNodeSize(sample);
    int const numReadable = own != nullptr ? std::min(numBins, own->GetNumBins()) : numBins;
    for (int k = 0; k < numReadable; ++k) AddAt(binSums, k, info->GetBinSize(k));
  }
  binSums.resize(static_cast<std::size_t>(std::max(numBins, 0)));
  regInfo_.SetMean(weight == 0.0 ? systemMissingValue() : weightedMean / weight);
  // Deliberate: merged nodes report no standard deviation, so the missing value stands in for it.
  regInfo_.SetExtendedStatistic(RegInfoImp::StoreStdDev, systemMissingValue());
  regInfo_.SetCount(count);
  regInfo_.SetExtendedStatistic(RegInfoImp::StoreUnweightedCount, unweightedCount);
  regInfo_.SetNumBins(numBins);
  for (int k = 0; k < numBins; ++k) {
    regInfo_.SetBinSize(k, binSums[static_cast<std::size_t>(k)]);
  }
  return &regInfo_;
}

double CumulativeNode::GetNodeSize(NodeSizeType type, DataSample sample) const {
  if (!valid_) return systemMissingValue();
  double sum = 0.0;
  for (Node const* const node : nodes_) sum += SizeOf(*node, type, sample);
  return sum;
}

bool CumulativeNode::Validate() const {
  if (nodes_.empty()) return false;
  Node const& first = *nodes_.front();
  return first.GetClsInfo(TrainingSample) != nullptr || first.GetRegInfo(TrainingSample) != nullptr;
}

}  // namespace tree
