#include "Capabilities.h"

#include <array>
#include <charconv>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SerializedCapability.h"

namespace {

template <class T>
constexpr std::string_view TYPE_NAME{};
template <>
constexpr std::string_view TYPE_NAME<std::int32_t> = "i32";
template <>
constexpr std::string_view TYPE_NAME<std::uint32_t> = "u32";
template <>
constexpr std::string_view TYPE_NAME<std::uint64_t> = "u64";
template <>
constexpr std::string_view TYPE_NAME<std::uint8_t> = "u8";
template <>
constexpr std::string_view TYPE_NAME<bool> = "bool";
template <>
constexpr std::string_view TYPE_NAME<float> = "f32";
template <>
constexpr std::string_view TYPE_NAME<std::string> = "string";
template <>
constexpr std::string_view TYPE_NAME<U32List> = "list of u32";
template <>
constexpr std::string_view TYPE_NAME<U32Positions> = "list of u32";
template <>
constexpr std::string_view TYPE_NAME<NameList> = "list of string";
template <>
constexpr std::string_view TYPE_NAME<NamedValues> = "list of named u32";

template <class T>
Json toValue(const T& field) {
  return field;
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

template <class Record>
void addRows(std::vector<CapabilityRow>& rows, const Record& entry, const auto& sourceOf) {
  constexpr std::uint32_t COMPONENT = KeyTable<Record>::COMPONENT;
  for (std::uint32_t key = 0; key < KeyTable<Record>::FIELDS.size(); ++key) {
    visitField<Record>(
        key,
        [&]<class T>(T Record::*field) {
          static_assert(!TYPE_NAME<T>.empty());
          rows.push_back({.component = ComponentName(COMPONENT),
                          .key = key,
                          .type = TYPE_NAME<T>,
                          .value = toValue(entry.*field),
                          .source = sourceOf(CapabilityKey{COMPONENT, key})});
        },
        [] {});
  }
}

/// The shortest digits that give the float back.
std::string floatText(float number) {
  std::array<char, 32> digits;
  auto* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return {digits.data(), end};
}

std::string scalarText(const Json& value) {
  if (value.is_number_float()) {
    return floatText(value.get<float>());
  }
  return value.is_string() ? Quoted(value.get<std::string>()) : value.dump();
}

/// A value that is no list: a named one, or a scalar.
std::string elementText(const Json& value) {
  if (value.is_object()) {
    return scalarText(value.at("name")) + ": " + scalarText(value.at("value"));
  }
  return scalarText(value);
}

}  // namespace

std::vector<CapabilityRow> CapabilitiesOf(const SocInfo& record, const ProviderReport& provider) {
  const auto sourceOf = [&](const CapabilityKey& key) -> std::string_view {
    if (record.isKnownChip) {
      return "catalogue";
    }
    return provider.answered.contains(key) ? "provider" : "default";
  };
  std::vector<CapabilityRow> rows;
  addRows(rows, record.dsps.front(), sourceOf);
  addRows(rows, record.gpus.front(), sourceOf);
  addRows(rows, record.cpu, sourceOf);
  return rows;
}

std::string_view ComponentName(std::uint32_t component) {
  switch (component) {
    case DSP:
      return "DSP";
    case GPU:
      return "GPU";
    default:
      return "CPU";
  }
}

std::string ValueText(const Json& value) {
  if (!value.is_array()) {
    return elementText(value);
  }
  std::string text = "[";
  for (const Json& element : value) {
    text += (text.size() > 1 ? ", " : "") + elementText(element);
  }
  return text + ']';
}
