#ifndef TREE_TESTS_PROPERTY_MODELS_RULE_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_RULE_MODELS_H_

// Slow, obvious counterparts of the split rules.

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "property/models/choices.h"
#include "property/models/value_models.h"
#include "tree/split_rules.h"

namespace tree::testing {

/// What both kinds of rule share. Flags are kept as sets of bit numbers, values by bit number.
class RuleModel {
 public:
  explicit RuleModel(int predictorIndex) : predictor(predictorIndex) {}
  RuleModel(RuleModel const& other) = default;
  RuleModel& operator=(RuleModel const& other) = default;
  virtual ~RuleModel() = default;

  virtual int NumChildren() const = 0;
  virtual int Classify(double value) const = 0;
  virtual void Reorder(std::vector<int> const& newPositions);
  virtual std::unique_ptr<RuleModel> Clone() const = 0;
  /// The library's rule in this state, as far as mappings, dumb rule and predictor go.
  virtual std::unique_ptr<SplitRuleImp> Build() const = 0;

  void AddMissingValueMapping(bool ownChild);
  void SetProperty(unsigned int flag);
  void SetStatistic(unsigned int flag, double value);
  bool HasStatistic(unsigned int flag) const;
  std::optional<double> Statistic(unsigned int flag) const;
  /// The outcome of the comparison that both kinds start with.
  int CompareCore(RuleModel const& other) const;
  bool CoreEquals(RuleModel const& other) const;

  int predictor;
  int missingMapping = -1;
  int dumbChild = -1;
  double dumbProbability = -1.0;
  std::set<int> properties{0};
  std::set<int> statistics;
  std::map<int, double> statisticValues;
};

/// An ordinal rule as the list of its cut points.
class OrdinalRuleModel : public RuleModel {
 public:
  struct Item {
    double cut;
    int child;
    bool open;
  };

  OrdinalRuleModel(double missingValue, int predictorIndex)
      : RuleModel(predictorIndex), missing(missingValue) {}

  int NumChildren() const override;
  int Classify(double value) const override;
  void Reorder(std::vector<int> const& newPositions) override;
  std::unique_ptr<RuleModel> Clone() const override;
  std::unique_ptr<SplitRuleImp> Build() const override;

  /// The child of a value that is neither NaN nor missing, found another way: all intervals between
  /// the cut points are asked, and exactly one must hold the value. Requires ascending cut points.
  int ClassifyByIntervals(double value) const;
  bool IsAscending() const;
  bool IsValid() const;
  bool IsValidBinary() const { return items.size() == 1 && IsValid(); }
  bool Accepts(IntervalModel const& interval) const;
  bool Add(IntervalModel const& interval);
  void Insert(IntervalModel const& interval, bool leftEnd);
  Item* Find(double cut);
  std::optional<IntervalModel> Mapped(int child) const;
  int Compare(OrdinalRuleModel const& other) const;

  std::vector<Item> items;
  int upper = -1;
  double missing;
};

/// A nominal rule as a map of the codes that it knows.
class NominalRuleModel : public RuleModel {
 public:
  NominalRuleModel(int predictorIndex, int numCategories)
      : RuleModel(predictorIndex), length(numCategories > 0 ? numCategories : 0) {}

  int NumChildren() const override;
  int Classify(double value) const override;
  void Reorder(std::vector<int> const& newPositions) override;
  std::unique_ptr<RuleModel> Clone() const override;
  std::unique_ptr<SplitRuleImp> Build() const override;

  void Set(int category, int child);
  int Get(int category) const;
  void Add(CodeSetModel const& codes);
  int Compare(NominalRuleModel const& other) const;

  std::map<int, int> childOfCode;
  int length;
};

/// A rule of either kind whose answers, the dumb rule's included, all lie below `numChildren`, or
/// are negative. `withDumbChild`: whether the dumb rule always names a child.
std::unique_ptr<RuleModel> ChooseRule(Choices& choices, int numPredictors, int numChildren,
                                      bool withDumbChild);

/// Throws unless everything that can be read of `rule` is as in `model`, some classifications of
/// chosen values and of values around the cut points or codes included.
void Check(SplitRuleImp const& rule, RuleModel const& model, Choices& choices);
/// What `Check` does for the fields that each kind adds.
void CheckOrdinal(OSplitRule const& rule, OrdinalRuleModel const& model, Choices& choices);
void CheckNominal(NSplitRule const& rule, NominalRuleModel const& model, Choices& choices);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_RULE_MODELS_H_
