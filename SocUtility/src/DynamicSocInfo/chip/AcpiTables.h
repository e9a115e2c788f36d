/// Reads the ACPI tables that identify the chip, and finds the identifying fields in their bytes.
///
/// Reading and parsing are separate. The parsers take the bytes that firmware delivered. A length
/// inside a table can shorten these, never extend them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

/// The tables' identifiers: the four bytes of the signature as a little-endian number.
inline constexpr std::uint32_t FADT_ID = 0x50434146;  ///< "FACP"
inline constexpr std::uint32_t PPTT_ID = 0x54545050;  ///< "PPTT"

using TableBytes = std::span<const std::uint8_t>;

/// Reads this machine's tables, one at a time, into one buffer.
class FirmwareTables {
 public:
  /// Allocates the buffer; when that fails, no table can be read.
  FirmwareTables() noexcept;

  /// The table's bytes, valid until the next call; empty when it is absent or cannot be read.
  TableBytes Read(std::uint32_t tableId) noexcept;

 private:
  std::uint32_t capacity_;
  std::unique_ptr<std::uint8_t[]> buffer_;
};

/// The length in bytes that a table's header claims, or nothing when the header is cut.
std::optional<std::uint32_t> ClaimedLength(TableBytes table) noexcept;

/// The FADT's OEM Revision, or nothing when the table is too short to hold one.
std::optional<std::uint32_t> FadtOemRevision(TableBytes fadt) noexcept;

/// The identifying fields of a PPTT processor ID structure (type 2).
struct PpttIdStructure {
  std::size_t offset;  ///< Of the structure, from the table's start.
  std::uint64_t level1Id;
  std::uint64_t level2Id;
};

/// The PPTT's first ID structure, or nothing when there is none that lies within the table.
std::optional<PpttIdStructure> FindPpttIdStructure(TableBytes pptt) noexcept;

/// The key of an ID structure. The Level 1 ID loses its high half, the Level 2 ID keeps all bits.
constexpr std::uint64_t PpttKey(const PpttIdStructure& structure) {
  return structure.level1Id << 32 | structure.level2Id;
}
