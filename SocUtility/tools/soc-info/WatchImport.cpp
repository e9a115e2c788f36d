#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

#include "ChildJobs.h"
#include "DynamicSocInfo/ProviderAttempt.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "GuardedBuffer.h"
#include "LoadOutcome.h"
#include "Paths.h"
#include "ProcessState.h"
#include "WatchedImport.h"

namespace fs = std::filesystem;

namespace {

/// Loads the first of the candidates that can be loaded, and returns its path; empty when none can.
std::string load(ProviderLoader& provider, JobReport& report) {
  const bool isCheck = report.Job().at("isCheck");
  for (const Json& candidate : report.Job().at("candidates")) {
    // A library searches with paths in the code page, as it gets them from the system.
    const std::string text = candidate.at("path");
    const fs::path path = isCheck ? PathOf(text) : fs::path(text);
    const auto addState = [&](const LoadOutcome& outcome) {
      report.Write({{"candidate",
                     {{"path", PathText(path)},
                      {"state", outcome.state},
                      {"reason", TextOrNull(outcome.reason)}}}});
    };
    report.Begin({PathText(path), "load"});
    const std::string name = candidate.at("name");
    if (isCheck ? LoadFile(provider, path, name) : provider.Load(text, name)) {
      addState({"loaded", ""});
      return PathText(ModulePath(provider.handle));
    }
    addState(OutcomeOfFailedLoad(path));
  }
  return {};
}

/// Loads a provider, imports from it, and unloads it. Returns its path; empty if none was loaded.
std::string importOnce(WatchedImport& watched, JobReport& report) {
  ProviderLoader provider;
  std::string library = load(provider, report);
  if (library.empty()) {
    return {};
  }
  const std::string rejection = WhyRejected(provider, PathOf(library));
  report.Write({{"library", library}, {"reason", TextOrNull(rejection)}});
  if (rejection.empty()) {
    report.Write({{"succeeds", watched.Run(provider, library)}});
  }
  report.Begin({library, "unload"});
  return library;
}

/// A second import. A program that uses both query functions also makes two.
void importAgain(WatchedImport& watched, const std::string& library, JobReport& report) {
  report.Begin({library, "second load"});
  ProviderLoader provider;
  if (LoadFile(provider, PathOf(library), SERVICE_UTILS_LIBRARY) && IsAcceptedProvider(provider)) {
    watched.Repeat(provider);
  }
  report.Begin({library, "second unload"});
}

}  // namespace

void WatchImport(JobReport& report) {
  WatchedImport watched(report);
  if (report.Job().at("isCheck") == false) {
    importOnce(watched, report);
    return;
  }
  WatchGuardedBuffers(nullptr);
  const std::set<std::uint64_t> threads = Threads();
  const FloatingPointState floatingPoint = ReadFloatingPointState();
  const std::string library = importOnce(watched, report);
  if (library.empty()) {
    return;
  }
  const Step after{library, "unload"};
  if (const std::string changes = ChangesOf(floatingPoint, ReadFloatingPointState());
      !changes.empty()) {
    report.AddFinding(Finding("float", after, "changed on the calling thread: " + changes));
  }
  if (const std::size_t count = CountThreadsSince(threads); count != 0) {
    report.AddFinding(Finding("threads", after, std::to_string(count) + " left running"));
  }
  if (IsLoaded(PathOf(library))) {
    constexpr bool FAILS = false;
    report.AddFinding(Finding("loaded", after, "it stays loaded", FAILS));
  }
  importAgain(watched, library, report);
}
