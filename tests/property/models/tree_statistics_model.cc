#include <algorithm>
#include <array>
#include <cstdio>
#include <ios>
#include <memory>
#include <sstream>
#include <utility>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/results_models.h"
#include "property/models/sequences.h"
#include "testing/fake_algorithm.h"
#include "tree/support.h"

namespace tree::testing {

namespace {

constexpr int kMaxSplits = 6;
constexpr int kMaxChildren = 3;
constexpr int kMaxClasses = 5;

constexpr TreeStatisticsModel::Format kFormats[] = {{false, 6}, {false, 17}, {true, 2}};

/// A count; sums of some of them depend on the order.
double ChooseCount(Choices& choices) {
  return choices.Flag() ? choices.Value() : (choices.Flag() ? 1.0 : 0x1p53);
}

/// Mostly of `numClasses` classes, of which the prediction mostly is one.
ClassModel ChooseDistribution(int numClasses, Choices& choices) {
  ClassModel model;
  auto const count = choices.Below(6) == 1 ? choices.Below(kMaxClasses) : numClasses;
  for (int left = count; left > 0; --left) model.counts.push_back(ChooseCount(choices));
  model.probabilities.resize(model.counts.size());
  model.prediction = choices.Below(6) == 1 ? choices.Integer() : choices.Below(count);
  return model;
}

void Put(NodePair place, ClassModel const& distribution, std::size_t slot) {
  auto info = std::make_unique<ClsInfoImp>();
  info->SetNumClasses(static_cast<int>(distribution.counts.size()));
  for (std::size_t index = 0; index < distribution.counts.size(); ++index) {
    info->SetClassCount(static_cast<int>(index), distribution.counts[index]);
  }
  info->SetPrediction(distribution.prediction);
  place.node->SetClsInfo(info.release(), static_cast<DataSample>(slot));
  place.model->classes[slot] = distribution;
}

/// A tree most of whose nodes have a class distribution for both samples.
TreePair ChooseCountedTree(Choices& choices) {
  TreePair tree;
  for (int left = choices.Below(kMaxSplits); left > 0; --left) {
    AddChildren(ChooseTerminal(tree, choices), 1 + choices.Below(kMaxChildren));
  }
  int const numClasses = choices.Below(kMaxClasses);
  for (NodePair const& place : tree.Nodes()) {
    for (std::size_t slot : {0U, 1U}) {
      if (choices.Below(8) != 1) Put(place, ChooseDistribution(numClasses, choices), slot);
    }
  }
  return tree;
}

void AddSubtree(TreeStatisticsImp& statistics, TreeStatisticsModel& model, Choices& choices) {
  TreePair const tree = ChooseCountedTree(choices);
  std::vector<NodePair> const nodes = tree.Nodes();
  NodePair const start =
      nodes[static_cast<std::size_t>(choices.Below(static_cast<int>(nodes.size())))];
  // Every sample but the training sample means the second slot.
  int const sample = choices.Flag() ? 0 : choices.Integer();
  statistics.AddMisclassificationInfo(start.node, static_cast<DataSample>(sample));
  statistics.AddMisclassificationInfo(nullptr, static_cast<DataSample>(sample));
  model.Add(*start.model, sample == TrainingSample ? 0 : 1);
}

void TakeOverTree(TreeStatisticsImp& statistics, TreeStatisticsModel& model, Choices& choices) {
  TreePair tree = ChooseCountedTree(choices);
  bool const isNew = choices.Flag();
  bool const isClassification = choices.Below(4) != 1;
  bool const hasTree = choices.Below(8) != 1;
  int const validation = choices.Flag() ? choices.Below(3) : choices.Integer();
  if (isNew) model = TreeStatisticsModel();
  model.risk = choices.Value();
  model.stdError = choices.Value();
  model.Initialize(hasTree ? tree.model.get() : nullptr, isClassification, validation);

  FakeAlgorithm const algorithm(isClassification, hasTree ? std::move(tree.root) : nullptr);
  auto const type = static_cast<ValidationType>(validation);
  if (isNew) {
    statistics = TreeStatisticsImp(algorithm, model.risk, model.stdError, type);
  } else {
    statistics.Initialize(algorithm, model.risk, model.stdError, type);
  }
}

std::string Written(double value, TreeStatisticsModel::Format format) {
  std::array<char, 512> text{};
  std::snprintf(text.data(), text.size(), format.isFixed ? "%.*f" : "%.*g", format.precision,
                value);
  return text.data();
}

/// `Statistics`: the object or a handle of it.
template <class Statistics>
void CheckReading(Statistics const& statistics, TreeStatisticsModel const& model) {
  Agree("GetRisk", statistics.GetRisk(), model.risk);
  Agree("GetStdError", statistics.GetStdError(), model.stdError);
  Agree("IsCls", statistics.IsCls(), model.isCls);
  Agree("GetNumClasses", statistics.GetNumClasses(), model.numClasses);
  // Without a matrix, any cell may be asked for.
  std::size_t const size = std::max<std::size_t>(model.matrix.size(), model.matrix.empty() ? 2 : 0);
  for (std::size_t predicted = 0; predicted < size; ++predicted) {
    for (std::size_t observed = 0; observed < size; ++observed) {
      Agree("GetMisclassificationCount",
            statistics.GetMisclassificationCount(static_cast<int>(predicted),
                                                 static_cast<int>(observed)),
            model.Count(predicted, observed));
    }
  }
}

}  // namespace

void TreeStatisticsModel::InitMatrix(int count) {
  auto const size = static_cast<std::size_t>(std::max(count, 0));
  matrix.assign(size, std::vector<double>(size));
}

double TreeStatisticsModel::Count(std::size_t predicted, std::size_t observed) const {
  return isCls && !matrix.empty() ? matrix[predicted][observed] : systemMissingValue();
}

void TreeStatisticsModel::Add(NodeModel const& node, std::size_t slot) {
  for (std::unique_ptr<NodeModel> const& child : node.children) Add(*child, slot);
  if (!node.children.empty() || !node.classes[slot]) return;
  ClassModel const& info = *node.classes[slot];
  int const size = static_cast<int>(matrix.size());
  if (info.prediction < 0 || info.prediction >= size) return;
  std::vector<double>& row = matrix[static_cast<std::size_t>(info.prediction)];
  for (int observed = 0; observed < std::min(size, numClasses); ++observed) {
    auto const index = static_cast<std::size_t>(observed);
    if (index < info.counts.size()) row[index] += info.counts[index];
  }
}

void TreeStatisticsModel::Initialize(NodeModel const* root, bool isClassification, int validation) {
  isCls = isClassification;
  numClasses = 0;
  if (!isClassification) return;
  matrix.clear();
  if (root == nullptr || !root->classes[0]) return;
  numClasses = static_cast<int>(root->classes[0]->counts.size());
  if (validation == ValidationCrossValidation) return;
  InitMatrix(numClasses);
  Add(*root, validation == ValidationSplitSample ? 1 : 0);
}

bool TreeStatisticsModel::CanBeWritten() const {
  return !isCls || matrix.empty() || numClasses <= static_cast<int>(matrix.size());
}

std::string TreeStatisticsModel::Text(Format format) const {
  std::string text;
  if (isCls) {
    text += "Classification tree.\n";
    text += "Number of target classes = " + std::to_string(numClasses) + "\n";
    for (int predicted = 0; predicted < numClasses; ++predicted) {
      text += "\n";
      for (int observed = 0; observed < numClasses; ++observed) {
        text += Written(
            Count(static_cast<std::size_t>(predicted), static_cast<std::size_t>(observed)), format);
        text += "  ";
      }
    }
  } else {
    text += "Regression tree.\n";
  }
  return text + "Risk estimate " + Written(risk, format) + "\nStandard error of risk estimate " +
         Written(stdError, format) + "\n";
}

void Change(TreeStatisticsImp& statistics, TreeStatisticsModel& model, Choices& choices) {
  switch (choices.Below(10)) {
    case 0:
      model.risk = choices.Value();
      statistics.SetRisk(model.risk);
      break;
    case 1:
      model.stdError = choices.Value();
      statistics.SetStdError(model.stdError);
      break;
    case 2:
      model.isCls = choices.Flag();
      statistics.SetIsCls(model.isCls);
      break;
    case 3:
    case 4: {
      int const count = choices.Below(kMaxClasses + 2) - 2;
      bool const withNumber = choices.Flag();
      if (withNumber) {
        statistics.SetNumClasses(count);
        model.numClasses = count;
      } else {
        statistics.InitMatrix(count);
      }
      model.InitMatrix(count);
      break;
    }
    case 5: {
      if (model.matrix.empty()) break;
      int const predicted = choices.Below(static_cast<int>(model.matrix.size()));
      int const observed = choices.Below(static_cast<int>(model.matrix.size()));
      double const count = choices.Value();
      statistics.SetMisclassificationCount(predicted, observed, count);
      model.matrix[static_cast<std::size_t>(predicted)][static_cast<std::size_t>(observed)] = count;
      break;
    }
    case 6:
    case 7:
      AddSubtree(statistics, model, choices);
      break;
    default:
      TakeOverTree(statistics, model, choices);
      break;
  }
}

void Check(TreeStatisticsImp const& statistics, TreeStatisticsModel const& model) {
  CheckReading(statistics, model);
  TreeStatistics handle;
  handle = statistics;
  TreeStatistics const copy(handle);
  CheckReading(handle, model);
  handle = TreeStatistics();
  CheckReading(copy, model);
  Agree("GetRisk", handle.GetRisk(), systemMissingValue());

  if (!model.CanBeWritten()) return;
  for (TreeStatisticsModel::Format const& format : kFormats) {
    std::ostringstream stream;
    if (format.isFixed) stream.setf(std::ios_base::fixed, std::ios_base::floatfield);
    stream.precision(format.precision);
    stream << statistics;
    Agree("operator<<", stream.str(), model.Text(format));
  }
}

void RunTreeStatistics(Choices choices) {
  RunPair<TreeStatisticsImp, TreeStatisticsModel>(choices);
}

}  // namespace tree::testing
