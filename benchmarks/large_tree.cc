#include "large_tree.h"

#include <vector>

#include "tree/support.h"

namespace tree::bench {

void FillWithNothing(NodeImp& /*node*/, bool /*isTerminal*/) {}

void FillWithRule(NodeImp& node, bool isTerminal) {
  if (isTerminal) return;
  auto rule = std::make_unique<OSplitRule>(systemMissingValue(), 0);
  rule->SetCutPoint(0.5);
  rule->SetDumbRule(0, 0.5);
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, rule.release());
}

void FillWithRuleAndClasses(NodeImp& node, bool isTerminal) {
  constexpr int kNumClasses = 3;
  FillWithRule(node, isTerminal);
  auto info = std::make_unique<ClsInfoImp>();
  info->SetNumClasses(kNumClasses);
  for (int cls = 0; cls < kNumClasses; ++cls) info->SetClassCount(cls, 1.0 + cls);
  info->SetPrediction(static_cast<int>(node.GetId() % kNumClasses));
  node.SetClsInfo(info.release(), TrainingSample);
}

void FillWithRuleAndRegression(NodeImp& node, bool isTerminal) {
  FillWithRule(node, isTerminal);
  auto info = std::make_unique<RegInfoImp>();
  info->SetExtendedStatistic(RegInfoImp::StoreStdDev, 1.0);
  node.SetRegInfo(info.release(), TrainingSample);
}

std::unique_ptr<NodeImp> MakeLargeTree(Fill fill) {
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

}  // namespace tree::bench
