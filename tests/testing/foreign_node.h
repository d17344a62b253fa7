#ifndef TREE_TESTS_TESTING_FOREIGN_NODE_H_
#define TREE_TESTS_TESTING_FOREIGN_NODE_H_

#include <utility>
#include <vector>

#include "tree/nodes.h"

// Nodes and statistics of other classes than the library's own, as a program may derive them from
// the interfaces. What a test does not set reads as nothing: 0, null, false.

namespace tree::testing {

/// A class distribution that answers any index: 0.0 beyond its counts.
class ForeignClsInfo : public ClsInfo {
 public:
  explicit ForeignClsInfo(std::vector<double> counts, int prediction = 0)
      : counts_(std::move(counts)), prediction_(prediction) {}

  int GetPrediction() const override { return prediction_; }
  double GetClassCount(int index) const override {
    bool const known = index >= 0 && index < GetNumClasses();
    return known ? counts_[static_cast<std::size_t>(index)] : 0.0;
  }
  double GetClassPercent(int /*index*/) const override { return 0.0; }
  double GetClassProbability(int /*index*/) const override { return -1.0; }
  int GetNumClasses() const override { return static_cast<int>(counts_.size()); }

 private:
  std::vector<double> counts_;
  int prediction_;
};

/// Regression statistics that answer any index: 0.0 beyond their bins.
class ForeignRegInfo : public RegInfo {
 public:
  explicit ForeignRegInfo(double mean, std::vector<double> binSizes = {})
      : mean_(mean), binSizes_(std::move(binSizes)) {}

  double GetMean() const override { return mean_; }
  double GetMinimum() const override { return 0.0; }
  double GetMaximum() const override { return 0.0; }
  double GetStdDev() const override { return 0.0; }
  double GetPrediction() const override { return mean_; }
  int GetNumBins() const override { return static_cast<int>(binSizes_.size()); }
  double GetBinSize(int index) const override {
    bool const known = index >= 0 && index < GetNumBins();
    return known ? binSizes_[static_cast<std::size_t>(index)] : 0.0;
  }
  double GetBinLeftEndPoint(int /*index*/) const override { return 0.0; }
  double GetBinRightEndPoint(int /*index*/) const override { return 0.0; }

 private:
  double mean_;
  std::vector<double> binSizes_;
};

/// A node whose answers are its fields. Children and statistics are borrowed, so one object may
/// stand in several places.
class ForeignNode : public Node {
 public:
  /// What a node knows of one sample.
  struct Statistics {
    double size = 0.0;
    double unweightedSize = 0.0;
    double percentageSize = 0.0;
    ClsInfo const* clsInfo = nullptr;
    RegInfo const* regInfo = nullptr;
  };

  std::vector<Node const*> children;
  Statistics training;
  Statistics test;

  Node const* GetParent() const override { return nullptr; }
  int GetNumChildren() const override { return static_cast<int>(children.size()); }
  Node const* GetChild(unsigned int position) const override {
    return position < children.size() ? children[position] : nullptr;
  }
  int GetNumCompetitors() const override { return 0; }
  int GetBiggestChildPos() const override { return -1; }
  SplitRule* GetCompetitor(unsigned int /*position*/) const override { return nullptr; }
  int GetNumSurrogates() const override { return 0; }
  SplitRule* GetSurrogate(unsigned int /*position*/) const override { return nullptr; }
  unsigned int GetId() const override { return 0; }
  double GetAssignment() const override { return 0.0; }
  double GetNodeSize(DataSample sample) const override { return Of(sample).size; }
  double GetUnweightedNodeSize(DataSample sample) const override {
    return Of(sample).unweightedSize;
  }
  double GetPercentageNodeSize(DataSample sample) const override {
    return Of(sample).percentageSize;
  }
  int GetNumPredictors() const override { return 0; }
  bool GetPredictorRange(int /*index*/, double* /*minimum*/, double* /*maximum*/) const override {
    return false;
  }
  bool GetNumPredictorValues(int /*index*/, int* /*count*/) const override { return false; }
  bool GetPredictorValues(int /*index*/, double* /*values*/, int /*count*/) const override {
    return false;
  }
  bool GetPredictorMissingValueFlag(int /*index*/, bool* /*flag*/) const override { return false; }
  ClsInfo const* GetClsInfo(DataSample sample) const override { return Of(sample).clsInfo; }
  RegInfo const* GetRegInfo(DataSample sample) const override { return Of(sample).regInfo; }

 private:
  Statistics const& Of(DataSample sample) const {
    return sample == TrainingSample ? training : test;
  }
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FOREIGN_NODE_H_
