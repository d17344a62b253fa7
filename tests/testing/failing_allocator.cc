#include "testing/failing_allocator.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

thread_local long allocations = 0;
thread_local long failAt = 0;  // 0: never
thread_local bool failPersistently = false;
thread_local bool hasFailed = false;
std::atomic<long> liveAllocations{0};

bool IsToFail() {
  ++allocations;
  if (failAt == 0) return false;
  bool const fails = allocations == failAt || (failPersistently && allocations > failAt);
  hasFailed = hasFailed || fails;
  return fails;
}

/// Null when it fails.
void* TryToAllocate(std::size_t size) noexcept {
  // Sanitizers end a program that asks malloc for more than a pointer can span.
  bool const fails = IsToFail() || size > PTRDIFF_MAX;
  void* const block = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block != nullptr) ++liveAllocations;
  return block;
}

void* Allocate(std::size_t size) {
  void* const block = TryToAllocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) {
  auto const unit = static_cast<std::size_t>(alignment);
  bool const fails = IsToFail() || size > PTRDIFF_MAX;
  std::size_t const whole = (size + unit - 1) / unit * unit;
  void* const block = fails ? nullptr : std::aligned_alloc(unit, whole == 0 ? unit : whole);
  if (block == nullptr) throw std::bad_alloc();
  ++liveAllocations;
  return block;
}

void Deallocate(void* block) noexcept {
  if (block == nullptr) return;
  --liveAllocations;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return TryToAllocate(size);
}
void* operator new[](std::size_t size, std::nothrow_t const& /*tag*/) noexcept {
  return TryToAllocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateAligned(size, alignment);
}
void operator delete(void* block) noexcept { Deallocate(block); }
void operator delete[](void* block) noexcept { Deallocate(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Deallocate(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Deallocate(block); }
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept { Deallocate(block); }
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept { Deallocate(block); }
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Deallocate(block);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Deallocate(block);
}

namespace tree::testing {

FailingAllocator::FailingAllocator(long nth, bool persistent) {
  failAt = allocations + nth;
  failPersistently = persistent;
  hasFailed = false;
}

FailingAllocator::~FailingAllocator() {
  failAt = 0;
  hasFailed = false;
}

bool FailingAllocator::HasFailed() const { return hasFailed; }

long CountLiveAllocations() { return liveAllocations; }

long CountAllocations() { return allocations; }

}  // namespace tree::testing
