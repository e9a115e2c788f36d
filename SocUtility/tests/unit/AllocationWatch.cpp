#include "AllocationWatch.h"

#include <cstdint>
#include <cstdlib>
#include <new>

constinit std::size_t allocationCount = 0;
constinit std::size_t largestAllocation = SIZE_MAX;

void* operator new(std::size_t size) {
  ++allocationCount;
  void* block = size > largestAllocation ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
