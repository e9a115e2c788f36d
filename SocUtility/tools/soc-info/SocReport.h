/// Everything about one machine: the chip, where the answers come from, and every capability.
#pragma once

#include <iosfwd>

#include "IdentifyReport.h"
#include "MachineTables.h"
#include "Output.h"
#include "ProviderReport.h"

/// What identification and provider make of one machine.
struct SocReport {
  IdentifyReport identify;  ///< Its record holds the provider's answers too.
  ProviderReport provider;
};

/// This machine, a provider being asked where the library would ask it.
SocReport InspectThisMachine();

/// The machine that the tables came from.
SocReport InspectTables(const MachineTables& tables);

/// For people: the chip, the provider, and a table of every capability.
void WriteText(std::ostream& out, const SocReport& report);

/// The document of `soc-info --json`. Fields, in schema version 1:
///
/// - `schemaVersion`      1
/// - `chip`               `name`, `names` (all of them, sorted), `model`, `chipId` (0 when not
///                        identified), `known`: whether the catalogue has a row for it
/// - `answersFrom`        "catalogue", "provider" or "unknownRow"; null when every query fails
/// - `provider`           `state` (see `StateName`), `library` (path or null), `lookedFor` (file
///                        names, a bare one by the platform's search), `reason` (text or null),
///                        `missing` (required keys without an answer, as "DSP 17")
/// - `scalarQueriesFail`  whether `Soc_GetCapability` answers `FAILURE` (25) after its first call;
///                        null when that depends on a provider that was not asked
/// - `capabilities`       objects of `component`, `key`, `type`, `value` and `source`, as
///                        `CapabilityRow` describes them; integers are exact up to 64 bits
Json ToJson(const SocReport& report);
