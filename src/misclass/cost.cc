#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "foundation/allocation_checks.h"
#include "tree/misclassification.h"

namespace tree {

namespace {

constexpr double kDefaultCost = 1.0;

// Absolute tolerance within which a cost counts as the default cost.
constexpr double kDefaultCostTolerance = 1e-12;

double DefaultCost(int row, int column) { return row == column ? 0.0 : kDefaultCost; }

}  // namespace

Cost::Cost() = default;

Cost::Cost(Cost const& /*other*/) {}

Cost::~Cost() = default;

double Cost::GetAt(int row, int column) const { return Get(row, column); }

bool Cost::SetAt(int row, int column, double cost) { return Set(row, column, cost); }

CostImp::CostImp() : main_(true), secondary_(true) {}

CostImp::CostImp(CostImp const& other)
    : Cost(other), main_(other.main_), secondary_(other.secondary_), type_(other.type_) {
  RequireCopied(other.main_, main_);
  RequireCopied(other.secondary_, secondary_);
}

CostImp& CostImp::operator=(CostImp const& other) {
  CostImp copy(other);
  main_ = std::move(copy.main_);
  secondary_ = std::move(copy.secondary_);
  type_ = copy.type_;
  return *this;
}

CostImp::~CostImp() = default;

Cost* CostImp::Clone() const { return new CostImp(*this); }

int CostImp::GetNumClasses() const { return main_.GetNumRows(); }

double CostImp::Get(int row, int column) const {
  int const last = GetNumClasses() - 1;
  if (row < 0 || row > last || column < 0 || column > last) return -1.0;
  return main_.GetAt(row, column);
}

bool CostImp::IsDefault() const { return IsDefaultMatrix(CostMatrixMain); }

CostType CostImp::GetType() const { return type_; }

bool CostImp::Set(CostType type) {
  if (type != CostTypeDefault || type_ == CostTypeDefault) return false;
  SetDefault(CostMatrixMain, GetNumClasses());
  return true;
}

bool CostImp::Set(int row, int column, double cost) {
  if (!SetImp(row, column, cost)) return false;
  type_ = CostTypeCustom;
  return true;
}

bool CostImp::SetImp(int row, int column, double cost) {
  if (row < 0 || column < 0 || !(cost >= 0.0)) return false;
  if (row == column && cost != 0.0) return false;
  int const oldLast = GetNumClasses() - 1;
  int const last = std::max(row, column);
  if (last > oldLast) {
    bool const countable = last < std::numeric_limits<int>::max();
    if (!countable || !main_.Grow(last + 1, last + 1)) return false;
    for (int i = 0; i <= last; ++i) {
      for (int j = 0; j <= last; ++j) {
        if (i > oldLast || j > oldLast) main_.SetAt(i, j, DefaultCost(i, j));
      }
    }
  }
  main_.SetAt(row, column, cost);
  return true;
}

void CostImp::SetDefault(CostMatrix matrix, int count) {
  if (count >= 0) {
    TMatrix<double>& target = matrix == CostMatrixSecondary ? secondary_ : main_;
    if (count != target.GetNumRows()) {
      TMatrix<double> resized(true);
      if (count > 0 && !resized.Init(count, count)) throw std::bad_alloc();
      target = std::move(resized);
    }
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) target.SetAt(i, j, DefaultCost(i, j));
    }
  }
  if (matrix == CostMatrixMain) type_ = CostTypeDefault;
}

bool CostImp::IsDefaultMatrix(CostMatrix matrix) const {
  if (matrix == CostMatrixSecondary && secondary_.GetNumRows() >= 1) return true;
  int const count = GetNumClasses();
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) {
      bool const isDefault = std::fabs(main_.GetAt(i, j) - kDefaultCost) <= kDefaultCostTolerance;
      if (i != j && !isDefault) return false;
    }
  }
  return true;
}

TMatrix<double> const& CostImp::GetMatrix(CostMatrix matrix) const {
  bool const useSecondary = matrix == CostMatrixSecondary && secondary_.GetNumRows() >= 1;
  return useSecondary ? secondary_ : main_;
}

void CostImp::Resize(int count) {
  int const oldCount = GetNumClasses();
  if (count > oldCount) {
    if (!SetImp(count - 1, count - 1, 0.0)) throw std::bad_alloc();
  } else if (count > 0 && count < oldCount) {
    TMatrix<double> kept(true);
    if (!kept.Init(count, count)) throw std::bad_alloc();
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) kept.SetAt(i, j, main_.GetAt(i, j));
    }
    main_ = std::move(kept);
  }
}

}  // namespace tree
