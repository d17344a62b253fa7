#include "bare_tree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace tree::score {
namespace {

// Flags of entries.
constexpr std::uint16_t kDetour = 1;  // the missing value goes where the cut point does not send it
constexpr std::uint16_t kMissingRight = 2;

constexpr std::size_t kRowsAhead = 64;

template <class Value>
void CallFor(Value const* values, std::size_t count) {
  for (std::size_t index = 0; index < count; index += 64 / sizeof(Value)) {
    __builtin_prefetch(values + index);
  }
}

}  // namespace

BareTree::BareTree(NodeImp const& root, double missingValue) : missingValue_(missingValue) {
  std::vector<NodeImp const*> nodes = {&root};
  std::vector<int> levels = {0};
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    NodeImp const& node = *nodes[next];
    depth_ = levels[next];
    auto const here = static_cast<std::uint32_t>(next);
    ids_.push_back(node.GetId());
    firstSurrogate_.push_back(static_cast<std::uint32_t>(surrogates_.size()));
    if (node.GetNumChildren() == 0) {
      entries_.push_back({std::numeric_limits<double>::quiet_NaN(), here - 1, 0, 0});
      continue;
    }
    auto const& rule = dynamic_cast<OSplitRule const&>(*node.GetCompetitorImp(0));
    auto const leftChild = static_cast<unsigned int>(rule.Classify(rule.GetCutPoint()));
    bool const missingRight = rule.GetDumbChildPos() != static_cast<int>(leftChild);
    bool const isDetour = missingRight != !(missingValue <= rule.GetCutPoint());
    entries_.push_back({rule.GetCutPoint(), static_cast<std::uint32_t>(nodes.size()),
                        static_cast<std::uint16_t>(rule.GetPredictorIndex()),
                        static_cast<std::uint16_t>((missingRight ? kMissingRight : 0) |
                                                   (isDetour ? kDetour : 0))});
    nodes.push_back(node.GetChildImp(leftChild));
    nodes.push_back(node.GetChildImp(1 - leftChild));
    levels.insert(levels.end(), 2, depth_ + 1);
    for (int position = 0; position < node.GetNumSurrogates(); ++position) {
      auto const& surrogate = dynamic_cast<OSplitRule const&>(
          *node.GetSurrogateImp(static_cast<unsigned int>(position)));
      bool const isReversed =
          surrogate.Classify(surrogate.GetCutPoint()) != static_cast<int>(leftChild);
      surrogates_.push_back({surrogate.GetCutPoint(),
                             static_cast<std::uint32_t>(surrogate.GetPredictorIndex()),
                             isReversed ? 1U : 0U});
    }
  }
  firstSurrogate_.push_back(static_cast<std::uint32_t>(surrogates_.size()));
}

/// Sixteen rows at a time, each at its own place in the tree. `move`: from an entry to the next,
/// with the value of the row.
template <class Value, class Move>
void BareTree::FindInFlight(Value const* rows, std::size_t numRows, std::size_t stride, Until until,
                            Move const& move, std::uint32_t* ids) const {
  constexpr std::size_t kLanes = 16;
  if (numRows < kLanes) throw std::invalid_argument("a bare tree takes 16 rows at least");
  Entry const* const entries = entries_.data();
  for (std::size_t row = 0; row < numRows; row += kLanes) {
    // The last rows are looked at once more, together with some before them.
    if (row + kLanes > numRows) row = numRows - kLanes;
    CallFor(rows + (row + kRowsAhead) * stride, kLanes * stride);
    std::uint32_t lanes[kLanes] = {};
    std::uint32_t moved = 1;
    for (int step = 0; until == Until::kLastLevel ? step < depth_ : moved != 0; ++step) {
      moved = 0;
#pragma GCC unroll 16
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        Entry const& entry = entries[lanes[lane]];
        std::uint32_t const next =
            entry.left + move(entry, rows[(row + lane) * stride + entry.predictor]);
        moved |= next ^ lanes[lane];
        lanes[lane] = next;
      }
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) ids[row + lane] = ids_[lanes[lane]];
  }
}

template <class Value>
void BareTree::FindComplete(Value const* rows, std::size_t numRows, std::size_t stride, Until until,
                            std::uint32_t* ids) const {
  auto const move = [](Entry const& entry, Value value) {
    return static_cast<std::uint32_t>(!(static_cast<double>(value) <= entry.cut));
  };
  FindInFlight(rows, numRows, stride, until, move, ids);
}

/// Whether the missing value, compared with the cut point, goes another way than it should is a
/// flag of the entry.
template <class Value>
auto BareTree::MoveIncomplete() const {
  using Bits = std::conditional_t<sizeof(Value) == 8, std::uint64_t, std::uint32_t>;
  return [missing = std::bit_cast<Bits>(static_cast<Value>(missingValue_))](Entry const& entry,
                                                                            Value value) {
    auto const right = static_cast<std::uint32_t>(!(static_cast<double>(value) <= entry.cut));
    auto const isMissing = static_cast<std::uint32_t>(std::bit_cast<Bits>(value) == missing);
    return right ^ (isMissing & std::uint32_t{entry.flags});
  };
}

template <class Value>
void BareTree::FindIncomplete(Value const* rows, std::size_t numRows, std::size_t stride,
                              Until until, std::uint32_t* ids) const {
  FindInFlight(rows, numRows, stride, until, MoveIncomplete<Value>(), ids);
}

/// From an entry to the next.
template <class Value>
inline std::uint32_t BareTree::MoveBySurrogates(std::uint32_t at, Value const* row) const {
  Entry const& entry = entries_[at];
  auto value = static_cast<double>(row[entry.predictor]);
  std::uint32_t right = static_cast<std::uint32_t>(!(value <= entry.cut));
  if (value == missingValue_ && !std::isnan(entry.cut)) {
    right = (entry.flags & kMissingRight) != 0 ? 1 : 0;
    for (std::uint32_t each = firstSurrogate_[at]; each < firstSurrogate_[at + 1]; ++each) {
      Surrogate const& surrogate = surrogates_[each];
      value = static_cast<double>(row[surrogate.predictor]);
      if (value == missingValue_) continue;
      right = static_cast<std::uint32_t>(!(value <= surrogate.cut)) ^ surrogate.isReversed;
      break;
    }
  }
  return entry.left + right;
}

template <class Value>
void BareTree::FindBySurrogates(Value const* rows, std::size_t numRows, std::size_t stride,
                                std::uint32_t* ids) const {
  constexpr std::size_t kLanes = 8;
  for (std::size_t row = 0; row < numRows; row += kLanes) {
    std::size_t const count = std::min(kLanes, numRows - row);
    std::uint32_t lanes[kLanes] = {};
    std::uint32_t moved = 1;
    while (moved != 0) {
      moved = 0;
#pragma GCC unroll 8
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        std::uint32_t const at = lanes[lane];
        std::uint32_t const next =
            MoveBySurrogates(at, rows + (row + std::min(lane, count - 1)) * stride);
        moved |= next ^ at;
        lanes[lane] = next;
      }
    }
    for (std::size_t lane = 0; lane < count; ++lane) ids[row + lane] = ids_[lanes[lane]];
  }
}

template <class Value>
std::uint32_t BareTree::FindOne(Value const* row) const {
  std::uint32_t at = 0;
  for (;;) {
    Entry const& entry = entries_[at];
    auto const value = static_cast<double>(row[entry.predictor]);
    std::uint32_t const next = entry.left + static_cast<std::uint32_t>(!(value <= entry.cut));
    if (next == at) return ids_[at];
    at = next;
  }
}

template <class Value>
std::uint32_t BareTree::FindOneIncomplete(Value const* row) const {
  auto const move = MoveIncomplete<Value>();
  std::uint32_t at = 0;
  for (;;) {
    Entry const& entry = entries_[at];
    std::uint32_t const next = entry.left + move(entry, row[entry.predictor]);
    if (next == at) return ids_[at];
    at = next;
  }
}

template <class Value>
std::uint32_t BareTree::FindOneBySurrogates(Value const* row) const {
  std::uint32_t at = 0;
  for (;;) {
    std::uint32_t const next = MoveBySurrogates(at, row);
    if (next == at) return ids_[at];
    at = next;
  }
}

template void BareTree::FindComplete(float const*, std::size_t, std::size_t, Until,
                                     std::uint32_t*) const;
template void BareTree::FindComplete(double const*, std::size_t, std::size_t, Until,
                                     std::uint32_t*) const;
template void BareTree::FindIncomplete(float const*, std::size_t, std::size_t, Until,
                                       std::uint32_t*) const;
template void BareTree::FindIncomplete(double const*, std::size_t, std::size_t, Until,
                                       std::uint32_t*) const;
template void BareTree::FindBySurrogates(float const*, std::size_t, std::size_t,
                                         std::uint32_t*) const;
template void BareTree::FindBySurrogates(double const*, std::size_t, std::size_t,
                                         std::uint32_t*) const;
template std::uint32_t BareTree::FindOne(float const*) const;
template std::uint32_t BareTree::FindOne(double const*) const;
template std::uint32_t BareTree::FindOneIncomplete(float const*) const;
template std::uint32_t BareTree::FindOneIncomplete(double const*) const;
template std::uint32_t BareTree::FindOneBySurrogates(float const*) const;
template std::uint32_t BareTree::FindOneBySurrogates(double const*) const;

}  // namespace tree::score
