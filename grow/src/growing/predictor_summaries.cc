#include "growing/predictor_summaries.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace tree::grow {
namespace {

void Summarise(NodeImp& node, std::size_t predictor, double minimum, double maximum,
               bool hasMissing) {
  auto const index = static_cast<int>(predictor);
  node.SetPredictorRange(index, minimum, maximum);
  node.SetPredictorMissingValueFlag(index, hasMissing);
}

/// Which codes of a coded predictor some cases have.
class CodesPresent {
 public:
  /// `numCodes`: how many codes the cases can have, with that of missing values.
  CodesPresent(GrowingPredictor const& description, std::size_t numCodes)
      : description_(description), present_(description.values.size()), numUnseen_(numCodes) {}

  /// Gives whether nothing new can come: there are few codes, and mostly they are all seen soon.
  bool Add(std::uint16_t code) {
    if (code == GrowingPredictor::kMissingCode) {
      numUnseen_ -= hasMissing_ ? 0U : 1U;
      hasMissing_ = true;
    } else {
      numUnseen_ -= present_[code] != 0 ? 0U : 1U;
      present_[code] = 1;
    }
    return numUnseen_ == 0;
  }
  void Store(std::size_t predictor, NodeImp& node) const {
    std::vector<double> values;
    for (std::size_t code = 0; code < present_.size(); ++code) {
      if (present_[code] != 0) values.push_back(description_.values[code]);
    }
    Summarise(node, predictor, values.empty() ? 0.0 : values.front(),
              values.empty() ? 0.0 : values.back(), hasMissing_);
    if (!description_.IsNominal()) return;
    node.SetPredictorValues(static_cast<int>(predictor), values.data(),
                            static_cast<int>(values.size()));
  }

 private:
  GrowingPredictor const& description_;
  std::vector<char> present_;  // by code
  bool hasMissing_ = false;
  std::size_t numUnseen_;
};

/// How many codes of a coded predictor the cases of a node can have, with that of missing values.
std::size_t NumCodesOf(NodeImp const& node, GrowingPredictor const& description,
                       std::size_t predictor) {
  auto const index = static_cast<int>(predictor);
  bool hasMissing = false;
  node.GetPredictorMissingValueFlag(index, &hasMissing);
  std::size_t const numMissing = hasMissing ? 1 : 0;
  if (description.IsNominal()) {
    int count = 0;
    node.GetNumPredictorValues(index, &count);
    return static_cast<std::size_t>(count) + numMissing;
  }
  double minimum = 0.0;
  double maximum = 0.0;
  node.GetPredictorRange(index, &minimum, &maximum);
  auto const& values = description.values;
  return static_cast<std::size_t>(std::upper_bound(values.begin(), values.end(), maximum) -
                                  std::lower_bound(values.begin(), values.end(), minimum)) +
         numMissing;
}

/// The range of the values that some cases have of a predictor whose codes do not tell: one with
/// intervals, or one that is not used.
class ValueRange {
 public:
  void Add(TrainingData const& data, std::size_t predictor, std::uint32_t index) {
    double const value = data.ValueOf(predictor, index);
    if (data.IsMissing(predictor, index)) {
      hasMissing_ = true;
    } else if (isEmpty_) {
      isEmpty_ = false;
      minimum_ = maximum_ = value;
    } else {
      minimum_ = std::min(minimum_, value);
      maximum_ = std::max(maximum_, value);
    }
  }
  void Store(std::size_t predictor, NodeImp& node) const {
    Summarise(node, predictor, minimum_, maximum_, hasMissing_);
  }

 private:
  double minimum_ = 0.0;
  double maximum_ = 0.0;
  bool isEmpty_ = true;
  bool hasMissing_ = false;
};

/// Whether the codes of a predictor do not tell its range.
bool NeedsValues(GrowingPredictor const& description) {
  return description.hasIntervals || !description.used;
}

/// Whether some case of the child has no value, when not all cases of the parent have one.
bool HasMissing(std::span<SortedCase const> cases, std::uint8_t child, std::size_t numInChild,
                ChildOfPlace const& childOf, Workers& workers) {
  std::size_t count = 0;
  ForSlices(cases.size(), workers, [&](std::size_t begin, std::size_t end) {
    for (SortedCase const item : cases.subspan(begin, end - begin)) {
      count += childOf[item.Place()] == child ? 1U : 0U;
    }
  });
  return count < numInChild;
}

/// The values of the child's first and last case in the list of the parent: soon found, but for the
/// child on the far side of a cut.
void SummariseSorted(TrainingData const& data, CaseLists const& lists,
                     std::span<SortedCase const> cases, std::uint8_t child, bool hasMissing,
                     std::size_t predictor, ChildOfPlace const& childOf, NodeImp& node) {
  auto const isOfChild = [&](SortedCase item) { return childOf[item.Place()] == child; };
  Workers& workers = lists.GetWorkers();
  std::size_t const first = FindPolling(
      cases.size(), workers, [&](std::size_t position) { return isOfChild(cases[position]); });
  if (first == cases.size()) {
    Summarise(node, predictor, 0.0, 0.0, hasMissing);
    return;
  }
  auto const fromBack = [&](std::size_t number) { return cases[cases.size() - 1 - number]; };
  std::size_t const last = FindPolling(
      cases.size(), workers, [&](std::size_t number) { return isOfChild(fromBack(number)); });
  Summarise(node, predictor, data.ValueOf(predictor, lists.CaseAt(cases[first].Place())),
            data.ValueOf(predictor, lists.CaseAt(fromBack(last).Place())), hasMissing);
}

}  // namespace

void SummarisePredictor(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
                        std::size_t predictor, NodeImp& node) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  if (NeedsValues(description)) {
    ValueRange range;
    ForEachPolling(ranges.places.begin, ranges.places.end, lists.GetWorkers(),
                   [&](std::uint32_t place) { range.Add(data, predictor, lists.CaseAt(place)); });
    range.Store(predictor, node);
    return;
  }
  if (description.IsCoded()) {
    CodesPresent present(description,
                         description.values.size() + (description.hasMissing ? 1U : 0U));
    PlacedCodes const codes = lists.Codes(predictor);
    FindPolling(ranges.places.Size(), lists.GetWorkers(), [&](std::size_t offset) {
      return present.Add(codes[ranges.places.begin + static_cast<std::uint32_t>(offset)]);
    });
    present.Store(predictor, node);
    return;
  }
  std::span<SortedCase const> const cases = lists.Sorted(ranges, predictor);
  bool const hasMissing = cases.size() < ranges.places.Size();
  if (cases.empty()) {
    Summarise(node, predictor, 0.0, 0.0, hasMissing);
  } else {
    Summarise(node, predictor, data.ValueOf(predictor, lists.CaseAt(cases.front().Place())),
              data.ValueOf(predictor, lists.CaseAt(cases.back().Place())), hasMissing);
  }
}

void SummariseForChildren(TrainingData const& data, CaseLists const& lists,
                          NodeRanges const& ranges, std::size_t predictor,
                          ChildOfPlace const& childOf, std::vector<NodeSums> const& sums,
                          NodeImp& parent) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  Workers& workers = lists.GetWorkers();
  auto const childNode = [&](std::size_t child) -> NodeImp& {
    return *parent.GetChildImp(static_cast<unsigned int>(child));
  };
  if (NeedsValues(description)) {
    std::vector<ValueRange> values(sums.size());
    ForEachPolling(ranges.places.begin, ranges.places.end, workers, [&](std::uint32_t place) {
      if (childOf[place] == kNoChild) return;
      values[childOf[place]].Add(data, predictor, lists.CaseAt(place));
    });
    for (std::size_t child = 0; child < values.size(); ++child) {
      values[child].Store(predictor, childNode(child));
    }
    return;
  }
  if (description.IsCoded()) {
    std::vector<CodesPresent> present(
        sums.size(), CodesPresent(description, NumCodesOf(parent, description, predictor)));
    std::vector<char> isComplete(sums.size());
    std::size_t numOpen = present.size();
    PlacedCodes const codes = lists.Codes(predictor);
    FindPolling(ranges.places.Size(), workers, [&](std::size_t offset) {
      std::uint32_t const place = ranges.places.begin + static_cast<std::uint32_t>(offset);
      std::uint8_t const child = childOf[place];
      if (child == kNoChild || isComplete[child] != 0) return false;
      if (present[child].Add(codes[place])) {
        isComplete[child] = 1;
        --numOpen;
      }
      return numOpen == 0;
    });
    for (std::size_t child = 0; child < present.size(); ++child) {
      present[child].Store(predictor, childNode(child));
    }
    return;
  }
  std::span<SortedCase const> const cases = lists.Sorted(ranges, predictor);
  for (std::size_t child = 0; child < sums.size(); ++child) {
    auto const position = static_cast<std::uint8_t>(child);
    bool const hasMissing = cases.size() < ranges.places.Size() &&
                            HasMissing(cases, position, sums[child].numCases, childOf, workers);
    SummariseSorted(data, lists, cases, position, hasMissing, predictor, childOf, childNode(child));
  }
}

}  // namespace tree::grow
