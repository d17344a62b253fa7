#ifndef TREE_TESTS_TESTING_SMALL_STACK_H_
#define TREE_TESTS_TESTING_SMALL_STACK_H_

#include <pthread.h>

#include <cstddef>

namespace tree::testing {

/// Runs `operation` to its end in a thread of its own whose stack has room for a few thousand
/// frames, so that a recursion as deep as a tree overflows it wherever the test runs. Returns
/// whether the thread could be started. `operation` must not throw.
template <class Operation>
bool RunOnSmallStack(Operation operation) {
  constexpr std::size_t kStackBytes = 256 * 1024;
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_t thread{};
  auto const run = [](void* argument) -> void* {
    (*static_cast<Operation*>(argument))();
    return nullptr;
  };
  bool const started = pthread_attr_setstacksize(&attributes, kStackBytes) == 0 &&
                       pthread_create(&thread, &attributes, run, &operation) == 0;
  pthread_attr_destroy(&attributes);
  return started && pthread_join(thread, nullptr) == 0;
}

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_SMALL_STACK_H_
