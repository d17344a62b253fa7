#include "settings_tour/text_table.h"

#include <algorithm>
#include <ostream>
#include <utility>

namespace settings_tour {

void TextTable::AddRow(std::vector<std::string> cells) {
  if (widths_.size() < cells.size()) widths_.resize(cells.size());
  for (std::size_t column = 0; column < cells.size(); ++column) {
    widths_[column] = std::max(widths_[column], cells[column].size());
  }
  rows_.push_back(std::move(cells));
}

void TextTable::Print(std::ostream& out) const {
  for (auto const& cells : rows_) {
    std::string line;
    for (std::size_t column = 0; column < cells.size(); ++column) {
      line += "  " + cells[column];
      line.append(widths_[column] - cells[column].size(), ' ');
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
}

}  // namespace settings_tour
