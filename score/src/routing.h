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

/// The missing values to binary nodes.
template <class Missing>
class MissingValues {
 public:
  explicit MissingValues(FlatTree const& tree)
      : common_(tree.GetHeader().missingValue), byPredictor_(tree.GetMissingValues()) {}

  double Get([[maybe_unused]] std::uint32_t predictor) const {
    if constexpr (Missing::kByPredictor) {
      return byPredictor_[predictor];
    } else {
      return common_;
    }
  }
  double GetCommon() const { return common_; }
  double const* GetByPredictor() const { return byPredictor_; }

 private:
  double common_;
  double const* byPredictor_;
};

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
std::uint32_t FollowSurrogates(Slot const* slots, Slot const& node,
                               MissingValues<Missing> const& missing, Values const& values,
                               std::size_t row) {
  std::uint32_t const stays = node.Has(Slot::kStays) ? 1 : 0;
  if (node.Has(Slot::kHasSurrogates)) {
    for (Slot const* surrogate = slots + node.link + 2 + stays;; ++surrogate) {
      std::uint32_t const predictor = surrogate->GetPredictor();
      double const value = values.Get(row, predictor);
      if (surrogate->GetKind() == Kind::kCodes) {
        std::uint32_t const child = FindInHalves(surrogate->payload, value);
        if (child != kNoChild) return node.link + child;
      } else if (!Missing::IsMissing(value, missing.Get(predictor))) {
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
std::uint32_t FollowSlowly(Slot const* slots, Slot const& node,
                           MissingValues<Missing> const& missing, Values const& values,
                           std::size_t row) {
  if (node.GetKind() == Kind::kGeneral) return FollowGeneral<Missing>(slots, node, values, row);
  if (node.GetKind() == Kind::kBinary) {
    return FollowSurrogates<Missing>(slots, node, missing, values, row);
  }
  double const value = values.Get(row, node.GetPredictor());
  if (node.Has(Slot::kSlow)) {
    std::uint32_t const child = FindInHalves(node.payload, value);
    if (child != kNoChild) return node.link + child;
    return FollowSurrogates<Missing>(slots, node, missing, values, row);
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
template <class Missing, class Value>
[[gnu::noinline, gnu::cold]] std::uint32_t FollowAny(FlatTree const& tree, std::uint32_t position,
                                                     Value const* values) {
  Slot const* const slots = tree.GetSlots();
  Slot const& node = slots[position];
  MissingValues<Missing> const missing(tree);
  RowValues<Value> const row(values, 0);
  std::uint32_t const predictor = node.GetPredictor();
  double const value = row.Get(0, predictor);
  Step const step = TakeStep<Missing, false>(node, value, missing.Get(predictor));
  if (step.isSlow == 0) return step.next;
  return FollowSlowly<Missing>(slots, node, missing, row, 0);
}

/// The first position from `position` on that is no plain node, or whose value may be missing
/// (`isSuspect`, of a value and its predictor). What is unlikely leaves the loop, so that a step is
/// one taken branch.
template <class Value, class IsSuspect>
inline std::uint32_t SkipPlain(Slot const* slots, std::uint32_t position, Value const* values,
                               IsSuspect const& isSuspect) {
  for (;;) {
    Slot const& node = slots[position];
    if ((node.word & Slot::kKindMask) != 0) [[unlikely]]
      return position;
    std::uint32_t const predictor = node.GetPredictor();
    Value const value = values[predictor];
    if (isSuspect(value, predictor)) [[unlikely]]
      return position;
    position =
        node.link + static_cast<std::uint32_t>(!(static_cast<double>(value) <= node.GetCut()));
  }
}

/// The position at which one case ends. Nothing can be done for other cases while the way of this
/// one is found out, so what is unlikely is left to branches.
template <class Missing, class Value, class IsSuspect>
std::uint32_t FollowOne(FlatTree const& tree, Value const* values, IsSuspect const& isSuspect) {
  Slot const* const slots = tree.GetSlots();
  std::uint32_t position = SkipPlain(slots, 0, values, isSuspect);
  while (slots[position].GetKind() != Kind::kEnd) {
    position = SkipPlain(slots, FollowAny<Missing>(tree, position, values), values, isSuspect);
  }
  return position;
}

/// Calls for a row at once, as far as most rows go: the way down would call for one line of it
/// after the other.
inline void CallForRow(void const* values) {
  // There is no row where a tree of one node asks for none.
  if (values == nullptr) return;
  auto const* const row = static_cast<char const*>(values);
  __builtin_prefetch(row);
  __builtin_prefetch(row + 64);
  __builtin_prefetch(row + 128);
}

/// The position at which one case ends. `missing`: the missing value of the header, as a `Value`.
template <class Value>
std::uint32_t FindEnd(FlatTree const& tree, Value const* values, Value missing) {
  CallForRow(values);
  if (tree.HasOwnMissingValues()) {
    return FollowOne<ByPredictor<MissingByValue>>(
        tree, values, [all = tree.GetMissingValues()](Value value, std::uint32_t predictor) {
          return static_cast<double>(value) == all[predictor];
        });
  }
  // Zero is missing whatever its sign, so that its bits do not tell.
  if (missing == Value{0}) {
    return FollowOne<MissingByValue>(tree, values,
                                     [](Value value, std::uint32_t) { return value == Value{0}; });
  }
  using Bits = std::conditional_t<sizeof(Value) == 8, std::uint64_t, std::uint32_t>;
  return FollowOne<MissingByValue>(
      tree, values, [bits = std::bit_cast<Bits>(missing)](Value value, std::uint32_t) {
        return std::bit_cast<Bits>(value) == bits;
      });
}

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_ROUTING_H_
