#include "LoadOutcome.h"

#include <array>
#include <filesystem>

#include "ImageFile.h"
#include "LoadFailure.h"
#include "Output.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

/// The file that the platform finds for a bare name; empty where that cannot be told.
#ifdef _WIN32
fs::path foundFile(const std::string& name) {
  std::array<char, MAX_PATH> path{};
  const DWORD length =
      SearchPathA(nullptr, name.c_str(), nullptr, path.size(), path.data(), nullptr);
  return length < path.size() ? path.data() : "";
}
bool saysAbsent(const std::string& /*words*/, const std::string& /*name*/) { return true; }
#else
fs::path foundFile(const std::string& /*name*/) { return {}; }
bool saysAbsent(const std::string& words, const std::string& name) {
  return words == name + ": cannot open shared object file: No such file or directory";
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

LoadOutcome OutcomeOfFailedLoad(const std::string& path) {
  const DWORD error = GetLastError();
  const std::string words = WhyLoadFailed(path, error);
  const bool isBare = path.find_first_of("/\\") == std::string::npos;
  const fs::path file = isBare ? foundFile(path) : fs::path(path);
  if (file.empty()) {
    return saysAbsent(words, path) ? LoadOutcome{"absent", ""} : LoadOutcome{"notLoaded", words};
  }
  const ImageFile image = ReadImageFile(file);
  if (image.state == ImageFile::State::Absent) {
    return {"absent", ""};
  }
  return {"notLoaded", faultOf(image) + words};
}

std::string WhyRejected(const ProviderLoader& library, const std::string& path) {
  std::string reason;
  bool isMangled = false;
  for (const char* const name : library.MissingExports()) {
    if (name != nullptr) {
      const std::string mangled = MangledName(path, name);
      reason += (reason.empty() ? "it lacks the export " : " and the export ") + std::string(name);
      reason += mangled.empty() ? "" : " (it has " + mangled + ')';
      isMangled = isMangled || !mangled.empty();
    }
  }
  return reason + (isMangled ? R"(; declare it extern "C")" : "");
}
