#ifndef TREE_TESTS_TESTING_FOREIGN_PARTS_H_
#define TREE_TESTS_TESTING_FOREIGN_PARTS_H_

#include <cstddef>
#include <utility>
#include <vector>

#include "tree/misclassification.h"
#include "tree/settings.h"
#include "tree/values.h"

// Parts of settings that are not the library's own classes, with values that no default has: what
// the library does with a part, it has to do through the interface.

namespace tree::testing {

/// Variables of which every operation of the interface works, but nothing is the library's.
class ForeignCoreSettings : public CoreSettings {
 public:
  explicit ForeignCoreSettings(int numPredictors = 0)
      : predictors_(static_cast<std::size_t>(numPredictors)) {}

  VariableSettings* AddPredictor() override { return &predictors_.emplace_back(); }
  void SetHasFreqWeight(bool flag) override { hasFreqWeight_ = flag; }
  void SetHasCaseWeight(bool flag) override { hasCaseWeight_ = flag; }
  CoreSettings* Clone() const override { return new ForeignCoreSettings(*this); }
  int GetNumPredictors() const override { return static_cast<int>(predictors_.size()); }
  VariableSettings const* GetPredictor(int index) const override {
    return &predictors_[static_cast<std::size_t>(index)];
  }
  VariableSettings* GetPredictor(int index) override {
    return &predictors_[static_cast<std::size_t>(index)];
  }
  VariableSettings const* GetTarget() const override { return &target_; }
  VariableSettings* GetTarget() override { return &target_; }
  bool HasFreqWeight() const override { return hasFreqWeight_; }
  bool HasCaseWeight() const override { return hasCaseWeight_; }

 private:
  VariableSettingsImp target_;
  std::vector<VariableSettingsImp> predictors_;
  bool hasFreqWeight_ = false;
  bool hasCaseWeight_ = false;
};

/// A stopping rule of which only the tree depth can be set.
class ForeignStopRule : public StopRule {
 public:
  StopRule* Clone() const override { return new ForeignStopRule(*this); }
  double GetMinImprovement() const override { return 0.25; }
  int GetMinNodeSize() const override { return 11; }
  double GetMinNodePercentSize() const override { return 12.5; }
  int GetMinChildSize() const override { return 13; }
  double GetMinChildPercentSize() const override { return 14.5; }
  int GetMaxTreeDepth() const override { return maxTreeDepth_; }
  void SetMinImprovement(double /*improvement*/) override {}
  void SetMinNodeSize(int /*size*/) override {}
  void SetMinNodePercentSize(double /*percent*/) override {}
  void SetMinChildSize(int /*size*/) override {}
  void SetMinChildPercentSize(double /*percent*/) override {}
  void SetMaxTreeDepth(int depth) override { maxTreeDepth_ = depth; }

 private:
  int maxTreeDepth_ = 15;
};

/// A validation that nothing can change.
class ForeignValidationSpec : public ValidationSpec {
 public:
  ValidationSpec* Clone() const override { return new ForeignValidationSpec(*this); }
  ValidationType GetType() const override { return ValidationCrossValidation; }
  int GetNumCVFolds() const override { return 7; }
  long GetRandomSeed() const override { return 99; }
  bool Set(ValidationType /*type*/) override { return false; }
  bool SetNumCVFolds(int /*count*/) override { return false; }
  bool SetRandomSeed(long /*seed*/) override { return false; }
};

/// A pruning that nothing can change.
class ForeignPruningSpec : public PruningSpec {
 public:
  PruningSpec* Clone() const override { return new ForeignPruningSpec(*this); }
  bool GetPickMinRiskTree() const override { return true; }
  double GetSERuleFactor() const override { return 2.5; }
  void SetPickMinRiskTree(bool /*flag*/) override {}
  void SetSERuleFactor(double /*factor*/) override {}
};

/// Costs by a table that may hold any number; outside the table, -1.0. Nothing can change them.
class ForeignCost : public Cost {
 public:
  using Cell = std::pair<int, int>;

  explicit ForeignCost(std::vector<std::vector<double>> rows = {{0.0, 8.0}, {9.0, 0.0}})
      : rows_(std::move(rows)) {}

  Cost* Clone() const override { return new ForeignCost(*this); }
  int GetNumClasses() const override { return static_cast<int>(rows_.size()); }
  double Get(int row, int column) const override {
    reads_.emplace_back(row, column);
    bool const known = row >= 0 && row < GetNumClasses() && column >= 0 && column < GetNumClasses();
    return known ? rows_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] : -1.0;
  }
  bool IsDefault() const override { return false; }
  CostType GetType() const override { return CostTypeCustom; }
  bool Set(CostType /*type*/) override { return false; }
  bool Set(int /*row*/, int /*column*/, double /*cost*/) override { return false; }

  /// The cells that were read, in the order of reading.
  std::vector<Cell> const& GetReads() const { return reads_; }

 private:
  std::vector<std::vector<double>> rows_;
  mutable std::vector<Cell> reads_;
};

/// Priors that nothing can change.
class ForeignPriors : public Priors {
 public:
  Priors* Clone() const override { return new ForeignPriors(*this); }
  PriorType GetType() const override { return PriorTypeCustom; }
  bool HasAlteredValues() const override { return true; }
  int GetNumClasses() const override { return 1; }
  double Get(int /*index*/) const override { return 0.375; }
  double GetAltered(int /*index*/) const override { return 0.625; }
  void AlterValues(bool /*flag*/) override {}
  bool Set(int /*index*/, double /*value*/) override { return false; }
  bool Set(PriorType /*type*/) override { return false; }
};

/// Scores that nothing can change.
class ForeignScores : public Scores {
 public:
  Scores* Clone() const override { return new ForeignScores(*this); }
  int GetNumClasses() const override { return 1; }
  ScoreType GetType() const override { return ScoreTypeCustom; }
  double Get(int /*index*/) const override { return 6.5; }
  bool Set(ScoreType /*type*/) override { return false; }
  bool Set(int /*index*/, double /*score*/) override { return false; }
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FOREIGN_PARTS_H_
