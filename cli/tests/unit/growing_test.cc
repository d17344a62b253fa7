#include "growing.h"

#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"
#include "cli_testing/fixed_algorithm.h"
#include "cli_testing/trees.h"

namespace tree::cli {
namespace {

using ::testing::ElementsAre;
using testing::FixedAlgorithm;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class GrowTreeTest : public ::testing::Test {
 protected:
  std::vector<PruningStep> Grow() { return GrowTree(algorithm_, options_, progress_); }

  std::ostringstream terminal_;
  bool isInterrupted_ = false;
  ProgressBar progress_{terminal_, 80, [this] { return isInterrupted_; }};
  Options options_;
  FixedAlgorithm algorithm_{testing::ClassTree(), testing::ClassSettings()};
};

TEST_F(GrowTreeTest, GrowsAndValidates) {
  EXPECT_THAT(Grow(), IsEmpty());

  EXPECT_THAT(algorithm_.GetLog(), ElementsAre("grow", "validate"));
  EXPECT_EQ(algorithm_.GetListener(), nullptr);
}

TEST_F(GrowTreeTest, PrunesWhereThatIsWanted) {
  options_.pruning.prune = true;

  Grow();

  EXPECT_THAT(algorithm_.GetLog(), ElementsAre("grow", "prune", "validate"));
}

TEST_F(GrowTreeTest, LooksAtTheSequenceBeforePruning) {
  options_.pruning.prune = true;
  options_.results.sequence = true;

  EXPECT_THAT(Grow(), SizeIs(2));

  EXPECT_THAT(algorithm_.GetLog(), ElementsAre("grow", "sequence", "prune", "validate"));
}

TEST_F(GrowTreeTest, EndsWhenInterrupted) {
  isInterrupted_ = true;

  EXPECT_THROW(Grow(), Interrupted);

  EXPECT_THAT(algorithm_.GetLog(), ElementsAre("grow"));
}

TEST_F(GrowTreeTest, PutsFailuresDownToTheDataWhereTheyAreToBlame) {
  for (AlgorithmFailure const failure : {FailureNoData, FailureInvalidSettings}) {
    algorithm_.FailAt("grow", failure, "There are no cases.");
    EXPECT_EQ(testing::InputRefusal([this] { Grow(); }), "There are no cases.");
  }
}

TEST_F(GrowTreeTest, ReportsOtherFailuresOfEveryStep) {
  options_.pruning.prune = true;
  options_.results.sequence = true;
  for (char const* const step : {"grow", "sequence", "prune", "validate"}) {
    SCOPED_TRACE(step);
    algorithm_.FailAt(step, FailureOutOfMemory, "There is not enough memory.");
    try {
      Grow();
      ADD_FAILURE() << "nothing is thrown";
    } catch (GrowingError const& error) {
      EXPECT_STREQ(error.what(), "There is not enough memory.");
    }
  }
}

}  // namespace
}  // namespace tree::cli
