#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "foundation/allocation_checks.h"
#include "split/child_count.h"
#include "tree/assertions.h"
#include "tree/split_rules.h"

namespace tree {

namespace {

constexpr int kUnmapped = -1;

template <class Visit>
void ForEachCode(NValueSet const& set, Visit visit) {
  std::unique_ptr<NValueSetIter> const codes(set.GetIterator());
  while (codes->Advance()) visit(codes->GetData());
}

}  // namespace

NSplitRule::NSplitRule(int predictorIndex, int numCategories)
    : SplitRuleImp(predictorIndex), categoryMapping_(true) {
  if (numCategories > 0 && !GrowToHold(numCategories - 1)) throw std::bad_alloc();
}

NSplitRule::NSplitRule(NSplitRule const& other)
    : SplitRuleImp(other), categoryMapping_(other.categoryMapping_) {
  RequireCopied(other.categoryMapping_, categoryMapping_);
}

NSplitRule& NSplitRule::operator=(NSplitRule const& other) {
  TArray<int> mapping(other.categoryMapping_);
  RequireCopied(other.categoryMapping_, mapping);
  SplitRuleImp::operator=(other);
  categoryMapping_ = std::move(mapping);
  return *this;
}

NSplitRule::~NSplitRule() = default;

int NSplitRule::GetNumChildren() const {
  int highest = GetMissingValueMapping();
  for (int category = 0; category < categoryMapping_.GetSize(); ++category) {
    highest = std::max(highest, GetCatMapping(category));
  }
  return CountChildren(highest);
}

ValueSet* NSplitRule::GetMappedValues(int child) const {
  std::unique_ptr<NValueSet> categories;
  for (int category = 0; category < categoryMapping_.GetSize(); ++category) {
    if (GetCatMapping(category) != child) continue;
    if (categories == nullptr) categories = std::make_unique<NValueSet>();
    categories->Add(category);
  }
  return categories.release();
}

SplitRuleImp* NSplitRule::Clone() const { return new NSplitRule(*this); }

SplitRuleImp* NSplitRule::EmptyClone() const { return new NSplitRule(GetPredictorIndex(), 0); }

bool NSplitRule::CopyMappings(SplitRuleImp const& other) {
  auto const* nominal = dynamic_cast<NSplitRule const*>(&other);
  if (nominal == nullptr) return false;
  TArray<int> mapping(nominal->categoryMapping_);
  RequireCopied(nominal->categoryMapping_, mapping);
  SplitRuleImp::CopyMappings(other);
  categoryMapping_ = std::move(mapping);
  return true;
}

int NSplitRule::Classify(double value) const {
  // Within the table the conversion is exact for every whole number, and NaN never gets there.
  if (value >= 0.0 && value < categoryMapping_.GetSize()) {
    int const category = static_cast<int>(value);
    if (category == value) {
      int const child = categoryMapping_[category];
      if (child >= 0) return child;
    }
  }
  return GetMissingValueMapping();
}

int NSplitRule::Compare(SplitRuleImp const& other) const {
  int result = SplitRuleImp::Compare(other);
  if (result == 2) return result;
  auto const* nominal = dynamic_cast<NSplitRule const*>(&other);
  if (nominal == nullptr) return 3;
  // Deliberate: the other rule's children decide, whichever side lacks the code.
  bool const otherHasChildren = nominal->GetNumChildren() != 0;
  int const numCategories =
      std::max(categoryMapping_.GetSize(), nominal->categoryMapping_.GetSize());
  for (int category = 0; category < numCategories; ++category) {
    int const mine = GetCatMapping(category);
    int const others = nominal->GetCatMapping(category);
    bool const onlyOneMaps = (mine < 0) != (others < 0);
    if (onlyOneMaps && otherHasChildren) return 3;
    if (mine != others) result = 1;
  }
  return result;
}

bool NSplitRule::IsOrdered() const { return false; }

void NSplitRule::ReorderMappings(std::vector<int> const& newPositions) {
  SplitRuleImp::ReorderMappings(newPositions);
  for (int category = 0; category < categoryMapping_.GetSize(); ++category) {
    int const child = GetCatMapping(category);
    if (child < 0) continue;
    auto const old = static_cast<std::size_t>(child);
    internal::RequireIndex(child, newPositions.size(), "NSplitRule::ReorderMappings");
    categoryMapping_.SetAt(category, newPositions[old]);
  }
}

bool NSplitRule::AddMappedValues(ValueSet const& values) {
  int const child = GetNumChildren();
  auto const* categories = dynamic_cast<NValueSet const*>(&values);
  if (categories == nullptr) return false;
  // One growth to the highest code: the table grows to exactly what is asked for, so growing it
  // code by code would cost the square of their number.
  int highest = kUnmapped;
  ForEachCode(*categories, [&highest](int code) { highest = std::max(highest, code); });
  if (!GrowToHold(highest)) return false;
  ForEachCode(*categories, [this, child](int code) { SetCatMapping(code, child); });
  return true;
}

void NSplitRule::SetCatMapping(int category, int child) {
  if (category < 0) return;
  if (!GrowToHold(category)) throw std::bad_alloc();
  categoryMapping_.SetAt(category, child);
}

int NSplitRule::GetCatMapping(int category) const {
  bool const known = category >= 0 && category < categoryMapping_.GetSize();
  return known ? categoryMapping_[category] : kUnmapped;
}

bool NSplitRule::GrowToHold(int category) {
  int const oldSize = categoryMapping_.GetSize();
  if (category < oldSize) return true;
  bool const countable = category < std::numeric_limits<int>::max();
  if (!countable || !categoryMapping_.Resize(category + 1)) return false;
  for (int added = oldSize; added <= category; ++added) categoryMapping_.SetAt(added, kUnmapped);
  return true;
}

}  // namespace tree
