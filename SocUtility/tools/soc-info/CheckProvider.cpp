#include "CheckProvider.h"

#include <algorithm>
#include <initializer_list>
#include <iomanip>
#include <optional>
#include <ostream>
#include <system_error>

#include "Capabilities.h"
#include "ChildProcess.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "InputError.h"
#include "ZynSystemInfo.h"

namespace fs = std::filesystem;

namespace {

void requireFile(const fs::path& file) {
  std::error_code error;
  const bool isFile = fs::is_regular_file(file, error);
  if (error) {
    throw InputError(file, error.message());
  }
  if (!isFile) {
    throw InputError(file, "not a regular file");
  }
}

/// Whether a line has what is read of a key's, and no value that is nested deeper than a list.
bool tellsOfKey(const Json& line) {
  const auto all = [&](auto is, std::initializer_list<const char*> names) {
    return std::ranges::all_of(
        names, [&](const char* name) { return line.contains(name) && (line.at(name).*is)(); });
  };
  return all(&Json::is_string, {"component", "type"}) &&
         all(&Json::is_boolean, {"required", "answered"}) &&
         all(&Json::is_number_unsigned, {"key", "calls", "offered", "reported"}) &&
         all(&Json::is_primitive, {"status"}) && !line.at("value").is_object() &&
         std::ranges::all_of(line.at("value"), &Json::is_primitive) &&
         (line.at("answered").get<bool>() ? line.at("message").is_null()
                                          : line.at("message").is_string());
}

/// Takes what the child tells in one line. False when it is no line of the child's: the library can
/// write to any descriptor of the process, and the pipe's is one of them.
bool take(ProviderCheck& check, const std::string& text) try {
  Json line = Json::parse(text);
  if (line.contains("step")) {
    check.lastStep = line.at("step").get<std::string>();
  } else if (line.contains("loadError")) {
    throw InputError(fs::path(check.file), line.at("loadError").get<std::string>());
  } else if (line.contains("rejection")) {
    check.rejection = line.at("rejection").is_null() ? "" : line.at("rejection").get<std::string>();
  } else if (line.contains("exception")) {
    check.exceptionAt = check.lastStep;
    if (line.at("exception").is_string()) {
      check.exceptionText = line.at("exception");
    }
  } else if (tellsOfKey(line)) {
    check.keys.push_back(std::move(line));
  } else {
    return false;
  }
  return true;
} catch (const Json::exception&) {
  return false;
}

bool wasLoaded(const ProviderCheck& check) { return check.lastStep != "load"; }

bool wasStopped(const ProviderCheck& check) { return check.hung || !check.crash.empty(); }

/// The import status of one component; none when not every key was asked.
std::optional<ImportStatus> statusOf(const ProviderCheck& check, std::uint32_t component,
                                     const ImportKeys& keys) {
  std::size_t asked = 0;
  ImportStatus status = IMPORTED_ALL;
  for (const Json& row : check.keys) {
    if (row.at("component") != ComponentName(component)) {
      continue;
    }
    ++asked;
    if (!row.at("answered").get<bool>() && status != MISSING_REQUIRED) {
      status = row.at("required").get<bool>() ? MISSING_REQUIRED : MISSING_OPTIONAL;
    }
  }
  return asked == keys.required.size() + keys.optional.size() ? std::optional(status)
                                                              : std::nullopt;
}

std::optional<ImportStatus> dspStatus(const ProviderCheck& check) {
  return statusOf(check, DSP, DSP_IMPORT_KEYS);
}

std::optional<ImportStatus> gpuStatus(const ProviderCheck& check) {
  return statusOf(check, GPU, GPU_IMPORT_KEYS);
}

std::string_view statusText(std::optional<ImportStatus> status) {
  if (!status) {
    return "not all keys were asked";
  }
  switch (*status) {
    case MISSING_REQUIRED:
      return "-2: required keys missing";
    case MISSING_OPTIONAL:
      return "1: optional keys missing";
    case IMPORTED_ALL:
      break;
  }
  return "0: every key answered";
}

std::string answerText(const Json& row) {
  if (row.at("answered").get<bool>()) {
    return row.at("value").is_null() ? "not a finite number" : ValueText(row.at("value"));
  }
  const std::uint64_t calls = row.at("calls").get<std::uint64_t>();
  return "no: " + row.at("message").get<std::string>() + " (" +
         (row.at("status").is_null() ? "no status" : "status " + row.at("status").dump()) + ", " +
         row.at("offered").dump() + " bytes offered, " + row.at("reported").dump() + " reported" +
         (calls > 1 ? ", call " + std::to_string(calls) : "") + ')';
}

void writeKeys(std::ostream& out, const ProviderCheck& check) {
  const auto writeRow = [&](std::string_view component, std::string_view key, std::string_view need,
                            std::string_view answer) {
    out << std::left << std::setw(11) << component << std::right << std::setw(3) << key << "  "
        << std::left << std::setw(10) << need << answer << '\n';
  };
  writeRow("component", "key", "need", "answer");
  for (const Json& row : check.keys) {
    writeRow(row.at("component").get<std::string>(), row.at("key").dump(),
             row.at("required").get<bool>() ? "required" : "optional", answerText(row));
  }
}

std::string_view verdictText(const ProviderCheck& check) {
  if (wasStopped(check)) {
    return "a process with an unknown chip would not come unharmed out of the import";
  }
  if (!check.exceptionAt.empty()) {
    return "for an unknown chip every query would fail with 25, and ask the provider anew";
  }
  return ImportCounts(check) ? "for an unknown chip the import counts"
                             : "for an unknown chip the import does not count";
}

std::string_view howStopped(const ProviderCheck& check) { return check.hung ? "hang" : "crash"; }

}  // namespace

ProviderCheck CheckProvider(const fs::path& file, std::chrono::milliseconds limit) {
  requireFile(file);
  ProviderCheck check{.file = fs::absolute(file).string(),
                      .nameLookedFor = file.filename() == SERVICE_UTILS_LIBRARY,
                      .rejection = {},
                      .keys = {},
                      .lastStep = "load",
                      .exceptionAt = {},
                      .exceptionText = {},
                      .crash = {}};
  ChildProcess child({"ask-provider", check.file});
  std::string line;
  ChildProcess::Event event{};
  bool intact = true;
  while (intact && (event = child.Next(line, limit)) == ChildProcess::Event::LINE) {
    intact = take(check, line);
  }
  if (!intact || event == ChildProcess::Event::TOO_LONG) {
    check.crash = "it wrote to a descriptor that is not its own";
    return check;
  }
  check.hung = event == ChildProcess::Event::TIMED_OUT;
  check.crash = child.Failure();
  if (!check.hung && check.crash.empty() && check.lastStep != "exit") {
    check.crash = "exit status 0";  // the library ended the process
  }
  return check;
}

bool ImportCounts(const ProviderCheck& check) {
  return !wasStopped(check) && check.rejection.empty() &&
         dspStatus(check).value_or(MISSING_REQUIRED) != MISSING_REQUIRED &&
         gpuStatus(check).value_or(MISSING_REQUIRED) != MISSING_REQUIRED;
}

void WriteText(std::ostream& out, const ProviderCheck& check) {
  WriteLine(out, "file", Quoted(check.file));
  if (!check.nameLookedFor) {
    WriteLine(out, "note", "found by the library only under the name RzSoCServiceUtils.dll");
  }
  if (!check.keys.empty()) {
    out << '\n';
    writeKeys(out, check);
    out << '\n';
    WriteLine(out, "DSP", statusText(dspStatus(check)));
    WriteLine(out, "GPU", statusText(gpuStatus(check)));
  }
  if (wasLoaded(check)) {
    WriteLine(out, "provider",
              check.rejection.empty() ? "accepted" : "rejected: " + check.rejection);
  }
  if (!check.exceptionAt.empty()) {
    const std::string text =
        check.exceptionText.is_null() ? "" : ": " + Quoted(check.exceptionText.get<std::string>());
    WriteLine(out, "exception", "at " + check.exceptionAt + text);
  }
  if (wasStopped(check)) {
    WriteLine(out, howStopped(check),
              "at " + check.lastStep + (check.hung ? ", given up" : ": " + check.crash));
  }
  WriteLine(out, "verdict", verdictText(check));
}

Json ToJson(const ProviderCheck& check) {
  const auto number = [](std::optional<ImportStatus> status) {
    return status ? Json(*status) : Json(nullptr);
  };
  const auto textOrNull = [](const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
  };
  Json document = {
      {"schemaVersion", 1},
      {"file", check.file},
      {"nameLookedFor", check.nameLookedFor},
      {"accepted", wasLoaded(check) ? Json(check.rejection.empty()) : Json(nullptr)},
      {"reason", textOrNull(check.rejection)},
      {"stopped", nullptr},
      {"exception", nullptr},
      {"statuses", {{"DSP", number(dspStatus(check))}, {"GPU", number(gpuStatus(check))}}},
      {"importCounts", ImportCounts(check)},
      {"keys", check.keys}};
  if (!check.exceptionAt.empty()) {
    document["exception"] = {{"at", check.exceptionAt}, {"text", check.exceptionText}};
  }
  if (wasStopped(check)) {
    document["stopped"] = {
        {"at", check.lastStep}, {"how", howStopped(check)}, {"detail", textOrNull(check.crash)}};
  }
  return document;
}
