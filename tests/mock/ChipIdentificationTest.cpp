// What a process keeps of the firmware tables that it read.
#include "DynamicSocInfo/chip/ChipIdentification.h"

#include <gtest/gtest.h>

#include <cstring>

#include "AllocationFault.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "Machine.h"

namespace {

using Calls = std::vector<std::string>;
using Table = Machine::Table;

constexpr std::size_t LARGE = 0x20000;  // bytes: more than the usual buffer

Table tableOf(std::initializer_list<std::pair<std::size_t, std::uint32_t>> numbers,
              std::size_t size = 276) {
  Table bytes(size);
  for (const auto& [offset, number] : numbers) {
    std::memcpy(&bytes[offset], &number, sizeof number);
  }
  return bytes;
}

/// A PPTT that begins with an ID structure (type 2, 30 bytes).
Table pptt(std::uint64_t key, std::uint32_t size = 66) {
  const auto high = static_cast<std::uint32_t>(key >> 32);
  return tableOf({{4, size}, {36, 0x1E02}, {44, high}, {52, static_cast<std::uint32_t>(key)}},
                 size);
}

TEST(IdentifyChip, ReadsTheTablesAgainUntilAKeyWasLookedUp) {
  const auto [key, chipId] = CHIP_KEYS.front();
  const Table ordinary = tableOf({{24, 1}});
  const Table good = pptt(key);
  const Table large = pptt(key, LARGE);
  const Calls all{"50434146 0", "50434146 10000", "54545050 0", "54545050 10000"};
  const struct {
    const char* name;
    Table fadt, pptt;
    std::size_t calls;
    std::uint32_t chipId;
    bool isKept = false;
    int failingCall = 0, failingAllocation = 0;
  } rows[] = {
      {"known key", ordinary, good, 4, chipId, true},
      {"unlisted key", ordinary, pptt(0xFFFFFFFFFFFFFFFF), 4, 0, true},
      {"key 0", ordinary, pptt(0), 4, 0},
      {"special FADT", tableOf({{24, FADT_RULE.oemRevision}}), good, 2, FADT_RULE.chipId},
      {"no FADT", {}, good, 1, 0},
      {"no PPTT", ordinary, {}, 3, 0},
      {"FADT outgrew the buffer", ordinary, good, 2, 0, false, 2},
      {"large PPTT", ordinary, large, 4, chipId, true},
      {"no memory", ordinary, good, 0, 0, false, 0, 1},
      {"none for a large PPTT", ordinary, large, 3, 0, false, 0, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    inOwnProcess([&] {
      {
        Machine machine;
        machine.firmware = {{FADT_ID, row.fadt}, {PPTT_ID, row.pptt}};
        machine.failingCall = row.failingCall;
        const AllocationFault fault(row.failingAllocation);
        EXPECT_EQ(IdentifyChip(), row.chipId);
        EXPECT_EQ(machine.calls.size(), row.calls);
      }
      Machine healthy;
      healthy.firmware = {{FADT_ID, ordinary}, {PPTT_ID, good}};
      EXPECT_EQ(IdentifyChip(), row.isKept ? row.chipId : chipId);
      EXPECT_EQ(healthy.CallsOf("GetSystemFirmwareTable 41435049"), row.isKept ? Calls() : all);
    });
  }
}

}  // namespace
