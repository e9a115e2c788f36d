#include "LibraryReport.h"

#include <algorithm>
#include <filesystem>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "ForeignCode.h"
#include "Paths.h"

namespace fs = std::filesystem;

namespace {

fs::path findLibrary() {
  const fs::path folder = OwnPath().parent_path();
  const fs::path beside = folder / SOC_INFO_LIBRARY;
  const fs::path inPackage = (folder / SOC_INFO_TO_LIBRARIES / SOC_INFO_LIBRARY).lexically_normal();
  for (const fs::path& path : {beside, inPackage}) {
    std::error_code ignored;
    if (fs::exists(path, ignored)) {
      return path;
    }
  }
  throw InputError("no library: there is neither " + Quoted(PathText(beside)) + " nor " +
                   Quoted(PathText(inPackage)) + "; name one with --library FILE");
}

}  // namespace

LibraryReport ReportOnLibrary(const std::string& file, double seconds,
                              const std::optional<CapabilityId>& only) {
  const fs::path path = file.empty() ? findLibrary() : fs::absolute(PathOf(file));
  RequireRegularFile(path);
  LibraryReport library;
  library.description = {{"version", nullptr}, {"interface", nullptr}, {"path", PathText(path)}};

  const std::vector<Capability> all = CapabilitiesOf(BuildChipRecord(NO_CHIP_ID));
  library.answers.resize(all.size());
  std::size_t from = 0;
  std::size_t end = all.size();
  if (only) {
    from = static_cast<std::size_t>(std::ranges::find(all, *only, &Capability::id) - all.begin());
    end = from + 1;
  }
  const Json job = {{"file", PathText(path)}, {"from", from}, {"end", end}};
  library.findings = RunForeignCode(job, seconds, [&](const Json& object) {
    if (object.contains("refused")) {
      throw InputError(path, Text(object.at("refused")));
    }
    if (object.contains("description")) {
      library.description = object.at("description");
      library.directory = object.at("directory");
    } else {
      Json answer = object.at("answer");
      const std::size_t index = answer.at("index");
      answer.erase("index");
      library.answers.at(index) = answer;
    }
  });
  for (Json& finding : library.findings) {
    finding["library"] = library.description.at("path");  // without the links of `path`
  }
  return library;
}
