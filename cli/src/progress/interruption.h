#ifndef TREE_CLI_SRC_PROGRESS_INTERRUPTION_H_
#define TREE_CLI_SRC_PROGRESS_INTERRUPTION_H_

#include <signal.h>  // NOLINT(modernize-deprecated-headers): POSIX has more than <csignal>

#include <array>

namespace tree::cli {

/// While an object of this class lives, the first signal that asks the program to end (SIGINT,
/// SIGTERM or SIGHUP) is only remembered, so that it can end in an orderly way. The second one of a
/// kind ends it at once. There is one object at a time, for signals belong to the program.
class Interruption {
 public:
  Interruption();
  /// Signals do again what they did before, and what was remembered is forgotten.
  ~Interruption();
  Interruption(Interruption const&) = delete;
  Interruption& operator=(Interruption const&) = delete;

  /// The signal that came; 0 as long as none did.
  static int GetSignal();

 private:
  static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

  std::array<struct sigaction, kSignals.size()> former_{};
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_PROGRESS_INTERRUPTION_H_
