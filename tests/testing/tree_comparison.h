#ifndef TREE_TESTS_TESTING_TREE_COMPARISON_H_
#define TREE_TESTS_TESTING_TREE_COMPARISON_H_

#include <cmath>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tree/nodes.h"

namespace tree::testing {

/// Compares all that can be read of two trees, the parents of the two roots left out, and keeps
/// what it found first. Recurs by depth, so for small trees. Two NaNs count as the same.
class TreeComparison {
 public:
  /// The first field that differs, with its place in the tree and both values; empty when the trees
  /// agree.
  std::string const& Difference() const { return difference_; }

  bool AgreeOnTree(std::string const& place, NodeImp const& a, NodeImp const& b) {
    return Agree(place, "id", a.GetId(), b.GetId()) &&
           Agree(place, "classification flag", a.IsClassificationNode(),
                 b.IsClassificationNode()) &&
           AgreeOnRules(place, a, b) && AgreeOnStatistics(place, a, b) &&
           AgreeOnPredictors(place, a, b) && AgreeOnChildren(place, a, b);
  }

 private:
  static bool Same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
  template <class T>
  static bool Same(T const& a, T const& b) {
    return a == b;
  }

  template <class T>
  bool Agree(std::string const& place, std::string const& field, T const& a, T const& b) {
    if (Same(a, b)) return true;
    std::ostringstream text;
    text.precision(17);
    text << place << ": " << field << ": " << a << " and " << b;
    difference_ = text.str();
    return false;
  }

  static std::string At(std::string const& name, int position) {
    return name + " " + std::to_string(position);
  }

  bool AgreeOnChildren(std::string const& place, NodeImp const& a, NodeImp const& b) {
    if (!Agree(place, "number of children", a.GetNumChildren(), b.GetNumChildren())) return false;
    for (int position = 0; position < a.GetNumChildren(); ++position) {
      std::string const childPlace = place + "/" + std::to_string(position);
      NodeImp const* const childOfA = a.GetChildImp(static_cast<unsigned int>(position));
      NodeImp const* const childOfB = b.GetChildImp(static_cast<unsigned int>(position));
      if (!Agree(childPlace, "presence", childOfA != nullptr, childOfB != nullptr)) return false;
      if (childOfA == nullptr) continue;
      bool const agree = Agree(childPlace, "has the node above as parent",
                               childOfA->GetParent() == &a, childOfB->GetParent() == &b) &&
                         AgreeOnTree(childPlace, *childOfA, *childOfB);
      if (!agree) return false;
    }
    return true;
  }

  bool AgreeOnRules(std::string const& place, NodeImp const& a, NodeImp const& b) {
    if (!Agree(place, "number of competitors", a.GetNumCompetitors(), b.GetNumCompetitors()) ||
        !Agree(place, "number of surrogates", a.GetNumSurrogates(), b.GetNumSurrogates())) {
      return false;
    }
    for (int position = 0; position < a.GetNumCompetitors(); ++position) {
      auto const at = static_cast<unsigned int>(position);
      if (!AgreeOnRule(place + ", " + At("competitor", position), a.GetCompetitorImp(at),
                       b.GetCompetitorImp(at))) {
        return false;
      }
    }
    for (int position = 0; position < a.GetNumSurrogates(); ++position) {
      auto const at = static_cast<unsigned int>(position);
      if (!AgreeOnRule(place + ", " + At("surrogate", position), a.GetSurrogateImp(at),
                       b.GetSurrogateImp(at))) {
        return false;
      }
    }
    return true;
  }

  bool AgreeOnRule(std::string const& place, SplitRuleImp const* a, SplitRuleImp const* b) {
    if (!Agree(place, "presence", a != nullptr, b != nullptr)) return false;
    if (a == nullptr) return true;
    return Agree(place, "predictor index", a->GetPredictorIndex(), b->GetPredictorIndex()) &&
           Agree(place, "property flags", a->GetCreationFlags(), b->GetCreationFlags()) &&
           Agree(place, "dumb child", a->GetDumbChildPos(), b->GetDumbChildPos()) &&
           Agree(place, "dumb child probability", a->GetDumbChildProb(), b->GetDumbChildProb()) &&
           Agree(place, "missing value mapping", a->GetMissingValueMapping(),
                 b->GetMissingValueMapping()) &&
           AgreeOnRuleStatistics(place, *a, *b) &&
           Agree(place, "split alike (0 by Compare)", 0, a->Compare(*b)) &&
           Agree(place, "equal by ==", true, *a == *b);
  }

  bool AgreeOnRuleStatistics(std::string const& place, SplitRuleImp const& a,
                             SplitRuleImp const& b) {
    for (unsigned int bit = 1; bit <= StatisticFlag7; bit <<= 1) {
      auto const flag = static_cast<StatisticFlag>(bit);
      std::string const name = At("statistic", static_cast<int>(bit));
      if (!Agree(place, name + " present", a.HasStatistic(flag), b.HasStatistic(flag)) ||
          !Agree(place, name, a.GetStatistic(flag), b.GetStatistic(flag))) {
        return false;
      }
    }
    return true;
  }

  bool AgreeOnStatistics(std::string const& place, NodeImp const& a, NodeImp const& b) {
    for (DataSample const sample : {TrainingSample, TestSample}) {
      std::string const samplePlace =
          place + (sample == TrainingSample ? ", training sample" : ", test sample");
      if (!AgreeOnClasses(samplePlace, a.GetClsInfoImp(sample), b.GetClsInfoImp(sample)) ||
          !AgreeOnRegression(samplePlace, a.GetRegInfoImp(sample), b.GetRegInfoImp(sample))) {
        return false;
      }
    }
    return true;
  }

  bool AgreeOnClasses(std::string const& place, ClsInfoImp const* a, ClsInfoImp const* b) {
    if (!Agree(place, "class distribution present", a != nullptr, b != nullptr)) return false;
    if (a == nullptr) return true;
    if (!Agree(place, "number of classes", a->GetNumClasses(), b->GetNumClasses())) return false;
    for (int index = 0; index < a->GetNumClasses(); ++index) {
      if (!Agree(place, At("count of class", index), a->GetClassCount(index),
                 b->GetClassCount(index)) ||
          !Agree(place, At("probability of class", index), a->GetClassProbability(index),
                 b->GetClassProbability(index))) {
        return false;
      }
    }
    return Agree(place, "predicted class", a->GetPrediction(), b->GetPrediction()) &&
           Agree(place, "percent size", a->GetPercentSize(), b->GetPercentSize()) &&
           Agree(place, "unweighted count", a->GetUnweightedCount(), b->GetUnweightedCount());
  }

  bool AgreeOnRegression(std::string const& place, RegInfoImp const* a, RegInfoImp const* b) {
    if (!Agree(place, "regression statistics present", a != nullptr, b != nullptr)) return false;
    if (a == nullptr) return true;
    if (!Agree(place, "count", a->GetCount(), b->GetCount()) ||
        !Agree(place, "mean", a->GetMean(), b->GetMean()) ||
        !Agree(place, "minimum", a->GetMinimum(), b->GetMinimum()) ||
        !Agree(place, "maximum", a->GetMaximum(), b->GetMaximum()) ||
        !Agree(place, "standard deviation", a->GetStdDev(), b->GetStdDev()) ||
        !Agree(place, "number of bins", a->GetNumBins(), b->GetNumBins())) {
      return false;
    }
    for (int index = 0; index < a->GetNumBins(); ++index) {
      if (!Agree(place, At("bin", index), a->GetBinSize(index), b->GetBinSize(index))) return false;
    }
    // A copy stores a standard deviation even if its source has none, so this one is left out.
    for (unsigned int bit = 2; bit <= 128; bit <<= 1) {
      auto const flag = static_cast<RegInfoImp::StatisticStorageFlags>(bit);
      double ofA = 0.0;
      double ofB = 0.0;
      bool const inA = a->GetExtendedStatistic(flag, &ofA);
      bool const inB = b->GetExtendedStatistic(flag, &ofB);
      std::string const name = At("extended statistic", static_cast<int>(bit));
      if (!Agree(place, name + " present", inA, inB) || !Agree(place, name, ofA, ofB)) return false;
    }
    return true;
  }

  bool AgreeOnPredictors(std::string const& place, NodeImp const& a, NodeImp const& b) {
    if (!Agree(place, "number of predictors", a.GetNumPredictors(), b.GetNumPredictors())) {
      return false;
    }
    for (int index = 0; index < a.GetNumPredictors(); ++index) {
      if (!AgreeOnPredictor(place + ", " + At("predictor", index), index, a, b)) return false;
    }
    return true;
  }

  bool AgreeOnPredictor(std::string const& place, int index, NodeImp const& a, NodeImp const& b) {
    double minima[] = {0.0, 0.0};
    double maxima[] = {0.0, 0.0};
    bool missing[] = {false, false};
    a.GetPredictorRange(index, &minima[0], &maxima[0]);
    b.GetPredictorRange(index, &minima[1], &maxima[1]);
    a.GetPredictorMissingValueFlag(index, &missing[0]);
    b.GetPredictorMissingValueFlag(index, &missing[1]);
    std::vector<double> const ofA = ValuesOf(a, index);
    std::vector<double> const ofB = ValuesOf(b, index);
    if (!Agree(place, "minimum", minima[0], minima[1]) ||
        !Agree(place, "maximum", maxima[0], maxima[1]) ||
        !Agree(place, "missing value flag", missing[0], missing[1]) ||
        !Agree(place, "number of values", ofA.size(), ofB.size())) {
      return false;
    }
    for (std::size_t value = 0; value < ofA.size(); ++value) {
      if (!Agree(place, At("value", static_cast<int>(value)), ofA[value], ofB[value])) return false;
    }
    return true;
  }

  static std::vector<double> ValuesOf(NodeImp const& node, int index) {
    int count = 0;
    node.GetNumPredictorValues(index, &count);
    std::vector<double> values(static_cast<std::size_t>(count));
    node.GetPredictorValues(index, values.data(), count);
    return values;
  }

  std::string difference_;
};

/// The first field in which two trees differ, as "root/1/0, surrogate 2: dumb child: 1 and 0" (the
/// path names child positions); empty when there is none. The parents of the roots do not count.
inline std::string FirstDifference(NodeImp const& a, NodeImp const& b) {
  TreeComparison comparison;
  comparison.AgreeOnTree("root", a, b);
  return comparison.Difference();
}

/// The addresses of all objects that a tree owns: nodes, split rules and statistics. Two trees are
/// independent when they have none in common. Recurs by depth, so for small trees.
inline std::set<void const*> OwnedObjects(NodeImp const& root) {
  std::set<void const*> objects{&root};
  for (int position = 0; position < root.GetNumCompetitors(); ++position) {
    objects.insert(root.GetCompetitorImp(static_cast<unsigned int>(position)));
  }
  for (int position = 0; position < root.GetNumSurrogates(); ++position) {
    objects.insert(root.GetSurrogateImp(static_cast<unsigned int>(position)));
  }
  for (DataSample const sample : {TrainingSample, TestSample}) {
    objects.insert(root.GetClsInfoImp(sample));
    objects.insert(root.GetRegInfoImp(sample));
  }
  for (int position = 0; position < root.GetNumChildren(); ++position) {
    NodeImp const* const child = root.GetChildImp(static_cast<unsigned int>(position));
    if (child != nullptr) objects.merge(OwnedObjects(*child));
  }
  objects.erase(nullptr);
  return objects;
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_TREE_COMPARISON_H_
