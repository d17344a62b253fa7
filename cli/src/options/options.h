#ifndef TREE_CLI_SRC_OPTIONS_OPTIONS_H_
#define TREE_CLI_SRC_OPTIONS_OPTIONS_H_

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tree/grow/csv.h"
#include "tree/grow/grower.h"
#include "tree/misclassification.h"
#include "tree/settings.h"

namespace tree::cli {

/// Arguments that make no sense, whatever the data. The message begins with the option.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// How trees are grown. Which settings that means, the kind of target decides.
enum class Method { kCart };

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

/// What is wanted of the grown tree. A file's name `-` means standard output; an empty one that
/// nothing is written.
struct ResultOptions {
  bool quiet = false;      ///< nothing on standard output but what is written to `-`
  bool details = false;    ///< competitors, surrogates and counts of every node
  bool sequence = false;   ///< the subtrees that pruning chooses from
  std::string gains = {};  ///< a class, or the word mean; empty for no gains table
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
  StopOptions stop;
  RuleOptions rules;
  ValidationOptions validation;
  PruningOptions pruning;
  grow::GrowOptions grow;
  ResultOptions results;
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_OPTIONS_H_
