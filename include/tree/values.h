#ifndef TREE_VALUES_H_
#define TREE_VALUES_H_

/// @file
/// Variables and sets of their values: the description of one variable (`VariableSettings`) and the
/// two kinds of value set that split rules send to a child, intervals of an ordered predictor
/// (`OValueSet`) and sets of category codes of a nominal one (`NValueSet`), both seen through
/// `ValueSet`. The sets are handles that own their implementation object and copy it deeply.
/// Threads: concurrent const operations on an unchanged object are safe.

#include <cstddef>
#include <memory>
#include <vector>

#include "tree/export.h"

/// What the data model shares with the programs around it.
namespace global {

/// Measurement level of a variable. Only nominal or not matters to this library: nominal variables
/// have category codes and nominal split rules, every other level is ordered and has cut points.
enum MeasurementLevel : int {
  MeasurementNominal = 0,     ///< unordered categories, named by codes
  MeasurementOrdinal = 1,     ///< behaves exactly like continuous here
  MeasurementContinuous = 2,  ///< ordered; the default
};

}  // namespace global

namespace tree {

/// Describes one variable, a predictor or the target. Setters store any value unchecked.
class TREE_API VariableSettings {
 public:
  virtual ~VariableSettings();

  /// A deep copy. **New**: the caller deletes it.
  virtual VariableSettings* Clone() const = 0;
  /// The value that marks a missing case.
  virtual double GetMissingValue() const = 0;
  /// Whether the variable's values are categories or ordered.
  virtual global::MeasurementLevel GetMeasurementLevel() const = 0;
  /// Whether a growing algorithm may merge the variable's values.
  virtual bool GetValueMergeFlag() const = 0;
  /// Number of distinct values (categories); 0 when not stated.
  virtual int GetNumValues() const = 0;

  /// Says whether the variable's values are categories or ordered.
  virtual void SetMeasurementLevel(global::MeasurementLevel level) = 0;
  /// Names the value that marks a missing case. A NaN marks none, since it equals no value.
  virtual void SetMissingValue(double value) = 0;
  /// Says whether a growing algorithm may merge the variable's values.
  virtual void SetValueMergeFlag(bool flag) = 0;
  /// States the number of distinct values (categories).
  virtual void SetNumValues(int count) = 0;
};

/// A variable's description as four plain fields.
class TREE_API VariableSettingsImp : public VariableSettings {
 public:
  /// Continuous, missing at `systemMissingValue()`, 0 values, merging allowed.
  VariableSettingsImp();
  /// Copies all four fields.
  ///@{
  VariableSettingsImp(VariableSettingsImp const& other);
  VariableSettingsImp& operator=(VariableSettingsImp const& other);
  ///@}
  ~VariableSettingsImp() override;

  VariableSettings* Clone() const override;
  double GetMissingValue() const override;
  global::MeasurementLevel GetMeasurementLevel() const override;
  bool GetValueMergeFlag() const override;
  int GetNumValues() const override;
  void SetMeasurementLevel(global::MeasurementLevel level) override;
  void SetMissingValue(double value) override;
  void SetValueMergeFlag(bool flag) override;
  void SetNumValues(int count) override;

 private:
  double missingValue_;
  int numValues_ = 0;
  global::MeasurementLevel measurementLevel_ = global::MeasurementContinuous;
  bool valueMergeFlag_ = true;
};

/// A set of values of one predictor.
class TREE_API ValueSet {
 public:
  virtual ~ValueSet();

  /// Whether `value` belongs to the set. A missing value is a value like any other here.
  virtual bool Contains(double value) const = 0;
  /// True for a set of category codes (`NValueSet`), false for an interval (`OValueSet`).
  virtual bool IsNominalValueSet() const = 0;

 protected:
  /// For derived classes: an interface holds nothing that could be copied.
  ///@{
  ValueSet() = default;
  ValueSet(ValueSet const&) = default;
  ValueSet& operator=(ValueSet const&) = default;
  ///@}
};

/// An interval of the real line whose ends are each bounded or not and, if bounded, open or closed.
/// The stored ends are equal unless both sides are bounded or an end was set afterwards.
class TREE_API OValueSetImp {
 public:
  /// The whole line: both sides unbounded and open, both stored ends 0.
  OValueSetImp();
  /// The open interval (left, right). The ends are stored as they are, in whatever order.
  OValueSetImp(double left, double right);
  /// Copies ends, bounds and openness.
  ///@{
  OValueSetImp(OValueSetImp const& other);
  OValueSetImp& operator=(OValueSetImp const& other);
  ///@}

  /// Whether `value` lies in the interval.
  /// Deliberate: differences to an end are truncated to 32-bit integers before their sign is
  /// looked at, so a value counts as inside up to almost one unit beyond an end, and as outside
  /// where the difference leaves the 32-bit range; the openness of both ends is tested at the left
  /// end (so the right end belongs to the set even when it is open). NaN lies in the whole line
  /// only.
  virtual bool Contains(double value) const;
  virtual ~OValueSetImp();

  /// The stored end, also for an unbounded side.
  ///@{
  double GetLeftEnd() const { return leftEnd_; }
  double GetRightEnd() const { return rightEnd_; }
  ///@}
  /// Whether the end is open. `Contains` says what that excludes; on an unbounded side, nothing.
  ///@{
  bool IsOpenLeft() const { return (leftFlags_ & kOpen) != 0; }
  bool IsOpenRight() const { return (rightFlags_ & kOpen) != 0; }
  ///@}
  /// Whether the side has an end.
  ///@{
  bool IsBoundedLeft() const { return (leftFlags_ & kBounded) != 0; }
  bool IsBoundedRight() const { return (rightFlags_ & kBounded) != 0; }
  ///@}

  /// Whether the interval holds nothing. Deliberate: bounded intervals up to almost one unit wide
  /// count as empty, because the width is truncated to an integer before it is looked at.
  bool IsEmpty() const;

  /// Whether both are unbounded on the left or their left ends are equal.
  /// Deliberate: right sides are not compared; intervals of one rule differ in their left ends.
  bool operator==(OValueSetImp const& other) const;

  /// Whether this interval starts further left: unbounded before bounded, then by left end.
  /// Deliberate: a bounded one is compared with the stored left end of an unbounded other.
  bool operator<(OValueSetImp const& other) const;

  /// Stores the end, whatever the other one is, and makes its side bounded.
  ///@{
  void SetLeftEnd(double value);
  void SetRightEnd(double value);
  ///@}
  /// Makes the end open or closed.
  ///@{
  void SetOpenLeft(bool open);
  void SetOpenRight(bool open);
  ///@}
  /// Says whether the side has an end. Unbounding a side copies the other side's stored end into
  /// it.
  ///@{
  void SetBoundedLeft(bool bounded);
  void SetBoundedRight(bool bounded);
  ///@}
  /// Makes this the empty interval (0, 0]; the right end's openness stays as it was.
  void Empty();

 private:
  static constexpr unsigned int kOpen = 1;
  static constexpr unsigned int kBounded = 2;

  double leftEnd_ = 0.0;
  double rightEnd_ = 0.0;
  unsigned int leftFlags_ = kOpen;
  unsigned int rightFlags_ = kOpen;
};

/// Handle of an interval: the values of an ordered predictor that a split rule sends to one child.
/// Every operation is that of `OValueSetImp` with the same name.
class TREE_API OValueSet : public ValueSet {
 public:
  /// The whole line.
  OValueSet();
  /// @copydoc OValueSetImp::OValueSetImp(double, double)
  OValueSet(double left, double right);
  /// Copies the interval into this handle's own object; no two handles share one.
  ///@{
  OValueSet(OValueSet const& other);
  OValueSet& operator=(OValueSet const& other);
  ///@}

  ~OValueSet() override;
  /// @copydoc OValueSetImp::Contains
  bool Contains(double value) const override;
  /// Always false.
  bool IsNominalValueSet() const override;
  /// @copydoc OValueSetImp::operator<
  virtual bool operator<(OValueSet const& other) const;
  /// @copydoc OValueSetImp::operator==
  virtual bool operator==(OValueSet const& other) const;
  /// @copydoc OValueSetImp::GetLeftEnd
  virtual double GetLeftEnd() const;
  /// @copydoc OValueSetImp::GetRightEnd
  virtual double GetRightEnd() const;
  /// @copydoc OValueSetImp::IsOpenLeft
  virtual bool IsOpenLeft() const;
  /// @copydoc OValueSetImp::IsOpenRight
  virtual bool IsOpenRight() const;
  /// @copydoc OValueSetImp::IsBoundedLeft
  virtual bool IsBoundedLeft() const;
  /// @copydoc OValueSetImp::IsBoundedRight
  virtual bool IsBoundedRight() const;
  /// @copydoc OValueSetImp::IsEmpty
  virtual bool IsEmpty() const;
  /// @copydoc OValueSetImp::SetLeftEnd
  virtual void SetLeftEnd(double value);
  /// @copydoc OValueSetImp::SetRightEnd
  virtual void SetRightEnd(double value);
  /// @copydoc OValueSetImp::SetOpenLeft
  virtual void SetOpenLeft(bool open);
  /// @copydoc OValueSetImp::SetOpenRight
  virtual void SetOpenRight(bool open);
  /// @copydoc OValueSetImp::SetBoundedLeft
  virtual void SetBoundedLeft(bool bounded);
  /// @copydoc OValueSetImp::SetBoundedRight
  virtual void SetBoundedRight(bool bounded);
  /// @copydoc OValueSetImp::Empty
  virtual void Empty();

 private:
  std::unique_ptr<OValueSetImp> imp_;
};

/// Forward iterator over the codes of a nominal value set, in the order in which they were added.
/// Loop: while `Advance()`, read `GetData()`. Valid only while its set lives and is not changed.
class TREE_API NValueSetIter {
 public:
  virtual ~NValueSetIter();

  /// The code at the position; -1 before the first `Advance()` and at the end.
  virtual int GetData() const = 0;
  /// Moves to the first code, then to the next one; false at the end, and then not to be called
  /// again.
  virtual bool Advance() = 0;
};

class NValueSetIterImp;

/// A set of category codes without duplicates, in the order in which they were added.
class TREE_API NValueSetImp {
 public:
  /// Appends `code`, any integer, and returns true; refuses a code that is present. Linear in the
  /// number of codes.
  bool Add(int code);
  /// Whether `value` is exactly one of the codes: false for a fraction, a value outside the 32-bit
  /// range, and NaN. Linear in the number of codes.
  bool Contains(double value) const;
  /// Number of codes.
  int GetNumElements() const;
  /// A new iterator over the codes, valid only while this set lives and is not changed. **New**:
  /// the caller deletes it.
  NValueSetIter* GetIterator() const;

 private:
  friend class NValueSetIterImp;

  std::vector<int> codes_;
};

/// Handle of a set of category codes: the categories that a nominal split rule sends to one child.
/// Every operation is that of `NValueSetImp` with the same name.
class TREE_API NValueSet : public ValueSet {
 public:
  /// An empty set.
  NValueSet();
  /// Copies the codes into this handle's own object; no two handles share one. An assignment ends
  /// all iterators over this set.
  ///@{
  NValueSet(NValueSet const& other);
  NValueSet& operator=(NValueSet const& other);
  ///@}

  ~NValueSet() override;
  /// @copydoc NValueSetImp::Contains
  bool Contains(double value) const override;
  /// Always true.
  bool IsNominalValueSet() const override;
  /// @copydoc NValueSetImp::GetIterator
  virtual NValueSetIter* GetIterator() const;
  /// @copydoc NValueSetImp::GetNumElements
  virtual int GetNumElements() const;
  /// @copydoc NValueSetImp::Add
  virtual bool Add(int code);

 private:
  std::unique_ptr<NValueSetImp> imp_;
};

/// The iterator that `NValueSetImp::GetIterator` hands out.
class TREE_API NValueSetIterImp : public NValueSetIter {
 public:
  /// An iterator before the first code of `set`, which is **borrowed** for the iterator's life.
  explicit NValueSetIterImp(NValueSetImp const* set);
  ~NValueSetIterImp() override;

  int GetData() const override;
  bool Advance() override;

 private:
  NValueSetImp const* set_;
  std::size_t position_ = 0;
  bool started_ = false;
};

}  // namespace tree

#endif  // TREE_VALUES_H_
