// What the library relies on in the Win32 functions that it calls, but those of the loader. All of
// it holds for the real functions too, so this file runs on every platform.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/WindowsApi.h"

namespace {

constexpr DWORD ACPI = 0x41435049;
constexpr DWORD FADT = 0x50434146;

using WideView = std::basic_string_view<WCHAR>;
using WideText = std::basic_string<WCHAR>;

TEST(LastError, IsEachThreadsOwn) {
  std::atomic<int> step = 0;
  std::thread other([&] {
    while (step != 1) {
    }
    SetLastError(9);
    step = 2;
  });
  // No call but the two may stand here: any other may leave an error of its own.
  SetLastError(7);
  step = 1;
  while (step != 2) {
  }
  const DWORD seen = GetLastError();
  other.join();
  EXPECT_EQ(seen, 7U);
}

TEST(FirmwareTable, IsCopiedOnlyWhole) {
  const DWORD size = GetSystemFirmwareTable(ACPI, FADT, nullptr, 0);
  if (size == 0) {
    GTEST_SKIP() << "this machine shows no FADT";
  }
  for (const DWORD offered : {DWORD{0}, DWORD{36}, size - 1, size, size + 64}) {
    const std::vector<BYTE> before(size + 64, BYTE{0xA5});
    std::vector<BYTE> buffer = before;
    ASSERT_EQ(GetSystemFirmwareTable(ACPI, FADT, buffer.data(), offered), size) << offered;
    if (offered < size) {
      EXPECT_EQ(buffer, before) << offered;
      continue;
    }
    DWORD lengthField = 0;
    std::memcpy(&lengthField, &buffer[4], sizeof lengthField);
    EXPECT_EQ(lengthField, size);
    EXPECT_EQ(std::memcmp(buffer.data(), "FACP", 4), 0);
    EXPECT_TRUE(std::equal(buffer.begin() + size, buffer.end(), before.begin() + size));
  }
}

TEST(FirmwareTable, UnknownOnesHaveNoSize) {
  struct Row {
    DWORD provider;
    DWORD table;
  };
  // The last ids are "ZZZZ", "../.", "data" and "FAC" with a NUL.
  for (const auto& [provider, table] :
       {Row{0x12345678, FADT}, Row{ACPI, 0x5A5A5A5A}, Row{ACPI, 0x2E2F2E2E}, Row{ACPI, 0x61746164},
        Row{ACPI, 0x00434146}, Row{ACPI, 0}}) {
    SetLastError(ERROR_SUCCESS);
    std::array<BYTE, 64> buffer{};
    EXPECT_EQ(GetSystemFirmwareTable(provider, table, nullptr, 0), 0U) << provider << ' ' << table;
    EXPECT_NE(GetLastError(), ERROR_SUCCESS) << provider << ' ' << table;
    EXPECT_EQ(GetSystemFirmwareTable(provider, table, buffer.data(), 64), 0U) << table;
  }
}

/// Sets a variable of the process; the two spellings of the name and of the value are the same.
void setVariable([[maybe_unused]] LPCWSTR name, [[maybe_unused]] const char* utf8Name,
                 [[maybe_unused]] LPCWSTR value, [[maybe_unused]] const char* utf8Value) {
#ifdef _WIN32
  SetEnvironmentVariableW(name, value);
#else
  setenv(utf8Name, utf8Value, 1);
#endif
}

TEST(EnvironmentVariable, IsCopiedOnlyWhole) {
  struct Row {
    LPCWSTR value;
    const char* utf8;
  };
  for (const auto& [value, utf8] :
       {Row{WIDE(""), ""}, Row{WIDE("C:\\Windows"), "C:\\Windows"}, Row{WIDE("a=b"), "a=b"},
        Row{WIDE("\u00e9\u20ac\U0001F600"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"}}) {
    setVariable(WIDE("PLATFORM_TEST\u00c4"), "PLATFORM_TEST\xC3\x84", value, utf8);
    const auto length = static_cast<DWORD>(WideView(value).size());
    for (const DWORD size : {DWORD{0}, length, length + 1, length + 9}) {
      WideText buffer(length + 9, WCHAR{'#'});
      SetLastError(ERROR_SUCCESS);
      const DWORD result =
          GetEnvironmentVariableW(WIDE("PLATFORM_TEST\u00c4"), buffer.data(), size);
      EXPECT_EQ(result, size > length ? length : length + 1) << utf8 << ' ' << size;
      if (size > length) {
        EXPECT_TRUE(WideView(buffer.data()) == value) << utf8;
        EXPECT_EQ(buffer.back(), WCHAR{'#'}) << utf8;
        EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
      }
    }
  }
  EXPECT_EQ(GetEnvironmentVariableW(WIDE("PLATFORM_TEST\u00c4+"), nullptr, 0), 0U);
  EXPECT_EQ(GetLastError(), ERROR_ENVVAR_NOT_FOUND);
}

TEST(WideToUtf8, GivesEveryCharacterItsBytes) {
  struct Row {
    WideText wide;
    std::string utf8;
  };
  const WCHAR lead = 0xD83D;
  const WCHAR trail = 0xDC00;
  const std::string replaced = "\xEF\xBF\xBD";
  for (const auto& [wide, utf8] :
       {Row{WIDE("Ab\x7F"), "Ab\x7F"}, Row{WIDE("\u0080\u07FF"), "\xC2\x80\xDF\xBF"},
        Row{WIDE("\u0800\uFFFD"), "\xE0\xA0\x80\xEF\xBF\xBD"},
        Row{WIDE("\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        Row{{lead}, replaced}, Row{{trail, trail}, replaced + replaced},
        Row{{lead, lead, trail}, replaced + "\xF0\x9F\x90\x80"},
        Row{{lead, 'x'}, replaced + "x"}}) {
    const int units = static_cast<int>(wide.size());
    const int bytes = static_cast<int>(utf8.size());
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), units, nullptr, 0, nullptr, nullptr),
              bytes)
        << utf8;
    std::string out(utf8.size() + 2, '#');
    EXPECT_EQ(
        WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, out.data(), bytes + 2, nullptr, nullptr),
        bytes + 1)
        << utf8;
    EXPECT_EQ(out, utf8 + '\0' + '#');
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), units, out.data(), bytes - 1, nullptr,
                                  nullptr),
              bytes == 1 ? 1 : 0)
        << utf8;
  }
}

TEST(ServiceManager, OpensAndKnowsNoSuchService) {
  const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, STANDARD_RIGHTS_READ);
  ASSERT_NE(manager, nullptr);
  EXPECT_EQ(OpenServiceW(manager, WIDE("no-such-service"), SERVICE_QUERY_CONFIG), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_SERVICE_DOES_NOT_EXIST);
  EXPECT_TRUE(CloseServiceHandle(manager));
  DWORD needed = 0;
  EXPECT_FALSE(QueryServiceConfigW(nullptr, nullptr, 0, &needed));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_FALSE(CloseServiceHandle(nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
