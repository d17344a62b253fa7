// Shows a tree whose names and labels are any bytes: what is printed keeps to its lines, what is
// drawn can be drawn, and what is written can be read back.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "cli_testing/credit_data.h"
#include "cli_testing/trees.h"
#include "fuzz/fuzz_target.h"
#include "output/draw_tree.h"
#include "output/print_details.h"
#include "output/print_tree.h"
#include "output/write_cases.h"

namespace {

using namespace tree::cli;  // NOLINT(google-build-using-namespace): what is fuzzed

void Require(bool holds, char const* what) {
  if (!holds) throw std::logic_error(what);
}

/// Takes the next of the texts, which are separated by zeros.
class Texts {
 public:
  explicit Texts(std::string_view bytes) : rest_(bytes) {}

  std::string Next() {
    std::string_view const text = rest_.substr(0, rest_.find('\0'));
    rest_.remove_prefix(std::min(text.size() + 1, rest_.size()));
    return std::string(text);
  }

 private:
  std::string_view rest_;
};

TreeNames NamesIn(std::string_view bytes) {
  Texts texts(bytes);
  TreeNames names = testing::PenguinNames();
  names.target.name = texts.Next();
  for (std::string& label : names.target.labels) label = texts.Next();
  for (VariableNames& predictor : names.predictors) {
    predictor.name = texts.Next();
    for (std::string& label : predictor.labels) label = texts.Next();
  }
  return names;
}

void CheckPrinted(ShownTree const& tree) {
  std::ostringstream out;
  PrintTree(out, tree);
  std::string const text = out.str();
  // A legend of three lines, and a line for each of the nodes.
  Require(std::count(text.begin(), text.end(), '\n') == 3 + 5, "a line is broken");
  std::ostringstream details;
  PrintDetails(details, tree);
  Require(details.str().find("\nnode 4: ") != std::string::npos, "a node is lost");
}

/// Length of the entity or character that the text begins with; 0 when it begins with what a label
/// cannot hold.
std::size_t LengthOfDrawn(std::string_view text) {
  for (char const* const entity : {"&amp;", "&lt;", "&gt;", "&quot;"}) {
    if (text.starts_with(entity)) return std::string_view(entity).size();
  }
  auto const first = static_cast<unsigned char>(text.front());
  bool const isForbidden =
      first < 0x20 || first == 0x7F || first == '&' || first == '<' || first == '>' || first == '"';
  return isForbidden ? 0 : 1;
}

void CheckDrawn(std::string_view text) {
  Require(!text.empty(), "a label is empty");
  while (!text.empty()) {
    std::size_t const length = LengthOfDrawn(text);
    Require(length > 0, "a label holds what it cannot hold");
    text.remove_prefix(length);
  }
}

bool IsAscii(std::string const& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// A field is read back as it was written. Of other bytes the reader wants that they are UTF-8.
void CheckField(std::string const& text, char delimiter) {
  if (text.empty() || !IsAscii(text)) return;
  tree::grow::CsvOptions options;
  options.delimiter = delimiter;
  options.missingTexts = {};
  options.levels = {{"x", global::MeasurementNominal}};
  std::string const file = std::string("x") + delimiter + "y\n" + CsvField(text, delimiter) +
                           delimiter + CsvField(text, delimiter) + '\n';
  tree::grow::DataSet const data = testing::Read(file, options);
  Require(data.GetNumCases() == 1, "a line is broken");
  Require(data.GetColumn(0).description.labels == std::vector<std::string>{text},
          "a field is read as another");
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) return 0;
  constexpr std::string_view kDelimiters = ",;|:";
  char const delimiter = kDelimiters[data[0] % kDelimiters.size()];
  TreeNames const names = NamesIn({reinterpret_cast<char const*>(data) + 1, size - 1});
  std::unique_ptr<tree::NodeImp> const root = testing::ClassTree();
  tree::CCartSettingsImp const settings = testing::ClassSettings();
  ShownTree const tree(*root, names, settings);
  CheckPrinted(tree);
  std::ostringstream drawing;
  DrawTree(drawing, tree);
  std::vector<std::string> texts = names.target.labels;
  texts.push_back(names.target.name);
  for (VariableNames const& predictor : names.predictors) texts.push_back(predictor.name);
  for (std::string const& text : texts) {
    CheckDrawn(DrawnText(text));
    CheckField(text, delimiter);
  }
  return 0;
}
