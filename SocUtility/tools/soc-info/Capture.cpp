#include "Capture.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

#include "Identify.h"
#include "MachineTables.h"
#include "Output.h"

namespace fs = std::filesystem;

namespace {

/// Makes a directory that was not there: nobody else has put anything into it.
void makeNewDirectory(const fs::path& directory) {
  std::error_code error;
  if (directory.has_parent_path()) {
    fs::create_directories(directory.parent_path(), error);
  }
  if (!error && !fs::create_directory(directory, error) && !error) {
    throw InputError(directory, "exists; a capture takes a new directory");
  }
  if (error) {
    throw InputError(directory, error.message());
  }
}

void writeFile(const fs::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) {
    throw InputError(path, std::generic_category().message(errno));
  }
}

void writeTable(const fs::path& path, const std::vector<std::uint8_t>& table) {
  writeFile(path, {reinterpret_cast<const char*>(table.data()), table.size()});
}

}  // namespace

void Capture(const fs::path& directory) {
  const MachineTables tables = ReadThisMachine();
  const Json identification = Identify(tables);
  if (tables.fadt.empty()) {
    throw InputError("nothing to capture: " + Text(identification.at("reason")));
  }
  std::ostringstream document;
  WriteDocument(document, identification);

  makeNewDirectory(directory);
  writeTable(directory / "FACP", tables.fadt);
  if (!tables.pptt.empty()) {
    writeTable(directory / "PPTT", tables.pptt);
  }
  writeFile(directory / "identify.json", document.str());
}
