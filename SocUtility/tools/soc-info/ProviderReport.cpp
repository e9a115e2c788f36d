#include "ProviderReport.h"

#include <algorithm>

#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"

namespace {

/// The path of the module that contains `address`, with forward slashes, or empty.
template <class Function>
std::string modulePathOf(Function* address) {
  std::string path;
  dlModulePath(reinterpret_cast<const void*>(address), path);
  std::ranges::replace(path, '\\', '/');
  return path;
}

std::string lastLoaderError() {
  const char* const message = dlError();
  return message != nullptr ? message : "";
}

/// All keys that the field of `key` answers.
template <class Record>
void addAnswered(std::set<CapabilityKey>& answered, std::uint32_t key) {
  constexpr const auto& fields = KeyTable<Record>::FIELDS;
  for (std::uint32_t alias = 0; alias < fields.size(); ++alias) {
    if (fields[alias] == fields[key]) {
      answered.insert({KeyTable<Record>::COMPONENT, alias});
    }
  }
}

void addOutcome(ProviderReport& report, const AskedKey& asked) {
  if (!asked.answered) {
    if (asked.required) {
      report.missing.push_back({asked.component, asked.key});
    }
    return;
  }
  switch (asked.component) {
    case DSP:
      return addAnswered<DspInfo>(report.answered, asked.key);
    case GPU:
      return addAnswered<GpuInfo>(report.answered, asked.key);
    default:
      return addAnswered<CpuInfo>(report.answered, asked.key);
  }
}

}  // namespace

ProviderReport AttemptProvider(SocInfo& record) {
  ProviderReport report;
  for (const ProviderCandidate& candidate : ProviderCandidates(ServiceUtilsOnly, OwnDirectory())) {
    report.lookedFor.push_back(candidate.path);
  }
  ProviderLoader provider(ServiceUtilsOnly);
  if (provider.handle == nullptr) {
    report.state = ProviderState::NOT_FOUND;
    report.reason = lastLoaderError();
    return report;
  }
  if (provider.getApiVersion != nullptr) {
    report.library = modulePathOf(provider.getApiVersion);
  }
  report.reason = WhyRejected(provider);
  if (!report.reason.empty()) {
    report.state = ProviderState::REJECTED;
    return report;
  }

  bool counts = false;
  try {
    counts = ImportProviderCapabilities(provider, record,
                                        [&](const AskedKey& asked) { addOutcome(report, asked); });
  } catch (...) {
    // What a provider lets out may be of a type of its own, which is gone once it is unloaded.
    report.state = ProviderState::FAILED;
    report.reason = "an exception ended the import";
    return report;
  }
  report.state = counts ? ProviderState::IMPORTED : ProviderState::INCOMPLETE;
  if (!counts) {
    report.reason = "required keys missing";
  }
  return report;
}

std::string_view WhyRejected(const ProviderLoader& provider) {
  if (IsAcceptedProvider(provider)) {
    return {};
  }
  return provider.getApiVersion == nullptr ? "it lacks the export Soc_GetAPIVersion"
                                           : "it lacks the export Soc_GetCapability";
}

std::string_view StateName(ProviderState state) {
  switch (state) {
    case ProviderState::NOT_NEEDED:
      return "notNeeded";
    case ProviderState::NOT_ASKED:
      return "notAsked";
    case ProviderState::NOT_FOUND:
      return "notFound";
    case ProviderState::REJECTED:
      return "rejected";
    case ProviderState::INCOMPLETE:
      return "incomplete";
    case ProviderState::FAILED:
      return "failed";
    case ProviderState::IMPORTED:
      break;
  }
  return "imported";
}
