/// Chip identification: from the machine's firmware tables to a chip identifier.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "DynamicSocInfo/chip/AcpiTables.h"
#include "DynamicSocInfo/chip/ChipData.h"

/// The findings of an identification, step by step. A step that was not reached found nothing.
struct Identification {
  bool fadtRead = false;
  std::optional<std::uint32_t> oemRevision;  ///< The FADT's.
  bool decidedByFadt = false;                ///< The FADT alone identified the chip.
  bool ppttRead = false;
  std::optional<PpttIdStructure> idStructure;  ///< The PPTT's.
  std::uint64_t key = 0;                       ///< Its key, 0 when there is none.
  std::uint32_t chipId = NO_CHIP_ID;
};

/// Runs the steps over the tables that `readTable` returns: the FADT, then the PPTT unless the FADT
/// decides. An absent table is empty. A table's bytes need only live until the next call.
Identification IdentifyFromTables(
    const std::function<TableBytes(std::uint32_t tableId)>& readTable);

/// This machine's chip identifier, or `NO_CHIP_ID`. Any thread may call it. Each call reads the
/// tables until a call has found a key in them. The result of that call is kept until this library
/// is unloaded.
std::uint32_t IdentifyChip() noexcept;
