// Makes a tree and cases of the bytes, and holds every way to score them against the walk from node
// to node.

#include <cstddef>
#include <cstdint>

#include "fuzz/fuzz_target.h"
#include "score_testing/agreement.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace tree::score::testing;
  // The tree takes as many bytes as it needs, and the cases what is left.
  Draw const draw = DrawFrom(data, size);
  TreeShape shape;
  shape.maxNumNodes = 1 + draw(30);
  shape.numPredictors = 1 + draw(4);
  shape.binaryOnly = draw(4) == 0;
  auto const root = MakeTree(shape, draw);
  CheckAgreement(*root, shape.numPredictors, 1 + draw(40), draw);
  return 0;
}
