/// Why a library was not loaded, or is not used.
#pragma once

#include <string>
#include <string_view>

#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How an attempt to load a file ended: `state` and `reason` in a document's `lookedFor`.
struct LoadOutcome {
  std::string_view state;  ///< "loaded", "absent", or "notLoaded" if it is there.
  std::string reason;      ///< The system's words, and what the file is if that is the reason.
};

/// For the attempt of `ProviderLoader::Load` that just failed. For a bare name, the platform has
/// searched.
LoadOutcome OutcomeOfFailedLoad(const std::string& path);

/// Why an import, or `soc-info` itself, does not use a loaded library; empty if it does. `path` is
/// the library's.
std::string WhyRejected(const ProviderLoader& library, const std::string& path);
