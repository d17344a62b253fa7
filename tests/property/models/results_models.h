#ifndef TREE_TESTS_PROPERTY_MODELS_RESULTS_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_RESULTS_MODELS_H_

// Slow, obvious counterparts of what comes of growing a tree.

#include <cstddef>
#include <string>
#include <vector>

#include "property/models/choices.h"
#include "property/models/tree_model.h"
#include "tree/results.h"

namespace tree::testing {

struct GainsSettingsModel {
  enum class Money { kUndecided, kProfits, kRevenuesAndExpenses };

  /// A copy may choose again what money it takes.
  GainsSettingsModel Copy() const;
  /// Whether money of this kind is taken; it is the only one from now on.
  bool Takes(Money kind);

  Money money = Money::kUndecided;
  bool cumulative = false;
  bool percentile = false;
  int targetCategory = -1;
  int percentileIncrement = 10;
  int sortOrder = 1;
  int dataSample = TrainingSample;
  int sortKey = TrainingSample;
  std::vector<double> expenses;
  std::vector<double> revenues;
};

struct TreeStatisticsModel {
  /// How numbers are written: significant digits, or digits after the point.
  struct Format {
    bool isFixed;
    int precision;
  };

  void InitMatrix(int count);
  double Count(std::size_t predicted, std::size_t observed) const;
  /// Counts the cases below and in `node` in the slot.
  void Add(NodeModel const& node, std::size_t slot);
  /// Null for no tree.
  void Initialize(NodeModel const* root, bool isClassification, int validation);
  /// Whether there is a count, missing ones included, for each pair of classes.
  bool CanBeWritten() const;
  std::string Text(Format format) const;

  std::vector<std::vector<double>> matrix;
  double risk = 0.0;
  double stdError = 0.0;
  int numClasses = 0;
  bool isCls = false;
};

/// Applies one chosen operation to both.
void Change(GainsSettingsImp& settings, GainsSettingsModel& model, Choices& choices);
void Change(GainsSettings& settings, GainsSettingsModel& model, Choices& choices);
void Change(TreeStatisticsImp& statistics, TreeStatisticsModel& model, Choices& choices);

/// Throws unless everything that can be read is as in `model`.
void Check(GainsSettingsImp const& settings, GainsSettingsModel const& model);
void Check(GainsSettings const& settings, GainsSettingsModel const& model);
void Check(TreeStatisticsImp const& statistics, TreeStatisticsModel const& model);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_RESULTS_MODELS_H_
