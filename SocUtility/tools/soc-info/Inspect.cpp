#include <algorithm>
#include <optional>
#include <vector>

#include "Capabilities.h"
#include "Commands.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "ForeignCode.h"
#include "ImportReport.h"
#include "ImportStates.h"
#include "LibraryReport.h"
#include "RunInfo.h"

namespace {

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

Json providerOf(const ImportReport& watched) {
  Json missing = Json::array();
  for (const Json& key : watched.keys) {
    if (key.at("required") == true && key.at("answered") == false) {
      missing.push_back(Text(key.at("component")) + ' ' + Text(key.at("key")));
    }
  }
  return {{"state", watched.state},
          {"library", watched.library},
          {"lookedFor", watched.lookedFor},
          {"reason", watched.reason},
          {"missing", missing}};
}

/// A row of the document's table with the value that the core expects, and that value's source.
struct Expected {
  Capability capability;
  std::string_view source;
};

/// What a library answers from `record` after an import that went as the watched one.
std::vector<Expected> expectedAnswers(const SocInfo& record, const ImportReport& watched) {
  std::vector<Expected> rows;
  for (const Capability& capability : CapabilitiesOf(record)) {
    rows.push_back({capability, record.isKnownChip ? "catalogue" : "default"});
  }
  for (const Json& key : watched.keys) {
    const auto isKey = [&](const Expected& row) {
      return key.at("component") == ComponentName(row.capability.id.component) &&
             row.capability.id.key == key.at("key");
    };
    const void* const field = std::ranges::find_if(rows, isKey)->capability.field;
    for (auto& [capability, source] : rows) {
      if (capability.field == field && key.at("answered") == true) {
        capability.value = key.at("value");
        source = "provider";
      }
    }
  }
  return rows;
}

Json rowOf(const Expected& expected) {
  const Capability& capability = expected.capability;
  return {{"component", ComponentName(capability.id.component)},
          {"key", capability.id.key},
          {"type", capability.type},
          {"status", nullptr},
          {"value", capability.value},
          {"source", expected.source}};
}

/// Puts the library's answer into a row. The row keeps its source only if the two agree.
void addAnswer(const Json& answer, const ImportState& state, Json& row, Json& disagreements) {
  const bool isList = Text(row.at("type")).starts_with("list");
  const bool mustFail = isList ? state.listsFail : state.scalarsFail;
  const Json expected = {{"status", mustFail ? FAILURE : SUCCESS},
                         {"value", mustFail ? Json(nullptr) : row.at("value")}};
  const Json received = {{"status", answer.is_null() ? Json(nullptr) : answer.at("status")},
                         {"value", answer.is_null() ? Json(nullptr) : answer.at("value")}};
  row.update(received);
  const bool agrees = state.isForeseen && received == expected;
  if (!agrees || received.at("value").is_null()) {
    row["source"] = nullptr;
  }
  if (!agrees && state.isForeseen && !answer.is_null()) {
    disagreements.push_back({{"capability", Text(row.at("component")) + ' ' + Text(row.at("key"))},
                             {"library", received},
                             {"core", expected},
                             {"malformed", answer.at("malformed")}});
  }
}

/// Whether every scalar query of the library fails; null when none was answered.
Json scalarQueriesFail(const std::vector<Expected>& rows, const std::vector<Json>& answers) {
  Json fail = nullptr;
  for (std::size_t i = 0; i < answers.size(); ++i) {
    if (!answers[i].is_null() && !rows[i].capability.type.starts_with("list")) {
      fail = answers[i].at("status") == FAILURE && fail != false;
    }
  }
  return fail;
}

/// The parts of the document that do not depend on who is asked.
Json makeDocument(const Json& run, const Json& chip, const ImportReport& watched) {
  const char* const answersFrom = StateOf(watched.state).answersFrom;
  return {{"schemaVersion", SCHEMA_VERSION},
          {"command", "soc-info"},
          {"run", run},
          {"chip", chip},
          {"answersFrom", answersFrom == nullptr ? Json(nullptr) : Json(answersFrom)},
          {"provider", providerOf(watched)},
          {"scalarQueriesFail", nullptr},
          {"findings", Json::array()},
          {"disagreements", Json::array()},
          {"capabilities", Json::array()}};
}

}  // namespace

Json Inspect(const MachineTables& tables, const ForeignCodeOptions& options) {
  const Json identification = Identify(tables);
  const SocInfo record = BuildChipRecord(identification.at("chipId"));
  const LibraryReport library = ReportOnLibrary(options.library, options.seconds);
  const ImportReport watched =
      record.isKnownChip ? ImportReport{"notNeeded"}
                         : ReportOnImport(ProviderCandidates(ServiceUtilsOnly, library.directory),
                                          false, options.seconds);
  const std::vector<Expected> rows = expectedAnswers(record, watched);
  Json document =
      makeDocument(RunInfo(library.description), chipOf(record, identification), watched);
  document["scalarQueriesFail"] = scalarQueriesFail(rows, library.answers);
  for (const Json* findings : {&library.findings, &watched.findings}) {
    document["findings"].insert(document["findings"].end(), findings->begin(), findings->end());
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    Json row = rowOf(rows[i]);
    addAnswer(library.answers[i], StateOf(watched.state), row, document["disagreements"]);
    document["capabilities"].push_back(row);
  }
  return document;
}

Json Inspect(const MachineTables& tables) {
  const Json identification = Identify(tables);
  const SocInfo record = BuildChipRecord(identification.at("chipId"));
  const ImportReport watched{record.isKnownChip ? "notNeeded" : "notAsked"};
  Json document = makeDocument(nullptr, chipOf(record, identification), watched);
  if (record.isKnownChip) {
    document["scalarQueriesFail"] = false;
  }
  for (const Expected& expected : expectedAnswers(record, watched)) {
    document["capabilities"].push_back(rowOf(expected));
  }
  return document;
}
