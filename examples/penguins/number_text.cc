#include "penguins/number_text.h"

#include <cstdio>

namespace penguins {

std::string Short(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", number);
  return text;
}

std::string Fixed(double number, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, number);
  return text;
}

std::string Percent(double percent) { return Fixed(percent, 1) + " %"; }

}  // namespace penguins
