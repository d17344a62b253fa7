#ifndef TREE_TESTS_PROPERTY_MODELS_STATISTICS_MODELS_H_
#define TREE_TESTS_PROPERTY_MODELS_STATISTICS_MODELS_H_

// Slow, obvious counterparts of what a node holds besides its rules.

#include <map>
#include <vector>

#include "property/models/choices.h"
#include "tree/nodes.h"
#include "tree/support.h"

namespace tree::testing {

struct ClassModel {
  double Count() const;
  bool operator==(ClassModel const& other) const = default;

  double unweighted = 0.0;
  double percent = systemMissingValue();
  std::vector<double> counts;
  std::vector<double> probabilities;
  int prediction = 0;
};

/// The optional statistics are kept by flag.
struct RegressionModel {
  double Extended(unsigned int flag, double absent) const;
  double StdDev() const { return Extended(1, 0.0); }
  double Prediction() const { return Extended(2, mean); }
  double UnweightedCount() const { return Extended(4, count); }
  /// What a copy holds: a standard deviation in any case.
  RegressionModel Copy() const;
  bool Equals(RegressionModel const& other) const;

  double count = 0.0;
  double mean = 0.0;
  double maximum = -GetInfinity();
  double minimum = GetInfinity();
  std::vector<double> bins;
  std::map<unsigned int, double> extended;
};

struct PredictorModel {
  bool operator==(PredictorModel const& other) const = default;

  double minimum = 0.0;
  double maximum = 0.0;
  std::vector<double> values;
  bool hasMissing = false;
};

/// Applies one chosen operation to both.
void Change(ClsInfoImp& info, ClassModel& model, Choices& choices);
void Change(RegInfoImp& info, RegressionModel& model, Choices& choices);
void Change(PredictorImp& summary, PredictorModel& model, Choices& choices);

/// Throws unless everything that can be read is as in `model`.
void Check(ClsInfoImp const& info, ClassModel const& model);
void Check(RegInfoImp const& info, RegressionModel const& model);
void Check(PredictorImp const& summary, PredictorModel const& model);

}  // namespace tree::testing

#endif  // TREE_TESTS_PROPERTY_MODELS_STATISTICS_MODELS_H_
