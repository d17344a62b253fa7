#include <algorithm>

#include "property/models/agree.h"
#include "property/models/pair_sequence.h"
#include "property/models/results_models.h"
#include "property/models/sequences.h"

namespace tree::testing {

namespace {

using Money = GainsSettingsModel::Money;

constexpr int kMaxCategories = 10;

void Store(std::vector<double>& values, int category, double value) {
  auto const position = static_cast<std::size_t>(category);
  if (position >= values.size()) values.resize(position + 1);
  values[position] = value;
}

double Read(std::vector<double> const& values, int category) {
  bool const isHeld = category >= 0 && category < static_cast<int>(values.size());
  return isHeld ? values[static_cast<std::size_t>(category)] : 0.0;
}

template <class Settings>
void ChangeMoney(Settings& settings, GainsSettingsModel& model, Choices& choices) {
  int const operation = choices.Below(5);
  int const category = choices.Below(kMaxCategories);
  double const value = choices.Value();
  switch (operation) {
    case 0:
      settings.SetCategoryRevenue(category, value);
      if (model.Takes(Money::kRevenuesAndExpenses)) Store(model.revenues, category, value);
      break;
    case 1:
      settings.SetCategoryExpense(category, value);
      if (model.Takes(Money::kRevenuesAndExpenses)) Store(model.expenses, category, value);
      break;
    case 2:
      settings.SetCategoryProfit(category, value);
      if (!model.Takes(Money::kProfits)) break;
      Store(model.expenses, category, 0.0);
      Store(model.revenues, category, value);
      break;
    case 3:
      settings.DoCategoryRevenue(category, value);
      Store(model.revenues, category, value);
      break;
    default:
      settings.DoCategoryExpense(category, value);
      Store(model.expenses, category, value);
      break;
  }
}

template <class Settings>
void ChangeEither(Settings& settings, GainsSettingsModel& model, Choices& choices) {
  int const operation = choices.Below(14);
  bool const flag = choices.Flag();
  int const number = choices.Integer();
  switch (operation) {
    case 0:
      settings.SetTargetCategory(number);
      model.targetCategory = number;
      break;
    case 1:
      settings.SetPercentileIncrement(static_cast<PercentileIncrement>(number));
      model.percentileIncrement = number;
      break;
    case 2:
      settings.SetSortOrder(static_cast<SortOrder>(number));
      model.sortOrder = number;
      break;
    case 3:
      settings.SetDataSample(static_cast<DataSample>(number));
      model.dataSample = number;
      break;
    case 4:
      settings.SetSortKey(static_cast<DataSample>(number));
      model.sortKey = number;
      break;
    case 5:
      settings.SetHasCumulativeStatistics(flag);
      model.cumulative = flag;
      if (flag) model.percentile = false;
      break;
    case 6:
      settings.SetHasPercentileStatistics(flag);
      model.percentile = flag;
      if (flag) model.cumulative = false;
      break;
    default:
      ChangeMoney(settings, model, choices);
      break;
  }
}

template <class Settings>
void CheckEither(Settings const& settings, GainsSettingsModel const& model) {
  Agree("GetTargetCategory", settings.GetTargetCategory(), model.targetCategory);
  Agree("GetPercentileIncrement", static_cast<int>(settings.GetPercentileIncrement()),
        model.percentileIncrement);
  Agree("GetSortOrder", static_cast<int>(settings.GetSortOrder()), model.sortOrder);
  Agree("GetDataSample", static_cast<int>(settings.GetDataSample()), model.dataSample);
  Agree("GetSortKey", static_cast<int>(settings.GetSortKey()), model.sortKey);
  Agree("HasCumulativeStatistics", settings.HasCumulativeStatistics(), model.cumulative);
  Agree("HasPercentileStatistics", settings.HasPercentileStatistics(), model.percentile);
  Agree("HasAverageBasedStatistics", settings.HasAverageBasedStatistics(),
        model.targetCategory < 0);
  auto const count = static_cast<int>(std::max(model.revenues.size(), model.expenses.size()));
  Agree("GetNumCategories", settings.GetNumCategories(), count);
  for (int category = -1; category <= count; ++category) {
    double const revenue = Read(model.revenues, category);
    double const expense = Read(model.expenses, category);
    Agree("GetCategoryRevenue", settings.GetCategoryRevenue(category), revenue);
    Agree("GetCategoryExpense", settings.GetCategoryExpense(category), expense);
    Agree("GetCategoryProfit", settings.GetCategoryProfit(category), revenue - expense);
  }
}

}  // namespace

GainsSettingsModel GainsSettingsModel::Copy() const {
  GainsSettingsModel copy = *this;
  copy.money = Money::kUndecided;
  return copy;
}

bool GainsSettingsModel::Takes(Money kind) {
  if (money == Money::kUndecided) money = kind;
  return money == kind;
}

void Change(GainsSettingsImp& settings, GainsSettingsModel& model, Choices& choices) {
  ChangeEither(settings, model, choices);
}

void Change(GainsSettings& settings, GainsSettingsModel& model, Choices& choices) {
  ChangeEither(settings, model, choices);
}

void Check(GainsSettingsImp const& settings, GainsSettingsModel const& model) {
  CheckEither(settings, model);
}

void Check(GainsSettings const& settings, GainsSettingsModel const& model) {
  CheckEither(settings, model);
}

void RunGainsSettings(Choices choices) { RunPair<GainsSettingsImp, GainsSettingsModel>(choices); }

void RunGainsSettingsHandles(Choices choices) {
  RunPair<GainsSettings, GainsSettingsModel>(choices);
}

}  // namespace tree::testing
