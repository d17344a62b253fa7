#include "penguins/csv_table.h"

#include <csv.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>
#include <utility>

namespace penguins {
namespace {

std::string ReadFile(std::string const& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text;
  char block[65536];
  while (stream.read(block, sizeof block) || stream.gcount() > 0) {
    text.append(block, static_cast<std::size_t>(stream.gcount()));
  }
  if (stream.bad() || !stream.eof()) {
    throw InputError(file + ": cannot be read: " + std::generic_category().message(errno));
  }
  return text;
}

/// Where the line that begins at `begin` ends, its line break included.
std::size_t LineEnd(std::string const& text, std::size_t begin) {
  std::size_t const lineBreak = text.find_first_of("\r\n", begin);
  if (lineBreak == std::string::npos) return text.size();
  return lineBreak + (text.compare(lineBreak, 2, "\r\n") == 0 ? 2 : 1);
}

/// Feeds a text to libcsv line by line, because libcsv does not count lines.
class Parser {
 public:
  explicit Parser(std::string const& file) : file_(file) {
    csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI);
  }
  ~Parser() { csv_free(&parser_); }
  Parser(Parser const&) = delete;
  Parser& operator=(Parser const&) = delete;

  std::vector<CsvRow> Parse(std::string const& text) {
    int line = 1;
    for (std::size_t begin = StartOf(text), end = 0; begin < text.size(); begin = end, ++line) {
      end = LineEnd(text, begin);
      if (!inRow_) row_.line = line;
      bool const blank = text.find_first_not_of(" \t\r\n", begin) >= end;
      inRow_ = inRow_ || !blank;
      Check(csv_parse(&parser_, text.data() + begin, end - begin, TakeField, EndRow, this) ==
            end - begin);
    }
    Check(csv_fini(&parser_, TakeField, EndRow, this) == 0);
    return std::move(rows_);
  }

 private:
  /// Spreadsheets put a byte order mark in front; it is no part of the first column's name.
  static std::size_t StartOf(std::string const& text) {
    return text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  }

  static void TakeField(void* text, std::size_t length, void* self) {
    static_cast<Parser*>(self)->row_.fields.emplace_back(static_cast<char const*>(text), length);
  }

  static void EndRow(int /*terminator*/, void* self) {
    auto* const parser = static_cast<Parser*>(self);
    parser->rows_.push_back(std::exchange(parser->row_, CsvRow{parser->row_.line, {}}));
    parser->inRow_ = false;
  }

  void Check(bool parsed) {
    if (parsed) return;
    bool const quotes = csv_error(&parser_) == CSV_EPARSE;
    throw InputError(file_ + ":" + std::to_string(row_.line) + ": " +
                     (quotes ? "a quote is misplaced or never closed in the row that begins here"
                             : csv_strerror(csv_error(&parser_))));
  }

  std::string const& file_;
  csv_parser parser_{};
  CsvRow row_{1, {}};   // the row being read
  bool inRow_ = false;  // whether any of it has been seen
  std::vector<CsvRow> rows_;
};

void CheckLength(CsvTable const& table, CsvRow const& row) {
  std::vector<std::string> const& columns = table.header.fields;
  std::size_t const length = row.fields.size();
  if (length == columns.size()) return;
  std::string const what = length < columns.size()
                               ? "column \"" + columns[length] + "\": no value"
                               : "value \"" + row.fields[columns.size()] + "\": no column";
  throw InputError(table.Place(row) + what + ": the row has " + std::to_string(length) +
                   " fields, the header " + std::to_string(columns.size()));
}

}  // namespace

std::size_t CsvTable::Column(std::string_view name) const {
  auto const found = std::find(header.fields.begin(), header.fields.end(), name);
  if (found == header.fields.end()) {
    throw InputError(Place(header) + "column \"" + std::string(name) + "\" is missing");
  }
  if (std::find(found + 1, header.fields.end(), name) != header.fields.end()) {
    throw InputError(Place(header) + "column \"" + std::string(name) + "\" appears twice");
  }
  return static_cast<std::size_t>(found - header.fields.begin());
}

std::string CsvTable::Place(CsvRow const& row) const {
  return file + ":" + std::to_string(row.line) + ": ";
}

CsvTable ReadCsv(std::string const& file) {
  std::vector<CsvRow> rows = Parser(file).Parse(ReadFile(file));
  if (rows.empty()) throw InputError(file + ":1: the file is empty");
  CsvTable table{file, std::move(rows.front()), {}};
  rows.erase(rows.begin());
  table.rows = std::move(rows);
  for (CsvRow const& row : table.rows) CheckLength(table, row);
  return table;
}

}  // namespace penguins
