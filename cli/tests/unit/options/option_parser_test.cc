#include "options/option_parser.h"

#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tree::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;

using Arguments = std::vector<std::string>;

/// Arguments that are complete, with others before them.
Arguments Complete(Arguments arguments) {
  arguments.insert(arguments.end(), {"--target", "y", "cases.csv"});
  return arguments;
}

Options Parsed(Arguments const& arguments) { return ParseArguments(Complete(arguments)).options; }

/// The message of the refusal; empty when there is none.
std::string Refusal(Arguments const& arguments) {
  try {
    ParseArguments(arguments);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "";
}

std::string RefusalOf(Arguments const& arguments) { return Refusal(Complete(arguments)); }

TEST(OptionParser, NeedsATargetAndAFileOnly) {
  ParsedArguments const parsed = ParseArguments({"--target", "y", "cases.csv"});

  EXPECT_EQ(parsed.text, "");
  Options const& options = parsed.options;
  EXPECT_EQ(options.file, "cases.csv");
  EXPECT_EQ(options.variables.target, "y");
  EXPECT_THAT(options.variables.predictors, IsEmpty());
  EXPECT_THAT(options.variables.excluded, IsEmpty());
  EXPECT_FALSE(options.variables.frequencyWeight.has_value());
  EXPECT_FALSE(options.variables.caseWeight.has_value());
  EXPECT_FALSE(options.variables.sample.has_value());
  EXPECT_EQ(options.csv.delimiter, ',');
  EXPECT_THAT(options.csv.missingTexts, ElementsAre("NA"));
  EXPECT_EQ(options.method, Method::kCart);
  EXPECT_FALSE(options.classes.criterion.has_value());
  EXPECT_FALSE(options.classes.priorType.has_value());
  EXPECT_FALSE(options.classes.alteredPriors);
  EXPECT_FALSE(options.stop.maxDepth.has_value());
  EXPECT_FALSE(options.rules.maxNumSurrogates.has_value());
  EXPECT_FALSE(options.validation.type.has_value());
  EXPECT_FALSE(options.pruning.prune);
  EXPECT_EQ(options.grow.numThreads, 0);
  EXPECT_EQ(options.grow.testShare, 0.3);
  EXPECT_FALSE(options.results.quiet);
  EXPECT_EQ(options.results.predictions, "");
}

TEST(OptionParser, UnderstandsValuesAfterAnEqualsSign) {
  Options const options = ParseArguments({"--target=a=b", "--max-depth=3", "-"}).options;

  EXPECT_EQ(options.variables.target, "a=b");
  EXPECT_EQ(options.stop.maxDepth, 3);
  EXPECT_EQ(options.file, "-");
}

TEST(OptionParser, TakesWhatFollowsTwoDashesForTheFile) {
  EXPECT_EQ(ParseArguments({"--target", "y", "--", "--odd.csv"}).options.file, "--odd.csv");
}

TEST(OptionParser, TakesNamesInBracketsAsTheyAre) {
  Options const options = ParseArguments({"--target", "[a,b]", "--exclude", "[c]", "x"}).options;

  EXPECT_EQ(options.variables.target, "[a,b]");
  EXPECT_THAT(options.variables.excluded, ElementsAre("[c]"));
}

TEST(OptionParser, ReadsHowTheFileIsWritten) {
  Options const options =
      Parsed({"--delimiter", ";", "--missing", "?", "--missing", "", "--level", "y=nominal",
              "--level", "\"a=b\"=ordinal", "--level", "z=continuous", "--categories",
              "size=small,medium,\"very, very large\""});

  EXPECT_EQ(options.csv.delimiter, ';');
  EXPECT_THAT(options.csv.missingTexts, ElementsAre("?", ""));
  EXPECT_THAT(options.csv.levels, ElementsAre(Pair("a=b", global::MeasurementOrdinal),
                                              Pair("y", global::MeasurementNominal),
                                              Pair("z", global::MeasurementContinuous)));
  EXPECT_THAT(options.csv.categories,
              ElementsAre(Pair("size", ElementsAre("small", "medium", "very, very large"))));
}

TEST(OptionParser, CallsTheTabByItsName) {
  EXPECT_EQ(Parsed({"--delimiter", "tab"}).csv.delimiter, '\t');
}

TEST(OptionParser, ReadsTheVariables) {
  VariableOptions const variables =
      Parsed({"--predictors", "a,\"b,c\"", "--predictors", "d", "--exclude", "e,f", "--exclude",
              "g", "--frequency-weight", "n", "--case-weight", "w", "--sample", "s"})
          .variables;

  EXPECT_THAT(variables.predictors, ElementsAre("a", "b,c", "d"));
  EXPECT_THAT(variables.excluded, ElementsAre("e", "f", "g"));
  EXPECT_EQ(variables.frequencyWeight, "n");
  EXPECT_EQ(variables.caseWeight, "w");
  EXPECT_EQ(variables.sample, "s");
}

TEST(OptionParser, ReadsHowTreesAreGrown) {
  Options const options = Parsed({"--method", "cart", "--competitors", "2", "--surrogates", "0",
                                  "--max-categories", "12", "--threads", "4"});

  EXPECT_EQ(options.method, Method::kCart);
  EXPECT_EQ(options.rules.maxNumCompetitors, 2);
  EXPECT_EQ(options.rules.maxNumSurrogates, 0);
  EXPECT_EQ(options.rules.maxNumCategories, 12);
  EXPECT_EQ(options.grow.numThreads, 4);
}

TEST(OptionParser, ReadsTheCriterionByItsName) {
  EXPECT_EQ(Parsed({"--criterion", "gini"}).classes.criterion, CartSplitCriteria0);
  EXPECT_EQ(Parsed({"--criterion", "twoing"}).classes.criterion, static_cast<CartSplitCriteria>(1));
  EXPECT_EQ(Parsed({"--criterion", "ordered-twoing"}).classes.criterion,
            static_cast<CartSplitCriteria>(2));
}

TEST(OptionParser, ReadsWhatOnlyChaidHas) {
  Options const options = Parsed({"--method",
                                  "chaid",
                                  "--alpha-split",
                                  "0.01",
                                  "--alpha-merge",
                                  "0.2",
                                  "--alpha-resplit",
                                  "0.1",
                                  "--keep-categories",
                                  "a,b",
                                  "--keep-categories",
                                  "\"c,d\"",
                                  "--no-bonferroni",
                                  "--chi-square",
                                  "likelihood-ratio",
                                  "--score",
                                  "low=-1",
                                  "--score",
                                  "\"a=b\"=2.5",
                                  "--epsilon",
                                  "1e-6",
                                  "--iterations",
                                  "50",
                                  "--intervals",
                                  "20"});

  EXPECT_EQ(options.method, Method::kChaid);
  EXPECT_EQ(options.chaid.alphaOfSplit, 0.01);
  EXPECT_EQ(options.chaid.alphaOfMerge, 0.2);
  EXPECT_EQ(options.chaid.alphaOfResplit, 0.1);
  EXPECT_EQ(options.chaid.keptPredictors, (std::vector<std::string>{"a", "b", "c,d"}));
  EXPECT_TRUE(options.chaid.hasNoBonferroni);
  EXPECT_FALSE(options.chaid.isExhaustive);
  EXPECT_EQ(static_cast<int>(options.chaid.chiSquare.value()), 1);
  ASSERT_EQ(options.chaid.scores.size(), 2U);
  EXPECT_EQ(options.chaid.scores[0].label, "low");
  EXPECT_EQ(options.chaid.scores[0].number, -1.0);
  EXPECT_EQ(options.chaid.scores[1].label, "a=b");
  EXPECT_EQ(options.chaid.epsilon, 1e-6);
  EXPECT_EQ(options.chaid.maxNumIterations, 50);
  EXPECT_EQ(options.grow.numIntervals, 20);
  EXPECT_TRUE(Parsed({"--method", "chaid", "--exhaustive"}).chaid.isExhaustive);
}

TEST(OptionParser, ReadsWhatOnlyQuestHas) {
  Options const options =
      Parsed({"--method", "quest", "--alpha-select", "0.1", "--max-surrogate-categories", "6"});

  EXPECT_EQ(options.method, Method::kQuest);
  EXPECT_EQ(options.quest.alphaOfSelection, 0.1);
  EXPECT_EQ(options.quest.maxNumSurrogateCategories, 6);
}

TEST(OptionParser, RefusesWhatTheMethodDoesNotHave) {
  struct Case {
    Arguments arguments;
    std::string needed;
  };
  Case const cases[] = {{{"--alpha-split", "0.1"}, "chaid"},
                        {{"--alpha-merge", "0.1"}, "chaid"},
                        {{"--alpha-resplit", "0.1"}, "chaid"},
                        {{"--exhaustive"}, "chaid"},
                        {{"--keep-categories", "a"}, "chaid"},
                        {{"--no-bonferroni"}, "chaid"},
                        {{"--chi-square", "pearson"}, "chaid"},
                        {{"--score", "a=1"}, "chaid"},
                        {{"--epsilon", "0.1"}, "chaid"},
                        {{"--iterations", "9"}, "chaid"},
                        {{"--intervals", "9"}, "chaid"},
                        {{"--alpha-select", "0.1"}, "quest"},
                        {{"--max-surrogate-categories", "5"}, "quest"},
                        {{"--criterion", "gini"}, "cart"},
                        {{"--surrogates", "2"}, "cart or quest"},
                        {{"--prune"}, "cart or quest"},
                        {{"--se-rule", "2"}, "cart or quest"},
                        {{"--min-risk"}, "cart or quest"},
                        {{"--sequence"}, "cart or quest"}};
  for (auto const& [arguments, needed] : cases) {
    for (std::string const method : {"cart", "chaid", "quest"}) {
      SCOPED_TRACE(arguments[0] + " with " + method);
      Arguments all = {"--method", method};
      all.insert(all.end(), arguments.begin(), arguments.end());

      bool const isKnown = needed.find(method) != std::string::npos;
      EXPECT_EQ(RefusalOf(all), isKnown ? "" : arguments[0] + ": needs --method " + needed);
    }
  }
}

TEST(OptionParser, ReadsPriors) {
  EXPECT_EQ(Parsed({"--priors", "equal"}).classes.priorType, PriorTypeDefault);
  EXPECT_EQ(Parsed({"--priors", "sample"}).classes.priorType, PriorTypeAlternate);

  ClassOptions const custom = Parsed({"--priors", "no, never=1,\"a=b\"=2.5, yes = 0"}).classes;

  EXPECT_EQ(custom.priorType, PriorTypeCustom);
  ASSERT_EQ(custom.priors.size(), 3u);
  EXPECT_EQ(custom.priors[0].label, "no, never");
  EXPECT_EQ(custom.priors[0].number, 1.0);
  EXPECT_EQ(custom.priors[1].label, "a=b");
  EXPECT_EQ(custom.priors[1].number, 2.5);
  EXPECT_EQ(custom.priors[2].label, "yes");
  EXPECT_EQ(custom.priors[2].number, 0.0);
}

TEST(OptionParser, ReadsCosts) {
  ClassOptions const classes =
      Parsed({"--altered-priors", "--cost", "good,bad=5", "--cost", "\"no, never\",a,b=0.5"})
          .classes;

  EXPECT_TRUE(classes.alteredPriors);
  ASSERT_EQ(classes.costs.size(), 2u);
  EXPECT_EQ(classes.costs[0].predicted, "good");
  EXPECT_EQ(classes.costs[0].observed, "bad");
  EXPECT_EQ(classes.costs[0].cost, 5.0);
  EXPECT_EQ(classes.costs[1].predicted, "no, never");
  EXPECT_EQ(classes.costs[1].observed, "a,b");
  EXPECT_EQ(classes.costs[1].cost, 0.5);
}

TEST(OptionParser, ReadsWhenToStop) {
  StopOptions const stop =
      Parsed({"--max-depth", "0", "--min-node", "20", "--min-node-percent", "2.5", "--min-child",
              "7", "--min-child-percent", "1", "--min-improvement", "0.01"})
          .stop;

  EXPECT_EQ(stop.maxDepth, 0);
  EXPECT_EQ(stop.minNodeSize, 20);
  EXPECT_EQ(stop.minNodePercent, 2.5);
  EXPECT_EQ(stop.minChildSize, 7);
  EXPECT_EQ(stop.minChildPercent, 1.0);
  EXPECT_EQ(stop.minImprovement, 0.01);
}

TEST(OptionParser, ReadsHowTheRiskIsMeasured) {
  Options const cross = Parsed({"--validation", "cross", "--folds", "5", "--seed", "9000000000"});
  EXPECT_EQ(cross.validation.type, ValidationCrossValidation);
  EXPECT_EQ(cross.validation.numFolds, 5);
  EXPECT_EQ(cross.validation.seed, 9000000000L);

  Options const split = Parsed({"--validation", "split", "--test-share", "0.25"});
  EXPECT_EQ(split.validation.type, ValidationSplitSample);
  EXPECT_EQ(split.grow.testShare, 0.25);

  EXPECT_EQ(Parsed({"--validation", "none"}).validation.type, ValidationNone);
}

TEST(OptionParser, ValidatesByTheSamplesThatTheDataGive) {
  EXPECT_EQ(Parsed({"--sample", "s"}).validation.type, ValidationSplitSample);
  EXPECT_EQ(Parsed({"--sample", "s", "--validation", "none"}).validation.type, ValidationNone);
}

TEST(OptionParser, TakesASeedWhereFoldsAreDrawnFromTheTrainingSample) {
  EXPECT_EQ(Parsed({"--sample", "s", "--validation", "cross", "--seed", "5"}).validation.seed, 5);
}

TEST(OptionParser, PrunesWhereItIsSaidHow) {
  EXPECT_TRUE(Parsed({"--prune"}).pruning.prune);
  EXPECT_FALSE(Parsed({"--no-prune"}).pruning.prune);
  EXPECT_TRUE(Parsed({"--se-rule", "0.5"}).pruning.prune);
  EXPECT_EQ(Parsed({"--se-rule", "0.5"}).pruning.seRuleFactor, 0.5);
  EXPECT_TRUE(Parsed({"--min-risk"}).pruning.prune);
  EXPECT_TRUE(Parsed({"--min-risk"}).pruning.pickMinRiskTree);
}

TEST(OptionParser, ReadsWhatIsWanted) {
  ResultOptions const results = Parsed({"--details", "--sequence", "--predictions", "p.csv",
                                        "--dot", "t.dot", "--svg", "t.svg"})
                                    .results;

  EXPECT_TRUE(results.details);
  EXPECT_TRUE(results.sequence);
  EXPECT_EQ(results.predictions, "p.csv");
  EXPECT_EQ(results.dot, "t.dot");
  EXPECT_EQ(results.svg, "t.svg");
}

TEST(OptionParser, ReadsWhichGainsAreWanted) {
  EXPECT_FALSE(Parsed({}).gains.AreWanted());

  GainsOptions const plain = Parsed({"--gains", "a=b"}).gains;
  EXPECT_TRUE(plain.AreWanted());
  EXPECT_EQ(plain.target, "a=b");
  EXPECT_EQ(plain.rows, GainsRows::kNodes);
  EXPECT_EQ(plain.order, SortDescending);
  EXPECT_EQ(plain.sortSample, TrainingSample);

  GainsOptions const other =
      Parsed({"--gains", "yes", "--gains-rows", "cumulative", "--gains-order", "ascending",
              "--gains-by", "test", "--revenue", "\"no, never\"=-1.5", "--revenue", "yes=20",
              "--expense", "yes=3"})
          .gains;
  EXPECT_EQ(other.rows, GainsRows::kCumulative);
  EXPECT_EQ(other.order, SortAscending);
  EXPECT_EQ(other.sortSample, TestSample);
  ASSERT_EQ(other.revenues.size(), 2u);
  EXPECT_EQ(other.revenues[0].label, "no, never");
  EXPECT_EQ(other.revenues[0].number, -1.5);
  EXPECT_EQ(other.revenues[1].number, 20.0);
  ASSERT_EQ(other.expenses.size(), 1u);
  EXPECT_EQ(other.expenses[0].number, 3.0);

  GainsOptions const money = Parsed({"--profit", "yes=2", "--gains-rows", "25"}).gains;
  EXPECT_TRUE(money.AreWanted());
  EXPECT_EQ(money.rows, GainsRows::kPercentiles);
  EXPECT_EQ(money.percentileStep, 25);
  EXPECT_EQ(money.profits[0].number, 2.0);
}

TEST(OptionParser, TakesStandardOutputByItsNameForTheDash) {
  EXPECT_EQ(Parsed({"--quiet", "--dot", "/dev/stdout"}).results.dot, "-");
}

TEST(OptionParser, HasAHelpThatEndsTheMatter) {
  ParsedArguments const parsed = ParseArguments({"--help", "--quiet", "--details"});

  EXPECT_THAT(parsed.text, HasSubstr("Usage: growtree [OPTION...] --target COLUMN FILE\n"));
  EXPECT_EQ(ParseArguments({"-h"}).text, parsed.text);
}

TEST(OptionParser, ExplainsEveryGroupWithItsDefaults) {
  std::string const text = ParseArguments({"--help"}).text;

  for (char const* const group :
       {"Input", "Data", "Variables", "Growing", "Classes", "Stopping", "Validation", "Pruning",
        "Gains", "Results", "Other", "Examples"}) {
    EXPECT_THAT(text, HasSubstr(std::string("\n") + group));
  }
  for (char const* const standard :
       {"has depth 0; 3 for chaid [5]\n", "a node that is split [100]\n", "of each child [50]\n",
        "cross-validation [10]\n", "from 1 [2000000]\n", "of the least [1]\n",
        "categories are left out [32]\n", "test sample [0.3]\n", "[0.0001]\n", "[gini]\n",
        "[equal]\n", "[none]\n", "[cart]\n"}) {
    EXPECT_THAT(text, HasSubstr(standard));
  }
}

TEST(OptionParser, KeepsItsHelpWithin100Columns) {
  std::string const text = ParseArguments({"--help"}).text;

  std::size_t begin = 0;
  while (begin < text.size()) {
    std::size_t const end = text.find('\n', begin);
    EXPECT_LE(end - begin, 100u) << text.substr(begin, end - begin);
    begin = end + 1;
  }
}

TEST(OptionParser, SaysItsVersion) {
  EXPECT_THAT(ParseArguments({"--version"}).text, ::testing::MatchesRegex("growtree [0-9.]+\n"));
}

TEST(OptionParser, RefusesArgumentsThatMakeNoSense) {
  struct {
    char const* name;
    Arguments arguments;
    char const* message;
  } const rows[] = {
      {"no file", {"--target", "y"}, "FILE is required"},
      {"no target", {"x"}, "--target is required"},
      {"empty target", {"--target", "", "x"}, "--target: value \"\" is empty"},
      {"target without value", {"x", "--target"}, "--target: no value follows"},
      {"nothing after the equals sign",
       {"--target=", "x"},
       "--target: no value follows the equals sign"},
      {"two files", {"--target", "y", "a", "b"}, "The following argument was not expected: b"},
      {"unknown option",
       {"--target", "y", "a", "--depth"},
       "The following argument was not expected: --depth"},
      {"twice", {"--target", "y", "--target", "z", "a"}, "--target: is given 2 times"},
  };
  for (auto const& [name, arguments, message] : rows) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Refusal(arguments), message);
  }
}

TEST(OptionParser, RefusesValuesThatItCannotRead) {
  struct {
    Arguments arguments;
    char const* message;
  } const rows[] = {
      {{"--delimiter", "::"},
       "--delimiter: value \"::\" is neither a character that can separate fields nor the word "
       "tab"},
      {{"--delimiter", "\""},
       "--delimiter: value \"\"\" is neither a character that can separate fields nor the word "
       "tab"},
      {{"--level", "y"}, "--level: value \"y\" is not of the form COLUMN=LEVEL"},
      {{"--level", "=nominal"}, "--level: value \"=nominal\" has an empty name"},
      {{"--level", "\"y=nominal"},
       "--level: value \"\"y=nominal\" has a quote that is misplaced or never closed"},
      {{"--level", "y=scale"}, "--level: value \"scale\" is none of nominal, ordinal, continuous"},
      {{"--level", "y=nominal", "--level", "y=ordinal"},
       "--level: value \"y=ordinal\" names a column for the second time"},
      {{"--categories", "y"},
       "--categories: value \"y\" is not of the form COLUMN=LABEL,LABEL,..."},
      {{"--categories", "y="},
       "--categories: value \"y=\" has an empty label, which would be missing"},
      {{"--categories", "y=a,b,a"}, "--categories: value \"y=a,b,a\" names \"a\" twice"},
      {{"--categories", "y=\"a"},
       "--categories: value \"\"a\" has a quote that is misplaced or never closed"},
      {{"--categories", "y=a", "--categories", "y=b"},
       "--categories: value \"y=b\" names a column for the second time"},
      {{"--predictors", "a,,b"}, "--predictors: value \"a,,b\" has an empty name"},
      {{"--exclude", ""}, "--exclude: value \"\" has an empty name"},
      {{"--exclude", "\"a"},
       "--exclude: value \"\"a\" has a quote that is misplaced or never closed"},
      {{"--method", "oak"}, "--method: value \"oak\" is none of cart, chaid, quest"},
      {{"--competitors", "0"}, "--competitors: value \"0\" is not a whole number of at least 1"},
      {{"--surrogates", "-1"}, "--surrogates: value \"-1\" is not a whole number of at least 0"},
      {{"--max-categories", "0"},
       "--max-categories: value \"0\" is not a whole number of at least 1"},
      {{"--threads", "two"}, "--threads: value \"two\" is not a whole number from 0 to 1024"},
      {{"--threads", "1025"}, "--threads: value \"1025\" is not a whole number from 0 to 1024"},
      {{"--criterion", "entropy"},
       "--criterion: value \"entropy\" is none of gini, twoing, ordered-twoing"},
      {{"--priors", "a"}, "--priors: value \"a\" is none of equal, sample, LABEL=NUMBER,..."},
      {{"--priors", "a=1,b"},
       "--priors: value \"a=1,b\" is none of equal, sample, LABEL=NUMBER,..."},
      {{"--priors", "a=-1"}, "--priors: value \"-1\" is not a number of at least 0"},
      {{"--priors", "\"a=1"},
       "--priors: value \"\"a=1\" has a quote that is misplaced or never closed"},
      {{"--cost", "a=1"}, "--cost: value \"a=1\" is not of the form PREDICTED,OBSERVED=COST"},
      {{"--cost", "a,b"}, "--cost: value \"a,b\" is not of the form PREDICTED,OBSERVED=COST"},
      {{"--cost", "a,b=x"}, "--cost: value \"x\" is not a number of at least 0"},
      {{"--cost", "\"a,b=1"},
       "--cost: value \"\"a,b=1\" has a quote that is misplaced or never closed"},
      {{"--cost", "a,b=1", "--cost", "a,b=2"},
       "--cost: value \"a,b=2\" names two classes for the second time"},
      {{"--max-depth", "x"}, "--max-depth: value \"x\" is not a whole number of at least 0"},
      {{"--min-node", "1.5"}, "--min-node: value \"1.5\" is not a whole number of at least 0"},
      {{"--min-node-percent", "101"},
       "--min-node-percent: value \"101\" is not a number from 0 to 100"},
      {{"--min-child", ""}, "--min-child: value \"\" is not a whole number of at least 0"},
      {{"--min-child-percent", "-1"},
       "--min-child-percent: value \"-1\" is not a number from 0 to 100"},
      {{"--min-improvement", "nan"},
       "--min-improvement: value \"nan\" is not a number of at least 0"},
      {{"--validation", "loo"}, "--validation: value \"loo\" is none of none, split, cross"},
      {{"--validation", "split", "--test-share", "1"},
       "--test-share: value \"1\" is not a number between 0 and 1"},
      {{"--folds", "1"}, "--folds: value \"1\" is not a whole number of at least 2"},
      {{"--seed", "0"}, "--seed: value \"0\" is not a whole number of at least 1"},
      {{"--se-rule", "-0.1"}, "--se-rule: value \"-0.1\" is not a number of at least 0"},
      {{"--predictions", ""}, "--predictions: value \"\" is empty"},
      {{"--dot", ""}, "--dot: value \"\" is empty"},
      {{"--svg", ""}, "--svg: value \"\" is empty"},
      {{"--gains", ""}, "--gains: value \"\" is empty"},
      {{"--gains-rows", "3"},
       "--gains-rows: value \"3\" is none of nodes, cumulative, 1, 2, 5, 10, 20, 25"},
      {{"--gains-order", "up"}, "--gains-order: value \"up\" is none of descending, ascending"},
      {{"--gains-by", "all"}, "--gains-by: value \"all\" is none of training, test"},
      {{"--profit", "yes"}, "--profit: value \"yes\" is not of the form CLASS=NUMBER"},
      {{"--profit", "yes=much"}, "--profit: value \"much\" is not a number"},
      {{"--revenue", "yes=inf"}, "--revenue: value \"inf\" is not a number"},
      {{"--expense", "yes=1", "--expense", "yes=2"},
       "--expense: value \"yes=2\" names a class for the second time"},
      {{"--sample", ""}, "--sample: value \"\" is empty"},
      {{"--frequency-weight", ""}, "--frequency-weight: value \"\" is empty"},
      {{"--case-weight", ""}, "--case-weight: value \"\" is empty"},
  };
  for (auto const& [arguments, message] : rows) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    EXPECT_EQ(RefusalOf(arguments), message);
  }
}

TEST(OptionParser, RefusesLevelsOfMergingForTheExhaustiveMethod) {
  for (std::string const option : {"--alpha-merge", "--alpha-resplit"}) {
    EXPECT_EQ(RefusalOf({"--method", "chaid", "--exhaustive", option, "0.1"}),
              "--exhaustive: cannot be combined with --alpha-merge and --alpha-resplit");
  }
}

TEST(OptionParser, RefusesOptionsThatDoNotGoTogether) {
  struct {
    Arguments arguments;
    char const* message;
  } const rows[] = {
      {{"--folds", "5"}, "--folds: needs --validation cross"},
      {{"--folds", "5", "--validation", "split"}, "--folds: needs --validation cross"},
      {{"--test-share", "0.5"}, "--test-share: needs --validation split"},
      {{"--test-share", "0.5", "--sample", "s"},
       "--test-share: cannot be combined with --sample, which says where each case belongs"},
      {{"--se-rule", "1", "--min-risk"}, "--min-risk: cannot be combined with --se-rule"},
      {{"--no-prune", "--prune"},
       "--no-prune: cannot be combined with --prune, --se-rule and --min-risk"},
      {{"--no-prune", "--se-rule", "1"},
       "--no-prune: cannot be combined with --prune, --se-rule and --min-risk"},
      {{"--altered-priors"}, "--altered-priors: needs --cost, which alters them"},
      {{"--dot", "-"}, "--dot: - needs --quiet, or the tree is printed there"},
      {{"--quiet", "--dot", "-", "--svg", "-"},
       "--svg: value \"-\" is what another result is written to"},
      {{"--predictions", "a", "--svg", "a"},
       "--svg: value \"a\" is what another result is written to"},
      {{"--quiet", "--details"}, "--details: cannot be combined with --quiet"},
      {{"--quiet", "--sequence"}, "--sequence: cannot be combined with --quiet"},
      {{"--predictions", "same.txt", "--dot", "./same.txt"},
       "--dot: value \"./same.txt\" is what another result is written to"},
      {{"--predictions", "same.txt", "--svg", "none/../same.txt"},
       "--svg: value \"none/../same.txt\" is what another result is written to"},
      {{"--quiet", "--gains", "a"}, "--gains: cannot be combined with --quiet"},
      {{"--quiet", "--profit", "a=1"}, "--profit: cannot be combined with --quiet"},
      {{"--quiet", "--revenue", "a=1"}, "--revenue: cannot be combined with --quiet"},
      {{"--quiet", "--expense", "a=1"}, "--expense: cannot be combined with --quiet"},
      {{"--gains-rows", "10"}, "--gains-rows: needs --gains, or money of classes"},
      {{"--gains-order", "ascending"}, "--gains-order: needs --gains, or money of classes"},
      {{"--gains-by", "test"}, "--gains-by: needs --gains, or money of classes"},
      {{"--profit", "a=1", "--revenue", "a=1"},
       "--profit: cannot be combined with --revenue and --expense"},
      {{"--expense", "a=1", "--profit", "a=1"},
       "--profit: cannot be combined with --revenue and --expense"},
      {{"--seed", "5"}, "--seed: needs --validation split or cross, which draw cases"},
      {{"--seed", "5", "--sample", "s"},
       "--seed: cannot be combined with --sample, which says where each case belongs"},
  };
  for (auto const& [arguments, message] : rows) {
    SCOPED_TRACE(::testing::PrintToString(arguments));
    EXPECT_EQ(RefusalOf(arguments), message);
  }
}

}  // namespace
}  // namespace tree::cli
