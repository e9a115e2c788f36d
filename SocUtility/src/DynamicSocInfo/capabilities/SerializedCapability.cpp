#include "DynamicSocInfo/capabilities/SerializedCapability.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace {

static_assert(std::endian::native == std::endian::little, "entries are copied as they stand");

using NameField = std::array<char, 32>;

struct NumberEntry {
  std::uint32_t dspIndex;
  std::uint32_t value;
};
static_assert(offsetof(NumberEntry, value) == 4 && sizeof(NumberEntry) == 8);

struct NameEntry {
  std::uint32_t dspIndex;
  NameField name;
};
static_assert(offsetof(NameEntry, name) == 4 && sizeof(NameEntry) == 36);

struct NamedValueEntry {
  std::uint32_t dspIndex;
  std::uint32_t value;
  NameField name;
};
static_assert(offsetof(NamedValueEntry, value) == 4 && offsetof(NamedValueEntry, name) == 8 &&
              sizeof(NamedValueEntry) == 40);

/// The field that holds `name`, or nothing when it has no room for the name and a NUL.
std::optional<NameField> toNameField(std::string_view name) {
  NameField field{};
  if (name.size() >= field.size()) {
    return std::nullopt;
  }
  std::copy(name.begin(), name.end(), field.begin());
  return field;
}

/// The name in a field, up to its NUL or the field's end.
std::string fromNameField(const NameField& field) {
  return {field.begin(), std::find(field.begin(), field.end(), '\0')};
}

bool isTerminated(const NameField& field) {
  return std::find(field.begin(), field.end(), '\0') != field.end();
}

/// The next free position of a list held as a map.
template <class Value>
std::uint32_t nextPosition(const std::map<std::uint32_t, Value>& list) {
  return static_cast<std::uint32_t>(list.size());
}

/// What differs between the four list fields: the entry's layout, the entry of an element (nothing
/// when it cannot be stored), whether an entry is well formed, and an entry's element appended.
template <class List>
struct ListFormat;

template <>
struct ListFormat<U32List> {
  using Entry = NumberEntry;
  static std::optional<Entry> ToEntry(std::uint32_t dspIndex, std::uint32_t element) {
    return Entry{dspIndex, element};
  }
  static bool IsWellFormed(const Entry&) { return true; }
  static void Append(U32List& list, const Entry& entry) { list.push_back(entry.value); }
};

template <>
struct ListFormat<U32Positions> {
  using Entry = NumberEntry;
  static std::optional<Entry> ToEntry(std::uint32_t dspIndex,
                                      const U32Positions::value_type& element) {
    return Entry{dspIndex, element.second};
  }
  static bool IsWellFormed(const Entry&) { return true; }
  static void Append(U32Positions& list, const Entry& entry) {
    list.emplace_hint(list.end(), nextPosition(list), entry.value);
  }
};

template <>
struct ListFormat<NameList> {
  using Entry = NameEntry;
  static std::optional<Entry> ToEntry(std::uint32_t dspIndex, const std::string& element) {
    const std::optional<NameField> name = toNameField(element);
    if (!name) {
      return std::nullopt;
    }
    return Entry{dspIndex, *name};
  }
  static bool IsWellFormed(const Entry& entry) { return isTerminated(entry.name); }
  static void Append(NameList& list, const Entry& entry) {
    list.push_back(fromNameField(entry.name));
  }
};

template <>
struct ListFormat<NamedValues> {
  using Entry = NamedValueEntry;
  static std::optional<Entry> ToEntry(std::uint32_t dspIndex,
                                      const NamedValues::value_type& element) {
    const std::optional<NameField> name = toNameField(element.second.name);
    if (!name) {
      return std::nullopt;
    }
    return Entry{dspIndex, element.second.value, *name};
  }
  static bool IsWellFormed(const Entry& entry) { return isTerminated(entry.name); }
  static void Append(NamedValues& list, const Entry& entry) {
    list.emplace_hint(list.end(), nextPosition(list),
                      NamedValue{fromNameField(entry.name), entry.value});
  }
};

/// The entry at `position` of an unaligned array of entries.
template <class Entry>
Entry entryAt(const void* data, std::size_t position) {
  Entry entry;
  std::memcpy(&entry, static_cast<const std::byte*>(data) + position * sizeof(Entry),
              sizeof(Entry));
  return entry;
}

}  // namespace

template <class List>
bool serialize(void* buffer, std::uint64_t* size, std::span<const List* const> lists) {
  using Format = ListFormat<List>;
  using Entry = typename Format::Entry;

  std::size_t count = 0;
  for (const List* list : lists) {
    count += list->size();
  }
  const std::uint64_t required = count * sizeof(Entry);
  if (*size < required) {
    *size = required;
    return false;
  }

  std::vector<Entry> entries;
  entries.reserve(count);
  for (std::uint32_t dspIndex = 0; dspIndex < lists.size(); ++dspIndex) {
    for (const auto& element : *lists[dspIndex]) {
      const std::optional<Entry> entry = Format::ToEntry(dspIndex, element);
      if (!entry) {
        *size = UNSERIALIZABLE;
        return false;
      }
      entries.push_back(*entry);
    }
  }
  if (required != 0) {
    std::memcpy(buffer, entries.data(), required);
  }
  *size = required;
  return true;
}

template <class List>
bool deserialize(const void* data, std::size_t length, std::span<List* const> targets) {
  using Format = ListFormat<List>;
  using Entry = typename Format::Entry;

  if (length % sizeof(Entry) != 0 || (length != 0 && data == nullptr)) {
    return false;
  }
  const std::size_t count = length / sizeof(Entry);
  for (std::size_t position = 0; position < count; ++position) {
    if (!Format::IsWellFormed(entryAt<Entry>(data, position))) {
      return false;
    }
  }

  for (List* target : targets) {
    target->clear();
  }
  for (std::size_t position = 0; position < count; ++position) {
    const auto entry = entryAt<Entry>(data, position);
    if (entry.dspIndex < targets.size()) {
      Format::Append(*targets[entry.dspIndex], entry);
    }
  }
  return true;
}

template bool serialize(void*, std::uint64_t*, std::span<const U32List* const>);
template bool serialize(void*, std::uint64_t*, std::span<const U32Positions* const>);
template bool serialize(void*, std::uint64_t*, std::span<const NameList* const>);
template bool serialize(void*, std::uint64_t*, std::span<const NamedValues* const>);

template bool deserialize(const void*, std::size_t, std::span<U32List* const>);
template bool deserialize(const void*, std::size_t, std::span<U32Positions* const>);
template bool deserialize(const void*, std::size_t, std::span<NameList* const>);
template bool deserialize(const void*, std::size_t, std::span<NamedValues* const>);
