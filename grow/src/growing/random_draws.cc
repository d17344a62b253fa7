#include "growing/random_draws.h"

#include <random>
#include <utility>

#include "growing/workers.h"

namespace tree::grow {
namespace {

// The distributions of the standard library may differ from one to the next; its engines do not.
using Engine = std::mt19937_64;

/// Uniform in [0, 1).
double DrawShare(Engine& engine) { return static_cast<double>(engine() >> 11) * 0x1p-53; }

/// Uniform in [0, size). The bias is below size / 2^64.
std::size_t DrawIndex(Engine& engine, std::size_t size) { return engine() % size; }

}  // namespace

std::vector<std::uint8_t> DrawTestSample(std::size_t numCases, double testShare, long seed,
                                         PollFunction const& poll) {
  Engine engine(static_cast<Engine::result_type>(seed));
  std::vector<std::uint8_t> drawn(numCases);
  ForSlices(numCases, poll, [&](std::size_t begin, std::size_t end) {
    for (std::size_t index = begin; index < end; ++index) {
      drawn[index] = DrawShare(engine) < testShare ? 1 : 0;
    }
  });
  return drawn;
}

std::vector<std::uint32_t> DrawFolds(std::size_t numCases, std::size_t numFolds, long seed,
                                     PollFunction const& poll) {
  Engine engine(static_cast<Engine::result_type>(seed));
  std::vector<std::uint32_t> folds(numCases);
  for (std::size_t index = 0; index < numCases; ++index) {
    folds[index] = static_cast<std::uint32_t>(index % numFolds);
  }
  ForSlices(numCases, poll, [&](std::size_t begin, std::size_t end) {
    for (std::size_t left = numCases - begin; left > numCases - end; --left) {
      std::swap(folds[left - 1], folds[DrawIndex(engine, left)]);
    }
  });
  return folds;
}

}  // namespace tree::grow
