#include "DynamicSocInfo/chip/ChipIdentification.h"

#include <algorithm>
#include <atomic>

namespace {

constinit std::atomic<std::uint32_t> identifiedChip{UNDETERMINED_CHIP_ID};

std::uint32_t ChipIdByPpttKey(std::uint64_t key) {
  const auto found = std::ranges::find(CHIP_KEYS, key, &ChipKey::pptt);
  return found == CHIP_KEYS.end() ? NO_CHIP_ID : found->chipId;
}

}  // namespace

Identification IdentifyFromTables(
    const std::function<TableBytes(std::uint32_t tableId)>& readTable) {
  Identification result;

  const TableBytes fadt = readTable(FADT_ID);
  result.fadtRead = !fadt.empty();
  if (!result.fadtRead) {
    return result;
  }
  result.oemRevision = FadtOemRevision(fadt);
  if (result.oemRevision == FADT_RULE.oemRevision) {
    result.decidedByFadt = true;
    result.chipId = FADT_RULE.chipId;
    return result;
  }

  const TableBytes pptt = readTable(PPTT_ID);
  result.ppttRead = !pptt.empty();
  result.idStructure = FindPpttIdStructure(pptt);
  if (result.idStructure) {
    result.key = PpttKey(*result.idStructure);
  }
  if (result.key != 0) {
    result.chipId = ChipIdByPpttKey(result.key);
  }
  return result;
}

std::uint32_t IdentifyChip() noexcept {
  const std::uint32_t known = identifiedChip.load(std::memory_order_relaxed);
  if (known != UNDETERMINED_CHIP_ID) {
    return known;
  }
  FirmwareTables tables;
  const Identification found =
      IdentifyFromTables([&](std::uint32_t tableId) { return tables.Read(tableId); });
  // Only a lookup is final: firmware that could not be read may be readable the next time.
  if (found.key != 0) {
    identifiedChip.store(found.chipId, std::memory_order_relaxed);
  }
  return found.chipId;
}
