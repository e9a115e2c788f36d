#include "DynamicSocInfo/provider/ProviderLoader.h"

#include <algorithm>
#include <vector>

#include "DynamicSocInfo/provider/DriverLocation.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"

namespace {

struct Candidate {
  std::string directory;
  std::string_view fileName;
};

/// The directory of this library with forward slashes and one at the end, or empty when unknown.
std::string ownDirectory() {
  std::string path;
  if (dlModulePath(reinterpret_cast<const void*>(&ownDirectory), path) == 0) {
    return {};
  }
  std::string directory = directoryOf(path);
  std::ranges::replace(directory, '\\', '/');
  return directory + '/';
}

/// The plan's candidates in the order in which they are tried.
std::vector<Candidate> candidatesOf(ProviderSearchPlan plan) {
  const std::string own = ownDirectory();
  std::vector<Candidate> candidates;
  // An empty directory means the platform's search, which must not stand in for an unknown own one.
  const auto addInOwnDirectory = [&](std::string_view fileName) {
    if (!own.empty()) {
      candidates.push_back({own, fileName});
    }
  };
  if (plan == ServiceUtilsOnly) {
    addInOwnDirectory(SERVICE_UTILS_LIBRARY);
    candidates.push_back({"", SERVICE_UTILS_LIBRARY});
  } else if (plan == AllProviders) {
    addInOwnDirectory(SYSTEM_INFO_LIBRARY);
    addInOwnDirectory(SERVICE_UTILS_LIBRARY);
    candidates.push_back({joinPath(driverPackageDirectory(), "VRX"), SYSTEM_INFO_LIBRARY});
    candidates.push_back({"", SERVICE_UTILS_LIBRARY});
  }
  return candidates;
}

template <class Function>
void bindSymbol(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlSym(handle, name));
}

}  // namespace

// Delegating makes the object complete first, so that the destructor unloads what was loaded when
// the search throws.
ProviderLoader::ProviderLoader(ProviderSearchPlan plan) : ProviderLoader() {
  for (const Candidate& candidate : candidatesOf(plan)) {
    if (Load(candidate.directory, candidate.fileName)) {
      return;
    }
  }
}

ProviderLoader::~ProviderLoader() { dlClose(handle); }

bool ProviderLoader::Load(const std::string& directory, std::string_view fileName) {
  handle = dlOpen(joinPath(directory, fileName).c_str(), DL_NOW | DL_LOCAL);
  if (handle == nullptr) {
    return false;
  }
  libraryName = fileName;
  Bind();
  return true;
}

void ProviderLoader::Bind() {
  bindSymbol(handle, "Soc_GetAPIVersion", getApiVersion);
  if (getApiVersion == nullptr) {
    return;
  }
  bindSymbol(handle, "Soc_GetCapability", getCapability);
  if (libraryName == SYSTEM_INFO_LIBRARY) {
    bindSymbol(handle, "Soc_GetCapabilitySerialized", getCapabilitySerialized);
  }
}

std::string directoryOf(const std::string& path) {
  return path.substr(0, path.find_last_of("/\\"));
}

std::string joinPath(const std::string& directory, std::string_view fileName) {
  std::string path = directory;
  if (!path.empty() && path.back() != '/' && path.back() != '\\') {
    path += '/';
  }
  return path += fileName;
}
