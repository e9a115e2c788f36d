#include "Paths.h"

#include <system_error>

#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

#ifdef _WIN32

fs::path PathOf(const std::string& text) { return {std::u8string(text.begin(), text.end())}; }

std::string PathText(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return {text.begin(), text.end()};
}

fs::path ModulePath(void* module) {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(static_cast<HMODULE>(module), path.data(),
                                 static_cast<DWORD>(path.size())));
  return path;
}

fs::path OwnPath() { return ModulePath(nullptr); }

#else

fs::path PathOf(const std::string& text) { return text; }

std::string PathText(const fs::path& path) { return path.string(); }

fs::path ModulePath(void* module) {
  std::string path(8192, '\0');
  path.resize(GetModuleFileNameA(static_cast<HMODULE>(module), path.data(),
                                 static_cast<DWORD>(path.size())));
  return path;
}

fs::path OwnPath() {
  std::error_code ignored;
  return fs::read_symlink("/proc/self/exe", ignored);
}

#endif
