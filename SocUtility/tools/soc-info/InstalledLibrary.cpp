#include "InstalledLibrary.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>
#include <vector>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "DynamicSocInfo/chip/ChipIdentification.h"
#include "DynamicSocInfo/import/ProviderCalls.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "ProviderReport.h"

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

/// Stores an answer of `size` bytes.
template <class T>
void store(const std::vector<std::uint8_t>& buffer, std::uint64_t size, T& field) {
  if constexpr (IS_LIST<T>) {
    T* const target = &field;
    deserialize<T>(buffer.data(), std::min<std::uint64_t>(size, buffer.size()), {&target, 1});
  } else if constexpr (std::is_same_v<T, std::string>) {
    field = {buffer.begin(), std::ranges::find(buffer, '\0')};
  } else if constexpr (std::is_same_v<T, bool>) {
    field = buffer.front() != 0;
  } else {
    std::memcpy(&field, buffer.data(), sizeof field);
  }
}

/// Asks for a key and stores the answer in its field of `entry`. Returns the status.
template <class Record>
std::uint32_t ask(Soc_GetCapabilityFn* scalar, Soc_GetCapabilityFn* serialized, std::uint32_t key,
                  Record& entry) {
  return visitField<Record>(
      key,
      [&]<class T>(T Record::*field) -> std::uint32_t {
        Soc_GetCapabilityFn* const query = IS_LIST<T> ? serialized : scalar;
        std::vector<std::uint8_t> buffer(4096);
        std::uint64_t size = buffer.size();
        std::uint32_t status = query(KeyTable<Record>::COMPONENT, key, buffer.data(), &size);
        if (status == INSUFFICIENT_SIZE && ResizeToReported(buffer, size)) {
          status = query(KeyTable<Record>::COMPONENT, key, buffer.data(), &size);
        }
        if (status == SUCCESS) {
          store(buffer, size, entry.*field);
        }
        return status;
      },
      [] { return std::uint32_t{UNSUPPORTED_KEY}; });
}

}  // namespace

InstalledLibrary::InstalledLibrary(const std::string& file)
    : path_(file.empty() ? findLibrary() : fs::absolute(file).string()) {
  void* const library = dlOpen(path_.c_str(), DL_NOW | DL_LOCAL);
  if (library == nullptr) {
    throw InputError(fs::path(path_), dlError());
  }
  const auto bind = [&]<class Function>(const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlSym(library, name));
    if (function == nullptr) {
      throw InputError(fs::path(path_), std::string("it lacks the export ") + name);
    }
  };
  bind("Soc_GetAPIVersion", getApiVersion_);
  bind("Soc_GetCapability", getCapability_);
  bind("Soc_GetCapabilitySerialized", getCapabilitySerialized_);
  // Empty where the path is too long for the library too: then it does not search its own folder.
  ownPath_ = ModulePath(reinterpret_cast<const void*>(getCapability_));
  if (!ownPath_.empty()) {
    path_ = ownPath_;
  }
}

std::string InstalledLibrary::Directory() const {
  return ownPath_.empty() ? "" : fs::path(ownPath_).parent_path().generic_string() + '/';
}

std::string InstalledLibrary::InterfaceVersion() const {
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  getApiVersion_(&major, &minor);
  return std::to_string(major) + '.' + std::to_string(minor);
}

Json InstalledLibrary::Ask(const CapabilityKey& id) const {
  SocInfo record = BuildChipRecord(NO_CHIP_ID);
  const auto askFor = [&](auto& entry) {
    return ask(getCapability_, getCapabilitySerialized_, id.key, entry);
  };
  const std::uint32_t status = id.component == DSP   ? askFor(record.dsps.front())
                               : id.component == GPU ? askFor(record.gpus.front())
                                                     : askFor(record.cpu);
  return {{"status", status},
          {"value", status == SUCCESS ? CapabilityOf(record, id).value : Json(nullptr)}};
}
