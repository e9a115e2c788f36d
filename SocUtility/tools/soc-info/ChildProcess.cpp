#include "ChildProcess.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <sstream>
#include <system_error>
#include <thread>
#ifdef _WIN32
#include <io.h>
#include <process.h>

#include <stdexcept>

#include "Output.h"
#include "platform/WindowsApi.h"
#else
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#endif

namespace {

using Clock = std::chrono::steady_clock;

constexpr int OUTPUT = 1;
constexpr int ERRORS = 2;

void throwIf(bool failed, const char* what) {
  if (failed) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

ChildResult exited(std::uint32_t status) {
  return {{}, "exit", "exit status " + std::to_string(status)};
}

// `start` starts the child. `hasEnded` waits for a moment, and says how the child ended if it did.
// `end` ends it and waits for that.
#ifdef _WIN32

constexpr const char* NO_FILE = "NUL";

/// Ends its processes when this one ends, however that happens.
HANDLE makeJob() {
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags =
      JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
  const HANDLE job = CreateJobObjectW(nullptr, nullptr);
  SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

HANDLE start(int report) {
  static const HANDLE job = makeJob();
  std::wstring program(32768, L'\0');
  program.resize(GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
  const std::intptr_t process = _wspawnl(_P_NOWAIT, program.c_str(), L"soc-info", L"child",
                                         std::to_wstring(report).c_str(), nullptr);
  throwIf(process == -1, "starting a process");
  const auto handle = reinterpret_cast<HANDLE>(process);
  AssignProcessToJobObject(job, handle);
  return handle;
}

bool hasEnded(HANDLE process, ChildResult& result) {
  constexpr DWORD MILLISECONDS = 10;
  constexpr DWORD FIRST_EXCEPTION = 0xC0000000;
  DWORD code = 0;
  if (WaitForSingleObject(process, MILLISECONDS) != WAIT_OBJECT_0) {
    return false;
  }
  GetExitCodeProcess(process, &code);
  CloseHandle(process);
  result =
      code < FIRST_EXCEPTION ? exited(code) : ChildResult{{}, "crash", "exception " + Hex(code, 8)};
  return true;
}

void end(HANDLE process) {
  TerminateProcess(process, 0);
  WaitForSingleObject(process, INFINITE);
  CloseHandle(process);
}

#else

constexpr const char* NO_FILE = "/dev/null";

pid_t start(int report) {
  // A process can be started with this signal ignored, and then its children leave no status.
  throwIf(std::signal(SIGCHLD, SIG_DFL) == SIG_ERR, "signal");
  const std::string descriptor = std::to_string(report);
  const pid_t parent = getpid();
  const pid_t child = fork();
  throwIf(child < 0, "starting a process");
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // it must not outlive this process
    if (getppid() == parent) {
      execl("/proc/self/exe", "soc-info", "child", descriptor.c_str(), nullptr);
    }
    _exit(127);
  }
  return child;
}

bool hasEnded(pid_t process, ChildResult& result) {
  int status = 0;
  if (waitpid(process, &status, WNOHANG) == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return false;
  }
  if (!WIFSIGNALED(status)) {
    result = exited(static_cast<std::uint32_t>(WEXITSTATUS(status)));
    return true;
  }
  const int signal = WTERMSIG(status);
  const char* const description = sigdescr_np(signal);  // null for a real-time signal
  result = {{},
            "crash",
            "signal " + std::to_string(signal) +
                (description == nullptr ? std::string() : std::string(" (") + description + ')')};
  return true;
}

void end(pid_t process) {
  kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

#endif

/// Leaves the file's position, which the child shares.
std::int64_t sizeOf(int file) {
#ifdef _WIN32
  struct _stat64 state {};
  return _fstat64(file, &state) == 0 ? state.st_size : 0;
#else
  struct stat state {};
  return fstat(file, &state) == 0 ? state.st_size : 0;
#endif
}

/// Waits until the child has ended, or ends it when its report has not grown for `seconds`.
ChildResult waitForEnd(int report, double seconds) {
  using Seconds = std::chrono::duration<double>;
  constexpr Seconds START_LIMIT(60);  // before its first step the child runs no foreign code
  const std::int64_t sizeAtStart = sizeOf(report);
  const auto child = start(report);
  std::int64_t size = sizeAtStart;
  Clock::time_point grown = Clock::now();
  ChildResult result;
  while (!hasEnded(child, result)) {
    const Seconds limit = size == sizeAtStart ? START_LIMIT : Seconds(seconds);
    if (const std::int64_t sizeNow = sizeOf(report); sizeNow != size) {
      size = sizeNow;
      grown = Clock::now();
    } else if (Clock::now() - grown > limit) {
      end(child);
      std::ostringstream text;
      text << "not done within " << limit.count() << " s";
      return {{}, "hang", text.str()};
    }
  }
  return result;
}

void writeTo(std::FILE* file, const std::string& bytes) {
  throwIf(
      std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size() || std::fflush(file) != 0,
      "the child's report");
}

std::string readRest(std::FILE* file) {
  std::string rest;
  std::array<char, 4096> chunk;
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file)) {
    rest.append(chunk.data(), count);
  }
  return rest;
}

}  // namespace

ChildResult RunChild(const std::string& job, double seconds) {
  // A pipe would stay open as long as a process that foreign code started.
  const File report(std::tmpfile());
  throwIf(report == nullptr, "a temporary file");
  writeTo(report.get(), job);
  std::rewind(report.get());
  ChildResult result = waitForEnd(fileno(report.get()), seconds);
  std::rewind(report.get());
  result.report = readRest(report.get()).substr(job.size());
  return result;
}

ChildStream::ChildStream(int descriptor) : stream_(fdopen(descriptor, "a+b")) {
#ifdef _WIN32
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // a crash shall open no window
#endif
  throwIf(stream_ == nullptr || dup2(ERRORS, OUTPUT) < 0, "the child's report");
  std::rewind(stream_.get());
  job_ = readRest(stream_.get());
}

void ChildStream::Write(const std::string& bytes) { writeTo(stream_.get(), bytes); }

void OpenMissingStandardStreams() {
  int file = 0;
  while (file >= 0 && file <= ERRORS) {
    file = open(NO_FILE, O_RDONLY);
  }
  close(file);
}
