#include "DynamicSocInfo/chip/ChipCatalogue.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "DynamicSocInfo/chip/ChipData.h"

namespace {

constexpr std::int32_t UNKNOWN_ROW = 0;

SocInfo unknownRow() {
  return {UNKNOWN_ROW, {NO_CHIP_ID}, {},         {},
          CpuInfo{},   {GpuInfo(0)}, SIZE_LIMIT, std::string("UNKNOWN_PLX")};
}

/// The row of a known chip before it is filled.
SocInfo rowWithDefaults(const ChipRow& row) {
  std::vector<std::string> names{std::string(row.names[0])};
  if (!row.names[1].empty()) {
    names.emplace_back(row.names[1]);
  }
  const auto model = static_cast<std::uint32_t>(row.socModel);
  return {model, {row.chipId}, {}, {}, CpuInfo{}, {GpuInfo(0)}, SIZE_LIMIT, names};
}

ChipCatalogue buildCatalogue() {
  ChipCatalogue catalogue;
  catalogue.Insert(unknownRow());
  for (const ChipRow& row : CHIP_ROWS) {
    catalogue.Insert(rowWithDefaults(row));
    row.fill(catalogue.At(row.socModel));
  }
  return catalogue;
}

}  // namespace

void ChipCatalogue::Insert(SocInfo&& row) {
  const auto key = static_cast<std::int32_t>(row.socModel);
  rows_.try_emplace(key, std::move(row));
}

SocInfo& ChipCatalogue::At(std::int32_t key) {
  const auto row = rows_.find(key);
  if (row == rows_.end()) {
    throw std::out_of_range("invalid map<K, T> key");
  }
  return row->second;
}

SocInfo BuildChipRecord(std::uint32_t chipId) {
  ChipCatalogue catalogue = buildCatalogue();
  if (chipId != NO_CHIP_ID) {
    for (const auto& [key, row] : catalogue) {
      if (std::ranges::find(row.chipIds, chipId) != row.chipIds.end()) {
        SocInfo record = row;
        record.isKnownChip = true;
        return record;
      }
    }
  }
  return catalogue.At(UNKNOWN_ROW);
}
