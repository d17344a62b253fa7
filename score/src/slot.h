#ifndef TREE_SCORE_SRC_SLOT_H_
#define TREE_SCORE_SRC_SLOT_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace tree::score {

/// What a slot is.
enum class Kind : std::uint32_t {
  kBinary = 0,   ///< a node with two children and one cut point
  kCodes = 1,    ///< a node with two children and a set of up to 64 category codes
  kGeneral = 2,  ///< a node with any number of children and of rules, held in tables
  kEnd = 3,      ///< where cases end
};

/// A node, or what a node keeps beside its children. The flat form of a
/// tree is an array of them with the root at position 0; each node refers to a group of slots
/// further back, its children side by side and then what else belongs to it. Halves are what a
/// nominal rule says of codes up to 31: bit c of the low half is the child of code c, and bit c of
/// the high half whether there is one.
///
/// * `kBinary`: `payload` is the cut point. The group: the child of the values up to it, that of
///   those above, then, with `kStays`, an end for cases that no rule can place, then, with
///   `kHasSurrogates`, surrogates (`payload` a cut point) up to the one with `kLast`.
///   The payload of a surrogate with the kind `kCodes` is halves instead.
/// * `kCodes`: bit c of `payload` is the child of code c, and all other values are missing. With
///   `kSlow`, `payload` is halves. The group: as that of `kBinary`.
/// * `kGeneral`: `payload` is the number of children, in its low half, and the child that takes
/// what
///   no rule can place, in its high half. The group: the children, by position, with an end for
///   cases that stay behind them where there are any, then rules (`GeneralRule`) up to the last.
///   The predictor is that of the first rule.
/// * `kEnd`: `payload` is the prediction, or, in a tree with class probabilities, the predicted
/// class
///   in its low half and the place of the probabilities in its high half; `link` the identifier.
struct Slot {
  std::uint64_t payload;
  std::uint32_t link;  // first slot of the group
  std::uint32_t word;  // predictor, kind and flags

  static constexpr std::uint32_t kPredictorMask = (1U << 22) - 1;
  static constexpr std::uint32_t kKindShift = 22;
  static constexpr std::uint32_t kKindMask = 3U << kKindShift;

  // Flags of nodes. Bits of the left and the right child, in this order:
  static constexpr std::uint32_t kEndsShift = 24;
  static constexpr std::uint32_t kLeftEnds = 1U << 24;   // the first child is an end
  static constexpr std::uint32_t kRightEnds = 1U << 25;  // the second child is an end
  static constexpr std::uint32_t kMissingRightShift = 26;
  static constexpr std::uint32_t kMissingRight = 1U << 26;  // where missing values go at last
  static constexpr std::uint32_t kDetourShift = 27;
  static constexpr std::uint32_t kDetour = 1U << 27;  // which is not where the cut point sends them
  static constexpr std::uint32_t kSlowShift = 28;
  static constexpr std::uint32_t kSlow = 1U << 28;  // missing values need more than a direction
  static constexpr std::uint32_t kHasSurrogates = 1U << 29;
  static constexpr std::uint32_t kStays = 1U << 30;  // what no surrogate can place ends here
  // Flag of an end:
  static constexpr std::uint32_t kInner = 1U << 24;  // of cases that stay at an inner node
  // Flags of a surrogate, beside kMissingRight:
  static constexpr std::uint32_t kReversed = 1U << 24;  // values above the cut go left
  static constexpr std::uint32_t kPlacesMissing = 1U << 25;
  static constexpr std::uint32_t kLast = 1U << 31;  // of the surrogates, or the rules

  double GetCut() const { return std::bit_cast<double>(payload); }
  std::uint32_t GetPredictor() const { return word & kPredictorMask; }
  Kind GetKind() const { return static_cast<Kind>((word & kKindMask) >> kKindShift); }
  bool Has(std::uint32_t flag) const { return (word & flag) != 0; }
  std::uint32_t GetLow() const { return static_cast<std::uint32_t>(payload); }
  std::uint32_t GetHigh() const { return static_cast<std::uint32_t>(payload >> 32U); }
};
static_assert(sizeof(Slot) == 16);

constexpr std::uint32_t KindBits(Kind kind) {
  return static_cast<std::uint32_t>(kind) << Slot::kKindShift;
}

constexpr std::uint64_t Pack(std::uint32_t low, std::uint32_t high) {
  return low | static_cast<std::uint64_t>(high) << 32U;
}

/// A child position for none.
constexpr std::uint32_t kNoChild = std::numeric_limits<std::uint32_t>::max();

/// How a general node keeps a rule: two slots, and then a table in as many slots as it takes: of an
/// ordinal rule a slot per cut point, ascending, with its child as `link`; of a nominal rule
/// `kCodesPerSlot` children by category code.
struct GeneralRule {
  Slot first;   // payload: size of the table, child above all cut points; link: child of the
                // missing values; word: predictor and flags
  Slot second;  // payload: the missing value

  static constexpr std::uint32_t kOrdered = 1U << 24;
  static constexpr std::uint32_t kCodesPerSlot = 4;
};
static_assert(sizeof(GeneralRule) == 2 * sizeof(Slot));

/// Number of slots of a rule's table.
inline std::uint64_t CountTableSlots(bool ordered, std::uint32_t tableSize) {
  if (ordered) return tableSize;
  return (std::uint64_t{tableSize} + GeneralRule::kCodesPerSlot - 1) / GeneralRule::kCodesPerSlot;
}

/// How many codes halves tell of.
constexpr std::uint32_t kCodesInHalf = 32;

/// The child of a code in the table of a nominal rule. Requires a code within the table.
inline std::uint32_t GetCodeChild(Slot const* table, std::uint32_t code) {
  std::uint32_t child = 0;
  std::memcpy(&child, reinterpret_cast<char const*>(table) + sizeof(child) * std::size_t{code},
              sizeof(child));
  return child;
}

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_SLOT_H_
