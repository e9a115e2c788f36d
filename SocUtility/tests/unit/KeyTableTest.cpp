// Each key answers from the field of its number and from no other, by the field's own width.
#include <gtest/gtest.h>

#include "AnswerProbe.h"
#include "KeyRows.h"

namespace {

using Keys = std::vector<std::uint32_t>;

/// The scalar keys of a component whose answer is not that of `zero`.
Keys keysThatDiffer(const SocInfo& record, const SocInfo& zero, std::uint32_t component) {
  Keys keys;
  for (std::uint32_t key = 1; key <= 48; ++key) {
    if (ask(AnswerScalar, record, component, key).buffer !=
        ask(AnswerScalar, zero, component, key).buffer) {
      keys.push_back(key);
    }
  }
  return keys;
}

TEST(KeyTable, DspKeysReadTheirOwnField) {
  for (const auto& row : DSP_ROWS) {
    SCOPED_TRACE(row.key);
    DspInfo dsp = zeroDsp();
    row.fill(dsp);
    EXPECT_EQ(ask(AnswerScalar, recordOf(dsp), DSP, row.key).buffer, bufferWith(row.answer));
    EXPECT_EQ(keysThatDiffer(recordOf(dsp), recordOf(zeroDsp()), DSP), Keys{row.key});
  }
}

TEST(KeyTable, GpuKeysReadTheirOwnFieldAndTwoReadAnothers) {
  for (const auto& row : GPU_ROWS) {
    SCOPED_TRACE(row.key);
    GpuInfo gpu(0);
    row.fill(gpu);
    EXPECT_EQ(ask(AnswerScalar, recordOf({}, gpu), GPU, row.key).buffer, bufferWith(row.answer));
    EXPECT_EQ(keysThatDiffer(recordOf({}, gpu), recordOf({}), GPU), row.key == 6   ? Keys({2, 6})
                                                                    : row.key == 7 ? Keys({3, 7})
                                                                                   : Keys{row.key});
  }
}

TEST(KeyTable, CpuKeysReadTheirOwnField) {
  const SocInfo record = recordOf({}, GpuInfo(0), {.cap1 = -2, .cap2 = 0xFEDCBA9876543210});
  EXPECT_EQ(ask(AnswerScalar, record, CPU, 1).buffer, bufferWith(words({0xFFFFFFFFFFFFFFFE})));
  EXPECT_EQ(ask(AnswerScalar, record, CPU, 2).buffer, bufferWith(words({0xFEDCBA9876543210})));
}

TEST(KeyTable, AnswersComeFromTheFirstEntry) {
  SocInfo record = recordOf({});
  record.dsps.emplace_back().cap1 = 9;
  record.dsps.back().cap16 = {9};
  record.gpus.emplace_back(9);
  EXPECT_EQ(keysThatDiffer(record, recordOf({}), DSP), Keys{});
  EXPECT_EQ(keysThatDiffer(record, recordOf({}), GPU), Keys{});
  EXPECT_EQ(ask(AnswerSerialized, record, DSP, 16).size, 0U);
}

TEST(KeyTable, DefaultDspAnswers) {
  const SocInfo record = recordOf({});
  EXPECT_EQ(keysThatDiffer(record, recordOf(zeroDsp()), DSP), (Keys{6, 14, 15, 38}));
  for (const std::uint32_t key : {6U, 14U, 38U}) {
    EXPECT_EQ(ask(AnswerScalar, record, DSP, key).buffer, bufferWith(words({1})));
  }
  EXPECT_EQ(ask(AnswerScalar, record, DSP, 15).buffer, bufferWith(words({0x7FFFFFFF})));
}

}  // namespace
