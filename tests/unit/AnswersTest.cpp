// The query answers over components, keys and sizes: status, `*size`, the bytes of the buffer, and
// the diagnostic lines, each of them one write.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>

#include "AnswerProbe.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"

namespace {

constexpr std::uint64_t MAX = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t HIGH = std::uint64_t{1} << 32;

/// A record with three elements in every list.
SocInfo listRecord() {
  DspInfo dsp;
  dsp.cap16 = {5, 5, 5};
  dsp.cap46 = {{0, 6}, {1, 6}, {2, 6}};
  dsp.cap47 = {"seven", "seven", "seven"};
  dsp.cap48 = {{0, {"eight", 8}}, {1, {"eight", 8}}, {2, {"eight", 8}}};
  return recordOf(dsp);
}

/// The answer must be a refusal with `line`, and the buffer as it was.
void expectRefused(const Answer& answer, std::uint32_t status, std::uint64_t size,
                   const std::string& line) {
  EXPECT_EQ(answer.status, status);
  EXPECT_EQ(answer.size, size);
  EXPECT_EQ(answer.buffer, bufferWith({}));
  EXPECT_EQ(answer.writes, std::vector{line + '\n'});
  EXPECT_EQ(answer.allocations, 0U);
}

// How a line begins; an empty one means that there is an answer and no line.
using Line = std::string;
const Line ANSWERED;
const Line NO_UNIT = "UNSUPPORTED_COMPONENT: ";
const Line LIST = "COMPLEX CAPABILITY: [";

void expectLine(Query query, std::uint64_t component, std::uint64_t key, const Line& line,
                std::int64_t number) {
  const Answer answer = ask(query, listRecord(), component, key);
  if (line == ANSWERED) {
    EXPECT_EQ(answer.status, SUCCESS);
    EXPECT_EQ(answer.writes.size() + answer.allocations, 0U);
    return;
  }
  expectRefused(
      answer, line == NO_UNIT ? UNSUPPORTED_COMPONENT : UNSUPPORTED_KEY, BUFFER_SIZE,
      line + std::to_string(number) + (line == LIST ? "] PLEASE USE SERIALIZED API!" : ""));
}

TEST(Answers, OfEveryKeyAndOnePastEachEnd) {
  const Line noDsp = "DSP_INFO UNSUPPORTED_KEY: ", noGpu = "GPU_INFO UNSUPPORTED_KEY: ",
             noCpu = "CPU_INFO UNSUPPORTED_KEY: ", dspScalar = "NOT A SERIALIZED DSP CAPABILITY: ",
             gpuScalar = "NOT A SERIALIZED GPU CAPABILITY: ",
             cpuScalar = "NOT A SERIALIZED CPU CAPABILITY: ";
  struct {
    std::uint64_t component, firstKey, lastKey;
    Line scalarLine, serializedLine;
    std::int64_t number;  ///< That the first key's line ends with.
  } const ROWS[] = {
      {DSP, 0, 0, noDsp, noDsp, 0},
      {DSP, 1, 15, ANSWERED, dspScalar, 1},
      {DSP, 16, 16, LIST, ANSWERED, 16},
      {DSP, 17, 34, ANSWERED, dspScalar, 17},
      {DSP, 35, 35, noDsp, noDsp, 35},
      {DSP, 36, 45, ANSWERED, dspScalar, 36},
      {DSP, 46, 48, LIST, ANSWERED, 46},
      {DSP, 49, 70, noDsp, noDsp, 49},
      {DSP, HIGH - 1, HIGH - 1, noDsp, noDsp, -1},
      {DSP, HIGH + 1, HIGH + 1, ANSWERED, dspScalar, 1},
      {GPU, 0, 0, noGpu, noGpu, 0},
      {GPU, 1, 12, ANSWERED, gpuScalar, 1},
      {GPU, 13, 13, ANSWERED, noGpu, 13},
      {GPU, 14, 14, noGpu, noGpu, 14},
      {CPU, 0, 0, noCpu, noCpu, 0},
      {CPU, 1, 2, ANSWERED, cpuScalar, 1},
      {CPU, 3, 3, noCpu, noCpu, 3},
      {0, 1, 1, NO_UNIT, NO_UNIT, 0},
      {4, 16, 16, NO_UNIT, NO_UNIT, 4},
      {6, 1, 1, NO_UNIT, NO_UNIT, 6},
      {HIGH + 2, 16, 16, NO_UNIT, NO_UNIT, 2},
      {HIGH / 2, 1, 1, NO_UNIT, NO_UNIT, -2147483648},
  };
  for (const auto& row : ROWS) {
    std::int64_t number = row.number;
    for (std::uint64_t key = row.firstKey; key <= row.lastKey; ++key, ++number) {
      SCOPED_TRACE(testing::Message() << "component " << row.component << " key " << key);
      expectLine(AnswerScalar, row.component, key, row.scalarLine, number);
      expectLine(AnswerList, row.component, key, row.serializedLine, number);
    }
  }
}

// The program of the last release asks each key for its minimum.
TEST(Answers, ScalarMinimumGoesByTheWholeKey) {
  for (const std::uint64_t key : {16U, 43U}) {
    EXPECT_NE(ScalarFormOf(DSP, key).minimumSize, 8);
    EXPECT_EQ(ScalarFormOf(DSP, key + HIGH).minimumSize, 8);
    EXPECT_EQ(ScalarFormOf(DSP + HIGH, key).minimumSize, 8);
  }
}

TEST(Answers, NumbersAreWidenedByTheirOwnSign) {
  DspInfo dsp;
  dsp.cap1 = -1;
  dsp.cap4 = 0xFFFFFFFF;
  dsp.cap7 = MAX;
  dsp.cap38 = 0xFF;
  dsp.cap43 = -1.0F;
  SocInfo record = recordOf(dsp);
  record.dsps.emplace_back();  // only the first entry answers
  const std::map<std::uint64_t, Bytes> rows = {{1, words({MAX})},   {4, words({0xFFFFFFFF})},
                                               {6, words({1})},     {7, words({MAX})},
                                               {38, words({0xFF})}, {43, packed<float>({-1.0F})}};
  for (const auto& [key, bytes] : rows) {
    EXPECT_EQ(ask(AnswerScalar, record, DSP, key).buffer, bufferWith(bytes)) << key;
  }
}

/// How many pairs of keys share a field.
template <class Record>
int sharedFields() {
  const auto& fields = KeyTable<Record>::FIELDS;
  int shared = 0;
  for (std::size_t key = 1; key < fields.size(); ++key) {
    if (fields[key].index() != 0) {
      shared += static_cast<int>(std::count(fields.begin() + key + 1, fields.end(), fields[key]));
    }
  }
  return shared;
}

// The machines of the examples tell which field is a key's.
TEST(KeyTable, OnlyTwoPairsOfGpuKeysShareAField) {
  EXPECT_EQ(sharedFields<DspInfo>(), 0);
  EXPECT_EQ(sharedFields<GpuInfo>(), 2);
  EXPECT_EQ(sharedFields<CpuInfo>(), 0);
}

TEST(Answers, GpuNameNeedsRoomForItsNul) {
  for (const std::size_t length : {0U, 7U, 11U, 12U, 40U}) {
    GpuInfo gpu(0);
    gpu.name = std::string(length, 'n');
    const Bytes text = Bytes(length, 'n') + Bytes{0};
    for (const bool fits : {false, true}) {
      SCOPED_TRACE(testing::Message() << length << fits);
      const Answer answer = ask(AnswerScalar, recordOf({}, gpu), GPU, 4, length + (fits ? 1 : 0));
      EXPECT_EQ(answer.status, fits ? SUCCESS : INSUFFICIENT_SIZE);
      EXPECT_EQ(answer.size, text.size());
      EXPECT_EQ(answer.buffer, bufferWith(fits ? text : Bytes{}));
      EXPECT_EQ(answer.writes.size() + answer.allocations, 0U);
    }
  }
}

TEST(Answers, ListsNeedRoomForEveryByteAndShortNames) {
  const std::map<std::uint32_t, std::uint64_t> sizes = {{16, 24}, {46, 24}, {47, 108}, {48, 120}};
  const std::string tooLong(32, 'n');
  DspInfo dsp;
  dsp.cap47 = {"fits", tooLong};
  dsp.cap48 = {{0, {"fits", 1}}, {1, {tooLong, 2}}};
  for (const auto& [key, required] : sizes) {
    SCOPED_TRACE(key);
    const std::string line = "INSUFFICIENT_SIZE FOR KEY: " + std::to_string(key);
    expectRefused(ask(AnswerList, listRecord(), DSP, key, required - 1), INSUFFICIENT_SIZE,
                  required, line);
    EXPECT_EQ(ask(AnswerList, listRecord(), DSP, key, required).status, SUCCESS);
    EXPECT_EQ(ask(AnswerList, recordOf({}), DSP, key, 0).status, SUCCESS);
    if (key >= 47) {
      expectRefused(ask(AnswerList, recordOf(dsp), DSP, key), FAILURE, MAX, line);
    }
  }
}

}  // namespace
