#include "output/print_sequence.h"

#include <iomanip>
#include <ostream>

#include "output/number_text.h"

namespace tree::cli {

void PrintSequence(std::ostream& out, std::vector<PruningStep> const& steps, int numTerminalNodes) {
  out << "terminal nodes    complexity          risk  standard error\n";
  for (PruningStep const& step : steps) {
    out << std::setw(14) << step.numTerminalNodes << std::setw(14) << ShortNumber(step.complexity)
        << std::setw(14) << ShortNumber(step.risk) << std::setw(16) << ShortNumber(step.stdError)
        << (step.numTerminalNodes == numTerminalNodes ? "  <- this tree\n" : "\n");
  }
}

}  // namespace tree::cli
