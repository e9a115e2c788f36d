// Each key answers from the field of its number and from no other, by the field's own width.
#include <gtest/gtest.h>

#include "AnswerProbe.h"

namespace {

using Keys = std::vector<std::uint32_t>;

template <class Record>
struct KeyRow {
  std::uint32_t key;
  Bytes answer;           ///< What answers the key once `fill` was called.
  void (*fill)(Record&);  ///< Sets all bits of the field, or -1 in a float.
  Keys keys = {key};      ///< All keys that the field answers.
};

template <class Number>
void fillField(Number& field) {
  field = static_cast<Number>(-1);
}

// What a field with all its bits set answers.
const Bytes I32 = words({0xFFFFFFFFFFFFFFFF});
const Bytes U32 = words({0xFFFFFFFF});
const Bytes U64 = words({0xFFFFFFFFFFFFFFFF});
const Bytes U8 = words({0xFF});
const Bytes YES = words({1});
const Bytes F32 = packed<float>({-1.0F});

// One number makes both the key and the field's name, so that the rows cannot repeat a slip of the
// key table.
#define ROW(n, answer) n, answer, [](auto& entry) { fillField(entry.cap##n); }

// clang-format off
const std::vector<KeyRow<DspInfo>> DSP_ROWS = {
    {ROW(1, I32)}, {ROW(2, I32)}, {ROW(3, I32)}, {ROW(4, U32)}, {ROW(5, U32)}, {ROW(6, YES)},
    {ROW(7, U64)}, {ROW(8, U32)}, {ROW(9, YES)}, {ROW(10, YES)}, {ROW(11, YES)}, {ROW(12, YES)},
    {ROW(13, YES)}, {ROW(14, U32)}, {ROW(15, U32)}, {ROW(17, YES)}, {ROW(18, U32)}, {ROW(19, U32)},
    {ROW(20, U32)}, {ROW(21, U32)}, {ROW(22, U32)}, {ROW(23, U32)}, {ROW(24, U32)}, {ROW(25, U32)},
    {ROW(26, YES)}, {ROW(27, YES)}, {ROW(28, YES)}, {ROW(29, YES)}, {ROW(30, YES)}, {ROW(31, YES)},
    {ROW(32, YES)}, {ROW(33, YES)}, {ROW(34, YES)}, {ROW(36, YES)}, {ROW(37, YES)}, {ROW(38, U8)},
    {ROW(39, YES)}, {ROW(40, U32)}, {ROW(41, I32)}, {ROW(42, YES)}, {ROW(43, F32)}, {ROW(44, F32)},
    {ROW(45, I32)}};

/// Without key 4, the name.
const std::vector<KeyRow<GpuInfo>> GPU_ROWS = {
    {ROW(1, I32)}, {ROW(5, U64)}, {ROW(6, U64), {2, 6}}, {ROW(7, U64), {3, 7}}, {ROW(8, U64)},
    {ROW(9, U32)}, {ROW(10, U64)}, {ROW(11, U64)}, {ROW(12, U64)}, {ROW(13, U64)}};
// clang-format on

const std::vector<KeyRow<CpuInfo>> CPU_ROWS = {{ROW(1, I32)}, {ROW(2, U64)}};

/// An entry whose every number is 0; a `GpuInfo(0)` is one.
DspInfo zeroDsp() {
  DspInfo dsp;
  dsp.cap6 = false;
  dsp.cap14 = dsp.cap15 = dsp.cap38 = 0;
  return dsp;
}

/// The scalar keys of a component whose answer is not that of an entry of zeros.
Keys keysThatDiffer(const SocInfo& record, std::uint32_t component) {
  const SocInfo zero = recordOf(zeroDsp());
  Keys keys;
  for (std::uint32_t key = 1; key <= 48; ++key) {
    if (ask(AnswerScalar, record, component, key).buffer !=
        ask(AnswerScalar, zero, component, key).buffer) {
      keys.push_back(key);
    }
  }
  return keys;
}

/// `entryOf` gives the record's entry that holds the fields.
template <class Record, class EntryOf>
void expectOwnFields(std::uint32_t component, const std::vector<KeyRow<Record>>& rows,
                     EntryOf entryOf) {
  for (const KeyRow<Record>& row : rows) {
    SCOPED_TRACE(testing::Message() << "component " << component << " key " << row.key);
    SocInfo record = recordOf(zeroDsp());
    row.fill(entryOf(record));
    EXPECT_EQ(ask(AnswerScalar, record, component, row.key).buffer, bufferWith(row.answer));
    EXPECT_EQ(keysThatDiffer(record, component), row.keys);
  }
}

TEST(KeyTable, KeysReadTheirOwnFieldAndTwoOfTheGpuAnothers) {
  expectOwnFields(DSP, DSP_ROWS, [](SocInfo& record) -> DspInfo& { return record.dsps.front(); });
  expectOwnFields(GPU, GPU_ROWS, [](SocInfo& record) -> GpuInfo& { return record.gpus.front(); });
  expectOwnFields(CPU, CPU_ROWS, [](SocInfo& record) -> CpuInfo& { return record.cpu; });
}

TEST(KeyTable, DefaultsAnswerFromTheFirstEntry) {
  SocInfo record = recordOf({});
  record.dsps.emplace_back().cap1 = 9;
  record.dsps.back().cap16 = {9};
  record.gpus.emplace_back(9);
  EXPECT_EQ(keysThatDiffer(record, DSP), (Keys{6, 14, 15, 38}));
  for (const std::uint32_t key : {6U, 14U, 38U}) {
    EXPECT_EQ(ask(AnswerScalar, record, DSP, key).buffer, bufferWith(words({1})));
  }
  EXPECT_EQ(ask(AnswerScalar, record, DSP, 15).buffer, bufferWith(words({0x7FFFFFFF})));
  EXPECT_EQ(keysThatDiffer(record, GPU), Keys{});
  EXPECT_EQ(ask(AnswerList, record, DSP, 16).size, 0U);
}

}  // namespace
