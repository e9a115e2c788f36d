#include <algorithm>
#include <ostream>

#include "Capabilities.h"
#include "Commands.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ForeignCode.h"
#include "ImportReport.h"
#include "Paths.h"
#include "RunInfo.h"
#include "ZynSystemInfo.h"

namespace fs = std::filesystem;

namespace {

/// The required or the optional keys of one component that were asked and not answered, each after
/// a blank.
std::string missingKeys(const Json& check, std::uint32_t component, bool required) {
  std::string keys;
  for (const Json& row : check.at("keys")) {
    if (row.at("component") == ComponentName(component) && row.at("required") == required &&
        row.at("answered") == false) {
      keys += ' ' + Text(row.at("key"));
    }
  }
  return keys;
}

/// The import status of one component.
ImportStatus statusOf(const Json& check, std::uint32_t component) {
  return !missingKeys(check, component, true).empty()    ? MISSING_REQUIRED
         : !missingKeys(check, component, false).empty() ? MISSING_OPTIONAL
                                                         : IMPORTED_ALL;
}

std::string statusText(const Json& check, std::uint32_t component) {
  const Json& status = check.at("statuses").at(ComponentName(component));
  if (status.is_null()) {
    return "not all could be asked";
  }
  return status == MISSING_REQUIRED ? "required keys missing:" + missingKeys(check, component, true)
         : status == MISSING_OPTIONAL
             ? "optional keys missing:" + missingKeys(check, component, false)
             : "all answered";
}

std::string answerText(const Json& row) {
  if (row.at("answered").get<bool>()) {
    return ValueText(row);
  }
  const std::uint64_t calls = row.at("calls").get<std::uint64_t>();
  return "no: " + Text(row.at("message")) + " (" +
         (row.at("status").is_null() ? "no status" : "status " + Text(row.at("status"))) + ", " +
         Text(row.at("offered")) + " bytes offered, " + Text(row.at("reported")) + " reported" +
         (calls > 1 ? ", call " + std::to_string(calls) : "") + ')';
}

void writeKeys(std::ostream& out, const Json& keys) {
  std::vector<std::vector<std::string>> rows = {{"component", "key", "need", "answer"}};
  for (const Json& row : keys) {
    rows.push_back({Text(row.at("component")), Text(row.at("key")),
                    row.at("required") == true ? "required" : "optional", answerText(row)});
  }
  WriteTable(out, rows);
}

/// Whether this finding, or how the import ends, fails the check.
bool passes(const ImportReport& watched) {
  return watched.state == "succeeded" &&
         std::ranges::none_of(watched.findings,
                              [](const Json& finding) { return finding.at("fails") == true; });
}

/// What a process with an unknown chip gets from the provider.
std::string_view verdictText(const Json& check) {
  const Json& state = check.at("state");
  if (state == "stopped") {
    return "fails: a process with an unknown chip would not come unharmed out of the import";
  }
  if (state == "exception") {
    return "fails: for an unknown chip every query would fail with 25, and ask the provider again";
  }
  if (state != "succeeded") {
    return "fails: for an unknown chip the import would not succeed";
  }
  return check.at("passes") == true
             ? "passes: for an unknown chip the import succeeds"
             : "fails: the import succeeds, but does what a process may not survive";
}

}  // namespace

Json CheckProvider(const fs::path& file, double seconds) {
  RequireRegularFile(file);
  const std::string path = PathText(fs::absolute(file));
  // A build may be checked before it has the name that the library looks for.
  const ImportReport watched = ReportOnImport({{path, SERVICE_UTILS_LIBRARY}}, true, seconds);
  if (watched.state == "notFound" || watched.state == "notLoaded") {
    throw InputError(file, Text(watched.lookedFor.front().at("reason")));
  }
  Json check = {{"schemaVersion", SCHEMA_VERSION},
                {"command", "check-provider"},
                {"run", RunInfo()},
                {"file", path},
                {"nameLookedFor", file.filename() == SERVICE_UTILS_LIBRARY},
                {"state", watched.state},
                {"reason", watched.reason},
                {"passes", passes(watched)},
                {"findings", watched.findings},
                {"statuses", {{"DSP", nullptr}, {"GPU", nullptr}}},
                {"keys", watched.keys}};
  if (!watched.succeeds.is_null()) {
    check["statuses"] = {{"DSP", statusOf(check, DSP)}, {"GPU", statusOf(check, GPU)}};
  }
  return check;
}

void WriteCheck(std::ostream& out, const Json& check) {
  WriteLine(out, "file", Quoted(Text(check.at("file"))));
  if (!check.at("nameLookedFor").get<bool>()) {
    WriteLine(out, "note",
              "found by the library only under the name " + std::string(SERVICE_UTILS_LIBRARY));
  }
  WriteRunInfo(out, check);
  if (const Json& keys = check.at("keys"); !keys.empty()) {
    out << '\n';
    writeKeys(out, keys);
    out << '\n';
    WriteLine(out, "DSP keys", statusText(check, DSP));
    WriteLine(out, "GPU keys", statusText(check, GPU));
  }
  if (const Json& reason = check.at("reason"); !reason.is_null()) {
    WriteLine(out, "rejected", Text(reason));
  }
  WriteFindings(out, check.at("findings"));
  WriteLine(out, "verdict", verdictText(check));
}
