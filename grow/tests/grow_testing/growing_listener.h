#ifndef TREE_GROW_TESTS_TESTING_GROWING_LISTENER_H_
#define TREE_GROW_TESTS_TESTING_GROWING_LISTENER_H_

#include <chrono>
#include <string_view>
#include <thread>

#include "tree/results.h"

namespace tree::grow {

/// Ends the growing of a tree at a report, once the data is prepared. Takes so long over those
/// before that each time the growers ask, they are heard: reports are then as many as the steps
/// taken in the calling thread.
class GrowingListener : public ProgressListener {
 public:
  explicit GrowingListener(int patience) : patience_(patience) {}

  bool Report(double, char const* activity) noexcept override {
    if (activity != std::string_view("growing the tree")) return true;
    if (++numReports_ == patience_) return false;
    std::this_thread::sleep_for(kMoreThanBetweenReports);
    return true;
  }
  int GetNumReports() const { return numReports_; }

 private:
  // `Workers` let 40 pass between two reports.
  static constexpr std::chrono::milliseconds kMoreThanBetweenReports{45};

  int patience_;
  int numReports_ = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_TESTS_TESTING_GROWING_LISTENER_H_
