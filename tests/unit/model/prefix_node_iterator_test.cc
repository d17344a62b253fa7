#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/foreign_node.h"
#include "testing/tree_builder.h"
#include "testing/virtual_slot.h"
#include "tree/nodes.h"

namespace tree {
namespace {

using testing::ANode;
using ::testing::ElementsAre;

std::vector<unsigned int> IdsFrom(Node const* root) {
  std::vector<unsigned int> ids;
  PrefixNodeIterator iterator(root);
  while (Node const* const node = iterator.Next()) ids.push_back(node->GetId());
  return ids;
}

// 0 over 1 and 2, 1 over 3 and 4.
std::unique_ptr<NodeImp> FirstChildSplit() {
  return ANode(0).Over(ANode(1).Over(ANode(3), ANode(4)), ANode(2)).Build();
}

// A node of another class that knows its id and its place in a tree.
class PlainNode : public testing::ForeignNode {
 public:
  PlainNode(unsigned int id, std::initializer_list<PlainNode*> childNodes) : id_(id) {
    for (PlainNode* const child : childNodes) {
      children.push_back(child);
      child->parent_ = this;
    }
  }

  Node const* GetParent() const override { return parent_; }
  unsigned int GetId() const override { return id_; }

 private:
  unsigned int id_;
  PlainNode* parent_ = nullptr;
};

TEST(PrefixNodeIterator, VisitsRootWithoutChildrenOnly) {
  std::unique_ptr<NodeImp> const root = ANode(7).Build();

  EXPECT_THAT(IdsFrom(root.get()), ElementsAre(7));
}

TEST(PrefixNodeIterator, VisitsNodeBeforeItsChildrenAndThoseInOrder) {
  struct Row {
    char const* name;
    std::unique_ptr<NodeImp> root;
    std::vector<unsigned int> order;
  };
  Row const rows[] = {
      {"first child split", FirstChildSplit(), {0, 1, 3, 4, 2}},
      {"last child split",
       ANode(0).Over(ANode(1), ANode(2).Over(ANode(3), ANode(4))).Build(),
       {0, 1, 2, 3, 4}},
      {"both split",
       ANode(0).Over(ANode(1).Over(ANode(2)), ANode(3).Over(ANode(4))).Build(),
       {0, 1, 2, 3, 4}},
      {"a chain", ANode(5).Over(ANode(4).Over(ANode(3).Over(ANode(2)))).Build(), {5, 4, 3, 2}},
      {"up several levels at once",
       ANode(0).Over(ANode(1).Over(ANode(2).Over(ANode(3))), ANode(4), ANode(5)).Build(),
       {0, 1, 2, 3, 4, 5}},
      {"wide", ANode(0).Over(ANode(4), ANode(3), ANode(2), ANode(1)).Build(), {0, 4, 3, 2, 1}},
  };
  for (Row const& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(IdsFrom(row.root.get()), row.order);
  }
}

TEST(PrefixNodeIterator, StaysInSubtreeOfInnerNode) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();

  EXPECT_THAT(IdsFrom(root->GetChild(0)), ElementsAre(1, 3, 4));
  EXPECT_THAT(IdsFrom(root->GetChild(1)), ElementsAre(2));
  EXPECT_THAT(IdsFrom(root->GetChild(0)->GetChild(0)), ElementsAre(3));
}

TEST(PrefixNodeIterator, DeliversRootFirst) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  PrefixNodeIterator iterator(root.get());

  EXPECT_EQ(iterator.Next(), root.get());
}

TEST(PrefixNodeIterator, KeepsAnsweringNullAtTheEnd) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  PrefixNodeIterator iterator(root.get());
  while (iterator.Next() != nullptr) {
  }

  EXPECT_EQ(iterator.Next(), nullptr);
  EXPECT_EQ(iterator.Next(), nullptr);
}

TEST(PrefixNodeIterator, KeepsLastNodeAsCurrentAtTheEnd) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1)).Build();
  PrefixNodeIterator iterator(root.get());
  while (iterator.Next() != nullptr) {
  }

  // A child grown below the last node comes next: the walk has not left that node.
  NodeImp* const last = root->GetChildImp(0);
  last->SetNumChildren(1);
  last->SetChild(0, ANode(2).Build().release());

  EXPECT_EQ(iterator.GetFailReason(), 0);
  Node const* const next = iterator.Next();
  ASSERT_NE(next, nullptr);
  EXPECT_EQ(next->GetId(), 2u);
}

TEST(PrefixNodeIterator, SaysByHasMoreThatThereIsNoMore) {
  std::unique_ptr<NodeImp> const root = ANode(0).Over(ANode(1)).Build();
  PrefixNodeIterator iterator(root.get());

  EXPECT_EQ(iterator.HasMore(), 0);
  iterator.Next();
  EXPECT_EQ(iterator.HasMore(), 0);
  iterator.Next();
  EXPECT_EQ(iterator.HasMore(), 1);
  iterator.Next();
  EXPECT_EQ(iterator.HasMore(), 1);
}

TEST(PrefixNodeIterator, SaysBeforeAndAfterLoneRootWhetherThereIsMore) {
  NodeImp const root;
  PrefixNodeIterator iterator(&root);

  EXPECT_EQ(iterator.HasMore(), 0);
  EXPECT_EQ(iterator.Next(), &root);
  EXPECT_EQ(iterator.HasMore(), 1);
  EXPECT_EQ(iterator.Next(), nullptr);
}

TEST(PrefixNodeIterator, DoesNotMoveByHasMore) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  PrefixNodeIterator const untouched(root.get());
  PrefixNodeIterator iterator = untouched;

  static_cast<void>(iterator.HasMore());
  static_cast<void>(iterator.HasMore());

  EXPECT_EQ(iterator.GetFailReason(), 1);
  EXPECT_EQ(iterator.Next(), root.get());
}

TEST(PrefixNodeIterator, FailsOnlyBeforeTheFirstNode) {
  NodeImp const root;
  PrefixNodeIterator iterator(&root);

  EXPECT_EQ(iterator.GetFailReason(), 1);
  iterator.Next();
  EXPECT_EQ(iterator.GetFailReason(), 0);
  iterator.Next();
  EXPECT_EQ(iterator.GetFailReason(), 0);
}

TEST(PrefixNodeIterator, DeliversNothingWithoutRoot) {
  PrefixNodeIterator iterator(nullptr);

  EXPECT_EQ(iterator.HasMore(), 1);
  EXPECT_EQ(iterator.Next(), nullptr);
  EXPECT_EQ(iterator.GetFailReason(), 1);
}

TEST(PrefixNodeIterator, CopiesItsPlace) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  PrefixNodeIterator iterator(root.get());
  iterator.Next();
  iterator.Next();

  PrefixNodeIterator copy(iterator);
  PrefixNodeIterator assigned(nullptr);
  assigned = iterator;
  iterator.Next();
  iterator.Next();

  EXPECT_EQ(copy.Next()->GetId(), 3u);
  EXPECT_EQ(assigned.Next()->GetId(), 3u);
  EXPECT_EQ(iterator.Next()->GetId(), 2u);
}

TEST(PrefixNodeIterator, IsUsedThroughItsInterfaces) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  std::unique_ptr<NodeIterator> const nodes = std::make_unique<PrefixNodeIterator>(root.get());
  MCTree::AIterator<Node>& iterator = *nodes;

  EXPECT_EQ(iterator.GetFailReason(), 1);
  EXPECT_EQ(iterator.HasMore(), 0);
  EXPECT_EQ(iterator.Next(), root.get());
  static_assert(std::is_abstract_v<MCTree::AIterator<Node>>);
  static_assert(std::is_abstract_v<NodeIterator>);
  static_assert(std::has_virtual_destructor_v<MCTree::AIterator<Node>>);
}

#if TREE_HAS_SLOTS
TEST(PrefixNodeIterator, KeepsTheOrderOfItsVirtualOperations) {
  using testing::kFirstSlot;
  using testing::VirtualSlot;

  EXPECT_EQ(VirtualSlot(&MCTree::AIterator<Node>::HasMore), kFirstSlot);
  EXPECT_EQ(VirtualSlot(&MCTree::AIterator<Node>::Next), kFirstSlot + 1);
  EXPECT_EQ(VirtualSlot(&MCTree::AIterator<Node>::GetFailReason), kFirstSlot + 2);
}
#endif

TEST(PrefixNodeIterator, NeedsNoMemoryForItsSteps) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  PrefixNodeIterator iterator(root.get());
  long const before = testing::CountAllocations();

  while (iterator.HasMore() == 0) iterator.Next();

  EXPECT_EQ(testing::CountAllocations(), before);
}

TEST(PrefixFindNext, StartsAtRoot) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();

  EXPECT_EQ(PrefixFindNext(root.get(), nullptr), root.get());
  EXPECT_EQ(PrefixFindNext(root->GetChild(0), nullptr), root->GetChild(0));
  EXPECT_EQ(PrefixFindNext(nullptr, nullptr), nullptr);
}

TEST(PrefixFindNext, StepsDownThenAcrossThenUp) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  Node const* const first = root->GetChild(0);
  Node const* const second = root->GetChild(1);

  EXPECT_EQ(PrefixFindNext(root.get(), root.get()), first);
  EXPECT_EQ(PrefixFindNext(root.get(), first), first->GetChild(0));
  EXPECT_EQ(PrefixFindNext(root.get(), first->GetChild(0)), first->GetChild(1));
  EXPECT_EQ(PrefixFindNext(root.get(), first->GetChild(1)), second);
  EXPECT_EQ(PrefixFindNext(root.get(), second), nullptr);
}

TEST(PrefixFindNext, NeverLeavesSubtreeOfItsRoot) {
  std::unique_ptr<NodeImp> const root = FirstChildSplit();
  Node const* const first = root->GetChild(0);

  EXPECT_EQ(PrefixFindNext(first, first->GetChild(1)), nullptr);
  EXPECT_EQ(PrefixFindNext(first->GetChild(0), first->GetChild(0)), nullptr);
}

TEST(PrefixFindNext, WalksNodesOfAnyClass) {
  PlainNode third(3, {});
  PlainNode fourth(4, {});
  PlainNode first(1, {&third, &fourth});
  PlainNode second(2, {});
  PlainNode const root(0, {&first, &second});

  EXPECT_THAT(IdsFrom(&root), ElementsAre(0, 1, 3, 4, 2));
  EXPECT_THAT(IdsFrom(&first), ElementsAre(1, 3, 4));
}

TEST(PrefixFindNext, TellsNodesApartByIdentity) {
  PlainNode a(1, {});
  PlainNode b(1, {});
  PlainNode c(1, {});
  PlainNode const root(1, {&a, &b, &c});

  EXPECT_EQ(PrefixFindNext(&root, &a), &b);
  EXPECT_EQ(PrefixFindNext(&root, &b), &c);
  EXPECT_EQ(PrefixFindNext(&root, &c), nullptr);
}

}  // namespace
}  // namespace tree
