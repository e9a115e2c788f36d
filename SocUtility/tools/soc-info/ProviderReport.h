/// The provider attempt, made by the core as the library makes it, and the outcome of each key.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "Output.h"

struct ProviderReport {
  /// `provider` in the document of soc-info. Its `state` is "notNeeded" (the catalogue knows the
  /// chip), "notAsked" (the tables are another machine's), "notFound", "rejected" (it lacks an
  /// export), "incomplete" (required keys are missing), "failed" (an exception ended the import) or
  /// "imported".
  Json document;
  std::set<const void*> answered;  ///< The record's fields whose value is the provider's.
};

/// Without an attempt: only a state.
ProviderReport NoAttempt(std::string_view state);

/// Makes the attempt as a library in `directory` does, for a record of the unknown row. Writes the
/// provider's answers into the record, also when the import does not count.
ProviderReport AttemptProvider(SocInfo& record, const std::string& directory);

/// Why an import rejects a loaded library; empty if it accepts it.
std::string_view WhyRejected(const ProviderLoader& library);
