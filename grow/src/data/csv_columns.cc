#include "data/csv_columns.h"

#include <utf8.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <system_error>
#include <utility>

namespace tree::grow {
namespace {

/// Reads all of the text. The error code is `invalid_argument` unless it is wholly a number.
std::errc ReadNumber(std::string_view text, double& number) {
  // A sign that std::from_chars does not know, and must not be followed by one that it does.
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return end == text.data() + text.size() ? error : std::errc::invalid_argument;
}

}  // namespace

double ParseNumber(std::string_view text) {
  double number = 0.0;
  std::errc const error = ReadNumber(text, number);
  if (error == std::errc()) return number;
  throw InputError(error == std::errc::result_out_of_range ? "is out of range" : "is not a number");
}

bool IsNumber(std::string_view text) {
  double number = 0.0;
  return ReadNumber(text, number) != std::errc::invalid_argument;
}

CsvColumn::CsvColumn(std::string name, CsvOptions const& options)
    : name_(std::move(name)), options_(options) {
  auto const level = options_.levels.find(name_);
  auto const categories = options_.categories.find(name_);
  if (level != options_.levels.end()) {
    level_ = level->second;
    kind_ = level_ == global::MeasurementNominal ? Kind::kTexts : Kind::kNumbers;
  }
  if (categories == options_.categories.end()) return;
  if (level == options_.levels.end()) level_ = global::MeasurementOrdinal;
  kind_ = Kind::kGivenCategories;
  labels_ = categories->second;
  for (std::size_t code = 0; code < labels_.size(); ++code) {
    codes_.emplace(labels_[code], static_cast<double>(code));
  }
}

bool CsvColumn::IsMissing(std::string_view text) const {
  return text.empty() || std::find(options_.missingTexts.begin(), options_.missingTexts.end(),
                                   text) != options_.missingTexts.end();
}

void CsvColumn::InferLevel(std::vector<std::string_view> const& texts) {
  if (!NeedsLevel()) return;
  bool const areNumbers = std::all_of(texts.begin(), texts.end(), [this](std::string_view text) {
    return IsMissing(text) || IsNumber(text);
  });
  kind_ = areNumbers ? Kind::kNumbers : Kind::kTexts;
  level_ = areNumbers ? global::MeasurementContinuous : global::MeasurementNominal;
}

void CsvColumn::Append(std::string_view text, std::size_t line) {
  if (IsMissing(text)) {
    values_.push_back(systemMissingValue());
  } else {
    values_.push_back(kind_ == Kind::kNumbers ? NumberOf(text, line) : CodeOf(text));
  }
}

double CsvColumn::NumberOf(std::string_view text, std::size_t line) {
  double const number = ParseNumber(text);
  if (!std::isnan(number)) return number;
  if (numNaN_++ == 0) firstLineOfNaN_ = line;
  return systemMissingValue();
}

double CsvColumn::CodeOf(std::string_view text) {
  auto const known = codes_.find(text);
  if (known != codes_.end()) return known->second;
  if (kind_ == Kind::kGivenCategories) throw InputError("is none of the categories");
  if (!utf8::is_valid(text.begin(), text.end())) throw InputError("is not UTF-8");
  auto const code = static_cast<double>(labels_.size());
  labels_.emplace_back(text);
  codes_.emplace(labels_.back(), code);
  return code;
}

/// Codes so far follow the first appearance of each label.
void CsvColumn::SortCategories() {
  std::vector<std::size_t> order(labels_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [this](std::size_t a, std::size_t b) { return labels_[a] < labels_[b]; });
  std::vector<std::string> sorted;
  std::vector<double> newCodes(labels_.size());
  for (std::size_t const code : order) {
    newCodes[code] = static_cast<double>(sorted.size());
    sorted.push_back(std::move(labels_[code]));
  }
  labels_ = std::move(sorted);
  for (double& value : values_) {
    if (value != systemMissingValue()) value = newCodes[static_cast<std::size_t>(value)];
  }
}

void CsvColumn::MoveTo(CsvData& result) {
  if (kind_ == Kind::kTexts) SortCategories();
  if (numNaN_ > 0) {
    result.remarks.push_back("column \"" + name_ + "\": NaN counts as missing (" +
                             std::to_string(numNaN_) + " times, first in line " +
                             std::to_string(firstLineOfNaN_) + ")");
  }
  ColumnDescription description;
  description.name = std::move(name_);
  description.level = level_;
  description.labels = std::move(labels_);
  result.data.AddColumn(std::move(description), std::move(values_));
}

}  // namespace tree::grow
