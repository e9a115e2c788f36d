#include "DynamicSocInfo/import/KeyImport.h"

#include <cstddef>
#include <type_traits>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/import/ProviderCalls.h"

namespace {

bool tryGetI32(ProviderLoader& provider, std::uint32_t component, std::uint32_t key,
               std::int32_t& out, std::string* failure) {
  std::uint32_t bits = 0;
  if (!TryGetU32(provider, component, key, bits, failure)) {
    return false;
  }
  out = static_cast<std::int32_t>(bits);
  return true;
}

/// The call that asks for a field of type `T`; null when a provider has no form for the type.
template <class T>
constexpr auto TYPED_CALL = nullptr;
template <>
constexpr auto TYPED_CALL<std::int32_t> = &tryGetI32;
template <>
constexpr auto TYPED_CALL<std::uint32_t> = &TryGetU32;
template <>
constexpr auto TYPED_CALL<std::uint64_t> = &TryGetU64;
template <>
constexpr auto TYPED_CALL<std::uint8_t> = &TryGetU8;
template <>
constexpr auto TYPED_CALL<bool> = &TryGetBool;
template <>
constexpr auto TYPED_CALL<float> = &TryGetFloat;
template <>
constexpr auto TYPED_CALL<std::string> = &TryGetString;
template <>
constexpr auto TYPED_CALL<U32List> = &TryGetU32List;

}  // namespace

template <class Record>
bool TryImportKey(ProviderLoader& provider, std::uint32_t key, Record& entry,
                  std::string* failure) {
  return VisitField<Record>(
      key,
      [&]<class T>(T Record::*field) {
        if constexpr (std::is_null_pointer_v<decltype(TYPED_CALL<T>)>) {
          return false;
        } else {
          return TYPED_CALL<T>(provider, KeyTable<Record>::COMPONENT, key, entry.*field, failure);
        }
      },
      [] { return false; });
}

template bool TryImportKey(ProviderLoader&, std::uint32_t, DspInfo&, std::string*);
template bool TryImportKey(ProviderLoader&, std::uint32_t, GpuInfo&, std::string*);
template bool TryImportKey(ProviderLoader&, std::uint32_t, CpuInfo&, std::string*);
