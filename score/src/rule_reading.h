#ifndef TREE_SCORE_SRC_RULE_READING_H_
#define TREE_SCORE_SRC_RULE_READING_H_

#include <vector>

#include "tree/split_rules.h"

namespace tree::score {

/// What a split rule answers, with nothing hidden. Child positions are -1 for none.
struct RuleTable {
  struct Cut {
    double cutPoint;
    int child;  // of the values up to the cut point that no cut before it takes
  };

  int predictor = 0;
  bool ordered = true;
  double missingValue = 0.0;  // of an ordered rule
  int missingChild = -1;
  int upperChild = -1;          // of an ordered rule: above all cuts
  std::vector<Cut> cuts = {};   // of an ordered rule: ascending, as few as say the same
  std::vector<int> codes = {};  // of a nominal rule: child by category code

  /// The highest child position in it; -1 when there is none.
  int GetHighestChild() const;
};

/// Reads `rule` into `table`, whose memory is used again. Throws `InputError` for a rule of a class
/// that is not known, a negative predictor index, and cut points out of order.
void ReadRule(SplitRuleImp const& rule, RuleTable& table);

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_RULE_READING_H_
