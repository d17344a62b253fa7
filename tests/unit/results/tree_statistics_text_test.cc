#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "testing/fake_algorithm.h"
#include "testing/flush_recorder.h"
#include "testing/tree_builder.h"
#include "tree/results.h"
#include "tree/support.h"

// The text form of `TreeStatisticsImp`, byte by byte.

namespace tree {
namespace {

using testing::ANode;
using testing::FakeAlgorithm;
using testing::FlushRecorder;

TreeStatisticsImp TwoClasses() {
  TreeStatisticsImp statistics;
  statistics.SetIsCls(true);
  statistics.SetNumClasses(2);
  statistics.SetMisclassificationCount(0, 0, 50.0);
  statistics.SetMisclassificationCount(0, 1, 3.0);
  statistics.SetMisclassificationCount(1, 0, 4.0);
  statistics.SetMisclassificationCount(1, 1, 43.0);
  statistics.SetRisk(0.07);
  statistics.SetStdError(0.018);
  return statistics;
}

TreeStatisticsImp Regression() {
  TreeStatisticsImp statistics;
  statistics.SetRisk(12.5);
  statistics.SetStdError(0.75);
  return statistics;
}

std::string TextOf(TreeStatisticsImp const& statistics) {
  std::ostringstream stream;
  stream << statistics;
  return stream.str();
}

TEST(TreeStatisticsText, WritesAClassificationTreeWithItsMatrix) {
  EXPECT_EQ(TextOf(TwoClasses()),
            "Classification tree.\n"
            "Number of target classes = 2\n"
            "\n"
            "50  3  \n"
            "4  43  Risk estimate 0.07\n"
            "Standard error of risk estimate 0.018\n");
}

TEST(TreeStatisticsText, WritesARegressionTreeWithoutClasses) {
  EXPECT_EQ(TextOf(Regression()),
            "Regression tree.\n"
            "Risk estimate 12.5\n"
            "Standard error of risk estimate 0.75\n");
}

TEST(TreeStatisticsText, WritesNoMatrixForARegressionTreeThatHasOne) {
  TreeStatisticsImp statistics = TwoClasses();

  statistics.SetIsCls(false);

  EXPECT_EQ(TextOf(statistics),
            "Regression tree.\n"
            "Risk estimate 0.07\n"
            "Standard error of risk estimate 0.018\n");
}

TEST(TreeStatisticsText, WritesMissingCountsAfterACrossValidation) {
  FakeAlgorithm const algorithm(true, ANode(0).Classes({1.0, 2.0, 4.0}).Build());
  TreeStatisticsImp const statistics(algorithm, 0.5, 0.25, ValidationCrossValidation);
  std::ostringstream missing;
  missing << systemMissingValue();

  std::string const cell = missing.str() + "  ";
  std::string const row = cell + cell + cell;
  EXPECT_EQ(TextOf(statistics),
            "Classification tree.\n"
            "Number of target classes = 3\n"
            "\n" +
                row + "\n" + row + "\n" + row +
                "Risk estimate 0.5\n"
                "Standard error of risk estimate 0.25\n");
}

TEST(TreeStatisticsText, WritesTheRiskOnALineOfItsOwnWithoutClasses) {
  FakeAlgorithm const withoutTree(true);
  TreeStatisticsImp const statistics(withoutTree, 1.0, 0.0, ValidationNone);

  EXPECT_EQ(TextOf(statistics),
            "Classification tree.\n"
            "Number of target classes = 0\n"
            "Risk estimate 1\n"
            "Standard error of risk estimate 0\n");
}

TEST(TreeStatisticsText, WritesASingleClassAfterAnEmptyLine) {
  FakeAlgorithm const algorithm(true, ANode(0).Classes({0.5}).Build());
  TreeStatisticsImp const statistics(algorithm, 0.0, 0.0, ValidationNone);

  EXPECT_EQ(TextOf(statistics),
            "Classification tree.\n"
            "Number of target classes = 1\n"
            "\n"
            "0.5  Risk estimate 0\n"
            "Standard error of risk estimate 0\n");
}

TEST(TreeStatisticsText, WritesNumbersInTheFormattingOfTheStream) {
  std::ostringstream stream;
  stream << std::fixed << std::setprecision(3) << std::showpos;

  stream << TwoClasses();

  EXPECT_EQ(stream.str(),
            "Classification tree.\n"
            "Number of target classes = +2\n"
            "\n"
            "+50.000  +3.000  \n"
            "+4.000  +43.000  Risk estimate +0.070\n"
            "Standard error of risk estimate +0.018\n");
}

TEST(TreeStatisticsText, WritesNumbersInTheLocaleOfTheStream) {
  class CommaAndGroups : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::ostringstream stream;
  stream.imbue(std::locale(stream.getloc(), new CommaAndGroups));
  TreeStatisticsImp statistics = Regression();
  statistics.SetRisk(1234.5);

  stream << statistics;

  EXPECT_EQ(stream.str(),
            "Regression tree.\n"
            "Risk estimate 1.234,5\n"
            "Standard error of risk estimate 0,75\n");
}

TEST(TreeStatisticsText, LeavesTheFormattingOfTheStreamAsItWas) {
  std::ostringstream stream;
  stream << std::scientific << std::setprecision(9);
  std::ios_base::fmtflags const flags = stream.flags();

  stream << TwoClasses();

  EXPECT_EQ(stream.flags(), flags);
  EXPECT_EQ(stream.precision(), 9);
}

TEST(TreeStatisticsText, FlushesAtTheEndOfEveryLine) {
  FlushRecorder classification;
  FlushRecorder regression;

  classification << TwoClasses();
  regression << Regression();

  EXPECT_EQ(classification.GetTextsAtFlushes(),
            (std::vector<std::string>{
                "Classification tree.\n", "Classification tree.\nNumber of target classes = 2\n",
                "Classification tree.\nNumber of target classes = 2\n\n",
                "Classification tree.\nNumber of target classes = 2\n\n50  3  \n",
                "Classification tree.\nNumber of target classes = 2\n\n50  3  \n"
                "4  43  Risk estimate 0.07\n",
                "Classification tree.\nNumber of target classes = 2\n\n50  3  \n"
                "4  43  Risk estimate 0.07\nStandard error of risk estimate 0.018\n"}));
  EXPECT_EQ(regression.GetTextsAtFlushes(),
            (std::vector<std::string>{
                "Regression tree.\n", "Regression tree.\nRisk estimate 12.5\n",
                "Regression tree.\nRisk estimate 12.5\nStandard error of risk estimate 0.75\n"}));
}

TEST(TreeStatisticsText, ReturnsTheStream) {
  std::ostringstream stream;

  std::ostream& returned = stream << Regression();

  EXPECT_EQ(&returned, &stream);
}

TEST(TreeStatisticsText, IsWrittenByAnOperatorOfTheNamespace) {
  std::ostringstream stream;

  tree::operator<<(stream, Regression());

  EXPECT_EQ(stream.str(), TextOf(Regression()));
}

}  // namespace
}  // namespace tree
