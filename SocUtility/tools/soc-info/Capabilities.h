/// The capabilities of a record as rows: what soc-info prints of every key.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "Output.h"
#include "ProviderReport.h"

/// One capability.
struct CapabilityRow {
  std::string_view component;  ///< "DSP", "GPU" or "CPU".
  std::uint32_t key;
  /// "i32", "u32", "u64", "u8", "bool", "f32", "string", "list of u32", "list of string" or "list
  /// of named u32".
  std::string_view type;
  /// A number, boolean or string, or an array of such; a named value is an object of `name` and
  /// `value`. A float that is no number is held as such and becomes null in a document.
  Json value;
  std::string_view source;  ///< "catalogue", "provider" or "default".
};

/// Every capability that a query can ask for, by component and key, aliases included.
std::vector<CapabilityRow> CapabilitiesOf(const SocInfo& record, const ProviderReport& provider);

/// "DSP", "GPU" or "CPU".
std::string_view ComponentName(std::uint32_t component);

/// A row's value for people, on one line.
std::string ValueText(const Json& value);
