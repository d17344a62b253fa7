#include <memory>
#include <utility>
#include <vector>

#include "property/models/agree.h"
#include "property/models/sequences.h"
#include "property/models/tree_model.h"

namespace tree::testing {

namespace {

constexpr int kMaxNodes = 24;

void RemoveOneChild(NodePair place, int position, Choices& choices) {
  auto const [node, model] = place;
  int const numChildren = node->GetNumChildren();
  node->RemoveChild(position);
  if (position < 0 || position >= numChildren) return;
  model->children.erase(model->children.begin() + position);
  if (model->children.empty()) return;
  // The rules are the builder's business: here they get new ones that know the children left.
  for (unsigned int rule = 0; rule < model->competitors.size(); ++rule) {
    model->competitors[rule] = ChooseRule(choices, kNumPredictors, numChildren - 1, false);
    node->SetCompetitor(rule, model->competitors[rule]->Build().release());
  }
  for (unsigned int rule = 0; rule < model->surrogates.size(); ++rule) {
    model->surrogates[rule] = ChooseRule(choices, kNumPredictors, numChildren - 1, false);
    node->SetSurrogate(rule, model->surrogates[rule]->Build().release());
  }
}

void Reorder(NodePair place, std::vector<int> const& order) {
  auto const [node, model] = place;
  node->ReorderSiblings(order);
  model->competitors.front()->Reorder(order);
  for (std::unique_ptr<RuleModel> const& rule : model->surrogates) rule->Reorder(order);
  std::vector<std::unique_ptr<NodeModel>> reordered(model->children.size());
  for (std::size_t old = 0; old < order.size(); ++old) {
    reordered[static_cast<std::size_t>(order[old])] = std::move(model->children[old]);
  }
  model->children = std::move(reordered);
}

void ReplaceChild(NodePair place, unsigned int position) {
  auto const [node, model] = place;
  // The old child is the caller's again.
  std::unique_ptr<NodeImp> const old(node->GetChildImp(position));
  node->SetChild(position, new NodeImp);
  model->children[position] = std::make_unique<NodeModel>();
  model->children[position]->parent = model;
}

void ReplaceStatistics(NodePair place, bool isClassification, bool isNull, int slot) {
  auto const [node, model] = place;
  auto const index = static_cast<std::size_t>(slot);
  // Every sample but the training sample means the second slot.
  auto const sample = static_cast<DataSample>(slot == 0 ? 0 : 5);
  if (isClassification) {
    node->SetClsInfo(isNull ? nullptr : new ClsInfoImp, sample);
    model->regression = {};
    model->classes[index] = isNull ? std::nullopt : std::optional(ClassModel());
  } else {
    node->SetRegInfo(isNull ? nullptr : new RegInfoImp, sample);
    model->classes = {};
    model->regression[index] = isNull ? std::nullopt : std::optional(RegressionModel());
  }
  model->isClassification = isClassification;
}

void ChangeStatistics(NodePair place, Choices& choices) {
  auto const [node, model] = place;
  for (int slot : {0, 1}) {
    auto const index = static_cast<std::size_t>(slot);
    auto const sample = static_cast<DataSample>(slot);
    if (model->classes[index]) {
      Change(*node->GetClsInfoImp(sample), *model->classes[index], choices);
    }
    if (model->regression[index]) {
      Change(*node->GetRegInfoImp(sample), *model->regression[index], choices);
    }
  }
}

void ChangePredictors(NodePair place, Choices& choices) {
  auto const [node, model] = place;
  int const count = static_cast<int>(model->predictors.size());
  int const operation = choices.Below(5);
  int const index = choices.Below(count);
  if (operation == 0 || count == 0) {
    int const newCount = choices.Below(4);
    node->SetNumPredictors(static_cast<unsigned int>(newCount));
    model->predictors.resize(static_cast<std::size_t>(newCount));
    return;
  }
  PredictorModel& predictor = model->predictors[static_cast<std::size_t>(index)];
  if (operation == 1) {
    predictor.minimum = choices.Value();
    predictor.maximum = choices.Value();
    node->SetPredictorRange(index, predictor.minimum, predictor.maximum);
  } else if (operation == 2) {
    int const numValues = choices.Below(5);
    node->SetNumPredictorValues(index, numValues);
    predictor.values.resize(static_cast<std::size_t>(numValues));
  } else if (operation == 3) {
    predictor.values = {choices.Value(), choices.Value()};
    node->SetPredictorValues(index, predictor.values.data(), 2);
  } else {
    predictor.hasMissing = choices.Flag();
    node->SetPredictorMissingValueFlag(index, predictor.hasMissing);
  }
}

void Clean(NodePair place) {
  auto const [node, model] = place;
  node->Clean();
  model->children.clear();
  model->competitors.clear();
  model->surrogates.clear();
  model->classes = {};
  model->regression = {};
}

}  // namespace

void RunTree(Choices choices) {
  TreePair tree = ChooseTree(choices, kMaxNodes / 2, choices.Flag());

  while (choices.Any()) {
    std::vector<NodePair> const nodes = tree.Nodes();
    auto const choose = [&] {
      return nodes[static_cast<std::size_t>(choices.Below(static_cast<int>(nodes.size())))];
    };
    int const operation = choices.Below(16);
    NodePair const place = choose();
    auto const [node, model] = place;
    int const numChildren = node->GetNumChildren();
    switch (operation) {
      case 0:
      case 1: {
        int const count = 1 + choices.Below(4);
        if (tree.model->Size() + count <= kMaxNodes) Split(place, count, false, choices);
        break;
      }
      case 2:
        Agree("RemoveChildren", node->RemoveChildren(choices.Flag()), true);
        model->children.clear();
        model->surrogates.clear();
        break;
      case 3:
        RemoveOneChild(place, choices.Below(numChildren + 2) - 1, choices);
        break;
      case 4:
        if (numChildren > 0) Reorder(place, choices.Permutation(numChildren));
        break;
      case 5: {
        // The clone takes the tree's place.
        tree.root.reset(tree.root->Clone());
        tree.model = tree.model->Clone();
        break;
      }
      case 6: {
        NodePair const from = choose();
        if (tree.model->Size() + from.model->Size() > kMaxNodes) break;
        *node = *from.node;
        model->AssignFrom(*from.model);
        break;
      }
      case 7:
        for (int left = 1 + choices.Below(3); left > 0; --left) {
          bool const isClassification = choices.Flag();
          bool const isNull = choices.Below(4) == 1;
          ReplaceStatistics(place, isClassification, isNull, choices.Below(2));
        }
        break;
      case 8:
        ChangeStatistics(place, choices);
        break;
      case 9:
        ChangePredictors(place, choices);
        break;
      case 10:
        Clean(place);
        break;
      case 11:
        if (numChildren > 0) {
          ReplaceChild(place, static_cast<unsigned int>(choices.Below(numChildren)));
        }
        break;
      case 12: {
        auto const id = static_cast<unsigned int>(choices.Below(256));
        node->SetId(id);
        model->id = id;
        break;
      }
      case 13: {
        bool const isClassification = choices.Flag();
        node->SetClassificationNode(isClassification);
        model->isClassification = isClassification;
        break;
      }
      default:
        CheckRouting(tree, ChooseCase(choices), choices);
        break;
    }
    Check(tree, choices);
    CheckRouting(tree, ChooseCase(choices), choices);
  }
}

}  // namespace tree::testing
