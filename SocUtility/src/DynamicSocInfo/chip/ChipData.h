/// The product data: the firmware keys of each chip, and the capabilities of the known chips.
///
/// The data is in `ChipData.cpp`, the one file to edit when a chip is added.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "DynamicSocInfo/capabilities/SocInfo.h"

/// The chip identifier that means "not identified".
inline constexpr std::uint32_t NO_CHIP_ID = 0;
/// The chip is not identified yet. No chip has this identifier.
inline constexpr std::uint32_t UNDETERMINED_CHIP_ID = 0xFFFFFFFF;

/// One key of the PPTT's ID structure (see `PpttKey`) and the chip identifier that has it.
struct ChipKey {
  std::uint64_t pptt;
  std::uint32_t chipId;
};

/// The one FADT OEM Revision that identifies a chip by itself. The PPTT is then not read.
struct FadtRule {
  std::uint32_t oemRevision;
  std::uint32_t chipId;
};

/// The catalogue row of a known chip.
struct ChipRow {
  std::int32_t socModel;  ///< Positive; the row's key in the catalogue.
  std::uint32_t chipId;
  std::array<std::string_view, 2> names;  ///< The second is empty if the chip has one name.
  /// Sets the capabilities of the row, whose one DSP and one GPU have default values.
  void (*fill)(SocInfo& row);
};

extern const std::span<const ChipKey> CHIP_KEYS;
extern const FadtRule FADT_RULE;
extern const std::span<const ChipRow> CHIP_ROWS;  ///< In ascending order of `socModel`.

inline constexpr std::uint64_t SIZE_LIMIT = 0x1000000000;  ///< Of every row, in bytes.
