#include "property/models/tree_model.h"

#include <algorithm>
#include <utility>

#include "property/models/agree.h"
#include "tree/support.h"

namespace tree::testing {

namespace {

using Rules = std::vector<std::unique_ptr<RuleModel>>;

Rules CloneRules(Rules const& rules) {
  Rules clones;
  for (std::unique_ptr<RuleModel> const& rule : rules) {
    clones.push_back(rule == nullptr ? nullptr : rule->Clone());
  }
  return clones;
}

void CollectPairs(NodeImp* node, NodeModel* model, std::vector<NodePair>& pairs) {
  pairs.push_back({node, model});
  Agree("GetNumChildren", node->GetNumChildren(), static_cast<int>(model->children.size()));
  for (std::size_t position = 0; position < model->children.size(); ++position) {
    CollectPairs(node->GetChildImp(static_cast<unsigned int>(position)),
                 model->children[position].get(), pairs);
  }
}

void CheckRules(NodeImp const& node, NodeModel const& model, Choices& choices) {
  Agree("GetNumCompetitors", node.GetNumCompetitors(), static_cast<int>(model.competitors.size()));
  Agree("GetNumSurrogates", node.GetNumSurrogates(), static_cast<int>(model.surrogates.size()));
  for (unsigned int position = 0; position < model.competitors.size(); ++position) {
    std::unique_ptr<SplitRule> const handle(node.GetCompetitor(position));
    Check(*static_cast<SplitRuleImp const*>(*handle), *model.competitors[position], choices);
  }
  for (unsigned int position = 0; position < model.surrogates.size(); ++position) {
    Check(*node.GetSurrogateImp(position), *model.surrogates[position], choices);
  }
  bool const hasPrimary = !model.competitors.empty();
  Agree("GetBiggestChildPos", node.GetBiggestChildPos(),
        hasPrimary ? model.competitors.front()->dumbChild : -1);
  for (int predictor = 0; predictor < kNumPredictors; ++predictor) {
    int first = 0;
    while (first < node.GetNumCompetitors() &&
           model.competitors[static_cast<std::size_t>(first)]->predictor != predictor) {
      ++first;
    }
    Agree("FindCompetitorPos", node.FindCompetitorPos(predictor),
          first == node.GetNumCompetitors() ? -1 : first);
  }
}

void CheckStatistics(NodeImp const& node, NodeModel const& model) {
  for (int slot : {0, 1}) {
    auto const sample = static_cast<DataSample>(slot);
    auto const index = static_cast<std::size_t>(slot);
    Agree("GetClsInfo", node.GetClsInfo(sample) != nullptr, model.classes[index].has_value());
    Agree("GetRegInfo", node.GetRegInfo(sample) != nullptr, model.regression[index].has_value());
    if (model.classes[index]) Check(*node.GetClsInfoImp(sample), *model.classes[index]);
    if (model.regression[index]) Check(*node.GetRegInfoImp(sample), *model.regression[index]);
    Agree("GetNodeSize", node.GetNodeSize(sample), model.NodeSize(slot));
    Agree("GetPercentageNodeSize", node.GetPercentageNodeSize(sample), model.PercentageSize(slot));
  }
  if (model.isClassification && model.classes[0]) {
    Agree("GetAssignment", node.GetAssignment(), static_cast<double>(model.classes[0]->prediction));
  } else if (!model.isClassification && model.regression[0]) {
    Agree("GetAssignment", node.GetAssignment(), model.regression[0]->Prediction());
  }
}

void CheckPredictors(NodeImp const& node, NodeModel const& model) {
  int const count = static_cast<int>(model.predictors.size());
  Agree("GetNumPredictors", node.GetNumPredictors(), count);
  for (int index = -1; index <= count; ++index) {
    PredictorModel expected{4711.0, 4711.0, {}, true};
    bool const known = index >= 0 && index < count;
    if (known) expected = model.predictors[static_cast<std::size_t>(index)];
    double minimum = 4711.0;
    double maximum = 4711.0;
    int numValues = 0;
    bool hasMissing = true;
    Agree("GetPredictorRange", node.GetPredictorRange(index, &minimum, &maximum), known);
    Agree("GetNumPredictorValues", node.GetNumPredictorValues(index, &numValues), known);
    Agree("GetPredictorMissingValueFlag", node.GetPredictorMissingValueFlag(index, &hasMissing),
          known);
    std::vector<double> values(static_cast<std::size_t>(numValues));
    Agree("GetPredictorValues", node.GetPredictorValues(index, values.data(), numValues), known);
    Agree("minimum", minimum, expected.minimum);
    Agree("maximum", maximum, expected.maximum);
    Agree("missing flag", hasMissing, expected.hasMissing);
    Agree("number of values", values.size(), expected.values.size());
    for (std::size_t value = 0; value < values.size(); ++value) {
      Agree("predictor value", values[value], expected.values[value]);
    }
  }
}

void CheckTraversal(NodePair from, std::vector<NodePair> const& all) {
  std::vector<NodeModel*> expected;
  from.model->Collect(expected);
  PrefixNodeIterator iterator(from.node);
  Agree("GetFailReason", iterator.GetFailReason(), 1);
  for (NodeModel const* model : expected) {
    auto const place = std::find_if(all.begin(), all.end(),
                                    [=](NodePair const& pair) { return pair.model == model; });
    Agree("HasMore", iterator.HasMore(), 0);
    Agree("Next", iterator.Next(), static_cast<Node const*>(place->node));
    Agree("GetFailReason", iterator.GetFailReason(), 0);
  }
  Agree("HasMore", iterator.HasMore(), 1);
  Agree("Next", iterator.Next(), nullptr);
}

NodePair Choose(std::vector<NodePair> const& nodes, Choices& choices) {
  return nodes[static_cast<std::size_t>(choices.Below(static_cast<int>(nodes.size())))];
}

}  // namespace

std::unique_ptr<NodeModel> NodeModel::Clone() const {
  auto clone = std::make_unique<NodeModel>();
  for (std::unique_ptr<NodeModel> const& child : children) {
    clone->children.push_back(child->Clone());
    clone->children.back()->parent = clone.get();
  }
  clone->competitors = CloneRules(competitors);
  clone->surrogates = CloneRules(surrogates);
  clone->id = id;
  clone->isClassification = isClassification;
  for (std::size_t slot : {0U, 1U}) {
    if (isClassification) {
      clone->classes[slot] = classes[slot];
    } else if (regression[slot]) {
      clone->regression[slot] = regression[slot]->Copy();
    }
  }
  clone->predictors = predictors;
  return clone;
}

void NodeModel::AssignFrom(NodeModel const& other) {
  if (this == &other) return;
  std::unique_ptr<NodeModel> const copy = other.Clone();
  NodeModel* const keptParent = parent;
  *this = std::move(*copy);
  parent = keptParent;
  for (std::unique_ptr<NodeModel> const& child : children) child->parent = this;
}

void NodeModel::Collect(std::vector<NodeModel*>& nodes) {
  nodes.push_back(this);
  for (std::unique_ptr<NodeModel> const& child : children) child->Collect(nodes);
}

int NodeModel::Size() const {
  int size = 1;
  for (std::unique_ptr<NodeModel> const& child : children) size += child->Size();
  return size;
}

double NodeModel::NodeSize(int slot) const {
  auto const index = static_cast<std::size_t>(slot);
  if (isClassification) return classes[index] ? classes[index]->Count() : 0.0;
  return regression[index] ? regression[index]->count : 0.0;
}

double NodeModel::PercentageSize(int slot) const {
  auto const index = static_cast<std::size_t>(slot);
  if (isClassification) return classes[index] ? classes[index]->percent : 0.0;
  NodeModel const* root = this;
  while (root->parent != nullptr) root = root->parent;
  double const rootSize = root->NodeSize(slot);
  return rootSize > 0.0 ? NodeSize(slot) / rootSize : rootSize;
}

int NodeModel::Classify(std::vector<double> const& values) const {
  if (children.empty()) return -1;
  auto const ask = [&values](RuleModel const& rule) {
    return rule.Classify(values[static_cast<std::size_t>(rule.predictor)]);
  };
  int position = ask(*competitors.front());
  for (std::unique_ptr<RuleModel> const& surrogate : surrogates) {
    if (position < 0) position = ask(*surrogate);
  }
  return position < 0 ? competitors.front()->dumbChild : position;
}

NodeModel const* NodeModel::Drop(std::vector<double> const& values, NodeModel const* stop) const {
  if (this == stop) return this;
  int const position = Classify(values);
  if (position >= 0) return children.at(static_cast<std::size_t>(position))->Drop(values, stop);
  return stop == nullptr ? this : nullptr;
}

TreePair::TreePair() : root(std::make_unique<NodeImp>()), model(std::make_unique<NodeModel>()) {}

std::vector<NodePair> TreePair::Nodes() const {
  std::vector<NodePair> nodes;
  CollectPairs(root.get(), model.get(), nodes);
  return nodes;
}

std::vector<double> ChooseCase(Choices& choices) {
  std::vector<double> values;
  for (int predictor = 0; predictor < kNumPredictors; ++predictor) {
    values.push_back(choices.Below(8) == 1 ? systemMissingValue() : choices.Value());
  }
  return values;
}

void AddChildren(NodePair place, int numChildren) {
  auto const [node, model] = place;
  node->SetNumChildren(numChildren);
  for (int position = 0; position < numChildren; ++position) {
    node->SetChild(static_cast<unsigned int>(position), new NodeImp);
    model->children.push_back(std::make_unique<NodeModel>());
    model->children.back()->parent = model;
  }
}

void Split(NodePair place, int numChildren, bool withDumbChild, Choices& choices) {
  auto const [node, model] = place;
  node->RemoveChildren(true);
  model->children.clear();
  model->surrogates.clear();

  if (model->competitors.empty()) {
    auto const numCompetitors = static_cast<unsigned int>(1 + choices.Below(2));
    node->SetNumCompetitors(numCompetitors);
    model->competitors.resize(numCompetitors);
  }
  for (unsigned int position = 0; position < model->competitors.size(); ++position) {
    model->competitors[position] = ChooseRule(choices, kNumPredictors, numChildren, withDumbChild);
    node->SetCompetitor(position, model->competitors[position]->Build().release());
  }
  auto const numSurrogates = static_cast<unsigned int>(choices.Below(3));
  node->SetNumSurrogates(numSurrogates);
  for (unsigned int position = 0; position < numSurrogates; ++position) {
    model->surrogates.push_back(ChooseRule(choices, kNumPredictors, numChildren, false));
    node->SetSurrogate(position, model->surrogates.back()->Build().release());
  }
  AddChildren(place, numChildren);
}

NodePair ChooseTerminal(TreePair const& tree, Choices& choices) {
  std::vector<NodePair> terminals = tree.Nodes();
  std::erase_if(terminals, [](NodePair const& pair) { return !pair.model->children.empty(); });
  return Choose(terminals, choices);
}

TreePair ChooseTree(Choices& choices, int maxNodes, bool withDumbChild) {
  TreePair tree;
  do {
    int const numChildren = 1 + choices.Below(4);
    if (tree.model->Size() + numChildren > maxNodes) break;
    Split(ChooseTerminal(tree, choices), numChildren, withDumbChild, choices);
  } while (choices.Below(8) != 0);
  unsigned int id = 0;
  for (NodePair const& pair : tree.Nodes()) {
    pair.model->id = id;
    pair.node->SetId(id);
    ++id;
  }
  return tree;
}

void Check(TreePair const& tree, Choices& choices) {
  Agree("GetParent", tree.root->GetParent(), nullptr);
  std::vector<NodePair> const nodes = tree.Nodes();
  for (NodePair const& pair : nodes) {
    auto const [node, model] = pair;
    Agree("GetId", node->GetId(), model->id);
    Agree("IsClassificationNode", node->IsClassificationNode(), model->isClassification);
    for (unsigned int position = 0; position < model->children.size(); ++position) {
      Node const* const parent = node->GetChild(position)->GetParent();
      Agree("GetParent", parent, static_cast<Node const*>(node));
    }
    Agree("GetChild", node->GetChild(static_cast<unsigned int>(model->children.size())), nullptr);
    CheckRules(*node, *model, choices);
    CheckStatistics(*node, *model);
    CheckPredictors(*node, *model);
  }
  CheckTraversal(nodes.front(), nodes);
  CheckTraversal(Choose(nodes, choices), nodes);
}

void CheckRouting(TreePair const& tree, std::vector<double> const& values, Choices& choices) {
  std::vector<NodePair> const nodes = tree.Nodes();
  auto const agree = [&](NodePair const* stop) {
    NodeImp const* const actual = tree.root->DropObservationThroughTree(
        values.data(), stop == nullptr ? nullptr : stop->node);
    NodeModel const* const end = tree.model->Drop(values, stop == nullptr ? nullptr : stop->model);
    auto const place = std::find_if(nodes.begin(), nodes.end(),
                                    [=](NodePair const& pair) { return pair.model == end; });
    NodeImp const* const expected = place == nodes.end() ? nullptr : place->node;
    Agree("DropObservationThroughTree", actual, expected);
  };
  NodePair const stop = Choose(nodes, choices);
  agree(nullptr);
  agree(&stop);
  Agree("Classify", stop.node->Classify(values.data()), stop.model->Classify(values));
}

}  // namespace tree::testing
