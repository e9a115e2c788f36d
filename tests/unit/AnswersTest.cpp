// The query answers over components, keys and sizes: status, `*size`, the bytes of the buffer, and
// the diagnostic lines, each of them one write.
#include "DynamicSocInfo/Answers.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string_view>

#include "AnswerProbe.h"
#include "DynamicSocInfo/ScalarAnswers.h"

namespace {

using Key = std::pair<std::uint64_t, std::uint64_t>;  // component, key

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

using Line = std::string_view;
constexpr Line ANSWERED;
constexpr Line LIST = "COMPLEX CAPABILITY: [#] PLEASE USE SERIALIZED API!";
constexpr Line NO_DSP = "DSP_INFO UNSUPPORTED_KEY: #";
constexpr Line NO_GPU = "GPU_INFO UNSUPPORTED_KEY: #";
constexpr Line NO_CPU = "CPU_INFO UNSUPPORTED_KEY: #";
constexpr Line SCALAR_DSP = "NOT A SERIALIZED DSP CAPABILITY: #";
constexpr Line SCALAR_GPU = "NOT A SERIALIZED GPU CAPABILITY: #";
constexpr Line SCALAR_CPU = "NOT A SERIALIZED CPU CAPABILITY: #";
constexpr Line NO_UNIT = "UNSUPPORTED_COMPONENT: #";

/// The answer must be a refusal with `line`, and the buffer as it was.
void expectRefused(const Answer& answer, std::uint32_t status, std::uint64_t size,
                   const std::string& line) {
  EXPECT_EQ(answer.status, status);
  EXPECT_EQ(answer.size, size);
  EXPECT_EQ(answer.buffer, bufferWith({}));
  EXPECT_EQ(answer.writes, std::vector{line + '\n'});
}

/// The answer must be a refusal with `line`, where # stands for `number`, or none.
void expectLine(Query query, std::uint64_t component, std::uint64_t key, Line line,
                std::int64_t number) {
  const Answer answer = ask(query, listRecord(), component, key);
  if (line == ANSWERED) {
    EXPECT_EQ(answer.status, SUCCESS);
    EXPECT_EQ(answer.writes, std::vector<std::string>{});
    EXPECT_LE(answer.allocations, query == AnswerScalar ? 0U : 1U);
    return;
  }
  std::string expected(line);
  expected.replace(expected.find('#'), 1, std::to_string(number));
  expectRefused(answer, line == NO_UNIT ? UNSUPPORTED_COMPONENT : UNSUPPORTED_KEY, BUFFER_SIZE,
                expected);
  EXPECT_EQ(answer.allocations, 0U);
}

TEST(Answers, OfEveryKeyAndOnePastEachEnd) {
  struct {
    std::uint64_t component, firstKey, lastKey;
    Line scalarLine, serializedLine;
    std::int64_t number;  ///< In the line of the first key.
  } const ROWS[] = {
      {DSP, 0, 0, NO_DSP, NO_DSP, 0},
      {DSP, 1, 15, ANSWERED, SCALAR_DSP, 1},
      {DSP, 16, 16, LIST, ANSWERED, 16},
      {DSP, 17, 34, ANSWERED, SCALAR_DSP, 17},
      {DSP, 35, 35, NO_DSP, NO_DSP, 35},
      {DSP, 36, 45, ANSWERED, SCALAR_DSP, 36},
      {DSP, 46, 48, LIST, ANSWERED, 46},
      {DSP, 49, 70, NO_DSP, NO_DSP, 49},
      {DSP, HIGH - 1, HIGH - 1, NO_DSP, NO_DSP, -1},
      {DSP, HIGH + 1, HIGH + 1, ANSWERED, SCALAR_DSP, 1},
      {GPU, 0, 0, NO_GPU, NO_GPU, 0},
      {GPU, 1, 12, ANSWERED, SCALAR_GPU, 1},
      {GPU, 13, 13, ANSWERED, NO_GPU, 13},
      {GPU, 14, 20, NO_GPU, NO_GPU, 14},
      {CPU, 0, 0, NO_CPU, NO_CPU, 0},
      {CPU, 1, 2, ANSWERED, SCALAR_CPU, 1},
      {CPU, 3, 20, NO_CPU, NO_CPU, 3},
      {CPU, HIGH + 2, HIGH + 2, ANSWERED, SCALAR_CPU, 2},
      {0, 1, 1, NO_UNIT, NO_UNIT, 0},
      {4, 16, 16, NO_UNIT, NO_UNIT, 4},
      {HIGH + 2, 16, 16, NO_UNIT, NO_UNIT, 2},
      {HIGH / 2, 1, 1, NO_UNIT, NO_UNIT, -2147483648},
  };
  for (const auto& row : ROWS) {
    std::int64_t number = row.number;
    for (std::uint64_t key = row.firstKey; key <= row.lastKey; ++key, ++number) {
      SCOPED_TRACE(testing::Message() << "component " << row.component << " key " << key);
      expectLine(AnswerScalar, row.component, key, row.scalarLine, number);
      expectLine(AnswerSerialized, row.component, key, row.serializedLine, number);
    }
  }
}

TEST(ScalarAnswers, AreThoseOfTheQueryInFullOrLeftToIt) {
  DspInfo dsp;
  dsp.cap1 = -1;
  dsp.cap15 = 0xFFFFFFFF;
  dsp.cap43 = 1.5F;
  const SocInfo record = recordOf(dsp, GpuInfo(-2), {.cap1 = -3, .cap2 = 1});
  const ScalarAnswers answers(record);
  Bytes buffer = bufferWith({});
  // A list query that failed leaves the largest size of all behind for the next query to be given.
  std::uint64_t size = MAX;
  EXPECT_FALSE(NO_SCALAR_ANSWERS.Write(DSP, 1, buffer.data(), &size));
  EXPECT_FALSE(NO_SCALAR_ANSWERS.Write(GPU, 4, buffer.data(), &size));
  const std::map<Key, std::uint64_t> otherMinimums = {
      {{GPU, 4}, 12}, {{DSP, 16}, 16}, {{DSP, 43}, 4}, {{DSP, 44}, 4}};
  for (std::uint64_t component = 0; component <= 7; ++component) {
    for (std::uint64_t key = 0; key <= 70; ++key) {
      SCOPED_TRACE(testing::Message() << component << " " << key);
      const auto other = otherMinimums.find({component, key});
      const std::uint64_t minimum = other == otherMinimums.end() ? 8 : other->second;
      EXPECT_EQ(MinimumSize(component, key), minimum);
      EXPECT_EQ(MinimumSize(component + HIGH, key), 8U);
      EXPECT_EQ(MinimumSize(component, key + HIGH), 8U);

      const Answer inFull = ask(AnswerScalar, record, component, key);
      for (const std::uint64_t capacity : std::vector<std::uint64_t>{0, 3, 4, 7, 8, MAX}) {
        buffer = bufferWith({});
        size = capacity;
        EXPECT_FALSE(answers.Write(HIGH + component, key, buffer.data(), &size));
        EXPECT_FALSE(answers.Write(component, HIGH + key, buffer.data(), &size));
        EXPECT_EQ(buffer, bufferWith({}));
        const bool expected = inFull.status == SUCCESS && capacity >= minimum;
        EXPECT_EQ(answers.Write(component, key, buffer.data(), &size), expected);
        EXPECT_EQ(buffer, expected ? inFull.buffer : bufferWith({}));
      }
    }
  }
}

TEST(Answers, GpuNameNeedsRoomForItsNul) {
  for (std::size_t length = 0; length <= 17; ++length) {
    GpuInfo gpu(0);
    gpu.name = std::string("abcdefghijklmnopq").substr(0, length);
    const Bytes text = Bytes(gpu.name.begin(), gpu.name.end()) + Bytes{0};
    const SocInfo record = recordOf({}, gpu);
    const ScalarAnswers answers(record);
    for (const std::uint64_t capacity : {0, 11, 12, 13, 15, 16, 17, 32}) {
      SCOPED_TRACE(testing::Message() << length << " in " << capacity);
      const bool fits = capacity > length;
      const Answer inFull = ask(AnswerScalar, record, GPU, 4, capacity);
      EXPECT_EQ(inFull.status, fits ? SUCCESS : INSUFFICIENT_SIZE);
      EXPECT_EQ(inFull.size, text.size());
      EXPECT_EQ(inFull.buffer, bufferWith(fits ? text : Bytes{}));
      EXPECT_EQ(inFull.writes.size() + inFull.allocations, 0U);

      // Encoded in advance are names of usual lengths, for buffers of the minimum at least.
      Bytes buffer = bufferWith({});
      std::uint64_t size = capacity;
      const bool written = answers.Write(GPU, 4, buffer.data(), &size);
      EXPECT_EQ(written, length >= 7 && length <= 15 && capacity >= 12 && fits);
      EXPECT_EQ(buffer, bufferWith(written ? text : Bytes{}));
      EXPECT_EQ(size, written ? text.size() : capacity);
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
    const Answer tooSmall = ask(AnswerSerialized, listRecord(), DSP, key, required - 1);
    expectRefused(tooSmall, INSUFFICIENT_SIZE, required, line);
    EXPECT_EQ(tooSmall.allocations, 0U);
    const Answer fits = ask(AnswerSerialized, listRecord(), DSP, key, required);
    EXPECT_EQ(fits.status, SUCCESS);
    EXPECT_EQ(fits.size, required);

    const Answer empty = ask(AnswerSerialized, recordOf({}), DSP, key, 0);
    EXPECT_EQ(empty.status, SUCCESS);
    EXPECT_EQ(empty.size, 0U);
    EXPECT_EQ(empty.buffer, bufferWith({}));
    if (key >= 47) {
      expectRefused(ask(AnswerSerialized, recordOf(dsp), DSP, key), FAILURE, MAX, line);
    }
  }
}

}  // namespace
