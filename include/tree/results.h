#ifndef TREE_RESULTS_H_
#define TREE_RESULTS_H_

/// @file
/// What comes of growing a tree: the interface of the growing algorithms (`TreeAlgorithmBase` for
/// programs that show trees, `TreeAlgorithm` for those that work on them), the statistics of a
/// finished tree with their text form (`TreeStatistics`), and gains tables (`Gains`) with the
/// settings by which they are made (`GainsSettings`). The handles own one object and copy it
/// deeply. Threads: concurrent const operations on an unchanged object are safe.

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
  AllNodes = 0,       ///< terminal and inner nodes
  TerminalNodes = 1,  ///< nodes without children
};

/// Answers questions about the tree that an algorithm has grown, as programs that show trees ask
/// them. Implemented by the growing algorithms.
///
/// Rules for all operations, here and in `TreeAlgorithm`:
/// - None throws, and none stops the program: each catches `std::bad_alloc` where it fills what the
///   caller gave. All are `noexcept`, and with them every override, but for `GetRootNode` and
///   `IsClassificationTree`, which the smallest of stand-ins override in their own way.
/// - What can fail says so by its result, and leaves the tree as it was.
/// - Borrowed pointers are good until the next operation that changes the tree.
/// - Nodes are named by their id. The root has id 0; an id stays with its node for the node's life
///   and is not given to another node of the tree later.
class TREE_API TreeAlgorithmBase {
 public:
  virtual ~TreeAlgorithmBase();

  /// The root of the tree, null when there is none. **Borrowed**.
  virtual Node const* GetRootNode() const = 0;
  /// The settings with which the tree is grown. **Borrowed** for the algorithm's life. Their
  /// `GetType` names the class that holds what is the algorithm's own.
  virtual AlgSettings const* GetSettings() const noexcept = 0;
  /// Whether the target is categorical. Known before there is a tree.
  virtual bool IsClassificationTree() const = 0;
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
  /// For derived classes: an interface holds nothing that could be copied.
  ///@{
  TreeAlgorithmBase() = default;
  TreeAlgorithmBase(TreeAlgorithmBase const&) = default;
  TreeAlgorithmBase& operator=(TreeAlgorithmBase const&) = default;
  ///@}
};

/// Why an operation of a growing algorithm failed.
enum AlgorithmFailure : int {
  FailureNone = 0,              ///< it did not
  FailureNoData = 1,            ///< there are no cases to grow on
  FailureInvalidSettings = 2,   ///< the settings and the data do not fit together
  FailureNoTree = 3,            ///< there is no tree to work on
  FailureUnknownNode = 4,       ///< no node has the id given
  FailureInvalidSplit = 5,      ///< the split rule does not fit the node or the data
  FailureNoSplit = 6,           ///< the node has no split that the settings allow
  FailureCancelled = 7,         ///< the progress listener asked to stop
  FailureOutOfMemory = 8,       ///< there is not enough memory
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
  int numTerminalNodes = 0;  ///< number of terminal nodes of the subtree
  double complexity = 0.0;   ///< cost per terminal node from which on the subtree is the best one
  double risk = 0.0;         ///< risk estimate, by the validation that the settings ask for
  double stdError = 0.0;     ///< its standard error
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

  /// Weighted number of cases of class `observed` that the tree takes for class `predicted`, by
  /// class index from 0; `systemMissingValue()` without a matrix. Requires valid class indexes
  /// where there is one.
  virtual double GetMisclassificationCount(int predicted, int observed) const = 0;
  /// The risk estimate, as the growing algorithm measured it: by convention the misclassification
  /// cost expected per case, in a regression tree the mean squared error.
  virtual double GetRisk() const = 0;
  /// The standard error of the risk estimate, in its unit.
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
  /// A regression tree with risk 0, standard error 0, no classes and no matrix.
  TreeStatisticsImp();
  /// The statistics that `Initialize` makes of the same arguments.
  TreeStatisticsImp(TreeAlgorithm const& algorithm, double risk, double stdError,
                    ValidationType validation);
  /// Copies all fields, the matrix deeply.
  ///@{
  TreeStatisticsImp(TreeStatisticsImp const& other);
  TreeStatisticsImp& operator=(TreeStatisticsImp const& other);
  ///@}

  ~TreeStatisticsImp() override;
  double GetMisclassificationCount(int predicted, int observed) const override;
  double GetRisk() const override;
  double GetStdError() const override;
  bool IsCls() const override;
  int GetNumClasses() const override;
  TreeStatisticsIntf* Clone() const override;

  /// Sets the risk estimate; any value.
  void SetRisk(double risk);
  /// Sets the standard error of the risk estimate; any value.
  void SetStdError(double stdError);
  /// Says whether it is a classification tree. The matrix stays, but cannot be read while it is
  /// not.
  void SetIsCls(bool flag);
  /// Sets the number of classes, any value, and makes a matrix of zeros for them, as `InitMatrix`
  /// does.
  void SetNumClasses(int count);
  /// Makes a matrix of `count` x `count` zeros, none for 0 or less. The number of classes stays.
  void InitMatrix(int count);
  /// Sets the weighted number of cases of class `observed` that the tree takes for class
  /// `predicted`. Requires a matrix with this cell.
  void SetMisclassificationCount(int predicted, int observed, double count);
  /// Adds the class counts of all terminal nodes from `node` on, by the class that the distribution
  /// of this sample predicts: store the same prediction in both samples of a node. Nodes without
  /// a class distribution for the sample, or that predict no class of the matrix, add nothing; so
  /// does null. Called twice, the counts double. Linear in the subtree.
  void AddMisclassificationInfo(Node const* node, DataSample sample);
  /// Takes over the tree of `algorithm` with its risk. For a classification tree, counts the
  /// misclassifications of the test sample after a split-sample validation, else of the training
  /// sample. Without a root, or a class distribution of the training sample in it, there are no
  /// classes and no matrix. Deliberate: after a cross-validation there is no matrix, since its
  /// counts would belong to other trees. A regression tree leaves the matrix as it was.
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

/// Writes the statistics as text in the stream's own formatting of numbers, and returns the stream.
/// Deliberate: rows of the matrix begin with a line break and do not end with one, so the risk
/// follows the last row.
TREE_API std::ostream& operator<<(std::ostream& stream, TreeStatisticsImp const& statistics);

/// Handle of the summary of a tree; empty until something is assigned to it. An empty one reads as
/// a regression tree without classes, all of whose numbers are `systemMissingValue()`.
class TREE_API TreeStatistics {
 public:
  /// An empty handle.
  TreeStatistics();
  /// Holds a clone of what `other` holds; nothing when that is empty.
  ///@{
  TreeStatistics(TreeStatistics const& other);
  TreeStatistics& operator=(TreeStatistics const& other);
  ///@}
  /// Holds a clone of `statistics` (**copied**), once the object held so far is deleted. Requires
  /// another object than that one.
  TreeStatistics& operator=(TreeStatisticsIntf const& statistics);
  virtual ~TreeStatistics();

  /// Weighted number of cases of class `observed` that the tree takes for class `predicted`;
  /// `systemMissingValue()` without a matrix, and for an empty handle. Requires valid class indexes
  /// where there is a matrix.
  double GetMisclassificationCount(int predicted, int observed) const;
  /// The risk estimate; `systemMissingValue()` for an empty handle.
  double GetRisk() const;
  /// The standard error of the risk estimate; `systemMissingValue()` for an empty handle.
  double GetStdError() const;
  /// Whether it is a classification tree; false for an empty handle.
  bool IsCls() const;
  /// Number of target classes; 0 for a regression tree and an empty handle.
  int GetNumClasses() const;

 private:
  std::unique_ptr<TreeStatisticsIntf> statistics_;
};

/// The order of the rows of a gains table.
enum SortOrder : int {
  SortAscending = 0,   ///< the smallest value first
  SortDescending = 1,  ///< the largest value first
};

/// The step between the percentile rows of a gains table, in percent.
enum PercentileIncrement : int {
  PercentileIncrement1 = 1,    ///< rows at 1%, 2%, ...
  PercentileIncrement2 = 2,    ///< rows at 2%, 4%, ...
  PercentileIncrement5 = 5,    ///< rows at 5%, 10%, ...
  PercentileIncrement10 = 10,  ///< rows at 10%, 20%, ...
  PercentileIncrement20 = 20,  ///< rows at 20%, 40%, ...
  PercentileIncrement25 = 25,  ///< rows at 25%, 50%, ...
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
  ///@{
  GainsSettingsImp(GainsSettingsImp const& other);
  GainsSettingsImp& operator=(GainsSettingsImp const& other);
  ///@}
  ~GainsSettingsImp();

  /// The category whose gains are shown; below 0, statistics are of the average of the target.
  int GetTargetCategory() const { return targetCategory_; }
  /// Sets the category whose gains are shown; below 0 for statistics of the average of the target.
  void SetTargetCategory(int category);
  /// The step between percentile rows, in percent.
  PercentileIncrement GetPercentileIncrement() const { return percentileIncrement_; }
  /// Sets the step between percentile rows, in percent.
  void SetPercentileIncrement(PercentileIncrement increment);
  /// The order of the rows.
  SortOrder GetSortOrder() const { return sortOrder_; }
  /// Sets the order of the rows.
  void SetSortOrder(SortOrder order);
  /// The sample whose statistics fill the table.
  DataSample GetDataSample() const { return dataSample_; }
  /// Names the sample whose statistics fill the table.
  void SetDataSample(DataSample sample);
  /// The sample whose statistics order the rows.
  DataSample GetSortKey() const { return sortKey_; }
  /// Names the sample whose statistics order the rows.
  void SetSortKey(DataSample sample);
  /// Whether rows carry cumulative statistics.
  bool HasCumulativeStatistics() const { return cumulative_; }
  /// Says whether rows carry cumulative statistics; if so, they are not percentiles any more.
  void SetHasCumulativeStatistics(bool flag);
  /// Whether rows are percentiles of the cases instead of nodes.
  bool HasPercentileStatistics() const { return percentile_; }
  /// Says whether rows are percentiles of the cases; if so, they carry no cumulative statistics any
  /// more.
  void SetHasPercentileStatistics(bool flag);
  /// Whether statistics are of the average of the target, as without a target category.
  bool HasAverageBasedStatistics() const { return targetCategory_ < 0; }
  /// Number of categories with money: the larger of the numbers of revenues and expenses.
  int GetNumCategories() const;
  /// The revenue of a category; 0.0 for one without, and for any index out of range.
  double GetCategoryRevenue(int category) const;
  /// The expense of a category; 0.0 for one without, and for any index out of range.
  double GetCategoryExpense(int category) const;
  /// The profit of a category, which is its revenue less its expense.
  double GetCategoryProfit(int category) const;
  /// Sets the revenue of a category; new ones below it are 0.0. The first call that sets money
  /// decides whether the object takes revenues and expenses, or profits. Ignored by one that takes
  /// profits. Requires `category` >= 0.
  void SetCategoryRevenue(int category, double revenue);
  /// Sets the expense of a category, by the rules of `SetCategoryRevenue`.
  void SetCategoryExpense(int category, double expense);
  /// Sets the profit of a category, stored as its revenue with an expense of 0.0; new ones below it
  /// are 0.0. Ignored by an object that takes revenues and expenses. Requires `category` >= 0.
  void SetCategoryProfit(int category, double profit);
  /// Stores the revenue whatever the object takes; new ones below it are 0.0. Requires `category`
  /// >= 0.
  void DoCategoryRevenue(int category, double revenue);
  /// Stores the expense whatever the object takes; new ones below it are 0.0. Requires `category`
  /// >= 0.
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
  /// @copydoc GainsSettingsImp::GainsSettingsImp()
  GainsSettings();
  /// Holds a copy of the settings that `other` holds. Deliberate: a copy may choose again between
  /// revenues with expenses and profits.
  ///@{
  GainsSettings(GainsSettings const& other);
  GainsSettings& operator=(GainsSettings const& other);
  ///@}
  ~GainsSettings();

  /// @copydoc GainsSettingsImp::GetTargetCategory
  int GetTargetCategory() const;
  /// @copydoc GainsSettingsImp::SetTargetCategory
  void SetTargetCategory(int category);
  /// @copydoc GainsSettingsImp::GetPercentileIncrement
  PercentileIncrement GetPercentileIncrement() const;
  /// @copydoc GainsSettingsImp::SetPercentileIncrement
  void SetPercentileIncrement(PercentileIncrement increment);
  /// @copydoc GainsSettingsImp::GetSortOrder
  SortOrder GetSortOrder() const;
  /// @copydoc GainsSettingsImp::SetSortOrder
  void SetSortOrder(SortOrder order);
  /// @copydoc GainsSettingsImp::GetDataSample
  DataSample GetDataSample() const;
  /// @copydoc GainsSettingsImp::SetDataSample
  void SetDataSample(DataSample sample);
  /// @copydoc GainsSettingsImp::GetSortKey
  DataSample GetSortKey() const;
  /// @copydoc GainsSettingsImp::SetSortKey
  void SetSortKey(DataSample sample);
  /// @copydoc GainsSettingsImp::HasCumulativeStatistics
  bool HasCumulativeStatistics() const;
  /// @copydoc GainsSettingsImp::SetHasCumulativeStatistics
  void SetHasCumulativeStatistics(bool flag);
  /// @copydoc GainsSettingsImp::HasPercentileStatistics
  bool HasPercentileStatistics() const;
  /// @copydoc GainsSettingsImp::SetHasPercentileStatistics
  void SetHasPercentileStatistics(bool flag);
  /// @copydoc GainsSettingsImp::HasAverageBasedStatistics
  bool HasAverageBasedStatistics() const;
  /// @copydoc GainsSettingsImp::GetNumCategories
  int GetNumCategories() const;
  /// @copydoc GainsSettingsImp::GetCategoryRevenue
  double GetCategoryRevenue(int category) const;
  /// @copydoc GainsSettingsImp::GetCategoryExpense
  double GetCategoryExpense(int category) const;
  /// @copydoc GainsSettingsImp::GetCategoryProfit
  double GetCategoryProfit(int category) const;
  /// @copydoc GainsSettingsImp::SetCategoryRevenue
  void SetCategoryRevenue(int category, double revenue);
  /// @copydoc GainsSettingsImp::SetCategoryExpense
  void SetCategoryExpense(int category, double expense);
  /// @copydoc GainsSettingsImp::SetCategoryProfit
  void SetCategoryProfit(int category, double profit);
  /// @copydoc GainsSettingsImp::DoCategoryRevenue
  void DoCategoryRevenue(int category, double revenue);
  /// @copydoc GainsSettingsImp::DoCategoryExpense
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

  /// Number of rows.
  virtual int GetNumRows() const = 0;
  /// Number of nodes that make up the row.
  virtual int GetNumNodes(int row) const = 0;
  /// The node at `position` in the row. **Borrowed** from the tree.
  virtual Node const* GetNode(int row, int position) const = 0;
  /// Whether the table has the column.
  virtual bool HasColumn(int column) const = 0;
  /// The value in a row and column.
  virtual double GetValue(int row, int column) const = 0;
  /// An independent copy. **New**: the caller deletes it.
  virtual GainsIntf* Clone() const = 0;
};

/// Handle of a gains table; empty until one is assigned to it. What indexes out of range give is
/// for the table to say.
class TREE_API Gains {
 public:
  /// An empty handle.
  Gains();
  /// Holds a clone of the table that `other` holds; none when that is empty.
  ///@{
  Gains(Gains const& other);
  Gains& operator=(Gains const& other);
  ///@}
  /// Holds a clone of `table` (**copied**), once the table held so far is deleted. Requires another
  /// table than that one.
  Gains& operator=(GainsIntf const& table);

  virtual ~Gains();
  /// Number of rows; 0 without a table.
  virtual int GetNumRows() const;
  /// Whether the table has the column; false without a table.
  virtual bool HasColumn(int column) const;
  /// Number of nodes that make up the row; 0 without a table.
  virtual int GetNumNodes(int row) const;
  /// The node at `position` in the row; null without a table. **Borrowed** from the tree.
  virtual Node const* GetNode(int row, int position) const;
  /// The value in a row and column; `systemMissingValue()` without a table.
  virtual double GetValue(int row, int column) const;

 private:
  std::unique_ptr<GainsIntf> table_;
};

}  // namespace tree

#endif  // TREE_RESULTS_H_
