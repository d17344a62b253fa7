#ifndef EXAMPLES_PENGUINS_REPORT_H_
#define EXAMPLES_PENGUINS_REPORT_H_

#include <iosfwd>
#include <string>
#include <vector>

#include "penguins/penguin_table.h"
#include "tree/nodes.h"

// The sections of the program's output. Those that describe the tree use the read interface of its
// nodes only, as a program would that was handed a tree grown elsewhere.

namespace penguins {

/// How many penguins there are.
void PrintData(std::ostream& out, std::string const& file, std::vector<Penguin> const& penguins);

/// Every node in prefix order, indented by depth: how cases get there, size, class shares,
/// prediction, and what happens when its rule cannot place a case.
void PrintTree(std::ostream& out, tree::Node const& root);

/// What the cases of every node look like, predictor by predictor.
void PrintPredictorSummaries(std::ostream& out, tree::Node const& root);

/// How many cases each means placed, node by node and in all.
void PrintPlacements(std::ostream& out, tree::NodeImp const& root,
                     std::vector<Penguin> const& penguins);

/// Where the penguins with missing values ended, and on what way.
void PrintMissing(std::ostream& out, tree::NodeImp const& root,
                  std::vector<Penguin> const& penguins);

/// Routes every penguin: the table of predicted by observed species.
void PrintPredictions(std::ostream& out, tree::NodeImp const& root,
                      std::vector<Penguin> const& penguins);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_REPORT_H_
