#include "growtree.h"

#include <signal.h>  // NOLINT(modernize-deprecated-headers): of POSIX

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/environment.h"
#include "cli_testing/scratch_folder.h"
#include "output/svg.h"
#include "testing/failing_allocator.h"

namespace tree::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::ScratchFolder;
using ::testing::StartsWith;

using Arguments = std::vector<std::string>;

/// Six cases whose classes, and whose masses, x tells apart at 3.5.
constexpr char kCases[] =
    "kind,mass,x,c\n"
    "a,1,1,u\n"
    "a,1,2,u\n"
    "a,1,3,v\n"
    "b,5,4,v\n"
    "b,5,5,u\n"
    "b,5,6,v\n";

/// What lets so few cases be split.
Arguments Small(Arguments const& more) {
  Arguments arguments = {"--min-node", "2", "--min-child", "1"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

class GrowtreeTest : public ::testing::Test {
 protected:
  /// Runs the program in this process; what it wrote is in `out_` and `err_`.
  int Run(Arguments const& arguments) {
    out_.str("");
    err_.str("");
    return cli::Run(arguments, {in_, out_, err_, 0, caughtSignal_});
  }
  int RunSmall(Arguments const& more) { return Run(Small(more)); }

  std::string Out() const { return out_.str(); }
  std::string Err() const { return err_.str(); }
  std::string Path(std::string const& name) const { return folder_.Path(name); }

  ScratchFolder folder_;
  std::string cases_ = folder_.Write("cases.csv", kCases);
  std::istringstream in_{kCases};
  std::ostringstream out_;
  std::ostringstream err_;
  std::function<int()> caughtSignal_ = [] { return 0; };
};

TEST_F(GrowtreeTest, PrintsAClassificationTree) {
  EXPECT_EQ(RunSmall({"--target", "kind", "--exclude", "mass", cases_}), ExitDone);

  EXPECT_EQ(Err(), "");
  EXPECT_EQ(Out(), "Classification tree of kind on 6 cases of " + cases_ +
                       ", by 2 predictors\n"
                       "\n"
                       "node) rule, cases, loss, prediction (probabilities: a, b)\n"
                       "      * marks a terminal node\n"
                       "\n"
                       "0) root  6  3  a  (0.5000 0.5000)\n"
                       "  1) x <= 3.5  3  0  a  (1.0000 0.0000) *\n"
                       "  2) x > 3.5  3  0  b  (0.0000 1.0000) *\n"
                       "\n"
                       "Risk, measured on the cases that the tree was grown on, and so flattering\n"
                       "Rows of the matrix are predicted classes, columns observed ones: a, b\n"
                       "Classification tree.\n"
                       "Number of target classes = 2\n"
                       "\n"
                       "3  0  \n"
                       "0  3  Risk estimate 0\n"
                       "Standard error of risk estimate 0\n");
}

TEST_F(GrowtreeTest, PrintsARegressionTree) {
  EXPECT_EQ(RunSmall({"--target", "mass", "--exclude", "kind", cases_}), ExitDone);

  EXPECT_EQ(Err(), "");
  EXPECT_EQ(Out(), "Regression tree of mass on 6 cases of " + cases_ +
                       ", by 2 predictors\n"
                       "\n"
                       "node) rule, cases, deviance, mean\n"
                       "      * marks a terminal node\n"
                       "\n"
                       "0) root  6  24  3\n"
                       "  1) x <= 3.5  3  0  1 *\n"
                       "  2) x > 3.5  3  0  5 *\n"
                       "\n"
                       "Risk, measured on the cases that the tree was grown on, and so flattering\n"
                       "Regression tree.\n"
                       "Risk estimate 0\n"
                       "Standard error of risk estimate 0\n");
}

TEST_F(GrowtreeTest, ReadsStandardInput) {
  EXPECT_EQ(RunSmall({"--target", "mass", "--exclude", "kind", "-"}), ExitDone);

  EXPECT_THAT(Out(), StartsWith("Regression tree of mass on 6 cases of standard input, by 2"));
}

TEST_F(GrowtreeTest, ListsDetailsSequenceAndGains) {
  EXPECT_EQ(RunSmall({"--target", "kind", "--predictors", "x", "--details", "--sequence", "--gains",
                      "b", cases_}),
            ExitDone);

  EXPECT_THAT(Out(), HasSubstr("\n\n"
                               "node 0: root\n"
                               "  size: 6 of 6 (100.0 %)\n"
                               "  prediction: a, loss 3\n"
                               "  cases: a 3, b 3\n"
                               "  probabilities: a 0.5000, b 0.5000\n"
                               "  splits:\n"
                               "    x <= 3.5 | > 3.5, improvement 0.5\n"));
  EXPECT_THAT(Out(), HasSubstr("\n\n"
                               "terminal nodes    complexity          risk  standard error\n"
                               "             2             0             0               0  <- "
                               "this tree\n"
                               "             1           0.5           0.5"));
  EXPECT_THAT(Out(), HasSubstr("\n\nGains: b, training sample\n"
                               " node         cases    % of cases          hits     % of hits "
                               "response in %    index in %\n"
                               "    2             3         50.00             3        100.00    "
                               "    100.00        200.00\n"));
}

TEST_F(GrowtreeTest, ListsGainsAsTheyAreWanted) {
  EXPECT_EQ(RunSmall({"--target", "kind", "--predictors", "x", "--gains", "b", "--gains-rows",
                      "cumulative", "--gains-order", "ascending", "--profit", "b=4", "--profit",
                      "a=-1", cases_}),
            ExitDone);
  EXPECT_THAT(Out(), HasSubstr("\n\nGains: b, training sample\n"
                               "up to         cases    % of cases          hits     % of hits "
                               "response in %        profit    index in %\n"
                               "    1             3         50.00             0          0.00    "
                               "      0.00            -1          0.00\n"
                               "    2             6        100.00             3        100.00    "
                               "     50.00           1.5        100.00\n"));

  EXPECT_EQ(RunSmall({"--target", "kind", "--predictors", "x", "--revenue", "b=5", "--expense",
                      "b=1", "--gains-rows", "25", cases_}),
            ExitDone);
  EXPECT_THAT(Out(), HasSubstr("\n\nGains: profit, training sample\n"
                               " node         cases    % of cases        profit    index in %\n"
                               "    2           1.5         25.00             4        200.00\n"
                               "    2           1.5         25.00             4        200.00\n"
                               "    1           1.5         25.00             0          0.00\n"
                               "    1           1.5         25.00             0          0.00\n"));
}

TEST_F(GrowtreeTest, CountsRepeatedCases) {
  std::string const cases = folder_.Write("counted.csv", "y,x,n\na,1,3\na,2,2\nb,3,4\nb,4,1\n");

  EXPECT_EQ(RunSmall({"--target", "y", "--frequency-weight", "n", "--validation", "cross",
                      "--folds", "1000", cases}),
            ExitDone);

  EXPECT_EQ(Err(), "");
  EXPECT_THAT(Out(), StartsWith("Classification tree of y on 10 cases of "));
  EXPECT_THAT(Out(), HasSubstr("\nRisk, measured by cross-validation in 10 folds\n"));
}

TEST_F(GrowtreeTest, SaysWhichRowCannotBeUsed) {
  std::string const cases =
      folder_.Write("rows.csv", "y,x,w,v\n1,1,1,1\n\n2,2,inf,1\n3,3,1e300,1e300\ninf,4,1,1\n");
  std::string const wide = folder_.Write("wide.csv", "y,x\n-1e200,1\n1e200,2\n");
  struct {
    Arguments arguments;
    std::string message;
  } const rows[] = {
      {{"--target", "y", "--case-weight", "w", cases},
       cases + ": row 2: column \"w\": a weight cannot be infinite"},
      {{"--target", "x", "--case-weight", "v", "--frequency-weight", "w", "--missing", "inf",
        cases},
       cases + ": row 3: columns \"w\" and \"v\": 1e+300 times 1e+300 cannot be a weight"},
      {{"--target", "y", cases}, cases + ": row 4: column \"y\": value inf cannot be predicted"},
      {{"--target", "y", wide},
       wide + ": column \"y\": numbers from -1e+200 to 1e+200 cannot be predicted: the square of "
              "their range is no number"},
  };
  for (auto const& [arguments, message] : rows) {
    EXPECT_EQ(Run(arguments), ExitBadInput);
    EXPECT_EQ(Err(), "growtree: " + message + '\n');
  }
  in_.str("y,x\ninf,1\n1,2\n");
  EXPECT_EQ(Run({"--target", "y", "-"}), ExitBadInput);
  EXPECT_THAT(Err(), StartsWith("growtree: standard input: row 1: column"));
}

TEST_F(GrowtreeTest, RefusesSamplesWithoutACaseBeforeItGrows) {
  std::string const trained = folder_.Write("trained.csv", "y,x,part\na,1,0\nb,2,0\n");
  std::string const tested = folder_.Write("tested.csv", "y,x,part\na,1,1\nb,2,1\n");
  struct {
    char const* name;
    Arguments arguments;
    char const* message;
  } const rows[] = {
      {"no test sample",
       {"--target", "y", "--sample", "part", trained},
       "--sample: column \"part\" puts no case into the test sample"},
      {"no training sample",
       {"--target", "y", "--sample", "part", tested},
       "--sample: column \"part\" puts no case into the training sample"},
      {"none drawn",
       {"--target", "y", "--exclude", "part", "--validation", "split", "--test-share", "1e-9",
        trained},
       "--validation: no case is drawn for the test sample"},
      {"no sample to order by",
       {"--target", "y", "--exclude", "part", "--gains", "a", "--gains-by", "test", trained},
       "--gains-by: there is no test sample"},
  };
  for (auto const& [name, arguments, message] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Run(arguments), ExitBadInput);
    EXPECT_EQ(Err(), std::string("growtree: ") + message + '\n');
    EXPECT_EQ(Out(), "");
  }
  EXPECT_EQ(Run({"--target", "y", "--sample", "part", "--validation", "none", trained}), ExitDone);
}

TEST_F(GrowtreeTest, PrunesAndValidates) {
  std::string const tall = folder_.Write("tall.csv", [] {
    std::string text = "y,x\n";
    // One case in ten is of another class, so that splits beyond the first do not pay.
    for (int x = 0; x < 200; ++x) {
      bool const isOdd = x % 10 == 3;
      text += std::string((x < 100) != isOdd ? "a," : "b,") + std::to_string(x) + '\n';
    }
    return text;
  }());

  EXPECT_EQ(RunSmall({"--target", "y", "--validation", "cross", "--prune", "--sequence", tall}),
            ExitDone);

  EXPECT_THAT(Out(), HasSubstr("\n  1) x <= 99.5  100  10  a  (0.9000 0.1000) *\n"
                               "  2) x > 99.5  100  10  b  (0.1000 0.9000) *\n"));
  EXPECT_THAT(Out(), HasSubstr("\nRisk, measured by cross-validation in 10 folds\n"));
  EXPECT_THAT(Out(), HasSubstr("  <- this tree\n"));
}

TEST_F(GrowtreeTest, TestsOnTheSampleThatTheDataGive) {
  std::string const cases = folder_.Write("sampled.csv",
                                          "y,x,part\n"
                                          "a,1,0\na,2,0\nb,3,0\nb,4,0\n"
                                          "a,1,1\nb,2,1\nb,4,1\nb,4,NA\n");

  EXPECT_EQ(RunSmall({"--target", "y", "--sample", "part", "--gains", "b", "--details", cases}),
            ExitDone);

  EXPECT_EQ(Err(), "growtree: 1 case is left out: column \"part\" is missing there\n");
  EXPECT_THAT(Out(), StartsWith("Classification tree of y on 4 cases of " + cases +
                                ", tested on 3, by 1 predictor\n"));
  EXPECT_THAT(Out(), HasSubstr("\nRisk, measured on the test sample\n"));
  EXPECT_THAT(Out(), HasSubstr("\n1  1  \n0  1  Risk"));
  EXPECT_THAT(Out(), HasSubstr("\nGains: b, test sample\n"));
  EXPECT_THAT(Out(), HasSubstr("\n  test cases: a 1, b 2\n"));
}

TEST_F(GrowtreeTest, SaysWhatIsLeftOutOnTheErrorStream) {
  std::string const cases = folder_.Write("cases.csv",
                                          "y,x,c,n\n"
                                          "1,1,u,1\n2,2,v,1\nNA,3,w,1\n4,NaN,u,0\n5,5,v,2\n");

  EXPECT_EQ(RunSmall({"--target", "y", "--frequency-weight", "n", "--max-categories", "1", cases}),
            ExitDone);

  EXPECT_THAT(Err(), HasSubstr("growtree: column \"x\": NaN counts as missing (1 times, first in "
                               "line 5)\n"));
  EXPECT_THAT(Err(), HasSubstr("growtree: 1 case is left out: column \"y\" is missing there\n"));
  EXPECT_THAT(Err(), HasSubstr("growtree: 1 case is left out: column \"n\" is missing, zero or "
                               "negative there\n"));
  EXPECT_THAT(Err(), HasSubstr("\"c\""));  // has more categories than it may have
}

TEST_F(GrowtreeTest, WritesPredictionsAndDrawings) {
  EXPECT_EQ(RunSmall({"--target", "kind", "--predictors", "x", "--predictions", Path("p.csv"),
                      "--dot", Path("t.dot"), cases_}),
            ExitDone);

  EXPECT_EQ(folder_.Read("p.csv"),
            "row,node,prediction,probability of a,probability of b\n"
            "1,1,a,1,0\n2,1,a,1,0\n3,1,a,1,0\n4,2,b,0,1\n5,2,b,0,1\n6,2,b,0,1\n");
  EXPECT_THAT(folder_.Read("t.dot"), StartsWith("digraph tree {\n"));
  EXPECT_THAT(folder_.GetNames(), ElementsAre("cases.csv", "p.csv", "t.dot"));
  EXPECT_THAT(Out(), HasSubstr("1) x <= 3.5"));
}

TEST_F(GrowtreeTest, DrawsPicturesWhereGraphvizIsInstalled) {
  if (FindDot().empty()) GTEST_SKIP() << "Graphviz is not installed";

  EXPECT_EQ(RunSmall({"--target", "kind", "--svg", Path("t.svg"), cases_}), ExitDone);

  EXPECT_THAT(folder_.Read("t.svg"), HasSubstr("</svg>"));
}

TEST_F(GrowtreeTest, SaysThatGraphvizIsMissing) {
  testing::ChangedVariable const path("PATH", Path(""));

  EXPECT_EQ(RunSmall({"--target", "kind", "--svg", Path("t.svg"), cases_}), ExitBadInput);

  EXPECT_EQ(Err(), "growtree: --svg: needs the program dot of Graphviz, which is not installed\n");
  EXPECT_THAT(folder_.GetNames(), ElementsAre("cases.csv"));
}

TEST_F(GrowtreeTest, PrintsNothingWhenQuiet) {
  EXPECT_EQ(RunSmall({"--quiet", "--target", "kind", "--dot", Path("t.dot"), cases_}), ExitDone);

  EXPECT_EQ(Out(), "");
  EXPECT_THAT(folder_.GetNames(), ElementsAre("cases.csv", "t.dot"));
}

TEST_F(GrowtreeTest, WritesAResultToStandardOutput) {
  EXPECT_EQ(RunSmall({"--quiet", "--target", "mass", "--predictors", "x", "--delimiter", ",",
                      "--predictions", "-", cases_}),
            ExitDone);

  EXPECT_EQ(Out(), "row,node,prediction\n1,1,1\n2,1,1\n3,1,1\n4,2,5\n5,2,5\n6,2,5\n");
}

TEST_F(GrowtreeTest, GivesHelpAndVersion) {
  EXPECT_EQ(Run({"--help"}), ExitDone);
  EXPECT_THAT(Out(), HasSubstr("Usage: growtree"));

  EXPECT_EQ(Run({"--version"}), ExitDone);
  EXPECT_THAT(Out(), StartsWith("growtree "));
  EXPECT_EQ(Err(), "");
}

TEST_F(GrowtreeTest, RefusesArgumentsThatMakeNoSense) {
  EXPECT_EQ(Run({"--target", "kind", "--max-depth", "deep", cases_}), ExitUsage);

  EXPECT_EQ(Out(), "");
  EXPECT_EQ(Err(),
            "growtree: --max-depth: value \"deep\" is not a whole number of at least 0 "
            "(growtree --help says more)\n");
}

TEST_F(GrowtreeTest, RefusesWhatDoesNotFitInOneLine) {
  std::string const broken = folder_.Write("broken.csv", "y,x\n1,2\n3,four\nfive,6\n");
  std::string const noClass = folder_.Write("empty.csv", "y,x\nNA,1\n");
  struct {
    char const* name;
    Arguments arguments;
    std::string message;
  } const rows[] = {
      {"no file",
       {"--target", "y", "none.csv"},
       "none.csv: cannot be read: No such file or directory"},
      {"line break in its name",
       {"--target", "y", "no\nne.csv"},
       "no ne.csv: cannot be read: No such file or directory"},
      {"no such column", {"--target", "z", cases_}, "--target: there is no column \"z\""},
      {"no such class",
       {"--target", "kind", "--cost", "a,z=2", cases_},
       "--cost: \"z\" is no class of \"kind\""},
      {"no such class of gains",
       {"--target", "kind", "--gains", "z", cases_},
       "--gains: \"z\" is no class of \"kind\""},
      {"a word for a number",
       {"--target", "x", "--level", "y=continuous", broken},
       broken + ":4: column \"y\": value \"five\" is not a number"},
  };
  for (auto const& [name, arguments, message] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Run(arguments), ExitBadInput);
    EXPECT_EQ(Err(), "growtree: " + message + '\n');
    EXPECT_EQ(Out(), "");
  }
}

TEST_F(GrowtreeTest, RefusesDataWithoutCases) {
  std::string const empty = folder_.Write("empty.csv", "y,x\nNA,1\nNA,2\n");

  EXPECT_EQ(Run({"--target", "y", empty}), ExitBadInput);

  EXPECT_THAT(Err(), StartsWith("growtree: 2 cases are left out: column \"y\" is missing there\n"
                                "growtree: "));
}

TEST_F(GrowtreeTest, RefusesToOverwriteItsInput) {
  std::filesystem::create_symlink(cases_, Path("link.csv"));

  EXPECT_EQ(RunSmall({"--target", "kind", "--predictions", Path("link.csv"), cases_}),
            ExitBadInput);

  EXPECT_EQ(Err(), "growtree: --predictions: " + Path("link.csv") + ": is the file that is read\n");
  EXPECT_EQ(folder_.Read("cases.csv"), kCases);
}

TEST_F(GrowtreeTest, SaysBeforeTheWorkThatAResultCannotBeWritten) {
  std::string const file = Path("none/t.dot");

  EXPECT_EQ(RunSmall({"--target", "kind", "--dot", file, "not_even_read.csv"}), ExitBadInput);

  EXPECT_EQ(Err(), "growtree: --dot: " + file + ": cannot be written: No such file or directory\n");
}

TEST_F(GrowtreeTest, WritesNoResultWhereOneOfThemFails) {
  EXPECT_EQ(
      RunSmall({"--target", "kind", "--predictions", Path("p.csv"), "--dot", "/dev/full", cases_}),
      ExitBadInput);

  EXPECT_EQ(Err(), "growtree: --dot: /dev/full: cannot be written: No space left on device\n");
  EXPECT_EQ(Out(), "");
  EXPECT_THAT(folder_.GetNames(), ElementsAre("cases.csv"));
}

TEST_F(GrowtreeTest, SaysThatStandardOutputCannotBeWritten) {
  struct : std::streambuf {
  } full;  // takes nothing
  std::ostream out(&full);

  int const status =
      cli::Run(Small({"--target", "kind", cases_}), {in_, out, err_, 0, caughtSignal_});

  EXPECT_EQ(status, ExitBadInput);
  EXPECT_EQ(Err(), "growtree: standard output cannot be written\n");
  out.clear();
  err_.str("");
  EXPECT_EQ(cli::Run({"--help"}, {in_, out, err_, 0, caughtSignal_}), ExitBadInput);
  EXPECT_EQ(Err(), "growtree: standard output cannot be written\n");
}

TEST_F(GrowtreeTest, LeavesNothingBehindWheneverItIsInterrupted) {
  // A file that has been begun, of which nothing is on the disk yet.
  auto const isWriting = [this] {
    std::vector<std::string> const names = folder_.GetNames();
    return std::any_of(names.begin(), names.end(), [this](std::string const& name) {
      return name.starts_with(".growtree-") && std::filesystem::file_size(Path(name)) == 0;
    });
  };
  // It looks for a signal now and then: the first time, the second time, ... until it never comes.
  bool cameInWriting = false;
  for (int last = 0;; ++last) {
    SCOPED_TRACE(last);
    int numLooks = 0;
    bool came = false;
    caughtSignal_ = [&] {
      if (!came && numLooks++ == last) {
        came = true;
        cameInWriting = cameInWriting || isWriting();
      }
      return came ? SIGINT : 0;
    };
    int const status =
        RunSmall({"--target", "kind", "--validation", "cross", "--folds", "2", "--prune",
                  "--sequence", "--predictions", Path("p.csv"), "--dot", Path("t.dot"), cases_});
    if (!came) {
      EXPECT_EQ(status, ExitDone);
      EXPECT_GT(last, 5);
      EXPECT_TRUE(cameInWriting);
      break;
    }
    ASSERT_EQ(status, 128 + SIGINT);
    EXPECT_EQ(Err(), "");
    EXPECT_EQ(Out(), "");
    EXPECT_THAT(folder_.GetNames(), ElementsAre("cases.csv"));
  }
}

TEST_F(GrowtreeTest, StopsWritingToStandardOutputWhenInterrupted) {
  caughtSignal_ = [this] { return Out().empty() ? 0 : SIGINT; };

  EXPECT_EQ(
      RunSmall({"--quiet", "--target", "mass", "--predictors", "x", "--predictions", "-", cases_}),
      128 + SIGINT);

  EXPECT_EQ(Out(), "row,node,prediction\n");
}

TEST_F(GrowtreeTest, TakesAFailedPictureForAnInterruptionWhenThereIsOne) {
  folder_.Write("dot", "#!/bin/sh\nkill -INT $$\n");
  std::filesystem::permissions(Path("dot"), std::filesystem::perms::owner_all);
  testing::ChangedVariable const path("PATH", Path(""));
  Arguments const arguments = Small({"--target", "kind", "--svg", Path("t.svg"), cases_});

  EXPECT_EQ(Run(arguments), ExitBadInput);
  EXPECT_THAT(Err(), StartsWith("growtree: --svg: no picture: "));

  // The signal is seen only after the picture was asked for.
  folder_.Write("dot", "#!/bin/sh\n: > \"" + Path("asked") + "\"\nexit 1\n");
  caughtSignal_ = [this] { return std::filesystem::exists(Path("asked")) ? SIGINT : 0; };
  EXPECT_EQ(Run(arguments), 128 + SIGINT);
  EXPECT_EQ(Err(), "");
}

TEST_F(GrowtreeTest, DoesAllOrNothingWhereverMemoryEnds) {
  Arguments const arguments = Small({"--target", "kind", "--predictions", Path("p.csv"), "--dot",
                                     Path("t.dot"), "--threads", "1", cases_});
  ASSERT_EQ(Run(arguments), ExitDone);
  std::map<std::string, std::string> const whole = {
      {"cases.csv", kCases}, {"p.csv", folder_.Read("p.csv")}, {"t.dot", folder_.Read("t.dot")}};

  // There are thousands of allocations: each of the last ones fails, and some of the others.
  constexpr long kStep = 37;
  long const before = tree::testing::CountAllocations();
  Run(arguments);
  long const last = tree::testing::CountAllocations() - before;
  for (long nth = 1; nth <= last; nth += nth + 300 < last ? kStep : 1) {
    SCOPED_TRACE(nth);
    std::filesystem::remove(Path("p.csv"));
    std::filesystem::remove(Path("t.dot"));
    int status = ExitDone;
    {
      tree::testing::FailingAllocator const allocator(nth);
      status = Run(arguments);
    }
    std::vector<std::string> const names = folder_.GetNames();
    if (status == ExitDone) {
      EXPECT_THAT(names, ElementsAre("cases.csv", "p.csv", "t.dot"));
    } else {
      EXPECT_EQ(status, ExitNotGrown);
      EXPECT_THAT(Err(), StartsWith("growtree: "));
    }
    for (std::string const& name : names) {
      EXPECT_EQ(folder_.Read(name), whole.at(name));
    }
  }
}

}  // namespace
}  // namespace tree::cli
