#include "InstalledLibrary.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <vector>

#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipData.h"
#include "DynamicSocInfo/import/KeyImport.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/import/SystemInfoImport.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "ProviderReport.h"
#include "RunInfo.h"
#include "platform/WindowsApi.h"

namespace fs = std::filesystem;

namespace {

std::string findLibrary() {
  const fs::path folder =
      fs::path(ModulePath(reinterpret_cast<const void*>(&findLibrary))).parent_path();
  const fs::path beside = folder / SOC_INFO_LIBRARY;
  const fs::path inPackage = (folder / SOC_INFO_TO_LIBRARIES / SOC_INFO_LIBRARY).lexically_normal();
  for (const fs::path& path : {beside, inPackage}) {
    std::error_code ignored;
    if (fs::exists(path, ignored)) {
      return path.string();
    }
  }
  throw InputError("no library: there is neither " + Quoted(beside.generic_string()) + " nor " +
                   Quoted(inPackage.generic_string()) + "; name one with --library FILE");
}

/// The version of the package that a library belongs to; null when its file does not have one.
#ifdef _WIN32
Json packageVersion(void* library, const std::string& /*path*/) {
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
Json packageVersion(void* /*library*/, const std::string& path) {
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

}  // namespace

InstalledLibrary::InstalledLibrary(const std::string& file)
    : path_(file.empty() ? findLibrary() : fs::absolute(file).string()) {
  if (!library_.Load(path_, SYSTEM_INFO_LIBRARY)) {
    throw InputError(fs::path(path_), dlError());
  }
  if (const std::string_view reason = WhyRejected(library_); !reason.empty()) {
    throw InputError(fs::path(path_), std::string(reason));
  }
  // Empty if the path is too long. Then the library does not search its own folder either.
  ownPath_ = ModulePath(reinterpret_cast<const void*>(library_.getApiVersion));
  if (!ownPath_.empty()) {
    path_ = ownPath_;
  }
}

Json InstalledLibrary::Description() const {
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  library_.getApiVersion(&major, &minor);
  return {{"version", packageVersion(library_.handle, path_)},
          {"interface", std::to_string(major) + '.' + std::to_string(minor)},
          {"path", path_}};
}

std::string InstalledLibrary::Directory() const {
  return ownPath_.empty() ? "" : fs::path(ownPath_).parent_path().generic_string() + '/';
}

std::vector<LibraryAnswer> InstalledLibrary::AskEveryCapability() {
  SocInfo record = BuildChipRecord(NO_CHIP_ID);
  std::vector<std::uint8_t> buffer;
  const auto statusOf = [&](Soc_GetCapabilityFn* query, const CapabilityId& id) {
    buffer.resize(4096);
    std::uint64_t size = buffer.size();
    return AskOnce(query, id.component, id.key, buffer.data(), &size);
  };
  statusOf(library_.getCapability, {DSP, 1});
  std::vector<LibraryAnswer> answers;
  VisitCapabilities(record, [&]<class T>(const CapabilityId& id, auto& entry, T& field) {
    const std::uint32_t status =
        statusOf(IS_LIST<T> ? library_.getCapabilitySerialized : library_.getCapability, id);
    answers.push_back({status, nullptr, nullptr});
    if (status != SUCCESS && status != INSUFFICIENT_SIZE) {
      return;
    }
    // The core's readers let the buffer grow and check the answer's form, but give no status.
    std::string failure = "not a " + std::string(CapabilityOf(record, id).type);
    bool isRead = false;
    if constexpr (IS_LIST<T>) {
      isRead = ImportSerializedList(library_, id.key, field, buffer);
    } else {
      isRead = TryImportKey(library_, id.key, entry, &failure);
    }
    if (isRead) {
      answers.back() = {SUCCESS, CapabilityOf(record, id).value, nullptr};
    } else {
      answers.back().malformed = failure;
    }
  });
  return answers;
}
