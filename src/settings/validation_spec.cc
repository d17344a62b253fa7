#include "tree/settings.h"

namespace tree {

ValidationSpec::~ValidationSpec() = default;

ValidationSpecImp::ValidationSpecImp() = default;

ValidationSpecImp::ValidationSpecImp(ValidationSpecImp const& other) = default;

ValidationSpecImp& ValidationSpecImp::operator=(ValidationSpecImp const& other) = default;

ValidationSpecImp::~ValidationSpecImp() = default;

ValidationSpec* ValidationSpecImp::Clone() const { return new ValidationSpecImp(*this); }

ValidationType ValidationSpecImp::GetType() const { return type_; }

int ValidationSpecImp::GetNumCVFolds() const { return numCVFolds_; }

long ValidationSpecImp::GetRandomSeed() const { return randomSeed_; }

bool ValidationSpecImp::Set(ValidationType type) {
  // Deliberate: no way back to no validation.
  if (type != ValidationSplitSample && type != ValidationCrossValidation) return false;
  type_ = type;
  return true;
}

bool ValidationSpecImp::SetNumCVFolds(int count) {
  if (count < 2) return false;
  numCVFolds_ = count;
  return true;
}

bool ValidationSpecImp::SetRandomSeed(long seed) {
  if (seed < 1) return false;
  randomSeed_ = seed;
  return true;
}

}  // namespace tree
