#include <algorithm>

#include "tree/assertions.h"
#include "tree/nodes.h"

namespace tree {

namespace {

int ClassifyBy(SplitRuleImp const& rule, double const* values) {
  return rule.Classify(values[rule.GetPredictorIndex()]);
}

// Out of cache a level waits for one load after another: node, rule, cut points, list of children,
// next node. Where a binary node sends the case is not known before the rule has been read, but
// both children can be on their way to the cache meanwhile.
template <class Children>
void FetchChildrenOfBinaryNode([[maybe_unused]] Children const& children) {
#if defined(__GNUC__)
  if (children.size() != 2) return;
  __builtin_prefetch(children[0].get());
  __builtin_prefetch(children[1].get());
#endif
}

}  // namespace

int NodeImp::Classify(double const* values) const {
  FetchChildrenOfBinaryNode(children_);
  // Deliberate: the virtual operation, so that a derived node can be terminal without losing its
  // children.
  if (GetNumChildren() <= 0) return -1;
  internal::Require(!competitors_.empty() && competitors_.front() != nullptr, "NodeImp::Classify",
                    "a node with children needs a primary split rule");
  SplitRuleImp const& primary = *competitors_.front();
  int position = ClassifyBy(primary, values);
  if (position >= 0) return position;
  for (std::unique_ptr<SplitRuleImp> const& surrogate : surrogates_) {
    internal::Require(surrogate != nullptr, "NodeImp::Classify", "a surrogate is not set");
    position = ClassifyBy(*surrogate, values);
    if (position >= 0) return position;
  }
  return primary.GetDumbChildPos();
}

bool NodeImp::Child(int position, NodeImp** child) {
  if (position < 0 || position >= GetNumChildren()) return false;
  *child = children_[static_cast<std::size_t>(position)].get();
  return true;
}

bool NodeImp::Child(int position, NodeImp const** child) const {
  if (position < 0 || position >= GetNumChildren()) return false;
  *child = children_[static_cast<std::size_t>(position)].get();
  return true;
}

NodeImp const* NodeImp::DropObservationThroughTree(double const* values,
                                                   NodeImp const* stop) const {
  NodeImp const* node = this;
  while (node != stop) {
    int const position = node->Classify(values);
    if (position < 0) return stop == nullptr ? node : nullptr;
    // A position beyond the children leaves the case here, to be tried again.
    if (static_cast<std::size_t>(position) < node->children_.size()) {
      node = node->children_[static_cast<std::size_t>(position)].get();
    }
  }
  return node;
}

int NodeImp::GetBiggestChildPos() const {
  bool const hasPrimary = !competitors_.empty() && competitors_.front() != nullptr;
  return hasPrimary ? competitors_.front()->GetDumbChildPos() : -1;
}

int NodeImp::FindCompetitorPos(int predictorIndex) const {
  auto const found = std::find_if(competitors_.begin(), competitors_.end(), [=](auto const& rule) {
    return rule != nullptr && rule->GetPredictorIndex() == predictorIndex;
  });
  return found == competitors_.end() ? -1 : static_cast<int>(found - competitors_.begin());
}

}  // namespace tree
