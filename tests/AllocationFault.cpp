#include "AllocationFault.h"

#include <cstdlib>
#include <cstring>
#include <new>

// NOLINTBEGIN: the linker's own names, and allocators that own what they hand out
extern "C" void* __real_malloc(std::size_t size);

extern "C" void* __wrap_malloc(std::size_t size) {
  void* const block = AllocationFault::IsDue() ? nullptr : __real_malloc(size);
  // Bytes that nobody wrote must not look like an answer.
  return block == nullptr ? nullptr : std::memset(block, 0xA5, size);
}

void* operator new(std::size_t size) {
  if (void* const block = __wrap_malloc(size == 0 ? 1 : size)) {
    return block;
  }
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return __wrap_malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
// NOLINTEND
