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
  explicit CodesPresent(GrowingPredictor const& description)
      : description_(description), present_(description.values.size()) {}

  void Add(std::uint16_t code) {
    if (code == GrowingPredictor::kMissingCode) {
      hasMissing_ = true;
    } else {
      present_[code] = 1;
    }
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
};

/// Whether some case of the child has no value, when not all cases of the parent have one.
bool HasMissing(std::span<SortedCase const> cases, std::uint8_t child, std::size_t numInChild,
                ChildOfPlace const& childOf) {
  auto const count = std::count_if(cases.begin(), cases.end(),
                                   [&](SortedCase item) { return childOf[item.Place()] == child; });
  return static_cast<std::size_t>(count) < numInChild;
}

/// The values of the child's first and last case in the list of the parent: soon found, but for the
/// child on the far side of a cut.
void SummariseSorted(TrainingData const& data, CaseLists const& lists,
                     std::span<SortedCase const> cases, std::uint8_t child, bool hasMissing,
                     std::size_t predictor, ChildOfPlace const& childOf, NodeImp& node) {
  auto const isOfChild = [&](SortedCase item) { return childOf[item.Place()] == child; };
  auto const first = std::find_if(cases.begin(), cases.end(), isOfChild);
  if (first == cases.end()) {
    Summarise(node, predictor, 0.0, 0.0, hasMissing);
    return;
  }
  auto const last = std::find_if(cases.rbegin(), cases.rend(), isOfChild);
  Summarise(node, predictor, data.ValueOf(predictor, lists.CaseAt(first->Place())),
            data.ValueOf(predictor, lists.CaseAt(last->Place())), hasMissing);
}

}  // namespace

void SummarisePredictor(TrainingData const& data, CaseLists const& lists, NodeRanges const& ranges,
                        std::size_t predictor, NodeImp& node) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  if (description.IsCoded()) {
    CodesPresent present(description);
    std::uint16_t const* const codes = lists.Codes(predictor);
    for (std::uint32_t place = ranges.places.begin; place < ranges.places.end; ++place) {
      present.Add(codes[place]);
    }
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
                          ChildOfPlace const& childOf, std::vector<std::size_t> const& numInChild,
                          NodeImp& parent) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  auto const childNode = [&](std::size_t child) -> NodeImp& {
    return *parent.GetChildImp(static_cast<unsigned int>(child));
  };
  if (description.IsCoded()) {
    std::vector<CodesPresent> present(numInChild.size(), CodesPresent(description));
    std::uint16_t const* const codes = lists.Codes(predictor);
    for (std::uint32_t place = ranges.places.begin; place < ranges.places.end; ++place) {
      if (childOf[place] != kNoChild) present[childOf[place]].Add(codes[place]);
    }
    for (std::size_t child = 0; child < present.size(); ++child) {
      present[child].Store(predictor, childNode(child));
    }
    return;
  }
  std::span<SortedCase const> const cases = lists.Sorted(ranges, predictor);
  for (std::size_t child = 0; child < numInChild.size(); ++child) {
    auto const position = static_cast<std::uint8_t>(child);
    bool const hasMissing = cases.size() < ranges.places.Size() &&
                            HasMissing(cases, position, numInChild[child], childOf);
    SummariseSorted(data, lists, cases, position, hasMissing, predictor, childOf, childNode(child));
  }
}

}  // namespace tree::grow
