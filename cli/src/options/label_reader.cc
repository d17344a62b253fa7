#include "options/label_reader.h"

#include <algorithm>

namespace tree::cli {
namespace {

constexpr char kBlanks[] = " \t";

std::string_view WithoutBlanks(std::string_view text) {
  std::size_t const begin = std::min(text.find_first_not_of(kBlanks), text.size());
  std::size_t const end = text.find_last_not_of(kBlanks) + 1;  // 0 where there is nothing else
  return text.substr(begin, std::max(begin, end) - begin);
}

}  // namespace

std::string LabelReader::Next(char mark) {
  std::size_t const begin = rest_.find_first_not_of(kBlanks);
  if (begin != std::string_view::npos && rest_[begin] == '"') {
    rest_.remove_prefix(begin + 1);
    return NextQuoted(mark);
  }
  std::size_t const end = std::min(rest_.find(mark), rest_.size());
  std::string label(WithoutBlanks(rest_.substr(0, end)));
  hasMore_ = end < rest_.size();
  rest_.remove_prefix(hasMore_ ? end + 1 : end);
  return label;
}

std::string LabelReader::NextQuoted(char mark) {
  std::string label;
  while (true) {
    std::size_t const quote = rest_.find('"');
    if (quote == std::string_view::npos) throw MisplacedQuote();
    label += rest_.substr(0, quote);
    rest_.remove_prefix(quote + 1);
    if (!rest_.starts_with('"')) break;
    label += '"';
    rest_.remove_prefix(1);
  }
  rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
  hasMore_ = rest_.starts_with(mark);
  if (!hasMore_ && !rest_.empty()) throw MisplacedQuote();
  if (hasMore_) rest_.remove_prefix(1);
  return label;
}

std::vector<std::string> LabelsOf(std::string_view text) {
  std::vector<std::string> labels;
  LabelReader reader(text);
  while (reader.HasMore()) labels.push_back(reader.Next(','));
  return labels;
}

}  // namespace tree::cli
