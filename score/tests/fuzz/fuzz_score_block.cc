// Takes the bytes for a block: it is refused, or scores any cases without leaving it, and in every
// way alike. The checksum is put right, since bytes would hardly ever have it.

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "flat_tree.h"
#include "fuzz/fuzz_target.h"
#include "score_testing/guarded_memory.h"
#include "score_testing/random_trees.h"
#include "score_testing/score_every_way.h"
#include "tree/score/input_error.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace tree::score;
  testing::GuardedVector<std::uint64_t> block((size + 7) / 8);
  if (size > 0) std::memcpy(block.data(), data, size);
  if (size >= sizeof(BlockHeader)) {
    BlockHeader header;
    std::memcpy(&header, block.data(), sizeof(header));
    header.checksum = ComputeChecksum(block.data(), size);
    std::memcpy(block.data(), &header, sizeof(header));
  }
  try {
    testing::ScoreEveryWay(block.data(), size, testing::DrawFrom(data, size));
  } catch (InputError const&) {
  }
  return 0;
}
