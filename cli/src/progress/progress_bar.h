#ifndef TREE_CLI_SRC_PROGRESS_PROGRESS_BAR_H_
#define TREE_CLI_SRC_PROGRESS_PROGRESS_BAR_H_

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>

#include "tree/results.h"

namespace tree::cli {

/// Shows on a terminal how far an operation has come, once it takes longer than a second, and ends
/// it when the user wants to. Draws over its own line, which is empty in the end.
class ProgressBar : public ProgressListener {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `terminal`: **borrowed**. `width`: its columns; 0 where there is none, and nothing is drawn.
  /// `isInterrupted`: whether to end the operation.
  ProgressBar(std::ostream& terminal, int width, std::function<bool()> isInterrupted,
              std::function<Time()> now = std::chrono::steady_clock::now);
  ~ProgressBar() override;
  ProgressBar(ProgressBar const&) = delete;
  ProgressBar& operator=(ProgressBar const&) = delete;

  /// A new operation begins; the bar of another one goes away.
  void Begin();
  /// The operation has ended.
  void End();
  bool Report(double fraction, char const* activity) noexcept override;

 private:
  std::string LineFor(double fraction, char const* activity) const;

  std::ostream& terminal_;
  int width_;
  std::function<bool()> isInterrupted_;
  std::function<Time()> now_;
  Time nextDrawing_;
  bool isDrawn_ = false;
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_PROGRESS_PROGRESS_BAR_H_
