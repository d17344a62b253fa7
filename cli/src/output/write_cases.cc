#include "output/write_cases.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <unordered_map>

#include "output/names.h"
#include "output/number_text.h"
#include "tree/grow/grower.h"

namespace tree::cli {
namespace {

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

void WriteCases(std::ostream& out, NodeImp const& root, grow::DataSet const& data,
                grow::CaseRoles const& roles, char delimiter) {
  VariableNames const target = NamesOf(data, {.target = roles.target}).target;
  WriteNames(out, root, target, delimiter);
  std::unordered_map<Node const*, std::string> lines;
  std::vector<double> values(roles.predictors.size());
  for (std::size_t row = 0; row < data.GetNumCases(); ++row) {
    grow::CopyCase(data, roles.predictors, row, values.data());
    Node const* const node = root.DropObservationThroughTree(values.data(), nullptr);
    auto const [line, isNew] = lines.try_emplace(node);
    if (isNew) line->second = LineOf(*node, target, delimiter);
    out << row + 1 << line->second;
  }
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
