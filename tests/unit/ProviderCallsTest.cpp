// Single calls of a provider: growth, widths, decoding, and what a provider that breaks its
// promises gets: a failed call with a fixed message, and the destination as it was.
#include "DynamicSocInfo/import/ProviderCalls.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "FakeProvider.h"

namespace {

using Sizes = std::vector<std::uint64_t>;

constexpr std::uint32_t KEY = 7;
constexpr std::uint64_t MAX = 0xFFFFFFFFFFFFFFFF;
constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;
constexpr const char* MATCHING = "INSUFFICIENT_SIZE despite matching size";
constexpr const char* NO_MEMORY = "reported size cannot be held";

class ProviderCalls : public testing::Test {
 protected:
  void Set(Behaviour behaviour) {
    provider_.scalars[{DSP, KEY}] = std::move(behaviour);
    provider_.offered.clear();
  }
  ProviderLoader& Loader() { return provider_.loader; }
  Sizes& Offered() { return provider_.offered[{DSP, KEY}]; }
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
  void ExpectRefused(bool (*call)(ProviderLoader&, std::uint32_t, std::uint32_t, Out&,
                                  std::string*),
                     Out out) {
    const Out before = out;
    std::string failure;
    EXPECT_FALSE(call(Loader(), DSP, KEY, out, nullptr));
    EXPECT_FALSE(call(Loader(), DSP, KEY, out, &failure));
    EXPECT_NE(failure, "");
    EXPECT_EQ(out, before);
  }

  void ExpectWordsRefused() {
    ExpectRefused(TryGetU64, std::uint64_t{77});
    ExpectRefused(TryGetU32, std::uint32_t{77});
    ExpectRefused(TryGetU8, std::uint8_t{77});
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

TEST_F(ProviderCalls, TakeTheLowBitsOfAnAnswer) {
  struct {
    std::uint64_t answer;
    std::uint32_t low32;
    std::uint8_t low8;
    bool flag;
  } const ROWS[] = {{0x100000005, 5, 5, true},
                    {0x0102, 0x0102, 2, true},
                    {0x100000000, 0, 0, true},
                    {0, 0, 0, false},
                    {MAX, 0xFFFFFFFF, 0xFF, true}};
  for (const auto& row : ROWS) {
    Set(answers(words({row.answer})));
    std::uint64_t whole = 77;
    std::uint32_t low32 = 77;
    std::uint8_t low8 = 77;
    bool flag = !row.flag;
    EXPECT_TRUE(TryGetU64(Loader(), DSP, KEY, whole) && TryGetU32(Loader(), DSP, KEY, low32) &&
                TryGetU8(Loader(), DSP, KEY, low8) && TryGetBool(Loader(), DSP, KEY, flag));
    EXPECT_EQ(std::tuple(whole, low32, low8, flag),
              std::tuple(row.answer, row.low32, row.low8, row.flag));
  }
  Set(answers(packed<float>({-1.5F})));
  float number = 77;
  EXPECT_TRUE(TryGetFloat(Loader(), DSP, KEY, number));
  EXPECT_EQ(number, -1.5F);
}

TEST_F(ProviderCalls, FailWithoutAnAnswer) {
  for (const std::uint32_t status : {1U, 3U, 5U, 25U, 0xFFFFFFFFU}) {
    Set(replies({{status, 8, Bytes(8, 1)}}));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), "GetCapability failed") << status;
    ExpectAllRefused();
  }
  Loader().getCapability = nullptr;
  EXPECT_EQ(MessageOf([&] { GetBytes(); }), "SoCServiceUtils not loaded");
  ExpectAllRefused();
}

TEST_F(ProviderCalls, CatchWhatFailsTheCallAndNothingElse) {
  Set([](void*, std::uint64_t*) -> std::uint32_t { throw std::range_error("derived"); });
  ExpectAllRefused();
  Set([](void*, std::uint64_t*) -> std::uint32_t { throw std::logic_error("another"); });
  std::uint64_t number = 77;
  float real = 7.5F;
  std::string text = "kept";
  EXPECT_THROW(TryGetU64(Loader(), DSP, KEY, number), std::logic_error);
  EXPECT_THROW(TryGetFloat(Loader(), DSP, KEY, real), std::logic_error);
  EXPECT_THROW(TryGetString(Loader(), DSP, KEY, text), std::logic_error);
  EXPECT_EQ(std::tuple(number, real, text), std::tuple(77U, 7.5F, "kept"));
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
      {{{TOO_SMALL, 0}}, MATCHING, {32}},
      {{{TOO_SMALL, 32}, {SUCCESS, 8}}, MATCHING, {32}},
      {{{TOO_SMALL, 64}, {TOO_SMALL, 40}}, MATCHING, {32, 64}},
      {{{TOO_SMALL, 64}, {FAILURE, 128}}, "GetCapability failed", {32, 64}},
  };
  for (const auto& row : ROWS) {
    Set(replies(row.script));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), row.message);
    EXPECT_EQ(Offered(), row.offered);
    EXPECT_TRUE(provider_.offeredZeros) << "bytes of a refused call were offered again";
  }
}

TEST_F(ProviderCalls, RefuseSizesThatNobodyCanHold) {
  constexpr std::uint64_t ONE = 1;
  for (const std::uint32_t status : {SUCCESS, INSUFFICIENT_SIZE}) {
    for (const std::uint64_t size : {LARGEST_ANSWER + 1, ONE << 40, ONE << 63, MAX - 7, MAX}) {
      Set(replies({{status, size, Bytes(8, 1)}}));
      EXPECT_EQ(MessageOf([&] { GetBytes(); }), NO_MEMORY);
      EXPECT_EQ(Offered(), Sizes{32});
      ExpectAllRefused();
    }
    Set(exhausts(replies({{status, 4097}}), status));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), NO_MEMORY);
    // A size that no provider named is another matter.
    const AllocationFault fault(1);
    EXPECT_THROW(GetBytes(), std::bad_alloc);
  }
}

TEST_F(ProviderCalls, NumbersHaveOneWidth) {
  for (const std::uint64_t size : {0U, 3U, 4U, 5U, 7U, 8U, 9U, 16U}) {
    SCOPED_TRACE(size);
    Set(replies({{SUCCESS, size, Bytes(8, 1)}}));
    if (size != 8) {
      ExpectWordsRefused();
    }
    if (size != 4) {
      ExpectRefused(TryGetFloat, 7.5F);
    }
  }
}

struct Malformed {
  Behaviour behaviour;
  std::string message;
};

TEST_F(ProviderCalls, VectorsMatchTheirCount) {
  constexpr const char* BAD = "bad vector format";
  constexpr const char* SMALL = "vector buffer is too small";
  constexpr const char* LARGE = "vector buffer does not match expected size";
  constexpr std::uint64_t WRAPS = std::uint64_t{1} << 61;  // times 8 it is 0
  const Malformed ROWS[] = {
      {answers({}), BAD},
      {answers(Bytes(7)), BAD},
      {answers(padded(words({1}), 15)), SMALL},
      {answers(words({WRAPS})), SMALL},
      {answers(words({MAX, 0})), SMALL},
      {answers(Bytes(9)), LARGE},
      {answers(words({1, 0, 0})), LARGE},
      {exhausts(answers(words({3, 0, 0, 0}))), NO_MEMORY},
  };
  for (const auto& row : ROWS) {
    Set(row.behaviour);
    EXPECT_EQ(MessageOf([&] { ReadU64Vector(Loader(), DSP, KEY); }), row.message);
    ExpectRefused(TryGetU32List, std::vector<std::uint32_t>{7, 7});
  }
  Set(answers(words({5, 1, 2, 3, 4, 0x700000006})));
  EXPECT_EQ(ReadU64Vector(Loader(), DSP, KEY),
            (std::vector<std::uint64_t>{1, 2, 3, 4, 0x700000006}));
  std::vector<std::uint32_t> low = {7};
  EXPECT_TRUE(TryGetU32List(Loader(), DSP, KEY, low));
  EXPECT_EQ(low, (std::vector<std::uint32_t>{1, 2, 3, 4, 6}));
}

TEST_F(ProviderCalls, StringsEndAtTheirFirstNul) {
  const Bytes text(63, 't');
  const Malformed ROWS[] = {
      {answers({}), "missing null terminator"},
      {answers(text), "missing null terminator"},
      {replies({{SUCCESS, 2, {'a', 'b', 0}}}), "missing null terminator"},
      {exhausts(answers(text + Bytes{0})), NO_MEMORY},
  };
  for (const auto& row : ROWS) {
    Set(row.behaviour);
    EXPECT_EQ(MessageOf([&] { ReadCapabilityString(Loader(), DSP, KEY); }), row.message);
    ExpectRefused(TryGetString, std::string("kept"));
  }
  for (const Behaviour& behaviour :
       {answers(text + Bytes{0, 'c'}), replies({{TOO_SMALL, 64}, {SUCCESS, 64, text}})}) {
    Set(behaviour);
    EXPECT_EQ(ReadCapabilityString(Loader(), DSP, KEY), std::string(63, 't'));
  }
}

}  // namespace
