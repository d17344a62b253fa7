#ifndef TREE_GROW_DATA_SET_H_
#define TREE_GROW_DATA_SET_H_

/// @file
/// The cases that a tree is grown on. A `DataSet` holds columns of doubles, one per variable, its
/// own or the caller's; `CaseRoles` says which column is the target, which are predictors, and
/// which weigh the cases or put them into the training or the test sample; `CaseSelection` is what
/// comes of it: the cases that count, in order, with their weights.
///
/// Columns are indexed from 0 in the order in which they were added, cases from 0.
/// Threads: concurrent const operations on an unchanged object are safe.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tree/export.h"
#include "tree/grow/input_error.h"
#include "tree/nodes.h"
#include "tree/settings.h"
#include "tree/support.h"
#include "tree/values.h"

namespace tree::grow {

/// What a column means.
struct ColumnDescription {
  std::string name;  ///< not empty
  /// Whether values have an order, and whether they are measured.
  global::MeasurementLevel level = global::MeasurementContinuous;
  /// The names of the categories, by code: values of the column are codes from 0 to
  /// `labels.size()` - 1. Empty where values are plain numbers.
  std::vector<std::string> labels = {};
  /// The value that marks a missing case. No NaN, which equals nothing.
  double missingValue = systemMissingValue();
};

/// One column: its description, and one value per case. **Borrowed** from its data set.
struct Column {
  ColumnDescription description;  ///< as it was given
  double const* values;           ///< one per case

  /// Whether the values are category codes without an order.
  bool IsNominal() const { return description.level == global::MeasurementNominal; }
  /// Whether the value of a case is missing. Requires a valid row.
  bool IsMissing(std::size_t row) const { return values[row] == description.missingValue; }
};

/// Columns of equal length. Moves, but does not copy: data can be large.
///
/// A column is refused (`InputError`, and nothing changes) when its name is empty or taken, when it
/// holds a NaN or declares one as its missing value, and when a nominal column, or one with labels,
/// holds a value that is neither missing nor a whole number from 0 to 2147483646, or to the last
/// label.
class TREE_API DataSet {
 public:
  /// A data set without columns. `numCases`: the length of every column.
  explicit DataSet(std::size_t numCases);
  /// Takes over all columns; `other` is to be assigned to or destroyed.
  ///@{
  DataSet(DataSet&& other) noexcept;
  DataSet& operator=(DataSet&& other) noexcept;
  ///@}
  ~DataSet();

  /// Adds a column that is not copied. `values`: one double per case, **borrowed** for this data
  /// set's life. Gives the column's index. Linear in the cases.
  int BorrowColumn(ColumnDescription description, double const* values);
  /// Adds a column of its own. `values`: one double per case, **taken**; refuses another number of
  /// them. Gives the column's index. Linear in the cases.
  int AddColumn(ColumnDescription description, std::vector<double> values);

  /// The length of every column.
  std::size_t GetNumCases() const { return numCases_; }
  /// Number of columns.
  int GetNumColumns() const { return static_cast<int>(columns_.size()); }
  /// The column, good until another one is added. Requires 0 <= index < GetNumColumns().
  Column const& GetColumn(int index) const { return columns_[static_cast<std::size_t>(index)]; }
  /// The index of the column with this name; -1 when there is none.
  int FindColumn(std::string_view name) const;
  /// The index of the column with this name. Throws `InputError` when there is none.
  int RequireColumn(std::string_view name) const;

 private:
  int Append(ColumnDescription&& description, double const* values);

  std::size_t numCases_;
  std::vector<Column> columns_;
  std::vector<std::vector<double>> owned_;  // storage of the columns that are not borrowed
};

/// Which column plays which part, by column index.
struct CaseRoles {
  int target = 0;                    ///< the variable to predict
  std::vector<int> predictors = {};  ///< in the order that the settings and the rules give them
  /// Counts repeated cases: a case of frequency 3 is three cases.
  std::optional<int> frequencyWeight = std::nullopt;
  /// Scales what a case adds to the statistics, without making it more or less than one case.
  std::optional<int> caseWeight = std::nullopt;
  /// 0 puts a case into the training sample, every other number into the test sample; a missing
  /// value leaves it out.
  std::optional<int> sample = std::nullopt;
};

/// The variables of the settings that fit these columns: levels, missing values and numbers of
/// categories of the target and of each predictor in order, and whether there are weights. Refuses
/// column indexes that do not exist, and columns with two parts, by `InputError`.
TREE_API CoreSettingsImp MakeCoreSettings(DataSet const& data, CaseRoles const& roles);

/// Why cases do not count: how many are left out for each reason. A case with several reasons is
/// counted with the first.
struct LeftOutCases {
  std::size_t missingTarget = 0;    ///< nothing to predict
  std::size_t frequencyWeight = 0;  ///< missing, zero or negative
  std::size_t caseWeight = 0;       ///< missing, zero or negative
  std::size_t sample = 0;           ///< belong to neither sample
};

/// The cases that count.
class TREE_API CaseSelection {
 public:
  /// Picks the cases of `data` that count. Refuses, by `InputError`, what `MakeCoreSettings`
  /// refuses, infinite weights (`CaseError`), and weights that are infinite once they are
  /// multiplied or added up. `poll`: called every million rows; ends the picking by throwing.
  CaseSelection(DataSet const& data, CaseRoles const& roles,
                std::function<void()> const& poll = nullptr);

  /// The rows of the sample's cases in the data set, ascending.
  std::vector<std::size_t> const& GetRows(DataSample sample) const {
    return sample == TrainingSample ? training_.rows : test_.rows;
  }
  /// The weights of the sample's cases, in the order of `GetRows`: frequency times case weight.
  /// Empty when there are no columns of weights, and each case weighs 1.
  std::vector<double> const& GetWeights(DataSample sample) const {
    return sample == TrainingSample ? training_.weights : test_.weights;
  }
  /// How often each of the sample's cases is repeated, in the order of `GetRows`. Empty when there
  /// is no column of frequencies, and each case counts once.
  std::vector<double> const& GetFrequencies(DataSample sample) const {
    return sample == TrainingSample ? training_.frequencies : test_.frequencies;
  }
  /// How many cases of the data set count in neither sample.
  LeftOutCases const& GetLeftOut() const { return leftOut_; }

 private:
  struct Sample {
    std::vector<std::size_t> rows;
    std::vector<double> weights;
    std::vector<double> frequencies;
  };

  Sample training_;
  Sample test_;
  LeftOutCases leftOut_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_DATA_SET_H_
