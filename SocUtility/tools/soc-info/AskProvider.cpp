#include "AskProvider.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "Capabilities.h"
#include "ChildProcess.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "Output.h"
#include "ProviderReport.h"
#include "platform/WindowsApi.h"

namespace {

void tell(std::FILE* parent, const Json& object) {
  const std::string line = object.dump(-1, ' ', true, Json::error_handler_t::replace) + '\n';
  if (std::fwrite(line.data(), 1, line.size(), parent) != line.size() || std::fflush(parent) != 0) {
    throw std::runtime_error("the parent process cannot be written to");
  }
}

/// What the provider was called for one key: how often, and the latest call. The function pointer
/// that calls it carries no state, so this is global.
struct Recording {
  Soc_GetCapabilityFn* provider = nullptr;
  std::uint64_t calls = 0;
  std::uint32_t status = 0;
  std::uint64_t offered = 0;   ///< The buffer's size in bytes.
  std::uint64_t reported = 0;  ///< What the provider left in the size; `offered` if it threw.
  std::vector<std::uint8_t> bytes;
  std::optional<std::string> thrown;  ///< The text of the `std::runtime_error` it threw.
} recording;

/// An exception that ends an import came out of the provider. Of this program's own type and with a
/// copy of the text, as both must outlive the provider.
struct ImportEnded : std::exception {
  explicit ImportEnded(Json textOrNull) : text(std::move(textOrNull)) {}

  Json text;
};

std::uint32_t callAndRecord(std::uint64_t component, std::uint64_t key, void* buffer,
                            std::uint64_t* size) {
  ++recording.calls;
  // Nothing of an earlier call may stand beside this one's size if there is no answer.
  recording.offered = *size;
  recording.reported = *size;
  recording.status = FAILURE;
  recording.bytes.clear();
  recording.thrown.reset();
  try {
    recording.status = recording.provider(component, key, buffer, size);
  } catch (const std::runtime_error& error) {
    recording.thrown = error.what();
    throw;  // to the import, which takes it for a failed call
  } catch (const std::exception& error) {
    throw ImportEnded(error.what());
  } catch (...) {
    throw ImportEnded(nullptr);
  }
  recording.reported = *size;
  const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
  recording.bytes.assign(bytes, bytes + std::min(recording.offered, recording.reported));
  return recording.status;
}

/// Answers as the latest call was answered, once as much is offered as then.
std::uint32_t repeatRecorded(std::uint64_t /*component*/, std::uint64_t /*key*/, void* buffer,
                             std::uint64_t* size) {
  if (*size < recording.offered) {
    *size = recording.offered;
    return INSUFFICIENT_SIZE;
  }
  const std::uint64_t length = std::min<std::uint64_t>(*size, recording.bytes.size());
  std::copy_n(recording.bytes.data(), length, static_cast<std::uint8_t*>(buffer));
  *size = recording.reported;
  return recording.status;
}

/// The message with which the recorded call failed, which the import does not learn.
template <class Record>
std::string failureMessage(std::uint32_t key) {
  constexpr std::uint32_t COMPONENT = KeyTable<Record>::COMPONENT;
  if (recording.thrown) {
    return "it threw a std::runtime_error, " + Quoted(*recording.thrown);
  }
  ProviderLoader repeat;
  repeat.getCapability = &repeatRecorded;
  try {
    visitField<Record>(
        key,
        [&]<class T>(T Record::*) {
          if constexpr (std::is_same_v<T, std::string>) {
            ReadCapabilityString(repeat, COMPONENT, key);
          } else if constexpr (IS_LIST<T>) {
            ReadU64Vector(repeat, COMPONENT, key);
          } else {
            GetCapabilityBytes(
                repeat, COMPONENT, key,
                sizeof(std::conditional_t<std::is_same_v<T, float>, float, std::uint64_t>));
          }
        },
        [] {});
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "Result buffer size mismatch";  // all that a number's bytes can still be refused for
}

/// Asks the keys of one component, whose entry of a record `entryOf` returns.
template <class Record>
void askComponent(std::FILE* parent, ProviderLoader& provider, const ImportKeys& keys,
                  Record& (*entryOf)(SocInfo&)) {
  const std::string component(ComponentName(KeyTable<Record>::COMPONENT));
  const auto ask = [&](std::uint32_t key, bool required) {
    tell(parent, {{"step", component + ' ' + std::to_string(key)}});
    recording.calls = 0;
    SocInfo record = BuildChipRecord(NO_CHIP_ID);
    const bool answered = TryImportKey(provider, key, entryOf(record));
    const std::vector<CapabilityRow> rows = CapabilitiesOf(record, {});
    const auto row = std::ranges::find_if(rows, [&](const CapabilityRow& candidate) {
      return candidate.component == component && candidate.key == key;
    });
    tell(parent, {{"component", component},
                  {"key", key},
                  {"required", required},
                  {"type", row->type},
                  {"answered", answered},
                  {"value", answered ? row->value : Json(nullptr)},
                  {"message", answered ? Json(nullptr) : Json(failureMessage<Record>(key))},
                  {"calls", recording.calls},
                  {"status", recording.thrown ? Json(nullptr) : Json(recording.status)},
                  {"offered", recording.offered},
                  {"reported", recording.reported}});
  };
  std::ranges::for_each(keys.required, [&](std::uint8_t key) { ask(key, true); });
  std::ranges::for_each(keys.optional, [&](std::uint8_t key) { ask(key, false); });
}

void askEverything(std::FILE* parent, ProviderLoader& provider) {
  recording.provider = std::exchange(provider.getCapability, &callAndRecord);
  askComponent<DspInfo>(parent, provider, DSP_IMPORT_KEYS,
                        [](SocInfo& record) -> DspInfo& { return record.dsps.front(); });
  askComponent<CpuInfo>(parent, provider, CPU_IMPORT_KEYS,
                        [](SocInfo& record) -> CpuInfo& { return record.cpu; });
  askComponent<GpuInfo>(parent, provider, GPU_IMPORT_KEYS,
                        [](SocInfo& record) -> GpuInfo& { return record.gpus.front(); });
}

}  // namespace

void AskProvider(const std::string& file) {
  std::FILE* const parent = OpenStreamToParent();
  const std::filesystem::path path(file);
  {
    ProviderLoader provider;
    tell(parent, {{"step", "load"}});
    if (!provider.Load(path.parent_path().string(), path.filename().string())) {
      const std::string code = std::to_string(GetLastError());
      tell(parent, {{"loadError", std::string(dlError()) + ", error " + code}});
      return;
    }
    provider.libraryName = SERVICE_UTILS_LIBRARY;  // a build may be checked before it is named so
    const std::string_view rejection = WhyRejected(provider);
    tell(parent, {{"rejection", rejection.empty() ? Json(nullptr) : Json(rejection)}});
    if (rejection.empty()) {
      try {
        askEverything(parent, provider);
      } catch (const ImportEnded& ended) {
        tell(parent, {{"exception", ended.text}});
      }
    }
    tell(parent, {{"step", "unload"}});
  }
  tell(parent, {{"step", "exit"}});
}
