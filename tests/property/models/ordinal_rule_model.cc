#include "property/models/rule_models.h"

#include <algorithm>
#include <cmath>

#include "property/models/agree.h"
#include "tree/support.h"

namespace tree::testing {

int OrdinalRuleModel::NumChildren() const {
  int count = std::max(upper + 1, missingMapping + 1);
  for (Item const& item : items) count = std::max(count, item.child + 1);
  return count;
}

int OrdinalRuleModel::Classify(double value) const {
  if (value == missing) return missingMapping;
  for (std::size_t position = 0; position < items.size(); ++position) {
    if (!(items[position].cut >= value)) continue;
    return items[position].child == -1 ? upper : items[position].child;
  }
  return upper;
}

int OrdinalRuleModel::ClassifyByIntervals(double value) const {
  struct Range {
    long double above, upTo;
    int child;
  };
  constexpr long double kBeyond = HUGE_VALL;
  std::vector<Range> ranges;
  bool bottom = true;
  for (Item const& item : items) {
    long double const above = bottom ? -kBeyond : static_cast<long double>(ranges.back().upTo);
    ranges.push_back({above, item.cut, item.child == -1 ? upper : item.child});
    bottom = false;
  }
  ranges.push_back({bottom ? -kBeyond : ranges.back().upTo, kBeyond, upper});
  std::vector<int> holders;
  for (std::size_t position = 0; position < ranges.size(); ++position) {
    Range const& range = ranges[position];
    bool const first = position == 0;
    bool const last = position + 1 == ranges.size();
    // The outermost ranges hold the infinities.
    if ((first || value > range.above) && (last || value <= range.upTo)) {
      holders.push_back(range.child);
    }
  }
  Agree("number of intervals that hold a value", holders.size(), 1U);
  return holders.front();
}

bool OrdinalRuleModel::IsAscending() const {
  return std::adjacent_find(items.begin(), items.end(), [](Item const& a, Item const& b) {
           return !(a.cut < b.cut);
         }) == items.end();
}

void OrdinalRuleModel::Reorder(std::vector<int> const& newPositions) {
  RuleModel::Reorder(newPositions);
  for (Item& item : items) item.child = newPositions.at(static_cast<std::size_t>(item.child));
  upper = newPositions.at(static_cast<std::size_t>(upper));
}

std::unique_ptr<RuleModel> OrdinalRuleModel::Clone() const {
  return std::make_unique<OrdinalRuleModel>(*this);
}

std::unique_ptr<SplitRuleImp> OrdinalRuleModel::Build() const {
  // Intervals are added from the left, so that interval i is child i; renumbering does the rest.
  auto rule = std::make_unique<OSplitRule>(missing, predictor);
  std::vector<int> newPositions;
  IntervalModel interval;
  for (Item const& item : items) {
    interval.right = item.cut;
    interval.boundedRight = true;
    interval.openRight = item.open;
    rule->InsertCutPoint(interval.Build(), false);
    newPositions.push_back(item.child);
  }
  rule->AddMappedValues(OValueSet());
  newPositions.push_back(upper);
  if (missingMapping >= 0) {
    rule->AddMissingValueMapping(true);
    newPositions.push_back(missingMapping);
  }
  rule->ReorderMappings(newPositions);
  rule->SetDumbRule(dumbChild, dumbProbability);
  return rule;
}

bool OrdinalRuleModel::IsValid() const {
  if (upper == -1) return false;
  for (Item const& item : items) {
    if (item.child == -1) return false;
  }
  return true;
}

bool OrdinalRuleModel::Accepts(IntervalModel const& interval) const {
  double const left = interval.boundedLeft ? interval.left : 0.0;
  double const right = interval.boundedRight ? interval.right : 0.0;
  if (interval.boundedLeft && interval.boundedRight && left == right) return false;
  if (upper != -1 && !interval.boundedRight) return false;
  if (!items.empty() && items.front().child != -1 && interval.boundedRight &&
      items.front().cut > right) {
    return false;
  }
  if (!items.empty() && upper != -1 && interval.boundedLeft && left > items.back().cut) {
    return false;
  }
  for (std::size_t position = 0; position < items.size(); ++position) {
    Item const& item = items[position];
    double const previous = items[position == 0 ? 0 : position - 1].cut;
    if (interval.boundedLeft && interval.boundedRight && left != item.cut && right != item.cut &&
        interval.Contains(item.cut)) {
      return false;
    }
    if (interval.boundedRight && item.cut > right && right > previous && item.child != -1) {
      return false;
    }
    if (interval.boundedRight && right == item.cut && item.child != -1) return false;
  }
  return true;
}

bool OrdinalRuleModel::Add(IntervalModel const& interval) {
  if (!Accepts(interval)) return false;
  if (interval.boundedLeft) Insert(interval, true);
  if (interval.boundedRight) {
    Insert(interval, false);
  } else {
    int const count = NumChildren();
    if (upper == -1) upper = count;
  }
  return true;
}

void OrdinalRuleModel::Insert(IntervalModel const& interval, bool leftEnd) {
  double const cut = leftEnd ? interval.left : interval.right;
  bool const open = leftEnd ? interval.openLeft : interval.openRight;
  Item* const present = Find(cut);
  int child = NumChildren();
  if (leftEnd) child = present == nullptr ? -1 : present->child;
  if (present == nullptr) {
    std::size_t position = 0;
    while (position < items.size() && !(items[position].cut > cut)) ++position;
    items.insert(items.begin() + static_cast<std::ptrdiff_t>(position), {cut, child, open});
  } else if (present->child == -1) {
    present->child = child;
    present->open = open;
  }
}

OrdinalRuleModel::Item* OrdinalRuleModel::Find(double cut) {
  for (Item& item : items) {
    if (item.cut == cut) return &item;
  }
  return nullptr;
}

std::optional<IntervalModel> OrdinalRuleModel::Mapped(int child) const {
  if (!IsValid()) return std::nullopt;
  IntervalModel interval;
  std::size_t position = 0;
  if (child == upper) {
    position = items.size();
  } else {
    while (position < items.size() && items[position].child != child) ++position;
    if (position == items.size()) return std::nullopt;
    interval.right = items[position].cut;
    interval.boundedRight = true;
    interval.openRight = items[position].open;
  }
  if (position > 0) {
    interval.left = items[position - 1].cut;
    interval.boundedLeft = true;
    interval.openLeft = !items[position - 1].open;
  }
  if (!interval.boundedLeft) interval.left = interval.right;
  if (!interval.boundedRight) interval.right = interval.left;
  return interval;
}

int OrdinalRuleModel::Compare(OrdinalRuleModel const& other) const {
  int const core = CompareCore(other);
  if (core == 2) return 2;
  if (missing != other.missing) return 3;
  if (items.size() != other.items.size() || upper != other.upper) return 1;
  for (std::size_t position = 0; position < items.size(); ++position) {
    if (items[position].child != other.items[position].child) return 1;
    if (std::fabs(items[position].cut - other.items[position].cut) > 1e-12) return 1;
  }
  return core;
}

void CheckOrdinal(OSplitRule const& rule, OrdinalRuleModel const& model, Choices& choices) {
  Agree("IsOrdered", rule.IsOrdered(), true);
  Agree("GetMissingValue", rule.GetMissingValue(), model.missing);
  Agree("GetCutPoint", rule.GetCutPoint(),
        model.items.empty() ? systemMissingValue() : model.items.front().cut);
  Agree("IsValid", rule.IsValid(), model.IsValid());
  Agree("IsValidBinary", rule.IsValidBinary(), model.IsValidBinary());
  Agree("IsStandard", rule.IsStandard(), !model.IsValidBinary() || model.upper != 0);
  Agree("Classify", rule.Classify(model.missing), model.Classify(model.missing));
  for (OrdinalRuleModel::Item const& item : model.items) {
    for (double const value : {item.cut, std::nextafter(item.cut, -HUGE_VAL),
                               std::nextafter(item.cut, HUGE_VAL), -item.cut}) {
      Agree("Classify", rule.Classify(value), model.Classify(value));
      bool const isPlain = !std::isnan(value) && value != model.missing && model.IsAscending();
      if (isPlain) Agree("Classify", rule.Classify(value), model.ClassifyByIntervals(value));
    }
  }
  for (int child = -2; child <= model.NumChildren(); ++child) {
    std::unique_ptr<ValueSet> const values(rule.GetMappedValues(child));
    std::optional<IntervalModel> const expected = model.Mapped(child);
    Agree("GetMappedValues", values != nullptr, expected.has_value());
    if (expected) Check(dynamic_cast<OValueSet const&>(*values), *expected, choices);
  }
}

}  // namespace tree::testing
