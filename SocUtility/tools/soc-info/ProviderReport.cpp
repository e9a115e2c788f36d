#include "ProviderReport.h"

#include <algorithm>

#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"

namespace {

/// All keys that the field of `key` answers.
template <class Record>
void addAnswered(std::set<CapabilityKey>& answered, std::uint32_t key) {
  constexpr const auto& FIELDS = KeyTable<Record>::FIELDS;
  for (std::uint32_t alias = 0; alias < FIELDS.size(); ++alias) {
    if (FIELDS[alias] == FIELDS[key]) {
      answered.insert({KeyTable<Record>::COMPONENT, alias});
    }
  }
}

void addOutcome(ProviderReport& report, const AskedKey& asked) {
  if (!asked.answered) {
    if (asked.required) {
      report.document["missing"].push_back(KeyText({asked.component, asked.key}));
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

void load(ProviderLoader& provider, const std::string& directory, Json& lookedFor) {
  for (const auto& [path, name] : ProviderCandidates(ServiceUtilsOnly, directory)) {
    lookedFor.push_back(path);
    if (provider.Load(path, name)) {
      return;
    }
  }
}

}  // namespace

ProviderReport NoAttempt(std::string_view state) {
  return {{{"state", state},
           {"library", nullptr},
           {"lookedFor", Json::array()},
           {"reason", nullptr},
           {"missing", Json::array()}},
          {}};
}

ProviderReport AttemptProvider(SocInfo& record, const std::string& directory) {
  ProviderReport report = NoAttempt("notFound");
  const auto end = [&](std::string_view state, std::string_view reason) {
    report.document["state"] = state;
    report.document["reason"] = TextOrNull(reason);
    return report;
  };
  ProviderLoader provider;
  load(provider, directory, report.document["lookedFor"]);
  if (provider.handle == nullptr) {
    return end("notFound", dlError());
  }
  report.document["library"] =
      TextOrNull(ModulePath(reinterpret_cast<const void*>(provider.getApiVersion)));
  if (const std::string_view reason = WhyRejected(provider); !reason.empty()) {
    return end("rejected", reason);
  }
  try {
    const bool counts = ImportProviderCapabilities(
        provider, record, [&](const AskedKey& asked) { addOutcome(report, asked); });
    return counts ? end("imported", "") : end("incomplete", "required keys missing");
  } catch (...) {
    // What a provider lets out may be of a type of its own, which is gone once it is unloaded.
    return end("failed", "an exception ended the import");
  }
}

std::string_view WhyRejected(const ProviderLoader& provider) {
  if (IsAcceptedProvider(provider)) {
    return {};
  }
  return provider.getApiVersion == nullptr ? "it lacks the export Soc_GetAPIVersion"
                                           : "it lacks the export Soc_GetCapability";
}

std::string ModulePath(const void* address) {
  std::string path;
  if (address != nullptr) {
    dlModulePath(address, path);
  }
  std::ranges::replace(path, '\\', '/');
  return path;
}
