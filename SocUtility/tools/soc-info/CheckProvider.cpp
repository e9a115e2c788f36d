#include "CheckProvider.h"

#include <ostream>
#include <sstream>

#include "Capabilities.h"
#include "ChildProcess.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "RunInfo.h"
#include "ZynSystemInfo.h"

namespace fs = std::filesystem;

namespace {

/// Adds the child's lines to the document (see `AskProvider`).
void addLines(Json& check, const std::string& output) {
  std::istringstream lines(output);
  for (std::string text; std::getline(lines, text);) {
    const Json line = Json::parse(text);
    if (line.contains("loadError")) {
      throw InputError(fs::path(Text(check.at("file"))), Text(line.at("loadError")));
    }
    if (line.contains("asked")) {
      check["keys"].push_back(line.at("asked"));
    } else {
      constexpr bool MERGE_OBJECTS = true;
      check.update(line, MERGE_OBJECTS);
    }
  }
}

void addChildResult(Json& check, const ChildResult& child) {
  std::string crash = child.failure;
  try {
    addLines(check, child.output);
  } catch (const Json::exception&) {
    crash = "it wrote to a descriptor that is not its own";
  }
  Json& stopped = check["stopped"];
  if (crash.empty() && stopped.at("at") == "exit") {
    stopped = nullptr;
  } else if (stopped.at("how") == "crash") {
    stopped["detail"] = crash.empty() ? "exit status 0" : crash;  // the library ended the process
  }
}

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

/// The import status of one component; null when not every key was asked.
Json statusOf(const Json& check, std::uint32_t component) {
  if (check.at("importCounts").is_null()) {
    return nullptr;
  }
  return !missingKeys(check, component, true).empty()    ? MISSING_REQUIRED
         : !missingKeys(check, component, false).empty() ? MISSING_OPTIONAL
                                                         : IMPORTED_ALL;
}

std::string statusText(const Json& check, std::uint32_t component) {
  const Json& status = check.at("statuses").at(ComponentName(component));
  if (status.is_null()) {
    return "not all were asked";
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

std::string_view verdictText(const Json& check) {
  if (!check.at("stopped").is_null()) {
    return "a process with an unknown chip would not come unharmed out of the import";
  }
  if (!check.at("exception").is_null()) {
    return "for an unknown chip every query would fail with 25, and ask the provider again";
  }
  return check.at("importCounts").get<bool>() ? "for an unknown chip the import counts"
                                              : "for an unknown chip the import does not count";
}

}  // namespace

Json CheckProvider(const fs::path& file, double seconds) {
  RequireRegularFile(file);
  Json check = {{"schemaVersion", SCHEMA_VERSION},
                {"command", "check-provider"},
                {"run", RunInfo()},
                {"file", fs::absolute(file).string()},
                {"nameLookedFor", file.filename() == SERVICE_UTILS_LIBRARY},
                {"accepted", nullptr},
                {"reason", nullptr},
                {"stopped", {{"at", "load"}, {"how", "crash"}, {"detail", nullptr}}},
                {"exception", nullptr},
                {"statuses", nullptr},
                {"importCounts", nullptr},
                {"keys", Json::array()}};
  addChildResult(check, RunAskProvider(check.at("file"), std::to_string(seconds)));
  check["statuses"] = {{"DSP", statusOf(check, DSP)}, {"GPU", statusOf(check, GPU)}};
  check["importCounts"] = check.at("stopped").is_null() && check.at("importCounts") == true;
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
  if (const Json& reason = check.at("reason"); !check.at("accepted").is_null()) {
    WriteLine(out, "provider", reason.is_null() ? "has both exports" : "rejected: " + Text(reason));
  }
  if (const Json& exception = check.at("exception"); !exception.is_null()) {
    const Json& text = exception.at("text");
    WriteLine(out, "exception",
              "at " + Text(exception.at("at")) + (text.is_null() ? "" : ": " + Quoted(Text(text))));
  }
  if (const Json& stopped = check.at("stopped"); !stopped.is_null()) {
    const Json& detail = stopped.at("detail");
    WriteLine(out, Text(stopped.at("how")),
              "at " + Text(stopped.at("at")) +
                  (detail.is_null() ? ", not done within the time limit" : ": " + Text(detail)));
  }
  WriteLine(out, "verdict", verdictText(check));
}
