#include "progress/interruption.h"

#include <atomic>

namespace tree::cli {
namespace {

// Deliberate: a global, for a signal handler reaches nothing else.
std::atomic<int> caughtSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void RememberSignal(int signal) { caughtSignal = signal; }

}  // namespace

Interruption::Interruption() {
  struct sigaction action {};
  action.sa_handler = RememberSignal;
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (std::size_t index = 0; index < kSignals.size(); ++index) {
    sigaction(kSignals[index], nullptr, &former_[index]);
    // Who starts a program in the background has it ignore some of them.
    if (former_[index].sa_handler != SIG_IGN) sigaction(kSignals[index], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t index = 0; index < kSignals.size(); ++index) {
    sigaction(kSignals[index], &former_[index], nullptr);
  }
  caughtSignal = 0;
}

int Interruption::GetSignal() { return caughtSignal; }

}  // namespace tree::cli
