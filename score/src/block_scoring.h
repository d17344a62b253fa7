#ifndef TREE_SCORE_SRC_BLOCK_SCORING_H_
#define TREE_SCORE_SRC_BLOCK_SCORING_H_

#include <cstddef>
#include <cstdint>

#include "flat_tree.h"
#include "tree/score/cases.h"

namespace tree::score {

/// The most cases that are scored side by side: what is remembered of them stays in the fastest
/// cache.
constexpr std::size_t kBlockSize = 256;

/// Finds where the cases `begin` to `begin` + `size` - 1 end; with a selection, those with the
/// numbers that stand there. `positions`: one per case. `size`: `kBlockSize` at most.
using ScoreBlock = void (*)(FlatTree const& tree, Cases const& cases, std::size_t const* selection,
                            std::size_t begin, std::uint32_t size, std::uint32_t* positions);

/// The fastest one for these cases on this machine.
ScoreBlock ChooseScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection);

/// The fastest one that needs nothing but C++.
ScoreBlock ChoosePortableScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection);

/// One for processors with AVX-512; null when this is none, or none of these cases.
ScoreBlock ChooseAvx512ScoreBlock(FlatTree const& tree, Cases const& cases, bool hasSelection);

/// What values can be missing by, when bitmaps are not among it.
enum class MissingKind : std::uint8_t {
  kNever,
  kByBits,
  kByValue,
  kByPredictor,
  kOrNan,
  kByPredictorOrNan,
};

/// How the cases lie in memory.
enum class Layout : std::uint8_t { kDoubleRows, kFloatRows, kDoubleColumns, kFloatColumns, kAny };

/// The layout of the cases, as far as the tree asks for them.
Layout FindLayout(FlatTree const& tree, Cases const& cases);

/// What binary nodes have to look for in cases of this layout. Means nothing for `kAny`, whose
/// bitmaps may say more.
MissingKind FindMissingKind(FlatTree const& tree, Cases const& cases, Layout layout);

}  // namespace tree::score

#endif  // TREE_SCORE_SRC_BLOCK_SCORING_H_
