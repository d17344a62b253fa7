#ifndef TREE_SCORE_SCORER_H_
#define TREE_SCORE_SCORER_H_

/// @file
/// Scoring of many cases at once. A `Scorer` is made once, from a tree or from a block of memory
/// that another scorer was, and answers for any number of cases (`Cases`) in which node each of
/// them ends and what that node predicts: what `NodeImp::DropObservationThroughTree` (without a
/// stop node) and the node found would answer, many times as fast.
///
/// The form of a tree that is scored is one flat block of memory without pointers, so it can be
/// written to a file and used where the file is mapped.
/// Threads: nothing changes a scorer; any number of threads may use one at a time.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "tree/export.h"
#include "tree/nodes.h"
#include "tree/score/cases.h"
#include "tree/score/input_error.h"

namespace tree::score {

class FlatTree;

/// What is wanted of each case: arrays of the caller's with room for an answer per case, in the
/// order of the cases; null for what is not wanted.
struct Answers {
  /// Where the case ends: a position in the flat tree, less than `GetNumPositions`. Cases end at
  /// the same position if and only if they end in the same node.
  std::uint32_t* positions = nullptr;
  /// The identifier of the node in which the case ends, as `Node::GetId` tells it.
  std::uint32_t* ids = nullptr;
  /// What the node predicts, as `Node::GetAssignment` tells it.
  double* predictions = nullptr;
  /// `GetNumClasses` numbers per case, those of a case side by side: the probabilities of the
  /// classes, as `ClsInfo::GetClassProbability` tells them of the training sample.
  double* probabilities = nullptr;
};

/// Some of the cases, by number from 0, in any order and any number of times.
struct Selection {
  /// **Borrowed**. Not looked at when `size` is 0.
  std::size_t const* numbers = nullptr;
  std::size_t size = 0;
};

/// How a call does its work.
struct ScoreOptions {
  /// The cases to answer for, in the order of the answers; all of them without a selection, none
  /// with an empty one.
  std::optional<Selection> selection;
  /// Number of threads, the calling one included; 0 for as many as the machine can run at a time.
  /// Answers are the same for every number. Small calls use fewer.
  int numThreads = 0;
};

/// A tree in the form that cases are scored with. Nothing can change it, and copies share it.
class TREE_API Scorer {
 public:
  /// The scorer of the tree below `root`, which is read and then no longer needed. Linear in the
  /// size of the tree.
  /// Refuses, by `InputError`, what it could not follow exactly: nodes and rules of other classes
  /// than `NodeImp`, `OSplitRule` and `NSplitRule`; a node with children that has no primary rule,
  /// or lacks a child or a surrogate; a child position beyond the children of the node; a predictor
  /// index that is negative or above 4194303; cut points that are not in order; and trees of more
  /// than 4 billion nodes, surrogates and table entries.
  static Scorer FromTree(NodeImp const& root);
  /// The scorer that a block is (`GetBlock`). `block` is **copied**. Linear in its size.
  /// Refuses, by `InputError`, what is no whole, undamaged block of a version and byte order that
  /// this library reads, or could lead out of the block or in a circle.
  static Scorer FromBlock(void const* block, std::size_t size);
  /// The same without a copy: `block` is **borrowed** for the life of the scorer and its copies,
  /// and must not change. Refuses also a block that does not lie at a multiple of 8 bytes.
  static Scorer OverBlock(void const* block, std::size_t size);

  /// Copies share the block.
  ///@{
  Scorer(Scorer const& other);
  Scorer& operator=(Scorer const& other);
  ///@}
  ~Scorer();

  /// Scores cases: fills the arrays of `answers`. With one thread, nothing is allocated.
  /// Refuses, by `InputError` and before anything is written: cases with fewer predictors than
  /// `GetNumPredictors`; rows or a column without values that the tree asks for; a selected case
  /// that is not there, or a selection without numbers; a negative number of threads; and
  /// predictions or probabilities of a tree without (`HasPredictions`, `GetNumClasses`).
  void Score(Cases const& cases, Answers const& answers, ScoreOptions const& options = {}) const;

  /// The position at which one case ends. `values`: `GetNumPredictors` values, by predictor index.
  /// Allocates nothing and throws nothing.
  ///@{
  std::uint32_t FindPosition(double const* values) const noexcept;
  std::uint32_t FindPosition(float const* values) const noexcept;
  ///@}
  /// The identifier of the node at a position where cases end. Requires such a position.
  std::uint32_t GetId(std::uint32_t position) const noexcept;
  /// What the node at a position where cases end predicts; NaN when `HasPredictions` is false.
  /// Requires such a position.
  double GetPrediction(std::uint32_t position) const noexcept;
  /// The class probabilities, `GetNumClasses` of them, of the node at a position where cases end;
  /// null when there are none. **Borrowed** for the life of the scorer and its copies. Requires
  /// such a position.
  double const* GetProbabilities(std::uint32_t position) const noexcept;

  /// Positions are less than this number.
  std::uint32_t GetNumPositions() const noexcept;
  /// Number of nodes of the tree.
  std::uint32_t GetNumNodes() const noexcept;
  /// Number of levels below the root.
  std::uint32_t GetDepth() const noexcept;
  /// How many predictors a case must have: one more than the highest index that a rule tests.
  std::uint32_t GetNumPredictors() const noexcept;
  /// Number of classes that each case gets a probability for; 0 in a tree for numbers, and where
  /// not every node in which cases end has as many classes of the training sample.
  std::uint32_t GetNumClasses() const noexcept;
  /// Whether every node in which cases end has statistics of the training sample to predict from.
  bool HasPredictions() const noexcept;

  /// The block of memory that this scorer is: `GetSize` bytes, to be written to a file or sent
  /// elsewhere. **Borrowed** for the life of the scorer and its copies.
  void const* GetBlock() const noexcept;
  /// The size of the block in bytes.
  std::size_t GetSize() const noexcept;

 private:
  explicit Scorer(std::shared_ptr<FlatTree const> tree);

  std::shared_ptr<FlatTree const> tree_;
};

}  // namespace tree::score

#endif  // TREE_SCORE_SCORER_H_
