/// The capabilities of a record, key by key, as soc-info prints them.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "Output.h"

/// What a query asks for.
struct CapabilityKey {
  std::uint32_t component;
  std::uint32_t key;

  // NOLINTNEXTLINE(modernize-use-nullptr): it takes the 0 inside the comparison for a pointer
  auto operator<=>(const CapabilityKey&) const = default;
};

/// One capability of a record.
struct Capability {
  CapabilityKey id;
  /// "i32", "u32", "u64", "u8", "bool", "f32", "string", "list of u32", "list of string" or "list
  /// of named u32".
  std::string_view type;
  /// A number, boolean or string, or an array of such; a named value is an object of `name` and
  /// `value`. A float that is no finite number is the string "NaN", "Infinity" or "-Infinity".
  Json value;
};

/// Every capability that a query can ask for, by component and key, aliases included.
std::vector<Capability> CapabilitiesOf(const SocInfo& record);

/// One of these.
Capability CapabilityOf(const SocInfo& record, const CapabilityKey& id);

/// "DSP", "GPU" or "CPU".
std::string_view ComponentName(std::uint32_t component);

/// "DSP 17".
std::string KeyText(const CapabilityKey& id);

/// The `value` of a document's row, an object that also has the `type`, for people and on one line.
std::string ValueText(const Json& row);
