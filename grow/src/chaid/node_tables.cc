#include "chaid/node_tables.h"

namespace tree::grow {

TableLayout::TableLayout(std::span<std::size_t const> numCategories, std::size_t rowSize)
    : begins_{0}, rowSize_(rowSize) {
  begins_.reserve(numCategories.size() + 1);
  for (std::size_t const count : numCategories) begins_.push_back(begins_.back() + count * rowSize);
}

}  // namespace tree::grow
