#ifndef TREE_GROW_SRC_DATA_NUMBER_TEXT_H_
#define TREE_GROW_SRC_DATA_NUMBER_TEXT_H_

#include <array>
#include <charconv>
#include <string>

namespace tree::grow {

/// The shortest text that reads back as the number.
inline std::string NumberText(double number) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_DATA_NUMBER_TEXT_H_
