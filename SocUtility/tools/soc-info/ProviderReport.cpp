#include "ProviderReport.h"

#include "Capabilities.h"
#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "RunInfo.h"

namespace {

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
  const auto addOutcome = [&](const AskedKey& asked) {
    const CapabilityId id{asked.component, asked.key};
    if (asked.answered) {
      report.answered.insert(CapabilityOf(record, id).field);
    } else if (asked.required) {
      report.document["missing"].push_back(CapabilityName(id));
    }
  };
  try {
    return ImportProviderCapabilities(provider, record, addOutcome)
               ? end("imported", "")
               : end("incomplete", "required keys missing");
  } catch (...) {
    // What a provider lets out may be of a type of its own, which is gone once it is unloaded.
    return end("failed", "an exception ended the import");
  }
}

std::string_view WhyRejected(const ProviderLoader& library) {
  if (IsAcceptedProvider(library)) {
    return {};
  }
  if (library.getApiVersion == nullptr) {
    return "it lacks the export Soc_GetAPIVersion";
  }
  return library.getCapability == nullptr ? "it lacks the export Soc_GetCapability"
                                          : "it lacks the export Soc_GetCapabilitySerialized";
}
