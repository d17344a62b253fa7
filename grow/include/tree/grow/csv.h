#ifndef TREE_GROW_CSV_H_
#define TREE_GROW_CSV_H_

/// @file
/// Reads a data set from a file of comma-separated values, as RFC 4180 describes it: a line of
/// column names, then a row per case; fields in quotes may hold commas, line breaks and doubled
/// quotes; lines end in LF, CR LF or CR; the text is UTF-8, with or without a byte order mark.
/// Blank lines are skipped, as are blanks around fields without quotes.

#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tree/export.h"
#include "tree/grow/data_set.h"
#include "tree/results.h"
#include "tree/values.h"

namespace tree::grow {

/// How a file is to be read.
struct CsvOptions {
  char delimiter = ',';  ///< between fields: no quote, space or line break
  /// Texts that mark a missing value. An empty field always does.
  std::vector<std::string> missingTexts = {"NA"};
  /// Levels by column name. The level of a column that is not listed is inferred from the first
  /// 1000 rows: nominal if one of its values there is neither missing nor a number, else
  /// continuous.
  std::map<std::string, global::MeasurementLevel> levels = {};
  /// Categories by column name, from low to high; no others may occur in such a column. Unless its
  /// level says otherwise it is ordinal.
  std::map<std::string, std::vector<std::string>> categories = {};
  /// Hears how far reading has come, in parts of the file. **Borrowed**; null for nobody.
  ProgressListener* listener = nullptr;
};

/// What was read.
struct CsvData {
  /// A column per column of the file, in its order. Ordered columns hold numbers, or codes where
  /// categories were given; nominal ones hold codes of their texts, sorted by bytes, so that the
  /// order of the rows has no influence. Missing values are `systemMissingValue()`.
  DataSet data;
  /// What the reader decided that its user may want to know, a sentence each.
  std::vector<std::string> remarks;
};

/// Reads the whole file; nothing when the listener ended it. Throws `InputError`, whose message
/// names the file, and line, column and value where there are some, for a file that cannot be read,
/// has no rows or is not UTF-8; misplaced quotes; rows that are longer or shorter than the first
/// line; columns without a name or with the name of another; columns that the options name and the
/// file lacks; texts where numbers belong, and numbers beyond the range of double.
/// NaN, in any case of letters, counts as missing, with a remark.
TREE_API std::optional<CsvData> ReadCsv(std::string const& file, CsvOptions const& options = {});

/// The same from a stream, opened as binary, that messages call `name`. The listener hears 0 all
/// the time, for the size is not known.
TREE_API std::optional<CsvData> ReadCsv(std::istream& stream, std::string const& name,
                                        CsvOptions const& options = {});

}  // namespace tree::grow

#endif  // TREE_GROW_CSV_H_
