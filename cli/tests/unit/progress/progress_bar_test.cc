#include "progress/progress_bar.h"

#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace tree::cli {
namespace {

using std::chrono::milliseconds;

constexpr char kErase[] = "\r\x1b[K";

class ProgressBarTest : public ::testing::Test {
 protected:
  ProgressBar Bar(int width) {
    return {terminal_, width, [this] { return isInterrupted_; }, [this] { return now_; }};
  }
  /// What was drawn since the last call.
  std::string Drawn() {
    std::string text = terminal_.str();
    terminal_.str("");
    return text;
  }

  std::ostringstream terminal_;
  bool isInterrupted_ = false;
  ProgressBar::Time now_;
};

TEST_F(ProgressBarTest, DrawsNothingInTheFirstSecond) {
  ProgressBar bar = Bar(80);

  now_ += milliseconds(999);
  EXPECT_TRUE(bar.Report(0.5, "growing"));
  bar.End();

  EXPECT_EQ(Drawn(), "");
}

TEST_F(ProgressBarTest, ShowsWhatIsDoneAndHowFar) {
  ProgressBar bar = Bar(80);

  now_ += milliseconds(1000);
  EXPECT_TRUE(bar.Report(0.5, "growing"));

  EXPECT_EQ(Drawn(), kErase + std::string("growing [") + std::string(20, '#') +
                         std::string(20, '.') + "]  50 %");
}

TEST_F(ProgressBarTest, FillsItsBarAtTheEnd) {
  ProgressBar bar = Bar(80);

  now_ += milliseconds(1000);
  bar.Report(1.0, "growing");

  EXPECT_EQ(Drawn(), kErase + std::string("growing [") + std::string(40, '#') + "] 100 %");
}

TEST_F(ProgressBarTest, DrawsTenTimesASecond) {
  ProgressBar bar = Bar(80);
  now_ += milliseconds(1000);
  bar.Report(0.5, "growing");
  Drawn();

  now_ += milliseconds(99);
  bar.Report(0.6, "growing");
  EXPECT_EQ(Drawn(), "");

  now_ += milliseconds(1);
  bar.Report(0.6, "growing");
  EXPECT_NE(Drawn(), "");
}

TEST_F(ProgressBarTest, LeavesAnEmptyLine) {
  {
    ProgressBar bar = Bar(80);
    now_ += milliseconds(1000);
    bar.Report(0.5, "growing");
    Drawn();

    bar.End();
    EXPECT_EQ(Drawn(), kErase);
    bar.End();
    EXPECT_EQ(Drawn(), "");

    bar.Report(0.6, "growing");
    now_ += milliseconds(100);
    bar.Report(0.6, "growing");
    Drawn();
  }
  EXPECT_EQ(Drawn(), kErase);
}

TEST_F(ProgressBarTest, WaitsASecondAgainWithANewOperation) {
  ProgressBar bar = Bar(80);
  now_ += milliseconds(1000);
  bar.Report(0.5, "growing");
  Drawn();

  bar.Begin();
  EXPECT_EQ(Drawn(), kErase);
  now_ += milliseconds(999);
  bar.Report(0.5, "pruning");
  EXPECT_EQ(Drawn(), "");
}

TEST_F(ProgressBarTest, DrawsNothingWithoutATerminal) {
  ProgressBar bar = Bar(0);

  now_ += milliseconds(5000);
  EXPECT_TRUE(bar.Report(0.5, "growing"));

  EXPECT_EQ(Drawn(), "");
}

TEST_F(ProgressBarTest, FitsItsTerminal) {
  struct {
    int width;
    double fraction;
    char const* line;
  } const rows[] = {
      {27, 0.5, "growing [#####.....]  50 %"},
      {18, 0.5, "growing [.]  50 %"},
      {17, 0.5, "growing"},
      {5, 0.5, "grow"},
      {1, 0.5, ""},
      {80, 0.0, "growing"},
      {27, 7.0, "growing [##########] 100 %"},
  };
  for (auto const& [width, fraction, line] : rows) {
    ProgressBar bar = Bar(width);
    now_ += milliseconds(1000);
    bar.Report(fraction, "growing");
    EXPECT_EQ(Drawn(), std::string(kErase) + line);
    bar.End();
    Drawn();
  }
}

TEST_F(ProgressBarTest, EndsTheOperationWhenInterrupted) {
  ProgressBar onTerminal = Bar(80);
  ProgressBar elsewhere = Bar(0);

  isInterrupted_ = true;

  EXPECT_FALSE(onTerminal.Report(0.5, "growing"));
  EXPECT_FALSE(elsewhere.Report(0.5, "growing"));
}

TEST_F(ProgressBarTest, GoesOnWhereItCannotBeDrawn) {
  int numCalls = 0;
  ProgressBar bar(
      terminal_, 80, [] { return false; },
      [&]() -> ProgressBar::Time {
        if (++numCalls > 1) throw std::runtime_error("no clock");
        return {};
      });

  EXPECT_TRUE(bar.Report(0.5, "growing"));
}

}  // namespace
}  // namespace tree::cli
