#include "DynamicSocInfo/Answers.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "DynamicSocInfo/Diagnostics.h"
#include "DynamicSocInfo/ScalarEncoding.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "ZynSystemInfo.h"

namespace {

/// The smallest buffer for a key without a rule of its own.
constexpr std::uint8_t USUAL_MINIMUM = 8;

/// The smallest buffer for each field type. A name's is a floor: a longer name asks for more. A
/// list of numbers is sized as a count and one element, although only the serialized query answers
/// it.
template <class T>
constexpr std::uint8_t minimumOf() {
  if constexpr (std::is_same_v<T, float>) {
    return sizeof(float);
  } else if constexpr (std::is_same_v<T, std::string>) {
    return 12;
  } else if constexpr (std::is_same_v<T, U32List>) {
    return 16;
  } else {
    return USUAL_MINIMUM;
  }
}

/// The minimums of a component's keys, so that the check costs one load.
template <class Record>
constexpr auto minimumTable() {
  std::array<std::uint8_t, KeyTable<Record>::FIELDS.size()> minimums{};
  for (std::size_t key = 0; key < minimums.size(); ++key) {
    minimums[key] = visitField<Record>(
        key, []<class T>(T Record::*) { return minimumOf<T>(); }, [] { return USUAL_MINIMUM; });
  }
  return minimums;
}

template <class Record>
std::uint64_t minimumSizeOf(std::uint64_t key) {
  static constexpr auto MINIMUMS = minimumTable<Record>();
  return key < MINIMUMS.size() ? MINIMUMS[key] : USUAL_MINIMUM;
}

struct RefusalTexts {
  std::string_view unsupportedKey;
  std::string_view notSerialized;
};

template <class Record>
constexpr RefusalTexts TEXTS;
template <>
constexpr RefusalTexts TEXTS<DspInfo>{"DSP_INFO UNSUPPORTED_KEY: ",
                                      "NOT A SERIALIZED DSP CAPABILITY: "};
template <>
constexpr RefusalTexts TEXTS<GpuInfo>{"GPU_INFO UNSUPPORTED_KEY: ",
                                      "NOT A SERIALIZED GPU CAPABILITY: "};
template <>
constexpr RefusalTexts TEXTS<CpuInfo>{"CPU_INFO UNSUPPORTED_KEY: ",
                                      "NOT A SERIALIZED CPU CAPABILITY: "};

std::uint32_t refuseKey(std::string_view text, std::uint32_t key, std::string_view ending = {}) {
  WriteDiagnostic(text, key, ending);
  return UNSUPPORTED_KEY;
}

std::uint32_t refuseComponent(std::uint64_t component) {
  WriteDiagnostic("UNSUPPORTED_COMPONENT: ", component);
  return UNSUPPORTED_COMPONENT;
}

/// Numbers and flags.
template <class T>
std::uint32_t writeScalar(T value, void* buffer, std::uint64_t*) {
  const std::uint64_t bits = answerBits(value);
  std::memcpy(buffer, &bits, ANSWER_WIDTH<T>);
  return SUCCESS;
}

/// A name that meets the minimum may still be too long for the buffer.
std::uint32_t writeScalar(const std::string& name, void* buffer, std::uint64_t* size) {
  const std::uint64_t capacity = *size;
  *size = name.size() + 1;
  if (capacity < *size) {
    return INSUFFICIENT_SIZE;
  }
  std::memcpy(buffer, name.c_str(), *size);
  return SUCCESS;
}

template <class Record>
std::uint32_t answerScalarOf(const Record& entry, std::uint32_t key, void* buffer,
                             std::uint64_t* size) {
  return visitField<Record>(
      key,
      [&]<class T>(T Record::*field) {
        if constexpr (IS_LIST<T>) {
          return refuseKey("COMPLEX CAPABILITY: [", key, "] PLEASE USE SERIALIZED API!");
        } else {
          return writeScalar(entry.*field, buffer, size);
        }
      },
      [&] { return refuseKey(TEXTS<Record>.unsupportedKey, key); });
}

template <class List>
std::uint32_t writeList(const List& list, std::uint32_t key, void* buffer, std::uint64_t* size) {
  const List* const firstDsp = &list;
  if (serialize<List>(buffer, size, {&firstDsp, 1})) {
    return SUCCESS;
  }
  WriteDiagnostic("INSUFFICIENT_SIZE FOR KEY: ", key);
  return *size == UNSERIALIZABLE ? FAILURE : INSUFFICIENT_SIZE;
}

/// Whether the serialized query knows a scalar key well enough to say so when it refuses it. GPU
/// key 13 came later than the query's own list of keys.
template <class Record>
constexpr bool isListedForRefusal(std::uint32_t key) {
  return !std::is_same_v<Record, GpuInfo> || key <= 12;
}

template <class Record>
std::uint32_t answerSerializedOf(const Record& entry, std::uint32_t key,
                                 [[maybe_unused]] void* buffer,
                                 [[maybe_unused]] std::uint64_t* size) {
  return visitField<Record>(
      key,
      [&]<class T>(T Record::*field) {
        if constexpr (IS_LIST<T>) {
          return writeList(entry.*field, key, buffer, size);
        } else {
          return refuseKey(isListedForRefusal<Record>(key) ? TEXTS<Record>.notSerialized
                                                           : TEXTS<Record>.unsupportedKey,
                           key);
        }
      },
      [&] { return refuseKey(TEXTS<Record>.unsupportedKey, key); });
}

}  // namespace

std::uint64_t MinimumSize(std::uint64_t component, std::uint64_t key) {
  switch (component) {
    case DSP:
      return minimumSizeOf<DspInfo>(key);
    case GPU:
      return minimumSizeOf<GpuInfo>(key);
    default:
      return USUAL_MINIMUM;
  }
}

std::uint32_t AnswerScalar(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                           void* buffer, std::uint64_t* size) {
  const auto lowKey = static_cast<std::uint32_t>(key);
  switch (component) {
    case DSP:
      return answerScalarOf(record.dsps.front(), lowKey, buffer, size);
    case GPU:
      return answerScalarOf(record.gpus.front(), lowKey, buffer, size);
    case CPU:
      return answerScalarOf(record.cpu, lowKey, buffer, size);
    default:
      return refuseComponent(component);
  }
}

std::uint32_t AnswerSerialized(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                               void* buffer, std::uint64_t* size) {
  const auto lowKey = static_cast<std::uint32_t>(key);
  switch (component) {
    case DSP:
      return answerSerializedOf(record.dsps.front(), lowKey, buffer, size);
    case GPU:
      return answerSerializedOf(record.gpus.front(), lowKey, buffer, size);
    case CPU:
      return answerSerializedOf(record.cpu, lowKey, buffer, size);
    default:
      return refuseComponent(component);
  }
}
