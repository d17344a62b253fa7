#ifndef TREE_CLI_SRC_OPTIONS_OPTIONS_H_
#define TREE_CLI_SRC_OPTIONS_OPTIONS_H_

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tree/grow/csv.h"
#include "tree/grow/grower.h"
#include "tree/misclassification.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace tree::cli {

/// Arguments that make no sense, whatever the data. The message begins with the option.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How trees are grown. Which settings that means, the kind of target decides.
enum class Method { kCart, kChaid, kQuest };

/// The variables, by the names of their columns.
struct VariableOptions {
  std::string target = {};
  std::vector<std::string> predictors = {};  ///< none: all columns that have no other part
  std::vector<std::string> excluded = {};
  std::optional<std::string> frequencyWeight = std::nullopt;
  std::optional<std::string> caseWeight = std::nullopt;
  std::optional<std::string> sample = std::nullopt;
};

/// What is said about a class, by its label.
struct ClassNumber {
  std::string label;
  double number;
};

/// What it costs to take a case of one class for another.
struct MistakeCost {
  std::string predicted;
  std::string observed;
  double cost;
};

// Of all that follows: what is not given stays as new settings have it.

/// What only a target with classes has.
struct ClassOptions {
  std::optional<CartSplitCriteria> criterion = std::nullopt;
  std::optional<PriorType> priorType = std::nullopt;
  std::vector<ClassNumber> priors = {};  ///< with the custom type only
  bool alteredPriors = false;
  std::vector<MistakeCost> costs = {};
};

/// What only CHAID has.
struct ChaidOptions {
  std::optional<double> alphaOfSplit = std::nullopt;
  std::optional<double> alphaOfMerge = std::nullopt;
  std::optional<double> alphaOfResplit =
      std::nullopt;  ///< given: merged categories are split again
  bool isExhaustive = false;
  std::vector<std::string> keptPredictors = {};  ///< whose categories are not merged
  bool hasNoBonferroni = false;
  std::optional<ChiSquareMethod> chiSquare = std::nullopt;
  std::vector<ClassNumber> scores = {};
  std::optional<double> epsilon = std::nullopt;
  std::optional<int> maxNumIterations = std::nullopt;
};

/// What only QUEST has.
struct QuestOptions {
  std::optional<double> alphaOfSelection = std::nullopt;
  std::optional<int> maxNumSurrogateCategories = std::nullopt;
};

struct StopOptions {
  std::optional<int> maxDepth = std::nullopt;
  std::optional<int> minNodeSize = std::nullopt;
  std::optional<double> minNodePercent = std::nullopt;
  std::optional<int> minChildSize = std::nullopt;
  std::optional<double> minChildPercent = std::nullopt;
  std::optional<double> minImprovement = std::nullopt;
};

struct RuleOptions {
  std::optional<int> maxNumCompetitors = std::nullopt;
  std::optional<int> maxNumSurrogates = std::nullopt;
  std::optional<int> maxNumCategories = std::nullopt;
};

struct ValidationOptions {
  std::optional<ValidationType> type = std::nullopt;
  std::optional<int> numFolds = std::nullopt;
  std::optional<long> seed = std::nullopt;
};

struct PruningOptions {
  bool prune = false;
  std::optional<double> seRuleFactor = std::nullopt;
  bool pickMinRiskTree = false;
};

/// What the rows of gains tables are.
enum class GainsRows { kNodes, kCumulative, kPercentiles };

/// Which gains tables are wanted.
struct GainsOptions {
  std::string target = {};  ///< a class, or the word mean; empty where none is named
  GainsRows rows = GainsRows::kNodes;
  int percentileStep = 10;  ///< in percent; with percentiles only
  SortOrder order = SortDescending;
  DataSample sortSample = TrainingSample;
  /// Money per case, either profits or revenues with expenses.
  ///@{
  std::vector<ClassNumber> profits = {};
  std::vector<ClassNumber> revenues = {};
  std::vector<ClassNumber> expenses = {};
  ///@}

  bool HasMoney() const { return !profits.empty() || !revenues.empty() || !expenses.empty(); }
  bool AreWanted() const { return !target.empty() || HasMoney(); }
};

/// What is wanted of the grown tree. A file's name `-` means standard output; an empty one that
/// nothing is written.
struct ResultOptions {
  bool quiet = false;     ///< nothing on standard output but what is written to `-`
  bool details = false;   ///< competitors, surrogates and counts of every node
  bool sequence = false;  ///< the subtrees that pruning chooses from
  std::string predictions = {};
  std::string dot = {};
  std::string svg = {};
};

/// What the program is asked to do.
struct Options {
  std::string file;  ///< `-` for standard input
  grow::CsvOptions csv;
  VariableOptions variables;
  Method method = Method::kCart;
  ClassOptions classes;
  ChaidOptions chaid;
  QuestOptions quest;
  StopOptions stop;
  RuleOptions rules;
  ValidationOptions validation;
  PruningOptions pruning;
  grow::GrowOptions grow;
  GainsOptions gains;
  ResultOptions results;
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_OPTIONS_H_
