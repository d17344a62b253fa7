#include "penguins/penguin_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <system_error>

#include "penguins/csv_table.h"
#include "tree/support.h"

namespace penguins {
namespace {

/// One field of the file, with what a message about it has to say.
struct Field {
  CsvTable const& table;
  CsvRow const& row;
  std::size_t column;

  std::string const& Value() const { return row.fields[column]; }
  std::string Says(std::string const& complaint) const {
    return table.Place(row) + "column \"" + table.header.fields[column] + "\": value \"" + Value() +
           "\" " + complaint;
  }
};

int Code(Field const& field, std::span<std::string_view const> names) {
  auto const found = std::find(names.begin(), names.end(), field.Value());
  if (found != names.end()) return static_cast<int>(found - names.begin());
  std::string list;
  for (std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  throw InputError(field.Says("is none of " + list));
}

double Number(Field const& field) {
  std::string const& text = field.Value();
  char const* const end = text.data() + text.size();
  double number = 0.0;
  auto const [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc::invalid_argument || stop != end) {
    throw InputError(field.Says("is not a number"));
  }
  if (error == std::errc::result_out_of_range || std::isinf(number)) {
    throw InputError(field.Says("is out of range"));
  }
  return number;
}

double PredictorValue(Field const& field, Predictor predictor, std::vector<std::string>& remarks) {
  if (field.Value().empty()) return systemMissingValue();
  double value = std::nan("");
  if (field.Value() != "NA") {
    value = predictor == kIsland ? Code(field, kIslands) : Number(field);
  }
  // To a split rule a NaN is a number, above every cut point. Here it stands for no measurement.
  if (std::isnan(value)) {
    remarks.push_back(field.Says("counts as missing"));
    return systemMissingValue();
  }
  return value;
}

}  // namespace

bool IsMissing(double value) { return value == systemMissingValue(); }

bool Penguin::HasMissingValues() const {
  return std::any_of(values.begin(), values.end(), IsMissing);
}

PenguinTable ReadPenguins(std::string const& file) {
  CsvTable const csv = ReadCsv(file);
  std::size_t const species = csv.Column("species");
  std::array<std::size_t, kPredictors.size()> columns{};
  std::transform(kPredictors.begin(), kPredictors.end(), columns.begin(),
                 [&csv](std::string_view name) { return csv.Column(name); });
  if (csv.rows.empty()) throw InputError(csv.Place(csv.header) + "no row follows the header");

  PenguinTable table;
  for (CsvRow const& row : csv.rows) {
    Penguin penguin{row.line, Code({csv, row, species}, kSpecies), {}};
    for (std::size_t index = 0; index < columns.size(); ++index) {
      penguin.values[index] =
          PredictorValue({csv, row, columns[index]}, static_cast<Predictor>(index), table.remarks);
    }
    table.penguins.push_back(penguin);
  }
  return table;
}

}  // namespace penguins
