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
  return {UNKNOWN_ROW,
          {0},
          {},
          {},
          CpuInfo{},
          {GpuInfo(0)},
          COMMON_CAPABILITIES.sizeLimit,
          std::string("UNKNOWN_PLX")};
}

GpuInfo gpuOf(const ChipRow& row) {
  const auto& common = COMMON_CAPABILITIES.gpu;
  GpuInfo gpu(row.gpu.cap1);
  gpu.cap5 = common.cap5;
  gpu.cap6 = common.cap6;
  gpu.cap7 = common.cap7;
  gpu.cap8 = common.cap8;
  gpu.cap9 = common.cap9;
  gpu.cap10 = common.cap10;
  gpu.cap11 = common.cap11;
  gpu.cap12 = common.cap12;
  gpu.name = row.gpu.name;
  gpu.cap13 = common.cap13;
  return gpu;
}

/// The fields that a row is constructed with.
DspInfo firstStepDspOf(const ChipRow& row) {
  const auto& common = COMMON_CAPABILITIES.dsp;
  DspInfo dsp;
  dsp.cap1 = common.cap1;
  dsp.cap2 = common.cap2;
  dsp.cap3 = row.dsp.cap3;
  dsp.cap7 = common.cap7;
  dsp.cap8 = row.dsp.cap8;
  dsp.cap9 = common.cap9;
  dsp.cap10 = common.cap10;
  dsp.cap11 = common.cap11;
  dsp.cap12 = common.cap12;
  dsp.cap14 = common.cap14;
  dsp.cap30 = row.dsp.cap30;
  dsp.cap31 = row.dsp.cap31;
  dsp.cap34 = row.dsp.cap34;
  dsp.cap39 = row.dsp.cap39;
  dsp.cap40 = row.dsp.cap40;
  dsp.cap41 = row.socModel;
  return dsp;
}

/// The fields that are assigned once the row is in the catalogue.
void assignSecondStep(DspInfo& dsp, const ChipRow& row) {
  const auto& common = COMMON_CAPABILITIES.dsp;
  dsp.cap15 = common.cap15;
  dsp.cap16 = {common.cap16};
  dsp.cap17 = common.cap17;
  dsp.cap18 = common.cap18;
  dsp.cap19 = common.cap19;
  dsp.cap20 = common.cap20;
  dsp.cap21 = common.cap21;
  dsp.cap22 = common.cap22;
  dsp.cap23 = row.dsp.cap23;
  dsp.cap24 = common.cap24;
  dsp.cap25 = row.dsp.cap25;
  dsp.cap26 = common.cap26;
  dsp.cap27 = common.cap27;
  dsp.cap28 = common.cap28;
}

SocInfo knownRow(const ChipRow& row) {
  std::vector<std::string> names{std::string(row.name)};
  if (!row.secondName.empty()) {
    names.emplace_back(row.secondName);
  }
  const auto& common = COMMON_CAPABILITIES;
  return {static_cast<std::uint32_t>(row.socModel),
          {row.chipId},
          {},
          {firstStepDspOf(row)},
          CpuInfo{.cap1 = common.cpu.cap1, .cap2 = common.cpu.cap2},
          {gpuOf(row)},
          common.sizeLimit,
          names};
}

ChipCatalogue buildCatalogue() {
  ChipCatalogue catalogue;
  catalogue.Insert(unknownRow());
  for (const ChipRow& row : CHIP_ROWS) {
    catalogue.Insert(knownRow(row));
    assignSecondStep(catalogue.At(row.socModel).dsps.front(), row);
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
  if (chipId != 0) {
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
