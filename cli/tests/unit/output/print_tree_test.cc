#include "output/print_tree.h"

#include <memory>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/trees.h"

namespace tree::cli {
namespace {

using namespace testing;  // NOLINT(google-build-using-namespace): what the trees are made of
using ::testing::HasSubstr;

std::string Printed(NodeImp const& root, TreeNames const& names, AlgSettings const& settings) {
  std::ostringstream out;
  PrintTree(out, ShownTree(root, names, settings));
  return out.str();
}

TEST(PrintTree, WritesALinePerNodeOfAClassificationTree) {
  EXPECT_EQ(Printed(*ClassTree(), PenguinNames(), ClassSettings()),
            "node) rule, cases, loss, prediction (probabilities: Adelie, Gentoo)\n"
            "      * marks a terminal node\n"
            "\n"
            "0) root  100  40  Adelie  (0.6000 0.4000)\n"
            "  1) flipper <= 206.5  60  6  Adelie  (0.9000 0.1000)\n"
            "    3) island = Biscoe  50  0  Adelie  (1.0000 0.0000) *\n"
            "    4) island = Dream,Torgersen  10  4  Gentoo  (0.4000 0.6000) *\n"
            "  2) flipper > 206.5  40  6  Gentoo  (0.1500 0.8500) *\n");
}

TEST(PrintTree, WritesALinePerNodeOfARegressionTree) {
  EXPECT_EQ(Printed(*NumberTree(), MassNames(), RCartSettingsImp(CoreSettingsImp())),
            "node) rule, cases, deviance, mean\n"
            "      * marks a terminal node\n"
            "\n"
            "0) root  10  5781620  4000\n"
            "  1) size <= medium  4  0  3250 *\n"
            "  2) size > medium  6  0  4500 *\n");
}

TEST(PrintTree, AlignsIdsOfDifferentLength) {
  std::unique_ptr<NodeImp> const root =
      tree::testing::ANode(0)
          .SplitBy(CutAt(kFlipper, 1.0), ANumberNode(9, 1.0, 1.0), ANumberNode(10, 1.0, 2.0))
          .Regression(2.0, 1.5)
          .Build();

  EXPECT_THAT(Printed(*root, MassNames(), RCartSettingsImp(CoreSettingsImp())),
              HasSubstr(" 0) root  2  0  1.5\n"
                        "   9) flipper <= 1  1  0  1 *\n"
                        "  10) flipper > 1  1  0  2 *\n"));
}

TEST(PrintTree, KeepsEveryNodeOnItsLineWhateverTheLabels) {
  TreeNames names = PenguinNames();
  names.target.labels[0] = "Ade\nlie";
  names.predictors[kFlipper].name = "flip,per";

  std::string const text = Printed(*ClassTree(), names, ClassSettings());

  EXPECT_THAT(text, HasSubstr("(probabilities: \"Ade\\nlie\", Gentoo)\n"));
  EXPECT_THAT(text, HasSubstr("  2) \"flip,per\" > 206.5  40  6  Gentoo  (0.1500 0.8500) *\n"));
}

}  // namespace
}  // namespace tree::cli
