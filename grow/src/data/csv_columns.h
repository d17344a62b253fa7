#ifndef TREE_GROW_SRC_CSV_COLUMNS_H_
#define TREE_GROW_SRC_CSV_COLUMNS_H_

// From the fields of a CSV file to columns of numbers.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tree/grow/csv.h"

namespace tree::grow {

/// The number that a text stands for. NaN reads as NaN. Throws `InputError` with a message that
/// begins with the verb, as in "is not a number".
double ParseNumber(std::string_view text);

/// Whether a text reads as a number, be it out of range.
bool IsNumber(std::string_view text);

/// One column of the file, filled from top to bottom.
class CsvColumn {
 public:
  /// `options`: **borrowed** for this object's life.
  CsvColumn(std::string name, CsvOptions const& options);

  std::string const& GetName() const { return name_; }
  /// Whether the first values decide what the column is. As long as they do, `Append` must wait.
  bool NeedsLevel() const { return kind_ == Kind::kUnknown; }
  bool IsMissing(std::string_view text) const;
  /// Decides from the first texts, in order.
  void InferLevel(std::vector<std::string_view> const& texts);

  void Reserve(std::size_t count) { values_.reserve(count); }
  /// Throws `InputError` with a message that begins with the verb.
  void Append(std::string_view text, std::size_t line);
  /// Adds what was read to the data set and its remarks, if any. Takes the values.
  void MoveTo(CsvData& result);

 private:
  enum class Kind { kUnknown, kNumbers, kTexts, kGivenCategories };
  struct HashText {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  double CodeOf(std::string_view text);
  double NumberOf(std::string_view text, std::size_t line);
  void SortCategories();

  std::string name_;
  CsvOptions const& options_;
  Kind kind_ = Kind::kUnknown;
  global::MeasurementLevel level_ = global::MeasurementContinuous;
  std::vector<double> values_;
  std::vector<std::string> labels_;
  std::unordered_map<std::string, double, HashText, std::equal_to<>> codes_;  // by label
  std::size_t numNaN_ = 0;
  std::size_t firstLineOfNaN_ = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_CSV_COLUMNS_H_
