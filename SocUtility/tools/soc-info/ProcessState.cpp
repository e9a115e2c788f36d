#include "ProcessState.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <thread>
#ifdef _WIN32
// clang-format off
#include "platform/WindowsApi.h"  // first: the others rely on its types
#include <tlhelp32.h>
#include <winternl.h>
// clang-format on

#include <memory>
#else
#include <dlfcn.h>

#include <cfenv>
#endif

namespace fs = std::filesystem;

namespace {

/// A part of the floating-point environment.
struct Control {
  std::uint32_t FloatingPointState::*word;
  std::uint32_t bits;
  std::string_view name;
};

#if defined(__aarch64__) || defined(_M_ARM64)
constexpr std::array CONTROLS = {
    Control{&FloatingPointState::main, 0x00C00000, "rounding mode"},
    Control{&FloatingPointState::main, 0x01080000, "flush to zero"},
    Control{&FloatingPointState::main, 0x06000000, "NaN or half-precision format"},
    Control{&FloatingPointState::main, 0x00009F00, "exception traps"},
};
#else
constexpr std::array CONTROLS = {
    Control{&FloatingPointState::main, 0x6000, "rounding mode"},
    Control{&FloatingPointState::main, 0x8000, "flush to zero"},
    Control{&FloatingPointState::main, 0x0040, "denormals are zero"},
    Control{&FloatingPointState::main, 0x1F80, "exception masks"},
    Control{&FloatingPointState::x87, 0x0C00, "x87 rounding mode"},
    Control{&FloatingPointState::x87, 0x0300, "x87 precision"},
    Control{&FloatingPointState::x87, 0x003F, "x87 exception masks"},
};
#endif

#ifdef _WIN32

struct CloseIt {
  void operator()(void* handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, CloseIt>;

bool isOfTheSystem(HMODULE module) {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
  std::array<wchar_t, MAX_PATH> system{};
  GetSystemDirectoryW(system.data(), MAX_PATH);
  const fs::path file(path);
  const std::wstring name = file.filename().wstring();
  const auto isRuntime = [&](std::wstring_view prefix) {
    return _wcsnicmp(name.c_str(), prefix.data(), prefix.size()) == 0;
  };
  return _wcsicmp(file.parent_path().c_str(), system.data()) == 0 && !isRuntime(L"ucrtbase") &&
         !isRuntime(L"msvcr");
}

/// Whether a thread runs that the system has not started for itself.
bool counts(std::uint64_t thread) {
  const OwnedHandle handle(OpenThread(THREAD_QUERY_INFORMATION, FALSE, static_cast<DWORD>(thread)));
  LPCWSTR start = nullptr;
  if (!handle || !NT_SUCCESS(NtQueryInformationThread(
                     handle.get(), static_cast<THREADINFOCLASS>(ThreadQuerySetWin32StartAddress),
                     &start, sizeof start, nullptr))) {
    return false;
  }
  constexpr DWORD FROM_ADDRESS =
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  HMODULE module = nullptr;
  return GetModuleHandleExW(FROM_ADDRESS, start, &module) == FALSE || !isOfTheSystem(module);
}

#else

bool counts(std::uint64_t /*thread*/) { return true; }

#endif

}  // namespace

#ifdef _WIN32

std::set<std::uint64_t> Threads() {
  std::set<std::uint64_t> threads;
  const OwnedHandle list(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));  // of all processes
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL found = Thread32First(list.get(), &entry); found != FALSE;
       found = Thread32Next(list.get(), &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
      threads.insert(entry.th32ThreadID);
    }
  }
  return threads;
}

FloatingPointState ReadFloatingPointState() {
  CONTEXT context{};
  RtlCaptureContext(&context);
#if defined(__aarch64__) || defined(_M_ARM64)
  return {.main = context.Fpcr};
#else
  return {.main = context.MxCsr, .x87 = context.FltSave.ControlWord};
#endif
}

bool IsLoaded(const fs::path& library) {
  return GetModuleHandleW(fs::absolute(library).make_preferred().c_str()) != nullptr;
}

#else

std::set<std::uint64_t> Threads() {
  std::set<std::uint64_t> threads;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/task")) {
    threads.insert(std::stoull(entry.path().filename().string()));
  }
  return threads;
}

FloatingPointState ReadFloatingPointState() {
  std::fenv_t environment;
  std::fegetenv(&environment);
#if defined(__aarch64__)
  return {.main = environment.__fpcr};
#else
  return {.main = environment.__mxcsr, .x87 = environment.__control_word};
#endif
}

bool IsLoaded(const fs::path& library) {
  void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  return handle != nullptr && dlclose(handle) == 0;
}

#endif

std::size_t CountThreadsSince(const std::set<std::uint64_t>& before) {
  constexpr int ATTEMPTS = 50;
  constexpr std::chrono::milliseconds PAUSE(2);
  std::ptrdiff_t count = 0;
  for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
    const std::set<std::uint64_t> now = Threads();
    count = std::ranges::count_if(
        now, [&](std::uint64_t thread) { return !before.contains(thread) && counts(thread); });
    if (count == 0) {
      break;
    }
    std::this_thread::sleep_for(PAUSE);
  }
  return static_cast<std::size_t>(count);
}

std::string ChangesOf(const FloatingPointState& before, const FloatingPointState& after) {
  std::string changes;
  for (const auto& [word, bits, name] : CONTROLS) {
    if (((before.*word ^ after.*word) & bits) != 0) {
      changes += (changes.empty() ? "" : ", ") + std::string(name);
    }
  }
  return changes;
}
