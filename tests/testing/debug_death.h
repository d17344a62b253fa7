#ifndef TREE_TESTS_TESTING_DEBUG_DEATH_H_
#define TREE_TESTS_TESTING_DEBUG_DEATH_H_

#include <gtest/gtest.h>

namespace tree::testing {

/// Base of suites of death tests: the dying statement runs in a fresh process, so that threads and
/// sanitizers of the present one are of no account.
class DeathTest : public ::testing::Test {
 protected:
  DeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

}  // namespace tree::testing

/// Expects that a debug build stops at `statement` with a line that matches `pattern`. Release
/// builds leave the statement out: what it does there is undefined.
#ifndef NDEBUG
#define EXPECT_ASSERTION(statement, pattern) EXPECT_DEATH(statement, pattern)
#else
#define EXPECT_ASSERTION(statement, pattern) GTEST_SKIP() << "assertions are off in this build"
#endif

#endif  // TREE_TESTS_TESTING_DEBUG_DEATH_H_
