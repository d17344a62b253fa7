#ifndef TREE_TESTS_TESTING_FOREIGN_SETTINGS_H_
#define TREE_TESTS_TESTING_FOREIGN_SETTINGS_H_

#include "testing/foreign_parts.h"
#include "tree/settings.h"

// Settings of classes that are not the library's own: of no known algorithm, of a known one with
// values of their own, or of a known class that takes itself for another algorithm.

namespace tree::testing {

/// `Base` under a type of the test's choice, which need not be its class's.
template <class Base>
class Claiming : public Base {
 public:
  Claiming(AlgorithmType claimed, CoreSettings const& core) : Base(core), claimed_(claimed) {}

  AlgorithmType GetType() const override { return claimed_; }
  AlgSettings* Clone() const override { return new Claiming(*this); }

 private:
  AlgorithmType claimed_;
};

/// The shared part alone, of no algorithm that is known.
class PlainSettings : public Claiming<AlgSettings> {
 public:
  explicit PlainSettings(CoreSettings const& core)
      : Claiming(static_cast<AlgorithmType>(99), core) {}
};

/// The shared part alone, every getter answering for parts of other classes.
class ForeignSettings : public PlainSettings {
 public:
  explicit ForeignSettings(int numPredictors)
      : PlainSettings(CoreSettingsImp()), core_(numPredictors) {}

  int GetMaxNumCompetitors() const override { return 3; }
  int GetMaxNominalPredCategories() const override { return 77; }
  CoreSettings const* GetCoreSettings() const override { return &core_; }
  ValidationSpec* GetValidationSpec() override { return &validation_; }
  ValidationSpec const* GetValidationSpec() const override { return &validation_; }
  StopRule* GetStopRule() override { return &stopRule_; }
  StopRule const* GetStopRule() const override { return &stopRule_; }

 private:
  ForeignCoreSettings core_;
  ForeignValidationSpec validation_;
  ForeignStopRule stopRule_;
};

/// Settings of CART for a categorical target, every getter answering for parts of other classes.
class ForeignCCartSettings : public CCartSettings {
 public:
  explicit ForeignCCartSettings(CoreSettings const& core) : CCartSettings(core) {}

  AlgorithmType GetType() const override { return AlgCCart; }
  AlgSettings* Clone() const override { return new ForeignCCartSettings(*this); }
  PruningSpec* GetPruningSpec() override { return &pruning_; }
  PruningSpec const* GetPruningSpec() const override { return &pruning_; }
  int GetMaxNumSurrogates() const override { return 1; }
  Priors const* GetPriors() const override { return &priors_; }
  Priors* GetPriors() override { return &priors_; }
  Cost const* GetCost() const override { return &cost_; }
  Cost* GetCost() override { return &cost_; }
  CartSplitCriteria GetSplitCriteria() const override { return static_cast<CartSplitCriteria>(5); }
  void SetSplitCriteria(CartSplitCriteria /*criteria*/) override {}

 private:
  ForeignPruningSpec pruning_;
  ForeignPriors priors_;
  ForeignCost cost_;
};

/// Settings of QUEST, every getter answering for parts of other classes.
class ForeignQuestSettings : public QuestSettings {
 public:
  explicit ForeignQuestSettings(CoreSettings const& core) : QuestSettings(core) {}

  AlgorithmType GetType() const override { return AlgQuest; }
  AlgSettings* Clone() const override { return new ForeignQuestSettings(*this); }
  PruningSpec* GetPruningSpec() override { return &pruning_; }
  PruningSpec const* GetPruningSpec() const override { return &pruning_; }
  int GetMaxNumSurrogates() const override { return 44; }
  void SetMaxNumSurrogates(int /*count*/) override {}
  int GetMaxNumNomCatsSurr() const override { return 55; }
  void SetMaxNumNomCatsSurr(int /*count*/) override {}
  Priors* GetPriors() override { return &priors_; }
  Priors const* GetPriors() const override { return &priors_; }
  Cost* GetCost() override { return &cost_; }
  Cost const* GetCost() const override { return &cost_; }
  double GetAlphaOfVariableSelection() const override { return 0.375; }
  void SetAlphaOfVariableSelection(double /*alpha*/) override {}

 private:
  ForeignPruningSpec pruning_;
  ForeignPriors priors_;
  ForeignCost cost_;
};

/// Settings of CHAID for a categorical target, without priors, which only the library's own class
/// has.
class ForeignCChaidSettings : public CChaidSettings {
 public:
  explicit ForeignCChaidSettings(CoreSettings const& core) : CChaidSettings(core) {}

  AlgorithmType GetType() const override { return AlgCChaid; }
  AlgSettings* Clone() const override { return new ForeignCChaidSettings(*this); }
  double GetConvergenceEpsilon() const override { return 0.375; }
  int GetMaxNumIterations() const override { return 44; }
  ChiSquareMethod GetChiSquareMethod() const override { return static_cast<ChiSquareMethod>(5); }
  Cost const* GetCost() const override { return &cost_; }
  Cost* GetCost() override { return &cost_; }
  Scores const* GetScores() const override { return &scores_; }
  Scores* GetScores() override { return &scores_; }
  void SetConvergenceEpsilon(double /*epsilon*/) override {}
  void SetMaxNumIterations(int /*count*/) override {}
  void SetChiSquareMethod(ChiSquareMethod /*method*/) override {}

 private:
  ForeignCost cost_;
  ForeignScores scores_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FOREIGN_SETTINGS_H_
