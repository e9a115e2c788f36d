#include "DynamicSocInfo/chip/AcpiTables.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "platform/WindowsApi.h"

namespace {

constexpr DWORD ACPI_PROVIDER = 0x41435049;  // "ACPI"
constexpr std::uint32_t USUAL_CAPACITY = 0x10000;

// Every ACPI table begins with a header of 36 bytes.
constexpr std::size_t HEADER_LENGTH_OFFSET = 4;
constexpr std::size_t HEADER_OEM_REVISION_OFFSET = 24;
constexpr std::size_t HEADER_SIZE = 36;

// PPTT structures follow one another: type (1 byte), length (1 byte), content.
constexpr std::size_t STRUCTURE_LENGTH_OFFSET = 1;
constexpr std::size_t STRUCTURE_HEADER_SIZE = 2;
constexpr std::uint8_t ID_STRUCTURE_TYPE = 2;
constexpr std::size_t LEVEL_1_ID_OFFSET = 8;
constexpr std::size_t LEVEL_2_ID_OFFSET = 16;
constexpr std::size_t IDS_END = 24;

static_assert(std::endian::native == std::endian::little, "tables are read as they are");

template <class Number>
Number numberAt(TableBytes bytes, std::size_t offset) {
  Number number;
  std::memcpy(&number, bytes.subspan(offset, sizeof number).data(), sizeof number);
  return number;
}

}  // namespace

FirmwareTables::FirmwareTables() noexcept
    : capacity_(USUAL_CAPACITY), buffer_(new (std::nothrow) std::uint8_t[USUAL_CAPACITY]) {}

TableBytes FirmwareTables::Read(std::uint32_t tableId) noexcept {
  if (!buffer_) {
    return {};
  }
  const std::uint32_t size = GetSystemFirmwareTable(ACPI_PROVIDER, tableId, nullptr, 0);
  if (size == 0) {
    return {};
  }
  if (size > capacity_) {
    std::unique_ptr<std::uint8_t[]> larger(new (std::nothrow) std::uint8_t[size]);
    if (!larger) {
      return {};
    }
    buffer_ = std::move(larger);
    capacity_ = size;
  }
  const std::uint32_t count =
      GetSystemFirmwareTable(ACPI_PROVIDER, tableId, buffer_.get(), capacity_);
  // A larger count means that the table has grown since its size was read. Nothing was copied then.
  return count > capacity_ ? TableBytes{} : TableBytes{buffer_.get(), count};
}

std::optional<std::uint32_t> ClaimedLength(TableBytes table) noexcept {
  if (table.size() < HEADER_SIZE) {
    return std::nullopt;
  }
  return numberAt<std::uint32_t>(table, HEADER_LENGTH_OFFSET);
}

std::optional<std::uint32_t> FadtOemRevision(TableBytes fadt) noexcept {
  if (fadt.size() < HEADER_OEM_REVISION_OFFSET + sizeof(std::uint32_t)) {
    return std::nullopt;
  }
  return numberAt<std::uint32_t>(fadt, HEADER_OEM_REVISION_OFFSET);
}

std::optional<PpttIdStructure> FindPpttIdStructure(TableBytes pptt) noexcept {
  const std::optional<std::uint32_t> claimed = ClaimedLength(pptt);
  if (!claimed) {
    return std::nullopt;
  }
  const TableBytes table = pptt.first(std::min<std::size_t>(*claimed, pptt.size()));

  std::size_t offset = HEADER_SIZE;
  while (offset + STRUCTURE_HEADER_SIZE <= table.size()) {
    const TableBytes structure = table.subspan(offset);
    const std::uint8_t length = structure[STRUCTURE_LENGTH_OFFSET];
    if (length == 0) {
      return std::nullopt;  // the walk would never end
    }
    if (structure.front() == ID_STRUCTURE_TYPE) {
      if (structure.size() < IDS_END) {
        return std::nullopt;
      }
      return PpttIdStructure{.offset = offset,
                             .level1Id = numberAt<std::uint64_t>(structure, LEVEL_1_ID_OFFSET),
                             .level2Id = numberAt<std::uint64_t>(structure, LEVEL_2_ID_OFFSET)};
    }
    offset += length;
  }
  return std::nullopt;
}
