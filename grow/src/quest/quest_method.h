#ifndef TREE_GROW_SRC_QUEST_QUEST_METHOD_H_
#define TREE_GROW_SRC_QUEST_QUEST_METHOD_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "association/number_sums.h"
#include "growing/class_model.h"
#include "growing/crew.h"
#include "growing/split_method.h"
#include "quest/predictor_numbers.h"
#include "quest/row_sums.h"
#include "quest/variable_selection.h"
#include "tree/settings.h"

namespace tree::grow {

/// QUEST: the predictor is chosen by tests of its association with the classes, before any split is
/// looked at, so that predictors with many possible splits have no advantage; it is then split in
/// two by discriminant analysis. Surrogates as for CART. Source: Loh and Shih 1997, Split selection
/// methods for classification trees.
///
/// Each node's cases are gone through row by row, with all predictors at once, for the sums that
/// the tests are made of; only where the first ones do not choose a predictor, once more.
///
/// Tests count cases as they are; probabilities of the classes, with their priors and, where the
/// settings want that, with priors altered by costs, decide where the split lies. Where the split
/// of the chosen predictor would leave a child too small, the next one in order of the p-values
/// splits.
class QuestMethod : public SplitMethod {
 public:
  /// `data`: with prepared predictors; `minChildSize`: in cases. References are **borrowed**.
  QuestMethod(TrainingData const& data, QuestSettings const& settings, ClassModel const& classes,
              double minChildSize);

  std::vector<RuleList> FindSplits(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                   Workers& workers) override;
  std::vector<RuleList> FindSurrogates(CaseLists const& lists, std::span<GrowingNode const> nodes,
                                       std::vector<SplitRuleImp const*> const& primaries,
                                       ChildOfPlace const& childOf, Workers& workers) override;

 private:
  /// What a predictor is in a node.
  struct Tested {
    PredictorTests tests;
    double statistic = 0.0;             // F, or chi-square
    double levene = 0.0;                // F
    std::span<NumberSums const> sums;   // by class, of an ordered predictor
    std::vector<NumberSums> ownSums;    // what these are, of a coded one
    std::vector<std::int64_t> sizes;    // [code][class], of a nominal one, in units of frequency
    std::vector<std::int64_t> weights;  // the same in units of weight
  };
  /// A split that a node could have.
  struct Found {
    double improvement = 0.0;
    double cutPoint = 0.0;              // of an ordered predictor
    std::vector<std::uint8_t> childOf;  // by code, of a nominal one; `kNoChild` for those not there
  };
  /// What goes to a child.
  struct Side {
    std::vector<double> probabilities;  // by class
    std::int64_t size = 0;              // in units of frequency
  };

  /// A node, and what is needed to look at its cases.
  struct Scene {
    GrowingNode const& node;
    CaseLists const& lists;
    RowSums const& rowSums;
    std::vector<Range> slices;  // of its places
    Crew crew;
  };

  void PrepareNumbers(Workers& workers);
  RuleList FindSplitsOf(Scene const& scene) const;
  ClassSums SumRows(Scene const& scene) const;
  ClassSums SumDistances(Scene const& scene, std::span<Tested const> tested) const;
  void SumCodes(Scene const& scene, std::size_t predictor, Tested& tested) const;
  void TestCategories(Scene const& scene, std::size_t predictor, Tested& tested) const;
  void TestMeans(Tested& tested) const;
  void TestSpreadOfCodes(Scene const& scene, std::size_t predictor, Tested& tested) const;
  void TestSpread(std::span<NumberSums const> distances, Tested& tested) const;
  std::vector<std::size_t> OrderOf(std::span<Tested const> tested,
                                   SelectedPredictor const& selected) const;
  std::optional<Found> FindSplit(Scene const& scene, std::size_t predictor,
                                 Tested const& tested) const;
  std::optional<Found> FindCut(Scene const& scene, std::size_t predictor,
                               Tested const& tested) const;
  double ImprovementOfCut(Scene const& scene, std::size_t predictor, Tested const& tested,
                          double cutPoint) const;
  std::optional<Found> DivideCategories(std::size_t predictor, Tested const& tested) const;
  double ImprovementOf(Side const& left, Side const& right) const;
  std::unique_ptr<SplitRuleImp> MakeRule(std::size_t predictor, Found const& found,
                                         double statistic, double logP) const;

  TrainingData const& data_;
  QuestSettings const& settings_;
  std::int64_t minChildSize_;  // in units of frequency
  std::vector<double>
      factors_;    // by class: what a unit of weight adds to the probability of a node
  bool weighted_;  // whether cases have weights beside their frequencies
  // By predictor; empty until needed:
  std::vector<PredictorNumbers> numbers_;             // of ordered ones
  std::vector<std::vector<std::int64_t>> multiples_;  // of ordered coded ones, by code
  std::vector<std::size_t> rowPositions_;             // of those in rows
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_QUEST_QUEST_METHOD_H_
