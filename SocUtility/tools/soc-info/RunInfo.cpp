#include "RunInfo.h"

#include <array>
#include <ctime>
#include <ostream>

#include "Paths.h"

#ifdef _WIN32
#include "platform/WindowsApi.h"
#else
#include <sys/utsname.h>
#endif

namespace {

#if defined(__arm64ec__)
constexpr std::string_view ARCHITECTURE = "arm64ec";
#elif defined(__aarch64__)
constexpr std::string_view ARCHITECTURE = "arm64";
#else
constexpr std::string_view ARCHITECTURE = "x64";
#endif

/// The operating system and its version.
std::string systemName() {
#ifdef _WIN32
  using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  // GetVersionEx answers what the program's manifest names.
  if (const auto get = reinterpret_cast<GetVersion>(reinterpret_cast<void*>(
          GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlGetVersion")))) {
    get(&version);
  }
  return "Windows " + std::to_string(version.dwMajorVersion) + '.' +
         std::to_string(version.dwMinorVersion) + '.' + std::to_string(version.dwBuildNumber);
#else
  utsname name{};
  uname(&name);
  return std::string(name.sysname) + ' ' + name.release;
#endif
}

std::string timeNow() {
  const std::time_t now = std::time(nullptr);
  std::array<char, 32> text{};
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread asks for the time
  (void)std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return text.data();
}

}  // namespace

Json RunInfo(const Json& library) {
  return {{"time", timeNow()},
          {"system", systemName()},
          {"architecture", ARCHITECTURE},
          {"tool", {{"version", SOC_INFO_VERSION}, {"path", PathText(OwnPath())}}},
          {"library", library}};
}

void WriteRunInfo(std::ostream& out, const Json& document) {
  const Json& run = document.at("run");
  if (run.is_null()) {
    return;
  }
  if (const Json& library = run.at("library"); !library.is_null()) {
    const Json& version = library.at("version");
    WriteLine(out, "library",
              Quoted(Text(library.at("path"))) +
                  (version.is_null() ? "" : ", version " + Text(version)) + ", interface " +
                  Text(library.at("interface")));
  }
  const Json& tool = run.at("tool");
  WriteLine(out, "tool", Quoted(Text(tool.at("path"))) + ", version " + Text(tool.at("version")));
  WriteLine(out, "system", Text(run.at("system")) + ", " + Text(run.at("architecture")));
  WriteLine(out, "time", Text(run.at("time")));
}
