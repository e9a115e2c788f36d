#include "provider/DynamicLibrary.h"

#include <gmock/gmock.h>

#include <thread>

#include "AllocationFault.h"
#include "Machine.h"

namespace {

using Calls = std::vector<std::string>;

constexpr const char* EARLIER = "Input address is nullptr";
const std::string LIST_SIZE = "K32EnumProcessModules size", LIST = "K32EnumProcessModules read";

/// Leaves `EARLIER` in this thread's slot, without a call of the platform.
void leaveEarlierMessage() {
  std::string path;
  dlModulePath(nullptr, path);
}

std::uintptr_t find(void* handle, const char* symbol) {
  return reinterpret_cast<std::uintptr_t>(dlSym(handle, symbol));
}

TEST(DynamicLibrary, SaysWhyItDidNotOpen) {
  constexpr const char* NO_NAME = "filename is null or empty";
  constexpr const char* FLAGS = "flags must either include DL_NOW or only specify DL_NOLOAD";
  const Calls undone{LIST_SIZE, "LoadLibraryExA lib 8", LIST_SIZE, "FreeLibrary lib"};
  const struct {
    const char* fileName;
    std::uint32_t flags;
    int failingList;  ///< Which enumeration of the modules fails.
    const char* message;
    Calls calls;
  } rows[] = {
      {nullptr, DL_NOW, 0, NO_NAME, {}},
      {"", DL_NOLOAD, 0, NO_NAME, {}},
      {"lib", 0, 0, FLAGS, {}},
      {"lib", DL_LOCAL | DL_GLOBAL, 0, FLAGS, {}},
      {"lib", DL_NOLOAD | DL_LOCAL, 0, FLAGS, {}},
      {"lib", DL_NOLOAD, 0, EARLIER, {"GetModuleHandleA lib"}},
      {"lib", DL_NOW, 1, "enumerate modules failed before loading module", {LIST_SIZE}},
      {"absent", DL_NOW, 0, "load library failed", {LIST_SIZE, "LoadLibraryExA absent 8"}},
      {"lib", DL_NOW, 2, "enumerate modules failed after loading module", undone},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Machine machine;
    machine.libraries = {{"lib", {}}};
    machine.failing = {"K32EnumProcessModules", row.failingList};
    leaveEarlierMessage();
    EXPECT_EQ(dlOpen(row.fileName, row.flags), nullptr);
    EXPECT_STREQ(dlError(), row.message);
    EXPECT_EQ(machine.calls, row.calls);
  }
}

TEST(DynamicLibrary, SaysWhyItFoundNoSymbol) {
  const struct {
    const char* symbol;
    int failingList, failingMalloc;
    const char* message;
    Calls calls;
  } rows[] = {
      {nullptr, 0, 0, EARLIER, {}},
      {"f", 1, 0, "enumerate modules failed before memory allocation", {LIST_SIZE}},
      {"f", 0, 1, "malloc failed", {LIST_SIZE}},
      {"f", 2, 0, "enumerate modules failed after memory allocation", {LIST_SIZE, LIST}},
      {"g", 0, 0, "can't resolve symbol", {LIST_SIZE, LIST, "GetProcAddress lib g"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Machine machine;
    const HMODULE module = machine.AddModule("lib", {{"f", 1}});
    machine.AddModule("other", {{"g", 2}});
    machine.failing = {"K32EnumProcessModules", row.failingList};
    leaveEarlierMessage();
    const AllocationFault fault(AllocationFault::MALLOC, row.failingMalloc);
    EXPECT_EQ(find(module, row.symbol), 0U);
    EXPECT_STREQ(dlError(), row.message);
    EXPECT_EQ(machine.calls, row.calls);
  }
  EXPECT_EQ(find(nullptr, "f"), 0U);  // without a call: no machine is there
}

TEST(DynamicLibrary, TellsAModulesPathOrWhyNot) {
  constexpr const char* NO_MODULE = "Failed to get module handle";
  constexpr const char* NO_PATH = "Failed to get module file name";
  const struct {
    std::size_t length;  ///< Of the path; 0 for a null module.
    const char* failing;
    const char* message;
    DWORD lastError = ERROR_SUCCESS;  ///< Left by something else.
  } rows[] = {
      {259, "", EARLIER}, {20, "", EARLIER, ERROR_INSUFFICIENT_BUFFER},
      {260, "", NO_PATH}, {20, "GetModuleFileNameA", NO_PATH},
      {0, "", NO_MODULE}, {20, "GetModuleHandleExA", NO_MODULE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.length);
    Machine machine;
    const std::string expected(row.message == EARLIER ? row.length : 0, 'p');
    if (row.length != 0) {
      machine.ownModule = machine.AddModule(std::string(row.length, 'p'), {});
    }
    machine.failing = {row.failing, 1};
    machine.lastError = row.lastError;
    leaveEarlierMessage();
    std::string path = "older";
    EXPECT_EQ(dlModulePath(EARLIER, path), expected.empty() ? 0U : 1U);
    EXPECT_EQ(path, expected);
    EXPECT_STREQ(dlError(), row.message);
    EXPECT_EQ(machine.calls.front(), "GetModuleHandleExA 6");
  }
}

TEST(DynamicLibrary, KeepsAMessageForEachThread) {
  leaveEarlierMessage();
  std::thread([] {
    EXPECT_EQ(dlError(), nullptr);
    dlOpen("", DL_NOW);
  }).join();
  EXPECT_STREQ(dlError(), EARLIER);
}

TEST(DynamicLibrary, HidesOnlyWhatItBroughtIn) {
  constexpr std::uint32_t HIDE = DL_NOW | DL_LOCAL;
  const struct {
    const char* name;
    std::vector<std::uint32_t> opens;  ///< Flags of one `dlOpen` after the other.
    std::size_t closes;
    bool isResident, isHidden;
  } rows[] = {
      {"now alone", {DL_NOW}, 0, false, false},
      {"local", {HIDE}, 0, false, true},
      {"global after local", {HIDE | DL_GLOBAL}, 0, false, false},
      {"the process had it", {HIDE}, 0, true, false},
      {"hidden, then opened again", {HIDE, HIDE}, 0, false, true},
      {"shown again", {HIDE, DL_NOW | DL_GLOBAL}, 0, false, false},
      {"one of two references closed", {HIDE, DL_NOW}, 1, false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Machine machine;
    machine.libraries = {{"lib", {{"f", 0x11}}}};
    if (row.isResident) {
      machine.AddModule("lib", machine.libraries["lib"]);
    }
    void* handle = nullptr;
    for (const std::uint32_t flags : row.opens) {
      handle = dlOpen("lib", flags);
    }
    for (std::size_t closed = 0; closed < row.opens.size(); ++closed) {
      if (closed == row.closes) {
        EXPECT_EQ(find(handle, "f"), 0x11U);
        EXPECT_EQ(find(DL_DEFAULT, "f"), row.isHidden ? 0U : 0x11U);
      }
      EXPECT_EQ(dlClose(handle), 0);
    }
  }
}

TEST(DynamicLibrary, FindsWithoutLoading) {
  for (const std::uint32_t flags : {DL_NOLOAD, DL_NOW | DL_NOLOAD | DL_LOCAL | DL_GLOBAL}) {
    Machine machine;
    const HMODULE resident = machine.AddModule("lib", {});
    EXPECT_EQ(dlOpen("lib", flags), resident);
    EXPECT_EQ(machine.calls, Calls{"GetModuleHandleA lib"});
  }
}

TEST(DynamicLibrary, KeepsAModuleHiddenThatWasNotClosed) {
  Machine machine;
  machine.libraries = {{"lib", {{"f", 0x11}}}};
  void* const handle = dlOpen("lib", DL_NOW | DL_LOCAL);
  machine.failing = {"FreeLibrary", 1};
  EXPECT_EQ(dlClose(handle), -1);
  EXPECT_STREQ(dlError(), "free library failed");
  EXPECT_EQ(find(DL_DEFAULT, "f"), 0U);
  leaveEarlierMessage();
  EXPECT_EQ(dlClose(handle), 0);
  EXPECT_STREQ(dlError(), EARLIER) << "a success changed the message";
}

TEST(DynamicLibrary, AsksVisibleModulesInTheirOrderThenTheDefault) {
  const struct {
    const char* symbol;
    int growth;  ///< Of the list, between the question for its size and its reading.
    std::uintptr_t address;
    Calls asked;
  } rows[] = {
      {"f", 0, 0x12, {"one f", "two f"}},
      {"main", 0, 0x20, {"one main", "two main", "three main", "null main"}},
      {"g", 0, 0, {"one g", "two g", "three g", "null g"}},
      {"late", 1, 0, {"one late", "two late", "three late", "null late"}},
      {"g", -1, 0, {"one g", "two g", "null g"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.asked.size());
    Machine machine;
    machine.libraries = {{"hidden", {{"f", 0x14}, {"g", 0x24}}}};
    machine.programSymbols = {{"main", 0x20}};
    machine.AddModule("one", {});
    void* const hidden = dlOpen("hidden", DL_NOW | DL_LOCAL);
    machine.AddModule("two", {{"f", 0x12}});
    machine.AddModule("three", {{"f", 0x13}});
    machine.before = [&](std::string_view function, int nth) {
      if (function == "K32EnumProcessModules" && nth == 4 && row.growth > 0) {
        machine.AddModule("four", {{"late", 0x15}});
      } else if (function == "K32EnumProcessModules" && nth == 4 && row.growth < 0) {
        machine.modules.pop_back();
      }
    };
    EXPECT_EQ(find(DL_DEFAULT, row.symbol), row.address);
    EXPECT_EQ(machine.CallsOf("GetProcAddress"), row.asked);
    EXPECT_EQ(dlClose(hidden), 0);
  }
}

}  // namespace
