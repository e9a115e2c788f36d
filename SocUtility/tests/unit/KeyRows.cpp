#include "KeyRows.h"

#include <type_traits>

namespace {

template <class Number>
void fillField(Number& field) {
  if constexpr (std::is_same_v<Number, float>) {
    field = 1.5F;
  } else {
    field = static_cast<Number>(-1);
  }
}

// What a field with all its bits set answers.
const Bytes I32 = words({0xFFFFFFFFFFFFFFFF});
const Bytes U32 = words({0xFFFFFFFF});
const Bytes U64 = words({0xFFFFFFFFFFFFFFFF});
const Bytes U8 = words({0xFF});
const Bytes YES = words({1});
const Bytes F32 = packed<float>({1.5F});

}  // namespace

// One number makes both the key and the field's name, so that the rows cannot repeat a slip of the
// key table.
#define ROW(n, answer)                                      \
  {                                                         \
    n, answer, [](auto& entry) { fillField(entry.cap##n); } \
  }

// clang-format off
const std::vector<KeyRow<DspInfo>> DSP_ROWS = {
    ROW(1, I32), ROW(2, I32), ROW(3, I32), ROW(4, U32), ROW(5, U32), ROW(6, YES), ROW(7, U64),
    ROW(8, U32), ROW(9, YES), ROW(10, YES), ROW(11, YES), ROW(12, YES), ROW(13, YES), ROW(14, U32),
    ROW(15, U32), ROW(17, YES), ROW(18, U32), ROW(19, U32), ROW(20, U32), ROW(21, U32),
    ROW(22, U32), ROW(23, U32), ROW(24, U32), ROW(25, U32), ROW(26, YES), ROW(27, YES),
    ROW(28, YES), ROW(29, YES), ROW(30, YES), ROW(31, YES), ROW(32, YES), ROW(33, YES),
    ROW(34, YES), ROW(36, YES), ROW(37, YES), ROW(38, U8), ROW(39, YES), ROW(40, U32),
    ROW(41, I32), ROW(42, YES), ROW(43, F32), ROW(44, F32), ROW(45, I32)};

const std::vector<KeyRow<GpuInfo>> GPU_ROWS = {
    ROW(1, I32), ROW(5, U64), ROW(6, U64), ROW(7, U64), ROW(8, U64), ROW(9, U32), ROW(10, U64),
    ROW(11, U64), ROW(12, U64), ROW(13, U64)};
// clang-format on

DspInfo zeroDsp() {
  DspInfo dsp;
  dsp.cap6 = false;
  dsp.cap14 = dsp.cap15 = dsp.cap38 = 0;
  return dsp;
}
