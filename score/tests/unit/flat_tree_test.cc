#include "flat_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "flattening.h"
#include "score_testing/guarded_memory.h"
#include "score_testing/random_trees.h"
#include "score_testing/score_every_way.h"
#include "testing/tree_builder.h"
#include "tree/score/input_error.h"
#include "tree/score/scorer.h"

namespace tree::score {
namespace {

using ::testing::HasSubstr;
using tree::testing::ANode;

/// A block to be damaged. Its slots: 0 a binary node with a surrogate that keeps cases, over 1, an
/// end, and 2, a general node; 3 the end of the cases that stay and 4 the surrogate of 0; 5 to 7
/// the ends below 2, and from 8 on its rules: two slots and a table of one slot for three codes,
/// two slots and two cut points.
class DamagedBlock {
 public:
  DamagedBlock() {
    auto nominal = std::make_unique<NSplitRule>(2, 3);
    for (int code = 0; code < 3; ++code) nominal->SetCatMapping(code, code);
    auto ordinal = std::make_unique<OSplitRule>(-9.0, 3);
    for (double const cut : {1.0, 2.0}) {
      OValueSet interval;
      interval.SetRightEnd(cut);
      ordinal->InsertCutPoint(interval, false);
    }
    ordinal->AddMappedValues(OValueSet());
    auto const root =
        ANode(1)
            .SplitAt(0, 1.0, ANode(2).Classes({1.0, 2.0}),
                     ANode(3)
                         .SplitBy(std::move(nominal), ANode(4).Classes({1.0, 2.0}),
                                  ANode(5).Classes({1.0, 2.0}), ANode(6).Classes({1.0, 2.0}))
                         .Surrogate(std::move(ordinal))
                         .Dumb(0))
            .SurrogateAt(1, 1.0)
            .Classes({3.0, 4.0})
            .Build();
    Hold(*root);
  }
  explicit DamagedBlock(NodeImp const& root) { Hold(root); }

  BlockHeader& GetHeader() { return *reinterpret_cast<BlockHeader*>(bytes_.data()); }
  Slot& GetSlot(std::size_t index) {
    return reinterpret_cast<Slot*>(bytes_.data() + sizeof(BlockHeader))[index];
  }
  std::vector<std::byte>& GetBytes() { return bytes_; }
  std::vector<std::byte> const& GetBytes() const { return bytes_; }
  /// The last of the missing values is at 0.
  OwnMissingValue& GetMissingValue(std::size_t fromBehind) {
    return *reinterpret_cast<OwnMissingValue*>(bytes_.data() + bytes_.size() -
                                               (fromBehind + 1) * sizeof(OwnMissingValue));
  }
  void Sign() { GetHeader().checksum = ComputeChecksum(bytes_.data(), bytes_.size()); }

  std::string Read() const {
    try {
      FlatTree const tree(bytes_.data(), bytes_.size());
    } catch (InputError const& error) {
      return error.what();
    }
    return "accepted";
  }

 private:
  void Hold(NodeImp const& root) {
    BlockMemory block = Flatten(root);
    bytes_.assign(block.GetData(), block.GetData() + block.GetSize());
  }

  std::vector<std::byte> bytes_;
};

/// Its slots: 0 a node with codes that keeps cases, over the ends 1 and 2; 3 the end of the cases
/// that stay, and 4 and 5 the surrogates, one with codes and one with a cut point.
DamagedBlock MakeBlockOfCodes() {
  auto rule = std::make_unique<NSplitRule>(0, 3);
  rule->SetCatMapping(1, 0);
  rule->SetCatMapping(2, 1);
  auto surrogate = std::make_unique<NSplitRule>(1, 2);
  surrogate->SetCatMapping(1, 1);
  auto const root =
      ANode(1)
          .SplitBy(std::move(rule), ANode(2).Classes({1.0, 2.0}), ANode(3).Classes({1.0, 2.0}))
          .Surrogate(std::move(surrogate))
          .SurrogateAt(2, 1.0)
          .Classes({3.0, 4.0})
          .Build();
  return DamagedBlock(*root);
}

/// Its slots: 0 a node with two surrogates, over the ends 1 and 2; 3 and 4 the surrogates. Their
/// missing values differ from that of the node.
DamagedBlock MakeBlockOfMissingValues() {
  auto const cutAt = [](int predictor, double missingValue) {
    auto rule = std::make_unique<OSplitRule>(missingValue, predictor);
    rule->SetCutPoint(1.0);
    return rule;
  };
  auto const root =
      ANode(1)
          .SplitBy(cutAt(0, 2.0), ANode(2).Classes({1.0, 2.0}), ANode(3).Classes({1.0, 2.0}))
          .Surrogate(cutAt(2, 3.0))
          .Surrogate(cutAt(3, 4.0))
          .Dumb(0)
          .Build();
  return DamagedBlock(*root);
}

struct Damage {
  char const* name;
  std::function<void(DamagedBlock&)> work;
  char const* reason;
};

TEST(FlatTree, AcceptsABlockThatIsWhole) { EXPECT_EQ(DamagedBlock().Read(), "accepted"); }

TEST(FlatTree, RefusesADamagedHeader) {
  std::vector<Damage> const damages = {
      {"magic", [](DamagedBlock& b) { b.GetHeader().magic[0] = 'X'; }, "does not begin like one"},
      {"byte order", [](DamagedBlock& b) { b.GetHeader().byteOrder = 0x04030201; },
       "another byte order"},
      {"version", [](DamagedBlock& b) { b.GetHeader().version = 1; }, "version 1, not 2"},
      {"size", [](DamagedBlock& b) { b.GetHeader().size += 8; }, "bytes, not"},
      {"shortened", [](DamagedBlock& b) { b.GetBytes().pop_back(); }, "bytes, not"},
      {"slots", [](DamagedBlock& b) { b.GetHeader().numSlots += 1; }, "contradict"},
      {"classes", [](DamagedBlock& b) { b.GetHeader().numClasses = ~0U; }, "contradict"},
      {"classes and ends",
       [](DamagedBlock& b) {
         b.GetHeader().numClasses = ~0U;
         b.GetHeader().numEnds = ~0U;
       },
       "contradict"},
      {"checksum", [](DamagedBlock& b) { b.GetHeader().checksum ^= 1; }, "checksum"},
      {"a bit of a slot", [](DamagedBlock& b) { b.GetSlot(3).payload ^= 1; }, "checksum"},
  };
  for (Damage const& each : damages) {
    SCOPED_TRACE(each.name);
    DamagedBlock block;
    each.work(block);

    EXPECT_THAT(block.Read(), HasSubstr(each.reason));
  }
}

TEST(FlatTree, RefusesSlotsThatCannotBeFollowed) {
  std::vector<Damage> const damages = {
      {"a node over itself", [](DamagedBlock& b) { b.GetSlot(2).link = 2; }, "slot 2 refers back"},
      {"a circle", [](DamagedBlock& b) { b.GetSlot(2).link = 0; }, "slot 2 refers back"},
      {"a child twice", [](DamagedBlock& b) { b.GetSlot(2).link = 4; },
       "slot 2 refers to a slot that is taken"},
      {"children beyond the end", [](DamagedBlock& b) { b.GetSlot(2).link = 0x7FFFFFFF; },
       "slot 2 refers to what is beyond the last slot"},
      {"children around the end", [](DamagedBlock& b) { b.GetSlot(0).link = ~0U; },
       "slot 0 refers to what is beyond the last slot"},
      {"a predictor", [](DamagedBlock& b) { b.GetSlot(0).word |= 77; },
       "slot 0 tests a predictor beyond the last one"},
      {"a surrogate's predictor", [](DamagedBlock& b) { b.GetSlot(4).word |= 77; },
       "slot 0 tests a predictor beyond the last one"},
      {"surrogates without a last one", [](DamagedBlock& b) { b.GetSlot(4).word &= ~Slot::kLast; },
       "refers to a slot that is taken"},
      {"no end to stay at", [](DamagedBlock& b) { b.GetSlot(3).word &= ~Slot::kKindMask; },
       "slot 0 keeps cases where none can end"},
      {"left without an end", [](DamagedBlock& b) { b.GetSlot(0).word &= ~Slot::kLeftEnds; },
       "slot 0 is wrong about where cases end"},
      {"right with an end", [](DamagedBlock& b) { b.GetSlot(0).word |= Slot::kRightEnds; },
       "slot 0 is wrong about where cases end"},
      {"an end that is none", [](DamagedBlock& b) { b.GetSlot(1).word &= ~Slot::kKindMask; },
       "slot 0 is wrong about where cases end"},
      {"no children", [](DamagedBlock& b) { b.GetSlot(2).payload = 0; }, "slot 2 lacks a child"},
      {"many children", [](DamagedBlock& b) { b.GetSlot(2).payload = Pack(~0U, 0); },
       "slot 2 refers to what is beyond the last slot"},
      {"no child for the rest", [](DamagedBlock& b) { b.GetSlot(2).payload = Pack(3, 3); },
       "slot 2 lacks a child"},
      {"a rule's predictor", [](DamagedBlock& b) { b.GetSlot(11).word |= 77; },
       "slot 2 tests a predictor beyond the last one"},
      {"another predictor than the rule's", [](DamagedBlock& b) { b.GetSlot(2).word ^= 1; },
       "slot 2 tests another predictor than its rule"},
      {"a rule's child for missing values", [](DamagedBlock& b) { b.GetSlot(8).link = 3; },
       "slot 2 has a rule that names a child beyond"},
      {"a rule's upper child", [](DamagedBlock& b) { b.GetSlot(11).payload = Pack(2, 3); },
       "slot 2 has a rule that names a child beyond"},
      {"a long table of codes", [](DamagedBlock& b) { b.GetSlot(8).payload = Pack(~0U, 0); },
       "slot 2 refers to what is beyond the last slot"},
      {"a long table of cuts", [](DamagedBlock& b) { b.GetSlot(11).payload = Pack(~0U, 0); },
       "slot 2 refers to what is beyond the last slot"},
      {"a code's child", [](DamagedBlock& b) { b.GetSlot(10).payload = Pack(0, 3); },
       "slot 2 has a rule that names a child beyond"},
      {"a cut's child", [](DamagedBlock& b) { b.GetSlot(13).link = 3; },
       "slot 2 has a rule that names a child beyond"},
      {"cuts out of order", [](DamagedBlock& b) { b.GetSlot(14).payload = 0; },
       "slot 2 has cut points out of order"},
      {"rules without a last one", [](DamagedBlock& b) { b.GetSlot(11).word &= ~Slot::kLast; },
       "slot 2 refers to what is beyond the last slot"},
      {"a slot of nobody",
       [](DamagedBlock& b) {
         b.GetSlot(13) = b.GetSlot(14);
         b.GetSlot(11).payload = Pack(1, 2);
       },
       "slot 14 belongs to no node"},
      {"an end's predictor", [](DamagedBlock& b) { b.GetSlot(5).word |= 1; },
       "slot 5 is an end and tests a predictor"},
      {"probabilities", [](DamagedBlock& b) { b.GetSlot(5).payload = Pack(0, 5); },
       "slot 5 has probabilities beyond the last ones"},
      {"the number of nodes", [](DamagedBlock& b) { b.GetHeader().numNodes += 1; }, "counts"},
      {"the depth", [](DamagedBlock& b) { b.GetHeader().depth += 1; }, "counts"},
      {"the number of predictors", [](DamagedBlock& b) { b.GetHeader().numPredictors += 1; },
       "counts"},
      {"predictors", [](DamagedBlock& b) { b.GetHeader().numPredictors = ~0U; },
       "too many predictors"},
      {"a flag", [](DamagedBlock& b) { b.GetHeader().hasPredictions = 2; }, "header is damaged"},
  };
  for (Damage const& each : damages) {
    SCOPED_TRACE(each.name);
    DamagedBlock block;
    each.work(block);
    block.Sign();

    EXPECT_THAT(block.Read(), HasSubstr(each.reason));
  }
}

TEST(FlatTree, RefusesANodeWithCodesThatCannotBeFollowed) {
  std::vector<Damage> const damages = {
      {"no end to stay at", [](DamagedBlock& b) { b.GetSlot(3).word &= ~Slot::kKindMask; },
       "slot 0 keeps cases where none can end"},
      {"a surrogate's predictor", [](DamagedBlock& b) { b.GetSlot(4).word |= 77; },
       "slot 0 tests a predictor beyond the last one"},
      {"surrogates without a last one", [](DamagedBlock& b) { b.GetSlot(5).word &= ~Slot::kLast; },
       "slot 0 refers to what is beyond the last slot"},
      {"surrogates of nobody", [](DamagedBlock& b) { b.GetSlot(0).word &= ~Slot::kSlow; },
       "slot 3 belongs to no node"},
  };
  ASSERT_EQ(MakeBlockOfCodes().Read(), "accepted");
  for (Damage const& each : damages) {
    SCOPED_TRACE(each.name);
    DamagedBlock block = MakeBlockOfCodes();
    each.work(block);
    block.Sign();

    EXPECT_THAT(block.Read(), HasSubstr(each.reason));
  }
}

TEST(FlatTree, RefusesMissingValuesOfNoPredictors) {
  std::vector<Damage> const damages = {
      {"beyond the last predictor", [](DamagedBlock& b) { b.GetMissingValue(0).predictor = 4; },
       "missing values are damaged"},
      {"twice", [](DamagedBlock& b) { b.GetMissingValue(0).predictor = 2; },
       "missing values are damaged"},
      {"out of order",
       [](DamagedBlock& b) { std::swap(b.GetMissingValue(0), b.GetMissingValue(1)); },
       "missing values are damaged"},
      {"with more to them", [](DamagedBlock& b) { b.GetMissingValue(1).reserved = 1; },
       "missing values are damaged"},
      {"more of them", [](DamagedBlock& b) { b.GetHeader().numOwnMissingValues += 1; },
       "contradict"},
      {"many of them", [](DamagedBlock& b) { b.GetHeader().numOwnMissingValues = ~0U; },
       "contradict"},
  };
  ASSERT_EQ(MakeBlockOfMissingValues().Read(), "accepted");
  for (Damage const& each : damages) {
    SCOPED_TRACE(each.name);
    DamagedBlock block = MakeBlockOfMissingValues();
    each.work(block);
    block.Sign();

    EXPECT_THAT(block.Read(), HasSubstr(each.reason));
  }
}

TEST(FlatTree, KnowsTheMissingValuesOfPredictors) {
  DamagedBlock block = MakeBlockOfMissingValues();
  FlatTree const tree(block.GetBytes().data(), block.GetBytes().size());

  ASSERT_TRUE(tree.HasOwnMissingValues());
  EXPECT_EQ(std::vector<double>(tree.GetMissingValues(), tree.GetMissingValues() + 4),
            (std::vector<double>{2.0, 2.0, 3.0, 4.0}));
  DamagedBlock other;
  EXPECT_FALSE(FlatTree(other.GetBytes().data(), other.GetBytes().size()).HasOwnMissingValues());
}

TEST(FlatTree, RefusesABlockWithoutARoot) {
  DamagedBlock block;
  block.GetHeader().numSlots = 0;
  block.GetHeader().numEnds = 0;
  block.GetHeader().size = sizeof(BlockHeader);
  block.GetBytes().resize(sizeof(BlockHeader));
  block.Sign();

  EXPECT_THAT(block.Read(), HasSubstr("has no root"));
}

TEST(FlatTree, RefusesEveryBlockThatIsCutShort) {
  DamagedBlock const whole;
  for (DamagedBlock block = whole; !block.GetBytes().empty();) {
    block.GetBytes().pop_back();

    ASSERT_NE(block.Read(), "accepted") << block.GetBytes().size();
  }
}

TEST(FlatTree, RefusesABlockAtAnOddPlace) {
  DamagedBlock block;
  std::vector<std::byte> moved(block.GetBytes().size() + 1);
  std::copy(block.GetBytes().begin(), block.GetBytes().end(), moved.begin() + 1);

  try {
    Scorer::OverBlock(moved.data() + 1, block.GetBytes().size());
    FAIL() << "accepted";
  } catch (InputError const& error) {
    EXPECT_THAT(error.what(), HasSubstr("does not lie at a multiple of 8 bytes"));
  }
}

// Whatever the damage, a block is refused, or can be scored with: under the sanitizers, and beside
// a page that nobody may touch, this shows that nothing outside is read.
TEST(FlatTree, IsSafeToScoreWithWheneverItIsAccepted) {
  std::mt19937 engine(1);
  testing::Draw const draw = [&engine](std::uint32_t below) {
    return static_cast<std::uint32_t>(engine() % below);
  };
  int numAccepted = 0;
  for (int round = 0; round < 20000; ++round) {
    DamagedBlock block = round % 3 == 0   ? DamagedBlock()
                         : round % 3 == 1 ? MakeBlockOfCodes()
                                          : MakeBlockOfMissingValues();
    auto const numChanges = 1 + engine() % 3;
    for (unsigned int change = 0; change < numChanges; ++change) {
      std::size_t const place = 16 + engine() % (block.GetBytes().size() - 16);
      block.GetBytes()[place] ^= static_cast<std::byte>(1U << engine() % 8);
    }
    block.Sign();
    if (block.Read() != "accepted") continue;
    ++numAccepted;
    testing::GuardedVector<std::byte> const guarded(block.GetBytes().begin(),
                                                    block.GetBytes().end());
    ASSERT_NO_THROW(testing::ScoreEveryWay(guarded.data(), guarded.size(), draw)) << round;
  }
  EXPECT_GT(numAccepted, 100);
}

// A fuzzer that begins with nothing that is accepted hardly gets beyond the header. What it finds
// and has to be refused belongs to the tests above.
TEST(FlatTree, AcceptsTheSeedsOfItsFuzzer) {
  std::mt19937 engine(1);
  int numSeeds = 0;
  for (auto const& entry : std::filesystem::directory_iterator(TREE_BLOCK_SEEDS)) {
    SCOPED_TRACE(entry.path().filename().string());
    ++numSeeds;
    std::ifstream file(entry.path(), std::ios::binary);
    std::string const bytes(std::istreambuf_iterator<char>(file), {});
    testing::GuardedVector<char> const block(bytes.begin(), bytes.end());

    EXPECT_NO_THROW(testing::ScoreEveryWay(
        block.data(), block.size(),
        [&engine](std::uint32_t below) { return static_cast<std::uint32_t>(engine() % below); }));
  }
  EXPECT_GT(numSeeds, 0);
}

TEST(FlatTree, RefusesEveryBlockWithAChangedBit) {
  for (DamagedBlock const& whole : {DamagedBlock(), MakeBlockOfMissingValues()}) {
    for (std::size_t bit = 0; bit < 8 * whole.GetBytes().size(); ++bit) {
      DamagedBlock block = whole;
      block.GetBytes()[bit / 8] ^= static_cast<std::byte>(1U << bit % 8);

      ASSERT_NE(block.Read(), "accepted") << bit;
    }
  }
}

TEST(FlatTree, KnowsHowFarDownAllNodesArePlain) {
  auto const complete = ANode(1)
                            .SplitAt(0, 0.0, ANode(2).SplitAt(0, -1.0, ANode(4), ANode(5)).Dumb(0),
                                     ANode(3).SplitAt(0, 1.0, ANode(6), ANode(7)).Dumb(0))
                            .Dumb(0)
                            .Build();
  auto const uneven =
      ANode(1)
          .SplitAt(0, 0.0, ANode(2), ANode(3).SplitAt(0, 1.0, ANode(6), ANode(7)).Dumb(0))
          .Dumb(0)
          .Build();
  auto const slow = ANode(1).SplitAt(0, 0.0, ANode(2), ANode(3)).SurrogateAt(1, 0.0).Build();

  PlainLevels const ofComplete = FlatTree(Flatten(*complete)).GetPlainLevels(true);
  PlainLevels const ofUneven = FlatTree(Flatten(*uneven)).GetPlainLevels(true);
  PlainLevels const ofSlow = FlatTree(Flatten(*slow)).GetPlainLevels(true);

  EXPECT_EQ(ofComplete.count, 2U);
  EXPECT_TRUE(ofComplete.isWholeTree);
  EXPECT_EQ(ofUneven.count, 0U);
  EXPECT_FALSE(ofUneven.isWholeTree);
  EXPECT_FALSE(ofUneven.hasOthersBelow);
  EXPECT_EQ(ofSlow.count, 0U);
  EXPECT_TRUE(ofSlow.hasOthersBelow);
  EXPECT_FALSE(FlatTree(Flatten(*slow)).GetPlainLevels(false).hasOthersBelow);
}

TEST(FlatTree, KnowsDownToWhereAllNodesAreAtTheFront) {
  testing::TreeShape shape;
  shape.binaryOnly = true;
  shape.placesAll = true;
  // Slots 0, 1 to 2, 3 to 6, 7 to 14, 15 to 30.
  std::uint32_t const expected[] = {1, 2, 3, 4, 4, 4};
  for (std::uint32_t numLevels = 1; numLevels <= 6; ++numLevels) {
    SCOPED_TRACE(numLevels);
    shape.numFullLevels = numLevels;
    shape.maxNumNodes = 1;
    auto const root = testing::MakeTree(shape, [](std::uint32_t) { return 0U; });

    EXPECT_EQ(FlatTree(Flatten(*root)).GetPlainLevels(true).numAtFront, expected[numLevels - 1]);
  }
}

// Four levels, with the root's two surrogates among them: slots 0, 1 to 2, 5 to 8, 9 to 16.
TEST(FlatTree, TakesNoLevelToBeAtTheFrontThatSurrogatesPushOut) {
  std::function<tree::testing::NodeBuilder(unsigned int)> const below = [&below](unsigned int id) {
    if (id >= 16) return ANode(id);
    return ANode(id).SplitAt(0, 0.0, below(2 * id), below(2 * id + 1)).Dumb(0);
  };
  auto const root = ANode(1)
                        .SplitAt(0, 0.0, below(2), below(3))
                        .SurrogateAt(1, 0.0)
                        .SurrogateAt(2, 0.0)
                        .Dumb(0)
                        .Build();

  PlainLevels const levels = FlatTree(Flatten(*root)).GetPlainLevels(false);

  EXPECT_EQ(levels.count, 4U);
  EXPECT_EQ(levels.numAtFront, 3U);
}

TEST(FlatTree, KnowsWhetherAnyNodeIsGeneral) {
  auto const ofTwoWays = ANode(1).SplitAt(0, 0.0, ANode(2), ANode(3)).SurrogateAt(1, 0.0).Build();

  EXPECT_FALSE(FlatTree(Flatten(*ofTwoWays)).GetPlainLevels(true).hasGeneralBelow);
  DamagedBlock block;
  FlatTree const general(block.GetBytes().data(), block.GetBytes().size());
  EXPECT_TRUE(general.GetPlainLevels(true).hasGeneralBelow);
}

}  // namespace
}  // namespace tree::score
