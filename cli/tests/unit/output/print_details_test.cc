#include "output/print_details.h"

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
using ::testing::Not;
using ::testing::StartsWith;

std::string Printed(NodeImp const& root, TreeNames const& names, AlgSettings const& settings) {
  std::ostringstream out;
  PrintDetails(out, ShownTree(root, names, settings));
  return out.str();
}

TEST(PrintDetails, TellsAllThatANodeOfAClassificationTreeHolds) {
  EXPECT_THAT(Printed(*ClassTree(), PenguinNames(), ClassSettings()),
              StartsWith("node 0: root\n"
                         "  size: 100 of 100 (100.0 %)\n"
                         "  prediction: Adelie, loss 40\n"
                         "  cases: Adelie 60, Gentoo 40\n"
                         "  probabilities: Adelie 0.6000, Gentoo 0.4000\n"
                         "  splits:\n"
                         "    flipper <= 206.5 | > 206.5, improvement 0.25\n"
                         "    size <= small | > small, improvement 0.125\n"
                         "  surrogates:\n"
                         "    island = Biscoe | = Dream,Torgersen, association 0.75\n"
                         "  children: node 1 | node 2\n"
                         "  other cases: node 1, probability 0.6000\n"
                         "\n"
                         "node 1: flipper <= 206.5\n"));
}

TEST(PrintDetails, EndsWithTheStatisticsOfATerminalNode) {
  EXPECT_THAT(Printed(*ClassTree(), PenguinNames(), ClassSettings()),
              ::testing::EndsWith("\n"
                                  "node 2: flipper > 206.5\n"
                                  "  size: 40 of 100 (40.0 %)\n"
                                  "  prediction: Gentoo, loss 6\n"
                                  "  cases: Adelie 6, Gentoo 34\n"
                                  "  probabilities: Adelie 0.1500, Gentoo 0.8500\n"));
}

TEST(PrintDetails, TellsAllThatANodeOfARegressionTreeHolds) {
  EXPECT_THAT(Printed(*NumberTree(), MassNames(), RCartSettingsImp(CoreSettingsImp())),
              StartsWith("node 0: root\n"
                         "  size: 10 of 10 (100.0 %)\n"
                         "  prediction: 4000\n"
                         "  cases: 10, mean 4000, standard deviation 801.5, from 2700 to 6300\n"
                         "  splits:\n"
                         "    size <= medium | > medium, improvement 375000\n"
                         "  children: node 1 | node 2\n"
                         "  other cases: node 2, probability 0.6000\n"));
}

TEST(PrintDetails, TellsOfTheTestSampleWhereThereIsOne) {
  std::unique_ptr<NodeImp> const classes = ClassTree();
  EXPECT_THAT(Printed(*classes, PenguinNames(), ClassSettings()), Not(HasSubstr("test cases")));

  auto* const info = new ClsInfoImp(*classes->GetClsInfoImp(TrainingSample));
  info->SetClassCount(1, 7.0);
  classes->SetClsInfo(info, TestSample);
  EXPECT_THAT(Printed(*classes, PenguinNames(), ClassSettings()),
              HasSubstr("  test cases: Adelie 60, Gentoo 7\n"));

  std::unique_ptr<NodeImp> const numbers = NumberTree();
  numbers->SetRegInfo(new RegInfoImp(*numbers->GetRegInfoImp(TrainingSample)), TestSample);
  numbers->GetChildImp(0)->SetRegInfo(new RegInfoImp(), TestSample);
  std::string const text = Printed(*numbers, MassNames(), RCartSettingsImp(CoreSettingsImp()));
  EXPECT_THAT(text, HasSubstr("  test cases: 10, mean 4000, standard deviation 801.5, from 2700 "
                              "to 6300\n"));
  EXPECT_THAT(text, HasSubstr("  test cases: 0\n"));
}

TEST(PrintDetails, SaysNothingOfADumbRuleThatIsNotThere) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  root->GetCompetitorImp(0)->SetDumbRule(-1, -1.0);
  root->GetChildImp(0)->GetCompetitorImp(0)->SetDumbRule(-1, -1.0);

  EXPECT_THAT(Printed(*root, PenguinNames(), ClassSettings()), Not(HasSubstr("other cases")));
}

TEST(PrintDetails, NamesTheStatisticsOfTests) {
  std::unique_ptr<NodeImp> const root = ClassTree();
  root->GetCompetitorImp(0)->SetStatistic(grow::SplitTestStatistic, 12.5);
  root->GetCompetitorImp(0)->SetStatistic(grow::SplitLogPValue, -7.25);

  EXPECT_THAT(Printed(*root, PenguinNames(), ClassSettings()),
              HasSubstr(", improvement 0.25, test statistic 12.5, log of p-value -7.25\n"));
}

}  // namespace
}  // namespace tree::cli
