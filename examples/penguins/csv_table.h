#ifndef EXAMPLES_PENGUINS_CSV_TABLE_H_
#define EXAMPLES_PENGUINS_CSV_TABLE_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Comma-separated values with a header line. The parsing is libcsv's; this file adds what it leaves
// out: line numbers, and rows held against the header.

namespace penguins {

/// Input that cannot be used. The message says where: `file:line: ...`.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct CsvRow {
  int line;                         // line of the file in which the row begins, from 1
  std::vector<std::string> fields;  // as many as there are columns
};

struct CsvTable {
  std::string file;
  CsvRow header;
  std::vector<CsvRow> rows;

  /// Position of the column, from 0. Throws `InputError` unless exactly one bears that name.
  std::size_t Column(std::string_view name) const;
  /// `file:line: `, for messages.
  std::string Place(CsvRow const& row) const;
};

/// Reads the whole file. Throws `InputError` for a file that cannot be read or is empty, for
/// misplaced quotes, and for rows that have more or fewer fields than the header.
CsvTable ReadCsv(std::string const& file);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_CSV_TABLE_H_
