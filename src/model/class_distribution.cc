#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "foundation/allocation_checks.h"
#include "tree/assertions.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {

ClsInfo::~ClsInfo() = default;

ClsInfoImp::ClsInfoImp()
    : percentSize_(systemMissingValue()), classCounts_(true), classProbabilities_(true) {}

ClsInfoImp::ClsInfoImp(ClsInfoImp const& other) : ClsInfoImp() { *this = other; }

ClsInfoImp& ClsInfoImp::operator=(ClsInfoImp const& other) {
  if (this == &other) return *this;
  int const numClasses = other.GetNumClasses();
  TArray<double> counts(true);
  TArray<double> probabilities(true);
  ResizeOrThrow(counts, numClasses);
  ResizeOrThrow(probabilities, numClasses);
  for (int index = 0; index < numClasses; ++index) {
    counts[index] = other.GetClassCount(index);
    probabilities[index] = other.GetClassProbability(index);
  }
  prediction_ = other.GetPrediction();
  classCounts_ = std::move(counts);
  classProbabilities_ = std::move(probabilities);
  SetPercentSize(other.GetPercentSize());
  SetUnweightedCount(other.GetUnweightedCount());
  return *this;
}

ClsInfoImp::~ClsInfoImp() = default;

int ClsInfoImp::GetPrediction() const { return prediction_; }

double ClsInfoImp::GetClassCount(int index) const {
  internal::RequireIndex(index, GetNumClasses(), "ClsInfoImp::GetClassCount");
  return classCounts_[index];
}

double ClsInfoImp::GetClassPercent(int index) const {
  double const count = GetCount();
  return count > 0.0 ? GetClassCount(index) / count : 0.0;
}

double ClsInfoImp::GetClassProbability(int index) const {
  bool const known = index >= 0 && index < classProbabilities_.GetSize();
  return known ? classProbabilities_[index] : -1.0;
}

int ClsInfoImp::GetNumClasses() const { return classCounts_.GetSize(); }

double ClsInfoImp::GetPercentSize() const { return percentSize_; }

double ClsInfoImp::GetUnweightedCount() const { return unweightedCount_; }

double ClsInfoImp::GetCount() const {
  TArray<double> const& counts = classCounts_;
  double sum = 0.0;
  for (int index = 0; index < counts.GetSize(); ++index) sum += counts[index];
  return sum;
}

void ClsInfoImp::SetPrediction(int index) { prediction_ = index; }

void ClsInfoImp::SetUnweightedCount(double count) { unweightedCount_ = count; }

void ClsInfoImp::SetPercentSize(double size) { percentSize_ = size; }

void ClsInfoImp::SetClassCount(int index, double count) {
  internal::RequireIndex(index, std::numeric_limits<int>::max(), "ClsInfoImp::SetClassCount");
  classCounts_[index] = count;
}

void ClsInfoImp::SetClassProbability(int index, double probability) {
  internal::RequireIndex(index, std::numeric_limits<int>::max(), "ClsInfoImp::SetClassProbability");
  if (classProbabilities_.GetSize() == 0) ResizeOrThrow(classProbabilities_, GetNumClasses());
  classProbabilities_[index] = probability;
}

void ClsInfoImp::SetNumClasses(int count) {
  int const oldCount = GetNumClasses();
  ResizeOrThrow(classCounts_, count);
  try {
    ResizeOrThrow(classProbabilities_, count);
  } catch (std::bad_alloc const&) {
    classCounts_.Resize(oldCount);  // back to fewer classes, which cannot fail
    throw;
  }
}

ClsInfoImp* ClsInfoImp::Clone() const { return new ClsInfoImp(*this); }

bool ClsInfoImp::operator==(ClsInfoImp const& other) const {
  auto const equal = [](TArray<double> const& a, TArray<double> const& b) {
    return std::equal(a.GetData(), a.GetData() + a.GetSize(), b.GetData(),
                      b.GetData() + b.GetSize());
  };
  return unweightedCount_ == other.unweightedCount_ && equal(classCounts_, other.classCounts_) &&
         equal(classProbabilities_, other.classProbabilities_) &&
         prediction_ == other.prediction_ && percentSize_ == other.percentSize_;
}

}  // namespace tree
