#include <algorithm>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "property/models/agree.h"
#include "property/models/sequences.h"
#include "tree/containers.h"
#include "tree/values.h"

namespace tree::testing {

namespace {

constexpr int kMaxCount = 40;

/// An array as a vector of everything allocated and a size.
template <class T>
struct ArrayModel {
  void Allocate(int count) {
    if (static_cast<int>(elements.size()) > count) size = count;
    elements.assign(static_cast<std::size_t>(count), T());
  }
  void Grow(int count) {
    int const kept = std::min(count, static_cast<int>(elements.size()));
    if (static_cast<int>(elements.size()) > count) size = count;
    elements.resize(static_cast<std::size_t>(kept));
    elements.resize(static_cast<std::size_t>(count), T());
  }
  void Set(int index, T value) {
    elements.at(static_cast<std::size_t>(index)) = value;
    size = std::max(size, index + 1);
  }
  void AssignFrom(ArrayModel const& other, int newCapacity) {
    ArrayModel const source = other;
    elements.assign(static_cast<std::size_t>(newCapacity), T());
    size = newCapacity == 0 ? 0 : source.size;
    std::copy_n(source.elements.begin(), size, elements.begin());
  }
  int Capacity() const { return static_cast<int>(elements.size()); }

  std::vector<T> elements;
  int size = 0;
};

template <class T>
T ChooseElement(Choices& choices);

template <>
double ChooseElement<double>(Choices& choices) {
  return choices.Value();
}

template <>
int ChooseElement<int>(Choices& choices) {
  return choices.Below(100) - 50;
}

template <class T>
void Check(TArray<T> const& array, ArrayModel<T> const& model) {
  Agree("GetSize", array.GetSize(), model.size);
  for (int index = 0; index < model.Capacity(); ++index) {
    Agree("operator[]", array[index], model.elements[static_cast<std::size_t>(index)]);
    Agree("GetData", &array[index] == array.GetData() + index, true);
  }
}

template <class T>
void ReplaceStorage(TArray<T>& array, ArrayModel<T>& model, int count, bool keep) {
  // What was held so far belongs to whoever kept a pointer to it.
  T const* const given = array.GetData();
  bool const done = array.Init(count, keep);
  if (done) delete[] given;
  Agree("Init", done, count >= 0);
  if (done) model.Allocate(count);
}

template <class T>
void RunArrays(Choices& choices) {
  // The two arrays copy in different ways.
  std::vector<std::unique_ptr<TArray<T>>> arrays;
  arrays.push_back(std::make_unique<TArray<T>>(true));
  arrays.push_back(std::make_unique<TArray<T>>(false));
  std::vector<ArrayModel<T>> models(2);

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    TArray<T>& array = *arrays[which];
    ArrayModel<T>& model = models[which];
    int const operation = choices.Below(11);
    int const number = choices.Below(kMaxCount);
    bool const isAllocated = number < model.Capacity();
    T const value = ChooseElement<T>(choices);
    switch (operation) {
      case 0:
        array.Clear();
        model = ArrayModel<T>();
        break;
      case 1:
        ReplaceStorage(array, model, number - 2, choices.Flag());
        break;
      case 2: {
        bool const doesNothing = number < 1;
        if (doesNothing) {
          Agree("Init", array.Init(-number), true);
        } else {
          array.Clear();
          model = ArrayModel<T>();
          Agree("Init", array.Init(number), true);
          model.Allocate(number);
        }
        break;
      }
      case 3:
        Agree("Grow", array.Grow(number), true);
        model.Grow(number);
        break;
      case 4: {
        bool const changes = number != model.size;
        Agree("Resize", array.Resize(number), changes);
        if (!changes) break;
        for (int index = number; index < model.size; ++index) model.Set(index, T());
        if (number > model.Capacity()) model.Grow(number);
        model.size = number;
        break;
      }
      case 5:
        if (!isAllocated) break;
        array[number] = value;
        model.Set(number, value);
        break;
      case 6:
        if (!isAllocated) break;
        array.SetAt(number, value);
        model.Set(number, value);
        break;
      case 7:
        array.SetAtGrow(number, value);
        if (!isAllocated) model.Grow(number + 1);
        model.Set(number, value);
        break;
      case 8: {
        array.AddAtGrow(number, value);
        if (!isAllocated) model.Grow(number + 1);
        model.Set(number, model.elements[static_cast<std::size_t>(number)] + value);
        break;
      }
      case 9: {
        auto const from = static_cast<std::size_t>(choices.Below(2));
        array = *arrays[from];
        if (from != which) model.AssignFrom(models[from], models[from].Capacity());
        break;
      }
      default: {
        std::size_t const from = 1 - which;
        arrays[which] = std::make_unique<TArray<T>>(*arrays[from]);
        model.AssignFrom(models[from], models[from].size);
        break;
      }
    }
    Check(*arrays[0], models[0]);
    Check(*arrays[1], models[1]);
  }
}

/// A matrix as a map of the cells that are not zero.
struct MatrixModel {
  void Grow(int newRows, int newColumns) {
    rows = std::max(rows, newRows);
    columns = std::max(columns, newColumns);
  }
  void Set(int row, int column, double value) {
    cells[{row, column}] = value;
    usedRows = std::max(usedRows, row + 1);
    usedColumns = std::max(usedColumns, column + 1);
  }
  MatrixModel Copy() const { return usedRows > 0 && usedColumns > 0 ? *this : MatrixModel(); }

  std::map<std::pair<int, int>, double> cells;
  int rows = 0;
  int columns = 0;
  int usedRows = 0;
  int usedColumns = 0;
};

void Check(TMatrix<double> const& matrix, MatrixModel const& model) {
  Agree("GetNumRows", matrix.GetNumRows(), model.usedRows);
  for (int row = 0; row < model.rows; ++row) {
    for (int column = 0; column < model.columns; ++column) {
      auto const found = model.cells.find({row, column});
      Agree("GetAt", matrix.GetAt(row, column), found == model.cells.end() ? 0.0 : found->second);
    }
  }
}

}  // namespace

void RunArraysOfDoubles(Choices choices) { RunArrays<double>(choices); }

void RunArraysOfInts(Choices choices) { RunArrays<int>(choices); }

void RunMatrices(Choices choices) {
  constexpr int kMaxSide = 10;
  std::vector<std::unique_ptr<TMatrix<double>>> matrices;
  matrices.push_back(std::make_unique<TMatrix<double>>(true));
  matrices.push_back(std::make_unique<TMatrix<double>>(false));
  std::vector<MatrixModel> models(2);

  while (choices.Any()) {
    auto const which = static_cast<std::size_t>(choices.Below(2));
    TMatrix<double>& matrix = *matrices[which];
    MatrixModel& model = models[which];
    int const operation = choices.Below(7);
    int const row = choices.Below(kMaxSide);
    int const column = choices.Below(kMaxSide);
    double const value = choices.Value();
    switch (operation) {
      case 0:
        matrix.Clear();
        model = MatrixModel();
        break;
      case 1:
        Agree("Init", matrix.Init(row, column), true);
        Agree("Init", matrix.Init(-1 - row, column), false);
        model.cells.clear();
        model.rows = row;
        model.columns = column;
        break;
      case 2:
        Agree("Grow", matrix.Grow(row, column), true);
        model.Grow(row, column);
        break;
      case 3:
        if (row >= model.rows || column >= model.columns) break;
        matrix.SetAt(row, column, value);
        model.Set(row, column, value);
        break;
      case 4:
        matrix.SetAtGrow(row, column, value);
        model.Grow(row + 1, column + 1);
        model.Set(row, column, value);
        break;
      case 5: {
        auto const from = static_cast<std::size_t>(choices.Below(2));
        matrix = *matrices[from];
        if (from != which) model = models[from].Copy();
        break;
      }
      default:
        matrices[which] = std::make_unique<TMatrix<double>>(*matrices[1 - which]);
        model = models[1 - which].Copy();
        break;
    }
    Check(*matrices[0], models[0]);
    Check(*matrices[1], models[1]);
  }
}

void RunPointerLists(Choices choices) {
  std::vector<VariableSettingsImp> variables(8);
  MCTree::ArrayRW<VariableSettings*> list;
  std::vector<VariableSettings*> model;

  while (choices.Any()) {
    int const operation = choices.Below(16);
    VariableSettings* variable = &variables[static_cast<std::size_t>(choices.Below(8))];
    int const index = choices.Below(static_cast<int>(model.size()));
    if (operation == 0) {
      list.Clear();
      model.clear();
    } else if (operation < 10 || model.empty()) {
      list.Add(variable);
      model.push_back(variable);
    } else if (operation < 13) {
      list.SetAt(index, variable);
      model[static_cast<std::size_t>(index)] = variable;
    } else {
      list[index] = variable;
      model[static_cast<std::size_t>(index)] = variable;
    }
    MCTree::AArrayRO<VariableSettings*> const& reader = list;
    MCTree::ArrayRW<VariableSettings*> const copy = list;
    Agree("GetNumElements", reader.GetNumElements(), static_cast<int>(model.size()));
    for (int position = 0; position < reader.GetNumElements(); ++position) {
      VariableSettings* const expected = model[static_cast<std::size_t>(position)];
      Agree("operator[]", reader[position], expected);
      Agree("GetAt", copy.GetAt(position), expected);
    }
  }
}

}  // namespace tree::testing
