// The query answers over components, keys and sizes: status, `*size`, the bytes of the buffer, and
// the diagnostic lines, each of them one write.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string_view>

#include "AnswerProbe.h"

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

/// The answer must be a refusal with `line`, in which # means `number`, or no refusal.
void expectLine(Query query, std::uint64_t component, std::uint64_t key, Line line,
                std::int64_t number) {
  const Answer answer = ask(query, listRecord(), component, key);
  if (line == ANSWERED) {
    EXPECT_EQ(answer.status, SUCCESS);
    EXPECT_EQ(answer.writes, std::vector<std::string>{});
    EXPECT_EQ(answer.allocations, 0U);
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
      expectLine(AnswerList, row.component, key, row.serializedLine, number);
    }
  }
}

TEST(ScalarForm, MinimumSizeGoesByTheWholeKey) {
  const std::map<Key, std::uint64_t> otherMinimums = {
      {{GPU, 4}, 12}, {{DSP, 16}, 16}, {{DSP, 43}, 4}, {{DSP, 44}, 4}};
  for (std::uint64_t component = 0; component <= 7; ++component) {
    for (std::uint64_t key = 0; key <= 70; ++key) {
      SCOPED_TRACE(testing::Message() << component << " " << key);
      const auto other = otherMinimums.find({component, key});
      const std::uint64_t minimum = other == otherMinimums.end() ? 8 : other->second;
      EXPECT_EQ(ScalarFormOf(component, key).minimumSize, minimum);
      EXPECT_EQ(ScalarFormOf(component + HIGH, key).minimumSize, 8U);
      EXPECT_EQ(ScalarFormOf(component, key + HIGH).minimumSize, 8U);
    }
  }
}

TEST(Answers, GpuNameNeedsRoomForItsNul) {
  for (const std::size_t length : {0, 7, 11, 12, 40}) {
    GpuInfo gpu(0);
    gpu.name = std::string(length, 'n');
    const Bytes text = Bytes(length, 'n') + Bytes{0};
    for (const std::uint64_t capacity : {length, length + 1, length + 2}) {
      SCOPED_TRACE(testing::Message() << length << " in " << capacity);
      const bool fits = capacity > length;
      const Answer answer = ask(AnswerScalar, recordOf({}, gpu), GPU, 4, capacity);
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
    const Answer tooSmall = ask(AnswerList, listRecord(), DSP, key, required - 1);
    expectRefused(tooSmall, INSUFFICIENT_SIZE, required, line);
    EXPECT_EQ(tooSmall.allocations, 0U);
    const Answer fits = ask(AnswerList, listRecord(), DSP, key, required);
    EXPECT_EQ(fits.status, SUCCESS);
    EXPECT_EQ(fits.size, required);

    const Answer empty = ask(AnswerList, recordOf({}), DSP, key, 0);
    EXPECT_EQ(empty.status, SUCCESS);
    EXPECT_EQ(empty.size, 0U);
    EXPECT_EQ(empty.buffer, bufferWith({}));
    if (key >= 47) {
      expectRefused(ask(AnswerList, recordOf(dsp), DSP, key), FAILURE, MAX, line);
    }
  }
}

}  // namespace
