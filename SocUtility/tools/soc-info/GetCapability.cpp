#include <algorithm>
#include <ostream>
#include <vector>

#include "Capabilities.h"
#include "Commands.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "ForeignCode.h"
#include "LibraryReport.h"
#include "RunInfo.h"

Json GetCapability(const std::string& component, std::uint32_t key,
                   const ForeignCodeOptions& options) {
  const std::vector<Capability> all = CapabilitiesOf(BuildChipRecord(NO_CHIP_ID));
  const auto asked = std::ranges::find_if(all, [&](const Capability& capability) {
    return ComponentName(capability.id.component) == component && capability.id.key == key;
  });
  if (asked == all.end()) {
    throw InputError("there is no capability " + Quoted(component + ' ' + std::to_string(key)));
  }
  const LibraryReport library = ReportOnLibrary(options.library, options.seconds, asked->id);
  Json document = {{"schemaVersion", SCHEMA_VERSION},
                   {"command", "get"},
                   {"run", RunInfo(library.description)},
                   {"component", component},
                   {"key", key},
                   {"type", asked->type},
                   {"status", nullptr},
                   {"value", nullptr},
                   {"malformed", nullptr},
                   {"findings", library.findings}};
  const auto index = static_cast<std::size_t>(asked - all.begin());
  if (const Json& answer = library.answers[index]; !answer.is_null()) {
    document.update(answer);
  }
  return document;
}

void WriteValue(std::ostream& out, const Json& document) {
  const Json& value = document.at("value");
  if (!value.is_null()) {
    out << (value.is_string() ? Unquoted(Text(value)) : Compact(value)) << '\n';
  }
}

std::string WhyNoValue(const Json& document) {
  const Json& findings = document.at("findings");
  const Json& malformed = document.at("malformed");
  const std::string capability = Text(document.at("component")) + ' ' + Text(document.at("key"));
  if (!findings.empty()) {
    return FindingText(findings.front());
  }
  return capability + ": " +
         (malformed.is_null() ? "status " + Text(document.at("status"))
                              : "the answer is malformed (" + Text(malformed) + ')');
}
