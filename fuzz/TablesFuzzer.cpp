// soc-info on made-up dumps must explain or refuse them, print only text, and write documents that
// can be parsed.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Commands.h"
#include "FuzzInput.h"
#include "MachineTables.h"

namespace fs = std::filesystem;

namespace {

/// A directory of this process, removed when it ends.
class Dumps {
 public:
  Dumps() {
    std::string name = (fs::temp_directory_path() / "tables-XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr);
    directory_ = name;
  }
  ~Dumps() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  Dumps(const Dumps&) = delete;
  Dumps& operator=(const Dumps&) = delete;

  const fs::path& Directory() const { return directory_; }

  /// A table without bytes is one that the machine lacks.
  void Write(const char* name, const std::vector<std::uint8_t>& bytes) const {
    if (bytes.empty()) {
      fs::remove(directory_ / name);
      return;
    }
    std::ofstream file(directory_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    require(static_cast<bool>(file.flush()));
  }

 private:
  fs::path directory_;
};

bool isText(const std::string& output) {
  return std::ranges::all_of(output, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); });
}

void print(const Json& document, void (*writeText)(std::ostream&, const Json&)) {
  std::ostringstream text;
  writeText(text, document);
  require(isText(text.str()));

  std::ostringstream json;
  WriteDocument(json, document);
  require(isText(json.str()));
  require(Json::accept(json.str()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Dumps dumps;
  const FuzzTables input(FuzzInput(data, size));
  dumps.Write("FACP", input.fadt);
  dumps.Write("PPTT", input.pptt);
  std::ostringstream warnings;
  try {
    const MachineTables tables = ReadDumps(dumps.Directory(), warnings);
    print(Identify(tables), WriteIdentification);
    print(Inspect(tables), WriteInspection);
  } catch (const InputError& error) {
    require(isText(error.what()));
  }
  require(isText(warnings.str()));
  return 0;
}
