#ifndef TREE_GROW_TESTS_PEERS_RPART_FIXTURE_H_
#define TREE_GROW_TESTS_PEERS_RPART_FIXTURE_H_

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// Trees that R's rpart grew, as `trees/*.txt` hold them. README.md tells the format, and what
/// rpart's numbers mean. Predictors, classes and categories go by their names here: codes and
/// indexes are the reader's business.
namespace tree::grow::rpart {

enum class Level { kContinuous, kOrdinal, kNominal };

struct Predictor {
  std::string name;
  Level level = Level::kContinuous;
  std::size_t numMissing = 0;           ///< among the cases that were grown on
  std::vector<std::string> categories;  ///< sorted by bytes; of nominal ones only
};

struct TargetClass {
  std::string label;
  double prior = 0;
  double alteredPrior = 0;  ///< by the costs
  bool priorIsGiven = false;
  std::vector<double> costs;  ///< of predicting this class, by observed class; empty: 0 and 1
};

/// An ordered predictor's split: values below `value` go left, or right.
struct Cut {
  double value = 0;
  bool lowerGoesLeft = true;
};

/// A nominal predictor's split. Categories that the node has not got are in neither.
struct Sets {
  std::vector<std::string> left;
  std::vector<std::string> right;
};

using Ways = std::variant<Cut, Sets>;

/// A primary split or a competitor.
struct Split {
  std::string predictor;
  std::size_t numCases = 0;  ///< with a value of the predictor
  double improve = 0;
  Ways ways;
  std::vector<Ways> ties;  ///< other splits by the predictor that are as good
};

struct Surrogate {
  std::string predictor;
  std::size_t numSent = 0;  ///< cases that it sent down in growing
  double agree = 0;
  double adj = 0;
  Ways ways;
  std::vector<Ways> ties;
};

/// The surrogates that the definitions give, where rpart's own rules list others.
struct SurrogatesByDefinition {
  std::vector<Surrogate> list;  ///< without numSent and ties
  std::size_t numMoved = 0;     ///< cases of the node that they would send elsewhere
};

enum class Default { kLeft, kRight, kNone };

struct Node {
  unsigned long long number = 1;  ///< children: twice the number, and one more
  std::size_t numCases = 0;
  double weight = 0;
  double deviance = 0;  ///< squares, or costs, times weights
  double complexity = 0;
  std::string predictedClass;
  double predictedMean = 0;
  double probability = 0;              ///< of coming here; for classes
  std::vector<double> weightsByClass;  ///< of the cases, without priors
  std::vector<double> shares;          ///< with priors
  std::vector<Split> splits;           ///< the primary split and its competitors; none: terminal
  std::vector<Surrogate> surrogates;
  std::optional<SurrogatesByDefinition> byDefinition;
  Default way = Default::kNone;  ///< of what the primary split and the surrogates do not place
};

/// A line of a pruning sequence. Relative: to the risk of the root.
struct Subtree {
  double cp = 0;
  std::size_t numSplits = 0;
  double relativeError = 0;
};

struct Weights {
  std::string column;
  bool areWhole = false;  ///< and may count repeated cases
};

struct Fixture {
  std::string name;
  std::string dataFile;     ///< in `data/`
  std::size_t numRows = 0;  ///< of the file
  std::size_t numGrown = 0;
  std::string target;
  std::vector<TargetClass> classes;  ///< sorted by bytes; none: the target is continuous
  std::vector<Predictor> predictors;
  std::optional<Weights> weights;
  std::map<std::string, double> settings;         ///< as rpart.control has them
  std::vector<Node> nodes;                        ///< parents before children, left before right
  std::vector<Subtree> subtrees;                  ///< rpart's sequence, from the root alone
  std::vector<Subtree> weakestLinks;              ///< the same by definition
  std::vector<unsigned long long> terminalNodes;  ///< of each row; 0: left out, without a target
};

/// Reads a fixture. Throws std::runtime_error with file, line and reason where the text is not as
/// README.md tells it.
Fixture ReadFixture(std::filesystem::path const& file);

}  // namespace tree::grow::rpart

#endif  // TREE_GROW_TESTS_PEERS_RPART_FIXTURE_H_
