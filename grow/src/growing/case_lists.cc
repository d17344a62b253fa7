#include "growing/case_lists.h"

#include <algorithm>

namespace tree::grow {
namespace {

constexpr std::uint32_t kNoPlace = 0xFFFF'FFFF;

/// Cases lie scattered when they are sorted: so far ahead they are called for.
constexpr std::size_t kPrefetchDistance = 24;

/// Puts cases into new lists. A case starts a value in its new list when it is the first of its
/// value there, whether or not it was the first in the old one.
class ValueStarts {
 public:
  explicit ValueStarts(std::size_t numLists) : lastValues_(numLists, 0) {}

  /// Leaves a case out.
  void Skip(SortedCase item) { value_ += item.StartsValue() ? 1U : 0U; }
  /// The case as it is to stand in the list, at its new place.
  SortedCase Place(SortedCase item, std::size_t list, std::uint32_t place) {
    Skip(item);
    bool const starts = lastValues_[list] != value_;
    lastValues_[list] = value_;
    return {place, starts};
  }

 private:
  std::uint32_t value_ = 0;
  std::vector<std::uint32_t> lastValues_;
};

/// How far the division of a list in two has come.
struct Division {
  SortedCase* toLeft;
  SortedCase* toRight;
  std::uint32_t pending;  // bit i: whether the present value has not yet had a case in child i
};

/// Divides the cases from `begin` to `end` - 1 of a list, without a branch that depends on the
/// data. `middle`: the first place of child 1; `Ties`: whether cases may share a value.
template <bool Ties, bool Scattered>
void DivideSlice(std::span<SortedCase const> cases, std::size_t begin, std::size_t end,
                 std::uint32_t const* newPlaces, std::uint32_t middle, Division& progress) {
  Division division = progress;  // a copy of its own stays in registers
  for (std::size_t position = begin; position < end; ++position) {
    SortedCase const item = cases[position];
    if constexpr (Scattered) {
      std::size_t const ahead = std::min(position + kPrefetchDistance, cases.size() - 1);
      __builtin_prefetch(newPlaces + cases[ahead].Place());
    }
    std::uint32_t const place = newPlaces[item.Place()];
    std::uint32_t const child = place >= middle ? 1U : 0U;
    bool starts = true;
    if constexpr (Ties) {
      division.pending |= item.StartsValue() ? 3U : 0U;
      starts = ((division.pending >> child) & 1U) != 0;
      division.pending &= ~(1U << child);
    }
    SortedCase const moved(place, starts);
    *division.toLeft = moved;
    *division.toRight = moved;
    division.toLeft += 1U - child;
    division.toRight += child;
  }
  progress = division;
}

/// The usual case, two children and all cases in one of them. `right`: has room for all cases.
/// Gives the number of cases of child 0.
template <bool Ties, bool Scattered>
std::size_t DivideInTwo(std::span<SortedCase> cases, std::uint32_t const* newPlaces,
                        std::uint32_t middle, SortedCase* right, Workers& workers) {
  Division division{cases.data(), right, 0};
  ForSlices(cases.size(), workers, [&](std::size_t begin, std::size_t end) {
    DivideSlice<Ties, Scattered>(cases, begin, end, newPlaces, middle, division);
  });
  std::copy(right, division.toRight, division.toLeft);
  return static_cast<std::size_t>(division.toLeft - cases.data());
}

template <class Value>
void Read(std::vector<std::uint32_t> const& cases, std::vector<Value> const& source,
          std::vector<Value>& values) {
  if (source.empty()) return;
  values.resize(cases.size());
  std::transform(cases.begin(), cases.end(), values.begin(),
                 [&](std::uint32_t index) { return source[index]; });
}

}  // namespace

CaseLists::CaseLists(TrainingData const& data, std::vector<std::uint8_t> const& included,
                     Workers& workers, CodeOrder codeOrder)
    : data_(data),
      workers_(workers),
      codeOrder_(codeOrder),
      sorted_(data.GetPredictors().size()),
      newPlaces_(data.GetNumCases(), kNoPlace) {
  PlaceCases(included);
  workers.Run(sorted_.size(), [&](std::size_t position) {
    std::vector<SortedCase> const& cases = data.GetPredictors()[position].sorted;
    sorted_[position] = included.empty() ? cases : PlacesOf(cases);
  });
  ReadPredictors(workers);
}

CaseLists::CaseLists(TrainingData& data, Workers& workers, CodeOrder codeOrder)
    : data_(data),
      workers_(workers),
      codeOrder_(codeOrder),
      sorted_(data.ReleaseSorted()),
      newPlaces_(data.GetNumCases(), kNoPlace) {
  PlaceCases({});
  ReadPredictors(workers);
}

/// Gives the cases their places, in order, and reads what they are.
void CaseLists::PlaceCases(std::vector<std::uint8_t> const& included) {
  cases_.reserve(data_.GetNumCases());
  for (std::uint32_t index = 0; index < data_.GetNumCases(); ++index) {
    if (!included.empty() && included[index] == 0) continue;
    newPlaces_[index] = static_cast<std::uint32_t>(cases_.size());
    cases_.push_back(index);
  }
  root_.places = {0, static_cast<std::uint32_t>(cases_.size())};
  workers_.Poll();
  Read(cases_, data_.GetClasses(), classes_);
  Read(cases_, data_.GetNumbers().multiples, numbers_);
  Read(cases_, data_.GetWeights().multiples, weights_);
  Read(cases_, data_.GetFrequencies().multiples, frequencies_);
}

/// Reads the codes of the coded predictors, and notes the lists of the sorted ones.
void CaseLists::ReadPredictors(Workers& workers) {
  auto const& predictors = data_.GetPredictors();
  codes_.resize(predictors.size());
  hasTies_.resize(predictors.size());
  root_.byPredictor.resize(predictors.size());
  workers.Run(predictors.size(), [&](std::size_t position) {
    if (codeOrder_ == CodeOrder::kByPlace) {
      Read(cases_, predictors[position].codes, codes_[position]);
    }
    hasTies_[position] = predictors[position].hasTies ? 1 : 0;
    root_.byPredictor[position] = {0, static_cast<std::uint32_t>(sorted_[position].size())};
  });
}

/// The cases that have a place, in their order.
std::vector<SortedCase> CaseLists::PlacesOf(std::vector<SortedCase> const& cases) const {
  std::vector<SortedCase> list;
  list.reserve(std::min(cases.size(), cases_.size()));
  ValueStarts starts(1);
  for (SortedCase const item : cases) {
    std::uint32_t const place = newPlaces_[item.Place()];
    if (place == kNoPlace) {
      starts.Skip(item);
    } else {
      list.push_back(starts.Place(item, 0, place));
    }
  }
  return list;
}

/// Moves values to the new places of their cases.
template <class Value>
void CaseLists::Follow(NodeRanges const& node, std::vector<Value>& values) const {
  if (values.empty()) return;
  std::uint32_t const begin = node.places.begin;
  std::vector<Value> const old(values.begin() + begin, values.begin() + node.places.end);
  ForEachPolling(begin, node.places.end, workers_,
                 [&](std::uint32_t place) { values[newPlaces_[place]] = old[place - begin]; });
}

std::vector<NodeRanges> CaseLists::DivideCases(NodeRanges const& node, ChildOfPlace const& childOf,
                                               int numChildren) {
  auto const numParts = static_cast<std::size_t>(numChildren) + 1;  // the last one: of no child
  auto const partOf = [&](std::uint32_t place) {
    return std::min<std::size_t>(childOf[place], numParts - 1);
  };
  std::vector<std::uint32_t> next(numParts + 1);
  ForEachPolling(node.places.begin, node.places.end, workers_,
                 [&](std::uint32_t place) { ++next[partOf(place) + 1]; });
  next[0] = node.places.begin;
  for (std::size_t part = 1; part <= numParts; ++part) next[part] += next[part - 1];
  std::vector<NodeRanges> children(numParts - 1);
  for (std::size_t child = 0; child < children.size(); ++child) {
    children[child].places = {next[child], next[child + 1]};
    children[child].byPredictor.resize(node.byPredictor.size());
  }
  ForEachPolling(node.places.begin, node.places.end, workers_,
                 [&](std::uint32_t place) { newPlaces_[place] = next[partOf(place)]++; });
  Follow(node, cases_);
  Follow(node, classes_);
  Follow(node, numbers_);
  Follow(node, weights_);
  Follow(node, frequencies_);
  return children;
}

void CaseLists::DividePredictor(NodeRanges const& node, std::size_t predictor,
                                std::vector<NodeRanges>& children,
                                WorkMemory<SortedCase>& scratch) {
  if (data_.GetPredictors()[predictor].IsCoded()) {
    Follow(node, codes_[predictor]);
    return;
  }
  Range const range = node.byPredictor[predictor];
  SortedCase* const spare = scratch.Get(range.Size());
  SortedCase* const cases = sorted_[predictor].data() + range.begin;
  std::vector<std::uint32_t> sizes(children.size());
  if (children.size() == 2 && children[1].places.end == node.places.end) {
    bool const ties = hasTies_[predictor] != 0;
    bool const scattered = node.places.Size() > kPlacesInCache;
    auto* const divide = ties ? (scattered ? DivideInTwo<true, true> : DivideInTwo<true, false>)
                              : (scattered ? DivideInTwo<false, true> : DivideInTwo<false, false>);
    sizes[0] = static_cast<std::uint32_t>(divide({cases, range.Size()}, newPlaces_.data(),
                                                 children[1].places.begin, spare, workers_));
    sizes[1] = range.Size() - sizes[0];
  } else {
    std::span<SortedCase const> const moved(spare, range.Size());
    std::copy(cases, cases + range.Size(), spare);
    auto const childAt = [&](std::uint32_t place) {
      auto const child = std::find_if(children.begin(), children.end(),
                                      [&](NodeRanges const& c) { return place < c.places.end; });
      return static_cast<std::size_t>(child - children.begin());
    };
    ForSlices(moved.size(), workers_, [&](std::size_t first, std::size_t last) {
      for (SortedCase const item : moved.subspan(first, last - first)) {
        std::size_t const child = childAt(newPlaces_[item.Place()]);
        if (child < sizes.size()) ++sizes[child];
      }
    });
    std::vector<SortedCase*> to(children.size());
    SortedCase* begin = cases;
    for (std::size_t child = 0; child < to.size(); ++child) {
      to[child] = begin;
      begin += sizes[child];
    }
    ValueStarts starts(children.size());
    ForSlices(moved.size(), workers_, [&](std::size_t first, std::size_t last) {
      for (SortedCase const item : moved.subspan(first, last - first)) {
        std::uint32_t const place = newPlaces_[item.Place()];
        std::size_t const child = childAt(place);
        if (child < sizes.size()) {
          *to[child]++ = starts.Place(item, child, place);
        } else {
          starts.Skip(item);
        }
      }
    });
  }
  std::uint32_t begin = range.begin;
  for (std::size_t child = 0; child < children.size(); ++child) {
    children[child].byPredictor[predictor] = {begin, begin + sizes[child]};
    begin += sizes[child];
  }
}

}  // namespace tree::grow
