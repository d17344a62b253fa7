// An outside program, built against the installed library alone: puts together a tree of one split,
// routes cases through it, and asks for what the support library decides.
//
// consumer [EXPECTED MISSING VALUE]

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "tree/tree.h"

namespace {

int failures = 0;

void Expect(bool holds, char const* what) {
  if (holds) return;
  std::printf("not as expected: %s\n", what);
  ++failures;
}

}  // namespace

int main(int argc, char** argv) {
  double const missing =
      argc > 1 ? std::strtod(argv[1], nullptr) : std::numeric_limits<double>::lowest();

  tree::VariableSettingsImp variable;
  Expect(variable.GetMissingValue() == missing, "the missing value of a new variable");

  auto* const rule = new tree::OSplitRule(variable, 0);
  Expect(rule->GetCutPoint() == missing, "the cut point of a rule without one");
  Expect(rule->GetStatistic(tree::StatisticFlag1) == missing, "a statistic that was never set");
  rule->SetCutPoint(2.0);
  rule->SetDumbRule(1, 0.5);

  tree::RegInfoImp const statistics;
  Expect(statistics.GetMinimum() == GetInfinity(), "the minimum over no cases");

  tree::NodeImp root;
  root.SetNumChildren(2);
  root.SetChild(0, new tree::NodeImp);
  root.SetChild(1, new tree::NodeImp);
  root.SetNumCompetitors(1);
  root.SetCompetitor(0, rule);
  auto const ends = [&root](double value) {
    return root.DropObservationThroughTree(&value, nullptr);
  };
  Expect(ends(1.0) == root.GetChild(0), "a case below the cut goes to child 0");
  Expect(ends(3.0) == root.GetChild(1), "a case above the cut goes to child 1");
  Expect(ends(systemMissingValue()) == root.GetChild(1), "a missing case follows the dumb rule");

  return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
