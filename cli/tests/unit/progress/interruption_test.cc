#include "progress/interruption.h"

#include <gtest/gtest.h>

namespace tree::cli {
namespace {

TEST(Interruption, RemembersASignal) {
  for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
    Interruption const interruption;
    EXPECT_EQ(Interruption::GetSignal(), 0);

    ::raise(signal);

    EXPECT_EQ(Interruption::GetSignal(), signal);
  }
  EXPECT_EQ(Interruption::GetSignal(), 0);
}

TEST(Interruption, LetsASecondSignalEndTheProgram) {
  EXPECT_EXIT(
      {
        Interruption const interruption;
        ::raise(SIGINT);
        ::raise(SIGINT);
      },
      ::testing::KilledBySignal(SIGINT), "");
}

TEST(Interruption, PutsBackWhatSignalsDidBefore) {
  struct sigaction before {};
  ::sigaction(SIGTERM, nullptr, &before);
  { Interruption const interruption; }

  struct sigaction after {};
  ::sigaction(SIGTERM, nullptr, &after);

  EXPECT_EQ(after.sa_handler, before.sa_handler);
}

TEST(Interruption, LeavesSignalsAloneThatAreIgnored) {
  auto* const former = ::signal(SIGHUP, SIG_IGN);
  {
    Interruption const interruption;
    ::raise(SIGHUP);
    EXPECT_EQ(Interruption::GetSignal(), 0);
  }
  ::signal(SIGHUP, former);
}

}  // namespace
}  // namespace tree::cli
