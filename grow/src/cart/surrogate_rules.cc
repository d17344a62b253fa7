#include "cart/surrogate_rules.h"

#include <memory>
#include <utility>

#include "cart/best_positions.h"
#include "cart/row_surrogates.h"
#include "cart/surrogate_search.h"
#include "growing/crew.h"
#include "growing/node_rows.h"
#include "tree/grow/split_statistics.h"

namespace tree::grow {
namespace {

std::unique_ptr<SplitRuleImp> MakeRule(TrainingData const& data, std::size_t predictor,
                                       FoundSurrogate const& surrogate) {
  GrowingPredictor const& description = data.GetPredictors()[predictor];
  auto const position = static_cast<int>(predictor);
  std::unique_ptr<SplitRuleImp> rule;
  if (description.IsNominal()) {
    auto nominal = std::make_unique<NSplitRule>(position, 0);
    for (std::size_t code = 0; code < surrogate.childOfCode.size(); ++code) {
      if (surrogate.childOfCode[code] == kNoChild) continue;
      nominal->SetCatMapping(static_cast<int>(description.values[code]),
                             surrogate.childOfCode[code]);
    }
    rule = std::move(nominal);
  } else {
    auto ordered =
        std::make_unique<OSplitRule>(description.column->description.missingValue, position);
    ordered->SetCutPoint(surrogate.cutPoint);
    if (surrogate.reversed) ordered->SetReverse();
    rule = std::move(ordered);
  }
  rule->SetStatistic(SurrogateAssociation, surrogate.association);
  return rule;
}

}  // namespace

std::vector<RuleList> FindSurrogateRules(TrainingData const& data, CaseLists const& lists,
                                         std::span<GrowingNode const> nodes,
                                         std::vector<SplitRuleImp const*> const& primaries,
                                         ChildOfPlace const& childOf, SurrogateLimits const& limits,
                                         Workers& workers) {
  std::vector<RuleList> rules(nodes.size());
  if (limits.maxNumSurrogates <= 0) return rules;
  auto const isBinary = [&](std::size_t node) {
    return primaries[node] != nullptr && primaries[node]->GetNumChildren() == 2;
  };
  std::vector<SurrogateSearch::Placed> placed(nodes.size());
  workers.Run(nodes.size(), [&](std::size_t node) {
    if (!isBinary(node)) return;
    Range const places = nodes[node].ranges.places;
    for (std::uint32_t place = places.begin; place < places.end; ++place) {
      if (childOf[place] != kNoChild) placed[node][childOf[place]] += lists.WeightAt(place);
    }
  });
  std::size_t const numPredictors = data.GetPredictors().size();
  std::vector<FoundSurrogate> found(nodes.size() * numPredictors);  // [node][predictor]
  workers.Run(numPredictors, [&](std::size_t predictor) {
    GrowingPredictor const& description = data.GetPredictors()[predictor];
    if (description.isInRows) return;
    if (description.IsNominal() && description.values.size() > limits.maxNumCategories) return;
    SurrogateSearch search(data, lists, childOf, workers);
    for (std::size_t node = 0; node < nodes.size(); ++node) {
      if (!isBinary(node)) continue;
      if (primaries[node]->GetPredictorIndex() == static_cast<int>(predictor)) continue;
      found[node * numPredictors + predictor] =
          search.Find(nodes[node].ranges, placed[node], predictor);
      workers.Poll(nodes[node].ranges.places.Size());
    }
  });
  auto const findInRows = [&](auto&& search) {
    std::size_t const fewCases = CasesPerSlice(data.GetCaseRows().GetWidth());
    ForNodes(nodes, fewCases, workers, [&](std::size_t node, Crew const& crew) {
      if (!isBinary(node)) return;
      auto const primary = static_cast<std::size_t>(primaries[node]->GetPredictorIndex());
      search.Find(nodes[node], placed[node], primary, crew,
                  {found.data() + node * numPredictors, numPredictors});
    });
  };
  if (!data.GetCaseRows().IsEmpty()) {
    auto const maxNum = static_cast<std::size_t>(limits.maxNumSurrogates);
    if (lists.GetWeights() != nullptr) {
      findInRows(RowSurrogates<std::int64_t>(data, lists, childOf, maxNum, workers));
    } else {
      findInRows(RowSurrogates<std::uint32_t>(data, lists, childOf, maxNum, workers));
    }
  }
  for (std::size_t node = 0; node < nodes.size(); ++node) {
    FoundSurrogate const* const ofNode = found.data() + node * numPredictors;
    auto const best =
        BestPositions(numPredictors, static_cast<std::size_t>(limits.maxNumSurrogates),
                      [&](std::size_t predictor) { return ofNode[predictor].association; });
    for (std::size_t const predictor : best) {
      rules[node].push_back(MakeRule(data, predictor, ofNode[predictor]));
    }
  }
  return rules;
}

}  // namespace tree::grow
