#include "cart/surrogate_search.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "grow_testing/random_numbers.h"
#include "grow_testing/sample.h"

namespace tree::grow {
namespace {

using testing::ElementsAre;

/// The best surrogate by the first predictor; `childOf` is what the primary split does.
FoundSurrogate Search(Sample const& cases, ChildOfPlace const& childOf,
                      Form form = Form::kAsItComes) {
  PreparedSample sample(cases, form);
  CaseLists const lists = sample.MakeLists();
  SurrogateSearch::Placed placed{};
  for (std::uint32_t place = 0; place < childOf.size(); ++place) {
    if (childOf[place] != kNoChild) placed[childOf[place]] += lists.WeightAt(place);
  }
  SurrogateSearch search(sample.GetData(), lists, childOf, sample.GetWorkers());
  return search.Find(lists.GetRoot(), placed, 0);
}

Sample Cases(std::vector<double> const& values, bool nominal = false,
             std::vector<double> const& weights = {}) {
  return {.target = std::vector<double>(values.size()),
          .predictors = {{values, nominal}},
          .weights = weights};
}

template <class Test>
void InBothForms(Test const& test) {
  for (Form const form : {Form::kAsItComes, Form::kSorted}) {
    SCOPED_TRACE(form == Form::kSorted ? "sorted" : "coded");
    test(form);
  }
}

TEST(SurrogateSearch, FindsTheCutThatAgreesMost) {
  InBothForms([](Form form) {
    FoundSurrogate const found = Search(Cases({1, 2, 3, 4, 5, 6, 7}), {0, 0, 1, 0, 1, 1, 1}, form);

    // Majority 4 of 7; up to 4, 3 + 3 agree; up to 2, 2 + 4.
    EXPECT_EQ(found.cutPoint, 2.5) << "of equal cuts the lowest";
    EXPECT_FALSE(found.reversed);
    EXPECT_NEAR(found.association, (6.0 - 4.0) / 3.0, 1e-12);
  });
}

TEST(SurrogateSearch, FindsReversedCuts) {
  InBothForms([](Form form) {
    FoundSurrogate const found = Search(Cases({9, 8, 1, 2}), {0, 0, 1, 1}, form);

    EXPECT_EQ(found.cutPoint, 5.0);
    EXPECT_TRUE(found.reversed);
    EXPECT_EQ(found.association, 1.0);
  });
}

TEST(SurrogateSearch, FindsNothingThatIsNoBetterThanTheMajority) {
  InBothForms([](Form form) {
    EXPECT_EQ(Search(Cases({1, 2, 3, 4, 5}), {0, 1, 0, 1, 0}, form).association, 0.0);
    EXPECT_EQ(Search(Cases({1, 2, 3, 4}), {0, 0, 1, 0}, form).association, 0.0);
    EXPECT_EQ(Search(Cases({5, 5, 5, 5}), {0, 0, 1, 1}, form).association, 0.0);
    EXPECT_EQ(Search(Cases({1, 2, 3}), {0, 0, 0}, form).association, 0.0);
    EXPECT_EQ(Search(Cases({1, 2, 3}), {kNoChild, kNoChild, kNoChild}, form).association, 0.0);
  });
}

TEST(SurrogateSearch, CountsCasesWithoutAValueAsDisagreements) {
  InBothForms([](Form form) {
    FoundSurrogate const found =
        Search(Cases({1, 2, 3, 4, kMissing, kMissing}), {0, 0, 1, 1, 0, 1}, form);

    EXPECT_EQ(found.cutPoint, 2.5);
    EXPECT_NEAR(found.association, (4.0 - 3.0) / 3.0, 1e-12);
  });
}

TEST(SurrogateSearch, LeavesOutCasesThatThePrimarySplitDoesNotPlace) {
  InBothForms([](Form form) {
    FoundSurrogate const found =
        Search(Cases({1, 2, 3, 4, 5}), {0, 0, kNoChild, kNoChild, 1}, form);

    EXPECT_EQ(found.cutPoint, 3.5) << "between 2 and 5";
    EXPECT_EQ(found.association, 1.0);
  });
}

TEST(SurrogateSearch, CutsOnlyBetweenValues) {
  InBothForms([](Form form) {
    FoundSurrogate const found = Search(Cases({1, 2, 2, 2, 3}), {0, 0, kNoChild, 1, 1}, form);

    EXPECT_EQ(found.cutPoint, 1.5);
    EXPECT_NEAR(found.association, (3.0 - 2.0) / 2.0, 1e-12);
  });
}

TEST(SurrogateSearch, WeighsCases) {
  InBothForms([](Form form) {
    FoundSurrogate const found =
        Search(Cases({1, 2, 3, 4}, false, {1.0, 5.0, 1.0, 4.0}), {0, 1, 0, 1}, form);

    // Majority 9 of 11; up to 1, 10 agree.
    EXPECT_EQ(found.cutPoint, 1.5);
    EXPECT_NEAR(found.association, 0.5, 1e-12);
  });
}

TEST(SurrogateSearch, SendsEachCategoryWhereMostOfItGoes) {
  FoundSurrogate const found =
      Search(Cases({0, 0, 0, 3, 3, 5, 5, 9}, true), {0, 0, 1, 1, 1, 0, 1, kNoChild});

  // Category 5 is torn, and more cases go to child 1; of category 9 none is placed.
  EXPECT_THAT(found.childOfCode, ElementsAre(0, 1, 1, kNoChild));
  EXPECT_NEAR(found.association, (2.0 + 2.0 + 1.0 - 4.0) / 3.0, 1e-12);
}

TEST(SurrogateSearch, FindsNoCategoriesThatAreNoBetterThanTheMajority) {
  EXPECT_EQ(Search(Cases({0, 0, 1, 1}, true), {0, 1, 0, 1}).association, 0.0);
  EXPECT_EQ(Search(Cases({kMissing, kMissing}, true), {0, 1}).association, 0.0);
}

TEST(SurrogateSearch, DoesNotUsePredictorsThatMayNotSplit) {
  std::vector<double> codes(33);
  ChildOfPlace childOf(33);
  for (std::size_t index = 0; index < 33; ++index) {
    codes[index] = static_cast<double>(index);
    childOf[index] = static_cast<std::uint8_t>(index % 2);
  }

  EXPECT_EQ(Search(Cases(codes, true), childOf).association, 0.0);
}

TEST(SurrogateSearch, SearchesOnlyTheCasesOfTheNode) {
  InBothForms([](Form form) {
    PreparedSample sample(Cases({1, 2, 3, 4, 5, 6}), form);
    CaseLists lists = sample.MakeLists();
    WorkMemory<SortedCase> scratch;
    auto children = lists.DivideCases(lists.GetRoot(), {0, 1, 1, 1, 0, 1}, 2);
    lists.DividePredictor(lists.GetRoot(), 0, children, scratch);
    ChildOfPlace const childOf = {1, 1, 0, 0, 1, 1};  // cases 0 and 4, then 1, 2, 3 and 5
    SurrogateSearch search(sample.GetData(), lists, childOf, sample.GetWorkers());

    FoundSurrogate const found = search.Find(children[1], {2, 2}, 0);

    EXPECT_EQ(found.cutPoint, 3.5);
    EXPECT_EQ(found.association, 1.0);
  });
}

TEST(SurrogateSearch, SearchesMoreCasesThanItTakesAtATime) {
  constexpr std::size_t kSlice = kWorkPerPoll;
  std::vector<double> sorted(kSlice + 3);
  std::vector<double> coded(kSlice + 3);
  ChildOfPlace childOf(kSlice + 3);
  for (std::size_t index = 0; index < kSlice + 3; ++index) {
    sorted[index] = static_cast<double>(index);
    coded[index] = index < kSlice ? 1.0 : 3.0;
    childOf[index] = index < kSlice ? 1 : 0;
  }

  FoundSurrogate const bySorted = Search(Cases(sorted), childOf);
  FoundSurrogate const byCoded = Search(Cases(coded), childOf);

  EXPECT_EQ(bySorted.cutPoint, static_cast<double>(kSlice) - 0.5);
  EXPECT_TRUE(bySorted.reversed);
  EXPECT_EQ(bySorted.association, 1.0);
  EXPECT_EQ(byCoded.cutPoint, 2.0);
  EXPECT_EQ(byCoded.association, 1.0);
}

// ---- The slow way ----

struct RandomSplit {
  explicit RandomSplit(std::uint32_t seed, bool nominal) {
    RandomNumbers random(seed);
    std::size_t const count = 2 + random.Below(30);
    bool const weighted = random.Below(2) == 0;
    std::uint32_t const noise = 2 + random.Below(6);
    cases = Cases({}, nominal);
    for (std::size_t index = 0; index < count; ++index) {
      double const value = random.Below(8) == 0 ? kMissing : random.Below(8);
      std::uint32_t const child = random.Below(noise) == 0 ? random.Below(2) : value < 3 ? 0 : 1;
      cases.predictors[0].values.push_back(value);
      cases.target.push_back(0.0);
      if (weighted) cases.weights.push_back(random.Multiple(1.0, 5));
      childOf.push_back(random.Below(10) == 0 ? kNoChild : static_cast<std::uint8_t>(child));
    }
  }

  double WeightOf(std::size_t index) const {
    return cases.weights.empty() ? 1.0 : cases.weights[index];
  }
  /// The weight on which a split agrees that sends each value to a child, or -1.
  template <class Split>
  double AgreementOf(Split const& split) const {
    double agreement = 0.0;
    for (std::size_t index = 0; index < childOf.size(); ++index) {
      double const value = cases.predictors[0].values[index];
      if (childOf[index] == kNoChild || value == kMissing) continue;
      if (split(value) == childOf[index]) agreement += WeightOf(index);
    }
    return agreement;
  }
  double AssociationOf(double agreement) const {
    double placed[2] = {};
    for (std::size_t index = 0; index < childOf.size(); ++index) {
      if (childOf[index] != kNoChild) placed[childOf[index]] += WeightOf(index);
    }
    double const majority = std::max(placed[0], placed[1]);
    double const minority = std::min(placed[0], placed[1]);
    return minority > 0.0 ? std::max(0.0, (agreement - majority) / minority) : 0.0;
  }

  Sample cases;
  ChildOfPlace childOf;
};

TEST(SurrogateSearch, IsNotBeatenByAnyCutOfRandomCases) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomSplit const random(seed, false);
    double best = 0.0;
    for (double cut = -0.5; cut < 8.0; ++cut) {
      for (int const below : {0, 1}) {
        best = std::max(best, random.AgreementOf(
                                  [&](double value) { return value <= cut ? below : 1 - below; }));
      }
    }
    InBothForms([&](Form form) {
      FoundSurrogate const found = Search(random.cases, random.childOf, form);

      // A cut beside all values sends every case with a value to one child: the majority at best.
      EXPECT_NEAR(found.association, random.AssociationOf(best), 1e-12);
      if (!(found.association > 0.0)) return;
      double const agreement = random.AgreementOf(
          [&](double value) { return (value <= found.cutPoint) != found.reversed ? 0 : 1; });
      EXPECT_NEAR(random.AssociationOf(agreement), found.association, 1e-12);
    });
  }
}

TEST(SurrogateSearch, IsNotBeatenByAnyAssignmentOfRandomCategories) {
  for (std::uint32_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    RandomSplit const random(seed, true);
    double best = 0.0;
    for (std::uint32_t set = 0; set < 256; ++set) {
      best = std::max(best, random.AgreementOf([&](double value) {
        return static_cast<int>((set >> static_cast<std::uint32_t>(value)) & 1U);
      }));
    }

    FoundSurrogate const found = Search(random.cases, random.childOf);

    EXPECT_NEAR(found.association, random.AssociationOf(best), 1e-12);
    std::set<double> values(random.cases.predictors[0].values.begin(),
                            random.cases.predictors[0].values.end());
    values.erase(kMissing);
    std::vector<double> const byCode(values.begin(), values.end());
    double const agreement = random.AgreementOf([&](double value) {
      auto const code = std::find(byCode.begin(), byCode.end(), value) - byCode.begin();
      return static_cast<int>(found.childOfCode.at(static_cast<std::size_t>(code)));
    });
    EXPECT_NEAR(random.AssociationOf(agreement), found.association, 1e-12);
  }
}

}  // namespace
}  // namespace tree::grow
