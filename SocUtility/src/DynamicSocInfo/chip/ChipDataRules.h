/// The rules that the product data must keep, as functions for `static_assert` in `ChipData.cpp`.
///
/// What all rows share, and how many entries a row has, needs no rule: the data's types leave no
/// room to break it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "DynamicSocInfo/chip/ChipData.h"

/// Whether `ids` holds `chipId`, for a range of keys or rows.
template <class Range>
constexpr bool holdsChipId(const Range& range, std::uint32_t chipId) {
  return std::ranges::any_of(range, [=](const auto& item) { return item.chipId == chipId; });
}

/// No key stands twice or is 0 (which means "not found"), and every identifier can be one.
constexpr bool chipKeysAreValid(std::span<const ChipKey> keys) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const ChipKey& key = keys[i];
    if (key.pptt == 0 || key.chipId == 0 || key.chipId == 0xFFFFFFFF) {
      return false;
    }
    for (const ChipKey& later : keys.subspan(i + 1)) {
      if (later.pptt == key.pptt) {
        return false;
      }
    }
  }
  return true;
}

/// Rows are in ascending order of a positive model number, have names that fit the shortest buffers
/// allowed for them, and select identifiers that keys lead to, each one row's own.
constexpr bool rowsAreValid(std::span<const ChipRow> rows, std::span<const ChipKey> keys) {
  constexpr std::size_t LONGEST_GPU_NAME = 12;
  std::int32_t previousModel = 0;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const ChipRow& row = rows[i];
    if (row.socModel <= previousModel || row.name.empty() || row.gpu.name.empty() ||
        row.gpu.name.size() > LONGEST_GPU_NAME || !holdsChipId(keys, row.chipId) ||
        holdsChipId(rows.subspan(i + 1), row.chipId)) {
      return false;
    }
    previousModel = row.socModel;
  }
  return true;
}

/// The FADT's identifier is its own: no PPTT key leads to it and no row describes it.
constexpr bool fadtRuleIsValid(const FadtRule& rule, std::span<const ChipKey> keys,
                               std::span<const ChipRow> rows) {
  return rule.chipId != 0 && rule.chipId != 0xFFFFFFFF && !holdsChipId(keys, rule.chipId) &&
         !holdsChipId(rows, rule.chipId);
}

/// Whether the values that every data set shares are as they must be.
constexpr bool commonCapabilitiesAreValid(const CommonCapabilities& common) {
  return common.sizeLimit == 0x1000000000 && common.cpu.cap1 == 0;
}

/// How many keys lead to each of the first `Chips` chips, chips in the order of their keys. Keys of
/// one chip that do not stand together count as two chips.
template <std::size_t Chips>
constexpr std::array<std::size_t, Chips> keysPerChip(std::span<const ChipKey> keys) {
  std::array<std::size_t, Chips> counts{};
  std::size_t chip = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (i > 0 && keys[i].chipId != keys[i - 1].chipId) {
      ++chip;
    }
    if (chip < Chips) {
      ++counts[chip];
    }
  }
  return counts;
}

/// The largest number of rows whose DSPs differ in nothing but `cap41`.
constexpr std::ptrdiff_t rowsOfOneDsp(std::span<const ChipRow> rows) {
  std::ptrdiff_t most = 0;
  for (const ChipRow& row : rows) {
    most = std::max(most, std::ranges::count(rows, row.dsp, &ChipRow::dsp));
  }
  return most;
}
