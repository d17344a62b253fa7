#include <cmath>

#include "tree/settings.h"

namespace tree {

namespace {

// Absolute tolerance between the doubles of two equal rules.
constexpr double kTolerance = 1e-12;

bool AreClose(double a, double b) { return std::fabs(a - b) <= kTolerance; }

bool IsPercentage(double percent) { return percent >= 0.0 && percent <= 100.0; }

}  // namespace

StopRule::~StopRule() = default;

StopRuleImp::StopRuleImp() { Init(0.0001, 100, 0.0, 50, 0.0, 0); }

StopRuleImp::StopRuleImp(double minImprovement, int minNodeSize, double minNodePercentSize,
                         int minChildSize, double minChildPercentSize, int maxTreeDepth) {
  Init(minImprovement, minNodeSize, minNodePercentSize, minChildSize, minChildPercentSize,
       maxTreeDepth);
}

StopRuleImp::StopRuleImp(StopRuleImp const& other) = default;

StopRuleImp& StopRuleImp::operator=(StopRuleImp const& other) = default;

StopRuleImp::~StopRuleImp() = default;

StopRule* StopRuleImp::Clone() const { return new StopRuleImp(*this); }

double StopRuleImp::GetMinImprovement() const { return minImprovement_; }

int StopRuleImp::GetMinNodeSize() const { return minNodeSize_; }

double StopRuleImp::GetMinNodePercentSize() const { return minNodePercentSize_; }

int StopRuleImp::GetMinChildSize() const { return minChildSize_; }

double StopRuleImp::GetMinChildPercentSize() const { return minChildPercentSize_; }

int StopRuleImp::GetMaxTreeDepth() const { return maxTreeDepth_; }

void StopRuleImp::SetMinImprovement(double improvement) { minImprovement_ = improvement; }

void StopRuleImp::SetMinNodeSize(int size) {
  if (size >= 0) minNodeSize_ = size;
}

void StopRuleImp::SetMinNodePercentSize(double percent) {
  if (IsPercentage(percent)) minNodePercentSize_ = percent;
}

void StopRuleImp::SetMinChildSize(int size) {
  if (size >= 0) minChildSize_ = size;
}

void StopRuleImp::SetMinChildPercentSize(double percent) {
  if (IsPercentage(percent)) minChildPercentSize_ = percent;
}

void StopRuleImp::SetMaxTreeDepth(int depth) { maxTreeDepth_ = depth; }

void StopRuleImp::Init(double minImprovement, int minNodeSize, double minNodePercentSize,
                       int minChildSize, double minChildPercentSize, int maxTreeDepth) {
  minImprovement_ = minImprovement;
  minNodeSize_ = minNodeSize;
  minNodePercentSize_ = minNodePercentSize;
  minChildSize_ = minChildSize;
  minChildPercentSize_ = minChildPercentSize;
  maxTreeDepth_ = maxTreeDepth;
}

bool StopRuleImp::operator==(StopRuleImp const& other) const {
  return minNodeSize_ == other.minNodeSize_ && minChildSize_ == other.minChildSize_ &&
         AreClose(minNodePercentSize_, other.minNodePercentSize_) &&
         AreClose(minChildPercentSize_, other.minChildPercentSize_) &&
         maxTreeDepth_ == other.maxTreeDepth_ && AreClose(minImprovement_, other.minImprovement_);
}

}  // namespace tree
