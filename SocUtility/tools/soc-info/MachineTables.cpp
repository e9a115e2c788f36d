#include "MachineTables.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>

#include "DynamicSocInfo/chip/AcpiTables.h"
#include "Output.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t LARGEST_DUMP = std::uintmax_t{16} << 20;

struct DumpNames {
  std::string_view signature;
  std::string_view names[3];
};
constexpr DumpNames FADT_DUMP = {"FACP", {"FACP", "facp.dat", "FACP.dat"}};
constexpr DumpNames PPTT_DUMP = {"PPTT", {"PPTT", "pptt.dat", "PPTT.dat"}};

std::optional<fs::path> findDump(const fs::path& directory, const DumpNames& dump) {
  for (const std::string_view name : dump.names) {
    const fs::path path = directory / name;
    std::error_code ignored;
    // The link itself: one that leads nowhere is a broken dump, not a machine without the table.
    if (fs::symlink_status(path, ignored).type() != fs::file_type::not_found) {
      return path;
    }
  }
  return std::nullopt;
}

std::vector<std::uint8_t> readFile(const fs::path& path) {
  std::error_code error;
  if (!fs::is_regular_file(path, error)) {
    throw InputError(path, error ? error.message() : "not a regular file");
  }
  const std::uintmax_t size = fs::file_size(path, error);
  if (error) {
    throw InputError(path, error.message());
  }
  if (size == 0) {
    throw InputError(path, "empty");
  }
  if (size > LARGEST_DUMP) {
    throw InputError(path, "larger than 16 MiB, no ACPI table");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw InputError(path, std::generic_category().message(errno));
  }
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
  if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size))) {
    throw InputError(path, "cannot be read to its end");
  }
  return bytes;
}

bool isCutShort(const std::vector<std::uint8_t>& table) {
  const std::optional<std::uint32_t> claimed = ClaimedLength(table);
  return !claimed || *claimed > table.size();
}

std::vector<std::uint8_t> readDump(const fs::path& path, std::string_view signature,
                                   std::ostream& warnings) {
  std::vector<std::uint8_t> table = readFile(path);
  if (table.size() < signature.size() ||
      !std::equal(signature.begin(), signature.end(), table.begin())) {
    throw InputError(path, "no raw dump of the table " + std::string(signature) +
                               ", which begins with these letters");
  }
  if (isCutShort(table)) {
    warnings << "soc-info: warning: " << Quoted(path.generic_string()) << ": cut short, only "
             << table.size() << " bytes of the table\n";
  }
  return table;
}

}  // namespace

MachineTables ReadThisMachine() {
  FirmwareTables firmware;
  const auto read = [&](std::uint32_t tableId) {
    const TableBytes bytes = firmware.Read(tableId);
    return std::vector<std::uint8_t>(bytes.begin(), bytes.end());
  };
  MachineTables tables;
  SetLastError(ERROR_SUCCESS);
  tables.fadt = read(FADT_ID);
  tables.accessDenied = tables.fadt.empty() && GetLastError() == ERROR_ACCESS_DENIED;
  tables.pptt = read(PPTT_ID);
  return tables;
}

MachineTables ReadDumps(const fs::path& directory, std::ostream& warnings) {
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    throw InputError(directory, error ? error.message() : "not a directory");
  }
  const std::optional<fs::path> fadt = findDump(directory, FADT_DUMP);
  if (!fadt) {
    throw InputError(directory, "holds no dump of the FADT (FACP or facp.dat)");
  }
  MachineTables tables;
  tables.fadt = readDump(*fadt, FADT_DUMP.signature, warnings);
  if (const std::optional<fs::path> pptt = findDump(directory, PPTT_DUMP)) {
    tables.pptt = readDump(*pptt, PPTT_DUMP.signature, warnings);
  }
  return tables;
}
