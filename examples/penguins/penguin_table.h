#ifndef EXAMPLES_PENGUINS_PENGUIN_TABLE_H_
#define EXAMPLES_PENGUINS_PENGUIN_TABLE_H_

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The penguins as the tree sees them: numbers only. Species and islands become codes, the positions
// of their names in the lists below; what is missing becomes the missing value of the library.

namespace penguins {

inline constexpr std::array<std::string_view, 3> kSpecies = {"Adelie", "Chinstrap", "Gentoo"};
enum Species : int { kAdelie, kChinstrap, kGentoo };

inline constexpr std::array<std::string_view, 3> kIslands = {"Biscoe", "Dream", "Torgersen"};
enum Island : int { kBiscoe, kDream, kTorgersen };

/// The predictors, by predictor index. The island is nominal, the others are continuous.
inline constexpr std::array<std::string_view, 5> kPredictors = {
    "island", "bill_length_mm", "bill_depth_mm", "flipper_length_mm", "body_mass_g"};
enum Predictor : int { kIsland, kBillLength, kBillDepth, kFlipperLength, kBodyMass };

struct Penguin {
  int line;                                       // of the file
  int species;                                    // code
  std::array<double, kPredictors.size()> values;  // by predictor index

  bool HasMissingValues() const;
};

struct PenguinTable {
  std::vector<Penguin> penguins;     // at least one
  std::vector<std::string> remarks;  // on values that were not taken as they stand
};

/// Whether a predictor's value is the missing value.
bool IsMissing(double value);

/// Reads the columns `species` and `kPredictors`; others may be there and are not looked at.
/// Empty fields are missing values. So are NaN and NA, each with a remark. Throws `InputError` for
/// anything else that is no number, no island or no species.
PenguinTable ReadPenguins(std::string const& file);

}  // namespace penguins

#endif  // EXAMPLES_PENGUINS_PENGUIN_TABLE_H_
