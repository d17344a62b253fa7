#include "tree/assertions.h"
#include "tree/nodes.h"

template class MCTree::AIterator<tree::Node>;

namespace tree {

NodeIterator::~NodeIterator() = default;

Node const* PrefixFindNext(Node const* root, Node const* current) {
  if (current == nullptr) return root;
  if (current->GetNumChildren() >= 1) return current->GetChild(0);
  for (Node const* node = current; node != root; node = node->GetParent()) {
    Node const* const parent = node->GetParent();
    internal::Require(parent != nullptr, "PrefixFindNext",
                      "the current node does not belong to the subtree of the root");
    unsigned int position = 0;
    while (parent->GetChild(position) != node) ++position;
    if (static_cast<int>(position) != parent->GetNumChildren() - 1) {
      return parent->GetChild(position + 1);
    }
  }
  return nullptr;
}

PrefixNodeIterator::PrefixNodeIterator(Node const* root) : root_(root) {}

PrefixNodeIterator::PrefixNodeIterator(PrefixNodeIterator const& other) = default;

PrefixNodeIterator& PrefixNodeIterator::operator=(PrefixNodeIterator const& other) = default;

PrefixNodeIterator::~PrefixNodeIterator() = default;

int PrefixNodeIterator::HasMore() const {
  // Deliberate: 1 means that there is no more.
  return PrefixFindNext(root_, current_) == nullptr ? 1 : 0;
}

Node const* PrefixNodeIterator::Next() {
  Node const* const next = PrefixFindNext(root_, current_);
  if (next != nullptr) current_ = next;
  return next;
}

int PrefixNodeIterator::GetFailReason() const { return current_ == nullptr ? 1 : 0; }

}  // namespace tree
