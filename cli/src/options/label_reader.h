#ifndef TREE_CLI_SRC_OPTIONS_LABEL_READER_H_
#define TREE_CLI_SRC_OPTIONS_LABEL_READER_H_

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tree::cli {

/// A quote in an option's value that is misplaced or never closed. The message begins with a verb.
class MisplacedQuote : public std::runtime_error {
 public:
  MisplacedQuote() : std::runtime_error("has a quote that is misplaced or never closed") {}
};

/// Takes apart a text of labels with marks between them, as `red=1,blue=2`. A label that contains
/// the mark that ends it stands in quotes, and its own quotes are doubled, as in CSV files. Blanks
/// around labels without quotes do not belong to them.
class LabelReader {
 public:
  /// `text`: **borrowed** for this object's life.
  explicit LabelReader(std::string_view text) : rest_(text) {}

  /// The label up to the next `mark`, or up to the end. Throws `MisplacedQuote`.
  std::string Next(char mark);
  /// Whether the last label ended at its mark, so that something follows, be it empty.
  bool HasMore() const { return hasMore_; }
  /// What follows, as it stands.
  std::string_view GetRest() const { return rest_; }

 private:
  std::string NextQuoted(char mark);

  std::string_view rest_;
  bool hasMore_ = true;
};

/// The labels of a text with commas between them. Throws `MisplacedQuote`.
std::vector<std::string> LabelsOf(std::string_view text);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OPTIONS_LABEL_READER_H_
