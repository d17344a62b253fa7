#include "output/write_cases.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "output/names.h"
#include "output/number_text.h"
#include "tree/score/scorer.h"

namespace tree::cli {
namespace {

// Rows that are written between one report and the next: a moment's work even where lines are long.
constexpr std::size_t kSliceSize = 4096;

/// What a line says after the row's number: the same for all cases of a node.
std::string LineOf(Node const& node, VariableNames const& target, char delimiter) {
  std::string line = delimiter + std::to_string(node.GetId()) + delimiter;
  ClsInfo const* const classes = node.GetClsInfo(TrainingSample);
  if (classes == nullptr) return line + ExactNumber(node.GetAssignment()) + '\n';
  line += CsvField(LabelOf(target, node.GetAssignment()), delimiter);
  for (int index = 0; index < classes->GetNumClasses(); ++index) {
    line += delimiter + ExactNumber(classes->GetClassProbability(index));
  }
  return line + '\n';
}

void WriteNames(std::ostream& out, Node const& root, VariableNames const& target, char delimiter) {
  out << "row" << delimiter << "node" << delimiter << "prediction";
  if (ClsInfo const* const classes = root.GetClsInfo(TrainingSample)) {
    for (int index = 0; index < classes->GetNumClasses(); ++index) {
      out << delimiter << CsvField("probability of " + LabelOf(target, index), delimiter);
    }
  }
  out << '\n';
}

}  // namespace

bool WriteCases(std::ostream& out, NodeImp const& root, grow::DataSet const& data,
                grow::CaseRoles const& roles, char delimiter, ProgressListener& listener) {
  VariableNames const target = NamesOf(data, {.target = roles.target}).target;
  WriteNames(out, root, target, delimiter);
  std::unordered_map<unsigned int, Node const*> nodes;
  PrefixNodeIterator walk(&root);
  while (Node const* const node = walk.Next()) nodes[node->GetId()] = node;
  auto const scorer = score::Scorer::FromTree(root);
  std::vector<std::string> lines(scorer.GetNumPositions());
  std::size_t const numCases = data.GetNumCases();
  std::vector<std::uint32_t> positions(std::min(kSliceSize, numCases));
  for (std::size_t begin = 0; begin < numCases; begin += kSliceSize) {
    double const fraction = static_cast<double>(begin) / static_cast<double>(numCases);
    if (!listener.Report(fraction, "writing the predictions")) return false;
    std::size_t const size = std::min(kSliceSize, numCases - begin);
    std::vector<score::Column> columns;
    columns.reserve(roles.predictors.size());
    for (int const predictor : roles.predictors) {
      columns.emplace_back(data.GetColumn(predictor).values + begin);
    }
    score::Answers answers;
    answers.positions = positions.data();
    score::ScoreOptions options;
    options.numThreads = 1;  // a line takes longer to write than its case to score
    scorer.Score(score::Cases::OfColumns(columns.data(), columns.size(), size), answers, options);
    for (std::size_t row = 0; row < size; ++row) {
      std::uint32_t const position = positions[row];
      std::string& line = lines[position];
      if (line.empty()) line = LineOf(*nodes.at(scorer.GetId(position)), target, delimiter);
      out << begin + row + 1 << line;
    }
  }
  return true;
}

std::string CsvField(std::string_view text, char delimiter) {
  bool const isPlain = !text.empty() && text.front() != ' ' && text.front() != '\t' &&
                       text.back() != ' ' && text.back() != '\t' &&
                       text.find_first_of("\"\r\n") == std::string_view::npos &&
                       text.find(delimiter) == std::string_view::npos;
  if (isPlain) return std::string(text);
  std::string field = "\"";
  for (char const c : text) {
    if (c == '"') field += '"';
    field += c;
  }
  return field + '"';
}

}  // namespace tree::cli
