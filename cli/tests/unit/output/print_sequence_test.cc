#include "output/print_sequence.h"

#include <sstream>

#include <gtest/gtest.h>

namespace tree::cli {
namespace {

TEST(PrintSequence, WritesALinePerSubtreeAndMarksTheFinishedOne) {
  std::ostringstream out;

  PrintSequence(
      out, {{12, 0.0, 0.25, 0.0125, {}}, {5, 0.00125, 0.2375, 0.01, {}}, {1, 0.1, 0.3, 0.015, {}}},
      5);

  EXPECT_EQ(out.str(),
            "terminal nodes    complexity          risk  standard error\n"
            "            12             0          0.25          0.0125\n"
            "             5       0.00125        0.2375            0.01  <- this tree\n"
            "             1           0.1           0.3           0.015\n");
}

}  // namespace
}  // namespace tree::cli
