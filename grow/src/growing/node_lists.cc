#include "growing/node_lists.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tree::grow {
namespace {

std::uint32_t IndexOf(std::uint32_t index) { return index; }

template <class Item>
std::uint32_t IndexOf(Item const& item) {
  return item.index;
}

template <class Item>
std::span<Item const> Part(std::vector<Item> const& list, NodeLists::Range range) {
  return {list.data() + range.begin, range.Size()};
}

/// Puts the items of a range in order of their children, and within one leaves them in theirs.
/// Gives the part of each child.
template <class Item>
std::vector<NodeLists::Range> DivideList(std::vector<Item>& list, NodeLists::Range range,
                                         std::vector<int> const& childOf, int numChildren) {
  // One more part, the last, for cases that go nowhere.
  auto const partOf = [&](Item const& item) {
    int const child = childOf[IndexOf(item)];
    return static_cast<std::size_t>(child == NodeLists::kNowhere ? numChildren : child);
  };
  std::vector<NodeLists::Range> parts(static_cast<std::size_t>(numChildren) + 1);
  std::vector<Item> const items(list.begin() + static_cast<std::ptrdiff_t>(range.begin),
                                list.begin() + static_cast<std::ptrdiff_t>(range.end));
  for (Item const& item : items) ++parts[partOf(item)].end;
  std::size_t place = range.begin;
  for (NodeLists::Range& part : parts) {
    std::size_t const size = part.end;
    part = {place, place};
    place += size;
  }
  for (Item const& item : items) list[parts[partOf(item)].end++] = item;
  parts.pop_back();
  return parts;
}

}  // namespace

NodeLists::NodeLists(std::size_t numCases) : all_(numCases) {
  std::iota(all_.begin(), all_.end(), std::uint32_t{0});
}

std::size_t NodeLists::AddOrdered(std::vector<RankedCase> cases) {
  predictors_.push_back({std::move(cases), {}});
  return predictors_.size() - 1;
}

std::size_t NodeLists::AddNominal(std::vector<CodedCase> cases) {
  predictors_.push_back({{}, std::move(cases)});
  return predictors_.size() - 1;
}

NodeLists::Node NodeLists::MakeRoot() const {
  Node root{{0, all_.size()}, {}};
  for (List const& list : predictors_) {
    root.byPredictor.push_back({0, std::max(list.ordered.size(), list.nominal.size())});
  }
  return root;
}

std::span<std::uint32_t const> NodeLists::Cases(Node const& node) const {
  return Part(all_, node.all);
}

std::span<RankedCase const> NodeLists::Ordered(Node const& node, std::size_t predictor) const {
  return Part(predictors_[predictor].ordered, node.byPredictor[predictor]);
}

std::span<CodedCase const> NodeLists::Nominal(Node const& node, std::size_t predictor) const {
  return Part(predictors_[predictor].nominal, node.byPredictor[predictor]);
}

std::vector<NodeLists::Node> NodeLists::Divide(Node const& node, std::vector<int> const& childOf,
                                               int numChildren) {
  std::vector<Node> children(static_cast<std::size_t>(numChildren));
  std::vector<Range> parts = DivideList(all_, node.all, childOf, numChildren);
  for (std::size_t child = 0; child < children.size(); ++child) children[child].all = parts[child];
  for (std::size_t predictor = 0; predictor < predictors_.size(); ++predictor) {
    List& list = predictors_[predictor];
    Range const range = node.byPredictor[predictor];
    parts = list.nominal.empty() ? DivideList(list.ordered, range, childOf, numChildren)
                                 : DivideList(list.nominal, range, childOf, numChildren);
    for (std::size_t child = 0; child < children.size(); ++child) {
      children[child].byPredictor.push_back(parts[child]);
    }
  }
  return children;
}

}  // namespace tree::grow
