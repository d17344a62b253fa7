#include "output/draw_tree.h"

#include <memory>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/trees.h"

namespace tree::cli {
namespace {

using namespace testing;  // NOLINT(google-build-using-namespace): what the trees are made of
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::string Drawn(NodeImp const& root, TreeNames const& names, AlgSettings const& settings) {
  std::ostringstream out;
  DrawTree(out, ShownTree(root, names, settings));
  return out.str();
}

std::string DrawnClasses(TreeNames const& names = PenguinNames()) {
  return Drawn(*ClassTree(), names, ClassSettings());
}

int CountOf(std::string const& part, std::string const& text) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST(DrawTree, DrawsABoxPerNodeAndAnEdgePerChild) {
  std::string const drawing = DrawnClasses();

  EXPECT_THAT(drawing, StartsWith("digraph tree {\n"));
  EXPECT_THAT(drawing, EndsWith("}\n"));
  for (char const* const id : {"0", "1", "2", "3", "4"}) {
    EXPECT_EQ(CountOf(std::string("\n  n") + id + " [label=<", drawing), 1) << id;
  }
  EXPECT_THAT(drawing, HasSubstr("\n  n0 -> n1 [label=<&#160;&lt;= 206.5&#160;>];\n"));
  EXPECT_THAT(drawing, HasSubstr("\n  n0 -> n2 [label=<&#160;&gt; 206.5&#160;>];\n"));
  EXPECT_THAT(drawing, HasSubstr("\n  n1 -> n4 [label=<&#160;= Dream, Torgersen&#160;>];\n"));
  EXPECT_EQ(CountOf(" -> ", drawing), 4);
}

TEST(DrawTree, SaysWhatANodePredictsAndHowLargeItIs) {
  std::string const drawing = DrawnClasses();

  EXPECT_THAT(drawing, HasSubstr("<b>Gentoo</b></td></tr><tr><td>40 cases, 40.0 %</td></tr>"));
  EXPECT_EQ(CountOf("<i>flipper</i>", drawing), 1);
  EXPECT_EQ(CountOf("<i>island</i>", drawing), 1);
}

TEST(DrawTree, DrawsBarsAsWideAsClassesAreProbable) {
  // of 120 points: 0.6 and 0.4 at the root, 1 and 0 at node 3
  std::string const drawing = DrawnClasses();

  EXPECT_THAT(drawing, HasSubstr("width=\"72\" height=\"9\" bgcolor=\"#0072b2\"></td>"
                                 "<td fixedsize=\"true\" width=\"48\" height=\"9\" "
                                 "bgcolor=\"#e69f00\"></td></tr>"));
  EXPECT_THAT(drawing, HasSubstr("<tr><td fixedsize=\"true\" width=\"120\" height=\"9\" "
                                 "bgcolor=\"#0072b2\"></td></tr>"));
}

TEST(DrawTree, FillsBarsThatProbabilitiesDoNotFill) {
  std::unique_ptr<NodeImp> const root = tree::testing::ANode(0).Classes({1.0, 1.0}, 0).Build();
  ClsInfoImp* const info = root->GetClsInfoImp(TrainingSample);
  info->SetClassProbability(0, 0.25);
  info->SetClassProbability(1, -1.0);

  EXPECT_THAT(Drawn(*root, PenguinNames(), ClassSettings()),
              HasSubstr("width=\"30\" height=\"9\" bgcolor=\"#0072b2\"></td>"
                        "<td fixedsize=\"true\" width=\"90\" height=\"9\"></td></tr>"));

  info->SetClassProbability(0, 3.0);
  info->SetClassProbability(1, 3.0);
  EXPECT_THAT(Drawn(*root, PenguinNames(), ClassSettings()),
              HasSubstr("<tr><td fixedsize=\"true\" width=\"120\" height=\"9\" "
                        "bgcolor=\"#0072b2\"></td></tr>"));
}

TEST(DrawTree, ExplainsTheColoursOfTheClasses) {
  EXPECT_THAT(DrawnClasses(), HasSubstr("bgcolor=\"#0072b2\"></td><td align=\"left\">Adelie</td>"));
  EXPECT_THAT(DrawnClasses(), HasSubstr("bgcolor=\"#e69f00\"></td><td align=\"left\">Gentoo</td>"));
}

TEST(DrawTree, ExplainsTheFirstTwentyOfManyClasses) {
  TreeNames names = PenguinNames();
  names.target.labels.clear();
  for (int index = 0; index < 25; ++index)
    names.target.labels.push_back("c" + std::to_string(index));

  std::string const drawing = DrawnClasses(names);

  EXPECT_THAT(drawing, HasSubstr(">c19</td></tr><tr><td></td><td align=\"left\">5 more</td>"));
  EXPECT_THAT(drawing, Not(HasSubstr("c20")));
}

TEST(DrawTree, ShowsTheStandardDeviationOfNumbers) {
  std::string const drawing =
      Drawn(*NumberTree(), MassNames(), RCartSettingsImp(CoreSettingsImp()));

  EXPECT_THAT(drawing, HasSubstr("<b>4000</b>"));
  EXPECT_THAT(drawing, HasSubstr("<tr><td>sd 801.5</td></tr>"));
  EXPECT_THAT(drawing, Not(HasSubstr("legend")));
  EXPECT_THAT(drawing, HasSubstr("n0 -> n1 [label=<&#160;&lt;= medium&#160;>];\n"));
}

TEST(DrawTree, WrapsLongListsOfCategories) {
  TreeNames names = PenguinNames();
  names.predictors[kIsland].labels = {"one", "the second of them", "the third of them"};

  EXPECT_THAT(DrawnClasses(names),
              HasSubstr("[label=<&#160;= the second of them,&#160;<br/>&#160;the third of them"
                        "&#160;>];\n"));
}

TEST(DrawTree, CountsWhatVeryLongListsLeaveOut) {
  TreeNames names = PenguinNames();
  auto rule = std::make_unique<NSplitRule>(kIsland, 30);
  for (int code = 0; code < 30; ++code) rule->SetCatMapping(code, code == 0 ? 0 : 1);
  names.predictors[kIsland].labels.assign(30, "a label of 20 letters");
  std::unique_ptr<NodeImp> const root =
      tree::testing::ANode(0)
          .SplitBy(std::move(rule), ANumberNode(1, 1.0, 1.0), ANumberNode(2, 1.0, 2.0))
          .Regression(2.0, 1.5)
          .Build();

  std::string const drawing = Drawn(*root, names, RCartSettingsImp(CoreSettingsImp()));

  EXPECT_THAT(drawing, HasSubstr("&#160;a label of 20 letters,&#160;<br/>&#160;25 more&#160;>];"));
  EXPECT_EQ(CountOf("<br/>", drawing), 4);
}

TEST(DrawTree, EscapesNamesAndLabels) {
  TreeNames names = PenguinNames();
  names.target.name = "<species>";
  names.target.labels[1] = "Gen\"too\" & co";
  names.predictors[kFlipper].name = "</td>";
  names.predictors[kIsland].labels[0] = "<b>";

  std::string const drawing = DrawnClasses(names);

  EXPECT_THAT(drawing, HasSubstr("<b>&lt;species&gt;</b>"));
  EXPECT_THAT(drawing, HasSubstr("<b>Gen&quot;too&quot; &amp; co</b>"));
  EXPECT_THAT(drawing, HasSubstr("<i>&lt;/td&gt;</i>"));
  EXPECT_THAT(drawing, HasSubstr("[label=<&#160;= &lt;b&gt;&#160;>]"));
}

TEST(DrawnText, HoldsNothingThatAPictureCannotHold) {
  constexpr char kReplacement[] = "\xEF\xBF\xBD";
  struct {
    char const* name;
    std::string text;
    std::string drawn;
  } const rows[] = {
      {"letters beyond ASCII", "Troms\xC3\xB8", "Troms\xC3\xB8"},
      {"nothing", "", "&quot;&quot;"},
      {"control character", "a\x01z", std::string("a") + kReplacement + "z"},
      {"line break", "a\nz", std::string("a") + kReplacement + "z"},
      {"zero", std::string("a\0z", 3), std::string("a") + kReplacement + "z"},
      {"delete", "a\x7Fz", std::string("a") + kReplacement + "z"},
      {"no character", "a\xEF\xBF\xBFz", std::string("a") + kReplacement + "z"},
      {"no UTF-8", "a\xFFz", std::string("a") + kReplacement + "z"},
      {"cut off", "a\xC3", std::string("a") + kReplacement},
      {"40 letters", std::string(40, 'x'), std::string(40, 'x')},
      {"41 letters", std::string(41, 'x'), std::string(40, 'x') + "..."},
      {"41 entities", std::string(41, '&'),
       [] {
         std::string text;
         for (int count = 0; count < 40; ++count) text += "&amp;";
         return text + "...";
       }()},
  };
  for (auto const& [name, text, drawn] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(DrawnText(text), drawn);
  }
}

}  // namespace
}  // namespace tree::cli
