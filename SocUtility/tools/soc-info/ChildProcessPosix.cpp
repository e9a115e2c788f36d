#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "ChildProcess.h"

namespace {

void throwIf(bool failed, const char* what) {
  if (failed) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

std::string describe(int status) {
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    const char* const description = sigdescr_np(signal);  // null for a real-time signal
    return "signal " + std::to_string(signal) +
           (description == nullptr ? std::string() : std::string(" (") + description + ')');
  }
  const int code = WEXITSTATUS(status);
  return code == 0 ? std::string() : "exit status " + std::to_string(code);
}

/// `text` as one word of the shell's.
std::string quotedForShell(const std::string& text) {
  std::string word = "'";
  for (const char c : text) {
    word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return word + '\'';
}

}  // namespace

ChildResult RunAskProvider(const std::string& file, const std::string& seconds) {
  // A process can be started with this signal ignored, and then its children leave no status.
  throwIf(std::signal(SIGCHLD, SIG_DFL) == SIG_ERR, "signal");
  const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
  const std::string command =
      "exec " + quotedForShell(program) + " ask-provider " + quotedForShell(file) + ' ' + seconds;
  // NOLINTNEXTLINE(cert-env33-c): both words are quoted
  std::FILE* const pipe = popen(command.c_str(), "r");
  throwIf(pipe == nullptr, "starting a process");
  ChildResult result;
  std::array<char, 4096> chunk;
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), pipe)) {
    result.output.append(chunk.data(), count);
  }
  result.failure = describe(pclose(pipe));
  return result;
}

std::FILE* OpenStreamToParent() {
  const int pipe = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  throwIf(pipe < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0, "standard output");
  std::FILE* const stream = fdopen(pipe, "w");
  throwIf(stream == nullptr || std::setvbuf(stream, nullptr, _IONBF, 0) != 0, "standard output");
  return stream;
}

void EndAtOnce() { _exit(0); }
