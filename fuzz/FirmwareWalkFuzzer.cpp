// The parsers of firmware tables must read nothing outside the bytes, and find only what the bytes
// contain.
#include <optional>

#include "DynamicSocInfo/chip/ChipData.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "FuzzInput.h"

namespace {

template <class Number>
Number numberAt(TableBytes table, std::size_t offset) {
  Number number;
  std::memcpy(&number, table.subspan(offset).first(sizeof number).data(), sizeof number);
  return number;
}

void walk(TableBytes table) {
  const std::optional<std::uint32_t> revision = FadtOemRevision(table);
  require(revision.has_value() == (table.size() >= 28));
  require(!revision || *revision == numberAt<std::uint32_t>(table, 24));

  const std::optional<PpttIdStructure> found = FindPpttIdStructure(table);
  if (!found) {
    return;
  }
  const std::size_t claimed = numberAt<std::uint32_t>(table, 4);
  require(found->offset >= 36 && found->offset + 24 <= std::min(claimed, table.size()));
  require(table[found->offset] == 2);
  require(found->level1Id == numberAt<std::uint64_t>(table, found->offset + 8));
  require(found->level2Id == numberAt<std::uint64_t>(table, found->offset + 16));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const FuzzTables tables(FuzzInput(data, size));
  walk(tables.fadt);
  walk(tables.pptt);

  const Identification found = IdentifyFromTables([&](std::uint32_t tableId) -> TableBytes {
    require(tableId == FADT_ID || tableId == PPTT_ID);
    return tableId == FADT_ID ? tables.fadt : tables.pptt;
  });
  const bool inMap = std::ranges::any_of(CHIP_KEYS, [&](const ChipKey& row) {
    return row.pptt == found.key && row.chipId == found.chipId;
  });
  require(found.chipId == NO_CHIP_ID || found.decidedByFadt || inMap);
  return 0;
}
