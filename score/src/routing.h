#ifndef TREE_SCORE_SRC_ROUTING_H_
#define TREE_SCORE_SRC_ROUTING_H_

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "case_values.h"
#include "flat_tree.h"

// How a case gets from a node to the next, one node at a time.

namespace tree::score {

/// Whether a value stands for a code from 0 to `numCodes` - 1, which goes to `code`.
inline bool FindCode(double value, std::uint32_t numCodes, std::uint32_t& code) {
  if (!(value >= 0.0 && value < static_cast<double>(numCodes))) return false;
  code = static_cast<std::uint32_t>(value);
  return static_cast<double>(code) == value;
}

/// The child of a value by halves of codes, if they tell it.
inline std::uint32_t FindInHalves(std::uint64_t halves, double value) {
  std::uint32_t code = 0;
  if (!FindCode(value, kCodesInHalf, code)) return kNoChild;
  std::uint64_t const bits = halves >> code;
  if ((bits >> kCodesInHalf & 1U) == 0) return kNoChild;
  return static_cast<std::uint32_t>(bits & 1U);
}

/// The child of the first cut point at or above the value, or else the one above all.
inline std::uint32_t FindInterval(Slot const* cuts, std::uint32_t numCuts, std::uint32_t above,
                                  double value) {
  if (std::isnan(value)) return above;
  std::uint32_t begin = 0;
  std::uint32_t end = numCuts;
  while (begin < end) {
    std::uint32_t const middle = begin + (end - begin) / 2;
    if (cuts[middle].GetCut() >= value) {
      end = middle;
    } else {
      begin = middle + 1;
    }
  }
  return begin < numCuts ? cuts[begin].link : above;
}

/// The slot of the child of a general node.
template <class Missing, class Values>
std::uint32_t FollowGeneral(Slot const* slots, Slot const& node, Values const& values,
                            std::size_t row) {
  Slot const* rule = slots + node.link + node.GetLow();
  for (;;) {
    bool const ordered = rule->Has(GeneralRule::kOrdered);
    std::uint32_t const tableSize = rule->GetLow();
    Slot const* const table = rule + 2;
    double const value = values.Get(row, rule->GetPredictor());
    std::uint32_t child = kNoChild;
    if (ordered) {
      bool const isMissing = value == rule[1].GetCut() || Missing::IsNullValue(value);
      child = isMissing ? rule->link : FindInterval(table, tableSize, rule->GetHigh(), value);
    } else {
      std::uint32_t code = 0;
      if (FindCode(value, tableSize, code)) child = GetCodeChild(table, code);
      if (child == kNoChild) child = rule->link;
    }
    if (child != kNoChild) return node.link + child;
    if (rule->Has(Slot::kLast)) return node.link + node.GetHigh();
    rule = table + CountTableSlots(ordered, tableSize);
  }
}

/// The slot of the child of a node with two children for a case whose value of the node's rule is
/// missing.
template <class Missing, class Values>
std::uint32_t FollowSurrogates(Slot const* slots, Slot const& node, double missingValue,
                               Values const& values, std::size_t row) {
  std::uint32_t const stays = node.Has(Slot::kStays) ? 1 : 0;
  if (node.Has(Slot::kHasSurrogates)) {
    for (Slot const* surrogate = slots + node.link + 2 + stays;; ++surrogate) {
      double const value = values.Get(row, surrogate->GetPredictor());
      if (surrogate->GetKind() == Kind::kCodes) {
        std::uint32_t const child = FindInHalves(surrogate->payload, value);
        if (child != kNoChild) return node.link + child;
      } else if (!Missing::IsMissing(value, missingValue)) {
        bool const isAbove = !(value <= surrogate->GetCut());
        return node.link + static_cast<std::uint32_t>(isAbove != surrogate->Has(Slot::kReversed));
      }
      if (surrogate->Has(Slot::kPlacesMissing)) {
        return node.link + static_cast<std::uint32_t>(surrogate->Has(Slot::kMissingRight));
      }
      if (surrogate->Has(Slot::kLast)) break;
    }
  }
  if (stays != 0) return node.link + 2;
  return node.link + static_cast<std::uint32_t>(node.Has(Slot::kMissingRight));
}

/// The slot of the child of a node that is not plain, or whose value is missing.
template <class Missing, class Values>
std::uint32_t FollowSlowly(Slot const* slots, Slot const& node, double missingValue,
                           Values const& values, std::size_t row) {
  if (node.GetKind() == Kind::kGeneral) return FollowGeneral<Missing>(slots, node, values, row);
  if (node.GetKind() == Kind::kBinary) {
    return FollowSurrogates<Missing>(slots, node, missingValue, values, row);
  }
  double const value = values.Get(row, node.GetPredictor());
  if (node.Has(Slot::kSlow)) {
    std::uint32_t const child = FindInHalves(node.payload, value);
    if (child != kNoChild) return node.link + child;
    return FollowSurrogates<Missing>(slots, node, missingValue, values, row);
  }
  std::uint32_t code = 0;
  bool const isCode = FindCode(value, 64, code);
  std::uint64_t const right = isCode ? node.payload >> code : node.word >> Slot::kMissingRightShift;
  return node.link + static_cast<std::uint32_t>(right & 1U);
}

/// What a step from a node comes to, if it is not to be done slowly.
struct Step {
  std::uint32_t next;
  std::uint32_t ends;    // 0 or 1: whether a case ends there
  std::uint32_t isSlow;  // 0 or 1: whether `FollowSlowly` has to do it
};

/// A step from a node without a branch. `Plain`: the node is known to be plain.
template <class Missing, bool Plain>
inline Step TakeStep(Slot const& node, double value, double missingValue) {
  std::uint32_t right = static_cast<std::uint32_t>(!(value <= node.GetCut()));
  std::uint32_t isSlow = 0;
  if constexpr (!Plain) {
    isSlow = static_cast<std::uint32_t>((node.word & Slot::kKindMask) != 0);
  }
  if constexpr (Missing::kMayMiss) {
    auto const isMissing = static_cast<std::uint32_t>(Missing::IsMissing(value, missingValue));
    if constexpr (Missing::kHasNulls) {
      right ^= isMissing & (right ^ (node.word >> Slot::kMissingRightShift));
    } else {
      right ^= isMissing & (node.word >> Slot::kDetourShift);
    }
    if constexpr (!Plain) isSlow |= isMissing & (node.word >> Slot::kSlowShift);
  }
  return {node.link + right, (node.word >> (Slot::kEndsShift + right)) & 1U, isSlow};
}

/// A step of one case from any node. Apart from the likely steps, so that those stay short.
template <class Value>
[[gnu::noinline, gnu::cold]] std::uint32_t FollowAny(FlatTree const& tree, std::uint32_t position,
                                                     Value const* values) {
  Slot const* const slots = tree.GetSlots();
  Slot const& node = slots[position];
  double const missingValue = tree.GetHeader().missingValue;
  RowValues<Value> const row(values, 0);
  double const value = row.Get(0, node.GetPredictor());
  Step const step = TakeStep<MissingByValue, false>(node, value, missingValue);
  if (step.isSlow == 0) return step.next;
  return FollowSlowly<MissingByValue>(slots, node, missingValue, row, 0);
}

/// The first position from `position` on that is no plain node, or whose value is `suspect`, bit by
/// bit. What is unlikely leaves the loop, so that a step is one taken branch.
template <class Value>
inline std::uint32_t SkipPlain(Slot const* slots, std::uint32_t position, Value const* values,
                               Value suspect) {
  using Bits = std::conditional_t<sizeof(Value) == 8, std::uint64_t, std::uint32_t>;
  auto const suspectBits = std::bit_cast<Bits>(suspect);
  for (;;) {
    Slot const& node = slots[position];
    if ((node.word & Slot::kKindMask) != 0) [[unlikely]]
      return position;
    Value const value = values[node.word & Slot::kPredictorMask];
    if (std::bit_cast<Bits>(value) == suspectBits) [[unlikely]]
      return position;
    position =
        node.link + static_cast<std::uint32_t>(!(static_cast<double>(value) <= node.GetCut()));
  }
}

/// The position at which one case ends. Nothing can be done for other cases
/// while the way of this one is found out, so what is unlikely is left to branches: only a value
/// that is `suspect` may be missing.
template <class Value>
std::uint32_t FollowOne(FlatTree const& tree, Value const* values, Value suspect) {
  Slot const* const slots = tree.GetSlots();
  std::uint32_t position = SkipPlain(slots, 0, values, suspect);
  while (slots[position].GetKind() != Kind::kEnd) {
    position = SkipPlain(slots, FollowAny(tree, position, values), values, suspect);
  }
  return position;
}

/// The position at which one case ends.
template <class Value>
std::uint32_t FindEnd(FlatTree const& tree, Value const* values, Value missingValue) {
  if (missingValue != Value{0}) return FollowOne(tree, values, missingValue);
  // Zero is missing whatever its sign, so that its bits do not tell.
  std::uint32_t position = 0;
  while (tree.GetSlots()[position].GetKind() != Kind::kEnd) {
    position = FollowAny(tree, position, values);
  }
  return position;
}

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_ROUTING_H_
