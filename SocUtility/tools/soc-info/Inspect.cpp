#include "Inspect.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "Identify.h"
#include "ProviderReport.h"
#include "RunInfo.h"

namespace {

/// What follows from the state of a provider attempt (see `ProviderReport`).
struct AttemptOutcome {
  std::string_view state;
  const char* answersFrom;  ///< Null when every query fails.
  bool scalarsFail;         ///< After the call that made the attempt.
  // For people; empty where the text depends on more than the state.
  std::string_view answersText = {};
  std::string_view providerText = {};
};

constexpr std::string_view UNKNOWN_ROW_TEXT = "unknown row";
constexpr AttemptOutcome OUTCOMES[] = {
    {"notNeeded", "catalogue", false},
    {"notAsked", "unknownRow", false, UNKNOWN_ROW_TEXT,
     "not asked: the tables are another machine's"},
    {"notFound", "unknownRow", true, UNKNOWN_ROW_TEXT, "not found: "},
    {"rejected", "unknownRow", true, UNKNOWN_ROW_TEXT, "found but rejected: "},
    {"incomplete", "unknownRow", true, "unknown row, with what the provider did answer",
     "found but required keys missing: "},
    {"failed", nullptr, true, "none: every query fails", "found but failing: "},
    {"imported", "provider", false, "provider, over the unknown row"},
};

const AttemptOutcome& outcomeOf(const Json& provider) {
  return *std::ranges::find(OUTCOMES, provider.at("state").get<std::string>(),
                            &AttemptOutcome::state);
}

Json chipOf(const SocInfo& record, const Json& identification) {
  const bool lacksRow = !record.isKnownChip && identification.at("reason").is_null();
  return {
      {"name", record.name},
      {"names", record.nameSet},
      {"model", record.socModel},
      {"chipId", identification.at("chipId")},
      {"known", record.isKnownChip},
      {"reason", lacksRow ? Json("the catalogue has no row for it") : identification.at("reason")}};
}

/// Puts the library's answer into the capability's row, which has the core's value. Notes where the
/// two differ.
void addAnswer(const LibraryAnswer& answer, const Capability& capability, bool mustFail, Json& row,
               Json& disagreements) {
  const Json received = {{"status", answer.status}, {"value", answer.value}};
  const Json expected = {{"status", mustFail ? FAILURE : SUCCESS},
                         {"value", mustFail ? Json(nullptr) : capability.value}};
  row.update(received);
  if (answer.value.is_null()) {
    row["source"] = nullptr;
  }
  if (received != expected) {
    disagreements.push_back({{"capability", CapabilityName(capability.id)},
                             {"library", received},
                             {"core", expected},
                             {"malformed", answer.malformed}});
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
  const Json& id = chip.at("chipId");
  const Json& reason = chip.at("reason");
  return (id == NO_CHIP_ID ? "none" : Text(id)) + (reason.is_null() ? "" : ": " + Text(reason));
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
  const AttemptOutcome& outcome = outcomeOf(provider);
  const Json& library = provider.at("library");
  if (outcome.state == "imported") {
    WriteLine(out, "provider", Compact(library));
  }
  if (outcome.providerText.empty()) {
    return;
  }
  const std::string detail =
      outcome.state == "incomplete" ? joined(provider.at("missing")) : Text(provider.at("reason"));
  WriteLine(out, "provider", std::string(outcome.providerText) + detail);
  library.is_null() ? writeLookedFor(out, provider.at("lookedFor"))
                    : WriteLine(out, "", Compact(library));
  if (outcome.providerText.starts_with("found")) {
    WriteLine(out, "", "soc-info check-provider FILE shows what such a library answers");
  }
}

void writeNotes(std::ostream& out, const Json& document) {
  if (document.at("provider").at("state") == "failed") {
    WriteLine(out, "note", "every query fails with 25, and each call makes the attempt again");
  } else if (document.at("scalarQueriesFail") == true) {
    WriteLine(out, "note",
              "the first call of Soc_GetCapability still answers, all later ones fail");
    WriteLine(out, "", "with 25; Soc_GetCapabilitySerialized always answers");
  }
  const auto answerText = [](const Json& answer) {
    return answer.at("status") == SUCCESS ? Compact(answer.at("value"))
                                          : "status " + Text(answer.at("status"));
  };
  for (const Json& difference : document.at("disagreements")) {
    const Json& malformed = difference.at("malformed");
    WriteLine(out, "disagreement",
              Text(difference.at("capability")) + ": the library" +
                  (malformed.is_null() ? " answers " + answerText(difference.at("library"))
                                       : "'s answer is malformed (" + Text(malformed) + ')') +
                  ", soc-info expects " + answerText(difference.at("core")));
  }
}

/// The value of a capability's row, or why it has none.
std::string rowText(const Json& row) {
  if (!row.at("value").is_null()) {
    return ValueText(row);
  }
  return row.at("status") == SUCCESS ? "malformed" : "status " + Text(row.at("status"));
}

}  // namespace

Json Inspect(const MachineTables& tables, InstalledLibrary* library) {
  const Json identification = Identify(tables);
  SocInfo record = BuildChipRecord(identification.at("chipId"));
  const ProviderReport provider = record.isKnownChip ? NoAttempt("notNeeded")
                                  : library == nullptr
                                      ? NoAttempt("notAsked")
                                      : AttemptProvider(record, library->Directory());
  const AttemptOutcome& outcome = outcomeOf(provider.document);
  const bool listsFail = outcome.answersFrom == nullptr;
  Json document = {
      {"schemaVersion", SCHEMA_VERSION},
      {"command", "soc-info"},
      {"run", library == nullptr ? Json(nullptr) : RunInfo(library->Description())},
      {"chip", chipOf(record, identification)},
      {"answersFrom", listsFail ? Json(nullptr) : Json(outcome.answersFrom)},
      {"provider", provider.document},
      {"scalarQueriesFail", outcome.state == "notAsked" ? Json(nullptr) : Json(library != nullptr)},
      {"disagreements", Json::array()},
      {"capabilities", Json::array()}};
  std::vector<LibraryAnswer> answers;
  if (library != nullptr) {
    answers = library->AskEveryCapability();
  }
  for (std::size_t i = 0; const Capability& capability : CapabilitiesOf(record)) {
    const std::string_view source = record.isKnownChip                             ? "catalogue"
                                    : provider.answered.contains(capability.field) ? "provider"
                                                                                   : "default";
    Json row = {{"component", ComponentName(capability.id.component)},
                {"key", capability.id.key},
                {"type", capability.type},
                {"status", nullptr},
                {"value", capability.value},
                {"source", source}};
    if (library != nullptr) {
      const bool isList = capability.type.starts_with("list");
      const LibraryAnswer& answer = answers[i++];
      if (!isList && answer.status != FAILURE) {
        document["scalarQueriesFail"] = false;
      }
      addAnswer(answer, capability, isList ? listsFail : outcome.scalarsFail, row,
                document["disagreements"]);
    }
    document["capabilities"].push_back(row);
  }
  return document;
}

void WriteInspection(std::ostream& out, const Json& document) {
  const Json& chip = document.at("chip");
  WriteLine(out, "chip", chipText(chip));
  WriteLine(out, "identifier", identifierText(chip));
  WriteLine(out, "answers",
            chip.at("known") == true
                ? "catalogue row " + Text(chip.at("model")) + "; no provider is consulted"
                : outcomeOf(document.at("provider")).answersText);
  writeProvider(out, document.at("provider"));
  writeNotes(out, document);
  WriteRunInfo(out, document);
  out << '\n';
  std::vector<std::vector<std::string>> rows = {{"component", "key", "type", "value", "source"}};
  for (const Json& row : document.at("capabilities")) {
    rows.push_back({Text(row.at("component")), Text(row.at("key")), Text(row.at("type")),
                    rowText(row), Text(row.at("source"))});
  }
  WriteTable(out, rows);
}
