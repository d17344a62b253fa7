#ifndef TREE_GROW_SRC_GROWING_WORK_MEMORY_H_
#define TREE_GROW_SRC_GROWING_WORK_MEMORY_H_

#include <cstddef>
#include <memory>

namespace tree::grow {

/// Memory to work with, kept from use to use. Nobody clears it before it is written, which takes
/// long where it is large.
template <class Value>
class WorkMemory {
 public:
  /// Room for so many values, which can be anything. What was there before is lost where it takes
  /// more room than ever. **Borrowed** until the next call.
  Value* Get(std::size_t count) {
    if (capacity_ < count) {
      values_.reset();
      capacity_ = 0;
      values_ = std::make_unique_for_overwrite<Value[]>(count);
      capacity_ = count;
    }
    return values_.get();
  }

 private:
  std::unique_ptr<Value[]> values_;
  std::size_t capacity_ = 0;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_WORK_MEMORY_H_
