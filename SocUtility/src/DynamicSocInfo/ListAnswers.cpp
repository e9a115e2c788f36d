#include "DynamicSocInfo/ListAnswers.h"

#include "DynamicSocInfo/Diagnostics.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SerializedCapability.h"
#include "ZynSystemInfo.h"

namespace {

constexpr std::uint32_t GPU_KEY_REFUSED_AS_UNKNOWN = 13;

template <class List>
std::uint32_t writeList(const List& list, std::uint32_t key, void* buffer, std::uint64_t* size) {
  const List* const firstDsp = &list;
  if (serialize<List>(buffer, size, {&firstDsp, 1})) {
    return SUCCESS;
  }
  return RefuseUnwritableList(key, *size == UNSERIALIZABLE ? FAILURE : INSUFFICIENT_SIZE);
}

template <class Record>
std::uint32_t answerFrom(const Record& entry, std::uint32_t key, void* buffer,
                         std::uint64_t* size) {
  constexpr std::uint32_t COMPONENT = KeyTable<Record>::COMPONENT;
  return VisitField<Record>(
      key,
      [&]<class T>(T Record::*field) {
        if constexpr (IS_LIST<T>) {
          return writeList(entry.*field, key, buffer, size);
        } else if (COMPONENT == GPU && key == GPU_KEY_REFUSED_AS_UNKNOWN) {
          return RefuseUnknownKey(COMPONENT, key);
        } else {
          return RefuseScalarKey(COMPONENT, key);
        }
      },
      [&] { return RefuseUnknownKey(COMPONENT, key); });
}

}  // namespace

std::uint32_t AnswerList(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                         void* buffer, std::uint64_t* size) {
  const auto lowKey = static_cast<std::uint32_t>(key);
  switch (component) {
    case DSP:
      return answerFrom(record.dsps.front(), lowKey, buffer, size);
    case GPU:
      return answerFrom(record.gpus.front(), lowKey, buffer, size);
    case CPU:
      return answerFrom(record.cpu, lowKey, buffer, size);
    default:
      return RefuseComponent(component);
  }
}
