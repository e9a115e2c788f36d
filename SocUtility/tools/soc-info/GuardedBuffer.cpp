#include "GuardedBuffer.h"

#include <algorithm>
#include <atomic>
#include <new>
#ifdef _WIN32
#include "platform/WindowsApi.h"
#else
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csignal>
#endif

namespace {

/// The value of the bytes around the buffer.
constexpr std::uint8_t KNOWN = 0xB5;
constexpr std::size_t KNOWN_SIZE = 4096;
/// A multiple of every page size.
constexpr std::size_t GUARD_SIZE = std::size_t{64} << 10;

OutsideAccess* reportAccess = nullptr;
std::atomic<const GuardedBuffer*> current;

// `map` returns zeroed memory, or null. `setOpen` opens or closes whole pages.
#ifdef _WIN32

std::size_t pageSize() {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  return info.dwPageSize;
}

void* map(std::size_t size) {
  return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void unmap(std::span<std::uint8_t> memory) { VirtualFree(memory.data(), 0, MEM_RELEASE); }

bool setOpen(std::span<std::uint8_t> pages, bool open) {
  DWORD ignored = 0;
  return VirtualProtect(pages.data(), pages.size(), open ? PAGE_READWRITE : PAGE_NOACCESS,
                        &ignored) != FALSE;
}

LONG CALLBACK handleException(EXCEPTION_POINTERS* exception) {
  const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
  const GuardedBuffer* const buffer = current;
  const bool isHandled = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && buffer != nullptr &&
                         record.NumberParameters >= 2 &&
                         buffer->HandleFault(record.ExceptionInformation[1]);
  return isHandled ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
}

#else

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

void* map(std::size_t size) {
  void* const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return memory == MAP_FAILED ? nullptr : memory;
}

void unmap(std::span<std::uint8_t> memory) { munmap(memory.data(), memory.size()); }

bool setOpen(std::span<std::uint8_t> pages, bool open) {
  return mprotect(pages.data(), pages.size(), open ? PROT_READ | PROT_WRITE : PROT_NONE) == 0;
}

struct Handler {
  int signal;
  struct sigaction previous;
};
std::array<Handler, 2> handlers = {{{SIGSEGV, {}}, {SIGBUS, {}}}};

void handleSignal(int signal, siginfo_t* info, void*) {
  const bool isFault = info->si_code > 0;  // else a process sent the signal
  const GuardedBuffer* const buffer = current;
  if (isFault && buffer != nullptr &&
      buffer->HandleFault(reinterpret_cast<std::uintptr_t>(info->si_addr))) {
    return;
  }
  sigaction(signal, &handlers.at(signal == SIGSEGV ? 0 : 1).previous, nullptr);
  if (!isFault) {
    (void)raise(signal);  // only a fault repeats itself
  }
}

#endif

}  // namespace

void WatchGuardedBuffers(OutsideAccess* report) {
  reportAccess = report;
#ifdef _WIN32
  constexpr ULONG AS_FIRST = 1;
  AddVectoredExceptionHandler(AS_FIRST, &handleException);
#else
  // A full stack is a fault too, and leaves no memory for the handler.
  static std::array<std::uint8_t, std::size_t{64} << 10> stack;
  const stack_t alternate = {.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
  sigaltstack(&alternate, nullptr);
  struct sigaction action {};
  action.sa_sigaction = &handleSignal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  for (auto& [signal, previous] : handlers) {
    sigaction(signal, &action, &previous);
  }
#endif
}

GuardedBuffer::GuardedBuffer(std::size_t size) {
  const std::size_t page = pageSize();
  const std::size_t open = (KNOWN_SIZE + size + page - 1) / page * page;
  const std::size_t total = page + open + GUARD_SIZE + page;
  void* const memory = total > size ? map(total) : nullptr;
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  memory_ = {static_cast<std::uint8_t*>(memory), total};
  before_ = memory_.subspan(page, open - size);
  bytes_ = memory_.subspan(page + open - size, size);
  guard_ = memory_.subspan(page + open, GUARD_SIZE);
  std::ranges::fill(before_, KNOWN);
  std::ranges::fill(guard_, KNOWN);
  if (!setOpen(memory_.first(page), false) || !setOpen(memory_.last(GUARD_SIZE + page), false)) {
    unmap(memory_);
    throw std::bad_alloc();
  }
  current = this;
}

GuardedBuffer::~GuardedBuffer() {
  current = nullptr;
  unmap(memory_);
}

std::size_t GuardedBuffer::BytesWrittenBefore() const {
  const auto first = std::ranges::find_if(before_, [](std::uint8_t byte) { return byte != KNOWN; });
  return static_cast<std::size_t>(before_.end() - first);
}

std::size_t GuardedBuffer::BytesWrittenAfter() const {
  setOpen(guard_, true);
  std::size_t written = guard_.size();
  while (written > 0 && guard_[written - 1] == KNOWN) {
    --written;
  }
  return written;
}

bool GuardedBuffer::HandleFault(std::uintptr_t address) const {
  // An address before the memory wraps around.
  const auto isIn = [address](Memory part) {
    return address - reinterpret_cast<std::uintptr_t>(part.data()) < part.size();
  };
  if (!isIn(memory_)) {
    return false;
  }
  if (reportAccess != nullptr) {
    const std::uintptr_t offset = address - reinterpret_cast<std::uintptr_t>(bytes_.data());
    reportAccess(bytes_.size(), static_cast<std::ptrdiff_t>(offset));
  }
  return isIn(guard_) && setOpen(guard_, true);
}
