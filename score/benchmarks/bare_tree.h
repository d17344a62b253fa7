#ifndef TREE_SCORE_BENCHMARKS_BARE_TREE_H_
#define TREE_SCORE_BENCHMARKS_BARE_TREE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tree/nodes.h"

namespace tree::score {

/// What scoring cannot be expected to beat by much: nothing but cut points, predictors and children
/// of a binary tree in one array, and rows in flight. No answer but where cases end, no check, no
/// other kind of rule, no other place for values than rows.
class BareTree {
 public:
  /// Of a tree of binary ordinal rules whose missing values, one for all rules, go to surrogates
  /// and then the dumb rule.
  explicit BareTree(NodeImp const& root, double missingValue);

  /// Whether any node has a surrogate.
  bool HasSurrogates() const { return !surrogates_.empty(); }

  /// When rows in flight have ended: when none moves any more, or after as many steps as the tree
  /// has levels, which is less work where most rows get to the last one.
  enum class Until { kNoneMoves, kLastLevel };

  /// Where each of the rows ends, by identifier. `stride`: from row to row. The first two throw
  /// `std::invalid_argument` for fewer than 16 rows.
  ///@{
  /// Without missing values.
  template <class Value>
  void FindComplete(Value const* rows, std::size_t numRows, std::size_t stride, Until until,
                    std::uint32_t* ids) const;
  /// With missing values that go one way.
  template <class Value>
  void FindIncomplete(Value const* rows, std::size_t numRows, std::size_t stride, Until until,
                      std::uint32_t* ids) const;
  /// With missing values that go to surrogates.
  template <class Value>
  void FindBySurrogates(Value const* rows, std::size_t numRows, std::size_t stride,
                        std::uint32_t* ids) const;
  ///@}
  /// Where one row ends.
  ///@{
  /// Without missing values.
  template <class Value>
  std::uint32_t FindOne(Value const* row) const;
  /// With missing values that go one way.
  template <class Value>
  std::uint32_t FindOneIncomplete(Value const* row) const;
  /// With missing values that go to surrogates, if there are some, or one way.
  template <class Value>
  std::uint32_t FindOneBySurrogates(Value const* row) const;
  ///@}

 private:
  struct Entry {
    double cut;          // NaN where cases end: they go right, to the same entry
    std::uint32_t left;  // and the next one is the right one
    std::uint16_t predictor;
    std::uint16_t flags;
  };
  static_assert(sizeof(Entry) == 16);
  struct Surrogate {
    double cut;
    std::uint32_t predictor;
    std::uint32_t isReversed;
  };

  template <class Value>
  auto MoveIncomplete() const;
  template <class Value, class Move>
  void FindInFlight(Value const* rows, std::size_t numRows, std::size_t stride, Until until,
                    Move const& move, std::uint32_t* ids) const;
  template <class Value>
  std::uint32_t MoveBySurrogates(std::uint32_t at, Value const* row) const;

  std::vector<Entry> entries_;
  int depth_ = 0;
  std::vector<std::uint32_t> ids_;
  std::vector<std::uint32_t> firstSurrogate_;  // by entry, and one more
  std::vector<Surrogate> surrogates_;
  double missingValue_;
};

}  // namespace tree::score

#endif  // TREE_SCORE_BENCHMARKS_BARE_TREE_H_
