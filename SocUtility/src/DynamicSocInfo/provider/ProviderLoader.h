/// Finds, loads and binds a provider: another library that answers the same capability queries.
///
/// Two kinds exist, told apart by file name. The provider attempt constructs a loader, reads its
/// fields, asks the provider through it, and destroys it, which unloads the provider again: nothing
/// of the provider may be used afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ZynSystemInfo.h"

/// The service-utilities provider answers scalar and counted-vector queries.
inline constexpr std::string_view SERVICE_UTILS_LIBRARY = "RzSoCServiceUtils.dll";
/// The system-info provider has this library's own three exports.
inline constexpr std::string_view SYSTEM_INFO_LIBRARY = "ZynSystemInfo.dll";

/// Which candidates a loader tries; any other value has none.
enum ProviderSearchPlan : std::uint32_t {
  /// Both kinds: in the library's own directory, in the driver package, by the platform's search.
  AllProviders = 0,
  /// The service-utilities provider in the library's own directory, then by the platform's search.
  ServiceUtilsOnly = 1,
};

/// A loaded provider, or nothing. Failures show in the fields only; constructing it may throw
/// `std::bad_alloc`, and has then unloaded what it loaded.
class ProviderLoader {
 public:
  /// Loads nothing.
  ProviderLoader() = default;
  /// Loads the plan's first candidate that the platform can load, and binds its exports.
  explicit ProviderLoader(ProviderSearchPlan plan);
  ~ProviderLoader();
  ProviderLoader(const ProviderLoader&) = delete;
  ProviderLoader& operator=(const ProviderLoader&) = delete;

  /// Loads one candidate and binds its exports, for an empty loader. An empty directory leaves the
  /// choice of directory to the platform's search. Returns whether it was loaded.
  bool Load(const std::string& directory, std::string_view fileName);

  void* handle = nullptr;   ///< The module, owned; null when no candidate loaded.
  std::string libraryName;  ///< The candidate's file name, without directory.
  /// The provider's exports, which may break any promise made in the public header.
  Soc_GetAPIVersionFn* getApiVersion = nullptr;
  Soc_GetCapabilityFn* getCapability = nullptr;  ///< Only with `getApiVersion`.
  /// Only of a system-info provider.
  Soc_GetCapabilitySerializedFn* getCapabilitySerialized = nullptr;

 private:
  void Bind();
};

/// The text before the last slash or backslash, or all of a path that has neither.
std::string directoryOf(const std::string& path);

/// `directory`, a slash where it does not end in a separator, and `fileName`.
std::string joinPath(const std::string& directory, std::string_view fileName);
