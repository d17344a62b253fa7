#include "output/names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli_testing/credit_data.h"

namespace tree::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Names, AreThoseOfTheColumns) {
  grow::CaseRoles roles;
  roles.target = 0;
  roles.predictors = {3, 1};

  TreeNames const names = NamesOf(testing::CreditData(), roles);

  EXPECT_EQ(names.target.name, "class");
  EXPECT_THAT(names.target.labels, ElementsAre("bad", "fair", "good"));
  ASSERT_EQ(names.predictors.size(), 2u);
  EXPECT_EQ(names.predictors[0].name, "rating");
  EXPECT_THAT(names.predictors[0].labels, ElementsAre("low", "high"));
  EXPECT_EQ(names.predictors[1].name, "amount");
  EXPECT_THAT(names.predictors[1].labels, IsEmpty());
}

TEST(Names, GiveCodesWithoutALabelByNumber) {
  VariableNames const variable = {"x", {"a", "b"}};

  EXPECT_EQ(LabelOf(variable, 0.0), "a");
  EXPECT_EQ(LabelOf(variable, 1.0), "b");
  EXPECT_EQ(LabelOf(variable, 2.0), "2");
  EXPECT_EQ(LabelOf(variable, -1.0), "-1");
  EXPECT_EQ(LabelOf(variable, 0.5), "0.5");
  EXPECT_EQ(LabelOf({"y"}, 0.0), "0");
}

TEST(Names, AreShownAsTheyAreUnlessTheyWouldBeMisread) {
  struct {
    char const* name;
    std::string text;
    char const* shown;
  } const rows[] = {
      {"a word", "Dream", "Dream"},
      {"words", "real estate", "real estate"},
      {"letters beyond ASCII", "Troms\xC3\xB8", "Troms\xC3\xB8"},
      {"a quote inside", "5\" pipe", "5\" pipe"},
      {"nothing", "", R"("")"},
      {"blanks around", " a", R"(" a")"},
      {"blank at the end", "a ", R"("a ")"},
      {"a comma", "a,b", R"("a,b")"},
      {"a quote first", "\"a", R"("\"a")"},
      {"a backslash", "a\\b", R"("a\\b")"},
      {"line breaks", "a\r\nb\tc", R"("a\r\nb\tc")"},
      {"control characters", std::string("a\0\x1B\x7F", 4), R"("a\x00\x1b\x7f")"},
  };
  for (auto const& [name, text, shown] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Shown(text), shown);
  }
}

}  // namespace
}  // namespace tree::cli
