#ifndef TREE_GROW_SRC_GROWING_CREW_H_
#define TREE_GROW_SRC_GROWING_CREW_H_

#include <cstddef>
#include <span>
#include <vector>

#include "growing/split_method.h"
#include "growing/workers.h"

namespace tree::grow {

/// Who works on a node: all threads together, or one of them.
class Crew {
 public:
  /// `workers`: **borrowed**.
  Crew(Workers& workers, bool isWhole) : workers_(workers), isWhole_(isWhole) {}

  bool IsWhole() const { return isWhole_; }
  /// Does task 0 to `count` - 1, as `Workers` do.
  template <class Task>
  void Run(std::size_t count, Task const& task) const {
    if (isWhole_) {
      workers_.Run(count, task);
    } else {
      for (std::size_t number = 0; number < count; ++number) task(number);
    }
  }

 private:
  Workers& workers_;
  bool isWhole_;
};

/// Does the work on each of some nodes: all threads together on one with more than `fewCases`, and
/// one thread on each of the others, whose cases stay in its cache until it is done. `work`: called
/// with the position of a node and its crew.
template <class Work>
void ForNodes(std::span<GrowingNode const> nodes, std::size_t fewCases, Workers& workers,
              Work const& work) {
  std::vector<std::size_t> small;
  for (std::size_t node = 0; node < nodes.size(); ++node) {
    if (nodes[node].ranges.places.Size() > fewCases) {
      work(node, Crew(workers, true));
    } else {
      small.push_back(node);
    }
  }
  workers.Run(small.size(), [&](std::size_t number) { work(small[number], Crew(workers, false)); });
}

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_CREW_H_
