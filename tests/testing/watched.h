#ifndef TREE_TESTS_TESTING_WATCHED_H_
#define TREE_TESTS_TESTING_WATCHED_H_

#include <utility>

namespace tree::testing {

/// A `Base` that reports its own end: its destructor adds one to the counter named first. So a test
/// can tell when, and how often, an object that it gave away is deleted. The counter is borrowed
/// and has to outlive the object.
template <class Base>
class Watched : public Base {
 public:
  template <class... Args>
  explicit Watched(int* deaths, Args&&... args)
      : Base(std::forward<Args>(args)...), deaths_(deaths) {}
  Watched(Watched const&) = delete;
  Watched& operator=(Watched const&) = delete;
  ~Watched() override { ++*deaths_; }

 private:
  int* deaths_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_WATCHED_H_
