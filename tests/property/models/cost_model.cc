#include <algorithm>
#include <array>
#include <cmath>

#include "property/models/agree.h"
#include "property/models/misclassification_models.h"
#include "property/models/pair_sequence.h"
#include "property/models/sequences.h"

namespace tree::testing {

namespace {

constexpr int kMaxClasses = 8;

/// An index of which some are negative.
int ChooseIndex(Choices& choices) { return choices.Below(kMaxClasses + 2) - 2; }

/// A cost of which many count as default, or would if they were a little nearer to 1.
double ChooseCost(Choices& choices) {
  static constexpr std::array kNearDefault = {1.0,         1.0 + 5e-13, 1.0 - 5e-13,
                                              1.0 + 2e-12, 1.0 - 2e-12, 0.0};
  if (choices.Flag()) return choices.Value();
  return kNearDefault[static_cast<std::size_t>(choices.Below(kNearDefault.size()))];
}

}  // namespace

CostModel::Matrix CostModel::DefaultMatrix(int count) {
  auto const size = static_cast<std::size_t>(count);
  Matrix matrix(size, std::vector<double>(size, 1.0));
  for (std::size_t index = 0; index < size; ++index) matrix[index][index] = 0.0;
  return matrix;
}

double CostModel::Get(int row, int column) const {
  if (row < 0 || row >= Size() || column < 0 || column >= Size()) return -1.0;
  return main[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

bool CostModel::SetCell(int row, int column, double cost) {
  bool const isValid = row == column ? cost == 0.0 : cost >= 0.0;
  if (row < 0 || column < 0 || !isValid) return false;
  Resize(std::max({row + 1, column + 1, Size()}));
  main[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = cost;
  return true;
}

void CostModel::Resize(int count) {
  if (count <= 0) return;
  Matrix resized = DefaultMatrix(count);
  for (std::size_t row = 0; row < std::min(resized.size(), main.size()); ++row) {
    std::copy_n(main[row].begin(), std::min(resized.size(), main.size()), resized[row].begin());
  }
  main = resized;
}

void CostModel::SetDefault(CostImp::CostMatrix matrix, int count) {
  if (count >= 0)
    (matrix == CostImp::CostMatrixSecondary ? secondary : main) = DefaultMatrix(count);
  if (matrix == CostImp::CostMatrixMain) type = CostTypeDefault;
}

bool CostModel::IsDefault() const {
  for (std::size_t row = 0; row < main.size(); ++row) {
    for (std::size_t column = 0; column < main.size(); ++column) {
      if (row != column && !(std::abs(main[row][column] - 1.0) <= 1e-12)) return false;
    }
  }
  return true;
}

CostModel::Matrix const& CostModel::Select(int matrix) const {
  return matrix == CostImp::CostMatrixSecondary && !secondary.empty() ? secondary : main;
}

void Change(CostImp& costs, CostModel& model, Choices& choices) {
  switch (choices.Below(8)) {
    case 0: {
      int const type = choices.Integer();
      bool const resets = type == CostTypeDefault && model.type != CostTypeDefault;
      Agree("Set", costs.Set(static_cast<CostType>(type)), resets);
      if (resets) model.SetDefault(CostImp::CostMatrixMain, model.Size());
      break;
    }
    case 1: {
      auto const matrix = static_cast<CostImp::CostMatrix>(choices.Below(2));
      int const count = ChooseIndex(choices);
      costs.SetDefault(matrix, count);
      model.SetDefault(matrix, count);
      break;
    }
    case 2: {
      int const count = ChooseIndex(choices);
      costs.Resize(count);
      model.Resize(count);
      break;
    }
    case 3: {
      int const row = ChooseIndex(choices);
      int const column = ChooseIndex(choices);
      double const cost = ChooseCost(choices);
      Agree("SetImp", costs.SetImp(row, column, cost), model.SetCell(row, column, cost));
      break;
    }
    default: {
      int const row = ChooseIndex(choices);
      int const column = ChooseIndex(choices);
      double const cost = ChooseCost(choices);
      bool const done = model.SetCell(row, column, cost);
      if (done) model.type = CostTypeCustom;
      bool const viaSetAt = choices.Flag();
      Agree("Set", viaSetAt ? costs.SetAt(row, column, cost) : costs.Set(row, column, cost), done);
      break;
    }
  }
}

void Check(CostImp const& costs, CostModel const& model) {
  Agree("GetNumClasses", costs.GetNumClasses(), model.Size());
  Agree("GetType", static_cast<int>(costs.GetType()), model.type);
  Agree("IsDefault", costs.IsDefault(), model.IsDefault());
  for (int row = -1; row <= model.Size(); ++row) {
    for (int column = -1; column <= model.Size(); ++column) {
      Agree("Get", costs.Get(row, column), model.Get(row, column));
      Agree("GetAt", costs.GetAt(row, column), model.Get(row, column));
    }
  }
  for (int which : {0, 1, 2, -1}) {
    auto const selected = static_cast<CostImp::CostMatrix>(which);
    CostModel::Matrix const& expected = model.Select(which);
    bool const isSecondary = &expected == &model.secondary;
    Agree("IsDefaultMatrix", costs.IsDefaultMatrix(selected), isSecondary || model.IsDefault());
    TMatrix<double> const& matrix = costs.GetMatrix(selected);
    int const count = static_cast<int>(expected.size());
    Agree("GetMatrix", matrix.GetNumRows(), count);
    for (int row = 0; row < count; ++row) {
      for (int column = 0; column < count; ++column) {
        Agree("GetMatrix", matrix.GetAt(row, column),
              expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]);
      }
    }
  }
}

void RunCosts(Choices choices) { RunPair<CostImp, CostModel>(choices); }

}  // namespace tree::testing
