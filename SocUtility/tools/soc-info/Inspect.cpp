#include "Inspect.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "Identify.h"
#include "ProviderReport.h"
#include "RunInfo.h"

namespace {

/// Whether a query must answer `FAILURE` after the provider attempt that ended in this state.
bool isToFail(std::string_view state, std::string_view type) {
  const bool isScalar = !type.starts_with("list");
  return state == "failed" ||
         (isScalar && (state == "notFound" || state == "rejected" || state == "incomplete"));
}

Json chipOf(const SocInfo& record, const Json& identification) {
  return {{"name", record.name},         {"names", record.nameSet},
          {"model", record.socModel},    {"chipId", identification.at("chipId")},
          {"known", record.isKnownChip}, {"reason", identification.at("reason")}};
}

Json answersFrom(const SocInfo& record, std::string_view state) {
  if (record.isKnownChip) {
    return "catalogue";
  }
  if (state == "failed") {
    return nullptr;
  }
  return state == "imported" ? "provider" : "unknownRow";
}

/// The document without what a library answers.
Json inspect(const Json& identification, const SocInfo& record, const ProviderReport& provider) {
  const std::string state = provider.document.at("state");
  Json document = {{"schemaVersion", SCHEMA_VERSION},
                   {"command", "soc-info"},
                   {"run", nullptr},
                   {"chip", chipOf(record, identification)},
                   {"answersFrom", answersFrom(record, state)},
                   {"provider", provider.document},
                   {"scalarQueriesFail", isToFail(state, "")},
                   {"disagreements", Json::array()},
                   {"capabilities", Json::array()}};
  if (state == "notAsked") {
    document["scalarQueriesFail"] = nullptr;
  }
  for (const Capability& capability : CapabilitiesOf(record)) {
    const std::string_view source = record.isKnownChip                          ? "catalogue"
                                    : provider.answered.contains(capability.id) ? "provider"
                                                                                : "default";
    document["capabilities"].push_back({{"component", ComponentName(capability.id.component)},
                                        {"key", capability.id.key},
                                        {"type", capability.type},
                                        {"status", nullptr},
                                        {"value", capability.value},
                                        {"source", source}});
  }
  return document;
}

/// Puts the library's answers into the document, and notes where they differ from the core's.
void askLibrary(const InstalledLibrary& library, const SocInfo& record, Json& document) {
  const std::string state = document.at("provider").at("state");
  const std::vector<Capability> capabilities = CapabilitiesOf(record);
  // On an unknown chip a first answer is no sign of the later ones.
  library.Ask(capabilities.front().id);
  for (std::size_t i = 0; i < capabilities.size(); ++i) {
    const auto& [id, type, value] = capabilities[i];
    const bool fails = isToFail(state, type);
    const Json expected = {{"status", fails ? FAILURE : SUCCESS},
                           {"value", fails ? Json(nullptr) : value}};
    const Json answer = library.Ask(id);
    Json& row = document["capabilities"][i];
    row.update(answer);
    if (answer.at("status") != SUCCESS) {
      row["source"] = nullptr;
    }
    if (answer != expected) {
      document["disagreements"].push_back(
          {{"capability", KeyText(id)}, {"library", answer}, {"core", expected}});
    }
  }
}

std::string joined(const Json& texts) {
  std::string line;
  for (const Json& text : texts) {
    line += (line.empty() ? "" : ", ") + Text(text);
  }
  return line;
}

std::string chipText(const Json& chip) {
  Json others = Json::array();
  std::ranges::copy_if(chip.at("names"), std::back_inserter(others),
                       [&](const Json& name) { return name != chip.at("name"); });
  return Text(chip.at("name")) + (others.empty() ? "" : ", also " + joined(others));
}

std::string identifierText(const Json& chip) {
  if (!chip.at("reason").is_null()) {
    return "none: " + Text(chip.at("reason"));
  }
  return Text(chip.at("chipId")) +
         (chip.at("known") == true ? "" : ", for which the catalogue has no row");
}

std::string answersText(const Json& document) {
  if (document.at("chip").at("known") == true) {
    return "catalogue row " + Text(document.at("chip").at("model")) + "; no provider is consulted";
  }
  const Json& state = document.at("provider").at("state");
  if (state == "failed") {
    return "none: every query fails";
  }
  if (state == "incomplete") {
    return "unknown row, with what the provider did answer";
  }
  return state == "imported" ? "provider, over the unknown row" : "unknown row";
}

void writeLookedFor(std::ostream& out, const Json& names) {
  const char* verb = "looked for ";
  for (const Json& name : names) {
    const bool bare = Text(name).find('/') == std::string::npos;
    WriteLine(out, "", verb + Quoted(Text(name)) + (bare ? " on the library search path" : ""));
    verb = "then for ";
  }
}

void writeProvider(std::ostream& out, const Json& provider) {
  const std::string state = provider.at("state");
  const std::string library = Compact(provider.at("library"));
  if (state == "notAsked") {
    WriteLine(out, "provider", "not asked: the tables are another machine's");
  } else if (state == "imported") {
    WriteLine(out, "provider", library);
  } else if (state == "notFound") {
    WriteLine(out, "provider", "not found: " + Text(provider.at("reason")));
    writeLookedFor(out, provider.at("lookedFor"));
  } else if (state != "notNeeded") {
    WriteLine(out, "provider",
              state == "rejected" ? "found but rejected: " + Text(provider.at("reason"))
              : state == "incomplete"
                  ? "found but required keys missing: " + joined(provider.at("missing"))
                  : "found but failing: " + Text(provider.at("reason")));
    provider.at("library").is_null() ? writeLookedFor(out, provider.at("lookedFor"))
                                     : WriteLine(out, "", library);
    WriteLine(out, "", "soc-info check-provider FILE shows what such a library answers");
  }
}

void writeNotes(std::ostream& out, const Json& document) {
  if (document.at("provider").at("state") == "failed") {
    WriteLine(out, "note", "every query fails with 25, and each call makes the attempt again");
  } else if (document.at("scalarQueriesFail") == true) {
    WriteLine(out, "note", "the first call of Soc_GetCapability answers from the unknown row, all");
    WriteLine(out, "", "later ones fail with 25; Soc_GetCapabilitySerialized always answers");
  }
  const auto answerText = [](const Json& answer) {
    return answer.at("status") == SUCCESS ? Compact(answer.at("value"))
                                          : "status " + Text(answer.at("status"));
  };
  for (const Json& difference : document.at("disagreements")) {
    WriteLine(out, "disagreement",
              Text(difference.at("capability")) + ": the library answers " +
                  answerText(difference.at("library")) + ", soc-info expects " +
                  answerText(difference.at("core")));
  }
}

void writeTable(std::ostream& out, const Json& rows) {
  // A longer value pushes its own source aside, not everyone's.
  constexpr std::size_t WIDEST = 32;
  const auto valueText = [](const Json& row) {
    return row.at("source").is_null() ? "status " + Text(row.at("status")) : ValueText(row);
  };
  std::size_t width = 0;
  for (const Json& row : rows) {
    width = std::max(width, std::min(valueText(row).size(), WIDEST));
  }
  const auto writeRow = [&](std::string_view component, std::string_view key, std::string_view type,
                            std::string_view value, std::string_view source) {
    out << std::left << std::setw(11) << component << std::right << std::setw(3) << key << "  "
        << std::left << std::setw(19) << type << std::setw(static_cast<int>(width)) << value << "  "
        << source << '\n';
  };
  writeRow("component", "key", "type", "value", "source");
  for (const Json& row : rows) {
    writeRow(Text(row.at("component")), Text(row.at("key")), Text(row.at("type")), valueText(row),
             row.at("source").is_null() ? "" : Text(row.at("source")));
  }
}

}  // namespace

Json InspectThisMachine(const InstalledLibrary& library) {
  const Json identification = Identify(ReadThisMachine());
  SocInfo record = BuildChipRecord(identification.at("chipId"));
  const ProviderReport provider =
      record.isKnownChip ? NoAttempt("notNeeded") : AttemptProvider(record, library.Directory());
  Json document = inspect(identification, record, provider);
  document["run"] = RunInfo(&library);
  askLibrary(library, record, document);
  return document;
}

Json InspectTables(const MachineTables& tables) {
  const Json identification = Identify(tables);
  const SocInfo record = BuildChipRecord(identification.at("chipId"));
  return inspect(identification, record, NoAttempt(record.isKnownChip ? "notNeeded" : "notAsked"));
}

void WriteInspection(std::ostream& out, const Json& document) {
  WriteLine(out, "chip", chipText(document.at("chip")));
  WriteLine(out, "identifier", identifierText(document.at("chip")));
  WriteLine(out, "answers", answersText(document));
  writeProvider(out, document.at("provider"));
  writeNotes(out, document);
  WriteRunInfo(out, document);
  out << '\n';
  writeTable(out, document.at("capabilities"));
}
