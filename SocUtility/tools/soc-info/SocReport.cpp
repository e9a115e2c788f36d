#include "SocReport.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <ranges>

#include "Capabilities.h"

namespace {

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
  std::string line;
  for (const std::string& text : texts) {
    line += (line.empty() ? std::string_view() : separator);
    line += text;
  }
  return line;
}

std::vector<std::string> missingTexts(const ProviderReport& provider) {
  std::vector<std::string> texts(provider.missing.size());
  std::ranges::transform(provider.missing, texts.begin(), KeyText);
  return texts;
}

std::string chipText(const SocInfo& record) {
  std::vector<std::string> others(record.nameSet.begin(), record.nameSet.end());
  std::erase(others, record.name);
  return others.empty() ? record.name : record.name + ", also " + joined(others, ", ");
}

std::string identifierText(const IdentifyReport& report) {
  if (report.steps.chipId == NO_CHIP_ID) {
    return "none: " + WhyNotIdentified(report);
  }
  const std::string text = std::to_string(report.steps.chipId);
  return report.record.isKnownChip ? text : text + ", for which the catalogue has no row";
}

std::string answersText(const SocReport& report) {
  if (report.identify.record.isKnownChip) {
    return "catalogue row " + std::to_string(report.identify.record.socModel) +
           "; no provider is consulted";
  }
  switch (report.provider.state) {
    case ProviderState::IMPORTED:
      return "provider, over the unknown row";
    case ProviderState::INCOMPLETE:
      return "unknown row, with what the provider did answer";
    case ProviderState::FAILED:
      return "none: every query fails";
    default:
      return "unknown row";
  }
}

void writeProvider(std::ostream& out, const ProviderReport& provider) {
  const auto writeLookedFor = [&] {
    const char* verb = "looked for ";
    for (const std::string& name : provider.lookedFor) {
      const bool bare = name.find('/') == std::string::npos;
      WriteLine(out, "", verb + Quoted(name) + (bare ? " on the library search path" : ""));
      verb = "then for ";
    }
  };
  const auto writeHint = [&] {
    WriteLine(out, "", "soc-info check-provider FILE tells what such a library answers");
  };
  const std::string library = provider.library.empty() ? "" : Quoted(provider.library);

  switch (provider.state) {
    case ProviderState::NOT_NEEDED:
      return;
    case ProviderState::NOT_ASKED:
      WriteLine(out, "provider", "not asked: the tables are another machine's");
      return;
    case ProviderState::NOT_FOUND:
      WriteLine(out, "provider", "not found: " + provider.reason);
      writeLookedFor();
      break;
    case ProviderState::REJECTED:
      WriteLine(out, "provider", "found but rejected: " + provider.reason);
      library.empty() ? writeLookedFor() : WriteLine(out, "", library);
      writeHint();
      break;
    case ProviderState::INCOMPLETE:
      WriteLine(out, "provider",
                "found but required keys missing: " + joined(missingTexts(provider), ", "));
      WriteLine(out, "", library);
      writeHint();
      break;
    case ProviderState::FAILED:
      WriteLine(out, "provider", "found but failing: " + provider.reason);
      WriteLine(out, "", library);
      writeHint();
      WriteLine(out, "note",
                "both queries answer FAILURE (25), and each call makes the attempt anew");
      return;
    case ProviderState::IMPORTED:
      WriteLine(out, "provider", library);
      return;
  }
  WriteLine(out, "note", "Soc_GetCapability answers its first call from these values and all");
  WriteLine(out, "", "later ones with FAILURE (25); Soc_GetCapabilitySerialized always answers");
}

void writeTable(std::ostream& out, const Json& rows) {
  // A longer value pushes its own source aside, not everyone's.
  constexpr std::size_t WIDEST = 32;
  std::size_t width = 0;
  for (const Json& row : rows) {
    width = std::max(width, std::min(ValueText(row).size(), WIDEST));
  }
  const auto writeRow = [&](std::string_view component, std::string_view key, std::string_view type,
                            std::string_view value, std::string_view source) {
    out << std::left << std::setw(11) << component << std::right << std::setw(3) << key << "  "
        << std::left << std::setw(19) << type << std::setw(static_cast<int>(width)) << value << "  "
        << source << '\n';
  };
  writeRow("component", "key", "type", "value", "source");
  for (const Json& row : rows) {
    writeRow(row.at("component").get<std::string>(), row.at("key").dump(),
             row.at("type").get<std::string>(), ValueText(row),
             row.at("source").get<std::string>());
  }
}

/// An object for each capability.
Json capabilitiesOf(const SocReport& report) {
  const auto sourceOf = [&](const CapabilityKey& key) -> std::string_view {
    if (report.identify.record.isKnownChip) {
      return "catalogue";
    }
    return report.provider.answered.contains(key) ? "provider" : "default";
  };
  Json rows = Json::array();
  for (const Capability& capability : CapabilitiesOf(report.identify.record)) {
    rows.push_back({{"component", ComponentName(capability.id.component)},
                    {"key", capability.id.key},
                    {"type", capability.type},
                    {"value", capability.value},
                    {"source", sourceOf(capability.id)}});
  }
  return rows;
}

SocReport inspect(const MachineTables& tables) {
  SocReport report{.identify = Identify(tables), .provider = {}};
  if (report.identify.record.isKnownChip) {
    report.provider.state = ProviderState::NOT_NEEDED;
  }
  return report;
}

Json answersFrom(const SocReport& report) {
  if (report.identify.record.isKnownChip) {
    return "catalogue";
  }
  if (report.provider.state == ProviderState::FAILED) {
    return nullptr;
  }
  return report.provider.state == ProviderState::IMPORTED ? "provider" : "unknownRow";
}

}  // namespace

SocReport InspectThisMachine() {
  SocReport report = inspect(ReadThisMachine());
  if (!report.identify.record.isKnownChip) {
    report.provider = AttemptProvider(report.identify.record);
  }
  return report;
}

SocReport InspectTables(const MachineTables& tables) { return inspect(tables); }

void WriteText(std::ostream& out, const SocReport& report) {
  WriteLine(out, "chip", chipText(report.identify.record));
  WriteLine(out, "identifier", identifierText(report.identify));
  WriteLine(out, "answers", answersText(report));
  writeProvider(out, report.provider);
  out << '\n';
  writeTable(out, capabilitiesOf(report));
}

Json ToJson(const SocReport& report) {
  const SocInfo& record = report.identify.record;
  const ProviderReport& provider = report.provider;
  Json document = {{"schemaVersion", 1},
                   {"chip",
                    {{"name", record.name},
                     {"names", record.nameSet},
                     {"model", record.socModel},
                     {"chipId", report.identify.steps.chipId},
                     {"known", record.isKnownChip}}},
                   {"answersFrom", answersFrom(report)},
                   {"provider",
                    {{"state", StateName(provider.state)},
                     {"library", TextOrNull(provider.library)},
                     {"lookedFor", provider.lookedFor},
                     {"reason", TextOrNull(provider.reason)},
                     {"missing", missingTexts(provider)}}},
                   {"scalarQueriesFail", LeavesQueriesFailing(provider.state)}};
  if (provider.state == ProviderState::NOT_ASKED) {
    document["scalarQueriesFail"] = nullptr;
  }
  document["capabilities"] = capabilitiesOf(report);
  return document;
}
