// Modules as the dynamic linker keeps them. A module's handle is the address of its link map, which
// is also the handle that `dlopen` returns.
#include <dlfcn.h>
#include <link.h>

#include <memory>

#include "platform/WindowsApi.h"

namespace {

struct CloseModule {
  void operator()(void* module) const { dlclose(module); }
};

/// One reference of the dynamic linker's count.
using ModuleReference = std::unique_ptr<void, CloseModule>;

/// The module that contains the address, or null.
link_map* moduleAt(const void* address) {
  Dl_info info;
  void* module = nullptr;
  dladdr1(address, &info, &module, RTLD_DL_LINKMAP);
  return static_cast<link_map*>(module);
}

}  // namespace

HMODULE LoadLibraryExA(LPCSTR name, HANDLE, DWORD) {
  return static_cast<HMODULE>(dlopen(name, RTLD_NOW | RTLD_LOCAL));
}

HMODULE GetModuleHandleA(LPCSTR name) {
  void* const module = dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
  if (module != nullptr) {
    dlclose(module);
  }
  return static_cast<HMODULE>(module);
}

BOOL FreeLibrary(HMODULE module) { return dlclose(module) == 0 ? TRUE : FALSE; }

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  auto* const asked = module == nullptr ? _r_debug.r_map : reinterpret_cast<link_map*>(module);
  // `dlsym` takes only modules that were opened once, not those that another one needs.
  const ModuleReference reference(dlopen(asked->l_name, RTLD_LAZY | RTLD_NOLOAD));
  void* const symbol = reference ? dlsym(reference.get(), name) : nullptr;
  // `dlsym` also searches the modules that this one needs.
  return moduleAt(symbol) == asked ? reinterpret_cast<FARPROC>(symbol) : nullptr;
}

BOOL GetModuleHandleExA(DWORD, LPCSTR name, HMODULE* module) {
  *module = reinterpret_cast<HMODULE>(moduleAt(name));
  return *module != nullptr ? TRUE : FALSE;
}

HANDLE GetCurrentProcess() { return nullptr; }

BOOL K32EnumProcessModules(HANDLE, HMODULE* modules, DWORD size, LPDWORD needed) {
  *needed = 0;
  auto append = [&] {
    for (link_map* module = _r_debug.r_map; module != nullptr; module = module->l_next) {
      if (*needed < size) {
        modules[*needed / sizeof(HMODULE)] = reinterpret_cast<HMODULE>(module);
      }
      *needed += sizeof(HMODULE);
    }
  };
  // The list of modules changes only under the lock that is held during the callback. The entry
  // that the callback gets is not needed.
  dl_iterate_phdr(
      [](dl_phdr_info*, std::size_t, void* action) {
        (*static_cast<decltype(append)*>(action))();
        return 1;
      },
      &append);
  return TRUE;
}
