/// The dynamic library layer: the POSIX way of loading libraries, over the Windows loader.
///
/// Used by the provider loader. A failure is told by the result (null, 0 or -1) and leaves a fixed
/// message in a slot of its thread, which `dlError` reads; successes leave the slot alone.
///
/// Callers must serialise `dlOpen`, `dlSym` and `dlClose` among threads: the set of hidden modules
/// has no lock of its own. Handles are the platform's module handles and belong to the caller.
#pragma once

#include <cstdint>
#include <string>

/// Flags of `dlOpen`.
inline constexpr std::uint32_t DL_NOW = 1;     ///< Load the library.
inline constexpr std::uint32_t DL_LOCAL = 2;   ///< Hide a module that this call brought in.
inline constexpr std::uint32_t DL_GLOBAL = 4;  ///< Make the module visible again.
inline constexpr std::uint32_t DL_NOLOAD = 8;  ///< Only find a module that is already loaded.

/// The pseudo-handle of every module of the process that is not hidden. No real handle equals it.
// NOLINTNEXTLINE(performance-no-int-to-ptr)
inline void* const DL_DEFAULT = reinterpret_cast<void*>(std::uintptr_t{4});

/// Loads a library and takes a reference, to be dropped with `dlClose`.
///
/// \param fileName A path, or a bare name that is searched for the platform's way.
/// \param flags    `DL_NOW` with any others, or `DL_NOLOAD` alone. With `DL_NOLOAD` nothing is
///                 loaded and no reference taken: such a handle must not be closed.
/// \return The module handle, or null; a module that `DL_NOLOAD` does not find leaves no message.
///         Throws `std::bad_alloc` when a module cannot be noted as hidden, and has released it.
void* dlOpen(const char* fileName, std::uint32_t flags);

/// The address of a symbol of one module, or of the first module that has it for `DL_DEFAULT`; null
/// when there is none. A null handle or name gives null without a message.
void* dlSym(void* handle, const char* symbolName);

/// Drops one reference; the module is no longer hidden. 0, also for a null handle; -1 on failure.
std::int32_t dlClose(void* handle);

/// Stores the full path of the module that contains `address`; paths of 260 characters and more are
/// not supported. 1; 0 on failure, `path` is then empty. Throws `std::bad_alloc`.
std::uint32_t dlModulePath(const void* address, std::string& path);

/// The message of this thread's last failure, or null when there was none. Clears nothing.
const char* dlError();
