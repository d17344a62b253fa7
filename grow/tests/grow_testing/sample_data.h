#ifndef TREE_GROW_TESTS_TESTING_SAMPLE_DATA_H_
#define TREE_GROW_TESTS_TESTING_SAMPLE_DATA_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "grow_testing/random_numbers.h"
#include "tree/grow/grower.h"

namespace tree::grow {

/// Data with its roles, made column by column: first the target, then predictors and weights.
class SampleData {
 public:
  explicit SampleData(std::size_t numCases) : data_(numCases) {}

  /// Marks missing cases in the columns that are added from now on.
  SampleData& MissingIs(double value) {
    missingValue_ = value;
    return *this;
  }
  SampleData& Classes(std::vector<double> values) {
    roles_.target = Add("class", global::MeasurementNominal, std::move(values));
    return *this;
  }
  SampleData& Numbers(std::vector<double> values) {
    roles_.target = Add("number", global::MeasurementContinuous, std::move(values));
    return *this;
  }
  SampleData& OrdinalClasses(std::vector<double> values) {
    roles_.target = Add("class", global::MeasurementOrdinal, std::move(values));
    return *this;
  }
  SampleData& Ordinal(std::vector<double> values) {
    return Predictor(global::MeasurementOrdinal, std::move(values));
  }
  SampleData& Ordered(std::vector<double> values) {
    return Predictor(global::MeasurementContinuous, std::move(values));
  }
  SampleData& Nominal(std::vector<double> values) {
    return Predictor(global::MeasurementNominal, std::move(values));
  }
  SampleData& Frequencies(std::vector<double> values) {
    roles_.frequencyWeight = Add("frequency", global::MeasurementContinuous, std::move(values));
    return *this;
  }
  SampleData& Weights(std::vector<double> values) {
    roles_.caseWeight = Add("weight", global::MeasurementContinuous, std::move(values));
    return *this;
  }
  SampleData& Samples(std::vector<double> values) {
    roles_.sample = Add("sample", global::MeasurementContinuous, std::move(values));
    return *this;
  }

  DataSet const& GetData() const { return data_; }
  CaseRoles const& GetRoles() const { return roles_; }
  std::size_t GetNumPredictors() const { return roles_.predictors.size(); }
  CoreSettingsImp Core() const { return MakeCoreSettings(data_, roles_); }
  /// Settings that stop at nothing but the purity of nodes; priors are the shares.
  CCartSettingsImp ClassSettings() const {
    CCartSettingsImp settings(Core());
    settings.GetPriors()->Set(PriorTypeAlternate);
    Loosen(settings);
    return settings;
  }
  RCartSettingsImp NumberSettings() const {
    RCartSettingsImp settings(Core());
    Loosen(settings);
    return settings;
  }
  /// Settings of CHAID or QUEST that stop only where the algorithm finds nothing more.
  template <class Settings>
  Settings LooseSettings() const {
    Settings settings(Core());
    Loosen(settings);
    return settings;
  }
  std::unique_ptr<Grower> Make(AlgSettings const& settings, GrowOptions options = {1}) const {
    return MakeGrower(data_, roles_, settings, options);
  }
  /// The values of the predictors in a case.
  std::vector<double> Case(std::size_t row) const {
    std::vector<double> values(roles_.predictors.size());
    CopyCase(data_, roles_.predictors, row, values.data());
    return values;
  }

 private:
  static void Loosen(AlgSettings& settings) {
    settings.GetStopRule()->SetMinImprovement(0.0);
    settings.GetStopRule()->SetMinNodeSize(2);
    settings.GetStopRule()->SetMinChildSize(1);
    settings.GetStopRule()->SetMaxTreeDepth(50);
  }
  SampleData& Predictor(global::MeasurementLevel level, std::vector<double> values) {
    std::string const name = "x" + std::to_string(roles_.predictors.size());
    roles_.predictors.push_back(Add(name, level, std::move(values)));
    return *this;
  }
  int Add(std::string name, global::MeasurementLevel level, std::vector<double> values) {
    ColumnDescription description;
    description.name = std::move(name);
    description.level = level;
    description.missingValue = missingValue_;
    return data_.AddColumn(std::move(description), std::move(values));
  }

  DataSet data_;
  CaseRoles roles_;
  double missingValue_ = systemMissingValue();
};

/// What describes a whole tree: one line per node with its id, size, prediction and rules. Equal
/// for trees that are equal to the last bit.
std::string Describe(Node const& root);

}  // namespace tree::grow

#endif  // TREE_GROW_TESTS_TESTING_SAMPLE_DATA_H_
