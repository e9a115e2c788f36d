/// What a library may leave changed in a process that has loaded and unloaded it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

/// The numbers of this process's threads.
std::set<std::uint64_t> Threads();

/// The number of threads that were started since `before` was taken and still run. Threads that are
/// about to end get a moment for it.
///
/// On Windows the system starts threads of its own, which stay for a while: in the thread pool, for
/// COM, for graphics. A thread counts if its first function is in no module (it has been unloaded),
/// in a C runtime (which calls another module's function) or in a module outside of the system's
/// directory. Elsewhere all count.
std::size_t CountThreadsSince(const std::set<std::uint64_t>& before);

/// The registers of the calling thread's floating-point environment.
struct FloatingPointState {
  std::uint32_t main = 0;  ///< MXCSR on x64, FPCR on ARM64.
  std::uint32_t x87 = 0;   ///< The control word; 0 on ARM64.
};

FloatingPointState ReadFloatingPointState();

/// The control bits that differ, for people: "rounding mode, flush to zero". Empty if none do.
std::string ChangesOf(const FloatingPointState& before, const FloatingPointState& after);

/// Whether a library is loaded. Takes no reference.
bool IsLoaded(const std::filesystem::path& library);
