#include "Capabilities.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr std::string_view typeName(const std::int32_t&) { return "i32"; }
constexpr std::string_view typeName(const std::uint32_t&) { return "u32"; }
constexpr std::string_view typeName(const std::uint64_t&) { return "u64"; }
constexpr std::string_view typeName(const std::uint8_t&) { return "u8"; }
constexpr std::string_view typeName(const bool&) { return "bool"; }
constexpr std::string_view typeName(const float&) { return "f32"; }
constexpr std::string_view typeName(const std::string&) { return "string"; }
constexpr std::string_view typeName(const NameList&) { return "list of string"; }
constexpr std::string_view typeName(const U32List&) { return "list of u32"; }
constexpr std::string_view typeName(const U32ByPosition&) { return "list of u32"; }
constexpr std::string_view typeName(const NamedValuesByPosition&) { return "list of named u32"; }

template <class T>
Json toValue(const T& field) {
  return field;
}

/// The number with the fewest digits that give the float back.
Json toValue(float number) {
  if (!std::isfinite(number)) {
    return std::isnan(number) ? "NaN" : number < 0 ? "-Infinity" : "Infinity";
  }
  std::array<char, 32> digits;
  const char* const end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  double value = 0;
  std::from_chars(digits.begin(), end, value);
  return value;
}

Json toValue(const NamedValue& element) {
  return {{"name", element.name}, {"value", element.value}};
}

/// A list held by position: the positions carry nothing.
template <class T>
Json toValue(const std::map<std::uint32_t, T>& list) {
  Json values = Json::array();
  for (const auto& [position, element] : list) {
    values.push_back(toValue(element));
  }
  return values;
}

}  // namespace

std::vector<Capability> CapabilitiesOf(const SocInfo& record) {
  std::vector<Capability> capabilities;
  VisitCapabilities(record, [&](const CapabilityId& id, const auto& /*entry*/, const auto& field) {
    capabilities.push_back({id, typeName(field), toValue(field), &field});
  });
  return capabilities;
}

Capability CapabilityOf(const SocInfo& record, const CapabilityId& id) {
  const std::vector<Capability> all = CapabilitiesOf(record);
  return *std::ranges::find(all, id, &Capability::id);
}

std::string_view ComponentName(std::uint32_t component) {
  return component == DSP ? "DSP" : component == GPU ? "GPU" : "CPU";
}

std::string CapabilityName(const CapabilityId& id) {
  return std::string(ComponentName(id.component)) + ' ' + std::to_string(id.key);
}

std::string ValueText(const Json& row) {
  const Json& value = row.at("value");
  if (!value.is_string()) {
    return Compact(value);
  }
  const bool isNoNumber = row.at("type") == "f32";
  return isNoNumber ? Text(value) : Quoted(Text(value));
}
