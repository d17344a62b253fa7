#ifndef TREE_GROW_SRC_GROWING_CASE_LISTS_H_
#define TREE_GROW_SRC_GROWING_CASE_LISTS_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "growing/sorted_cases.h"
#include "growing/training_data.h"
#include "growing/work_memory.h"
#include "growing/workers.h"

namespace tree::grow {

/// A part of a list, or of the places.
struct Range {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;

  std::uint32_t Size() const { return end - begin; }
};

/// What is one node's.
struct NodeRanges {
  Range places;                    ///< the places of its cases
  std::vector<Range> byPredictor;  ///< its part of the list of each sorted predictor
};

/// The data of so many cases stay in the processor's cache; those of more have to be called for
/// ahead when they are visited in the order of a sorted predictor.
inline constexpr std::size_t kPlacesInCache = std::size_t{1} << 17;

/// The child that the case at each place goes to.
using ChildOfPlace = std::vector<std::uint8_t>;
/// More children than this a split has not.
inline constexpr int kMaxChildren = 254;
/// Of a case that goes to no child.
inline constexpr std::uint8_t kNoChild = 0xFF;

/// Where the codes of coded predictors are while a tree grows.
enum class CodeOrder {
  kByPlace,  ///< they follow the cases, so that those of a node lie together
  kByCase,   ///< they stay where they are, for algorithms that read all cases of a level at once
};

/// The codes of a coded predictor, whatever their order is.
class PlacedCodes {
 public:
  /// `cases`: the case at each place, when the codes are by case; or else null.
  PlacedCodes(std::uint16_t const* codes, std::uint32_t const* cases)
      : codes_(codes), cases_(cases) {}

  std::uint16_t operator[](std::uint32_t place) const {
    return codes_[cases_ == nullptr ? place : cases_[place]];
  }

 private:
  std::uint16_t const* codes_;
  std::uint32_t const* cases_;
};

/// The cases of every node of a tree that is being grown. Each case has a place, and a node is a
/// range of places: splitting a node moves the cases of each child together, so that what a node
/// needs of its cases lies together in memory, however deep it is in the tree. At each place are
/// the case's class or number, its weights and its codes of coded predictors; and for each sorted
/// predictor there is a list of the places of the cases that have a value of it, in which a node is
/// a range, too. Splitting keeps the order of these lists within each child: predictors are sorted
/// once for the whole tree, and all nodes together take the memory of the root.
class CaseLists {
 public:
  /// The lists of a root with the cases for which `included` is not 0; all cases when it is empty.
  /// `data`: with prepared predictors; **borrowed**, as are the `workers`.
  CaseLists(TrainingData const& data, std::vector<std::uint8_t> const& included, Workers& workers,
            CodeOrder codeOrder = CodeOrder::kByPlace);
  /// The lists of a root with all cases, which uses up the sorted lists of the data: half the
  /// memory, and nothing is copied.
  CaseLists(TrainingData& data, Workers& workers, CodeOrder codeOrder = CodeOrder::kByPlace);

  /// Whom to poll while the cases of a node are gone through.
  Workers& GetWorkers() const { return workers_; }
  /// The root, which has everything.
  NodeRanges const& GetRoot() const { return root_; }
  /// Number of places.
  std::size_t GetNumPlaces() const { return cases_.size(); }
  /// The cases of a node by their index in the data, ascending.
  std::span<std::uint32_t const> Cases(NodeRanges const& node) const {
    return {cases_.data() + node.places.begin, node.places.Size()};
  }
  /// The index in the data of the case at a place.
  std::uint32_t CaseAt(std::uint32_t place) const { return cases_[place]; }
  /// The places of the cases of a node with a value of the sorted predictor, in its order.
  std::span<SortedCase const> Sorted(NodeRanges const& node, std::size_t predictor) const {
    Range const range = node.byPredictor[predictor];
    return {sorted_[predictor].data() + range.begin, range.Size()};
  }

  /// What the cases are, by place; good for the life of the lists. Null where the data has none:
  /// classes of numbers, numbers of classes, weights that are all 1.
  ///@{
  std::uint16_t const* GetClasses() const { return DataOf(classes_); }
  std::int64_t const* GetNumbers() const { return DataOf(numbers_); }
  std::int64_t const* GetWeights() const { return DataOf(weights_); }
  std::int64_t const* GetFrequencies() const { return DataOf(frequencies_); }
  ///@}
  std::int64_t WeightAt(std::uint32_t place) const {
    return weights_.empty() ? 1 : weights_[place];
  }
  /// The codes of a coded predictor, by place.
  PlacedCodes Codes(std::size_t predictor) const {
    if (codeOrder_ == CodeOrder::kByPlace) return {codes_[predictor].data(), nullptr};
    return {data_.GetPredictors()[predictor].codes.data(), cases_.data()};
  }

  /// Moves the cases of a node so that those of each child lie together, in order; gives the places
  /// of each child. Cases of no child come last and belong to none. `childOf`: the child of each
  /// case of the node, by its place so far, below `numChildren`, or `kNoChild`. Codes and lists
  /// stay as they are until they are divided, too.
  std::vector<NodeRanges> DivideCases(NodeRanges const& node, ChildOfPlace const& childOf,
                                      int numChildren);
  /// Makes the codes, or the list, of a predictor follow the cases, and adds the children's parts
  /// of the list to `children`. Different predictors can be divided at the same time, each with a
  /// `scratch` of its own, which may hold anything.
  void DividePredictor(NodeRanges const& node, std::size_t predictor,
                       std::vector<NodeRanges>& children, WorkMemory<SortedCase>& scratch);

 private:
  template <class Value>
  static Value const* DataOf(std::vector<Value> const& values) {
    return values.empty() ? nullptr : values.data();
  }
  void PlaceCases(std::vector<std::uint8_t> const& included);
  void ReadPredictors(Workers& workers);
  std::vector<SortedCase> PlacesOf(std::vector<SortedCase> const& cases) const;
  template <class Value>
  void Follow(NodeRanges const& node, std::vector<Value>& values) const;

  TrainingData const& data_;
  Workers& workers_;
  CodeOrder codeOrder_;
  std::vector<std::uint32_t> cases_;
  std::vector<std::uint16_t> classes_;
  std::vector<std::int64_t> numbers_;
  std::vector<std::int64_t> weights_;
  std::vector<std::int64_t> frequencies_;
  std::vector<std::vector<std::uint16_t>> codes_;  // by predictor; empty where they stay
  std::vector<std::vector<SortedCase>> sorted_;    // by predictor; empty for coded ones
  std::vector<char> hasTies_;                      // by predictor
  // Where the case that was at each place before the node was divided is now. While the root is
  // made: the place of each case.
  std::vector<std::uint32_t> newPlaces_;
  NodeRanges root_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_CASE_LISTS_H_
