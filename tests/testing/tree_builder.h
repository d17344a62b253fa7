#ifndef TREE_TESTS_TESTING_TREE_BUILDER_H_
#define TREE_TESTS_TESTING_TREE_BUILDER_H_

#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

#include "tree/nodes.h"
#include "tree/support.h"

namespace tree::testing {

/// Builds a tree by an expression that reads like the tree:
///
///     std::unique_ptr<NodeImp> const root =
///         ANode(0)
///             .SplitAt(kAge, 40.0,
///                      ANode(1).Classes({3.0, 1.0}),
///                      ANode(2).SplitAt(kHeight, 1.7, ANode(3), ANode(4)))
///             .Build();
class NodeBuilder {
 public:
  explicit NodeBuilder(unsigned int id) : node_(std::make_unique<NodeImp>()) { node_->SetId(id); }

  /// Children in order of position, without a rule that tells them apart.
  template <class... Children>
  NodeBuilder&& Over(Children... children) && {
    (children_.push_back(std::move(children).Build()), ...);
    return std::move(*this);
  }

  /// A primary split by `rule`, and the children.
  template <class... Children>
  NodeBuilder&& SplitBy(std::unique_ptr<SplitRuleImp> rule, Children... children) && {
    competitors_.insert(competitors_.begin(), std::move(rule));
    return std::move(*this).Over(std::move(children)...);
  }

  /// A primary split that sends values of `predictor` up to `cutPoint` to the first child, and
  /// others to the second.
  template <class... Children>
  NodeBuilder&& SplitAt(int predictor, double cutPoint, Children... children) && {
    return std::move(*this).SplitBy(RuleAt(predictor, cutPoint), std::move(children)...);
  }

  NodeBuilder&& Competitor(std::unique_ptr<SplitRuleImp> rule) && {
    competitors_.push_back(std::move(rule));
    return std::move(*this);
  }
  NodeBuilder&& CompetitorAt(int predictor, double cutPoint) && {
    return std::move(*this).Competitor(RuleAt(predictor, cutPoint));
  }

  NodeBuilder&& Surrogate(std::unique_ptr<SplitRuleImp> rule) && {
    surrogates_.push_back(std::move(rule));
    return std::move(*this);
  }
  NodeBuilder&& SurrogateAt(int predictor, double cutPoint) && {
    return std::move(*this).Surrogate(RuleAt(predictor, cutPoint));
  }

  /// The dumb rule of the primary split given before.
  NodeBuilder&& Dumb(int child, double probability = 1.0) && {
    competitors_.front()->SetDumbRule(child, probability);
    return std::move(*this);
  }

  /// A class distribution: weighted cases per class, their shares as probabilities.
  NodeBuilder&& Classes(std::initializer_list<double> counts, int prediction = 0,
                        DataSample sample = TrainingSample) && {
    auto info = std::make_unique<ClsInfoImp>();
    info->SetNumClasses(static_cast<int>(counts.size()));
    int index = 0;
    for (double const count : counts) info->SetClassCount(index++, count);
    for (index = 0; index < info->GetNumClasses(); ++index) {
      info->SetClassProbability(index, info->GetClassPercent(index));
    }
    info->SetPrediction(prediction);
    info->SetUnweightedCount(info->GetCount());
    node_->SetClsInfo(info.release(), sample);
    return std::move(*this);
  }

  NodeBuilder&& Regression(double count, double mean, DataSample sample = TrainingSample) && {
    auto info = std::make_unique<RegInfoImp>();
    info->SetCount(count);
    info->SetMean(mean);
    node_->SetRegInfo(info.release(), sample);
    return std::move(*this);
  }

  /// The summary of the next predictor.
  NodeBuilder&& Predictor(double minimum, double maximum, std::vector<double> const& values = {},
                          bool hasMissing = false) && {
    int const index = node_->GetNumPredictors();
    node_->SetNumPredictors(static_cast<unsigned int>(index) + 1);
    node_->SetPredictorRange(index, minimum, maximum);
    node_->SetPredictorValues(index, values.data(), static_cast<int>(values.size()));
    node_->SetPredictorMissingValueFlag(index, hasMissing);
    return std::move(*this);
  }

  /// The node with all below it.
  std::unique_ptr<NodeImp> Build() && {
    node_->SetNumChildren(static_cast<int>(children_.size()));
    node_->SetNumCompetitors(static_cast<unsigned int>(competitors_.size()));
    node_->SetNumSurrogates(static_cast<unsigned int>(surrogates_.size()));
    unsigned int position = 0;
    for (auto& child : children_) node_->SetChild(position++, child.release());
    position = 0;
    for (auto& rule : competitors_) node_->SetCompetitor(position++, rule.release());
    position = 0;
    for (auto& rule : surrogates_) node_->SetSurrogate(position++, rule.release());
    return std::move(node_);
  }

 private:
  static std::unique_ptr<SplitRuleImp> RuleAt(int predictor, double cutPoint) {
    auto rule = std::make_unique<OSplitRule>(systemMissingValue(), predictor);
    rule->SetCutPoint(cutPoint);
    return rule;
  }

  std::unique_ptr<NodeImp> node_;
  std::vector<std::unique_ptr<NodeImp>> children_;
  std::vector<std::unique_ptr<SplitRuleImp>> competitors_;
  std::vector<std::unique_ptr<SplitRuleImp>> surrogates_;
};

/// A node to be described further, and built.
inline NodeBuilder ANode(unsigned int id) { return NodeBuilder(id); }

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_TREE_BUILDER_H_
