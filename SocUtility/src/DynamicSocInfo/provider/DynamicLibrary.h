/// The dynamic library layer: POSIX's functions for libraries, over the Windows loader.
///
/// The provider loader uses it. A function that fails returns null, 0 or -1 and stores a fixed
/// message for its thread, which `dlError` reads. A success leaves the message unchanged.
///
/// Callers must serialise `dlOpen`, `dlSym` and `dlClose` among threads, since the set of hidden
/// modules has no lock. Handles are the platform's module handles and belong to the caller.
#pragma once

#include <cstdint>
#include <string>

/// Flags of `dlOpen`.
inline constexpr std::uint32_t DL_NOW = 1;     ///< Load the library.
inline constexpr std::uint32_t DL_LOCAL = 2;   ///< Hide the module if this call loads it.
inline constexpr std::uint32_t DL_GLOBAL = 4;  ///< Make the module visible again.
inline constexpr std::uint32_t DL_NOLOAD = 8;  ///< Only find a module that is already loaded.

/// A handle for `dlSym`: all modules except hidden ones. No module has this handle.
// NOLINTNEXTLINE(performance-no-int-to-ptr)
inline void* const DL_DEFAULT = reinterpret_cast<void*>(std::uintptr_t{4});

/// Loads a library and takes a reference, which `dlClose` drops.
///
/// \param fileName A path, or a bare name, for which the platform searches.
/// \param flags    `DL_NOW` with any others, or `DL_NOLOAD` alone. `DL_NOLOAD` loads nothing and
///                 takes no reference: do not close such a handle.
/// \return The module handle, or null. `DL_NOLOAD` stores no message when it finds no module.
///         Throws `std::bad_alloc` if there is no memory to hide a module, after releasing it.
void* dlOpen(const char* fileName, std::uint32_t flags);

/// The address of a symbol of one module, or null. `DL_DEFAULT` searches all visible modules in
/// their order. A null handle or name returns null and stores no message.
void* dlSym(void* handle, const char* symbolName);

/// Drops one reference and makes the module visible. Returns 0, also for a null handle, or -1.
std::int32_t dlClose(void* handle);

/// Finds the module that contains `address` and stores its full path. Returns 1, or 0 with an empty
/// `path` on failure; a path of 260 characters or more is a failure. Throws `std::bad_alloc`.
std::uint32_t dlModulePath(const void* address, std::string& path);

/// The message of this thread's latest failure, or null if there was none. Does not clear it.
const char* dlError();
