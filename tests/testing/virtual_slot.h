#ifndef TREE_TESTS_TESTING_VIRTUAL_SLOT_H_
#define TREE_TESTS_TESTING_VIRTUAL_SLOT_H_

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace tree::testing {

/// The position of the first virtual operation after a virtual destructor that is declared first:
/// the destructor takes two entries of the table.
constexpr std::ptrdiff_t kFirstSlot = 2;

/// The position of a virtual operation in its class's table, -1 for an operation that is not
/// virtual. Programs that were linked earlier call by position, so the order is a promise. Reads
/// how the Itanium C++ ABI stores a pointer to an operation; test only where `TREE_HAS_SLOTS`.
template <class Operation>
std::ptrdiff_t VirtualSlot(Operation operation) {
  static_assert(std::is_member_function_pointer_v<Operation>);
  std::ptrdiff_t words[2] = {0, 0};
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  bool const isVirtual = words[0] % 2 != 0;
  return isVirtual ? (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)) : -1;
}

#if defined(__x86_64__) && defined(__GXX_ABI_VERSION)
#define TREE_HAS_SLOTS 1
#else
#define TREE_HAS_SLOTS 0
#endif

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_VIRTUAL_SLOT_H_
