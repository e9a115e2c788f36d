/// An import from a provider, watched call by call.
#pragma once

#include <cstdint>
#include <string>

#include "Capabilities.h"
#include "DynamicSocInfo/import/ProviderImport.h"
#include "DynamicSocInfo/provider/ProviderLoader.h"
#include "ForeignCode.h"

/// The calls made for one key, and what the latest of them did.
struct KeyCalls {
  CapabilityId id{};
  std::uint64_t count = 0;
  std::uint32_t status = 0;
  std::uint64_t offered = 0;    ///< The buffer's size in bytes.
  std::uint64_t reported = 0;   ///< What the provider left in the size; `offered` if it threw.
  std::uint64_t firstWord = 0;  ///< The first 8 bytes of the buffer, if it has them.
  bool threw = false;           ///< A `std::runtime_error`, which fails the key.
};

/// Only one may run at a time.
class WatchedImport {
 public:
  /// Begins at the key that the job says.
  explicit WatchedImport(JobReport& report);

  /// Imports for an unknown chip from an accepted provider, whose path is `library`. An exception
  /// that ends the import is a finding, and the keys after it are asked too. Returns whether the
  /// import succeeds; null if it does not ask all keys at once.
  Json Run(ProviderLoader& provider, const std::string& library);
  /// The same again, with a finding for each key whose outcome is another one.
  void Repeat(ProviderLoader& provider);

 private:
  static std::uint32_t QueryRunning(std::uint64_t component, std::uint64_t key, void* buffer,
                                    std::uint64_t* size);
  std::uint32_t Query(const CapabilityId& id, void* buffer, std::uint64_t* size);
  std::uint32_t QueryGuarded(const CapabilityId& id, void* buffer, std::uint64_t* size);
  bool ImportFrom(ProviderLoader& provider, int from);
  void AddOutcome(const AskedKey& asked, const Capability& capability);
  void CompareOutcome(const Json& row);
  Step StepOfKey() const;

  JobReport& report_;
  std::string library_;
  bool isCheck_;
  bool isRepeat_ = false;
  Soc_GetCapabilityFn* query_ = nullptr;
  int from_ = 0;     ///< Keys before this number are not asked.
  int number_ = -1;  ///< That of the key being asked.
  KeyCalls calls_;
  Json rows_ = Json::object();  ///< The outcomes of the first import, by name.
};
