// A tree of two terminal nodes, and a case routed through it.

// [first program]
#include <tree/tree.h>

#include <iostream>

int main() {
  auto* rule = new tree::OSplitRule(systemMissingValue(), /*predictorIndex=*/0);
  rule->SetCutPoint(206.5);   // up to 206.5 to child 0, above to child 1
  rule->SetDumbRule(0, 0.6);  // what is missing goes to child 0

  tree::NodeImp root;  // owns its rules and its children
  root.SetNumCompetitors(1);
  root.SetCompetitor(0, rule);  // competitor 0 is the rule by which the node splits
  root.SetNumChildren(2);
  for (unsigned int position : {0u, 1u}) {
    root.SetChild(position, new tree::NodeImp);
    root.GetChildImp(position)->SetId(position + 1);
  }

  double const penguin[] = {217.0};  // its flipper length, by predictor index
  std::cout << "node " << root.DropObservationThroughTree(penguin, nullptr)->GetId() << '\n';
}
// [first program]
