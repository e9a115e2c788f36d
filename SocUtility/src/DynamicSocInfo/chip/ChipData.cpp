// This is the project's development data set: invented chips that exercise every rule. A maker's
// engineer puts the real rows here; docs/adding-a-chip.md tells how. A broken rule does not
// compile.
#include "DynamicSocInfo/chip/ChipData.h"

#include <array>
#include <iterator>

#include "DynamicSocInfo/chip/ChipDataRules.h"

namespace {

// Chip identifiers. The last four have keys but no row: such a chip is identified, and described as
// an unknown one until a provider library tells more.
constexpr std::uint32_t HERON = 101;
constexpr std::uint32_t HERON_PLUS = 102;
constexpr std::uint32_t CURLEW = 103;
constexpr std::uint32_t PLOVER = 201;
constexpr std::uint32_t DUNLIN = 202;
constexpr std::uint32_t GODWIT = 203;
constexpr std::uint32_t KNOT = 204;
// Known by its FADT alone, without a row.
constexpr std::uint32_t HERON_BRING_UP = 900;

constexpr ChipKey KEYS[] = {
    {0x0000001100000001, HERON},      {0x0000001100000002, HERON},
    {0x0000001100000003, HERON},      {0x0000001100010001, HERON},
    {0x0000001100010002, HERON},      {0x0000001200000001, HERON_PLUS},
    {0x0000001200000002, HERON_PLUS}, {0x0000001200010001, HERON_PLUS},
    {0x0000002100000001, CURLEW},     {0x0000002100000002, CURLEW},
    {0x0000002100010001, CURLEW},     {0x0000003100000001, PLOVER},
    {0x0000003200000001, DUNLIN},     {0x0000003200000002, DUNLIN},
    {0x0000003200000003, DUNLIN},     {0x0000003200000004, DUNLIN},
    {0x0000003200010001, DUNLIN},     {0x0000003300000001, GODWIT},
    {0x0000003400000001, KNOT},
};

constexpr FadtRule FADT = {.oemRevision = 0x00B10900, .chipId = HERON_BRING_UP};

constexpr CommonCapabilities COMMON = {
    .sizeLimit = 0x1000000000,
    .cpu = {.cap1 = 0, .cap2 = 0x200000000},
    .gpu = {.cap5 = 0x40000000,
            .cap6 = 0x80000000,
            .cap7 = 0x100000,
            .cap8 = 128,
            .cap9 = 1024,
            .cap10 = 64,
            .cap11 = 0x8000,
            .cap12 = 16384,
            .cap13 = 0x100000000},
    .dsp = {.cap1 = 1,
            .cap2 = 2,
            .cap7 = 0x180000000,
            .cap9 = true,
            .cap10 = true,
            .cap11 = false,
            .cap12 = true,
            .cap14 = 2,
            .cap15 = 4096,
            .cap16 = 6,
            .cap17 = true,
            .cap18 = 8,
            .cap19 = 2048,
            .cap20 = 128,
            .cap21 = 4,
            .cap22 = 16,
            .cap24 = 1200,
            .cap26 = true,
            .cap27 = false,
            .cap28 = true},
};

constexpr ChipRow ROWS[] = {
    {.socModel = 411,
     .chipId = HERON,
     .name = "HERON_411",
     .secondName = "HERON_411_MOBILE",
     .gpu = {.cap1 = 730, .name = "Stilt 730 "},  // the blank is part of the name
     .dsp = {.cap3 = 73, .cap8 = 4, .cap23 = 1024, .cap25 = 900}},
    {.socModel = 412,
     .chipId = HERON_PLUS,
     .name = "HERON_PLUS_412",
     .gpu = {.cap1 = 740, .name = "Stilt 740"},
     .dsp = {.cap3 = 73, .cap8 = 4, .cap23 = 1024, .cap25 = 900}},
    {.socModel = 520,
     .chipId = CURLEW,
     .name = "CURLEW_520",
     .gpu = {.cap1 = 810, .name = "Avocet 810-X"},
     .dsp = {.cap3 = 81,
             .cap8 = 8,
             .cap23 = 2048,
             .cap25 = 1400,
             .cap30 = true,
             .cap31 = true,
             .cap34 = true,
             .cap39 = true,
             .cap40 = 2}},
};

static_assert(chipKeysAreValid(KEYS));
static_assert(rowsAreValid(ROWS, KEYS));
static_assert(fadtRuleIsValid(FADT, KEYS, ROWS));
static_assert(commonCapabilitiesAreValid(COMMON));

// The data set at a glance, so that a line lost or added by mistake is seen: change it with the
// data.
static_assert(std::size(KEYS) == 19);
static_assert(keysPerChip<7>(KEYS) == std::array<std::size_t, 7>{5, 3, 3, 1, 5, 1, 1});
static_assert(std::size(ROWS) == 3 && rowsOfOneDsp(ROWS) == 2);

}  // namespace

constinit const std::span<const ChipKey> CHIP_KEYS = KEYS;
constinit const FadtRule FADT_RULE = FADT;
constinit const CommonCapabilities COMMON_CAPABILITIES = COMMON;
constinit const std::span<const ChipRow> CHIP_ROWS = ROWS;
