#ifndef TREE_TESTS_FUZZ_FUZZ_TARGET_H_
#define TREE_TESTS_FUZZ_FUZZ_TARGET_H_

#include <cstddef>
#include <cstdint>

/// What libFuzzer and the replay call with one input. Returns 0; a difference between the library
/// and its model leaves it as an exception.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

#endif  // TREE_TESTS_FUZZ_FUZZ_TARGET_H_
