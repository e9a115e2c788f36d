#include "Capture.h"

#include <cerrno>
#include <cstdio>
#include <span>
#include <sstream>
#include <string>
#include <system_error>

#include "IdentifyReport.h"
#include "InputError.h"
#include "MachineTables.h"
#include "NewFile.h"
#include "Output.h"

namespace fs = std::filesystem;

namespace {

void makeEmptyDirectory(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (error) {
    throw InputError(directory, error.message());
  }
  const bool empty = fs::is_empty(directory, error);
  if (error) {
    throw InputError(directory, error.message());
  }
  if (!empty) {
    throw InputError(directory, "not empty; a capture takes a new directory");
  }
}

void writeFile(const fs::path& path, std::span<const char> bytes) {
  std::FILE* const file = CreateNewFile(path);
  const bool written =
      file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  const bool closed = file != nullptr && std::fclose(file) == 0;
  if (!written || !closed) {
    throw InputError(path, std::generic_category().message(errno));
  }
}

void writeTable(const fs::path& path, const std::vector<std::uint8_t>& table) {
  writeFile(path, {reinterpret_cast<const char*>(table.data()), table.size()});
}

}  // namespace

void Capture(const fs::path& directory) {
  const MachineTables tables = ReadThisMachine();
  const IdentifyReport report = Identify(tables);
  if (tables.fadt.empty()) {
    throw InputError("nothing to capture: " + WhyNotIdentified(report));
  }
  std::ostringstream document;
  WriteDocument(document, ToJson(report));

  makeEmptyDirectory(directory);
  writeTable(directory / "FACP", tables.fadt);
  if (!tables.pptt.empty()) {
    writeTable(directory / "PPTT", tables.pptt);
  }
  writeFile(directory / "identify.json", document.str());
}
