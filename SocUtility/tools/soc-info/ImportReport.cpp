#include "ImportReport.h"

#include <algorithm>

#include "ForeignCode.h"

namespace {

/// Replaces what is known of a candidate.
void note(Json& lookedFor, const Json& candidate) {
  const auto same = std::ranges::find_if(
      lookedFor, [&](const Json& known) { return known.at("path") == candidate.at("path"); });
  same == lookedFor.end() ? lookedFor.push_back(candidate) : void(*same = candidate);
}

std::string_view stateOf(const ImportReport& watched) {
  const auto isAbsent = [](const Json& candidate) { return candidate.at("state") == "absent"; };
  const auto isException = [](const Json& finding) { return finding.at("what") == "exception"; };
  if (std::ranges::any_of(watched.findings, EndsProcess)) {
    return "stopped";
  }
  if (watched.library.is_null()) {
    return std::ranges::all_of(watched.lookedFor, isAbsent) ? "notFound" : "notLoaded";
  }
  if (!watched.reason.is_null()) {
    return "rejected";
  }
  if (std::ranges::any_of(watched.findings, isException)) {
    return "exception";
  }
  return watched.succeeds == true ? "succeeded" : "incomplete";
}

}  // namespace

ImportReport ReportOnImport(const std::vector<ProviderCandidate>& candidates, bool isCheck,
                            double seconds) {
  Json job = {{"file", candidates.front().path},
              {"candidates", Json::array()},
              {"from", 0},
              {"isCheck", isCheck}};
  for (const auto& [path, name] : candidates) {
    job["candidates"].push_back({{"path", path}, {"name", name}});
  }
  ImportReport watched;
  watched.findings = RunForeignCode(job, seconds, [&](const Json& object) {
    if (object.contains("candidate")) {
      note(watched.lookedFor, object.at("candidate"));
    } else if (object.contains("key")) {
      watched.keys.push_back(object.at("key"));
    } else if (object.contains("succeeds")) {
      watched.succeeds = object.at("succeeds");
    } else {
      watched.library = object.at("library");
      watched.reason = object.at("reason");
    }
  });
  watched.state = stateOf(watched);
  return watched;
}
