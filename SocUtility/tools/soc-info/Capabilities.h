/// The capabilities of a record, key by key, as soc-info prints them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "Output.h"

/// What a query asks for.
struct CapabilityId {
  std::uint32_t component;
  std::uint32_t key;

  bool operator==(const CapabilityId&) const = default;
};

/// A capability in a record.
struct Capability {
  CapabilityId id;
  /// "i32", "u32", "u64", "u8", "bool", "f32", "string", "list of u32", "list of string" or "list
  /// of named u32".
  std::string_view type;
  /// A number, boolean or string, or an array of such; a named value is an object of `name` and
  /// `value`. A float that is no finite number is the string "NaN", "Infinity" or "-Infinity".
  Json value;
  const void* field;  ///< Where the record holds it. Keys of one field are aliases.
};

/// Everything that a query can ask for, by component and key, aliases included.
std::vector<Capability> CapabilitiesOf(const SocInfo& record);

/// One of these.
Capability CapabilityOf(const SocInfo& record, const CapabilityId& id);

/// "DSP", "GPU" or "CPU".
std::string_view ComponentName(std::uint32_t component);

/// "DSP 17".
std::string CapabilityName(const CapabilityId& id);

/// The `value` of a document's row, an object that also has the `type`, for people and on one line.
std::string ValueText(const Json& row);

/// Calls `visit` for all of these: with the identifier, the entry of `record` and the field in it.
template <class Record, class Visit>
void VisitCapabilities(Record& record, Visit visit) {
  const auto visitEntry = [&](auto& entry) {
    using Keys = KeyTable<std::remove_cvref_t<decltype(entry)>>;
    for (std::uint32_t key = 0; key < Keys::FIELDS.size(); ++key) {
      const auto visitMember = [&]<class Member>(Member member) {
        if constexpr (!std::is_same_v<Member, std::monostate>) {
          visit(CapabilityId{Keys::COMPONENT, key}, entry, entry.*member);
        }
      };
      std::visit(visitMember, Keys::FIELDS[key]);
    }
  };
  visitEntry(record.dsps.front());
  visitEntry(record.gpus.front());
  visitEntry(record.cpu);
}
