#include "LoadFailure.h"

#ifdef _WIN32
#include <array>

#include "platform/WindowsApi.h"
#else
#include <dlfcn.h>
#endif

#ifdef _WIN32

std::string WhyLoadFailed(const std::filesystem::path& library, std::uint32_t lastError) {
  constexpr DWORD FLAGS = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
                          FORMAT_MESSAGE_MAX_WIDTH_MASK;  // no line breaks
  constexpr DWORD OWN_LANGUAGE = 0;
  std::array<wchar_t, 1024> wide;
  const DWORD length = FormatMessageW(FLAGS, nullptr, lastError, OWN_LANGUAGE, wide.data(),
                                      static_cast<DWORD>(wide.size()), nullptr);
  std::string text(std::size_t{length} * 3, '\0');  // the most that one UTF-16 unit can need
  text.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(length), text.data(),
                          static_cast<int>(text.size()), nullptr, nullptr)));
  text.erase(text.find_last_not_of(' ') + 1);
  // The only insert of the loader's messages is the file's name.
  if (const std::size_t insert = text.find("%1"); insert != std::string::npos) {
    const std::u8string name = library.filename().u8string();
    text.replace(insert, 2, std::string(name.begin(), name.end()));
  }
  return "error " + std::to_string(lastError) + (text.empty() ? "" : ": " + text);
}

#else

std::string WhyLoadFailed(const std::filesystem::path& library, std::uint32_t /*lastError*/) {
  // An attempt that fails runs nothing of the library. One that succeeds now is undone.
  if (void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    dlclose(handle);
    return "it loads at the second attempt";
  }
  return dlerror();  // NOLINT(concurrency-mt-unsafe): glibc keeps one for each thread
}

#endif
