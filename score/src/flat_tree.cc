#include "flat_tree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "tree/score/input_error.h"

namespace tree::score {
namespace {

constexpr std::align_val_t kCacheLine{64};
constexpr std::size_t kWordSize = sizeof(std::uint64_t);

[[noreturn]] void Refuse(std::string const& reason) {
  throw InputError("this block cannot be used: " + reason);
}

[[noreturn]] void RefuseSlot(std::uint32_t slot, char const* reason) {
  Refuse("slot " + std::to_string(slot) + ' ' + reason);
}

// The sum of what a header announces; the largest of all is beyond any size, and below overflow.
std::uint64_t ComputeSize(BlockHeader const& header) {
  constexpr std::uint64_t kTooLarge = ~std::uint64_t{0};
  std::uint64_t const slotBytes = std::uint64_t{header.numSlots} * sizeof(Slot);
  std::uint64_t const numProbabilities = std::uint64_t{header.numEnds} * header.numClasses;
  if (numProbabilities > kTooLarge / 32) return kTooLarge;
  return sizeof(BlockHeader) + slotBytes + numProbabilities * sizeof(double) +
         std::uint64_t{header.numOwnMissingValues} * sizeof(OwnMissingValue);
}

void CheckHeader(BlockHeader const& header, std::size_t size) {
  if (std::memcmp(header.magic, BlockHeader::kMagic, sizeof(header.magic)) != 0) {
    Refuse("it does not begin like one of a flat tree");
  }
  if (header.byteOrder != BlockHeader::kByteOrder) Refuse("it has another byte order");
  if (header.version != BlockHeader::kVersion) {
    Refuse("it has version " + std::to_string(header.version) + ", not " +
           std::to_string(BlockHeader::kVersion));
  }
  if (header.size != size) {
    Refuse("it has " + std::to_string(size) + " bytes, not " + std::to_string(header.size));
  }
  if (header.size != ComputeSize(header)) Refuse("its sizes contradict each other");
  if (header.checksum != ComputeChecksum(&header, size)) Refuse("its checksum is wrong");
  if (header.numSlots == 0) Refuse("it has no root");
  if (header.numPredictors > Slot::kPredictorMask + 1) Refuse("it has too many predictors");
  if (header.hasPredictions > 1) Refuse("its header is damaged");
}

float ToFloat(double value) {
  bool const fits = std::fabs(value) <= double{std::numeric_limits<float>::max()};
  if (std::isinf(value) || (fits && static_cast<double>(static_cast<float>(value)) == value)) {
    return static_cast<float>(value);
  }
  return std::numeric_limits<float>::quiet_NaN();
}

// The missing values of all predictors, if some have their own.
std::vector<double> ReadMissingValues(BlockHeader const& header, OwnMissingValue const* own) {
  if (header.numOwnMissingValues == 0) return {};
  std::vector<double> values(header.numPredictors, header.missingValue);
  std::uint64_t first = 0;
  for (std::uint32_t index = 0; index < header.numOwnMissingValues; ++index) {
    std::uint32_t const predictor = own[index].predictor;
    if (predictor < first || predictor >= header.numPredictors || own[index].reserved != 0) {
      Refuse("its missing values are damaged");
    }
    values[predictor] = own[index].value;
    first = std::uint64_t{predictor} + 1;
  }
  return values;
}

/// Goes once through the slots, from the root on. A slot may refer to later ones alone, and each is
/// referred to once, so that following them ends.
class SlotCheck {
 public:
  SlotCheck(BlockHeader const& header, Slot const* slots)
      : header_(header),
        slots_(slots),
        levels_(header.numSlots, kUnknown),
        tests_(header.numPredictors, false) {}

  void Run();
  PlainLevels GetPlainLevels(bool mayMiss) const;
  std::vector<bool> const& GetTests() const { return tests_; }

 private:
  static constexpr std::uint32_t kUnknown = ~std::uint32_t{0};
  static constexpr std::uint32_t kNoNode = kUnknown - 1;  // belongs to a node

  void CheckNode(std::uint32_t slot);
  void CheckBinary(std::uint32_t slot);
  void CheckGeneral(std::uint32_t slot);
  void CheckEnd(std::uint32_t slot);
  std::uint64_t CheckRule(std::uint32_t slot, std::uint64_t rule, std::uint32_t numChildren);
  void Claim(std::uint32_t slot, std::uint64_t claimed, std::uint32_t level);
  void CheckPredictor(std::uint32_t slot, std::uint32_t word);
  void CheckEndFlags(std::uint32_t slot) const;

  BlockHeader const& header_;
  Slot const* slots_;
  std::vector<std::uint32_t> levels_;  // of nodes, by slot
  std::vector<bool> tests_;            // by predictor
  std::uint32_t numNodes_ = 0;
  std::uint32_t numEnds_ = 0;
  std::uint32_t numPredictors_ = 0;
  std::uint32_t depth_ = 0;
  // Levels of the highest end and of the highest nodes that are not plain.
  std::uint32_t highestEnd_ = kUnknown;
  std::uint32_t deepestEnd_ = 0;
  std::uint32_t highestSlow_ = kUnknown;
  std::uint32_t highestOther_ = kUnknown;
  std::uint32_t highestBehind_ = kUnknown;  // of those that are not at the front
  bool hasGeneral_ = false;
};

void SlotCheck::Run() {
  levels_[0] = 0;
  for (std::uint32_t slot = 0; slot < header_.numSlots; ++slot) {
    if (levels_[slot] == kUnknown) RefuseSlot(slot, "belongs to no node");
    if (levels_[slot] != kNoNode) CheckNode(slot);
  }
  if (numNodes_ != header_.numNodes || numEnds_ != header_.numEnds || depth_ != header_.depth ||
      numPredictors_ != header_.numPredictors) {
    Refuse("its counts are wrong");
  }
}

void SlotCheck::CheckNode(std::uint32_t slot) {
  Kind const kind = slots_[slot].GetKind();
  bool const isInnerEnd = kind == Kind::kEnd && slots_[slot].Has(Slot::kInner);
  if (!isInnerEnd) {
    ++numNodes_;
    depth_ = std::max(depth_, levels_[slot]);
  }
  if (kind == Kind::kEnd) {
    CheckEnd(slot);
    return;
  }
  CheckPredictor(slot, slots_[slot].word);
  if (slot >= PlainLevels::kFrontSlots) highestBehind_ = std::min(highestBehind_, levels_[slot]);
  if (kind == Kind::kGeneral) {
    CheckGeneral(slot);
  } else {
    CheckBinary(slot);
  }
}

// Also nodes with a set of codes.
void SlotCheck::CheckBinary(std::uint32_t slot) {
  Slot const& node = slots_[slot];
  std::uint32_t const level = levels_[slot];
  Claim(slot, node.link, level + 1);
  Claim(slot, std::uint64_t{node.link} + 1, level + 1);
  CheckEndFlags(slot);
  if (node.GetKind() == Kind::kCodes) {
    highestOther_ = std::min(highestOther_, level);
  }
  if (!node.Has(Slot::kSlow)) return;
  highestSlow_ = std::min(highestSlow_, level);
  std::uint64_t next = std::uint64_t{node.link} + 2;
  if (node.Has(Slot::kStays)) {
    Claim(slot, next, level + 1);
    if (slots_[next].GetKind() != Kind::kEnd) RefuseSlot(slot, "keeps cases where none can end");
    ++next;
  }
  bool isLast = !node.Has(Slot::kHasSurrogates);
  for (; !isLast; ++next) {
    Claim(slot, next, kNoNode);
    CheckPredictor(slot, slots_[next].word);
    isLast = slots_[next].Has(Slot::kLast);
  }
}

void SlotCheck::CheckGeneral(std::uint32_t slot) {
  Slot const& node = slots_[slot];
  std::uint32_t const level = levels_[slot];
  std::uint32_t const numChildren = node.GetLow();
  highestOther_ = std::min(highestOther_, level);
  hasGeneral_ = true;
  if (numChildren == 0 || node.GetHigh() >= numChildren) RefuseSlot(slot, "lacks a child");
  std::uint64_t next = node.link;
  for (std::uint32_t child = 0; child < numChildren; ++child) Claim(slot, next++, level + 1);
  if (next < header_.numSlots && slots_[next].GetPredictor() != node.GetPredictor()) {
    RefuseSlot(slot, "tests another predictor than its rule");
  }
  bool isLast = false;
  while (!isLast) {
    Claim(slot, next, kNoNode);
    Claim(slot, next + 1, kNoNode);
    isLast = slots_[next].Has(Slot::kLast);
    next = CheckRule(slot, next, numChildren);
  }
}

// Gives the slot after the rule.
std::uint64_t SlotCheck::CheckRule(std::uint32_t slot, std::uint64_t rule,
                                   std::uint32_t numChildren) {
  auto const isChild = [numChildren](std::uint32_t child) {
    return child == kNoChild || child < numChildren;
  };
  Slot const& first = slots_[rule];
  CheckPredictor(slot, first.word);
  if (!isChild(first.link) || !isChild(first.GetHigh())) {
    RefuseSlot(slot, "has a rule that names a child beyond the last one");
  }
  bool const ordered = first.Has(GeneralRule::kOrdered);
  std::uint64_t const table = rule + 2;
  std::uint64_t const numSlots = CountTableSlots(ordered, first.GetLow());
  for (std::uint64_t next = table; next < table + numSlots; ++next) Claim(slot, next, kNoNode);
  for (std::uint32_t entry = 0; entry < first.GetLow(); ++entry) {
    if (!isChild(ordered ? slots_[table + entry].link : GetCodeChild(slots_ + table, entry))) {
      RefuseSlot(slot, "has a rule that names a child beyond the last one");
    }
    if (ordered && entry > 0 &&
        !(slots_[table + entry - 1].GetCut() < slots_[table + entry].GetCut())) {
      RefuseSlot(slot, "has cut points out of order");
    }
  }
  return table + numSlots;
}

void SlotCheck::CheckEnd(std::uint32_t slot) {
  ++numEnds_;
  highestEnd_ = std::min(highestEnd_, levels_[slot]);
  deepestEnd_ = std::max(deepestEnd_, levels_[slot]);
  // Where other cases move on, those that have ended are looked at too.
  if (slots_[slot].GetPredictor() != 0) RefuseSlot(slot, "is an end and tests a predictor");
  if (header_.numClasses > 0 && slots_[slot].GetHigh() >= header_.numEnds) {
    RefuseSlot(slot, "has probabilities beyond the last ones");
  }
}

void SlotCheck::Claim(std::uint32_t slot, std::uint64_t claimed, std::uint32_t level) {
  if (claimed <= slot) RefuseSlot(slot, "refers back");
  if (claimed >= header_.numSlots) RefuseSlot(slot, "refers to what is beyond the last slot");
  if (levels_[claimed] != kUnknown) RefuseSlot(slot, "refers to a slot that is taken");
  levels_[claimed] = level;
}

void SlotCheck::CheckPredictor(std::uint32_t slot, std::uint32_t word) {
  std::uint32_t const predictor = word & Slot::kPredictorMask;
  if (predictor >= header_.numPredictors) RefuseSlot(slot, "tests a predictor beyond the last one");
  tests_[predictor] = true;
  numPredictors_ = std::max(numPredictors_, predictor + 1);
}

void SlotCheck::CheckEndFlags(std::uint32_t slot) const {
  Slot const& node = slots_[slot];
  bool const leftEnds = slots_[node.link].GetKind() == Kind::kEnd;
  bool const rightEnds = slots_[node.link + 1].GetKind() == Kind::kEnd;
  if (node.Has(Slot::kLeftEnds) != leftEnds || node.Has(Slot::kRightEnds) != rightEnds) {
    RefuseSlot(slot, "is wrong about where cases end");
  }
}

PlainLevels SlotCheck::GetPlainLevels(bool mayMiss) const {
  std::uint32_t const highest = mayMiss ? std::min(highestOther_, highestSlow_) : highestOther_;
  PlainLevels levels;
  levels.hasOthersBelow = highest != kUnknown;
  levels.hasGeneralBelow = hasGeneral_;
  levels.isWholeTree = !levels.hasOthersBelow && highestEnd_ == deepestEnd_;
  levels.count = levels.isWholeTree ? highestEnd_ : std::min(highest, highestEnd_ - 1);
  levels.numAtFront = std::min(levels.count, highestBehind_);
  return levels;
}

}  // namespace

BlockMemory::BlockMemory(std::size_t size)
    : data_(static_cast<std::byte*>(::operator new(size, kCacheLine))), size_(size) {}

void BlockMemory::Release::operator()(std::byte* data) const {
  ::operator delete(data, kCacheLine);
}

FlatTree::FlatTree(BlockMemory&& memory)
    : FlatTree(static_cast<void const*>(memory.GetData()), memory.GetSize()) {
  memory_ = std::move(memory);
}

FlatTree::FlatTree(void const* block, std::size_t size)
    : header_(static_cast<BlockHeader const*>(block)) {
  if (size < sizeof(BlockHeader)) Refuse("it is too short");
  if (reinterpret_cast<std::uintptr_t>(block) % alignof(BlockHeader) != 0) {
    Refuse("it does not lie at a multiple of " + std::to_string(alignof(BlockHeader)) + " bytes");
  }
  CheckHeader(*header_, size);
  auto const* const bytes = static_cast<std::byte const*>(block);
  missingFloat_ = ToFloat(header_->missingValue);
  slots_ = reinterpret_cast<Slot const*>(bytes + sizeof(BlockHeader));
  probabilities_ = reinterpret_cast<double const*>(slots_ + header_->numSlots);
  SlotCheck check(*header_, slots_);
  check.Run();
  std::uint64_t const numProbabilities = std::uint64_t{header_->numEnds} * header_->numClasses;
  missingValues_ = ReadMissingValues(
      *header_, reinterpret_cast<OwnMissingValue const*>(probabilities_ + numProbabilities));
  tests_ = check.GetTests();
  missing_ = check.GetPlainLevels(true);
  complete_ = check.GetPlainLevels(false);
}

std::uint64_t ComputeChecksum(void const* block, std::size_t size) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15;  // odd, so that nothing is lost
  constexpr std::size_t kOwnPlace = offsetof(BlockHeader, checksum);
  auto const* const bytes = static_cast<std::byte const*>(block);
  std::uint64_t sum = size;
  for (std::size_t place = 0; place + kWordSize <= size; place += kWordSize) {
    std::uint64_t word = 0;
    if (place != kOwnPlace) std::memcpy(&word, bytes + place, kWordSize);
    sum = (sum ^ word) * kFactor;
    sum ^= sum >> 32U;
  }
  return sum;
}

}  // namespace tree::score
