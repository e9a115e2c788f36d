#include "DynamicSocInfo/provider/DynamicLibrary.h"

#include <gmock/gmock.h>

#include <thread>

#include "AllocationFault.h"
#include "Machine.h"

namespace {

using Calls = std::vector<std::string>;

constexpr std::uint32_t HIDE = DL_NOW | DL_LOCAL;
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

TEST(DynamicLibrary, TellsEachFailureByItsMessage) {
  using Operation = std::function<bool(void* resident)>;
  const auto open = [](const char* fileName, std::uint32_t flags) -> Operation {
    return [=](void*) { return dlOpen(fileName, flags) != nullptr; };
  };
  const auto symbol = [](const char* name) -> Operation {
    return [=](void* resident) { return find(resident, name) != 0; };
  };
  const auto path = [](const void* address, const std::string& ownPath = "resident") -> Operation {
    return [=](void* resident) {
      static_cast<Machine::Module*>(resident)->name = ownPath;
      std::string found = "older";
      return dlModulePath(address, found) != 0 || !found.empty();
    };
  };
  const std::string tooLong(MAX_PATH, 'd');
  constexpr const char* NO_NAME = "filename is null or empty";
  constexpr const char* FLAGS = "flags must either include DL_NOW or only specify DL_NOLOAD";
  const Calls undone{LIST_SIZE, "LoadLibraryExA 8 lib", LIST_SIZE, "FreeLibrary lib"};
  const Calls pathCalls{"GetModuleHandleExA 6", "GetModuleFileNameA resident"};
  const struct {
    Operation operation;
    const char* message;
    Calls calls;
    int failingCall = 0, failingAllocation = 0;
  } rows[] = {
      {open(nullptr, DL_NOW), NO_NAME, {}},
      {open("", DL_NOLOAD), NO_NAME, {}},
      {open("lib", 0), FLAGS, {}},
      {open("lib", DL_NOLOAD | DL_LOCAL), FLAGS, {}},
      {open("lib", DL_NOLOAD), EARLIER, {"GetModuleHandleA"}},
      {open("lib", DL_NOW), "enumerate modules failed before loading module", {LIST_SIZE}, 1},
      {open("none", DL_NOW), "load library failed", {LIST_SIZE, "LoadLibraryExA 8 none"}},
      {open("lib", HIDE), "enumerate modules failed after loading module", undone, 3},
      {[](void*) { return find(nullptr, "f") != 0; }, EARLIER, {}},
      {symbol(nullptr), EARLIER, {}},
      {symbol("f"), "enumerate modules failed before memory allocation", {LIST_SIZE}, 1},
      {symbol("f"), "malloc failed", {LIST_SIZE}, 0, 1},
      {symbol("f"), "enumerate modules failed after memory allocation", {LIST_SIZE, LIST}, 2},
      {symbol("g"), "can't resolve symbol", {LIST_SIZE, LIST, "GetProcAddress resident g"}},
      {path(nullptr), EARLIER, {}},
      {path(EARLIER), "Failed to get module handle", {"GetModuleHandleExA 6"}, 1},
      {path(EARLIER), "Failed to get module file name", pathCalls, 2},
      {path(EARLIER, tooLong),
       "Failed to get module file name",
       {"GetModuleHandleExA 6", "GetModuleFileNameA " + tooLong}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Machine machine;
    machine.modules = {{"resident", {{"f", 1}}}, {"other", {{"g", 2}}}, {"lib", {}, false}};
    machine.ownModule = &machine.modules.front();
    machine.cutsPathsSilently = true;
    machine.failingCall = row.failingCall;
    leaveEarlierMessage();
    const AllocationFault fault(row.failingAllocation);
    EXPECT_FALSE(row.operation(machine.ownModule));
    EXPECT_STREQ(dlError(), row.message);
    EXPECT_EQ(machine.calls, row.calls);
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

TEST(DynamicLibrary, KeepsAModuleHiddenUntilItsFirstClosing) {
  Machine machine;
  machine.modules = {{"lib", {{"f", 0x11}}, false}};
  void* const handle = dlOpen("lib", HIDE);
  dlOpen("lib", HIDE);
  machine.failingCall = 7;
  EXPECT_EQ(dlClose(handle), -1);
  EXPECT_STREQ(dlError(), "free library failed");
  EXPECT_EQ(find(DL_DEFAULT, "f"), 0U);
  leaveEarlierMessage();
  EXPECT_EQ(dlClose(handle), 0);
  EXPECT_STREQ(dlError(), EARLIER) << "a success changed the message";
  EXPECT_EQ(find(DL_DEFAULT, "f"), 0x11U);
  EXPECT_EQ(dlClose(handle), 0);
  EXPECT_EQ(dlClose(nullptr), 0);
}

TEST(DynamicLibrary, AsksVisibleModulesInTheirOrderThenTheDefault) {
  const struct {
    const char* symbol;
    std::size_t modulesLater;  ///< When the list is read, after its size was asked.
    std::uintptr_t address;
    Calls asked;
  } rows[] = {
      {"f", 4, 0x12, {"one f", "two f"}},
      {"main", 4, 0x20, {"one main", "two main", "three main", "program main"}},
      {"g", 5, 0, {"one g", "two g", "three g", "program g"}},
      {"g", 3, 0, {"one g", "two g", "program g"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.modulesLater);
    Machine machine;
    machine.modules = {{"one"},
                       {"hidden", {{"f", 0x14}, {"g", 0x24}}, false},
                       {"two", {{"f", 0x12}}},
                       {"three", {{"f", 0x13}}}};
    machine.program.symbols = {{"main", 0x20}};
    machine.before = [&](const std::string& call) {
      machine.modules.resize(call == LIST ? row.modulesLater : machine.modules.size());
    };
    void* const hidden = dlOpen("hidden", HIDE);
    EXPECT_EQ(find(DL_DEFAULT, row.symbol), row.address);
    EXPECT_EQ(machine.CallsOf("GetProcAddress"), row.asked);
    EXPECT_EQ(dlClose(hidden), 0);
  }
}

}  // namespace
