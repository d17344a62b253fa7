#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>
#include <vector>

#include "growtree.h"
#include "progress/interruption.h"

namespace {

/// The columns of the terminal that errors go to; 0 when they go elsewhere, or when it is one that
/// cannot move its cursor.
int TerminalWidth() {
  char const* const kind = std::getenv("TERM");
  if (::isatty(STDERR_FILENO) == 0 || kind == nullptr || std::string_view(kind) == "dumb") return 0;
  constexpr int kUsualWidth = 80;
  winsize size{};
  bool const isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kUsualWidth;
}

}  // namespace

int main(int argc, char* argv[]) {
  std::ios::sync_with_stdio(false);
  tree::cli::Interruption const interruption;
  return tree::cli::Run({argv + 1, argv + argc}, {std::cin, std::cout, std::cerr, TerminalWidth(),
                                                  &tree::cli::Interruption::GetSignal});
}
