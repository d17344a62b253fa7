#ifndef TREE_TESTS_TESTING_PART_LOG_H_
#define TREE_TESTS_TESTING_PART_LOG_H_

#include <string>
#include <utility>
#include <vector>

namespace tree::testing {

/// What happened to the instrumented parts that write to it.
struct PartLog {
  int alive = 0;
  std::vector<std::string> clones;  ///< the names of the cloned parts, in the order of cloning
  int deletions = 0;
  std::vector<std::string> events;  ///< "clone NAME" and "delete NAME", in order
};

/// A `Base` that writes to a log when it is cloned and deleted; its clones are instrumented too. So
/// a test can tell whether an owner really cloned what it was given, and how often, and whether it
/// deleted each clone once. The log is borrowed and has to outlive every clone.
template <class Base, class Interface>
class Instrumented : public Base {
 public:
  explicit Instrumented(PartLog* log, std::string name, Base const& values = Base())
      : Base(values), log_(log), name_(std::move(name)) {
    ++log_->alive;
  }
  Instrumented(Instrumented const& other) : Base(other), log_(other.log_), name_(other.name_) {
    ++log_->alive;
  }
  Instrumented& operator=(Instrumented const&) = delete;
  ~Instrumented() override {
    --log_->alive;
    ++log_->deletions;
    log_->events.push_back("delete " + name_);
  }

  Interface* Clone() const override {
    log_->clones.push_back(name_);
    log_->events.push_back("clone " + name_);
    return new Instrumented(*this);
  }

 private:
  PartLog* log_;
  std::string name_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_PART_LOG_H_
