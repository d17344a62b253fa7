#ifndef TREE_EXAMPLES_SETTINGS_TOUR_TEXT_TABLE_H_
#define TREE_EXAMPLES_SETTINGS_TOUR_TEXT_TABLE_H_

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace settings_tour {

/// Rows of text in columns, each as wide as its widest cell.
class TextTable {
 public:
  void AddRow(std::vector<std::string> cells);
  void Print(std::ostream& out) const;

 private:
  std::vector<std::vector<std::string>> rows_;
  std::vector<std::size_t> widths_;  // by column
};

}  // namespace settings_tour

#endif  // TREE_EXAMPLES_SETTINGS_TOUR_TEXT_TABLE_H_
