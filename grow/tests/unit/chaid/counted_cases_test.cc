#include "chaid/counted_cases.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::grow {
namespace {

using ::testing::ElementsAre;

// Cases of classes 2 and 0, with frequencies 3 and 5 and weights 6 and 20.
constexpr std::uint16_t kClasses[] = {2, 0};

template <class Cases>
std::vector<std::int64_t> AddUp(Cases const& cases, std::size_t numEntries) {
  std::vector<std::int64_t> entries(numEntries);
  for (std::size_t index = 0; index < 2; ++index) {
    cases.Add(entries.data() + cases.EntryOf(index), index);
  }
  return entries;
}

TEST(SingleCases, CountOnceEach) {
  EXPECT_THAT(AddUp(SingleCases(kClasses), 3), ElementsAre(1, 0, 1));
}

TEST(RepeatedCases, CountAsOftenAsTheyAre) {
  std::int64_t const frequencies[] = {3, 5};

  EXPECT_THAT(AddUp(RepeatedCases(kClasses, frequencies), 3), ElementsAre(5, 0, 3));
}

TEST(WeightedCases, AddTheirWeightsBehindAllFrequencies) {
  FixedWeights const frequencies = {{3, 5}, 1.0};
  FixedWeights const weights = {{6, 20}, 1.0};

  EXPECT_THAT(AddUp(WeightedCases(kClasses, 3, frequencies, weights), 6),
              ElementsAre(5, 0, 3, 20, 0, 6));
}

TEST(WeightedCases, CountOnceEachWithoutFrequencies) {
  FixedWeights const once;
  FixedWeights const weights = {{6, 20}, 1.0};

  EXPECT_THAT(AddUp(WeightedCases(kClasses, 3, once, weights), 6), ElementsAre(1, 0, 1, 20, 0, 6));
}

TEST(NumberCases, AddTheirNumbersToOneEntry) {
  FixedNumbers const numbers = {{7, -2}, 0.0, 1.0};
  FixedWeights const frequencies = {{3, 5}, 1.0};
  FixedWeights const weights = {{6, 20}, 1.0};
  NumberCases const cases(numbers, frequencies, weights);
  NumberSums sums;
  NumberSums expected;
  expected.AddCase(3, 6, 7);
  expected.AddCase(5, 20, -2);

  for (std::size_t index = 0; index < 2; ++index) cases.Add(&sums + cases.EntryOf(index), index);

  EXPECT_TRUE(sums == expected);
}

}  // namespace
}  // namespace tree::grow
