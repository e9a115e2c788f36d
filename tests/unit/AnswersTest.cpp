// The query answers over components, keys and sizes: status, `*size`, the bytes of the buffer, the
// diagnostic lines.
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <string>

#include "AllocationFault.h"
#include "Bytes.h"
#include "DynamicSocInfo/ListAnswers.h"
#include "DynamicSocInfo/ScalarAnswers.h"
#include "DynamicSocInfo/capabilities/KeyTable.h"
#include "DynamicSocInfo/chip/ChipCatalogue.h"
#include "ZynSystemInfo.h"

namespace {

constexpr std::uint64_t MAX = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t HIGH = std::uint64_t{1} << 32;
constexpr std::uint64_t CAPACITY = 128;  // bytes: more than any answer here

struct Answer {
  std::uint32_t status;
  std::uint64_t size;  ///< As the query left it.
  Bytes buffer;        ///< The whole of it, see `bufferWith`.
  std::string line;    ///< Written to standard error.
};

/// The scalar query of a record, after the argument checks.
std::uint32_t AnswerScalar(const SocInfo& record, std::uint64_t component, std::uint64_t key,
                           void* buffer, std::uint64_t* size) {
  return ScalarAnswers(record).Answer(ScalarFormOf(component, key), component, key, buffer, size);
}

/// The buffer of an answer that wrote `bytes` and nothing more.
Bytes bufferWith(const Bytes& bytes) { return padded(bytes, CAPACITY, 0xA5); }

/// `query` is `AnswerScalar` or `AnswerList`; `size` is the buffer size passed to it.
Answer ask(decltype(AnswerList) query, const SocInfo& record, std::uint64_t component,
           std::uint64_t key, std::uint64_t size = CAPACITY) {
  Answer answer{FAILURE, size, bufferWith({}), ""};
  testing::internal::CaptureStderr();
  {
    const AllocationFault fault(1);
    answer.status = query(record, component, key, answer.buffer.data(), &answer.size);
    EXPECT_FALSE(AllocationFault::Happened());
  }
  answer.line = testing::internal::GetCapturedStderr();
  return answer;
}

void expectRefused(const Answer& answer, std::uint32_t status, std::uint64_t size,
                   const std::string& line) {
  EXPECT_EQ(answer.status, status);
  EXPECT_EQ(answer.size, size);
  EXPECT_EQ(answer.buffer, bufferWith({}));
  EXPECT_EQ(answer.line, line + '\n');
}

SocInfo recordOf(const DspInfo& dsp, const std::string& gpuName = "") {
  SocInfo record = BuildChipRecord(0);
  record.dsps.front() = dsp;
  record.gpus.front().name = gpuName;
  return record;
}

/// A record with three elements in every list.
SocInfo listRecord() {
  DspInfo dsp;
  dsp.cap16 = {5, 5, 5};
  dsp.cap46 = {{0, 6}, {1, 6}, {2, 6}};
  dsp.cap47 = {"seven", "seven", "seven"};
  dsp.cap48 = {{0, {"eight", 8}}, {1, {"eight", 8}}, {2, {"eight", 8}}};
  return recordOf(dsp);
}

// The program of the interface (tests/package) asks every key for its status.
TEST(Answers, OfKeysAtTheEndsOfEachForm) {
  struct {
    std::uint64_t component, key;
    std::string ofScalarQuery, ofListQuery = ofScalarQuery;  ///< Lines; without one it answers.
  } const ROWS[] = {
      {DSP, 0, "DSP_INFO UNSUPPORTED_KEY: 0"},
      {DSP, 1, "", "NOT A SERIALIZED DSP CAPABILITY: 1"},
      {DSP, 16, "COMPLEX CAPABILITY: [16] PLEASE USE SERIALIZED API!", ""},
      {DSP, 35, "DSP_INFO UNSUPPORTED_KEY: 35"},
      {DSP, 45, "", "NOT A SERIALIZED DSP CAPABILITY: 45"},
      {DSP, 46, "COMPLEX CAPABILITY: [46] PLEASE USE SERIALIZED API!", ""},
      {DSP, 48, "COMPLEX CAPABILITY: [48] PLEASE USE SERIALIZED API!", ""},
      {DSP, 49, "DSP_INFO UNSUPPORTED_KEY: 49"},
      {DSP, HIGH - 1, "DSP_INFO UNSUPPORTED_KEY: -1"},
      {DSP, HIGH + 1, "", "NOT A SERIALIZED DSP CAPABILITY: 1"},
      {GPU, 0, "GPU_INFO UNSUPPORTED_KEY: 0"},
      {GPU, 12, "", "NOT A SERIALIZED GPU CAPABILITY: 12"},
      {GPU, 13, "", "GPU_INFO UNSUPPORTED_KEY: 13"},
      {GPU, 14, "GPU_INFO UNSUPPORTED_KEY: 14"},
      {CPU, 0, "CPU_INFO UNSUPPORTED_KEY: 0"},
      {CPU, 2, "", "NOT A SERIALIZED CPU CAPABILITY: 2"},
      {CPU, 3, "CPU_INFO UNSUPPORTED_KEY: 3"},
      {0, 1, "UNSUPPORTED_COMPONENT: 0"},
      {4, 16, "UNSUPPORTED_COMPONENT: 4"},
      {6, 1, "UNSUPPORTED_COMPONENT: 6"},
      {HIGH + 2, 16, "UNSUPPORTED_COMPONENT: 2"},
      {HIGH / 2, 1, "UNSUPPORTED_COMPONENT: -2147483648"},
  };
  const auto expectLine = [](const Answer& answer, const std::string& line) {
    if (line.empty()) {
      EXPECT_EQ(answer.status, SUCCESS);
      EXPECT_EQ(answer.line, "");
    } else {
      const bool isComponent = line.starts_with("UNSUPPORTED_COMPONENT");
      expectRefused(answer, isComponent ? UNSUPPORTED_COMPONENT : UNSUPPORTED_KEY, CAPACITY, line);
    }
  };
  for (const auto& row : ROWS) {
    SCOPED_TRACE(testing::Message() << "component " << row.component << " key " << row.key);
    expectLine(ask(AnswerScalar, listRecord(), row.component, row.key), row.ofScalarQuery);
    expectLine(ask(AnswerList, listRecord(), row.component, row.key), row.ofListQuery);
  }
}

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
  const std::pair<std::uint64_t, Bytes> rows[] = {
      {1, words({MAX})}, {4, words({0xFFFFFFFF})}, {6, words({1})},
      {7, words({MAX})}, {38, words({0xFF})},      {43, packed<float>({-1.0F})}};
  for (const auto& [key, bytes] : rows) {
    EXPECT_EQ(ask(AnswerScalar, record, DSP, key).buffer, bufferWith(bytes)) << key;
  }
}

TEST(Answers, GpuNameNeedsRoomForItsNul) {
  for (const std::size_t length : {0U, 7U, 11U, 12U, 40U}) {
    const std::string name(length, 'n');
    const Bytes text = Bytes(length, 'n') + Bytes{0};
    for (const bool fits : {false, true}) {
      SCOPED_TRACE(testing::Message() << length << fits);
      const Answer answer = ask(AnswerScalar, recordOf({}, name), GPU, 4, length + (fits ? 1 : 0));
      EXPECT_EQ(answer.status, fits ? SUCCESS : INSUFFICIENT_SIZE);
      EXPECT_EQ(answer.size, text.size());
      EXPECT_EQ(answer.buffer, bufferWith(fits ? text : Bytes{}));
      EXPECT_EQ(answer.line, "");
    }
  }
}

TEST(Answers, ListsNeedRoomForEveryByteAndShortNames) {
  const std::pair<std::uint32_t, std::uint64_t> sizes[] = {
      {16, 24}, {46, 24}, {47, 108}, {48, 120}};
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

/// The keys in the order in which a record declares their fields; a comma where the field changes.
template <class Record>
std::string keysByAddress(const Record& record) {
  std::multimap<const void*, std::size_t> keys;
  for (std::size_t key = 0; key < KeyTable<Record>::FIELDS.size(); ++key) {
    VisitField<Record>(
        key, [&](auto field) { keys.emplace(&(record.*field), key); }, [] {});
  }
  std::string text;
  const void* last = nullptr;
  for (const auto& [address, key] : keys) {
    text += (address == last || last == nullptr ? " " : ", ") + std::to_string(key);
    last = address;
  }
  return text;
}

// The import writes and the queries read by one table, so no answer shows two keys swapped in it.
TEST(KeyTable, BindsEachKeyToItsFieldOfTheDeclaredOrder) {
  EXPECT_EQ(
      keysByAddress(DspInfo()),
      " 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 29, 13, 30, 31, 32, 33, 34, 36, 42, 14, 37, 40, "
      "38, 39, 41, 45, 46, 47, 48, 15, 16, 18, 19, 20, 21, 22, 23, 24, 25, 17, 26, 27, 28, 43, "
      "44");
  EXPECT_EQ(keysByAddress(GpuInfo(0)), " 1, 5, 2 6, 3 7, 8, 9, 10, 11, 12, 4, 13");
  EXPECT_EQ(keysByAddress(CpuInfo()), " 1, 2");
}

}  // namespace
