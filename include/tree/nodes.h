#ifndef TREE_NODES_H_
#define TREE_NODES_H_

/// @file
/// The tree: nodes that own their children, split rules, statistics and predictor summaries.
/// Readers see a node through `Node`, builders fill a `NodeImp`; a class distribution (`ClsInfo`)
/// or regression statistics (`RegInfo`) per data sample say what the cases of a node look like.
/// `NodeImp::DropObservationThroughTree` routes a case to its terminal node, `PrefixNodeIterator`
/// walks a tree, and `CumulativeNode` merges the statistics of several nodes.
///
/// A node deletes everything it owns; a tree may be as deep as memory allows. Outputs are written
/// through pointers that must not be null.
/// Threads: concurrent const operations on an unchanged tree are safe, so any number of threads may
/// route cases through one tree. `CumulativeNode` is for one thread at a time.

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "tree/containers.h"
#include "tree/export.h"
#include "tree/split_rules.h"

namespace tree {

/// Selects one of the two sets of statistics of a node. Only zero or not matters: every value other
/// than 0 selects the second set.
enum DataSample : int {
  TrainingSample = 0,  ///< the cases that the tree is grown on
  TestSample = 1,      ///< cases put aside to test the tree on
};

/// The class distribution of a node of a classification tree, for reading. Classes are indexed from
/// 0.
class TREE_API ClsInfo {
 public:
  virtual ~ClsInfo();

  /// Index of the predicted class.
  virtual int GetPrediction() const = 0;
  /// Weighted number of cases of the class. Requires a valid index.
  virtual double GetClassCount(int index) const = 0;
  /// The class's share of the weighted cases, a fraction in [0, 1]. Requires a valid index, except
  /// in a node without cases, where every class has 0.0.
  virtual double GetClassPercent(int index) const = 0;
  /// The class's probability; -1.0 for an index out of range.
  virtual double GetClassProbability(int index) const = 0;
  /// Number of target classes.
  virtual int GetNumClasses() const = 0;
};

/// The class distribution of one node for one data sample.
class TREE_API ClsInfoImp : public ClsInfo {
 public:
  /// No classes, no cases, predicted class 0, percent size `systemMissingValue()`.
  ClsInfoImp();
  /// A copy as `operator=` makes it.
  ClsInfoImp(ClsInfoImp const& other);
  /// Copies everything. Deliberate: classes of the source without a probability have one of -1.0 in
  /// the copy, so that it does not equal its source.
  ClsInfoImp& operator=(ClsInfoImp const& other);

  ~ClsInfoImp() override;
  int GetPrediction() const override;
  double GetClassCount(int index) const override;
  double GetClassPercent(int index) const override;
  double GetClassProbability(int index) const override;
  int GetNumClasses() const override;
  /// The node's size relative to the root, as the growing algorithm set it; nothing is computed.
  /// `systemMissingValue()` until it is set.
  virtual double GetPercentSize() const;
  /// Number of cases, unweighted.
  virtual double GetUnweightedCount() const;
  /// Weighted number of cases: the class counts added in index order.
  virtual double GetCount() const;
  /// Sets the index of the predicted class; any value.
  virtual void SetPrediction(int index);
  /// Sets the number of cases, unweighted; any value.
  virtual void SetUnweightedCount(double count);
  /// Sets the node's size relative to the root, in whatever unit; any value.
  virtual void SetPercentSize(double size);

  /// Sets the weighted number of cases of the class. Requires an index below the number of classes
  /// set before.
  void SetClassCount(int index, double count);
  /// Sets the class's probability, any value; where no class has one yet, the others get 0.0.
  /// Requires an index below the number of classes set before.
  void SetClassProbability(int index, double probability);
  /// Sets the number of counts and probabilities; dropped ones become 0, new ones are 0. Ignores a
  /// negative number.
  void SetNumClasses(int count);
  /// A copy as `operator=` makes it. **New**: the caller deletes it.
  ClsInfoImp* Clone() const;
  /// Whether all fields are equal, doubles by plain floating equality.
  bool operator==(ClsInfoImp const& other) const;

 private:
  double unweightedCount_ = 0.0;
  double percentSize_;
  TArray<double> classCounts_;         // weighted cases, by class index
  TArray<double> classProbabilities_;  // by class index; may be empty
  int prediction_ = 0;
};

/// The statistics of a node of a regression tree, for reading. A histogram divides the range from
/// minimum to maximum into bins of equal width, indexed from 0 at the minimum.
class TREE_API RegInfo {
 public:
  virtual ~RegInfo();

  /// Mean of the target.
  virtual double GetMean() const = 0;
  /// Smallest value of the target; +infinity in an empty range.
  virtual double GetMinimum() const = 0;
  /// Largest value of the target; -infinity in an empty range.
  virtual double GetMaximum() const = 0;
  /// Standard deviation of the target.
  virtual double GetStdDev() const = 0;
  /// The predicted value of the target.
  virtual double GetPrediction() const = 0;
  /// Number of bins of the histogram; 0 without one.
  virtual int GetNumBins() const = 0;
  /// Weighted number of cases in the bin. Requires a valid index.
  virtual double GetBinSize(int index) const = 0;
  /// Where the bin begins, in units of the target. Not finite without bins or without a range; an
  /// index out of range counts on in steps of a bin's width.
  virtual double GetBinLeftEndPoint(int index) const = 0;
  /// Where the bin ends, in units of the target; otherwise as `GetBinLeftEndPoint`.
  virtual double GetBinRightEndPoint(int index) const = 0;
};

/// The regression statistics of one node for one data sample. Optional statistics take storage only
/// once they are set: one element per set storage flag, lowest flag first.
class TREE_API RegInfoImp : public RegInfo {
 public:
  /// Optional statistics, one bit each.
  enum StatisticStorageFlags : unsigned int {
    StoreStdDev = 1,           ///< standard deviation of the target
    StorePrediction = 2,       ///< predicted value, where it is not the mean
    StoreUnweightedCount = 4,  ///< number of cases, unweighted
    StoreReserved1 = 8,        ///< reserved, as are all that follow: stored, but read by no getter
    StoreReserved2 = 16,       ///< reserved
    StoreReserved3 = 32,       ///< reserved
    StoreReserved4 = 64,       ///< reserved
    StoreReserved5 = 128,      ///< reserved
  };

  /// No cases, no bins, no optional statistics, an empty range (minimum +infinity, maximum
  /// -infinity).
  RegInfoImp();
  /// A copy as `CopyData` makes it.
  ///@{
  RegInfoImp(RegInfoImp const& other);
  RegInfoImp& operator=(RegInfoImp const& other);
  ///@}

  ~RegInfoImp() override;
  double GetMean() const override;
  double GetMinimum() const override;
  double GetMaximum() const override;
  /// Standard deviation of the target; 0.0 when not set.
  double GetStdDev() const override;
  /// The predicted value of the target; the mean when not set.
  double GetPrediction() const override;
  int GetNumBins() const override;
  double GetBinSize(int index) const override;
  double GetBinLeftEndPoint(int index) const override;
  double GetBinRightEndPoint(int index) const override;
  /// Weighted number of cases.
  virtual double GetCount() const;
  /// Number of cases, unweighted; the weighted number when not set.
  virtual double GetUnweightedCount() const;
  /// Sets the weighted number of cases; any value.
  virtual void SetCount(double count);

  /// Sets the mean of the target; any value.
  void SetMean(double mean);
  /// Sets the smallest value of the target; any value, not compared with the maximum.
  void SetMinimum(double minimum);
  /// Sets the largest value of the target; any value, not compared with the minimum.
  void SetMaximum(double maximum);
  /// Sets the number of bins; new ones are 0.0. **Clamps** a negative number to 0.
  void SetNumBins(int count);
  /// Sets the weighted number of cases in the bin. Requires a valid index.
  void SetBinSize(int index, double size);
  /// Back to the state of a new object.
  void Clear();
  /// Takes over all statistics of `other`. Deliberate: the copy always stores a standard deviation,
  /// 0.0 when `other` has none; it equals its source all the same.
  void CopyData(RegInfoImp const& other);

  /// Writes the statistic to `value` and returns true; false, leaving `value` as it was, when it is
  /// not set.
  bool GetExtendedStatistic(StatisticStorageFlags flag, double* value) const;
  /// The statistic. Requires that it is set.
  double GetExtendedStatistic(StatisticStorageFlags flag) const;
  /// Stores the statistic, over an earlier value if there is one. Ignores a flag that is not one of
  /// the eight single bits.
  void SetExtendedStatistic(StatisticStorageFlags flag, double value);
  /// Where a set statistic is stored, from 0; -1 when it is not set or not one of the eight bits.
  int GetExtendedStatisticPos(StatisticStorageFlags flag) const;
  /// Where an unset statistic would be stored; -1 when it is set or not one of the eight bits.
  int GetExtendedStatisticInsertionPos(StatisticStorageFlags flag) const;

  /// Whether everything that can be read is equal, doubles by plain floating equality.
  bool operator==(RegInfoImp const& other) const;

 private:
  double BinBoundary(double index) const;

  double count_ = 0.0;
  double mean_ = 0.0;
  double maximum_;
  double minimum_;
  std::vector<double> binSizes_;
  std::vector<double> extendedStatistics_;
  unsigned int storageFlags_ = 0;
};

/// Summary of the values that the cases of one node have in one predictor.
class TREE_API PredictorImp {
 public:
  /// A range from 0.0 to 0.0, no values, none missing.
  PredictorImp();
  /// Copies all fields.
  ///@{
  PredictorImp(PredictorImp const& other);
  PredictorImp& operator=(PredictorImp const& other);
  ///@}

  virtual ~PredictorImp();
  /// Writes the smallest and the largest value; always true.
  virtual bool GetValueRange(double* minimum, double* maximum) const;
  /// Writes the number of values held; always true.
  virtual bool GetNumValues(int* count) const;
  /// Copies the first `count` values, in the order in which they were set, to `values` (room for as
  /// many doubles) and returns true. Refuses a negative count and one beyond the number of values.
  virtual bool GetValues(double* values, int count) const;
  /// Whether any case had a missing value.
  virtual bool HasMissingValues() const;
  /// Sets the smallest and the largest value; any values, in whatever order.
  virtual void SetValueRange(double minimum, double maximum);
  /// Sets the number of values; new ones are 0.0. **Clamps** a negative number to 0.
  virtual void SetNumValues(int count);
  /// Replaces the values by the `count` values given (**copied**). **Clamps** a negative number to
  /// 0.
  virtual void SetValues(double const* values, int count);
  /// Says whether any case had a missing value.
  virtual void SetHasMissingValues(bool flag);

  /// Whether all fields are equal, doubles by plain floating equality.
  bool operator==(PredictorImp const& other) const;

 private:
  double minimum_ = 0.0;
  double maximum_ = 0.0;
  std::vector<double> values_;
  bool hasMissingValues_ = false;
};

/// A node of a tree, for reading. Children, competitors and surrogates are numbered from 0.
class TREE_API Node {
 public:
  virtual ~Node();

  /// The parent, null at the root. **Borrowed** until the tree changes.
  virtual Node const* GetParent() const = 0;
  /// Number of children; 0 at a terminal node.
  virtual int GetNumChildren() const = 0;
  /// The child at `position`; null beyond the end, and where none has been stored. **Borrowed**
  /// until the tree changes.
  virtual Node const* GetChild(unsigned int position) const = 0;
  /// Number of competing split rules; the first is the primary split of the node.
  virtual int GetNumCompetitors() const = 0;
  /// The child taken by cases that no rule can place; negative when there is none. The builder
  /// records it in the primary split (`SplitRuleImp::SetDumbRule`), nothing is counted here.
  virtual int GetBiggestChildPos() const = 0;
  /// A copy of the competing rule at `position`; null beyond the end, and where none has been
  /// stored. **New**: the caller deletes it.
  virtual SplitRule* GetCompetitor(unsigned int position) const = 0;
  /// Number of surrogate split rules, which stand in, in this order, for a primary split that
  /// cannot place a case.
  virtual int GetNumSurrogates() const = 0;
  /// A copy of the surrogate rule at `position`; null beyond the end, and where none has been
  /// stored. **New**: the caller deletes it.
  virtual SplitRule* GetSurrogate(unsigned int position) const = 0;
  /// The node's identifier, as its builder set it.
  virtual unsigned int GetId() const = 0;
  /// The prediction: a class index or a value of the target, always by the training sample.
  /// Requires statistics of the training sample.
  virtual double GetAssignment() const = 0;
  /// Weighted number of cases; 0 without statistics of the sample.
  virtual double GetNodeSize(DataSample sample) const = 0;
  /// Number of cases, unweighted; 0 without statistics of the sample.
  virtual double GetUnweightedNodeSize(DataSample sample) const = 0;
  /// Size relative to the root. Deliberate: in a classification tree what the growing algorithm
  /// stored, 0 without statistics; in a regression tree the share of the root's weighted cases, a
  /// fraction in [0, 1], which costs a climb to the root.
  virtual double GetPercentageNodeSize(DataSample sample) const = 0;
  /// Number of predictors summarised, indexed from 0.
  virtual int GetNumPredictors() const = 0;
  /// Writes the smallest and the largest value of the predictor in this node, and returns true.
  /// Refuses an index out of range.
  virtual bool GetPredictorRange(int index, double* minimum, double* maximum) const = 0;
  /// Writes how many values of the predictor the summary holds, and returns true. Refuses an index
  /// out of range.
  virtual bool GetNumPredictorValues(int index, int* count) const = 0;
  /// Copies the first `count` values of the predictor that the summary holds to `values` (room for
  /// as many doubles) and returns true. Refuses an index out of range, a negative count, and one
  /// beyond the number of values.
  virtual bool GetPredictorValues(int index, double* values, int count) const = 0;
  /// Writes whether any case of this node had a missing value in the predictor, and returns true.
  /// Refuses an index out of range.
  virtual bool GetPredictorMissingValueFlag(int index, bool* flag) const = 0;
  /// The class distribution for the sample; null when there is none. **Borrowed** until it is
  /// replaced or the node deleted.
  virtual ClsInfo const* GetClsInfo(DataSample sample) const = 0;
  /// The regression statistics for the sample; null when there are none. **Borrowed** until they
  /// are replaced or the node deleted.
  virtual RegInfo const* GetRegInfo(DataSample sample) const = 0;
};

/// A node that can be built and changed; it owns its children with all below them.
/// Expected of the builder and not verified: a node with children has a primary split rule (at
/// competitor position 0) that tells apart as many children as there are. Give that rule its dumb
/// rule before routing cases: without one, a case that no rule can place ends at the inner node.
class TREE_API NodeImp : public Node {
 public:
  /// A classification node with id 0 and nothing else.
  NodeImp();
  /// A deep copy without a parent, as `Clone` makes it.
  NodeImp(NodeImp const& other);
  /// Empties this node (`Clean`) and fills it with a deep copy of `other`, whose subtree is cloned;
  /// the parent stays. The copy is complete before anything is emptied, so `other` may be a node of
  /// this tree. Pointers to what this node held end here.
  NodeImp& operator=(NodeImp const& other);

  /// Deletes all that the node owns, with everything below it.
  ~NodeImp() override;
  Node const* GetParent() const override;
  int GetNumChildren() const override;
  Node const* GetChild(unsigned int position) const override;
  int GetNumCompetitors() const override;
  int GetBiggestChildPos() const override;
  SplitRule* GetCompetitor(unsigned int position) const override;
  int GetNumSurrogates() const override;
  SplitRule* GetSurrogate(unsigned int position) const override;
  unsigned int GetId() const override;
  double GetAssignment() const override;
  double GetNodeSize(DataSample sample) const override;
  double GetUnweightedNodeSize(DataSample sample) const override;
  double GetPercentageNodeSize(DataSample sample) const override;
  int GetNumPredictors() const override;
  bool GetPredictorRange(int index, double* minimum, double* maximum) const override;
  bool GetNumPredictorValues(int index, int* count) const override;
  bool GetPredictorValues(int index, double* values, int count) const override;
  bool GetPredictorMissingValueFlag(int index, bool* flag) const override;
  ClsInfo const* GetClsInfo(DataSample sample) const override;
  RegInfo const* GetRegInfo(DataSample sample) const override;
  /// Makes this a terminal node: deletes all children, each after what is below it, and the
  /// surrogates; the competitors stay. The argument is ignored. Always true.
  virtual bool RemoveChildren(bool ignored);
  /// The child position for a case; -1 where `GetNumChildren` answers 0 or less. `values`: one
  /// double per predictor, by predictor index. Asks the primary rule, then the surrogates in order,
  /// and takes the primary rule's dumb child (possibly negative) when none can place the case. The
  /// rules' answers are not checked. Requires a primary rule in a node with children.
  virtual int Classify(double const* values) const;
  /// Whether this is a node of a classification tree, which has class distributions instead of
  /// regression statistics.
  virtual bool IsClassificationNode() const;

  /// Sets the identifier; any value.
  void SetId(unsigned int id);
  /// Says which kind of tree this is a node of, and nothing else: statistics held stay. Setting
  /// statistics says it as well.
  void SetClassificationNode(bool flag);

  /// The class distribution for the sample, to be changed; null when there is none. **Borrowed**
  /// until it is replaced or the node deleted.
  ClsInfoImp* GetClsInfoImp(DataSample sample) const;
  /// The regression statistics for the sample, to be changed; null when there are none.
  /// **Borrowed** until they are replaced or the node deleted.
  RegInfoImp* GetRegInfoImp(DataSample sample) const;
  /// Replaces the class distribution of the sample by `info` (**taken**; a `ClsInfoImp`, or null),
  /// deletes all regression statistics, and makes this a classification node. An object of another
  /// class is deleted and counts as null; the one that is held already stays.
  void SetClsInfo(ClsInfo* info, DataSample sample);
  /// Replaces the regression statistics of the sample by `info` (**taken**; a `RegInfoImp`, or
  /// null), deletes all class distributions, and makes this a regression node; otherwise as
  /// `SetClsInfo`.
  void SetRegInfo(RegInfo* info, DataSample sample);

  /// Sets the number of children. **Clamps** a negative number to 0. Deliberate: all entries become
  /// null, and the objects that the old ones pointed to are not deleted: they belong to the caller
  /// again.
  void SetNumChildren(int count);
  /// Sets the number of rules of this kind. Deliberate: as in `SetNumChildren`, all entries become
  /// null, and the rules held so far belong to the caller again.
  ///@{
  void SetNumCompetitors(unsigned int count);
  void SetNumSurrogates(unsigned int count);
  ///@}
  /// Stores `child` (**taken**) and makes this node its parent. Requires a valid position, and a
  /// `NodeImp` or null. Deliberate: the entry's old object is not deleted.
  void SetChild(unsigned int position, Node* child);
  /// Deletes the rule of this kind held at `position` and stores `rule` (**taken**; may be null;
  /// the one that is held already stays). Requires a valid position.
  ///@{
  void SetCompetitor(unsigned int position, SplitRuleImp* rule);
  void SetSurrogate(unsigned int position, SplitRuleImp* rule);
  ///@}
  /// The child at `position`, to be changed; null where none has been stored. **Borrowed** until
  /// the tree changes. Requires a valid position.
  NodeImp* GetChildImp(unsigned int position) const;
  /// The rule of this kind at `position`, to be changed; null where none has been stored.
  /// **Borrowed** until it is replaced or the node deleted. Requires a valid position.
  ///@{
  SplitRuleImp* GetCompetitorImp(unsigned int position) const;
  SplitRuleImp* GetSurrogateImp(unsigned int position) const;
  ///@}

  /// Sets the number of predictor summaries; those that stay keep what they hold, new ones hold no
  /// values.
  void SetNumPredictors(unsigned int count);
  /// Sets the smallest and the largest value of predictor `index`; any values, in whatever order.
  /// Requires a valid index.
  void SetPredictorRange(int index, double minimum, double maximum);
  /// Sets the number of values of predictor `index`; new ones are 0.0. **Clamps** a negative number
  /// to 0. Requires a valid index.
  void SetNumPredictorValues(int index, int count);
  /// Replaces the values of predictor `index` by the `count` values given (**copied**). **Clamps**
  /// a negative number to 0. Requires a valid index.
  void SetPredictorValues(int index, double const* values, int count);
  /// Says whether any case of this node had a missing value in predictor `index`. Requires a valid
  /// index.
  void SetPredictorMissingValueFlag(int index, bool flag);

  /// Deletes the child at `position` with all below it; later children move one position down. The
  /// split rules stay. Ignores a position out of range.
  void RemoveChild(int position);
  /// Moves the child at position i to position `order`[i], and renumbers the children of the
  /// primary rule and all surrogates accordingly; other competitors stay. Requires a permutation of
  /// the child positions, and rules that can be reordered (`SplitRuleImp::ReorderMappings`).
  void ReorderSiblings(std::vector<int> const& order);
  /// Deletes children, rules and statistics. Id, classification flag, parent and predictor
  /// summaries stay.
  void Clean();
  /// A deep copy without a parent. **New**: the caller deletes it. Linear in the subtree.
  NodeImp* Clone() const;
  /// Whether both nodes are equal in all that they hold, their children and, if this node has a
  /// parent, their parents. Statistics that this node lacks are not compared. Deliberate: children
  /// and parents compare each other in turn, so the comparison ends only for nodes that stand alone
  /// or differ on the way.
  bool operator==(NodeImp const& other) const;

  /// Sets `child` to the child at `position` (**borrowed** until the tree changes) and returns
  /// true. Refuses a position out of range.
  ///@{
  bool Child(int position, NodeImp** child);
  bool Child(int position, NodeImp const** child) const;
  ///@}
  /// The node in which a case ends that starts at this one: `stop` as soon as the case reaches it;
  /// otherwise where no child can be chosen if `stop` is null, and null if it is not. **Borrowed**
  /// from the tree. `values` as for `Classify`. Requires rules that answer no position beyond their
  /// node's children: such a case is tried again at the same node for as long as the answer stays
  /// the same.
  NodeImp const* DropObservationThroughTree(double const* values, NodeImp const* stop) const;
  /// The first competitor position, the primary split's 0 included, whose rule tests predictor
  /// `predictorIndex`; -1 when none does.
  int FindCompetitorPos(int predictorIndex) const;

 private:
  using Children = std::vector<std::unique_ptr<NodeImp>>;
  using Rules = std::vector<std::unique_ptr<SplitRuleImp>>;

  void CopySubtree(NodeImp const& other);
  void CopyAllButChildren(NodeImp const& other);
  void DeleteSubtrees();

  Children children_;          // by child position
  NodeImp* parent_ = nullptr;  // not owned
  Rules competitors_;          // the primary split first
  Rules surrogates_;           // in order of preference
  unsigned int id_ = 0;
  bool isClassification_ = true;
  std::array<std::unique_ptr<RegInfoImp>, 2> regInfo_;  // by data sample
  std::array<std::unique_ptr<ClsInfoImp>, 2> clsInfo_;  // by data sample
  std::vector<PredictorImp> predictors_;                // by predictor index
};

}  // namespace tree

namespace MCTree {

/// A forward iterator over objects owned elsewhere.
template <class T>
class TREE_API AIterator {
 public:
  virtual ~AIterator() = default;

  /// 1 or 0; which of them means that there is more, the iterator says. Loop on `Next()` instead.
  virtual int HasMore() const = 0;
  /// The next object, null at the end. **Borrowed** from its owner.
  virtual T const* Next() = 0;
  /// Why there is no current object, as a code of the iterator; 0 when there is one.
  virtual int GetFailReason() const = 0;
};

}  // namespace MCTree

extern template class MCTree::AIterator<tree::Node>;

namespace tree {

/// An iterator over the nodes of a tree.
class TREE_API NodeIterator : public MCTree::AIterator<Node> {
 public:
  ~NodeIterator() override;
};

/// Walks a tree, or the subtree of a node, in prefix order: a node before its children, children in
/// order of position. Loop on `Next()` until it returns null. The tree is **borrowed** and must not
/// change meanwhile.
class TREE_API PrefixNodeIterator : public NodeIterator {
 public:
  /// A walk that has not begun. `root`: where it starts and what bounds it; null for an empty walk.
  explicit PrefixNodeIterator(Node const* root);
  /// Copies root and current node, and walks on from there by itself.
  ///@{
  PrefixNodeIterator(PrefixNodeIterator const& other);
  PrefixNodeIterator& operator=(PrefixNodeIterator const& other);
  ///@}

  ~PrefixNodeIterator() override;
  /// 1 when no further node exists and 0 when one does. Deliberate: the reverse of the name.
  int HasMore() const override;
  /// The next node, the root at first; null at the end, where the last node stays current.
  /// **Borrowed** from the tree.
  Node const* Next() override;
  /// 1 before the first node has been delivered, 0 afterwards.
  int GetFailReason() const override;

 private:
  Node const* current_ = nullptr;  // not owned
  Node const* root_;               // not owned
};

/// The node after `current` in prefix order within the subtree of `root`: `root` itself when
/// `current` is null, null when it is the last one. **Borrowed** from the tree. Needs no memory;
/// costs at worst the depth of the tree times its fan-out. Requires a `current` in the subtree of
/// `root`.
TREE_API Node const* PrefixFindNext(Node const* root, Node const* current);

/// Several nodes of one tree seen as one: their sizes added up, their statistics merged. The nodes
/// are **borrowed** for this object's life.
/// The statistics are scratch results inside this object: each call of `GetClsInfo` or `GetRegInfo`
/// overwrites what the one before returned, so even reading is for one thread at a time.
class TREE_API CumulativeNode {
 public:
  /// Which size of the nodes is added up.
  enum NodeSizeType : int {
    NodeSizeWeighted = 0,    ///< as `Node::GetNodeSize`
    NodeSizeUnweighted = 1,  ///< as `Node::GetUnweightedNodeSize`
    NodeSizePercentage = 2,  ///< as `Node::GetPercentageNodeSize`
  };

  /// A group of `nodes` in this order, none of them null. It is valid if the first node has
  /// statistics of the training sample. Deliberate: the others are not examined, for all nodes of a
  /// tree are of one kind. An empty group is not valid.
  explicit CumulativeNode(std::vector<Node const*> const& nodes);
  /// The same group of the same nodes, with statistics of its own.
  ///@{
  CumulativeNode(CumulativeNode const& other);
  CumulativeNode& operator=(CumulativeNode const& other);
  ///@}

  virtual ~CumulativeNode();
  /// The sum of the nodes' weighted sizes; `systemMissingValue()` for a group that is not valid.
  virtual double GetNodeSize(DataSample sample) const;
  /// The sum of the nodes' unweighted sizes; `systemMissingValue()` for a group that is not valid.
  virtual double GetUnweightedNodeSize(DataSample sample) const;
  /// The sum of the nodes' sizes relative to the root, in their unit; `systemMissingValue()` for a
  /// group that is not valid.
  virtual double GetPercentageNodeSize(DataSample sample) const;
  /// The nodes' class counts added up class by class, in the order of the nodes; null for a group
  /// that is not valid. Nodes without a distribution for the sample add nothing; the first that has
  /// one says how many classes there are. Prediction and percent size are not merged. **Borrowed**
  /// until the next call.
  virtual ClsInfoImp const* GetClsInfo(DataSample sample);
  /// The nodes' counts and bins added up, and the mean of the target over all of them; null for a
  /// group that is not valid. Nodes of size 0 or without statistics for the sample add nothing;
  /// without any that adds, the mean is `systemMissingValue()`. The first that has bins says how
  /// many there are. Minimum, maximum and prediction are not merged. Deliberate: the standard
  /// deviation is always missing. **Borrowed** until the next call.
  virtual RegInfoImp const* GetRegInfo(DataSample sample);

  /// The sum of the nodes' sizes of the given type, 0.0 per node for a type that is none of the
  /// three; `systemMissingValue()` for a group that is not valid.
  double GetNodeSize(NodeSizeType type, DataSample sample) const;
  /// Whether the group is valid.
  bool Validate() const;

 private:
  std::vector<Node const*> nodes_;  // not owned
  RegInfoImp regInfo_;              // scratch result of GetRegInfo
  ClsInfoImp clsInfo_;              // scratch result of GetClsInfo
  bool valid_;
};

}  // namespace tree

#endif  // TREE_NODES_H_
