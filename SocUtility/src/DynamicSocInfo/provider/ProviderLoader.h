/// Finds, loads and binds a provider: a library that answers capability queries like this one.
///
/// There are two kinds, distinguished by the file name. The provider attempt constructs a loader,
/// reads its fields, queries the provider through it and destroys it. The destructor unloads the
/// provider, so nothing of it may be used afterwards.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ZynSystemInfo.h"

/// The service-utilities provider answers scalar and counted-vector queries.
inline constexpr std::string_view SERVICE_UTILS_LIBRARY = "RzSoCServiceUtils.dll";
/// The system-info provider has this library's own three exports.
inline constexpr std::string_view SYSTEM_INFO_LIBRARY = "ZynSystemInfo.dll";

/// Where a loader looks. Any other value finds nothing.
enum ProviderSearchPlan : std::uint32_t {
  /// Both kinds: beside this library, in the driver package, by the platform's search.
  AllProviders = 0,
  /// The service-utilities provider: beside this library, then by the platform's search.
  ServiceUtilsOnly = 1,
};

/// A file that a loader tries to load.
struct ProviderCandidate {
  std::string path;              ///< For a bare file name, the platform searches.
  std::string_view libraryName;  ///< The file name.
};

/// The files that a library in `ownDirectory` tries to load under a plan, in this order. An empty
/// directory means an unknown one: candidates there are left out.
std::vector<ProviderCandidate> ProviderCandidates(ProviderSearchPlan plan,
                                                  const std::string& ownDirectory);

/// The directory of the module that contains this code, with forward slashes and one at the end;
/// empty when unknown.
std::string OwnDirectory();

/// A loaded provider, or nothing. Only the fields show a failure. If the constructor throws
/// `std::bad_alloc`, it has unloaded what it loaded.
class ProviderLoader {
 public:
  /// Loads nothing.
  ProviderLoader() = default;
  /// Loads the first of the plan's candidates that the platform can load, and binds its exports.
  explicit ProviderLoader(ProviderSearchPlan plan);
  ~ProviderLoader();
  ProviderLoader(const ProviderLoader&) = delete;
  ProviderLoader& operator=(const ProviderLoader&) = delete;

  /// Loads a file as the provider of this name and binds its exports. The loader must be empty.
  /// Returns false if the file cannot be loaded.
  bool Load(const std::string& path, std::string_view name);

  /// The exports that an import needs and that are not bound: their names, then null pointers.
  /// Without the first export the others are not bound either, since they are not looked for.
  std::array<const char*, 3> MissingExports() const;

  void* handle = nullptr;   ///< The module, owned; null when no candidate was loaded.
  std::string libraryName;  ///< The candidate's.
  /// The provider's exports. They may break any rule of the public header.
  Soc_GetAPIVersionFn* getApiVersion = nullptr;
  Soc_GetCapabilityFn* getCapability = nullptr;  ///< Only with `getApiVersion`.
  /// Only of a system-info provider.
  Soc_GetCapabilitySerializedFn* getCapabilitySerialized = nullptr;

 private:
  void Bind();
};
