/// What the steps of an identification found, told to people and to programs.
#pragma once

#include <iosfwd>
#include <string>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "MachineTables.h"
#include "Output.h"

/// One identification and the catalogue's answer to it.
struct IdentifyReport {
  Identification steps;
  SocInfo record;             ///< The catalogue's for the identifier.
  bool accessDenied = false;  ///< The FADT was not read because this user may not.
};

/// Runs the identification that the library makes, on the given tables.
IdentifyReport Identify(const MachineTables& tables);

/// Why there is no chip identifier, in a few words. For an identification that found none.
std::string WhyNotIdentified(const IdentifyReport& report);

/// The line for chip/ChipData.cpp that gives a key, not 0, an identifier; for a key that the map
/// lacks. Empty otherwise.
std::string LineToAdd(const Identification& steps);

/// For people: the steps in their order, and what to do about a chip that is not known.
void WriteText(std::ostream& out, const IdentifyReport& report);

/// The document of `identify --json`. It tells of the tables' bytes only, not of where they came
/// from. Fields, in schema version 1:
///
/// - `schemaVersion`  1
/// - `fadt`           `read`: whether there was one; `oemRevision`: integer, or null when it was
///                    not read or is too short; `decides`: whether this revision alone stands for
///                    a chip, so that the PPTT is not looked at
/// - `pptt`           `read`: whether it was looked at and there was one; `idStructure`: null, or
///                    `offset` in bytes from the table's start, `level1Id` and `level2Id`
/// - `key`            integer, 0 when there is none; `keyHex` the same with 16 digits, or null
/// - `chipId`         the chip identifier, 0 when not identified
/// - `row`            the catalogue row: `model` and `name`; null for the unknown row
/// - `lineToAdd`      the line that chip/ChipData.cpp lacks for this key, or null
Json ToJson(const IdentifyReport& report);
