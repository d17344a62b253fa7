#ifndef TREE_GROW_TESTS_TESTING_SAMPLE_H_
#define TREE_GROW_TESTS_TESTING_SAMPLE_H_

#include <cstddef>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "growing/case_lists.h"
#include "growing/node_sums.h"
#include "growing/training_data.h"
#include "growing/workers.h"
#include "tree/grow/data_set.h"
#include "tree/results.h"
#include "tree/settings.h"

namespace tree::grow {

/// Marks a missing value in the samples of tests.
inline constexpr double kMissing = -99.0;

/// Cases made up for a test. Columns have one value per case.
struct Sample {
  /// A predictor.
  struct Predictor {
    std::vector<double> values;
    bool nominal = false;
  };

  std::vector<double> target;  ///< class codes, or numbers
  bool hasClasses = true;
  std::vector<Predictor> predictors = {};
  std::vector<double> weights = {};      ///< empty where each case weighs 1
  std::vector<double> frequencies = {};  ///< empty where each case counts once

  std::size_t GetNumCases() const { return target.size(); }
};

/// Whether ordered predictors are sorted, or held in rows, even if they have few values, or coded
/// even if they have many.
enum class Form { kAsItComes, kSorted, kInRows, kCoded };

/// Ends every operation the first time that it is asked.
class Impatient : public ProgressListener {
 public:
  bool Report(double, char const*) noexcept override { return false; }
};

/// So many cases that they are gone through in two slices.
inline Sample TwoSlices(bool nominal) {
  constexpr std::size_t kNumCases = (std::size_t{1} << 20) + 2;
  Sample sample{.target = std::vector<double>(kNumCases), .predictors = {{{}, nominal}}};
  for (std::size_t index = 0; index < kNumCases; ++index) {
    sample.predictors[0].values.push_back(static_cast<double>(nominal ? index % 2 : index));
  }
  return sample;
}

/// A sample as the parts of a grower read it: `TrainingData` with all that it needs.
class PreparedSample {
 public:
  explicit PreparedSample(Sample const& sample, Form form = Form::kAsItComes, int numThreads = 1)
      : workers_(numThreads) {
    workers_.Begin();
    data_ = std::make_unique<DataSet>(sample.GetNumCases());
    auto const describe = [](std::string const& name, global::MeasurementLevel level) {
      ColumnDescription description;
      description.name = name;
      description.level = level;
      description.missingValue = kMissing;
      return description;
    };
    roles_.target =
        data_->AddColumn(describe("target", sample.hasClasses ? global::MeasurementNominal
                                                              : global::MeasurementContinuous),
                         sample.target);
    for (Sample::Predictor const& predictor : sample.predictors) {
      roles_.predictors.push_back(data_->AddColumn(
          describe("x" + std::to_string(roles_.predictors.size()),
                   predictor.nominal ? global::MeasurementNominal : global::MeasurementContinuous),
          predictor.values));
    }
    CoreSettingsImp const core = MakeCoreSettings(*data_, roles_);
    if (sample.hasClasses) {
      settings_ = std::make_unique<CCartSettingsImp>(core);
    } else {
      settings_ = std::make_unique<RCartSettingsImp>(core);
    }
    std::vector<std::size_t> rows(sample.GetNumCases());
    std::iota(rows.begin(), rows.end(), std::size_t{0});
    training_ = std::make_unique<TrainingData>(
        *data_, roles_, *settings_, rows, sample.weights, sample.frequencies,
        form == Form::kAsItComes ? 256
        : form == Form::kCoded   ? 65535
                                 : 0,
        0, form == Form::kInRows ? OrderedForm::kInRows : OrderedForm::kSorted);
    training_->PreparePredictors(workers_);
  }

  TrainingData const& GetData() const { return *training_; }
  TrainingData& GetData() { return *training_; }
  CartSettings& GetSettings() { return *settings_; }
  Workers& GetWorkers() { return workers_; }
  CaseLists MakeLists() { return CaseLists(*training_, {}, workers_); }
  /// What the cases of the sample add up to, by class.
  std::vector<double> ClassWeights(CaseLists const& lists) const {
    return ClassWeightsOf(*training_, SumCases(*training_, lists.Cases(lists.GetRoot())));
  }

 private:
  Workers workers_;
  std::unique_ptr<DataSet> data_;
  CaseRoles roles_;
  std::unique_ptr<CartSettings> settings_;
  std::unique_ptr<TrainingData> training_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_TESTS_TESTING_SAMPLE_H_
