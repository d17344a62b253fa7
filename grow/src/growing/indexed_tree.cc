#include "growing/indexed_tree.h"

#include <algorithm>
#include <numeric>

namespace tree::grow {

IndexedTree::IndexedTree(NodeImp const& root) {
  struct Visit {
    NodeImp const* node;
    std::size_t parent;
    std::size_t slot;  // in children_
  };
  std::vector<Visit> stack{{&root, 0, 0}};
  children_.push_back(0);  // the root's slot, which nobody reads
  while (!stack.empty()) {
    Visit const visit = stack.back();
    stack.pop_back();
    std::size_t const position = nodes_.size();
    nodes_.push_back(visit.node);
    parents_.push_back(visit.parent);
    children_[visit.slot] = position;
    firstChild_.push_back(children_.size());
    auto const numChildren = static_cast<std::size_t>(visit.node->GetNumChildren());
    children_.resize(children_.size() + numChildren);
    for (std::size_t child = numChildren; child-- > 0;) {
      stack.push_back({visit.node->GetChildImp(static_cast<unsigned int>(child)), position,
                       firstChild_.back() + child});
    }
  }
  ends_.resize(nodes_.size());
  for (std::size_t position = nodes_.size(); position-- > 0;) {
    ends_[position] = std::max(ends_[position], position + 1);
    if (position > 0)
      ends_[parents_[position]] = std::max(ends_[parents_[position]], ends_[position]);
  }
}

std::size_t IndexedTree::Route(double const* values) const {
  std::size_t position = 0;
  while (!IsTerminal(position)) {
    int const child = nodes_[position]->Classify(values);
    if (child < 0 || child >= nodes_[position]->GetNumChildren()) break;
    position = ChildOf(position, static_cast<std::size_t>(child));
  }
  return position;
}

RoutedCases::RoutedCases(IndexedTree const& tree, TrainingData const& data,
                         std::vector<std::uint32_t> cases, Workers& workers)
    : tree_(tree) {
  constexpr std::size_t kCasesPerTask = 8192;
  std::vector<std::uint32_t> ends(cases.size());
  workers.Run((cases.size() + kCasesPerTask - 1) / kCasesPerTask, [&](std::size_t task) {
    std::vector<double> values(data.GetPredictorColumns().size());
    std::size_t const end = std::min(cases.size(), (task + 1) * kCasesPerTask);
    for (std::size_t place = task * kCasesPerTask; place < end; ++place) {
      data.CopyValues(cases[place], values.data());
      ends[place] = static_cast<std::uint32_t>(tree.Route(values.data()));
    }
  });
  begins_.assign(tree.GetNumNodes() + 1, 0);
  ForSlices(ends.size(), workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t place = first; place < last; ++place) ++begins_[ends[place] + 1];
  });
  std::partial_sum(begins_.begin(), begins_.end(), begins_.begin());
  std::vector<std::size_t> next(begins_);
  cases_.resize(cases.size());
  ForSlices(cases.size(), workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t place = first; place < last; ++place) {
      cases_[next[ends[place]]++] = cases[place];
    }
  });
}

std::vector<std::uint32_t> AllCases(TrainingData const& data) {
  std::vector<std::uint32_t> cases(data.GetNumCases());
  std::iota(cases.begin(), cases.end(), 0U);
  return cases;
}

}  // namespace tree::grow
