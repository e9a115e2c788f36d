#include "AskProvider.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <thread>

#include "Capabilities.h"
#include "ChildProcess.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "Output.h"
#include "ProviderReport.h"
#include "ZynSystemInfo.h"
#include "platform/WindowsApi.h"

namespace {

using Clock = std::chrono::steady_clock;

// The provider is called through a plain function, so what that needs is global.
std::FILE* parent = nullptr;
Clock::duration stepLimit{};
std::atomic<Clock::time_point> stepEnd;

void write(const Json& object) {
  const std::string line = Compact(object) + '\n';
  if (std::fwrite(line.data(), 1, line.size(), parent) != line.size()) {
    throw std::runtime_error("the parent process cannot be written to");
  }
}

void beginStep(const std::string& step) {
  stepEnd = Clock::now() + stepLimit;
  write({{"stopped", {{"at", step}, {"how", "crash"}, {"detail", nullptr}}}});
}

/// A thread of its own. When a step is late it neither allocates nor locks: the provider may hang
/// with any lock held.
void endLateStep() {
  while (Clock::now() < stepEnd.load()) {
    std::this_thread::sleep_until(stepEnd.load());
  }
  constexpr std::string_view LINE = "{\"stopped\":{\"how\":\"hang\"}}\n";
  (void)std::fwrite(LINE.data(), 1, LINE.size(), parent);
  EndAtOnce();
}

/// The calls made for one key, and what the latest of them did.
struct Calls {
  CapabilityId id{};
  std::uint64_t count = 0;
  std::uint32_t status = 0;
  std::uint64_t offered = 0;   ///< The buffer's size in bytes.
  std::uint64_t reported = 0;  ///< What the provider left in the size; `offered` if it threw.
  bool threw = false;          ///< A `std::runtime_error`, which fails the key.
} calls;

Soc_GetCapabilityFn* provider = nullptr;

std::uint32_t callAndRecord(std::uint64_t component, std::uint64_t key, void* buffer,
                            std::uint64_t* size) {
  const CapabilityId asked{static_cast<std::uint32_t>(component), static_cast<std::uint32_t>(key)};
  if (asked != calls.id) {
    calls = {.id = asked};
    beginStep(CapabilityName(asked));
  }
  ++calls.count;
  calls.offered = *size;
  calls.reported = *size;
  try {
    calls.status = provider(component, key, buffer, size);
  } catch (const std::runtime_error&) {
    calls.threw = true;
    throw;
  }
  calls.reported = *size;
  return calls.status;
}

Json messageOf(const AskedKey& asked) {
  if (asked.answered) {
    return nullptr;
  }
  return calls.threw ? "it threw a std::runtime_error, " + Quoted(asked.failure) : asked.failure;
}

void import(ProviderLoader& loader) {
  provider = loader.getCapability;
  loader.getCapability = &callAndRecord;
  SocInfo record = BuildChipRecord(NO_CHIP_ID);
  const bool counts = ImportProviderCapabilities(loader, record, [&](const AskedKey& asked) {
    const Capability capability = CapabilityOf(record, {asked.component, asked.key});
    write({{"asked",
            {{"component", ComponentName(asked.component)},
             {"key", asked.key},
             {"required", asked.required},
             {"type", capability.type},
             {"answered", asked.answered},
             {"value", asked.answered ? capability.value : Json(nullptr)},
             {"message", messageOf(asked)},
             {"calls", calls.count},
             {"status", calls.threw ? Json(nullptr) : Json(calls.status)},
             {"offered", calls.offered},
             {"reported", calls.reported}}}});
  });
  write({{"importCounts", counts}});
}

}  // namespace

void AskProvider(const std::string& file, double seconds, int descriptor) {
  parent = OpenStreamToParent(descriptor);
  stepLimit = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  {
    ProviderLoader loader;
    beginStep("load");
    std::thread(endLateStep).detach();
    // A build may be checked before it has the name that the library looks for.
    if (!loader.Load(file, SERVICE_UTILS_LIBRARY)) {
      const std::string code = std::to_string(GetLastError());
      write({{"loadError", std::string(dlError()) + ", error " + code}});
      return;
    }
    const std::string_view rejection = WhyRejected(loader);
    write({{"accepted", rejection.empty()}, {"reason", TextOrNull(rejection)}});
    if (rejection.empty()) {
      // The exception is the provider's: only its text may outlive the handler.
      const auto writeException = [](const Json& text) {
        write({{"exception", {{"at", CapabilityName(calls.id)}, {"text", text}}}});
      };
      try {
        import(loader);
      } catch (const std::exception& error) {
        writeException(error.what());
      } catch (...) {
        writeException(nullptr);
      }
    }
    beginStep("unload");
  }
  beginStep("exit");
}
