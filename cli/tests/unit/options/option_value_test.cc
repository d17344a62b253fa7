#include "options/option_value.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace tree::cli {
namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();

OptionValue Value(std::string const& text) { return {"--x", text}; }

/// The message of the refusal; empty when there is none.
template <class Read>
std::string Refusal(Read read) {
  try {
    read();
  } catch (UsageError const& error) {
    return error.what();
  }
  return "";
}

TEST(OptionValue, ReadsWholeNumbers) {
  EXPECT_EQ(Value("0").WholeNumber(0, kMaxInt), 0);
  EXPECT_EQ(Value("2147483647").WholeNumber(0, kMaxInt), kMaxInt);
  EXPECT_EQ(Value("010").WholeNumber(0, kMaxInt), 10);
  EXPECT_EQ(Value("9000000000").WholeNumber(1L, std::numeric_limits<long>::max()), 9000000000L);
}

TEST(OptionValue, RefusesWhatIsNoWholeNumberInBounds) {
  for (char const* const text :
       {"", " 1", "1 ", "1.0", "1e3", "0x10", "+1", "-1", "2147483648", "99999999999999999999"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Refusal([&] { Value(text).WholeNumber(0, kMaxInt); }),
              std::string("--x: value \"") + text + "\" is not a whole number of at least 0");
  }
  EXPECT_EQ(Refusal([&] { Value("7").WholeNumber(1, 6); }),
            "--x: value \"7\" is not a whole number from 1 to 6");
}

TEST(OptionValue, ReadsNumbersInRanges) {
  EXPECT_EQ(Value("0").Number(kPercentage), 0.0);
  EXPECT_EQ(Value("100").Number(kPercentage), 100.0);
  EXPECT_EQ(Value("2.5e1").Number(kPercentage), 25.0);
}

TEST(OptionValue, RefusesNumbersOutOfRange) {
  constexpr NumberRange kInside = {0.0, 1.0, true, "a number between 0 and 1"};
  for (char const* const text : {"0", "1", "-0.5", "nan", "inf", "1e999", "0.5x", "", "half"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Refusal([&] { Value(text).Number(kInside); }),
              std::string("--x: value \"") + text + "\" is not a number between 0 and 1");
  }
  EXPECT_EQ(Refusal([&] { Value("100.5").Number(kPercentage); }),
            "--x: value \"100.5\" is not a number from 0 to 100");
}

TEST(OptionValue, FindsTheMeaningOfAWord) {
  constexpr Choice<int> kChoices[] = {{"one", 1}, {"two", 2}};

  EXPECT_EQ(Value("two").OneOf(kChoices), 2);
  EXPECT_EQ(Refusal([&] { Value("tw").OneOf(kChoices); }), "--x: value \"tw\" is none of one, two");
}

TEST(OptionValue, NamesTheOnlyWord) {
  constexpr Choice<int> kChoices[] = {{"one", 1}};

  EXPECT_EQ(Refusal([&] { Value("two").OneOf(kChoices); }), "--x: value \"two\" is not one");
}

}  // namespace
}  // namespace tree::cli
