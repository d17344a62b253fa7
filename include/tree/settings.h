#ifndef TREE_SETTINGS_H_
#define TREE_SETTINGS_H_

/// @file
/// What a tree is grown with: the variables (`CoreSettings`), the stopping rule (`StopRule`), how
/// the finished tree is validated and pruned (`ValidationSpec`, `PruningSpec`), and the settings of
/// each algorithm, all derived from `AlgSettings`: CHAID and CART in a classification and a
/// regression variant, and QUEST. Algorithm settings own clones of their parts and never keep a
/// pointer that a caller gave them.
///
/// Getters of parts hand out **borrowed** pointers, good until the part is replaced by `CopyFrom`,
/// `Init`, `Clear` or an assignment. An `Init` refuses nothing: it stores what it is given, clamped
/// where it says so. The setters refuse.
/// Threads: concurrent const operations on unchanged settings are safe.

#include <memory>

#include "tree/containers.h"
#include "tree/export.h"
#include "tree/misclassification.h"
#include "tree/values.h"

// The lists of variables that settings keep.
extern template class MCTree::AArrayRO<tree::VariableSettings*>;
extern template class MCTree::AArrayRW<tree::VariableSettings*>;
extern template class MCTree::ArrayRW<tree::VariableSettings*>;

namespace tree {

/// The variables of a tree: one target, an ordered list of predictors (indexed from 0), and whether
/// the data carry weights.
class TREE_API CoreSettings {
 public:
  virtual ~CoreSettings();

  /// Appends a new predictor with default settings, to be filled in. **Borrowed** until an
  /// assignment to these settings.
  virtual VariableSettings* AddPredictor() = 0;
  /// Says whether the data carry a weight that counts repeated cases.
  virtual void SetHasFreqWeight(bool flag) = 0;
  /// Says whether the data carry a weight that scales cases.
  virtual void SetHasCaseWeight(bool flag) = 0;
  /// A deep copy. **New**: the caller deletes it.
  virtual CoreSettings* Clone() const = 0;
  /// Number of predictors.
  virtual int GetNumPredictors() const = 0;
  /// The predictor at `index`. **Borrowed** until an assignment to these settings. Requires 0 <=
  /// index < GetNumPredictors().
  ///@{
  virtual VariableSettings const* GetPredictor(int index) const = 0;
  virtual VariableSettings* GetPredictor(int index) = 0;
  ///@}
  /// The target. **Borrowed** until an assignment to these settings.
  ///@{
  virtual VariableSettings const* GetTarget() const = 0;
  virtual VariableSettings* GetTarget() = 0;
  ///@}
  /// Whether the data carry a weight that counts repeated cases.
  virtual bool HasFreqWeight() const = 0;
  /// Whether the data carry a weight that scales cases.
  virtual bool HasCaseWeight() const = 0;
};

/// The variables of a tree, owned.
class TREE_API CoreSettingsImp : public CoreSettings {
 public:
  /// A default target, no predictors, no weights.
  CoreSettingsImp();
  /// Copies deeply: the target and the predictors are cloned, in their order.
  CoreSettingsImp(CoreSettingsImp const& other);
  /// Takes over clones of all that `other` shows, whatever its class. The target and the predictors
  /// held so far are deleted once the clones are complete: nobody else owns them, so keeping them
  /// would leak. Pointers into them end here.
  ///@{
  CoreSettingsImp& operator=(CoreSettings const& other);
  CoreSettingsImp& operator=(CoreSettingsImp const& other);
  ///@}

  ~CoreSettingsImp() override;
  VariableSettings* AddPredictor() override;
  void SetHasFreqWeight(bool flag) override;
  void SetHasCaseWeight(bool flag) override;
  CoreSettings* Clone() const override;
  int GetNumPredictors() const override;
  VariableSettings const* GetPredictor(int index) const override;
  VariableSettings* GetPredictor(int index) override;
  VariableSettings const* GetTarget() const override;
  VariableSettings* GetTarget() override;
  bool HasFreqWeight() const override;
  bool HasCaseWeight() const override;

 private:
  using PredictorList = MCTree::ArrayRW<VariableSettings*>;
  // The list drops its pointers without deleting anything, so its owner deletes the predictors.
  struct DeletePredictors {
    void operator()(PredictorList* predictors) const;
  };
  using OwnedPredictors = std::unique_ptr<PredictorList, DeletePredictors>;

  static OwnedPredictors ClonePredictors(CoreSettings const& other);

  std::unique_ptr<VariableSettings> target_;
  OwnedPredictors predictors_;
  bool hasFreqWeight_ = false;
  bool hasCaseWeight_ = false;
};

/// When a growing algorithm stops splitting. Sizes are numbers of cases, percent sizes percentages
/// of the whole sample in [0, 100].
class TREE_API StopRule {
 public:
  virtual ~StopRule();

  /// A copy. **New**: the caller deletes it.
  virtual StopRule* Clone() const = 0;
  /// The least improvement of the split criterion for a split to be made, in its unit.
  virtual double GetMinImprovement() const = 0;
  /// The least number of cases of a node to be split.
  virtual int GetMinNodeSize() const = 0;
  /// The least size of a node to be split, in percent.
  virtual double GetMinNodePercentSize() const = 0;
  /// The least number of cases of each child of a split.
  virtual int GetMinChildSize() const = 0;
  /// The least size of each child of a split, in percent.
  virtual double GetMinChildPercentSize() const = 0;
  /// The greatest depth of the tree; a root alone has depth 0.
  virtual int GetMaxTreeDepth() const = 0;
  /// Sets the least improvement; any value.
  virtual void SetMinImprovement(double improvement) = 0;
  /// Sets the least number of cases of a node to be split. Ignores a negative one.
  virtual void SetMinNodeSize(int size) = 0;
  /// Sets the least size of a node to be split. Ignores a percentage outside [0, 100] and NaN.
  virtual void SetMinNodePercentSize(double percent) = 0;
  /// Sets the least number of cases of each child. Ignores a negative one.
  virtual void SetMinChildSize(int size) = 0;
  /// Sets the least size of each child. Ignores a percentage outside [0, 100] and NaN.
  virtual void SetMinChildPercentSize(double percent) = 0;
  /// Sets the greatest depth of the tree; any value.
  virtual void SetMaxTreeDepth(int depth) = 0;
};

/// A stopping rule as six plain fields.
class TREE_API StopRuleImp : public StopRule {
 public:
  /// Improvement 0.0001, node size 100, child size 50, percent sizes 0, tree depth 0.
  StopRuleImp();
  /// A rule with these six values, none of which is refused.
  StopRuleImp(double minImprovement, int minNodeSize, double minNodePercentSize, int minChildSize,
              double minChildPercentSize, int maxTreeDepth);
  /// Copies all six fields.
  ///@{
  StopRuleImp(StopRuleImp const& other);
  StopRuleImp& operator=(StopRuleImp const& other);
  ///@}

  ~StopRuleImp() override;
  StopRule* Clone() const override;
  double GetMinImprovement() const override;
  int GetMinNodeSize() const override;
  double GetMinNodePercentSize() const override;
  int GetMinChildSize() const override;
  double GetMinChildPercentSize() const override;
  int GetMaxTreeDepth() const override;
  void SetMinImprovement(double improvement) override;
  void SetMinNodeSize(int size) override;
  void SetMinNodePercentSize(double percent) override;
  void SetMinChildSize(int size) override;
  void SetMinChildPercentSize(double percent) override;
  void SetMaxTreeDepth(int depth) override;

  /// Stores all six as they are. Deliberate: no value is refused here.
  void Init(double minImprovement, int minNodeSize, double minNodePercentSize, int minChildSize,
            double minChildPercentSize, int maxTreeDepth);
  /// Whether all fields are equal, doubles within an absolute tolerance of 1e-12.
  bool operator==(StopRuleImp const& other) const;

 private:
  double minImprovement_;
  int minNodeSize_;
  double minNodePercentSize_;
  int minChildSize_;
  double minChildPercentSize_;
  int maxTreeDepth_;
};

/// How the risk of a finished tree is measured.
enum ValidationType : int {
  ValidationNone = 0,             ///< on the cases that the tree was grown on
  ValidationSplitSample = 1,      ///< on a test sample that is put aside
  ValidationCrossValidation = 2,  ///< by v-fold cross-validation
};

/// How a finished tree is validated.
class TREE_API ValidationSpec {
 public:
  virtual ~ValidationSpec();

  /// A copy. **New**: the caller deletes it.
  virtual ValidationSpec* Clone() const = 0;
  /// How the risk is measured.
  virtual ValidationType GetType() const = 0;
  /// Number of folds of a cross-validation; kept whatever the type.
  virtual int GetNumCVFolds() const = 0;
  /// The seed of the random draws (sample split, assignment to folds).
  virtual long GetRandomSeed() const = 0;
  /// Sets how the risk is measured, and returns true. Refuses every type but the split sample and
  /// cross-validation. Deliberate: there is no way back to no validation on the same object.
  virtual bool Set(ValidationType type) = 0;
  /// Sets the number of folds and returns true. Refuses less than 2.
  virtual bool SetNumCVFolds(int count) = 0;
  /// Sets the seed and returns true. Refuses one below 1.
  virtual bool SetRandomSeed(long seed) = 0;
};

/// How a finished tree is validated, as three plain fields.
class TREE_API ValidationSpecImp : public ValidationSpec {
 public:
  /// No validation, 10 folds, seed 2000000.
  ValidationSpecImp();
  /// Copies all three fields.
  ///@{
  ValidationSpecImp(ValidationSpecImp const& other);
  ValidationSpecImp& operator=(ValidationSpecImp const& other);
  ///@}

  ~ValidationSpecImp() override;
  ValidationSpec* Clone() const override;
  ValidationType GetType() const override;
  int GetNumCVFolds() const override;
  long GetRandomSeed() const override;
  bool Set(ValidationType type) override;
  bool SetNumCVFolds(int count) override;
  bool SetRandomSeed(long seed) override;

 private:
  long randomSeed_ = 2000000;
  ValidationType type_ = ValidationNone;
  int numCVFolds_ = 10;
};

/// How a grown tree is pruned back: to the smallest subtree whose risk lies within a number of
/// standard errors of the least risk, or to the subtree of least risk itself.
/// Source: Breiman, Friedman, Olshen and Stone 1984, section 3.4.3, the 1 SE rule.
class TREE_API PruningSpec {
 public:
  virtual ~PruningSpec();

  /// A copy. **New**: the caller deletes it.
  virtual PruningSpec* Clone() const = 0;
  /// Whether the subtree of least risk is picked instead of applying the standard error rule.
  virtual bool GetPickMinRiskTree() const = 0;
  /// The number of standard errors of risk allowed.
  virtual double GetSERuleFactor() const = 0;
  /// Says whether the subtree of least risk is picked.
  virtual void SetPickMinRiskTree(bool flag) = 0;
  /// Sets the number of standard errors of risk allowed. Ignores a negative one and NaN.
  virtual void SetSERuleFactor(double factor) = 0;
};

/// How a grown tree is pruned, as two plain fields.
class TREE_API PruningSpecImp : public PruningSpec {
 public:
  /// The standard error rule with factor 1.
  PruningSpecImp();
  /// Copies both fields.
  ///@{
  PruningSpecImp(PruningSpecImp const& other);
  PruningSpecImp& operator=(PruningSpecImp const& other);
  ///@}

  ~PruningSpecImp() override;
  PruningSpec* Clone() const override;
  bool GetPickMinRiskTree() const override;
  double GetSERuleFactor() const override;
  void SetPickMinRiskTree(bool flag) override;
  void SetSERuleFactor(double factor) override;

 private:
  double seRuleFactor_ = 1.0;
  bool pickMinRiskTree_ = false;
};

/// The growing algorithms, each with the class of its settings.
enum AlgorithmType : int {
  AlgRCart = 0,   ///< CART, continuous target: `RCartSettingsImp`
  AlgCCart = 1,   ///< CART, categorical target: `CCartSettingsImp`
  AlgRChaid = 2,  ///< CHAID, continuous target: `RChaidSettingsImp`
  AlgCChaid = 3,  ///< CHAID, categorical target: `CChaidSettingsImp`
  AlgQuest = 4,   ///< QUEST, categorical target: `QuestSettingsImp`
};

/// What the settings of all algorithms share. Settings can be copied between kinds: each takes over
/// what it shares with the other, and keeps the rest.
class TREE_API AlgSettings {
 public:
  /// The limits' defaults (5 competitors, clamped, and 32 categories), a clone of `core`
  /// (**copied**), and a default validation and stopping rule.
  explicit AlgSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  AlgSettings(AlgSettings const& other);
  /// Does what `CopyFrom` does, for the class that this object really has.
  AlgSettings& operator=(AlgSettings const& other);

  virtual ~AlgSettings();
  /// The algorithm that the settings are for, which names their class as well.
  virtual AlgorithmType GetType() const = 0;
  /// A deep copy. **New**: the caller deletes it.
  virtual AlgSettings* Clone() const = 0;
  /// The greatest number of competing splits kept per node.
  virtual int GetMaxNumCompetitors() const;
  /// The greatest number of categories that a nominal predictor may have.
  virtual int GetMaxNominalPredCategories() const;
  /// The variables, which cannot be changed through the settings; null after `Clear`. **Borrowed**
  /// until they are replaced.
  virtual CoreSettings const* GetCoreSettings() const;
  /// How the finished tree is validated; null after `Clear`. **Borrowed** until it is replaced.
  ///@{
  virtual ValidationSpec* GetValidationSpec();
  virtual ValidationSpec const* GetValidationSpec() const;
  ///@}
  /// When growing stops; null after `Clear`. **Borrowed** until it is replaced.
  ///@{
  virtual StopRule* GetStopRule();
  virtual StopRule const* GetStopRule() const;
  ///@}
  /// Takes over, as clones, all that this kind of settings shares with the kind of `other`, which
  /// may be this object. The kind of target stays, as in `Init`.
  virtual void CopyFrom(AlgSettings const& other);

  /// Sets the greatest number of competing splits kept per node. Ignores a number below 1;
  /// **clamps** the number held, in any case, as `ValidateNumCompetitors` does.
  void SetMaxNumCompetitors(int count);
  /// Sets the greatest number of categories of a nominal predictor. Ignores a number below 1.
  void SetMaxNominalPredCategories(int count);
  /// Clamps the greatest number of competitors to the present number of predictors, and to at least
  /// 1.
  void ValidateNumCompetitors();
  /// Replaces everything: stores the limits, clones the parts (a default part for null, and any of
  /// this object's own will do), and clamps the competitors. The kind of target stays: if only one
  /// of the old and the new target is continuous, the new one takes over the old one's level.
  void Init(int maxNumCompetitors, int maxNominalPredCategories, CoreSettings const* core,
            ValidationSpec const* validation, StopRule const* stopRule);
  /// Deletes the three parts; their getters answer null until the next `Init` or `CopyFrom`.
  void Clear();

 protected:
  /// Number of predictors; 0 after `Clear`.
  int CountPredictors() const;

 private:
  int maxNumCompetitors_ = 0;
  int maxNominalPredCategories_ = 0;
  std::unique_ptr<CoreSettings> coreSettings_;
  std::unique_ptr<ValidationSpec> validationSpec_;
  std::unique_ptr<StopRule> stopRule_;
};

/// How merged categories are split again; what the values stand for is the growing algorithm's
/// convention.
enum SplitMergeMethod : int {
  SplitMergeMethod0 = 0,  ///< the default
  SplitMergeMethod1 = 1,  ///< the alternative
};

/// The chi-square statistic used; what the values stand for is the growing algorithm's convention.
enum ChiSquareMethod : int {
  ChiSquareMethod0 = 0,  ///< the default
};

/// What both variants of CHAID (Kass 1980; Biggs, de Ville and Suen 1991) share. Significance
/// levels are probabilities, stored unchecked. A new object stops at tree depth 3.
class TREE_API ChaidSettings : public AlgSettings {
 public:
  /// Settings for the variables of `core` (**copied**): level 0.05 for splitting nodes and for
  /// merging categories, 0.025 for splitting merged ones, which is not allowed; method 0; p-values
  /// adjusted.
  explicit ChaidSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  ChaidSettings(ChaidSettings const& other);
  /// Does what `CopyFrom` does.
  ChaidSettings& operator=(ChaidSettings const& other);

  ~ChaidSettings() override;
  /// Takes over what `AlgSettings::CopyFrom` does; from settings of either variant of CHAID, the
  /// six fields of this class too.
  void CopyFrom(AlgSettings const& other) override;

  /// Significance level for splitting a node.
  double GetAlphaOfSplitNode() const { return alphaOfSplitNode_; }
  /// Sets the significance level for splitting a node; any value.
  void SetAlphaOfSplitNode(double alpha);
  /// Significance level for merging categories.
  double GetAlphaOfMerge() const { return alphaOfMerge_; }
  /// Sets the significance level for merging categories, and the one for splitting merged
  /// categories to half of it; any value.
  void SetAlphaOfMerge(double alpha);
  /// Significance level for splitting merged categories.
  double GetAlphaOfMergeSplit() const { return alphaOfMergeSplit_; }
  /// Sets the significance level for splitting merged categories; any value.
  void SetAlphaOfMergeSplit(double alpha);
  /// How merged categories are split again.
  SplitMergeMethod GetSplitMergeMethod() const { return splitMergeMethod_; }
  /// Says how merged categories are split again. Ignores every value but the two that are named.
  void SetSplitMergeMethod(SplitMergeMethod method);
  /// Whether merged categories may be split again.
  bool GetAllowSplitMerge() const { return allowSplitMerge_; }
  /// Says whether merged categories may be split again.
  void SetAllowSplitMerge(bool flag);
  /// Whether p-values are adjusted for multiple comparisons by Bonferroni's inequality.
  bool GetUseBonferroniAdj() const { return useBonferroniAdj_; }
  /// Says whether p-values are adjusted.
  void SetUseBonferroniAdj(bool flag);
  using AlgSettings::Init;
  /// Stores all six as they are; no level is derived from another.
  void Init(double alphaOfSplitNode, double alphaOfMerge, double alphaOfMergeSplit,
            SplitMergeMethod splitMergeMethod, bool allowSplitMerge, bool useBonferroniAdj);

 private:
  double alphaOfSplitNode_;
  double alphaOfMerge_;
  double alphaOfMergeSplit_;
  SplitMergeMethod splitMergeMethod_;
  bool allowSplitMerge_;
  bool useBonferroniAdj_;
};

/// Settings of CHAID for a categorical target.
class TREE_API CChaidSettings : public ChaidSettings {
 public:
  /// Settings for the variables of `core` (**copied**), with the defaults of `ChaidSettings`.
  explicit CChaidSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  CChaidSettings(CChaidSettings const& other);
  /// Does what `CopyFrom` does.
  CChaidSettings& operator=(CChaidSettings const& other);

  ~CChaidSettings() override;
  /// The convergence criterion of the iterative estimation of expected counts.
  virtual double GetConvergenceEpsilon() const = 0;
  /// The greatest number of iterations of the estimation of expected counts.
  virtual int GetMaxNumIterations() const = 0;
  /// The chi-square statistic used.
  virtual ChiSquareMethod GetChiSquareMethod() const = 0;
  /// The misclassification costs. **Borrowed** until they are replaced.
  ///@{
  virtual Cost const* GetCost() const = 0;
  virtual Cost* GetCost() = 0;
  ///@}
  /// The scores of an ordinal target's categories. **Borrowed** until they are replaced.
  ///@{
  virtual Scores const* GetScores() const = 0;
  virtual Scores* GetScores() = 0;
  ///@}
  /// Sets the convergence criterion; any value.
  virtual void SetConvergenceEpsilon(double epsilon) = 0;
  /// Sets the greatest number of iterations; any value.
  virtual void SetMaxNumIterations(int count) = 0;
  /// Sets the chi-square statistic used; any value.
  virtual void SetChiSquareMethod(ChiSquareMethod method) = 0;
};

/// Settings of CHAID for a categorical target, with the misclassification model.
class TREE_API CChaidSettingsImp : public CChaidSettings {
 public:
  /// Settings for the variables of `core` (**copied**): epsilon 0.001, chi-square method 0, at most
  /// 100 iterations, default costs and scores, priors of the alternate type.
  explicit CChaidSettingsImp(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  CChaidSettingsImp(CChaidSettingsImp const& other);
  /// Does what `CopyFrom` does.
  CChaidSettingsImp& operator=(CChaidSettingsImp const& other);

  ~CChaidSettingsImp() override;
  AlgorithmType GetType() const override;
  AlgSettings* Clone() const override;
  /// Takes over what `ChaidSettings::CopyFrom` does; from settings of CHAID for a categorical
  /// target everything, but for the priors of a class that is neither this one nor derived from it,
  /// whose interface shows none.
  void CopyFrom(AlgSettings const& other) override;
  double GetConvergenceEpsilon() const override;
  int GetMaxNumIterations() const override;
  ChiSquareMethod GetChiSquareMethod() const override;
  Cost const* GetCost() const override;
  Cost* GetCost() override;
  Scores const* GetScores() const override;
  Scores* GetScores() override;
  void SetConvergenceEpsilon(double epsilon) override;
  void SetMaxNumIterations(int count) override;
  void SetChiSquareMethod(ChiSquareMethod method) override;

  /// The prior probabilities. **Borrowed** until they are replaced.
  ///@{
  Priors const* GetPriors() const { return priors_.get(); }
  Priors* GetPriors() { return priors_.get(); }
  ///@}
  using ChaidSettings::Init;
  /// Stores the numbers as they are, and clones of the objects (**copied**), one after the other;
  /// an object that is held already stays as it is.
  void Init(double convergenceEpsilon, ChiSquareMethod chiSquareMethod, int maxNumIterations,
            Cost const& cost, Priors const& priors, Scores const& scores);

 private:
  double convergenceEpsilon_;
  ChiSquareMethod chiSquareMethod_;
  int maxNumIterations_;
  std::unique_ptr<Cost> cost_;
  std::unique_ptr<Priors> priors_;
  std::unique_ptr<Scores> scores_;
};

/// Settings of CHAID for a continuous target.
class TREE_API RChaidSettingsImp : public ChaidSettings {
 public:
  /// Settings for the variables of `core` (**copied**), with the defaults of `ChaidSettings`.
  explicit RChaidSettingsImp(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  RChaidSettingsImp(RChaidSettingsImp const& other);
  /// Does what `CopyFrom` does.
  RChaidSettingsImp& operator=(RChaidSettingsImp const& other);

  ~RChaidSettingsImp() override;
  AlgorithmType GetType() const override;
  AlgSettings* Clone() const override;
};

/// The impurity measure used for splitting; what the values stand for is the growing algorithm's
/// convention.
enum CartSplitCriteria : int {
  CartSplitCriteria0 = 0,  ///< the default
};

/// What both variants of CART (Breiman, Friedman, Olshen and Stone 1984) share. A new object stops
/// at tree depth 5.
class TREE_API CartSettings : public AlgSettings {
 public:
  /// Settings for the variables of `core` (**copied**): default pruning and 5 surrogates, clamped.
  explicit CartSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned, the surrogates clamped.
  CartSettings(CartSettings const& other);
  /// Does what `CopyFrom` does.
  CartSettings& operator=(CartSettings const& other);

  ~CartSettings() override;
  /// Takes over what `AlgSettings::CopyFrom` does; from settings of either variant of CART, pruning
  /// and surrogates too. From another kind, the surrogates stay as they are, even if there are
  /// fewer predictors now: see `ValidateNumSurrogates`.
  void CopyFrom(AlgSettings const& other) override;
  /// How the grown tree is pruned. **Borrowed** until it is replaced.
  ///@{
  virtual PruningSpec* GetPruningSpec();
  virtual PruningSpec const* GetPruningSpec() const;
  ///@}
  /// The greatest number of surrogate splits kept per node.
  virtual int GetMaxNumSurrogates() const;
  /// Sets the greatest number of surrogate splits kept per node, **clamped** as
  /// `ValidateNumSurrogates` does.
  virtual void SetMaxNumSurrogates(int count);

  using AlgSettings::Init;
  /// Stores a clone of `pruning` (**copied**; a default one for null) and the number of surrogates,
  /// clamped.
  void Init(PruningSpec const* pruning, int maxNumSurrogates);
  /// Clamps the greatest number of surrogates to one less than the number of predictors, and to at
  /// least 0.
  void ValidateNumSurrogates();

 private:
  std::unique_ptr<PruningSpec> pruningSpec_;
  int maxNumSurrogates_ = 0;
};

/// Settings of CART for a categorical target.
class TREE_API CCartSettings : public CartSettings {
 public:
  /// Settings for the variables of `core` (**copied**), with the defaults of `CartSettings`.
  explicit CCartSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  CCartSettings(CCartSettings const& other);
  /// Does what `CopyFrom` does.
  CCartSettings& operator=(CCartSettings const& other);

  ~CCartSettings() override;
  /// The prior probabilities. **Borrowed** until they are replaced.
  ///@{
  virtual Priors const* GetPriors() const = 0;
  virtual Priors* GetPriors() = 0;
  ///@}
  /// The misclassification costs. **Borrowed** until they are replaced.
  ///@{
  virtual Cost const* GetCost() const = 0;
  virtual Cost* GetCost() = 0;
  ///@}
  /// The impurity measure used for splitting.
  virtual CartSplitCriteria GetSplitCriteria() const = 0;
  /// Sets the impurity measure; any value.
  virtual void SetSplitCriteria(CartSplitCriteria criteria) = 0;
};

/// Settings of CART for a categorical target, with the misclassification model.
class TREE_API CCartSettingsImp : public CCartSettings {
 public:
  /// Settings for the variables of `core` (**copied**): default priors, costs and criterion.
  explicit CCartSettingsImp(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  CCartSettingsImp(CCartSettingsImp const& other);
  /// Does what `CopyFrom` does.
  CCartSettingsImp& operator=(CCartSettingsImp const& other);

  ~CCartSettingsImp() override;
  AlgorithmType GetType() const override;
  AlgSettings* Clone() const override;
  /// Takes over what `AlgSettings::CopyFrom` does; from settings of CART for a categorical target,
  /// everything.
  void CopyFrom(AlgSettings const& other) override;
  Priors const* GetPriors() const override;
  Priors* GetPriors() override;
  Cost const* GetCost() const override;
  Cost* GetCost() override;
  CartSplitCriteria GetSplitCriteria() const override;
  void SetSplitCriteria(CartSplitCriteria criteria) override;

  using CartSettings::Init;
  /// Stores clones of the objects (**copied**; this object's own will do) and the criterion.
  void Init(Priors const& priors, Cost const& cost, CartSplitCriteria splitCriteria);

 private:
  std::unique_ptr<Priors> priors_;
  std::unique_ptr<Cost> cost_;
  CartSplitCriteria splitCriteria_ = CartSplitCriteria0;
};

/// Settings of CART for a continuous target.
class TREE_API RCartSettingsImp : public CartSettings {
 public:
  /// Settings for the variables of `core` (**copied**), with the defaults of `CartSettings`.
  explicit RCartSettingsImp(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  RCartSettingsImp(RCartSettingsImp const& other);
  /// Does what `CopyFrom` does.
  RCartSettingsImp& operator=(RCartSettingsImp const& other);

  ~RCartSettingsImp() override;
  AlgorithmType GetType() const override;
  AlgSettings* Clone() const override;
};

/// Settings of QUEST (Loh and Shih 1997), for a categorical target. A new object stops at tree
/// depth 5.
class TREE_API QuestSettings : public AlgSettings {
 public:
  /// Settings for the variables of `core` (**copied**), with the defaults of `AlgSettings` but for
  /// the tree depth.
  explicit QuestSettings(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  QuestSettings(QuestSettings const& other);
  /// Does what `CopyFrom` does.
  QuestSettings& operator=(QuestSettings const& other);

  ~QuestSettings() override;
  /// How the grown tree is pruned. **Borrowed** until it is replaced.
  ///@{
  virtual PruningSpec* GetPruningSpec() = 0;
  virtual PruningSpec const* GetPruningSpec() const = 0;
  ///@}
  /// The greatest number of surrogate splits kept per node.
  virtual int GetMaxNumSurrogates() const = 0;
  /// Sets the greatest number of surrogate splits kept per node. Ignores one that is negative or
  /// not below the number of predictors less 1.
  virtual void SetMaxNumSurrogates(int count) = 0;
  /// The greatest number of categories that a nominal surrogate may have.
  virtual int GetMaxNumNomCatsSurr() const = 0;
  /// Sets the greatest number of categories of a nominal surrogate. Ignores a number below 1.
  virtual void SetMaxNumNomCatsSurr(int count) = 0;
  /// The prior probabilities. **Borrowed** until they are replaced.
  ///@{
  virtual Priors* GetPriors() = 0;
  virtual Priors const* GetPriors() const = 0;
  ///@}
  /// The misclassification costs. **Borrowed** until they are replaced.
  ///@{
  virtual Cost* GetCost() = 0;
  virtual Cost const* GetCost() const = 0;
  ///@}
  /// Significance level for selecting the split variable, a probability.
  virtual double GetAlphaOfVariableSelection() const = 0;
  /// Sets the significance level for selecting the split variable; any value.
  virtual void SetAlphaOfVariableSelection(double alpha) = 0;
};

/// Settings of QUEST, with the misclassification model.
class TREE_API QuestSettingsImp : public QuestSettings {
 public:
  /// Settings for the variables of `core` (**copied**): alpha 0.05, 5 surrogates, 32 categories,
  /// default pruning, priors and costs. Where 5 surrogates are too many, one less than the number
  /// of predictors. Deliberate: that is more than the setter accepts, and -1 without predictors.
  explicit QuestSettingsImp(CoreSettings const& core);
  /// Copies everything deeply: the parts are cloned.
  QuestSettingsImp(QuestSettingsImp const& other);
  /// Does what `CopyFrom` does.
  QuestSettingsImp& operator=(QuestSettingsImp const& other);

  ~QuestSettingsImp() override;
  AlgorithmType GetType() const override;
  AlgSettings* Clone() const override;
  /// Takes over what `AlgSettings::CopyFrom` does; from settings of QUEST, everything.
  void CopyFrom(AlgSettings const& other) override;
  PruningSpec* GetPruningSpec() override;
  PruningSpec const* GetPruningSpec() const override;
  int GetMaxNumSurrogates() const override;
  void SetMaxNumSurrogates(int count) override;
  int GetMaxNumNomCatsSurr() const override;
  void SetMaxNumNomCatsSurr(int count) override;
  Priors* GetPriors() override;
  Priors const* GetPriors() const override;
  Cost* GetCost() override;
  Cost const* GetCost() const override;
  double GetAlphaOfVariableSelection() const override;
  void SetAlphaOfVariableSelection(double alpha) override;

  /// Whether `SetMaxNumSurrogates` accepts `count`.
  bool ValidateNumSurrogates(int count) const;
  using AlgSettings::Init;
  /// Stores the numbers as they are, and clones of the objects (**copied**; a default one for null,
  /// and this object's own will do).
  void Init(double alphaOfVariableSelection, int maxNumSurrogates, int maxNumNomCatsSurr,
            PruningSpec const* pruning, Priors const* priors, Cost const* cost);

 private:
  double alphaOfVariableSelection_ = 0.0;
  int maxNumSurrogates_ = 0;
  int maxNumNomCatsSurr_ = 0;
  std::unique_ptr<PruningSpec> pruningSpec_;
  std::unique_ptr<Priors> priors_;
  std::unique_ptr<Cost> cost_;
};

}  // namespace tree

#endif  // TREE_SETTINGS_H_
