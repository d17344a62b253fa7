#include "penguins/penguin_tree.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <utility>

#include "tree/split_rules.h"
#include "tree/support.h"
#include "tree/values.h"

namespace penguins {
namespace {

using tree::NodeImp;
using tree::SplitRuleImp;
using Rule = std::unique_ptr<SplitRuleImp>;

// --- the rules ---

/// Child 0 up to the cut point, child 1 above.
std::unique_ptr<tree::OSplitRule> AtMost(Predictor predictor, double cutPoint) {
  auto rule = std::make_unique<tree::OSplitRule>(systemMissingValue(), predictor);
  rule->SetCutPoint(cutPoint);
  return rule;
}

/// Child 0 above the cut point, child 1 up to it.
std::unique_ptr<tree::OSplitRule> Above(Predictor predictor, double cutPoint) {
  auto rule = AtMost(predictor, cutPoint);
  rule->SetReverse();
  return rule;
}

/// A child for each group of islands.
Rule ByIsland(std::initializer_list<std::initializer_list<Island>> groups) {
  auto rule = std::make_unique<tree::NSplitRule>(kIsland, static_cast<int>(kIslands.size()));
  for (auto const& group : groups) {
    tree::NValueSet islands;
    for (Island const island : group) islands.Add(island);
    rule->AddMappedValues(islands);
  }
  return rule;
}

std::unique_ptr<NodeImp> Leaf(unsigned int id) {
  auto node = std::make_unique<NodeImp>();
  node->SetId(id);
  return node;
}

template <class... Surrogates>
void SetSurrogates(NodeImp& node, Surrogates... surrogates) {
  node.SetNumSurrogates(sizeof...(surrogates));
  unsigned int position = 0;
  (node.SetSurrogate(position++, surrogates.release()), ...);
}

std::unique_ptr<NodeImp> Split(unsigned int id, Rule rule, std::unique_ptr<NodeImp> first,
                               std::unique_ptr<NodeImp> second) {
  auto node = Leaf(id);
  node->SetNumCompetitors(1);
  node->SetCompetitor(0, rule.release());
  node->SetNumChildren(2);
  node->SetChild(0, first.release());
  node->SetChild(1, second.release());
  return node;
}

// --- the numbers ---

using Cases = std::vector<Penguin const*>;

std::size_t Position(int position) { return static_cast<std::size_t>(position); }

double Share(std::size_t part, std::size_t whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

int PositionOfBiggest(std::vector<std::size_t> const& counts) {
  return static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

/// The most frequent class is predicted, the first one of several; in a node without cases, what
/// its parent predicts.
void SetClassDistribution(NodeImp& node, Cases const& cases, std::size_t rootSize) {
  std::vector<std::size_t> counts(kSpecies.size());
  for (Penguin const* penguin : cases) ++counts[Position(penguin->species)];

  auto info = std::make_unique<tree::ClsInfoImp>();
  info->SetNumClasses(static_cast<int>(counts.size()));
  for (std::size_t species = 0; species < counts.size(); ++species) {
    info->SetClassCount(static_cast<int>(species), static_cast<double>(counts[species]));
    info->SetClassProbability(static_cast<int>(species), Share(counts[species], cases.size()));
  }
  info->SetUnweightedCount(static_cast<double>(cases.size()));
  info->SetPercentSize(100.0 * Share(cases.size(), rootSize));
  info->SetPrediction(cases.empty() && node.GetParent() != nullptr
                          ? static_cast<int>(node.GetParent()->GetAssignment())
                          : PositionOfBiggest(counts));
  node.SetClsInfo(info.release(), tree::TrainingSample);
}

/// The islands that occur are listed; of the measurements, the range is enough. By
/// convention of this program, a range without values goes from missing to missing.
void SummarisePredictors(NodeImp& node, Cases const& cases) {
  node.SetNumPredictors(kPredictors.size());
  for (int predictor = 0; predictor < node.GetNumPredictors(); ++predictor) {
    std::vector<double> values;
    for (Penguin const* penguin : cases) {
      double const value = penguin->values[Position(predictor)];
      if (!IsMissing(value)) values.push_back(value);
    }
    node.SetPredictorMissingValueFlag(predictor, values.size() < cases.size());
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    node.SetPredictorRange(predictor, values.empty() ? systemMissingValue() : values.front(),
                           values.empty() ? systemMissingValue() : values.back());
    if (predictor == kIsland) {
      node.SetPredictorValues(predictor, values.data(), static_cast<int>(values.size()));
    }
  }
}

int ChildByRule(SplitRuleImp const& rule, Penguin const& penguin) {
  return rule.Classify(penguin.values[Position(rule.GetPredictorIndex())]);
}

void SetAgreement(NodeImp const& node, SplitRuleImp& surrogate, Cases const& cases) {
  SplitRuleImp const& primary = *node.GetCompetitorImp(0);
  int bothPlaced = 0;
  int agreed = 0;
  for (Penguin const* penguin : cases) {
    int const expected = ChildByRule(primary, *penguin);
    int const actual = ChildByRule(surrogate, *penguin);
    if (expected >= 0 && actual >= 0) ++bothPlaced;
    if (expected >= 0 && actual == expected) ++agreed;
  }
  surrogate.SetStatistic(kBothPlaced, bothPlaced);
  surrogate.SetStatistic(kAgreed, agreed);
}

/// The biggest child is the one to which the rules send most cases.
void SetDumbRule(NodeImp& node, Cases const& cases) {
  std::vector<std::size_t> counts(Position(node.GetNumChildren()));
  std::size_t placed = 0;
  for (Penguin const* penguin : cases) {
    int const child = node.Classify(penguin->values.data());
    if (child < 0) continue;
    ++counts[Position(child)];
    ++placed;
  }
  int const biggest = PositionOfBiggest(counts);
  node.GetCompetitorImp(0)->SetDumbRule(biggest, Share(counts[Position(biggest)], placed));
}

/// Counts a node, then sends its cases on. A node's dumb rule is known before any case needs it.
void CountNode(NodeImp& node, Cases const& cases, std::size_t rootSize) {
  SetClassDistribution(node, cases, rootSize);
  SummarisePredictors(node, cases);
  if (node.GetNumChildren() == 0) return;

  for (int position = 0; position < node.GetNumSurrogates(); ++position) {
    SetAgreement(node, *node.GetSurrogateImp(static_cast<unsigned int>(position)), cases);
  }
  SetDumbRule(node, cases);

  std::vector<Cases> casesOfChild(Position(node.GetNumChildren()));
  for (Penguin const* penguin : cases) {
    casesOfChild[Position(node.Classify(penguin->values.data()))].push_back(penguin);
  }
  NodeImp* child = nullptr;
  for (int position = 0; node.Child(position, &child); ++position) {
    CountNode(*child, casesOfChild[Position(position)], rootSize);
  }
}

}  // namespace

// Of all rules with two children, each primary rule leaves the least Gini impurity in its node.
std::unique_ptr<NodeImp> BuildRules() {
  // Chinstraps have long bills and live on Dream.
  auto longBills =
      Split(3, ByIsland({{kDream}, {kBiscoe, kTorgersen}}), /*Chinstrap*/ Leaf(4), Leaf(5));
  auto shortFlippers =
      Split(1, AtMost(kBillLength, 43.35), /*Adelie*/ Leaf(2), std::move(longBills));
  SetSurrogates(*shortFlippers, AtMost(kFlipperLength, 199.5));

  // Gentoos have flat bills; an unknown bill among long flippers is taken for a Gentoo's too.
  auto flatBills = Above(kBillDepth, 17.65);
  flatBills->AddMissingValueMapping(false);
  auto longFlippers = Split(6, std::move(flatBills), Leaf(7), /*Gentoo*/ Leaf(8));

  auto root =
      Split(0, AtMost(kFlipperLength, 206.5), std::move(shortFlippers), std::move(longFlippers));
  // In the order in which they agree with the flippers.
  SetSurrogates(*root, Above(kBillDepth, 16.45), AtMost(kBodyMass, 4525.0),
                ByIsland({{kDream, kTorgersen}, {kBiscoe}}));
  return root;
}

void CountCases(NodeImp& root, std::vector<Penguin> const& penguins) {
  Cases cases;
  for (Penguin const& penguin : penguins) cases.push_back(&penguin);
  CountNode(root, cases, cases.size());
}

}  // namespace penguins
