#include <algorithm>
#include <limits>

#include "tree/assertions.h"
#include "tree/results.h"

namespace tree {

namespace {

double ValueAt(std::vector<double> const& values, int category) {
  bool const found = category >= 0 && static_cast<std::size_t>(category) < values.size();
  return found ? values[static_cast<std::size_t>(category)] : 0.0;
}

void SetValueAt(std::vector<double>& values, int category, double value, char const* operation) {
  internal::RequireIndex(category, std::numeric_limits<int>::max(), operation);
  auto const position = static_cast<std::size_t>(category);
  if (position >= values.size()) values.resize(position + 1);
  values[position] = value;
}

}  // namespace

GainsSettingsImp::GainsSettingsImp() = default;

GainsSettingsImp::GainsSettingsImp(GainsSettingsImp const& other) : GainsSettingsImp() {
  *this = other;
}

GainsSettingsImp& GainsSettingsImp::operator=(GainsSettingsImp const& other) {
  if (this == &other) return *this;
  std::vector<double> expenses = other.expenses_;
  std::vector<double> revenues = other.revenues_;
  moneyMode_ = 0;  // Deliberate: a copy may choose again.
  cumulative_ = other.cumulative_;
  percentile_ = other.percentile_;
  targetCategory_ = other.targetCategory_;
  percentileIncrement_ = other.percentileIncrement_;
  sortOrder_ = other.sortOrder_;
  dataSample_ = other.dataSample_;
  sortKey_ = other.sortKey_;
  expenses_ = std::move(expenses);
  revenues_ = std::move(revenues);
  return *this;
}

GainsSettingsImp::~GainsSettingsImp() = default;

void GainsSettingsImp::SetTargetCategory(int category) { targetCategory_ = category; }

void GainsSettingsImp::SetPercentileIncrement(PercentileIncrement increment) {
  percentileIncrement_ = increment;
}

void GainsSettingsImp::SetSortOrder(SortOrder order) { sortOrder_ = order; }

void GainsSettingsImp::SetDataSample(DataSample sample) { dataSample_ = sample; }

void GainsSettingsImp::SetSortKey(DataSample sample) { sortKey_ = sample; }

void GainsSettingsImp::SetHasCumulativeStatistics(bool flag) {
  cumulative_ = flag;
  if (flag) percentile_ = false;
}

void GainsSettingsImp::SetHasPercentileStatistics(bool flag) {
  percentile_ = flag;
  if (flag) cumulative_ = false;
}

int GainsSettingsImp::GetNumCategories() const {
  return static_cast<int>(std::max(revenues_.size(), expenses_.size()));
}

double GainsSettingsImp::GetCategoryRevenue(int category) const {
  return ValueAt(revenues_, category);
}

double GainsSettingsImp::GetCategoryExpense(int category) const {
  return ValueAt(expenses_, category);
}

double GainsSettingsImp::GetCategoryProfit(int category) const {
  return GetCategoryRevenue(category) - GetCategoryExpense(category);
}

void GainsSettingsImp::SetCategoryRevenue(int category, double revenue) {
  if ((moneyMode_ & kTakesProfits) != 0) return;
  DoCategoryRevenue(category, revenue);
  moneyMode_ |= kTakesRevenuesAndExpenses;
}

void GainsSettingsImp::SetCategoryExpense(int category, double expense) {
  if ((moneyMode_ & kTakesProfits) != 0) return;
  DoCategoryExpense(category, expense);
  moneyMode_ |= kTakesRevenuesAndExpenses;
}

void GainsSettingsImp::SetCategoryProfit(int category, double profit) {
  if ((moneyMode_ & kTakesRevenuesAndExpenses) != 0) return;
  DoCategoryExpense(category, 0.0);
  DoCategoryRevenue(category, profit);
  moneyMode_ |= kTakesProfits;
}

void GainsSettingsImp::DoCategoryRevenue(int category, double revenue) {
  SetValueAt(revenues_, category, revenue, "GainsSettingsImp::DoCategoryRevenue");
}

void GainsSettingsImp::DoCategoryExpense(int category, double expense) {
  SetValueAt(expenses_, category, expense, "GainsSettingsImp::DoCategoryExpense");
}

GainsSettings::GainsSettings() : imp_(std::make_unique<GainsSettingsImp>()) {}

GainsSettings::GainsSettings(GainsSettings const& other)
    : imp_(std::make_unique<GainsSettingsImp>(*other.imp_)) {}

GainsSettings& GainsSettings::operator=(GainsSettings const& other) {
  if (this != &other) imp_ = std::make_unique<GainsSettingsImp>(*other.imp_);
  return *this;
}

GainsSettings::~GainsSettings() = default;

int GainsSettings::GetTargetCategory() const { return imp_->GetTargetCategory(); }

void GainsSettings::SetTargetCategory(int category) { imp_->SetTargetCategory(category); }

PercentileIncrement GainsSettings::GetPercentileIncrement() const {
  return imp_->GetPercentileIncrement();
}

void GainsSettings::SetPercentileIncrement(PercentileIncrement increment) {
  imp_->SetPercentileIncrement(increment);
}

SortOrder GainsSettings::GetSortOrder() const { return imp_->GetSortOrder(); }

void GainsSettings::SetSortOrder(SortOrder order) { imp_->SetSortOrder(order); }

DataSample GainsSettings::GetDataSample() const { return imp_->GetDataSample(); }

void GainsSettings::SetDataSample(DataSample sample) { imp_->SetDataSample(sample); }

DataSample GainsSettings::GetSortKey() const { return imp_->GetSortKey(); }

void GainsSettings::SetSortKey(DataSample sample) { imp_->SetSortKey(sample); }

bool GainsSettings::HasCumulativeStatistics() const { return imp_->HasCumulativeStatistics(); }

void GainsSettings::SetHasCumulativeStatistics(bool flag) {
  imp_->SetHasCumulativeStatistics(flag);
}

bool GainsSettings::HasPercentileStatistics() const { return imp_->HasPercentileStatistics(); }

void GainsSettings::SetHasPercentileStatistics(bool flag) {
  imp_->SetHasPercentileStatistics(flag);
}

bool GainsSettings::HasAverageBasedStatistics() const { return imp_->HasAverageBasedStatistics(); }

int GainsSettings::GetNumCategories() const { return imp_->GetNumCategories(); }

double GainsSettings::GetCategoryRevenue(int category) const {
  return imp_->GetCategoryRevenue(category);
}

double GainsSettings::GetCategoryExpense(int category) const {
  return imp_->GetCategoryExpense(category);
}

double GainsSettings::GetCategoryProfit(int category) const {
  return imp_->GetCategoryProfit(category);
}

void GainsSettings::SetCategoryRevenue(int category, double revenue) {
  imp_->SetCategoryRevenue(category, revenue);
}

void GainsSettings::SetCategoryExpense(int category, double expense) {
  imp_->SetCategoryExpense(category, expense);
}

void GainsSettings::SetCategoryProfit(int category, double profit) {
  imp_->SetCategoryProfit(category, profit);
}

void GainsSettings::DoCategoryRevenue(int category, double revenue) {
  imp_->DoCategoryRevenue(category, revenue);
}

void GainsSettings::DoCategoryExpense(int category, double expense) {
  imp_->DoCategoryExpense(category, expense);
}

}  // namespace tree
