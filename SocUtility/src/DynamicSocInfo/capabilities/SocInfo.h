/// The capability record: what the library knows about one chip.
///
/// The catalogue builds it, the imports write it, the queries read it. The number in a field's name
/// is its key; `KeyTable.h` binds the two. All records are values: a copy shares nothing with its
/// source.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

/// An element of `DspInfo::cap48`. A name of at most 31 bytes can be serialized.
struct NamedValue {
  std::string name;
  std::uint32_t value = 0;

  bool operator==(const NamedValue&) const = default;
};

// The list field types of `DspInfo`. A list held as a map has the entry's position in the list (0,
// 1, 2, ...) as its key, in order of arrival.
using U32List = std::vector<std::uint32_t>;                         ///< `cap16`
using U32ByPosition = std::map<std::uint32_t, std::uint32_t>;       ///< `cap46`
using NameList = std::vector<std::string>;                          ///< `cap47`
using NamedValuesByPosition = std::map<std::uint32_t, NamedValue>;  ///< `cap48`

/// The processor.
struct CpuInfo {
  std::int32_t cap1 = 0;
  std::uint64_t cap2 = 0;

  bool operator==(const CpuInfo&) const = default;
};

/// One GPU.
struct GpuInfo {
  /// A GPU of the given model, key 1, and otherwise of defaults.
  explicit GpuInfo(std::int32_t model) : cap1(model) {}

  std::int32_t cap1;
  std::uint64_t cap5 = 0;
  std::uint64_t cap6 = 0;  ///< Answers key 2 too.
  std::uint64_t cap7 = 0;  ///< Answers key 3 too.
  std::uint64_t cap8 = 0;
  std::uint32_t cap9 = 0;
  std::uint64_t cap10 = 0;
  std::uint64_t cap11 = 0;
  std::uint64_t cap12 = 0;
  std::string name = "Unknown";  ///< Answers key 4.
  std::uint64_t cap13 = 0;

  bool operator==(const GpuInfo&) const = default;
};

/// One DSP. There is no key 35.
struct DspInfo {
  std::int32_t cap1 = 0;
  std::int32_t cap2 = 0;
  std::int32_t cap3 = 0;
  std::uint32_t cap4 = 0;
  std::uint32_t cap5 = 0;
  bool cap6 = true;
  std::uint64_t cap7 = 0;
  std::uint32_t cap8 = 0;
  bool cap9 = false;
  bool cap10 = false;
  bool cap11 = false;
  bool cap12 = false;
  bool cap29 = false;
  bool cap13 = false;
  bool cap30 = false;
  bool cap31 = false;
  bool cap32 = false;
  bool cap33 = false;
  bool cap34 = false;
  bool cap36 = false;
  bool cap42 = false;
  std::uint32_t cap14 = 1;
  bool cap37 = false;
  std::uint32_t cap40 = 0;
  std::uint8_t cap38 = 1;
  bool cap39 = false;
  std::int32_t cap41 = 0;
  std::int32_t cap45 = 0;
  U32ByPosition cap46;
  NameList cap47;
  NamedValuesByPosition cap48;
  std::uint32_t cap15 = 0x7FFFFFFF;
  U32List cap16;
  std::uint32_t cap18 = 0;
  std::uint32_t cap19 = 0;
  std::uint32_t cap20 = 0;
  std::uint32_t cap21 = 0;
  std::uint32_t cap22 = 0;
  std::uint32_t cap23 = 0;
  std::uint32_t cap24 = 0;
  std::uint32_t cap25 = 0;
  bool cap17 = false;
  bool cap26 = false;
  bool cap27 = false;
  bool cap28 = false;
  float cap43 = 0.0F;
  float cap44 = 0.0F;

  bool operator==(const DspInfo&) const = default;
};

/// One system-on-chip.
struct SocInfo {
  /// A record with one name. An empty `dsps` receives one default entry; `gpus` must have at least
  /// one, since queries read the first of both without a test.
  SocInfo(std::uint32_t model, std::vector<std::uint32_t> ids,
          std::vector<std::string> furtherNames, std::vector<DspInfo> dspEntries, CpuInfo cpuEntry,
          std::vector<GpuInfo> gpuEntries, std::uint64_t limit, std::string chipName);
  /// A record with several names, at least one; `name` is the first.
  SocInfo(std::uint32_t model, std::vector<std::uint32_t> ids,
          std::vector<std::string> furtherNames, std::vector<DspInfo> dspEntries, CpuInfo cpuEntry,
          std::vector<GpuInfo> gpuEntries, std::uint64_t limit,
          const std::vector<std::string>& chipNames);

  std::uint32_t socModel;              ///< The catalogue row's key; 0 for an unknown chip.
  std::vector<std::uint32_t> chipIds;  ///< The chip identifiers that select the row.
  std::vector<std::string> altNames;
  std::vector<DspInfo> dsps;  ///< Never empty.
  CpuInfo cpu;
  std::vector<GpuInfo> gpus;  ///< Never empty.
  std::uint64_t sizeLimit;    ///< In bytes.
  std::string name;
  std::set<std::string> nameSet;  ///< All names, `name` included.
  bool isKnownChip = false;       ///< Set by the catalogue's lookup, not held by a row.

  bool operator==(const SocInfo&) const = default;
};
