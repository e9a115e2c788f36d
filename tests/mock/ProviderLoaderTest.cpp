#include "DynamicSocInfo/provider/ProviderLoader.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>

#include "AllocationFault.h"
#include "DynamicSocInfo/provider/DynamicLibrary.h"
#include "Machine.h"

namespace {

using Paths = std::vector<std::string>;

const std::string OWN_PATH = "D:\\Tools\\lib\\ZynSystemInfo.dll";
const std::string OWN_SYSTEM_INFO = "D:/Tools/lib/ZynSystemInfo.dll";
const std::string OWN_UTILS = "D:/Tools/lib/RzSoCServiceUtils.dll";
const std::string PACKAGE_SYSTEM_INFO = "C:\\Windows\\dsp/VRX/ZynSystemInfo.dll";
const std::string PACKAGE_CONTENT = PACKAGE_SYSTEM_INFO + " as ZynSystemInfo.dll: VCS";
const std::string UTILS = "RzSoCServiceUtils.dll";
const Machine::Symbols EXPORTS{
    {"Soc_GetAPIVersion", 'V'}, {"Soc_GetCapability", 'C'}, {"Soc_GetCapabilitySerialized", 'S'}};

/// Some providers with all exports; this library at its place and a driver package, unless the
/// place is empty: it is unknown then.
void install(Machine& machine, const Paths& providers, const std::string& ownPath = OWN_PATH) {
  if (!ownPath.empty()) {
    machine.ownModule = &machine.modules.emplace_back(Machine::Module{ownPath});
    machine.services[WIDE("rzkelbrpc")] = WIDE("\\SystemRoot\\dsp\\d.sys");
  }
  machine.lastError = ERROR_INSUFFICIENT_BUFFER;  // left by something else
  machine.windir = WIDE("C:\\Windows");
  for (const std::string& path : providers) {
    machine.modules.push_back({path, EXPORTS, false});
  }
}

/// What a loader holds: the file loaded, "as" the name it goes by, and the exports bound, which are
/// (V)ersion, (C)apability and (S)erialized.
std::string contentOf(const ProviderLoader& loader) {
  const auto letter = [](auto function) {
    const auto address = reinterpret_cast<std::uintptr_t>(function);
    return std::string(address == 0 ? 0 : 1, static_cast<char>(address));
  };
  const auto* const file = static_cast<const Machine::Module*>(loader.handle);
  return (file == nullptr ? "none" : file->name) + " as " + loader.libraryName + ": " +
         letter(loader.getApiVersion) + letter(loader.getCapability) +
         letter(loader.getCapabilitySerialized);
}

TEST(ProviderLoader, TriesThePlansCandidatesInTheirOrder) {
  const std::string longest(259, 'd');
  const struct {
    std::uint32_t plan;
    std::string ownPath;
    Paths tried;
  } rows[] = {
      {ServiceUtilsOnly, OWN_PATH, {OWN_UTILS, UTILS}},
      {ServiceUtilsOnly, "", {UTILS}},
      {ServiceUtilsOnly, "D:\\Tools/lib\\own.dll", {OWN_UTILS, UTILS}},
      {ServiceUtilsOnly, longest, {longest + '/' + UTILS, UTILS}},
      {ServiceUtilsOnly, longest + 'd', {UTILS}},
      {AllProviders, OWN_PATH, {OWN_SYSTEM_INFO, OWN_UTILS, PACKAGE_SYSTEM_INFO, UTILS}},
      {AllProviders, "", {"VRX/ZynSystemInfo.dll", UTILS}},
      {2, OWN_PATH, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    inOwnProcess([&] {
      Machine machine;
      install(machine, {}, row.ownPath);
      EXPECT_EQ(contentOf(ProviderLoader(ProviderSearchPlan{row.plan})), "none as : ");
      EXPECT_EQ(machine.CallsOf("OpenSCManagerW").empty(), row.plan != AllProviders);
      EXPECT_EQ(machine.CallsOf("LoadLibraryExA 8"), row.tried);
    });
  }
}

TEST(ProviderLoader, MakesTheBestOfTheFailureOfAnyCall) {
  const std::string own = OWN_SYSTEM_INFO + " as ZynSystemInfo.dll: ";
  const std::string utils = OWN_UTILS + " as RzSoCServiceUtils.dll: VC";
  // The own path; list, load, list; then list, list, symbol for each of three exports.
  const Paths expected{
      PACKAGE_CONTENT, PACKAGE_CONTENT, utils,      utils,      utils,      own,       own, own,
      own + "VS",      own + "VS",      own + "VS", own + "VC", own + "VC", own + "VC"};
  inOwnProcess([&] {
    for (std::size_t n = 1; n <= expected.size(); ++n) {
      SCOPED_TRACE(n);
      Machine machine;
      install(machine, {OWN_SYSTEM_INFO, OWN_UTILS, PACKAGE_SYSTEM_INFO});
      // Nothing of another module may be taken for the provider's.
      machine.modules.push_front(
          {"other.dll", {{"Soc_GetAPIVersion", 1}, {"Soc_GetCapability", 1}}});
      driverPackageDirectory();  // remembered: its calls are not among those counted
      machine.countedCalls = 0;
      machine.failingCall = static_cast<int>(n);
      const ProviderLoader loader(AllProviders);
      EXPECT_EQ(contentOf(loader), expected[n - 1]);
      EXPECT_EQ(dlSym(DL_DEFAULT, "Soc_GetCapabilitySerialized"), nullptr) << "not hidden";
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
        try {
          std::optional<AllocationFault> fault(n);
          const ProviderLoader loader(AllProviders);
          happened = AllocationFault::Happened();
          fault.reset();
          EXPECT_EQ(contentOf(loader) == PACKAGE_CONTENT, !happened);
        } catch (const std::bad_alloc&) {  // the caller handles it
        }
      }
    }
  });
}

}  // namespace
