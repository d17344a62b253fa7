#include "bare_tree.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tree::score {
namespace {

constexpr std::uint16_t kMissingRight = 1;

}  // namespace

BareTree::BareTree(NodeImp const& root, double missingValue) : missingValue_(missingValue) {
  std::vector<NodeImp const*> nodes = {&root};
  for (std::size_t next = 0; next < nodes.size(); ++next) {
    NodeImp const& node = *nodes[next];
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
    entries_.push_back({rule.GetCutPoint(), static_cast<std::uint32_t>(nodes.size()),
                        static_cast<std::uint16_t>(rule.GetPredictorIndex()),
                        missingRight ? kMissingRight : std::uint16_t{0}});
    nodes.push_back(node.GetChildImp(leftChild));
    nodes.push_back(node.GetChildImp(1 - leftChild));
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

template <class Value>
void BareTree::FindComplete(Value const* rows, std::size_t numRows, std::size_t stride,
                            std::uint32_t* ids) const {
  constexpr std::size_t kLanes = 16;
  Entry const* const entries = entries_.data();
  std::size_t row = 0;
  for (; row + kLanes <= numRows; row += kLanes) {
    std::uint32_t lanes[kLanes] = {};
    std::uint32_t moved = 1;
    while (moved != 0) {
      moved = 0;
#pragma GCC unroll 16
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        Entry const& entry = entries[lanes[lane]];
        auto const value = static_cast<double>(rows[(row + lane) * stride + entry.predictor]);
        std::uint32_t const next = entry.left + static_cast<std::uint32_t>(!(value <= entry.cut));
        moved |= next ^ lanes[lane];
        lanes[lane] = next;
      }
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane) ids[row + lane] = ids_[lanes[lane]];
  }
  for (; row < numRows; ++row) ids[row] = FindOne(rows + row * stride);
}

template <class Value>
void BareTree::FindIncomplete(Value const* rows, std::size_t numRows, std::size_t stride,
                              std::uint32_t* ids) const {
  constexpr std::size_t kLanes = 8;
  Entry const* const entries = entries_.data();
  for (std::size_t row = 0; row < numRows; row += kLanes) {
    std::size_t const count = std::min(kLanes, numRows - row);
    std::uint32_t lanes[kLanes] = {};
    std::uint32_t moved = 1;
    while (moved != 0) {
      moved = 0;
#pragma GCC unroll 8
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        Entry const& entry = entries[lanes[lane]];
        std::size_t const from = row + std::min(lane, count - 1);
        auto const value = static_cast<double>(rows[from * stride + entry.predictor]);
        std::uint32_t right = static_cast<std::uint32_t>(!(value <= entry.cut));
        bool const isEnd = std::isnan(entry.cut);
        if (value == missingValue_ && !isEnd) right = entry.flags & kMissingRight;
        std::uint32_t const next = entry.left + right;
        moved |= next ^ lanes[lane];
        lanes[lane] = next;
      }
    }
    for (std::size_t lane = 0; lane < count; ++lane) ids[row + lane] = ids_[lanes[lane]];
  }
}

template <class Value>
void BareTree::FindBySurrogates(Value const* rows, std::size_t numRows, std::size_t stride,
                                std::uint32_t* ids) const {
  constexpr std::size_t kLanes = 8;
  Entry const* const entries = entries_.data();
  for (std::size_t row = 0; row < numRows; row += kLanes) {
    std::size_t const count = std::min(kLanes, numRows - row);
    std::uint32_t lanes[kLanes] = {};
    std::uint32_t moved = 1;
    while (moved != 0) {
      moved = 0;
#pragma GCC unroll 8
      for (std::size_t lane = 0; lane < kLanes; ++lane) {
        std::uint32_t const at = lanes[lane];
        Entry const& entry = entries[at];
        Value const* const from = rows + (row + std::min(lane, count - 1)) * stride;
        auto value = static_cast<double>(from[entry.predictor]);
        std::uint32_t right = static_cast<std::uint32_t>(!(value <= entry.cut));
        if (value == missingValue_ && !std::isnan(entry.cut)) {
          right = entry.flags & kMissingRight;
          for (std::uint32_t each = firstSurrogate_[at]; each < firstSurrogate_[at + 1]; ++each) {
            Surrogate const& surrogate = surrogates_[each];
            value = static_cast<double>(from[surrogate.predictor]);
            if (value == missingValue_) continue;
            right = static_cast<std::uint32_t>(!(value <= surrogate.cut)) ^ surrogate.isReversed;
            break;
          }
        }
        std::uint32_t const next = entry.left + right;
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

template void BareTree::FindComplete(float const*, std::size_t, std::size_t, std::uint32_t*) const;
template void BareTree::FindComplete(double const*, std::size_t, std::size_t, std::uint32_t*) const;
template void BareTree::FindIncomplete(float const*, std::size_t, std::size_t,
                                       std::uint32_t*) const;
template void BareTree::FindIncomplete(double const*, std::size_t, std::size_t,
                                       std::uint32_t*) const;
template void BareTree::FindBySurrogates(float const*, std::size_t, std::size_t,
                                         std::uint32_t*) const;
template void BareTree::FindBySurrogates(double const*, std::size_t, std::size_t,
                                         std::uint32_t*) const;
template std::uint32_t BareTree::FindOne(float const*) const;
template std::uint32_t BareTree::FindOne(double const*) const;

}  // namespace tree::score
