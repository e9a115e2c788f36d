/// Chip identification: from the machine's firmware tables to a chip identifier.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "DynamicSocInfo/chip/AcpiTables.h"
#include "DynamicSocInfo/chip/ChipData.h"

/// What the steps of an identification found; a step that was not reached found nothing.
struct Identification {
  bool fadtRead = false;
  std::optional<std::uint32_t> oemRevision;  ///< The FADT's.
  bool decidedByFadt = false;                ///< The FADT alone gave the chip identifier.
  bool ppttRead = false;
  std::optional<PpttIdStructure> idStructure;  ///< The PPTT's.
  std::uint64_t key = 0;                       ///< Its key, 0 when there is none.
  std::uint32_t chipId = NO_CHIP_ID;
};

/// Runs the steps over the tables that `readTable` delivers: the FADT, and, unless that decides,
/// the PPTT. A table that is absent is empty; a table's bytes need not outlive the next call.
Identification IdentifyFromTables(
    const std::function<TableBytes(std::uint32_t tableId)>& readTable);

/// This machine's chip identifier, or `NO_CHIP_ID`. Any thread may call it. Once a key was looked
/// up the answer is kept for the life of the process; before that every call reads the tables
/// again.
std::uint32_t IdentifyChip() noexcept;
