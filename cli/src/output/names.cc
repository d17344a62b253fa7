#include "output/names.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "output/number_text.h"

namespace tree::cli {
namespace {

VariableNames NamesOfColumn(grow::Column const& column) {
  return {column.description.name, column.description.labels};
}

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) == 0x7F;
}

/// Whether nothing in the text looks like a part of the line around it.
bool IsPlain(std::string_view text) {
  return !text.empty() && text.front() != ' ' && text.back() != ' ' && text.front() != '"' &&
         std::none_of(text.begin(), text.end(),
                      [](char c) { return IsControl(c) || c == ',' || c == '\\'; });
}

std::string Escaped(char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  switch (c) {
    case '"':
    case '\\':
      return {'\\', c};
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  if (!IsControl(c)) return {c};
  auto const code = static_cast<unsigned char>(c);
  return {'\\', 'x', kDigits[code / 16], kDigits[code % 16]};
}

}  // namespace

TreeNames NamesOf(grow::DataSet const& data, grow::CaseRoles const& roles) {
  TreeNames names;
  names.target = NamesOfColumn(data.GetColumn(roles.target));
  for (int const index : roles.predictors) {
    names.predictors.push_back(NamesOfColumn(data.GetColumn(index)));
  }
  return names;
}

std::string LabelOf(VariableNames const& variable, double code) {
  bool const isLabelled =
      code >= 0.0 && code < static_cast<double>(variable.labels.size()) && code == std::floor(code);
  return isLabelled ? variable.labels[static_cast<std::size_t>(code)] : ShortNumber(code);
}

std::string Shown(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string shown = "\"";
  for (char const c : text) shown += Escaped(c);
  return shown + '"';
}

}  // namespace tree::cli
