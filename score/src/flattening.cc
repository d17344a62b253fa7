#include "flattening.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <typeinfo>
#include <vector>

#include "rule_reading.h"
#include "tree/score/input_error.h"

namespace tree::score {
namespace {

constexpr std::size_t kMaxSlots = std::numeric_limits<std::uint32_t>::max() - 1;
constexpr std::size_t kCodesInNode = 64;

std::uint32_t FlagIf(bool holds, std::uint32_t flag) { return holds ? flag : 0; }

// Of NaN there is but one kind: nothing is equal to it.
bool IsSame(double missingValue, double other) {
  return missingValue == other || (std::isnan(missingValue) && std::isnan(other));
}

std::uint32_t ToLink(int child) { return child < 0 ? kNoChild : static_cast<std::uint32_t>(child); }

// Whether halves hold what the rule says of codes.
bool FitsHalves(RuleTable const& rule) {
  return !rule.ordered && rule.codes.size() <= kCodesInHalf;
}

// Whether a case gets past the rule: it says of every value, and of missing ones, where they go.
bool PlacesAll(RuleTable const& rule) {
  // What a nominal rule does not map is missing to it.
  if (rule.missingChild < 0 || !rule.ordered) return rule.missingChild >= 0;
  return rule.upperChild >= 0 &&
         std::all_of(rule.cuts.begin(), rule.cuts.end(),
                     [](RuleTable::Cut const& cut) { return cut.child >= 0; });
}

std::uint64_t MakeHalves(RuleTable const& rule, int leftChild) {
  std::uint64_t halves = 0;
  for (std::size_t code = 0; code < rule.codes.size(); ++code) {
    if (rule.codes[code] < 0) continue;
    std::uint64_t const isRight = rule.codes[code] != leftChild ? 1 : 0;
    halves |= (std::uint64_t{1} << kCodesInHalf | isRight) << code;
  }
  return halves;
}

std::uint64_t MakeCodeSet(RuleTable const& rule, int missingChild) {
  std::uint64_t set = 0;
  for (std::size_t code = 0; code < kCodesInNode; ++code) {
    int const mapped = code < rule.codes.size() ? rule.codes[code] : -1;
    bool const goesRight = (mapped < 0 ? missingChild : mapped) == 1;
    set |= std::uint64_t{goesRight} << code;
  }
  return set;
}

/// Writes the slots of a tree: the upper ones level by level, so that whole levels are at the
/// front, and those below depth first, so that what a case meets lies close together.
class Flattener {
 public:
  /// Writes them all, and gives the block.
  BlockMemory Run(NodeImp const& root);

 private:
  struct Place {
    NodeImp const* node;
    std::uint32_t slot;
    std::uint32_t level;
    bool isInner;  // an end only, of the cases that stay at this node
  };

  void WriteNode(Place place);
  void WriteSlots(Place const& place);
  void ReadRules(NodeImp const& node);
  void DropRulesThatAreNeverAsked();
  void ReadOneRule(SplitRuleImp const* rule, int numChildren, RuleTable& table);
  bool IsPlainCut(RuleTable const& rule) const;
  void NoteMissingValue(RuleTable const& rule);
  bool AgreeOnMissingValues() const;
  bool WriteTwoWays(Place const& place);
  Slot MakeSurrogate(RuleTable const& rule, int leftChild, bool isLast);
  void WriteGeneral(Place const& place);
  void WriteRule(RuleTable const& rule, bool isLast);
  std::uint32_t NotePredictor(RuleTable const& rule);
  std::uint32_t AddSlots(std::uint64_t count);
  void PlaceChildren(Place const& place, std::uint32_t first, bool areReversed);
  void WriteEnds();
  void WriteClasses();
  std::vector<OwnMissingValue> ListOwnMissingValues() const;
  BlockMemory MakeBlock() const;

  std::vector<Slot> slots_;
  std::vector<Place> open_;  // nodes that have a slot, to be written
  std::vector<Place> ends_;
  std::uint32_t numNodes_ = 0;
  std::uint32_t depth_ = 0;
  std::uint32_t numPredictors_ = 0;
  std::uint32_t numClasses_ = 0;
  bool hasPredictions_ = true;
  std::vector<double> probabilities_;
  std::map<int, double> missingValues_;                             // to binary nodes, by predictor
  double missingValue_ = std::numeric_limits<double>::quiet_NaN();  // of the first of them
  // Of the node being written:
  RuleTable primary_;
  std::vector<RuleTable> surrogates_;  // those that a case may get to
  int dumbChild_ = -1;
  bool anyStay_ = false;  // whether cases can end at it
};

BlockMemory Flattener::Run(NodeImp const& root) {
  AddSlots(1);
  open_.push_back({&root, 0, 0, false});
  std::size_t numWritten = 0;
  while (numWritten < open_.size() && slots_.size() < PlainLevels::kFrontSlots) {
    WriteNode(open_[numWritten++]);
  }
  open_.erase(open_.begin(), open_.begin() + static_cast<std::ptrdiff_t>(numWritten));
  std::reverse(open_.begin(), open_.end());
  while (!open_.empty()) {
    Place const place = open_.back();
    open_.pop_back();
    std::size_t const numOpen = open_.size();
    WriteNode(place);
    std::reverse(open_.begin() + static_cast<std::ptrdiff_t>(numOpen), open_.end());
  }
  WriteEnds();
  return MakeBlock();
}

// A copy: the place is among others that are added to.
void Flattener::WriteNode(Place place) {
  try {
    WriteSlots(place);
  } catch (InputError const& error) {
    throw InputError("node " + std::to_string(place.node->GetId()) + ": " + error.what());
  }
}

void Flattener::WriteSlots(Place const& place) {
  NodeImp const& node = *place.node;
  // Deliberate: a derived node may choose children otherwise.
  if (typeid(node) != typeid(NodeImp)) throw InputError("it is of a class that is not known");
  ++numNodes_;
  depth_ = std::max(depth_, place.level);
  if (node.GetNumChildren() == 0) {
    ends_.push_back(place);
    return;
  }
  ReadRules(node);
  if (!WriteTwoWays(place)) WriteGeneral(place);
}

void Flattener::ReadRules(NodeImp const& node) {
  int const numChildren = node.GetNumChildren();
  if (node.GetNumCompetitors() == 0) throw InputError("it has children and no split rule");
  SplitRuleImp const* const primary = node.GetCompetitorImp(0);
  ReadOneRule(primary, numChildren, primary_);
  dumbChild_ = std::max(primary->GetDumbChildPos(), -1);
  if (dumbChild_ >= numChildren)
    throw InputError("its dumb rule names a child beyond the last one");
  surrogates_.resize(static_cast<std::size_t>(node.GetNumSurrogates()));
  for (std::size_t position = 0; position < surrogates_.size(); ++position) {
    ReadOneRule(node.GetSurrogateImp(static_cast<unsigned int>(position)), numChildren,
                surrogates_[position]);
  }
  DropRulesThatAreNeverAsked();
}

void Flattener::DropRulesThatAreNeverAsked() {
  anyStay_ = dumbChild_ < 0;
  if (PlacesAll(primary_)) {
    surrogates_.clear();
    anyStay_ = false;
    return;
  }
  auto const last = std::find_if(surrogates_.begin(), surrogates_.end(), PlacesAll);
  if (last == surrogates_.end()) return;
  surrogates_.erase(last + 1, surrogates_.end());
  anyStay_ = false;
}

void Flattener::ReadOneRule(SplitRuleImp const* rule, int numChildren, RuleTable& table) {
  if (rule == nullptr) throw InputError("a split rule is not there");
  if (rule->GetPredictorIndex() > static_cast<int>(Slot::kPredictorMask)) {
    throw InputError("a predictor index is above " + std::to_string(Slot::kPredictorMask));
  }
  ReadRule(*rule, table);
  if (table.GetHighestChild() >= numChildren) {
    throw InputError("a split rule names a child beyond the last one");
  }
}

// Whether the rule sends values up to a cut point to one of two children and those above it to the
// other one, with the missing value of all such rules of its predictor.
bool Flattener::IsPlainCut(RuleTable const& rule) const {
  if (!rule.ordered || rule.cuts.size() != 1) return false;
  int const below = rule.cuts.front().child;
  if (below < 0 || rule.upperChild < 0 || below + rule.upperChild != 1) return false;
  auto const known = missingValues_.find(rule.predictor);
  return known == missingValues_.end() || IsSame(known->second, rule.missingValue);
}

void Flattener::NoteMissingValue(RuleTable const& rule) {
  if (!rule.ordered) return;
  if (missingValues_.empty()) missingValue_ = rule.missingValue;
  missingValues_.emplace(rule.predictor, rule.missingValue);
}

// Whether no rule of the node disagrees with another one about the missing value of a predictor.
bool Flattener::AgreeOnMissingValues() const {
  std::map<int, double> ofNode;
  auto const agrees = [&ofNode](RuleTable const& rule) {
    if (!rule.ordered) return true;
    auto const known = ofNode.emplace(rule.predictor, rule.missingValue).first;
    return IsSame(known->second, rule.missingValue);
  };
  return agrees(primary_) && std::all_of(surrogates_.begin(), surrogates_.end(), agrees);
}

bool Flattener::WriteTwoWays(Place const& place) {
  if (place.node->GetNumChildren() != 2) return false;
  bool const isCut = IsPlainCut(primary_);
  if (!isCut && (primary_.ordered || primary_.codes.size() > kCodesInNode)) return false;
  if (!std::all_of(surrogates_.begin(), surrogates_.end(), [this](RuleTable const& rule) {
        return FitsHalves(rule) || IsPlainCut(rule);
      })) {
    return false;
  }
  bool const isSlow = anyStay_ || !surrogates_.empty();
  if (isSlow && !isCut && !FitsHalves(primary_)) return false;
  if (!surrogates_.empty() && !AgreeOnMissingValues()) return false;
  NoteMissingValue(primary_);
  for (RuleTable const& rule : surrogates_) NoteMissingValue(rule);

  int const leftChild = isCut ? primary_.cuts.front().child : 0;
  int const missingChild = primary_.missingChild >= 0 ? primary_.missingChild : dumbChild_;
  bool const missingRight = missingChild >= 0 && missingChild != leftChild;
  std::uint32_t const group = AddSlots(2U + (anyStay_ ? 1U : 0U) + surrogates_.size());
  Slot& node = slots_[place.slot];
  node.link = group;
  node.word = NotePredictor(primary_) | FlagIf(missingRight, Slot::kMissingRight) |
              FlagIf(isSlow, Slot::kSlow) | FlagIf(!surrogates_.empty(), Slot::kHasSurrogates) |
              FlagIf(anyStay_, Slot::kStays);
  if (isCut) {
    double const cutPoint = primary_.cuts.front().cutPoint;
    double const missing = primary_.missingValue;
    bool const cutSendsRight = !(missing <= cutPoint);
    bool const isDetour = !isSlow && !std::isnan(missing) && cutSendsRight != missingRight;
    node.payload = std::bit_cast<std::uint64_t>(cutPoint);
    node.word |= KindBits(Kind::kBinary) | FlagIf(isDetour, Slot::kDetour);
  } else {
    node.payload = isSlow ? MakeHalves(primary_, leftChild) : MakeCodeSet(primary_, missingChild);
    node.word |= KindBits(Kind::kCodes);
  }
  PlaceChildren(place, group, leftChild == 1);
  std::uint32_t next = group + 2;
  if (anyStay_) ends_.push_back({place.node, next++, place.level, true});
  for (RuleTable const& rule : surrogates_) {
    slots_[next++] = MakeSurrogate(rule, leftChild, &rule == &surrogates_.back());
  }
  return true;
}

Slot Flattener::MakeSurrogate(RuleTable const& rule, int leftChild, bool isLast) {
  bool const placesMissing = rule.missingChild >= 0;
  std::uint32_t const word =
      NotePredictor(rule) | FlagIf(placesMissing, Slot::kPlacesMissing) |
      FlagIf(placesMissing && rule.missingChild != leftChild, Slot::kMissingRight) |
      FlagIf(isLast, Slot::kLast);
  if (!rule.ordered) return {MakeHalves(rule, leftChild), 0, word | KindBits(Kind::kCodes)};
  RuleTable::Cut const& cut = rule.cuts.front();
  return {std::bit_cast<std::uint64_t>(cut.cutPoint), 0,
          word | KindBits(Kind::kBinary) | FlagIf(cut.child != leftChild, Slot::kReversed)};
}

void Flattener::WriteGeneral(Place const& place) {
  auto const numChildren = static_cast<std::uint32_t>(place.node->GetNumChildren());
  std::uint32_t const numPlaces = numChildren + (anyStay_ ? 1 : 0);
  // Nothing is left over where the rules place all.
  std::uint32_t const leftOver =
      anyStay_ ? numChildren : static_cast<std::uint32_t>(std::max(dumbChild_, 0));
  std::uint32_t const group = AddSlots(numPlaces);
  slots_[place.slot] = {Pack(numPlaces, leftOver), group,
                        NotePredictor(primary_) | KindBits(Kind::kGeneral)};
  PlaceChildren(place, group, false);
  if (anyStay_) ends_.push_back({place.node, group + numChildren, place.level, true});
  WriteRule(primary_, surrogates_.empty());
  for (RuleTable const& rule : surrogates_) WriteRule(rule, &rule == &surrogates_.back());
}

void Flattener::WriteRule(RuleTable const& rule, bool isLast) {
  std::size_t const tableSize = rule.ordered ? rule.cuts.size() : rule.codes.size();
  auto const size = static_cast<std::uint32_t>(tableSize);
  std::uint32_t const first = AddSlots(2 + CountTableSlots(rule.ordered, size));
  slots_[first] = {Pack(size, ToLink(rule.upperChild)), ToLink(rule.missingChild),
                   NotePredictor(rule) | FlagIf(rule.ordered, GeneralRule::kOrdered) |
                       FlagIf(isLast, Slot::kLast)};
  slots_[first + 1] = {std::bit_cast<std::uint64_t>(rule.missingValue), 0, 0};
  Slot* const table = slots_.data() + first + 2;
  for (std::size_t index = 0; index < rule.cuts.size(); ++index) {
    RuleTable::Cut const& cut = rule.cuts[index];
    table[index] = {std::bit_cast<std::uint64_t>(cut.cutPoint), ToLink(cut.child), 0};
  }
  if (!rule.codes.empty()) {
    static_assert(sizeof(int) * GeneralRule::kCodesPerSlot == sizeof(Slot));
    std::memcpy(table, rule.codes.data(), rule.codes.size() * sizeof(int));
  }
}

// The bits of a rule's predictor, which is one that cases have to have.
std::uint32_t Flattener::NotePredictor(RuleTable const& rule) {
  auto const predictor = static_cast<std::uint32_t>(rule.predictor);
  numPredictors_ = std::max(numPredictors_, predictor + 1);
  return predictor;
}

std::uint32_t Flattener::AddSlots(std::uint64_t count) {
  std::size_t const first = slots_.size();
  if (count > kMaxSlots - first) throw InputError("the tree is too large");
  slots_.resize(first + count, Slot{});
  return static_cast<std::uint32_t>(first);
}

void Flattener::PlaceChildren(Place const& place, std::uint32_t first, bool areReversed) {
  int const numChildren = place.node->GetNumChildren();
  for (int position = 0; position < numChildren; ++position) {
    int const source = areReversed ? numChildren - 1 - position : position;
    NodeImp const* const child = place.node->GetChildImp(static_cast<unsigned int>(source));
    if (child == nullptr) throw InputError("a child is not there");
    if (child->GetNumChildren() == 0 && position < 2) {
      slots_[place.slot].word |= position == 0 ? Slot::kLeftEnds : Slot::kRightEnds;
    }
    open_.push_back({child, first + static_cast<std::uint32_t>(position), place.level + 1, false});
  }
}

void Flattener::WriteEnds() {
  WriteClasses();
  std::uint32_t place = 0;
  for (Place const& end : ends_) {
    NodeImp const& node = *end.node;
    double prediction = std::numeric_limits<double>::quiet_NaN();
    bool const hasStatistics = node.IsClassificationNode()
                                   ? node.GetClsInfo(TrainingSample) != nullptr
                                   : node.GetRegInfo(TrainingSample) != nullptr;
    if (hasStatistics) prediction = node.GetAssignment();
    hasPredictions_ = hasPredictions_ && hasStatistics;
    std::uint64_t payload = std::bit_cast<std::uint64_t>(prediction);
    if (numClasses_ > 0) {
      ClsInfo const& classes = *node.GetClsInfo(TrainingSample);
      payload = Pack(static_cast<std::uint32_t>(classes.GetPrediction()), place++);
    }
    slots_[end.slot] = {payload, node.GetId(),
                        KindBits(Kind::kEnd) | FlagIf(end.isInner, Slot::kInner)};
  }
}

// Keeps the probabilities, when all ends have them of as many classes.
void Flattener::WriteClasses() {
  int numClasses = -1;
  for (Place const& end : ends_) {
    if (!end.node->IsClassificationNode()) return;
    ClsInfo const* const classes = end.node->GetClsInfo(TrainingSample);
    if (classes == nullptr) return;
    if (numClasses < 0) numClasses = classes->GetNumClasses();
    if (classes->GetNumClasses() != numClasses) return;
  }
  if (numClasses <= 0) return;
  numClasses_ = static_cast<std::uint32_t>(numClasses);
  probabilities_.reserve(ends_.size() * numClasses_);
  for (Place const& end : ends_) {
    ClsInfo const& classes = *end.node->GetClsInfo(TrainingSample);
    for (int index = 0; index < numClasses; ++index) {
      probabilities_.push_back(classes.GetClassProbability(index));
    }
  }
}

std::vector<OwnMissingValue> Flattener::ListOwnMissingValues() const {
  std::vector<OwnMissingValue> own;
  for (auto const& [predictor, value] : missingValues_) {
    if (IsSame(value, missingValue_)) continue;
    own.push_back({value, static_cast<std::uint32_t>(predictor), 0});
  }
  return own;
}

BlockMemory Flattener::MakeBlock() const {
  std::vector<OwnMissingValue> const own = ListOwnMissingValues();
  std::size_t const slotBytes = slots_.size() * sizeof(Slot);
  std::size_t const probabilityBytes = probabilities_.size() * sizeof(double);
  std::size_t const ownBytes = own.size() * sizeof(OwnMissingValue);
  BlockMemory block(sizeof(BlockHeader) + slotBytes + probabilityBytes + ownBytes);

  BlockHeader header{};
  std::memcpy(header.magic, BlockHeader::kMagic, sizeof(header.magic));
  header.byteOrder = BlockHeader::kByteOrder;
  header.version = BlockHeader::kVersion;
  header.size = block.GetSize();
  header.numSlots = static_cast<std::uint32_t>(slots_.size());
  header.numNodes = numNodes_;
  header.numEnds = static_cast<std::uint32_t>(ends_.size());
  header.numPredictors = numPredictors_;
  header.numClasses = numClasses_;
  header.depth = depth_;
  header.hasPredictions = hasPredictions_ ? 1 : 0;
  header.numOwnMissingValues = static_cast<std::uint32_t>(own.size());
  header.missingValue = missingValue_;

  std::byte* const to = block.GetData();
  std::byte* next = to + sizeof(header);
  auto const append = [&next](void const* from, std::size_t size) {
    if (size > 0) std::memcpy(next, from, size);
    next += size;
  };
  append(slots_.data(), slotBytes);
  append(probabilities_.data(), probabilityBytes);
  append(own.data(), ownBytes);
  std::memcpy(to, &header, sizeof(header));
  header.checksum = ComputeChecksum(to, block.GetSize());
  std::memcpy(to, &header, sizeof(header));
  return block;
}

}  // namespace

BlockMemory Flatten(NodeImp const& root) { return Flattener().Run(root); }

}  // namespace tree::score
