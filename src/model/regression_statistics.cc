#include <algorithm>

#include "tree/assertions.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree {

namespace {

constexpr unsigned int kAllStorageFlags = 0xFF;

bool IsSingleStorageFlag(unsigned int flag) {
  return (flag & ~kAllStorageFlags) == 0 && flag != 0 && (flag & (flag - 1)) == 0;
}

int CountFlagsBelow(unsigned int flags, unsigned int flag) {
  int count = 0;
  for (unsigned int bit = 1; bit < flag; bit <<= 1) count += (flags & bit) != 0 ? 1 : 0;
  return count;
}

}  // namespace

RegInfo::~RegInfo() = default;

RegInfoImp::RegInfoImp() : maximum_(-GetInfinity()), minimum_(GetInfinity()) {}

RegInfoImp::RegInfoImp(RegInfoImp const& other) : RegInfoImp() { CopyData(other); }

RegInfoImp& RegInfoImp::operator=(RegInfoImp const& other) {
  if (this != &other) CopyData(other);
  return *this;
}

RegInfoImp::~RegInfoImp() = default;

double RegInfoImp::GetMean() const { return mean_; }

double RegInfoImp::GetMinimum() const { return minimum_; }

double RegInfoImp::GetMaximum() const { return maximum_; }

double RegInfoImp::GetStdDev() const {
  double value = 0.0;
  GetExtendedStatistic(StoreStdDev, &value);
  return value;
}

double RegInfoImp::GetPrediction() const {
  double value = mean_;
  GetExtendedStatistic(StorePrediction, &value);
  return value;
}

int RegInfoImp::GetNumBins() const { return static_cast<int>(binSizes_.size()); }

double RegInfoImp::GetBinSize(int index) const {
  internal::RequireIndex(index, GetNumBins(), "RegInfoImp::GetBinSize");
  return binSizes_[static_cast<std::size_t>(index)];
}

double RegInfoImp::GetBinLeftEndPoint(int index) const { return BinBoundary(index); }

double RegInfoImp::GetBinRightEndPoint(int index) const { return BinBoundary(index + 1.0); }

double RegInfoImp::GetCount() const { return count_; }

double RegInfoImp::GetUnweightedCount() const {
  double value = count_;
  GetExtendedStatistic(StoreUnweightedCount, &value);
  return value;
}

void RegInfoImp::SetCount(double count) { count_ = count; }

void RegInfoImp::SetMean(double mean) { mean_ = mean; }

void RegInfoImp::SetMinimum(double minimum) { minimum_ = minimum; }

void RegInfoImp::SetMaximum(double maximum) { maximum_ = maximum; }

void RegInfoImp::SetNumBins(int count) {
  binSizes_.resize(static_cast<std::size_t>(std::max(count, 0)));
}

void RegInfoImp::SetBinSize(int index, double size) {
  internal::RequireIndex(index, GetNumBins(), "RegInfoImp::SetBinSize");
  binSizes_[static_cast<std::size_t>(index)] = size;
}

void RegInfoImp::Clear() {
  count_ = 0.0;
  mean_ = 0.0;
  maximum_ = -GetInfinity();
  minimum_ = GetInfinity();
  binSizes_.clear();
  extendedStatistics_.clear();
  storageFlags_ = 0;
}

void RegInfoImp::CopyData(RegInfoImp const& other) {
  std::vector<double> bins = other.binSizes_;
  std::vector<double> statistics;
  statistics.reserve(other.extendedStatistics_.size() + 1);  // room for a standard deviation
  statistics = other.extendedStatistics_;
  double const stdDev = other.GetStdDev();

  storageFlags_ = other.storageFlags_;
  extendedStatistics_ = std::move(statistics);
  binSizes_ = std::move(bins);
  count_ = other.count_;
  mean_ = other.mean_;
  maximum_ = other.maximum_;
  minimum_ = other.minimum_;
  // Deliberate: an absent standard deviation reads as 0.0 and is stored as that.
  SetExtendedStatistic(StoreStdDev, stdDev);
}

bool RegInfoImp::GetExtendedStatistic(StatisticStorageFlags flag, double* value) const {
  int const position = GetExtendedStatisticPos(flag);
  if (position < 0) return false;
  *value = extendedStatistics_[static_cast<std::size_t>(position)];
  return true;
}

double RegInfoImp::GetExtendedStatistic(StatisticStorageFlags flag) const {
  int const position = GetExtendedStatisticPos(flag);
  internal::Require(position >= 0, "RegInfoImp::GetExtendedStatistic", "the statistic is not set");
  return extendedStatistics_[static_cast<std::size_t>(position)];
}

void RegInfoImp::SetExtendedStatistic(StatisticStorageFlags flag, double value) {
  if (!IsSingleStorageFlag(flag)) return;
  int const position = GetExtendedStatisticPos(flag);
  if (position >= 0) {
    extendedStatistics_[static_cast<std::size_t>(position)] = value;
  } else {
    auto const insertion = extendedStatistics_.begin() + GetExtendedStatisticInsertionPos(flag);
    extendedStatistics_.insert(insertion, value);
    storageFlags_ |= flag;
  }
}

int RegInfoImp::GetExtendedStatisticPos(StatisticStorageFlags flag) const {
  bool const present = IsSingleStorageFlag(flag) && (storageFlags_ & flag) != 0;
  return present ? CountFlagsBelow(storageFlags_, flag) : -1;
}

int RegInfoImp::GetExtendedStatisticInsertionPos(StatisticStorageFlags flag) const {
  bool const absent = IsSingleStorageFlag(flag) && (storageFlags_ & flag) == 0;
  return absent ? CountFlagsBelow(storageFlags_, flag) : -1;
}

bool RegInfoImp::operator==(RegInfoImp const& other) const {
  return mean_ == other.mean_ && minimum_ == other.minimum_ && maximum_ == other.maximum_ &&
         GetStdDev() == other.GetStdDev() && GetPrediction() == other.GetPrediction() &&
         binSizes_ == other.binSizes_ && GetUnweightedCount() == other.GetUnweightedCount() &&
         count_ == other.count_;
}

double RegInfoImp::BinBoundary(double index) const {
  return (maximum_ - minimum_) * index / GetNumBins() + minimum_;
}

}  // namespace tree
