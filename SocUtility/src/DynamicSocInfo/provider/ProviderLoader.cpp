#include "DynamicSocInfo/provider/ProviderLoader.h"

#include <algorithm>

#include "DynamicSocInfo/provider/DriverLocation.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"

namespace {

constexpr const char* VERSION_EXPORT = "Soc_GetAPIVersion";
constexpr const char* SCALAR_EXPORT = "Soc_GetCapability";
constexpr const char* LIST_EXPORT = "Soc_GetCapabilitySerialized";

/// `directory`, a slash where it does not end in a separator, and `name`.
std::string joinPath(const std::string& directory, std::string_view name) {
  const bool needsSlash = !directory.empty() && directory.back() != '/' && directory.back() != '\\';
  return directory + (needsSlash ? "/" : "") + std::string(name);
}

template <class Function>
void bindSymbol(void* handle, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlSym(handle, name));
}

}  // namespace

// Delegating makes the object complete first, so that the destructor unloads what was loaded when
// the search throws.
ProviderLoader::ProviderLoader(ProviderSearchPlan plan) : ProviderLoader() {
  for (const ProviderCandidate& candidate : ProviderCandidates(plan, OwnDirectory())) {
    if (Load(candidate.path, candidate.libraryName)) {
      return;
    }
  }
}

ProviderLoader::~ProviderLoader() { dlClose(handle); }

bool ProviderLoader::Load(const std::string& path, std::string_view name) {
  handle = dlOpen(path.c_str(), DL_NOW | DL_LOCAL);
  if (handle == nullptr) {
    return false;
  }
  libraryName = name;
  Bind();
  return true;
}

void ProviderLoader::Bind() {
  bindSymbol(handle, VERSION_EXPORT, getApiVersion);
  if (getApiVersion == nullptr) {
    return;
  }
  bindSymbol(handle, SCALAR_EXPORT, getCapability);
  if (libraryName == SYSTEM_INFO_LIBRARY) {
    bindSymbol(handle, LIST_EXPORT, getCapabilitySerialized);
  }
}

std::array<const char*, 3> ProviderLoader::MissingExports() const {
  std::array<const char*, 3> missing{};
  std::size_t count = 0;
  const auto addIf = [&](bool isUnbound, const char* name) {
    if (isUnbound) {
      missing[count++] = name;
    }
  };
  addIf(getApiVersion == nullptr, VERSION_EXPORT);
  addIf(getCapability == nullptr, SCALAR_EXPORT);
  if (libraryName == SYSTEM_INFO_LIBRARY) {
    addIf(getCapabilitySerialized == nullptr, LIST_EXPORT);
  }
  return missing;
}

std::vector<ProviderCandidate> ProviderCandidates(ProviderSearchPlan plan,
                                                  const std::string& ownDirectory) {
  std::vector<ProviderCandidate> candidates;
  const auto add = [&](const std::string& directory, std::string_view name) {
    candidates.push_back({joinPath(directory, name), name});
  };
  // A bare name in place of an unknown directory would leave the choice to the platform's search.
  const auto addInOwnDirectory = [&](std::string_view name) {
    if (!ownDirectory.empty()) {
      add(ownDirectory, name);
    }
  };
  if (plan == ServiceUtilsOnly) {
    addInOwnDirectory(SERVICE_UTILS_LIBRARY);
    add("", SERVICE_UTILS_LIBRARY);
  } else if (plan == AllProviders) {
    addInOwnDirectory(SYSTEM_INFO_LIBRARY);
    addInOwnDirectory(SERVICE_UTILS_LIBRARY);
    add(joinPath(driverPackageDirectory(), "VRX"), SYSTEM_INFO_LIBRARY);
    add("", SERVICE_UTILS_LIBRARY);
  }
  return candidates;
}

std::string OwnDirectory() {
  std::string path;
  if (dlModulePath(reinterpret_cast<const void*>(&OwnDirectory), path) == 0) {
    return {};
  }
  std::string directory = path.substr(0, path.find_last_of("/\\"));
  std::ranges::replace(directory, '\\', '/');
  return directory + '/';
}
