#include "DynamicSocInfo/ScalarAnswers.h"

#include <bit>

#include "DynamicSocInfo/Diagnostics.h"

static_assert(std::endian::native == std::endian::little, "answers are stored as they are");

namespace {

/// An integer or flag widened to 64 bits by its own signedness.
template <class T>
std::uint64_t bitsOf(T value) {
  return static_cast<std::uint64_t>(std::int64_t{value});
}
std::uint64_t bitsOf(std::uint64_t value) { return value; }
std::uint64_t bitsOf(float value) { return std::bit_cast<std::uint32_t>(value); }

}  // namespace

ScalarAnswers::ScalarAnswers(const SocInfo& record)
    : name_(record.gpus.front().name.c_str()), nameSize_(record.gpus.front().name.size() + 1) {
  Encode(record.dsps.front());
  Encode(record.gpus.front());
  Encode(record.cpu);
}

template <class Record>
void ScalarAnswers::Encode(const Record& entry) {
  for (std::size_t key = 0; key < KeyTable<Record>::FIELDS.size(); ++key) {
    VisitField<Record>(
        key,
        [&]<class T>(T Record::*field) {
          if constexpr (std::is_arithmetic_v<T>) {
            bits_[KeyTable<Record>::COMPONENT - DSP][key] = bitsOf(entry.*field);
          }
        },
        [] {});
  }
}

std::uint32_t ScalarAnswers::Refuse(ScalarForm::Kind kind, std::uint64_t component,
                                    std::uint64_t key) noexcept {
  switch (kind) {
    case ScalarForm::LIST:
      return RefuseListKey(key);
    case ScalarForm::NO_COMPONENT:
      return RefuseComponent(component);
    default:
      return RefuseUnknownKey(component, key);
  }
}
