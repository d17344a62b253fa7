#ifndef TREE_GROW_SRC_GROWING_WORKERS_H_
#define TREE_GROW_SRC_GROWING_WORKERS_H_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>

#include "tree/results.h"

namespace tree::grow {

/// Thrown by long operations when the listener has asked to stop; never leaves the library.
class Cancelled : public std::exception {
 public:
  char const* what() const noexcept override { return "cancelled"; }
};

/// Threads that do tasks side by side, and the listener that hears how far they have come. The
/// calling thread works along, and is the only one that the listener is called in.
class Workers {
 public:
  /// `numThreads`: the calling one included; 0 for as many as the machine can run at a time.
  explicit Workers(int numThreads);
  ~Workers();
  Workers(Workers const&) = delete;
  Workers& operator=(Workers const&) = delete;

  /// Number of threads that work, the calling one included.
  int GetNumThreads() const { return numThreads_; }
  /// Names who hears of the progress; null for nobody. **Borrowed**.
  void SetListener(ProgressListener* listener) { listener_ = listener; }

  /// Begins an operation: progress starts from 0, and an earlier cancellation is forgotten.
  void Begin();
  /// Says what is being done, and which part of the whole operation it is: tasks and calls of
  /// `Advance` move the progress from `from` to `to`. `activity`: a literal. What was not being
  /// done before is reported at once.
  void BeginStage(char const* activity, double from, double to);
  /// Of the present stage, the share that is done; never goes back. In other threads than the
  /// calling one the same as `Poll`.
  void Advance(double share);

  /// Does task 0 to `count` - 1, each once, in any order and in any thread, and returns when all
  /// are done. `task` is called with the task's number. Throws `Cancelled`, once every thread has
  /// stopped, when the listener asked to; and what a task has thrown.
  void Run(std::size_t count, std::function<void(std::size_t)> const& task);

  /// To be called now and then by tasks that take long, and between tasks: lets the listener know,
  /// if it is time to. Throws `Cancelled` when the operation is to end.
  void Poll();
  /// Counts what was done, in cases or the like, and polls once it makes up some milliseconds: for
  /// many small pieces of work, of which each alone would not poll.
  void Poll(std::size_t work);

 private:
  struct Pool;
  struct Batch;

  void WorkOn(Batch& batch);
  bool IsCaller() const;

  int numThreads_;
  std::unique_ptr<Pool> pool_;  // null with a single thread
  ProgressListener* listener_ = nullptr;
  std::atomic<bool> cancelled_{false};
  // Of the calling thread only:
  std::chrono::steady_clock::time_point lastReport_;
  char const* activity_ = "";
  double stageBegin_ = 0.0;
  double stageEnd_ = 0.0;
  double fraction_ = 0.0;
};

/// How much is done at a time between two polls.
inline constexpr std::size_t kWorkPerPoll = std::size_t{1} << 19;

/// Walks through 0 to `size` - 1 in slices, and calls `poll` between them: `visit` is called with
/// the begin and the end of each slice. A slice takes some milliseconds.
template <class Poll, class Visit>
void ForSlices(std::size_t size, Poll const& poll, Visit const& visit) {
  for (std::size_t begin = 0; begin < size; begin += kWorkPerPoll) {
    if (begin != 0) poll();
    visit(begin, std::min(size, begin + kWorkPerPoll));
  }
}

template <class Visit>
void ForSlices(std::size_t size, Workers& workers, Visit const& visit) {
  ForSlices(
      size, [&workers] { workers.Poll(); }, visit);
}

/// The same for each number of a range on its own.
template <class Visit>
void ForEachPolling(std::uint32_t begin, std::uint32_t end, Workers& workers, Visit const& visit) {
  ForSlices(end - begin, workers, [&](std::size_t first, std::size_t last) {
    for (std::size_t offset = first; offset < last; ++offset) {
      visit(begin + static_cast<std::uint32_t>(offset));
    }
  });
}

/// The first number from 0 to `size` - 1 for which `isMatch` holds; `size` where there is none.
template <class IsMatch>
std::size_t FindPolling(std::size_t size, Workers& workers, IsMatch const& isMatch) {
  std::size_t found = size;
  ForSlices(size, workers, [&](std::size_t begin, std::size_t end) {
    for (std::size_t number = begin; number < end && found == size; ++number) {
      if (isMatch(number)) found = number;
    }
  });
  return found;
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_WORKERS_H_
