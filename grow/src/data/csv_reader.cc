#include <csv.h>
#include <utf8.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <fstream>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "data/csv_columns.h"
#include "tree/grow/csv.h"

namespace tree::grow {
namespace {

constexpr std::size_t kBlockSize = std::size_t{1} << 20;
constexpr std::size_t kNumRowsToInferFrom = 1000;

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// The rows of a file, made into columns while they are parsed. libcsv parses; it knows nothing of
/// lines, so the text is handed to it piece by piece, none of which goes beyond a line.
class Reader {
 public:
  /// `size`: of the stream, in bytes; 0 when it is not known.
  Reader(std::istream& stream, std::string const& file, double size, CsvOptions const& options)
      : stream_(stream), file_(file), size_(size), options_(options) {
    csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI);
    csv_set_delim(&parser_, static_cast<unsigned char>(options.delimiter));
  }
  ~Reader() { csv_free(&parser_); }
  Reader(Reader const&) = delete;
  Reader& operator=(Reader const&) = delete;

  std::optional<CsvData> Read() {
    double numRead = 0.0;
    auto const block = std::make_unique_for_overwrite<char[]>(kBlockSize);
    bool isFirst = true;
    while (stream_.read(block.get(), kBlockSize) || stream_.gcount() > 0) {
      std::string_view text(block.get(), static_cast<std::size_t>(stream_.gcount()));
      numRead += static_cast<double>(text.size());
      if (std::exchange(isFirst, false) && text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
      ParseBlock(text);
      if (!GoOn(size_ > 0.0 ? std::min(1.0, numRead / size_) : 0.0)) return std::nullopt;
    }
    if (stream_.bad() || !stream_.eof()) {
      throw InputError(file_ + ": cannot be read: " + std::generic_category().message(errno));
    }
    CheckParsed(csv_fini(&parser_, TakeField, EndRow, this) == 0);
    return Finish();
  }

 private:
  using Lines = std::vector<std::size_t>;

  [[noreturn]] void Refuse(std::size_t line, std::string const& what) const {
    throw InputError(file_ + ':' + std::to_string(line) + ": " + what);
  }

  bool GoOn(double fraction) const {
    return options_.listener == nullptr || options_.listener->Report(fraction, "reading the data");
  }

  // --- lines ---

  void ParseBlock(std::string_view text) {
    while (!text.empty()) {
      // The second half of CR LF belongs to the line before.
      bool const isRest = lastCharacter_ == '\r' && text.front() == '\n';
      std::size_t const lineBreak = isRest ? 0 : text.find_first_of("\r\n");
      std::size_t const length = std::min(lineBreak, text.size() - 1) + 1;
      std::string_view const piece = text.substr(0, length);
      text.remove_prefix(length);
      Parse(piece);
      lastCharacter_ = piece.back();
      if (!isRest && lineBreak != std::string_view::npos) ++line_;
    }
  }

  void Parse(std::string_view piece) {
    if (!inRow_ && piece.find_first_not_of(" \t\r\n") != std::string_view::npos) {
      inRow_ = true;
      rowLine_ = line_;
    }
    CheckParsed(csv_parse(&parser_, piece.data(), piece.size(), TakeField, EndRow, this) ==
                piece.size());
  }

  void CheckParsed(bool parsed) {
    // Nothing has been thrown through libcsv.
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    if (parsed) return;
    bool const quotes = csv_error(&parser_) == CSV_EPARSE;
    Refuse(rowLine_, quotes ? "a quote is misplaced or never closed in the row that begins here"
                            : csv_strerror(csv_error(&parser_)));
  }

  // --- rows ---

  template <class Work>
  void Guarded(Work work) noexcept {
    if (failure_ != nullptr) return;
    try {
      work();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  static void TakeField(void* text, std::size_t length, void* self) {
    auto* const reader = static_cast<Reader*>(self);
    reader->Guarded([=] { reader->Field({static_cast<char const*>(text), length}); });
  }

  static void EndRow(int /*terminator*/, void* self) {
    auto* const reader = static_cast<Reader*>(self);
    reader->Guarded([=] { reader->Row(); });
  }

  void Field(std::string_view text) {
    std::size_t const position = numFields_++;
    if (!hasHeader_) {
      AddColumn(text);
    } else if (position >= columns_.size()) {
      if (position == columns_.size()) surplus_ = text;
    } else if (isInferring_) {
      waiting_.emplace_back(text);
    } else {
      Append(position, text, rowLine_);
    }
  }

  void Row() {
    if (hasHeader_) {
      CheckLength();
      ++numRows_;
      if (isInferring_) {
        waitingLines_.push_back(rowLine_);
        if (numRows_ == kNumRowsToInferFrom) InferLevels();
      }
    } else {
      hasHeader_ = true;
      CheckOptions();
    }
    numFields_ = 0;
    inRow_ = false;
  }

  void CheckLength() const {
    if (numFields_ == columns_.size()) return;
    std::string const what = numFields_ < columns_.size()
                                 ? "column " + Quoted(columns_[numFields_].GetName()) + ": no value"
                                 : "value " + Quoted(surplus_) + ": no column";
    Refuse(rowLine_, what + ": the row has " + std::to_string(numFields_) +
                         " fields, the first line " + std::to_string(columns_.size()));
  }

  // --- columns ---

  void AddColumn(std::string_view name) {
    std::string const number = std::to_string(numFields_);
    if (name.empty()) Refuse(rowLine_, "column " + number + " has no name");
    if (!utf8::is_valid(name.begin(), name.end())) {
      Refuse(rowLine_, "the name of column " + number + " is not UTF-8");
    }
    if (HasColumn(name)) Refuse(rowLine_, "column " + Quoted(name) + " appears twice");
    columns_.emplace_back(std::string(name), options_);
  }

  bool HasColumn(std::string_view name) const {
    return std::any_of(columns_.begin(), columns_.end(),
                       [name](CsvColumn const& column) { return column.GetName() == name; });
  }

  void CheckOptions() const {
    auto const check = [this](auto const& byName) {
      for (auto const& [name, value] : byName) {
        if (!HasColumn(name)) Refuse(rowLine_, "column " + Quoted(name) + " is missing");
      }
    };
    check(options_.levels);
    check(options_.categories);
  }

  void Append(std::size_t position, std::string_view text, std::size_t line) {
    CsvColumn& column = columns_[position];
    try {
      column.Append(text, line);
    } catch (InputError const& error) {
      Refuse(line,
             "column " + Quoted(column.GetName()) + ": value " + Quoted(text) + ' ' + error.what());
    }
  }

  /// Decides what the columns are, from the rows that waited for it, and takes these rows.
  void InferLevels() {
    isInferring_ = false;
    for (std::size_t position = 0; position < columns_.size(); ++position) {
      std::vector<std::string_view> texts;
      for (std::size_t index = position; index < waiting_.size(); index += columns_.size()) {
        texts.push_back(waiting_[index]);
      }
      columns_[position].InferLevel(texts);
    }
    for (std::size_t index = 0; index < waiting_.size(); ++index) {
      Append(index % columns_.size(), waiting_[index], waitingLines_[index / columns_.size()]);
    }
    waiting_.clear();
  }

  std::optional<CsvData> Finish() {
    if (!hasHeader_) Refuse(1, "the file is empty");
    if (numRows_ == 0) Refuse(rowLine_, "no row follows the first line");
    if (isInferring_) InferLevels();
    CsvData result{DataSet(numRows_), {}};
    for (CsvColumn& column : columns_) {
      column.MoveTo(result);
      if (!GoOn(1.0)) return std::nullopt;
    }
    return result;
  }

  std::istream& stream_;
  std::string const& file_;
  double size_;
  CsvOptions const& options_;
  csv_parser parser_{};
  std::exception_ptr failure_;

  std::size_t line_ = 1;     // that is being parsed, from 1
  std::size_t rowLine_ = 1;  // in which the present row begins
  char lastCharacter_ = '\0';
  bool inRow_ = false;  // whether any of the present row has been seen

  bool hasHeader_ = false;
  std::size_t numRows_ = 0;
  std::size_t numFields_ = 0;  // of the present row
  std::string surplus_;        // the first field of the present row that has no column

  std::vector<CsvColumn> columns_;
  bool isInferring_ = true;
  std::vector<std::string> waiting_;  // fields, row by row, until levels are inferred
  Lines waitingLines_;                // of their rows
};

}  // namespace

std::optional<CsvData> ReadCsv(std::string const& file, CsvOptions const& options) {
  std::ifstream stream(file, std::ios::binary);
  std::error_code unknown;
  auto const size = std::filesystem::file_size(file, unknown);
  return Reader(stream, file, unknown ? 0.0 : static_cast<double>(size), options).Read();
}

std::optional<CsvData> ReadCsv(std::istream& stream, std::string const& name,
                               CsvOptions const& options) {
  return Reader(stream, name, 0.0, options).Read();
}

}  // namespace tree::grow
