// What the exported queries keep of a first use that failed.
#include <gtest/gtest.h>

#include <cstring>

#include "AllocationFault.h"
#include "DynamicSocInfo/chip/AcpiTables.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "Machine.h"
#include "OwnProcess.h"
#include "ZynSystemInfo.h"

namespace {

// The FADT alone identifies this machine, which `IdentifyChip` reads again whenever it is called.
TEST(Queries, KeepTheIdentifierWhenTheRecordCannotBeBuilt) {
  for (auto* const query : {Soc_GetCapability, Soc_GetCapabilitySerialized}) {
    inOwnProcess([&] {
      Machine machine;
      Machine::Table fadt(276);
      std::memcpy(&fadt[24], &FADT_RULE.oemRevision, sizeof FADT_RULE.oemRevision);
      machine.firmware = {{FADT_ID, fadt}};
      std::uint64_t answer = 0;
      std::uint64_t size = sizeof answer;
      {
        const AllocationFault fault(2);  // the first is the buffer of the tables
        EXPECT_EQ(query(DSP, 1, &answer, &size), FAILURE);
        EXPECT_TRUE(AllocationFault::Happened());
      }
      const auto reads = machine.CallsOf("GetSystemFirmwareTable 41435049").size();
      EXPECT_EQ(reads, 2U);
      EXPECT_NE(query(DSP, 1, &answer, &size), FAILURE);
      EXPECT_EQ(machine.CallsOf("GetSystemFirmwareTable 41435049").size(), reads);
    });
  }
}

}  // namespace
