#include <cmath>
#include <iostream>
#include <memory>
#include <string>

#include "guide/chapters.h"
#include "guide/penguin_tree.h"
#include "tree/misclassification.h"
#include "tree/nodes.h"
#include "tree/settings.h"
#include "tree/split_rules.h"
#include "tree/support.h"
#include "tree/values.h"

namespace guide {
namespace {

/// Prints where a case ends.
void PrintCase(tree::NodeImp const& root, std::string const& what, double const* values) {
  // [route]
  tree::NodeImp const* const end = root.DropObservationThroughTree(values, nullptr);
  std::cout << what << ": node " << end->GetId() << ", "
            << SpeciesName(static_cast<int>(end->GetAssignment())) << '\n';
  // [route]
}

}  // namespace

void ShowSettings() {
  std::cout << "Settings\n\n";
  // [copying settings]
  tree::CCartSettingsImp const cart = PenguinSettings();
  tree::QuestSettingsImp quest(PenguinVariables());
  quest.CopyFrom(cart);  // what both kinds share, as clones
  std::cout << "CART to QUEST: tree depth " << quest.GetStopRule()->GetMaxTreeDepth()
            << ", standard errors " << quest.GetPruningSpec()->GetSERuleFactor() << '\n';
  // [copying settings]
}

void ShowNode(tree::Node const& root) {
  std::cout << "\nA node\n\n";
  // [read a node]
  tree::ClsInfo const& classes = *root.GetClsInfo(tree::TrainingSample);
  std::cout << "node " << root.GetId() << ": " << root.GetNodeSize(tree::TrainingSample)
            << " cases, share of Gentoo " << classes.GetClassPercent(kGentoo) << ", predicts "
            << SpeciesName(static_cast<int>(root.GetAssignment())) << '\n';

  std::unique_ptr<tree::SplitRule const> const rule(root.GetCompetitor(0));  // new: a copy
  std::unique_ptr<tree::ValueSet const> const values(rule->GetMappedValues(1));
  std::cout << "child 1 receives 217: " << std::boolalpha << values->Contains(217.0) << '\n';
  // [read a node]

  std::unique_ptr<tree::NodeImp const> const mass = BuildMassNode();
  tree::RegInfo const& statistics = *mass->GetRegInfo(tree::TrainingSample);
  std::cout << "body mass: mean " << statistics.GetMean() << ", prediction "
            << statistics.GetPrediction() << ", bin 1 from " << statistics.GetBinLeftEndPoint(1)
            << " to " << statistics.GetBinRightEndPoint(1) << " has " << statistics.GetBinSize(1)
            << '\n';
}

void ShowRules() {
  std::cout << "\nMissing values of a rule\n\n";
  // [missing mapping]
  tree::OSplitRule rule(systemMissingValue(), kBillLength);
  rule.SetCutPoint(43.35);
  std::cout << "not mapped: " << rule.Classify(systemMissingValue()) << '\n';
  rule.AddMissingValueMapping(/*ownChild=*/false);  // to the last child
  std::cout << "with the last child: " << rule.Classify(systemMissingValue()) << '\n';
  // [missing mapping]

  // [rule from intervals]
  tree::OValueSet low;  // the whole line ...
  low.SetRightEnd(2.0);
  low.SetOpenRight(false);  // ... up to and including 2
  tree::OValueSet middle(2.0, 7.0);
  middle.SetOpenRight(false);
  tree::OValueSet high;
  high.SetLeftEnd(7.0);

  tree::OSplitRule threeWays(systemMissingValue(), kBillLength);
  for (tree::OValueSet const* interval : {&low, &middle, &high}) {
    threeWays.AddMappedValues(*interval);  // one more child each
  }
  // [rule from intervals]
  for (double const value : {2.0, 2.5, 7.0, 7.1}) {
    std::cout << value << " to child " << threeWays.Classify(value) << '\n';
  }
}

void ShowRouting(tree::NodeImp const& root) {
  std::cout << "\nRouting\n\n";
  // [cases]
  double const missing = systemMissingValue();
  double const complete[] = {kDream, 49.5, 19.0, 200.0};  // by predictor index
  double const noFlipper[] = {kTorgersen, 39.1, 18.7, missing};
  double const islandOnly[] = {kBiscoe, missing, missing, missing};
  double const nothing[] = {missing, missing, missing, missing};
  // [cases]
  PrintCase(root, "all known", complete);
  PrintCase(root, "no flipper", noFlipper);
  PrintCase(root, "island only", islandOnly);
  PrintCase(root, "nothing known", nothing);

  // [stop node]
  tree::NodeImp const* const shortFlippers = root.GetChildImp(0);
  bool const passes = root.DropObservationThroughTree(complete, shortFlippers) != nullptr;
  std::cout << "passes node 1: " << std::boolalpha << passes << '\n';
  // [stop node]
}

void ShowTraversal(tree::NodeImp const& root) {
  std::cout << "\nTraversal\n\n";
  // [traversal]
  tree::PrefixNodeIterator nodes(&root);
  while (tree::Node const* const node = nodes.Next()) {
    std::cout << "node " << node->GetId()
              << (node->GetNumChildren() == 0 ? " is terminal\n" : "\n");
  }
  // [traversal]
}

void ShowPruningBack(tree::NodeImp const& root) {
  std::cout << "\nPruning back\n\n";
  // [pruning back]
  std::unique_ptr<tree::NodeImp> const pruned(root.Clone());
  tree::NodeImp* const node = pruned->GetChildImp(0);
  node->RemoveChildren(true);  // the argument means nothing
  std::cout << "node " << node->GetId() << ": " << node->GetNumChildren() << " children, "
            << node->GetNumCompetitors() << " competitor\n";
  // [pruning back]
  double const chinstrap[] = {kDream, 49.5, 19.0, 200.0};
  PrintCase(*pruned, "the Chinstrap", chinstrap);
}

void ShowOddities() {
  std::cout << "\nOddities\n\n" << std::boolalpha;
  // [oddities]
  std::unique_ptr<tree::NodeImp> const root = BuildPenguinTree();
  tree::PrefixNodeIterator nodes(root.get());
  std::cout << "nodes to come, HasMore() " << nodes.HasMore() << '\n';

  double const notANumber[] = {kDream, 49.5, 19.0, std::nan("")};
  std::cout << "flipper NaN: child " << root->Classify(notANumber) << '\n';

  tree::OValueSet const open(1.0, 3.0);
  std::cout << "(1, 3) contains 1: " << open.Contains(1.0) << ", 3: " << open.Contains(3.0)
            << ", 3.9: " << open.Contains(3.9) << ", 4.1: " << open.Contains(4.1) << '\n';

  tree::ClsInfoImp distribution;
  distribution.SetNumClasses(2);
  std::cout << "probability never set: " << distribution.GetClassProbability(0)
            << ", of no class: " << distribution.GetClassProbability(2) << '\n';

  tree::CostImp costs;
  costs.Set(0, 1, 3.0);  // two classes, as far as these costs know
  std::cout << "cost (0, 1): " << costs.Get(0, 1) << ", (0, 2): " << costs.Get(0, 2) << '\n';
  // [oddities]
}

}  // namespace guide
