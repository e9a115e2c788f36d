#include "DynamicSocInfo/provider/DynamicLibrary.h"

#include <gtest/gtest.h>

#include <thread>

#include "AllocationFault.h"
#include "Machine.h"

namespace {

constexpr std::uint32_t HIDE = DL_NOW | DL_LOCAL;
constexpr const char* EARLIER = "Input address is nullptr";

/// Leaves `EARLIER` in this thread's slot, without a call of the platform.
void leaveEarlierMessage() {
  std::string path;
  dlModulePath(nullptr, path);
}

std::uintptr_t find(void* handle, const char* symbol) {
  return reinterpret_cast<std::uintptr_t>(dlSym(handle, symbol));
}

TEST(DynamicLibrary, ReportsEachFailureByItsMessage) {
  using Operation = std::function<bool(Machine::Module & resident)>;
  const auto open = [](const char* fileName, std::uint32_t flags) -> Operation {
    return [=](auto&) { return dlOpen(fileName, flags) != nullptr; };
  };
  const auto symbol = [](const char* name) -> Operation {
    return [=](auto& resident) { return find(&resident, name) != 0; };
  };
  const auto path = [](const void* address, std::size_t length = 8) -> Operation {
    return [=](auto& resident) {
      resident.name.resize(length, 'd');
      std::string found = "older";
      return dlModulePath(address, found) != 0 || !found.empty();
    };
  };
  constexpr const char* NO_NAME = "filename is null or empty";
  constexpr const char* FLAGS = "flags must either include DL_NOW or only specify DL_NOLOAD";
  constexpr const char* NO_PATH = "Failed to get module file name";
  const struct {
    Operation operation;
    const char* message;
    int failingCall = 0, failingAllocation = 0;
  } rows[] = {
      {open(nullptr, DL_NOW), NO_NAME},
      {open("", DL_NOLOAD), NO_NAME},
      {open("lib", 0), FLAGS},
      {open("lib", DL_NOLOAD | DL_LOCAL), FLAGS},
      {open("lib", DL_NOLOAD), EARLIER},
      {open("lib", DL_NOW), "enumerate modules failed before loading module", 1},
      {open("none", DL_NOW), "load library failed"},
      {open("lib", HIDE), "enumerate modules failed after loading module", 3},
      {[](auto&) { return find(nullptr, "f") != 0; }, EARLIER},
      {symbol(nullptr), EARLIER},
      {symbol("f"), "enumerate modules failed before memory allocation", 1},
      {symbol("f"), "malloc failed", 0, 1},
      {symbol("f"), "enumerate modules failed after memory allocation", 2},
      {symbol("g"), "can't resolve symbol"},
      {[](auto& resident) { return dlClose(&resident) == 0; }, "free library failed", 1},
      {path(nullptr), EARLIER},
      {path(EARLIER), "Failed to get module handle", 1},
      {path(EARLIER), NO_PATH, 2},
      {path(EARLIER, MAX_PATH), NO_PATH},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    Machine machine;
    machine.modules = {{"resident", {{"f", 1}}}, {"other", {{"g", 2}}}, {"lib", {}, false}};
    machine.ownModule = &machine.modules.front();
    machine.failingCall = row.failingCall;
    leaveEarlierMessage();
    const AllocationFault fault(row.failingAllocation);
    EXPECT_FALSE(row.operation(machine.modules.front()));
    EXPECT_STREQ(dlError(), row.message);
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

TEST(DynamicLibrary, HidesWhatItBroughtInUntilItIsMadeGlobalOrClosed) {
  struct Step {
    std::uint32_t flags;
    bool isVisible;
  };
  const std::vector<Step> rows[] = {
      {{DL_NOW, true}, {HIDE, true}},
      {{HIDE, false}, {DL_NOW, false}, {HIDE, false}, {DL_NOW | DL_GLOBAL, true}, {HIDE, true}},
      {{HIDE | DL_GLOBAL, true}},
      {{HIDE, false}, {HIDE, false}, {DL_NOLOAD, false}, {DL_NOW | DL_NOLOAD | DL_GLOBAL, false}},
  };
  for (const auto& steps : rows) {
    Machine machine;
    machine.modules = {{"lib", {{"f", 0x11}}, false}};
    Machine::Module& module = machine.modules.front();
    for (const Step& step : steps) {
      EXPECT_EQ(dlOpen("lib", step.flags), &module);
      EXPECT_EQ(find(DL_DEFAULT, "f") != 0, step.isVisible) << step.flags;
    }
    for (int left = module.references; left > 0; --left) {
      leaveEarlierMessage();
      EXPECT_EQ(dlClose(&module), 0);
      EXPECT_STREQ(dlError(), EARLIER) << "a success changed the message";
      EXPECT_EQ(find(DL_DEFAULT, "f") != 0, left > 1);
    }
  }
  EXPECT_EQ(dlClose(nullptr), 0);
}

TEST(DynamicLibrary, AsksVisibleModulesInTheirOrderThenTheDefault) {
  const struct {
    const char* symbol;
    std::size_t modulesLater;  ///< When the list is read, after its size was asked.
    std::uintptr_t address;
    std::vector<std::string> asked;
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
      machine.modules.resize(call == "K32EnumProcessModules read" ? row.modulesLater
                                                                  : machine.modules.size());
    };
    void* const hidden = dlOpen("hidden", HIDE);
    EXPECT_EQ(find(DL_DEFAULT, row.symbol), row.address);
    EXPECT_EQ(machine.CallsOf("GetProcAddress"), row.asked);
    EXPECT_EQ(dlClose(hidden), 0);
  }
}

}  // namespace
