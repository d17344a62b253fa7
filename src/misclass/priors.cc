#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/allocation_checks.h"
#include "tree/misclassification.h"

namespace tree {

namespace {

// The capacity that a vector begins with while the number of classes is not known.
constexpr int kFirstCapacity = 2;

std::unique_ptr<TArray<double>> CopyOf(TArray<double> const* values) {
  if (values == nullptr) return nullptr;
  auto copy = std::make_unique<TArray<double>>(true);
  *copy = *values;
  RequireCopied(*values, *copy);
  return copy;
}

}  // namespace

Priors::~Priors() = default;

PriorsImp::PriorsImp() : specified_(true) {}

PriorsImp::PriorsImp(PriorsImp const& other) : Priors(other), specified_(true) { Init(other); }

PriorsImp& PriorsImp::operator=(PriorsImp const& other) {
  Init(other);
  return *this;
}

PriorsImp::~PriorsImp() = default;

Priors* PriorsImp::Clone() const { return new PriorsImp(*this); }

PriorType PriorsImp::GetType() const { return type_; }

bool PriorsImp::HasAlteredValues() const { return alterFlag_; }

int PriorsImp::GetNumClasses() const { return specified_.GetSize(); }

double PriorsImp::Get(int index) const { return Get(index, PriorVectorSpecified); }

double PriorsImp::GetAltered(int index) const { return Get(index, PriorVectorAltered); }

void PriorsImp::AlterValues(bool flag) { alterFlag_ = flag; }

bool PriorsImp::Set(int index, double value) {
  if (!Set(index, value, PriorVectorSpecified)) return false;
  type_ = PriorTypeCustom;
  return true;
}

bool PriorsImp::Set(PriorType type) {
  bool const settable = type == PriorTypeDefault || type == PriorTypeAlternate;
  if (!settable || type == type_) return false;
  type_ = type;
  specified_.Clear();
  altered_.reset();
  auxiliary_.reset();
  auxiliaryFixed_.reset();
  return true;
}

void PriorsImp::Init(PriorsImp const& other) {
  if (this == &other) return;
  OptionalVector altered = CopyOf(other.altered_.get());
  OptionalVector auxiliary = CopyOf(other.auxiliary_.get());
  OptionalVector auxiliaryFixed = CopyOf(other.auxiliaryFixed_.get());
  OptionalVector specified = CopyOf(&other.specified_);
  type_ = other.GetType();
  alterFlag_ = other.alterFlag_;
  specified_ = std::move(*specified);
  altered_ = std::move(altered);
  auxiliary_ = std::move(auxiliary);
  auxiliaryFixed_ = std::move(auxiliaryFixed);
}

PriorsImp::PriorVector PriorsImp::FindValidId(PriorVector vector) const {
  int id = std::min<int>(vector, PriorVectorAuxiliaryFixed);
  while (id > PriorVectorSpecified && GetVector(static_cast<PriorVector>(id), false) == nullptr) {
    --id;
  }
  return static_cast<PriorVector>(id);
}

TArray<double>* PriorsImp::GetVector(PriorVector vector, bool fallBack) {
  return const_cast<TArray<double>*>(std::as_const(*this).GetVector(vector, fallBack));
}

TArray<double> const* PriorsImp::GetVector(PriorVector vector, bool fallBack) const {
  switch (fallBack ? FindValidId(vector) : vector) {
    case PriorVectorSpecified:
      return &specified_;
    case PriorVectorAltered:
      return altered_.get();
    case PriorVectorAuxiliary:
      return auxiliary_.get();
    case PriorVectorAuxiliaryFixed:
      return auxiliaryFixed_.get();
  }
  return nullptr;
}

double PriorsImp::Get(int index, PriorVector vector) const {
  TArray<double> const* const values = GetVector(vector, true);
  bool const known = values != nullptr && index >= 0 && index < values->GetSize();
  return known ? (*values)[index] : 0.0;
}

double const* PriorsImp::GetValues(PriorVector vector) const {
  TArray<double> const* const values = GetVector(vector, true);
  return values == nullptr ? nullptr : values->GetData();
}

void PriorsImp::SetVector(PriorVector vector, TArray<double>* values) {
  if (values != nullptr && Holds(values)) return;
  OptionalVector taken(values);
  if (vector == PriorVectorAuxiliary) {
    auxiliary_ = std::move(taken);
  } else if (vector == PriorVectorAltered && altered_ == nullptr) {
    // Deliberate: the first one stays until the priors are defined anew.
    altered_ = std::move(taken);
  } else if (vector == PriorVectorAuxiliaryFixed && auxiliaryFixed_ == nullptr) {
    auxiliaryFixed_ = std::move(taken);
  }
}

bool PriorsImp::Set(int index, double value, PriorVector vector) {
  if (index < 0 || index == std::numeric_limits<int>::max() || !(value >= 0.0)) return false;
  TArray<double>* values = GetVector(vector, false);
  OptionalVector created;
  if (values == nullptr) {
    created = std::make_unique<TArray<double>>(true);
    values = created.get();
  }
  if (values->GetSize() == 0) {
    int const numClasses = GetNumClasses();
    int const capacity = numClasses > 0 ? numClasses : kFirstCapacity;
    values->Clear();
    if (!values->Init(capacity < index ? index + 1 : capacity)) return false;
  }
  if (index >= values->GetSize() && !values->Resize(index + 1)) return false;
  values->SetAt(index, value);
  if (created != nullptr) SetVector(vector, created.release());
  return true;
}

bool PriorsImp::Resize(int count) { return specified_.Resize(count); }

bool PriorsImp::ComputeAltered(Cost const& costs) {
  if (!alterFlag_) return true;
  bool const altered = AlterPriorVector(PriorVectorAltered, PriorVectorSpecified, costs);
  if (altered && auxiliary_ != nullptr) {
    AlterPriorVector(PriorVectorAuxiliary, PriorVectorAuxiliary, costs);
  }
  return altered;
}

bool PriorsImp::AlterPriorVector(PriorVector destination, PriorVector source, Cost const& costs) {
  TArray<double> const* const priors = std::as_const(*this).GetVector(source, false);
  int const count = priors == nullptr ? 0 : priors->GetSize();
  auto altered = std::make_unique<TArray<double>>(true);
  if (!altered->Init(count)) return false;
  double total = 0.0;
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) {
      double const weight = (*priors)[j] * costs.Get(i, j);
      altered->AddAtGrow(j, weight);
      total += weight;
    }
  }
  if (!(total > 0.0)) return false;
  for (int k = 0; k < count; ++k) (*altered)[k] /= total;
  SetVector(destination, altered.release());
  return true;
}

bool PriorsImp::Holds(TArray<double> const* values) const {
  return values == &specified_ || values == altered_.get() || values == auxiliary_.get() ||
         values == auxiliaryFixed_.get();
}

}  // namespace tree
