#include <algorithm>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "property/generators.h"
#include "property/models/sequences.h"
#include "property/models/tree_model.h"

namespace tree::testing {
namespace {

constexpr int kMaxNodes = 40;

struct SomeTree {
  explicit SomeTree(bool withDumbChild)
      : bytes(*Bytes()), choices(bytes), tree(ChooseTree(choices, kMaxNodes, withDumbChild)) {}

  std::vector<std::uint8_t> bytes;
  Choices choices;
  TreePair tree;
};

std::vector<double> SomeCase() {
  return *rc::gen::container<std::vector<double>>(kNumPredictors, Values());
}

/// Counts a case in every node on its way from the root, as weight 1 of class 0.
void Count(NodeImp const& root, std::vector<double> const& values) {
  Node const* node = root.DropObservationThroughTree(values.data(), nullptr);
  for (; node != nullptr; node = node->GetParent()) {
    ClsInfoImp& info = *dynamic_cast<NodeImp const*>(node)->GetClsInfoImp(TrainingSample);
    info.SetClassCount(0, info.GetClassCount(0) + 1.0);
  }
}

RC_GTEST_PROP(NodeImp, BehavesLikeARecursiveTree, ()) { RunOnBytes(RunTree); }

RC_GTEST_PROP(NodeImp, RoutesLikeARecursiveTree, ()) {
  SomeTree some(*rc::gen::arbitrary<bool>());

  for (int left = 20; left > 0; --left) CheckRouting(some.tree, SomeCase(), some.choices);
}

RC_GTEST_PROP(NodeImp, EveryCaseEndsInExactlyOneTerminalNode, ()) {
  SomeTree const some(/*withDumbChild=*/true);
  std::vector<double> const values = SomeCase();

  int numEnds = 0;
  for (NodePair const& pair : some.tree.Nodes()) {
    if (pair.node->GetNumChildren() > 0) continue;
    NodeImp const* const end = some.tree.root->DropObservationThroughTree(values.data(), pair.node);
    if (end == pair.node) ++numEnds;
  }

  RC_ASSERT(numEnds == 1);
  NodeImp const* const end = some.tree.root->DropObservationThroughTree(values.data(), nullptr);
  RC_ASSERT(end->GetNumChildren() == 0);
}

RC_GTEST_PROP(NodeImp, CaseEndsAtTheSameNodeAfterSiblingsAreReordered, ()) {
  SomeTree some(*rc::gen::arbitrary<bool>());
  std::vector<double> const values = SomeCase();
  NodeImp const* const before = some.tree.root->DropObservationThroughTree(values.data(), nullptr);

  for (NodePair const& pair : some.tree.Nodes()) {
    int const numChildren = pair.node->GetNumChildren();
    if (numChildren > 0) pair.node->ReorderSiblings(some.choices.Permutation(numChildren));
  }

  RC_ASSERT(some.tree.root->DropObservationThroughTree(values.data(), nullptr) == before);
}

RC_GTEST_PROP(NodeImp, SizesOfTerminalNodesAddUpToTheRoot, ()) {
  SomeTree const some(/*withDumbChild=*/true);
  std::vector<NodePair> const nodes = some.tree.Nodes();
  for (NodePair const& pair : nodes) {
    auto info = std::make_unique<ClsInfoImp>();
    info->SetNumClasses(1);
    pair.node->SetClsInfo(info.release(), TrainingSample);
  }
  int const numCases = *rc::gen::inRange(0, 50);

  for (int left = numCases; left > 0; --left) Count(*some.tree.root, SomeCase());

  double inTerminals = 0.0;
  for (NodePair const& pair : nodes) {
    double const size = pair.node->GetNodeSize(TrainingSample);
    int const numChildren = pair.node->GetNumChildren();
    if (numChildren == 0) inTerminals += size;
    double inChildren = 0.0;
    for (unsigned int child = 0; child < pair.model->children.size(); ++child) {
      inChildren += pair.node->GetChild(child)->GetNodeSize(TrainingSample);
    }
    if (numChildren > 0) RC_ASSERT(inChildren == size);
  }
  RC_ASSERT(inTerminals == numCases);
}

RC_GTEST_PROP(NodeImp, SharesOfTerminalNodesOfARegressionTreeAddUpToOne, ()) {
  SomeTree const some(/*withDumbChild=*/true);
  std::vector<NodePair> const nodes = some.tree.Nodes();
  int const cases = *rc::gen::inRange(1, 1000);
  double const numTerminals =
      static_cast<double>(std::count_if(nodes.begin(), nodes.end(), [](NodePair const& pair) {
        return pair.model->children.empty();
      }));
  for (NodePair const& pair : nodes) {
    bool const isRoot = pair.node == some.tree.root.get();
    auto info = std::make_unique<RegInfoImp>();
    info->SetCount(isRoot ? cases * numTerminals : cases);
    pair.node->SetRegInfo(info.release(), TestSample);
  }

  double sum = 0.0;
  for (NodePair const& pair : nodes) {
    if (pair.model->children.empty()) sum += pair.node->GetPercentageNodeSize(TestSample);
  }

  RC_ASSERT(std::abs(sum - 1.0) < 1e-12);
}

RC_GTEST_PROP(NodeImp, CloneIsEqualAndIndependent, ()) {
  SomeTree some(*rc::gen::arbitrary<bool>());
  TreePair clone;
  clone.root.reset(some.tree.root->Clone());
  clone.model = some.tree.model->Clone();
  Check(clone, some.choices);

  for (NodePair const& pair : clone.Nodes()) {
    pair.node->SetId(4711);
    pair.node->SetRegInfo(new RegInfoImp, TrainingSample);
    if (!pair.model->competitors.empty()) pair.node->GetCompetitorImp(0)->SetDumbRule(0, 0.5);
    pair.node->SetNumPredictors(2);
  }
  clone.root->Clean();

  Check(some.tree, some.choices);
}

RC_GTEST_PROP(NodeImp, ClonedNodesThatStandAloneAreEqual, ()) {
  SomeTree const some(*rc::gen::arbitrary<bool>());
  std::unique_ptr<NodeImp> const alone(some.tree.root->Clone());
  alone->RemoveChildren(false);

  std::unique_ptr<NodeImp> const clone(alone->Clone());
  RC_ASSERT(*alone == *clone);
  clone->SetId(alone->GetId() + 1);

  RC_ASSERT(!(*alone == *clone));
}

RC_GTEST_PROP(NodeImp, AssignmentWorksOverAnythingAndKeepsTheParent, ()) {
  SomeTree some(*rc::gen::arbitrary<bool>());
  SomeTree other(*rc::gen::arbitrary<bool>());
  std::vector<NodePair> const nodes = some.tree.Nodes();
  std::vector<NodePair> const others = other.tree.Nodes();
  NodePair const to = *rc::gen::elementOf(nodes);
  // Sometimes a node of the same tree, above, below or beside the target.
  NodePair const from = *rc::gen::elementOf(*rc::gen::arbitrary<bool>() ? nodes : others);
  Node const* const parent = to.node->GetParent();

  *to.node = *from.node;
  to.model->AssignFrom(*from.model);

  RC_ASSERT(to.node->GetParent() == parent);
  Check(some.tree, some.choices);
  Check(other.tree, other.choices);
  CheckRouting(some.tree, SomeCase(), some.choices);
}

RC_GTEST_PROP(PrefixNodeIterator, DeliversEveryNodeOfASubtreeInRecursiveOrder, ()) {
  SomeTree const some(*rc::gen::arbitrary<bool>());
  std::vector<NodePair> const nodes = some.tree.Nodes();
  NodePair const start = *rc::gen::elementOf(nodes);
  std::vector<NodeModel*> expected;
  start.model->Collect(expected);

  // Ids are unique in the chosen trees, so they tell which node came.
  PrefixNodeIterator iterator(start.node);
  std::vector<unsigned int> ids;
  while (Node const* const node = iterator.Next()) ids.push_back(node->GetId());

  RC_ASSERT(ids.size() == expected.size());
  RC_ASSERT(std::equal(ids.begin(), ids.end(), expected.begin(),
                       [](unsigned int id, NodeModel const* model) { return id == model->id; }));
}

}  // namespace
}  // namespace tree::testing
