/// The key table: which record field answers which (component, key) pair.
///
/// A capability's wire form, the provider call that asks it, and whether it is a list follow from
/// the field's type.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>
#include <variant>

#include "DynamicSocInfo/capabilities/SocInfo.h"
#include "ZynSystemInfo.h"

/// For each record type: `COMPONENT`, its number; `Field`, a pointer to one of its fields, or
/// `std::monostate` for what is no capability; `FIELDS`, the fields indexed by key, key 0 included.
template <class Record>
struct KeyTable;

template <>
struct KeyTable<DspInfo> {
  static constexpr std::uint32_t COMPONENT = DSP;

  using Field = std::variant<std::monostate, std::int32_t DspInfo::*, std::uint32_t DspInfo::*,
                             std::uint64_t DspInfo::*, std::uint8_t DspInfo::*, bool DspInfo::*,
                             float DspInfo::*, U32List DspInfo::*, U32ByPosition DspInfo::*,
                             NameList DspInfo::*, NamedValuesByPosition DspInfo::*>;

  static constexpr std::array<Field, 49> FIELDS = {
      std::monostate{}, &DspInfo::cap1,  &DspInfo::cap2,  &DspInfo::cap3,  &DspInfo::cap4,
      &DspInfo::cap5,   &DspInfo::cap6,  &DspInfo::cap7,  &DspInfo::cap8,  &DspInfo::cap9,
      &DspInfo::cap10,  &DspInfo::cap11, &DspInfo::cap12, &DspInfo::cap13, &DspInfo::cap14,
      &DspInfo::cap15,  &DspInfo::cap16, &DspInfo::cap17, &DspInfo::cap18, &DspInfo::cap19,
      &DspInfo::cap20,  &DspInfo::cap21, &DspInfo::cap22, &DspInfo::cap23, &DspInfo::cap24,
      &DspInfo::cap25,  &DspInfo::cap26, &DspInfo::cap27, &DspInfo::cap28, &DspInfo::cap29,
      &DspInfo::cap30,  &DspInfo::cap31, &DspInfo::cap32, &DspInfo::cap33, &DspInfo::cap34,
      std::monostate{}, &DspInfo::cap36, &DspInfo::cap37, &DspInfo::cap38, &DspInfo::cap39,
      &DspInfo::cap40,  &DspInfo::cap41, &DspInfo::cap42, &DspInfo::cap43, &DspInfo::cap44,
      &DspInfo::cap45,  &DspInfo::cap46, &DspInfo::cap47, &DspInfo::cap48,
  };
};

template <>
struct KeyTable<GpuInfo> {
  static constexpr std::uint32_t COMPONENT = GPU;

  using Field = std::variant<std::monostate, std::int32_t GpuInfo::*, std::uint32_t GpuInfo::*,
                             std::uint64_t GpuInfo::*, std::string GpuInfo::*>;

  static constexpr std::array<Field, 14> FIELDS = {
      std::monostate{}, &GpuInfo::cap1,  &GpuInfo::cap6,  &GpuInfo::cap7,  &GpuInfo::name,
      &GpuInfo::cap5,   &GpuInfo::cap6,  &GpuInfo::cap7,  &GpuInfo::cap8,  &GpuInfo::cap9,
      &GpuInfo::cap10,  &GpuInfo::cap11, &GpuInfo::cap12, &GpuInfo::cap13,
  };
};

template <>
struct KeyTable<CpuInfo> {
  static constexpr std::uint32_t COMPONENT = CPU;

  using Field = std::variant<std::monostate, std::int32_t CpuInfo::*, std::uint64_t CpuInfo::*>;

  static constexpr std::array<Field, 3> FIELDS = {
      std::monostate{},
      &CpuInfo::cap1,
      &CpuInfo::cap2,
  };
};

/// Calls `onField` with the pointer to the `Record` field that answers `key`, whatever its type, or
/// `onNone` without arguments when the key is no capability. Both return the same type.
template <class Record, class OnField, class OnNone>
constexpr auto VisitField(std::uint64_t key, OnField onField, OnNone onNone) {
  constexpr const auto& FIELDS = KeyTable<Record>::FIELDS;
  return std::visit(
      [&]<class Member>(Member field) {
        if constexpr (std::is_same_v<Member, std::monostate>) {
          return onNone();
        } else {
          return onField(field);
        }
      },
      FIELDS[key < FIELDS.size() ? key : 0]);
}

/// Whether a field of type `T` is a list, answered by the serialized query only.
template <class T>
inline constexpr bool IS_LIST = !std::is_arithmetic_v<T> && !std::is_same_v<T, std::string>;
