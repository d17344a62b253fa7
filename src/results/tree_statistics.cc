#include <algorithm>
#include <ostream>

#include "model/readable_classes.h"
#include "tree/assertions.h"
#include "tree/results.h"
#include "tree/support.h"

namespace tree {

TreeStatisticsIntf::~TreeStatisticsIntf() = default;

TreeStatisticsImp::TreeStatisticsImp() = default;

TreeStatisticsImp::TreeStatisticsImp(TreeAlgorithm const& algorithm, double risk, double stdError,
                                     ValidationType validation) {
  Initialize(algorithm, risk, stdError, validation);
}

TreeStatisticsImp::TreeStatisticsImp(TreeStatisticsImp const& other) = default;

TreeStatisticsImp& TreeStatisticsImp::operator=(TreeStatisticsImp const& other) {
  std::vector<std::vector<double>> matrix = other.matrix_;
  matrix_ = std::move(matrix);
  risk_ = other.risk_;
  stdError_ = other.stdError_;
  numClasses_ = other.numClasses_;
  isCls_ = other.isCls_;
  return *this;
}

TreeStatisticsImp::~TreeStatisticsImp() = default;

double TreeStatisticsImp::GetMisclassificationCount(int predicted, int observed) const {
  if (!isCls_ || matrix_.empty()) return systemMissingValue();
  RequireCell("TreeStatisticsImp::GetMisclassificationCount", predicted, observed);
  return matrix_[static_cast<std::size_t>(predicted)][static_cast<std::size_t>(observed)];
}

double TreeStatisticsImp::GetRisk() const { return risk_; }

double TreeStatisticsImp::GetStdError() const { return stdError_; }

bool TreeStatisticsImp::IsCls() const { return isCls_; }

int TreeStatisticsImp::GetNumClasses() const { return numClasses_; }

TreeStatisticsIntf* TreeStatisticsImp::Clone() const { return new TreeStatisticsImp(*this); }

void TreeStatisticsImp::SetRisk(double risk) { risk_ = risk; }

void TreeStatisticsImp::SetStdError(double stdError) { stdError_ = stdError; }

void TreeStatisticsImp::SetIsCls(bool flag) { isCls_ = flag; }

void TreeStatisticsImp::SetNumClasses(int count) {
  InitMatrix(count);
  numClasses_ = count;
}

void TreeStatisticsImp::InitMatrix(int count) {
  auto const size = static_cast<std::size_t>(std::max(count, 0));
  matrix_ = std::vector<std::vector<double>>(size, std::vector<double>(size));
}

void TreeStatisticsImp::SetMisclassificationCount(int predicted, int observed, double count) {
  RequireCell("TreeStatisticsImp::SetMisclassificationCount", predicted, observed);
  matrix_[static_cast<std::size_t>(predicted)][static_cast<std::size_t>(observed)] = count;
}

void TreeStatisticsImp::AddMisclassificationInfo(Node const* node, DataSample sample) {
  // The nodes still to be visited, the next one last: terminal nodes are added from left to right.
  std::vector<Node const*> pending{node};
  while (!pending.empty()) {
    Node const* const current = pending.back();
    pending.pop_back();
    if (current == nullptr) continue;
    int const numChildren = current->GetNumChildren();
    for (int position = numChildren - 1; position >= 0; --position) {
      pending.push_back(current->GetChild(static_cast<unsigned int>(position)));
    }
    ClsInfo const* const info = numChildren > 0 ? nullptr : current->GetClsInfo(sample);
    if (info == nullptr) continue;
    int const predicted = info->GetPrediction();
    if (!HasClass(predicted)) continue;
    int const numClasses = CountReadableClasses(*info, numClasses_);
    for (int observed = 0; observed < numClasses && HasClass(observed); ++observed) {
      matrix_[static_cast<std::size_t>(predicted)][static_cast<std::size_t>(observed)] +=
          info->GetClassCount(observed);
    }
  }
}

void TreeStatisticsImp::Initialize(TreeAlgorithm const& algorithm, double risk, double stdError,
                                   ValidationType validation) {
  isCls_ = algorithm.IsClassificationTree();
  numClasses_ = 0;
  risk_ = risk;
  stdError_ = stdError;
  if (!isCls_) return;
  matrix_.clear();
  Node const* const root = algorithm.GetRootNode();
  ClsInfo const* const info = root == nullptr ? nullptr : root->GetClsInfo(TrainingSample);
  if (info == nullptr) return;
  numClasses_ = info->GetNumClasses();
  // Deliberate: the counts of cross-validation would belong to other trees.
  if (validation == ValidationCrossValidation) return;
  InitMatrix(numClasses_);
  AddMisclassificationInfo(root, validation == ValidationSplitSample ? TestSample : TrainingSample);
}

bool TreeStatisticsImp::HasClass(int index) const {
  return index >= 0 && static_cast<std::size_t>(index) < matrix_.size();
}

void TreeStatisticsImp::RequireCell(char const* operation, int predicted, int observed) const {
  internal::RequireIndex(predicted, matrix_.size(), operation);
  internal::RequireIndex(observed, matrix_.size(), operation);
}

std::ostream& operator<<(std::ostream& stream, TreeStatisticsImp const& statistics) {
  if (statistics.IsCls()) {
    int const numClasses = statistics.GetNumClasses();
    stream << "Classification tree." << std::endl;
    stream << "Number of target classes = " << numClasses << std::endl;
    for (int predicted = 0; predicted < numClasses; ++predicted) {
      stream << std::endl;
      for (int observed = 0; observed < numClasses; ++observed) {
        stream << statistics.GetMisclassificationCount(predicted, observed) << "  ";
      }
    }
  } else {
    stream << "Regression tree." << std::endl;
  }
  stream << "Risk estimate " << statistics.GetRisk() << std::endl;
  stream << "Standard error of risk estimate " << statistics.GetStdError() << std::endl;
  return stream;
}

TreeStatistics::TreeStatistics() = default;

TreeStatistics::TreeStatistics(TreeStatistics const& other)
    : statistics_(other.statistics_ == nullptr ? nullptr : other.statistics_->Clone()) {}

TreeStatistics& TreeStatistics::operator=(TreeStatistics const& other) {
  if (this == &other) return *this;
  statistics_.reset();
  if (other.statistics_ != nullptr) statistics_.reset(other.statistics_->Clone());
  return *this;
}

TreeStatistics& TreeStatistics::operator=(TreeStatisticsIntf const& statistics) {
  internal::Require(&statistics != statistics_.get(),
                    "TreeStatistics::operator=", "the object assigned is the one that is held");
  statistics_.reset();
  statistics_.reset(statistics.Clone());
  return *this;
}

TreeStatistics::~TreeStatistics() = default;

double TreeStatistics::GetMisclassificationCount(int predicted, int observed) const {
  return statistics_ == nullptr ? systemMissingValue()
                                : statistics_->GetMisclassificationCount(predicted, observed);
}

double TreeStatistics::GetRisk() const {
  return statistics_ == nullptr ? systemMissingValue() : statistics_->GetRisk();
}

double TreeStatistics::GetStdError() const {
  return statistics_ == nullptr ? systemMissingValue() : statistics_->GetStdError();
}

bool TreeStatistics::IsCls() const { return statistics_ != nullptr && statistics_->IsCls(); }

int TreeStatistics::GetNumClasses() const {
  return statistics_ == nullptr ? 0 : statistics_->GetNumClasses();
}

}  // namespace tree
