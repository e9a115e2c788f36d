#include "chip/ChipIdentification.h"

#include <gmock/gmock.h>

#include <cstring>

#include "AllocationFault.h"
#include "Machine.h"
#include "OwnProcess.h"
#include "chip/ChipData.h"

namespace {

using Calls = std::vector<std::string>;
using Table = Machine::Table;

constexpr std::size_t LARGE = 66 + 20 * 4000;  // bytes: 0x138C2
const std::string FADT_SIZE = "50434146 0", FADT = "50434146 10000";
const std::string PPTT_SIZE = "54545050 0", PPTT = "54545050 10000";

template <class Number>
void put(std::vector<BYTE>& bytes, std::size_t offset, Number number) {
  std::memcpy(&bytes[offset], &number, sizeof number);
}

Table fadt(std::uint32_t oemRevision, std::size_t size = 276) {
  std::vector<BYTE> bytes(size);
  put(bytes, 24, oemRevision);
  return {bytes};
}

/// A PPTT with an ID structure at its end, behind processor nodes of 20 bytes.
Table pptt(std::uint64_t key, std::size_t size = 86) {
  std::vector<BYTE> bytes(size);
  put(bytes, 4, static_cast<std::uint32_t>(size));
  for (std::size_t offset = 36; offset + 30 < size; offset += 20) {
    bytes[offset + 1] = 20;
  }
  const std::size_t offset = size - 30;
  bytes[offset] = 2;
  bytes[offset + 1] = 30;
  put(bytes, offset + 8, key >> 32);
  put(bytes, offset + 16, key & 0xFFFFFFFF);
  return {bytes};
}

TEST(IdentifyChip, ReadsTheTablesAgainUntilAKeyWasLookedUp) {
  const std::uint64_t key = CHIP_KEYS.front().pptt;
  const std::uint32_t chipId = CHIP_KEYS.front().chipId;
  const Table ordinary = fadt(1);
  const Table good = pptt(key);
  const Table grownFadt{fadt(1, LARGE).bytes, 276};
  const Table grownPptt{pptt(key, LARGE).bytes, 86};
  constexpr std::uint64_t UNLISTED = 0xFFFFFFFFFFFFFFFF;
  const Calls all{FADT_SIZE, FADT, PPTT_SIZE, PPTT};
  const Calls untilPptt{FADT_SIZE, FADT, PPTT_SIZE};
  const Calls largePptt{FADT_SIZE, FADT, PPTT_SIZE, "54545050 138c2"};
  const Calls largeFadt{FADT_SIZE, "50434146 138c2", PPTT_SIZE, "54545050 138c2"};
  const struct {
    const char* name;
    Table fadt, pptt;
    Calls calls;
    std::uint32_t chipId;
    bool isKept = false;
    int failingCall = 0, failingAllocation = 0;
  } rows[] = {
      {"known key", ordinary, good, all, chipId, true},
      {"unlisted key", ordinary, pptt(UNLISTED), all, 0, true},
      {"key 0", ordinary, pptt(0), all, 0},
      {"special FADT", fadt(FADT_RULE.oemRevision), good, {FADT_SIZE, FADT}, FADT_RULE.chipId},
      {"no FADT", {}, good, {FADT_SIZE}, 0},
      {"no PPTT", ordinary, {}, untilPptt, 0},
      {"FADT unread", ordinary, good, {FADT_SIZE, FADT}, 0, false, 2},
      {"PPTT unread", ordinary, good, all, 0, false, 4},
      {"FADT outgrew the buffer", grownFadt, good, {FADT_SIZE, FADT}, 0},
      {"PPTT outgrew the buffer", ordinary, grownPptt, all, 0},
      {"large FADT", fadt(1, LARGE), good, largeFadt, chipId, true},
      {"large PPTT", ordinary, pptt(key, LARGE), largePptt, chipId, true},
      {"no memory", ordinary, good, {}, 0, false, 0, 1},
      {"none for a large PPTT", ordinary, pptt(key, LARGE), untilPptt, 0, false, 0, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    inOwnProcess([&] {
      {
        Machine machine;
        machine.firmware = {{FADT_ID, row.fadt}, {PPTT_ID, row.pptt}};
        machine.failingCall = row.failingCall;
        const AllocationFault fault(AllocationFault::NEW, row.failingAllocation);
        EXPECT_EQ(IdentifyChip(), row.chipId);
        EXPECT_EQ(machine.CallsOf("GetSystemFirmwareTable"), row.calls);
      }
      Machine healthy;
      healthy.firmware = {{FADT_ID, ordinary}, {PPTT_ID, good}};
      EXPECT_EQ(IdentifyChip(), row.isKept ? row.chipId : chipId);
      EXPECT_EQ(healthy.CallsOf("GetSystemFirmwareTable"), row.isKept ? Calls() : all);
    });
  }
}

}  // namespace
