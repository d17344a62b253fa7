// Bytes to operations on costs, priors and scores: the first byte chooses which, the others what
// happens to them.

#include <array>
#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_target.h"
#include "property/models/sequences.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace tree::testing;
  static constexpr std::array kSequences = {RunCosts, RunPriors, RunScores};
  if (size > 0) kSequences[data[0] % kSequences.size()](Choices({data + 1, size - 1}));
  return 0;
}
