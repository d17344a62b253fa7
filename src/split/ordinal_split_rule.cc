#include <algorithm>
#include <cmath>
#include <utility>

#include "split/child_count.h"
#include "tree/assertions.h"
#include "tree/split_rules.h"
#include "tree/support.h"

namespace tree {

namespace {

constexpr int kUnassigned = -1;

// Absolute tolerance between the cut points of two rules that split alike.
constexpr double kCutPointTolerance = 1e-12;

bool SplitAlike(OSplitRule::OSplitRuleItem const& a, OSplitRule::OSplitRuleItem const& b) {
  return a.child == b.child && !(std::fabs(a.cutPoint - b.cutPoint) > kCutPointTolerance);
}

}  // namespace

OSplitRule::OSplitRule(double missingValue, int predictorIndex)
    : SplitRuleImp(predictorIndex), missingValue_(missingValue) {}

OSplitRule::OSplitRule(VariableSettings const& settings, int predictorIndex)
    : OSplitRule(settings.GetMissingValue(), predictorIndex) {}

OSplitRule::OSplitRule(OSplitRule const& other) = default;

OSplitRule& OSplitRule::operator=(OSplitRule const& other) {
  std::vector<OSplitRuleItem> items = other.items_;
  SplitRuleImp::operator=(other);
  items_ = std::move(items);
  upperChild_ = other.upperChild_;
  missingValue_ = other.missingValue_;
  return *this;
}

OSplitRule::~OSplitRule() = default;

int OSplitRule::GetNumChildren() const {
  int highest = std::max(upperChild_, GetMissingValueMapping());
  for (OSplitRuleItem const& item : items_) highest = std::max(highest, item.child);
  return CountChildren(highest);
}

ValueSet* OSplitRule::GetMappedValues(int child) const {
  if (!IsValid()) return nullptr;
  auto const item =
      child == upperChild_
          ? items_.end()
          : std::find_if(items_.begin(), items_.end(),
                         [child](OSplitRuleItem const& each) { return each.child == child; });
  if (item == items_.end() && child != upperChild_) return nullptr;

  auto interval = std::make_unique<OValueSet>();
  if (item != items_.end()) {
    interval->SetRightEnd(item->cutPoint);
    interval->SetOpenRight(item->openAtCut);
  }
  if (item != items_.begin()) {
    OSplitRuleItem const& below = *(item - 1);
    interval->SetLeftEnd(below.cutPoint);
    interval->SetOpenLeft(!below.openAtCut);
  }
  // An unbounded side repeats the other side's end.
  if (!interval->IsBoundedLeft()) interval->SetBoundedLeft(false);
  if (!interval->IsBoundedRight()) interval->SetBoundedRight(false);
  return interval.release();
}

SplitRuleImp* OSplitRule::Clone() const { return new OSplitRule(*this); }

SplitRuleImp* OSplitRule::EmptyClone() const {
  return new OSplitRule(missingValue_, GetPredictorIndex());
}

bool OSplitRule::CopyMappings(SplitRuleImp const& other) {
  auto const* ordinal = dynamic_cast<OSplitRule const*>(&other);
  if (ordinal == nullptr) return false;
  std::vector<OSplitRuleItem> items = ordinal->items_;
  SplitRuleImp::CopyMappings(other);
  items_ = std::move(items);
  upperChild_ = ordinal->upperChild_;
  return true;
}

int OSplitRule::Classify(double value) const {
  if (value == missingValue_) return GetMissingValueMapping();
  for (OSplitRuleItem const& item : items_) {
    // Deliberate: a value at the cut point belongs to the interval below it, open or not.
    if (item.cutPoint >= value) return item.child == kUnassigned ? upperChild_ : item.child;
  }
  return upperChild_;
}

int OSplitRule::Compare(SplitRuleImp const& other) const {
  int const base = SplitRuleImp::Compare(other);
  if (base == 2) return base;
  auto const* ordinal = dynamic_cast<OSplitRule const*>(&other);
  if (ordinal == nullptr || missingValue_ != ordinal->missingValue_) return 3;
  bool const splitAlike = upperChild_ == ordinal->upperChild_ &&
                          std::equal(items_.begin(), items_.end(), ordinal->items_.begin(),
                                     ordinal->items_.end(), SplitAlike);
  return splitAlike ? base : 1;
}

bool OSplitRule::IsOrdered() const { return true; }

void OSplitRule::ReorderMappings(std::vector<int> const& newPositions) {
  SplitRuleImp::ReorderMappings(newPositions);
  auto const renumber = [&newPositions](int& child) {
    internal::RequireIndex(child, newPositions.size(), "OSplitRule::ReorderMappings");
    child = newPositions[static_cast<std::size_t>(child)];
  };
  for (OSplitRuleItem& item : items_) renumber(item.child);
  renumber(upperChild_);
}

bool OSplitRule::AddMappedValues(ValueSet const& values) {
  auto const* interval = dynamic_cast<OValueSet const*>(&values);
  if (interval == nullptr || !IsValidInterval(*interval)) return false;
  items_.reserve(items_.size() + 2);  // from here on nothing can fail
  if (interval->IsBoundedLeft()) InsertCutPoint(*interval, true);
  if (interval->IsBoundedRight()) {
    InsertCutPoint(*interval, false);
  } else if (upperChild_ == kUnassigned) {
    upperChild_ = GetNumChildren();
  }
  return true;
}

void OSplitRule::SetCutPoint(double cutPoint) {
  if (items_.empty()) {
    items_.push_back({cutPoint, 0, false});
    upperChild_ = 1;
  } else {
    items_.front().cutPoint = cutPoint;
  }
}

double OSplitRule::GetCutPoint() const {
  return items_.empty() ? systemMissingValue() : items_.front().cutPoint;
}

OSplitRule::OSplitRuleItem* OSplitRule::IsPresent(double cutPoint) {
  auto const found =
      std::find_if(items_.begin(), items_.end(),
                   [cutPoint](OSplitRuleItem const& item) { return item.cutPoint == cutPoint; });
  return found == items_.end() ? nullptr : &*found;
}

void OSplitRule::InsertCutPoint(OValueSet const& interval, bool leftEnd) {
  double const cutPoint = leftEnd ? interval.GetLeftEnd() : interval.GetRightEnd();
  bool const open = leftEnd ? interval.IsOpenLeft() : interval.IsOpenRight();
  OSplitRuleItem* const present = IsPresent(cutPoint);
  // What lies below a left end belongs to another child, or to none yet.
  int const childBelow = present != nullptr ? present->child : kUnassigned;
  int const child = leftEnd ? childBelow : GetNumChildren();
  if (present == nullptr) {
    auto const above = std::find_if(items_.begin(), items_.end(), [cutPoint](auto const& item) {
      return item.cutPoint > cutPoint;
    });
    items_.insert(above, {cutPoint, child, open});
  } else if (present->child == kUnassigned) {
    present->child = child;
    present->openAtCut = open;
  }
}

bool OSplitRule::IsValidInterval(OValueSet const& interval) const {
  bool const boundedLeft = interval.IsBoundedLeft();
  bool const boundedRight = interval.IsBoundedRight();
  double const left = boundedLeft ? interval.GetLeftEnd() : 0.0;
  double const right = boundedRight ? interval.GetRightEnd() : 0.0;
  bool const upperAssigned = upperChild_ != kUnassigned;

  if (boundedLeft && boundedRight && left == right) return false;
  if (upperAssigned && !boundedRight) return false;
  if (items_.empty()) return true;
  if (items_.front().child != kUnassigned && boundedRight && items_.front().cutPoint > right) {
    return false;
  }
  if (upperAssigned && boundedLeft && left > items_.back().cutPoint) return false;

  double previous = items_.front().cutPoint;
  for (OSplitRuleItem const& item : items_) {
    double const cut = item.cutPoint;
    bool const assigned = item.child != kUnassigned;
    bool const cutsThrough =
        boundedLeft && boundedRight && left != cut && right != cut && interval.Contains(cut);
    bool const endsInside = boundedRight && cut > right && right > previous && assigned;
    bool const endsAtCut = boundedRight && right == cut && assigned;
    if (cutsThrough || endsInside || endsAtCut) return false;
    previous = cut;
  }
  return true;
}

bool OSplitRule::IsValid() const {
  return upperChild_ != kUnassigned &&
         std::none_of(items_.begin(), items_.end(),
                      [](OSplitRuleItem const& item) { return item.child == kUnassigned; });
}

bool OSplitRule::IsValidBinary() const { return items_.size() == 1 && IsValid(); }

bool OSplitRule::IsStandard() const { return !IsValidBinary() || upperChild_ != 0; }

void OSplitRule::SetStandard() { SetBinaryChildren(0, 1); }

void OSplitRule::SetReverse() { SetBinaryChildren(1, 0); }

void OSplitRule::SetBinaryChildren(int atOrBelow, int above) {
  if (!IsValidBinary()) return;
  items_.front().child = atOrBelow;
  upperChild_ = above;
}

}  // namespace tree
