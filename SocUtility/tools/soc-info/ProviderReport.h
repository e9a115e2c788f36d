/// The provider attempt, made as the library makes it but told key by key.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Capabilities.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

/// How far the attempt came.
enum class ProviderState {
  NOT_NEEDED,  ///< The catalogue knows the chip.
  NOT_ASKED,   ///< The tables are another machine's, whose providers are not here.
  NOT_FOUND,   ///< No provider library could be loaded.
  REJECTED,    ///< The library that was loaded lacks an export.
  INCOMPLETE,  ///< It left required keys unanswered, so that its answers do not count.
  FAILED,      ///< An exception ended the import: every query fails, and makes the attempt anew.
  IMPORTED,    ///< Its answers stand in the record.
};

/// What the attempt found, and which of the record's values it changed.
struct ProviderReport {
  ProviderState state = ProviderState::NOT_ASKED;
  std::vector<std::string> lookedFor;  ///< File names tried; a bare one by the platform's search.
  std::string library;                 ///< The path of the one loaded, where that can be told.
  std::string reason;                  ///< Why nothing was imported, for the states of failure.
  std::vector<CapabilityKey> missing;  ///< Required keys without an answer, in the order asked.
  std::set<CapabilityKey> answered;    ///< Keys whose value is the provider's, aliases included.
};

/// Makes the attempt for a record of the unknown row, and writes the provider's answers into it:
/// also those of an import that does not count or ended early, as the library does.
ProviderReport AttemptProvider(SocInfo& record);

/// Why an import does not ask a service-utilities provider that was loaded; empty when it does.
std::string_view WhyRejected(const ProviderLoader& provider);

/// Whether `Soc_GetCapability` answers `FAILURE` after the call that made such an attempt.
constexpr bool LeavesQueriesFailing(ProviderState state) {
  return state == ProviderState::NOT_FOUND || state == ProviderState::REJECTED ||
         state == ProviderState::INCOMPLETE || state == ProviderState::FAILED;
}

/// A state's name in documents: "notNeeded", "notAsked", "notFound", "rejected", "incomplete",
/// "failed" or "imported".
std::string_view StateName(ProviderState state);
