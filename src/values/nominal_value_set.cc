#include <algorithm>

#include "tree/assertions.h"
#include "tree/values.h"
#include "values/int32_truncation.h"

namespace tree {

bool NValueSetImp::Add(int code) {
  if (Contains(code)) return false;
  codes_.push_back(code);
  return true;
}

bool NValueSetImp::Contains(double value) const {
  int const code = TruncateToInt32(value);
  if (code != value) return false;
  return std::find(codes_.begin(), codes_.end(), code) != codes_.end();
}

int NValueSetImp::GetNumElements() const { return static_cast<int>(codes_.size()); }

NValueSetIter* NValueSetImp::GetIterator() const { return new NValueSetIterImp(this); }

NValueSet::NValueSet() : imp_(std::make_unique<NValueSetImp>()) {}

NValueSet::NValueSet(NValueSet const& other)
    : ValueSet(other), imp_(std::make_unique<NValueSetImp>(*other.imp_)) {}

NValueSet& NValueSet::operator=(NValueSet const& other) {
  *imp_ = *other.imp_;
  return *this;
}

NValueSet::~NValueSet() = default;

bool NValueSet::Contains(double value) const { return imp_->Contains(value); }

bool NValueSet::IsNominalValueSet() const { return true; }

NValueSetIter* NValueSet::GetIterator() const { return imp_->GetIterator(); }

int NValueSet::GetNumElements() const { return imp_->GetNumElements(); }

bool NValueSet::Add(int code) { return imp_->Add(code); }

NValueSetIter::~NValueSetIter() = default;

NValueSetIterImp::NValueSetIterImp(NValueSetImp const* set) : set_(set) {}

NValueSetIterImp::~NValueSetIterImp() = default;

int NValueSetIterImp::GetData() const {
  bool const onCode = started_ && position_ < set_->codes_.size();
  return onCode ? set_->codes_[position_] : -1;
}

bool NValueSetIterImp::Advance() {
  std::size_t const count = set_->codes_.size();
  internal::Require(!started_ || position_ < count, "NValueSetIterImp::Advance",
                    "the iterator already stands at the end");
  if (!started_) {
    started_ = true;
  } else if (position_ < count) {
    ++position_;
  }
  return position_ < count;
}

}  // namespace tree
