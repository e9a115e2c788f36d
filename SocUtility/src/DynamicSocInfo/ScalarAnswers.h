/// The scalar query's answers. `ScalarForm` says how a key is answered, on every chip.
/// `ScalarAnswers` holds the answers of one record, encoded once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "ZynSystemInfo.h"

/// How the scalar query answers a key.
struct ScalarForm {
  enum Kind : std::uint8_t { NUMBER, FLOAT, NAME, LIST, NO_KEY, NO_COMPONENT };

  Kind kind = NO_COMPONENT;
  std::uint8_t minimumSize = 8;  ///< The smallest buffer in bytes, for refused keys too.
};

inline constexpr std::size_t SCALAR_KEYS = KeyTable<DspInfo>::FIELDS.size();

/// A value for each component and key. The first row is that of `DSP`. Component 4 does not exist;
/// its row keeps the default value.
template <class Value>
using ScalarTable = std::array<std::array<Value, SCALAR_KEYS>, CPU - DSP + 1>;

/// The form of a key whose field has type `T`.
template <class T>
constexpr ScalarForm FormOfType() {
  if constexpr (std::is_same_v<T, float>) {
    return {ScalarForm::FLOAT, sizeof(float)};
  } else if constexpr (std::is_same_v<T, std::string>) {
    return {ScalarForm::NAME, 12};  // a longer name asks for more
  } else if constexpr (std::is_same_v<T, U32List>) {
    return {ScalarForm::LIST, 16};  // a count and one element
  } else {
    return {IS_LIST<T> ? ScalarForm::LIST : ScalarForm::NUMBER};
  }
}

inline constexpr ScalarTable<ScalarForm> SCALAR_FORMS = [] {
  ScalarTable<ScalarForm> forms{};
  const auto addComponent = [&]<class Record>(KeyTable<Record> component) {
    auto& row = forms[component.COMPONENT - DSP];
    for (std::size_t key = 0; key < row.size(); ++key) {
      row[key] = VisitField<Record>(
          key, []<class T>(T Record::*) { return FormOfType<T>(); },
          [] { return ScalarForm{ScalarForm::NO_KEY}; });
    }
  };
  addComponent(KeyTable<DspInfo>{});
  addComponent(KeyTable<GpuInfo>{});
  addComponent(KeyTable<CpuInfo>{});
  return forms;
}();

/// The form of a query. Only the low 32 bits of `key` select the capability. A key above 32 bits
/// has the default minimum size.
constexpr ScalarForm ScalarFormOf(std::uint64_t component, std::uint64_t key) noexcept {
  if (component - DSP >= SCALAR_FORMS.size()) [[unlikely]] {
    return {};
  }
  const auto& forms = SCALAR_FORMS[component - DSP];
  if (key < forms.size()) [[likely]] {
    return forms[key];
  }
  const auto lowKey = static_cast<std::uint32_t>(key);
  return {forms[lowKey < forms.size() ? lowKey : 0].kind};
}

/// The answers of a record. The record must outlive them and not change.
class ScalarAnswers {
 public:
  explicit ScalarAnswers(const SocInfo& record);

  /// Decides a query of the given form, whose buffer has the form's minimum size. `*size` is that
  /// buffer's size in bytes; a GPU name sets it. A refusal writes its diagnostic line. Returns the
  /// status of `Soc_GetCapability`.
  std::uint32_t Answer(ScalarForm form, std::uint64_t component, std::uint64_t key, void* buffer,
                       std::uint64_t* size) const noexcept {
    if (form.kind == ScalarForm::NUMBER) [[likely]] {
      std::memcpy(buffer, &Bits(component, key), 8);
      return SUCCESS;
    }
    switch (form.kind) {
      case ScalarForm::FLOAT:
        std::memcpy(buffer, &Bits(component, key), 4);
        return SUCCESS;
      case ScalarForm::NAME:
        return AnswerName(buffer, size);
      default:
        return Refuse(form.kind, component, key);
    }
  }

 private:
  const std::uint64_t& Bits(std::uint64_t component, std::uint64_t key) const {
    return bits_[component - DSP][static_cast<std::uint32_t>(key)];
  }
  std::uint32_t AnswerName(void* buffer, std::uint64_t* size) const noexcept {
    const std::uint64_t capacity = *size;
    *size = nameSize_;
    if (capacity < nameSize_) {
      return INSUFFICIENT_SIZE;
    }
    std::memcpy(buffer, name_, nameSize_);
    return SUCCESS;
  }
  static std::uint32_t Refuse(ScalarForm::Kind kind, std::uint64_t component,
                              std::uint64_t key) noexcept;

  template <class Record>
  void Encode(const Record& entry);

  ScalarTable<std::uint64_t> bits_{};  ///< Each number, widened to 64 bits.
  const char* name_;                   ///< The GPU's.
  std::uint64_t nameSize_;             ///< In bytes, with the NUL.
};
