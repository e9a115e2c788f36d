// Single calls of a provider: growth, widths, decoding, and what a provider that breaks its
// promises gets: a failed call with a fixed message, and the destination as it was.
#include "DynamicSocInfo/import/ProviderCalls.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "AllocationFault.h"
#include "DynamicSocInfo/import/KeyImport.h"
#include "FakeProvider.h"

namespace {

constexpr std::uint32_t KEY = 7;
constexpr std::uint64_t MAX = 0xFFFFFFFFFFFFFFFF;
constexpr auto TOO_SMALL = INSUFFICIENT_SIZE;
constexpr const char* REFUSED = "GetCapability failed";
constexpr const char* WIDTH = "Result buffer size mismatch";
constexpr const char* MATCHING = "INSUFFICIENT_SIZE despite matching size";
constexpr const char* NO_MEMORY = "reported size cannot be held";
constexpr const char* SHORT = "bad vector format";
constexpr const char* SMALL = "vector buffer is too small";
constexpr const char* LARGE = "vector buffer does not match expected size";
constexpr const char* ENDLESS = "missing null terminator";

/// What a typed call gives, or why it gives nothing.
template <class Out>
std::string ask(ProviderLoader& provider,
                bool (*call)(ProviderLoader&, std::uint32_t, std::uint32_t, Out&, std::string*),
                const Out& earlier) {
  const AllocationFault none(0);  // until the provider orders one
  Out out = earlier;
  std::string failure;
  if (!call(provider, DSP, KEY, out, &failure)) {
    EXPECT_EQ(out, earlier);
    return failure;
  }
  if constexpr (std::is_integral_v<Out>) {
    return std::to_string(out);
  } else {
    return testing::PrintToString(out);
  }
}
using Ask = std::string (*)(ProviderLoader&);
constexpr Ask U64 = [](auto& provider) { return ask<std::uint64_t>(provider, TryGetU64, 77); };
constexpr Ask U32 = [](auto& provider) { return ask<std::uint32_t>(provider, TryGetU32, 77); };
constexpr Ask U8 = [](auto& provider) { return ask<std::uint8_t>(provider, TryGetU8, 77); };
constexpr Ask FLAG = [](auto& provider) { return ask(provider, TryGetBool, true); };
constexpr Ask REAL = [](auto& provider) { return ask(provider, TryGetFloat, 7.5F); };
constexpr Ask LIST = [](auto& provider) { return ask(provider, TryGetU32List, {7, 7}); };
constexpr Ask TEXT = [](auto& provider) { return ask<std::string>(provider, TryGetString, "7"); };

void exhaust() { AllocationFault::FailNext(); }

TEST(ProviderCalls, TakeWhatIsWellFormedAndReportWhatIsNot) {
  const Bytes one = words({1});
  const Bytes dirt(200, 0xEE);
  const Bytes letters(63, 't');
  const std::string text(63, 't');
  constexpr std::uint64_t WRAPS = std::uint64_t{1} << 61;  // times 8 it is 0
  struct {
    Ask ask;
    std::vector<Reply> script;
    std::string result;
    Sizes offered = {};  ///< Not checked when empty.
  } const ROWS[] = {
      {U64, {answers(words({0x100000005}))}, "4294967301", {8}},
      {U32, {answers(words({0x100000005}))}, "5", {8}},
      {U8, {answers(words({0x100000105}))}, "5", {8}},
      {FLAG, {answers(words({0x100000000}))}, "1", {8}},
      {FLAG, {answers(words({0}))}, "0"},
      {REAL, {answers(packed<float>({-1.5F}))}, "-1.5", {4}},
      {U64, {answers(Bytes(7))}, WIDTH},
      {U32, {answers(Bytes(4))}, WIDTH},
      {U8, {answers(Bytes(1))}, WIDTH},
      {FLAG, {answers(Bytes(9))}, WIDTH},
      {REAL, {answers(one)}, WIDTH},

      {U64, {{FAILURE, 8, one}}, REFUSED},
      {U64, {{SUCCESS + 1, 8, one}}, REFUSED},
      {U64,
       {{SUCCESS, 8, one, [] { throw std::range_error("a runtime error"); }}},
       "a runtime error"},

      {TEXT, {{TOO_SMALL, 33, dirt}, {TOO_SMALL, 200, dirt}, {SUCCESS, 5}}, "\"\"", {32, 33, 200}},
      {TEXT, {{TOO_SMALL, LARGEST_ANSWER}, {SUCCESS, 8}}, "\"\"", {32, LARGEST_ANSWER}},
      {TEXT, {{TOO_SMALL, 0}}, MATCHING, {32}},
      {TEXT, {{TOO_SMALL, 32}, {SUCCESS, 8}}, MATCHING, {32}},
      {TEXT, {{TOO_SMALL, 64}, {TOO_SMALL, 40}}, MATCHING, {32, 64}},
      {TEXT, {{TOO_SMALL, 64}, {FAILURE, 128}}, REFUSED, {32, 64}},
      {TEXT, {{TOO_SMALL, LARGEST_ANSWER + 1}}, NO_MEMORY, {32}},
      {TEXT, {{TOO_SMALL, MAX}}, NO_MEMORY, {32}},
      {TEXT, {{TOO_SMALL, 4097, {}, exhaust}}, NO_MEMORY, {32}},
      {TEXT, {{SUCCESS, LARGEST_ANSWER + 1}}, NO_MEMORY, {32}},
      {TEXT, {{SUCCESS, MAX - 7}}, NO_MEMORY, {32}},
      {TEXT, {{SUCCESS, 4097, {}, exhaust}}, NO_MEMORY, {32}},

      {LIST, {answers(words({2, 3, 0x700000006}))}, "{ 3, 6 }", {32}},
      {LIST, {answers(words({0}))}, "{}"},
      {LIST, {answers(words({4, 0, 0, 0, 0}))}, "{ 0, 0, 0, 0 }", {32, 40}},
      {LIST, {answers({})}, SHORT},
      {LIST, {answers(Bytes(7))}, SHORT},
      {LIST, {answers(padded(one, 15))}, SMALL},
      {LIST, {answers(words({WRAPS}))}, SMALL},
      {LIST, {answers(words({MAX, 0}))}, SMALL},
      {LIST, {answers(Bytes(9))}, LARGE},
      {LIST, {answers(words({1, 0, 0}))}, LARGE},
      {LIST, {{SUCCESS, 32, words({3, 0, 0, 0}), exhaust}}, NO_MEMORY},

      {TEXT, {answers({'a', 'b', 0, 'c'})}, "\"ab\"", {32}},
      {TEXT, {answers(letters + Bytes{0})}, testing::PrintToString(text), {32, 64}},
      {TEXT, {answers({})}, ENDLESS},
      {TEXT, {answers(letters)}, ENDLESS},
      {TEXT, {{SUCCESS, 2, {'a', 'b', 0}}}, ENDLESS},
      {TEXT, {{SUCCESS, 64, letters + Bytes{0}, exhaust}}, NO_MEMORY},
  };
  for (const auto& row : ROWS) {
    SCOPED_TRACE(&row - ROWS);
    FakeProvider provider;
    provider.script[{DSP, KEY}] = row.script;
    EXPECT_EQ(row.ask(provider.loader), row.result);
    if (!row.offered.empty()) {
      EXPECT_EQ((provider.offered[{DSP, KEY}]), row.offered);
    }
    EXPECT_TRUE(provider.offeredZeros) << "bytes of a refused call were offered again";
  }
}

TEST(ProviderCalls, LetOtherExceptionsThrough) {
  FakeProvider provider;
  provider.script[{DSP, KEY}] = {{SUCCESS, 8, {}, [] { throw std::logic_error("fault"); }}};
  EXPECT_THROW(U64(provider.loader), std::logic_error);
  std::string text;
  const AllocationFault fault(1);  // for a size that no provider reported
  EXPECT_THROW(TryGetString(provider.loader, DSP, KEY, text), std::bad_alloc);
}

TEST(ProviderCalls, NeedAProviderAndAFormOfTheKey) {
  ProviderLoader none;
  EXPECT_EQ(U64(none), "SoCServiceUtils not loaded");
  FakeProvider provider;
  DspInfo dsp;
  EXPECT_FALSE(TryImportKey(provider.loader, 35, dsp)) << "no capability";
  EXPECT_FALSE(TryImportKey(provider.loader, 46, dsp)) << "a list without such a form";
  EXPECT_TRUE(provider.asked.empty());
}

}  // namespace
