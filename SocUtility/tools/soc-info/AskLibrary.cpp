#include <algorithm>
#include <cstring>
#include <filesystem>
#include <vector>

#include "Capabilities.h"
#include "ChildJobs.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "DynamicSocInfo/import/KeyImport.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/SystemInfoImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "LoadOutcome.h"
#include "Paths.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

/// The version of the package that a library belongs to; null when its file does not have one.
#ifdef _WIN32
Json packageVersion(void* library, const fs::path& /*path*/) {
  auto* const module = static_cast<HMODULE>(library);
  const HRSRC resource = FindResourceA(module, MAKEINTRESOURCEA(VS_VERSION_INFO), RT_VERSION);
  // Two lengths, a type, the wide name "VS_VERSION_INFO" and padding.
  constexpr DWORD HEADER_SIZE = 40;
  VS_FIXEDFILEINFO info{};
  if (resource == nullptr || SizeofResource(module, resource) < HEADER_SIZE + sizeof info) {
    return nullptr;
  }
  const void* const bytes = LockResource(LoadResource(module, resource));
  std::memcpy(&info, static_cast<const char*>(bytes) + HEADER_SIZE, sizeof info);
  return std::to_string(HIWORD(info.dwProductVersionMS)) + '.' +
         std::to_string(LOWORD(info.dwProductVersionMS)) + '.' +
         std::to_string(HIWORD(info.dwProductVersionLS));
}
#else
Json packageVersion(void* /*library*/, const fs::path& path) {
  // Programs load a link. The name of the file behind it ends with the whole version.
  constexpr std::string_view PREFIX = "libZynSystemInfo.so.";
  std::error_code ignored;
  const std::string file = fs::canonical(path, ignored).filename().string();
  const std::string version = file.starts_with(PREFIX) ? file.substr(PREFIX.size()) : "";
  const bool isWhole = std::ranges::count(version, '.') == 2 &&
                       version.find_first_not_of("0123456789.") == std::string::npos;
  return isWhole ? Json(version) : Json(nullptr);
}
#endif

/// What the library says of itself.
Json describe(const ProviderLoader& library) {
  const fs::path path = ModulePath(library.handle);
  // As the library learns it. A library whose path is too long for it does not search its folder.
  std::string ownPath;
  dlModulePath(reinterpret_cast<const void*>(library.getApiVersion), ownPath);
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  library.getApiVersion(&major, &minor);
  return {
      {"description",
       {{"version", packageVersion(library.handle, path)},
        {"interface", std::to_string(major) + '.' + std::to_string(minor)},
        {"path", PathText(path)}}},
      {"directory", ownPath.empty() ? "" : fs::path(ownPath).parent_path().generic_string() + '/'}};
}

std::uint32_t statusOf(Soc_GetCapabilityFn* query, const CapabilityId& id,
                       std::vector<std::uint8_t>& buffer) {
  buffer.resize(4096);
  std::uint64_t size = buffer.size();
  return AskOnce(query, id.component, id.key, buffer.data(), &size);
}

/// One of `LibraryReport::answers`. `field` is that of `record`, in its entry.
template <class T>
Json answerOf(ProviderLoader& library, const SocInfo& record, const CapabilityId& id, auto& entry,
              T& field) {
  std::vector<std::uint8_t> buffer;
  const std::uint32_t status =
      statusOf(IS_LIST<T> ? library.getCapabilitySerialized : library.getCapability, id, buffer);
  if (status != SUCCESS && status != INSUFFICIENT_SIZE) {
    return {{"status", status}, {"value", nullptr}, {"malformed", nullptr}};
  }
  // The core's readers let the buffer grow and check the answer's form, but give no status.
  std::string failure = "not a " + std::string(CapabilityOf(record, id).type);
  bool isRead = false;
  if constexpr (IS_LIST<T>) {
    isRead = ImportSerializedList(library, id.key, field, buffer);
  } else {
    isRead = TryImportKey(library, id.key, entry, &failure);
  }
  if (isRead) {
    return {{"status", SUCCESS}, {"value", CapabilityOf(record, id).value}, {"malformed", nullptr}};
  }
  return {{"status", status}, {"value", nullptr}, {"malformed", failure}};
}

void askEach(ProviderLoader& library, const std::string& file, JobReport& report) {
  const int from = report.Job().at("from");
  const int end = report.Job().at("end");
  int index = 0;
  SocInfo record = BuildChipRecord(NO_CHIP_ID);
  VisitCapabilities(record, [&](const CapabilityId& id, auto& entry, auto& field) {
    if (index >= from && index < end) {
      report.Begin({file, CapabilityName(id), index});
      Json answer = answerOf(library, record, id, entry, field);
      answer["index"] = index;
      report.Write({{"answer", answer}});
    }
    ++index;
  });
}

}  // namespace

void AskLibrary(JobReport& report) {
  const std::string file = report.Job().at("file");
  ProviderLoader library;
  if (!LoadFile(library, PathOf(file), SYSTEM_INFO_LIBRARY)) {
    report.Write({{"refused", OutcomeOfFailedLoad(PathOf(file)).reason}});
    return;
  }
  if (const std::string reason = WhyRejected(library, PathOf(file)); !reason.empty()) {
    report.Write({{"refused", reason}});
    return;
  }
  report.Write(describe(library));
  report.Begin({file, FIRST_QUERY});
  std::vector<std::uint8_t> buffer;
  statusOf(library.getCapability, {DSP, 1}, buffer);
  askEach(library, file, report);
  report.Begin({file, "unload"});
}
