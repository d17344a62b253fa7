#include "tree/grow/csv.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

double const kMissing = systemMissingValue();

CsvData Read(std::string const& text, CsvOptions const& options = {}) {
  std::istringstream stream(text);
  return std::move(*ReadCsv(stream, "cases.csv", options));
}

/// The message with which a text is refused; empty when it is read.
std::string Refusal(std::string const& text, CsvOptions const& options = {}) {
  try {
    Read(text, options);
  } catch (InputError const& error) {
    return error.what();
  }
  return "";
}

std::vector<double> Values(CsvData const& csv, int column) {
  double const* const values = csv.data.GetColumn(column).values;
  return {values, values + csv.data.GetNumCases()};
}

ColumnDescription const& Description(CsvData const& csv, int column) {
  return csv.data.GetColumn(column).description;
}

TEST(Csv, ReadsNumbersAndCategories) {
  CsvData const csv = Read("mass,species\n1.5,Gentoo\n-2,Adelie\n3e2,Gentoo\n");

  ASSERT_EQ(csv.data.GetNumColumns(), 2);
  EXPECT_EQ(Description(csv, 0).name, "mass");
  EXPECT_EQ(Description(csv, 0).level, global::MeasurementContinuous);
  EXPECT_THAT(Description(csv, 0).labels, IsEmpty());
  EXPECT_THAT(Values(csv, 0), ElementsAre(1.5, -2, 300));
  EXPECT_EQ(Description(csv, 1).name, "species");
  EXPECT_EQ(Description(csv, 1).level, global::MeasurementNominal);
  EXPECT_THAT(Description(csv, 1).labels, ElementsAre("Adelie", "Gentoo"));
  EXPECT_THAT(Values(csv, 1), ElementsAre(1, 0, 1));
  EXPECT_THAT(csv.remarks, IsEmpty());
}

TEST(Csv, GivesCategoriesCodesThatDoNotDependOnTheOrderOfRows) {
  CsvData const forward = Read("x\nb\nc\na\n");
  CsvData const backward = Read("x\na\nc\nb\n");

  EXPECT_THAT(Description(forward, 0).labels, ElementsAre("a", "b", "c"));
  EXPECT_EQ(Description(forward, 0).labels, Description(backward, 0).labels);
  EXPECT_THAT(Values(forward, 0), ElementsAre(1, 2, 0));
}

TEST(Csv, UnderstandsEveryLineEnding) {
  for (std::string const lineBreak : {"\n", "\r\n", "\r"}) {
    SCOPED_TRACE(testing::PrintToString(lineBreak));
    CsvData const csv = Read("x,y" + lineBreak + "1,2" + lineBreak + "3,4" + lineBreak);

    EXPECT_THAT(Values(csv, 0), ElementsAre(1, 3));
    EXPECT_THAT(Values(csv, 1), ElementsAre(2, 4));
  }
}

TEST(Csv, NeedsNoLineBreakAtTheEnd) { EXPECT_THAT(Values(Read("x\n1\n2"), 0), ElementsAre(1, 2)); }

TEST(Csv, SkipsAByteOrderMark) { EXPECT_EQ(Description(Read("\xEF\xBB\xBFx\n1\n"), 0).name, "x"); }

TEST(Csv, SkipsBlankLinesAndBlanksAroundFields) {
  CsvData const csv = Read("\n x , y \n\n 1 ,\ta\n  \n2, b\n\n");

  EXPECT_EQ(Description(csv, 0).name, "x");
  EXPECT_THAT(Values(csv, 0), ElementsAre(1, 2));
  EXPECT_THAT(Description(csv, 1).labels, ElementsAre("a", "b"));
}

TEST(Csv, TakesQuotedFieldsAsTheyAre) {
  CsvData const csv = Read("\"the, x\",y\n\"1\",\"a \"\"b\"\"\nc\"\n2,\" d\"\n");

  EXPECT_EQ(Description(csv, 0).name, "the, x");
  EXPECT_THAT(Values(csv, 0), ElementsAre(1, 2));
  EXPECT_THAT(Description(csv, 1).labels, ElementsAre(" d", "a \"b\"\nc"));
}

TEST(Csv, SeparatesFieldsByTheDelimiterGiven) {
  CsvOptions options;
  options.delimiter = ';';

  EXPECT_THAT(Description(Read("x;y\n1;a,b\n", options), 1).labels, ElementsAre("a,b"));
}

TEST(Csv, ReadsEmptyFieldsAndTheTextsGivenAsMissing) {
  CsvOptions options;
  options.missingTexts = {"?", "unknown"};

  EXPECT_THAT(Values(Read("x,y\n1,\nNA,a\n"), 0), ElementsAre(1, kMissing));
  EXPECT_THAT(Values(Read("x,y\n1,\nNA,a\n"), 1), ElementsAre(kMissing, 0));
  EXPECT_THAT(Values(Read("x\n1\n?\nunknown\n", options), 0), ElementsAre(1, kMissing, kMissing));
  EXPECT_THAT(Description(Read("x\nNA\n?\n", options), 0).labels, ElementsAre("NA"));
}

TEST(Csv, ReadsAColumnWithoutAnyValueAsContinuous) {
  CsvData const csv = Read("x,y\n,1\nNA,2\n");

  EXPECT_EQ(Description(csv, 0).level, global::MeasurementContinuous);
  EXPECT_THAT(Values(csv, 0), ElementsAre(kMissing, kMissing));
}

TEST(Csv, ReadsNumbersInEveryNotation) {
  struct Case {
    char const* text;
    double value;
  };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  std::vector<Case> const cases = {
      {"0", 0.0},         {"-0", 0.0},        {"+7", 7.0},          {".5", 0.5},  {"5.", 5.0},
      {"1e-3", 0.001},    {"1E+3", 1000.0},   {"-1.25e2", -125.0},  {"0.1", 0.1}, {"1e308", 1e308},
      {"5e-324", 5e-324}, {"inf", kInfinity}, {"-INF", -kInfinity},
  };

  for (Case const& row : cases) {
    SCOPED_TRACE(row.text);
    EXPECT_THAT(Values(Read(std::string("x\n") + row.text + "\n"), 0), ElementsAre(row.value));
  }
}

TEST(Csv, TakesWhatOnlyLooksLikeANumberForACategory) {
  for (char const* text : {"1a", "1,5", "0x10", "--1", "+-1", "+", "-", "1 2", "1e", "e5"}) {
    SCOPED_TRACE(text);
    CsvOptions options;
    options.delimiter = ';';
    CsvData const csv = Read(std::string("x\n") + text + "\n", options);

    EXPECT_EQ(Description(csv, 0).level, global::MeasurementNominal);
    EXPECT_THAT(Description(csv, 0).labels, ElementsAre(text));
  }
}

TEST(Csv, CountsNaNAsMissingAndSaysSo) {
  CsvData const csv = Read("x,y\n1,1\nNaN,1\n\nnan,1\n");

  EXPECT_THAT(Values(csv, 0), ElementsAre(1, kMissing, kMissing));
  EXPECT_THAT(csv.remarks, ElementsAre("column \"x\": NaN counts as missing (2 times, first in "
                                       "line 3)"));
}

TEST(Csv, InfersANominalColumnFromAWordAmongItsFirstThousandValues) {
  std::string text = "x\n";
  for (int row = 0; row < 999; ++row) text += "7\n";
  text += "word\n8\n";

  CsvData const csv = Read(text);

  EXPECT_EQ(Description(csv, 0).level, global::MeasurementNominal);
  EXPECT_THAT(Description(csv, 0).labels, ElementsAre("7", "8", "word"));
  EXPECT_EQ(Values(csv, 0)[999], 2.0);
  EXPECT_EQ(Values(csv, 0)[1000], 1.0);
}

TEST(Csv, RefusesAWordAfterAThousandNumbers) {
  std::string text = "x\n";
  for (int row = 0; row < 1000; ++row) text += "7\n";
  text += "word\n";

  EXPECT_EQ(Refusal(text), "cases.csv:1002: column \"x\": value \"word\" is not a number");
}

TEST(Csv, InfersFromRowsWhetherTheyHaveAValueOrNot) {
  std::string text = "x,y\n";
  for (int row = 0; row < 1000; ++row) text += ",1\n";
  text += "word,1\n";

  EXPECT_EQ(Refusal(text), "cases.csv:1002: column \"x\": value \"word\" is not a number");
}

TEST(Csv, TakesLevelsThatAreGiven) {
  CsvOptions options;
  options.levels = {{"zip", global::MeasurementNominal}, {"rank", global::MeasurementOrdinal}};

  CsvData const csv = Read("zip,rank\n0815,3\n4711,1\n", options);

  EXPECT_EQ(Description(csv, 0).level, global::MeasurementNominal);
  EXPECT_THAT(Description(csv, 0).labels, ElementsAre("0815", "4711"));
  EXPECT_EQ(Description(csv, 1).level, global::MeasurementOrdinal);
  EXPECT_THAT(Values(csv, 1), ElementsAre(3, 1));
}

TEST(Csv, OrdersCategoriesAsTheyAreGiven) {
  CsvOptions options;
  options.categories = {{"cut", {"Fair", "Good", "Ideal"}}};

  CsvData const csv = Read("cut\nIdeal\nFair\n", options);

  EXPECT_EQ(Description(csv, 0).level, global::MeasurementOrdinal);
  EXPECT_THAT(Description(csv, 0).labels, ElementsAre("Fair", "Good", "Ideal"));
  EXPECT_THAT(Values(csv, 0), ElementsAre(2, 0));
}

TEST(Csv, KeepsTheLevelOfAColumnWithGivenCategories) {
  CsvOptions options;
  options.categories = {{"island", {"Dream", "Biscoe"}}};
  options.levels = {{"island", global::MeasurementNominal}};

  CsvData const csv = Read("island\nBiscoe\n", options);

  EXPECT_EQ(Description(csv, 0).level, global::MeasurementNominal);
  EXPECT_THAT(Values(csv, 0), ElementsAre(1));
}

TEST(Csv, SaysWhereATextCannotBeUsed) {
  CsvOptions ordinal;
  ordinal.levels = {{"x", global::MeasurementOrdinal}};
  CsvOptions categories;
  categories.categories = {{"x", {"low", "high"}}};
  CsvOptions unknown;
  unknown.levels = {{"z", global::MeasurementNominal}};
  CsvOptions unknownCategories;
  unknownCategories.categories = {{"z", {"a"}}};
  struct Case {
    char const* name;
    char const* text;
    CsvOptions options;
    char const* message;
  };
  std::vector<Case> const cases = {
      {"nothing", "", {}, "cases.csv:1: the file is empty"},
      {"blank lines", "\n \n", {}, "cases.csv:1: the file is empty"},
      {"names only", "x,y\n", {}, "cases.csv:1: no row follows the first line"},
      {"no name", "x,,y\n1,2,3\n", {}, "cases.csv:1: column 2 has no name"},
      {"same name", "x,y,x\n1,2,3\n", {}, "cases.csv:1: column \"x\" appears twice"},
      {"name not UTF-8", "\xE4\n1\n", {}, "cases.csv:1: the name of column 1 is not UTF-8"},
      {"value not UTF-8",
       "x\na\nM\xFCller\n",
       {},
       "cases.csv:3: column \"x\": value \"M\xFCller\" is not UTF-8"},
      {"short row",
       "x,y\n1,2\n3\n",
       {},
       "cases.csv:3: column \"y\": no value: the row has 1 fields, the first line 2"},
      {"long row",
       "x,y\n1,2,a,b\n",
       {},
       "cases.csv:2: value \"a\": no column: the row has 4 fields, the first line 2"},
      {"quote in a field",
       "x\n1\na\"b\n",
       {},
       "cases.csv:3: a quote is misplaced or never closed in the row that begins here"},
      {"open quote",
       "x\n1\n\"a\nb\n",
       {},
       "cases.csv:3: a quote is misplaced or never closed in the row that begins here"},
      {"too large", "x\n1e999\n", {}, "cases.csv:2: column \"x\": value \"1e999\" is out of range"},
      {"word", "x\nlow\n", ordinal, "cases.csv:2: column \"x\": value \"low\" is not a number"},
      {"after a field of two lines", "y,x\n\"a\nb\",1\nc,low\n", ordinal,
       "cases.csv:4: column \"x\": value \"low\" is not a number"},
      {"after CR LF", "x\r\n1\r\n\r\nlow\r\n", ordinal,
       "cases.csv:4: column \"x\": value \"low\" is not a number"},
      {"other category", "x\nlow\nmiddle\n", categories,
       "cases.csv:3: column \"x\": value \"middle\" is none of the categories"},
      {"level of no column", "x\n1\n", unknown, "cases.csv:1: column \"z\" is missing"},
      {"categories of no column", "x\n1\n", unknownCategories,
       "cases.csv:1: column \"z\" is missing"},
  };

  for (Case const& row : cases) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Refusal(row.text, row.options), row.message);
  }
}

/// Hears of progress and ends it when it is told to.
class Listener : public ProgressListener {
 public:
  explicit Listener(int numReports) : numReports_(numReports) {}
  bool Report(double fraction, char const* activity) noexcept override {
    fractions.push_back(fraction);
    EXPECT_STREQ(activity, "reading the data");
    return static_cast<int>(fractions.size()) < numReports_;
  }

  std::vector<double> fractions;

 private:
  int numReports_;
};

/// A file of more than two blocks, with line breaks of two bytes.
class CsvFile : public testing::Test {
 protected:
  static constexpr int kNumRows = 250'000;

  // Tests of other names may run at the same time.
  CsvFile()
      : file_(testing::TempDir() + "tree_grow_" +
              testing::UnitTest::GetInstance()->current_test_info()->name() + ".csv") {
    std::ofstream stream(file_, std::ios::binary);
    stream << "x,y\r\n";
    for (int row = 0; row < kNumRows; ++row) stream << row << ",a" << row % 3 << "\r\n";
  }
  ~CsvFile() override { std::filesystem::remove(file_); }

  std::string file_;
};

TEST_F(CsvFile, IsReadAcrossBlocks) {
  std::optional<CsvData> const csv = ReadCsv(file_);

  ASSERT_EQ(csv->data.GetNumCases(), static_cast<std::size_t>(kNumRows));
  double const* const x = csv->data.GetColumn(0).values;
  double const* const y = csv->data.GetColumn(1).values;
  for (int row = 0; row < kNumRows; ++row) {
    ASSERT_EQ(x[row], row);
    ASSERT_EQ(y[row], row % 3);
  }
}

TEST_F(CsvFile, NamesTheRightLineAfterManyBlocks) {
  std::ofstream(file_, std::ios::binary | std::ios::app) << "word,a1\r\n";

  try {
    ReadCsv(file_);
    FAIL() << "read a word as a number";
  } catch (InputError const& error) {
    EXPECT_EQ(error.what(), file_ + ":250002: column \"x\": value \"word\" is not a number");
  }
}

TEST_F(CsvFile, TellsHowFarItHasCome) {
  Listener listener(1000);
  CsvOptions options;
  options.listener = &listener;

  ASSERT_TRUE(ReadCsv(file_, options).has_value());

  ASSERT_GE(listener.fractions.size(), 3U);
  EXPECT_TRUE(std::is_sorted(listener.fractions.begin(), listener.fractions.end()));
  EXPECT_GT(listener.fractions.front(), 0.0);
  EXPECT_LT(listener.fractions.front(), 0.5);
  EXPECT_EQ(listener.fractions.back(), 1.0);
}

TEST_F(CsvFile, IsNotReadOnWhenTheListenerHasHeardEnough) {
  Listener listener(2);
  CsvOptions options;
  options.listener = &listener;

  EXPECT_FALSE(ReadCsv(file_, options).has_value());
  EXPECT_EQ(listener.fractions.size(), 2U);
}

TEST(Csv, SaysWhyAFileCannotBeRead) {
  try {
    ReadCsv("no/such/file.csv");
    FAIL() << "read a file that does not exist";
  } catch (InputError const& error) {
    EXPECT_STREQ(error.what(), "no/such/file.csv: cannot be read: No such file or directory");
  }
  EXPECT_THROW(ReadCsv(testing::TempDir()), InputError);
}

}  // namespace
}  // namespace tree::grow
