/// The process's modules as the dynamic linker keeps them, for the loader functions of this layer.
///
/// A module's handle is the address of its link map, which is also the handle that `dlopen` gives.
/// Modules are the program and the libraries that have a file; the kernel's vDSO is none. Nothing
/// here throws or allocates memory of its own; any thread may call it.
#pragma once

#include <dlfcn.h>
#include <link.h>

#include <memory>

#include "platform/WindowsApi.h"

struct ModuleCloser {
  void operator()(link_map* module) const noexcept { dlclose(module); }
};

/// One reference of the dynamic linker's count, dropped at the end.
using ModuleReference = std::unique_ptr<link_map, ModuleCloser>;

inline HMODULE handleOf(link_map* module) { return reinterpret_cast<HMODULE>(module); }
inline link_map* linkMapOf(HMODULE module) { return reinterpret_cast<link_map*>(module); }

/// The program, which is a module for the whole life of the process.
inline HMODULE programModule() { return handleOf(_r_debug.r_map); }

/// Whether the value is a module's handle; it may be any value.
bool isModule(HMODULE module) noexcept;

/// A reference to a module; null when the handle, which may be any value, is no module's.
ModuleReference referToModule(HMODULE module) noexcept;

/// Opens a library with the `mode` of `dlopen`. A name without a directory that is the file name of
/// a module means that module, wherever it was loaded from. Null on failure.
ModuleReference referToName(LPCSTR name, int mode) noexcept;

/// The program's absolute path, zero-terminated, in `size` bytes; its length or 0 on failure.
std::size_t programPath(char* path, std::size_t size) noexcept;
