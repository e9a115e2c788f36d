#include "provider/ProviderLoader.h"

#include <gmock/gmock.h>

#include <new>

#include "AllocationFault.h"
#include "Machine.h"
#include "OwnProcess.h"
#include "provider/DynamicLibrary.h"

namespace {

using Paths = std::vector<std::string>;

const std::string OWN_PATH = "D:\\Tools\\lib\\ZynSystemInfo.dll";
const std::string OWN_SYSTEM_INFO = "D:/Tools/lib/ZynSystemInfo.dll";
const std::string OWN_UTILS = "D:/Tools/lib/RzSoCServiceUtils.dll";
const std::string PACKAGE_SYSTEM_INFO = "C:\\Windows\\dsp/VRX/ZynSystemInfo.dll";
const std::string UTILS = "RzSoCServiceUtils.dll";
const Machine::Symbols EXPORTS{{"Soc_GetAPIVersion", 0x11},
                               {"Soc_GetCapability", 0x12},
                               {"Soc_GetCapabilitySerialized", 0x13}};

/// This library at its place, a driver package, and some providers with all exports.
void install(Machine& machine, const Paths& providers, const std::string& ownPath = OWN_PATH) {
  machine.ownModule = ownPath.empty() ? nullptr : machine.AddModule(ownPath, {});
  machine.services[WIDE("rzkelbrpc")].binaryPath = WIDE("\\SystemRoot\\dsp\\d.sys");
  machine.windir = WIDE("C:\\Windows");
  for (const std::string& path : providers) {
    machine.libraries[path] = EXPORTS;
  }
}

/// What a loader holds: the file loaded, "as" the name it goes by, and the exports bound, which are
/// (V)ersion, (C)apability and (S)erialized.
std::string contentOf(const ProviderLoader& loader) {
  const auto letter = [](auto function, const char* symbol, const char* name) {
    const auto address = reinterpret_cast<std::uintptr_t>(function);
    return address == 0 ? "" : address == EXPORTS.at(symbol) ? name : "?";
  };
  std::string content;
  if (loader.handle != nullptr) {
    content = Machine::Current().Find(static_cast<HMODULE>(loader.handle))->name;
  }
  return content + " as " + loader.libraryName + ": " +
         letter(loader.getApiVersion, "Soc_GetAPIVersion", "V") +
         letter(loader.getCapability, "Soc_GetCapability", "C") +
         letter(loader.getCapabilitySerialized, "Soc_GetCapabilitySerialized", "S");
}

TEST(ProviderLoader, TriesThePlansCandidatesInTheirOrder) {
  const struct {
    std::string ownPath;  ///< Empty when it is unknown.
    Paths tried;
    std::uint32_t plan;
    bool hasPackage = true;
  } rows[] = {
      {OWN_PATH, {OWN_UTILS, UTILS}, ServiceUtilsOnly},
      {"", {UTILS}, ServiceUtilsOnly},
      {"D:\\Tools/lib\\own.dll", {OWN_UTILS, UTILS}, ServiceUtilsOnly},
      {"own.dll", {"own.dll/" + UTILS, UTILS}, ServiceUtilsOnly},
      {OWN_PATH, {OWN_SYSTEM_INFO, OWN_UTILS, PACKAGE_SYSTEM_INFO, UTILS}, AllProviders},
      {"", {PACKAGE_SYSTEM_INFO, UTILS}, AllProviders},
      {"", {"VRX/ZynSystemInfo.dll", UTILS}, AllProviders, false},
      {OWN_PATH, {}, 2},
      {OWN_PATH, {}, 0xFFFFFFFF},
  };
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(i);
    inOwnProcess([row = rows[i]]() mutable {
      Machine machine;
      install(machine, {}, row.ownPath);
      if (!row.hasPackage) {
        machine.services.clear();
      }
      {
        const ProviderLoader loader(ProviderSearchPlan{row.plan});
        EXPECT_EQ(contentOf(loader), " as : ");
        machine.calls.emplace_back("(destruction)");
      }
      EXPECT_EQ(machine.calls.back(), "(destruction)");
      EXPECT_EQ(machine.CallsOf("OpenSCManagerW").empty(), row.plan != AllProviders);
      for (std::string& path : row.tried) {
        path += " 8";
      }
      EXPECT_EQ(machine.CallsOf("LoadLibraryExA"), row.tried);
    });
  }
}

TEST(ProviderLoader, AsksAServiceUtilitiesProviderForItsTwoExports) {
  const std::string loaded = UTILS + " as " + UTILS + ": ";
  const std::string version = UTILS + " Soc_GetAPIVersion";
  const std::string capability = UTILS + " Soc_GetCapability";
  const struct {
    const char* missing;
    std::string content;
    Paths asked;
  } rows[] = {
      {"", loaded + "VC", {version, capability}},
      {"Soc_GetCapability", loaded + "V", {version, capability}},
      {"Soc_GetAPIVersion", loaded, {version}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.missing);
    Machine machine;
    install(machine, {UTILS});
    machine.AddModule("other.dll", EXPORTS);  // nothing of it may be taken for the provider's
    machine.libraries[UTILS].erase(row.missing);
    EXPECT_EQ(contentOf(ProviderLoader(ServiceUtilsOnly)), row.content);
    EXPECT_EQ(machine.CallsOf("GetProcAddress"), row.asked);
    EXPECT_EQ(machine.calls.back(), "FreeLibrary " + UTILS);
  }
}

TEST(ProviderLoader, HidesTheProviderFromLookupsInAllModules) {
  Machine machine;
  install(machine, {UTILS});
  const ProviderLoader loader(ServiceUtilsOnly);
  EXPECT_NE(loader.handle, nullptr);
  EXPECT_EQ(dlSym(DL_DEFAULT, "Soc_GetCapability"), nullptr);
}

TEST(ProviderLoader, MakesTheBestOfTheFailureOfAnyCall) {
  const std::string own = OWN_SYSTEM_INFO + " as ZynSystemInfo.dll: ";
  const std::string package = PACKAGE_SYSTEM_INFO + " as ZynSystemInfo.dll: VCS";
  const std::string utils = OWN_UTILS + " as RzSoCServiceUtils.dll: VC";
  // The own path; list, load, list; then list, list, symbol for each of three exports.
  const Paths expected{package,    package,    utils,      utils,      utils,
                       own,        own,        own,        own + "VS", own + "VS",
                       own + "VS", own + "VC", own + "VC", own + "VC", own + "VCS"};
  inOwnProcess([&] {
    {
      Machine machine;
      install(machine, {});
      driverPackageDirectory();  // remembered, so that its calls are not among those counted
    }
    for (std::size_t n = 1; n <= expected.size(); ++n) {
      SCOPED_TRACE(n);
      Machine machine;
      install(machine, {OWN_SYSTEM_INFO, OWN_UTILS, PACKAGE_SYSTEM_INFO});
      machine.failingCall = static_cast<int>(n);
      EXPECT_EQ(contentOf(ProviderLoader(AllProviders)), expected[n - 1]);
      EXPECT_EQ(machine.FaultHappened(), n < expected.size());
    }
  });
}

TEST(ProviderLoader, SurvivesTheFailureOfAnyAllocation) {
  inOwnProcess([] {
    // The second round finds the driver's directory remembered: it makes other allocations.
    for (int round = 1; round <= 2; ++round) {
      bool happened = true;
      for (int n = 1; happened; ++n) {
        SCOPED_TRACE(n);
        Machine machine;
        install(machine, {PACKAGE_SYSTEM_INFO});
        bool threw = false;
        try {
          const AllocationFault fault(AllocationFault::NEW, n);
          const ProviderLoader loader(AllProviders);
          happened = fault.Happened();
        } catch (const std::bad_alloc&) {
          threw = true;
        }
        EXPECT_EQ(threw, happened) << "a failed allocation went unnoticed";
        if (round == 2) {
          EXPECT_EQ(contentOf(ProviderLoader(AllProviders)),
                    PACKAGE_SYSTEM_INFO + " as ZynSystemInfo.dll: VCS");
        }
      }
    }
  });
}

}  // namespace
