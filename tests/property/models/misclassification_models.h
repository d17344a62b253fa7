#ifndef TREE_TESTS_PROPERTY_MODELS_MISCLASSIFICATION_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_MISCLASSIFICATION_MODELS_H_

// Slow, obvious counterparts of the misclassification model, made of vectors.

#include <array>
#include <optional>
#include <vector>

#include "property/models/choices.h"
#include "tree/misclassification.h"

namespace tree::testing {

struct CostModel {
  using Matrix = std::vector<std::vector<double>>;

  static Matrix DefaultMatrix(int count);

  int Size() const { return static_cast<int>(main.size()); }
  /// -1 outside the matrix.
  double Get(int row, int column) const;
  /// Whether the cell was set; the type stays.
  bool SetCell(int row, int column, double cost);
  void Resize(int count);
  void SetDefault(CostImp::CostMatrix matrix, int count);
  bool IsDefault() const;
  Matrix const& Select(int matrix) const;

  Matrix main;
  Matrix secondary;
  int type = CostTypeDefault;
};

/// The four vectors by their numbers; the specified one is always there.
struct PriorsModel {
  using Values = std::vector<double>;

  static constexpr int kNumVectors = 4;

  Values& Specified() { return *vectors[0]; }
  Values const& Specified() const { return *vectors[0]; }
  /// The number of the vector that stands in for `vector`, itself perhaps.
  int Resolve(int vector) const;
  double Get(int index, int vector) const;
  bool SetType(int newType);
  /// Whether the value was set; the type stays.
  bool SetValue(int index, double value, int vector);
  /// What giving `values`, or nothing, to a vector does.
  void Give(int vector, std::optional<Values> const& values);
  bool Alter(int destination, int source, CostModel const& costs);
  bool ComputeAltered(CostModel const& costs);

  std::array<std::optional<Values>, kNumVectors> vectors{Values()};
  bool isAltered = false;
  int type = PriorTypeDefault;
};

struct ScoresModel {
  std::vector<double> scores;
  int type = ScoreTypeDefault;
};

/// Applies one chosen operation to both.
void Change(CostImp& costs, CostModel& model, Choices& choices);
void Change(PriorsImp& priors, PriorsModel& model, Choices& choices);
void Change(ScoresImp& scores, ScoresModel& model, Choices& choices);

/// Throws unless everything that can be read is as in `model`.
void Check(CostImp const& costs, CostModel const& model);
void Check(PriorsImp const& priors, PriorsModel const& model);
void Check(ScoresImp const& scores, ScoresModel const& model);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_MISCLASSIFICATION_MODELS_H_
