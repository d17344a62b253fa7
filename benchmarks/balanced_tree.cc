#include "balanced_tree.h"

#include <array>
#include <random>

#include "tree/support.h"

namespace tree::bench {

namespace {

struct Range {
  double low = 0.0;
  double high = 1.0;

  double Middle() const { return (low + high) / 2.0; }
};

/// What is left of each predictor's range in a node.
using Cell = std::array<Range, kNumPredictors>;

std::unique_ptr<OSplitRule> MakeRule(Cell const& cell, int predictor) {
  auto rule = std::make_unique<OSplitRule>(systemMissingValue(), predictor);
  rule->SetCutPoint(cell[static_cast<std::size_t>(predictor)].Middle());
  return rule;
}

void Split(NodeImp& node, Cell const& cell, int predictor, MissingValues missing) {
  std::unique_ptr<OSplitRule> primary = MakeRule(cell, predictor);
  primary->SetDumbRule(0, 0.5);
  if (missing == MissingValues::kMapped) primary->AddMissingValueMapping(false);
  node.SetNumCompetitors(1);
  node.SetCompetitor(0, primary.release());
  if (missing == MissingValues::kSurrogates) {
    node.SetNumSurrogates(2);
    for (unsigned int position : {0U, 1U}) {
      int const other = (predictor + 1 + static_cast<int>(position)) % kNumPredictors;
      node.SetSurrogate(position, MakeRule(cell, other).release());
    }
  }
  node.SetNumChildren(2);
  for (unsigned int position : {0U, 1U}) node.SetChild(position, new NodeImp);
}

}  // namespace

std::unique_ptr<NodeImp> MakeBalancedTree(int depth, MissingValues missing) {
  struct Place {
    NodeImp* node;
    Cell cell;
  };
  auto root = std::make_unique<NodeImp>();
  std::vector<Place> level{{root.get(), Cell()}};
  for (int done = 0; done < depth; ++done) {
    int const predictor = done % kNumPredictors;
    auto const index = static_cast<std::size_t>(predictor);
    std::vector<Place> next;
    next.reserve(2 * level.size());
    for (Place const& place : level) {
      Split(*place.node, place.cell, predictor, missing);
      Cell below = place.cell;
      Cell above = place.cell;
      below[index].high = above[index].low = place.cell[index].Middle();
      next.push_back({place.node->GetChildImp(0), below});
      next.push_back({place.node->GetChildImp(1), above});
    }
    level = std::move(next);
  }
  return root;
}

Cases::Cases(std::size_t count, double missingProbability) : values_(count * kNumPredictors) {
  std::mt19937_64 engine(7);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  for (double& value : values_) {
    value = uniform(engine);
    if (uniform(engine) < missingProbability) value = systemMissingValue();
  }
}

FlatTree::FlatTree(int depth) {
  std::vector<Cell> level(1);
  for (int done = 0; done <= depth; ++done) {
    int const predictor = done % kNumPredictors;
    auto const index = static_cast<std::size_t>(predictor);
    std::size_t const firstOfNext = nodes_.size() + level.size();
    std::vector<Cell> next;
    for (std::size_t position = 0; position < level.size(); ++position) {
      Cell const& cell = level[position];
      bool const isTerminal = done == depth;
      std::size_t const left = isTerminal ? 0 : firstOfNext + 2 * position;
      nodes_.push_back({cell[index].Middle(), static_cast<std::uint32_t>(predictor),
                        static_cast<std::uint32_t>(left)});
      if (isTerminal) continue;
      next.push_back(cell);
      next.push_back(cell);
      next[next.size() - 2][index].high = next.back()[index].low = cell[index].Middle();
    }
    level = std::move(next);
  }
}

}  // namespace tree::bench
