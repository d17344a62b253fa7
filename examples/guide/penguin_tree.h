#ifndef TREE_EXAMPLES_GUIDE_PENGUIN_TREE_H_
#define TREE_EXAMPLES_GUIDE_PENGUIN_TREE_H_

// A small tree built by hand: it tells three species of penguin apart. Its counts are those of
// data/penguins.csv, the penguins of 2007 and 2008 as the training sample, those of 2009 as the
// test sample.

#include <memory>

#include "tree/nodes.h"
#include "tree/settings.h"

namespace guide {

/// The predictors, by index.
enum Predictor : int { kIsland, kBillLength, kBillDepth, kFlipperLength, kNumPredictors };

/// The codes of the islands.
enum Island : int { kBiscoe, kDream, kTorgersen, kNumIslands };

/// The classes of the target.
enum Species : int { kAdelie, kChinstrap, kGentoo, kNumSpecies };

char const* SpeciesName(int species);

/// The target and the predictors.
tree::CoreSettingsImp PenguinVariables();

/// CART for them: split sample, three competitors, two surrogates, a cost.
tree::CCartSettingsImp PenguinSettings();

/// The tree: nodes 0 to 4, of which 2, 3 and 4 are terminal.
std::unique_ptr<tree::NodeImp> BuildPenguinTree();

/// One node of a regression tree, for the body mass in grams.
std::unique_ptr<tree::NodeImp> BuildMassNode();

}  // namespace guide

#endif  // TREE_EXAMPLES_GUIDE_PENGUIN_TREE_H_
