#include "tree/score/scorer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "testing/failing_allocator.h"
#include "testing/tree_builder.h"

namespace tree::score {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using tree::testing::ANode;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Node 1 over 2 (up to 40 in predictor 0) and 3, which is over 4 (up to 1.5 in predictor 1) and 5.
/// What is missing goes to node 3 and stays there.
std::unique_ptr<NodeImp> MakeTree() {
  return ANode(1)
      .SplitAt(0, 40.0, ANode(2).Classes({3.0, 1.0}, 0),
               ANode(3)
                   .SplitAt(1, 1.5, ANode(4).Classes({0.0, 4.0}, 1), ANode(5).Classes({1.0, 1.0}))
                   .Classes({1.0, 5.0}, 1))
      .Dumb(1)
      .Classes({4.0, 6.0}, 1)
      .Build();
}

std::vector<std::uint32_t> FindIds(Scorer const& scorer, Cases const& cases) {
  std::vector<std::uint32_t> ids(cases.GetNumCases());
  Answers answers;
  answers.ids = ids.data();
  scorer.Score(cases, answers);
  return ids;
}

template <class Call>
std::string CatchError(Call call) {
  try {
    call();
  } catch (InputError const& error) {
    return error.what();
  }
  return "none";
}

double const kRows[] = {40.0, 0.0, std::nextafter(40.0, 50.0), 1.5, 50.0, 1.6};

TEST(Scorer, TellsAllThatNodesSayOfTheirCases) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  std::uint32_t positions[3];
  std::uint32_t ids[3];
  double predictions[3];
  double probabilities[6];

  scorer.Score(Cases::OfRows(kRows, 3, 2), {positions, ids, predictions, probabilities});

  EXPECT_THAT(ids, ElementsAre(2, 4, 5));
  EXPECT_THAT(predictions, ElementsAre(0.0, 1.0, 0.0));
  EXPECT_THAT(probabilities, ElementsAre(0.75, 0.25, 0.0, 1.0, 0.5, 0.5));
  for (int place = 0; place < 3; ++place) {
    EXPECT_LT(positions[place], scorer.GetNumPositions());
    EXPECT_EQ(scorer.GetId(positions[place]), ids[place]);
    EXPECT_EQ(scorer.GetPrediction(positions[place]), predictions[place]);
    EXPECT_EQ(scorer.GetProbabilities(positions[place])[1], probabilities[2 * place + 1]);
  }
}

TEST(Scorer, TellsItsMeasures) {
  auto const root = MakeTree();

  Scorer const scorer = Scorer::FromTree(*root);

  EXPECT_EQ(scorer.GetNumNodes(), 5U);
  EXPECT_EQ(scorer.GetDepth(), 2U);
  EXPECT_EQ(scorer.GetNumPredictors(), 2U);
  EXPECT_EQ(scorer.GetNumClasses(), 2U);
  EXPECT_TRUE(scorer.HasPredictions());
}

TEST(Scorer, KeepsCasesThatNoRuleCanPlaceAtTheirNode) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  double const missing = systemMissingValue();
  double const rows[] = {missing, missing, missing, 1.0};

  EXPECT_THAT(FindIds(scorer, Cases::OfRows(rows, 2, 2)), ElementsAre(3, 4));
}

// Node 1 sends code 0 to 2 and code 31 to 3; else predictor 1 sends code 31 to 2 and code 2 to 3,
// and then predictor 2 values up to 0.5 to 3 and those above to 2. Node 3 sends values up to 0 of
// predictor 2 to 4; else, where it is missing, predictor 0 sends code 31 to 5.
TEST(Scorer, AsksSurrogatesOfEitherKindForEitherKindOfRule) {
  struct Case {
    char const* name;
    double values[3];
    std::uint32_t id;
  };
  double const missing = systemMissingValue();
  Case const cases[] = {
      {"a code of the rule", {0.0, 2.0, 0.5}, 2},
      {"minus zero", {-0.0, 2.0, 0.5}, 2},
      {"the highest code of the rule", {31.0, 31.0, 1.0}, 5},
      {"the highest code of the rule, then lower", {31.0, 31.0, -1.0}, 4},
      {"a code without a child", {1.0, 31.0, 0.0}, 2},
      {"a code beyond those that fit", {32.0, 2.0, 0.0}, 4},
      {"a code beyond all", {64.0, 2.0, 1.0}, 5},
      {"a fraction", {0.5, 31.0, 0.0}, 2},
      {"a negative code", {-1.0, 31.0, 0.0}, 2},
      {"not a number", {kNan, 2.0, 0.0}, 4},
      {"infinity", {kInfinity, 31.0, 0.0}, 2},
      {"a value beyond all integers", {1e300, 31.0, 0.0}, 2},
      {"no code of the surrogate either", {1.0, 0.0, 0.5}, 5},
      {"no code of the surrogate either, above", {1.0, 0.0, 0.6}, 2},
      {"a surrogate's code beyond those that fit", {1.0, 63.0, 0.6}, 2},
      {"nothing", {missing, missing, missing}, 1},
      {"only what a cut's surrogate knows", {31.0, 0.0, missing}, 5},
      {"nothing at the cut", {7.0, 2.0, missing}, 3},
  };
  auto rule = std::make_unique<NSplitRule>(0, 40);
  rule->SetCatMapping(0, 0);
  rule->SetCatMapping(31, 1);
  auto byCode = std::make_unique<NSplitRule>(1, 40);
  byCode->SetCatMapping(31, 0);
  byCode->SetCatMapping(2, 1);
  auto reversed = std::make_unique<OSplitRule>(missing, 2);
  reversed->SetCutPoint(0.5);
  reversed->SetReverse();
  auto ofCut = std::make_unique<NSplitRule>(0, 32);
  ofCut->SetCatMapping(31, 1);
  auto const root =
      ANode(1)
          .SplitBy(std::move(rule), ANode(2),
                   ANode(3).SplitAt(2, 0.0, ANode(4), ANode(5)).Surrogate(std::move(ofCut)))
          .Surrogate(std::move(byCode))
          .Surrogate(std::move(reversed))
          .Build();
  Scorer const scorer = Scorer::FromTree(*root);
  for (Case const& each : cases) {
    SCOPED_TRACE(each.name);

    EXPECT_EQ(root->DropObservationThroughTree(each.values, nullptr)->GetId(), each.id);
    EXPECT_THAT(FindIds(scorer, Cases::OfRows(each.values, 1, 3)), ElementsAre(each.id));
    EXPECT_EQ(scorer.GetId(scorer.FindPosition(each.values)), each.id);
  }
}

TEST(Scorer, TakesNanForAValueAboveAllOthers) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  double const rows[] = {kNan, kNan, kInfinity, -kInfinity, -kInfinity, kNan};

  EXPECT_THAT(FindIds(scorer, Cases::OfRows(rows, 3, 2)), ElementsAre(5, 4, 2));
}

TEST(Scorer, TakesNanForNoValueWhereToldSo) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  float const rows[] = {std::nanf(""), std::nanf(""), 41.0F, 1.5F};

  EXPECT_THAT(FindIds(scorer, Cases::OfRows(rows, 2, 2).WithNan(NanMeaning::kMissing)),
              ElementsAre(3, 4));
}

TEST(Scorer, ReadsBitmapsFromTheLowestBitOn) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  std::int32_t const ages[] = {50, 50, 50};
  float const heights[] = {1.0F, 2.0F, 2.0F};
  std::uint8_t const bits[] = {0b0100'0000, 0b0000'0001};  // from bit 6 on: 1, 0, 1
  Column const columns[] = {Column(ages), Column(heights).WithValidity(bits, 6)};

  EXPECT_THAT(FindIds(scorer, Cases::OfColumns(columns, 2, 3)), ElementsAre(4, 3, 5));
}

// More predictors, and then more cases, than are copied at a time.
TEST(Scorer, ReadsColumnsOfManyKinds) {
  constexpr std::size_t kNumCases = 1000;
  std::vector<double> doubles;
  std::vector<float> floats;
  std::vector<std::int32_t> codes;
  std::vector<std::uint32_t> expected;
  for (std::size_t row = 0; row < kNumCases; ++row) {
    doubles.push_back(static_cast<double>(row));
    floats.push_back(static_cast<float>(row % 10));
    codes.push_back(static_cast<std::int32_t>(row % 3));
    bool const isLow = row <= 499;
    expected.push_back(isLow ? (row % 3 == 1 ? 5 : 4) : (row % 10 <= 4 ? 6 : 7));
  }
  for (int const last : {2, 63, 64, 200}) {
    SCOPED_TRACE(last);
    auto rule = std::make_unique<NSplitRule>(1, 3);
    for (int code = 0; code < 3; ++code) rule->SetCatMapping(code, code == 1 ? 1 : 0);
    auto const root = ANode(1)
                          .SplitAt(0, 499.0, ANode(2).SplitBy(std::move(rule), ANode(4), ANode(5)),
                                   ANode(3).SplitAt(last, 4.0, ANode(6), ANode(7)))
                          .Build();
    std::vector<Column> columns(static_cast<std::size_t>(last) + 1);
    columns[0] = Column(doubles.data());
    columns[1] = Column(codes.data());
    columns.back() = Column(floats.data());
    Scorer const scorer = Scorer::FromTree(*root);

    EXPECT_EQ(FindIds(scorer, Cases::OfColumns(columns.data(), columns.size(), kNumCases)),
              expected);
  }
}

TEST(Scorer, ReadsColumnsBackwards) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  double const ages[] = {30.0, 50.0, 50.0};
  double const heights[] = {0.0, 1.0, 2.0};
  Column const columns[] = {Column(ages + 2, -1), Column(heights + 2, -1)};

  EXPECT_THAT(FindIds(scorer, Cases::OfColumns(columns, 2, 3)), ElementsAre(5, 4, 2));
}

TEST(Scorer, AnswersForASelection) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  std::size_t const selection[] = {2, 0, 2, 1};
  std::uint32_t ids[4];
  Answers answers;
  answers.ids = ids;
  ScoreOptions options;
  options.selection = Selection{selection, 4};

  scorer.Score(Cases::OfRows(kRows, 3, 2), answers, options);

  EXPECT_THAT(ids, ElementsAre(5, 2, 5, 4));
}

TEST(Scorer, AnswersForNoneWithAnEmptySelection) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  std::uint32_t ids[] = {77, 77, 77};
  Answers answers;
  answers.ids = ids;
  ScoreOptions options;
  options.selection = Selection{};

  scorer.Score(Cases::OfRows(kRows, 3, 2), answers, options);

  EXPECT_THAT(ids, ElementsAre(77, 77, 77));
}

TEST(Scorer, DoesNotNeedColumnsThatTheTreeDoesNotAskFor) {
  auto const root =
      ANode(1)
          .SplitAt(2, 1.0, ANode(2).Regression(1.0, 2.5), ANode(3).Regression(1.0, 3.5))
          .Build();
  Scorer const scorer = Scorer::FromTree(*root);
  float const values[] = {0.0F, 2.0F};
  Column const columns[] = {Column(), Column(), Column(values)};

  EXPECT_THAT(FindIds(scorer, Cases::OfColumns(columns, 3, 2)), ElementsAre(2, 3));
}

TEST(Scorer, DoesNotNeedSuchColumnsForCasesThatHaveEndedEither) {
  auto const root =
      ANode(1)
          .SplitAt(1, 1.0, ANode(2),
                   ANode(3).SplitAt(1, 2.0, ANode(4), ANode(5).SplitAt(1, 3.0, ANode(6), ANode(7))))
          .Build();
  Scorer const scorer = Scorer::FromTree(*root);
  double const doubles[] = {0.0, 3.5, 2.0, 3.0};
  float const floats[] = {0.0F, 3.5F, 2.0F, 3.0F};
  std::int32_t const codes[] = {0, 4, 2, 3};
  for (Column const& column : {Column(doubles), Column(floats), Column(codes)}) {
    Column const columns[] = {Column(), column};

    EXPECT_THAT(FindIds(scorer, Cases::OfColumns(columns, 2, 4)), ElementsAre(2, 7, 4, 6));
  }
}

TEST(Scorer, ScoresByATreeOfOneNode) {
  auto const root = ANode(9).Regression(5.0, 2.5).Build();
  Scorer const scorer = Scorer::FromTree(*root);
  double const anything[] = {1.0, 2.0};

  EXPECT_EQ(scorer.GetNumPredictors(), 0U);
  EXPECT_EQ(scorer.GetSize(), 112U + 16U);
  EXPECT_THAT(FindIds(scorer, Cases::OfRows(anything, 2, 1)), ElementsAre(9, 9));
  EXPECT_THAT(FindIds(scorer, Cases::OfRows(static_cast<double const*>(nullptr), 2, 0)),
              ElementsAre(9, 9));
  EXPECT_EQ(scorer.GetId(scorer.FindPosition(anything)), 9U);
  EXPECT_EQ(scorer.GetPrediction(scorer.FindPosition(anything)), 2.5);
  EXPECT_EQ(scorer.GetProbabilities(0), nullptr);
}

TEST(Scorer, NeedsNoRowsWhereTheTreeAsksForNone) {
  auto const root = ANode(7).Classes({1.0, 3.0}, 1).Build();
  std::uint32_t ids[600] = {};  // some blocks
  Answers answers;
  answers.ids = ids;

  Scorer::FromTree(*root).Score(Cases::OfRows(static_cast<double const*>(nullptr), 600, 3),
                                answers);

  EXPECT_THAT(ids, Each(7U));
}

TEST(Scorer, ScoresNoCases) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);

  EXPECT_NO_THROW(scorer.Score(Cases::OfRows(static_cast<float const*>(nullptr), 0, 2), {}));
}

TEST(Scorer, FindsZeroOfEitherSignMissingWhereZeroIs) {
  auto rule = std::make_unique<OSplitRule>(0.0, 0);
  rule->SetCutPoint(5.0);
  auto const root = ANode(1).SplitBy(std::move(rule), ANode(2), ANode(3)).Dumb(1).Build();
  Scorer const scorer = Scorer::FromTree(*root);
  double const rows[] = {0.0, -0.0, 1.0};
  float const floats[] = {0.0F, -0.0F, 1.0F};

  EXPECT_THAT(FindIds(scorer, Cases::OfRows(rows, 3, 1)), ElementsAre(3, 3, 2));
  EXPECT_THAT(FindIds(scorer, Cases::OfRows(floats, 3, 1)), ElementsAre(3, 3, 2));
  EXPECT_EQ(scorer.GetId(scorer.FindPosition(rows + 1)), 3U);
  EXPECT_EQ(scorer.GetId(scorer.FindPosition(floats + 1)), 3U);
}

TEST(Scorer, ComparesFloatsAsTheDoublesThatTheyAre) {
  // The float nearest to 0.1 is above it.
  auto const root = ANode(1).SplitAt(0, 0.1, ANode(2), ANode(3)).Build();
  Scorer const scorer = Scorer::FromTree(*root);
  float const values[] = {0.1F, std::nextafter(0.1F, 0.0F)};

  EXPECT_THAT(FindIds(scorer, Cases::OfRows(values, 2, 1)), ElementsAre(3, 2));
}

TEST(Scorer, IsMadeAgainFromItsBlock) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);

  Scorer const copied = Scorer::FromBlock(scorer.GetBlock(), scorer.GetSize());
  Scorer const inPlace = Scorer::OverBlock(scorer.GetBlock(), scorer.GetSize());

  EXPECT_NE(copied.GetBlock(), scorer.GetBlock());
  EXPECT_EQ(inPlace.GetBlock(), scorer.GetBlock());
  EXPECT_THAT(FindIds(copied, Cases::OfRows(kRows, 3, 2)), ElementsAre(2, 4, 5));
  EXPECT_THAT(FindIds(inPlace, Cases::OfRows(kRows, 3, 2)), ElementsAre(2, 4, 5));
}

TEST(Scorer, GivesTheSameBlockEveryTime) {
  auto const root = MakeTree();
  Scorer const first = Scorer::FromTree(*root);
  Scorer const second = Scorer::FromTree(*root);

  ASSERT_EQ(first.GetSize(), second.GetSize());
  EXPECT_EQ(std::memcmp(first.GetBlock(), second.GetBlock(), first.GetSize()), 0);
}

TEST(Scorer, LivesOnInItsCopies) {
  auto const root = MakeTree();
  auto original = std::make_unique<Scorer const>(Scorer::FromTree(*root));
  Scorer copy(*original);
  Scorer assigned = Scorer::FromTree(*root->GetChildImp(0));
  assigned = *original;

  original.reset();

  EXPECT_EQ(copy.GetBlock(), assigned.GetBlock());
  EXPECT_THAT(FindIds(copy, Cases::OfRows(kRows, 3, 2)), ElementsAre(2, 4, 5));
}

TEST(Scorer, RefusesWhatItCannotScore) {
  auto const root = MakeTree();
  Scorer const scorer = Scorer::FromTree(*root);
  Column const columns[] = {Column(kRows), Column()};
  std::size_t const selection[] = {1, 3};
  ScoreOptions beyond;
  beyond.selection = Selection{selection, 2};
  ScoreOptions nowhere;
  nowhere.selection = Selection{nullptr, 2};
  ScoreOptions negative;
  negative.numThreads = -1;
  Cases const rows = Cases::OfRows(kRows, 3, 2);
  Cases const narrow = Cases::OfRows(kRows, 6, 1);
  Cases const nothing = Cases::OfRows(static_cast<double const*>(nullptr), 3, 2);
  Cases const halved = Cases::OfColumns(columns, 2, 3);

  EXPECT_EQ(CatchError([&] { scorer.Score(narrow, {}); }),
            "the cases have 1 predictors, and the tree asks for 2");
  EXPECT_EQ(CatchError([&] { scorer.Score(nothing, {}); }), "the cases have no values");
  EXPECT_EQ(CatchError([&] { scorer.Score(halved, {}); }),
            "column 1 has no values, and the tree asks for it");
  EXPECT_EQ(CatchError([&] { scorer.Score(rows, {}, beyond); }),
            "case 3 is selected, and there are 3");
  EXPECT_EQ(CatchError([&] { scorer.Score(rows, {}, nowhere); }), "the selection has no numbers");
  EXPECT_EQ(CatchError([&] { scorer.Score(rows, {}, negative); }),
            "the number of threads is negative");
}

TEST(Scorer, RefusesPredictionsAndProbabilitiesThatTheTreeDoesNotHave) {
  auto const root = ANode(1).SplitAt(0, 1.0, ANode(2).Regression(1.0, 2.0), ANode(3)).Build();
  Scorer const scorer = Scorer::FromTree(*root);
  double numbers[3];
  Answers predictions;
  predictions.predictions = numbers;
  Answers probabilities;
  probabilities.probabilities = numbers;
  Cases const rows = Cases::OfRows(kRows, 3, 2);

  EXPECT_FALSE(scorer.HasPredictions());
  EXPECT_TRUE(std::isnan(scorer.GetPrediction(scorer.FindPosition(kRows))));
  EXPECT_THAT(CatchError([&] { scorer.Score(rows, predictions); }), HasSubstr("no predictions"));
  EXPECT_THAT(CatchError([&] { scorer.Score(rows, probabilities); }),
              HasSubstr("no class probabilities"));
}

TEST(Scorer, HasNoProbabilitiesWhereNodesDifferInTheirClasses) {
  auto const root =
      ANode(1).SplitAt(0, 1.0, ANode(2).Classes({1.0}, 0), ANode(3).Classes({1.0, 2.0}, 1)).Build();
  root->SetClsInfo(new ClsInfoImp, TrainingSample);

  Scorer const scorer = Scorer::FromTree(*root);

  EXPECT_EQ(scorer.GetNumClasses(), 0U);
  EXPECT_TRUE(scorer.HasPredictions());
  EXPECT_EQ(scorer.GetPrediction(scorer.FindPosition(kRows)), 1.0);
}

TEST(Scorer, LeavesNothingBehindWhereMemoryRunsOut) {
  auto const root = MakeTree();
  long const before = tree::testing::CountLiveAllocations();

  long const numFailures = tree::testing::WithEveryAllocationFailing([&] {
    Scorer const scorer = Scorer::FromTree(*root);
    Scorer::FromBlock(scorer.GetBlock(), scorer.GetSize());
  });

  EXPECT_GT(numFailures, 5);
  EXPECT_EQ(tree::testing::CountLiveAllocations(), before);
}

}  // namespace
}  // namespace tree::score
