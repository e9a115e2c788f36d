// Single calls of a provider: growth, widths, decoding, and what a provider that breaks its
// promises gets: a failed call with a fixed message, and the destination as it was.
#include "import/ProviderCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "AllocationWatch.h"
#include "FakeProvider.h"

namespace {

using Sizes = std::vector<std::uint64_t>;
using Words = std::vector<std::uint64_t>;

constexpr std::uint32_t KEY = 7;
constexpr std::uint64_t MAX = 0xFFFFFFFFFFFFFFFF;
constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;
constexpr const char* MATCHING = "INSUFFICIENT_SIZE despite matching size";

class ProviderCalls : public testing::Test {
 protected:
  void Set(Behaviour behaviour) {
    provider_.scalars[{DSP, KEY}] = std::move(behaviour);
    provider_.TakeAsked();
  }
  ProviderLoader& Loader() { return provider_.loader; }
  Bytes GetBytes() { return GetCapabilityBytes(Loader(), DSP, KEY, 32); }

  /// What `call` throws, or nothing.
  template <class Call>
  static std::string MessageOf(Call call) {
    try {
      call();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "";
  }

  template <class Out>
  void ExpectRefused(bool (*call)(ProviderLoader&, std::uint32_t, std::uint32_t, Out&), Out out) {
    const Out before = out;
    EXPECT_FALSE(call(Loader(), DSP, KEY, out));
    EXPECT_EQ(out, before);
  }

  void ExpectWordsRefused() {
    ExpectRefused(TryGetU64, std::uint64_t{77});
    ExpectRefused(TryGetU32, std::uint32_t{77});
    ExpectRefused(TryGetU8, std::uint8_t{77});
    ExpectRefused(TryGetBool, true);
    ExpectRefused(TryGetBool, false);
  }

  /// Every call that catches fails and leaves its destination alone.
  void ExpectAllRefused() {
    ExpectWordsRefused();
    ExpectRefused(TryGetFloat, 7.5F);
    ExpectRefused(TryGetU32List, std::vector<std::uint32_t>{7, 7});
    ExpectRefused(TryGetString, std::string("kept"));
  }

  FakeProvider provider_;
};

TEST_F(ProviderCalls, FailWithoutAnAnswer) {
  for (const std::uint32_t status : {1U, 2U, 3U, 5U, 7U, 25U, 26U, 0xFFFFFFFFU}) {
    Set(replies({{status, 8, Bytes(8, 1)}}));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), "GetCapability failed") << status;
    ExpectAllRefused();
  }
  Loader().getCapability = nullptr;
  EXPECT_EQ(MessageOf([&] { GetBytes(); }), "SoCServiceUtils not loaded");
  ExpectAllRefused();
}

TEST_F(ProviderCalls, TakeAsManyBytesAsReported) {
  struct {
    std::size_t initialSize;
    Reply reply;
    Bytes bytes;
  } const ROWS[] = {
      {4, {SUCCESS, 4, {1, 2, 3, 4}}, {1, 2, 3, 4}},
      {4, {SUCCESS, 2, {1, 2, 3, 4}}, {1, 2}},
      {4, {SUCCESS, 6, {1, 2, 3, 4, 5, 6}}, {1, 2, 3, 4, 0, 0}},
      {4, {SUCCESS, 0, {1}}, {}},
      {0, {SUCCESS, 3}, {0, 0, 0}},
  };
  for (const auto& row : ROWS) {
    Set(replies({row.reply}));
    EXPECT_EQ(GetCapabilityBytes(Loader(), DSP, KEY, row.initialSize), row.bytes);
    const Asked expected{{DSP, KEY}, row.initialSize, row.initialSize != 0, true};
    EXPECT_EQ(provider_.TakeAsked(), std::vector{expected});
  }
}

TEST_F(ProviderCalls, GrowWhileMoreIsAskedFor) {
  const Bytes dirt(200, 0xEE);
  struct {
    std::vector<Reply> script;
    std::string message;
    Sizes offered;
  } const ROWS[] = {
      {{{TOO_SMALL, 33, dirt}, {TOO_SMALL, 200, dirt}, {SUCCESS, 5}}, "", {32, 33, 200}},
      {{{TOO_SMALL, LARGEST_ANSWER}, {SUCCESS, 8}}, "", {32, LARGEST_ANSWER}},
      {{{TOO_SMALL, 32}}, MATCHING, {32}},
      {{{TOO_SMALL, 0}}, MATCHING, {32}},
      {{{TOO_SMALL, 64}, {TOO_SMALL, 64}}, MATCHING, {32, 64}},
      {{{TOO_SMALL, 64}, {TOO_SMALL, 40}}, MATCHING, {32, 64}},
      {{{TOO_SMALL, 64}, {FAILURE, 128}}, "GetCapability failed", {32, 64}},
  };
  for (const auto& row : ROWS) {
    Set(replies(row.script));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), row.message);
    const std::vector<Asked> asked = provider_.TakeAsked();
    EXPECT_EQ(each(asked, &Asked::offered), row.offered);
    EXPECT_EQ(each(asked, &Asked::isZero), std::vector<bool>(asked.size(), true))
        << "bytes of a refused call were offered again";
  }
}

TEST_F(ProviderCalls, RefuseSizesThatNobodyCanHold) {
  constexpr std::uint64_t ONE = 1;
  for (const std::uint32_t status : {SUCCESS, INSUFFICIENT_SIZE}) {
    for (const std::uint64_t size : {LARGEST_ANSWER + 1, ONE << 40, ONE << 63, MAX - 7, MAX}) {
      Set(replies({{status, size, Bytes(8, 1)}}));
      EXPECT_NE(MessageOf([&] { GetBytes(); }), "");
      EXPECT_EQ(provider_.TakeAsked().size(), 1U);
      ExpectAllRefused();
    }
    largestAllocation = 4096;
    Set(replies({{status, 4097}}));
    EXPECT_NE(MessageOf([&] { GetBytes(); }), "");
    ExpectAllRefused();
    // A size that no provider named is another matter.
    EXPECT_THROW(GetCapabilityBytes(Loader(), DSP, KEY, 4097), std::bad_alloc);
    largestAllocation = SIZE_MAX;
  }
}

TEST_F(ProviderCalls, NumbersTakeTheirLowBits) {
  struct {
    std::uint64_t value;
    std::uint32_t low32;
    std::uint8_t low8;
    bool flag;
  } const ROWS[] = {
      {0, 0, 0, false},          {0x100000005, 5, 5, true},     {0x100000000, 0, 0, true},
      {0x0102, 0x0102, 2, true}, {MAX, 0xFFFFFFFF, 0xFF, true},
  };
  for (const auto& row : ROWS) {
    SCOPED_TRACE(row.value);
    Set(answers(words({row.value})));
    std::uint64_t u64 = ~row.value;
    std::uint32_t u32 = ~row.low32;
    auto u8 = static_cast<std::uint8_t>(~row.low8);
    bool flag = !row.flag;
    EXPECT_TRUE(TryGetU64(Loader(), DSP, KEY, u64) && TryGetU32(Loader(), DSP, KEY, u32) &&
                TryGetU8(Loader(), DSP, KEY, u8) && TryGetBool(Loader(), DSP, KEY, flag));
    EXPECT_EQ(u64, row.value);
    EXPECT_EQ(u32, row.low32);
    EXPECT_EQ(u8, row.low8);
    EXPECT_EQ(flag, row.flag);
  }
}

TEST_F(ProviderCalls, NumbersHaveOneWidth) {
  for (const std::uint64_t size : {0U, 3U, 4U, 5U, 7U, 8U, 9U, 16U}) {
    SCOPED_TRACE(size);
    Set(replies({{SUCCESS, size, {0, 0, 0x20, 0x40}}}));
    if (size != 8) {
      ExpectWordsRefused();
    }
    if (size != 4) {
      ExpectRefused(TryGetFloat, 7.5F);
      continue;
    }
    float value = 0;
    EXPECT_TRUE(TryGetFloat(Loader(), DSP, KEY, value));
    EXPECT_EQ(value, 2.5F);
  }
}

TEST_F(ProviderCalls, VectorsMatchTheirCount) {
  constexpr const char* BAD = "bad vector format";
  constexpr const char* SMALL = "vector buffer is too small";
  constexpr const char* LARGE = "vector buffer does not match expected size";
  constexpr std::uint64_t WRAPS = std::uint64_t{1} << 61;  // times 8 it is 0
  struct {
    Words words;
    std::size_t size;  ///< Of the answer.
    std::string message;
  } const ROWS[] = {
      {{0}, 8, ""},
      {{1, MAX}, 16, ""},
      {{5, 1, 2, 3, 4, 0x700000006}, 48, ""},
      {{}, 0, BAD},
      {{0}, 7, BAD},
      {{1}, 8, SMALL},
      {{1, 0}, 15, SMALL},
      {{0, 0}, 9, LARGE},
      {{1, 0, 0}, 24, LARGE},
      {{WRAPS}, 8, SMALL},
      {{WRAPS + 1, 0}, 16, SMALL},
      {{MAX}, 8, SMALL},
      {{MAX, 0}, 16, SMALL},
  };
  for (const auto& row : ROWS) {
    SCOPED_TRACE(testing::PrintToString(row.words));
    Set(answers(padded(words(row.words), row.size)));
    Words elements;
    EXPECT_EQ(MessageOf([&] { elements = ReadU64Vector(Loader(), DSP, KEY); }), row.message);
    if (!row.message.empty()) {
      ExpectRefused(TryGetU32List, std::vector<std::uint32_t>{7, 7});
      continue;
    }
    EXPECT_EQ(elements, Words(row.words.begin() + 1, row.words.end()));
    std::vector<std::uint32_t> list(9, 7);
    EXPECT_TRUE(TryGetU32List(Loader(), DSP, KEY, list));
    EXPECT_TRUE(std::ranges::equal(list, elements, {}, {}, [](std::uint64_t element) {
      return static_cast<std::uint32_t>(element);
    }));
  }
}

TEST_F(ProviderCalls, StringsEndAtTheirFirstNul) {
  const Bytes text(63, 't');
  struct {
    Behaviour behaviour;
    std::optional<std::string> text;
  } const ROWS[] = {
      {answers({0}), ""},
      {answers({'a', 'b', 0, 'c'}), "ab"},
      {answers(text + Bytes{0}), std::string(63, 't')},
      {replies({{SUCCESS, 40, text}}), std::string(32, 't')},  // the NUL is in what was added
      {answers({}), std::nullopt},
      {answers(text), std::nullopt},
      {replies({{SUCCESS, 2, {'a', 'b', 0}}}), std::nullopt},
  };
  for (const auto& row : ROWS) {
    std::string out = "kept";
    Set(row.behaviour);
    EXPECT_EQ(MessageOf([&] { ReadCapabilityString(Loader(), DSP, KEY); }),
              row.text ? "" : "missing null terminator");
    EXPECT_EQ(TryGetString(Loader(), DSP, KEY, out), row.text.has_value());
    EXPECT_EQ(out, row.text.value_or("kept"));
  }
}

}  // namespace
