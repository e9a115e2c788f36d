#include "DynamicSocInfo/capabilities/SerializedCapability.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace {

static_assert(std::endian::native == std::endian::little, "entries are copied as they are");

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

// A name and its NUL must fit a field; a field must hold a NUL.
bool fits(const std::string& name) { return name.size() < sizeof(NameField); }
bool isTerminated(const NameField& field) { return std::ranges::find(field, '\0') != field.end(); }
NameField toField(const std::string& name) {
  NameField field{};
  std::ranges::copy(name, field.begin());
  return field;
}
std::string toName(const NameField& field) {
  return {field.begin(), std::ranges::find(field, '\0')};
}

// The three kinds of elements: whether one can be stored, its entry, whether an entry is well
// formed, and an entry's element.
bool isStorable(std::uint32_t /*value*/) { return true; }
NumberEntry toEntry(std::uint32_t dspIndex, std::uint32_t value) { return {dspIndex, value}; }
bool isWellFormed(const NumberEntry& /*entry*/) { return true; }
std::uint32_t toElement(const NumberEntry& entry) { return entry.value; }

bool isStorable(const std::string& name) { return fits(name); }
NameEntry toEntry(std::uint32_t dspIndex, const std::string& name) {
  return {dspIndex, toField(name)};
}
bool isWellFormed(const NameEntry& entry) { return isTerminated(entry.name); }
std::string toElement(const NameEntry& entry) { return toName(entry.name); }

bool isStorable(const NamedValue& element) { return fits(element.name); }
NamedValueEntry toEntry(std::uint32_t dspIndex, const NamedValue& element) {
  return {dspIndex, element.value, toField(element.name)};
}
bool isWellFormed(const NamedValueEntry& entry) { return isTerminated(entry.name); }
NamedValue toElement(const NamedValueEntry& entry) { return {toName(entry.name), entry.value}; }

// The two kinds of lists: in order, or by position.
template <class T>
const T& elementOf(const T& item) {
  return item;
}
template <class T>
const T& elementOf(const std::pair<const std::uint32_t, T>& item) {
  return item.second;
}
template <class T>
void append(std::vector<T>& list, T element) {
  list.push_back(std::move(element));
}
template <class T>
void append(std::map<std::uint32_t, T>& list, T element) {
  list.emplace_hint(list.end(), static_cast<std::uint32_t>(list.size()), std::move(element));
}

template <class List>
using EntryOf = decltype(toEntry(0, elementOf(*List().begin())));

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
  using Entry = EntryOf<List>;
  std::uint64_t count = 0;
  bool everyNameFits = true;
  for (const List* list : lists) {
    count += list->size();
    everyNameFits = everyNameFits && std::ranges::all_of(*list, [](const auto& item) {
                      return isStorable(elementOf(item));
                    });
  }
  const std::uint64_t required = count * sizeof(Entry);
  if (*size < required || !everyNameFits) {
    *size = *size < required ? required : UNSERIALIZABLE;
    return false;
  }

  auto* next = static_cast<std::byte*>(buffer);
  for (std::uint32_t dspIndex = 0; dspIndex < lists.size(); ++dspIndex) {
    for (const auto& item : *lists[dspIndex]) {
      const Entry entry = toEntry(dspIndex, elementOf(item));
      std::memcpy(next, &entry, sizeof entry);
      next += sizeof entry;
    }
  }
  *size = required;
  return true;
}

template <class List>
bool deserialize(const void* data, std::size_t length, std::span<List* const> targets) {
  using Entry = EntryOf<List>;
  if (length % sizeof(Entry) != 0 || (length != 0 && data == nullptr)) {
    return false;
  }
  const std::size_t count = length / sizeof(Entry);
  for (std::size_t position = 0; position < count; ++position) {
    if (!isWellFormed(entryAt<Entry>(data, position))) {
      return false;
    }
  }

  for (List* target : targets) {
    target->clear();
  }
  for (std::size_t position = 0; position < count; ++position) {
    const auto entry = entryAt<Entry>(data, position);
    if (entry.dspIndex < targets.size()) {
      append(*targets[entry.dspIndex], toElement(entry));
    }
  }
  return true;
}

template bool serialize(void*, std::uint64_t*, std::span<const U32List* const>);
template bool serialize(void*, std::uint64_t*, std::span<const U32ByPosition* const>);
template bool serialize(void*, std::uint64_t*, std::span<const NameList* const>);
template bool serialize(void*, std::uint64_t*, std::span<const NamedValuesByPosition* const>);

template bool deserialize(const void*, std::size_t, std::span<U32List* const>);
template bool deserialize(const void*, std::size_t, std::span<U32ByPosition* const>);
template bool deserialize(const void*, std::size_t, std::span<NameList* const>);
template bool deserialize(const void*, std::size_t, std::span<NamedValuesByPosition* const>);
