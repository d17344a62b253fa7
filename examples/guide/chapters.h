#ifndef TREE_EXAMPLES_GUIDE_CHAPTERS_H_
#define TREE_EXAMPLES_GUIDE_CHAPTERS_H_

// The chapters of docs/guide.md as a program: each function shows one of them.

#include "tree/nodes.h"

namespace guide {

void ShowSettings();
void ShowNode(tree::Node const& root);
void ShowRules();
void ShowRouting(tree::NodeImp const& root);
void ShowTraversal(tree::NodeImp const& root);
void ShowPruningBack(tree::NodeImp const& root);
void ShowCumulativeNode(tree::NodeImp const& root);
void ShowAlteredPriors();
void ShowAlgorithm();
void ShowGains();
void ShowOddities();

}  // namespace guide

#endif  // TREE_EXAMPLES_GUIDE_CHAPTERS_H_
