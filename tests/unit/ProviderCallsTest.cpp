// Single calls of a provider: growth, widths, decoding, and what a provider that breaks its
// promises gets: a failed call with a fixed message, and the destination as it was.
#include "DynamicSocInfo/import/ProviderCalls.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "FakeProvider.h"

namespace {

using Sizes = std::vector<std::uint64_t>;

constexpr std::uint32_t KEY = 7;
constexpr std::uint64_t MAX = 0xFFFFFFFFFFFFFFFF;
constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;
constexpr const char* MATCHING = "INSUFFICIENT_SIZE despite matching size";
constexpr const char* NO_MEMORY = "reported size cannot be held";

/// What the calls that catch leave in their destinations, at first what a refused answer leaves.
struct Values {
  std::uint64_t number = 77;
  std::uint32_t low32 = 77;
  std::uint8_t low8 = 77;
  bool flag = false;
  float real = 7.5F;
  std::vector<std::uint32_t> list = {7, 7};
  std::string text = "kept";
  int successes = 0;

  bool operator==(const Values&) const = default;
};

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

  Values TryAll() {
    Values values;
    const auto count = [&](auto call, auto& out) {
      values.successes += call(Loader(), DSP, KEY, out, nullptr) ? 1 : 0;
    };
    count(TryGetU64, values.number);
    count(TryGetU32, values.low32);
    count(TryGetU8, values.low8);
    count(TryGetBool, values.flag);
    count(TryGetFloat, values.real);
    count(TryGetU32List, values.list);
    count(TryGetString, values.text);
    return values;
  }

  FakeProvider provider_;
};

TEST_F(ProviderCalls, TakeAnswersOfTheirWidthAndTheirLowBits) {
  struct {
    Bytes answer;
    Values values;
  } const ROWS[] = {
      {words({0x100000005}), {0x100000005, 5, 5, true, 7.5F, {7, 7}, "\5", 5}},
      {words({0x0102}), {0x0102, 0x0102, 2, true, 7.5F, {7, 7}, "\2\1", 5}},
      {words({0x100000000}), {0x100000000, 0, 0, true, 7.5F, {7, 7}, "", 5}},
      {words({0}), {0, 0, 0, false, 7.5F, {}, "", 6}},
      {words({MAX}), {MAX, 0xFFFFFFFF, 0xFF, true, 7.5F, {7, 7}, "kept", 4}},
      {packed<float>({-1.5F}), {77, 77, 77, false, -1.5F, {7, 7}, "", 2}},
      {words({2, 3, 0x700000006}), {77, 77, 77, false, 7.5F, {3, 6}, "\2", 2}},
  };
  for (const auto& row : ROWS) {
    Set(answers(row.answer));
    EXPECT_EQ(TryAll(), row.values) << &row - ROWS;
  }
  for (const std::size_t size : {0U, 3U, 5U, 7U, 9U, 15U, 16U}) {
    Set(answers(Bytes(size, 1)));
    EXPECT_EQ(TryAll(), Values()) << size;
  }
}

TEST_F(ProviderCalls, FailWithoutAnAnswer) {
  for (const std::uint32_t status : {1U, 3U, 5U, 25U, 0xFFFFFFFFU}) {
    Set(replies({{status, 8, Bytes(8, 1)}}));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), "GetCapability failed") << status;
    EXPECT_EQ(TryAll(), Values());
  }
  Loader().getCapability = nullptr;
  EXPECT_EQ(MessageOf([&] { GetBytes(); }), "SoCServiceUtils not loaded");
}

TEST_F(ProviderCalls, CatchWhatFailsTheCallAndNothingElse) {
  Set([](void*, std::uint64_t*) -> std::uint32_t { throw std::range_error("derived"); });
  EXPECT_EQ(TryAll(), Values());
  Set([](void*, std::uint64_t*) -> std::uint32_t { throw std::logic_error("another"); });
  EXPECT_THROW(TryAll(), std::logic_error);
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
  for (const std::uint32_t status : {SUCCESS, INSUFFICIENT_SIZE}) {
    for (const std::uint64_t size : {LARGEST_ANSWER + 1, MAX / 2 + 1, MAX - 7, MAX}) {
      Set(replies({{status, size, Bytes(8, 1)}}));
      EXPECT_EQ(MessageOf([&] { GetBytes(); }), NO_MEMORY);
      EXPECT_EQ(Offered(), Sizes{32});
      EXPECT_EQ(TryAll(), Values());
    }
    Set(exhausts(replies({{status, 4097}}), status));
    EXPECT_EQ(MessageOf([&] { GetBytes(); }), NO_MEMORY);
    // A size that no provider named is another matter.
    const AllocationFault fault(1);
    EXPECT_THROW(GetBytes(), std::bad_alloc);
  }
}

TEST_F(ProviderCalls, DecodeOnlyWhatIsWellFormed) {
  constexpr const char* BAD = "bad vector format";
  constexpr const char* SMALL = "vector buffer is too small";
  constexpr const char* LARGE = "vector buffer does not match expected size";
  constexpr const char* ENDLESS = "missing null terminator";
  constexpr std::uint64_t WRAPS = std::uint64_t{1} << 61;  // times 8 it is 0
  const auto asList = [](ProviderLoader& loader) { ReadU64Vector(loader, DSP, KEY); };
  const auto asText = [](ProviderLoader& loader) { ReadCapabilityString(loader, DSP, KEY); };
  struct {
    void (*decode)(ProviderLoader&);
    Behaviour behaviour;
    const char* message;
  } const ROWS[] = {
      {asList, answers(Bytes(7)), BAD},
      {asList, answers(padded(words({1}), 15)), SMALL},
      {asList, answers(words({WRAPS})), SMALL},
      {asList, answers(words({MAX, 0})), SMALL},
      {asList, answers(Bytes(9)), LARGE},
      {asList, answers(words({1, 0, 0})), LARGE},
      {asList, exhausts(answers(words({3, 0, 0, 0}))), NO_MEMORY},
      {asList, answers(words({4, 0, 0, 0, 0})), ""},
      {asText, answers({}), ENDLESS},
      {asText, answers(Bytes(63, 't')), ENDLESS},
      {asText, replies({{SUCCESS, 2, {'a', 'b', 0}}}), ENDLESS},
      {asText, exhausts(answers(Bytes(63, 't') + Bytes{0})), NO_MEMORY},
      {asText, answers(Bytes(63, 't') + Bytes{0, 'c'}), ""},
  };
  for (const auto& row : ROWS) {
    Set(row.behaviour);
    EXPECT_EQ(MessageOf([&] { row.decode(Loader()); }), row.message) << &row - ROWS;
  }
}

}  // namespace
