#ifndef TREE_CLI_SRC_GROWTREE_H_
#define TREE_CLI_SRC_GROWTREE_H_

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace tree::cli {

/// What the program has around it.
struct Console {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  int terminalWidth;  ///< columns of the terminal that `err` goes to; 0 when it goes elsewhere
  std::function<int()> caughtSignal;  ///< the signal that asked the program to end; 0 for none
};

/// How the program ends.
enum ExitStatus : int {
  ExitDone = 0,
  ExitBadInput = 1,
  ExitUsage = 2,
  ExitNotGrown = 3,
  ExitSignalled = 128,  ///< plus the number of the signal
};

/// Does all that the program does. `arguments`: without its name. Gives its exit status.
int Run(std::vector<std::string> const& arguments, Console const& console);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_GROWTREE_H_
