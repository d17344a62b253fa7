#ifndef TREE_GROW_SRC_GROWING_TRAINING_DATA_H_
#define TREE_GROW_SRC_GROWING_TRAINING_DATA_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "growing/case_rows.h"
#include "growing/fixed_point.h"
#include "growing/sorted_cases.h"
#include "growing/tool_box.h"
#include "growing/value_codes.h"
#include "growing/workers.h"
#include "tree/grow/data_set.h"
#include "tree/settings.h"

namespace tree::grow {

/// How an algorithm wants ordered predictors that are not coded.
enum class OrderedForm {
  kSorted,  ///< in lists
  kInRows,  ///< case by case, with the other ones
};

/// A predictor, made ready for growing. It is **coded**, a small number for the value of every
/// case, or else **sorted**, a list of the cases with a value in its order, or **in rows**, its
/// value in every case beside those of other predictors. Coded are the nominal predictors, and
/// ordered ones with few values or divided into intervals: their splits are found from tables of
/// the codes, without looking at each case more than once.
struct GrowingPredictor {
  static constexpr std::uint16_t kMissingCode = ValueCodes::kMissing;
  static constexpr std::size_t kMaxValues = kMissingCode;  ///< of a coded one

  Column const* column = nullptr;
  bool used = true;    ///< whether it may split; if not, it has none of the forms
  std::string whyNot;  ///< if not, why; the rest of a sentence

  bool isInRows = false;             ///< whether `GetCaseRows` has it
  bool isSorted = false;             ///< whether it has, or had until it was released, a list
  std::vector<SortedCase> sorted;    ///< of a sorted predictor; empty once released
  bool hasTies = false;              ///< of a sorted one: whether cases share a value
  std::vector<std::uint16_t> codes;  ///< of a coded one: by case; positions in `values`
  /// Of a coded one: its different values, or the greatest value of each interval, ascending.
  std::vector<double> values;
  bool hasIntervals = false;  ///< of a coded one: whether a code may stand for several values
  bool hasMissing = false;    ///< of a coded or sorted one: whether some case has no value

  bool IsNominal() const { return column->IsNominal(); }
  bool IsCoded() const { return !codes.empty(); }
};

/// The cases of one sample in the form in which trees are grown: dense indexes from 0, weights and
/// numbers in fixed point. Made once for all trees that are grown on it.
class TrainingData {
 public:
  /// Reads the cases at `rows` with their weights and frequencies, as `CaseSelection` gives them.
  /// Ordered predictors with at most `maxCodedValues` different values are coded. With
  /// `numIntervals` above 0 all of them are, as algorithms need them that only know categories:
  /// ordinal ones by their values, continuous ones by so many intervals at quantiles.
  /// `orderedForm`: of ordered predictors that are not coded. `poll`: called on the way. `data`:
  /// **borrowed** for this object's life.
  TrainingData(DataSet const& data, CaseRoles const& roles, AlgSettings const& settings,
               std::vector<std::size_t> rows, std::vector<double> const& weights,
               std::vector<double> const& frequencies, int maxCodedValues = 256,
               int numIntervals = 0, OrderedForm orderedForm = OrderedForm::kSorted,
               PollFunction const& poll = NoPoll);

  /// Sorts and codes the predictors, or reads them row by row. Later calls do nothing, unless
  /// sorted lists were released: they are made again.
  void PreparePredictors(Workers& workers);
  /// Hands over the lists of the sorted predictors, by predictor, for a tree that may use them up:
  /// they take as much memory as all else together. They are gone until they are prepared again.
  std::vector<std::vector<SortedCase>> ReleaseSorted();

  std::size_t GetNumCases() const { return rows_.size(); }
  /// The row of each case in the data set.
  std::vector<std::size_t> const& GetRows() const { return rows_; }
  std::vector<int> const& GetPredictorColumns() const { return predictorColumns_; }
  DataSet const& GetData() const { return data_; }

  /// Weights of the cases, and how many cases each stands for.
  ///@{
  FixedWeights const& GetWeights() const { return weights_; }
  FixedWeights const& GetFrequencies() const { return frequencies_; }
  ///@}
  /// Makes two samples agree on what there is to predict: both have the classes of either, and
  /// the range of all their numbers. Refuses, by `InputError`, numbers whose range cannot be
  /// squared.
  void ShareTarget(TrainingData& other);
  /// How many cases there are, by frequency.
  double GetSize() const { return size_; }
  /// Number of classes; 0 for a continuous target.
  std::size_t GetNumClasses() const { return numClasses_; }
  /// The class of each case; empty for a continuous target.
  std::vector<std::uint16_t> const& GetClasses() const { return classes_; }
  /// The number of each case; empty for a target with classes.
  FixedNumbers const& GetNumbers() const { return numbers_; }
  /// A power of two near the range of the numbers: measured by it, errors of predictions can be
  /// raised to the fourth power.
  double GetErrorUnit() const { return errorUnit_; }
  /// The predictors in order of the settings. Requires `PreparePredictors`.
  std::vector<GrowingPredictor> const& GetPredictors() const { return predictors_; }
  /// The values of the predictors that are held in rows. Requires `PreparePredictors`.
  CaseRows const& GetCaseRows() const { return caseRows_; }
  /// The value of a predictor in a case.
  double ValueOf(std::size_t predictor, std::uint32_t index) const {
    return predictors_[predictor].column->values[rows_[index]];
  }
  /// Whether a case has no value of a predictor.
  bool IsMissing(std::size_t predictor, std::uint32_t index) const {
    return predictors_[predictor].column->IsMissing(rows_[index]);
  }
  /// Writes the values of all predictors in a case, as routing reads them, to `values`.
  void CopyValues(std::uint32_t index, double* values) const {
    for (std::size_t position = 0; position < predictors_.size(); ++position) {
      values[position] = ValueOf(position, index);
    }
  }
  /// The predictors of `GetPredictors` that are not used, each with the reason, as sentences.
  std::vector<std::string> const& GetRemarks() const { return remarks_; }

 private:
  void ReadTarget(PollFunction const& poll);
  void SetRange(double least, double greatest);
  void Prepare(GrowingPredictor& predictor, ToolBox<CaseSorter>& sorters, Workers& workers) const;
  void ReadRows(Workers& workers);
  std::size_t MaxNumCodes(GrowingPredictor const& predictor) const;
  void PrepareManyValues(GrowingPredictor& predictor, ToolBox<CaseSorter>& sorters,
                         Workers& workers) const;
  void CheckCategories(GrowingPredictor& predictor) const;

  DataSet const& data_;
  Column const& target_;
  std::vector<int> predictorColumns_;
  std::size_t maxNominalCategories_;
  std::size_t maxCodedValues_;
  std::size_t numIntervals_;
  OrderedForm orderedForm_;
  std::vector<std::size_t> rows_;
  bool takesEachRow_ = true;  // whether the index of a case is its row
  FixedWeights weights_;
  FixedWeights frequencies_;
  double size_ = 0.0;
  std::size_t numClasses_ = 0;
  std::vector<std::uint16_t> classes_;
  FixedNumbers numbers_;
  double least_ = 0.0;  // of the numbers, in this sample and those it shares the target with
  double greatest_ = 0.0;
  double errorUnit_ = 1.0;
  std::vector<GrowingPredictor> predictors_;
  CaseRows caseRows_;
  std::vector<std::string> remarks_;
  bool prepared_ = false;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_TRAINING_DATA_H_
