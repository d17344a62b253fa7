#ifndef TREE_TESTS_TESTING_FAILING_ALLOCATOR_H_
#define TREE_TESTS_TESTING_FAILING_ALLOCATOR_H_

#include <new>

namespace tree::testing {

/// While one lives, the `nth` allocation by `operator new` (counted from 1, in this thread) throws
/// `std::bad_alloc`, and with `persistent` every later one too. One at a time. Programs that link
/// tree_testing have their `operator new` replaced for it.
class FailingAllocator {
 public:
  explicit FailingAllocator(long nth, bool persistent = false);
  FailingAllocator(FailingAllocator const&) = delete;
  FailingAllocator& operator=(FailingAllocator const&) = delete;
  ~FailingAllocator();

  /// Whether an allocation has been refused so far.
  bool HasFailed() const;
};

/// Number of blocks from `operator new` (in any thread) that have not been deleted yet.
long CountLiveAllocations();

/// Number of allocations by `operator new` in this thread so far.
long CountAllocations();

/// Runs `operation` with its first allocation failing, then with its second one, and so on, until a
/// run needs no more. `operation` makes its own fresh objects and checks them; it may let
/// `std::bad_alloc` out. Returns the number of runs in which an allocation failed.
template <class Operation>
long WithEveryAllocationFailing(Operation operation) {
  for (long nth = 1;; ++nth) {
    FailingAllocator const allocator(nth);
    try {
      operation();
    } catch (std::bad_alloc const&) {
    }
    if (!allocator.HasFailed()) return nth - 1;
  }
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FAILING_ALLOCATOR_H_
