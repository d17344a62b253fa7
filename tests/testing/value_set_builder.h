#ifndef TREE_TESTS_TESTING_VALUE_SET_BUILDER_H_
#define TREE_TESTS_TESTING_VALUE_SET_BUILDER_H_

#include <initializer_list>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tree/values.h"

namespace tree::testing {

/// What an end of an interval is.
enum class End { kOpen, kClosed };

// Intervals by their written form, as handles or, with the class named, as implementations:
// `OpenClosed(2, 7)` and `OpenClosed<OValueSetImp>(2, 7)`.

/// The interval from `left` to `right`.
template <class Interval = OValueSet>
Interval Between(End leftKind, double left, double right, End rightKind) {
  Interval interval(left, right);
  interval.SetOpenLeft(leftKind == End::kOpen);
  interval.SetOpenRight(rightKind == End::kOpen);
  return interval;
}

/// (left, right)
template <class Interval = OValueSet>
Interval Open(double left, double right) {
  return Between<Interval>(End::kOpen, left, right, End::kOpen);
}

/// [left, right]
template <class Interval = OValueSet>
Interval Closed(double left, double right) {
  return Between<Interval>(End::kClosed, left, right, End::kClosed);
}

/// (left, right], the kind of interval that rules are mostly made of.
template <class Interval = OValueSet>
Interval OpenClosed(double left, double right) {
  return Between<Interval>(End::kOpen, left, right, End::kClosed);
}

/// [left, right)
template <class Interval = OValueSet>
Interval ClosedOpen(double left, double right) {
  return Between<Interval>(End::kClosed, left, right, End::kOpen);
}

/// (-inf, right]
template <class Interval = OValueSet>
Interval AtMost(double right) {
  Interval interval;
  interval.SetRightEnd(right);
  interval.SetOpenRight(false);
  interval.SetBoundedLeft(false);
  return interval;
}

/// (-inf, right)
template <class Interval = OValueSet>
Interval Below(double right) {
  Interval interval = AtMost<Interval>(right);
  interval.SetOpenRight(true);
  return interval;
}

/// [left, inf)
template <class Interval = OValueSet>
Interval From(double left) {
  Interval interval;
  interval.SetLeftEnd(left);
  interval.SetOpenLeft(false);
  interval.SetBoundedRight(false);
  return interval;
}

/// (left, inf)
template <class Interval = OValueSet>
Interval Above(double left) {
  Interval interval = From<Interval>(left);
  interval.SetOpenLeft(true);
  return interval;
}

/// The whole line.
inline OValueSet Everything() { return OValueSet(); }

/// A set of category codes, added in this order.
inline NValueSet Codes(std::initializer_list<int> codes) {
  NValueSet set;
  for (int const code : codes) set.Add(code);
  return set;
}

/// What an iterator yields from where it stands.
inline std::vector<int> Rest(NValueSetIter& iterator) {
  std::vector<int> codes;
  while (iterator.Advance()) codes.push_back(iterator.GetData());
  return codes;
}

/// The codes of a handle or an implementation, in the order of iteration.
template <class Set>
std::vector<int> CodesOf(Set const& set) {
  std::unique_ptr<NValueSetIter> const iterator(set.GetIterator());
  return Rest(*iterator);
}

/// An interval as it is written: "(2, 7]", "(-inf, 2]". An unbounded end that is not open shows as
/// "[-inf" or "inf]". Works on handles and implementations.
template <class Interval>
std::string Written(Interval const& interval) {
  std::ostringstream text;
  text.precision(std::numeric_limits<double>::max_digits10);
  text << (interval.IsOpenLeft() ? '(' : '[');
  if (interval.IsBoundedLeft()) {
    text << interval.GetLeftEnd();
  } else {
    text << "-inf";
  }
  text << ", ";
  if (interval.IsBoundedRight()) {
    text << interval.GetRightEnd();
  } else {
    text << "inf";
  }
  text << (interval.IsOpenRight() ? ')' : ']');
  return text.str();
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_VALUE_SET_BUILDER_H_
