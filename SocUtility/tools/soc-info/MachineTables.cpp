#include "MachineTables.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <string>
#include <system_error>

#include "DynamicSocInfo/chip/AcpiTables.h"
#include "Output.h"
#include "Paths.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t LARGEST_DUMP = std::uintmax_t{16} << 20;

std::vector<std::uint8_t> readFile(const fs::path& path) {
  RequireRegularFile(path);
  const std::uintmax_t size = fs::file_size(path);
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

/// The dump under the first of the names that is there; empty when none is. The first name is also
/// the table's signature.
std::vector<std::uint8_t> readDump(const fs::path& directory,
                                   std::initializer_list<std::string_view> names,
                                   std::ostream& warnings) {
  const auto* const name = std::ranges::find_if(names, [&](std::string_view candidate) {
    std::error_code ignored;
    // The link itself: one that leads nowhere is a broken dump, not a machine without the table.
    return fs::symlink_status(directory / candidate, ignored).type() != fs::file_type::not_found;
  });
  if (name == names.end()) {
    return {};
  }
  const fs::path path = directory / *name;
  const std::string_view signature = *names.begin();
  std::vector<std::uint8_t> table = readFile(path);
  if (table.size() < signature.size() ||
      !std::equal(signature.begin(), signature.end(), table.begin())) {
    throw InputError(path, "no raw dump of the table " + std::string(signature) +
                               ", which begins with these letters");
  }
  constexpr auto UNSTATED = std::numeric_limits<std::uint32_t>::max();
  if (ClaimedLength(table).value_or(UNSTATED) > table.size()) {
    warnings << "soc-info: warning: " << Quoted(PathText(path)) << ": cut short, only "
             << table.size() << " bytes of the table\n";
  }
  return table;
}

/// Whether the file is a document of `identify` for a machine without a PPTT.
bool saysNoPptt(const fs::path& path) {
  constexpr bool ALLOW_EXCEPTIONS = false;
  std::ifstream file(path, std::ios::binary);
  const Json document = Json::parse(file, nullptr, ALLOW_EXCEPTIONS);
  const Json pptt = document.is_object() ? document.value("pptt", Json()) : Json();
  return pptt.is_object() && pptt.value("read", Json()) == false;
}

/// Makes a directory that was not there: nobody else has put anything into it.
void makeNewDirectory(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory.parent_path(), error);  // if this fails, so does the next
  if (!fs::create_directory(directory, error)) {
    throw InputError(directory,
                     error ? error.message() : "exists; a capture takes a new directory");
  }
}

template <class Bytes>
void writeFile(const fs::path& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) {
    throw InputError(path, std::generic_category().message(errno));
  }
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
  MachineTables tables;
  tables.fadt = readDump(directory, {"FACP", "facp.dat", "FACP.dat"}, warnings);
  if (tables.fadt.empty()) {
    throw InputError(directory, "holds no dump of the FADT (FACP or facp.dat)");
  }
  tables.pptt = readDump(directory, {"PPTT", "pptt.dat", "PPTT.dat"}, warnings);
  tables.ppttUnknown = tables.pptt.empty() && !saysNoPptt(directory / "identify.json");
  return tables;
}

void WriteDumps(fs::path directory, const MachineTables& tables, std::string_view identification) {
  if (!directory.has_filename()) {
    directory = directory.parent_path();  // without the slash at its end
  }
  makeNewDirectory(directory);
  writeFile(directory / "FACP", tables.fadt);
  if (!tables.pptt.empty()) {
    writeFile(directory / "PPTT", tables.pptt);
  }
  writeFile(directory / "identify.json", identification);
}
