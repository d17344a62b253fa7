#include "output/svg.h"

#include <sys/stat.h>

#include <memory>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/environment.h"
#include "cli_testing/scratch_folder.h"
#include "cli_testing/trees.h"
#include "output/draw_tree.h"
#include "output/output_error.h"

namespace tree::cli {
namespace {

using testing::ChangedVariable;
using ::testing::HasSubstr;
using testing::ScratchFolder;

/// A program named dot that does what the lines say.
std::string FakeDot(ScratchFolder const& folder, std::string const& lines) {
  std::string const program = folder.Write("dot", "#!/bin/sh\n" + lines);
  ::chmod(program.c_str(), 0755);
  return program;
}

std::string Refusal(std::string const& dot) {
  try {
    MakeSvg(dot, "digraph tree {}\n");
  } catch (OutputError const& error) {
    return error.what();
  }
  return "";
}

TEST(Svg, IsWhatTheProgramMakesOfTheDrawing) {
  ScratchFolder const folder;
  std::string const dot = FakeDot(folder, "echo $1\ncat\n");

  EXPECT_EQ(MakeSvg(dot, "digraph tree {}\n"), "-Tsvg\ndigraph tree {}\n");
}

TEST(Svg, MayBeLong) {
  ScratchFolder const folder;
  std::string const drawing(300000, 'x');

  EXPECT_EQ(MakeSvg(FakeDot(folder, "cat\n"), drawing), drawing);
}

TEST(Svg, GivesTheFirstLineOfWhatTheProgramComplainsOf) {
  ScratchFolder const folder;
  std::string const dot = FakeDot(folder, "echo syntax error >&2\necho more >&2\nexit 1\n");

  EXPECT_EQ(Refusal(dot), "no picture: " + dot + " failed: syntax error");
}

TEST(Svg, RefusesAProgramThatCannotBeRun) {
  EXPECT_EQ(Refusal("/nowhere/dot"), "no picture: No such file or directory");
}

TEST(Svg, FindsTheProgramInTheFoldersOfThePath) {
  ScratchFolder const empty;
  ScratchFolder const folder;
  std::string const dot = FakeDot(folder, "");

  ChangedVariable const path("PATH", "::" + empty.Path("") + ":" + folder.Path(".") + ":/bin");

  EXPECT_EQ(FindDot(), folder.Path(".") + "/dot");
}

TEST(Svg, FindsNothingWhereItIsNotInstalled) {
  ScratchFolder const folder;
  folder.Write("dot", "no program");

  ChangedVariable const path("PATH", folder.Path(""));

  EXPECT_EQ(FindDot(), "");
}

TEST(Svg, IsMadeOfAnyTreeWhereTheProgramIsInstalled) {
  std::string const dot = FindDot();
  if (dot.empty()) GTEST_SKIP() << "Graphviz is not installed";
  TreeNames names = testing::PenguinNames();
  names.target.labels = {"<&>\"\\\n", ""};
  names.predictors[testing::kFlipper].name = "]]>&amp;'";
  std::unique_ptr<NodeImp> const root = testing::ClassTree();
  std::ostringstream drawing;
  DrawTree(drawing, ShownTree(*root, names, testing::ClassSettings()));

  std::string const svg = MakeSvg(dot, drawing.str());

  EXPECT_THAT(svg, HasSubstr("</svg>"));
  EXPECT_THAT(svg, HasSubstr(">&lt;&amp;&gt;&quot;\\\xEF\xBF\xBD<"));
}

}  // namespace
}  // namespace tree::cli
