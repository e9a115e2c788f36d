// This is the project's development data set: invented chips. A maker's engineer puts the real rows
// here; docs/adding-a-chip.md explains how. ChipCatalogueTest.cpp checks the rules that rows and
// keys keep.
#include "DynamicSocInfo/chip/ChipData.h"

namespace {

// Chip identifiers. The last four have keys but no row: such a chip is identified, and described as
// an unknown one until a provider library answers.
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

/// What the known chips have in common. A row is filled with it first and then sets what differs.
void fillCommon(SocInfo& row) {
  row.cpu = {.cap1 = 0, .cap2 = 0x200000000};

  GpuInfo& gpu = row.gpus.front();
  gpu.cap5 = 0x40000000;
  gpu.cap6 = 0x80000000;
  gpu.cap7 = 0x100000;
  gpu.cap8 = 128;
  gpu.cap9 = 1024;
  gpu.cap10 = 64;
  gpu.cap11 = 0x8000;
  gpu.cap12 = 16384;
  gpu.cap13 = 0x100000000;

  DspInfo& dsp = row.dsps.front();
  dsp.cap1 = 1;
  dsp.cap2 = 2;
  dsp.cap7 = 0x180000000;
  dsp.cap9 = true;
  dsp.cap10 = true;
  dsp.cap11 = true;
  dsp.cap12 = true;
  dsp.cap14 = 2;
  dsp.cap15 = 4096;
  dsp.cap16 = {6};
  dsp.cap17 = true;
  dsp.cap18 = 8;
  dsp.cap19 = 2048;
  dsp.cap20 = 128;
  dsp.cap21 = 4;
  dsp.cap22 = 16;
  dsp.cap24 = 1200;
  dsp.cap26 = true;
  dsp.cap27 = true;
  dsp.cap28 = true;
  dsp.cap41 = static_cast<std::int32_t>(row.socModel);
}

/// What the two Herons have in common.
void fillHerons(SocInfo& row) {
  fillCommon(row);
  DspInfo& dsp = row.dsps.front();
  dsp.cap3 = 73;
  dsp.cap8 = 4;
  dsp.cap23 = 1024;
  dsp.cap25 = 900;
}

void fillHeron(SocInfo& row) {
  fillHerons(row);
  row.gpus.front().cap1 = 730;
  row.gpus.front().name = "Stilt 730 ";  // the blank is part of the name
}

void fillHeronPlus(SocInfo& row) {
  fillHerons(row);
  row.gpus.front().cap1 = 740;
  row.gpus.front().name = "Stilt 740";
}

void fillCurlew(SocInfo& row) {
  fillCommon(row);
  row.gpus.front().cap1 = 810;
  row.gpus.front().name = "Avocet 810-X";
  DspInfo& dsp = row.dsps.front();
  dsp.cap3 = 81;
  dsp.cap8 = 8;
  dsp.cap23 = 2048;
  dsp.cap25 = 1400;
  dsp.cap30 = true;
  dsp.cap31 = true;
  dsp.cap34 = true;
  dsp.cap39 = true;
  dsp.cap40 = 2;
}

constexpr ChipRow ROWS[] = {
    {411, HERON, {"HERON_411", "HERON_411_MOBILE"}, fillHeron},
    {412, HERON_PLUS, {"HERON_PLUS_412"}, fillHeronPlus},
    {520, CURLEW, {"CURLEW_520"}, fillCurlew},
};

}  // namespace

constinit const std::span<const ChipKey> CHIP_KEYS = KEYS;
constinit const FadtRule FADT_RULE = FADT;
constinit const std::span<const ChipRow> CHIP_ROWS = ROWS;
