/// An import from a provider, watched in a child process: what a program with an unknown chip gets
/// from it.
#pragma once

#include <string_view>
#include <vector>

#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "Output.h"

struct ImportReport {
  /// How the import ends: "notNeeded" (the catalogue knows the chip), "notAsked" (the tables are
  /// another machine's), "notFound" (no candidate is there), "notLoaded" (none can be loaded),
  /// "rejected" (it lacks an export), "stopped" (the process ended early), "exception" (one ended
  /// it), "incomplete" (required keys are missing) or "succeeded".
  std::string_view state;
  Json lookedFor = Json::array();  ///< Objects of `path`, `state` and `reason`.
  Json library = nullptr;          ///< The path of the one loaded.
  Json reason = nullptr;           ///< Why it is rejected.
  Json succeeds = nullptr;         ///< Null if not all keys could be asked.
  Json keys = Json::array();       ///< Those asked, as in the document of `check-provider`.
  Json findings = Json::array();
};

/// Makes an import from the first of the candidates that can be loaded. `isCheck` as in
/// `WatchImport`.
ImportReport ReportOnImport(const std::vector<ProviderCandidate>& candidates, bool isCheck,
                            double seconds);
