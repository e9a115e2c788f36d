#include "AllocationFault.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

AllocationFault::Kind armedKind = AllocationFault::NONE;
int countdown = 0;
int pauses = 0;

bool fails(AllocationFault::Kind kind) {
  return kind == armedKind && pauses == 0 && countdown > 0 && --countdown == 0;
}

}  // namespace

AllocationFault::AllocationFault(Kind kind, int nth) {
  countdown = nth;
  armedKind = kind;
}
AllocationFault::~AllocationFault() { armedKind = NONE; }
// NOLINTNEXTLINE(readability-convert-member-functions-to-static): one fault is armed at a time
bool AllocationFault::Happened() const { return countdown == 0; }
AllocationFault::Pause::Pause() { ++pauses; }
AllocationFault::Pause::~Pause() { --pauses; }

// NOLINTBEGIN: the linker's own names, and allocators that own what they hand out
extern "C" void* __real_malloc(std::size_t size);

extern "C" void* __wrap_malloc(std::size_t size) {
  void* const block = fails(AllocationFault::MALLOC) ? nullptr : __real_malloc(size);
  // Bytes that nobody wrote must not look like an answer.
  return block == nullptr ? nullptr : std::memset(block, 0xA5, size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return fails(AllocationFault::NEW) ? nullptr : __real_malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
  if (void* const block = operator new(size, std::nothrow)) {
    return block;
  }
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
// NOLINTEND
