#include "options/label_reader.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::cli {
namespace {

using ::testing::ElementsAre;

TEST(LabelReader, ReadsLabelsUpToTheirMarks) {
  LabelReader reader("red=1,blue=2");

  EXPECT_EQ(reader.Next('='), "red");
  EXPECT_TRUE(reader.HasMore());
  EXPECT_EQ(reader.Next(','), "1");
  EXPECT_TRUE(reader.HasMore());
  EXPECT_EQ(reader.GetRest(), "blue=2");
  EXPECT_EQ(reader.Next('='), "blue");
  EXPECT_EQ(reader.Next(','), "2");
  EXPECT_FALSE(reader.HasMore());
  EXPECT_EQ(reader.GetRest(), "");
}

TEST(LabelReader, KeepsMarksThatEndNothing) {
  LabelReader reader("a,b=1");

  EXPECT_EQ(reader.Next('='), "a,b");
}

TEST(LabelReader, KnowsThatAMarkAtTheEndIsFollowedByAnEmptyLabel) {
  LabelReader reader("a,");

  EXPECT_EQ(reader.Next(','), "a");
  EXPECT_TRUE(reader.HasMore());
  EXPECT_EQ(reader.Next(','), "");
  EXPECT_FALSE(reader.HasMore());
}

TEST(LabelReader, SplitsLists) {
  struct {
    char const* name;
    char const* text;
    std::vector<std::string> labels;
  } const rows[] = {
      {"one", "a", {"a"}},
      {"several", "a,b,c", {"a", "b", "c"}},
      {"nothing", "", {""}},
      {"blanks around", " a ,\tb\t, c d ", {"a", "b", "c d"}},
      {"blanks only", "  ,a", {"", "a"}},
      {"comma in quotes", R"("no, never",yes)", {"no, never", "yes"}},
      {"doubled quotes", R"("say ""no""",b)", {R"(say "no")", "b"}},
      {"blanks in quotes", R"( " a " , b)", {" a ", "b"}},
      {"empty in quotes", R"("",b)", {"", "b"}},
      {"a quote inside", R"(5" pipe,b)", {R"(5" pipe)", "b"}},
  };
  for (auto const& [name, text, labels] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(LabelsOf(text), labels);
  }
}

TEST(LabelReader, RefusesQuotesThatAreMisplacedOrNeverClosed) {
  for (char const* const text : {R"(")", R"("a)", R"("a"")", R"("a"b)", R"("a" b,c)"}) {
    SCOPED_TRACE(text);
    EXPECT_THROW(LabelsOf(text), MisplacedQuote);
  }
}

}  // namespace
}  // namespace tree::cli
