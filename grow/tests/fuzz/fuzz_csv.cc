// Reads any bytes as CSV: they are refused or become columns of one length, whose values are what
// their descriptions say.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>

#include "fuzz/fuzz_target.h"
#include "tree/grow/csv.h"

namespace {

void Require(bool holds, char const* what) {
  if (!holds) throw std::logic_error(what);
}

void CheckColumns(tree::grow::DataSet const& data) {
  for (int index = 0; index < data.GetNumColumns(); ++index) {
    tree::grow::Column const& column = data.GetColumn(index);
    Require(!column.description.name.empty(), "a column has no name");
    for (std::size_t row = 0; row < data.GetNumCases(); ++row) {
      Require(!std::isnan(column.values[row]), "a value is NaN");
      if (column.IsMissing(row) || column.description.labels.empty()) continue;
      auto const numLabels = static_cast<double>(column.description.labels.size());
      Require(column.values[row] >= 0.0 && column.values[row] < numLabels, "a code has no label");
    }
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) return 0;
  tree::grow::CsvOptions options;
  // The first byte chooses the options.
  if ((data[0] & 1) != 0) options.delimiter = ';';
  if ((data[0] & 2) != 0) options.missingTexts.emplace_back("?");
  if ((data[0] & 4) != 0) options.levels = {{"x", global::MeasurementOrdinal}};
  if ((data[0] & 8) != 0) options.categories = {{"x", {"a", "b"}}};
  std::istringstream stream(std::string(data + 1, data + size));
  try {
    std::optional<tree::grow::CsvData> const csv = ReadCsv(stream, "fuzz", options);
    Require(csv.has_value(), "reading ended before the end");
    CheckColumns(csv->data);
  } catch (tree::grow::InputError const& error) {
    Require(std::string(error.what()).rfind("fuzz:", 0) == 0, "a message names no place");
  }
  return 0;
}
