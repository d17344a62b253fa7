#include "rule_reading.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <typeinfo>

#include "tree/score/input_error.h"

namespace tree::score {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

int OrNone(int child) { return std::max(child, -1); }

[[noreturn]] void ThrowOutOfOrder() { throw InputError("cut points are not in ascending order"); }

void AddCut(std::vector<RuleTable::Cut>& cuts, double cutPoint, int child) {
  // A cut between two intervals of one child says nothing.
  if (!cuts.empty() && cuts.back().child == child) {
    cuts.back().cutPoint = cutPoint;
  } else {
    cuts.push_back({cutPoint, child});
  }
}

// The public interface finds an item by its cut point, and the items of a rule lie side by side. A
// cut point at either infinity, added to a copy where it is missing, shows where they begin and
// end.
void ReadCuts(OSplitRule const& rule, RuleTable& table) {
  OSplitRule copy(rule);
  OValueSet const ends(-kInfinity, kInfinity);
  bool const addsFirst = copy.IsPresent(-kInfinity) == nullptr;
  bool const addsLast = copy.IsPresent(kInfinity) == nullptr;
  if (addsFirst) copy.InsertCutPoint(ends, true);
  if (addsLast) copy.InsertCutPoint(ends, false);
  OSplitRule::OSplitRuleItem const* first = copy.IsPresent(-kInfinity);
  OSplitRule::OSplitRuleItem const* last = copy.IsPresent(kInfinity);
  if (copy.GetCutPoint() != -kInfinity || first == nullptr || last < first) ThrowOutOfOrder();
  if (addsFirst) ++first;
  if (!addsLast) ++last;
  double previous = kNan;
  for (; first != last; ++first) {
    if (std::isnan(first->cutPoint) || first->cutPoint <= previous) ThrowOutOfOrder();
    previous = first->cutPoint;
    int const child = first->child == -1 ? table.upperChild : OrNone(first->child);
    AddCut(table.cuts, first->cutPoint, child);
  }
  while (!table.cuts.empty() && table.cuts.back().child == table.upperChild) {
    table.cuts.pop_back();
  }
}

// Of one valid cut point there is nothing to search for.
bool ReadSingleCut(OSplitRule const& rule, RuleTable& table) {
  if (!rule.IsValidBinary()) return false;
  double const cutPoint = rule.GetCutPoint();
  if (std::isnan(cutPoint)) ThrowOutOfOrder();
  double const below = cutPoint == rule.GetMissingValue() ? -kInfinity : cutPoint;
  // At both infinities at once the missing value is the only one that the cut point takes.
  if (below == rule.GetMissingValue()) return false;
  int const child = OrNone(rule.Classify(below));
  if (child != table.upperChild) table.cuts.push_back({cutPoint, child});
  return true;
}

void ReadOrdinal(OSplitRule const& rule, RuleTable& table) {
  table.ordered = true;
  table.missingValue = rule.GetMissingValue();
  // NaN is above every cut point.
  table.upperChild = OrNone(rule.Classify(kNan));
  if (!ReadSingleCut(rule, table)) ReadCuts(rule, table);
}

// The public interface does not tell the length of the table, but whether another rule maps the
// same categories: twice as many are tried until it does.
void ReadNominal(NSplitRule const& rule, RuleTable& table) {
  table.ordered = false;
  for (int length = 0;; length = std::max(16, length > std::numeric_limits<int>::max() / 2
                                                  ? std::numeric_limits<int>::max()
                                                  : 2 * length)) {
    NSplitRule candidate(rule.GetPredictorIndex(), length);
    table.codes.assign(static_cast<std::size_t>(length), -1);
    for (int code = 0; code < length; ++code) {
      int const child = OrNone(rule.GetCatMapping(code));
      candidate.SetCatMapping(code, child);
      table.codes[static_cast<std::size_t>(code)] = child;
    }
    if (candidate.Compare(rule) != 3) break;
    if (length == std::numeric_limits<int>::max()) throw InputError("a table is too long");
  }
  while (!table.codes.empty() && table.codes.back() < 0) table.codes.pop_back();
}

}  // namespace

int RuleTable::GetHighestChild() const {
  int highest = std::max(missingChild, upperChild);
  for (Cut const& cut : cuts) highest = std::max(highest, cut.child);
  for (int const child : codes) highest = std::max(highest, child);
  return highest;
}

void ReadRule(SplitRuleImp const& rule, RuleTable& table) {
  table.predictor = rule.GetPredictorIndex();
  table.missingChild = OrNone(rule.GetMissingValueMapping());
  table.missingValue = kNan;
  table.upperChild = -1;
  table.cuts.clear();
  table.codes.clear();
  // Deliberate: exactly these classes, for a derived one may answer otherwise.
  if (typeid(rule) == typeid(OSplitRule)) {
    ReadOrdinal(static_cast<OSplitRule const&>(rule), table);
  } else if (typeid(rule) == typeid(NSplitRule)) {
    ReadNominal(static_cast<NSplitRule const&>(rule), table);
  } else {
    throw InputError("a split rule is of a class that is not known");
  }
  if (table.predictor < 0) throw InputError("a split rule has a negative predictor index");
}

}  // namespace tree::score
