// The snippets of docs/guide.md, in its order, as a program.

#include <memory>

#include "guide/chapters.h"
#include "guide/penguin_tree.h"

int main() {
  std::unique_ptr<tree::NodeImp> const root = guide::BuildPenguinTree();
  guide::ShowSettings();
  guide::ShowNode(*root);
  guide::ShowRules();
  guide::ShowRouting(*root);
  guide::ShowTraversal(*root);
  guide::ShowPruningBack(*root);
  guide::ShowAlgorithm();
  guide::ShowCumulativeNode(*root);
  guide::ShowAlteredPriors();
  guide::ShowGains();
  guide::ShowOddities();
}
