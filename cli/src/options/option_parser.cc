#include "options/option_parser.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include <CLI/CLI.hpp>

#include "options/help_formatter.h"
#include "options/label_reader.h"
#include "options/option_value.h"
#include "output/number_text.h"

namespace tree::cli {
namespace {

constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr int kMaxThreads = 1024;
constexpr int kMaxIntervals = 65535;

constexpr NumberRange kAnyNumber = {-HUGE_VAL, HUGE_VAL, false, "a number"};
constexpr NumberRange kNotNegative = {0.0, HUGE_VAL, false, "a number of at least 0"};
constexpr NumberRange kProbability = {0.0, 1.0, false, "a number from 0 to 1"};
constexpr NumberRange kShare = {0.0, 1.0, true, "a number between 0 and 1"};

constexpr char kDescription[] =
    "Grows a classification or regression tree on the cases of a CSV file, prints it with its\n"
    "risk, and writes predictions and pictures.\n";

constexpr char kEpilogue[] =
    "Labels and names of columns that contain the mark which ends them in a list (a comma, or an\n"
    "equals sign) are put in quotes, and quotes inside are doubled: --cost '\"no, never\",yes=5'.\n"
    "\n"
    "Examples:\n"
    "  growtree --target class --cost good,bad=5 --altered-priors --validation cross --prune \\\n"
    "           --svg tree.svg credit.csv\n"
    "  growtree --target price --exclude id --validation split --max-depth 8 \\\n"
    "           --predictions predicted.csv diamonds.csv\n"
    "\n"
    "Exit status:\n"
    "  0    done\n"
    "  1    the data or the options do not fit, or a file cannot be read or written\n"
    "  2    the arguments make no sense\n"
    "  3    the tree cannot be grown, as for want of memory\n"
    "  130  interrupted (143 when asked to terminate); no file is left behind\n";

constexpr Choice<Method> kMethods[] = {
    {"cart", Method::kCart}, {"chaid", Method::kChaid}, {"quest", Method::kQuest}};

constexpr Choice<ChiSquareMethod> kChiSquares[] = {
    {"pearson", ChiSquareMethod0}, {"likelihood-ratio", static_cast<ChiSquareMethod>(1)}};

constexpr Choice<CartSplitCriteria> kCriteria[] = {
    {"gini", CartSplitCriteria0},
    {"twoing", static_cast<CartSplitCriteria>(1)},
    {"ordered-twoing", static_cast<CartSplitCriteria>(2)}};

constexpr Choice<global::MeasurementLevel> kLevels[] = {
    {"nominal", global::MeasurementNominal},
    {"ordinal", global::MeasurementOrdinal},
    {"continuous", global::MeasurementContinuous}};

constexpr Choice<ValidationType> kValidations[] = {{"none", ValidationNone},
                                                   {"split", ValidationSplitSample},
                                                   {"cross", ValidationCrossValidation}};

constexpr Choice<SortOrder> kOrders[] = {{"descending", SortDescending},
                                         {"ascending", SortAscending}};

constexpr Choice<DataSample> kSamples[] = {{"training", TrainingSample}, {"test", TestSample}};

/// New settings, whose values are the defaults. They have predictors, or they would keep neither
/// competitors nor surrogates.
template <class Settings>
Settings DefaultSettings() {
  CoreSettingsImp core;
  for (int index = 0; index < 100; ++index) core.AddPredictor();
  return Settings(core);
}

// --- values that are made of several ---

/// What `read` makes of the value, with quotes refused in the option's name.
template <class Read>
auto Reading(OptionValue const& value, Read read) {
  try {
    return read(value.GetText());
  } catch (MisplacedQuote const& error) {
    value.Refuse(error.what());
  }
}

std::vector<std::string> ListIn(OptionValue const& value) {
  std::vector<std::string> labels = Reading(value, LabelsOf);
  if (std::find(labels.begin(), labels.end(), "") != labels.end()) {
    value.Refuse("has an empty name");
  }
  return labels;
}

/// A name, and what follows the equals sign after it.
std::pair<std::string, std::string> NameAndRest(OptionValue const& value, char const* form) {
  return Reading(value, [&](std::string_view text) {
    LabelReader reader(text);
    std::string const name = reader.Next('=');
    if (!reader.HasMore()) value.Refuse(std::string("is not of the form ") + form);
    if (name.empty()) value.Refuse("has an empty name");
    return std::pair(name, std::string(reader.GetRest()));
  });
}

void AddLevel(OptionValue const& value, grow::CsvOptions& csv) {
  auto const [column, level] = NameAndRest(value, "COLUMN=LEVEL");
  if (!csv.levels.emplace(column, OptionValue(value.GetOption(), level).OneOf(kLevels)).second) {
    value.Refuse("names a column for the second time");
  }
}

void AddCategories(OptionValue const& value, grow::CsvOptions& csv) {
  auto const [column, rest] = NameAndRest(value, "COLUMN=LABEL,LABEL,...");
  std::vector<std::string> labels = Reading(OptionValue(value.GetOption(), rest), LabelsOf);
  std::vector<std::string> sorted = labels;
  std::sort(sorted.begin(), sorted.end());
  auto const twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice != sorted.end()) value.Refuse("names \"" + *twice + "\" twice");
  if (sorted.front().empty()) value.Refuse("has an empty label, which would be missing");
  if (!csv.categories.emplace(column, std::move(labels)).second) {
    value.Refuse("names a column for the second time");
  }
}

double NumberIn(OptionValue const& value, std::string const& text) {
  return OptionValue(value.GetOption(), text).Number(kNotNegative);
}

void ReadPriors(OptionValue const& value, ClassOptions& classes) {
  if (value.GetText() == "equal") {
    classes.priorType = PriorTypeDefault;
    return;
  }
  if (value.GetText() == "sample") {
    classes.priorType = PriorTypeAlternate;
    return;
  }
  classes.priorType = PriorTypeCustom;
  Reading(value, [&](std::string_view text) {
    LabelReader reader(text);
    while (reader.HasMore()) {
      std::string const label = reader.Next('=');
      if (!reader.HasMore()) value.Refuse("is none of equal, sample, LABEL=NUMBER,...");
      classes.priors.push_back({label, NumberIn(value, reader.Next(','))});
    }
  });
}

void AddCost(OptionValue const& value, ClassOptions& classes) {
  constexpr char kForm[] = "is not of the form PREDICTED,OBSERVED=COST";
  Reading(value, [&](std::string_view text) {
    LabelReader reader(text);
    std::string const predicted = reader.Next(',');
    if (!reader.HasMore()) value.Refuse(kForm);
    std::string const observed = reader.Next('=');
    if (!reader.HasMore()) value.Refuse(kForm);
    std::string const number(reader.GetRest());
    for (MistakeCost const& other : classes.costs) {
      if (other.predicted == predicted && other.observed == observed) {
        value.Refuse("names two classes for the second time");
      }
    }
    classes.costs.push_back({predicted, observed, NumberIn(value, number)});
  });
}

/// Adds a class with its number.
void AddNumberOf(OptionValue const& value, std::vector<ClassNumber>& numbers) {
  auto const [label, rest] = NameAndRest(value, "CLASS=NUMBER");
  for (ClassNumber const& other : numbers) {
    if (other.label == label) value.Refuse("names a class for the second time");
  }
  numbers.push_back({label, OptionValue(value.GetOption(), rest).Number(kAnyNumber)});
}

/// Rows by name, or as percentiles of one of the steps that there are.
void ReadGainsRows(OptionValue const& value, GainsOptions& gains) {
  std::string const& text = value.GetText();
  if (text == "nodes") return;
  if (text == "cumulative") {
    gains.rows = GainsRows::kCumulative;
    return;
  }
  for (PercentileIncrement const step :
       {PercentileIncrement1, PercentileIncrement2, PercentileIncrement5, PercentileIncrement10,
        PercentileIncrement20, PercentileIncrement25}) {
    if (text != std::to_string(step)) continue;
    gains.rows = GainsRows::kPercentiles;
    gains.percentileStep = step;
    return;
  }
  value.Refuse("is none of nodes, cumulative, 1, 2, 5, 10, 20, 25");
}

char DelimiterIn(OptionValue const& value) {
  if (value.GetText() == "tab") return '\t';
  if (value.GetText().size() != 1 ||
      std::string_view("\" \r\n").find(value.GetText()[0]) != std::string_view::npos) {
    value.Refuse("is neither a character that can separate fields nor the word tab");
  }
  return value.GetText()[0];
}

/// Opening standard output by its name would not append to what is there already.
std::string FileIn(std::string const& file) { return file == "/dev/stdout" ? "-" : file; }

/// The file's place, the same for all ways to name it.
std::filesystem::path PlaceOf(std::string const& file) {
  std::error_code unknown;
  std::filesystem::path const place = std::filesystem::weakly_canonical(
      std::filesystem::absolute(file, unknown).lexically_normal(), unknown);
  return unknown ? std::filesystem::path(file) : place;
}

/// Declares the options and takes what is given for them.
class Parser {
 public:
  Parser() : app_(kDescription, "growtree"), defaults_(DefaultSettings<CCartSettingsImp>()) {
    auto const formatter = std::make_shared<HelpFormatter>();
    formatter->label("Positionals", "Input");
    app_.formatter(formatter);
    app_.set_help_flag();  // the one that is there already would come first
    app_.footer(kEpilogue);
    app_.add_option("FILE", options_.file,
                    "the cases, as CSV with a line of names; - for standard input")
        ->required();
    AddData();
    AddVariables();
    AddGrowing();
    AddClasses();
    AddChaid();
    AddQuest();
    AddStopping();
    AddValidation();
    AddPruning();
    AddGains();
    AddResults();
    AddOthers();
  }

  ParsedArguments Parse(std::vector<std::string> arguments) {
    RequireValues(arguments);
    std::reverse(arguments.begin(), arguments.end());  // as the library wants them
    try {
      app_.parse(arguments);
    } catch (CLI::CallForHelp const&) {
      return {{}, app_.help()};
    } catch (CLI::CallForVersion const&) {
      return {{}, "growtree " TREE_CLI_VERSION "\n"};
    } catch (CLI::ArgumentMismatch const& error) {
      std::string const message = error.what();  // begins with the option, and knows odd words
      throw UsageError(message.substr(0, message.find(':')) + ": no value follows");
    } catch (CLI::ParseError const& error) {
      throw UsageError(error.what());
    }
    CheckCombinations();
    return {std::move(options_), ""};
  }

 private:
  // --- declaring ---

  void Group(char const* name) { group_ = name; }

  CLI::Option* AddFlag(std::string const& name, bool& flag, std::string const& does) {
    return app_.add_flag(name, flag, does)->group(group_);
  }

  /// An option with a value, given once.
  template <class Take>
  CLI::Option* Add(std::string const& name, std::string const& type, std::string const& does,
                   Take take) {
    return AddTexts(name, type, does, [name, take](std::vector<std::string> const& texts) {
      if (texts.size() > 1)
        throw UsageError(name + ": is given " + std::to_string(texts.size()) + " times");
      take(OptionValue(name, texts.front()));
    });
  }

  /// An option with a value, given as often as wanted.
  template <class Take>
  CLI::Option* AddRepeatable(std::string const& name, std::string const& type,
                             std::string const& does, Take take) {
    return AddTexts(name, type, does, [name, take](std::vector<std::string> const& texts) {
      for (std::string const& text : texts) take(OptionValue(name, text));
    });
  }

  /// An option with a value, all of whose values are taken at once.
  CLI::Option* AddTexts(std::string const& name, std::string const& type, std::string const& does,
                        std::function<void(std::vector<std::string> const&)> const& take) {
    return app_.add_option_function<std::vector<std::string>>(name, take, does)
        ->allow_extra_args(false)  // only the next argument is the value
        ->type_name(type)
        ->group(group_);
  }

  CLI::Option* AddText(std::string const& name, std::string const& type, std::string const& does,
                       std::function<void(std::string const&)> const& take) {
    return Add(name, type, does, [take](OptionValue const& value) {
      if (value.GetText().empty()) value.Refuse("is empty");
      take(value.GetText());
    });
  }

  CLI::Option* AddInt(std::string const& name, std::string const& does, std::optional<int>& number,
                      int min, int standard) {
    return Add(name, "N", does,
               [&number, min](OptionValue const& value) {
                 number = value.WholeNumber(min, kMaxInt);
               })
        ->default_str(std::to_string(standard));
  }

  CLI::Option* AddNumber(std::string const& name, std::string const& type, std::string const& does,
                         std::optional<double>& number, NumberRange const& range, double standard) {
    return Add(name, type, does,
               [&number, range](OptionValue const& value) { number = value.Number(range); })
        ->default_str(ShortNumber(standard));
  }

  void AddData() {
    grow::CsvOptions& csv = options_.csv;
    Group("Data");
    Add("--delimiter", "CHARACTER", "what separates fields, or the word tab",
        [&csv](OptionValue const& value) { csv.delimiter = DelimiterIn(value); })
        ->default_str(std::string(1, csv.delimiter));
    AddRepeatable("--missing", "TEXT",
                  "a text that marks a missing value, as an empty field always does; repeatable",
                  [this](OptionValue const& value) { missingTexts_.push_back(value.GetText()); })
        ->default_str(csv.missingTexts.front());
    AddRepeatable("--level", "COLUMN=LEVEL",
                  "nominal, ordinal or continuous; otherwise columns that hold texts are nominal, "
                  "and those of numbers continuous; repeatable",
                  [&csv](OptionValue const& value) { AddLevel(value, csv); });
    AddRepeatable("--categories", "COLUMN=LABEL,LABEL,...",
                  "all categories of a column, from low to high; it is ordinal unless --level says "
                  "otherwise; repeatable",
                  [&csv](OptionValue const& value) { AddCategories(value, csv); });
  }

  void AddVariables() {
    VariableOptions& variables = options_.variables;
    Group("Variables");
    AddText("--target", "COLUMN",
            "what is predicted: classes if it is nominal or ordinal, numbers if it is continuous",
            [&variables](std::string const& name) { variables.target = name; })
        ->required();
    AddRepeatable("--predictors", "COLUMN,...",
                  "what it is predicted from; otherwise all columns without another part; "
                  "repeatable",
                  [&variables](OptionValue const& value) {
                    for (std::string& name : ListIn(value)) {
                      variables.predictors.push_back(std::move(name));
                    }
                  });
    AddRepeatable("--exclude", "COLUMN,...", "columns that are no predictors; repeatable",
                  [&variables](OptionValue const& value) {
                    for (std::string& name : ListIn(value)) {
                      variables.excluded.push_back(std::move(name));
                    }
                  });
    AddText("--frequency-weight", "COLUMN", "how often each case is repeated",
            [&variables](std::string const& name) { variables.frequencyWeight = name; });
    AddText("--case-weight", "COLUMN", "how much each case weighs in the statistics",
            [&variables](std::string const& name) { variables.caseWeight = name; });
    AddText("--sample", "COLUMN",
            "0 puts a case into the training sample, another number into the test sample; "
            "validation is then by that unless --validation says otherwise",
            [&variables](std::string const& name) { variables.sample = name; });
  }

  void AddGrowing() {
    Group("Growing");
    Add("--method", "METHOD",
        "cart: the best binary splits (Breiman, Friedman, Olshen and Stone); chaid: a child for "
        "each group of merged categories (Kass); quest: predictors chosen by tests, binary splits "
        "(Loh and Shih), for classes only",
        [this](OptionValue const& value) { options_.method = value.OneOf(kMethods); })
        ->default_str("cart");
    AddInt("--competitors",
           "the most splits that a node keeps, the best of each predictor; its own is one of them",
           options_.rules.maxNumCompetitors, 1, defaults_.GetMaxNumCompetitors());
    AddInt("--surrogates",
           "the most surrogate splits that a node keeps, for missing values, by cart and quest",
           options_.rules.maxNumSurrogates, 0, defaults_.GetMaxNumSurrogates());
    AddInt("--max-categories", "nominal predictors with more categories are left out",
           options_.rules.maxNumCategories, 1, defaults_.GetMaxNominalPredCategories());
    Add("--threads", "N", "how many threads work; 0: as many as the machine runs at a time",
        [this](OptionValue const& value) {
          options_.grow.numThreads = value.WholeNumber(0, kMaxThreads);
        })
        ->default_str(std::to_string(options_.grow.numThreads));
  }

  void AddClasses() {
    ClassOptions& classes = options_.classes;
    Group("Classes, for a nominal or ordinal target");
    Add("--criterion", "CRITERION",
        "gini, twoing or ordered-twoing: what makes a split good; with --method cart",
        [&classes](OptionValue const& value) { classes.criterion = value.OneOf(kCriteria); })
        ->default_str("gini");
    Add("--priors", "PRIORS",
        "equal; sample: shares of the training cases; or LABEL=NUMBER,... for every class, normed "
        "to sum 1; chaid begins with sample",
        [&classes](OptionValue const& value) { ReadPriors(value, classes); })
        ->default_str("equal");
    AddFlag("--altered-priors", classes.alteredPriors,
            "let the costs weigh the priors that the tree is grown with; in chaid, whose tests "
            "know no priors, only the improvement of a split");
    AddRepeatable("--cost", "PREDICTED,OBSERVED=COST",
                  "the cost of taking a case of class OBSERVED for one of class PREDICTED, 1 where "
                  "not given; repeatable",
                  [&classes](OptionValue const& value) { AddCost(value, classes); });
  }

  void AddChaid() {
    ChaidOptions& chaid = options_.chaid;
    auto const defaults = DefaultSettings<CChaidSettingsImp>();
    Group("CHAID, with --method chaid");
    AddNumber("--alpha-split", "P", "a node is split if the adjusted p-value is at most this",
              chaid.alphaOfSplit, kProbability, defaults.GetAlphaOfSplitNode());
    AddNumber("--alpha-merge", "P",
              "categories are merged as long as the pair that differs least has a greater p-value",
              chaid.alphaOfMerge, kProbability, defaults.GetAlphaOfMerge());
    Add("--alpha-resplit", "P",
        "split merged groups of three and more again, if the p-value is at most this; otherwise "
        "they stay",
        [&chaid](OptionValue const& value) { chaid.alphaOfResplit = value.Number(kProbability); });
    AddFlag("--exhaustive", chaid.isExhaustive,
            "merge down to two groups and take the best step (Biggs, de Ville and Suen)");
    AddRepeatable("--keep-categories", "COLUMN,...",
                  "predictors whose categories are not merged, unless too few cases have one; "
                  "repeatable",
                  [&chaid](OptionValue const& value) {
                    for (std::string& name : ListIn(value)) {
                      chaid.keptPredictors.push_back(std::move(name));
                    }
                  });
    AddFlag("--no-bonferroni", chaid.hasNoBonferroni,
            "do not adjust p-values for the number of ways to merge");
    Add("--chi-square", "TEST", "pearson or likelihood-ratio, for a nominal target",
        [&chaid](OptionValue const& value) { chaid.chiSquare = value.OneOf(kChiSquares); })
        ->default_str("pearson");
    AddRepeatable("--score", "CLASS=NUMBER",
                  "the score of a class of an ordinal target, its position from 0 where not "
                  "given; repeatable",
                  [&chaid](OptionValue const& value) { AddNumberOf(value, chaid.scores); });
    AddNumber("--epsilon", "NUMBER",
              "iterative estimates end when nothing changes by more: with case weights, or an "
              "ordinal target",
              chaid.epsilon, kNotNegative, defaults.GetConvergenceEpsilon());
    AddInt("--iterations", "at the latest after so many", chaid.maxNumIterations, 1,
           defaults.GetMaxNumIterations());
    Add("--intervals", "N", "into how many intervals a continuous predictor is divided",
        [this](OptionValue const& value) {
          options_.grow.numIntervals = value.WholeNumber(2, kMaxIntervals);
          hasIntervals_ = true;
        })
        ->default_str(std::to_string(options_.grow.numIntervals));
  }

  void AddQuest() {
    QuestOptions& quest = options_.quest;
    auto const defaults = DefaultSettings<QuestSettingsImp>();
    Group("QUEST, with --method quest");
    AddNumber("--alpha-select", "P",
              "the level of the tests that choose the predictor, by means or else by spread",
              quest.alphaOfSelection, kProbability, defaults.GetAlphaOfVariableSelection());
    AddInt("--max-surrogate-categories", "nominal predictors with more are no surrogates",
           quest.maxNumSurrogateCategories, 1, defaults.GetMaxNumNomCatsSurr());
  }

  void AddStopping() {
    StopOptions& stop = options_.stop;
    StopRule const& rule = *defaults_.GetStopRule();
    Group("Stopping");
    AddInt("--max-depth", "the depth of the tree; a root alone has depth 0; 3 for chaid",
           stop.maxDepth, 0, rule.GetMaxTreeDepth());
    AddInt("--min-node", "the least number of cases of a node that is split", stop.minNodeSize, 0,
           rule.GetMinNodeSize());
    AddNumber("--min-node-percent", "PERCENT", "the same, in percent of the training sample",
              stop.minNodePercent, kPercentage, rule.GetMinNodePercentSize());
    AddInt("--min-child", "the least number of cases of each child", stop.minChildSize, 0,
           rule.GetMinChildSize());
    AddNumber("--min-child-percent", "PERCENT", "the same, in percent of the training sample",
              stop.minChildPercent, kPercentage, rule.GetMinChildPercentSize());
    AddNumber("--min-improvement", "NUMBER",
              "the least improvement by a split: of impurity for classes, of the mean squared "
              "error for numbers, over the whole training sample",
              stop.minImprovement, kNotNegative, rule.GetMinImprovement());
  }

  void AddValidation() {
    ValidationOptions& validation = options_.validation;
    ValidationSpec const& defaults = *defaults_.GetValidationSpec();
    Group("Validation, which measures the risk");
    Add("--validation", "TYPE",
        "none: on the training sample itself; split: on a test sample; cross: by cross-validation",
        [&validation](OptionValue const& value) { validation.type = value.OneOf(kValidations); })
        ->default_str("none");
    Add("--test-share", "NUMBER", "the share of the cases that is drawn for the test sample",
        [this](OptionValue const& value) {
          options_.grow.testShare = value.Number(kShare);
          hasTestShare_ = true;
        })
        ->default_str(ShortNumber(options_.grow.testShare));
    AddInt("--folds", "the number of folds of a cross-validation", validation.numFolds, 2,
           defaults.GetNumCVFolds());
    Add("--seed", "N", "the seed of what is drawn at random, from 1",
        [&validation](OptionValue const& value) {
          validation.seed = value.WholeNumber(1L, std::numeric_limits<long>::max());
        })
        ->default_str(std::to_string(defaults.GetRandomSeed()));
  }

  void AddPruning() {
    PruningOptions& pruning = options_.pruning;
    Group("Pruning, by cost and complexity, of cart and quest");
    AddFlag("--prune", pruning.prune, "prune the tree, by the standard error rule");
    AddFlag("--no-prune", noPrune_, "keep it as it was grown, which is the default");
    AddNumber("--se-rule", "FACTOR",
              "prune to the smallest tree whose risk is within so many standard errors of the "
              "least",
              pruning.seRuleFactor, kNotNegative, defaults_.GetPruningSpec()->GetSERuleFactor());
    AddFlag("--min-risk", pruning.pickMinRiskTree, "prune to the tree of least risk");
  }

  void AddGains() {
    GainsOptions& gains = options_.gains;
    Group("Gains, which tell how the best nodes do beside all cases");
    AddText("--gains", "CLASS",
            "print the gains of a class, node by node; or the word mean, where the target is "
            "continuous",
            [&gains](std::string const& target) { gains.target = target; });
    Add("--gains-rows", "ROWS",
        "nodes; cumulative: each node together with all before it; or 1, 2, 5, 10, 20, 25: as "
        "many percent of the cases a row",
        [this](OptionValue const& value) {
          ReadGainsRows(value, options_.gains);
          gainsDetail_ = value.GetOption();
        })
        ->default_str("nodes");
    Add("--gains-order", "ORDER", "descending: the best rows first; or ascending",
        [this](OptionValue const& value) {
          options_.gains.order = value.OneOf(kOrders);
          gainsDetail_ = value.GetOption();
        })
        ->default_str("descending");
    Add("--gains-by", "SAMPLE", "training or test: the sample whose gains order the rows of both",
        [this](OptionValue const& value) {
          options_.gains.sortSample = value.OneOf(kSamples);
          gainsDetail_ = value.GetOption();
        })
        ->default_str("training");
    AddRepeatable("--profit", "CLASS=NUMBER",
                  "what a case of a class brings in, 0 where not given; rows are ordered by the "
                  "profit where --gains names no class; repeatable",
                  [&gains](OptionValue const& value) { AddNumberOf(value, gains.profits); });
    AddRepeatable("--revenue", "CLASS=NUMBER", "the same before expenses; repeatable",
                  [&gains](OptionValue const& value) { AddNumberOf(value, gains.revenues); });
    AddRepeatable("--expense", "CLASS=NUMBER", "what a case of a class costs; repeatable",
                  [&gains](OptionValue const& value) { AddNumberOf(value, gains.expenses); });
  }

  void AddResults() {
    ResultOptions& results = options_.results;
    Group("Results, in files that are written whole or not at all (- is standard output)");
    AddFlag("--quiet", results.quiet, "print neither tree nor risk");
    AddFlag("--details", results.details,
            "print counts, competing splits and surrogates of every node");
    AddFlag("--sequence", results.sequence, "print the subtrees that pruning chooses from");
    AddText("--predictions", "FILE",
            "write terminal node, prediction and probabilities of every row, as CSV",
            [&results](std::string const& file) { results.predictions = FileIn(file); });
    AddText("--dot", "FILE", "draw the tree in the language of Graphviz",
            [&results](std::string const& file) { results.dot = FileIn(file); });
    AddText("--svg", "FILE", "draw the tree as SVG; needs Graphviz",
            [&results](std::string const& file) { results.svg = FileIn(file); });
  }

  void AddOthers() {
    Group("Other");
    app_.set_help_flag("-h,--help", "this text")->group(group_);
    app_.set_version_flag("--version", std::string(), "the version of this program")->group(group_);
  }

  // --- checking ---

  /// The library would take the next argument for the value of `--option=`.
  static void RequireValues(std::vector<std::string> const& arguments) {
    for (std::string const& argument : arguments) {
      if (argument == "--") return;
      if (argument.starts_with("--") && argument.find('=') + 1 == argument.size()) {
        throw UsageError(argument.substr(0, argument.size() - 1) +
                         ": no value follows the equals sign");
      }
    }
  }

  static void Require(bool holds, char const* otherwise) {
    if (!holds) throw UsageError(otherwise);
  }

  void CheckCombinations() {
    if (!missingTexts_.empty()) options_.csv.missingTexts = missingTexts_;
    CheckMethod();
    CheckValidation();
    CheckPruning();
    Require(!options_.classes.alteredPriors || !options_.classes.costs.empty(),
            "--altered-priors: needs --cost, which alters them");
    CheckGains();
    CheckResults();
  }

  /// Refuses what the method does not have.
  void CheckMethod() const {
    ChaidOptions const& chaid = options_.chaid;
    QuestOptions const& quest = options_.quest;
    PruningOptions const& pruning = options_.pruning;
    struct Given {
      bool isGiven;
      char const* option;
      bool forCart;
      bool forChaid;
      bool forQuest;
    };
    Given const options[] = {
        {options_.classes.criterion.has_value(), "--criterion", true, false, false},
        {options_.rules.maxNumSurrogates.has_value(), "--surrogates", true, false, true},
        {pruning.prune, "--prune", true, false, true},
        {pruning.seRuleFactor.has_value(), "--se-rule", true, false, true},
        {pruning.pickMinRiskTree, "--min-risk", true, false, true},
        {options_.results.sequence, "--sequence", true, false, true},
        {chaid.alphaOfSplit.has_value(), "--alpha-split", false, true, false},
        {chaid.alphaOfMerge.has_value(), "--alpha-merge", false, true, false},
        {chaid.alphaOfResplit.has_value(), "--alpha-resplit", false, true, false},
        {chaid.isExhaustive, "--exhaustive", false, true, false},
        {!chaid.keptPredictors.empty(), "--keep-categories", false, true, false},
        {chaid.hasNoBonferroni, "--no-bonferroni", false, true, false},
        {chaid.chiSquare.has_value(), "--chi-square", false, true, false},
        {!chaid.scores.empty(), "--score", false, true, false},
        {chaid.epsilon.has_value(), "--epsilon", false, true, false},
        {chaid.maxNumIterations.has_value(), "--iterations", false, true, false},
        {hasIntervals_, "--intervals", false, true, false},
        {quest.alphaOfSelection.has_value(), "--alpha-select", false, false, true},
        {quest.maxNumSurrogateCategories.has_value(), "--max-surrogate-categories", false, false,
         true}};
    for (Given const& each : options) {
      bool const isFor = options_.method == Method::kCart    ? each.forCart
                         : options_.method == Method::kChaid ? each.forChaid
                                                             : each.forQuest;
      if (!each.isGiven || isFor) continue;
      std::string const methods = each.forCart && each.forQuest ? "cart or quest"
                                  : each.forCart                ? "cart"
                                  : each.forChaid               ? "chaid"
                                                                : "quest";
      throw UsageError(std::string(each.option) + ": needs --method " + methods);
    }
    Require(!chaid.isExhaustive || (!chaid.alphaOfMerge && !chaid.alphaOfResplit),
            "--exhaustive: cannot be combined with --alpha-merge and --alpha-resplit");
  }

  void CheckValidation() {
    ValidationOptions& validation = options_.validation;
    bool const hasSample = options_.variables.sample.has_value();
    if (hasSample && !validation.type.has_value()) validation.type = ValidationSplitSample;
    ValidationType const type = validation.type.value_or(ValidationNone);
    Require(!validation.numFolds.has_value() || type == ValidationCrossValidation,
            "--folds: needs --validation cross");
    Require(!hasTestShare_ || !hasSample,
            "--test-share: cannot be combined with --sample, which says where each case belongs");
    Require(!hasTestShare_ || type == ValidationSplitSample,
            "--test-share: needs --validation split");
    Require(!validation.seed.has_value() || type != ValidationNone,
            "--seed: needs --validation split or cross, which draw cases");
    Require(!validation.seed.has_value() || !hasSample || type != ValidationSplitSample,
            "--seed: cannot be combined with --sample, which says where each case belongs");
  }

  void CheckPruning() {
    PruningOptions& pruning = options_.pruning;
    Require(!pruning.seRuleFactor.has_value() || !pruning.pickMinRiskTree,
            "--min-risk: cannot be combined with --se-rule");
    bool const saysHow = pruning.seRuleFactor.has_value() || pruning.pickMinRiskTree;
    Require(!noPrune_ || !(pruning.prune || saysHow),
            "--no-prune: cannot be combined with --prune, --se-rule and --min-risk");
    pruning.prune = pruning.prune || saysHow;
  }

  void CheckGains() const {
    GainsOptions const& gains = options_.gains;
    Require(gains.profits.empty() || (gains.revenues.empty() && gains.expenses.empty()),
            "--profit: cannot be combined with --revenue and --expense");
    if (!gainsDetail_.empty() && !gains.AreWanted()) {
      throw UsageError(gainsDetail_ + ": needs --gains, or money of classes");
    }
    if (!options_.results.quiet || !gains.AreWanted()) return;
    char const* const option = !gains.target.empty()     ? "--gains"
                               : !gains.profits.empty()  ? "--profit"
                               : !gains.revenues.empty() ? "--revenue"
                                                         : "--expense";
    throw UsageError(std::string(option) + ": cannot be combined with --quiet");
  }

  void CheckResults() const {
    ResultOptions const& results = options_.results;
    std::pair<char const*, std::string> const files[] = {
        {"--predictions", results.predictions}, {"--dot", results.dot}, {"--svg", results.svg}};
    std::vector<std::filesystem::path> taken;
    for (auto const& [option, file] : files) {
      if (file.empty()) continue;
      if (file == "-" && !results.quiet) {
        throw UsageError(std::string(option) + ": - needs --quiet, or the tree is printed there");
      }
      std::filesystem::path const place = file == "-" ? std::filesystem::path() : PlaceOf(file);
      if (std::find(taken.begin(), taken.end(), place) != taken.end()) {
        OptionValue(option, file).Refuse("is what another result is written to");
      }
      taken.push_back(place);
    }
    Require(!results.quiet || !results.details, "--details: cannot be combined with --quiet");
    Require(!results.quiet || !results.sequence, "--sequence: cannot be combined with --quiet");
  }

  CLI::App app_;
  CCartSettingsImp defaults_;
  std::string group_;
  Options options_;
  std::vector<std::string> missingTexts_;
  bool hasTestShare_ = false;
  bool hasIntervals_ = false;
  std::string gainsDetail_;  // an option that says how gains are shown; empty where none does
  bool noPrune_ = false;
};

}  // namespace

ParsedArguments ParseArguments(std::vector<std::string> const& arguments) {
  return Parser().Parse(arguments);
}

}  // namespace tree::cli
