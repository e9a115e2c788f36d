#include <algorithm>
#include <iterator>
#include <ostream>

#include "Capabilities.h"
#include "Commands.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "ForeignCode.h"
#include "ImportStates.h"
#include "RunInfo.h"

namespace {

constexpr int MOST_DISAGREEMENTS = 5;

std::string joined(const Json& texts) {
  std::string line;
  for (const Json& text : texts) {
    line += (line.empty() ? "" : ", ") + Text(text);
  }
  return line;
}

/// A library of another build explains all that follows.
void writeVersions(std::ostream& out, const Json& run) {
  const Json version = run.is_null() ? Json(nullptr) : run.at("library").at("version");
  if (!version.is_null() && version != run.at("tool").at("version")) {
    WriteLine(out, "versions",
              "differ: the library's is " + Text(version) + ", soc-info's is " +
                  Text(run.at("tool").at("version")));
  }
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

void writeLookedFor(std::ostream& out, const Json& candidates) {
  const char* verb = "looked for ";
  for (const Json& candidate : candidates) {
    const std::string path = Text(candidate.at("path"));
    const bool isBare = path.find('/') == std::string::npos;
    const Json& reason = candidate.at("reason");
    WriteLine(out, "",
              verb + Quoted(path) + (isBare ? " on the library search path" : "") + ": " +
                  (reason.is_null() ? Text(candidate.at("state")) : Text(reason)));
    verb = "then for ";
  }
}

void writeProvider(std::ostream& out, const Json& provider) {
  const ImportState& state = StateOf(Text(provider.at("state")));
  const Json& library = provider.at("library");
  const std::string detail = provider.at("reason").is_null() ? joined(provider.at("missing"))
                                                             : Text(provider.at("reason"));
  WriteLine(out, "provider",
            std::string(state.providerText) + (state.state == "stopped" ? "" : detail));
  library.is_null() ? writeLookedFor(out, provider.at("lookedFor"))
                    : WriteLine(out, "", Quoted(Text(library)));
  if (state.checkShowsMore && !library.is_null()) {
    WriteLine(out, "", "soc-info check-provider " + Quoted(Text(library)) + " shows its answers");
  }
}

/// What a program sees of foreign code that ends its process. The watched import names the key, if
/// it ended as well.
void writeProgram(std::ostream& out, const Json& document) {
  const Json& library = document.at("run").at("library").at("path");
  const Json* inLibrary = nullptr;
  const Json* inProvider = nullptr;
  for (const Json& finding : document.at("findings")) {
    const Json*& first = finding.at("library") == library ? inLibrary : inProvider;
    first = first == nullptr && EndsProcess(finding) ? &finding : first;
  }
  if (inLibrary != nullptr) {
    const Json& cause = inProvider == nullptr ? *inLibrary : *inProvider;
    const Json& what = inLibrary->at("what");
    WriteLine(out, "program",
              std::string("a program that asks this library ") +
                  (what == "crash"  ? "crashes"
                   : what == "hang" ? "hangs"
                                    : "is ended") +
                  " at " + Text(cause.at("at")) + ", in " + Quoted(Text(cause.at("library"))));
  }
}

void writeNotes(std::ostream& out, const Json& document) {
  const Json& state = document.at("provider").at("state");
  if (state == "exception") {
    WriteLine(out, "note", "every query fails with 25, and each call makes the attempt again");
  } else if (state == "notAsked") {
    WriteLine(out, "program",
              "without a provider there: the first call of Soc_GetCapability answers as");
    WriteLine(out, "", "below, all later ones fail with 25; the lists answer as below");
    WriteLine(out, "", "with one: the provider's answers, and as below what it is not asked");
  } else if (document.at("scalarQueriesFail") == true) {
    WriteLine(out, "note",
              "the first call of Soc_GetCapability still answers, all later ones fail");
    WriteLine(out, "", "with 25; Soc_GetCapabilitySerialized always answers");
  }
}

void writeDisagreements(std::ostream& out, const Json& disagreements) {
  const auto answerText = [](const Json& answer) {
    return answer.at("status") == SUCCESS ? Compact(answer.at("value"))
                                          : "status " + Text(answer.at("status"));
  };
  int left = MOST_DISAGREEMENTS;
  for (const Json& difference : disagreements) {
    if (left-- == 0) {
      WriteLine(out, "",
                "and " + std::to_string(disagreements.size() - MOST_DISAGREEMENTS) +
                    " more, which --json lists");
      return;
    }
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
  const Json& status = row.at("status");
  return status.is_null()    ? "no answer"
         : status == SUCCESS ? "malformed"
                             : "status " + Text(status);
}

}  // namespace

void WriteInspection(std::ostream& out, const Json& document) {
  const Json& chip = document.at("chip");
  const bool isKnown = chip.at("known") == true;
  const ImportState& state = StateOf(Text(document.at("provider").at("state")));
  writeVersions(out, document.at("run"));
  WriteLine(out, "chip", chipText(chip));
  WriteLine(out, "identifier", identifierText(chip));
  WriteLine(out, "answers",
            std::string(state.answersText) +
                (isKnown ? Text(chip.at("model")) + "; no provider is consulted" : ""));
  if (!document.at("findings").empty()) {
    writeProgram(out, document);
    WriteFindings(out, document.at("findings"));
  }
  if (!isKnown) {
    writeProvider(out, document.at("provider"));
  }
  writeNotes(out, document);
  writeDisagreements(out, document.at("disagreements"));
  WriteRunInfo(out, document);
  out << '\n';
  std::vector<std::vector<std::string>> rows = {{"component", "key", "type", "value", "source"}};
  for (const Json& row : document.at("capabilities")) {
    rows.push_back({Text(row.at("component")), Text(row.at("key")), Text(row.at("type")),
                    rowText(row), Text(row.at("source"))});
  }
  WriteTable(out, rows);
}
