// With glibc, the program's own allocation functions, which the libraries that it loads call too.
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iterator>

#include "Host.h"

namespace {

std::atomic<uint64_t> blocks;

}  // namespace

#if defined(ALLOCATIONS_ARE_OURS)
const bool HOST_SEES_ALLOCATIONS = true;

namespace {

void* counted(void* block) {
  blocks += block == nullptr ? 0 : 1;
  return block;
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);

#pragma GCC visibility push(default)

void* malloc(size_t size) noexcept {
  return IsAllocationToFail() ? nullptr : counted(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) noexcept {
  return IsAllocationToFail() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* block, size_t size) noexcept {
  if (IsAllocationToFail()) {
    return nullptr;
  }
  return block == nullptr ? counted(__libc_malloc(size)) : __libc_realloc(block, size);
}

void free(void* block) noexcept {
  blocks -= block == nullptr ? 0 : 1;
  __libc_free(block);
}

#pragma GCC visibility pop
}
#else
const bool HOST_SEES_ALLOCATIONS = false;
#endif

void HostAsk(HostCall* call) {
  call->status = call->query(call->component, call->key, call->buffer, &call->size);
}

HostUse HostMeasure() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return {static_cast<uint64_t>(std::distance(begin(files), end(files))), blocks};
}

void HostIntercept(void*) {}
