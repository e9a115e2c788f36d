/// Why a library was not loaded, or is not used.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How an attempt to load a file ended: `state` and `reason` in a document's `lookedFor`.
struct LoadOutcome {
  std::string_view state;  ///< "loaded", "absent", or "notLoaded" if it is there.
  std::string reason;      ///< The system's words, and what the file is if that is the reason.
};

/// Loads a file as the provider of this name. On Windows, unlike `ProviderLoader::Load`, from any
/// folder: that takes paths in the process's code page.
bool LoadFile(ProviderLoader& loader, const std::filesystem::path& file, std::string_view name);

/// For the attempt that just failed. For a bare name, the platform has searched.
LoadOutcome OutcomeOfFailedLoad(const std::filesystem::path& path);

/// Why an import, or `soc-info` itself, does not use a loaded library; empty if it does. `path` is
/// the library's.
std::string WhyRejected(const ProviderLoader& library, const std::filesystem::path& path);
