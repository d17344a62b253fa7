#ifndef TREE_GROW_TESTS_PEERS_RPART_GROWN_TREE_H_
#define TREE_GROW_TESTS_PEERS_RPART_GROWN_TREE_H_

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "peers/rpart/fixture.h"
#include "tree/grow/csv.h"
#include "tree/grow/grower.h"

namespace tree::grow::rpart {

/// What the weights of a fixture do.
enum class WeightsMean { kCaseWeights, kFrequencies };

/// A node of rpart's tree, and the one of ours in the same place.
struct NodePair {
  Node const* theirs = nullptr;
  NodeImp const* ours = nullptr;
  int leftChild = 0;  ///< our position of the child that is left in rpart's tree
};

/// The tree of a fixture, grown anew by this library: on the same data, to the same limits, and
/// pruned to the same complexity.
class GrownTree {
 public:
  /// `fixture`: **borrowed**. `dataFolder`: where its data file is.
  GrownTree(Fixture const& fixture, std::filesystem::path const& dataFolder,
            WeightsMean weightsMean = WeightsMean::kCaseWeights);

  Grower& GetGrower() { return *grower_; }
  DataSet const& GetData() const { return csv_->data; }
  CaseRoles const& GetRoles() const { return roles_; }
  /// Nodes in the same places, parents before children. Ends where the primary splits are not by
  /// the same predictor, or only one of the nodes is split.
  std::vector<NodePair> PairNodes() const;
  /// The node as it was grown first, with the surrogates that this library chose: another one than
  /// in the tree where rpart's send cases elsewhere.
  NodeImp const& AsGrownFirst(NodePair const& pair) const;
  /// The predictor that a rule splits by.
  Predictor const& PredictorOf(SplitRuleImp const& rule) const;
  /// Whether a rule divides the cases in this way, with `leftChild` for the left. Categories of
  /// `either` may go to either child.
  bool Divides(SplitRuleImp const& rule, Ways const& ways, int leftChild,
               std::set<std::string> const& either = {}) const;
  /// The categories of a nominal predictor that give both children of a node the same weight, among
  /// the cases that the primary split places.
  std::set<std::string> EvenCategories(NodePair const& pair, std::string const& predictor) const;
  /// The rule's cut point, or its categories by child, for people.
  std::string Describe(SplitRuleImp const& rule) const;

 private:
  void MakeGrowerFor(WeightsMean weightsMean);
  void SendCasesAsRpartDoes();
  void PruneAt(double complexity);
  double CodeOf(std::string const& predictor, std::string const& label) const;
  int LeftChild(SplitRuleImp const& rule, Ways const& ways) const;

  Fixture const& fixture_;
  std::optional<CsvData> csv_;
  CaseRoles roles_;
  std::unique_ptr<Grower> grower_;
  std::map<unsigned long long, std::unique_ptr<NodeImp>> grownFirst_;  // by number, if not the same
};

}  // namespace tree::grow::rpart

#endif  // TREE_GROW_TESTS_PEERS_RPART_GROWN_TREE_H_
