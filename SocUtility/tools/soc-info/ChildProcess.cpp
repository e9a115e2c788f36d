#include "ChildProcess.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <system_error>
#ifdef _WIN32
#include <io.h>
#include <process.h>

#include <cstdlib>
#include <filesystem>

#include "Output.h"
#include "platform/WindowsApi.h"
#else
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#endif

namespace {

void throwIf(bool failed, const char* what) {
  if (failed) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

std::string describeExit(std::uint32_t code) {
  return code == 0 ? std::string() : "exit status " + std::to_string(code);
}

struct CloseFile {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};

// `openReport` opens the file that the child writes to. `runAskProvider` runs the command and
// returns how it failed, as in `ChildResult`.
#ifdef _WIN32

std::FILE* openReport() { return std::tmpfile(); }

std::string runAskProvider(const std::string& file, const std::string& seconds, std::FILE* report) {
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  const std::wstring library = L'"' + std::filesystem::path(file).wstring() + L'"';
  const std::wstring limit(seconds.begin(), seconds.end());
  const std::wstring descriptor = std::to_wstring(_fileno(report));
  errno = 0;
  const std::intptr_t status =
      _wspawnl(_P_WAIT, program.c_str(), L"soc-info", L"ask-provider", library.c_str(),
               limit.c_str(), descriptor.c_str(), nullptr);
  throwIf(status == -1 && errno != 0, "starting a process");
  constexpr std::uint32_t FIRST_EXCEPTION = 0xC0000000;
  const auto code = static_cast<std::uint32_t>(status);
  return code >= FIRST_EXCEPTION ? "exception " + Hex(code, 8) : describeExit(code);
}

#else

std::FILE* openReport() {
  // The report must not get the descriptor of a closed standard stream: a provider can write there.
  int unused = 0;
  while (unused >= 0 && unused <= STDERR_FILENO) {
    unused = open("/dev/null", O_RDONLY);
  }
  close(unused);
  return std::tmpfile();
}

std::string runAskProvider(const std::string& file, const std::string& seconds, std::FILE* report) {
  // A process can be started with this signal ignored, and then its children leave no status.
  throwIf(std::signal(SIGCHLD, SIG_DFL) == SIG_ERR, "signal");
  const std::string descriptor = std::to_string(fileno(report));
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", "soc-info", "ask-provider", file.c_str(), seconds.c_str(),
          descriptor.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  throwIf(child < 0 || waitpid(child, &status, 0) < 0, "starting a process");
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    const char* const description = sigdescr_np(signal);  // null for a real-time signal
    return "signal " + std::to_string(signal) +
           (description == nullptr ? std::string() : std::string(" (") + description + ')');
  }
  return describeExit(static_cast<std::uint32_t>(WEXITSTATUS(status)));
}

#endif

}  // namespace

ChildResult RunAskProvider(const std::string& file, const std::string& seconds) {
  // A pipe would stay open as long as a process that the provider started.
  const std::unique_ptr<std::FILE, CloseFile> report(openReport());
  throwIf(report == nullptr, "a temporary file");
  ChildResult result;
  result.failure = runAskProvider(file, seconds, report.get());
  std::rewind(report.get());
  std::array<char, 4096> chunk;
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), report.get())) {
    result.output.append(chunk.data(), count);
  }
  if (result.output.empty()) {
    throw std::runtime_error("the child process has not reported: " + result.failure);
  }
  return result;
}

std::FILE* OpenStreamToParent(int descriptor) {
  constexpr int OUTPUT = 1;
  constexpr int ERRORS = 2;
#ifdef _WIN32
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // a crash shall open no window
  std::FILE* const stream = _dup2(ERRORS, OUTPUT) == 0 ? _fdopen(descriptor, "ab") : nullptr;
#else
  std::FILE* const stream = dup2(ERRORS, OUTPUT) == OUTPUT ? fdopen(descriptor, "ab") : nullptr;
#endif
  throwIf(stream == nullptr || std::setvbuf(stream, nullptr, _IONBF, 0) != 0, "the report");
  return stream;
}

void EndAtOnce() {
#ifdef _WIN32
  TerminateProcess(GetCurrentProcess(), 0);  // an exit would wait for the loader's lock
  std::abort();
#else
  _exit(0);
#endif
}
