#include "growing.h"

#include "tree/grow/input_error.h"

namespace tree::cli {
namespace {

void Require(bool isDone, TreeAlgorithm const& algorithm) {
  if (isDone) return;
  switch (algorithm.GetFailure()) {
    case FailureCancelled:
      throw Interrupted();
    case FailureNoData:
    case FailureInvalidSettings:
      throw grow::InputError(algorithm.GetFailureMessage());
    default:
      throw GrowingError(algorithm.GetFailureMessage());
  }
}

}  // namespace

std::vector<PruningStep> GrowTree(TreeAlgorithm& algorithm, Options const& options,
                                  ProgressBar& progress) {
  std::vector<PruningStep> sequence;
  algorithm.SetProgressListener(&progress);
  progress.Begin();
  Require(algorithm.Grow(), algorithm);
  if (options.results.sequence) {
    progress.Begin();
    Require(algorithm.GetPruningSequence(&sequence), algorithm);
  }
  if (options.pruning.prune) {
    progress.Begin();
    Require(algorithm.Prune(), algorithm);
  }
  progress.Begin();
  Require(algorithm.Validate(), algorithm);
  progress.End();
  algorithm.SetProgressListener(nullptr);
  return sequence;
}

}  // namespace tree::cli
