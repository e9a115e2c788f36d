#include "LoadOutcome.h"

#include <array>
#include <filesystem>

#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "ImageFile.h"
#include "LoadFailure.h"
#include "Output.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

/// The file that the platform finds for a bare name; empty where that cannot be told.
#ifdef _WIN32
fs::path foundFile(const fs::path& name) {
  std::wstring path(32768, L'\0');
  path.resize(SearchPathW(nullptr, name.c_str(), nullptr, static_cast<DWORD>(path.size()),
                          path.data(), nullptr));
  return path;
}
bool saysAbsent(const std::string& /*words*/, const fs::path& /*name*/) { return true; }
#else
fs::path foundFile(const fs::path& /*name*/) { return {}; }
bool saysAbsent(const std::string& words, const fs::path& name) {
  return words == name.string() + ": cannot open shared object file: No such file or directory";
}
#endif

/// Why the file itself cannot be loaded; empty if it can. The system's words may not say so: some
/// loaders call an image for another machine absent.
std::string faultOf(const ImageFile& image) {
  if (image.state == ImageFile::State::Image) {
    return image.isForThisProcess ? "" : "it is for another machine, " + image.description + ": ";
  }
  return image.state == ImageFile::State::OtherFile ? "it is no library: " : "";
}

}  // namespace

#ifdef _WIN32
/// In the process's code page, with question marks for what that lacks.
std::string narrow(const fs::path& name) {
  std::array<char, 4 * MAX_PATH> bytes{};
  WideCharToMultiByte(CP_ACP, 0, name.c_str(), -1, bytes.data(), static_cast<int>(bytes.size()),
                      nullptr, nullptr);
  return bytes.data();
}

bool LoadFile(ProviderLoader& loader, const fs::path& file, std::string_view name) {
  const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  // The system finds a loaded module by its name.
  const bool isLoaded = module != nullptr && loader.Load(narrow(file.filename()), name);
  if (module != nullptr) {
    FreeLibrary(module);
  }
  return isLoaded;
}
#else
bool LoadFile(ProviderLoader& loader, const fs::path& file, std::string_view name) {
  return loader.Load(file.string(), name);
}
#endif

LoadOutcome OutcomeOfFailedLoad(const fs::path& path) {
  const DWORD error = GetLastError();
  const std::string words = WhyLoadFailed(path, error);
  const fs::path file = path.has_parent_path() ? path : foundFile(path);
  if (file.empty()) {
    return saysAbsent(words, path) ? LoadOutcome{"absent", ""} : LoadOutcome{"notLoaded", words};
  }
  const ImageFile image = ReadImageFile(file);
  if (image.state == ImageFile::State::Absent) {
    return {"absent", ""};
  }
  return {"notLoaded", faultOf(image) + words};
}

std::string WhyRejected(const ProviderLoader& library, const fs::path& path) {
  std::string reason;
  bool isMangled = false;
  for (const char* const name : library.MissingExports()) {
    if (name != nullptr && dlSym(library.handle, name) == nullptr) {
      const std::string mangled = MangledName(path, name);
      reason += (reason.empty() ? "it lacks the export " : " and the export ") + std::string(name);
      reason += mangled.empty() ? "" : " (it has " + mangled + ')';
      isMangled = isMangled || !mangled.empty();
    }
  }
  return reason + (isMangled ? R"(; declare it extern "C")" : "");
}
