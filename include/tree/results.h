#ifndef TREE_RESULTS_H_
#define TREE_RESULTS_H_

// What comes of growing a tree: the interface of the growing algorithms (`TreeAlgorithmBase` for
// programs that show trees, `TreeAlgorithm` for those that work on them), the statistics of a
// finished tree with their text form (`TreeStatistics`), and gains tables (`Gains`) with the
// settings by which they are made (`GainsSettings`). The handles own one object and copy it deeply.
// Threads: concurrent const operations on an unchanged object are safe.

#include <iosfwd>
#include <memory>
#include <vector>

#include "tree/export.h"
#include "tree/nodes.h"
#include "tree/settings.h"

namespace tree {

class GainsIntf;
class GainsSettings;
class TreeStatisticsImp;

/// Which nodes of a tree are meant.
enum NodeSelection : int {
  AllNodes = 0,
  TerminalNodes = 1,  ///< nodes without children
};

/// Answers questions about the tree that an algorithm has grown, as programs that show trees ask
/// them. Implemented by the growing algorithms.
///
/// Rules for all operations, here and in `TreeAlgorithm`:
/// - None throws (each is `noexcept`, and so is every override, which therefore catches
///   `std::bad_alloc` where it fills what the caller gave), and none stops the program.
/// - What can fail says so by its result, and leaves the tree as it was.
/// - Borrowed pointers are good until the next operation that changes the tree.
/// - Nodes are named by their id. The root has id 0; an id stays with its node for the node's life
///   and is not given to another node of the tree later.
class TREE_API TreeAlgorithmBase {
 public:
  virtual ~TreeAlgorithmBase();

  /// The root of the tree, null when there is none. **Borrowed**.
  virtual Node const* GetRootNode() const noexcept = 0;
  /// The settings with which the tree is grown. **Borrowed** for the algorithm's life. Their
  /// `GetType` names the class that holds what is the algorithm's own.
  virtual AlgSettings const* GetSettings() const noexcept = 0;
  /// Whether the target is categorical. Known before there is a tree.
  virtual bool IsClassificationTree() const noexcept = 0;
  /// Risk, standard error and misclassification matrix of the tree, null as long as it has not been
  /// validated since it last changed. **Borrowed**.
  virtual TreeStatisticsImp const* GetStatistics() const noexcept = 0;
  /// The node with this id; null when there is none. **Borrowed**. At worst linear in the tree.
  virtual Node const* FindNode(unsigned int id) const noexcept = 0;
  /// The number of nodes selected; 0 without a tree. At worst linear in the tree.
  virtual int GetNumNodes(NodeSelection selection) const noexcept = 0;
  /// A gains table of the tree by these settings; null without a tree, without memory, or when the
  /// tree cannot give what they ask for (a target category or a test sample that it does not have).
  /// **New**: the caller deletes it. It does not outlive the tree whose nodes it names.
  virtual GainsIntf* MakeGains(GainsSettings const& settings) const noexcept = 0;

 protected:
  TreeAlgorithmBase() = default;
  TreeAlgorithmBase(TreeAlgorithmBase const&) = default;
  TreeAlgorithmBase& operator=(TreeAlgorithmBase const&) = default;
};

/// Why an operation of a growing algorithm failed.
enum AlgorithmFailure : int {
  FailureNone = 0,             ///< it did not
  FailureNoData = 1,           ///< there are no cases to grow on
  FailureInvalidSettings = 2,  ///< the settings and the data do not fit together
  FailureNoTree = 3,           ///< there is no tree to work on
  FailureUnknownNode = 4,      ///< no node has the id given
  FailureInvalidSplit = 5,     ///< the split rule does not fit the node or the data
  FailureNoSplit = 6,          ///< the node has no split that the settings allow
  FailureCancelled = 7,        ///< the progress listener asked to stop
  FailureOutOfMemory = 8,
  FailureInternal = 9,          ///< a defect of the algorithm; its message says more
  FailureInvalidArgument = 10,  ///< a number or a pointer given makes no sense
};

/// Hears how far a long operation has come, and may end it.
class TREE_API ProgressListener {
 public:
  virtual ~ProgressListener();

  /// Called now and then by an operation that can take more than a moment (growing, finding splits,
  /// pruning, validating), in the thread that runs it. Returns whether to go on; false ends the
  /// operation with `FailureCancelled`. Does not call the algorithm back.
  /// `fraction`: the work done, in [0, 1], never less than at the call before within one operation.
  /// `activity`: what is being done, a few words for people. **Borrowed** for the call.
  virtual bool Report(double fraction, char const* activity) noexcept = 0;
};

/// A subtree that pruning can arrive at: one step of a sequence from the whole tree to its root.
/// Source: Breiman, Friedman, Olshen and Stone 1984, section 3.3, minimal cost-complexity pruning.
struct PruningStep {
  int numTerminalNodes = 0;
  double complexity = 0.0;  ///< cost per terminal node from which on the subtree is the best one
  double risk = 0.0;        ///< risk estimate, by the validation that the settings ask for
  double stdError = 0.0;    ///< its standard error
  /// Ids of the nodes at which `PruneNode` makes the present tree this subtree.
  std::vector<unsigned int> nodesToPrune;
};

/// Grows and changes a tree: what every growing algorithm implements. The rules of
/// `TreeAlgorithmBase` hold. Every operation that returns bool says by true that it did its work;
/// false, and `GetFailure` says why. A changed tree has no statistics until it is validated.
/// Growing makes the new nodes beside the present ones and replaces those at the end, so that a
/// failure can leave the tree as it was; for that time both take up memory.
class TREE_API TreeAlgorithm : public TreeAlgorithmBase {
 public:
  ~TreeAlgorithm() override;

  /// Grows a whole new tree in place of the present one: splits until the stopping rule ends every
  /// branch, be it at the root. Does not prune or validate.
  virtual bool Grow() noexcept = 0;
  /// Grows the subtree of a node anew, by at most `numLevels` levels and by the stopping rule,
  /// whose tree depth does not count here. At least 1 level; 0 only without a tree, to make a root
  /// and no more. Without a tree, node 0 is the new root.
  virtual bool GrowNode(unsigned int nodeId, int numLevels) noexcept = 0;
  /// Fills `candidates` (**borrowed**, emptied first, and empty after a failure) with the splits
  /// that the node could have, best first, each with its statistics and its dumb rule; at most as
  /// many as the settings keep competitors. The tree stays as it is.
  virtual bool FindCandidateSplits(unsigned int nodeId,
                                   std::vector<SplitRule>* candidates) noexcept = 0;
  /// Splits a node by a rule that the user chose (**copied**), in place of what is below it. The
  /// rule becomes the primary split; competitors and surrogates are found anew for it.
  /// `rule`: a candidate of the node, or any rule that sends cases of the node to at least two
  /// children; the stopping rule is not asked.
  virtual bool ApplySplit(unsigned int nodeId, SplitRule const& rule) noexcept = 0;
  /// Makes a node terminal by removing all that is below it, with its surrogates; its competing
  /// splits stay. True for a terminal node, too.
  virtual bool PruneNode(unsigned int nodeId) noexcept = 0;
  /// Prunes the tree back as the settings' pruning part says. True, too, when there is nothing to
  /// prune, and for algorithms that do not prune.
  virtual bool Prune() noexcept = 0;
  /// Fills `steps` (**borrowed**, emptied first, and empty after a failure) with the subtrees that
  /// pruning chooses from, from the whole tree to the root alone. The tree stays as it is.
  virtual bool GetPruningSequence(std::vector<PruningStep>* steps) noexcept = 0;
  /// Measures the risk of the tree as the settings' validation part says, by their costs and priors
  /// where they have any, and keeps it, with the misclassification matrix of a classification tree,
  /// for `GetStatistics`.
  virtual bool Validate() noexcept = 0;
  /// Puts a tree in place of the present one: one stored earlier, one to go back to, or null for
  /// none. **Taken** in every case. `root`: a tree over the predictors of the settings.
  virtual bool SetTree(NodeImp* root) noexcept = 0;
  /// The tree, for routing cases through it; null when there is none. **Borrowed**; clone it to
  /// keep it.
  virtual NodeImp const* GetTree() const noexcept = 0;
  /// Names who hears of the progress of long operations; null for nobody. **Borrowed** until
  /// another one is named.
  virtual void SetProgressListener(ProgressListener* listener) noexcept = 0;
  /// Why the last operation that returned bool failed; `FailureNone` if it did not.
  virtual AlgorithmFailure GetFailure() const noexcept = 0;
  /// The same as a sentence for people, with the names and numbers that matter; empty if it did not
  /// fail. **Borrowed** until the next operation that returns bool.
  virtual char const* GetFailureMessage() const noexcept = 0;
};

/// The summary of a finished tree, for reading.
class TREE_API TreeStatisticsIntf {
 public:
  virtual ~TreeStatisticsIntf();

  /// Weighted number of cases of class `observed` that the tree takes for class `predicted`;
  /// `systemMissingValue()` without a matrix. Requires valid class indexes.
  virtual double GetMisclassificationCount(int predicted, int observed) const = 0;
  /// The risk estimate, and its standard error.
  virtual double GetRisk() const = 0;
  virtual double GetStdError() const = 0;
  /// Whether it is a classification tree.
  virtual bool IsCls() const = 0;
  /// Number of target classes; 0 for a regression tree.
  virtual int GetNumClasses() const = 0;
  /// A deep copy. **New**: the caller deletes it.
  virtual TreeStatisticsIntf* Clone() const = 0;
};

/// The summary of a finished tree.
class TREE_API TreeStatisticsImp : public TreeStatisticsIntf {
 public:
  /// A regression tree with risk 0 and standard error 0.
  TreeStatisticsImp();
  /// As `Initialize`.
  TreeStatisticsImp(TreeAlgorithm const& algorithm, double risk, double stdError,
                    ValidationType validation);
  TreeStatisticsImp(TreeStatisticsImp const& other);
  TreeStatisticsImp& operator=(TreeStatisticsImp const& other);

  ~TreeStatisticsImp() override;
  double GetMisclassificationCount(int predicted, int observed) const override;
  double GetRisk() const override;
  double GetStdError() const override;
  bool IsCls() const override;
  int GetNumClasses() const override;
  TreeStatisticsIntf* Clone() const override;

  void SetRisk(double risk);
  void SetStdError(double stdError);
  void SetIsCls(bool flag);
  /// Sets the number of classes and makes an empty matrix for them.
  void SetNumClasses(int count);
  /// Makes a matrix of `count` x `count` zeros, none for 0 or less. The number of classes stays.
  void InitMatrix(int count);
  /// Requires a matrix with this cell.
  void SetMisclassificationCount(int predicted, int observed, double count);
  /// Adds the class counts of all terminal nodes from `node` on, by the class that the distribution
  /// of this sample predicts: store the same prediction in both samples of a node. Nodes without
  /// a class distribution for the sample, or that predict no class of the matrix, add nothing; so
  /// does null. Called twice, the counts double. Linear in the subtree.
  void AddMisclassificationInfo(Node const* node, DataSample sample);
  /// Takes over the tree of `algorithm` with its risk. For a classification tree, counts the
  /// misclassifications of the test sample after a split-sample validation, else of the training
  /// sample. Deliberate: after a cross-validation there is no matrix, since its counts would belong
  /// to other trees. A regression tree leaves the matrix as it was.
  void Initialize(TreeAlgorithm const& algorithm, double risk, double stdError,
                  ValidationType validation);

 private:
  // Whether the matrix, which has as many rows as columns, has the class.
  bool HasClass(int index) const;
  void RequireCell(char const* operation, int predicted, int observed) const;

  std::vector<std::vector<double>> matrix_;  // [predicted class][observed class]
  double risk_ = 0.0;
  double stdError_ = 0.0;
  int numClasses_ = 0;
  bool isCls_ = false;
};

/// Writes the statistics as text in the stream's own formatting of numbers. Deliberate: rows of the
/// matrix begin with a line break and do not end with one, so the risk follows the last row.
TREE_API std::ostream& operator<<(std::ostream& stream, TreeStatisticsImp const& statistics);

/// Handle of the summary of a tree; empty until something is assigned to it. An empty one reads as
/// a regression tree without classes, all of whose numbers are `systemMissingValue()`.
class TREE_API TreeStatistics {
 public:
  TreeStatistics();
  TreeStatistics(TreeStatistics const& other);
  TreeStatistics& operator=(TreeStatistics const& other);
  /// Holds a clone of `statistics`, once the object held so far is deleted: it must be another one.
  TreeStatistics& operator=(TreeStatisticsIntf const& statistics);
  virtual ~TreeStatistics();

  double GetMisclassificationCount(int predicted, int observed) const;
  double GetRisk() const;
  double GetStdError() const;
  bool IsCls() const;
  int GetNumClasses() const;

 private:
  std::unique_ptr<TreeStatisticsIntf> statistics_;
};

/// The order of the rows of a gains table.
enum SortOrder : int {
  SortAscending = 0,
  SortDescending = 1,
};

/// The step between the percentile rows of a gains table, in percent.
enum PercentileIncrement : int {
  PercentileIncrement1 = 1,
  PercentileIncrement2 = 2,
  PercentileIncrement5 = 5,
  PercentileIncrement10 = 10,
  PercentileIncrement20 = 20,
  PercentileIncrement25 = 25,
};

/// How a gains table is to be made. Categories are indexed from 0; money is in any one currency,
/// per case. Setters store any value, except as said.
class TREE_API GainsSettingsImp {
 public:
  /// Rows by node, not cumulative, descending by the training sample, of the average of the target;
  /// percentiles by 10; no revenues or expenses.
  GainsSettingsImp();
  /// Copies everything but the choice between revenues with expenses and profits. Deliberate: a
  /// copy may choose again.
  GainsSettingsImp(GainsSettingsImp const& other);
  GainsSettingsImp& operator=(GainsSettingsImp const& other);
  ~GainsSettingsImp();

  /// The category whose gains are shown; below 0, statistics are of the average of the target.
  int GetTargetCategory() const { return targetCategory_; }
  void SetTargetCategory(int category);
  PercentileIncrement GetPercentileIncrement() const { return percentileIncrement_; }
  void SetPercentileIncrement(PercentileIncrement increment);
  SortOrder GetSortOrder() const { return sortOrder_; }
  void SetSortOrder(SortOrder order);
  /// The sample whose statistics fill the table.
  DataSample GetDataSample() const { return dataSample_; }
  void SetDataSample(DataSample sample);
  /// The sample whose statistics order the rows.
  DataSample GetSortKey() const { return sortKey_; }
  void SetSortKey(DataSample sample);
  /// Whether rows carry cumulative statistics. Setting it ends percentile rows.
  bool HasCumulativeStatistics() const { return cumulative_; }
  void SetHasCumulativeStatistics(bool flag);
  /// Whether rows are percentiles of the cases. Setting it ends cumulative statistics.
  bool HasPercentileStatistics() const { return percentile_; }
  void SetHasPercentileStatistics(bool flag);
  /// Whether statistics are of the average of the target, as without a target category.
  bool HasAverageBasedStatistics() const { return targetCategory_ < 0; }
  /// The larger of the numbers of revenues and expenses.
  int GetNumCategories() const;
  /// The value of a category, 0.0 for one without. Profit is revenue less expense.
  double GetCategoryRevenue(int category) const;
  double GetCategoryExpense(int category) const;
  double GetCategoryProfit(int category) const;
  /// Sets the value of a category; those in between become 0.0. The first call decides whether
  /// the object takes revenues and expenses, or profits: calls of the other kind are ignored.
  /// Requires `category` >= 0.
  void SetCategoryRevenue(int category, double revenue);
  void SetCategoryExpense(int category, double expense);
  void SetCategoryProfit(int category, double profit);
  /// Stores the value whatever the object takes. Requires `category` >= 0.
  void DoCategoryRevenue(int category, double revenue);
  void DoCategoryExpense(int category, double expense);

 private:
  static constexpr unsigned char kTakesProfits = 1;
  static constexpr unsigned char kTakesRevenuesAndExpenses = 2;

  unsigned char moneyMode_ = 0;
  bool cumulative_ = false;
  bool percentile_ = false;
  int targetCategory_ = -1;
  PercentileIncrement percentileIncrement_ = PercentileIncrement10;
  SortOrder sortOrder_ = SortDescending;
  DataSample dataSample_ = TrainingSample;
  DataSample sortKey_ = TrainingSample;
  std::vector<double> expenses_;  // by category
  std::vector<double> revenues_;  // by category
};

/// Handle of gains settings. Every operation is that of `GainsSettingsImp` with the same name.
class TREE_API GainsSettings {
 public:
  GainsSettings();
  GainsSettings(GainsSettings const& other);
  GainsSettings& operator=(GainsSettings const& other);
  ~GainsSettings();

  int GetTargetCategory() const;
  void SetTargetCategory(int category);
  PercentileIncrement GetPercentileIncrement() const;
  void SetPercentileIncrement(PercentileIncrement increment);
  SortOrder GetSortOrder() const;
  void SetSortOrder(SortOrder order);
  DataSample GetDataSample() const;
  void SetDataSample(DataSample sample);
  DataSample GetSortKey() const;
  void SetSortKey(DataSample sample);
  bool HasCumulativeStatistics() const;
  void SetHasCumulativeStatistics(bool flag);
  bool HasPercentileStatistics() const;
  void SetHasPercentileStatistics(bool flag);
  bool HasAverageBasedStatistics() const;
  int GetNumCategories() const;
  double GetCategoryRevenue(int category) const;
  double GetCategoryExpense(int category) const;
  double GetCategoryProfit(int category) const;
  void SetCategoryRevenue(int category, double revenue);
  void SetCategoryExpense(int category, double expense);
  void SetCategoryProfit(int category, double profit);
  void DoCategoryRevenue(int category, double revenue);
  void DoCategoryExpense(int category, double expense);

 private:
  std::unique_ptr<GainsSettingsImp> imp_;
};

/// A gains table: rows made of one or more nodes of a tree each, with a value per column. Made by
/// growing algorithms. Rows, positions in a row and columns are numbered from 0; which columns
/// there are and what they mean, and what indexes out of range give, is for the implementation to
/// say.
class TREE_API GainsIntf {
 public:
  virtual ~GainsIntf();

  virtual int GetNumRows() const = 0;
  /// Number of nodes that make up the row.
  virtual int GetNumNodes(int row) const = 0;
  /// One of them. **Borrowed** from the tree.
  virtual Node const* GetNode(int row, int position) const = 0;
  /// Whether the table has the column.
  virtual bool HasColumn(int column) const = 0;
  virtual double GetValue(int row, int column) const = 0;
  /// An independent copy. **New**: the caller deletes it.
  virtual GainsIntf* Clone() const = 0;
};

/// Handle of a gains table; empty until one is assigned to it.
class TREE_API Gains {
 public:
  Gains();
  Gains(Gains const& other);
  Gains& operator=(Gains const& other);
  /// Holds a clone of `table`, once the table held so far is deleted: it must be another one.
  Gains& operator=(GainsIntf const& table);

  virtual ~Gains();
  /// 0 without a table, as for the number of nodes.
  virtual int GetNumRows() const;
  /// False without a table.
  virtual bool HasColumn(int column) const;
  virtual int GetNumNodes(int row) const;
  /// Null without a table. **Borrowed** from the tree.
  virtual Node const* GetNode(int row, int position) const;
  /// `systemMissingValue()` without a table.
  virtual double GetValue(int row, int column) const;

 private:
  std::unique_ptr<GainsIntf> table_;
};

}  // namespace tree

#endif  // TREE_RESULTS_H_
