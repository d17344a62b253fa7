#ifndef TREE_CLI_TESTS_CLI_TESTING_FIXED_ALGORITHM_H_
#define TREE_CLI_TESTS_CLI_TESTING_FIXED_ALGORITHM_H_

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "testing/fake_algorithm.h"
#include "tree/results.h"

namespace tree::cli::testing {

/// An algorithm that "grows" the tree it is given, has a risk of 0.25 with a standard error of 0.5,
/// and reports progress once in every operation. It notes what it is asked to do, and fails where
/// the test says so.
class FixedAlgorithm : public tree::testing::FakeAlgorithm {
 public:
  FixedAlgorithm(std::unique_ptr<NodeImp> tree, AlgSettings const& settings)
      : FakeAlgorithm(settings.GetType() == AlgCCart, std::move(tree)),
        settings_(settings.Clone()) {}

  void FailAt(std::string operation, AlgorithmFailure failure, std::string message) {
    failsAt_ = std::move(operation);
    failure_ = failure;
    message_ = std::move(message);
  }
  std::vector<std::string> const& GetLog() const { return log_; }
  ProgressListener const* GetListener() const { return listener_; }

  AlgSettings const* GetSettings() const noexcept override { return settings_.get(); }
  TreeStatisticsImp const* GetStatistics() const noexcept override {
    return statistics_.has_value() ? &*statistics_ : nullptr;
  }
  bool Grow() noexcept override { return Do("grow"); }
  bool Prune() noexcept override { return Do("prune"); }
  bool GetPruningSequence(std::vector<PruningStep>* steps) noexcept override {
    *steps = {{3, 0.0, 0.25, 0.5, {}}, {1, 0.25, 0.4, 0.5, {0}}};
    return Do("sequence");
  }
  bool Validate() noexcept override {
    statistics_.emplace(*this, 0.25, 0.5, settings_->GetValidationSpec()->GetType());
    return Do("validate");
  }
  void SetProgressListener(ProgressListener* listener) noexcept override { listener_ = listener; }
  AlgorithmFailure GetFailure() const noexcept override { return failure_; }
  char const* GetFailureMessage() const noexcept override { return message_.c_str(); }

 private:
  bool Do(char const* operation) {
    log_.emplace_back(operation);
    if (listener_ != nullptr && !listener_->Report(0.5, operation)) {
      failure_ = FailureCancelled;
      return false;
    }
    return failsAt_ != operation;
  }

  std::unique_ptr<AlgSettings> settings_;
  std::optional<TreeStatisticsImp> statistics_;
  std::vector<std::string> log_;
  std::string failsAt_;
  AlgorithmFailure failure_ = FailureNone;
  std::string message_;
  ProgressListener* listener_ = nullptr;
};

}  // namespace tree::cli::testing

#endif  // TREE_CLI_TESTS_CLI_TESTING_FIXED_ALGORITHM_H_
