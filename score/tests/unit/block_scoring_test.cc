#include "block_scoring.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "flattening.h"
#include "testing/tree_builder.h"

namespace tree::score {
namespace {

using tree::testing::ANode;

FlatTree MakeTree() {
  auto const root = ANode(1).SplitAt(0, 1.0, ANode(2), ANode(3)).Dumb(0).Build();
  return FlatTree(Flatten(*root));
}

bool HasAvx512() {
#if defined(__x86_64__)
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
#else
  return false;
#endif
}

TEST(ChooseScoreBlock, TakesVectorsOfEveryLayoutWhereTheProcessorHasThem) {
  if (!HasAvx512()) GTEST_SKIP() << "this processor has none";
  FlatTree const tree = MakeTree();
  double const doubles[] = {0.0, 2.0};
  float const floats[] = {0.0F, 2.0F};
  std::int32_t const codes[] = {0, 2};
  Column const ofDoubles[] = {Column(doubles)};
  Column const ofFloats[] = {Column(floats)};
  Column const ofCodes[] = {Column(codes)};
  struct {
    char const* name;
    Cases cases;
  } const kinds[] = {
      {"rows of doubles", Cases::OfRows(doubles, 2, 1)},
      {"rows of floats", Cases::OfRows(floats, 2, 1)},
      {"columns of doubles", Cases::OfColumns(ofDoubles, 1, 2)},
      {"columns of floats", Cases::OfColumns(ofFloats, 1, 2)},
      {"columns of codes", Cases::OfColumns(ofCodes, 1, 2)},
  };
  for (auto const& [name, cases] : kinds) {
    for (bool const arePicked : {false, true}) {
      SCOPED_TRACE(std::string(name) + (arePicked ? ", picked" : ""));
      ScoreBlock const vectors = ChooseAvx512ScoreBlock(tree, cases, arePicked);

      EXPECT_NE(vectors, nullptr);
      EXPECT_EQ(ChooseScoreBlock(tree, cases, arePicked), vectors);
      EXPECT_NE(ChoosePortableScoreBlock(tree, cases, arePicked), vectors);
    }
  }
}

// Values are found by signed numbers of 32 bits, of which a block of 256 rows must not take more;
// those of picked rows, which may lie anywhere, by addresses.
TEST(ChooseScoreBlock, TakesNoVectorsWhereRowsLieTooFarApart) {
  if (!HasAvx512()) GTEST_SKIP() << "this processor has none";
  FlatTree const tree = MakeTree();
  double const value = 0.0;
  std::size_t const limit =
      (std::numeric_limits<std::int32_t>::max() - std::size_t{Slot::kPredictorMask}) / kBlockSize;
  struct {
    std::size_t stride;
    bool hasVectors;
  } const rows[] = {{1, true}, {limit, true}, {limit + 1, false}, {std::size_t{1} << 32U, false}};
  for (auto const& [stride, hasVectors] : rows) {
    SCOPED_TRACE(stride);
    Cases const cases = Cases::OfRows(&value, 1, 1, stride);

    EXPECT_EQ(ChooseAvx512ScoreBlock(tree, cases, false) != nullptr, hasVectors);
    EXPECT_NE(ChooseScoreBlock(tree, cases, false), nullptr);
    EXPECT_NE(ChooseAvx512ScoreBlock(tree, cases, true), nullptr);
  }
}

/// Memory that takes no room until it is written to, for more values than 32 bits can count.
class ManyFloats {
 public:
  static constexpr std::size_t kCount = (std::size_t{1} << 33U) + 4;

  ManyFloats()
      : memory_(::mmap(nullptr, kCount * sizeof(float), PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~ManyFloats() {
    if (AreThere()) ::munmap(memory_, kCount * sizeof(float));
  }
  ManyFloats(ManyFloats const&) = delete;
  ManyFloats& operator=(ManyFloats const&) = delete;

  bool AreThere() const { return memory_ != MAP_FAILED; }
  float* Get() const { return static_cast<float*>(memory_); }

 private:
  void* memory_;
};

// Cases of two predictors, each 0 but in a few cases, and the node in which each of those ends.
class ScoreBlockOfManyCases : public ::testing::Test {
 protected:
  static constexpr std::size_t kNumCases = ManyFloats::kCount / 2;
  static constexpr std::size_t kPicked[] = {kNumCases - 1, 0, kNumCases - 2,
                                            (std::size_t{1} << 31U) + 1};

  void SetUp() override {
    if (!floats_.AreThere()) GTEST_SKIP() << "the system gives no such memory";
  }

  // `stride`: from a case to the next. `distance`: from a predictor to the next.
  void SetValues(std::size_t stride, std::size_t distance) {
    float const values[][2] = {{2.0F, 4.0F}, {0.0F, 0.0F}, {0.0F, 4.0F}, {2.0F, 0.0F}};
    for (std::size_t place = 0; place < 4; ++place) {
      for (std::size_t predictor = 0; predictor < 2; ++predictor) {
        GetFloats()[kPicked[place] * stride + predictor * distance] = values[place][predictor];
      }
    }
  }

  static void ExpectIds(FlatTree const& tree, Cases const& cases,
                        std::vector<std::uint32_t> const& expected) {
    for (auto const& choose : {&ChooseScoreBlock, &ChoosePortableScoreBlock}) {
      std::uint32_t positions[4] = {};
      choose(tree, cases, true)(tree, cases, kPicked, 0, 4, positions);
      for (std::size_t place = 0; place < 4; ++place) {
        EXPECT_EQ(GetId(tree, positions[place]), expected[place]) << "case " << kPicked[place];
      }
      choose(tree, cases, false)(tree, cases, nullptr, kNumCases - 2, 2, positions);
      EXPECT_EQ(GetId(tree, positions[0]), expected[2]);
      EXPECT_EQ(GetId(tree, positions[1]), expected[0]);
    }
  }

  static std::uint32_t GetId(FlatTree const& tree, std::uint32_t position) {
    return tree.GetSlots()[position].link;
  }

  // Asks for the second predictor only.
  static FlatTree MakeShallowTree() {
    auto const root = ANode(1).SplitAt(1, 3.0, ANode(2), ANode(3)).Dumb(0).Build();
    return FlatTree(Flatten(*root));
  }
  // Asks for as many predictors as there are.
  static FlatTree MakeDeepTree() {
    auto const root = ANode(1)
                          .SplitAt(0, 1.0, ANode(2).SplitAt(1, 3.0, ANode(4), ANode(5)).Dumb(0),
                                   ANode(3).SplitAt(1, 3.0, ANode(6), ANode(7)).Dumb(0))
                          .Dumb(0)
                          .Build();
    return FlatTree(Flatten(*root));
  }

  float* GetFloats() const { return floats_.Get(); }

 private:
  ManyFloats floats_;
};

TEST_F(ScoreBlockOfManyCases, FindsValuesOfRows) {
  SetValues(2, 1);
  Cases const cases = Cases::OfRows(GetFloats(), kNumCases, 2);

  ExpectIds(MakeShallowTree(), cases, {3, 2, 3, 2});
  ExpectIds(MakeDeepTree(), cases, {7, 4, 5, 6});
}

TEST_F(ScoreBlockOfManyCases, FindsValuesOfColumns) {
  SetValues(1, kNumCases);
  Column const columns[] = {Column(GetFloats()), Column(GetFloats() + kNumCases)};
  Cases const cases = Cases::OfColumns(columns, 2, kNumCases);

  ExpectIds(MakeShallowTree(), cases, {3, 2, 3, 2});
  ExpectIds(MakeDeepTree(), cases, {7, 4, 5, 6});
}

}  // namespace
}  // namespace tree::score
