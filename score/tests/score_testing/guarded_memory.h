#ifndef TREE_SCORE_TESTS_SCORE_TESTING_GUARDED_MEMORY_H_
#define TREE_SCORE_TESTS_SCORE_TESTING_GUARDED_MEMORY_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <vector>

namespace tree::score::testing {

/// Gives memory that ends where a page begins that nobody may touch. Vector instructions that
/// gather values are not instrumented by the address sanitizer: here the processor itself watches.
template <class Value>
class GuardedAllocator {
 public:
  using value_type = Value;

  GuardedAllocator() = default;
  template <class Other>
  GuardedAllocator(GuardedAllocator<Other> const& /*other*/) {}

  Value* allocate(std::size_t count) {
    std::size_t const room = RoundUp(count * sizeof(Value));
    void* const begin = ::mmap(nullptr, room + PageSize(), PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (begin == MAP_FAILED) throw std::bad_alloc();
    auto* const guard = static_cast<std::byte*>(begin) + room;
    if (::mprotect(guard, PageSize(), PROT_NONE) != 0) throw std::bad_alloc();
    return reinterpret_cast<Value*>(guard - count * sizeof(Value));
  }

  void deallocate(Value* values, std::size_t count) {
    std::size_t const room = RoundUp(count * sizeof(Value));
    auto* const guard = reinterpret_cast<std::byte*>(values + count);
    ::munmap(guard - room, room + PageSize());
  }

  friend bool operator==(GuardedAllocator const& /*a*/, GuardedAllocator const& /*b*/) {
    return true;
  }

 private:
  static std::size_t PageSize() {
    static auto const size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return size;
  }
  static std::size_t RoundUp(std::size_t bytes) {
    return (bytes + PageSize() - 1) / PageSize() * PageSize();
  }
};

/// A vector of which no reader gets beyond the end unseen; given its size at once.
template <class Value>
using GuardedVector = std::vector<Value, GuardedAllocator<Value>>;

}  // namespace tree::score::testing

#endif  // TREE_SCORE_TESTS_SCORE_TESTING_GUARDED_MEMORY_H_
