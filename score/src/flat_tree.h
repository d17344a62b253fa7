#ifndef TREE_SCORE_SRC_FLAT_TREE_H_
#define TREE_SCORE_SRC_FLAT_TREE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "slot.h"

namespace tree::score {

/// What stands at the beginning of a block. After it come the slots, then the class probabilities,
/// `numClasses` doubles for each of the `numEnds` ends, and then the missing values of predictors
/// that have their own. Numbers are in the byte order of the machine that made the block.
struct BlockHeader {
  static constexpr char kMagic[8] = {'T', 'R', 'E', 'E', 'F', 'L', 'A', 'T'};
  static constexpr std::uint32_t kByteOrder = 0x01020304;
  static constexpr std::uint32_t kVersion = 2;

  char magic[8];
  std::uint32_t byteOrder;
  std::uint32_t version;
  std::uint64_t size;      // of the block, in bytes
  std::uint64_t checksum;  // of the block as if this field were 0
  std::uint32_t numSlots;
  std::uint32_t numNodes;
  std::uint32_t numEnds;  // slots at which cases end
  std::uint32_t numPredictors;
  std::uint32_t numClasses;      // with probabilities; 0 without
  std::uint32_t depth;           // levels below the root
  std::uint32_t hasPredictions;  // 0 or 1
  std::uint32_t numOwnMissingValues;
  double missingValue;  // to binary nodes, of all predictors but those with their own
  // Two children that lie side by side lie in one line of the cache, when the block begins one.
  std::uint8_t padding[40];
};
static_assert(sizeof(BlockHeader) == 112);

/// The missing value of a predictor, to binary nodes, when it is not the one of the header.
struct OwnMissingValue {
  double value;
  std::uint32_t predictor;  // above that of the one before
  std::uint32_t reserved;   // 0
};
static_assert(sizeof(OwnMissingValue) == 16);

/// How far down nothing but plain binary nodes stand, at which cases just go one way or the other.
struct PlainLevels {
  /// How many slots from the first one on are at the front.
  static constexpr std::uint32_t kFrontSlots = 16;

  std::uint32_t count = 0;       // levels that no case ends at either
  std::uint32_t numAtFront = 0;  // of them, those down to which all nodes are at the front
  bool isWholeTree = false;      // all cases end right below them
  bool hasOthersBelow = false;   // nodes that are not plain
  bool hasGeneralBelow = false;  // nodes of the kind `kGeneral`
};

/// Memory for a block, at the beginning of a line of the cache.
class BlockMemory {
 public:
  BlockMemory() = default;
  explicit BlockMemory(std::size_t size);

  std::byte* GetData() { return data_.get(); }
  std::size_t GetSize() const { return size_; }

 private:
  struct Release {
    void operator()(std::byte* data) const;
  };
  std::unique_ptr<std::byte, Release> data_;
  std::size_t size_ = 0;
};

/// A block that has been checked: whatever it holds, following it stays inside and ends.
class FlatTree {
 public:
  /// **Taken**; otherwise as below.
  explicit FlatTree(BlockMemory&& memory);
  /// **Borrowed**. Throws `InputError` for a block that cannot be followed.
  FlatTree(void const* block, std::size_t size);

  BlockHeader const& GetHeader() const { return *header_; }
  Slot const* GetSlots() const { return slots_; }
  double const* GetProbabilities(std::uint32_t place) const {
    return probabilities_ + std::size_t{place} * header_->numClasses;
  }
  /// Whether predictors differ in their missing values.
  bool HasOwnMissingValues() const { return !missingValues_.empty(); }
  /// The missing values to binary nodes, by predictor; there is nothing to read unless they differ.
  double const* GetMissingValues() const { return missingValues_.data(); }
  /// The missing value of the header as a float; NaN when no float is equal to it.
  float GetMissingFloat() const { return missingFloat_; }
  /// Whether a rule tests the predictor. Requires an index below the number of predictors.
  bool Tests(std::uint32_t predictor) const { return tests_[predictor]; }
  /// The plain levels for cases that may have missing values, or that have none.
  PlainLevels const& GetPlainLevels(bool mayMiss) const { return mayMiss ? missing_ : complete_; }

 private:
  BlockMemory memory_;  // empty when borrowed
  BlockHeader const* header_;
  Slot const* slots_;
  double const* probabilities_;
  float missingFloat_;
  std::vector<double> missingValues_;  // by predictor; empty when there is but one
  std::vector<bool> tests_;            // by predictor
  PlainLevels missing_;
  PlainLevels complete_;
};

/// The checksum that a block ought to have. `size`: in bytes, a multiple of 8, the header at least.
std::uint64_t ComputeChecksum(void const* block, std::size_t size);

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_FLAT_TREE_H_
