#ifndef TREE_SPLIT_RULES_H_
#define TREE_SPLIT_RULES_H_

/// @file
/// Split rules: how a node divides cases among its children by the value of one predictor. The
/// common core (`SplitRuleImp`) has two kinds, ordinal with cut points (`OSplitRule`) and nominal
/// with a table of category codes (`NSplitRule`). `SplitRule` is the handle that owns one of either
/// kind and copies it deeply; a node owns its rules and hands out handles to copies.
///
/// Children are numbered from 0, and a negative child position means that there is none.
/// Threads: concurrent const operations on an unchanged rule are safe.

#include <array>
#include <memory>
#include <vector>

#include "tree/containers.h"
#include "tree/export.h"
#include "tree/values.h"

namespace tree {

/// Properties of a split rule, one bit each. The two creation kinds exclude each other; what they
/// stand for is the growing algorithm's convention.
enum SplitRulePropertyFlag : unsigned int {
  SplitRuleCreatedDefault = 1,     ///< creation kind of every new rule
  SplitRuleCreatedAlternate = 2,   ///< the other creation kind
  SplitRuleMappingsReordered = 4,  ///< the children have been renumbered
};

/// Names the statistics of a split, one bit each; what each stands for is the growing algorithm's
/// convention. The first four carry a value, the others can only be marked as present.
enum StatisticFlag : unsigned int {
  StatisticFlag1 = 1,   ///< carries a value
  StatisticFlag2 = 2,   ///< carries a value
  StatisticFlag3 = 4,   ///< carries a value
  StatisticFlag4 = 8,   ///< carries a value
  StatisticFlag5 = 16,  ///< only marked as present
  StatisticFlag6 = 32,  ///< only marked as present
  StatisticFlag7 = 64,  ///< only marked as present
};

/// What all split rules share: the predictor tested, the statistics of the split, where missing
/// values go, the dumb rule for cases that nothing else can place, and the property flags.
class TREE_API SplitRuleImp {
 public:
  /// A rule on predictor `predictorIndex` (from 0, stored unchecked): no statistics, no dumb rule,
  /// no mapping of missing values, created by default.
  explicit SplitRuleImp(int predictorIndex);
  /// Copies all fields.
  ///@{
  SplitRuleImp(SplitRuleImp const& other);
  SplitRuleImp& operator=(SplitRuleImp const& other);
  ///@}

  virtual ~SplitRuleImp();
  /// Number of children told apart, the child of the missing values included.
  virtual int GetNumChildren() const = 0;
  /// The values sent to `child`, missing ones left out; null when there are none, as for a child
  /// that the rule does not have. **New**: the caller deletes it.
  virtual ValueSet* GetMappedValues(int child) const = 0;
  /// A full copy. **New**: the caller deletes it.
  virtual SplitRuleImp* Clone() const = 0;
  /// A rule of the same kind on the same predictor that maps nothing. **New**: the caller deletes
  /// it.
  virtual SplitRuleImp* EmptyClone() const = 0;
  /// Takes over how `other` maps values to children, and returns true. Here that is the missing
  /// value mapping; kinds add their own, and refuse a rule of another kind.
  virtual bool CopyMappings(SplitRuleImp const& other);
  /// The child that receives `value`, negative when the rule cannot place it.
  virtual int Classify(double value) const = 0;
  /// Whether both rules split the cases alike: 0 they do; 1 the same predictor, mapped otherwise;
  /// 2 another predictor; 3 another kind, another missing value, or other categories mapped.
  /// Statistics, dumb rule and properties are not looked at.
  virtual int Compare(SplitRuleImp const& other) const;
  /// True for the ordinal kind, false for the nominal kind.
  virtual bool IsOrdered() const = 0;
  /// Renumbers the children: old child i becomes `newPositions`[i]. Marks the rule as reordered for
  /// good. Requires an entry for every child of the rule.
  virtual void ReorderMappings(std::vector<int> const& newPositions);
  /// Adds a new child that receives `values`, and returns true. Refuses what the kind cannot take.
  virtual bool AddMappedValues(ValueSet const& values) = 0;

  /// Index of the predictor tested, from 0: where a case's value is looked up.
  int GetPredictorIndex() const { return predictorIndex_; }

  /// The whole word of property flags. Deliberate: all bits, not only the creation kinds.
  int GetCreationFlags() const;
  /// Whether any bit of `flag` is set.
  bool HasProperty(SplitRulePropertyFlag flag) const;
  /// Sets the bits of `flag`; a creation kind replaces the other one.
  void SetProperty(SplitRulePropertyFlag flag);

  /// The child taken by cases that neither the rule nor a surrogate can place; negative when none.
  int GetDumbChildPos() const { return dumbChildPosition_; }
  /// The probability that goes with the dumb rule; -1 when none was set.
  double GetDumbChildProb() const { return dumbChildProbability_; }
  /// Sets the child of the dumb rule and its probability; any values.
  void SetDumbRule(int child, double probability);

  /// The child that missing values are sent to; negative when they are not mapped.
  int GetMissingValueMapping() const { return missingValueMapping_; }
  /// Sends missing values to a new child, one past the highest in use (`ownChild`), or to the
  /// highest child in use; to send them elsewhere, renumber the children (`ReorderMappings`,
  /// `OSplitRule::SetReverse`) so that theirs is the last. Computed from the children present at
  /// each call, a child of the missing values included.
  void AddMissingValueMapping(bool ownChild);

  /// Whether all bits of `flag` are present.
  bool HasStatistic(StatisticFlag flag) const;
  /// Marks the bits of `flag` as present and stores `value` in the slot of the highest of them, if
  /// it has one. Ignores a flag of which some bits are present and some are not.
  void SetStatistic(StatisticFlag flag, double value);
  /// Writes the statistic to `value` and returns true; false, leaving `value` as it was, when it is
  /// absent or carries no value.
  bool GetStatistic(StatisticFlag flag, double* value) const;
  /// The statistic, or `systemMissingValue()` when it is absent or carries no value.
  double GetStatistic(StatisticFlag flag) const;
  /// The storage slot (0 to 3) of the highest of the seven low bits of `flag`, or -1.
  static int GetFlagPosition(StatisticFlag flag);

  /// Whether all fields of this class are equal, doubles by plain floating equality.
  /// Deliberate: what the kinds add (cut points, categories) is not compared, nor is the kind.
  bool operator==(SplitRuleImp const& other) const;

 private:
  static constexpr int kNumStatistics = 4;

  int predictorIndex_;
  std::array<double, kNumStatistics> statistics_;
  double dumbChildProbability_ = -1.0;
  int dumbChildPosition_ = -1;
  unsigned int statisticMask_ = 0;                        // StatisticFlag bits
  unsigned int propertyFlags_ = SplitRuleCreatedDefault;  // SplitRulePropertyFlag bits
  int missingValueMapping_ = -1;
};

/// The split rule of an ordered (ordinal or continuous) predictor: ascending cut points, each of
/// which closes the interval below it, and one more child for the values above the last one.
/// Example: cut points 2 and 7 with children 0 and 1 and upper child 2 send (-inf, 2] to child 0,
/// (2, 7] to child 1 and everything above 7 to child 2.
class TREE_API OSplitRule : public SplitRuleImp {
 public:
  /// A cut point and the interval that it closes.
  struct OSplitRuleItem {
    double cutPoint = -1.0;  ///< upper end of the interval
    int child = -1;          ///< child that receives the interval; -1 not yet assigned
    bool openAtCut = true;   ///< whether the interval, read back, excludes the cut point
  };

  /// A rule without cut points on predictor `predictorIndex` (from 0); `missingValue` marks missing
  /// cases, and a NaN none.
  OSplitRule(double missingValue, int predictorIndex);
  /// The same, with the missing value of `settings`.
  OSplitRule(VariableSettings const& settings, int predictorIndex);
  /// Copies everything: all fields of the base, cut points, children, missing value.
  ///@{
  OSplitRule(OSplitRule const& other);
  OSplitRule& operator=(OSplitRule const& other);
  ///@}

  ~OSplitRule() override;
  /// One more than the highest child in use, that of the missing values included; 0 when nothing is
  /// assigned.
  int GetNumChildren() const override;
  /// The interval (`OValueSet`) sent to `child`, of the upper child the one above the last cut
  /// point; null when there is none or the rule is not valid. **New**: the caller deletes it.
  /// Deliberate: of several intervals below the last cut point, the lowest only.
  ValueSet* GetMappedValues(int child) const override;
  SplitRuleImp* Clone() const override;
  /// A rule on the same predictor with the same missing value, without cut points. **New**: the
  /// caller deletes it.
  SplitRuleImp* EmptyClone() const override;
  /// Copies cut points, children and missing value mapping, not the missing value itself, and
  /// returns true. Refuses a rule of another kind.
  bool CopyMappings(SplitRuleImp const& other) override;
  /// The child of the first cut point at or above `value`; the upper child where there is none or
  /// it has no child yet; the missing value mapping for the rule's missing value. NaN is above
  /// every cut point. Linear in the cut points.
  /// Deliberate: a value at a cut point belongs to the interval below, open or not.
  int Classify(double value) const override;
  /// The code of `SplitRuleImp::Compare`. Cut points are compared with an absolute tolerance of
  /// 1e-12, their openness is not.
  int Compare(SplitRuleImp const& other) const override;
  /// Always true.
  bool IsOrdered() const override;
  /// Renumbers the children: old child i becomes `newPositions`[i]. Marks the rule as reordered for
  /// good. Requires a valid rule (`IsValid`) and an entry for every child.
  void ReorderMappings(std::vector<int> const& newPositions) override;
  /// Adds an interval (`OValueSet`) as a new child and returns true. Refuses another kind of set
  /// and an interval that `IsValidInterval` rejects.
  bool AddMappedValues(ValueSet const& values) override;

  /// The value that marks a missing case.
  double GetMissingValue() const { return missingValue_; }
  /// Makes a rule without cut points the binary rule at `cutPoint` (child 0 up to and including it,
  /// child 1 above); otherwise moves the first cut point and nothing else. Requires cut points that
  /// stay in ascending order.
  void SetCutPoint(double cutPoint);
  /// The first cut point, or `systemMissingValue()` when there is none.
  double GetCutPoint() const;
  /// The item whose cut point is exactly `cutPoint`, or null. **Borrowed** until the cut points
  /// change; its fields may be changed, as long as the cut points stay in ascending order.
  OSplitRuleItem* IsPresent(double cutPoint);
  /// Inserts one end of `interval` as a cut point: the right end with a new child below it, or
  /// (`leftEnd`) the left end, whose interval below waits for its child. An item that already has a
  /// child is left alone.
  void InsertCutPoint(OValueSet const& interval, bool leftEnd);
  /// Whether `interval` can be added: it is no single point and does not overlap what is assigned,
  /// as far as its tests tell.
  bool IsValidInterval(OValueSet const& interval) const;
  /// Whether every interval has its child.
  bool IsValid() const;
  /// Whether the rule is valid and has exactly one cut point.
  bool IsValidBinary() const;
  /// Whether the rule is no valid binary rule, or sends the values above the cut to another child
  /// than 0.
  bool IsStandard() const;
  /// Makes a valid binary rule send the values up to the cut to child 0, those above to child 1.
  /// Ignored by any other rule.
  void SetStandard();
  /// The reverse of `SetStandard`: child 1 up to the cut, child 0 above. Ignored by any rule that
  /// is no valid binary one.
  void SetReverse();

 private:
  void SetBinaryChildren(int atOrBelow, int above);

  std::vector<OSplitRuleItem> items_;  // ascending, no two at the same cut point
  int upperChild_ = -1;                // -1 not assigned
  double missingValue_;
};

/// The split rule of a nominal predictor: a table from category code (0, 1, 2, ...) to child.
/// Whatever it cannot place (an unmapped or unknown code, a fraction, NaN, any missing value) goes
/// to the missing value mapping.
class TREE_API NSplitRule : public SplitRuleImp {
 public:
  /// A rule on predictor `predictorIndex` (from 0) with room for `numCategories` codes, none
  /// mapped. Fewer than 1 make no room.
  NSplitRule(int predictorIndex, int numCategories);
  /// Copies everything: all fields of the base, and the table.
  ///@{
  NSplitRule(NSplitRule const& other);
  NSplitRule& operator=(NSplitRule const& other);
  ///@}

  ~NSplitRule() override;
  /// One more than the highest child in use, that of the missing values included; 0 when nothing is
  /// mapped.
  int GetNumChildren() const override;
  /// The codes (`NValueSet`) mapped to `child`, ascending; null when there are none. **New**: the
  /// caller deletes it.
  ValueSet* GetMappedValues(int child) const override;
  SplitRuleImp* Clone() const override;
  /// A rule on the same predictor without categories. **New**: the caller deletes it.
  SplitRuleImp* EmptyClone() const override;
  /// Copies the table and the missing value mapping, and returns true. Refuses a rule of another
  /// kind.
  bool CopyMappings(SplitRuleImp const& other) override;
  /// The child of the category with code `value`; the missing value mapping for everything else,
  /// NaN included.
  int Classify(double value) const override;
  /// The code of `SplitRuleImp::Compare`. Deliberate: a code that only one of the rules maps counts
  /// (3) only if `other` has children. Linear in the longer table.
  int Compare(SplitRuleImp const& other) const override;
  /// Always false.
  bool IsOrdered() const override;
  void ReorderMappings(std::vector<int> const& newPositions) override;
  /// Adds a set of codes (`NValueSet`) as a new child and returns true; a mapped code moves to it,
  /// a negative one is ignored. An empty set adds nothing and is accepted. Refuses another kind of
  /// set, and a table that cannot be allocated.
  bool AddMappedValues(ValueSet const& values) override;

  /// Maps `category` to `child` (-1: to none); the table grows as needed, new codes in between
  /// unmapped. Ignores a negative category.
  void SetCatMapping(int category, int child);
  /// The child of `category`; -1 when it is not mapped, negative or beyond the table.
  int GetCatMapping(int category) const;

 private:
  bool GrowToHold(int category);

  TArray<int> categoryMapping_;  // child by category code, -1 not mapped
};

/// Handle that owns one split rule of either kind. Copies are deep: no two handles share a rule. A
/// handle is without a rule only if the rule given to it could not be cloned; copying it,
/// `AddMappedValues`, `AddMissingValueMapping` and `GetPredictorIndex` require one.
class TREE_API SplitRule {
 public:
  /// A new rule on predictor `predictorIndex` (from 0), of the kind that suits the variable:
  /// nominal without categories, or ordinal with the variable's missing value.
  SplitRule(VariableSettings const& settings, int predictorIndex);
  /// Holds a clone of `rule` (**copied**).
  SplitRule(SplitRuleImp const& rule);
  /// Holds a clone of the rule that `other` holds.
  ///@{
  SplitRule(SplitRule const& other);
  SplitRule& operator=(SplitRule const& other);
  ///@}
  virtual ~SplitRule();

  /// The rule, for reading all that the handle does not forward (cut points, dumb rule, how it
  /// classifies). **Borrowed** until the handle is assigned to or destroyed.
  operator SplitRuleImp const*() const { return rule_.get(); }

  /// Number of children told apart, the child of the missing values included; 0 without a rule.
  int GetNumChildren() const;
  /// The values sent to `child`, missing ones left out; null when there are none, and without a
  /// rule. **New**: the caller deletes it.
  ValueSet* GetMappedValues(int child) const;
  /// Adds a new child that receives `values`, and returns true. Refuses what the rule refuses.
  /// Requires a rule.
  bool AddMappedValues(ValueSet const& values);
  /// Sends missing values to a new child (`ownChild`) or to the highest child in use, as
  /// `SplitRuleImp::AddMissingValueMapping` does. Requires a rule.
  void AddMissingValueMapping(bool ownChild);
  /// The child that missing values are sent to; negative when they are not mapped. Deliberate: 0,
  /// not -1, without a rule.
  int GetMissingValueMapping() const;
  /// Writes the statistic to `value` and returns true; false, leaving `value` as it was, when it is
  /// absent or carries no value, and without a rule.
  bool GetStatistic(StatisticFlag flag, double* value) const;
  /// Whether all bits of `flag` are present; false without a rule.
  bool HasStatistic(StatisticFlag flag) const;
  /// Whether any bit of `flag` is set; false without a rule.
  bool HasProperty(SplitRulePropertyFlag flag) const;
  /// Index of the predictor tested, from 0. Requires a rule.
  int GetPredictorIndex() const;

 private:
  std::unique_ptr<SplitRuleImp> rule_;
};

}  // namespace tree

#endif  // TREE_SPLIT_RULES_H_
