/// The product data: which firmware keys stand for which chip, and what the known chips can do.
///
/// The data itself is `ChipData.cpp`, the one file to edit when a chip is added; nothing here needs
/// to change. `ChipDataRules.h` holds the rules that it is checked against when it is compiled.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// One key of the PPTT's ID structure (see `PpttKey`) and the chip identifier that it stands for.
struct ChipKey {
  std::uint64_t pptt;
  std::uint32_t chipId;  ///< Neither 0 (not identified) nor 0xFFFFFFFF.
};

/// The FADT OEM Revision that alone stands for a chip, whose PPTT is then not read.
struct FadtRule {
  std::uint32_t oemRevision;
  std::uint32_t chipId;
};

/// What all known chips have in common. A field is named after the key that answers it.
struct CommonCapabilities {
  std::uint64_t sizeLimit;
  struct {
    std::int32_t cap1;
    std::uint64_t cap2;
  } cpu;
  struct {
    std::uint64_t cap5, cap6, cap7, cap8;
    std::uint32_t cap9;
    std::uint64_t cap10, cap11, cap12, cap13;
  } gpu;
  struct {
    std::int32_t cap1, cap2;
    std::uint64_t cap7;
    bool cap9, cap10, cap11, cap12;
    std::uint32_t cap14, cap15;
    std::uint32_t cap16;  ///< The one element of the list.
    bool cap17;
    std::uint32_t cap18, cap19, cap20, cap21, cap22, cap24;
    bool cap26, cap27, cap28;
  } dsp;
};

/// What a known chip has of its own. Fields that a row leaves out keep the defaults given here.
struct ChipRow {
  std::int32_t socModel;  ///< Positive; the row's place in the catalogue and the DSP's `cap41`.
  std::uint32_t chipId;
  std::string_view name;
  std::string_view secondName = {};  ///< Empty when the chip has one name.
  struct {
    std::int32_t cap1;      ///< The GPU's model number.
    std::string_view name;  ///< At most 12 characters, kept as given.
  } gpu;
  /// What the DSP has of its own.
  struct Dsp {
    std::int32_t cap3;
    std::uint32_t cap8, cap23, cap25;
    bool cap30 = false, cap31 = false, cap34 = false, cap39 = false;
    std::uint32_t cap40 = 0;

    bool operator==(const Dsp&) const = default;
  } dsp;
};

extern const std::span<const ChipKey> CHIP_KEYS;
extern const FadtRule FADT_RULE;
extern const CommonCapabilities COMMON_CAPABILITIES;
extern const std::span<const ChipRow> CHIP_ROWS;  ///< In ascending order of `socModel`.
