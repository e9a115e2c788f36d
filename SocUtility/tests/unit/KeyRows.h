/// Every scalar DSP and GPU key that reads a field of its own number, with that field.
#pragma once

#include <cstdint>
#include <vector>

#include "Bytes.h"
#include "capabilities/SocInfo.h"

template <class Record>
struct KeyRow {
  std::uint32_t key;
  Bytes answer;           ///< What answers the key once `fill` was called.
  void (*fill)(Record&);  ///< Sets all bits of the field, or 1.5 in a float.

  /// What a provider answers to the same end.
  Bytes Wire() const { return answer.size() == 4 ? answer : Bytes(8, 0xFF); }
};

extern const std::vector<KeyRow<DspInfo>> DSP_ROWS;
extern const std::vector<KeyRow<GpuInfo>> GPU_ROWS;  ///< Without 2 and 3 (aliases) and 4 (name).

/// An entry whose every number is 0; a `GpuInfo(0)` is one.
DspInfo zeroDsp();
