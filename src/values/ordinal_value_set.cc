#include <cmath>

#include "tree/values.h"
#include "values/int32_truncation.h"

namespace tree {

namespace {

// Absolute tolerance at the ends of an interval.
constexpr double kEndTolerance = 1e-12;

bool IsAtEnd(double value, double end) { return std::fabs(value - end) < kEndTolerance; }

unsigned int WithFlag(unsigned int flags, unsigned int flag, bool on) {
  return on ? flags | flag : flags & ~flag;
}

}  // namespace

ValueSet::~ValueSet() = default;

OValueSetImp::OValueSetImp() = default;

OValueSetImp::OValueSetImp(double left, double right) : leftEnd_(left), rightEnd_(right) {
  SetBoundedLeft(true);
  SetBoundedRight(true);
}

OValueSetImp::OValueSetImp(OValueSetImp const& other) = default;

OValueSetImp& OValueSetImp::operator=(OValueSetImp const& other) = default;

OValueSetImp::~OValueSetImp() = default;

bool OValueSetImp::Contains(double value) const {
  if (IsBoundedLeft()) {
    if (TruncateToInt32(value - (leftEnd_ + kEndTolerance)) < 0) return false;
    if (IsAtEnd(value, leftEnd_) && IsOpenLeft()) return false;
  }
  if (IsBoundedRight()) {
    if (TruncateToInt32(rightEnd_ - (value + kEndTolerance)) < 0) return false;
    // Deliberate: the left end, on this side too.
    if (IsAtEnd(value, leftEnd_) && IsOpenRight()) return false;
  }
  return true;
}

bool OValueSetImp::IsEmpty() const {
  if (TruncateToInt32((rightEnd_ - kEndTolerance) - leftEnd_) > 0) return false;
  if (!IsAtEnd(rightEnd_, leftEnd_)) return true;
  if (!IsBoundedLeft() || !IsBoundedRight()) return false;
  return IsOpenLeft() || IsOpenRight();
}

bool OValueSetImp::operator==(OValueSetImp const& other) const {
  return (!IsBoundedLeft() && !other.IsBoundedLeft()) || leftEnd_ == other.leftEnd_;
}

bool OValueSetImp::operator<(OValueSetImp const& other) const {
  // Deliberate: once this interval is bounded, whether the other one is does not matter.
  if (!IsBoundedLeft()) return other.IsBoundedLeft();
  return leftEnd_ < other.leftEnd_;
}

void OValueSetImp::SetLeftEnd(double value) {
  leftEnd_ = value;
  SetBoundedLeft(true);
}

void OValueSetImp::SetRightEnd(double value) {
  rightEnd_ = value;
  SetBoundedRight(true);
}

void OValueSetImp::SetOpenLeft(bool open) { leftFlags_ = WithFlag(leftFlags_, kOpen, open); }

void OValueSetImp::SetOpenRight(bool open) { rightFlags_ = WithFlag(rightFlags_, kOpen, open); }

void OValueSetImp::SetBoundedLeft(bool bounded) {
  leftFlags_ = WithFlag(leftFlags_, kBounded, bounded);
  if (!bounded) leftEnd_ = rightEnd_;
}

void OValueSetImp::SetBoundedRight(bool bounded) {
  rightFlags_ = WithFlag(rightFlags_, kBounded, bounded);
  if (!bounded) rightEnd_ = leftEnd_;
}

void OValueSetImp::Empty() {
  SetRightEnd(0.0);
  SetLeftEnd(0.0);
  SetOpenLeft(true);
}

OValueSet::OValueSet() : imp_(std::make_unique<OValueSetImp>()) {}

OValueSet::OValueSet(double left, double right)
    : imp_(std::make_unique<OValueSetImp>(left, right)) {}

OValueSet::OValueSet(OValueSet const& other)
    : ValueSet(other), imp_(std::make_unique<OValueSetImp>(*other.imp_)) {}

OValueSet& OValueSet::operator=(OValueSet const& other) {
  *imp_ = *other.imp_;
  return *this;
}

OValueSet::~OValueSet() = default;

bool OValueSet::Contains(double value) const { return imp_->Contains(value); }

bool OValueSet::IsNominalValueSet() const { return false; }

bool OValueSet::operator<(OValueSet const& other) const { return *imp_ < *other.imp_; }

bool OValueSet::operator==(OValueSet const& other) const { return *imp_ == *other.imp_; }

double OValueSet::GetLeftEnd() const { return imp_->GetLeftEnd(); }

double OValueSet::GetRightEnd() const { return imp_->GetRightEnd(); }

bool OValueSet::IsOpenLeft() const { return imp_->IsOpenLeft(); }

bool OValueSet::IsOpenRight() const { return imp_->IsOpenRight(); }

bool OValueSet::IsBoundedLeft() const { return imp_->IsBoundedLeft(); }

bool OValueSet::IsBoundedRight() const { return imp_->IsBoundedRight(); }

bool OValueSet::IsEmpty() const { return imp_->IsEmpty(); }

void OValueSet::SetLeftEnd(double value) { imp_->SetLeftEnd(value); }

void OValueSet::SetRightEnd(double value) { imp_->SetRightEnd(value); }

void OValueSet::SetOpenLeft(bool open) { imp_->SetOpenLeft(open); }

void OValueSet::SetOpenRight(bool open) { imp_->SetOpenRight(open); }

void OValueSet::SetBoundedLeft(bool bounded) { imp_->SetBoundedLeft(bounded); }

void OValueSet::SetBoundedRight(bool bounded) { imp_->SetBoundedRight(bounded); }

void OValueSet::Empty() { imp_->Empty(); }

}  // namespace tree
